#include "platform/hosted/identity/identity.h"

#include <array>
#include <charconv>

#include "platform/folder_kinds.h"
#include "platform/hosted/identity/identity_keys.h"

namespace delvane {
namespace {

struct CShellFolder {
    int m_kind;
    const char* m_name;
    bool m_bCommon;
};

constexpr std::array<CShellFolder, 7> kShellFolders = {{
    {CSIDL_PERSONAL, "Personal", false},
    {CSIDL_STARTMENU, "Start Menu", false},
    {CSIDL_COMMON_STARTMENU, "Common Start Menu", true},
    {CSIDL_APPDATA, "AppData", false},
    {CSIDL_LOCAL_APPDATA, "Local AppData", false},
    {CSIDL_COMMON_APPDATA, "Common AppData", true},
    {CSIDL_COMMON_DOCUMENTS, "Common Documents", true},
}};

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

}  // namespace

std::vector<CNotice> CMachineIdentity::GetNotices() const {
    std::vector<CNotice> notices = m_pRegistry->GetProblems();
    notices.insert(notices.end(), m_notices.begin(), m_notices.end());
    return notices;
}

void CMachineIdentity::RefuseUser(const std::string& folder, const CString& name,
                                  const std::vector<CString>& accounts) {
    m_strUserProblem = "DELVANE_USER names no account of " + folder + ": " + name;
    for (std::size_t i = 0; i < accounts.size(); ++i)
        m_strUserProblem += (i == 0 ? "; there are " : ", ") + accounts[i];
    if (accounts.empty()) m_strUserProblem += "; there is none";
    m_notices.push_back({m_strUserProblem});
}

// The registry.

void CMachineIdentity::BeginRegistry() {
    m_pRegistry = std::make_shared<CHostedRegistry>();
    m_strRegistryProblem.clear();
}

CHostedRegistry::CPlace CMachineIdentity::AddMachineHive(std::unique_ptr<CHive> hive, CNotice problem) {
    const bool isWhole = hive != nullptr && !hive->IsCut();
    if (!isWhole && m_strRegistryProblem.empty()) {
        m_strRegistryProblem = hive == nullptr ? problem.m_strSentence : hive->GetProblems().front().m_strSentence;
    }
    return AddHive(std::move(hive), std::move(problem), {});
}

CHostedRegistry::CPlace CMachineIdentity::AddHive(std::unique_ptr<CHive> hive, CNotice problem, const CString& loss) {
    if (hive == nullptr) {
        if (!loss.empty()) problem.m_strSentence += "; " + loss;
        m_pRegistry->AddProblem(std::move(problem));
        return {};
    }
    CHive& added = m_pRegistry->AddHive(std::move(hive));
    return {&added, added.GetRoot()};
}

std::shared_ptr<CHostedRegistry> CMachineIdentity::LoadRegistry() {
    if (m_pRegistry->HasChanged()) ReadRegistry();
    CompleteRegistry();
    return m_pRegistry;
}

std::optional<CString> CMachineIdentity::FindText(bool user, const char* key, std::string_view name) const {
    return m_pRegistry->FindText(user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, key, name);
}

std::optional<std::uint32_t> CMachineIdentity::FindNumber(bool user, const char* key, std::string_view name) const {
    return m_pRegistry->FindNumber(user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, key, name);
}

// What it says.

CVersionRecord CMachineIdentity::GetVersion() const {
    CVersionRecord record;
    const CString numbers = FindText(false, kVersionKey, "CurrentVersion").value_or("");
    record.m_dwMajorVersion = NumberOf(numbers);
    const std::size_t period = numbers.find('.');
    if (period != CString::npos) record.m_dwMinorVersion = NumberOf(std::string_view(numbers).substr(period + 1));
    if (const auto major = FindNumber(false, kVersionKey, "CurrentMajorVersionNumber")) {
        record.m_dwMajorVersion = *major;
        record.m_dwMinorVersion = FindNumber(false, kVersionKey, "CurrentMinorVersionNumber").value_or(0);
    }
    const auto build = FindText(false, kVersionKey, "CurrentBuildNumber");
    record.m_dwBuildNumber = NumberOf(build ? *build : FindText(false, kVersionKey, "CurrentBuild").value_or(""));
    record.m_strServicePack = FindText(false, kVersionKey, "CSDVersion").value_or("");
    return record;
}

CString CMachineIdentity::GetComputerName() const {
    return FindText(false, kComputerNameKey, "ComputerName").value_or("");
}

CString CMachineIdentity::GetWindowsDirectory() const { return RaiseDriveLetter(FindWindowsDirectory()); }

CString CMachineIdentity::GetTempPath() const {
    const auto temp = FindText(true, kEnvironmentKey, "TEMP");
    CString path = temp ? RaiseDriveLetter(Expand(*temp)) : GetWindowsDirectory() + "\\temp";
    if (!path.ends_with('\\')) path += '\\';
    return path;
}

std::optional<CString> CMachineIdentity::GetFolder(int kind) const {
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

CString CMachineIdentity::Expand(const CString& text) const {
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

std::optional<CString> CMachineIdentity::FindVariable(const CString& name) const {
    if (mbsicmp(name, "SystemRoot") == 0 || mbsicmp(name, "windir") == 0) return GetWindowsDirectory();
    if (mbsicmp(name, "SystemDrive") == 0) return GetWindowsDirectory().substr(0, 2);
    for (const char* key : {kVolatileEnvironmentKey, kEnvironmentKey}) {
        if (auto value = FindText(true, key, name)) return Expand(*value);
    }
    if (auto value = FindText(false, kSystemEnvironmentKey, name)) return Expand(*value);
    if (mbsicmp(name, "USERNAME") == 0) return GetUserName();
    return FindProfileVariable(name);
}

}  // namespace delvane
