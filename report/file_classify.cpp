// What the file section collects: the order of the tests here is the program's whole judgement of what an installation
// did to the file system.
#include <algorithm>
#include <array>
#include <span>

#include "capture/drives.h"
#include "core/context.h"
#include "report/file.h"
#include "resources/strings.h"
#include "tree/snapshot.h"

namespace delvane {
namespace {

constexpr std::array kStartMenus = {CSIDL_STARTMENU, CSIDL_COMMON_STARTMENU};
constexpr std::array kAppData = {CSIDL_APPDATA, CSIDL_COMMON_APPDATA, CSIDL_LOCAL_APPDATA};
constexpr std::array kDocuments = {CSIDL_PERSONAL, CSIDL_COMMON_DOCUMENTS};

bool IsInFolder(int kind, std::string_view fullName) { return IsPrefixNoCase(*theContext.GetFolder(kind), fullName); }

bool IsInAny(std::span<const int> kinds, std::string_view fullName) {
    return std::any_of(kinds.begin(), kinds.end(), [&](int kind) { return IsInFolder(kind, fullName); });
}

void Append(CObjectList& list, CDelvObj& object) { list.push_back(&object); }
void Append(CDiffList& list, CDelvObj& object, CDelvObj& baseline) {
    list.push_back(std::make_unique<CDelvDiffObj>(object, baseline));
}

CDelvObj& DriveSetOf(CDelvObj& object) { return *FindSnapshot(&object)->m_pDrives; }

}  // namespace

unsigned FindFolderAreas(std::string_view fullName) {
    unsigned areas = 0;
    const auto look = [&](EFolderArea area, std::span<const int> kinds) {
        if (IsInAny(kinds, fullName)) areas |= 1U << static_cast<unsigned>(area);
    };
    look(EFolderArea::kProgramFiles, std::array{CSIDL_PROGRAM_FILES});
    look(EFolderArea::kWindows, std::array{CSIDL_WINDOWS});
    look(EFolderArea::kStartMenu, kStartMenus);
    look(EFolderArea::kAppData, kAppData);
    look(EFolderArea::kDocuments, kDocuments);
    return areas;
}

// The three groups do not exclude each other; within a group the first folder that fits takes the object.
template <class List, class... Baseline>
void CFileReport::SortByFolder(List& start, List& appData, List& docs, bool note, CDelvObj& object,
                               const CString& fullName, Baseline&... baseline) {
    const auto addTo = [&](List& list, std::span<const int> kinds) {
        const bool isIn = IsInAny(kinds, fullName);
        if (isIn) Append(list, object, baseline...);
        return isIn;
    };
    if (addTo(start, kStartMenus) && note && !std::exchange(m_bStartMenuNoted, true)) {
        AddInfo(6, DriveSetOf(object), IDS_START_MENU_ADDITIONS);
    }
    addTo(appData, kAppData);
    addTo(docs, kDocuments);
}

void CFileReport::AddAdded(CDelvObj& object) {
    ++(IsKindOf<CDelvDirObj>(object) ? m_nDirsAdded : m_nFilesAdded);
    CReportObj::AddAdded(object);
    const CString fullName = object.GetFullName();
    SortByFolder(m_startAdded, m_appDataAdded, m_docsAdded, true, object, fullName);
    if (IsExactly<CDelvFileObj>(object)) {
        NoteSystemFile(object, fullName);
        if (CDelvExeObj* const copy = CopyIfExecutable(object, fullName)) {
            if (IsInFolder(CSIDL_PROGRAM_FILES, fullName)) {
                m_exesProgramFiles.push_back(copy);
            } else if (IsInFolder(CSIDL_WINDOWS, fullName)) {
                m_exesSystemAdded.push_back(copy);
                NoteSystemExe(object);
            } else {
                Note(m_exesOtherAdded, *copy, 1, IDS_EXES_ADDED_OUTSIDE);
            }
            NoteKind(*copy);
        }
    }
    if (FindFolderAreas(fullName) == 0) Note(m_otherAdded, object, 5, IDS_FILES_OUTSIDE);
}

void CFileReport::AddChanged(CDelvObj& object, CDelvObj& baseline) {
    if (!IsKindOf<CDelvDirObj>(object)) ++m_nFilesChanged;
    CReportObj::AddChanged(object, baseline);
    const CString fullName = object.GetFullName();
    SortByFolder(m_startChanged, m_appDataChanged, m_docsChanged, true, object, fullName, baseline);
    if (!IsExactly<CDelvFileObj>(object)) return;
    NoteSystemFile(object, fullName);
    if (CDelvExeObj* const copy = CopyIfExecutable(object, fullName)) {
        if (IsInFolder(CSIDL_WINDOWS, fullName)) {
            m_exesSystemChanged.push_back(copy);
            NoteSystemExe(object);
        }
        m_exesReplaced.push_back(copy);
        NoteKind(*copy);
    }
}

// A deleted object files no finding, and there is no file left to examine.
void CFileReport::AddDeleted(CDelvObj& object) {
    ++(IsKindOf<CDelvDirObj>(object) ? m_nDirsDeleted : m_nFilesDeleted);
    CReportObj::AddDeleted(object);
    SortByFolder(m_startDeleted, m_appDataDeleted, m_docsDeleted, false, object, object.GetFullName());
}

// Autoexec.bat and config.sys count on drive C: alone, whatever the system drive is; the two ini files only directly in
// the Windows directory.
bool CFileReport::IsSystemFile(const CDelvObj& object, const CString& fullName) {
    if (mbsicmp(fullName, "c:\\autoexec.bat") == 0 || mbsicmp(fullName, "c:\\config.sys") == 0) return true;
    if (mbsicmp(object.m_name, "win.ini") != 0 && mbsicmp(object.m_name, "system.ini") != 0) return false;
    return mbsicmp(fullName, *theContext.GetFolder(CSIDL_WINDOWS) + "\\" + CString(object.m_name)) == 0;
}

void CFileReport::NoteSystemFile(CDelvObj& object, const CString& fullName) {
    if (!IsSystemFile(object, fullName)) return;
    AddObjWarning(3, object, FormatString1(LoadResString(IDS_SYSTEM_FILE), object.m_name), IDS_SYSTEM_FILE);
}

CDelvExeObj* CFileReport::CopyIfExecutable(CDelvObj& object, const CString& fullName) {
    if (!IsExecutableFile(fullName)) return nullptr;
    m_exeCopies.push_back(std::make_unique<CDelvExeObj>(static_cast<CDelvFileObj&>(object)));
    m_exeCopies.back()->Analyze();
    return m_exeCopies.back().get();
}

void CFileReport::AddKernelService(CDelvFileObj& file) {
    m_exeCopies.push_back(std::make_unique<CDelvExeObj>(file));
    m_exesKernelMode.push_back(m_exeCopies.back().get());
}

void CFileReport::NoteSystemExe(CDelvObj& object) {
    if (!std::exchange(m_bSystemExeNoted, true)) AddWarning(1, DriveSetOf(object), IDS_SYSTEM_EXES);
}

void CFileReport::NoteKind(CDelvExeObj& copy) {
    if (copy.m_image.fDOSImage) Note(m_exes16Bit, copy, 2, IDS_16BIT_EXES);
    if (copy.m_image.fSystemImage) Note(m_exesKernelMode, copy, 7, IDS_KERNEL_DRIVERS);
}

void CFileReport::Note(CObjectList& list, CDelvObj& object, int section, std::uint32_t textId) {
    if (list.empty()) AddWarning(section, DriveSetOf(object), textId);
    list.push_back(&object);
}

}  // namespace delvane
