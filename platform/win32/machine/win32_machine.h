// The machine that the program runs on, by the calls of the Windows API in its code page.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "platform/win32/machine/file_search.h"
#include "platform/win32/machine/registry.h"

namespace delvane {

class CWin32Machine : public CMachine {
public:
    // The folder of the program's own files, without a backslash at its end.
    explicit CWin32Machine(CString programFolder);
    ~CWin32Machine() override;

    bool IsPresent() const override { return true; }
    CString GetProblem() const override { return {}; }
    std::vector<CString> TakeNotices() override;

    CVersionRecord GetVersion() override;
    bool GetUserName(CString& name) override;
    bool GetComputerName(CString& name) override;
    CString GetSystemDirectory() override;
    CString GetWindowsDirectory() override;
    CString GetTempPath() override;
    CString GetModuleFileName() override { return m_programFolder + "\\delvane.exe"; }
    CString GetDocumentFolder() override;
    std::uint64_t GetSystemTime() override;
    CFolderFunction LoadFolderLibrary() override;

    std::uint32_t GetLogicalDrives() override;
    std::uint32_t GetDriveType(std::string_view root) override;
    std::uint32_t GetVolumeLabel(std::string_view root, CString& label) override;
    std::uint32_t GetConnection(std::string_view name, CString& share) override;

    std::unique_ptr<CFileSearch> OpenSearch(std::string_view path) override { return m_searches.Open(path); }
    bool FindPath(std::string_view path, CFileWords& words) override { return CSearchSet::FindPath(path, words); }

    std::uint32_t RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) override {
        return m_registry.OpenKey(parent, name, key);
    }
    void RegCloseKey(HKEY key) override { m_registry.CloseKey(key); }
    std::uint32_t RegQueryInfoKey(HKEY key, CKeyInfo& info) override { return m_registry.QueryInfo(key, info); }
    std::uint32_t RegEnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type, CRoom& data) override {
        return m_registry.EnumValue(key, index, name, type, data);
    }
    std::uint32_t RegEnumKeyEx(HKEY key, std::uint32_t index, CRoom& name) override {
        return m_registry.EnumKey(key, index, name);
    }
    std::uint32_t RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) override {
        return m_registry.QueryValue(key, name, type, data);
    }

    bool MapAndLoad(std::string_view path, CLoadedImage& image) override;
    std::unique_ptr<const CVersionInfo> GetFileVersionInfo(std::string_view path) override;

    bool FileExists(std::string_view path) override;
    bool DirectoryExists(std::string_view path) override;
    bool CreateDirectory(std::string_view path) override;
    bool DeleteFile(std::string_view path) override;
    CFileBytes ReadFile(std::string_view path, std::uint64_t limit) override;
    CFileBytes ReadFileHead(std::string_view path, std::size_t size) override;
    std::unique_ptr<CFileWriter> CreateFile(std::string_view path) override;
    std::unique_ptr<std::ostream> CreateTextFile(std::string_view path) override;
    CString GetDisplayPath(std::string_view path) const override { return CString(path); }
    bool LockProgramFolder() override;
    void OpenDocument(std::string_view path) override;

private:
    class CLock;

    CString m_programFolder;
    CSearchSet m_searches;
    CWin32Registry m_registry;
    std::size_t m_nSearchNotices = 0;  // how many were taken
    std::size_t m_nRegistryNotices = 0;
    std::unique_ptr<CLock> m_pLock;
};

}  // namespace delvane
