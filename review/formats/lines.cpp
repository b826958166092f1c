// JSON Lines: one object a line, for jq and for tables.
#include "review/formats/json.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

void WriteReview(CJson& json, const CReview& review) {
    json.BeginRecord("review");
    json.Put("version", 1);
    json.Put("program", DELVANE_VERSION);
    for (const auto& [role, snapshot, file] : review.m_snapshots) {
        json.BeginObject(role);
        WriteSnapshotFields(json, *snapshot, file);
        json.EndLossyObject();
    }
    json.Put("created", IsoTime(review.m_nCreated));
    json.Put("failOn", WordOf(review.m_failOn));
    json.EndRecord();
}

void WriteGap(CJson& json, const CReviewGap& gap) {
    json.BeginRecord("gap");
    json.Put("snapshot", gap.m_strSnapshot);
    json.Put("kind", GapKindName(gap.m_kind));
    json.Put("path", gap.m_strPath);
    if (gap.m_kind == EGapKind::kValue) json.Put("name", gap.m_strName);
    json.Put("code", gap.m_dwCode);
    json.Put("reason", gap.m_strReason);
    if (gap.m_bLossy) json.NoteLossy();
    json.EndRecord();
}

void WriteFinding(CJson& json, const CFinding& finding) {
    json.BeginRecord("finding");
    json.Put("id", finding.m_nId);
    json.Put("rule", finding.m_pRule->m_id);
    json.Put("severity", WordOf(finding.m_pRule->m_severity));
    json.Put("requirement", finding.m_pRule->m_nRequirement);
    json.Put("object", finding.m_strObject);
    json.Put("text", finding.m_strText);
    json.PutList("changes", finding.m_changes);
    json.Put("status", WordOf(finding.m_status));
    if (finding.m_status == EStatus::kAccepted) json.Put("reason", finding.m_strReason);
    json.EndRecord();
}

void WriteChange(CJson& json, const CChange& change) {
    json.BeginRecord("change");
    json.Put("id", change.m_nId);
    json.Put("kind", WordOf(change.m_kind));
    json.Put("change", WordOf(change.m_change));
    json.Put("path", change.m_path);
    if (change.m_kind == EKind::kValue) json.Put("name", change.m_name);
    if (change.IsFileOrDirectory()) json.PutList("areas", WordsIn<EArea>(change.m_areas));
    if (change.m_kind == EKind::kFile) json.PutList("traits", WordsIn<ETrait>(change.m_traits));
    if (!change.m_version.empty()) json.Put("version", change.m_version);
    const auto writeSide = [&](std::string_view key, const CDelvObj* node) {
        if (node == nullptr) return;
        json.BeginObject(key);
        WriteNodeFields(json, *node, change.m_kind);
        json.EndObject();
    };
    writeSide("before", change.m_pBefore);
    writeSide("after", change.m_pAfter);
    json.Put("status", WordOf(change.m_status));
    if (change.m_status == EStatus::kAccepted) json.Put("reason", change.GetReason());
    if (change.m_leftover != ELeftover::kNone) json.Put("leftover", WordOf(change.m_leftover));
    if (change.m_bUncertain) json.Put("uncertain", true);
    json.EndRecord();
}

template <class Enum>
void WriteCounts(CJson& json, std::string_view key, const CCounts<Enum>& counts) {
    json.BeginObject(key);
    for (std::size_t i = 0; i < counts.size(); ++i)
        json.Put(kWords<Enum>[i], counts[i]);
    json.EndObject();
}

}  // namespace

void WriteLines(const CReview& review, std::ostream& stream) {
    CJson json(stream);
    WriteReview(json, review);
    for (const CReviewGap& gap : review.m_gaps)
        WriteGap(json, gap);
    for (const CFinding& finding : review.m_findings)
        WriteFinding(json, finding);
    for (const CChange& change : review.m_changes)
        WriteChange(json, change);
    json.BeginRecord("end");
    WriteCounts<ESeverity>(json, "findings", review.m_counts.m_findings);
    WriteCounts<EStatus>(json, "changes", review.m_counts.m_changes);
    json.Put("gaps", review.m_gaps.size());
    json.Put("exit", review.m_nExit);
    json.EndRecord();
}

}  // namespace delvane
