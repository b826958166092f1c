#include "platform/own_file.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/hosted/files/host_file.h"

namespace delvane {
namespace {

CFileError ErrorOf(std::string_view shownPath, std::string_view action, int error) {
    return {shownPath, action, Win32Error(error), ErrorText(error)};
}

std::string DirectoryOf(const std::string& path) {
    const std::size_t end = path.rfind('/');
    return end == std::string::npos ? "." : path.substr(0, end == 0 ? 1 : end);
}

[[noreturn]] void ThrowOpenError(std::string_view shownPath, std::string_view action, int error) {
    throw CFileOpenError(shownPath, action, Win32Error(error), ErrorText(error));
}

// Whether a new file may take this place, with errno if not: nothing is there, or a regular file that may be written.
// `mode` is then that file's, or what a new file gets.
bool MayTakePlace(const std::string& path, mode_t& mode) {
    struct stat status {};
    mode = 0;
    if (stat(path.c_str(), &status) != 0) return errno == ENOENT && !path.empty();
    mode = status.st_mode & 07777;
    if (S_ISREG(status.st_mode)) return access(path.c_str(), W_OK) == 0;
    errno = S_ISDIR(status.st_mode) ? EISDIR : EACCES;
    return false;
}

class COwnFileWriter : public CFileWriter {
public:
    COwnFileWriter(CDescriptor file, std::string temporary, std::string target, std::string_view shownPath)
        : m_file(std::move(file)),
          m_strTemporary(std::move(temporary)),
          m_strTarget(std::move(target)),
          m_strShownPath(shownPath) {}
    ~COwnFileWriter() override {
        if (!m_strTemporary.empty()) unlink(m_strTemporary.c_str());
    }

    void Write(std::string_view bytes) override {
        while (!bytes.empty()) {
            ThrowIfInterrupted();
            const ssize_t written = write(m_file.Get(), bytes.data(), bytes.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) throw ErrorOf(m_strShownPath, "write", errno);
            bytes.remove_prefix(static_cast<std::size_t>(written));
        }
    }

    // The bytes reach the disk before the name does, so that a crash leaves the old file or the new one, never half.
    void Commit() override {
        ThrowIfInterrupted();
        if (fsync(m_file.Get()) != 0) throw ErrorOf(m_strShownPath, "flush", errno);
        if (close(m_file.Release()) != 0) throw ErrorOf(m_strShownPath, "close", errno);
        ThrowIfInterrupted();  // flushing takes the longest
        if (rename(m_strTemporary.c_str(), m_strTarget.c_str()) != 0) {
            throw ErrorOf(m_strShownPath, "replace", errno);
        }
        m_strTemporary.clear();
        const CDescriptor directory(open(DirectoryOf(m_strTarget).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (directory) fsync(directory.Get());  // a file system that cannot do this keeps its own order
    }

private:
    // Dies last: by then the temporary file is gone.
    const CInterruptGuard m_guard{CInterruptGuard::EOwner::kCleansUp};
    CDescriptor m_file;
    std::string m_strTemporary;  // empty once it has taken the target's place
    std::string m_strTarget;
    CString m_strShownPath;
};

}  // namespace

std::unique_ptr<CFileWriter> CreateOwnFile(const std::string& path, std::string_view shownPath) {
    // Through a link, the file it leads to is replaced and not the link.
    const std::string real = RealHostPath(path);
    const std::string& target = real.empty() ? path : real;
    mode_t mode = 0;
    if (!MayTakePlace(target, mode)) ThrowOpenError(shownPath, "create", errno);
    const CInterruptGuard guard(CInterruptGuard::EOwner::kCleansUp);  // until the writer has its own
    CDescriptor file;
    int error = 0;
    std::string temporary =
        NameTemporary(DirectoryOf(target) + "/", static_cast<std::uint64_t>(getpid()), [&](const std::string& name) {
            file.Reset(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
            error = errno;
            return file || error != EEXIST;
        });
    if (!file) ThrowOpenError(shownPath, "create", error);
    if (mode != 0) fchmod(file.Get(), mode);  // the new file is as open to others as the one that it replaces
    return std::make_unique<COwnFileWriter>(std::move(file), std::move(temporary), target, shownPath);
}

std::unique_ptr<std::ostream> CreateOwnTextFile(const std::string& path) {
    mode_t mode = 0;
    if (!MayTakePlace(path, mode)) return nullptr;
    auto stream = std::make_unique<std::ofstream>(path, std::ios::binary | std::ios::trunc);
    if (!stream->is_open()) return nullptr;
    return stream;
}

CFileBytes ReadOwnFile(const std::string& path, std::string_view shownPath, std::uint64_t limit, bool headOnly) {
    const std::optional<CHostFile> file = CHostFile::Open(path);
    if (!file) ThrowOpenError(shownPath, "open", errno);
    return ReadOpenFile(file->GetSize(), shownPath, limit, headOnly, [&](char* into, std::size_t size) {
        ssize_t got = 0;
        do {
            got = read(file->GetDescriptor(), into, size);
        } while (got < 0 && errno == EINTR);
        if (got < 0) throw ErrorOf(shownPath, "read", errno);
        return static_cast<std::size_t>(got);
    });
}

}  // namespace delvane
