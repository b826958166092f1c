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
// On the host, the folders that are there on the way to it.
std::vector<std::string> PartsOfWindowsFolder(const std::string& volume);

class CVolumeIdentity : public CMachineIdentity {
public:
    // The identity is in SOFTWARE, SYSTEM and the user's NTUSER.DAT. The account is the one that DELVANE_USER names; by
    // default the only one, or the one whose hive was written last. Without a whole SOFTWARE and SYSTEM there is no
    // machine to take a snapshot of, nor where the account is not there; any other hive costs what it would have said.
    explicit CVolumeIdentity(std::string folder);

    CString GetUserName() const override { return m_strAccount; }
    CString GetSystemDirectory() const override { return GetWindowsDirectory() + "\\System32"; }
    std::vector<CHostedDrive> GetDrives() const override;
    std::uint32_t GetVolumeLabel(const CHostedDrive& drive, CString& label) const override;
    CDiskRules GetDiskRules() const override;

protected:
    void ReadRegistry() final;
    void CompleteRegistry() override;
    CString FindWindowsDirectory() const override;
    std::optional<CString> FindProfileVariable(const CString& name) const override;

private:
    struct CProfile {
        CString m_strName;            // of its folder
        CString m_strFolder;          // as a machine path
        std::string m_strHive;        // NTUSER.DAT, on the host
        std::int64_t m_nWritten = 0;  // when that was written last, in nanoseconds since 1970
    };

    void ChooseProfile();
    std::vector<CProfile> FindProfiles();
    std::unique_ptr<CHive> OpenHive(const std::string& hostPath, CNotice& problem);
    CHostedRegistry::CPlace AddSystemHive(const char* name, bool isMachine);
    void MountControlSet(CHostedRegistry::CPlace system);
    std::optional<CHostedRegistry::CLayers> MountUserClasses();
    std::optional<CString> FindProfileListText(const char* name) const;

    std::string m_strFolder;
    CPathMap m_paths;  // of the volume as drive C:
    std::string m_strWindowsFolder;
    CString m_strAccount;
    CString m_strProfile;       // the account's folder, as a machine path
    std::string m_strUserHive;  // its NTUSER.DAT, on the host; empty where there is no account
    CHostedRegistry::CPlace m_machineRoot;
    CHostedRegistry::CPlace m_userRoot;
    bool m_bComplete = false;  // the hives that identity does not need are in the registry too
};

}  // namespace delvane
