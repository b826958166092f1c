#include "review/formats/json.h"
#include "review/formats/writers.h"

namespace delvane {

void WriteReviewPage(const CReview& review, std::ostream& stream, std::size_t) {
    stream << "<!DOCTYPE html>\n<html lang=\"en\"><meta charset=\"utf-8\"><title>Review</title><p>exit code "
           << review.m_nExit << "\n";
}

}  // namespace delvane
