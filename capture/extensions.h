// The extensions' sub-tree, as a snapshot file holds it. This build records no extension, so a captured set is empty;
// a loaded one keeps what its file holds and stores it again.
#pragma once

#include <cstdint>

#include "tree/node.h"

namespace delvane {

// An extension and what the registry says of it.
class CDelvExtObj : public CDelvObj {
public:
    explicit CDelvExtObj(CDelvObj* parent) : CDelvObj(parent) {}

    void Serialize(CArchive& archive) override;

    CTextRef m_strFileType;
    CTextRef m_strIcon;
    CTextRef m_strOpenCommand;
    std::uint32_t m_bNoOpen = 0;
};

// The root of the extensions' sub-tree.
class CDelvAllExts : public CDelvObj {
public:
    explicit CDelvAllExts(CSnapshot& snapshot);

    void Serialize(CArchive& archive) override;
    // Told by the directory walk of each extension that it sees, in lower case. An extension means nothing without the
    // registry, so this build keeps none.
    void AddFileExtension(const CString&, CCaptureProgress*) {}

    CNodeList m_extensions;  // of CDelvExtObj
};

}  // namespace delvane
