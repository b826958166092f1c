// JSON Lines: one object a line, for jq and for tables.
#include "review/formats/json.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

void WriteReview(CJson& json, const CReview& review) {
    const auto writeSnapshot = [&](std::string_view key, const CSnapshotRecord& record) {
        json.BeginObject(key);
        WriteSnapshotFields(json, record);
        json.EndLossy();
        json.EndObject();
    };
    json.Text("record", "review");
    json.Number("version", 1);
    json.Text("program", DELVANE_VERSION);
    writeSnapshot("baseline", review.m_baseline);
    writeSnapshot("current", review.m_current);
    if (review.m_control) writeSnapshot("control", *review.m_control);
    if (review.m_installed) writeSnapshot("installed", *review.m_installed);
    json.Text("created", IsoTime(review.m_nCreated));
    json.Text("failOn", WordOf(review.m_failOn));
}

void WriteGap(CJson& json, const CReviewGap& gap) {
    json.Text("record", "gap");
    json.Text("snapshot", gap.m_strSnapshot);
    json.Text("kind", GapKindName(gap.m_kind));
    json.Text("path", gap.m_strPath);
    if (gap.m_kind == EGapKind::kValue) json.Text("name", gap.m_strName);
    json.Number("code", gap.m_dwCode);
    json.Text("reason", gap.m_strReason);
    if (gap.m_bLossy && !json.IsLossy()) json.Flag("lossy", true);
    json.EndLossy();
}

void WriteFinding(CJson& json, const CFinding& finding) {
    json.Text("record", "finding");
    json.Number("id", finding.m_nId);
    json.Text("rule", finding.m_pRule->m_id);
    json.Text("severity", WordOf(finding.m_severity));
    json.Number("requirement", finding.m_nRequirement);
    json.Text("object", finding.m_strObject);
    json.Text("text", finding.m_strText);
    json.BeginList("changes");
    for (const std::uint32_t id : finding.m_changes)
        json.Number({}, id);
    json.EndList();
    json.Text("status", WordOf(finding.m_status));
    if (finding.m_status == EStatus::kAccepted) json.Text("reason", finding.m_strReason);
    json.EndLossy();
}

template <std::size_t Count>
void WriteBits(CJson& json, std::string_view key, const std::array<std::string_view, Count>& words, unsigned bits) {
    json.BeginList(key);
    for (std::size_t i = 0; i < Count; ++i) {
        if ((bits >> i & 1) != 0) json.Text({}, words[i]);
    }
    json.EndList();
}

void WriteChange(CJson& json, const CChange& change) {
    json.Text("record", "change");
    json.Number("id", change.m_nId);
    json.Text("kind", WordOf(change.m_kind));
    json.Text("change", WordOf(change.m_change));
    json.Text("path", change.m_path);
    if (change.m_kind == EKind::kValue) json.Text("name", change.m_name);
    const bool isFile = change.m_kind == EKind::kFile;
    if (isFile || change.m_kind == EKind::kDirectory) WriteBits(json, "areas", kAreaWords, change.m_areas);
    if (isFile) WriteBits(json, "traits", kTraitWords, change.m_traits);
    if (!change.m_version.empty()) json.Text("version", change.m_version);
    const auto writeSide = [&](std::string_view key, const CDelvObj* node) {
        if (node == nullptr) return;
        json.BeginObject(key);
        WriteNodeFields(json, *node, change.m_kind);
        json.EndObject();
    };
    writeSide("before", change.m_pBefore);
    writeSide("after", change.m_pAfter);
    json.Text("status", WordOf(change.m_status));
    if (change.m_status == EStatus::kAccepted) json.Text("reason", change.GetReason());
    if (change.m_leftover != ELeftover::kNone) json.Text("leftover", WordOf(change.m_leftover));
    if (change.m_bUncertain) json.Flag("uncertain", true);
    json.EndLossy();
}

template <class Words, class Counts>
void WriteCounts(CJson& json, std::string_view key, const Words& words, const Counts& counts) {
    json.BeginObject(key);
    for (std::size_t i = 0; i < words.size(); ++i)
        json.Number(words[i], counts[i]);
    json.EndObject();
}

}  // namespace

void WriteLines(const CReview& review, std::ostream& stream) {
    CJson json;
    const auto writeLine = [&](auto write, const auto& what) {
        json.BeginObject();
        write(json, what);
        json.EndObject();
        json.EndLine(stream);
    };
    writeLine(WriteReview, review);
    for (const CReviewGap& gap : review.m_gaps)
        writeLine(WriteGap, gap);
    for (const CFinding& finding : review.m_findings)
        writeLine(WriteFinding, finding);
    for (const CChange& change : review.m_changes)
        writeLine(WriteChange, change);
    const auto writeEnd = [](CJson& end, const CReview& whole) {
        end.Text("record", "end");
        WriteCounts(end, "findings", kSeverityWords, whole.m_counts.m_findings);
        WriteCounts(end, "changes", kStatusWords, whole.m_counts.m_changes);
        end.Number("gaps", whole.m_gaps.size());
        end.Number("exit", whole.m_nExit);
    };
    writeLine(writeEnd, review);
}

}  // namespace delvane
