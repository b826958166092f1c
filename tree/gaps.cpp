#include "tree/gaps.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace delvane {
namespace {

struct CKindWords {
    std::string_view m_name;
    std::string_view m_one;
    std::string_view m_more;
};

constexpr std::array<CKindWords, kGapKindCount> kKinds = {{{"drive", "drive", "drives"},
                                                           {"directory", "directory", "directories"},
                                                           {"entry", "entry", "entries"},
                                                           {"key", "key", "keys"},
                                                           {"value", "value", "values"},
                                                           {"registry-file", "registry file", "registry files"}}};

const CKindWords& WordsOf(EGapKind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

}  // namespace

std::string_view GapKindName(EGapKind kind) { return WordsOf(kind).m_name; }

void CGapList::Add(EGapKind kind, CString path, std::uint32_t code, CString name) {
    const bool hasGone = code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND;
    if (hasGone && kind != EGapKind::kDrive) return;
    m_gaps.push_back({kind, std::move(path), std::move(name), code, ErrorWords(code)});
}

bool CGapList::HasDrive(std::string_view path) const {
    return std::any_of(m_gaps.begin(), m_gaps.end(),
                       [&](const CGap& gap) { return gap.m_kind == EGapKind::kDrive && gap.m_strPath == path; });
}

CString CGapList::GetSummary() const {
    if (m_gaps.empty()) return {};
    std::array<std::size_t, kGapKindCount> counts{};
    for (const CGap& gap : m_gaps)
        ++counts[static_cast<std::size_t>(gap.m_kind)];
    std::vector<CString> parts;
    for (std::size_t kind = 0; kind < kGapKindCount; ++kind) {
        if (counts[kind] == 0) continue;
        parts.push_back(std::to_string(counts[kind]) + " " +
                        CString(counts[kind] == 1 ? kKinds[kind].m_one : kKinds[kind].m_more));
    }
    CString text;
    for (std::size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
    const CGap& first = m_gaps.front();
    return text + " could not be read, first " + first.m_strPath + " (" + std::to_string(first.m_dwCode) + ")";
}

// Bytes that are no UTF-8 are written as U+FFFD, and the line says so.
CString CGapList::GetLines(std::string_view snapshot) const {
    using CLine = nlohmann::ordered_json;
    CString lines;
    for (const CGap& gap : m_gaps) {
        CLine line = {
            {"record", "gap"}, {"snapshot", snapshot}, {"kind", GapKindName(gap.m_kind)}, {"path", gap.m_strPath}};
        if (gap.m_kind == EGapKind::kValue) line["name"] = gap.m_strName;
        line["code"] = gap.m_dwCode;
        line["reason"] = gap.m_strReason;
        try {
            line.dump();
        } catch (const CLine::type_error&) {
            line["lossy"] = true;
        }
        lines += line.dump(-1, ' ', false, CLine::error_handler_t::replace) + '\n';
    }
    return lines;
}

CString GapsPathOf(std::string_view snapshotPath) {
    if (IsSuffixNoCase(kSnapshotEnding, snapshotPath)) snapshotPath.remove_suffix(kSnapshotEnding.size());
    return CString(snapshotPath) + ".gaps.jsonl";
}

}  // namespace delvane
