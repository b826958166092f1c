#include "report/base.h"

#include "resources/strings.h"

namespace delvane {

void CReportObj::AddInfo(int section, CDelvObj& object, std::uint32_t textId) {
    AddFinding(EFinding::kInfo, section, object, LoadResString(textId), textId);
}

void CReportObj::AddWarning(int section, CDelvObj& object, std::uint32_t textId) {
    AddObjWarning(section, object, LoadResString(textId), textId);
}

void CReportObj::AddObjWarning(int section, CDelvObj& object, std::string_view text, std::uint32_t textId) {
    AddFinding(EFinding::kWarning, section, object, text, textId);
}

void CReportObj::AddError(int section, CDelvObj& object, std::uint32_t textId) {
    AddObjError(section, object, LoadResString(textId), textId);
}

void CReportObj::AddObjError(int section, CDelvObj& object, std::string_view text, std::uint32_t textId) {
    AddFinding(EFinding::kError, section, object, text, textId);
}

void CReportObj::AddFinding(EFinding severity, int section, CDelvObj& object, std::string_view text,
                            std::uint32_t textId) {
    m_pMaster->AddFinding(severity, section, object, text, textId);
}

void CReportObj::CountCompared(std::size_t nodes) {
    if (m_pMaster != nullptr) m_pMaster->CountCompared(nodes);
}

void CReportObj::WriteSummary(std::ostream&) {}
void CReportObj::WriteDetails(std::ostream&) {}
void CReportObj::WriteRawData(std::ostream&) {}

void CReportObj::AddChanged(CDelvObj& object, CDelvObj& baseline) {
    m_changed.push_back(std::make_unique<CDelvDiffObj>(object, baseline));
}

void CReportObj::AddDeleted(CDelvObj& object) { m_deleted.push_back(&object); }

void CReportObj::AddAdded(CDelvObj& object) { m_added.push_back(&object); }

template <class List, class NodeOf>
void CReportObj::WriteGroups(std::ostream& stream, const List& list, NodeOf nodeOf, std::string_view begin,
                             std::string_view end) {
    const CDelvObj* parent = nullptr;
    CString heading;
    CString part;
    for (const auto& entry : list) {
        const CDelvObj& node = nodeOf(*entry);
        bool isNew = false;
        if (node.m_pParent != parent) {  // of the same parent no path needs to be put together
            parent = node.m_pParent;
            CString name = parent->GetFullName();
            isNew = name != heading;
            if (isNew && !heading.empty()) stream << end;
            heading = std::move(name);
        }
        CString ownPart = GetPartOf(node);
        if (ownPart != part) {
            if (!part.empty()) stream << "<HR WIDTH=100%>\n";
            stream << MakeAnchor("", CString(ownPart).append(m_anchorSuffix));
            part = std::move(ownPart);
        }
        if (isNew) stream << "<DL>\n<DT>" << heading << "\\</DT>\n" << begin;
        WriteChange(stream, *entry);
    }
    if (!heading.empty()) stream << end;
}

void CReportObj::WriteObjectList(std::ostream& stream, const CObjectList& list) {
    const auto itself = [](const CDelvObj& object) -> const CDelvObj& { return object; };
    WriteGroups(stream, list, itself, "<DD><TABLE>", "</TABLE>\n</DD>\n</DL>\n");
}

void CReportObj::WriteNameList(std::ostream& stream, const CDiffList& list) {
    const auto current = [](const CDelvDiffObj& change) -> const CDelvObj& { return *change.m_pObject; };
    WriteGroups(stream, list, current, "", "</DL>\n");
}

void CReportObj::WriteChange(std::ostream& stream, CDelvObj& item) {
    if (IsExactly<CDelvDiffObj>(item)) {
        const auto& change = static_cast<const CDelvDiffObj&>(item);
        stream << "<DD><TABLE><TR>" << change.m_pObject->m_name << "</TR>\n</TABLE>\n</DD>\n";
    } else {
        stream << "<TR><TD>" << item.m_name << "</TD></TR>\n";
    }
}

void CReportObj::WriteEntry(std::ostream& stream, CDelvObj& item, const CCellWriter& cells) {
    if (!IsExactly<CDelvDiffObj>(item)) {
        stream << "<TR><TD>" << GetEntryName(item);
        cells(item);
        stream << "</TD></TR>\n";
        return;
    }
    const auto& change = static_cast<const CDelvDiffObj&>(item);
    const auto writeSide = [&](std::uint32_t labelId, CDelvObj& side) {
        stream << "<TR><TD></TD><TD>" << LoadResString(labelId);
        cells(side);
        stream << "</TD></TR>\n";
    };
    stream << "<DD><TABLE><TR>" << GetEntryName(*change.m_pObject) << "</TR>\n";
    writeSide(IDS_AFTER, *change.m_pObject);
    writeSide(IDS_BEFORE, *change.m_pBaseline);
    stream << "</TABLE>\n</DD>\n";
}

void CReportObj::WriteRawLists(std::ostream& stream, const CRawHeadings& headings) {
    if (m_added.empty() && m_deleted.empty() && m_changed.empty()) return;
    stream << "<H3>" << LoadResString(headings.m_titleId) << "</H3>\n";
    const auto writeRawList = [&](std::uint32_t headingId, std::string_view suffix, auto write, const auto& list) {
        if (list.empty()) return;
        m_anchorSuffix = suffix;
        stream << "<HR SIZE=4 WIDTH=100%>\n<H4>"
               << MakeAnchor(LoadResString(headingId), CString(headings.m_anchor).append(suffix)) << "</H4>\n";
        (this->*write)(stream, list);
    };
    writeRawList(headings.m_addedId, "Add", &CReportObj::WriteObjectList, m_added);
    writeRawList(headings.m_deletedId, "Del", &CReportObj::WriteObjectList, m_deleted);
    writeRawList(headings.m_changedId, "Chg", &CReportObj::WriteNameList, m_changed);
}

CString MakeLink(std::string_view text, std::size_t condition, std::string_view anchor) {
    if (condition == 0) return CString(text);
    return "<A HREF=\"#" + CString(anchor) + "\">" + CString(text) + "</A>";
}

void WriteCountRow(std::ostream& stream, std::string_view label, std::size_t count, std::string_view anchor) {
    stream << "<TR><TD>" << MakeLink(label, count, anchor) << "</TD><TD>" << count << "</TD></TR>\n";
}

CString MakeAnchor(std::string_view text, std::string_view anchor) {
    return "<A NAME=\"" + CString(anchor) + "\">" + CString(text) + "</A>";
}

}  // namespace delvane
