// Patterns of paths and names, looked up together: a thousand of them cost a path hardly more than one.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/text.h"

namespace delvane {

// A pattern has levels with a backslash between them. `*` is any text within a level, `?` one character (or one byte
// that is no UTF-8), `**` any number of levels, none too. `[*]`, `[?]` and `[[]` are the characters themselves. Case
// does not count. A name is one level, whatever it holds.
class CPatternIndex {
public:
    // std::invalid_argument where a pattern cannot be used.
    void Add(std::string_view path, const std::optional<CString>& name, std::uint32_t entry);
    // The entries whose path fits and that ask for no name or for this one; in no order, and one may stand there twice.
    // Quick where paths come in the order of a tree. The list lives until the next call.
    const std::vector<std::uint32_t>& Find(std::string_view path, std::optional<std::string_view> name);

private:
    using CTokens = std::vector<std::uint16_t>;  // folded bytes, and the wildcards as numbers above them
    using CLevels = std::vector<CTokens>;
    struct CWildcard {
        CTokens m_tokens;
        std::uint64_t m_nBytes;  // that a text needs to fit
        std::uint32_t m_nNode;
    };
    // What the levels up to here lead to. The root is 0, so that 0 elsewhere is none.
    struct CNode {
        std::unordered_map<CString, std::uint32_t> m_literals;
        std::vector<CWildcard> m_wildcards;
        std::uint32_t m_nDeep = 0;     // the node behind "**"
        std::uint32_t m_nNames = 0;    // its children are names
        bool m_bStays = false;         // is itself behind "**": any level leads back to it
        std::uint32_t m_nEntered = 0;  // the round in which it was entered last
        std::vector<std::uint32_t> m_entries;
    };
    struct CLevel {
        CString m_strComponent;               // as it was spelled
        std::vector<std::uint32_t> m_active;  // nodes that the path up to here leads to
    };

    static CTokens Tokenize(std::string_view pattern);
    static bool IsMatch(const CTokens& tokens, std::string_view text);
    void AddForm(const CLevels& levels, const std::optional<CString>& name, std::uint32_t entry);
    std::uint32_t MakeChild(std::uint32_t node, const CTokens& level);
    std::uint32_t Grow(std::uint32_t& node);  // makes it where there is none
    void Enter(std::uint32_t node, std::vector<std::uint32_t>& active);
    void Step(std::uint32_t node, const CString& folded, std::vector<std::uint32_t>& active);
    void Follow(std::string_view path);

    std::deque<CNode> m_nodes = std::deque<CNode>(1);  // they keep their places while it grows
    std::uint32_t m_nRound = 0;
    std::vector<CLevel> m_levels = std::vector<CLevel>(1);  // of the last path; the first is that of the root
    std::vector<std::uint32_t> m_found;
};

}  // namespace delvane
