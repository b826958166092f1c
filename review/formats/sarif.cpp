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
    constexpr std::array<std::string_view, kSeverityCount> kLevels = {"error", "warning", "note"};
    return kLevels[static_cast<std::size_t>(severity)];
}

// file:///C:/Program%20Files/x.exe. What a URI does not take stands as its bytes.
CString UriOf(std::string_view path) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr std::string_view kPlain = "-._~:/";
    CString uri = "file:///";
    for (const char c : CleanText(path)) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (c == '\\') {
            uri += '/';
        } else if (isPlain || kPlain.find(c) != std::string_view::npos) {
            uri += c;
        } else {
            ((uri += '%') += kDigits[byte >> 4]) += kDigits[byte & 0xF];
        }
    }
    return uri;
}

void WriteMessage(CJson& json, std::string_view key, std::string_view text) {
    json.BeginObject(key);
    json.Text("text", text);
    json.EndObject();
}

void WriteLocation(CJson& json, const CChange& change) {
    json.BeginObject();
    if (change.m_kind == EKind::kFile || change.m_kind == EKind::kDirectory) {
        json.BeginObject("physicalLocation");
        json.BeginObject("artifactLocation");
        json.Text("uri", UriOf(change.m_path));
        json.EndObject();
        json.EndObject();
    } else {
        const bool isValue = change.m_kind == EKind::kValue;
        json.BeginList("logicalLocations");
        json.BeginObject();
        if (isValue) json.Text("name", change.m_name);
        json.Text("fullyQualifiedName",
                  isValue ? CString(change.m_path) + '\\' + CString(change.m_name) : CString(change.m_path));
        json.Text("kind", WordOf(change.m_kind));
        json.EndObject();
        json.EndList();
    }
    WriteMessage(json, "message", CString(WordOf(change.m_kind)) + " " + CString(WordOf(change.m_change)));
    json.EndObject();
}

// The same finding on the next day is the same alert: rule and object tell it apart, not what stands behind it.
CString FingerprintOf(const CFinding& finding) {
    std::uint64_t hash = 0xCBF29CE484222325U;  // FNV-1a
    const CString identity = CString(finding.m_pRule->m_id) + '\0' + FoldCase(finding.m_strObject);
    for (const char c : identity)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    CString bytes;
    for (int shift = 56; shift >= 0; shift -= 8)
        bytes += static_cast<char>(hash >> shift & 0xFF);
    return HexText(bytes);
}

void WriteRule(CJson& json, const CRule& rule) {
    json.BeginObject();
    json.Text("id", rule.m_id);
    WriteMessage(json, "shortDescription", rule.m_title);
    WriteMessage(json, "fullDescription", rule.m_help);
    WriteMessage(json, "help", rule.m_help);
    json.BeginObject("defaultConfiguration");
    json.Text("level", LevelOf(rule.m_severity));
    json.EndObject();
    json.BeginObject("properties");
    json.Number("requirement", rule.m_nRequirement);
    json.EndObject();
    json.EndObject();
}

void WriteResult(CJson& json, const CReview& review, const CFinding& finding) {
    json.BeginObject();
    json.Text("ruleId", finding.m_pRule->m_id);
    json.Number("ruleIndex", static_cast<std::size_t>(finding.m_pRule - GetRules().data()));
    json.Text("level", LevelOf(finding.m_severity));
    WriteMessage(json, "message", finding.m_strObject + ": " + finding.m_strText);
    json.BeginList("locations");
    for (std::size_t i = 0; i < std::min(finding.m_changes.size(), kMostLocations); ++i)
        WriteLocation(json, review.GetChange(finding.m_changes[i]));
    json.EndList();
    json.BeginObject("partialFingerprints");
    json.Text("delvaneFinding/v1", FingerprintOf(finding));
    json.EndObject();
    // A list that is there and empty says that nothing suppresses the result.
    json.BeginList("suppressions");
    if (finding.m_status != EStatus::kOpen) {
        json.BeginObject();
        json.Text("kind", "external");
        json.Text("status", "accepted");
        json.Text("justification", finding.m_status == EStatus::kNoise
                                       ? "changes by itself, as the control snapshot shows"
                                       : std::string_view(finding.m_strReason));
        json.EndObject();
    }
    json.EndList();
    json.BeginObject("properties");
    json.Text("object", finding.m_strObject);
    json.Number("changes", finding.m_changes.size());
    json.EndObject();
    json.EndObject();
}

}  // namespace

void WriteSarif(const CReview& review, std::ostream& stream) {
    CJson json;
    json.BeginObject();
    json.Text("$schema", "https://json.schemastore.org/sarif-2.1.0.json");
    json.Text("version", "2.1.0");
    json.BeginList("runs");
    json.BeginObject();
    json.BeginObject("tool");
    json.BeginObject("driver");
    json.Text("name", "Install Delvane");
    json.Text("version", DELVANE_VERSION);
    json.BeginList("rules");
    for (const CRule& rule : GetRules())
        WriteRule(json, rule);
    json.EndList();
    json.EndObject();
    json.EndObject();
    json.BeginList("invocations");
    json.BeginObject();
    json.Flag("executionSuccessful", true);
    json.Number("exitCode", review.m_nExit);
    json.Text("endTimeUtc", IsoTime(review.m_nCreated));
    json.EndObject();
    json.EndList();
    json.BeginList("results");
    for (const CFinding& finding : review.m_findings)
        WriteResult(json, review, finding);
    json.EndList();
    json.EndObject();
    json.EndList();
    json.EndObject();
    json.EndLine(stream);
}

}  // namespace delvane
