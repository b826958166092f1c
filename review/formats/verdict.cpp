// What standard output says of a review.
#include <algorithm>

#include "review/describe.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::size_t kMostPaths = 20;

template <class Enum>
CString CountsText(const CCounts<Enum>& counts) {
    CString text;
    for (std::size_t i = 0; i < counts.size(); ++i)
        text += (i == 0 ? "" : ", ") + std::to_string(counts[i]) + " " + CString(kWords<Enum>[i]);
    return text;
}

// What the removal left comes first: it is what people ask for.
void WriteLeftovers(const CReview& review, std::ostream& stream) {
    for (const ELeftover leftover : {ELeftover::kLeftBehind, ELeftover::kNotRestored, ELeftover::kLater}) {
        const std::size_t count = review.m_counts.m_leftovers[IndexOf(leftover)];
        stream << WordOf(leftover) << ": " << Plural(count, "open change") << "\n";
        if (leftover == ELeftover::kLater) continue;
        std::size_t shown = 0;
        for (const CChange& change : review.m_changes) {
            if (change.m_leftover != leftover || !change.IsOpen()) continue;
            if (++shown > kMostPaths) break;
            stream << "    " << WordOf(change.m_kind) << " " << VisibleText(change.m_path);
            if (change.m_kind == EKind::kValue) stream << ": " << VisibleText(change.m_name);
            stream << "\n";
        }
        if (count > kMostPaths) stream << "    and " << count - kMostPaths << " more\n";
    }
}

// "system-file 4 warnings, 3 open; ..." of a requirement.
CString RulesText(const CReview& review, std::size_t requirement) {
    CString text;
    for (const CRule& rule : GetRules()) {
        if (rule.m_nRequirement != requirement) continue;
        std::size_t count = 0;
        std::size_t open = 0;
        for (const CFinding& finding : review.m_findings) {
            if (finding.m_pRule != &rule) continue;
            ++count;
            if (finding.IsOpen()) ++open;
        }
        if (count == 0) continue;
        text += (text.empty() ? "" : "; ") + CString(rule.m_id) + " " + Plural(count, WordOf(rule.m_severity)) + ", " +
                std::to_string(open) + " open";
    }
    return text;
}

}  // namespace

void WriteVerdict(const CReview& review, std::ostream& stream) {
    stream << VisibleText(review.GetCurrentName()) << " against " << VisibleText(review.GetBaselineName())
           << ": exit code " << review.m_nExit << "\n";
    if (review.HasInstalled()) WriteLeftovers(review, stream);
    stream << "findings: " << CountsText<ESeverity>(review.m_counts.m_findings)
           << " (open: " << CountsText<ESeverity>(review.m_counts.m_openFindings) << ")\n"
           << "changes: " << CountsText<EStatus>(review.m_counts.m_changes) << "\n";
    for (std::size_t requirement = 0; requirement < kRequirementCount; ++requirement) {
        const CString rules = RulesText(review, requirement);
        if (!rules.empty()) {
            stream << "requirement " << requirement << ", " << RequirementTitle(requirement) << ": " << rules << "\n";
        }
    }
    for (std::size_t i = 0; i < std::min(review.m_gaps.size(), kMostPaths); ++i) {
        const CReviewGap& gap = review.m_gaps[i];
        stream << "not read in " << VisibleText(gap.m_strSnapshot) << ": " << GapKindName(gap.m_kind) << " "
               << VisibleText(gap.m_strPath);
        if (!gap.m_strName.empty()) stream << ": " << VisibleText(gap.m_strName);
        stream << " (" << gap.m_dwCode << ", " << VisibleText(gap.m_strReason) << ")\n";
    }
    if (review.m_gaps.size() > kMostPaths) {
        stream << "not read: " << review.m_gaps.size() - kMostPaths << " more places\n";
    }
}

}  // namespace delvane
