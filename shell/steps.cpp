#include "shell/steps.h"

#include <algorithm>

#include "core/context.h"

namespace delvane {
namespace {

// Whether one letter more, less or other makes the one of the other. Of short names nearly all do so.
bool DifferByOneLetter(std::string_view a, std::string_view b) {
    constexpr std::size_t kShortest = 3;
    if (CountCharacters(a) < kShortest) return false;
    const auto head = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    a.remove_prefix(static_cast<std::size_t>(head.first - a.begin()));
    b.remove_prefix(static_cast<std::size_t>(head.second - b.begin()));
    const auto tail = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend());
    a.remove_suffix(static_cast<std::size_t>(tail.first - a.rbegin()));
    b.remove_suffix(static_cast<std::size_t>(tail.second - b.rbegin()));
    return CountCharacters(a) <= 1 && CountCharacters(b) <= 1;
}

// The snapshot that was probably meant, as a question behind a sentence; empty where there is none like it.
CString SuggestionFor(std::string_view name) {
    const CString wanted = FoldCase(name);
    for (const CString& other : ListSnapshots()) {
        if (other == name) continue;
        const CString folded = FoldCase(other);
        if (wanted == folded + CString(kSnapshotEnding) || DifferByOneLetter(wanted, folded)) {
            return "; did you mean \"" + other + "\"?";
        }
    }
    return {};
}

}  // namespace

COutcome CreateSnapshot(std::unique_ptr<CSnapshot>& side, const CString& name,
                        const std::function<bool(CSnapshot&)>& capture) {
    side.reset();  // two trees at a time would be one too many
    COutcome outcome;
    bool isCaptured = false;
    try {
        side = std::make_unique<CSnapshot>();
        side->SetName(name);
        isCaptured = capture(*side);
        outcome.m_bDone = isCaptured && side->Save();
        if (!outcome.m_bDone) outcome.m_strReason = side->GetError();
    } catch (...) {
        outcome.m_strReason = DescribeCurrentException();
    }
    if (!isCaptured) side.reset();
    return outcome;
}

COutcome LoadSnapshot(std::unique_ptr<CSnapshot>& side, const CString& name) {
    side.reset();
    CLoaded loaded = LoadSnapshotFile(theContext.GetResultsDir(), name);
    if (loaded.m_bMissing) loaded.m_strReason += SuggestionFor(name);
    side = std::move(loaded.m_pSnapshot);
    return {side != nullptr, loaded.m_strReason, loaded.m_bUnreadable};
}

COutcome MakeReport(CMasterReport& report) {
    COutcome outcome;
    try {
        outcome.m_bDone = report.GenerateReport();
        if (!outcome.m_bDone) {
            outcome.m_strReason = "the snapshots could not be compared";
            theContext.GetHost().DeleteFile(report.m_strReportPath);
        }
    } catch (...) {
        outcome.m_strReason = DescribeCurrentException();
    }
    return outcome;
}

CString NotDone(const CString& name, std::string_view what, const CString& reason) {
    return "snapshot \"" + name + "\" was not " + CString(what) + ": " + reason;
}

void ShowDocument(const CString& path) {
    CHost& host = theContext.GetHost();
    if (host.OpenDocument(path)) return;
    theContext.Say(host.GetDisplayPath(path) + (host.FileExists(path) ? ": open: no program was found that opens it"
                                                                      : ": open: there is no such file"));
}

std::vector<CString> ListSnapshots() {
    std::vector<CString> names;
    for (const CString& name : theContext.GetHost().ListFiles(theContext.GetResultsDir())) {
        if (IsSuffixNoCase(kSnapshotEnding, name))
            names.push_back(name.substr(0, name.size() - kSnapshotEnding.size()));
    }
    std::sort(names.begin(), names.end(), [](const CString& a, const CString& b) {
        const int order = mbsicmp(a, b);
        return order != 0 ? order < 0 : a < b;
    });
    return names;
}

}  // namespace delvane
