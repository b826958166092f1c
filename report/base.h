// The base of all reports: what a comparison tells, and how lists of it are written. The trees see this alone of
// the reports.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string_view>
#include <vector>

#include "tree/node.h"

namespace delvane {

using CObjectList = std::vector<CDelvObj*>;                    // not owned
using CDiffList = std::vector<std::unique_ptr<CDelvDiffObj>>;  // owned

enum class ESubtree { kFiles, kRegistry, kExtensions };
enum class EFinding { kInfo, kWarning, kError };

// Lives for one comparison. The nodes it is told of belong to the two snapshots, which outlive it. Entries keep the
// order of the calls, which is the order of the walk over the trees.
//
// A finding carries a section (0 for the general one, 1 to 7 for the numbered requirements), the object that it is
// about, and a text or the id of one.
class CReportObj : public CObject {
public:
    CReportObj() = default;
    CReportObj(const CReportObj&) = delete;
    CReportObj& operator=(const CReportObj&) = delete;

    // Findings. A text that is put together names the id that it was made of.
    void AddInfo(int section, CDelvObj& object, std::uint32_t textId);
    void AddWarning(int section, CDelvObj& object, std::uint32_t textId);
    void AddObjWarning(int section, CDelvObj& object, std::string_view text, std::uint32_t textId);
    void AddError(int section, CDelvObj& object, std::uint32_t textId);
    void AddObjError(int section, CDelvObj& object, std::string_view text, std::uint32_t textId);

    // Told of each pair of lists that were compared. The base hands it on to the master report.
    virtual void CountCompared(std::size_t nodes);

    // The three passes over the page. The base writes nothing.
    virtual void WriteSummary(std::ostream& stream);
    virtual void WriteDetails(std::ostream& stream);
    virtual void WriteRawData(std::ostream& stream);

    // The report that a sub-tree tells its differences. The base takes them all itself.
    virtual CReportObj& GetSection(ESubtree) { return *this; }

    // What differs. Overrides call the base, which keeps the three lists.
    virtual void AddChanged(CDelvObj& object, CDelvObj& baseline);
    virtual void AddDeleted(CDelvObj& object);
    virtual void AddAdded(CDelvObj& object);

    // Lists of objects and of changes, grouped under the full name of the parent; neighbours share a heading.
    void WriteObjectList(std::ostream& stream, const CObjectList& list);
    void WriteNameList(std::ostream& stream, const CDiffList& list);
    // One entry: a change (CDelvDiffObj) or a node.
    virtual void WriteChange(std::ostream& stream, CDelvObj& item);

    CDiffList m_changed;
    CObjectList m_deleted;
    CObjectList m_added;
    CReportObj* m_pMaster = nullptr;  // set by the master's constructor; null in the master itself

protected:
    // Every finding comes here. The base hands it on to the master report.
    virtual void AddFinding(EFinding severity, int section, CDelvObj& object, std::string_view text,
                            std::uint32_t textId);

    // One entry as the sections write it: the name, and the cells of the row behind it, which are left open; of a
    // change those of both sides.
    using CCellWriter = std::function<void(CDelvObj&)>;
    void WriteEntry(std::ostream& stream, CDelvObj& item, const CCellWriter& cells);
    virtual CString GetEntryName(const CDelvObj& object) { return CString(object.m_name); }

    // Ids of the headings of the raw data, and what its anchors begin with.
    struct CRawHeadings {
        std::uint32_t m_titleId = 0;
        std::uint32_t m_addedId = 0;
        std::uint32_t m_deletedId = 0;
        std::uint32_t m_changedId = 0;
        std::string_view m_anchor;
    };
    // The lists of added, deleted and changed objects that are not empty, with "Add", "Del" or "Chg" behind anchors.
    void WriteRawLists(std::ostream& stream, const CRawHeadings& headings);
    // What parts a list further: an anchor of that name stands ahead of the first entry that has it, and a rule between
    // two of them. The base has none.
    virtual CString GetPartOf(const CDelvObj&) const { return {}; }

private:
    template <class List, class NodeOf>
    void WriteGroups(std::ostream& stream, const List& list, NodeOf nodeOf, std::string_view begin,
                     std::string_view end);

    std::string_view m_anchorSuffix;  // of the raw list that is being written
};

// The words that stand for an object in a finding: its kind, and for most kinds its full name in brackets.
CString DescribeObject(const CDelvObj& object);

// A link to an anchor of the page if the condition holds, else the bare text; and an anchor.
CString MakeLink(std::string_view text, std::size_t condition, std::string_view anchor);
CString MakeAnchor(std::string_view text, std::string_view anchor);

// A row of a summary: a label that links to the anchor where there is something to count.
void WriteCountRow(std::ostream& stream, std::string_view label, std::size_t count, std::string_view anchor);

}  // namespace delvane
