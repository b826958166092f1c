#include "platform/own_file.h"

#include <algorithm>

namespace delvane {

// The name says whose it is, should a power failure leave it behind. It holds nothing of the target's name, which may
// be as long as the file system allows.
std::string NameTemporary(const std::string& directory, std::uint64_t process,
                          const std::function<bool(const std::string& path)>& take) {
    constexpr int kMostNames = 100;
    const std::string stem = directory + ".delvane-" + std::to_string(process) + "-";
    for (int i = 0;; ++i) {
        std::string path = stem + std::to_string(i) + ".tmp";
        if (take(path) || i == kMostNames) return path;
    }
}

CFileBytes ReadOpenFile(std::uint64_t fileSize, std::string_view shownPath, std::uint64_t limit, bool headOnly,
                        const std::function<std::size_t(char* into, std::size_t size)>& read) {
    if (fileSize > limit && !headOnly) {
        throw CFileError(shownPath, "read", ERROR_FILE_TOO_LARGE,
                         "the file is larger than " + GroupedDecimalText(static_cast<std::int64_t>(limit)) + " bytes");
    }
    CFileBytes bytes;
    bytes.m_nFileSize = fileSize;
    if (fileSize == 0) return bytes;
    bytes.m_buffer = CPageBuffer(static_cast<std::size_t>(std::min(fileSize, limit)));
    while (bytes.m_nSize < bytes.m_buffer.GetSize()) {
        const std::size_t got =
            read(bytes.m_buffer.GetData() + bytes.m_nSize, bytes.m_buffer.GetSize() - bytes.m_nSize);
        if (got == 0) break;
        bytes.m_nSize += got;
    }
    return bytes;
}

}  // namespace delvane
