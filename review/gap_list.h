// Lists of gaps: what a capture could not read, as it stands beside a snapshot.
#pragma once

#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/text.h"

namespace delvane {

struct CChange;
struct CReviewGap;

// The gaps of a list, `text`, a JSON object a line. Lines of other records are passed over. False, and what was read up
// to there, where a line is no such object; `problem` then says which and why.
bool ReadGaps(std::string_view text, std::vector<CReviewGap>& gaps, CString& problem);

// What lies at or below a gap.
class CGapIndex {
public:
    void Add(const CReviewGap& gap);
    bool Covers(const CChange& change) const;

private:
    std::unordered_set<CString> m_places;  // folded; a value as its key, a NUL and its name
};

}  // namespace delvane
