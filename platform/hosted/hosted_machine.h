// A machine whose disks and registry lie in a folder of the host: a Wine prefix or a Windows volume.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/hosted/choice.h"
#include "platform/hosted/files/file_search.h"
#include "platform/hosted/files/path_map.h"
#include "platform/hosted/identity/identity.h"
#include "platform/hosted/registry/registry.h"
#include "platform/machine.h"

namespace delvane {

class CHostedMachine : public CMachine {
public:
    explicit CHostedMachine(CMachineChoice choice);

    const CPathMap& GetPaths() const { return m_paths; }

    bool IsPresent() const override { return m_pIdentity != nullptr && m_pIdentity->GetProblem().empty(); }
    CString GetProblem() const override {
        return m_pIdentity != nullptr ? m_pIdentity->GetProblem() : m_choice.m_strProblem;
    }
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

    void BeginWalk() override;
    void PassOver(const std::vector<CString>& folders) override { m_searches.PassOver(folders); }

    std::unique_ptr<CFileSearch> OpenSearch(std::string_view path, std::uint32_t& error) override {
        return m_searches.Open(path, error);
    }
    std::uint32_t FindPath(std::string_view path, CFileWords& words) override {
        return m_searches.FindPath(path, words);
    }

    std::uint32_t RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) override {
        return GetRegistry().OpenKey(parent, name, key);
    }
    void RegCloseKey(HKEY key) override { GetRegistry().CloseKey(key); }
    std::uint32_t RegQueryInfoKey(HKEY key, CKeyInfo& info) override { return GetRegistry().QueryInfo(key, info); }
    std::uint32_t RegEnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type, CRoom& data) override {
        return GetRegistry().EnumValue(key, index, name, type, data);
    }
    std::uint32_t RegEnumKeyEx(HKEY key, std::uint32_t index, CRoom& name) override {
        return GetRegistry().EnumKey(key, index, name);
    }
    std::uint32_t RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) override {
        return GetRegistry().QueryValue(key, name, type, data);
    }

    bool MapAndLoad(std::string_view path, CLoadedImage& image) override;
    std::unique_ptr<const CVersionInfo> GetFileVersionInfo(std::string_view path) override;

private:
    CHostedRegistry& GetRegistry();

    CMachineChoice m_choice;
    std::unique_ptr<CMachineIdentity> m_pIdentity;  // null without a machine
    CPathMap m_paths;
    CSearchSet m_searches;
    std::shared_ptr<CHostedRegistry> m_pRegistry;  // read when it is first asked for
    std::set<CString> m_told;                      // the notices that were taken
};

}  // namespace delvane
