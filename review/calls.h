// The calls that go by a word: `delvane review`, `delvane export`, `delvane list`.
#pragma once

#include <optional>

namespace delvane {

// The exit codes of a call, beside 0 and CReview::m_nExit.
constexpr int kReviewBadCall = 2;  // the call or an accept list is wrong; nothing was written
constexpr int kReviewNoFile = 3;   // a snapshot could not be loaded, or a file could not be written

// Runs the call and gives its exit code; nothing where the first argument is no such word.
std::optional<int> RunCall(int argumentCount, const char* const* arguments);

}  // namespace delvane
