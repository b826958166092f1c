#include "capture/registry.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

#include "capture/extensions.h"
#include "core/context.h"
#include "report/base.h"
#include "resources/strings.h"
#include "tree/archive.h"
#include "tree/root.h"

namespace delvane {
namespace {

// Two empty strings, then a type and a length (a value) or two counts (a key).
constexpr std::size_t kSmallestRecord = 2 + 2 * 4;
constexpr std::size_t kSmallestHiveRecord = 4 + kSmallestRecord;

constexpr CTextRef kDefaultName("\x09(default)");

// What a failed call of the registry raises: it ends the capture of the key.
class CRegistryError : public std::runtime_error {
public:
    CRegistryError(const CDelvRegKeyObj& key, std::uint32_t code)
        : std::runtime_error(key.GetFullName() + ": the registry key could not be read to its end (" +
                             std::to_string(code) + ")"),
          m_dwCode(code) {}
    const std::uint32_t m_dwCode;
};

// What Windows itself would not show is no gap: a link that leads nowhere or to a key that it lies in, and what stands
// for something else than a key.
bool IsGap(std::uint32_t code) {
    return code != ERROR_SUCCESS && code != ERROR_CANT_RESOLVE_FILENAME && code != ERROR_INVALID_HANDLE;
}

// The options that are in force now, not those of the capture.
bool IsHiveWanted(HKEY key) {
    if (key == HKEY_LOCAL_MACHINE) return theContext.m_bHklm;
    if (key == HKEY_CURRENT_USER) return theContext.m_bHkcu;
    if (key == HKEY_CLASSES_ROOT) return theContext.m_bHkcr;
    return true;
}

}  // namespace

HKEY HiveRootKey(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, HKEY>, 5> kRoots = {{{"HKCR", HKEY_CLASSES_ROOT},
                                                                                 {"HKCU", HKEY_CURRENT_USER},
                                                                                 {"HKLM", HKEY_LOCAL_MACHINE},
                                                                                 {"HKU", HKEY_USERS},
                                                                                 {"HKCC", HKEY_CURRENT_CONFIG}}};
    for (const auto& [hive, key] : kRoots) {
        if (hive == name) return key;
    }
    return 0;
}

CDelvRegValObj::CDelvRegValObj(CDelvObj* parent, CArena& arena, CTextRef name, std::uint32_t type,
                               std::string_view data)
    : CDelvObj(parent, name, {}), m_dwType(type) {
    if (data.empty()) return;
    m_data = arena.CopyBytes(data);
    m_bCaptured = true;
}

void CDelvRegValObj::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    archive.Transfer(m_dwType);
    if (archive.IsStoring()) {
        archive.WriteCount(m_data.size());
        archive.WriteBytes(m_data);
    } else {
        m_data = archive.ReadBytes(archive.ReadU32());
        m_bCaptured = true;
    }
}

bool CDelvRegValObj::Compare(CDelvObj& other, CReportObj& report) {
    if (!CDelvObj::Compare(other, report)) return false;
    const CDelvRegValObj& baseline = static_cast<const CDelvRegValObj&>(other);
    if (m_dwType != baseline.m_dwType || m_data != baseline.m_data) report.AddChanged(*this, other);
    return true;
}

bool CDelvRegValObj::Capture(CCaptureProgress* progress) {
    if (!m_bCaptured) {
        CRegistry& registry = theContext.GetMachine().GetRegistry();
        const HKEY key = *OpenKey();
        if (key == 0) return false;
        CRoom room;
        const auto query = [&](std::uint32_t* type) {
            const std::uint32_t code = registry.RegQueryValueEx(key, m_name, type, room);
            if (code == ERROR_SUCCESS) return true;
            RootOf(*this).GetGaps().Add(EGapKind::kValue, GetFullName(), code, CString(m_name));
            return false;
        };
        if (!query(nullptr)) return false;
        room.m_pBytes = static_cast<char*>(RootOf(*this).GetArena().Take(room.m_nSize, 1));
        // Data that have grown meanwhile do not fit and leave the value empty.
        const bool fits = query(&m_dwType);
        m_data = {room.m_pBytes, fits ? room.m_nSize : 0};
        CloseKey();
        m_bCaptured = true;
    }
    Count(progress, &CCaptureProgress::m_nValues, kCodeValues);
    return true;
}

