// What a Wine prefix says of itself: version, names, folders and the kinds of its drives, out of its registry files.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/hosted/path_map.h"
#include "platform/hosted/prefix_registry.h"
#include "platform/hosted/registry_lookup.h"
#include "platform/machine.h"

namespace delvane {

class CPrefixIdentity {
public:
    // Reads system.reg and user.reg of the folder. What is missing there leaves its answers empty; what is damaged is
    // told in one sentence each.
    explicit CPrefixIdentity(const std::string& folder);

    const std::vector<CString>& GetNotices() const { return m_notices; }
    // Why this is no machine to take a snapshot of: system.reg is not whole, or DELVANE_USER names no account of it.
    // One sentence, among the notices too; empty where all is well.
    const CString& GetProblem() const { return m_strProblem; }

    CVersionRecord GetVersion() const;
    CString GetUserName() const;
    CString GetComputerName() const;
    CString GetWindowsDirectory() const;
    CString GetTempPath() const;
    // The folder of a CSIDL number; nothing where the prefix does not know it.
    std::optional<CString> GetFolder(int kind) const;
    bool ShowsDotFiles() const;
    // The drives that the prefix links to, in the order of their letters.
    std::vector<CHostedDrive> GetDrives() const;

    // The registry, out of the same texts while their files are as they were. The first call gives the texts away.
    std::unique_ptr<CHostedRegistry> LoadRegistry();

private:
    std::unique_ptr<CRegistryLookup> ReadRegistry(const CPrefixText& text, const std::vector<std::string>& keys);
    // The text with each %NAME% that is known replaced.
    CString Expand(const CString& text) const;
    std::optional<CString> FindVariable(const CString& name) const;
    std::optional<std::uint32_t> FindDriveKind(char letter) const;
    void CheckUser();
    void Refuse(CString problem);

    std::string m_folder;
    std::optional<CPrefixText> m_systemText;
    std::optional<CPrefixText> m_userText;
    std::vector<CString> m_notices;
    CString m_strProblem;
    std::unique_ptr<CRegistryLookup> m_pSystem;  // HKLM
    std::unique_ptr<CRegistryLookup> m_pUser;    // HKCU
};

}  // namespace delvane
