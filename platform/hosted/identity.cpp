#include "platform/hosted/identity.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <dirent.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/hosted/choice.h"
#include "platform/hosted/host_file.h"

namespace delvane {
namespace {

constexpr const char* kVersionKey = "Software\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const char* kCurrentVersionKey = "Software\\Microsoft\\Windows\\CurrentVersion";
constexpr const char* kShellFoldersKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const char* kUserShellFoldersKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr const char* kComputerNameKey = "System\\CurrentControlSet\\Control\\ComputerName\\ComputerName";
constexpr const char* kSystemEnvironmentKey = "System\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr const char* kEnvironmentKey = "Environment";
constexpr const char* kVolatileEnvironmentKey = "Volatile Environment";
constexpr const char* kWineKey = "Software\\Wine";
constexpr const char* kWineDrivesKey = "Software\\Wine\\Drives";

struct CShellFolder {
    int m_kind;
    const char* m_name;
    bool m_bCommon;
};

constexpr std::array<CShellFolder, 7> kShellFolders = {{
    {5, "Personal", false},
    {11, "Start Menu", false},
    {22, "Common Start Menu", true},
    {26, "AppData", false},
    {28, "Local AppData", false},
    {35, "Common AppData", true},
    {46, "Common Documents", true},
}};

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

std::uint32_t NumberOf(std::string_view text) {
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
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

std::unique_ptr<CHostedRegistry> CPrefixIdentity::LoadRegistry() {
    if (!m_systemText) m_systemText.emplace(m_folder + "/system.reg");
    if (!m_userText) m_userText.emplace(m_folder + "/user.reg");
    auto registry = LoadPrefixRegistry(std::move(*m_systemText), std::move(*m_userText));
    m_systemText.reset();
    m_userText.reset();
    return registry;
}

void CPrefixIdentity::Refuse(CString problem) {
    m_notices.push_back(problem);
    if (m_strProblem.empty()) m_strProblem = std::move(problem);
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
    CVersionRecord record;
    const CString numbers = m_pSystem->FindText(kVersionKey, "CurrentVersion").value_or("");
    record.m_dwMajorVersion = NumberOf(numbers);
    const std::size_t period = numbers.find('.');
    if (period != CString::npos) record.m_dwMinorVersion = NumberOf(std::string_view(numbers).substr(period + 1));
    if (const auto major = m_pSystem->FindNumber(kVersionKey, "CurrentMajorVersionNumber")) {
        record.m_dwMajorVersion = *major;
        record.m_dwMinorVersion = m_pSystem->FindNumber(kVersionKey, "CurrentMinorVersionNumber").value_or(0);
    }
    const auto build = m_pSystem->FindText(kVersionKey, "CurrentBuildNumber");
    record.m_dwBuildNumber = NumberOf(build ? *build : m_pSystem->FindText(kVersionKey, "CurrentBuild").value_or(""));
    record.m_strServicePack = m_pSystem->FindText(kVersionKey, "CSDVersion").value_or("");
    return record;
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

CString CPrefixIdentity::GetComputerName() const {
    return m_pSystem->FindText(kComputerNameKey, "ComputerName").value_or("");
}

CString CPrefixIdentity::GetWindowsDirectory() const {
    return m_pSystem->FindText(kVersionKey, "SystemRoot").value_or("C:\\windows");
}

CString CPrefixIdentity::GetTempPath() const {
    const auto temp = m_pUser->FindText(kEnvironmentKey, "TEMP");
    CString path = temp ? Expand(*temp) : GetWindowsDirectory() + "\\temp";
    if (!path.ends_with('\\')) path += '\\';
    return path;
}

std::optional<CString> CPrefixIdentity::GetFolder(int kind) const {
    constexpr int kProgramFiles = 38;
    if (kind == kProgramFiles) {
        const auto path = m_pSystem->FindText(kCurrentVersionKey, "ProgramFilesDir");
        return path ? std::optional(Expand(*path)) : std::nullopt;
    }
    for (const CShellFolder& folder : kShellFolders) {
        if (folder.m_kind != kind) continue;
        const CRegistryLookup& registry = folder.m_bCommon ? *m_pSystem : *m_pUser;
        for (const char* key : {kShellFoldersKey, kUserShellFoldersKey}) {
            const auto path = registry.FindText(key, folder.m_name);
            if (path && !path->empty()) return Expand(*path);
        }
    }
    return std::nullopt;
}

CString CPrefixIdentity::Expand(const CString& text) const {
    CString result;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t begin = text.find('%', at);
        const std::size_t end = begin == CString::npos ? begin : text.find('%', begin + 1);
        if (end == CString::npos) break;
        result += text.substr(at, begin - at);
        const auto value = FindVariable(text.substr(begin + 1, end - begin - 1));
        if (value) {
            result += *value;
            at = end + 1;
        } else {
            // As it stands; the second mark may open the next name.
            result += text.substr(begin, end - begin);
            at = end;
        }
    }
    return result + (at < text.size() ? text.substr(at) : CString());
}

std::optional<CString> CPrefixIdentity::FindVariable(const CString& name) const {
    if (mbsicmp(name, "SystemRoot") == 0 || mbsicmp(name, "windir") == 0) return GetWindowsDirectory();
    if (mbsicmp(name, "SystemDrive") == 0) return GetWindowsDirectory().substr(0, 2);
    for (const char* key : {kVolatileEnvironmentKey, kEnvironmentKey}) {
        if (auto value = m_pUser->FindText(key, name)) return value;
    }
    if (auto value = m_pSystem->FindText(kSystemEnvironmentKey, name)) return value;
    if (mbsicmp(name, "USERPROFILE") == 0) return GetWindowsDirectory().substr(0, 2) + "\\users\\" + GetUserName();
    if (mbsicmp(name, "USERNAME") == 0) return GetUserName();
    return std::nullopt;
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
