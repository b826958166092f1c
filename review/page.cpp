// The page of a review: one HTML file that needs nothing else. Details and tables carry it; its script only narrows and
// opens what stands there, so without one it is complete.
#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <map>
#include <tuple>

#include "review/describe.h"
#include "review/formats/writers.h"
#include "review/page_text.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::size_t kFewChanges = 200;  // so many are shown with all groups open
constexpr std::size_t kFewLinks = 5;
constexpr std::size_t kMostLinks = 50;  // of a finding or an accept entry to changes
constexpr std::size_t kFewGaps = 50;

struct CLeftoverText {
    ELeftover m_leftover;
    std::string_view m_help;
    std::string_view m_none;
};
constexpr std::array<CLeftoverText, 3> kLeftovers = {{
    {ELeftover::kLeftBehind, "The installation made it, the removal did not undo it.",
     "The removal left nothing behind."},
    {ELeftover::kNotRestored, "The installation deleted or changed it, and it is not as it was.",
     "Nothing that was there before is missing or different."},
    {ELeftover::kLater, "It was still as in the baseline after the installation: it changed later.",
     "Nothing changed after the installation alone."},
}};

// Where a change stands: one area, hive or neither, kind and kind of change.
struct CPlace {
    std::size_t m_nRank;       // areas, no area, hives, extensions
    std::string_view m_title;  // of a hive its name
    std::string_view m_area;   // the word of its area, or empty
    EKind m_kind;
    EChange m_change;

    auto operator<=>(const CPlace&) const = default;
};

CPlace PlaceOf(const CChange& change) {
    static constexpr std::array kTitles = {
        "Program files", "Windows", "Start menu", "Application data", "Documents", "Outside of all areas", "Elsewhere"};
    constexpr std::size_t kElsewhere = kTitles.size() - 1;
    const auto placed = [&](std::size_t rank, std::string_view title) {
        return CPlace{rank, title, change.GetArea(), change.m_kind, change.m_change};
    };
    if (change.m_kind == EKind::kExtension) return placed(kElsewhere + 2, "File extensions");
    if (const std::string_view hive = change.GetHive(); !hive.empty()) return placed(kElsewhere + 1, hive);
    const std::size_t area = change.m_areas == 0 ? kElsewhere : IndexOf(std::countr_zero(change.m_areas));
    return placed(area, kTitles[area]);
}

// The SHA-256 of hexadecimal digits as a policy names it.
CString PolicyHash(std::string_view digits) {
    constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    CString text = "'sha256-";
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char digit : digits) {
        bits = bits << 4 | static_cast<std::uint32_t>(digit <= '9' ? digit - '0' : digit - 'a' + 10);
        for (count += 4; count >= 6; count -= 6)
            text += kBase64[bits >> (count - 6) & 0x3F];
    }
    if (count != 0) text += kBase64[bits << (6 - count) & 0x3F];
    return text + "='";  // 32 bytes leave one sign to be filled
}

CString Capital(std::string_view word) {
    CString text(word);
    text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text;
}

class CPageWriter {
public:
    CPageWriter(const CReview& review, std::ostream& stream, std::size_t limit)
        : m_review(review), m_page(stream), m_nLimit(limit) {
        CollectGroups();
    }

    void Write() {
        WriteHead();
        WriteVerdict();
        WriteTools();
        m_page << "<main data-left-out=\"" << m_review.m_changes.size() - m_nShown << "\">\n";
        if (m_review.HasInstalled()) WriteLeftovers();
        WriteFindings();
        WriteChanges();
        WriteGaps();
        WriteAccepted();
        (m_page << "</main>\n<script>").Raw(kReviewScript.m_text) << "</script>\n</body>\n</html>\n";
    }

private:
    struct CGroup {
        std::vector<std::uint32_t> m_shown;  // ids, ascending
        std::size_t m_nCount = 0;            // of all
        CCounts<EStatus> m_statuses{};
    };
    using CGroups = std::map<CPlace, CGroup>;

