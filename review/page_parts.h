// The parts of the page of a review that have a source of their own.
#pragma once

#include <cstdint>
#include <string_view>

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

// A change as an element of a list.
void WriteChangeItem(CPageText& page, const CChange& change);

}  // namespace delvane
