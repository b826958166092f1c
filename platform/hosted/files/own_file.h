// The program's own files on the host.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/host.h"

namespace delvane {

// The path of the host is absent where there is none for it; `shownPath` is the name by which errors speak of it.

// A writer that fills a file beside the target and renames it over the target at Commit. CFileOpenError where the
// directory takes no file, or where something other than a regular file, or one that may not be written, stands at
// the target.
std::unique_ptr<CFileWriter> CreateHostFile(const std::optional<std::string>& hostPath, std::string_view shownPath);

// A text stream into a file that is created or emptied; null where that cannot be.
std::unique_ptr<std::ostream> CreateHostTextFile(const std::string& hostPath);

// A regular file of no more than `limit` bytes, or, for `headOnly`, its first `limit` bytes. CFileOpenError where it
// cannot be opened.
CFileBytes ReadOwnFile(const std::optional<std::string>& hostPath, std::string_view shownPath, std::uint64_t limit,
                       bool headOnly);

// Starts the desktop's own opener for the document. False where there is none.
bool OpenHostDocument(const std::string& hostPath);

}  // namespace delvane
