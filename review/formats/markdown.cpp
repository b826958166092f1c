// Markdown for the summary of a CI job: the verdict and tables, and never more than such a summary takes.
#include <algorithm>
#include <array>
#include <map>

#include "review/describe.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::size_t kLargestText = 60 * 1000;
constexpr std::size_t kLongestText = 300;  // of one machine text, in bytes
constexpr std::size_t kRoomForEnd = 200;

// Text of a machine in a cell: what would be markup is written as its number.
CString Cell(std::string_view text) {
    constexpr std::string_view kMarkup = "&<>|`*_[]~#!\"'$@:";
    CString visible = VisibleText(text);
    if (visible.size() > kLongestText) {
        std::size_t end = kLongestText;
        while ((static_cast<unsigned char>(visible[end]) & 0xC0) == 0x80)
            --end;
        visible.resize(end);
        visible += "\u2026";
    }
    CString cell;
    for (std::size_t i = 0; i < visible.size(); ++i) {
        const char c = visible[i];
        // A backslash is markup ahead of punctuation alone.
        const bool escapes =
            c == '\\' && (i + 1 == visible.size() || std::ispunct(static_cast<unsigned char>(visible[i + 1])) != 0);
        if (escapes || kMarkup.find(c) != std::string_view::npos) {
            cell += "&#" + std::to_string(static_cast<int>(c)) + ";";
        } else {
            cell += c;
        }
    }
    return cell;
}

CString Code(std::string_view text) { return "<code>" + Cell(text) + "</code>"; }

CString Row(std::initializer_list<std::string_view> cells) {
    CString row = "|";
    for (const std::string_view cell : cells)
        ((row += " ") += cell) += " |";
    return row;
}

// A table at the end of the page. Each row is written if it fits in what is left of `share` of the whole room; what
// does not is counted.
void WriteTable(CString& page, const CString& title, const CString& head, const auto& rows, double share, auto row) {
    if (rows.empty()) return;
    const std::size_t limit = std::min(
        kLargestText - kRoomForEnd, page.size() + static_cast<std::size_t>(share * static_cast<double>(kLargestText)));
    page += "\n## " + title + "\n\n" + head + "\n|";
    for (std::ptrdiff_t column = std::count(head.begin(), head.end(), '|'); column > 1; --column)
        page += " --- |";
    page += "\n";
    std::size_t left = rows.size();
    for (const auto& item : rows) {
        const CString line = row(item) + "\n";
        if (page.size() + line.size() > limit) break;
        page += line;
        --left;
    }
    if (left != 0) page += "\n" + std::to_string(left) + " more are not shown here.\n";
}

// The open changes; of `leftover` alone where one is named.
void WriteOpenChanges(CString& page, const CReview& review, const CString& title, ELeftover leftover, double share) {
    std::vector<const CChange*> changes;
    for (const CChange& change : review.m_changes) {
        if (change.IsOpen() && (leftover == ELeftover::kNone || change.m_leftover == leftover))
            changes.push_back(&change);
    }
    WriteTable(page, title + ": " + std::to_string(changes.size()), "| change | kind | object |", changes, share,
               [](const CChange* change) {
                   const auto name = change->GetValueName();
                   return Row({WordOf(change->m_change), WordOf(change->m_kind),
                               Code(change->m_path) + (name ? " " + Code(*name) : "") +
                                   (change->m_bUncertain ? " (uncertain)" : "")});
               });
}

void WriteHead(CString& page, const CReview& review) {
    const auto& open = review.m_counts.m_openFindings;
    page += "# " + Cell(review.GetCurrentName()) + " against " + Cell(review.GetBaselineName()) + "\n\n**exit code " +
            std::to_string(review.m_nExit) + "** (fail on " + CString(WordOf(review.m_failOn)) +
            "). Open: " + Plural(open[0], "error") + ", " + Plural(open[1], "warning") + ", " +
            Plural(open[2], "info") + ", " + Plural(review.m_counts.m_changes[IndexOf(EStatus::kOpen)], "change") +
            ".\n\n| snapshot | name | taken | machine | user | system |\n| --- | --- | --- | --- | "
            "--- | --- |\n";
    for (const auto& [role, snapshot, file] : review.m_snapshots) {
        page += Row({role, Cell(snapshot->m_name), IsoTime(snapshot->GetCreatedTicks()),
                     Cell(snapshot->m_strComputerName), Cell(snapshot->m_strUserName), Cell(snapshot->m_strOsName)}) +
                "\n";
    }
}

void WriteSummary(CString& page, const CReview& review) {
    using CColumns = std::array<std::size_t, 4>;  // open by change, and what is not open
    std::map<std::pair<CString, EKind>, CColumns> groups;
    for (const CChange& change : review.m_changes) {
        CString area = Cell(change.GetHive());
        if (area.empty()) area = change.m_areas == 0 ? "other" : change.GetArea();
        ++groups[{area, change.m_kind}][change.IsOpen() ? IndexOf(change.m_change) : 3];
    }
    WriteTable(page, "Changes", "| area or hive | kind | added | deleted | changed | accepted or noise |", groups, 0.1,
               [](const auto& group) {
                   const auto& [place, counts] = group;
                   return Row({place.first, WordOf(place.second), std::to_string(counts[0]), std::to_string(counts[1]),
                               std::to_string(counts[2]), std::to_string(counts[3])});
               });
}

}  // namespace

void WriteMarkdown(const CReview& review, std::ostream& stream) {
    CString page;
    WriteHead(page, review);
    for (const ELeftover leftover : {ELeftover::kLeftBehind, ELeftover::kNotRestored})
        WriteOpenChanges(page, review, CString(WordOf(leftover)), leftover, 0.2);
    WriteTable(page, "Findings", "| requirement | severity | rule | finding | changes | status |", review.m_findings,
               0.2, [](const CFinding& finding) {
                   const CRule& rule = *finding.m_pRule;
                   CString status(WordOf(finding.m_status));
                   if (finding.m_status == EStatus::kAccepted) status += "&#58; " + Cell(finding.m_strReason);
                   return Row({std::to_string(rule.m_nRequirement), WordOf(rule.m_severity), rule.m_id,
                               Cell(finding.m_strObject) + "&#58; " + Cell(finding.m_strText),
                               std::to_string(finding.m_changes.size()), status});
               });
    WriteSummary(page, review);
    WriteTable(page, "Not read", "| snapshot | kind | place | reason |", review.m_gaps, 0.1, [](const CReviewGap& gap) {
        return Row({Cell(gap.m_strSnapshot), GapKindName(gap.m_kind),
                    Code(gap.m_strPath) + (gap.m_strName.empty() ? "" : " " + Code(gap.m_strName)),
                    Cell(gap.m_strReason) + " (" + std::to_string(gap.m_dwCode) + ")"});
    });
    WriteOpenChanges(page, review, "Open changes", ELeftover::kNone, 0.4);
    stream << page;
}

}  // namespace delvane
