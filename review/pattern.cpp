// The patterns stand in a tree of their levels. A path is followed from the root, level by level, with the set of nodes
// that it may be at: a literal level is one look into a table, a level with wildcards is tried, and a node behind "**"
// stays in the set. Paths come in the order of a tree, so the sets of the levels that a path shares with the one before
// are kept, and only what is new is worked out.
#include "review/pattern.h"

#include <algorithm>

#include "review/describe.h"

namespace delvane {
namespace {

constexpr std::uint16_t kOne = 0x100;
constexpr std::uint16_t kAny = 0x101;
constexpr std::uint16_t kDeep = 0x102;
constexpr std::uint16_t kNothing = 0x103;

bool IsWildcard(std::uint16_t token) { return token > 0xFF; }
bool HasDeep(const auto& level) { return std::find(level.begin(), level.end(), kDeep) != level.end(); }

// The bytes of a text as a set. Bytes that share a bit are not told apart, which costs a try and no more.
template <class Text>
std::uint64_t SetOfBytes(const Text& text) {
    std::uint64_t set = 0;
    for (const auto byte : text) {
        if (byte <= 0xFF) set |= std::uint64_t{1} << (byte & 63);
    }
    return set;
}

std::size_t CharacterLength(std::string_view text) {
    const CCharacter character = NextCharacter(text);
    return character.IsValid() ? character.m_bytes.size() : 1;
}

}  // namespace

std::uint32_t CPatternIndex::Grow(std::uint32_t& node) {
    if (node == 0) {
        node = static_cast<std::uint32_t>(m_nodes.size());
        m_nodes.emplace_back();
    }
    return node;
}

CPatternIndex::CTokens CPatternIndex::Tokenize(std::string_view pattern) {
    const CString folded = FoldCase(pattern);
    CTokens tokens;
    for (std::size_t i = 0; i < folded.size(); ++i) {
        const std::string_view rest = std::string_view(folded).substr(i);
        if (rest.starts_with("[*]") || rest.starts_with("[?]") || rest.starts_with("[[]")) {
            tokens.push_back(static_cast<unsigned char>(rest[1]));
            i += 2;
        } else if (rest.starts_with("**")) {
            tokens.push_back(kDeep);
            i = std::min(folded.find_first_not_of('*', i), folded.size()) - 1;
        } else {
            tokens.push_back(rest[0] == '*' ? kAny : rest[0] == '?' ? kOne : static_cast<unsigned char>(rest[0]));
        }
    }
    return tokens;
}

// The last `*` takes more when what follows does not fit.
bool CPatternIndex::IsMatch(const CTokens& tokens, std::string_view text) {
    std::size_t at = 0;
    std::size_t token = 0;
    std::size_t afterStar = 0;  // the token behind the last star; 0 before one was met
    std::size_t starEnd = 0;    // where that star ends for now
    while (at < text.size()) {
        const std::uint16_t wanted = token < tokens.size() ? tokens[token] : kNothing;
        if (wanted == kAny) {
            afterStar = ++token;
            starEnd = at;
        } else if (wanted == kOne || wanted == static_cast<unsigned char>(text[at])) {
            at += wanted == kOne ? CharacterLength(text.substr(at)) : 1;
            ++token;
        } else if (afterStar != 0) {
            at = starEnd += CharacterLength(text.substr(starEnd));
            token = afterStar;
        } else {
            return false;
        }
    }
    return std::all_of(tokens.begin() + static_cast<std::ptrdiff_t>(token), tokens.end(),
                       [](std::uint16_t rest) { return rest == kAny; });
}

void CPatternIndex::Add(std::string_view path, const std::optional<CString>& name, std::uint32_t entry) {
    constexpr std::ptrdiff_t kMostSplits = 6;  // each doubles what has to be looked up
    const auto isMixed = [](const CTokens& level) { return level.size() > 1 && HasDeep(level); };
    CLevels levels;
    std::ptrdiff_t splits = 0;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('\\', begin), path.size());
        levels.push_back(Tokenize(path.substr(begin, end - begin)));
        if (isMixed(levels.back())) splits += std::count(levels.back().begin(), levels.back().end(), kDeep);
        begin = end + 1;
    }
    if (levels.size() > 1 && levels.back().empty()) levels.pop_back();
    if (splits > kMostSplits) throw std::invalid_argument("holds too many ** inside of names");
    // A "**" that shares its level with other text either stays within it or parts it: a**b is a*b, or a*, any levels,
    // *b.
    for (std::vector<CLevels> forms = {levels}; !forms.empty();) {
        CLevels form = std::move(forms.back());
        forms.pop_back();
        const auto mixed = std::find_if(form.begin(), form.end(), isMixed);
        if (mixed == form.end()) {
            AddForm(form, name, entry);
            continue;
        }
        const auto deep = std::find(mixed->begin(), mixed->end(), kDeep);
        *deep = kAny;
        const CTokens left(mixed->begin(), deep + 1);
        const CTokens right(deep, mixed->end());
        forms.push_back(form);
        *mixed = right;
        form.insert(mixed, {left, CTokens{kDeep}});
        forms.push_back(std::move(form));
    }
    m_levels.resize(1);
    m_levels[0].m_active.clear();
}

