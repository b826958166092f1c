// What a Wine prefix says of itself. HKLM is its system.reg and HKCU its user.reg; HKCR is the machine's classes alone,
// as Wine has it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/hosted/identity/identity.h"

namespace delvane {

class CPrefixIdentity : public CMachineIdentity {
public:
    // Without a whole system.reg there is no machine to take a snapshot of, nor where DELVANE_USER names no account of
    // the prefix.
    explicit CPrefixIdentity(std::string folder);

    CVersionRecord GetVersion() const override;
    CString GetUserName() const override;
    CString GetSystemDirectory() const override;
    std::vector<CHostedDrive> GetDrives() const override;
    std::uint32_t GetVolumeLabel(const CHostedDrive& drive, CString& label) const override;
    CDiskRules GetDiskRules() const override;

protected:
    void ReadRegistry() final;
    void CompleteRegistry() override;
    CString FindWindowsDirectory() const override;
    std::optional<CString> FindProfileVariable(const CString& name) const override;

private:
    std::optional<std::uint32_t> FindDriveKind(char letter) const;
    bool ShowsDotFiles() const;
    void CheckUser();

    std::string m_strFolder;
};

}  // namespace delvane
