#include "core/context.h"

#include <algorithm>
#include <iostream>

#include "core/drive_names.h"

namespace delvane {

CRunContext theContext;

namespace {

// A folder of the machine: where it is kept, and its place under the profiles of a machine without a folder library.
struct CFolder {
    int m_kind;
    CString CRunContext::*m_cache;
    const char* m_tail = "";
    const char* m_win9xName = nullptr;  // null for a common folder
};

constexpr CFolder kFolders[] = {
    {CSIDL_WINDOWS, &CRunContext::m_strWindowsDir},
    {CSIDL_SYSTEM, &CRunContext::m_strSystemDir},
    {CSIDL_PROGRAM_FILES, &CRunContext::m_strProgramFiles},
    {CSIDL_PERSONAL, &CRunContext::m_strPersonal, "\\Personal", "My Documents"},
    {CSIDL_STARTMENU, &CRunContext::m_strStartMenu, "\\Start Menu", "Start Menu"},
    {CSIDL_COMMON_STARTMENU, &CRunContext::m_strCommonStartMenu, "\\Start Menu"},
    {CSIDL_APPDATA, &CRunContext::m_strAppData, "\\Application Data", "Application Data"},
    {CSIDL_LOCAL_APPDATA, &CRunContext::m_strLocalAppData, "\\Local Settings\\Application Data",
     "Local Settings\\Application Data"},
    {CSIDL_COMMON_APPDATA, &CRunContext::m_strCommonAppData, "\\Application Data"},
    {CSIDL_COMMON_DOCUMENTS, &CRunContext::m_strCommonDocuments, "\\Personal"},
};

// Where a machine without a folder library has the folder.
CString FallbackFolder(const CFolder& folder) {
    if (folder.m_kind == CSIDL_PROGRAM_FILES) return theContext.m_strSystemDrive + "\\Program Files";
    const CString profiles = theContext.m_strWindowsDir + "\\Profiles\\";
    if (folder.m_win9xName == nullptr) return theContext.m_bWinNT4 ? profiles + "All Users" + folder.m_tail : CString();
    if (theContext.m_bWin2000) return {};
    CFileWords words;
    const CString path = profiles + theContext.m_strUserName + folder.m_tail;
    if (theContext.m_bWinNT4 || theContext.GetMachine().GetSearches().FindPath(path, words) == ERROR_SUCCESS)
        return path;
    return theContext.m_strWindowsDir + "\\" + folder.m_win9xName;
}

bool HasNoCase(const CStringList& list, std::string_view text) {
    return std::ranges::any_of(list, [&](const CString& entry) { return mbsicmp(entry, text) == 0; });
}

}  // namespace

void CRunContext::Initialize() {
    TellNotices();
    ReadSystemVersion();
    m_pfnGetFolderPath = GetMachine().LoadFolderLibrary();
    m_strSystemDir = GetMachine().GetSystemDirectory();
    m_strSystemDrive = m_strSystemDir.substr(0, 2);
    m_strWindowsDir = GetMachine().GetWindowsDirectory();
    m_dwLogicalDrives = GetMachine().GetLogicalDrives();
    if (!GetMachine().GetUserName(m_strUserName)) m_strUserName.clear();
    if (!GetMachine().GetComputerName(m_strComputerName)) m_strComputerName.clear();
    const CString program = GetHost().GetModuleFileName();
    m_strProgramDir = program.substr(0, program.rfind('\\'));
    FillSkipLists();
    if (!ReadConfig()) WriteConfig();
    if (GetHost().FileExists(GetErrorLogPath())) GetHost().DeleteFile(GetErrorLogPath());
}

void CRunContext::ReadSystemVersion() {
    const CVersionRecord version = GetMachine().GetVersion();
    if (version.m_dwPlatformId == VER_PLATFORM_WIN32_WINDOWS) {
        m_bWin98 = version.m_dwMinorVersion > 0;
        m_strOsName = m_bWin98 ? "Windows '98" : "Windows '95";
    } else {
        m_bWinNT4 = version.m_dwMajorVersion <= 4;
        m_bWin2000 = !m_bWinNT4;
        m_strOsName = m_bWinNT4 ? "Windows NT 4.0" : "Windows 2000";
    }
    if (!m_bWin98 && !version.m_strServicePack.empty()) m_strOsName += " - " + version.m_strServicePack;
    if (m_bWinNT4 || m_bWin2000) {
        m_strOsName += " (Build " + std::to_string(static_cast<std::int32_t>(version.m_dwBuildNumber)) + ")";
    }
}

// The program's own top folder and the temporary directory: what the program and its installer write there is not the
// examined application's doing.
void CRunContext::FillSkipLists() {
    CString top = m_strProgramDir;
    const std::size_t first = top.find('\\');
    if (first != 0 && first != CString::npos) {
        const std::size_t second = top.find('\\', first + 1);
        if (second != CString::npos) top.resize(second);
    }
    m_lstSkipDirs.push_back(top);
    CString temp = GetMachine().GetTempPath();
    if (!temp.empty()) temp.pop_back();
    m_lstSkipDirs.push_back(temp);
    m_lstSkipNames = {".", "..", "pagefile.sys", "WIN386.SWP", "RECYCLER"};
}

std::vector<CString> CRunContext::GetOwnFolders() {
    std::vector<CString> folders = {m_strProgramDir, GetHost().GetMachinePath(GetResultsDir())};
    while (folders.back().ends_with('\\'))
        folders.back().pop_back();
    return folders;
}

// A program that was put into C:\Program Files, say, or results into C:\Windows, leave out what an installation is most
// likely to change. The root of a drive is never left out.
void CRunContext::TellSkippedFolders() {
    const auto tell = [this](const CString& top, const CString& own) {
        if (top.find(':') != 1 || top.size() < 3 || !IsDriveSelected(top)) return;
        for (const int kind : {CSIDL_PROGRAM_FILES, CSIDL_WINDOWS, CSIDL_APPDATA, CSIDL_COMMON_APPDATA}) {
            const CString& folder = *GetFolder(kind);
            if (mbsicmp(top, folder) != 0 && !IsPrefixNoCase(top + "\\", folder)) continue;
            return Notice("nothing below " + top + " is captured, as the program's own files lie there (" + own +
                          "); put them into a folder of their own at the top of a drive");
        }
    };
    const std::vector<CString> own = GetOwnFolders();
    tell(m_lstSkipDirs.front(), m_strProgramDir);
    tell(own.back(), own.back());
}

bool CRunContext::IsDriveSelected(std::string_view name) const {
    const std::uint32_t bit = DriveBit(name);
    if ((m_dwLogicalDrives & bit) == 0) return false;
    if ((m_dwDrivesOn & bit) != 0) return true;
    if ((m_dwDrivesOff & bit) != 0) return false;
    if (!m_bHardDrives) return false;
    const std::uint32_t type = DriveTypeOf(name);
    return type == DRIVE_FIXED || (type == DRIVE_REMOVABLE && m_bRemovableDrives) ||
           (type == DRIVE_REMOTE && m_bNetworkDrives) || (type == DRIVE_CDROM && m_bCompactDiscs);
}

bool CRunContext::IsDirAllowed(std::string_view path) const { return !HasNoCase(m_lstSkipDirs, path); }

bool CRunContext::IsNameAllowed(std::string_view name) const { return !HasNoCase(m_lstSkipNames, name); }

const CString* CRunContext::GetFolder(int kind) {
    const auto* const folder = std::ranges::find(kFolders, kind, &CFolder::m_kind);
    if (folder == std::end(kFolders)) return nullptr;
    CString& path = this->*folder->m_cache;
    const bool isKnown = !path.empty() || kind == CSIDL_WINDOWS || kind == CSIDL_SYSTEM;
    if (!isKnown && (!m_pfnGetFolderPath || !m_pfnGetFolderPath(kind, path))) path = FallbackFolder(*folder);
    return &path;
}

const CString& CRunContext::GetResultsDir() {
    if (m_strResultsDir.empty()) m_strResultsDir = m_strProgramDir + "\\Results";
    if (!GetHost().DirectoryExists(m_strResultsDir) && !GetHost().CreateDirectory(m_strResultsDir)) {
        Say(GetHost().GetDisplayPath(m_strResultsDir) +
            " is no folder and cannot be made one; snapshots and reports go to " +
            GetHost().GetDisplayPath(m_strProgramDir));
        m_strResultsDir = m_strProgramDir;
    }
    return m_strResultsDir;
}

CString CRunContext::GetHelpPath() const {
    const CString beside = m_strProgramDir + "\\Using.htm";
    return GetHost().FileExists(beside) ? beside : GetHost().GetDocumentFolder() + "\\Using.htm";
}

void CRunContext::TellNotices() {
    for (const CNotice& notice : GetMachine().TakeNotices()) {
        Notice(notice.m_strSentence);
        if (!notice.m_strPath.empty()) m_lstRegistryProblems.push_back(notice);
    }
}

void CRunContext::Notice(const CString& sentence) {
    if (Say(sentence)) m_lstNotices.push_back(sentence);
}

bool CRunContext::Say(CString sentence) {
    // One line, and nothing that a terminal would obey, whatever a name in it holds.
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    std::replace_if(sentence.begin(), sentence.end(), isControl, ' ');
    if (sentence.empty() || !m_said.insert(sentence).second) return false;
    std::cerr.clear();  // what could not be written before may be written now
    std::cerr << "delvane: " << sentence << '\n' << std::flush;
    return true;
}

}  // namespace delvane
