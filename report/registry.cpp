#include "report/registry.h"

#include <array>
#include <cstdio>

#include "capture/executable.h"
#include "capture/registry.h"
#include "core/context.h"
#include "report/file.h"
#include "resources/strings.h"
#include "tree/snapshot.h"

namespace delvane {
namespace {

constexpr std::string_view kUninstallKey = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr std::string_view kServicesKey = "HKLM\\SYSTEM\\CurrentControlSet\\Services";

struct CSummaryRow {
    std::uint32_t m_labelId;
    std::uint32_t CRegistryReport::*m_count;
    std::string_view m_anchorSuffix;
};

constexpr std::array<CSummaryRow, 5> kSummaryRows = {{
    {IDS_VALUES_ADDED, &CRegistryReport::m_nValuesAdded, "Add"},
    {IDS_KEYS_ADDED, &CRegistryReport::m_nKeysAdded, "Add"},
    {IDS_VALUES_DELETED, &CRegistryReport::m_nValuesDeleted, "Del"},
    {IDS_KEYS_DELETED, &CRegistryReport::m_nKeysDeleted, "Del"},
    {IDS_VALUES_CHANGED, &CRegistryReport::m_nValuesChanged, "Chg"},
}};

CDelvObj& RegistryOf(CDelvObj& object) { return *FindSnapshot(&object)->m_pRegistry; }

CString HiveOf(const CDelvObj& object) { return object.GetFullName().substr(0, 4); }

// The file that a service's path means: the forms in which services name the Windows directory are replaced by it.
CString ServiceFile(CString text) {
    const CString& windows = theContext.m_strWindowsDir;
    if (text.starts_with("System32") || text.starts_with("SYSTEM32")) return windows + "\\" + text;
    for (const std::string_view root : {"\\SystemRoot", "%SystemRoot%"}) {
        if (text.starts_with(root)) return windows + text.substr(root.size());
    }
    return text;
}

std::uint8_t ByteAt(std::string_view data, std::size_t index) {
    return index < data.size() ? static_cast<std::uint8_t>(data[index]) : 0;
}

CString NumberText(std::string_view data, bool bigEndian) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number = number << 8 | ByteAt(data, bigEndian ? i : 3 - i);
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08x", number);
    return text.data();
}

CString StringsText(std::string_view data) {
    CString text;
    while (!data.empty() && data.front() != '\0') {
        const std::size_t end = std::min(data.find('\0'), data.size());
        if (!text.empty()) text += "\n<BR>";
        text += data.substr(0, end);
        data.remove_prefix(std::min(end + 1, data.size()));
    }
    return text;
}

CString DumpText(std::string_view data) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr std::size_t kBytesInLine = 16;
    CString text;
    text.reserve(data.size() * 3 + data.size() / kBytesInLine * 5);
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (i != 0 && i % kBytesInLine == 0) text += "\n<BR>";
        const std::uint8_t byte = ByteAt(data, i);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
        text += ' ';
    }
    return text;
}

}  // namespace

CString ValueTypeName(const CDelvRegValObj& value) {
    // By the number of the type, from REG_NONE on; all others are binary.
    static constexpr std::uint32_t kTextIds[] = {IDS_NONE,  IDS_STRING, IDS_STRING,  IDS_BINARY,       IDS_DWORD,
                                                 IDS_DWORD, IDS_LINK,   IDS_STRINGS, IDS_RESOURCE_LIST};
    return CString(LoadResString(value.m_dwType < std::size(kTextIds) ? kTextIds[value.m_dwType] : IDS_BINARY));
}

CString ValueDataText(const CDelvRegValObj& value) {
    const std::string_view data = value.m_data;
    switch (value.m_dwType) {
        case REG_SZ:
        case REG_EXPAND_SZ:
            return data.data() == nullptr ? "<NULL>" : CString(data.substr(0, data.find('\0')));
        case REG_DWORD:
            return NumberText(data, false);
        case REG_DWORD_BIG_ENDIAN:
            return NumberText(data, true);
        case REG_MULTI_SZ:
            return data.data() == nullptr ? "<NULL>" : StringsText(data);
        default:
            return DumpText(data);
    }
}

