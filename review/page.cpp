// The page of a review: one HTML file that needs nothing else. Details and tables carry it; its script only narrows and
// opens what stands there, so without one it is complete.
#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <tuple>

#include "review/describe.h"
#include "review/formats/writers.h"
#include "review/page_parts.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::size_t kFewChanges = 200;  // so many are shown with all groups open
constexpr std::size_t kFewLinks = 5;
constexpr std::size_t kMostLinks = 50;  // of a finding or an accept entry to changes
constexpr std::size_t kFewGaps = 50;

constexpr std::array<std::string_view, 3> kSeverityTitles = {"Error", "Warning", "Info"};

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

std::size_t IndexOf(auto word) { return static_cast<std::size_t>(word); }

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

class CPageWriter {
public:
    CPageWriter(const CReview& review, std::ostream& stream, std::size_t limit)
        : m_review(review), m_page(stream), m_nLimit(limit) {
        CollectRequirements();
        CollectGroups();
        for (const CAcceptEntry& entry : review.m_accept.GetEntries())
            m_entries.emplace(&entry, m_entries.size() + 1);
    }

    void Write() {
        WriteHead();
        WriteVerdict();
        WriteTools();
        m_page.Raw("<main data-left-out=\"").Number(m_review.m_changes.size() - m_shown.size()).Raw("\">\n");
        if (m_review.HasInstalled()) WriteLeftovers();
        WriteFindings();
        WriteChanges();
        WriteGaps();
        WriteAccepted();
        m_page.Raw("</main>\n<script>").Raw(kReviewScript.m_text).Raw("</script>\n</body>\n</html>\n");
    }

private:
    struct CGroup {
        std::vector<std::uint32_t> m_shown;  // ids, ascending
        std::size_t m_nCount = 0;            // of all
        std::array<std::size_t, kStatusCount> m_statuses{};
    };
    using CGroups = std::map<CPagePlace, CGroup>;

    void CollectRequirements() {
        m_requirements.resize(m_review.m_changes.size() + 1);
        for (const CFinding& finding : m_review.m_findings) {
            for (const std::uint32_t id : finding.m_changes)
                m_requirements[id] = static_cast<std::uint8_t>(m_requirements[id] | 1U << finding.m_nRequirement);
        }
    }

    // The limit holds for all changes of a place together. Open ones are shown first, and of these what a removal left.
    void CollectGroups() {
        std::map<CPagePlace, std::vector<const CChange*>> places;
        for (const CChange& change : m_review.m_changes)
            places[CPagePlace(change)].push_back(&change);
        for (auto& [place, changes] : places) {
            for (const CChange* const change : changes) {
                CGroup& group = m_groups[IndexOf(change->m_leftover)][place];
                ++group.m_nCount;
                ++group.m_statuses[IndexOf(change->m_status)];
            }
            if (changes.size() > m_nLimit) {
                std::stable_sort(changes.begin(), changes.end(), [](const CChange* a, const CChange* b) {
                    const auto rank = [](const CChange* change) {
                        const bool isTold = change->m_leftover != ELeftover::kNone;
                        return std::tuple(change->m_status != EStatus::kOpen, !isTold, change->m_leftover);
                    };
                    return rank(a) < rank(b);
                });
                changes.resize(m_nLimit);
            }
            for (const CChange* const change : changes) {
                m_groups[IndexOf(change->m_leftover)][place].m_shown.push_back(change->m_nId);
                m_shown.push_back(change->m_nId);
            }
        }
        for (CGroups& groups : m_groups) {
            for (auto& [place, group] : groups)
                std::sort(group.m_shown.begin(), group.m_shown.end());
        }
        std::sort(m_shown.begin(), m_shown.end());
    }

    void WriteHead() {
        m_page.Raw(
            "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; base-uri 'none'; "
            "form-action 'none'; style-src ");
        m_page.Raw(PolicyHash(kReviewStyle.m_hash)).Raw("; script-src ").Raw(PolicyHash(kReviewScript.m_hash));
        m_page.Raw(
            "\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<meta name=\"color-scheme\" content=\"light dark\">\n<title>exit code ");
        m_page.Number(static_cast<std::size_t>(m_review.m_nExit)).Raw(": ");
        m_page.Text(m_review.m_current.m_strName, EText::kTitle).Raw(" against ");
        m_page.Text(m_review.m_baseline.m_strName, EText::kTitle).Raw("</title>\n<style>").Raw(kReviewStyle.m_text);
        m_page.Raw("</style>\n</head>\n<body>\n<a class=\"skip\" href=\"#findings\">To the findings</a>\n");
    }

