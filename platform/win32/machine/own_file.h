// The program's own files.
#pragma once

#include <memory>
#include <string_view>

#include "platform/host.h"

namespace delvane {

// A writer that fills a file beside the target and moves it over the target at Commit. CFileOpenError where the
// directory takes no file, or where something other than a regular file, or one that may not be written, stands at the
// target.
std::unique_ptr<CFileWriter> CreateOwnFile(std::string_view path);

// A text stream into a file that is created or emptied; null where that cannot be.
std::unique_ptr<std::ostream> CreateOwnTextFile(std::string_view path);

// A regular file of no more than `limit` bytes, or, for `headOnly`, its first `limit` bytes. CFileOpenError where it
// cannot be opened.
CFileBytes ReadOwnFile(std::string_view path, std::uint64_t limit, bool headOnly);

}  // namespace delvane
