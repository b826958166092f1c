#include "platform/hosted/hosted_host.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/hosted/choice.h"
#include "platform/hosted/files/host_file.h"
#include "platform/hosted/hosted_machine.h"
#include "platform/own_file.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX wants the program to declare it

namespace delvane {
namespace {

bool IsFile(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

// Starts the desktop's own opener for the document. False where there is none.
bool OpenOnDesktop(const std::string& path) {
    // The opener may live as long as the browser does: a shell starts it in the background and ends, so that nobody
    // has to wait for it. Its output does not belong on ours.
    const char* const arguments[] = {
        "sh", "-c",         "command -v xdg-open >/dev/null && { xdg-open \"$1\" >/dev/null 2>&1 </dev/null & }",
        "sh", path.c_str(), nullptr};
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

}  // namespace

CString CHostedHost::GetModuleFileName() { return m_paths.ToMachine(m_strProgramFolder) + "\\delvane"; }

CString CHostedHost::GetDocumentFolder() { return m_paths.ToMachine(FindDocumentFolder(ExecutableFolder())); }

// In whole milliseconds, as Windows tells the time of day.
std::uint64_t CHostedHost::GetSystemTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const auto milliseconds =
        static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000;
    return milliseconds * (kTicksPerSecond / 1000) + kUnixEpochTicks;
}

// A path that leads to no place of the host becomes the empty one, where nothing can be.
bool CHostedHost::FileExists(std::string_view path) { return IsFile(m_paths.Find(path).value_or("")); }

bool CHostedHost::DirectoryExists(std::string_view path) { return IsHostDirectory(m_paths.Find(path).value_or("")); }

bool CHostedHost::CreateDirectory(std::string_view path) {
    return mkdir(m_paths.FindForCreation(path).value_or("").c_str(), 0777) == 0;
}

bool CHostedHost::DeleteFile(std::string_view path) { return unlink(m_paths.Find(path).value_or("").c_str()) == 0; }

std::vector<CString> CHostedHost::ListFiles(std::string_view folder) {
    std::vector<CString> names;
    const std::optional<std::string> hostPath = m_paths.Find(folder);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(hostPath ? opendir(hostPath->c_str()) : nullptr, &closedir);
    while (const dirent* const entry = stream == nullptr ? nullptr : readdir(stream.get())) {
        struct stat status {};
        if (fstatat(dirfd(stream.get()), entry->d_name, &status, 0) == 0 && S_ISREG(status.st_mode)) {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

CFileBytes CHostedHost::ReadFile(std::string_view path, std::uint64_t limit) {
    return ReadOwnFile(m_paths.Find(path).value_or(""), GetDisplayPath(path), limit, false);
}

CFileBytes CHostedHost::ReadFileHead(std::string_view path, std::size_t size) {
    return ReadOwnFile(m_paths.Find(path).value_or(""), GetDisplayPath(path), size, true);
}

std::unique_ptr<CFileWriter> CHostedHost::CreateFile(std::string_view path) {
    return CreateOwnFile(m_paths.FindForCreation(path).value_or(""), GetDisplayPath(path));
}

std::unique_ptr<std::ostream> CHostedHost::CreateTextFile(std::string_view path) {
    return CreateOwnTextFile(m_paths.FindForCreation(path).value_or(""));
}

CString CHostedHost::GetMachinePath(std::string_view path) const {
    const std::optional<std::string> hostPath = m_paths.Find(path);
    const std::string real = hostPath ? RealHostPath(*hostPath) : std::string();
    return real.empty() ? CString(path) : m_paths.ToMachine(real);
}

bool CHostedHost::LockProgramFolder() {
    m_lock.Reset(open(m_strProgramFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return !m_lock || flock(m_lock.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool CHostedHost::OpenDocument(std::string_view path) {
    const std::optional<std::string> hostPath = m_paths.Find(path);
    return hostPath && OpenOnDesktop(*hostPath);
}

// Started with a standard stream closed, the program would give its number to a file, and a message would go there.
void PrepareStandardStreams() {
    for (const int signal : kIgnoredSignals)
        std::signal(signal, SIG_IGN);
    int stream = open("/dev/null", O_RDWR);
    while (stream >= 0 && stream <= STDERR_FILENO)
        stream = open("/dev/null", O_RDWR);
    if (stream >= 0) close(stream);
}

bool HasTerminal() { return isatty(STDERR_FILENO) != 0; }

CSystem MakeSystem() {
    auto machine = std::make_unique<CHostedMachine>(ChooseMachine());
    auto host = std::make_unique<CHostedHost>(machine->GetPaths(), ChooseProgramFolder());
    return {std::move(machine), std::move(host)};
}

}  // namespace delvane
