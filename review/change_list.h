// The review of one comparison: every change, every finding and every gap in one list in memory. All that `delvane
// review` writes is made of it, and no writer decides anything of its own.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "review/accept.h"
#include "review/words.h"
#include "tree/arena.h"
#include "tree/gaps.h"
#include "tree/snapshot.h"

namespace delvane {

class CDelvExeObj;
class CMasterReport;
struct CRule;

// A snapshot of a review.
struct CSnapshotRecord {
    std::string_view m_role;  // "baseline", "current", "control", "installed"
    const CSnapshot* m_pSnapshot;
    CString m_strFile;  // where it was loaded from, as a person on this system writes it
};

// A place that a capture could not read.
struct CReviewGap : CGap {
    CString m_strSnapshot;  // its name
    bool m_bLossy = false;  // a name in it was no UTF-8
};

// One object that differs. Texts are as the snapshots hold them, raw bytes that a writer has to make clean for its form
// (CleanText); they live as long as the review.
struct CChange {
    std::uint32_t m_nId = 0;  // its place in m_changes, counted from 1
    EKind m_kind = EKind::kFile;
    EChange m_change = EChange::kAdded;
    EStatus m_status = EStatus::kOpen;
    ELeftover m_leftover = ELeftover::kNone;
    std::uint8_t m_areas = 0;         // a bit for each EArea
    std::uint8_t m_requirements = 0;  // a bit for each that has a finding which it stands behind
    std::uint8_t m_traits = 0;        // a bit for each ETrait
    bool m_bUncertain = false;
    std::string_view m_path;     // of a value that of its key, of an extension its name
    std::string_view m_name;     // of a value; "(default)" is the unnamed one; empty for all else
    std::string_view m_version;  // of an executable, where one was read
    // CDelvFileObj, CDelvDirObj, CDelvRegKeyObj, CDelvRegValObj or CDelvExtObj, by kind; null where there was or is
    // nothing.
    const CDelvObj* m_pBefore = nullptr;
    const CDelvObj* m_pAfter = nullptr;
    const CAcceptEntry* m_pEntry = nullptr;  // what accepted it

    const CDelvObj& GetNode() const { return m_pAfter != nullptr ? *m_pAfter : *m_pBefore; }
    // The word of its first area; empty where it has none.
    std::string_view GetArea() const {
        return m_areas == 0 ? std::string_view() : kWords<EArea>[IndexOf(std::countr_zero(m_areas))];
    }
    std::string_view GetReason() const { return m_pEntry == nullptr ? std::string_view() : m_pEntry->m_strReason; }
    bool IsOpen() const { return m_status == EStatus::kOpen; }
    bool IsRegistry() const { return m_kind == EKind::kKey || m_kind == EKind::kValue; }
    bool IsFileOrDirectory() const { return m_kind == EKind::kFile || m_kind == EKind::kDirectory; }
    std::optional<std::string_view> GetValueName() const {
        return m_kind == EKind::kValue ? std::optional(m_name) : std::nullopt;
    }
    // Its path, and of a value its name behind it.
    CString GetWholePath() const {
        return CString(m_path) + (m_kind == EKind::kValue ? '\\' + CString(m_name) : CString());
    }
    // Whether it is at that path or below it.
    bool IsWithin(std::string_view path) const {
        return m_path.starts_with(path) && (m_path.size() == path.size() || m_path[path.size()] == '\\');
    }
    // What a list of changes is grouped by besides kind and change: the hive of a key or value, else empty.
    std::string_view GetHive() const;
};

// One line of the compliance summary.
struct CFinding {
    std::uint32_t m_nId = 0;  // its place in m_findings, counted from 1
    const CRule* m_pRule = nullptr;
    CString m_strObject;                   // "Files/Directories", "File(C:\autoexec.bat)"
    CString m_strText;                     // without markup, and without its last sentence, "Click here ..."
    std::vector<std::uint32_t> m_changes;  // ids of the changes behind it, ascending
    EStatus m_status = EStatus::kOpen;
    CString m_strReason;                     // where it is accepted
    const CAcceptEntry* m_pEntry = nullptr;  // the entry that accepts its rule; null where its changes are accepted

    bool IsOpen() const { return m_status == EStatus::kOpen; }
};

struct CReviewCounts {
    CCounts<ESeverity> m_findings{};      // all, whatever their status
    CCounts<ESeverity> m_openFindings{};  // the open ones
    CCounts<EStatus> m_changes{};
    CCounts<ELeftover> m_leftovers{};  // open changes
};

// What a review is made of. The snapshots are loaded and outlive the review; control and installed may be null.
struct CReviewInput {
    struct CSide {
        CSnapshot* m_pSnapshot = nullptr;
        CString m_strFile;               // CSnapshotRecord::m_strFile
        std::vector<CReviewGap> m_gaps;  // of its list of gaps
    };
    // All four, with the words for them.
    std::array<std::pair<std::string_view, const CSide*>, 4> GetSides() const {
        return {
            {{"baseline", &m_baseline}, {"current", &m_current}, {"control", &m_control}, {"installed", &m_installed}}};
    }
    CSide m_baseline;
    CSide m_current;
    CSide m_control;
    CSide m_installed;
    CAcceptList m_accept;
    EFailOn m_failOn = EFailOn::kWarning;
    std::uint64_t m_nCreated = 0;  // when the review is made
};

class CReview {
public:
    // Compares, collects, and judges. The order of m_changes: files and directories, then the registry, then
    // extensions; in each added, deleted, changed; within that the order of the comparison, in which an added or
    // deleted directory or key stands ahead of its whole content. The order of m_findings: by requirement, in each
    // errors, warnings, infos. Ids depend on the two snapshots alone.
    explicit CReview(CReviewInput input);
    ~CReview();
    CReview(const CReview&) = delete;
    CReview& operator=(const CReview&) = delete;

    CString GetBaselineName() const { return CString(m_snapshots[0].m_pSnapshot->m_name); }
    CString GetCurrentName() const { return CString(m_snapshots[1].m_pSnapshot->m_name); }
    bool HasInstalled() const { return m_snapshots.back().m_role == "installed"; }
    const CChange& GetChange(std::uint32_t id) const { return m_changes[id - 1]; }
    // One behind the last change that came or went with the directory or key at m_changes[first], if all of them are
    // open; 0 where one is not, and for what is no directory or key that came or went.
    std::size_t FindOpenContentEnd(std::size_t first) const;
    // Whether an open finding of that severity, or an open change, makes the exit code 1.
    bool Reaches(ESeverity severity) const;
    // "After - Before", with what would lead out of a folder replaced: the name of each file that is written.
    CString GetFileName() const;

    std::vector<CSnapshotRecord> m_snapshots;  // Baseline, Current, and control and installed where they were given
    std::vector<CReviewGap> m_gaps;  // of Baseline, Current, control, installed, each in the order of its list
    std::vector<CFinding> m_findings;
    std::vector<CChange> m_changes;
    CReviewCounts m_counts;
    EFailOn m_failOn;
    int m_nExit = 0;  // 0 or 1
    std::uint64_t m_nCreated;
    CAcceptList m_accept;  // what the entries of changes and findings point into

private:
    class CCollector;

    CArena m_texts;                            // paths that had to be put together
    std::unique_ptr<CMasterReport> m_pReport;  // owns what versions point into
};

}  // namespace delvane
