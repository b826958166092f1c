// What the file section writes.
#include <array>
#include <cmath>

#include "report/file.h"

namespace delvane {
namespace {

CString DateText(const CDelvFileObj& file) { return LocalTimeText(file.m_ftLastWrite.GetTicks(), "%m/%d/%y %I:%M %p"); }

// The size in its unit, and behind it the exact count of bytes. A size of exactly one unit still shows in the unit
// below, and three significant digits turn to exponent form from 999.5 of a unit on.
CString SizeText(const CDelvFileObj& file) {
    struct CUnit {
        int m_power;
        const char* m_name;
    };
    static constexpr std::array<CUnit, 4> kUnits = {{{40, "TB"}, {30, "GB"}, {20, "MB"}, {10, "KB"}}};
    const auto size = static_cast<std::int64_t>(file.GetSize());
    const CString exact = " (" + GroupedDecimalText(size) + " bytes)";
    for (const CUnit& unit : kUnits) {
        if (size <= std::int64_t{1} << unit.m_power) continue;
        return ThreeDigitText(std::ldexp(static_cast<double>(size), -unit.m_power)) + unit.m_name + exact;
    }
    return std::to_string(size) + " bytes" + exact;
}

// The rows of the summary and the blocks of details and raw data, in the order of the page.

struct CCounter {
    std::string_view m_label;
    std::uint32_t CFileReport::*m_count;
    std::string_view m_anchor;
};
// A block stands for a list of nodes or of changes. Its row in the summary may be absent: the raw data's is among
// the counters.
struct CBlock {
    std::string_view m_label;
    std::string_view m_title;
    std::string_view m_anchor;
    CObjectList CFileReport::*m_objects;
    CDiffList CFileReport::*m_changes = nullptr;

