// The parts of the page of a review that have a source of their own.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "review/change_list.h"
#include "review/page_text.h"

namespace delvane {

// The page's style and script, with their SHA-256 in hexadecimal: resources/review.css and .js, put into the program by
// the build.
struct CPageResource {
    std::string_view m_text;
    std::string_view m_hash;
};
extern const CPageResource kReviewStyle;
extern const CPageResource kReviewScript;

// "2026-11-23 10:00:00 UTC"
CString PageTime(std::uint64_t ticks);

// A change as an element of a list, with the requirements (a bit each) of the findings that it stands behind.
void WriteChangeItem(CPageText& page, const CChange& change, std::uint8_t requirements);

// Where a change stands: one area, hive or neither, kind and kind of change.
class CPagePlace {
public:
    explicit CPagePlace(const CChange& change);
    CString GetTitle() const;
    std::string_view GetArea() const;  // the word of its area, or empty
    auto operator<=>(const CPagePlace&) const = default;

    int m_nRank;              // areas, no area, hives, extensions
    std::string_view m_hive;  // of keys and values
    EKind m_kind;
    EChange m_change;
};

}  // namespace delvane
