// What a Windows volume says of itself: the disk of a Windows NT machine, from NT 4.0 to 11, mounted on the host.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/hosted/identity/identity.h"

namespace delvane {

// The folder of Windows on the volume, in its own spelling ("WINNT"): the one that holds System32/config/SOFTWARE,
// found without regard to case. Empty where there is none.
std::string FindWindowsFolder(const std::string& volume);

class CVolumeIdentity : public CMachineIdentity {
public:
    // Reads the hives that hold the identity: SOFTWARE, SYSTEM and the user's NTUSER.DAT. The account is the one that
    // DELVANE_USER names; by default the only one, or the one whose hive was written last. A hive that is missing or
    // damaged costs what it would have said; an account that is not there makes this no machine to take a snapshot of.
    explicit CVolumeIdentity(std::string folder);

    CString GetUserName() const override { return m_strAccount; }
    CString GetWindowsDirectory() const override;
    CString GetSystemDirectory() const override { return GetWindowsDirectory() + "\\System32"; }
    std::vector<CHostedDrive> GetDrives() const override;
    std::uint32_t GetVolumeLabel(const CHostedDrive& drive, CString& label) const override;
    CDiskRules GetDiskRules() const override;
    std::shared_ptr<CHostedRegistry> LoadRegistry() override;

protected:
    std::optional<CString> FindText(bool user, const char* key, std::string_view name) const override;
    std::optional<std::uint32_t> FindNumber(bool user, const char* key, std::string_view name) const override;
    std::optional<CString> FindProfileVariable(const CString& name) const override;

private:
    struct CProfile {
        CString m_name;               // of its folder
        CString m_folder;             // as a machine path
        std::string m_hive;           // NTUSER.DAT, on the host
        std::int64_t m_nWritten = 0;  // when that was written last, in nanoseconds since 1970
    };

    void ChooseProfile();
    std::vector<CProfile> FindProfiles() const;
    void ReadIdentityHives();
    void ReadOtherHives();
    CHostedRegistry::CPlace AddHive(const std::string& hostPath);
    CHostedRegistry::CPlace AddSystemHive(const char* name);
    void MountControlSet(CHostedRegistry::CPlace system);
    void MountUserClasses();
    std::optional<CString> FindProfileListText(const char* name) const;

    std::string m_folder;
    CPathMap m_paths;  // of the volume as drive C:
    std::string m_windowsFolder;
    CString m_strAccount;
    CString m_strProfile;    // the account's folder, as a machine path
    std::string m_userHive;  // its NTUSER.DAT, on the host; empty where there is no account
    std::shared_ptr<CHostedRegistry> m_pRegistry;
    CHostedRegistry::CPlace m_machineRoot;
    CHostedRegistry::CPlace m_userRoot;
    bool m_bComplete = false;  // the hives that identity does not need are in the registry too
};

}  // namespace delvane
