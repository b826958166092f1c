// Drives, and the set of drives that a snapshot holds.
#pragma once

#include "capture/files.h"
#include "core/drive_names.h"

namespace delvane {

class CTreeRoot;

// The root directory of one drive letter. Its name and its full path are the letter and a colon. Two drives of one
// letter are compared only if they agree in kind and in volume text: else they are not the same medium.
class CDelvDriveObj : public CDelvDirObj {
public:
    CDelvDriveObj(CDelvObj* parent, CArena& arena) : CDelvDirObj(parent, arena) {}
    CDelvDriveObj(CDelvObj* parent, CArena& arena, std::string_view name);

    void Serialize(CArchive& archive) override;
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    // A drive on one side only is one warning, not a list of its files.
    void ReportAdded(CReportObj& report) override;
    void ReportDeleted(CReportObj& report) override;
    bool Capture(CCaptureProgress* progress) override;

    std::uint32_t GetType() const { return m_nDriveType; }
    CString GetTypeText() const { return DriveTypeText(m_nDriveType); }
    // The volume label, for a network drive the remote share. Asked of the machine until the drive is captured.
    std::string_view GetVolume();

    std::uint32_t m_nDriveType = DRIVE_UNKNOWN;
    CTextRef m_strVolume;
};

// The root of the file system's sub-tree. Its drives stand in m_subdirs; it has no kind and no volume of its own.
class CDelvAllDrives : public CDelvDriveObj {
public:
    explicit CDelvAllDrives(CTreeRoot& root);

    void Serialize(CArchive& archive) override;
    // The node at a path as a registry value may spell it: quoted, or with \??\ ahead. The drive letter must be upper
    // case.
    CDelvObj* FindObject(std::string_view path) override;
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    bool Capture(CCaptureProgress* progress) override;

    std::uint32_t m_dwDrives = 0;  // after a capture exactly the drives that were captured

protected:
    CDelvDirObj* NewSubdir(CArena& arena) override;

private:
    void NoteMissingDrives();
};

}  // namespace delvane
