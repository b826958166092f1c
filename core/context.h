// The one global object of a run: what the program knows of the machine, what it was told to do, and its two small
// files, the configuration and the error log.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/host.h"
#include "platform/machine.h"
#include "platform/text.h"
#include "platform/toolkit.h"

namespace delvane {

using CStringList = std::vector<CString>;

// Constructed (the defaults below), initialised (Initialize), configured (ParseCommandLine). After that a capture and
// a comparison only read it, but for the caches of GetFolder and GetResultsDir.
class CRunContext {
public:
    CRunContext() = default;
    CRunContext(const CRunContext&) = delete;
    CRunContext& operator=(const CRunContext&) = delete;

    // Machine and host come first: nothing else here works without them.
    void SetSystem(CSystem system) { m_system = std::move(system); }
    CMachine& GetMachine() const { return *m_system.m_pMachine; }
    CHost& GetHost() const { return *m_system.m_pHost; }

    // The window system of a visible run.
    void SetToolkit(std::unique_ptr<CToolkit> toolkit) { m_pToolkit = std::move(toolkit); }
    CToolkit& GetToolkit() const { return *m_pToolkit; }

    // Reads the identity and the folders of the machine and the stored options, and deletes the error log of an
    // earlier run. Fails nowhere.
    void Initialize();
    // Reads the switches of the command line into the fields. A bad switch goes to the error log, and the next is read.
    void ParseCommandLine();

    // Whether a capture reads the drive; a name begins with an upper-case letter and a colon.
    bool IsDriveSelected(std::string_view name) const;
    // False for a full path on m_lstSkipDirs and for a plain name on m_lstSkipNames.
    bool IsDirAllowed(std::string_view path) const;
    bool IsNameAllowed(std::string_view name) const;
    // The folder of a CSIDL kind, empty where the machine has none; null for a number that is none of them.
    const CString* GetFolder(int kind);
    // The program's folder and that of the results, as the machine has them: no capture reads them.
    std::vector<CString> GetOwnFolders();
    // Says so where the program's own folders hold folders of the machine.
    void TellSkippedFolders();
    // The directory of snapshots and reports, made when it is missing. May end in a backslash.
    const CString& GetResultsDir();
    // The help page: beside the program's own files, else among the documents that came with the program.
    CString GetHelpPath() const;
    std::uint64_t GetSystemFileTime() const { return GetHost().GetSystemTime(); }

    // The configuration file. False where it cannot be opened or is shorter than its ten values; then no field changes.
    bool ReadConfig();
    bool WriteConfig() const;
    // The error log, created (or emptied) at the first call. A log that cannot be created takes entries and loses them.
    std::ostream& GetErrorLog();
    // Writes a plain sentence to standard error, once: the same sentence a second time is not said again, and false.
    bool Say(CString sentence);
    // Says what the machine has found wrong with itself since the last call.
    void TellNotices();
    // The registry files among it that are missing, damaged or cannot be read, of the whole run.
    const std::vector<CNotice>& GetRegistryProblems() const { return m_lstRegistryProblems; }
    // What TellNotices and TellSkippedFolders have said since the last call, for a message box.
    CStringList TakeNotices() { return std::exchange(m_lstNotices, {}); }

    bool m_bWin98 = false;
    bool m_bWinNT4 = false;
    bool m_bWin2000 = false;  // and every later one

    std::uint32_t m_dwLogicalDrives = 0;  // bit 0 is drive A:, in this mask and in the next two
    std::uint32_t m_dwDrivesOn = 0;       // captured whatever their kind
    std::uint32_t m_dwDrivesOff = 0;      // not captured
    bool m_bRemovableDrives = false;
    bool m_bCompactDiscs = false;
    bool m_bNetworkDrives = false;
    bool m_bHardDrives = true;  // also the gate for the other kinds
    bool m_bHklm = true;
    bool m_bHkcr = true;
    bool m_bHkcu = true;
    bool m_bExtensions = true;

    CFolderFunction m_pfnGetFolderPath;  // empty where the machine has no folder library; owns the library

    CString m_strUserName;
    CString m_strComputerName;
    CString m_strOsName;
    CString m_strProgramDir;  // no backslash at the end, as in all that follow but m_strResultsDir
    CString m_strResultsDir;
    CStringList m_lstSkipDirs;
    CStringList m_lstSkipNames;
    CString m_strWindowsDir;
    CString m_strSystemDir;
    CString m_strSystemDrive;

    CString m_strProgramFiles;  // from here on the caches of GetFolder
    CString m_strAppData;
    CString m_strCommonAppData;
    CString m_strLocalAppData;
    CString m_strPersonal;
    CString m_strCommonDocuments;
    CString m_strStartMenu;
    CString m_strCommonStartMenu;

    CString m_strBaselineName;
    CString m_strCurrentName;
    bool m_bCreateBaseline = false;
    bool m_bCreateCurrent = false;
    bool m_bGenerateReport = false;
    bool m_bUseExistingReport = false;
    bool m_bDisplayReport = false;
    bool m_bSilent = false;
    bool m_bNoLogo = false;

    std::unique_ptr<std::ostream> m_pErrorLog;

private:
    void Notice(const CString& sentence);
    void ReadSystemVersion();
    void FillSkipLists();
    CString GetConfigPath() const { return m_strProgramDir + "\\delvane.cfg"; }
    CString GetErrorLogPath() const { return m_strProgramDir + "\\delvane.err"; }

    // The command line, in command_line.cpp.
    void ParseSwitch(const CString& token);
    void ParseName(const CString& token, CString& name, bool& create);
    void ParseReportFlags(const CString& token);
    void ParseDrive(const CString& token);
    void ParseOption(const CString& token, std::size_t wordLength, bool& option);
    void BadSwitch(const CString& token, std::string_view reason = "there is no such switch");
    void PassOver(const CString& token, std::string_view reason);

    CSystem m_system;
    std::unique_ptr<CToolkit> m_pToolkit;
    std::set<CString> m_said;
    CStringList m_lstPassedOver;  // what an unattended run says of switches that do nothing
    std::vector<CNotice> m_lstRegistryProblems;
    CStringList m_lstNotices;  // for the next message box
};

extern CRunContext theContext;

}  // namespace delvane
