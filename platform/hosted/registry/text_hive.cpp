#include "platform/hosted/registry/text_hive.h"

#include <algorithm>

#include "platform/hosted/registry/key_name.h"

namespace delvane {
namespace {

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

CTextHive::CTextHive(CFileBytes text, std::string name)
    : m_bytes(std::move(text)), m_name(std::move(name)), m_text(m_bytes.GetBytes()) {
    constexpr std::size_t kUsualKey = 240;  // what a key takes in the text with its values
    m_nodes.Reserve(m_bytes.m_nSize / kUsualKey + 1);
    m_nodes.push_back({});
    for (CRegistryText::CKey key; m_text.NextKey(key);) {
        const std::uint32_t node = MakeKey(key.m_path);
        AddSection(node, m_text.GetPosition());
        if (key.m_bIsLink) ReadLink(node);
    }
}

// Keys come in the order of their paths, so most of a path is that of the key before.
std::uint32_t CTextHive::MakeKey(std::string_view path) {
    std::uint32_t key = 0;
    std::size_t depth = 0;
    while (!path.empty()) {
        const std::string_view name = TakeKeyName(path);
        if (depth == m_chain.size() || NameOf(m_chain[depth]) != name) {
            m_chain.resize(depth);
            std::uint32_t child = 0;
            if (!SortsBehindChildren(key, name)) child = FindChild(key, name);
            if (child == 0) child = MakeChild(key, name);
            m_chain.push_back(child);
        }
        key = m_chain[depth++];
    }
    m_chain.resize(depth);
    return key;
}

// Then the name is none of theirs, and need not be looked for.
bool CTextHive::SortsBehindChildren(std::uint32_t parent, std::string_view name) const {
    const std::uint32_t last = m_nodes[parent].m_nLastChild;
    return last == 0 || (m_bAscends && CompareKeyNames(NameOf(last), name) < 0);
}

std::uint32_t CTextHive::MakeChild(std::uint32_t parent, std::string_view name) {
    const auto child = static_cast<std::uint32_t>(m_nodes.size());
    m_bAscends = m_bAscends && SortsBehindChildren(parent, name);
    CNode node;
    node.m_nName = static_cast<std::uint32_t>(m_names.size());
    node.m_nNameLength = static_cast<std::uint32_t>(name.size());
    m_names.Append(name.data(), name.size());
    m_nodes.push_back(node);
    CNode& above = m_nodes[parent];
    (above.m_nFirstChild == 0 ? above.m_nFirstChild : m_nodes[above.m_nLastChild].m_nNextSibling) = child;
    above.m_nLastChild = child;
    if (m_index.IsMade()) m_index.Add(child, parent, name);
    return child;
}

// 0 where there is none.
std::uint32_t CTextHive::FindChild(std::uint32_t parent, std::string_view name) {
    if (m_index.IsMade()) {
        const auto nameOf = [this](std::uint32_t key) { return NameOf(key); };
        const std::uint32_t found = m_index.Find(parent, name, nameOf);
        return found == CKeyIndex::kNoKey ? 0 : found;
    }
    std::uint32_t found = 0;
    for (std::uint32_t key = m_nodes[parent].m_nFirstChild; key != 0; key = m_nodes[key].m_nNextSibling) {
        ++m_nSteps;
        if (NameOf(key) == name) return key;
        if (found == 0 && KeyNamesEqual(NameOf(key), name)) found = key;
    }
    if (m_nSteps > CKeyIndex::kStepsWithout) MakeIndex();
    return found;
}

void CTextHive::MakeIndex() {
    m_index.Make(m_nodes.size());
    for (std::uint32_t parent = 0; parent < m_nodes.size(); ++parent) {
        for (std::uint32_t key = m_nodes[parent].m_nFirstChild; key != 0; key = m_nodes[key].m_nNextSibling)
            m_index.Add(key, parent, NameOf(key));
    }
}

void CTextHive::AddSection(std::uint32_t key, std::size_t position) {
    if (m_nodes[key].m_nSection == 0) {
        m_nodes[key].m_nSection = static_cast<std::uint32_t>(position);
    } else {
        m_moreSections[key].push_back(position);
    }
}

// One without a target leads nowhere.
void CTextHive::ReadLink(std::uint32_t key) {
    m_links[key].clear();
    for (CRegistryText::CValue value; m_text.NextValue(value);) {
        if (value.m_dwType == REG_LINK && KeyNamesEqual(value.m_name, "SymbolicLinkValue")) {
            m_links[key] = CRegistryText::TextFromUtf16(value.m_data);
        }
    }
}

bool CTextHive::ReadKey(std::uint32_t key, CKeyContents& contents) {
    const CNode& node = m_nodes[key];
    for (std::uint32_t child = node.m_nFirstChild; child != 0; child = m_nodes[child].m_nNextSibling)
        contents.m_subkeys.push_back({contents.Add(NameOf(child)), child});
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
    for (CRegistryText::CValue value; m_text.NextValue(value);) {
        const CKeyContents::CSpan name = contents.Add(value.m_name);
        contents.m_values.push_back({name, value.m_dwType, contents.Add(value.m_data)});
    }
}

std::optional<std::uint32_t> CTextHive::FindSubkey(std::uint32_t key, std::string_view name) {
    const std::uint32_t found = FindChild(key, name);
    return found == 0 ? std::nullopt : std::optional(found);
}

std::optional<std::string> CTextHive::GetLink(std::uint32_t key) {
    if (m_links.empty()) return std::nullopt;
    const auto found = m_links.find(key);
    return found == m_links.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> CTextHive::GetProblems() const {
    if (m_text.GetProblemCount() == 0) return {};
    return {m_name + (m_text.IsCut() ? " is cut off: " : " is damaged: ") + m_text.GetProblem()};
}

}  // namespace delvane