    // The limit holds for all changes of a place together. Open ones are shown first, and of these what a removal left.
    void CollectGroups() {
        m_isShown.resize(m_review.m_changes.size() + 1);
        std::map<CPlace, std::vector<const CChange*>> places;
        for (const CChange& change : m_review.m_changes)
            places[PlaceOf(change)].push_back(&change);
        for (auto& [place, changes] : places) {
            for (const CChange* const change : changes) {
                CGroup& group = m_groups[IndexOf(change->m_leftover)][place];
                ++group.m_nCount;
                ++group.m_statuses[IndexOf(change->m_status)];
            }
            if (changes.size() > m_nLimit) {
                std::ranges::stable_sort(changes, {}, [](const CChange* change) {
                    const bool isTold = change->m_leftover != ELeftover::kNone;
                    return std::tuple(!change->IsOpen(), !isTold, change->m_leftover);
                });
                changes.resize(m_nLimit);
                std::sort(changes.begin(), changes.end());
            }
            m_nShown += changes.size();
            for (const CChange* const change : changes) {
                m_groups[IndexOf(change->m_leftover)][place].m_shown.push_back(change->m_nId);
                m_isShown[change->m_nId] = true;
            }
        }
    }

    void WriteHead() {
        m_page << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                  "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; base-uri 'none'; "
                  "form-action 'none'; style-src "
               << PolicyHash(kReviewStyle.m_hash) << "; script-src " << PolicyHash(kReviewScript.m_hash)
               << "\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                  "<meta name=\"color-scheme\" content=\"light dark\">\n<title>exit code "
               << m_review.m_nExit << ": ";
        m_page.Text(m_review.GetCurrentName(), EText::kTitle) << " against ";
        m_page.Text(m_review.GetBaselineName(), EText::kTitle) << "</title>\n<style>";
        m_page.Raw(kReviewStyle.m_text)
            << "</style>\n</head>\n<body>\n<a class=\"skip\" href=\"#findings\">To the findings</a>\n";
    }

    void WriteVerdict() {
        m_page << "<header id=\"verdict\">\n<p class=\"eyebrow\">Install Delvane " DELVANE_VERSION ", review of "
               << PageTime(m_review.m_nCreated) << "</p>\n<h1>" << m_review.GetCurrentName()
               << " <span class=\"vs\">against</span> " << m_review.GetBaselineName() << "</h1>\n"
               << (m_review.m_nExit == 0 ? "<div class=\"exit pass\"><p>" : "<div class=\"exit fail\"><p>")
               << "<strong>exit code " << m_review.m_nExit << "</strong>";
        WriteWhy();
        m_page << "</p></div>\n";
        WriteTally();
        BeginTable({"Snapshot", "Name", "Taken", "Machine", "User", "System", "File"});
        for (const auto& [role, snapshot, file] : m_review.m_snapshots) {
            m_page << "<tr><th scope=\"row\">" << Capital(role) << "</th><td><b>" << snapshot->m_name << "</b></td><td>"
                   << PageTime(snapshot->GetCreatedTicks()) << "</td><td>" << snapshot->m_strComputerName << "</td><td>"
                   << snapshot->m_strUserName << "</td><td>" << snapshot->m_strOsName << "</td><td><code>" << file
                   << "</code></td></tr>\n";
        }
        m_page << "</tbody>\n</table>\n</header>\n";
    }

    void BeginTable(std::initializer_list<std::string_view> columns) {
        m_page << "<table>\n<thead><tr>";
        for (const std::string_view column : columns)
            m_page << "<th scope=\"col\">" << column << "</th>";
        m_page << "</tr></thead>\n<tbody>\n";
    }