    void WriteVerdict() {
        m_page.Raw("<header id=\"verdict\">\n<p class=\"eyebrow\">Install Delvane " DELVANE_VERSION ", review of ");
        m_page.Raw(PageTime(m_review.m_nCreated)).Raw("</p>\n<h1>").Text(m_review.m_current.m_strName);
        m_page.Raw(" <span class=\"vs\">against</span> ").Text(m_review.m_baseline.m_strName).Raw("</h1>\n");
        m_page.Raw(m_review.m_nExit == 0 ? "<div class=\"exit pass\"><p>" : "<div class=\"exit fail\"><p>");
        m_page.Raw("<strong>exit code ").Number(static_cast<std::size_t>(m_review.m_nExit)).Raw("</strong>");
        m_page.Raw(WhyExit()).Raw("</p></div>\n");
        WriteTally();
        m_page.Raw(
            "<table>\n<thead><tr><th scope=\"col\">Snapshot</th><th scope=\"col\">Name</th><th scope=\"col\">"
            "Taken</th><th scope=\"col\">Machine</th><th scope=\"col\">User</th><th scope=\"col\">System</th>"
            "<th scope=\"col\">File</th></tr></thead>\n<tbody>\n");
        WriteSnapshot("Baseline", m_review.m_baseline);
        WriteSnapshot("Current", m_review.m_current);
        if (m_review.m_control) WriteSnapshot("Control", *m_review.m_control);
        if (m_review.m_installed) WriteSnapshot("Installed", *m_review.m_installed);
        m_page.Raw("</tbody>\n</table>\n</header>\n");
    }

    // Why the exit code is what it is, in markup of ours.
    CString WhyExit() const {
        const auto plural = [](std::size_t count, std::string_view word) {
            return std::to_string(count) + " open " + CString(word) + (count == 1 ? "" : "s");
        };
        const CString option = "<code>--fail-on " + CString(WordOf(m_review.m_failOn)) + "</code>";
        if (m_review.m_failOn == EFailOn::kNone) return "With " + option + " nothing is counted against it.";
        CString reached;
        if (m_review.m_failOn == EFailOn::kChange) {
            const std::size_t open = m_review.m_counts.m_changes[IndexOf(EStatus::kOpen)];
            if (open != 0) reached = plural(open, "change");
        }
        for (std::size_t i = 0; i < kSeverityCount; ++i) {
            const std::size_t open = m_review.m_counts.m_openFindings[i];
            if (open == 0 || !m_review.Reaches(static_cast<ESeverity>(i))) continue;
            (reached += reached.empty() ? "" : " and ") += plural(open, kSeverityWords[i]);
        }
        if (reached.empty()) return "Nothing that is open reaches " + option + ".";
        return reached +
               (reached.starts_with("1 ") && reached.find(" and ") == CString::npos ? " reaches " : " reach ") +
               option + ".";
    }

    template <class Counts, class Words>
    void WriteCounts(const Counts& counts, const Words& words, bool isPlural) {
        for (std::size_t i = 0; i < words.size(); ++i) {
            m_page.Raw(i == 0 ? "<b>" : ", <b>").Number(counts[i]).Raw("</b> ").Raw(words[i]);
            m_page.Raw(isPlural && counts[i] != 1 ? "s" : "");
        }
    }

    void WriteTally() {
        const CReviewCounts& counts = m_review.m_counts;
        m_page.Raw("<dl class=\"tally\">\n");
        if (m_review.HasInstalled()) {
            m_page.Raw("<div><dt><a href=\"#leftovers\">Leftovers</a></dt><dd>");
            for (const CLeftoverText& text : kLeftovers) {
                m_page.Raw(text.m_leftover == ELeftover::kLeftBehind ? "<b>" : ", <b>");
                m_page.Number(counts.m_leftovers[IndexOf(text.m_leftover)]).Raw("</b> ").Raw(WordOf(text.m_leftover));
            }
            m_page.Raw("</dd></div>\n");
        }
        m_page.Raw("<div><dt><a href=\"#findings\">Findings that are open</a></dt><dd>");
        WriteCounts(counts.m_openFindings, kSeverityWords, true);
        m_page.Raw("</dd></div>\n<div><dt><a href=\"#changes\">Changes</a></dt><dd>");
        WriteCounts(counts.m_changes, kStatusWords, false);
        m_page.Raw("</dd></div>\n<div><dt><a href=\"#gaps\">Not read</a></dt><dd><b>").Number(m_review.m_gaps.size());
        m_page.Raw(m_review.m_gaps.size() == 1 ? "</b> place</dd></div>\n</dl>\n" : "</b> places</dd></div>\n</dl>\n");
    }

