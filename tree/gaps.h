// What a capture could not read: the places that are missing from a snapshot.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/host.h"
#include "platform/text.h"

namespace delvane {

enum class EGapKind { kDrive, kDirectory, kEntry, kKey, kValue, kRegistryFile };
constexpr std::size_t kGapKindCount = 6;

struct CGap {
    EGapKind m_kind = EGapKind::kDirectory;
    CString m_strPath;  // of a value its key's
    CString m_strName;  // of a value
    std::uint32_t m_dwCode = 0;
    CString m_strReason;  // in words
};

// The word for a kind in a list of gaps: "registry-file".
std::string_view GapKindName(EGapKind kind);

// In the order in which a capture met them. Its file stands beside that of the snapshot: a JSON object a line.
class CGapList {
public:
    // The reason is that of the error number. What has gone since it was seen (2, 3) is none, but for a drive.
    void Add(EGapKind kind, CString path, std::uint32_t code, CString name = {});
    void Add(CGap gap) { m_gaps.push_back(std::move(gap)); }

    bool HasDrive(std::string_view path) const;
    bool IsEmpty() const { return m_gaps.empty(); }
    const std::vector<CGap>& Get() const { return m_gaps; }
    // "3 directories and 1 key could not be read, first C:\System Volume Information (5)"; empty without a gap.
    CString GetSummary() const;
    // The lines of the file, with that name of the snapshot.
    CString GetLines(std::string_view snapshot) const;

private:
    std::vector<CGap> m_gaps;
};

// What the name of a snapshot's file ends in.
inline constexpr std::string_view kSnapshotEnding = ".dvs";

// Where the list of a snapshot stands: NAME.gaps.jsonl for NAME.dvs.
CString GapsPathOf(std::string_view snapshotPath);

}  // namespace delvane
