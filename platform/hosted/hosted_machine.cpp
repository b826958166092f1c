#include "platform/hosted/hosted_machine.h"

#include <algorithm>
#include <charconv>

#include "platform/hosted/files/host_file.h"

namespace delvane {
namespace {

constexpr const char* kCurrentVersionKey = "Software\\Microsoft\\Windows\\CurrentVersion";
constexpr const char* kShellFoldersKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const char* kUserShellFoldersKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr const char* kComputerNameKey = "System\\CurrentControlSet\\Control\\ComputerName\\ComputerName";
constexpr const char* kSystemEnvironmentKey = "System\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr const char* kEnvironmentKey = "Environment";

struct CShellFolder {
    int m_kind;
    const char* m_name;
    bool m_bCommon;
};

constexpr CShellFolder kShellFolders[] = {
    {CSIDL_PERSONAL, "Personal", false},
    {CSIDL_STARTMENU, "Start Menu", false},
    {CSIDL_COMMON_STARTMENU, "Common Start Menu", true},
    {CSIDL_APPDATA, "AppData", false},
    {CSIDL_LOCAL_APPDATA, "Local AppData", false},
    {CSIDL_COMMON_APPDATA, "Common AppData", true},
    {CSIDL_COMMON_DOCUMENTS, "Common Documents", true},
};

std::uint32_t NumberOf(std::string_view text) {
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// Folders are told from each other by their spelling, and drives have capitals everywhere else.
CString RaiseDriveLetter(CString path) {
    if (path.size() > 1 && path[1] == ':' && path[0] >= 'a' && path[0] <= 'z') path[0] -= 'a' - 'A';
    return path;
}

// No machine: any drive that two snapshots hold may be compared.
class CNoMachine : public CHostedMachine {
public:
    explicit CNoMachine(const CMachineChoice& choice) {
        SetPaths({});
        m_strProblem = choice.m_strProblem;
        if (choice.m_bVariable) m_notices.push_back({m_strProblem});
    }
    CVersionRecord GetVersion() override { return {VER_PLATFORM_WIN32_NT, 5, 0, 0, {}}; }
    bool GetUserName(CString&) override { return false; }
    bool GetComputerName(CString&) override { return false; }
    CString GetSystemDirectory() override { return {}; }
    CString GetTempPath() override { return {}; }
    CFolderFunction LoadFolderLibrary() override { return {}; }
    std::uint32_t GetLogicalDrives() override { return (std::uint32_t{1} << 26) - 1; }
    std::uint32_t GetDriveType(std::string_view) override { return DRIVE_FIXED; }
};

}  // namespace

std::vector<CNotice> CHostedMachine::GetNotices() {
    std::vector<CNotice> notices = m_pRegistry->GetProblems();
    notices.insert(notices.end(), m_notices.begin(), m_notices.end());
    notices.insert(notices.end(), m_pSearches->GetNotices().begin(), m_pSearches->GetNotices().end());
    return notices;
}

void CHostedMachine::RefuseUser(const std::string& folder, const CString& name, const std::vector<CString>& accounts) {
    m_strProblem = "DELVANE_USER names no account of " + folder + ": " + name;
    for (std::size_t i = 0; i < accounts.size(); ++i)
        m_strProblem += (i == 0 ? "; there are " : ", ") + accounts[i];
    if (accounts.empty()) m_strProblem += "; there is none";
    m_notices.push_back({m_strProblem});
}

// The registry.

void CHostedMachine::BeginRegistry() {
    m_pRegistry = std::make_unique<CHostedRegistry>();
    m_strRegistryProblem.clear();
}

CHostedRegistry::CPlace CHostedMachine::AddHive(std::unique_ptr<CHive> hive, CNotice problem, const CString& loss) {
    const bool isWhole = hive != nullptr && !hive->IsCut();
    if (loss.empty() && !isWhole && m_strRegistryProblem.empty()) {
        m_strRegistryProblem = hive == nullptr ? problem.m_strSentence : hive->GetProblems().front().m_strSentence;
    }
    if (hive == nullptr) {
        if (!loss.empty()) problem.m_strSentence += "; " + loss;
        m_pRegistry->AddProblem(std::move(problem));
        return {};
    }
    return m_pRegistry->AddHive(std::move(hive));
}

CHostedRegistry& CHostedMachine::GetRegistry() {
    if (m_bComplete) return *m_pRegistry;
    if (m_pRegistry->HasChanged()) ReadRegistry();
    CompleteRegistry();
    m_bComplete = true;
    return *m_pRegistry;
}

void CHostedMachine::BeginWalk() {
    m_pSearches->BeginWalk();
    m_pRegistry->BeginWalk();
    if (m_pRegistry->GetOpenCount() == 0) m_bComplete = false;
}

// What it says.

CVersionRecord CHostedMachine::GetVersion() {
    CVersionRecord record;
    const CString numbers = FindText(false, kVersionKey, "CurrentVersion").value_or("");
    record.m_dwMajorVersion = NumberOf(numbers);
    const std::size_t period = numbers.find('.');
    if (period != CString::npos) record.m_dwMinorVersion = NumberOf(std::string_view(numbers).substr(period + 1));
    const auto number = [this](const char* name) {
        return m_pRegistry->FindNumber(HKEY_LOCAL_MACHINE, kVersionKey, name);
    };
    if (const auto major = number("CurrentMajorVersionNumber")) {
        record.m_dwMajorVersion = *major;
        record.m_dwMinorVersion = number("CurrentMinorVersionNumber").value_or(0);
    }
    const auto build = FindText(false, kVersionKey, "CurrentBuildNumber");
    record.m_dwBuildNumber = NumberOf(build ? *build : FindText(false, kVersionKey, "CurrentBuild").value_or(""));
    record.m_strServicePack = FindText(false, kVersionKey, "CSDVersion").value_or("");
    return record;
}

bool CHostedMachine::GetUserName(CString& name) {
    name = FindUserName();
    return true;
}

bool CHostedMachine::GetComputerName(CString& name) {
    name = FindText(false, kComputerNameKey, "ComputerName").value_or("");
    return true;
}

CString CHostedMachine::GetWindowsDirectory() { return RaiseDriveLetter(FindWindowsDirectory()); }

CString CHostedMachine::GetTempPath() {
    const auto temp = FindText(true, kEnvironmentKey, "TEMP");
    CString path = temp ? RaiseDriveLetter(Expand(*temp)) : GetWindowsDirectory() + "\\temp";
    if (!path.ends_with('\\')) path += '\\';
    return path;
}

CFolderFunction CHostedMachine::LoadFolderLibrary() {
    return [this](int kind, CString& path) {
        const std::optional<CString> folder = FindFolder(kind);
        if (folder) path = *folder;
        return folder.has_value();
    };
}

std::optional<CString> CHostedMachine::FindFolder(int kind) {
    if (kind == CSIDL_PROGRAM_FILES) {
        const auto path = FindText(false, kCurrentVersionKey, "ProgramFilesDir");
        return path ? std::optional(RaiseDriveLetter(Expand(*path))) : std::nullopt;
    }
    for (const CShellFolder& folder : kShellFolders) {
        if (folder.m_kind != kind) continue;
        for (const char* key : {kShellFoldersKey, kUserShellFoldersKey}) {
            const auto path = FindText(!folder.m_bCommon, key, folder.m_name);
            if (path && !path->empty()) return RaiseDriveLetter(Expand(*path));
        }
    }
    return std::nullopt;
}

CString CHostedMachine::Expand(const CString& text) {
    // Variables that stand in each other come to an end, and so does a text that doubles with each.
    constexpr int kDeepest = 8;
    constexpr int kMost = 256;
    constexpr std::size_t kLongest = 32767;
    if (m_nExpanding >= kDeepest) return text;
    if (m_nExpanding++ == 0) m_nExpanded = 0;
    CString result;
    std::size_t at = 0;
    while (at < text.size() && result.size() <= kLongest && m_nExpanded < kMost) {
        const std::size_t begin = text.find('%', at);
        const std::size_t end = begin == CString::npos ? begin : text.find('%', begin + 1);
        if (end == CString::npos) break;
        result += text.substr(at, begin - at);
        ++m_nExpanded;
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
    --m_nExpanding;
    if (at < text.size()) result += text.substr(at);
    return result.size() <= kLongest ? result : text;
}

std::optional<CString> CHostedMachine::FindVariable(const CString& name) {
    if (mbsicmp(name, "SystemRoot") == 0 || mbsicmp(name, "windir") == 0) return GetWindowsDirectory();
    if (mbsicmp(name, "SystemDrive") == 0) return GetWindowsDirectory().substr(0, 2);
    for (const char* key : {kVolatileEnvironmentKey, kEnvironmentKey}) {
        if (auto value = FindText(true, key, name)) return Expand(*value);
    }
    if (auto value = FindText(false, kSystemEnvironmentKey, name)) return Expand(*value);
    if (mbsicmp(name, "USERNAME") == 0) return FindUserName();
    return FindProfileVariable(name);
}

// The disks.

void CHostedMachine::SetPaths(CPathMap paths) {
    m_paths = std::move(paths);
    m_pSearches = MakeSearchSet(m_paths);
}

std::uint32_t CHostedMachine::GetLogicalDrives() {
    std::uint32_t mask = 0;
    for (const CHostedDrive& drive : m_paths.GetDrives())
        mask |= std::uint32_t{1} << (drive.m_letter - 'A');
    return mask;
}

std::uint32_t CHostedMachine::GetDriveType(std::string_view root) {
    const CHostedDrive* const drive = m_paths.FindDrive(root);
    return drive == nullptr ? DRIVE_NO_ROOT_DIR : drive->m_nType;
}

std::uint32_t CHostedMachine::GetVolumeLabel(std::string_view root, CString& label) {
    const CHostedDrive* const drive = m_paths.FindDrive(root);
    return drive == nullptr ? ERROR_PATH_NOT_FOUND : FindLabel(*drive, label);
}

bool CHostedMachine::MapAndLoad(std::string_view path, CLoadedImage& image) {
    image = {};
    const std::optional<CHostFile> file = CHostFile::Open(m_paths.Find(path).value_or(""));
    return file && MapImage(*file, image);
}

std::unique_ptr<const CVersionInfo> CHostedMachine::GetFileVersionInfo(std::string_view path) {
    const std::optional<CHostFile> file = CHostFile::Open(m_paths.Find(path).value_or(""));
    return file ? ReadVersionBlock(*file) : nullptr;
}

std::unique_ptr<CHostedMachine> MakeHostedMachine(const CMachineChoice& choice) {
    if (choice.m_strFolder.empty()) return std::make_unique<CNoMachine>(choice);
    return choice.m_bIsVolume ? MakeVolume(choice.m_strFolder) : MakePrefix(choice.m_strFolder);
}

}  // namespace delvane