    void WriteSnapshot(std::string_view role, const CSnapshotRecord& record) {
        m_page.Raw("<tr><th scope=\"row\">").Raw(role).Raw("</th><td><b>").Text(record.m_strName).Raw("</b></td><td>");
        m_page.Raw(PageTime(record.m_nCreated));
        for (const CString* const text : {&record.m_strMachine, &record.m_strUser, &record.m_strSystem})
            m_page.Raw("</td><td>").Text(*text);
        m_page.Raw("</td><td><code>").Text(record.m_strFile).Raw("</code></td></tr>\n");
    }

    // The controls are of use with the script alone, which shows them.
    void WriteTools() {
        m_page.Raw(
            "<div class=\"bar\" role=\"search\" hidden>\n<input type=\"search\" placeholder=\"Search paths, names, "
            "data, findings\" aria-label=\"Search\" autocomplete=\"off\" spellcheck=\"false\">\n"
            "<button type=\"button\" data-action=\"open-all\">Open all</button>\n"
            "<button type=\"button\" data-action=\"close-all\">Close all</button>\n"
            "<button type=\"button\" data-action=\"reset\">Reset</button>\n"
            "<p role=\"status\"></p>\n</div>\n<div class=\"filters\" hidden>\n");
        WriteFilter("kind", "Kind", kKindWords, kKindWords);
        WriteFilter("change", "Change", kChangeWords, kChangeWords);
        WriteFilter("status", "Status", kStatusWords, kStatusWords);
        WriteFilter("area", "Area", kAreaWords, kAreaWords);
        std::array<CString, kRequirementCount> numbers;
        std::array<CString, kRequirementCount> titles;
        for (std::size_t i = 0; i < kRequirementCount; ++i) {
            numbers[i] = std::to_string(i);
            titles[i] = numbers[i] + " " + CString(RequirementTitle(i));
        }
        WriteFilter("requirement", "Requirement", numbers, titles);
        m_page.Raw("</div>\n");
    }

    template <class Values, class Labels>
    void WriteFilter(std::string_view name, std::string_view title, const Values& values, const Labels& labels) {
        m_page.Raw("<fieldset><legend>").Raw(title).Raw("</legend>");
        for (std::size_t i = 0; i < values.size(); ++i) {
            m_page.Raw("\n<label><input type=\"checkbox\" data-filter=\"").Raw(name).Raw("\" value=\"").Raw(values[i]);
            m_page.Raw("\">").Raw(labels[i]).Raw("</label>");
        }
        m_page.Raw("</fieldset>\n");
    }

    // A list of links to changes; of those that are not on the page, their names.
    void WriteLinks(const std::vector<std::uint32_t>& ids, std::string_view words) {
        if (ids.empty()) return;
        m_page.Raw(ids.size() <= kFewLinks ? "<details open><summary>" : "<details><summary>");
        m_page.Count(ids.size(), "change").Raw(words).Raw("</summary><ul class=\"links\">\n");
        for (std::size_t i = 0; i < std::min(ids.size(), kMostLinks); ++i) {
            const CChange& change = m_review.GetChange(ids[i]);
            const bool isShown = std::binary_search(m_shown.begin(), m_shown.end(), ids[i]);
            m_page.Raw("<li>").Raw(WordOf(change.m_change)).Raw(" ");
            if (isShown) m_page.Raw("<a href=\"#c").Number(ids[i]).Raw("\">");
            m_page.Object(change.m_path, change.m_kind == EKind::kValue ? &change.m_name : nullptr);
            m_page.Raw(isShown ? "</a></li>\n" : "</li>\n");
        }
        if (ids.size() > kMostLinks) {
            m_page.Raw("<li class=\"none\">and ").Number(ids.size() - kMostLinks).Raw(" more</li>\n");
        }
        m_page.Raw("</ul></details>\n");
    }

