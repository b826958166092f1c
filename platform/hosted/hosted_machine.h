// A machine whose disks and registry lie in a folder of the host: a Wine prefix or a Windows volume.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/host.h"
#include "platform/hosted/choice.h"
#include "platform/hosted/files/path_map.h"
#include "platform/hosted/registry/registry.h"
#include "platform/machine.h"

namespace delvane {

// What it says of itself, version, names and folders, comes out of the registry that a capture reads. Where that says
// nothing, answers stay empty.
class CHostedMachine : public CMachine {
public:
    const CPathMap& GetPaths() const { return m_paths; }

    CString GetProblem() const override { return m_strRegistryProblem.empty() ? m_strProblem : m_strRegistryProblem; }

    CVersionRecord GetVersion() override;
    bool GetUserName(CString& name) override;
    bool GetComputerName(CString& name) override;
    // The letters of drives in folders are upper case, whatever the registry has.
    CString GetWindowsDirectory() override;
    CString GetTempPath() override;
    CFolderFunction LoadFolderLibrary() override;

    std::uint32_t GetLogicalDrives() override;
    std::uint32_t GetDriveType(std::string_view root) override;
    std::uint32_t GetVolumeLabel(std::string_view root, CString& label) override;
    std::uint32_t GetConnection(std::string_view, CString&) override { return ERROR_NOT_CONNECTED; }

    void BeginWalk() override;
    CSearchSet& GetSearches() override { return *m_pSearches; }
    // Its files are read anew for a walk where an installation has changed them since the one before.
    CHostedRegistry& GetRegistry() override;

    bool MapAndLoad(std::string_view path, CLoadedImage& image) override;
    std::unique_ptr<const CVersionInfo> GetFileVersionInfo(std::string_view path) override;

protected:
    // Where the registry says what the machine is. The names of the hives are those of HKLM and HKCU.
    static constexpr const char* kVersionKey = "Software\\Microsoft\\Windows NT\\CurrentVersion";
    static constexpr const char* kVolatileEnvironmentKey = "Volatile Environment";

    // Puts m_pRegistry together anew, as far as the identity needs it; called by the constructor as well. Then, for a
    // capture, the rest.
    virtual void ReadRegistry() {}
    virtual void CompleteRegistry() {}
    virtual CString FindUserName() { return {}; }
    virtual CString FindWindowsDirectory() { return {}; }
    // A variable of the machine's environment, beyond those that the registry lists as such.
    virtual std::optional<CString> FindProfileVariable(const CString&) { return {}; }
    virtual std::uint32_t FindLabel(const CHostedDrive&, CString&) { return ERROR_SUCCESS; }  // an error number

    void BeginRegistry();
    // Adds a hive. `hive` is null where its file could not be read, for the reason in `problem`; `loss` tells what that
    // costs, and is empty for a hive of the machine's own: without all of those it is none to take a snapshot of.
    CHostedRegistry::CPlace AddHive(std::unique_ptr<CHive> hive, CNotice problem, const CString& loss);
    void SetPaths(CPathMap paths);

    // A value of the registry, a path like "Software\Microsoft" without regard to case. `user` stands for HKCU.
    std::optional<CString> FindText(bool user, std::string_view key, std::string_view name) const {
        return m_pRegistry->FindText(user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, key, name);
    }
    std::optional<CString> FindFolder(int kind);  // of a CSIDL number
    // The text with each %NAME% that is known replaced.
    CString Expand(const CString& text);
    // The account that DELVANE_USER names is none of these.
    void RefuseUser(const std::string& folder, const CString& name, const std::vector<CString>& accounts);

    CPathMap m_paths;
    std::unique_ptr<CHostedRegistry> m_pRegistry = std::make_unique<CHostedRegistry>();
    CString m_strProblem;            // why this is no machine to take a snapshot of
    std::vector<CNotice> m_notices;  // beside those of the registry

private:
    std::vector<CNotice> GetNotices() override;
    std::optional<CString> FindVariable(const CString& name);

    std::unique_ptr<CSearchSet> m_pSearches;
    bool m_bComplete = false;  // the registry is as a capture wants it
    CString m_strRegistryProblem;
    int m_nExpanding = 0;  // variables that stand in each other
    int m_nExpanded = 0;   // variables looked up for one text
};

// The machine in a folder, and the choice's, which may be none: then what two snapshots hold can still be compared.
std::unique_ptr<CHostedMachine> MakePrefix(const std::string& folder);
std::unique_ptr<CHostedMachine> MakeVolume(const std::string& folder);
std::unique_ptr<CHostedMachine> MakeHostedMachine(const CMachineChoice& choice);

// The host that the machine is examined from, which outlives this: the program's own files, which may lie on its disks.
// `programFolder` is their folder, on the host.
std::unique_ptr<CHost> MakeHostedHost(const CPathMap& paths, const std::string& programFolder);

}  // namespace delvane
