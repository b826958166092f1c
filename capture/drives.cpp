#include "capture/drives.h"

#include <algorithm>

#include "core/context.h"
#include "report/base.h"
#include "resources/strings.h"
#include "tree/archive.h"
#include "tree/root.h"

namespace delvane {

CDelvDriveObj::CDelvDriveObj(CDelvObj* parent, CArena& arena, std::string_view name)
    : CDelvDirObj(parent, arena), m_nDriveType(DriveTypeOf(name)) {
    m_name = arena.Copy(name);
    m_fullName = m_name;
}

// The kind and the volume stand ahead of the directory record. Version 1.3 had no volume.
void CDelvDriveObj::Serialize(CArchive& archive) {
    archive.Transfer(m_nDriveType);
    if (archive.IsStoring() || RootOf(*this).m_strVersion != "v1.3") archive.Transfer(m_strVolume);
    CDelvDirObj::Serialize(archive);
}

std::string_view CDelvDriveObj::GetVolume() {
    if (!m_bCaptured && DriveTypeOf(m_name) == m_nDriveType) {
        m_strVolume = m_subdirs.GetArena().Copy(VolumeNameOf(m_name));
    }
    return m_strVolume;
}

bool CDelvDriveObj::Capture(CCaptureProgress* progress) {
    Count(progress, &CCaptureProgress::m_nDrives, kCodeDrives);
    theContext.GetMachine().BeginWalk();
    CString volume;
    const std::uint32_t error = ReadVolumeName(m_name, volume);
    m_strVolume = m_subdirs.GetArena().Copy(volume);
    m_bCaptured = true;
    const bool isCaptured = CDelvDirObj::Capture(progress);
    const CString root = GetFullName() + "\\";
    CGapList& gaps = RootOf(*this).GetGaps();
    const bool isLabelLost = error != ERROR_SUCCESS && error != ERROR_NOT_CONNECTED;
    if (isLabelLost && !gaps.HasDrive(root)) gaps.Add(EGapKind::kDrive, root, error);
    return isCaptured;
}

bool CDelvDriveObj::Compare(CDelvObj& other, CReportObj& report) {
    CDelvDriveObj& baseline = static_cast<CDelvDriveObj&>(other);
    if (!theContext.IsDriveSelected(m_name)) return false;
    if (m_nDriveType != baseline.m_nDriveType) {
        report.AddObjWarning(
            0, *this, FormatString2(LoadResString(IDS_DRIVE_TYPES_DIFFER), GetTypeText(), baseline.GetTypeText()),
            IDS_DRIVE_TYPES_DIFFER);
        return false;
    }
    if (mbscmp(GetVolume(), baseline.GetVolume()) != 0) {
        report.AddObjWarning(0, *this,
                             FormatString2(LoadResString(IDS_VOLUMES_DIFFER), GetVolume(), baseline.GetVolume()),
                             IDS_VOLUMES_DIFFER);
        return false;
    }
    return CDelvDirObj::Compare(other, report);
}

void CDelvDriveObj::ReportAdded(CReportObj& report) {
    if (theContext.IsDirAllowed(m_name)) report.AddWarning(0, *this, IDS_DRIVE_NOT_IN_BASELINE);
}

void CDelvDriveObj::ReportDeleted(CReportObj& report) {
    if (theContext.IsDirAllowed(m_name)) report.AddWarning(0, *this, IDS_DRIVE_NOT_IN_CURRENT);
}

CDelvAllDrives::CDelvAllDrives(CTreeRoot& root) : CDelvDriveObj(&root, root.GetArena()) {
    m_name = root.GetArena().Copy(LoadResString(IDS_MY_COMPUTER));
    m_fullName = m_name;
}

CDelvDirObj* CDelvAllDrives::NewSubdir(CArena& arena) { return arena.New<CDelvDriveObj>(this, arena); }

void CDelvAllDrives::Serialize(CArchive& archive) {
    archive.Transfer(m_dwDrives);
    CDelvDirObj::Serialize(archive);
}

bool CDelvAllDrives::Capture(CCaptureProgress* progress) {
    m_dwDrives = theContext.m_dwLogicalDrives;
    for (std::uint32_t left = m_dwDrives; left != 0; left &= left - 1) {
        const CString name = DriveName(left);
        if (!theContext.IsDriveSelected(name)) {
            m_dwDrives &= ~DriveBit(name);
            continue;
        }
        CArena& arena = m_subdirs.GetArena();
        CDelvDriveObj* const drive = arena.New<CDelvDriveObj>(this, arena, name);
        drive->InsertSorted(m_subdirs);
        drive->Capture(progress);
    }
    NoteMissingDrives();
    return true;
}

// What was asked for by its letter and is not there is a gap. A capture that was to read drives and could read none is
// hardly what somebody wanted.
void CDelvAllDrives::NoteMissingDrives() {
    CGapList& gaps = RootOf(*this).GetGaps();
    std::uint32_t missing = theContext.m_dwDrivesOn & ~theContext.m_dwLogicalDrives;
    for (; missing != 0; missing &= missing - 1)
        gaps.Add(EGapKind::kDrive, DriveName(missing) + "\\", ERROR_PATH_NOT_FOUND);
    const bool isAsked = theContext.m_bHardDrives || theContext.m_dwDrivesOn != 0;
    const bool isRead = std::any_of(m_subdirs.begin(), m_subdirs.end(), [&](const CDelvObj* drive) {
        return !gaps.HasDrive(CString(drive->m_name) + "\\");
    });
    if (isAsked && !isRead) theContext.Say("no drive was read: the snapshot holds no files");
}

bool CDelvAllDrives::Compare(CDelvObj& other, CReportObj& report) {
    const CDelvAllDrives& baseline = static_cast<const CDelvAllDrives&>(other);
    const auto warn = [&](std::uint32_t drives, std::uint32_t textId) {
        if (drives != 0)
            report.AddObjWarning(0, *this, FormatString1(LoadResString(textId), DriveNames(drives)), textId);
    };
    warn(baseline.m_dwDrives & ~m_dwDrives, IDS_DRIVES_ONLY_IN_BASELINE);
    warn(m_dwDrives & ~baseline.m_dwDrives, IDS_DRIVES_ONLY_IN_CURRENT);
    return CDelvDirObj::Compare(other, report);
}

CDelvObj* CDelvAllDrives::FindObject(std::string_view path) {
    if (path.starts_with('"')) path.remove_prefix(1);
    if (path.ends_with('"')) path.remove_suffix(1);
    if (path.starts_with("\\??\\")) path.remove_prefix(4);
    if (path.size() < 2 || path[0] < 'A' || path[0] > 'Z' || path[1] != ':') return nullptr;
    return FindIn(m_subdirs, path);
}

}  // namespace delvane
