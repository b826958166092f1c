// What a hosted machine says of itself: version, names, folders and drives, out of the registry that a capture reads.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/hosted/files/path_map.h"
#include "platform/hosted/registry/registry.h"
#include "platform/machine.h"

namespace delvane {

// The rules of the disk that a search follows.
struct CDiskRules {
    bool m_bWine = true;                  // attributes and times as Wine makes them up; else those of a Windows volume
    bool m_bDotFilesHidden = true;        // names that begin with a period, under Wine
    std::string m_strRoot;                // links do not lead out of this folder of the host; empty: they may
    std::vector<std::string> m_unlisted;  // directories of the host that no program of the machine may wander into
};

// Where the registry says nothing, answers stay empty.
class CMachineIdentity {
public:
    virtual ~CMachineIdentity() = default;

    // What is wrong so far. The problem, empty where all is well, tells why this is no machine to take a snapshot of;
    // it is among the notices too.
    std::vector<CNotice> GetNotices() const;
    const CString& GetProblem() const { return m_strRegistryProblem.empty() ? m_strUserProblem : m_strRegistryProblem; }

    virtual CVersionRecord GetVersion() const;
    CString GetComputerName() const;
    CString GetTempPath() const;
    // The folder of a CSIDL number; nothing where the machine does not know it.
    std::optional<CString> GetFolder(int kind) const;

    // The letters of drives in folders are upper case, whatever the registry has.
    CString GetWindowsDirectory() const;
    virtual CString GetSystemDirectory() const = 0;
    virtual CString GetUserName() const = 0;
    // In the order of their letters.
    virtual std::vector<CHostedDrive> GetDrives() const = 0;
    virtual std::uint32_t GetVolumeLabel(const CHostedDrive& drive, CString& label) const = 0;  // an error number
    virtual CDiskRules GetDiskRules() const = 0;
    // The registry for a capture, read anew when its files have changed since it was read last.
    std::shared_ptr<CHostedRegistry> LoadRegistry();

protected:
    // Puts m_pRegistry together, as far as the identity needs it; called by the constructor as well. Then, for a
    // capture, the rest.
    virtual void ReadRegistry() = 0;
    virtual void CompleteRegistry() {}
    virtual CString FindWindowsDirectory() const = 0;
    // A variable of the machine's environment, beyond those that the registry lists as such.
    virtual std::optional<CString> FindProfileVariable(const CString& name) const = 0;

    // A hive of the machine's own in the registry that is being put together, or of somebody's on it. `hive` is null
    // where its file could not be read, for the reason in `problem`; `loss` tells what that costs. A machine whose own
    // hives are not whole is none to take a snapshot of.
    void BeginRegistry();
    CHostedRegistry::CPlace AddMachineHive(std::unique_ptr<CHive> hive, CNotice problem);
    CHostedRegistry::CPlace AddHive(std::unique_ptr<CHive> hive, CNotice problem, const CString& loss);

    // A value of the registry, a path like "Software\Microsoft" without regard to case. `user` stands for HKCU.
    std::optional<CString> FindText(bool user, const char* key, std::string_view name) const;
    std::optional<std::uint32_t> FindNumber(bool user, const char* key, std::string_view name) const;
    std::optional<CString> FindVariable(const CString& name) const;
    // The text with each %NAME% that is known replaced.
    CString Expand(const CString& text) const;
    // The account that DELVANE_USER names is none of these.
    void RefuseUser(const std::string& folder, const CString& name, const std::vector<CString>& accounts);

    std::shared_ptr<CHostedRegistry> m_pRegistry;
    std::vector<CNotice> m_notices;  // beside those of the registry

private:
    CString m_strUserProblem;
    CString m_strRegistryProblem;
    mutable int m_nExpanding = 0;  // variables that stand in each other
    mutable int m_nExpanded = 0;   // variables looked up for one text
};

}  // namespace delvane