CString CDelvRegValObj::GetFullName() const {
    if (IsExactly<CDelvRegHiveObj>(*this)) return CString(m_name);
    CString path = m_pParent == nullptr ? CString() : m_pParent->GetFullName();
    if (!IsExactly<CDelvRegValObj>(*this)) path.append(1, '\\').append(m_name);
    return path;
}

HKEY* CDelvRegValObj::OpenKey() { return m_hKey != 0 ? &m_hKey : &static_cast<CDelvRegValObj*>(m_pParent)->m_hKey; }

void CDelvRegValObj::CloseKey() {
    if (m_hKey != 0) theContext.GetMachine().GetRegistry().RegCloseKey(m_hKey);
    m_hKey = 0;
}

CDelvRegKeyObj::CDelvRegKeyObj(CDelvObj* parent, CArena& arena, CTextRef name) : CDelvRegKeyObj(parent, arena) {
    m_name = name;
    m_bCaptured = true;
}

void CDelvRegKeyObj::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    archive.Enter();
    CArena& arena = m_values.GetArena();
    archive.TransferList(m_values, kSmallestRecord, [&] { return arena.New<CDelvRegValObj>(this); });
    archive.TransferList(m_subkeys, kSmallestRecord, [&] { return arena.New<CDelvRegKeyObj>(this, arena); });
    archive.Leave();
}

CDelvObj* CDelvRegKeyObj::FindObject(std::string_view path) {
    const std::size_t end = path.find('\\');
    if (mbsicmp(path.substr(0, end), m_name) != 0) return nullptr;
    if (end == std::string_view::npos || end + 1 == path.size()) return this;
    const std::string_view rest = path.substr(end + 1);
    if (rest.find('\\') == std::string_view::npos) {
        if (CDelvObj* const value = FindIn(m_values, rest)) return value;
    }
    return FindSubkey(rest);
}

CDelvObj* CDelvRegKeyObj::FindSubkey(std::string_view path) { return FindIn(m_subkeys, path); }

bool CDelvRegKeyObj::Compare(CDelvObj& other, CReportObj& report) {
    if (!CDelvObj::Compare(other, report)) return false;
    const CDelvRegKeyObj& baseline = static_cast<const CDelvRegKeyObj&>(other);
    CompareLists(m_values, baseline.m_values, report);
    CompareLists(m_subkeys, baseline.m_subkeys, report);
    return true;
}

void CDelvRegKeyObj::ReportAdded(CReportObj& report) {
    report.AddAdded(*this);
    for (CDelvObj* value : m_values)
        value->ReportAdded(report);
    for (CDelvObj* key : m_subkeys)
        key->ReportAdded(report);
}

void CDelvRegKeyObj::ReportDeleted(CReportObj& report) {
    report.AddDeleted(*this);
    for (CDelvObj* value : m_values)
        value->ReportDeleted(report);
    for (CDelvObj* key : m_subkeys)
        key->ReportDeleted(report);
}

HKEY* CDelvRegKeyObj::OpenKey() {
    if (m_hKey == 0) {
        HKEY key = 0;
        const HKEY parent = static_cast<CDelvRegValObj*>(m_pParent)->m_hKey;
        const std::uint32_t code = theContext.GetMachine().GetRegistry().RegOpenKeyEx(parent, m_name, key);
        if (code == ERROR_SUCCESS) m_hKey = key;
        if (IsGap(code)) NoteGap(code);
    }
    return &m_hKey;
}

