#include "platform/hosted/files/host_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/machine.h"

namespace delvane {

const char* ErrorText(int error) {
    const char* const text = strerrordesc_np(error);
    return text != nullptr ? text : "unknown error";
}

std::uint32_t Win32Error(int error) {
    static constexpr std::pair<int, std::uint32_t> kNumbers[] = {
        {0, ERROR_SUCCESS},
        {ENOENT, ERROR_FILE_NOT_FOUND},
        {ENOTDIR, ERROR_PATH_NOT_FOUND},
        {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
        {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
        {EACCES, ERROR_ACCESS_DENIED},
        {EPERM, ERROR_ACCESS_DENIED},
        {EISDIR, ERROR_ACCESS_DENIED},
        {EROFS, ERROR_WRITE_PROTECT},
        {ENOSPC, ERROR_DISK_FULL},
        {EDQUOT, ERROR_DISK_FULL},
        {EFBIG, ERROR_DISK_FULL},
        {EINVAL, ERROR_INVALID_NAME},
        {EILSEQ, ERROR_INVALID_NAME},
        {EEXIST, ERROR_ALREADY_EXISTS},
        {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
        {ELOOP, ERROR_CANT_RESOLVE_FILENAME},
    };
    for (const auto& [known, number] : kNumbers) {
        if (known == error) return number;
    }
    return ERROR_GEN_FAILURE;
}

bool IsNothing(int error) { return error == ENOENT || error == ENOTDIR || error == ELOOP; }

void CDescriptor::Reset(int fd) {
    if (m_fd >= 0) close(m_fd);
    m_fd = fd;
}

int OpenUntouched(int directory, const char* path, int flags) {
    const int fd = openat(directory, path, flags | O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOATIME);
    if (fd >= 0 || errno != EPERM) return fd;
    return openat(directory, path, flags | O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

// The kind is looked at before the file is opened, and O_NONBLOCK keeps a pipe that took its place meanwhile from
// holding the program.
std::optional<CHostFile> CHostFile::Open(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EACCES;
        return std::nullopt;
    }
    CHostFile file;
    file.m_fd.Reset(OpenUntouched(AT_FDCWD, path.c_str(), O_NOCTTY));
    if (!file.m_fd) return std::nullopt;
    file.m_nSize = static_cast<std::uint64_t>(status.st_size);
    return file;
}

std::size_t CHostFile::Read(std::uint64_t offset, void* into, std::size_t size) const {
    char* const bytes = static_cast<char*>(into);
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = pread(m_fd.Get(), bytes + done, size - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

std::optional<std::string> ReadHostFile(const std::string& path, std::uint64_t limit) {
    const std::optional<CHostFile> file = CHostFile::Open(path);
    if (!file) return std::nullopt;
    std::string bytes;
    if (file->GetSize() <= limit) bytes.resize(static_cast<std::size_t>(file->GetSize()));
    if (file->Read(0, bytes.data(), bytes.size()) == file->GetSize()) return bytes;
    errno = EIO;
    return std::nullopt;
}

bool IsHostDirectory(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

std::vector<std::string> NamesIn(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error))
        names.push_back(entry->path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string RealHostPath(const std::string& path) {
    std::error_code error;
    return std::filesystem::canonical(path, error).string();
}

bool LiesWithin(std::string_view path, std::string_view directory) {
    if (!path.starts_with(directory)) return false;
    return path.size() == directory.size() || directory.ends_with('/') || path[directory.size()] == '/';
}

}  // namespace delvane
