// Files examined as executables.
#pragma once

#include "capture/files.h"

namespace delvane {

// Whether the file at the path, on the live disk, is an executable image of any kind.
bool IsExecutableFile(std::string_view path);

// A file examined as an executable. Reports make them of files that were added or changed; no snapshot holds one. It
// looks at the file that lies at its path now, which may be another than the snapshot saw, or none.
class CDelvExeObj : public CDelvFileObj {
public:
    explicit CDelvExeObj(const CDelvFileObj& file);
    CDelvExeObj(const CDelvExeObj&) = delete;
    CDelvExeObj& operator=(const CDelvExeObj&) = delete;

    // Reads kind and versions. Call it before reading the fields below, unless m_bAnalyzed says that it has run.
    void Analyze();

    const CDelvFileObj* m_pFile;  // what it is a copy of
    CLoadedImage m_image;
    bool m_bAnalyzed = false;
    std::uint32_t m_bIsImage = 0;  // an executable image of any kind
    CString m_strProductVersion;   // empty if the file has none in U.S. English
    CString m_strFileVersion;

private:
    CString m_strFullName;  // with its head; what m_fullName points to
};

}  // namespace delvane
