// A reviewed list that accepts what is open. The reasons are left to whoever looks at it.
#include <set>

#include "review/describe.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

// The text as a pattern that fits it alone: wildcards in it are literal, and a byte that is no UTF-8 is any character.
CString PatternOf(std::string_view text) {
    CString pattern;
    while (!text.empty()) {
        const CCharacter character = NextCharacter(text);
        if (!character.IsValid()) {
            pattern.append(character.m_bytes.size(), '?');
        } else if (character.m_bytes == "*" || character.m_bytes == "?" || character.m_bytes == "[") {
            pattern += "[" + CString(character.m_bytes) + "]";
        } else {
            pattern += character.m_bytes;
        }
    }
    return pattern;
}

// A TOML string: literal where it can be, else with escapes.
CString Quoted(std::string_view text) {
    bool isPlain = true;
    CString escaped;
    for (std::string_view rest = text; !rest.empty();) {
        const CCharacter character = NextCharacter(rest);
        isPlain = isPlain && character.m_bytes != "'" && !character.IsInvisible();
        if (character.IsInvisible()) {
            escaped += Printed("\\u%04X", character.m_nNumber);
        } else {
            if (character.m_bytes == "\"" || character.m_bytes == "\\") escaped += '\\';
            escaped += character.m_bytes;
        }
    }
    return isPlain ? "'" + CString(text) + "'" : "\"" + escaped + "\"";
}

}  // namespace

void WriteDraft(const CReview& review, std::ostream& stream) {
    stream << "# What is open in the review of " << VisibleText(review.GetCurrentName()) << " against "
           << VisibleText(review.GetBaselineName())
           << ".\n# Keep what is as it should be, say why in its reason, and delete the rest.\n";
    std::set<std::string_view> rules;
    for (const CFinding& finding : review.m_findings) {
        // One with changes behind it is accepted with them.
        if (!finding.IsOpen() || !finding.m_changes.empty()) continue;
        if (!rules.insert(finding.m_pRule->m_id).second) continue;
        stream << "\n# " << VisibleText(finding.m_strText) << "\n[[accept]]\nfinding = \"" << finding.m_pRule->m_id
               << "\"\nreason = \"\"\n";
    }
    for (std::size_t at = 0; at < review.m_changes.size();) {
        const CChange& change = review.m_changes[at];
        const std::size_t end = review.FindOpenContentEnd(at);
        at = end != 0 ? end : at + 1;
        if (!change.IsOpen()) continue;
        CString pattern = PatternOf(change.m_path);
        if (end != 0) pattern += "\\**";
        stream << "\n[[accept]]\npath = " << Quoted(pattern) << "\n";
        if (change.m_kind == EKind::kValue) stream << "name = " << Quoted(PatternOf(change.m_name)) << "\n";
        if (end == 0) stream << "kind = [\"" << WordOf(change.m_kind) << "\"]\n";
        stream << "change = [\"" << WordOf(change.m_change) << "\"]\nreason = \"\"\n";
    }
}

}  // namespace delvane
