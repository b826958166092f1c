// The forms in which a review is written. Each is made of the one list in memory, in one pass, and reads nothing else.
//
// A writer throws nothing of its own; what the stream throws goes through. The stream takes bytes as they are.
#pragma once

#include <cstddef>
#include <ostream>

#include "review/change_list.h"

namespace delvane {

void WriteLines(const CReview& review, std::ostream& stream);     // JSON Lines
void WriteSarif(const CReview& review, std::ostream& stream);     // SARIF 2.1.0
void WriteJUnit(const CReview& review, std::ostream& stream);     // JUnit's XML
void WriteMarkdown(const CReview& review, std::ostream& stream);  // at most 60 KB
// The page, one HTML file: at most `limit` changes of each group (review/page.cpp).
void WriteReviewPage(const CReview& review, std::ostream& stream, std::size_t limit);
// The registry of Current made that of Baseline, and the reverse.
void WriteUndo(const CReview& review, std::ostream& stream);
void WriteRedo(const CReview& review, std::ostream& stream);

// A reviewed list that accepts all that is open.
void WriteDraft(const CReview& review, std::ostream& stream);
// What standard output says, up to the files written.
void WriteVerdict(const CReview& review, std::ostream& stream);

// What a snapshot holds, without a review. `file` is where it lies.
void ExportSnapshot(const CSnapshot& snapshot, const CString& file, std::ostream& stream);

}  // namespace delvane
