// A reviewed list that accepts what is open. The reasons are left to whoever looks at it.
#include <array>
#include <cstdio>
#include <set>

#include "review/describe.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

// The text as a pattern that fits it alone: wildcards in it are literal, and a byte that is no UTF-8 is any character.
CString PatternOf(std::string_view text) {
    CString pattern;
    std::size_t bad = 0;
    while (!text.empty()) {
        const std::size_t length = SequenceLength(text, bad);
        if (length == 0) {
            pattern += '?';
        } else if (text[0] == '*' || text[0] == '?' || text[0] == '[') {
            ((pattern += '[') += text[0]) += ']';
        } else {
            pattern += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return pattern;
}

// A TOML string: literal where it can be, else with escapes.
CString Quoted(std::string_view text) {
    bool isPlain = true;
    CString escaped;
    std::size_t bad = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = SequenceLength(rest, bad);
        const std::uint32_t character = DecodeSequence(rest.substr(0, length));
        isPlain = isPlain && character != '\'' && !IsInvisible(character);
        if (IsInvisible(character)) {
            std::array<char, 16> code{};
            std::snprintf(code.data(), code.size(), "\\u%04X", character);
            escaped += code.data();
        } else {
            if (character == '"' || character == '\\') escaped += '\\';
            escaped += rest.substr(0, length);
        }
        rest.remove_prefix(length);
    }
    return isPlain ? "'" + CString(text) + "'" : "\"" + escaped + "\"";
}

bool IsContainer(const CChange& change) { return change.m_kind == EKind::kDirectory || change.m_kind == EKind::kKey; }

// One behind the last change that came with the directory or key at `first`, which was added or deleted; `allOpen`
// tells whether every one of them is open.
std::size_t EndOfContent(const CReview& review, std::size_t first, bool& allOpen) {
    const CChange& top = review.m_changes[first];
    std::size_t end = first;
    allOpen = true;
    for (; end < review.m_changes.size(); ++end) {
        const CChange& change = review.m_changes[end];
        if (change.m_change != top.m_change || !change.IsWithin(top.m_path)) break;
        allOpen = allOpen && change.m_status == EStatus::kOpen;
    }
    return end;
}

void WriteReason(std::ostream& stream) { stream << "reason = \"\"\n"; }

}  // namespace

void WriteDraft(const CReview& review, std::ostream& stream) {
    stream << "# What is open in the review of " << VisibleText(review.m_current.m_strName) << " against "
           << VisibleText(review.m_baseline.m_strName)
           << ".\n# Keep what is as it should be, say why in its reason, and delete the rest.\n";
    std::set<std::string_view> rules;
    for (const CFinding& finding : review.m_findings) {
        // One with changes behind it is accepted with them.
        if (finding.m_status != EStatus::kOpen || !finding.m_changes.empty()) continue;
        if (!rules.insert(finding.m_pRule->m_id).second) continue;
        stream << "\n# " << VisibleText(finding.m_strText) << "\n[[accept]]\nfinding = \"" << finding.m_pRule->m_id
               << "\"\n";
        WriteReason(stream);
    }
    for (std::size_t at = 0; at < review.m_changes.size();) {
        const CChange& change = review.m_changes[at];
        std::size_t end = at + 1;
        bool isWhole = false;
        if (IsContainer(change) && change.m_change != EChange::kChanged) {
            const std::size_t endOfContent = EndOfContent(review, at, isWhole);
            if (isWhole) end = endOfContent;
        }
        at = end;
        if (change.m_status != EStatus::kOpen) continue;
        CString pattern = PatternOf(change.m_path);
        if (isWhole) pattern += "\\**";
        stream << "\n[[accept]]\npath = " << Quoted(pattern) << "\n";
        if (change.m_kind == EKind::kValue) stream << "name = " << Quoted(PatternOf(change.m_name)) << "\n";
        if (!isWhole) stream << "kind = [\"" << WordOf(change.m_kind) << "\"]\n";
        stream << "change = [\"" << WordOf(change.m_change) << "\"]\n";
        WriteReason(stream);
    }
}

}  // namespace delvane
