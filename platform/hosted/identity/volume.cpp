// What a Windows volume says of itself: the disk of a Windows NT machine, from NT 4.0 to 11, mounted on the host.
#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <linux/fs.h>
#include <mntent.h>
#include <set>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <utility>

#include "platform/hosted/files/host_file.h"
#include "platform/hosted/hosted_machine.h"
#include "platform/hosted/registry/regf_hive.h"

namespace delvane {
namespace {

constexpr const char* kProfileListKey = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";

// Profiles of no account that anybody works with.
constexpr std::array<const char*, 8> kNoAccounts = {"All Users",    "Default",        "Default User", "defaultuser0",
                                                    "LocalService", "NetworkService", "Public",       "systemprofile"};

// Where Windows keeps a user's classes; below it lies UsrClass.dat.
constexpr std::array<const char*, 2> kClassesFolders = {"\\AppData\\Local\\Microsoft\\Windows",
                                                        "\\Local Settings\\Application Data\\Microsoft\\Windows"};

std::string NameOf(const std::string& hostPath) { return hostPath.substr(hostPath.rfind('/') + 1); }

// "\x20" as it stands in names of /dev/disk.
std::string Unescape(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        unsigned byte = 0;
        const std::string_view digits = text.starts_with("\\x") ? text.substr(2, 2) : std::string_view();
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
        const bool isEscape = digits.size() == 2 && error == std::errc() && end == digits.data() + digits.size();
        plain += isEscape ? static_cast<char>(byte) : text.front();
        text.remove_prefix(isEscape ? 4 : 1);
    }
    return plain;
}

// What is mounted at the folder; empty if nothing is.
std::string MountSource(const std::string& folder) {
    const std::unique_ptr<FILE, int (*)(FILE*)> list(setmntent("/proc/self/mounts", "re"), &endmntent);
    std::string source;
    std::vector<char> line(std::size_t{1} << 16);
    for (mntent entry{};
         list != nullptr && getmntent_r(list.get(), &entry, line.data(), static_cast<int>(line.size()));) {
        if (entry.mnt_dir == folder) source = entry.mnt_fsname;
    }
    return source;
}

std::string LabelOfDevice(const std::string& device) {
    struct stat wanted {};
    if (stat(device.c_str(), &wanted) != 0 || !S_ISBLK(wanted.st_mode)) return {};
    const std::string labels = "/dev/disk/by-label/";
    for (const std::string& name : NamesIn(labels)) {
        struct stat status {};
        if (stat((labels + name).c_str(), &status) == 0 && S_ISBLK(status.st_mode) &&
            status.st_rdev == wanted.st_rdev) {
            return Unescape(name);
        }
    }
    return {};
}

class CVolumeMachine : public CHostedMachine {
public:
    // The identity is in SOFTWARE, SYSTEM and the user's NTUSER.DAT. The account is the one that DELVANE_USER names; by
    // default the only one, or the one whose hive was written last. Without a whole SOFTWARE and SYSTEM there is no
    // machine to take a snapshot of, nor where the account is not there; any other hive costs what it would have said.
    explicit CVolumeMachine(const std::string& folder)
        : m_strFolder(folder), m_strWindowsFolder(FindWindowsFolder(folder)) {
        SetPaths(VolumeAsDrive(folder));
        ChooseProfile();
        ReadRegistry();
    }

    CString GetSystemDirectory() override { return GetWindowsDirectory() + "\\System32"; }

protected:
    CString FindUserName() override { return m_profile.m_strName; }

    void ReadRegistry() final {
        BeginRegistry();
        m_bAllHives = false;
        m_machineRoot = m_pRegistry->AddHive(std::make_unique<CHive>());
        m_pRegistry->SetRoot(HKEY_LOCAL_MACHINE, {m_machineRoot, {}});
        AddSystemHive("SOFTWARE", true);
        MountControlSet(AddSystemHive("SYSTEM", true));
        m_userRoot = {};
        if (m_profile.m_strHive.empty()) return;
        m_userRoot = AddHiveFile(m_profile.m_strHive, "HKCU stays empty");
        m_pRegistry->SetRoot(HKEY_CURRENT_USER, {m_userRoot, {}});
    }

