// The host that a machine is examined from: the program's own files in its file system.
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/hosted/files/host_file.h"
#include "platform/hosted/hosted_machine.h"
#include "platform/own_file.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX wants the program to declare it

namespace delvane {
namespace {

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

class CHostedHost : public CHost {
public:
    CHostedHost(const CPathMap& paths, std::string programFolder)
        : m_paths(paths), m_strProgramFolder(std::move(programFolder)) {}

    CString GetModuleFileName() override { return m_paths.ToMachine(m_strProgramFolder) + "\\delvane"; }
    CString GetDocumentFolder() override { return m_paths.ToMachine(FindDocumentFolder(ExecutableFolder())); }

    // In whole milliseconds, as Windows tells the time of day.
    std::uint64_t GetSystemTime() override {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
        return static_cast<std::uint64_t>(milliseconds) * (kTicksPerSecond / 1000) + kUnixEpochTicks;
    }

    bool FileExists(std::string_view path) override {
        std::error_code error;
        const std::filesystem::file_status status = std::filesystem::status(Find(path), error);
        return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
    }
    bool DirectoryExists(std::string_view path) override { return IsHostDirectory(Find(path)); }
    bool CreateDirectory(std::string_view path) override { return mkdir(FindForCreation(path).c_str(), 0777) == 0; }
    bool DeleteFile(std::string_view path) override { return unlink(Find(path).c_str()) == 0; }

    std::vector<CString> ListFiles(std::string_view folder) override {
        const std::string hostPath = Find(folder);
        std::vector<CString> names = NamesIn(hostPath);
        std::erase_if(names, [&hostPath](const CString& name) {
            std::error_code error;
            return !std::filesystem::is_regular_file(hostPath + "/" + name, error);
        });
        return names;
    }

    CFileBytes ReadFile(std::string_view path, std::uint64_t limit) override {
        return ReadOwnFile(Find(path), GetDisplayPath(path), limit, false);
    }
    CFileBytes ReadFileHead(std::string_view path, std::size_t size) override {
        return ReadOwnFile(Find(path), GetDisplayPath(path), size, true);
    }
    std::unique_ptr<CFileWriter> CreateFile(std::string_view path) override {
        return CreateOwnFile(FindForCreation(path), GetDisplayPath(path));
    }
    std::unique_ptr<std::ostream> CreateTextFile(std::string_view path) override {
        return CreateOwnTextFile(FindForCreation(path));
    }
    CString GetDisplayPath(std::string_view path) const override { return m_paths.ToDisplay(path); }

    CString GetMachinePath(std::string_view path) const override {
        const std::string real = RealHostPath(Find(path));
        return real.empty() ? CString(path) : m_paths.ToMachine(real);
    }

    bool LockProgramFolder() override {
        m_lock.Reset(open(m_strProgramFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return !m_lock || flock(m_lock.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    }

    bool OpenDocument(std::string_view path) override {
        const std::string hostPath = Find(path);
        return !hostPath.empty() && OpenOnDesktop(hostPath);
    }

private:
    // A path that leads to no place of the host becomes the empty one, where nothing can be.
    std::string Find(std::string_view path) const { return m_paths.Find(path).value_or(""); }
    std::string FindForCreation(std::string_view path) const { return m_paths.FindForCreation(path).value_or(""); }

    const CPathMap& m_paths;
    const std::string m_strProgramFolder;
    CDescriptor m_lock;
};

}  // namespace

std::unique_ptr<CHost> MakeHostedHost(const CPathMap& paths, const std::string& programFolder) {
    return std::make_unique<CHostedHost>(paths, programFolder);
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
    auto machine = MakeHostedMachine(ChooseMachine());
    auto host = MakeHostedHost(machine->GetPaths(), ChooseProgramFolder());
    return {std::move(machine), std::move(host)};
}

}  // namespace delvane
