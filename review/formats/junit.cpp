// JUnit's XML, which CI servers show as a table of tests: a suite for each requirement, a case for each rule.
#include <algorithm>
#include <sstream>

#include "review/describe.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::size_t kMostPaths = 100;

using CFindings = std::vector<const CFinding*>;

// For content and attributes alike. XML has no way to write most control characters, nor U+FFFE and U+FFFF.
CString Escaped(std::string_view text) {
    CString escaped;
    while (!text.empty()) {
        const CCharacter character = NextCharacter(text);
        const std::uint32_t c = character.m_nNumber;
        if (c == '\n') {
            escaped += "&#10;";
        } else if (!character.IsValid() || c < 0x20 || c == 0xFFFE || c == 0xFFFF) {
            escaped += kReplacement;
        } else {
            escaped += EscapedCharacter(character.m_bytes);
        }
    }
    return escaped;
}

CString TextOf(const CReview& review, const CFindings& findings) {
    CString text;
    std::size_t room = kMostPaths;
    for (const CFinding* finding : findings) {
        text += finding->m_strObject + ": " + finding->m_strText + "\n";
        const std::size_t shown = std::min(finding->m_changes.size(), room);
        for (std::size_t i = 0; i < shown; ++i) {
            const CChange& change = review.GetChange(finding->m_changes[i]);
            text += "  " + CString(WordOf(change.m_change)) + " " + VisibleText(change.GetWholePath()) + "\n";
        }
        room -= shown;
        if (const std::size_t left = finding->m_changes.size() - shown; left != 0)
            text += "  and " + std::to_string(left) + " more\n";
    }
    return text;
}

CString ReasonsOf(const CFindings& findings) {
    CString reasons;
    for (const CFinding* finding : findings) {
        const CString reason =
            finding->m_status == EStatus::kNoise ? "noise: it changes by itself" : "accepted: " + finding->m_strReason;
        if (reasons.find(reason) == CString::npos) (reasons += reasons.empty() ? "" : "; ") += reason;
    }
    return reasons;
}

}  // namespace

void WriteJUnit(const CReview& review, std::ostream& stream) {
    std::size_t allFailures = 0;
    std::size_t allSkipped = 0;
    std::ostringstream suites;
    for (std::size_t requirement = 0; requirement < kRequirementCount; ++requirement) {
        std::size_t tests = 0;
        std::size_t failures = 0;
        std::size_t skipped = 0;
        std::ostringstream cases;
        for (const CRule& rule : GetRules()) {
            if (rule.m_nRequirement != requirement) continue;
            ++tests;
            CFindings open;
            CFindings closed;
            for (const CFinding& finding : review.m_findings) {
                if (finding.m_pRule == &rule) (finding.IsOpen() ? open : closed).push_back(&finding);
            }
            cases << "    <testcase classname=\"delvane.requirement" << requirement << "\" name=\"" << rule.m_id
                  << "\"";
            if (!open.empty() && review.Reaches(rule.m_severity)) {
                ++failures;
                cases << ">\n      <failure type=\"" << WordOf(rule.m_severity) << "\" message=\""
                      << Escaped(open.front()->m_strText) << "\">" << Escaped(TextOf(review, open))
                      << "</failure>\n    </testcase>\n";
            } else if (!open.empty()) {
                cases << ">\n      <system-out>" << Escaped(TextOf(review, open)) << "</system-out>\n    </testcase>\n";
            } else if (!closed.empty()) {
                ++skipped;
                cases << ">\n      <skipped message=\"" << Escaped(ReasonsOf(closed)) << "\"/>\n    </testcase>\n";
            } else {
                cases << "/>\n";
            }
        }
        suites << "  <testsuite name=\"" << requirement << " " << RequirementTitle(requirement) << "\" tests=\""
               << tests << "\" failures=\"" << failures << "\" errors=\"0\" skipped=\"" << skipped << "\">\n"
               << cases.str() << "  </testsuite>\n";
        allFailures += failures;
        allSkipped += skipped;
    }
    stream << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\""
           << Escaped(review.GetCurrentName() + " - " + review.GetBaselineName()) << "\" tests=\"" << GetRules().size()
           << "\" failures=\"" << allFailures << "\" errors=\"0\" skipped=\"" << allSkipped << "\">\n"
           << suites.str() << "</testsuites>\n";
}

}  // namespace delvane