    // Why the exit code is what it is.
    void WriteWhy() {
        if (m_review.m_failOn == EFailOn::kNone) {
            m_page << "With <code>--fail-on none</code> nothing is counted against it.";
            return;
        }
        std::size_t count = 0;
        std::vector<CString> reached;
        const auto add = [&](std::size_t open, std::string_view word) {
            if (open != 0) reached.push_back(Plural(open, "open " + CString(word)));
            count += open;
        };
        if (m_review.m_failOn == EFailOn::kChange) add(m_review.m_counts.m_changes[IndexOf(EStatus::kOpen)], "change");
        for (std::size_t i = 0; i < kWords<ESeverity>.size(); ++i) {
            if (m_review.Reaches(static_cast<ESeverity>(i))) {
                add(m_review.m_counts.m_openFindings[i], kWords<ESeverity>[i]);
            }
        }
        m_page << (count == 0 ? "Nothing that is open" : Joined(reached, " and "))
               << (count < 2 ? " reaches <code>--fail-on " : " reach <code>--fail-on ") << WordOf(m_review.m_failOn)
               << "</code>.";
    }

    // From the `first` word on.
    template <class Enum>
    void WriteCounts(const CCounts<Enum>& counts, std::size_t first, bool isPlural) {
        for (std::size_t i = first; i < counts.size(); ++i) {
            m_page << (i == first ? "<b>" : ", <b>") << counts[i] << "</b> " << kWords<Enum>[i]
                   << (isPlural && counts[i] != 1 ? "s" : "");
        }
        m_page << "</dd></div>\n";
    }

    void WriteTally() {
        const CReviewCounts& counts = m_review.m_counts;
        m_page << "<dl class=\"tally\">\n";
        if (m_review.HasInstalled()) {
            m_page << "<div><dt><a href=\"#leftovers\">Leftovers</a></dt><dd>";
            WriteCounts<ELeftover>(counts.m_leftovers, IndexOf(ELeftover::kLeftBehind), false);
        }
        m_page << "<div><dt><a href=\"#findings\">Findings that are open</a></dt><dd>";
        WriteCounts<ESeverity>(counts.m_openFindings, 0, true);
        m_page << "<div><dt><a href=\"#changes\">Changes</a></dt><dd>";
        WriteCounts<EStatus>(counts.m_changes, 0, false);
        m_page << "<div><dt><a href=\"#gaps\">Not read</a></dt><dd><b>" << m_review.m_gaps.size()
               << (m_review.m_gaps.size() == 1 ? "</b> place</dd></div>\n</dl>\n" : "</b> places</dd></div>\n</dl>\n");
    }

    // The controls are of use with the script alone, which shows them.
    void WriteTools() {
        m_page << "<div class=\"bar\" role=\"search\" hidden>\n<input type=\"search\" placeholder=\"Search paths, "
                  "names, data, findings\" aria-label=\"Search\" autocomplete=\"off\" spellcheck=\"false\">\n"
                  "<button type=\"button\" data-action=\"open-all\">Open all</button>\n"
                  "<button type=\"button\" data-action=\"close-all\">Close all</button>\n"
                  "<button type=\"button\" data-action=\"reset\">Reset</button>\n"
                  "<p role=\"status\"></p>\n</div>\n<div class=\"filters\" hidden>\n";
        WriteFilter("kind", kWords<EKind>, kWords<EKind>);
        WriteFilter("change", kWords<EChange>, kWords<EChange>);
        WriteFilter("status", kWords<EStatus>, kWords<EStatus>);
        WriteFilter("area", kWords<EArea>, kWords<EArea>);
        std::array<CString, kRequirementCount> numbers;
        std::array<CString, kRequirementCount> titles;
        for (std::size_t i = 0; i < kRequirementCount; ++i) {
            numbers[i] = std::to_string(i);
            titles[i] = numbers[i] + " " + CString(RequirementTitle(i));
        }
        WriteFilter("requirement", numbers, titles);
        m_page << "</div>\n";
    }

