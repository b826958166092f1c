// What a Wine prefix says of itself. HKLM is its system.reg and HKCU its user.reg; HKCR is the machine's classes alone,
// as Wine has it.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/hosted/files/host_file.h"
#include "platform/hosted/hosted_machine.h"
#include "platform/hosted/registry/text_hive.h"

namespace delvane {
namespace {

constexpr const char* kWineKey = "Software\\Wine";
constexpr const char* kWineDrivesKey = "Software\\Wine\\Drives";

// What Wine answers when HKCU\Software\Wine, Version, names another Windows than the registry describes.
struct CWineVersion {
    std::string_view m_name;
    CVersionRecord m_record;
};

std::optional<CVersionRecord> FindWineVersion(std::string_view name) {
    static const CWineVersion kVersions[] = {
        {"win95", {VER_PLATFORM_WIN32_WINDOWS, 4, 0, 0x040003B6, ""}},
        {"win98", {VER_PLATFORM_WIN32_WINDOWS, 4, 10, 0x040A08AE, " A "}},
        {"winme", {VER_PLATFORM_WIN32_WINDOWS, 4, 90, 0x045A0BB8, " "}},
        {"nt351", {VER_PLATFORM_WIN32_NT, 3, 51, 1057, "Service Pack 5"}},
        {"nt40", {VER_PLATFORM_WIN32_NT, 4, 0, 1381, "Service Pack 6a"}},
        {"win2000", {VER_PLATFORM_WIN32_NT, 5, 0, 2195, "Service Pack 4"}},
        {"win2k", {VER_PLATFORM_WIN32_NT, 5, 0, 2195, "Service Pack 4"}},
        {"winxp", {VER_PLATFORM_WIN32_NT, 5, 1, 2600, "Service Pack 3"}},
        {"winxp64", {VER_PLATFORM_WIN32_NT, 5, 2, 3790, "Service Pack 2"}},
        {"win2003", {VER_PLATFORM_WIN32_NT, 5, 2, 3790, "Service Pack 2"}},
        {"vista", {VER_PLATFORM_WIN32_NT, 6, 0, 6002, "Service Pack 2"}},
        {"win2008", {VER_PLATFORM_WIN32_NT, 6, 0, 6002, "Service Pack 2"}},
        {"win7", {VER_PLATFORM_WIN32_NT, 6, 1, 7601, "Service Pack 1"}},
        {"win2008r2", {VER_PLATFORM_WIN32_NT, 6, 1, 7601, "Service Pack 1"}},
        // A program that does not declare itself made for a later Windows is told 6.2.
        {"win8", {VER_PLATFORM_WIN32_NT, 6, 2, 9200, ""}},
        {"win81", {VER_PLATFORM_WIN32_NT, 6, 2, 9200, ""}},
        {"win10", {VER_PLATFORM_WIN32_NT, 6, 2, 9200, ""}},
        {"win11", {VER_PLATFORM_WIN32_NT, 6, 2, 9200, ""}},
    };
    for (const CWineVersion& version : kVersions) {
        if (version.m_name == name) return version.m_record;
    }
    return std::nullopt;
}

bool IsLocked(const std::string& path) {
    const auto file = CHostFile::Open(path);
    struct flock lock {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    return file && fcntl(file->GetDescriptor(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// Whether Wine's server, which keeps the registry of a prefix in memory while programs run, holds the prefix: changes
// of the last half minute are not in its files then. False as well where another user's server cannot be seen.
//
// A server holds a lock on the file "lock" in a directory that bears the numbers of the prefix's device and inode.
// Where that directory lies depends on who built Wine: in /tmp/.wine-UID, or, in Debian's, in /run/user/UID/wine or in
// a folder of a random name in TMPDIR or /tmp, which the file "wineserver" in the prefix tells. The lock is looked at,
// not taken.
bool IsWineRunning(const std::string& prefix) {
    struct stat status {};
    if (stat(prefix.c_str(), &status) != 0) return false;
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "/server-%llx-%llx/lock", static_cast<unsigned long long>(status.st_dev),
                  static_cast<unsigned long long>(status.st_ino));
    const std::string user = std::to_string(status.st_uid);  // a prefix belongs to its user
    std::vector<std::string> folders = {"/tmp/.wine-" + user, "/run/user/" + user + "/wine"};
    if (const std::string runtime = GetVariable("XDG_RUNTIME_DIR"); !runtime.empty()) {
        folders.push_back(runtime + "/wine");
    }
    constexpr std::uint64_t kLongestName = 255;
    if (const auto random = ReadHostFile(prefix + "/wineserver", kLongestName)) {
        const std::string last = random->substr(0, random->find_first_of(std::string_view("\n/\0", 3)));
        for (const std::string& parent : {GetVariable("TMPDIR"), std::string("/tmp")})
            folders.push_back(parent + "/" + last);
    }
    for (const std::string& folder : folders) {
        if (IsLocked(folder + name.data())) return true;
    }
    return false;
}

class CPrefixMachine : public CHostedMachine {
public:
    // Without a whole system.reg there is no machine to take a snapshot of, nor where DELVANE_USER names no account of
    // the prefix.
    explicit CPrefixMachine(const std::string& folder) : m_strFolder(folder) {
        ReadRegistry();
        CheckUser();
        SetPaths({FindDrives(), {{}, !ShowsDotFiles(), {folder, folder + "/dosdevices"}}});
    }

    CVersionRecord GetVersion() override {
        const auto version = FindWineVersion(FindText(true, kWineKey, "Version").value_or(""));
        return version ? *version : CHostedMachine::GetVersion();
    }

    CString GetSystemDirectory() override { return GetWindowsDirectory() + "\\system32"; }

protected:
    // Who the machine is stands in system.reg: a snapshot without it, or with half of it, would be taken for
    // another machine's. Lines that cannot be read and a missing user.reg cost what they would have said.
    void ReadRegistry() final {
        BeginRegistry();
        const auto open = [this](const char* name, CNotice& problem) {
            const std::string path = m_strFolder + name;
            m_pRegistry->Watch(path);
            return CTextHive::Open(path, problem);
        };
        CNotice problem;
        std::unique_ptr<CTextHive> hive = open("/system.reg", problem);
        m_pRegistry->SetRoot(HKEY_LOCAL_MACHINE, {AddHive(std::move(hive), problem, {}), {}});
        hive = open("/user.reg", problem);
        if (hive != nullptr) m_pRegistry->SetUserSid(hive->FindUserSid());
        m_pRegistry->SetRoot(HKEY_CURRENT_USER, {AddHive(std::move(hive), problem, "HKCU stays empty"), {}});
        if (const auto classes = m_pRegistry->Find(HKEY_LOCAL_MACHINE, "Software\\Classes")) {
            m_pRegistry->SetRoot(HKEY_CLASSES_ROOT, *classes);
        }
        // Wine hands out the performance data in place of this key.
        const auto performance = m_pRegistry->Find(HKEY_LOCAL_MACHINE, CString(kVersionKey) + "\\Perflib\\009");
        if (performance) m_pRegistry->SetUnopenable(performance->m_first);
    }

    void CompleteRegistry() override {
        if (!IsWineRunning(m_strFolder)) return;
        m_pRegistry->AddProblem(
            {"a Wine is running on " + m_strFolder +
             ": what it has not written yet is missing from the snapshot; wineserver -w waits for its end"});
    }

    CString FindUserName() override {
        CString name = GetVariable("DELVANE_USER");
        if (name.empty()) name = FindText(true, kVolatileEnvironmentKey, "USERNAME").value_or("");
        if (name.empty()) {
            const passwd* const account = getpwuid(getuid());
            if (account != nullptr) name = account->pw_name;
        }
        return name;
    }

    CString FindWindowsDirectory() override {
        return FindText(false, kVersionKey, "SystemRoot").value_or("C:\\windows");
    }

    std::optional<CString> FindProfileVariable(const CString& name) override {
        if (mbsicmp(name, "USERPROFILE") != 0) return std::nullopt;
        return GetWindowsDirectory().substr(0, 2) + "\\users\\" + FindUserName();
    }

    // Wine keeps the label in a file of its own at the drive's root: the first line, without blanks at its end.
    std::uint32_t FindLabel(const CHostedDrive& drive, CString& label) override {
        constexpr std::uint64_t kLargestLabelFile = 64 * 1024;
        const std::optional<std::string> text = ReadHostFile(drive.m_strRoot + "/.windows-label", kLargestLabelFile);
        if (!text) return errno == ENOENT || errno == EISDIR ? ERROR_SUCCESS : Win32Error(errno);
        label = text->substr(0, text->find('\n'));
        while (!label.empty() && (label.back() == ' ' || label.back() == '\r'))
            label.pop_back();
        return ERROR_SUCCESS;
    }

private:
    // The links are named by a small letter and a colon; those with two colons are devices.
    std::vector<CHostedDrive> FindDrives() const {
        std::vector<CHostedDrive> drives;
        const std::string links = m_strFolder + "/dosdevices/";
        struct stat hostRoot {};
        stat("/", &hostRoot);
        for (char letter = 'A'; letter <= 'Z'; ++letter) {
            CHostedDrive drive;
            drive.m_letter = letter;
            drive.m_strRoot = links + static_cast<char>(letter - 'A' + 'a') + ':';
            struct stat status {};
            const bool isLink = lstat(drive.m_strRoot.c_str(), &status) == 0;
            // A prefix that was copied, or moved, without its links still has its C:.
            if (letter == 'C' && !IsHostDirectory(drive.m_strRoot) && IsHostDirectory(m_strFolder + "/drive_c")) {
                drive.m_strRoot = m_strFolder + "/drive_c";
            } else if (!isLink) {
                continue;
            }
            if (stat(drive.m_strRoot.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
                drive.m_nType = FindDriveKind(letter).value_or(DRIVE_NO_ROOT_DIR);
            } else {
                drive.m_strRealRoot = RealHostPath(drive.m_strRoot);
                drive.m_bIsHostRoot = drive.m_strRealRoot == "/" ||
                                      (status.st_dev == hostRoot.st_dev && status.st_ino == hostRoot.st_ino);
                drive.m_nType = drive.m_bIsHostRoot ? DRIVE_REMOTE : FindDriveKind(letter).value_or(DRIVE_FIXED);
            }
            drives.push_back(std::move(drive));
        }
        return drives;
    }

    std::optional<std::uint32_t> FindDriveKind(char letter) const {
        constexpr std::pair<std::string_view, std::uint32_t> kKinds[] = {{"hd", DRIVE_FIXED},
                                                                         {"floppy", DRIVE_REMOVABLE},
                                                                         {"cdrom", DRIVE_CDROM},
                                                                         {"network", DRIVE_REMOTE},
                                                                         {"ramdisk", DRIVE_RAMDISK}};
        const CString word = FindText(false, kWineDrivesKey, CString(1, letter) + ":").value_or("");
        for (const auto& [name, kind] : kKinds) {
            if (mbsicmp(word, name) == 0) return kind;
        }
        return std::nullopt;
    }

    bool ShowsDotFiles() const {
        const CString value = FindText(true, kWineKey, "ShowDotFiles").value_or("");
        return !value.empty() && std::strchr("yYtT1", value.front()) != nullptr;
    }

    // A prefix has one user.reg. Another account's name is taken where the prefix has a profile of that name.
    void CheckUser() {
        const std::string name = GetVariable("DELVANE_USER");
        if (name.empty()) return;
        const CString user = FindText(true, kVolatileEnvironmentKey, "USERNAME").value_or("");
        const std::vector<std::string> profiles = NamesIn(m_strFolder + "/drive_c/users");
        if (mbsicmp(name, user) == 0 || std::find(profiles.begin(), profiles.end(), name) != profiles.end()) return;
        std::vector<CString> accounts;
        if (!user.empty()) accounts.push_back(user);
        for (const std::string& profile : profiles) {
            if (mbsicmp(profile, "Public") != 0 && mbsicmp(profile, user) != 0) accounts.push_back(profile);
        }
        RefuseUser(m_strFolder, name, accounts);
    }

    const std::string m_strFolder;
};

}  // namespace

std::unique_ptr<CHostedMachine> MakePrefix(const std::string& folder) {
    return std::make_unique<CPrefixMachine>(folder);
}

}  // namespace delvane
