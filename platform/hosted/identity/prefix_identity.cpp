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

CPrefixIdentity::CPrefixIdentity(const std::string& folder)
    : m_folder(folder), m_systemText(folder + "/system.reg"), m_userText(folder + "/user.reg") {
    m_pSystem = ReadRegistry(*m_systemText, {kVersionKey, kCurrentVersionKey, kShellFoldersKey, kUserShellFoldersKey,
                                             kComputerNameKey, kSystemEnvironmentKey, kWineDrivesKey});
    m_pUser = ReadRegistry(
        *m_userText, {kShellFoldersKey, kUserShellFoldersKey, kEnvironmentKey, kVolatileEnvironmentKey, kWineKey});
    CheckUser();
}

// Who the machine is stands in system.reg: a snapshot without it, or with half of it, would be taken for another
// machine's. Lines that cannot be read and a missing user.reg cost what they would have said.
std::unique_ptr<CRegistryLookup> CPrefixIdentity::ReadRegistry(const CPrefixText& text,
                                                               const std::vector<std::string>& keys) {
    auto registry = std::make_unique<CRegistryLookup>(text.m_bytes.GetBytes(), keys);
    const bool isRead = text.m_strProblem.empty();
    CString problem;
    if (!isRead) {
        problem = text.m_strProblem;
    } else if (!registry->HasHeader()) {
        problem = text.m_path + " is no registry text of Wine";
    } else if (!registry->GetProblem().empty()) {
        problem = text.m_path + (registry->IsCut() ? " is cut off: " : " is damaged: ") + registry->GetProblem();
    }
    if (problem.empty()) return registry;
    const bool isSystem = &text == &*m_systemText;
    if (isSystem && (!isRead || !registry->HasHeader() || registry->IsCut())) {
        Refuse(std::move(problem));
    } else {
        m_notices.push_back(std::move(problem));
    }
    return registry;
}

std::shared_ptr<CHostedRegistry> CPrefixIdentity::LoadRegistry() {
    if (m_pRegistry != nullptr && !m_pRegistry->HasChanged()) return m_pRegistry;
    if (!m_systemText) m_systemText.emplace(m_folder + "/system.reg");
    if (!m_userText) m_userText.emplace(m_folder + "/user.reg");
    m_pRegistry = LoadPrefixRegistry(std::move(*m_systemText), std::move(*m_userText));
    m_systemText.reset();
    m_userText.reset();
    return m_pRegistry;
}

// A prefix has one user.reg. Another account's name is taken where the prefix has a profile of that name.
void CPrefixIdentity::CheckUser() {
    const std::string name = GetVariable("DELVANE_USER");
    if (name.empty() || mbsicmp(name, m_pUser->FindText(kVolatileEnvironmentKey, "USERNAME").value_or("")) == 0) return;
    const bool isName = name.find_first_of("/\\") == std::string::npos && name != "." && name != "..";
    if (isName && IsHostDirectory(m_folder + "/drive_c/users/" + name)) return;
    Refuse("DELVANE_USER names no account of " + m_folder + ": " + name);
}

CVersionRecord CPrefixIdentity::GetVersion() const {
    if (const auto name = m_pUser->FindText(kWineKey, "Version")) {
        if (const CWineVersion* const version = FindWineVersion(*name)) return version->m_record;
    }
    return CMachineIdentity::GetVersion();
}

CString CPrefixIdentity::GetUserName() const {
    CString name = GetVariable("DELVANE_USER");
    if (name.empty()) name = m_pUser->FindText(kVolatileEnvironmentKey, "USERNAME").value_or("");
    if (name.empty()) {
        const passwd* const account = getpwuid(getuid());
        if (account != nullptr) name = account->pw_name;
    }
    return name;
}

CString CPrefixIdentity::GetWindowsDirectory() const {
    return m_pSystem->FindText(kVersionKey, "SystemRoot").value_or("C:\\windows");
}

CString CPrefixIdentity::GetSystemDirectory() const { return GetWindowsDirectory() + "\\system32"; }

