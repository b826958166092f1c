// What standard output says of a review.
#include <algorithm>
#include <array>

#include "review/describe.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::size_t kMostPaths = 20;

template <class Words, class Counts>
CString CountsText(const Words& words, const Counts& counts) {
    CString text;
    for (std::size_t i = 0; i < words.size(); ++i)
        text += (i == 0 ? "" : ", ") + std::to_string(counts[i]) + " " + CString(words[i]);
    return text;
}

CString PathText(const CChange& change) {
    CString text = VisibleText(change.m_path);
    if (change.m_kind == EKind::kValue) text += ": " + VisibleText(change.m_name);
    return text;
}

// What the removal left comes first: it is what people ask for.
void WriteLeftovers(const CReview& review, std::ostream& stream) {
    for (const ELeftover leftover : {ELeftover::kLeftBehind, ELeftover::kNotRestored, ELeftover::kLater}) {
        const std::size_t count = review.m_counts.m_leftovers[static_cast<std::size_t>(leftover)];
        stream << WordOf(leftover) << ": " << count << " open " << (count == 1 ? "change" : "changes") << "\n";
        if (leftover == ELeftover::kLater) continue;
        std::size_t shown = 0;
        for (const CChange& change : review.m_changes) {
            if (change.m_leftover != leftover || change.m_status != EStatus::kOpen) continue;
            if (++shown > kMostPaths) break;
            stream << "    " << WordOf(change.m_kind) << " " << PathText(change) << "\n";
        }
        if (count > kMostPaths) stream << "    and " << count - kMostPaths << " more\n";
    }
}

// "system-file 4 warnings, 3 open; ..." of a requirement.
CString RulesText(const CReview& review, int requirement) {
    CString text;
    for (const CRule& rule : GetRules()) {
        if (rule.m_nRequirement != requirement) continue;
        std::size_t count = 0;
        std::size_t open = 0;
        for (const CFinding& finding : review.m_findings) {
            if (finding.m_pRule != &rule) continue;
            ++count;
            if (finding.m_status == EStatus::kOpen) ++open;
        }
        if (count == 0) continue;
        text += (text.empty() ? "" : "; ") + CString(rule.m_id) + " " + std::to_string(count) + " " +
                CString(WordOf(rule.m_severity)) + (count == 1 ? "" : "s") + ", " + std::to_string(open) + " open";
    }
    return text;
}

}  // namespace

void WriteVerdict(const CReview& review, std::ostream& stream) {
    stream << VisibleText(review.m_current.m_strName) << " against " << VisibleText(review.m_baseline.m_strName)
           << ": exit code " << review.m_nExit << "\n";
    if (review.HasInstalled()) WriteLeftovers(review, stream);
    stream << "findings: " << CountsText(kSeverityWords, review.m_counts.m_findings)
           << " (open: " << CountsText(kSeverityWords, review.m_counts.m_openFindings) << ")\n"
           << "changes: " << CountsText(kStatusWords, review.m_counts.m_changes) << "\n";
    for (std::size_t requirement = 0; requirement < kRequirementCount; ++requirement) {
        const CString rules = RulesText(review, static_cast<int>(requirement));
        if (!rules.empty()) {
            stream << "requirement " << requirement << ", " << RequirementTitle(requirement) << ": " << rules << "\n";
        }
    }
    for (const CReviewGap& gap : review.m_gaps) {
        if (static_cast<std::size_t>(&gap - review.m_gaps.data()) == kMostPaths) break;
        stream << "not read in " << VisibleText(gap.m_strSnapshot) << ": " << VisibleText(GapKindName(gap.m_kind))
               << " " << VisibleText(gap.m_strPath);
        if (!gap.m_strName.empty()) stream << ": " << VisibleText(gap.m_strName);
        stream << " (" << gap.m_dwCode << ", " << VisibleText(gap.m_strReason) << ")\n";
    }
    if (review.m_gaps.size() > kMostPaths) {
        stream << "not read: " << review.m_gaps.size() - kMostPaths << " more places\n";
    }
}

}  // namespace delvane