    void WriteFindings() {
        m_page.Raw("<section id=\"findings\" aria-labelledby=\"h-findings\">\n<h2 id=\"h-findings\">Findings <small>");
        m_page.Number(m_review.m_findings.size()).Raw("</small></h2>\n");
        auto finding = m_review.m_findings.begin();
        for (std::size_t requirement = 0; requirement < kRequirementCount; ++requirement) {
            m_page.Raw("<h3>").Number(requirement).Raw(" ").Raw(RequirementTitle(requirement));
            const auto isOfIt = [&] {
                return finding != m_review.m_findings.end() && finding->m_nRequirement == static_cast<int>(requirement);
            };
            if (!isOfIt()) {
                m_page.Raw(" <small>no findings</small></h3>\n");
                continue;
            }
            m_page.Raw("</h3>\n<ul class=\"findings\">\n");
            for (; isOfIt(); ++finding)
                WriteFinding(*finding);
            m_page.Raw("</ul>\n");
        }
        m_page.Raw("</section>\n");
    }

    void WriteFinding(const CFinding& finding) {
        const std::size_t severity = IndexOf(finding.m_severity);
        m_page.Raw("<li id=\"f").Number(finding.m_nId).Raw("\" class=\"").Raw(WordOf(finding.m_severity));
        m_page.Raw(finding.m_status == EStatus::kOpen ? "" : " settled").Raw("\" data-status=\"");
        m_page.Raw(WordOf(finding.m_status)).Raw("\" data-requirement=\"");
        m_page.Number(static_cast<std::size_t>(finding.m_nRequirement))
            .Raw("\">\n<div><p class=\"head\"><span class=\"sev\">");
        m_page.Raw(kSeverityTitles[severity]).Raw("</span> <b>").Raw(finding.m_pRule->m_title).Raw("</b> ");
        m_page.Raw("<code class=\"tag\">").Raw(finding.m_pRule->m_id).Raw("</code> <a class=\"id\" href=\"#f");
        m_page.Number(finding.m_nId).Raw("\">f").Number(finding.m_nId).Raw("</a></p>\n");
        if (finding.m_status != EStatus::kOpen) {
            m_page.Raw("<p><em>").Raw(WordOf(finding.m_status));
            if (!finding.m_strReason.empty()) m_page.Raw(": ").Text(finding.m_strReason);
            m_page.Raw("</em></p>\n");
        }
        m_page.Raw("<p>").Text(finding.m_strObject).Raw(": ").Text(finding.m_strText).Raw("</p>\n<p class=\"soft\">");
        m_page.Raw(finding.m_pRule->m_help).Raw("</p></div>\n");
        WriteLinks(finding.m_changes, " behind it");
        m_page.Raw("</li>\n");
        m_page.FlushSome();
    }

    void WriteLeftovers() {
        m_page.Raw(
            "<section id=\"leftovers\" aria-labelledby=\"h-leftovers\">\n<h2 id=\"h-leftovers\">"
            "Leftovers</h2>\n");
        for (const CLeftoverText& text : kLeftovers) {
            const CGroups& groups = m_groups[IndexOf(text.m_leftover)];
            m_page.Raw("<section class=\"part\">\n<h3>").Raw(WordOf(text.m_leftover)).Raw(" <small>");
            m_page.Number(m_review.m_counts.m_leftovers[IndexOf(text.m_leftover)]).Raw(" open</small></h3>\n<p>");
            m_page.Raw(groups.empty() ? text.m_none : text.m_help).Raw("</p>\n");
            WriteGroups(groups, "h4");
            m_page.Raw("</section>\n");
        }
        m_page.Raw("</section>\n");
    }

