// Files and directories: what a directory entry says of them, and the walk of a directory tree.
#pragma once

#include "platform/machine.h"
#include "tree/node.h"

namespace delvane {

class CDelvAllExts;

// A file as the directory walk sees it. It has changed when its last-write time or its size has; its contents are
// never read.
class CDelvFileObj : public CDelvObj, public CFileWords {
public:
    CDelvFileObj() = default;
    explicit CDelvFileObj(CDelvObj* parent) : CDelvObj(parent) {}
    // The full path is the parent's, a backslash and the name. The name must live as long as the node.
    CDelvFileObj(CDelvObj* parent, CTextRef name);
    CDelvFileObj(CDelvObj* parent, CTextRef name, const CFileWords& words);

    void Serialize(CArchive& archive) override;
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    bool Capture(CCaptureProgress* progress) override;
};

static_assert(sizeof(CDelvFileObj) <= 72,
              "a machine has a million of them: two texts, a parent, two flags, nine words");

// A directory: a file that also has two sorted child lists.
class CDelvDirObj : public CDelvFileObj {
public:
    CDelvDirObj(CDelvObj* parent, CArena& arena) : CDelvFileObj(parent), m_subdirs(arena), m_files(arena) {}
    CDelvDirObj(CDelvObj* parent, CArena& arena, CTextRef name, const CFileWords& words)
        : CDelvFileObj(parent, name, words), m_subdirs(arena), m_files(arena) {}

    void Serialize(CArchive& archive) override;
    // The node at a path whose first component is this directory's name, without regard to case. A file is found only
    // in its own directory, and before a directory of the same name.
    CDelvObj* FindObject(std::string_view path) override;
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    void ReportAdded(CReportObj& report) override;
    void ReportDeleted(CReportObj& report) override;
    bool Capture(CCaptureProgress* progress) override;

    CNodeList m_subdirs;  // of CDelvDirObj; in the drive set, of CDelvDriveObj
    CNodeList m_files;    // of CDelvFileObj

protected:
    // The record of a sub-directory is read by a new node of the right class.
    virtual CDelvDirObj* NewSubdir(CArena& arena);

private:
    // `extensions` takes the extensions of this directory's files; null where they are not asked for.
    void CaptureEntry(const CFindData& data, CDelvAllExts* extensions, CCaptureProgress* progress);
    void NoteGap(const CString& path, std::uint32_t error);
};

}  // namespace delvane