void CRegistryReport::NoteHkcu(CDelvObj& object) {
    if (m_bHkcuReported || mbsicmp(HiveOf(object), "HKCU") != 0) return;
    m_bHkcuReported = true;
    AddInfo(5, RegistryOf(object), IDS_HKCU_CHANGES);
}

void CRegistryReport::AddChanged(CDelvObj& object, CDelvObj& baseline) {
    ++m_nValuesChanged;
    CReportObj::AddChanged(object, baseline);
    NoteHkcu(object);
}

void CRegistryReport::AddDeleted(CDelvObj& object) {
    ++(IsKindOf<CDelvRegKeyObj>(object) ? m_nKeysDeleted : m_nValuesDeleted);
    CReportObj::AddDeleted(object);
    NoteHkcu(object);
}

void CRegistryReport::AddAdded(CDelvObj& object) {
    ++(IsKindOf<CDelvRegKeyObj>(object) ? m_nKeysAdded : m_nValuesAdded);
    CReportObj::AddAdded(object);
    NoteHkcu(object);
    const CString fullName = object.GetFullName();
    NoteUninstall(object, fullName);
    NoteService(object, fullName);
}

void CRegistryReport::NoteUninstall(CDelvObj& object, const CString& fullName) {
    if (!IsPrefixNoCase(kUninstallKey, fullName)) return;
    if (m_uninstallAdded.empty()) AddInfo(1, RegistryOf(object), IDS_UNINSTALL_ADDITIONS);
    m_uninstallAdded.push_back(&object);
}

// A kernel mode service: its executable goes to the file section's list, whatever kind of image it is.
void CRegistryReport::NoteService(CDelvObj& object, const CString& fullName) {
    if (!IsExactly<CDelvRegValObj>(object) || object.m_name != "ImagePath") return;
    if (!IsPrefixNoCase(kServicesKey, fullName)) return;
    const CString path = ServiceFile(ValueDataText(static_cast<const CDelvRegValObj&>(object)));
    CDelvObj* const file = FindSnapshot(&object)->FindObject(path);
    if (file == nullptr || !IsExactly<CDelvFileObj>(*file)) return;
    m_pFileReport->AddKernelService(static_cast<CDelvFileObj&>(*file));
}

void CRegistryReport::WriteSummary(std::ostream& stream) {
    stream << "<TABLE><TR><TH>" << LoadResString(IDS_REGISTRY_SUMMARY) << "</TH></TR>\n";
    for (const CSummaryRow& row : kSummaryRows) {
        const std::uint32_t count = this->*row.m_count;
        const CString suffix(row.m_anchorSuffix);
        stream << "<TR><TD>" << MakeLink(LoadResString(row.m_labelId), count, "Reg" + suffix) << "</TD><TD>" << count;
        for (const char* const hive : {"HKCR", "HKCU", "HKLM"})
            stream << "</TD><TD>" << MakeLink(hive, count, hive + suffix);
        stream << "</TD></TR>\n";
    }
    stream << "</TABLE>\n";
}

void CRegistryReport::WriteDetails(std::ostream& stream) {
    if (m_uninstallAdded.empty()) return;
    stream << "<HR WIDTH=100%>\n<H4>" << MakeAnchor(LoadResString(IDS_UNINSTALL_TITLE), "UninstAdd") << "</H4>\n";
    WriteObjectList(stream, m_uninstallAdded);
}

void CRegistryReport::WriteRawData(std::ostream& stream) {
    WriteRawLists(stream,
                  {IDS_REGISTRY_RAW_DATA, IDS_REGISTRY_ADDITIONS, IDS_REGISTRY_DELETIONS, IDS_REGISTRY_CHANGES, "Reg"});
}

CString CRegistryReport::GetPartOf(const CDelvObj& object) const { return HiveOf(object); }

void CRegistryReport::WriteChange(std::ostream& stream, CDelvObj& item) {
    WriteEntry(stream, item, [&stream](const CDelvObj& object) {
        if (IsKindOf<CDelvRegKeyObj>(object)) {
            stream << "\\";
        } else {
            const auto& value = static_cast<const CDelvRegValObj&>(object);
            stream << "</TD><TD>" << ValueTypeName(value) << "</TD><TD>" << ValueDataText(value);
        }
    });
}

}  // namespace delvane