    void WriteFilter(std::string_view name, const auto& values, const auto& labels) {
        m_page << "<fieldset><legend>" << Capital(name) << "</legend>";
        for (std::size_t i = 0; i < values.size(); ++i) {
            m_page << "\n<label><input type=\"checkbox\" data-filter=\"" << name << "\" value=\"" << values[i] << "\">"
                   << labels[i] << "</label>";
        }
        m_page << "</fieldset>\n";
    }

    // A list of links to changes; of those that are not on the page, their names.
    void WriteLinks(const std::vector<std::uint32_t>& ids, const char* words) {
        if (ids.empty()) return;
        m_page << (ids.size() <= kFewLinks ? "<details open><summary>" : "<details><summary>")
               << Plural(ids.size(), "change") << words << "</summary><ul class=\"links\">\n";
        for (std::size_t i = 0; i < std::min(ids.size(), kMostLinks); ++i) {
            const CChange& change = m_review.GetChange(ids[i]);
            m_page << "<li>" << WordOf(change.m_change) << " ";
            if (m_isShown[ids[i]]) m_page << "<a href=\"#c" << ids[i] << "\">";
            m_page.Object(change.m_path, change.GetValueName()) << (m_isShown[ids[i]] ? "</a></li>\n" : "</li>\n");
        }
        if (ids.size() > kMostLinks) m_page << "<li class=\"none\">and " << ids.size() - kMostLinks << " more</li>\n";
        m_page << "</ul></details>\n";
    }

    // Its heading is left open, for a count.
    CPageText& BeginSection(const char* id, const char* title) {
        return m_page << "<section id=\"" << id << "\" aria-labelledby=\"h-" << id << "\">\n<h2 id=\"h-" << id << "\">"
                      << title;
    }

    void WriteFindings() {
        BeginSection("findings", "Findings <small>") << m_review.m_findings.size() << "</small></h2>\n";
        auto finding = m_review.m_findings.begin();
        for (std::size_t requirement = 0; requirement < kRequirementCount; ++requirement) {
            const auto end = std::ranges::upper_bound(finding, m_review.m_findings.end(), requirement, {},
                                                      [](const CFinding& one) { return one.m_pRule->m_nRequirement; });
            const bool hasNone = finding == end;
            m_page << "<h3>" << requirement << " " << RequirementTitle(requirement)
                   << (hasNone ? " <small>no findings</small></h3>\n" : "</h3>\n<ul class=\"findings\">\n");
            for (; finding != end; ++finding)
                WriteFinding(*finding);
            if (!hasNone) m_page << "</ul>\n";
        }
        m_page << "</section>\n";
    }

    void WriteFinding(const CFinding& finding) {
        const CRule& rule = *finding.m_pRule;
        m_page << "<li id=\"f" << finding.m_nId << "\" class=\"" << WordOf(rule.m_severity)
               << (finding.IsOpen() ? "" : " settled") << "\" data-status=\"" << WordOf(finding.m_status)
               << "\" data-requirement=\"" << rule.m_nRequirement << "\">\n<div><p class=\"head\"><span class=\"sev\">"
               << Capital(WordOf(rule.m_severity)) << "</span> <b>" << rule.m_title << "</b> <code class=\"tag\">"
               << rule.m_id << "</code> <a class=\"id\" href=\"#f" << finding.m_nId << "\">f" << finding.m_nId
               << "</a></p>\n";
        if (!finding.IsOpen()) {
            m_page << "<p><em>" << WordOf(finding.m_status);
            if (!finding.m_strReason.empty()) m_page << ": " << finding.m_strReason;
            m_page << "</em></p>\n";
        }
        m_page << "<p>" << finding.m_strObject << ": " << finding.m_strText << "</p>\n<p class=\"soft\">" << rule.m_help
               << "</p></div>\n";
        WriteLinks(finding.m_changes, " behind it");
        m_page << "</li>\n";
        m_page.FlushSome();
    }

