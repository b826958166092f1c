#include "review/change_list.h"

#include <algorithm>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "capture/executable.h"
#include "capture/extensions.h"
#include "capture/registry.h"
#include "report/master.h"
#include "resources/strings.h"
#include "review/describe.h"
#include "review/gap_list.h"
#include "review/rules.h"

namespace delvane {
namespace {

static_assert(static_cast<int>(EArea::kDocuments) == static_cast<int>(EFolderArea::kDocuments));

EKind KindOf(const CDelvObj& node) {
    if (IsKindOf<CDelvDirObj>(node)) return EKind::kDirectory;
    if (IsKindOf<CDelvFileObj>(node)) return EKind::kFile;
    if (IsKindOf<CDelvRegKeyObj>(node)) return EKind::kKey;
    if (IsKindOf<CDelvRegValObj>(node)) return EKind::kValue;
    return EKind::kExtension;
}

// Hands all that a comparison was told to `take`, in the order of a review.
template <class Take>
void ForEachChange(const CMasterReport& report, Take take) {
    for (const CReportObj* section : std::initializer_list<const CReportObj*>{
             &report.m_fileReport, &report.m_registryReport, &report.m_extReport}) {
        for (const CDelvObj* object : section->m_added)
            take(EChange::kAdded, nullptr, object);
        for (const CDelvObj* object : section->m_deleted)
            take(EChange::kDeleted, object, nullptr);
        for (const auto& change : section->m_changed)
            take(EChange::kChanged, change->m_pBaseline, change->m_pObject);
    }
}

// An object by what it is: the same one has the same text in every comparison.
CString IdentityOf(EKind kind, std::string_view path, std::string_view name) {
    return static_cast<char>('0' + static_cast<int>(kind)) + FoldCase(path) + '\0' + FoldCase(name);
}

CString IdentityOf(const CDelvObj& node) {
    const EKind kind = KindOf(node);
    return IdentityOf(kind, node.GetFullName(), kind == EKind::kValue ? node.m_name.Get() : std::string_view());
}

// What another snapshot than Current differs in from Baseline.
class CComparison {
public:
    CComparison(CSnapshot& other, CSnapshot& baseline) {
        CMasterReport report(other, baseline);
        report.CompareSnapshots();
        ForEachChange(report, [&](EChange change, const CDelvObj* before, const CDelvObj* after) {
            m_changes[IdentityOf(after != nullptr ? *after : *before)] |= 1U << IndexOf(change);
        });
        for (const CReportFinding& finding : report.m_findings) {
            const auto isOneOf = [&](std::initializer_list<std::uint32_t> ids) {
                return std::find(ids.begin(), ids.end(), finding.m_textId) != ids.end();
            };
            if (isOneOf({IDS_DRIVE_TYPES_DIFFER, IDS_VOLUMES_DIFFER, IDS_DRIVE_NOT_IN_BASELINE,
                         IDS_DRIVE_NOT_IN_CURRENT, IDS_CURRENT_WITHOUT_HIVE, IDS_BASELINE_WITHOUT_HIVE})) {
                m_ignored.insert(CString(finding.m_pObject->m_name));
            }
            m_bExtensionsIgnored =
                m_bExtensionsIgnored || isOneOf({IDS_CURRENT_WITHOUT_EXTENSIONS, IDS_BASELINE_WITHOUT_EXTENSIONS});
        }
    }

    // How the object of the change differs there, a bit for each change.
    unsigned Find(const CChange& change) const {
        const auto found = m_changes.find(IdentityOf(change.m_kind, change.m_path, change.m_name));
        return found == m_changes.end() ? 0 : found->second;
    }
    // Whether the drive or hive of the change was compared at all.
    bool Knows(const CChange& change) const {
        if (change.m_kind == EKind::kExtension) return !m_bExtensionsIgnored;
        return !m_ignored.contains(CString(change.m_path.substr(0, change.m_path.find('\\'))));
    }

private:
    // More than one bit where the case of a name alone has changed: it was deleted and added.
    std::unordered_map<CString, unsigned> m_changes;
    std::set<CString> m_ignored;
    bool m_bExtensionsIgnored = false;
};

}  // namespace

// Fills a review, a step after the other.
class CReview::CCollector {
public:
    explicit CCollector(CReview& review) : m_review(review), m_report(*review.m_pReport) {}