std::optional<CString> CPrefixIdentity::FindText(bool user, const char* key, std::string_view name) const {
    return (user ? m_pUser : m_pSystem)->FindText(key, name);
}

std::optional<std::uint32_t> CPrefixIdentity::FindNumber(bool user, const char* key, std::string_view name) const {
    return (user ? m_pUser : m_pSystem)->FindNumber(key, name);
}

std::optional<CString> CPrefixIdentity::FindProfileVariable(const CString& name) const {
    if (mbsicmp(name, "USERPROFILE") != 0) return std::nullopt;
    return GetWindowsDirectory().substr(0, 2) + "\\users\\" + GetUserName();
}

// Wine keeps the label in a file of its own at the drive's root: the first line, without blanks at its end.
std::uint32_t CPrefixIdentity::GetVolumeLabel(const CHostedDrive& drive, CString& label) const {
    constexpr std::uint64_t kLargestLabelFile = 64 * 1024;
    const std::optional<std::string> text = ReadHostFile(drive.m_root + "/.windows-label", kLargestLabelFile);
    if (!text) return errno == ENOENT || errno == EISDIR ? ERROR_SUCCESS : Win32Error(errno);
    label = text->substr(0, text->find('\n'));
    while (!label.empty() && (label.back() == ' ' || label.back() == '\r'))
        label.pop_back();
    return ERROR_SUCCESS;
}

CDiskRules CPrefixIdentity::GetDiskRules() const {
    return {true, !ShowsDotFiles(), {}, {m_folder, m_folder + "/dosdevices"}};
}

bool CPrefixIdentity::ShowsDotFiles() const {
    const CString value = m_pUser->FindText(kWineKey, "ShowDotFiles").value_or("");
    return !value.empty() && std::strchr("yYtT1", value.front()) != nullptr;
}

std::optional<std::uint32_t> CPrefixIdentity::FindDriveKind(char letter) const {
    constexpr std::array<std::pair<std::string_view, std::uint32_t>, 5> kKinds = {{{"hd", DRIVE_FIXED},
                                                                                   {"floppy", DRIVE_REMOVABLE},
                                                                                   {"cdrom", DRIVE_CDROM},
                                                                                   {"network", DRIVE_REMOTE},
                                                                                   {"ramdisk", DRIVE_RAMDISK}}};
    const CString word = m_pSystem->FindText(kWineDrivesKey, CString(1, letter) + ":").value_or("");
    for (const auto& [name, kind] : kKinds) {
        if (mbsicmp(word, name) == 0) return kind;
    }
    return std::nullopt;
}

// The links are named by a small letter and a colon; those with two colons are devices.
std::vector<CHostedDrive> CPrefixIdentity::GetDrives() const {
    std::vector<CHostedDrive> drives;
    const std::string links = m_folder + "/dosdevices/";
    struct stat hostRoot {};
    stat("/", &hostRoot);
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        CHostedDrive drive;
        drive.m_letter = letter;
        drive.m_root = links + static_cast<char>(letter - 'A' + 'a') + ':';
        struct stat status {};
        if (lstat(drive.m_root.c_str(), &status) != 0) {
            // A prefix that was copied without its links still has its C:.
            if (letter != 'C' || !IsHostDirectory(m_folder + "/drive_c")) continue;
            drive.m_root = m_folder + "/drive_c";
        }
        if (stat(drive.m_root.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
            drive.m_nType = FindDriveKind(letter).value_or(DRIVE_NO_ROOT_DIR);
        } else {
            drive.m_realRoot = RealHostPath(drive.m_root);
            drive.m_bIsHostRoot = status.st_dev == hostRoot.st_dev && status.st_ino == hostRoot.st_ino;
            drive.m_nType = drive.m_bIsHostRoot ? DRIVE_REMOTE : FindDriveKind(letter).value_or(DRIVE_FIXED);
        }
        drives.push_back(std::move(drive));
    }
    return drives;
}

}  // namespace delvane
