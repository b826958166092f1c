#include "platform/hosted/files/own_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/hosted/files/host_file.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX wants the program to declare it

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
    if (stat(path.c_str(), &status) != 0) return errno == ENOENT;
    mode = status.st_mode & 07777;
    if (S_ISREG(status.st_mode)) return access(path.c_str(), W_OK) == 0;
    errno = S_ISDIR(status.st_mode) ? EISDIR : EACCES;
    return false;
}

class CHostFileWriter : public CFileWriter {
public:
    CHostFileWriter(CDescriptor file, std::string temporary, std::string target, std::string_view shownPath)
        : m_file(std::move(file)),
          m_strTemporary(std::move(temporary)),
          m_strTarget(std::move(target)),
          m_strShownPath(shownPath) {}
    ~CHostFileWriter() override {
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

std::unique_ptr<CFileWriter> CreateHostFile(const std::optional<std::string>& hostPath, std::string_view shownPath) {
    if (!hostPath) ThrowOpenError(shownPath, "create", ENOENT);
    // Through a link, the file it leads to is replaced and not the link.
    const std::string real = RealHostPath(*hostPath);
    const std::string& target = real.empty() ? *hostPath : real;
    mode_t mode = 0;
    if (!MayTakePlace(target, mode)) ThrowOpenError(shownPath, "create", errno);
    // The name says whose it is, should a power failure leave it behind. It holds nothing of the target's name, which
    // may be as long as the file system allows.
    const CInterruptGuard guard(CInterruptGuard::EOwner::kCleansUp);  // until the writer has its own
    const std::string stem = DirectoryOf(target) + "/.delvane-" + std::to_string(getpid()) + "-";
    for (int attempt = 0;; ++attempt) {
        std::string temporary = stem + std::to_string(attempt) + ".tmp";
        CDescriptor file(open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (!file && (errno != EEXIST || attempt > 100)) ThrowOpenError(shownPath, "create", errno);
        if (!file) continue;
        if (mode != 0) fchmod(file.Get(), mode);  // the new file is as open to others as the one that it replaces
        return std::make_unique<CHostFileWriter>(std::move(file), std::move(temporary), target, shownPath);
    }
}

std::unique_ptr<std::ostream> CreateHostTextFile(const std::string& hostPath) {
    mode_t mode = 0;
    if (!MayTakePlace(hostPath, mode)) return nullptr;
    auto stream = std::make_unique<std::ofstream>(hostPath, std::ios::binary | std::ios::trunc);
    if (!stream->is_open()) return nullptr;
    return stream;
}

CFileBytes ReadOwnFile(const std::optional<std::string>& hostPath, std::string_view shownPath, std::uint64_t limit,
                       bool headOnly) {
    if (!hostPath) ThrowOpenError(shownPath, "open", ENOENT);
    const std::optional<CHostFile> file = CHostFile::Open(*hostPath);
    if (!file) ThrowOpenError(shownPath, "open", errno);
    if (file->GetSize() > limit && !headOnly) {
        throw CFileError(shownPath, "read", Win32Error(EFBIG),
                         "the file is larger than " + GroupedDecimalText(static_cast<std::int64_t>(limit)) + " bytes");
    }
    CFileBytes bytes;
    if (file->GetSize() == 0) return bytes;
    bytes.m_buffer = CPageBuffer(static_cast<std::size_t>(std::min(file->GetSize(), limit)));
    while (bytes.m_nSize < bytes.m_buffer.GetSize()) {
        const ssize_t got = read(file->GetDescriptor(), bytes.m_buffer.GetData() + bytes.m_nSize,
                                 bytes.m_buffer.GetSize() - bytes.m_nSize);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw ErrorOf(shownPath, "read", errno);
        if (got == 0) break;
        bytes.m_nSize += static_cast<std::size_t>(got);
    }
    return bytes;
}

bool OpenHostDocument(const std::string& hostPath) {
    // The opener may live as long as the browser does: a shell starts it in the background and ends, so that nobody
    // has to wait for it. Its output does not belong on ours.
    const char* const arguments[] = {
        "sh",
        "-c",
        "command -v xdg-open >/dev/null && { xdg-open \"$1\" >/dev/null 2>&1 </dev/null & }",
        "sh",
        hostPath.c_str(),
        nullptr};
    // What this process ignores, a child would ignore too.
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kIgnoredSignals)
        sigaddset(&signals, signal);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t child = 0;
    int status = -1;
    if (posix_spawnp(&child, "sh", nullptr, &attributes, const_cast<char* const*>(arguments), environ) == 0) {
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
    }
    posix_spawnattr_destroy(&attributes);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace delvane
