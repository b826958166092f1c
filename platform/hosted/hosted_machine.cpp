#include "platform/hosted/hosted_machine.h"

#include <algorithm>

#include "platform/hosted/files/host_file.h"
#include "platform/hosted/identity/prefix_identity.h"
#include "platform/hosted/identity/volume_identity.h"

namespace delvane {
namespace {

constexpr std::uint32_t kAllDrives = (std::uint32_t{1} << 26) - 1;

std::unique_ptr<CMachineIdentity> ReadIdentity(const CMachineChoice& choice) {
    if (choice.m_strFolder.empty()) return nullptr;
    if (choice.m_bIsVolume) return std::make_unique<CVolumeIdentity>(choice.m_strFolder);
    return std::make_unique<CPrefixIdentity>(choice.m_strFolder);
}

}  // namespace

CHostedMachine::CHostedMachine(CMachineChoice choice)
    : m_choice(std::move(choice)),
      m_pIdentity(ReadIdentity(m_choice)),
      m_searches(m_paths, m_pIdentity != nullptr ? m_pIdentity->GetDiskRules() : CDiskRules()) {
    if (m_pIdentity != nullptr) m_paths.SetDrives(m_pIdentity->GetDrives());
}

std::vector<CNotice> CHostedMachine::TakeNotices() {
    std::vector<CNotice> notices;
    if (m_pIdentity != nullptr) {
        notices = m_pIdentity->GetNotices();
    } else if (m_choice.m_bVariable) {
        notices = {{m_choice.m_strProblem}};
    }
    for (const CString& sentence : m_searches.GetNotices())
        notices.push_back({sentence});
    std::erase_if(notices, [this](const CNotice& notice) { return !m_told.insert(notice.m_strSentence).second; });
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
    return m_pIdentity->GetVolumeLabel(*drive, label);
}

std::uint32_t CHostedMachine::GetConnection(std::string_view, CString&) { return ERROR_NOT_CONNECTED; }

CHostedRegistry& CHostedMachine::GetRegistry() {
    if (m_pRegistry == nullptr) {
        m_pRegistry = m_pIdentity == nullptr ? std::make_shared<CHostedRegistry>() : m_pIdentity->LoadRegistry();
    }
    return *m_pRegistry;
}

// Between two captures of one run an installation may have changed the files.
void CHostedMachine::BeginWalk() {
    m_searches.BeginWalk();
    if (m_pRegistry == nullptr) return;
    m_pRegistry->BeginWalk();
    if (m_pRegistry->GetOpenCount() == 0) m_pRegistry.reset();
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

}  // namespace delvane
