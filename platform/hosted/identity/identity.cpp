#include "platform/hosted/identity/identity.h"

#include <array>
#include <charconv>

#include "platform/hosted/identity/identity_keys.h"

namespace delvane {
namespace {

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

std::uint32_t NumberOf(std::string_view text) {
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

void CMachineIdentity::Refuse(CString problem) {
    m_notices.push_back(problem);
    if (m_strProblem.empty()) m_strProblem = std::move(problem);
}

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

CString CMachineIdentity::GetTempPath() const {
    const auto temp = FindText(true, kEnvironmentKey, "TEMP");
    CString path = temp ? Expand(*temp) : GetWindowsDirectory() + "\\temp";
    if (!path.ends_with('\\')) path += '\\';
    return path;
}

std::optional<CString> CMachineIdentity::GetFolder(int kind) const {
    constexpr int kProgramFiles = 38;
    if (kind == kProgramFiles) {
        const auto path = FindText(false, kCurrentVersionKey, "ProgramFilesDir");
        return path ? std::optional(Expand(*path)) : std::nullopt;
    }
    for (const CShellFolder& folder : kShellFolders) {
        if (folder.m_kind != kind) continue;
        for (const char* key : {kShellFoldersKey, kUserShellFoldersKey}) {
            const auto path = FindText(!folder.m_bCommon, key, folder.m_name);
            if (path && !path->empty()) return Expand(*path);
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
