// The registry's sub-tree: values, keys, hives and their root.
#pragma once

#include <cstdint>

#include "platform/registry.h"
#include "tree/node.h"

namespace delvane {

class CTreeRoot;

// A value: its type and its bytes as the registry gave them. The unnamed value of a key has the name "(default)". Keys
// derive from it, so that every node of the registry has a handle and a path.
class CDelvRegValObj : public CDelvObj {
public:
    explicit CDelvRegValObj(CDelvObj* parent) : CDelvObj(parent) {}
    // With data the value is captured; without, Capture asks the registry for them again. The data are copied into the
    // arena.
    CDelvRegValObj(CDelvObj* parent, CArena& arena, CTextRef name, std::uint32_t type, std::string_view data);

    void Serialize(CArchive& archive) override;
    // A value has changed when its type, its length or a byte of it has.
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    bool Capture(CCaptureProgress* progress) override;
    // The path of the key; the value's own name is no part of it.
    CString GetFullName() const override;

    // Where the handle of the open key stands that this node is read through; it is zero where it cannot be opened. A
    // value is read through its key.
    virtual HKEY* OpenKey();
    virtual void CloseKey();

    HKEY m_hKey = 0;  // in a key, while it is captured; in a hive its predefined key
    std::uint32_t m_dwType = 0;
    std::string_view m_data;  // its data() is null while the registry has given none
};

// A key: two sorted child lists under a name.
class CDelvRegKeyObj : public CDelvRegValObj {
public:
    CDelvRegKeyObj(CDelvObj* parent, CArena& arena) : CDelvRegValObj(parent), m_subkeys(arena), m_values(arena) {}
    CDelvRegKeyObj(CDelvObj* parent, CArena& arena, CTextRef name);

    void Serialize(CArchive& archive) override;
    // Takes a path that begins with the key's own name. Its last component is a value before it is a subkey.
    CDelvObj* FindObject(std::string_view path) override;
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    void ReportAdded(CReportObj& report) override;
    void ReportDeleted(CReportObj& report) override;
    // False where the key cannot be opened. Where it fails part way: false with a progress record that goes on and
    // forgives, else an exception.
    bool Capture(CCaptureProgress* progress) override;
    HKEY* OpenKey() override;

    CNodeList m_subkeys;  // of CDelvRegKeyObj; in the root, of CDelvRegHiveObj
    CNodeList m_values;   // of CDelvRegValObj

protected:
    // FindObject for a path that begins with the name of a subkey.
    virtual CDelvObj* FindSubkey(std::string_view path);

private:
    void CaptureContents(HKEY key, CCaptureProgress* progress);
    void NoteGap(std::uint32_t code);
    void CaptureValue(CTextRef name, std::uint32_t type, std::string_view data, CCaptureProgress* progress);
    void CaptureSubkey(std::string_view name, CCaptureProgress* progress);
};

// A hive: a key bound to a predefined key, whose number stands ahead of its record.
class CDelvRegHiveObj : public CDelvRegKeyObj {
public:
    CDelvRegHiveObj(CDelvObj* parent, CArena& arena) : CDelvRegKeyObj(parent, arena), m_byFoldedName(arena) {}
    CDelvRegHiveObj(CDelvObj* parent, CArena& arena, CTextRef name);

    void Serialize(CArchive& archive) override;
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    // Reads the hive, and hands each key of HKCR that begins with a full stop to the snapshot's extensions.
    bool Capture(CCaptureProgress* progress) override;
    HKEY* OpenKey() override { return &m_hKey; }
    void CloseKey() override {}

protected:
    CDelvObj* FindSubkey(std::string_view path) override;

private:
    // The subkeys in the order of their names without case: HKCR has ten thousand, and every extension is looked up
    // in it several times. Made when it is asked for.
    CNodeList m_byFoldedName;
};

// The root of the registry's sub-tree.
class CDelvAllReg : public CDelvRegHiveObj {
public:
    explicit CDelvAllReg(CTreeRoot& root);

    void Serialize(CArchive& archive) override;
    // Takes a path that begins with the short name of a hive: HKLM\SOFTWARE.
    CDelvObj* FindObject(std::string_view path) override;
    bool Compare(CDelvObj& baseline, CReportObj& report) override;
    // Puts the three hives into the tree and captures those that the options ask for.
    bool Capture(CCaptureProgress* progress) override;
};

// The predefined key of a hive's short name; 0 for any other name.
HKEY HiveRootKey(std::string_view name);

}  // namespace delvane
