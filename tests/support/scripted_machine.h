// A machine in memory, written as indented text, on which every refusal that real machines make can be staged.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/file_search.h"
#include "platform/host.h"
#include "platform/machine.h"
#include "tests/support/scripted_registry.h"

namespace delvane {

// The text: a drive a line ("C: fixed [Label]"), what it holds indented by two blanks a level below it. A name that
// ends in a backslash is a directory; it may hold single blanks. Behind two blanks, separated by blanks:
//   size=1200  written=2001-02-03T04:05:06  ticks=N (the exact last-write time)  attributes=0x22
//   unreadable (a directory: no search; a file: no words)  cut (the directory's list breaks off)
//   image=pe32|native|dos  version=1.2
class CScriptedMachine : public CMachine {
public:
    explicit CScriptedMachine(std::string_view text = {});

    // The machine's disks from now on. The program's own files and the identity stay.
    void SetDisks(std::string_view text);

    CString GetProblem() const override { return m_bPresent ? "" : "no machine here"; }
    CVersionRecord GetVersion() override { return m_version; }
    bool GetUserName(CString& name) override;
    bool GetComputerName(CString& name) override;
    CString GetSystemDirectory() override { return "C:\\WINNT\\System32"; }
    CString GetWindowsDirectory() override { return "C:\\WINNT"; }
    CString GetTempPath() override { return "C:\\Temp\\"; }
    CFolderFunction LoadFolderLibrary() override;
    std::uint32_t GetLogicalDrives() override;
    std::uint32_t GetDriveType(std::string_view root) override;
    std::uint32_t GetVolumeLabel(std::string_view root, CString& label) override;
    std::uint32_t GetConnection(std::string_view name, CString& share) override;
    void BeginWalk() override {}
    CSearchSet& GetSearches() override { return m_searches; }
    CRegistry& GetRegistry() override { return m_registry; }
    bool MapAndLoad(std::string_view path, CLoadedImage& image) override;
    std::unique_ptr<const CVersionInfo> GetFileVersionInfo(std::string_view path) override;

    CScriptedRegistry m_registry{"HKCR\n  .x\\\nHKCU\n  Software\\\nHKLM\n  SOFTWARE\\\n"};
    bool m_bPresent = true;
    std::vector<CNotice> m_notices;
    CVersionRecord m_version{VER_PLATFORM_WIN32_NT, 5, 0, 2195, "Service Pack 4"};
    CString m_strUser = "tester";
    CString m_strComputer = "BENCH";
    std::map<int, CString> m_folders;  // what the folder library knows
    bool m_bFolderLibrary = true;

    std::vector<CString> m_passedOver;
    std::size_t m_nOpenSearches = 0;
    std::function<void(std::string_view name)> m_onEntry;  // called for each entry that a search delivers

private:
    std::vector<CNotice> GetNotices() override { return m_notices; }
    struct CEntry;
    class CSearch;
    class CSearches : public CSearchSet {
    public:
        explicit CSearches(CScriptedMachine& machine) : m_machine(machine) {}
        void PassOver(const std::vector<CString>& folders) override { m_machine.m_passedOver = folders; }
        std::unique_ptr<CFileSearch> Open(std::string_view path, std::uint32_t& error) override;
        std::uint32_t FindPath(std::string_view path, CFileWords& words) override;

    private:
        CScriptedMachine& m_machine;
    };
    const CEntry* Find(std::string_view path, bool wantsDirectory = false) const;

    CSearches m_searches{*this};
    std::shared_ptr<CEntry> m_pRoot;  // its children are the drives
};

// The program's own files in memory.
class CScriptedHost : public CHost {
public:
    CString GetModuleFileName() override { return m_strProgram; }
    CString GetDocumentFolder() override { return m_strDocuments; }
    std::uint64_t GetSystemTime() override { return m_nNow; }
    bool FileExists(std::string_view path) override;
    bool DirectoryExists(std::string_view path) override;
    bool CreateDirectory(std::string_view path) override;
    bool DeleteFile(std::string_view path) override;
    std::vector<CString> ListFiles(std::string_view folder) override;
    CFileBytes ReadFile(std::string_view path, std::uint64_t limit) override;
    CFileBytes ReadFileHead(std::string_view path, std::size_t size) override;
    std::unique_ptr<CFileWriter> CreateFile(std::string_view path) override;
    std::unique_ptr<std::ostream> CreateTextFile(std::string_view path) override;
    CString GetDisplayPath(std::string_view path) const override { return CString(path); }
    CString GetMachinePath(std::string_view path) const override { return CString(path); }
    bool LockProgramFolder() override { return !m_bLocked; }
    bool OpenDocument(std::string_view path) override {
        if (m_bHasOpener) m_opened.emplace_back(path);
        return m_bHasOpener;
    }

    CString m_strProgram = "C:\\Delvane\\delvane.exe";
    CString m_strDocuments = "C:\\Delvane documents";
    std::uint64_t m_nNow = 126'227'808'000'000'000;  // 1 January 2001
    std::map<CString, CString> m_files;  // the program's own files by path; a full disk or a read-only one refuses more
    std::vector<CString> m_directories = {"C:\\Delvane"};
    bool m_bReadOnly = false;
    bool m_bLocked = false;  // another process has the program's folder
    std::size_t m_nFreeBytes = SIZE_MAX;
    bool m_bHasOpener = true;
    std::vector<CString> m_opened;  // documents

private:
    class CWriter;
    bool MayCreate(std::string_view path);
};

}  // namespace delvane