    void WriteLeftovers() {
        BeginSection("leftovers", "Leftovers</h2>\n");
        for (const CLeftoverText& text : kLeftovers) {
            const CGroups& groups = m_groups[IndexOf(text.m_leftover)];
            m_page << "<section class=\"part\">\n<h3>" << WordOf(text.m_leftover) << " <small>"
                   << m_review.m_counts.m_leftovers[IndexOf(text.m_leftover)] << " open</small></h3>\n<p>"
                   << (groups.empty() ? text.m_none : text.m_help) << "</p>\n";
            WriteGroups(groups, "h4");
            m_page << "</section>\n";
        }
        m_page << "</section>\n";
    }

    void WriteChanges() {
        const CGroups& groups = m_groups[IndexOf(ELeftover::kNone)];
        const std::size_t count = m_review.m_changes.size();
        BeginSection("changes", "Changes <small>") << count << "</small></h2>\n";
        if (m_nShown < count) {
            m_page << "<p>" << count << " in all, of which " << count - m_nShown
                   << " are left out here: a group shows at most " << m_nLimit
                   << " (<code>--limit</code>). The review's lines (<code>--write jsonl</code>) have all.</p>\n";
        }
        if (groups.empty()) {
            m_page << (count == 0 ? "<p class=\"none\">The snapshots do not differ.</p>\n"
                                  : "<p class=\"none\">All of them stand with the leftovers above.</p>\n");
        } else if (m_review.HasInstalled()) {
            m_page << "<p>These could not be told apart: the installed snapshot was not compared there.</p>\n";
        }
        WriteGroups(groups, "h3");
        m_page << "</section>\n";
    }

    void WriteGroups(const CGroups& groups, const char* heading) {
        std::string_view title;
        for (const auto& [place, group] : groups) {
            if (place.m_title != title) {
                title = place.m_title;
                m_page << "<" << heading << ">" << title << "</" << heading << ">\n";
            }
            WriteGroup(place, group);
        }
    }

    void WriteGroup(const CPlace& place, const CGroup& group) {
        static constexpr CWords<kWords<EKind>.size()> kTitles = {"Files", "Directories", "Keys", "Values",
                                                                 "Extensions"};
        const bool isOpen = m_nShown <= kFewChanges && group.m_statuses[IndexOf(EStatus::kOpen)] != 0;
        m_page << "<details class=\"group\" data-kind=\"" << WordOf(place.m_kind) << "\" data-change=\""
               << WordOf(place.m_change) << "\" data-area=\"" << place.m_area
               << (isOpen ? "\" open><summary><b>" : "\"><summary><b>") << kTitles[IndexOf(place.m_kind)] << " "
               << WordOf(place.m_change) << "</b> <span>" << group.m_nCount;
        for (const EStatus status : {EStatus::kAccepted, EStatus::kNoise}) {
            const std::size_t count = group.m_statuses[IndexOf(status)];
            if (count != 0) m_page << ", " << count << " " << WordOf(status);
        }
        m_page << "</span></summary>\n";
        if (group.m_shown.size() < group.m_nCount) {
            m_page << "<p>" << group.m_nCount << " in all, " << group.m_nCount - group.m_shown.size()
                   << " left out</p>\n";
        }
        if (!group.m_shown.empty())
            m_page << (group.m_shown.size() > kFewChanges ? "<ul class=\"rows many\">\n" : "<ul class=\"rows\">\n");
        for (const std::uint32_t id : group.m_shown) {
            WriteChangeItem(m_page, m_review.GetChange(id));
            m_page.FlushSome();
        }
        m_page << (group.m_shown.empty() ? "</details>\n" : "</ul></details>\n");
    }

