#include "core/context.h"

#include <algorithm>
#include <array>
#include <iostream>

#include "core/drive_names.h"

namespace delvane {

CRunContext theContext;

CRunContext::~CRunContext() = default;

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
        m_strOsName += " (Build " + DecimalText(static_cast<std::int32_t>(version.m_dwBuildNumber)) + ")";
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
    switch (DriveTypeOf(name)) {
        case DRIVE_REMOVABLE:
            return m_bRemovableDrives;
        case DRIVE_FIXED:
            return true;
        case DRIVE_REMOTE:
            return m_bNetworkDrives;
        case DRIVE_CDROM:
            return m_bCompactDiscs;
        default:
            return false;
    }
}

bool CRunContext::IsDirAllowed(std::string_view path) const {
    for (const CString& skipped : m_lstSkipDirs) {
        if (mbsicmp(skipped, path) == 0) return false;
    }
    return true;
}

bool CRunContext::IsNameAllowed(std::string_view name) const {
    for (const CString& skipped : m_lstSkipNames) {
        if (mbsicmp(skipped, name) == 0) return false;
    }
    return true;
}

CString* CRunContext::GetFolderCache(int kind) {
    switch (kind) {
        case CSIDL_PERSONAL:
            return &m_strPersonal;
        case CSIDL_STARTMENU:
            return &m_strStartMenu;
        case CSIDL_COMMON_STARTMENU:
            return &m_strCommonStartMenu;
        case CSIDL_APPDATA:
            return &m_strAppData;
        case CSIDL_LOCAL_APPDATA:
            return &m_strLocalAppData;
        case CSIDL_COMMON_APPDATA:
            return &m_strCommonAppData;
        case CSIDL_WINDOWS:
            return &m_strWindowsDir;
        case CSIDL_SYSTEM:
            return &m_strSystemDir;
        case CSIDL_PROGRAM_FILES:
            return &m_strProgramFiles;
        case CSIDL_COMMON_DOCUMENTS:
            return &m_strCommonDocuments;
        default:
            return nullptr;
    }
}

const CString* CRunContext::GetFolder(int kind) {
    CString* const cache = GetFolderCache(kind);
    if (cache == nullptr || kind == CSIDL_WINDOWS || kind == CSIDL_SYSTEM || !cache->empty()) return cache;
    if (!m_pfnGetFolderPath || !m_pfnGetFolderPath(kind, *cache)) *cache = GetFallbackFolder(kind);
    return cache;
}

CString CRunContext::GetFallbackFolder(int kind) const {
    struct CFallback {
        int m_kind;
        const char* m_tail;
        const char* m_win9xName;  // null for a common folder
    };
    static constexpr std::array<CFallback, 7> kFallbacks = {{
        {CSIDL_PERSONAL, "\\Personal", "My Documents"},
        {CSIDL_STARTMENU, "\\Start Menu", "Start Menu"},
        {CSIDL_COMMON_STARTMENU, "\\Start Menu", nullptr},
        {CSIDL_APPDATA, "\\Application Data", "Application Data"},
        {CSIDL_LOCAL_APPDATA, "\\Local Settings\\Application Data", "Local Settings\\Application Data"},
        {CSIDL_COMMON_APPDATA, "\\Application Data", nullptr},
        {CSIDL_COMMON_DOCUMENTS, "\\Personal", nullptr},
    }};
    if (kind == CSIDL_PROGRAM_FILES) return m_strSystemDrive + "\\Program Files";
    for (const CFallback& fallback : kFallbacks) {
        if (fallback.m_kind != kind) continue;
        const CString profiles = m_strWindowsDir + "\\Profiles\\";
        if (fallback.m_win9xName == nullptr) return m_bWinNT4 ? profiles + "All Users" + fallback.m_tail : CString();
        if (m_bWin2000) return {};
        CFileWords words;
        const CString path = profiles + m_strUserName + fallback.m_tail;
        if (m_bWinNT4 || GetMachine().FindPath(path, words) == ERROR_SUCCESS) return path;
        return m_strWindowsDir + "\\" + fallback.m_win9xName;
    }
    return {};
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