    void WriteChanges() {
        const CGroups& groups = m_groups[IndexOf(ELeftover::kNone)];
        const std::size_t count = m_review.m_changes.size();
        m_page.Raw("<section id=\"changes\" aria-labelledby=\"h-changes\">\n<h2 id=\"h-changes\">Changes <small>");
        m_page.Number(count).Raw("</small></h2>\n");
        if (m_shown.size() < count) {
            m_page.Raw("<p>").Number(count).Raw(" in all, of which ").Number(count - m_shown.size());
            m_page.Raw(" are left out here: a group shows at most ").Number(m_nLimit);
            m_page.Raw(" (<code>--limit</code>). The review's lines (<code>--write jsonl</code>) have all.</p>\n");
        }
        if (groups.empty()) {
            m_page.Raw(count == 0 ? "<p class=\"none\">The snapshots do not differ.</p>\n"
                                  : "<p class=\"none\">All of them stand with the leftovers above.</p>\n");
        } else if (m_review.HasInstalled()) {
            m_page.Raw("<p>These could not be told apart: the installed snapshot was not compared there.</p>\n");
        }
        WriteGroups(groups, "h3");
        m_page.Raw("</section>\n");
    }

    void WriteGroups(const CGroups& groups, std::string_view heading) {
        CString title;
        for (const auto& [place, group] : groups) {
            if (place.GetTitle() != title) {
                title = place.GetTitle();
                m_page.Raw("<").Raw(heading).Raw(">").Text(title).Raw("</").Raw(heading).Raw(">\n");
            }
            WriteGroup(place, group);
        }
    }

    void WriteGroup(const CPagePlace& place, const CGroup& group) {
        static constexpr std::array<std::string_view, kKindWords.size()> kTitles = {"Files", "Directories", "Keys",
                                                                                    "Values", "Extensions"};
        m_page.Raw("<details class=\"group\" data-kind=\"").Raw(WordOf(place.m_kind)).Raw("\" data-change=\"");
        m_page.Raw(WordOf(place.m_change)).Raw("\" data-area=\"").Raw(place.GetArea());
        const bool isOpen = m_shown.size() <= kFewChanges && group.m_statuses[IndexOf(EStatus::kOpen)] != 0;
        m_page.Raw(isOpen ? "\" open><summary><b>" : "\"><summary><b>");
        m_page.Raw(kTitles[IndexOf(place.m_kind)]).Raw(" ").Raw(WordOf(place.m_change)).Raw("</b> <span>");
        m_page.Number(group.m_nCount);
        for (const EStatus status : {EStatus::kAccepted, EStatus::kNoise}) {
            const std::size_t count = group.m_statuses[IndexOf(status)];
            if (count != 0) m_page.Raw(", ").Number(count).Raw(" ").Raw(WordOf(status));
        }
        m_page.Raw("</span></summary>\n");
        if (group.m_shown.size() < group.m_nCount) {
            m_page.Raw("<p>").Number(group.m_nCount).Raw(" in all, ").Number(group.m_nCount - group.m_shown.size());
            m_page.Raw(" left out</p>\n");
        }
        if (!group.m_shown.empty())
            m_page.Raw(group.m_shown.size() > kFewChanges ? "<ul class=\"rows many\">\n" : "<ul class=\"rows\">\n");
        for (const std::uint32_t id : group.m_shown) {
            const CChange& change = m_review.GetChange(id);
            WriteChangeItem(m_page, change, m_requirements[id],
                            change.m_pEntry == nullptr ? 0 : m_entries.at(change.m_pEntry));
            m_page.FlushSome();
        }
        m_page.Raw(group.m_shown.empty() ? "</details>\n" : "</ul></details>\n");
    }

    void WriteGaps() {
        const std::size_t count = m_review.m_gaps.size();
        m_page.Raw("<section id=\"gaps\" aria-labelledby=\"h-gaps\">\n<h2 id=\"h-gaps\">Not read <small>");
        m_page.Number(count).Raw("</small></h2>\n");
        if (count == 0) {
            m_page.Raw("<p class=\"none\">No snapshot tells of a place that could not be read.</p>\n</section>\n");
            return;
        }
        m_page.Raw(
            "<p>A change at or below such a place of the baseline or the current snapshot is marked "
            "<strong>uncertain</strong>: it may only mean that one of them could not look.</p>\n");
        m_page.Raw(count <= kFewGaps ? "<details open><summary>" : "<details><summary>").Count(count, "place");
        m_page.Raw(
            "</summary>\n<table>\n<thead><tr><th scope=\"col\">Snapshot</th><th scope=\"col\">Kind</th>"
            "<th scope=\"col\">Place</th><th scope=\"col\">Reason</th></tr></thead>\n<tbody>\n");
        for (const CReviewGap& gap : m_review.m_gaps) {
            m_page.Raw("<tr><td>")
                .Text(gap.m_strSnapshot)
                .Raw("</td><td>")
                .Raw(GapKindName(gap.m_kind))
                .Raw("</td><td><code>");
            m_page.Text(gap.m_strPath).Raw("</code>");
            if (!gap.m_strName.empty()) m_page.Raw(" <code>").Text(gap.m_strName).Raw("</code>");
            m_page.Raw("</td><td>").Text(gap.m_strReason).Raw(" (").Number(gap.m_dwCode).Raw(")</td></tr>\n");
            m_page.FlushSome();
        }
        m_page.Raw("</tbody>\n</table></details>\n</section>\n");
    }