    void CompleteRegistry() override {
        if (m_bAllHives) return;
        m_bAllHives = true;
        AddSystemHive("SAM", false);
        AddSystemHive("SECURITY", false);
        const auto user = MountUserClasses();
        for (const CString& sid : m_pRegistry->ListSubkeys(HKEY_LOCAL_MACHINE, kProfileListKey)) {
            const CString key = CString(kProfileListKey) + "\\" + sid;
            const auto profile = FindText(false, key.c_str(), "ProfileImagePath");
            if (profile && mbsicmp(Expand(*profile), m_profile.m_strFolder) == 0) m_pRegistry->SetUserSid(sid);
        }
        const auto machine = m_pRegistry->Find(HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes");
        if (user) {
            m_pRegistry->SetRoot(HKEY_CLASSES_ROOT,
                                 {user->m_first, machine ? machine->m_first : CHostedRegistry::CPlace()});
        } else if (machine) {
            m_pRegistry->SetRoot(HKEY_CLASSES_ROOT, *machine);
        }
    }

    CString FindWindowsDirectory() override {
        const CString root = FindText(false, kVersionKey, "SystemRoot").value_or("");
        return IsPrefixNoCase("C:\\", root) ? root : "C:\\" + m_strWindowsFolder;
    }

    // What Windows puts into the environment when a user logs on.
    std::optional<CString> FindProfileVariable(const CString& name) override {
        const auto is = [&name](const char* other) { return mbsicmp(name, other) == 0; };
        if (is("USERPROFILE")) return m_profile.m_strFolder;
        if (is("APPDATA")) return FindFolder(CSIDL_APPDATA);
        if (is("LOCALAPPDATA")) return FindFolder(CSIDL_LOCAL_APPDATA);
        if (is("ProgramFiles")) return FindFolder(CSIDL_PROGRAM_FILES);
        if (is("PUBLIC")) return FindProfileListText("Public");
        if (!is("ALLUSERSPROFILE") && !is("ProgramData")) return std::nullopt;
        if (auto folder = FindProfileListText("ProgramData")) return folder;
        // Before Vista: the name of a folder beside the users'.
        const auto parent = FindProfileListText("ProfilesDirectory");
        const auto folder = FindProfileListText("AllUsersProfile");
        return parent && folder ? std::optional(*parent + "\\" + *folder) : std::nullopt;
    }

    // A folder that is no mount point is a copy, and the label of the disk that it lies on says nothing about it.
    std::uint32_t FindLabel(const CHostedDrive& drive, CString& label) override {
        label.clear();
        const std::string source = MountSource(drive.m_strRealRoot);
        if (source.empty()) return ERROR_SUCCESS;
        std::array<char, FSLABEL_MAX> text{};
        const CDescriptor root(open(drive.m_strRealRoot.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!root) return Win32Error(errno);
        const bool isTold = ioctl(root.Get(), FS_IOC_GETFSLABEL, text.data()) == 0;
        label = isTold ? CString(text.data(), strnlen(text.data(), text.size())) : LabelOfDevice(source);
        return ERROR_SUCCESS;
    }

private:
    struct CProfile {
        CString m_strName;            // of its folder
        CString m_strFolder;          // as a machine path
        std::string m_strHive;        // NTUSER.DAT, on the host
        std::int64_t m_nWritten = 0;  // when that was written last, in nanoseconds since 1970
    };

    void ChooseProfile() {
        const std::vector<CProfile> profiles = FindProfiles();
        const CString wanted = GetVariable("DELVANE_USER");
        const CProfile* chosen = nullptr;
        for (const CProfile& profile : profiles) {
            if (!wanted.empty() && mbsicmp(profile.m_strName, wanted) != 0) continue;
            if (chosen == nullptr || profile.m_nWritten > chosen->m_nWritten) chosen = &profile;
        }
        if (chosen != nullptr) {
            m_profile = *chosen;
        } else if (wanted.empty()) {
            m_notices.push_back({"no account of " + m_strFolder + " has a registry hive (NTUSER.DAT); HKCU is empty"});
        } else {
            std::vector<CString> accounts;
            for (const CProfile& profile : profiles)
                accounts.push_back(profile.m_strName);
            RefuseUser(m_strFolder, wanted, accounts);
        }
    }

    std::vector<CProfile> FindProfiles() {
        std::vector<CProfile> profiles;
        std::set<std::pair<dev_t, ino_t>> seen;  // one of the folders may be a link to another
        for (const CString& parent : {CString("C:\\Users"), CString("C:\\Documents and Settings"),
                                      "C:\\" + m_strWindowsFolder + "\\Profiles"}) {
            const auto hostParent = m_paths.Find(parent);
            for (const std::string& name : hostParent ? NamesIn(*hostParent) : std::vector<std::string>()) {
                const bool isAccount = std::none_of(kNoAccounts.begin(), kNoAccounts.end(),
                                                    [&](const char* other) { return mbsicmp(name, other) == 0; });
                if (!isAccount || name.starts_with('.')) continue;
                const auto hive = m_paths.Find(parent + "\\" + name + "\\NTUSER.DAT");
                struct stat status {};
                if (!hive || stat(hive->c_str(), &status) != 0) {
                    if (IsNothing(errno)) continue;
                    const std::uint32_t code = Win32Error(errno);
                    const std::string path = *hostParent + "/" + name + "/NTUSER.DAT";
                    m_notices.push_back({path + ": " + ErrorWords(code) + "; the account is left out", path, code});
                    continue;
                }
                if (!S_ISREG(status.st_mode) || !seen.emplace(status.st_dev, status.st_ino).second) continue;
                profiles.push_back({name, "C:\\" + NameOf(*hostParent) + "\\" + name, *hive,
                                    status.st_mtim.tv_sec * std::int64_t{1'000'000'000} + status.st_mtim.tv_nsec});
                if (parent.ends_with("\\Profiles")) profiles.back().m_strFolder = parent + "\\" + name;
            }
        }
        return profiles;
    }

    CHostedRegistry::CPlace AddHiveFile(const std::string& hostPath, const CString& loss) {
        m_pRegistry->Watch(hostPath);
        for (const std::string& log : CRegfHive::FindLogs(hostPath))
            m_pRegistry->Watch(log);
        CNotice problem;
        std::unique_ptr<CHive> hive = CRegfHive::Open(hostPath, problem);
        return AddHive(std::move(hive), std::move(problem), loss);
    }

    CHostedRegistry::CPlace AddSystemHive(const char* name, bool isMachine) {
        const CString folder = "\\" + m_strWindowsFolder + "\\System32\\config";
        const auto hostPath = m_paths.Find("C:" + folder + "\\" + name);
        const CString loss = isMachine ? CString() : CString("HKLM\\") + name + " is left out";
        CHostedRegistry::CPlace hive;
        if (hostPath) {
            hive = AddHiveFile(*hostPath, loss);
        } else {
            const std::string path = m_paths.Find("C:" + folder).value_or(m_strFolder) + "/" + name;
            AddHive(nullptr, {path + " is missing", path, ERROR_FILE_NOT_FOUND}, loss);
        }
        if (hive) m_pRegistry->Mount(m_machineRoot, name, hive);
        return hive;
    }

    // A running Windows shows the set that it was started with under a name of its own.
    void MountControlSet(CHostedRegistry::CPlace system) {
        if (!system) return;
        const auto number = m_pRegistry->FindNumber(HKEY_LOCAL_MACHINE, "SYSTEM\\Select", "Current");
        std::array<char, 24> name{};
        std::snprintf(name.data(), name.size(), "ControlSet%03u", number.value_or(0));
        const auto set = m_pRegistry->Find(HKEY_LOCAL_MACHINE, CString("SYSTEM\\") + name.data());
        if (set) {
            m_pRegistry->Mount(system, "CurrentControlSet", set->m_first);
        } else {
            m_pRegistry->AddProblem({"the hive SYSTEM of " + m_strFolder +
                                     " does not tell the control set in use; CurrentControlSet is missing"});
        }
    }

    // The user's classes have a hive of their own since Windows 2000. It counts below HKCR even where the user's hive
    // that it belongs into cannot be read.
    std::optional<CHostedRegistry::CLayers> MountUserClasses() {
        std::optional<std::string> hostPath;
        for (const char* const folder : kClassesFolders) {
            if (hostPath || m_profile.m_strFolder.empty()) continue;
            hostPath = m_paths.Find(m_profile.m_strFolder + folder + "\\UsrClass.dat");
            if (hostPath || IsNothing(errno)) continue;
            const std::uint32_t code = Win32Error(errno);
            const std::string path = m_paths.Find(m_profile.m_strFolder).value_or(m_strFolder) + "/.../UsrClass.dat";
            m_pRegistry->AddProblem({path + ": " + ErrorWords(code) + "; the user's classes are left out", path, code});
        }
        CHostedRegistry::CPlace classes;
        if (hostPath) classes = AddHiveFile(*hostPath, "the user's classes are left out");
        if (!m_userRoot) return classes ? std::optional(CHostedRegistry::CLayers{classes, {}}) : std::nullopt;
        if (classes) {
            auto software = m_pRegistry->Find(HKEY_CURRENT_USER, "Software");
            if (!software) {
                software = {m_pRegistry->AddHive(std::make_unique<CHive>()), {}};
                m_pRegistry->Mount(m_userRoot, "Software", software->m_first);
            }
            m_pRegistry->Mount(software->m_first, "Classes", classes);
        }
        return m_pRegistry->Find(HKEY_CURRENT_USER, "Software\\Classes");
    }

    std::optional<CString> FindProfileListText(const char* name) {
        const auto text = FindText(false, kProfileListKey, name);
        return text ? std::optional(Expand(*text)) : std::nullopt;
    }

    const std::string m_strFolder;
    const std::string m_strWindowsFolder;
    CProfile m_profile;  // the account's, all empty where there is none
    CHostedRegistry::CPlace m_machineRoot;
    CHostedRegistry::CPlace m_userRoot;
    bool m_bAllHives = false;  // those that the identity does not need are in the registry too
};

}  // namespace

std::unique_ptr<CHostedMachine> MakeVolume(const std::string& folder) {
    return std::make_unique<CVolumeMachine>(folder);
}

}  // namespace delvane
