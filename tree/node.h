// The node of the tree that a snapshot is made of, and the comparison of two lists of nodes.
#pragma once

#include <cstddef>
#include <string_view>
#include <typeinfo>

#include "platform/text.h"
#include "tree/node_list.h"
#include "tree/progress.h"

namespace delvane {

class CArchive;
class CReportObj;

// The platform root: run-time class identity (typeid for the exact class, dynamic_cast for the kind).
class CObject {
public:
    virtual ~CObject() = default;
};

template <class T>
bool IsExactly(const CObject& object) {
    return typeid(object) == typeid(T);
}

template <class T>
bool IsKindOf(const CObject& object) {
    return dynamic_cast<const T*>(&object) != nullptr;
}

// A node: a name, a full path, a parent, and one set of operations by which the whole tree is captured, stored,
// looked up and compared.
//
// Child lists ascend by m_name in mbscmp order. A node and its texts live in the arena of its tree (or, loaded, its
// texts in the snapshot's buffer) and die with it.
class CDelvObj : public CObject {
public:
    CDelvObj() = default;
    explicit CDelvObj(CDelvObj* parent) : m_pParent(parent) {}
    CDelvObj(CDelvObj* parent, CTextRef name, CTextRef fullName)
        : m_name(name), m_fullName(fullName), m_pParent(parent) {}

    // Stores or loads the record: m_name, then m_fullName.
    virtual void Serialize(CArchive& archive);
    // This node if it has that name without regard to case, else null. Containers take a path.
    virtual CDelvObj* FindObject(std::string_view name);
    // `this` belongs to the Current snapshot, `baseline` to the Baseline. True if both have the same exact class and
    // the same full name without regard to case; derived classes tell the report what differs.
    virtual bool Compare(CDelvObj& baseline, CReportObj& report);
    virtual void ReportAdded(CReportObj& report);
    virtual void ReportDeleted(CReportObj& report);
    virtual bool Capture(CCaptureProgress* progress);
    virtual CString GetFullName() const;

    // Puts this node behind all that do not sort behind it. Names usually arrive in order, so the tail is tried first.
    void InsertSorted(CNodeList& list);

    CTextRef m_name;
    CTextRef m_fullName;            // empty while m_bComposed is set
    CDelvObj* m_pParent = nullptr;  // null at the root of a tree; never stored
    bool m_bCaptured = false;       // the node's own data are present
    bool m_bComposed = false;       // the full name is the parent's, a backslash and the name, and is not kept

protected:
    // The full path as the record holds it: m_fullName, or what it is composed of.
    CString GetStoredFullName() const;
    bool HasSameFullName(const CDelvObj& other) const;

private:
    bool IsComposedOf(std::string_view path) const;
};

// One object that stands in both snapshots and differs. What differs, a report reads off the two nodes, so both
// snapshots outlive it.
class CDelvDiffObj : public CDelvObj {
public:
    CDelvDiffObj(CDelvObj& object, CDelvObj& baseline);
    CDelvDiffObj(const CDelvDiffObj&) = delete;
    CDelvDiffObj& operator=(const CDelvDiffObj&) = delete;

    CDelvObj* m_pObject;    // from the Current snapshot
    CDelvObj* m_pBaseline;  // from the Baseline

private:
    CString m_strFullName;  // with its head; what m_fullName points to
};

// Brings siblings that stand in the order of their coming into the order of their names; equal names keep theirs.
void SortByName(CNodeList& list);

// The first that any node of the list finds, in their order; null if none does.
CDelvObj* FindIn(const CNodeList& list, std::string_view path);

// Merges two sorted lists: Compare on the Current's node for a name in both, ReportAdded or ReportDeleted for a name
// in one.
bool CompareLists(const CNodeList& current, const CNodeList& baseline, CReportObj& report);

// Takes the first component off the path, up to the first separator, and gives it. With no separator left that is
// the whole of it.
CString SplitPath(std::string_view& path, char separator);

}  // namespace delvane