    void WriteAccepted() {
        const auto& entries = m_review.m_accept.GetEntries();
        m_page.Raw("<section id=\"accepted\" aria-labelledby=\"h-accepted\">\n<h2 id=\"h-accepted\">Accepted <small>");
        m_page.Count(m_review.m_counts.m_changes[IndexOf(EStatus::kAccepted)], "change").Raw("</small></h2>\n");
        if (entries.empty()) m_page.Raw("<p class=\"none\">No accept list was given.</p>\n");
        std::map<const CAcceptEntry*, std::vector<std::uint32_t>> changes;
        std::map<const CAcceptEntry*, std::vector<const CFinding*>> findings;
        for (const CChange& change : m_review.m_changes) {
            if (change.m_pEntry != nullptr) changes[change.m_pEntry].push_back(change.m_nId);
        }
        for (const CFinding& finding : m_review.m_findings) {
            if (finding.m_pEntry != nullptr) findings[finding.m_pEntry].push_back(&finding);
        }
        if (!entries.empty()) m_page.Raw("<ul class=\"entries\">\n");
        for (const CAcceptEntry& entry : entries)
            WriteEntry(entry, changes[&entry], findings[&entry]);
        if (!entries.empty()) m_page.Raw("</ul>\n");
        m_page.Raw("</section>\n");
    }

    void WriteEntry(const CAcceptEntry& entry, const std::vector<std::uint32_t>& changes,
                    const std::vector<const CFinding*>& findings) {
        m_page.Raw("<li>\n<p class=\"head\"><span class=\"soft\">Entry ")
            .Number(m_entries.at(&entry))
            .Raw(":</span> <code><b>");
        m_page.Text(entry.m_pRule != nullptr ? entry.m_pRule->m_id : std::string_view(entry.m_strPath))
            .Raw("</b></code>");
        if (entry.m_bHasName) m_page.Raw(" <code>").Text(entry.m_strName).Raw("</code>");
        m_page.Raw(" <span class=\"soft\">").Text(entry.m_strFile).Raw(":").Number(entry.m_nLine);
        if (!entry.m_strUntil.empty()) m_page.Raw(entry.m_bExpired ? ", ended " : ", until ").Raw(entry.m_strUntil);
        m_page.Raw("</span></p>\n<p>").Text(entry.m_strReason).Raw("</p>\n");
        for (const CFinding* const finding : findings) {
            m_page.Raw("<p>accepts the finding <a href=\"#f").Number(finding->m_nId).Raw("\">f").Number(finding->m_nId);
            m_page.Raw("</a>, ").Raw(finding->m_pRule->m_title).Raw("</p>\n");
        }
        if (changes.empty() && findings.empty()) {
            m_page.Raw(entry.m_bExpired ? "<p class=\"none\">expired: it accepts nothing any more</p>\n"
                       : entry.m_bFits  ? "<p class=\"none\">accepts nothing that an entry above it does not</p>\n"
                                        : "<p class=\"none\">fits nothing</p>\n");
        }
        WriteLinks(changes, " accepted");
        m_page.Raw("</li>\n");
        m_page.FlushSome();
    }

    const CReview& m_review;
    CPageText m_page;
    std::size_t m_nLimit;
    std::vector<std::uint8_t> m_requirements;              // by id: a bit for each that has a finding before the change
    std::map<const CAcceptEntry*, std::size_t> m_entries;  // their numbers
    std::array<CGroups, kLeftoverCount> m_groups;          // by ELeftover
    std::vector<std::uint32_t> m_shown;                    // ids of what stands on the page, ascending
};

}  // namespace

void WriteReviewPage(const CReview& review, std::ostream& stream, std::size_t limit) {
    CPageWriter(review, stream, limit).Write();
}

}  // namespace delvane
