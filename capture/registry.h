// The registry's sub-tree: values, keys, hives and their root, as a snapshot file holds them. This build captures no
// hive, so the root of a captured snapshot is empty; a loaded one keeps what its file holds and stores it again.
#pragma once

#include <cstdint>

#include "tree/node.h"

namespace delvane {

// A value: its type and its bytes as the registry gave them.
class CDelvRegValObj : public CDelvObj {
public:
    explicit CDelvRegValObj(CDelvObj* parent) : CDelvObj(parent) {}

    void Serialize(CArchive& archive) override;

    std::uint32_t m_hKey = 0;  // a hive's predefined root key; zero in values and keys
    std::uint32_t m_dwType = 0;
    std::string_view m_data = "";
};

// A key: two sorted child lists under a name.
class CDelvRegKeyObj : public CDelvRegValObj {
public:
    CDelvRegKeyObj(CDelvObj* parent, CArena& arena) : CDelvRegValObj(parent), m_subkeys(arena), m_values(arena) {}

    void Serialize(CArchive& archive) override;

    CNodeList m_subkeys;  // of CDelvRegKeyObj; in the root, of CDelvRegHiveObj
    CNodeList m_values;   // of CDelvRegValObj
};

// A hive: a key bound to a predefined root key, whose number stands ahead of its record.
class CDelvRegHiveObj : public CDelvRegKeyObj {
public:
    using CDelvRegKeyObj::CDelvRegKeyObj;

    void Serialize(CArchive& archive) override;
};

// The root of the registry's sub-tree.
class CDelvAllReg : public CDelvRegHiveObj {
public:
    explicit CDelvAllReg(CSnapshot& snapshot);

    void Serialize(CArchive& archive) override;
};

}  // namespace delvane
