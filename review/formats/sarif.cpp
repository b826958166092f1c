// SARIF 2.1.0, for code scanning services and editors: a result for each finding.
#include <algorithm>
#include <array>

#include "review/formats/json.h"
#include "review/formats/writers.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::size_t kMostLocations = 100;

std::string_view LevelOf(ESeverity severity) {
    constexpr std::array<std::string_view, kWords<ESeverity>.size()> kLevels = {"error", "warning", "note"};
    return kLevels[IndexOf(severity)];
}

// file:///C:/Program%20Files/x.exe. What a URI does not take stands as its bytes.
CString UriOf(std::string_view path) {
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~:/";
    CString uri = "file:///";
    for (const char c : CleanText(path)) {
        if (c == '\\') {
            uri += '/';
        } else if (kPlain.find(c) != std::string_view::npos) {
            uri += c;
        } else {
            uri += Printed("%%%02X", static_cast<unsigned char>(c));
        }
    }
    return uri;
}

void WriteLocation(CJson& json, const CChange& change) {
    json.BeginObject();
    if (change.IsFileOrDirectory()) {
        json.BeginObject("physicalLocation");
        json.PutObject("artifactLocation", "uri", UriOf(change.m_path));
        json.EndObject();
    } else {
        json.BeginList("logicalLocations");
        json.BeginObject();
        if (change.m_kind == EKind::kValue) json.Put("name", change.m_name);
        json.Put("fullyQualifiedName", change.GetWholePath());
        json.Put("kind", WordOf(change.m_kind));
        json.EndObject();
        json.EndList();
    }
    json.PutObject("message", "text", CString(WordOf(change.m_kind)) + " " + CString(WordOf(change.m_change)));
    json.EndObject();
}

// The same finding on the next day is the same alert: rule and object tell it apart, not what stands behind it.
CString FingerprintOf(const CFinding& finding) {
    std::uint64_t hash = 0xCBF29CE484222325U;  // FNV-1a
    const CString identity = CString(finding.m_pRule->m_id) + '\0' + FoldCase(finding.m_strObject);
    for (const char c : identity)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return Printed("%016llx", static_cast<unsigned long long>(hash));
}

void WriteRule(CJson& json, const CRule& rule) {
    json.BeginObject();
    json.Put("id", rule.m_id);
    json.PutObject("shortDescription", "text", rule.m_title);
    json.PutObject("fullDescription", "text", rule.m_help);
    json.PutObject("help", "text", rule.m_help);
    json.PutObject("defaultConfiguration", "level", LevelOf(rule.m_severity));
    json.PutObject("properties", "requirement", rule.m_nRequirement);
    json.EndObject();
}

void WriteResult(CJson& json, const CReview& review, const CFinding& finding) {
    json.BeginObject();
    json.Put("ruleId", finding.m_pRule->m_id);
    json.Put("ruleIndex", static_cast<std::size_t>(finding.m_pRule - GetRules().data()));
    json.Put("level", LevelOf(finding.m_pRule->m_severity));
    json.PutObject("message", "text", finding.m_strObject + ": " + finding.m_strText);
    json.BeginList("locations");
    for (std::size_t i = 0; i < std::min(finding.m_changes.size(), kMostLocations); ++i)
        WriteLocation(json, review.GetChange(finding.m_changes[i]));
    json.EndList();
    json.PutObject("partialFingerprints", "delvaneFinding/v1", FingerprintOf(finding));
    // A list that is there and empty says that nothing suppresses the result.
    json.BeginList("suppressions");
    if (!finding.IsOpen()) {
        json.PutObject({}, "kind", "external", "status", "accepted", "justification",
                       finding.m_status == EStatus::kNoise ? "changes by itself, as the control snapshot shows"
                                                           : finding.m_strReason);
    }
    json.EndList();
    json.PutObject("properties", "object", finding.m_strObject, "changes", finding.m_changes.size());
    json.EndObject();
}

}  // namespace

void WriteSarif(const CReview& review, std::ostream& stream) {
    CJson json(stream);
    json.BeginObject();
    json.Put("$schema", "https://json.schemastore.org/sarif-2.1.0.json");
    json.Put("version", "2.1.0");
    json.BeginList("runs");
    json.BeginObject();
    json.BeginObject("tool");
    json.BeginObject("driver");
    json.Put("name", "Install Delvane");
    json.Put("version", DELVANE_VERSION);
    json.BeginList("rules");
    for (const CRule& rule : GetRules())
        WriteRule(json, rule);
    json.EndList();
    json.EndObject();
    json.EndObject();
    json.BeginList("invocations");
    json.PutObject({}, "executionSuccessful", true, "exitCode", review.m_nExit, "endTimeUtc",
                   IsoTime(review.m_nCreated));
    json.EndList();
    json.BeginList("results");
    for (const CFinding& finding : review.m_findings)
        WriteResult(json, review, finding);
    json.EndList();
    json.EndObject();
    json.EndList();
    json.EndObject();
    json.EndLine();
}

}  // namespace delvane
