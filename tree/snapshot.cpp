#include "tree/snapshot.h"

#include "capture/drives.h"
#include "capture/extensions.h"
#include "capture/registry.h"
#include "core/context.h"
#include "report/base.h"
#include "resources/dialogs.h"
#include "resources/strings.h"
#include "tree/archive.h"

namespace delvane {
namespace {

constexpr std::uint32_t kMagic = 0x44454C56;  // "VLED"
constexpr std::uint32_t kVersion = 0x00020001;
constexpr std::size_t kHeadSize = 8;  // the two of them
constexpr std::uint32_t kVersion11 = 0x00010001;
constexpr std::uint32_t kVersion13 = 0x00010003;

// Far above any machine's snapshot (a million files and as many values take 300 MB), far below what would take a
// machine's memory away.
constexpr std::uint64_t kLargestFile = std::uint64_t{4} << 30;

}  // namespace

CSnapshot::CSnapshot() {
    m_strVersion = kVersionText;
    m_pRegistry = GetArena().New<CDelvAllReg>(*this);
    m_pDrives = GetArena().New<CDelvAllDrives>(*this);
    m_pOwnExtensions = std::make_unique<CDelvAllExts>(*this);
    m_pExtensions = m_pOwnExtensions.get();
    m_fullName = GetArena().Copy(theContext.GetResultsDir());
}

CSnapshot::~CSnapshot() = default;

void CSnapshot::SetName(std::string_view name) { m_name = GetArena().Copy(name); }

const CString& CSnapshot::GetTimeString() {
    if (m_strCreated.empty()) m_strCreated = LocalTimeText(GetCreatedTicks(), "%a %b %d %H:%M:%S %Y");
    return m_strCreated;
}

CString CSnapshot::GetLabel() const { return CString(m_name) + " (" + m_strVersion + ")"; }

CString CSnapshot::GetSavePath() const {
    CString path(m_fullName);
    if (!path.ends_with('\\')) path += '\\';
    path += m_name;
    if (!IsSuffixNoCase(kSnapshotEnding, m_name)) path += kSnapshotEnding;
    return path;
}

CString CSnapshot::GetLoadPath() const {
    return CString(m_fullName) + '\\' + CString(m_name) + CString(kSnapshotEnding);
}

bool CSnapshot::Save() {
    std::unique_ptr<CFileWriter> file;
    try {
        file = theContext.GetHost().CreateFile(GetSavePath());
    } catch (const CFileOpenError& error) {
        m_strError = error.what();
        return false;
    }
    CArchive archive(*file);
    archive.WriteU32(kMagic);
    archive.WriteU32(kVersion);
    Serialize(archive);
    archive.Flush();
    file->Commit();
    SaveGaps();
    return true;
}

void CSnapshot::SaveGaps() {
    CHost& host = theContext.GetHost();
    const CString path = GapsPathOf(GetSavePath());
    try {
        if (GetGaps().IsEmpty()) {
            if (host.FileExists(path) && !host.DeleteFile(path)) {
                theContext.Say(host.GetDisplayPath(path) + " is of an earlier snapshot and cannot be deleted");
            }
            return;
        }
        const std::unique_ptr<CFileWriter> file = host.CreateFile(path);
        file->Write(GetGaps().GetLines(m_name));
        file->Commit();
    } catch (const CFileError& error) {
        theContext.Say(CString("the list of what could not be read was not written: ") + error.what());
    }
}

bool CSnapshot::Load() {
    CHost& host = theContext.GetHost();
    try {
        // The head tells whether the rest is worth reading.
        const CFileBytes head = host.ReadFileHead(GetLoadPath(), kHeadSize);
        CArchive archive(head.GetBytes());
        if (!LoadHead(archive)) return false;
        m_file = host.ReadFile(GetLoadPath(), kLargestFile);
    } catch (const CFileOpenError& error) {
        m_strError = error.what();
        return false;
    }
    CArchive archive(m_file.GetBytes());
    archive.ReadBytes(kHeadSize);
    Serialize(archive);
    return true;
}

bool CSnapshot::LoadIdentity() {
    constexpr std::size_t kLargestIdentity = 1 << 16;  // five texts, of which each may be a path
    try {
        m_file = theContext.GetHost().ReadFileHead(GetLoadPath(), kLargestIdentity);
    } catch (const CFileOpenError& error) {
        m_strError = error.what();
        return false;
    }
    CArchive archive(m_file.GetBytes());
    if (!LoadHead(archive)) return false;
    SerializeIdentity(archive);
    return true;
}

bool CSnapshot::LoadHead(CArchive& archive) {
    if (archive.ReadU32() != kMagic) {
        RefuseLoad(IDS_WRONG_SIGNATURE);
        return false;
    }
    std::uint32_t version = archive.ReadU32();
    if (version == kVersion11) version = kVersion13;
    const std::uint32_t major = version >> 16;
    const std::uint32_t minor = version & 0xFFFF;
    if (major > 2 || (major == 2 && minor >= 2)) {
        RefuseLoad(IDS_LATER_VERSION);
        return false;
    }
    m_strVersion = "v" + std::to_string(major) + "." + std::to_string(minor);
    return true;
}

void CSnapshot::RefuseLoad(std::uint32_t textId) {
    m_strError =
        theContext.GetHost().GetDisplayPath(GetLoadPath()) +
        (textId == IDS_WRONG_SIGNATURE ? ": this is no snapshot file" : ": a later version of this program wrote it");
    if (theContext.m_bSilent) {
        theContext.GetErrorLog() << LoadResString(textId) << '\n' << std::flush;
    } else {
        theContext.GetToolkit().ShowMessage(LoadResString(textId), kProgramTitle, EMessageKind::kError);
    }
}

void CSnapshot::SerializeIdentity(CArchive& archive) {
    CDelvObj::Serialize(archive);
    for (CString* text : {&m_strUserName, &m_strComputerName, &m_strOsName})
        archive.Transfer(*text);
    archive.Transfer(m_ftCreated);
}

void CSnapshot::Serialize(CArchive& archive) {
    SerializeIdentity(archive);
    // The registry comes first because an extension looks its key up in it while it is loaded.
    m_pRegistry->Serialize(archive);
    m_pDrives->Serialize(archive);
    m_pExtensions->Serialize(archive);
}

CLoaded LoadSnapshotFile(std::string_view folder, std::string_view name, bool (CSnapshot::*load)()) {
    CHost& host = theContext.GetHost();
    CLoaded loaded;
    try {
        auto snapshot = std::make_unique<CSnapshot>();
        snapshot->m_fullName = snapshot->GetArena().Copy(folder);
        snapshot->SetName(name);
        loaded.m_strPath = host.GetDisplayPath(snapshot->GetLoadPath());
        const bool isThere = host.FileExists(snapshot->GetLoadPath());
        if ((*snapshot.*load)()) {
            loaded.m_pSnapshot = std::move(snapshot);
        } else {
            loaded.m_bMissing = !isThere;
            loaded.m_strReason = snapshot->GetError();
        }
    } catch (const CFileError& error) {
        loaded.m_bUnreadable = true;
        loaded.m_strReason = error.what();
    } catch (...) {
        loaded.m_bUnreadable = true;
        loaded.m_strReason = loaded.m_strPath + ": " + DescribeCurrentException();
    }
    return loaded;
}

CDelvObj* CSnapshot::FindObject(std::string_view path) {
    for (CDelvObj* tree : std::initializer_list<CDelvObj*>{m_pRegistry, m_pDrives, m_pExtensions}) {
        if (CDelvObj* const found = tree->FindObject(path)) return found;
    }
    return nullptr;
}

bool CSnapshot::Capture(CCaptureProgress* progress) {
    if (progress == nullptr) progress = m_pProgress;
    const auto ended = [progress](bool cancelled) {
        if (progress != nullptr && progress->m_pDialog != nullptr) {
            progress->m_pDialog->PostMessage(kMsgEnded, cancelled ? 1 : 0);
        }
    };
    try {
        if (!theContext.GetMachine().IsPresent()) throw std::runtime_error(theContext.GetMachine().GetProblem());
        m_strUserName = theContext.m_strUserName;
        m_strComputerName = theContext.m_strComputerName;
        m_strOsName = theContext.m_strOsName;
        m_ftCreated = FILETIME::FromTicks(theContext.GetSystemFileTime());
        theContext.GetMachine().GetSearches().PassOver(theContext.GetOwnFolders());
        m_pRegistry->Capture(progress);
        m_pDrives->Capture(progress);
        m_pExtensions->Sort();
        theContext.TellNotices();
        for (const CNotice& problem : theContext.GetRegistryProblems())
            GetGaps().Add({EGapKind::kRegistryFile, problem.m_strPath, {}, problem.m_dwCode, problem.GetReason()});
        ended(progress != nullptr && !progress->m_bKeepGoing);
        return true;
    } catch (const CUserException&) {
        m_strError.clear();
    } catch (...) {
        m_strError = DescribeCurrentException();
    }
    if (progress != nullptr) progress->m_bKeepGoing = false;
    ended(true);
    return false;
}

// Every doubt about the two snapshots is a finding and none of them stops the comparison.
bool CSnapshot::Compare(CDelvObj& other, CReportObj& report) {
    CSnapshot& baseline = static_cast<CSnapshot&>(other);
    const CString& here = theContext.m_strComputerName;
    const auto doubt = [&](std::uint32_t textId, const CString& first, const CString& second) {
        if (first != second) report.AddObjError(0, *this, FormatString2(LoadResString(textId), first, second), textId);
    };
    doubt(IDS_OTHER_MACHINES, m_strComputerName, baseline.m_strComputerName);
    doubt(IDS_CURRENT_ELSEWHERE, m_strComputerName, here);
    doubt(IDS_BASELINE_ELSEWHERE, baseline.m_strComputerName, here);
    doubt(IDS_OTHER_SYSTEMS, m_strOsName, baseline.m_strOsName);
    if (GetCreatedTicks() / kTicksPerSecond < baseline.GetCreatedTicks() / kTicksPerSecond) {
        report.AddError(0, *this, IDS_CURRENT_OLDER);
    }
    m_pDrives->Compare(*baseline.m_pDrives, report.GetSection(ESubtree::kFiles));
    m_pRegistry->Compare(*baseline.m_pRegistry, report.GetSection(ESubtree::kRegistry));
    m_pExtensions->Compare(*baseline.m_pExtensions, report.GetSection(ESubtree::kExtensions));
    return true;
}

CSnapshot* FindSnapshot(CDelvObj* node) {
    for (; node != nullptr; node = node->m_pParent) {
        if (IsExactly<CSnapshot>(*node)) return static_cast<CSnapshot*>(node);
    }
    return nullptr;
}

}  // namespace delvane
