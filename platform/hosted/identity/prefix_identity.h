// What a Wine prefix says of itself, out of its two registry files.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/hosted/identity/identity.h"
#include "platform/hosted/registry/prefix_registry.h"
#include "platform/hosted/registry/registry_lookup.h"

namespace delvane {

class CPrefixIdentity : public CMachineIdentity {
public:
    // Reads system.reg and user.reg of the folder. Without a whole system.reg there is no machine to take a snapshot
    // of, nor where DELVANE_USER names no account of the prefix.
    explicit CPrefixIdentity(const std::string& folder);

    CVersionRecord GetVersion() const override;
    CString GetUserName() const override;
    CString GetWindowsDirectory() const override;
    CString GetSystemDirectory() const override;
    std::vector<CHostedDrive> GetDrives() const override;
    std::uint32_t GetVolumeLabel(const CHostedDrive& drive, CString& label) const override;
    CDiskRules GetDiskRules() const override;
    // Out of the same texts while their files are as they were.
    std::shared_ptr<CHostedRegistry> LoadRegistry() override;

protected:
    std::optional<CString> FindText(bool user, const char* key, std::string_view name) const override;
    std::optional<std::uint32_t> FindNumber(bool user, const char* key, std::string_view name) const override;
    std::optional<CString> FindProfileVariable(const CString& name) const override;

private:
    std::unique_ptr<CRegistryLookup> ReadRegistry(const CPrefixText& text, const std::vector<std::string>& keys);
    std::optional<std::uint32_t> FindDriveKind(char letter) const;
    bool ShowsDotFiles() const;
    void CheckUser();

    std::string m_folder;
    std::optional<CPrefixText> m_systemText;
    std::optional<CPrefixText> m_userText;
    std::unique_ptr<CRegistryLookup> m_pSystem;  // HKLM
    std::unique_ptr<CRegistryLookup> m_pUser;    // HKCU
    std::shared_ptr<CHostedRegistry> m_pRegistry;
};

}  // namespace delvane
