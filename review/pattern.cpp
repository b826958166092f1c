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
constexpr std::uint16_t kSeparator = 0x103;

bool IsWildcard(std::uint16_t token) { return token > 0xFF; }

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
    std::size_t bad = 0;
    return std::max<std::size_t>(SequenceLength(text, bad), 1);
}

}  // namespace

CPatternIndex::CPatternIndex() {
    NewNode();
    m_levels.resize(1);
}

std::uint32_t CPatternIndex::NewNode() {
    m_nodes.emplace_back();
    m_entered.push_back(0);
    return static_cast<std::uint32_t>(m_nodes.size() - 1);
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
            tokens.push_back(rest[0] == '*'    ? kAny
                             : rest[0] == '?'  ? kOne
                             : rest[0] == '\\' ? kSeparator
                                               : static_cast<unsigned char>(rest[0]));
        }
    }
    return tokens;
}

// The last `*` may take more when what follows does not fit.
bool CPatternIndex::IsMatch(const CTokens& tokens, std::string_view text) {
    std::size_t at = 0;
    std::size_t token = 0;
    std::size_t afterStar = 0;  // the token behind the last star; 0 before one was met
    std::size_t starAt = 0;     // where that star ends for now
    while (at < text.size() || token < tokens.size()) {
        if (token < tokens.size() && tokens[token] == kAny) {
            afterStar = ++token;
            starAt = at;
            continue;
        }
        if (token < tokens.size() && at < text.size()) {
            if (tokens[token] == kOne) {
                at += CharacterLength(text.substr(at));
                ++token;
                continue;
            }
            if (tokens[token] == static_cast<unsigned char>(text[at])) {
                ++at;
                ++token;
                continue;
            }
        }
        if (afterStar == 0 || starAt >= text.size()) return false;
        starAt += CharacterLength(text.substr(starAt));
        at = starAt;
        token = afterStar;
    }
    return true;
}

void CPatternIndex::Add(std::string_view path, const std::optional<CString>& name, std::uint32_t entry) {
    constexpr std::ptrdiff_t kMostSplits = 6;  // each doubles what has to be looked up
    std::vector<CTokens> levels(1);
    for (const std::uint16_t token : Tokenize(path)) {
        if (token == kSeparator) {
            levels.emplace_back();
        } else {
            levels.back().push_back(token);
        }
    }
    if (levels.size() > 1 && levels.back().empty()) levels.pop_back();
    std::ptrdiff_t splits = 0;
    for (const CTokens& level : levels) {
        if (level.size() > 1) splits += std::count(level.begin(), level.end(), kDeep);
    }
    if (splits > kMostSplits) throw std::invalid_argument("holds too many ** inside of names");
    std::optional<CTokens> nameTokens;
    if (name) {
        // A name is one level: a backslash in it is an ordinary character.
        nameTokens = Tokenize(*name);
        std::replace(nameTokens->begin(), nameTokens->end(), kSeparator, static_cast<std::uint16_t>('\\'));
        std::replace(nameTokens->begin(), nameTokens->end(), kDeep, kAny);
    }
    m_told.resize(std::max<std::size_t>(m_told.size(), entry + std::size_t{1}));
    AddLevels(std::move(levels), 0, 0, nameTokens, entry);
    m_levels.resize(1);
    m_levels[0].m_active.clear();
}

// A "**" that shares its level with other text either stays within it or parts it: a**b is a*b, or a*, any levels, *b.
void CPatternIndex::AddLevels(std::vector<CTokens> levels, std::size_t at, std::uint32_t node,
                              const std::optional<CTokens>& name, std::uint32_t entry) {
    for (; at < levels.size(); ++at) {
        CTokens& level = levels[at];
        const auto deep = std::find(level.begin(), level.end(), kDeep);
        if (deep != level.end() && level.size() > 1) {
            CTokens left(level.begin(), deep);
            CTokens right(deep + 1, level.end());
            left.push_back(kAny);
            right.insert(right.begin(), kAny);
            *deep = kAny;
            std::vector<CTokens> parted = levels;
            parted[at] = right;
            parted.insert(parted.begin() + static_cast<std::ptrdiff_t>(at), {left, CTokens{kDeep}});
            AddLevels(std::move(parted), at, node, name, entry);
            AddLevels(std::move(levels), at, node, name, entry);
            return;
        }
        node = MakeChild(node, level);
    }
    if (name) {
        if (m_nodes[node].m_nNames == 0) {
            const std::uint32_t names = NewNode();
            m_nodes[node].m_nNames = names;
        }
        node = MakeChild(m_nodes[node].m_nNames, *name);
    }
    m_nodes[node].m_entries.push_back(entry);
}

std::uint32_t CPatternIndex::MakeChild(std::uint32_t node, const CTokens& level) {
    if (level == CTokens{kDeep}) {
        if (m_nodes[node].m_bStays) return node;  // ** behind ** adds nothing
        if (m_nodes[node].m_nDeep == 0) {
            const std::uint32_t deep = NewNode();
            m_nodes[node].m_nDeep = deep;
            m_nodes[deep].m_bStays = true;
        }
        return m_nodes[node].m_nDeep;
    }
    if (std::none_of(level.begin(), level.end(), IsWildcard)) {
        const CString literal(level.begin(), level.end());
        if (const auto known = m_nodes[node].m_literals.find(literal); known != m_nodes[node].m_literals.end()) {
            return known->second;
        }
        const std::uint32_t child = NewNode();
        m_nodes[node].m_literals.emplace(literal, child);
        return child;
    }
    for (const CWildcard& known : m_nodes[node].m_wildcards) {
        if (known.m_tokens == level) return known.m_nNode;
    }
    const std::uint32_t child = NewNode();
    m_nodes[node].m_wildcards.push_back({level, SetOfBytes(level), child});
    return child;
}

void CPatternIndex::Enter(std::uint32_t node, std::vector<std::uint32_t>& active) {
    if (m_entered[node] == m_nRound) return;
    m_entered[node] = m_nRound;
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

void CPatternIndex::Collect(std::uint32_t node) {
    for (const std::uint32_t entry : m_nodes[node].m_entries) {
        if (m_told[entry] == m_nRound) continue;
        m_told[entry] = m_nRound;
        m_found.push_back(entry);
    }
}

const std::vector<std::uint32_t>& CPatternIndex::Find(std::string_view path, std::optional<std::string_view> name) {
    Follow(path);
    m_found.clear();
    ++m_nRound;
    CString folded;
    std::vector<std::uint32_t> named;
    for (const std::uint32_t node : m_levels.back().m_active) {
        Collect(node);
        if (!name || m_nodes[node].m_nNames == 0) continue;
        if (folded.empty()) folded = FoldCase(*name);
        Step(m_nodes[node].m_nNames, folded, named);
    }
    for (const std::uint32_t node : named)
        Collect(node);
    return m_found;
}

}  // namespace delvane
