// The machine that the program runs on, by the calls of the Windows API in its code page.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "platform/file_search.h"
#include "platform/machine.h"
#include "platform/win32/machine/registry.h"

namespace delvane {

class CWin32Machine : public CMachine {
public:
    bool IsPresent() const override { return true; }
    CString GetProblem() const override { return {}; }
    std::vector<CNotice> TakeNotices() override;

    CVersionRecord GetVersion() override;
    bool GetUserName(CString& name) override;
    bool GetComputerName(CString& name) override;
    CString GetSystemDirectory() override;
    CString GetWindowsDirectory() override;
    CString GetTempPath() override;
    CFolderFunction LoadFolderLibrary() override;

    std::uint32_t GetLogicalDrives() override;
    std::uint32_t GetDriveType(std::string_view root) override;
    std::uint32_t GetVolumeLabel(std::string_view root, CString& label) override;
    std::uint32_t GetConnection(std::string_view name, CString& share) override;

    void BeginWalk() override {
        m_pSearches->BeginWalk();
        m_registry.BeginWalk();
    }
    void PassOver(const std::vector<CString>& folders) override { m_pSearches->PassOver(folders); }

    std::unique_ptr<CFileSearch> OpenSearch(std::string_view path, std::uint32_t& error) override {
        return m_pSearches->Open(path, error);
    }
    std::uint32_t FindPath(std::string_view path, CFileWords& words) override {
        return m_pSearches->FindPath(path, words);
    }

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

private:
    std::unique_ptr<CSearchSet> m_pSearches = MakeSearchSet();
    CWin32Registry m_registry;
    std::size_t m_nSearchNotices = 0;  // how many were taken
    std::size_t m_nRegistryNotices = 0;
};

}  // namespace delvane
