#include "platform/hosted/identity/prefix_identity.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/hosted/choice.h"
#include "platform/hosted/files/host_file.h"
#include "platform/hosted/identity/identity_keys.h"
#include "platform/hosted/identity/wine_server.h"
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

const CWineVersion* FindWineVersion(std::string_view name) {
    static const std::array<CWineVersion, 18> kVersions = {{
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
    }};
    const auto found = std::find_if(kVersions.begin(), kVersions.end(),
                                    [&](const CWineVersion& version) { return version.m_name == name; });
    return found == kVersions.end() ? nullptr : &*found;
}

}  // namespace

CPrefixIdentity::CPrefixIdentity(std::string folder) : m_strFolder(std::move(folder)) {
    ReadRegistry();
    CheckUser();
}

// Who the machine is stands in system.reg: a snapshot without it, or with half of it, would be taken for another
// machine's. Lines that cannot be read and a missing user.reg cost what they would have said.
void CPrefixIdentity::ReadRegistry() {
    BeginRegistry();
    const auto open = [this](const char* name, CNotice& problem) {
        const std::string path = m_strFolder + name;
        m_pRegistry->Watch(path, CFileStamp(path));
        return CTextHive::Open(path, problem);
    };
    CNotice problem;
    std::unique_ptr<CTextHive> hive = open("/system.reg", problem);
    m_pRegistry->SetRoot(HKEY_LOCAL_MACHINE, {AddMachineHive(std::move(hive), problem), {}});
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

void CPrefixIdentity::CompleteRegistry() {
    if (!IsWineRunning(m_strFolder)) return;
    m_pRegistry->AddProblem(
        {"a Wine is running on " + m_strFolder +
         ": what it has not written yet is missing from the snapshot; wineserver -w waits for its end"});
}

// A prefix has one user.reg. Another account's name is taken where the prefix has a profile of that name.
void CPrefixIdentity::CheckUser() {
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

CVersionRecord CPrefixIdentity::GetVersion() const {
    if (const auto name = FindText(true, kWineKey, "Version")) {
        if (const CWineVersion* const version = FindWineVersion(*name)) return version->m_record;
    }
    return CMachineIdentity::GetVersion();
}

CString CPrefixIdentity::GetUserName() const {
    CString name = GetVariable("DELVANE_USER");
    if (name.empty()) name = FindText(true, kVolatileEnvironmentKey, "USERNAME").value_or("");
    if (name.empty()) {
        const passwd* const account = getpwuid(getuid());
        if (account != nullptr) name = account->pw_name;
    }
    return name;
}

CString CPrefixIdentity::FindWindowsDirectory() const {
    return FindText(false, kVersionKey, "SystemRoot").value_or("C:\\windows");
}

CString CPrefixIdentity::GetSystemDirectory() const { return GetWindowsDirectory() + "\\system32"; }

std::optional<CString> CPrefixIdentity::FindProfileVariable(const CString& name) const {
    if (mbsicmp(name, "USERPROFILE") != 0) return std::nullopt;
    return GetWindowsDirectory().substr(0, 2) + "\\users\\" + GetUserName();
}

// Wine keeps the label in a file of its own at the drive's root: the first line, without blanks at its end.
std::uint32_t CPrefixIdentity::GetVolumeLabel(const CHostedDrive& drive, CString& label) const {
    constexpr std::uint64_t kLargestLabelFile = 64 * 1024;
    const std::optional<std::string> text = ReadHostFile(drive.m_strRoot + "/.windows-label", kLargestLabelFile);
    if (!text) return errno == ENOENT || errno == EISDIR ? ERROR_SUCCESS : Win32Error(errno);
    label = text->substr(0, text->find('\n'));
    while (!label.empty() && (label.back() == ' ' || label.back() == '\r'))
        label.pop_back();
    return ERROR_SUCCESS;
}

CDiskRules CPrefixIdentity::GetDiskRules() const {
    return {true, !ShowsDotFiles(), {}, {m_strFolder, m_strFolder + "/dosdevices"}};
}

bool CPrefixIdentity::ShowsDotFiles() const {
    const CString value = FindText(true, kWineKey, "ShowDotFiles").value_or("");
    return !value.empty() && std::strchr("yYtT1", value.front()) != nullptr;
}

std::optional<std::uint32_t> CPrefixIdentity::FindDriveKind(char letter) const {
    constexpr std::array<std::pair<std::string_view, std::uint32_t>, 5> kKinds = {{{"hd", DRIVE_FIXED},
                                                                                   {"floppy", DRIVE_REMOVABLE},
                                                                                   {"cdrom", DRIVE_CDROM},
                                                                                   {"network", DRIVE_REMOTE},
                                                                                   {"ramdisk", DRIVE_RAMDISK}}};
    const CString word = FindText(false, kWineDrivesKey, CString(1, letter) + ":").value_or("");
    for (const auto& [name, kind] : kKinds) {
        if (mbsicmp(word, name) == 0) return kind;
    }
    return std::nullopt;
}

// The links are named by a small letter and a colon; those with two colons are devices.
std::vector<CHostedDrive> CPrefixIdentity::GetDrives() const {
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
            drive.m_bIsHostRoot = status.st_dev == hostRoot.st_dev && status.st_ino == hostRoot.st_ino;
            drive.m_nType = drive.m_bIsHostRoot ? DRIVE_REMOTE : FindDriveKind(letter).value_or(DRIVE_FIXED);
        }
        drives.push_back(std::move(drive));
    }
    return drives;
}

}  // namespace delvane
