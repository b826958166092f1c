// The root of a tree, as the nodes below it see it.
#pragma once

#include <string_view>

#include "tree/arena.h"
#include "tree/gaps.h"
#include "tree/node.h"

namespace delvane {

class CDelvAllDrives;
class CDelvAllExts;
class CDelvAllReg;

// What a snapshot has for its sub-trees: the memory of the tree, the list of what a capture could not read, the format
// of a loaded file, and the way from one sub-tree to another.
class CTreeRoot : public CDelvObj {
public:
    CArena& GetArena() { return m_arena; }
    CGapList& GetGaps() { return m_gaps; }

    CString m_strVersion;  // "v2.1", or what the loaded file says
    CDelvAllReg* m_pRegistry = nullptr;
    CDelvAllDrives* m_pDrives = nullptr;
    CDelvAllExts* m_pExtensions = nullptr;

private:
    CArena m_arena;
    CGapList m_gaps;
};

// The root of the tree that the node is in. Every node that captures, loads or stores has one.
CTreeRoot& RootOf(CDelvObj& node);

}  // namespace delvane
