// JUnit's XML, which CI servers show as a table of tests: a suite for each requirement, a case for each rule.
#include <algorithm>
#include <sstream>

#include "review/describe.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::size_t kMostPaths = 100;

// For content and attributes alike. XML has no way to write most control characters.
CString Escaped(std::string_view text) {
    CString escaped;
    for (const char c : CleanText(text)) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\n':
                escaped += "&#10;";
                break;
            default: {
                const bool isControl = static_cast<unsigned char>(c) < 0x20;
                // U+FFFE and U+FFFF are characters of Unicode and none of XML.
                const bool isLast = (c == '\xBE' || c == '\xBF') && escaped.ends_with("\xEF\xBF");
                escaped += isControl ? CString("\xEF\xBF\xBD") : CString(1, isLast ? '\xBD' : c);
            }
        }
    }
    return escaped;
}

struct CCase {
    std::vector<const CFinding*> m_open;
    std::vector<const CFinding*> m_closed;
    bool m_bFails = false;
};

CCase CaseOf(const CReview& review, const CRule& rule) {
    CCase result;
    for (const CFinding& finding : review.m_findings) {
        if (finding.m_pRule != &rule) continue;
        const bool isOpen = finding.m_status == EStatus::kOpen;
        (isOpen ? result.m_open : result.m_closed).push_back(&finding);
        result.m_bFails = result.m_bFails || (isOpen && review.Reaches(finding.m_severity));
    }
    return result;
}

CString TextOf(const CReview& review, const std::vector<const CFinding*>& findings) {
    CString text;
    std::size_t paths = 0;
    for (const CFinding* finding : findings) {
        text += finding->m_strObject + ": " + finding->m_strText + "\n";
        std::size_t left = finding->m_changes.size();
        for (const std::uint32_t id : finding->m_changes) {
            if (paths == kMostPaths) break;
            const CChange& change = review.GetChange(id);
            ((text += "  ") += WordOf(change.m_change)) += ' ';
            text += VisibleText(change.m_path);
            if (change.m_kind == EKind::kValue) text += '\\' + VisibleText(change.m_name);
            text += '\n';
            ++paths;
            --left;
        }
        if (left != 0) text += "  and " + std::to_string(left) + " more\n";
    }
    return text;
}

CString ReasonsOf(const std::vector<const CFinding*>& findings) {
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
            if (rule.m_nRequirement != static_cast<int>(requirement)) continue;
            ++tests;
            const CCase result = CaseOf(review, rule);
            cases << "    <testcase classname=\"delvane.requirement" << requirement << "\" name=\"" << rule.m_id
                  << "\"";
            if (result.m_bFails) {
                ++failures;
                cases << ">\n      <failure type=\"" << WordOf(rule.m_severity) << "\" message=\""
                      << Escaped(result.m_open.front()->m_strText) << "\">" << Escaped(TextOf(review, result.m_open))
                      << "</failure>\n    </testcase>\n";
            } else if (!result.m_open.empty()) {
                cases << ">\n      <system-out>" << Escaped(TextOf(review, result.m_open))
                      << "</system-out>\n    </testcase>\n";
            } else if (!result.m_closed.empty()) {
                ++skipped;
                cases << ">\n      <skipped message=\"" << Escaped(ReasonsOf(result.m_closed))
                      << "\"/>\n    </testcase>\n";
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
           << Escaped(review.m_current.m_strName + " - " + review.m_baseline.m_strName) << "\" tests=\""
           << GetRules().size() << "\" failures=\"" << allFailures << "\" errors=\"0\" skipped=\"" << allSkipped
           << "\">\n"
           << suites.str() << "</testsuites>\n";
}

}  // namespace delvane