    std::size_t GetCount(const CFileReport& report) const {
        return m_objects != nullptr ? (report.*m_objects).size() : (report.*m_changes).size();
    }
};

constexpr std::array<CCounter, 5> kCounters = {{
    {"Files Added:", &CFileReport::m_nFilesAdded, "FileAdd"},
    {"Directories Added:", &CFileReport::m_nDirsAdded, "FileAdd"},
    {"Files Deleted:", &CFileReport::m_nFilesDeleted, "FileDel"},
    {"Directories Deleted:", &CFileReport::m_nDirsDeleted, "FileDel"},
    {"Files Changed:", &CFileReport::m_nFilesChanged, "FileChg"},
}};

constexpr std::array<CBlock, 17> kDetails = {{
    {"Kernel Mode Exes:", "Kernel Mode Executables Installed/Replaced", "KrnlAdd", &CFileReport::m_exesKernelMode},
    {"16-bit Exes:", "16-bit Executables Installed/Replaced", "16btAdd", &CFileReport::m_exes16Bit},
    {"Program Files Exes:", "Executables Added to Program Files", "PrgmAdd", &CFileReport::m_exesProgramFiles},
    {"System Dir Exes Added:", "Executables Added to System Directory", "SyseAdd", &CFileReport::m_exesSystemAdded},
    {"System Dir Exes Changed:", "Executables Changed in the System Directory", "SyseChg",
     &CFileReport::m_exesSystemChanged},
    {"Other Exes Added:", "Other Executables Added", "ExesAdd", &CFileReport::m_exesOtherAdded},
    {"Exes Replaced:", "Executables that were Replaced", "ExesChg", &CFileReport::m_exesReplaced},
    {"Start Menu Additions:", "Entries Added to the Start Menu", "StrtAdd", &CFileReport::m_startAdded},
    {"Start Menu Deletions:", "Entries Removed from the Start Menu", "StrtDel", &CFileReport::m_startDeleted},
    {"Start Menu Changes:", "Entries Changed on the Start Menu", "StrtChg", nullptr, &CFileReport::m_startChanged},
    {"App Data Additions:", "Files Added to Application Data", "AppdAdd", &CFileReport::m_appDataAdded},
    {"App Data Deletions:", "Files Removed from Application Data", "AppdDel", &CFileReport::m_appDataDeleted},
    {"App Data Changes:", "Files Changed in Application Data", "AppdChg", nullptr, &CFileReport::m_appDataChanged},
    {"Doc Dir Additions:", "Files Added to Document Directories", "DocdAdd", &CFileReport::m_docsAdded},
    {"Doc Dir Deletions:", "Files Removed from Document Directories", "DocdDel", &CFileReport::m_docsDeleted},
    {"Doc Dir Changes:", "Files Changed in Document Directories", "DocdChg", nullptr, &CFileReport::m_docsChanged},
    {"Files Outside of Appropriate Areas:", "Files Added Outside of the Appropriate Directories", "OtherAdd",
     &CFileReport::m_otherAdded},
}};

constexpr std::array<CBlock, 3> kRawData = {{
    {{}, "Files Added", "FileAdd", &CFileReport::m_added},
    {{}, "Files Deleted", "FileDel", &CFileReport::m_deleted},
    {{}, "Files Changed", "FileChg", nullptr, &CFileReport::m_changed},
}};

void WriteBlock(CFileReport& report, std::ostream& stream, const CBlock& block) {
    if (block.GetCount(report) == 0) return;
    stream << "<HR WIDTH=100%>\n<H4>" << MakeAnchor(block.m_title, block.m_anchor) << "</H4>\n";
    if (block.m_objects != nullptr) {
        report.WriteObjectList(stream, report.*block.m_objects);
    } else {
        report.WriteNameList(stream, report.*block.m_changes);
    }
}

}  // namespace

void CFileReport::WriteSummary(std::ostream& stream) {
    stream << "<TABLE><TR><TH>Summary of File Changes</TH></TR>\n";
    for (const CCounter& row : kCounters) {
        WriteCountRow(stream, row.m_label, this->*row.m_count, row.m_anchor);
    }
    for (const CBlock& block : kDetails) {
        const std::size_t count = block.GetCount(*this);
        if (count != 0) WriteCountRow(stream, block.m_label, count, block.m_anchor);
    }
    stream << "</TABLE>\n";
}

void CFileReport::WriteDetails(std::ostream& stream) {
    for (const auto& block : kDetails)
        WriteBlock(*this, stream, block);
}

void CFileReport::WriteRawData(std::ostream& stream) {
    if (m_added.empty() && m_deleted.empty() && m_changed.empty()) return;
    stream << "<H3>Raw File Change Data</H3>\n";
    for (const auto& block : kRawData)
        WriteBlock(*this, stream, block);
}

// The name of a system file is the target of the link in its finding.
CString CFileReport::GetEntryName(const CDelvObj& object) {
    if (!IsSystemFile(object, object.GetFullName())) return CString(object.m_name);
    return MakeAnchor(object.m_name, object.m_name);
}

void CFileReport::WriteChange(std::ostream& stream, CDelvObj& item) {
    const bool isChange = IsExactly<CDelvDiffObj>(item);
    CDelvExeObj* const exe = IsExactly<CDelvExeObj>(item) ? static_cast<CDelvExeObj*>(&item) : nullptr;
    if (exe != nullptr && !exe->m_bAnalyzed) exe->Analyze();
    const bool isKernelMode = exe != nullptr && exe->m_image.fSystemImage;
    if (isKernelMode) stream << "<B>";
    WriteEntry(stream, item, [&](const CDelvObj& object) {
        if (!isChange && IsKindOf<CDelvDirObj>(object)) {
            stream << "\\";
            return;
        }
        const auto& file = static_cast<const CDelvFileObj&>(object);
        stream << "</TD><TD> - " << DateText(file) << "</TD><TD> - " << SizeText(file);
        if (exe == nullptr) return;
        stream << "</TD><TD> - " << (exe->m_image.fDOSImage ? "16-bit" : "32-bit");
        if (!exe->m_strFileVersion.empty()) stream << "</TD><TD> - v." << exe->m_strFileVersion;
        if (isKernelMode) stream << "</TD><TD> - **Kernel Mode**";
    });
    if (isKernelMode) stream << "</B>";
}

}  // namespace delvane