// A key is open for as long as the walk below it lasts.
bool CDelvRegKeyObj::Capture(CCaptureProgress* progress) {
    if (IsExactly<CDelvRegKeyObj>(*this)) Count(progress, &CCaptureProgress::m_nKeys, kCodeKeys);
    try {
        const HKEY key = *OpenKey();
        if (key == 0) return false;
        CaptureContents(key, progress);
    } catch (...) {
        SortByName(m_values);
        SortByName(m_subkeys);
        CloseKey();
        if (progress == nullptr || !progress->m_bForgives || !progress->m_bKeepGoing) throw;
        try {
            throw;
        } catch (const CRegistryError& error) {
            NoteGap(error.m_dwCode);
        } catch (...) {
            NoteGap(ERROR_GEN_FAILURE);
        }
        return false;
    }
    CloseKey();
    return true;
}

void CDelvRegKeyObj::NoteGap(std::uint32_t code) { RootOf(*this).GetGaps().Add(EGapKind::kKey, GetFullName(), code); }

// Children are put behind each other in the order of the registry and sorted in the end: the registry's order is
// without case, and putting each into its place would take quadratic time in a large key.
void CDelvRegKeyObj::CaptureContents(HKEY key, CCaptureProgress* progress) {
    CRegistry& registry = theContext.GetMachine().GetRegistry();
    const auto check = [this](std::uint32_t code) {
        if (code != ERROR_SUCCESS) throw CRegistryError(*this, code);
    };
    CKeyInfo info;
    check(registry.RegQueryInfoKey(key, info));
    if (info.m_dwError != ERROR_SUCCESS) NoteGap(info.m_dwError);
    const std::uint32_t nameSize = std::max(info.m_nLongestSubkey, info.m_nLongestValueName) + 1;
    const auto buffer = std::make_unique_for_overwrite<char[]>(std::size_t{nameSize} + info.m_nLargestData);
    CArena& arena = m_values.GetArena();
    for (std::uint32_t index = 0; index < info.m_nValues; ++index) {
        ThrowIfCancelled(progress);
        CRoom name{buffer.get(), info.m_nLongestValueName + 1};
        CRoom data{buffer.get() + nameSize, info.m_nLargestData};
        std::uint32_t type = 0;
        check(registry.RegEnumValue(key, index, name, type, data));
        const CTextRef ownName = name.m_nSize == 0 ? kDefaultName : arena.Copy({name.m_pBytes, name.m_nSize});
        CaptureValue(ownName, type, {data.m_pBytes, data.m_nSize}, progress);
    }
    SortByName(m_values);
    for (std::uint32_t index = 0; index < info.m_nSubkeys; ++index) {
        ThrowIfCancelled(progress);
        CRoom name{buffer.get(), info.m_nLongestSubkey + 1};
        check(registry.RegEnumKeyEx(key, index, name));
        CaptureSubkey({name.m_pBytes, name.m_nSize}, progress);
    }
    SortByName(m_subkeys);
}

void CDelvRegKeyObj::CaptureValue(CTextRef name, std::uint32_t type, std::string_view data,
                                  CCaptureProgress* progress) {
    CArena& arena = m_values.GetArena();
    CDelvRegValObj* const value = arena.New<CDelvRegValObj>(this, arena, name, type, data);
    m_values.push_back(value);
    if (!value->Capture(progress)) m_values.pop_back();
}

// The machine's classes are left out: they come again as HKCR.
void CDelvRegKeyObj::CaptureSubkey(std::string_view name, CCaptureProgress* progress) {
    if (name == "Classes" && GetFullName() == "HKLM\\SOFTWARE") return;
    CArena& arena = m_subkeys.GetArena();
    CDelvRegKeyObj* const key = arena.New<CDelvRegKeyObj>(this, arena, arena.Copy(name));
    m_subkeys.push_back(key);
    if (!key->Capture(progress)) m_subkeys.pop_back();
}

CDelvRegHiveObj::CDelvRegHiveObj(CDelvObj* parent, CArena& arena, CTextRef name)
    : CDelvRegKeyObj(parent, arena, name), m_byFoldedName(arena) {
    m_hKey = HiveRootKey(name);
}

void CDelvRegHiveObj::Serialize(CArchive& archive) {
    archive.Transfer(m_hKey);
    CDelvRegKeyObj::Serialize(archive);
}

