// One captured state of a machine, the root of a tree, and its file.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/host.h"
#include "platform/machine.h"
#include "tree/root.h"

namespace delvane {

// Built empty, then either captured or loaded, never both. The whole tree lives in the snapshot's memory and dies with
// it. m_name is the snapshot's name, m_fullName the directory of its file.
class CSnapshot final : public CTreeRoot {
public:
    CSnapshot();
    ~CSnapshot() override;
    CSnapshot(const CSnapshot&) = delete;
    CSnapshot& operator=(const CSnapshot&) = delete;

    void SetName(std::string_view name);
    std::uint64_t GetCreatedTicks() const { return m_ftCreated.GetTicks(); }
    // m_ftCreated as local time: "Sun Nov 22 21:43:22 2026". Computed once.
    const CString& GetTimeString();
    // The name and the format version: "Before (v2.1)".
    CString GetLabel() const;

    // Reads the file named by m_fullName and m_name. False where there is no such file, or it is no snapshot or a later
    // version; the last two are told in the error log, or in a message box. CArchiveError and CFileError where the file
    // is damaged or cannot be read. The object is of no more use after a failure.
    bool Load();
    // Reads who and what that file is, and none of its trees. Failures are those of Load.
    bool LoadIdentity();
    // Writes the file named by m_fullName and m_name, replacing an earlier one only when the new one is complete.
    // False if it cannot be created; CFileError if it cannot be written, CInterrupted on a signal. The list of gaps
    // goes beside it, and one that stood there from an earlier snapshot goes away.
    bool Save();
    CString GetSavePath() const;
    CString GetLoadPath() const;

    void Serialize(CArchive& archive) override;
    // Asks the registry, then the drives, then the extensions.
    CDelvObj* FindObject(std::string_view path) override;
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    // Stamps the snapshot and captures the registry, then the drives; the extensions fill up meanwhile. With a null
    // `progress` m_pProgress serves. Lets no exception out: false after any, and GetError tells which.
    bool Capture(CCaptureProgress* progress) override;

    // Of the file that the identity was loaded from.
    std::uint64_t GetFileSize() const { return m_file.m_nFileSize; }

    // Why the last Capture, Load or Save gave false, in words; empty for a cancelled capture.
    const CString& GetError() const { return m_strError; }

    CString m_strUserName;
    CString m_strComputerName;
    CString m_strOsName;
    FILETIME m_ftCreated;                     // when the capture began
    CString m_strCreated;                     // m_ftCreated as text, once it was asked for
    CCaptureProgress* m_pProgress = nullptr;  // set by whoever runs a visible capture

private:
    bool LoadHead(CArchive& archive);
    void SaveGaps();
    void SerializeIdentity(CArchive& archive);
    void RefuseLoad(std::uint32_t textId);

    CFileBytes m_file;                               // what the texts of a loaded tree point to
    std::unique_ptr<CDelvAllExts> m_pOwnExtensions;  // beside the arena, as its index has memory of its own
    CString m_strError;
};

// What came of loading a file: the snapshot, or why there is none.
struct CLoaded {
    std::unique_ptr<CSnapshot> m_pSnapshot;
    CString m_strPath;           // of the file that was asked for, as a person on this system writes it
    CString m_strReason;         // in words
    bool m_bMissing = false;     // there is no such file
    bool m_bUnreadable = false;  // it is damaged or cannot be read
};
// Loads the file of that name, or the identity in it alone.
CLoaded LoadSnapshotFile(std::string_view folder, std::string_view name, bool (CSnapshot::*load)() = &CSnapshot::Load);

// The snapshot that holds the node, or null.
CSnapshot* FindSnapshot(CDelvObj* node);

}  // namespace delvane
