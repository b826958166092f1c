#include "platform/hosted/hosted_machine.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/hosted/files/host_file.h"
#include "platform/hosted/files/own_file.h"
#include "platform/hosted/identity/prefix_identity.h"
#include "platform/hosted/identity/volume_identity.h"

namespace delvane {
namespace {

constexpr std::uint32_t kAllDrives = (std::uint32_t{1} << 26) - 1;

bool IsFile(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

std::unique_ptr<CMachineIdentity> ReadIdentity(const CMachineChoice& choice) {
    if (choice.m_folder.empty()) return nullptr;
    if (choice.m_bIsVolume) return std::make_unique<CVolumeIdentity>(choice.m_folder);
    return std::make_unique<CPrefixIdentity>(choice.m_folder);
}

}  // namespace

CHostedMachine::CHostedMachine(CMachineChoice choice, std::string programFolder)
    : m_choice(std::move(choice)),
      m_programFolder(std::move(programFolder)),
      m_pIdentity(ReadIdentity(m_choice)),
      m_searches(m_paths, m_pIdentity != nullptr ? m_pIdentity->GetDiskRules() : CDiskRules()) {
    if (m_pIdentity != nullptr) m_paths.SetDrives(m_pIdentity->GetDrives());
}

std::vector<CString> CHostedMachine::TakeNotices() {
    std::vector<CString> notices;
    if (m_pIdentity != nullptr) {
        notices = m_pIdentity->GetNotices();
    } else if (m_choice.m_bVariable) {
        notices = {m_choice.m_strProblem};
    }
    notices.insert(notices.end(), m_searches.GetNotices().begin(), m_searches.GetNotices().end());
    if (m_pRegistry != nullptr) {
        std::vector<std::string> problems = m_pRegistry->GetProblems();
        std::move(problems.begin(), problems.end(), std::back_inserter(notices));
    }
    // The same file may be found damaged in one line at the start and in another during a capture: once is enough.
    std::erase_if(notices, [this](const CString& notice) {
        return !m_told.insert(notice.substr(0, notice.find(": line "))).second;
    });
    return notices;
}

CVersionRecord CHostedMachine::GetVersion() {
    if (m_pIdentity != nullptr) return m_pIdentity->GetVersion();
    return {VER_PLATFORM_WIN32_NT, 5, 0, 0, {}};
}

bool CHostedMachine::GetUserName(CString& name) {
    if (m_pIdentity != nullptr) name = m_pIdentity->GetUserName();
    return m_pIdentity != nullptr;
}

bool CHostedMachine::GetComputerName(CString& name) {
    if (m_pIdentity != nullptr) name = m_pIdentity->GetComputerName();
    return m_pIdentity != nullptr;
}

CString CHostedMachine::GetSystemDirectory() {
    return m_pIdentity != nullptr ? m_pIdentity->GetSystemDirectory() : CString();
}

CString CHostedMachine::GetWindowsDirectory() {
    return m_pIdentity != nullptr ? m_pIdentity->GetWindowsDirectory() : CString();
}

CString CHostedMachine::GetTempPath() { return m_pIdentity != nullptr ? m_pIdentity->GetTempPath() : CString(); }

CString CHostedMachine::GetModuleFileName() { return m_paths.ToMachine(m_programFolder) + "\\delvane"; }

CString CHostedMachine::GetDocumentFolder() { return m_paths.ToMachine(FindDocumentFolder(ExecutableFolder())); }

// In whole milliseconds, as Windows tells the time of day.
std::uint64_t CHostedMachine::GetSystemTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const auto milliseconds =
        static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000;
    return milliseconds * (kTicksPerSecond / 1000) + kUnixEpochTicks;
}

CFolderFunction CHostedMachine::LoadFolderLibrary() {
    if (m_pIdentity == nullptr) return {};
    return [this](int kind, CString& path) {
        const std::optional<CString> folder = m_pIdentity->GetFolder(kind);
        if (folder) path = *folder;
        return folder.has_value();
    };
}

// Without a machine any drive that two snapshots hold may be compared.
std::uint32_t CHostedMachine::GetLogicalDrives() {
    if (m_pIdentity == nullptr) return kAllDrives;
    std::uint32_t mask = 0;
    for (const CHostedDrive& drive : m_paths.GetDrives())
        mask |= std::uint32_t{1} << (drive.m_letter - 'A');
    return mask;
}

std::uint32_t CHostedMachine::GetDriveType(std::string_view root) {
    if (m_pIdentity == nullptr) return DRIVE_FIXED;
    const CHostedDrive* const drive = root.empty() ? nullptr : m_paths.FindDrive(root.front());
    return drive == nullptr ? DRIVE_NO_ROOT_DIR : drive->m_nType;
}

std::uint32_t CHostedMachine::GetVolumeLabel(std::string_view root, CString& label) {
    const CHostedDrive* const drive = root.empty() ? nullptr : m_paths.FindDrive(root.front());
    if (drive == nullptr) return ERROR_PATH_NOT_FOUND;
    label = m_pIdentity->GetVolumeLabel(*drive);
    return ERROR_SUCCESS;
}

std::uint32_t CHostedMachine::GetConnection(std::string_view, CString&) { return ERROR_NOT_CONNECTED; }

CHostedRegistry& CHostedMachine::GetRegistry() {
    if (m_pRegistry == nullptr) {
        m_pRegistry = m_pIdentity == nullptr ? std::make_shared<CHostedRegistry>() : m_pIdentity->LoadRegistry();
    }
    return *m_pRegistry;
}

// Between two captures of one run an installation may have changed the files. A walk asks for a predefined key first.
std::uint32_t CHostedMachine::RegQueryInfoKey(HKEY key, CKeyInfo& info) {
    const bool isBetweenWalks = m_pRegistry != nullptr && m_pRegistry->GetOpenCount() == 0;
    if (key >= HKEY_CLASSES_ROOT && isBetweenWalks) m_pRegistry.reset();
    return GetRegistry().QueryInfo(key, info);
}

bool CHostedMachine::MapAndLoad(std::string_view path, CLoadedImage& image) {
    image = {};
    const std::optional<std::string> hostPath = m_paths.Find(path);
    if (!hostPath) return false;
    const std::optional<CHostFile> file = CHostFile::Open(*hostPath);
    return file && MapImage(*file, image);
}

std::unique_ptr<const CVersionInfo> CHostedMachine::GetFileVersionInfo(std::string_view path) {
    const std::optional<std::string> hostPath = m_paths.Find(path);
    if (!hostPath) return nullptr;
    const std::optional<CHostFile> file = CHostFile::Open(*hostPath);
    std::optional<CVersionBlock> block = file ? CVersionBlock::Read(*file) : std::nullopt;
    return block ? std::make_unique<const CVersionBlock>(*std::move(block)) : nullptr;
}

bool CHostedMachine::FileExists(std::string_view path) {
    const std::optional<std::string> hostPath = m_paths.Find(path);
    return hostPath && IsFile(*hostPath);
}

bool CHostedMachine::DirectoryExists(std::string_view path) {
    const std::optional<std::string> hostPath = m_paths.Find(path);
    return hostPath && IsHostDirectory(*hostPath);
}

bool CHostedMachine::CreateDirectory(std::string_view path) {
    const std::optional<std::string> hostPath = m_paths.FindForCreation(path);
    return hostPath && mkdir(hostPath->c_str(), 0777) == 0;
}

bool CHostedMachine::DeleteFile(std::string_view path) {
    const std::optional<std::string> hostPath = m_paths.Find(path);
    return hostPath && unlink(hostPath->c_str()) == 0;
}

CFileBytes CHostedMachine::ReadFile(std::string_view path, std::uint64_t limit) {
    return ReadOwnFile(m_paths.Find(path), GetDisplayPath(path), limit, false);
}

CFileBytes CHostedMachine::ReadFileHead(std::string_view path, std::size_t size) {
    return ReadOwnFile(m_paths.Find(path), GetDisplayPath(path), size, true);
}

std::unique_ptr<CFileWriter> CHostedMachine::CreateFile(std::string_view path) {
    return CreateHostFile(m_paths.FindForCreation(path), GetDisplayPath(path));
}

std::unique_ptr<std::ostream> CHostedMachine::CreateTextFile(std::string_view path) {
    const std::optional<std::string> hostPath = m_paths.FindForCreation(path);
    return hostPath ? CreateHostTextFile(*hostPath) : nullptr;
}

bool CHostedMachine::LockProgramFolder() {
    m_lock.Reset(open(m_programFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return !m_lock || flock(m_lock.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void CHostedMachine::OpenDocument(std::string_view path) {
    if (const std::optional<std::string> hostPath = m_paths.Find(path)) OpenHostDocument(*hostPath);
}

// Started with a standard stream closed, the program would give its number to a file, and a message would go there.
void PrepareStandardStreams() {
    int stream = open("/dev/null", O_RDWR);
    while (stream >= 0 && stream <= STDERR_FILENO)
        stream = open("/dev/null", O_RDWR);
    if (stream >= 0) close(stream);
}

std::unique_ptr<CMachine> MakeMachine() {
    std::signal(SIGXFSZ, SIG_IGN);  // a file size limit is a failed write, not the program's end
    return std::make_unique<CHostedMachine>(ChooseMachine(), ChooseProgramFolder());
}

}  // namespace delvane