CDelvObj* CDelvRegHiveObj::FindSubkey(std::string_view path) {
    constexpr std::size_t kFewSubkeys = 32;
    if (m_subkeys.size() < kFewSubkeys) return CDelvRegKeyObj::FindSubkey(path);
    const auto sortsBefore = [](std::string_view a, std::string_view b) { return mbsicmp(a, b) < 0; };
    if (m_byFoldedName.size() != m_subkeys.size()) {
        m_byFoldedName = CNodeList(m_subkeys.GetArena());
        for (CDelvObj* key : m_subkeys)
            m_byFoldedName.push_back(key);
        std::ranges::stable_sort(m_byFoldedName, sortsBefore, &CDelvObj::m_name);
    }
    const std::string_view name = path.substr(0, path.find('\\'));
    auto key = std::ranges::lower_bound(m_byFoldedName, name, sortsBefore, &CDelvObj::m_name);
    for (; key != m_byFoldedName.end() && !sortsBefore(name, (*key)->m_name); ++key) {
        if (CDelvObj* const found = (*key)->FindObject(path)) return found;
    }
    return nullptr;
}

bool CDelvRegHiveObj::Compare(CDelvObj& other, CReportObj& report) {
    if (!CDelvObj::Compare(other, report)) return false;
    if (!IsHiveWanted(m_hKey)) return false;
    const CDelvRegHiveObj& baseline = static_cast<const CDelvRegHiveObj&>(other);
    if (m_subkeys.empty()) report.AddWarning(0, *this, IDS_CURRENT_WITHOUT_HIVE);
    if (baseline.m_subkeys.empty()) report.AddWarning(0, *this, IDS_BASELINE_WITHOUT_HIVE);
    if (m_subkeys.empty() || baseline.m_subkeys.empty()) return false;
    return CDelvRegKeyObj::Compare(other, report);
}

bool CDelvRegHiveObj::Capture(CCaptureProgress* progress) {
    Count(progress, &CCaptureProgress::m_nHives, kCodeHives);
    theContext.GetMachine().BeginWalk();
    const bool complete = CDelvRegKeyObj::Capture(progress);
    if (m_hKey == HKEY_CLASSES_ROOT) {
        CDelvAllExts& extensions = *RootOf(*this).m_pExtensions;
        for (CDelvObj* key : m_subkeys) {
            ThrowIfCancelled(progress);
            if (key->m_name.Get().starts_with('.')) {
                extensions.AddRegisteredExtension(static_cast<CDelvRegKeyObj&>(*key), progress);
            }
        }
    }
    return complete;
}

CDelvAllReg::CDelvAllReg(CTreeRoot& root) : CDelvRegHiveObj(&root, root.GetArena()) {
    m_name = root.GetArena().Copy(LoadResString(IDS_MY_COMPUTER));
}

void CDelvAllReg::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    CArena& arena = m_subkeys.GetArena();
    archive.TransferList(m_subkeys, kSmallestHiveRecord, [&] { return arena.New<CDelvRegHiveObj>(this, arena); });
}

CDelvObj* CDelvAllReg::FindObject(std::string_view path) {
    return path.starts_with("HK") ? FindIn(m_subkeys, path) : nullptr;
}

bool CDelvAllReg::Compare(CDelvObj& baseline, CReportObj& report) {
    CompareLists(m_subkeys, static_cast<const CDelvAllReg&>(baseline).m_subkeys, report);
    return true;
}

bool CDelvAllReg::Capture(CCaptureProgress* progress) {
    CArena& arena = m_subkeys.GetArena();
    for (const std::string_view name : {"HKLM", "HKCU", "HKCR"}) {
        CDelvRegHiveObj* const hive = arena.New<CDelvRegHiveObj>(this, arena, arena.Copy(name));
        hive->InsertSorted(m_subkeys);
        if (IsHiveWanted(hive->m_hKey)) hive->Capture(progress);
    }
    return true;
}

}  // namespace delvane
