// Files of the host: small owners and calls shared by the rooms of this folder.
#pragma once

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/images/image.h"

namespace delvane {

// The Win32 error number for an errno, and what it says, in English whatever the locale.
std::uint32_t Win32Error(int error);
const char* ErrorText(int error);

// A pipe that nobody reads and a limit of the file size are failed writes, not the program's end.
inline constexpr std::array kIgnoredSignals = {SIGPIPE, SIGXFSZ};

// Whether an errno says that nothing is there: neither a file nor what a link leads to, or a circle of links.
bool IsNothing(int error);

// A file descriptor and its close.
class CDescriptor {
public:
    CDescriptor() = default;
    explicit CDescriptor(int fd) : m_fd(fd) {}
    CDescriptor(CDescriptor&& other) noexcept : m_fd(other.Release()) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    ~CDescriptor() { Reset(); }

    int Get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }
    void Reset(int fd = -1);
    int Release() { return std::exchange(m_fd, -1); }

private:
    int m_fd = -1;
};

// Opens for reading without a trace: the access time stays as it was where the system lets this process have it so (it
// asks for the owner or a privileged user). `directory` is what a relative path begins at, AT_FDCWD or a descriptor.
int OpenUntouched(int directory, const char* path, int flags);

// A regular file open for reading. Nothing else is ever opened: not a device, a socket or a pipe.
class CHostFile : public CByteSource {
public:
    // No file where there is none, where it is no regular file, or where it cannot be opened; errno tells.
    static std::optional<CHostFile> Open(const std::string& path);

    std::uint64_t GetSize() const override { return m_nSize; }
    std::size_t Read(std::uint64_t offset, void* into, std::size_t size) const override;
    int GetDescriptor() const { return m_fd.Get(); }

private:
    CDescriptor m_fd;
    std::uint64_t m_nSize = 0;
};

// The bytes of a regular file; nothing, and errno, where it cannot be opened or read or is larger than the limit.
std::optional<std::string> ReadHostFile(const std::string& path, std::uint64_t limit);

bool IsHostDirectory(const std::string& path);

// The names in a directory, in order; none where it cannot be read.
std::vector<std::string> NamesIn(const std::string& directory);

// The path in full, links resolved; empty where it leads nowhere.
std::string RealHostPath(const std::string& path);

// Whether the path, in full and without links, is that of the directory or of something below it.
bool LiesWithin(std::string_view path, std::string_view directory);

}  // namespace delvane
