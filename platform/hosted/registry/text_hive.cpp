// One pass over the text makes a table of its keys, in the order of the file: of each the parent's chain of children,
// the name, and where its values begin. No value is looked at, and no name is copied that stands in the text as it is.
//
// A section names its key by the whole path. Wine writes sections in the order of their paths, so each is made from the
// one before: of the path that both have in common the keys are known (the chain), and of the rest each name either
// sorts behind its last sibling, and is a new key, or is looked for. Where a parent's children do not ascend, by an
// editor's hand, they are searched one by one until that has taken long enough for a hash table of all keys to be worth
// it. Keys without values have no section, so a path makes the parents that are missing; a key that has two sections
// keeps the second aside, and later values replace earlier ones when it is read.
#include "platform/hosted/registry/text_hive.h"

#include <algorithm>

namespace delvane {
namespace {

// Registry text of a real machine takes some megabytes.
constexpr std::uint64_t kLargestText = std::uint64_t{1} << 30;

// Wine writes values in the order of their names, so names seldom come twice. Where they do not ascend, one that came
// before is replaced, as Wine does when it reads the file.
void ReplaceRepeated(CKeyContents& contents) {
    auto& values = contents.m_values;
    const auto staysBehind = [&](const CKeyContents::CValue& a, const CKeyContents::CValue& b) {
        return CompareKeyNames(contents.Get(a.m_name), contents.Get(b.m_name)) >= 0;
    };
    if (std::adjacent_find(values.begin(), values.end(), staysBehind) == values.end()) return;
    std::unordered_map<CString, std::size_t> known;
    std::size_t kept = 0;
    for (const CKeyContents::CValue& value : values) {
        const auto [entry, isNew] = known.emplace(FoldKeyName(contents.Get(value.m_name)), kept);
        if (isNew) {
            values[kept++] = value;
        } else {
            values[entry->second].m_dwType = value.m_dwType;
            values[entry->second].m_data = value.m_data;
        }
    }
    values.resize(kept);
}

}  // namespace

std::unique_ptr<CTextHive> CTextHive::Open(const std::string& hostPath, CNotice& problem) {
    CFileBytes bytes;
    if (!ReadHiveFile(hostPath, kLargestText, bytes, problem)) return nullptr;
    auto hive = std::make_unique<CTextHive>(std::move(bytes), hostPath);
    if (hive->m_text.HasHeader()) return hive;
    problem = {hostPath + " is no registry text of Wine", hostPath, ERROR_NOT_REGISTRY_FILE};
    return nullptr;
}

CTextHive::CTextHive(CFileBytes text, std::string name)
    : CHive(std::move(text), std::move(name)), m_text(m_bytes.GetBytes()) {
    constexpr std::size_t kUsualKey = 200;  // what a key takes in the text with its values
    m_nodes.Reserve(m_bytes.m_nSize / kUsualKey + 1);
    m_nodes.push_back({});
    for (CRegistryText::CKey key; m_text.NextKey(key);) {
        const std::uint32_t node = MakeKey(key);
        AddSection(node, m_text.GetPosition());
        if (key.m_bIsLink) ReadLink(node);
    }
}

// Keys come in the order of their paths, so most of a path is that of the key before: what they have in common need not
// be looked at, and of the rest some names may be the same.
std::uint32_t CTextHive::MakeKey(const CRegistryText::CKey& section) {
    const std::string_view path = section.m_path;
    std::size_t depth = m_chain.size();
    while (depth != 0 && m_chain[depth - 1].m_nPathEnd > section.m_nCommon)
        --depth;
    std::uint32_t key = depth == 0 ? GetRoot() : m_chain[depth - 1].m_nKey;
    std::size_t at = depth == 0 ? 0 : m_chain[depth - 1].m_nPathEnd;
    while (at < path.size()) {
        const std::string_view name = path.substr(at, path.find('\\', at) - at);
        at += name.size() + 1;
        if (depth == m_chain.size() || NameAt(m_chain[depth].m_nKey) != name) {
            m_chain.resize(depth);
            m_chain.push_back({MakeChild(key, name, at > path.size() ? section.m_pName : nullptr), at});
        }
        m_chain[depth].m_nPathEnd = at;
        key = m_chain[depth++].m_nKey;
    }
    m_chain.resize(depth);
    return key;
}

// The subkey of that name, which may be there already. One that sorts behind all others need not be looked for.
// `inText` is where the name stands in the text as it is; null where that is not known.
std::uint32_t CTextHive::MakeChild(std::uint32_t parent, std::string_view name, const char* inText) {
    const std::uint32_t last = m_nodes[parent].m_nLastChild;
    const bool sortsBehind = last == 0 || CompareKeyNames(NameAt(last), name) < 0;
    if (!sortsBehind || (last != 0 && !m_bAscends)) {
        if (const std::optional<std::uint32_t> found = FindSubkey(parent, name)) return *found;
    }
    m_bAscends = m_bAscends && sortsBehind;
    const auto child = static_cast<std::uint32_t>(m_nodes.size());
    CNode node;
    node.m_nName =
        static_cast<std::uint32_t>(inText != nullptr ? static_cast<std::size_t>(inText - m_bytes.GetBytes().data())
                                                     : m_bytes.m_nSize + m_strNames.size());
    node.m_nNameLength = static_cast<std::uint32_t>(name.size());
    node.m_nSiblingBefore = last;
    if (inText == nullptr) m_strNames += name;
    m_nodes.push_back(node);
    m_nodes[parent].m_nLastChild = child;
    NoteNewKey(parent, name);
    return child;
}

void CTextHive::AddSection(std::uint32_t key, std::size_t position) {
    if (m_nodes[key].m_nSection == 0) {
        m_nodes[key].m_nSection = static_cast<std::uint32_t>(position);
    } else {
        m_moreSections[key].push_back(position);
    }
}

// It stands in a comment, with the separators escaped.
std::string CTextHive::FindUserSid() const {
    constexpr std::string_view kMark = ";; All keys relative to REGISTRY\\\\User\\\\";
    constexpr std::size_t kHead = 1024;
    std::string_view text = m_bytes.GetBytes().substr(0, kHead);
    const std::size_t at = text.find(kMark);
    if (at == std::string_view::npos) return {};
    text.remove_prefix(at + kMark.size());
    return std::string(text.substr(0, text.find_first_of("\r\n")));
}

// One without a target leads nowhere.
void CTextHive::ReadLink(std::uint32_t key) {
    m_links[key].clear();
    for (CRegistryText::CValue value; m_text.NextValue(value);) {
        if (value.m_dwType == REG_LINK && KeyNamesEqual(value.m_name, "SymbolicLinkValue")) {
            m_links[key] = TextFromUtf16(value.m_data);
        }
    }
}

bool CTextHive::ReadKey(std::uint32_t key, CKeyContents& contents) {
    const CNode& node = m_nodes[key];
    for (std::uint32_t child = node.m_nLastChild; child != 0; child = m_nodes[child].m_nSiblingBefore)
        contents.m_subkeys.push_back({{}, child});
    std::reverse(contents.m_subkeys.begin(), contents.m_subkeys.end());
    for (CKeyContents::CSubkey& subkey : contents.m_subkeys)
        subkey.m_name = contents.Add(NameAt(subkey.m_nKey));
    if (node.m_nSection != 0) ReadSection(node.m_nSection, contents);
    if (!m_moreSections.empty()) {
        const auto more = m_moreSections.find(key);
        if (more != m_moreSections.end()) {
            for (const std::size_t position : more->second)
                ReadSection(position, contents);
        }
    }
    ReplaceRepeated(contents);
    return true;
}

void CTextHive::ReadSection(std::size_t position, CKeyContents& contents) {
    m_text.SetPosition(position);
    const std::size_t problems = m_text.GetProblemCount();
    for (CRegistryText::CValue value; m_text.NextValue(value);) {
        const CKeyContents::CSpan name = contents.Add(value.m_name);
        contents.m_values.push_back({name, value.m_dwType, contents.Add(value.m_data)});
    }
    if (m_text.GetProblemCount() != problems) contents.m_dwError = ERROR_REGISTRY_CORRUPT;
}

std::optional<std::string> CTextHive::GetLink(std::uint32_t key) {
    if (m_links.empty()) return std::nullopt;
    const auto found = m_links.find(key);
    return found == m_links.end() ? std::nullopt : std::optional(found->second);
}

std::vector<CNotice> CTextHive::GetProblems() const {
    if (m_text.GetProblemCount() == 0) return {};
    const char* const what = m_text.IsCut() ? " is cut off: " : " is damaged: ";
    return {{m_strName + what + m_text.GetProblem(), m_strName, ERROR_REGISTRY_CORRUPT}};
}

}  // namespace delvane