    void WriteGaps() {
        const std::size_t count = m_review.m_gaps.size();
        BeginSection("gaps", "Not read <small>") << count << "</small></h2>\n";
        if (count == 0) {
            m_page << "<p class=\"none\">No snapshot tells of a place that could not be read.</p>\n</section>\n";
            return;
        }
        m_page << "<p>A change at or below such a place of the baseline or the current snapshot is marked "
                  "<strong>uncertain</strong>: it may only mean that one of them could not look.</p>\n"
               << (count <= kFewGaps ? "<details open><summary>" : "<details><summary>") << Plural(count, "place")
               << "</summary>\n";
        BeginTable({"Snapshot", "Kind", "Place", "Reason"});
        for (const CReviewGap& gap : m_review.m_gaps) {
            m_page << "<tr><td>" << gap.m_strSnapshot << "</td><td>" << GapKindName(gap.m_kind) << "</td><td><code>"
                   << gap.m_strPath << "</code>";
            if (!gap.m_strName.empty()) m_page << " <code>" << gap.m_strName << "</code>";
            m_page << "</td><td>" << gap.m_strReason << " (" << gap.m_dwCode << ")</td></tr>\n";
            m_page.FlushSome();
        }
        m_page << "</tbody>\n</table></details>\n</section>\n";
    }

    void WriteAccepted() {
        const auto& entries = m_review.m_accept.GetEntries();
        BeginSection("accepted", "Accepted <small>")
            << Plural(m_review.m_counts.m_changes[IndexOf(EStatus::kAccepted)], "change") << "</small></h2>\n";
        std::map<const CAcceptEntry*, std::vector<std::uint32_t>> changes;
        for (const CChange& change : m_review.m_changes) {
            if (change.m_pEntry != nullptr) changes[change.m_pEntry].push_back(change.m_nId);
        }
        m_page << (entries.empty() ? "<p class=\"none\">No accept list was given.</p>\n" : "<ul class=\"entries\">\n");
        for (const CAcceptEntry& entry : entries)
            WriteEntry(entry, changes[&entry]);
        m_page << (entries.empty() ? "</section>\n" : "</ul>\n</section>\n");
    }

    void WriteEntry(const CAcceptEntry& entry, const std::vector<std::uint32_t>& changes) {
        m_page << "<li>\n<p class=\"head\"><span class=\"soft\">Entry " << entry.m_nNumber << ":</span> <code><b>"
               << (entry.m_pRule != nullptr ? entry.m_pRule->m_id : std::string_view(entry.m_strPath)) << "</b></code>";
        if (entry.m_name) m_page << " <code>" << *entry.m_name << "</code>";
        m_page << " <span class=\"soft\">" << entry.m_strFile << ":" << entry.m_nLine;
        if (!entry.m_strUntil.empty()) m_page << (entry.m_bExpired ? ", ended " : ", until ") << entry.m_strUntil;
        m_page << "</span></p>\n<p>" << entry.m_strReason << "</p>\n";
        bool isIdle = changes.empty();
        for (const CFinding& finding : m_review.m_findings) {
            if (finding.m_pEntry != &entry) continue;
            isIdle = false;
            m_page << "<p>accepts the finding <a href=\"#f" << finding.m_nId << "\">f" << finding.m_nId << "</a>, "
                   << finding.m_pRule->m_title << "</p>\n";
        }
        if (isIdle) {
            m_page << (entry.m_bExpired ? "<p class=\"none\">expired: it accepts nothing any more</p>\n"
                       : entry.m_bFits  ? "<p class=\"none\">accepts nothing that an entry above it does not</p>\n"
                                        : "<p class=\"none\">fits nothing</p>\n");
        }
        WriteLinks(changes, " accepted");
        m_page << "</li>\n";
        m_page.FlushSome();
    }

    const CReview& m_review;
    CPageText m_page;
    std::size_t m_nLimit;
    std::size_t m_nShown = 0;     // changes that stand on the page
    std::vector<bool> m_isShown;  // by id
    std::array<CGroups, kWords<ELeftover>.size()> m_groups;
};

}  // namespace

void WriteReviewPage(const CReview& review, std::ostream& stream, std::size_t limit) {
    CPageWriter(review, stream, limit).Write();
}

}  // namespace delvane
