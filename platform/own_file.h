// The program's own files, which each system keeps in its way. Paths are the system's, empty where it has none for the
// place; `shownPath` is the name by which errors speak of the file.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "platform/host.h"

namespace delvane {

// A writer that fills a file beside the target and renames it over the target at Commit. CFileOpenError where the
// directory takes no file, or where something other than a regular file, or one that may not be written, stands at
// the target.
std::unique_ptr<CFileWriter> CreateOwnFile(const std::string& path, std::string_view shownPath);

// A text stream into a file that is created or emptied; null where that cannot be.
std::unique_ptr<std::ostream> CreateOwnTextFile(const std::string& path);

// A regular file of no more than `limit` bytes, or, for `headOnly`, its first `limit` bytes. CFileOpenError where it
// cannot be opened.
CFileBytes ReadOwnFile(const std::string& path, std::string_view shownPath, std::uint64_t limit, bool headOnly);

// What the systems share in these operations.

// Gives `take` one name after another for a file in the directory, whose path ends in a separator, until it says that
// it needs no other or a hundred are taken. Gives the last path.
std::string NameTemporary(const std::string& directory, std::uint64_t process,
                          const std::function<bool(const std::string& path)>& take);

// ReadOwnFile of an open file. `read` puts bytes there and tells how many, 0 at the end, and throws where it fails.
CFileBytes ReadOpenFile(std::uint64_t fileSize, std::string_view shownPath, std::uint64_t limit, bool headOnly,
                        const std::function<std::size_t(char* into, std::size_t size)>& read);

}  // namespace delvane