    void CollectChanges() {
        ForEachChange(m_report, [&](EChange change, const CDelvObj* before, const CDelvObj* after) {
            AddChange(change, before, after);
        });
        NoteExecutables();
    }

    void CollectGaps(const CReviewInput& input) {
        CGapIndex index;
        for (const auto& [role, side] : input.GetSides()) {
            for (CReviewGap gap : side->m_gaps) {
                gap.m_strSnapshot = side->m_pSnapshot->m_name;
                if (side == &input.m_baseline || side == &input.m_current) index.Add(gap);
                m_review.m_gaps.push_back(std::move(gap));
            }
        }
        for (CChange& change : m_review.m_changes)
            change.m_bUncertain = index.Covers(change);
    }

    void CollectFindings() {
        for (const CReportFinding& filed : m_report.m_findings) {
            const CRule* const rule = FindRuleOfText(filed.m_textId);
            if (rule == nullptr) continue;
            CFinding finding;
            finding.m_pRule = rule;
            finding.m_strObject = DescribeObject(*filed.m_pObject);
            finding.m_strText = PlainText(filed);
            finding.m_changes = ChangesBehind(filed);
            for (const std::uint32_t id : finding.m_changes) {
                std::uint8_t& requirements = m_review.m_changes[id - 1].m_requirements;
                requirements = static_cast<std::uint8_t>(requirements | 1U << rule->m_nRequirement);
            }
            m_review.m_findings.push_back(std::move(finding));
        }
        std::ranges::stable_sort(m_review.m_findings, {}, [](const CFinding& finding) {
            return std::pair(finding.m_pRule->m_nRequirement, finding.m_pRule->m_severity);
        });
        for (std::uint32_t id = 0; CFinding & finding : m_review.m_findings)
            finding.m_nId = ++id;
    }

    // The accept list is asked first, then the control.
    void JudgeChanges(const CReviewInput& input) {
        const auto compare = [&](const CReviewInput::CSide& side) {
            return side.m_pSnapshot == nullptr
                       ? std::optional<CComparison>()
                       : std::optional<CComparison>(std::in_place, *side.m_pSnapshot, *input.m_baseline.m_pSnapshot);
        };
        const std::optional<CComparison> control = compare(input.m_control);
        const std::optional<CComparison> installed = compare(input.m_installed);
        for (CChange& change : m_review.m_changes) {
            change.m_pEntry = m_review.m_accept.Find(change);
            if (change.m_pEntry != nullptr) {
                change.m_status = EStatus::kAccepted;
            } else if (control && (control->Find(change) >> IndexOf(change.m_change) & 1) != 0) {
                change.m_status = EStatus::kNoise;
            }
            if (installed && installed->Knows(change)) {
                change.m_leftover = installed->Find(change) == 0         ? ELeftover::kLater
                                    : change.m_change == EChange::kAdded ? ELeftover::kLeftBehind
                                                                         : ELeftover::kNotRestored;
            }
        }
    }

    void JudgeFindings() {
        for (CFinding& finding : m_review.m_findings) {
            finding.m_pEntry = m_review.m_accept.Find(*finding.m_pRule);
            if (finding.m_pEntry != nullptr) {
                finding.m_status = EStatus::kAccepted;
                finding.m_strReason = finding.m_pEntry->m_strReason;
            } else if (!finding.m_changes.empty()) {
                JudgeByChanges(finding);
            }
        }
    }

