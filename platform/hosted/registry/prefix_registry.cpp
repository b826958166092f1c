#include "platform/hosted/registry/prefix_registry.h"

#include <utility>

#include "platform/hosted/files/own_file.h"
#include "platform/hosted/registry/text_hive.h"

namespace delvane {
namespace {

// Registry text of a real machine takes some megabytes.
constexpr std::uint64_t kLargestText = std::uint64_t{1} << 30;

// The account whose hive the text is: it stands in a comment at its head, with the separators escaped.
std::string FindSid(std::string_view text) {
    constexpr std::string_view kMark = ";; All keys relative to REGISTRY\\\\User\\\\";
    constexpr std::size_t kHead = 1024;
    text = text.substr(0, kHead);
    const std::size_t at = text.find(kMark);
    if (at == std::string_view::npos) return {};
    text.remove_prefix(at + kMark.size());
    return std::string(text.substr(0, text.find_first_of("\r\n")));
}

void AddTextHive(CHostedRegistry& registry, HKEY root, CPrefixText text) {
    text.Refresh();
    registry.Watch(text.m_path, text.m_stamp);
    if (!text.m_strProblem.empty()) {
        registry.AddProblem(text.m_strProblem);
        return;
    }
    CHive& hive = registry.AddHive(std::make_unique<CTextHive>(std::move(text.m_bytes), text.m_path));
    registry.SetRoot(root, {{&hive, hive.GetRoot()}, {}});
}

}  // namespace

CPrefixText::CPrefixText(std::string path) : m_path(std::move(path)), m_stamp(m_path) {
    try {
        m_bytes = ReadOwnFile(m_path, m_path, kLargestText, false);
    } catch (const CFileError& error) {
        m_strProblem = error.what();
    }
}

void CPrefixText::Refresh() {
    if (CFileStamp(m_path) != m_stamp) *this = CPrefixText(m_path);
}

std::unique_ptr<CHostedRegistry> LoadPrefixRegistry(CPrefixText system, CPrefixText user) {
    auto registry = std::make_unique<CHostedRegistry>();
    user.Refresh();
    registry->SetUserSid(FindSid(user.m_bytes.GetBytes()));
    AddTextHive(*registry, HKEY_LOCAL_MACHINE, std::move(system));
    AddTextHive(*registry, HKEY_CURRENT_USER, std::move(user));
    if (const auto classes = registry->Find(HKEY_LOCAL_MACHINE, "Software\\Classes")) {
        registry->SetRoot(HKEY_CLASSES_ROOT, *classes);
    }
    // Wine hands out the performance data in place of this key.
    const auto performance =
        registry->Find(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Windows NT\\CurrentVersion\\Perflib\\009");
    if (performance) registry->SetUnopenable(performance->m_first);
    return registry;
}

}  // namespace delvane