void CPatternIndex::AddForm(const CLevels& levels, const std::optional<CString>& name, std::uint32_t entry) {
    std::uint32_t node = 0;
    for (const CTokens& level : levels)
        node = MakeChild(node, level);
    if (name) {
        CTokens tokens = Tokenize(*name);
        std::replace(tokens.begin(), tokens.end(), kDeep, kAny);  // it is one level
        node = MakeChild(Grow(m_nodes[node].m_nNames), tokens);
    }
    m_nodes[node].m_entries.push_back(entry);
}

std::uint32_t CPatternIndex::MakeChild(std::uint32_t node, const CTokens& level) {
    CNode& parent = m_nodes[node];
    if (level == CTokens{kDeep}) {
        if (parent.m_bStays) return node;  // ** behind ** adds nothing
        m_nodes[Grow(parent.m_nDeep)].m_bStays = true;
        return parent.m_nDeep;
    }
    if (std::none_of(level.begin(), level.end(), IsWildcard)) {
        return Grow(parent.m_literals[CString(level.begin(), level.end())]);
    }
    for (const CWildcard& known : parent.m_wildcards) {
        if (known.m_tokens == level) return known.m_nNode;
    }
    parent.m_wildcards.push_back({level, SetOfBytes(level), 0});
    return Grow(parent.m_wildcards.back().m_nNode);
}

void CPatternIndex::Enter(std::uint32_t node, std::vector<std::uint32_t>& active) {
    if (m_nodes[node].m_nEntered == m_nRound) return;
    m_nodes[node].m_nEntered = m_nRound;
    active.push_back(node);
    if (m_nodes[node].m_nDeep != 0) Enter(m_nodes[node].m_nDeep, active);
}

void CPatternIndex::Step(std::uint32_t node, const CString& folded, std::vector<std::uint32_t>& active) {
    const CNode& from = m_nodes[node];
    if (const auto child = from.m_literals.find(folded); child != from.m_literals.end()) Enter(child->second, active);
    const std::uint64_t lacking = from.m_wildcards.empty() ? 0 : ~SetOfBytes(folded);
    for (const CWildcard& wildcard : from.m_wildcards) {
        if ((wildcard.m_nBytes & lacking) == 0 && IsMatch(wildcard.m_tokens, folded)) Enter(wildcard.m_nNode, active);
    }
    if (from.m_bStays) Enter(node, active);
}

void CPatternIndex::Follow(std::string_view path) {
    if (m_levels[0].m_active.empty()) {
        ++m_nRound;
        Enter(0, m_levels[0].m_active);
    }
    std::size_t depth = 0;
    bool isShared = true;
    for (std::size_t begin = 0; begin <= path.size(); ++depth) {
        const std::size_t end = std::min(path.find('\\', begin), path.size());
        const std::string_view component = path.substr(begin, end - begin);
        begin = end + 1;
        if (isShared && depth + 1 < m_levels.size() && m_levels[depth + 1].m_strComponent == component) continue;
        isShared = false;
        if (m_levels.size() <= depth + 1) m_levels.emplace_back();
        CLevel& level = m_levels[depth + 1];
        level.m_strComponent = component;
        level.m_active.clear();
        ++m_nRound;
        const CString folded = FoldCase(component);
        for (const std::uint32_t node : m_levels[depth].m_active)
            Step(node, folded, level.m_active);
    }
    m_levels.resize(depth + 1);
}

const std::vector<std::uint32_t>& CPatternIndex::Find(std::string_view path, std::optional<std::string_view> name) {
    Follow(path);
    m_found.clear();
    ++m_nRound;
    CString folded;
    std::vector<std::uint32_t> named;
    const auto collect = [&](std::uint32_t node) {
        m_found.insert(m_found.end(), m_nodes[node].m_entries.begin(), m_nodes[node].m_entries.end());
    };
    for (const std::uint32_t node : m_levels.back().m_active) {
        collect(node);
        if (!name || m_nodes[node].m_nNames == 0) continue;
        if (folded.empty()) folded = FoldCase(*name);
        Step(m_nodes[node].m_nNames, folded, named);
    }
    std::for_each(named.begin(), named.end(), collect);
    return m_found;
}

}  // namespace delvane