    void Count() {
        CReviewCounts& counts = m_review.m_counts;
        for (const CChange& change : m_review.m_changes) {
            ++counts.m_changes[IndexOf(change.m_status)];
            if (change.IsOpen()) ++counts.m_leftovers[IndexOf(change.m_leftover)];
        }
        bool isReached = m_review.m_failOn == EFailOn::kChange && counts.m_changes[IndexOf(EStatus::kOpen)] != 0;
        for (const CFinding& finding : m_review.m_findings) {
            const ESeverity severity = finding.m_pRule->m_severity;
            ++counts.m_findings[IndexOf(severity)];
            if (!finding.IsOpen()) continue;
            ++counts.m_openFindings[IndexOf(severity)];
            isReached = isReached || m_review.Reaches(severity);
        }
        m_review.m_nExit = isReached ? 1 : 0;
    }

private:
    void AddChange(EChange kind, const CDelvObj* before, const CDelvObj* after) {
        CChange change;
        change.m_nId = static_cast<std::uint32_t>(m_review.m_changes.size() + 1);
        change.m_change = kind;
        change.m_pBefore = before;
        change.m_pAfter = after;
        const CDelvObj& node = change.GetNode();
        change.m_kind = KindOf(node);
        const bool isValue = change.m_kind == EKind::kValue;
        change.m_path = PathOf(isValue ? *node.m_pParent : node, change.m_kind);
        if (isValue) change.m_name = node.m_name;
        if (change.IsFileOrDirectory()) {
            unsigned areas = FindFolderAreas(change.m_path);
            if (areas == 0 && kind == EChange::kAdded) areas = 1U << IndexOf(EArea::kOutside);
            change.m_areas = static_cast<std::uint8_t>(areas);
        }
        m_idOfNode.emplace(&node, change.m_nId);
        m_review.m_changes.push_back(change);
    }

    // A file's path stands in its snapshot; that of a key is put together, once for all its values in a row.
    std::string_view PathOf(const CDelvObj& node, EKind kind) {
        const bool isRegistry = kind == EKind::kKey || kind == EKind::kValue;
        if (!isRegistry && !node.m_bComposed) return node.m_fullName;
        if (m_pLast == &node) return m_lastPath;
        m_pLast = &node;
        return m_lastPath = m_review.m_texts.CopyBytes(node.GetFullName());
    }

    CChange* FindChange(const CDelvObj* node) {
        const auto found = m_idOfNode.find(node);
        return found == m_idOfNode.end() ? nullptr : &m_review.m_changes[found->second - 1];
    }

    void NoteExecutables() {
        const CFileReport& files = m_report.m_fileReport;
        const auto note = [&](const CDelvObj& exe, ETrait trait) {
            CChange* const change = FindChange(static_cast<const CDelvExeObj&>(exe).m_pFile);
            if (change != nullptr)
                change->m_traits = static_cast<std::uint8_t>(change->m_traits | 1U << IndexOf(trait));
            return change;
        };
        for (const auto& exe : files.m_exeCopies) {
            if (!exe->m_bAnalyzed) continue;  // named by a service, whatever it is
            if (CChange* const change = note(*exe, ETrait::kExecutable)) change->m_version = exe->m_strFileVersion;
        }
        for (const CDelvObj* exe : files.m_exes16Bit)
            note(*exe, ETrait::k16Bit);
        for (const CDelvObj* exe : files.m_exesKernelMode)
            note(*exe, ETrait::kKernelMode);
    }

    // What stands behind the text of a page's line is a way to a list of that page.
    static CString PlainText(const CReportFinding& filed) {
        const std::size_t end = LoadResString(filed.m_textId).find(" Click <A");
        return filed.m_strText.substr(0, end);
    }

    std::vector<std::uint32_t> ChangesBehind(const CReportFinding& filed) {
        std::vector<std::uint32_t> ids;
        const auto add = [&](const CDelvObj* object) {
            if (IsExactly<CDelvExeObj>(*object)) object = static_cast<const CDelvExeObj*>(object)->m_pFile;
            if (const CChange* const change = FindChange(object)) ids.push_back(change->m_nId);
        };
        const CFileReport& files = m_report.m_fileReport;
        const std::pair<std::uint32_t, const CObjectList*> lists[] = {
            {IDS_EXES_ADDED_OUTSIDE, &files.m_exesOtherAdded},
            {IDS_SYSTEM_EXES, &files.m_exesSystemAdded},
            {IDS_SYSTEM_EXES, &files.m_exesSystemChanged},
            {IDS_16BIT_EXES, &files.m_exes16Bit},
            {IDS_KERNEL_DRIVERS, &files.m_exesKernelMode},
            {IDS_FILES_OUTSIDE, &files.m_otherAdded},
            {IDS_START_MENU_ADDITIONS, &files.m_startAdded},
            {IDS_UNINSTALL_ADDITIONS, &m_report.m_registryReport.m_uninstallAdded},
            {IDS_BAD_EXTENSIONS, &m_report.m_extReport.m_badExtensions},
        };
        for (const auto& [textId, list] : lists) {
            if (textId == filed.m_textId) std::for_each(list->begin(), list->end(), add);
        }
        if (filed.m_textId == IDS_SYSTEM_FILE) add(filed.m_pObject);
        if (filed.m_textId == IDS_START_MENU_ADDITIONS) {
            for (const auto& change : files.m_startChanged)
                add(change->m_pObject);
        }
        if (filed.m_textId == IDS_HKCU_CHANGES) {
            for (const CChange& change : m_review.m_changes) {
                if (mbsicmp(change.GetHive(), "HKCU") == 0) ids.push_back(change.m_nId);
            }
        }
        std::sort(ids.begin(), ids.end());
        ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
        return ids;
    }

    void JudgeByChanges(CFinding& finding) const {
        constexpr std::size_t kMostReasons = 3;
        bool allNoise = true;
        std::vector<std::string_view> reasons;
        for (const std::uint32_t id : finding.m_changes) {
            const CChange& change = m_review.GetChange(id);
            if (change.IsOpen()) return;
            if (change.m_status != EStatus::kAccepted) continue;
            allNoise = false;
            if (std::find(reasons.begin(), reasons.end(), change.GetReason()) == reasons.end() &&
                reasons.size() <= kMostReasons) {
                reasons.push_back(change.GetReason());
            }
        }
        finding.m_status = allNoise ? EStatus::kNoise : EStatus::kAccepted;
        for (std::size_t i = 0; i < reasons.size(); ++i)
            (finding.m_strReason += i == 0 ? "" : "; ") += i < kMostReasons ? reasons[i] : "and others";
    }

    CReview& m_review;
    const CMasterReport& m_report;
    std::unordered_map<const CDelvObj*, std::uint32_t> m_idOfNode;
    const CDelvObj* m_pLast = nullptr;  // whose path was put together last
    std::string_view m_lastPath;
};

std::string_view CChange::GetHive() const {
    if (!IsRegistry()) return {};
    return m_path.substr(0, m_path.find('\\'));
}

CReview::CReview(CReviewInput input)
    : m_failOn(input.m_failOn),
      m_nCreated(input.m_nCreated),
      m_accept(std::move(input.m_accept)),
      m_pReport(std::make_unique<CMasterReport>(*input.m_current.m_pSnapshot, *input.m_baseline.m_pSnapshot)) {
    for (const auto& [role, side] : input.GetSides()) {
        if (side->m_pSnapshot != nullptr) m_snapshots.push_back({role, side->m_pSnapshot, side->m_strFile});
    }
    m_pReport->CompareSnapshots();
    CCollector collector(*this);
    collector.CollectChanges();
    collector.CollectGaps(input);
    collector.CollectFindings();
    collector.JudgeChanges(input);
    collector.JudgeFindings();
    collector.Count();
}

CReview::~CReview() = default;

bool CReview::Reaches(ESeverity severity) const {
    return m_failOn <= EFailOn::kInfo && IndexOf(severity) <= IndexOf(m_failOn);
}

std::size_t CReview::FindOpenContentEnd(std::size_t first) const {
    const CChange& top = m_changes[first];
    const bool isContainer = top.m_kind == EKind::kDirectory || top.m_kind == EKind::kKey;
    if (!isContainer || top.m_change == EChange::kChanged) return 0;
    std::size_t end = first;
    for (; end < m_changes.size() && m_changes[end].m_change == top.m_change && m_changes[end].IsWithin(top.m_path);
         ++end) {
        if (!m_changes[end].IsOpen()) return 0;
    }
    return end;
}

CString CReview::GetFileName() const { return FileNameOf(m_pReport->m_strReportName); }

}  // namespace delvane
