#include "report/base.h"

#include "report/heading.h"
#include "resources/strings.h"

namespace delvane {

void CReportObj::AddInfo(int section, CDelvObj& object, std::uint32_t textId) {
    m_pMaster->AddInfo(section, object, textId);
}

void CReportObj::AddObjInfo(int section, CDelvObj& object, std::string_view text, std::uint32_t textId) {
    m_pMaster->AddObjInfo(section, object, text, textId);
}

void CReportObj::AddWarning(int section, CDelvObj& object, std::uint32_t textId) {
    m_pMaster->AddWarning(section, object, textId);
}

void CReportObj::AddObjWarning(int section, CDelvObj& object, std::string_view text, std::uint32_t textId) {
    m_pMaster->AddObjWarning(section, object, text, textId);
}

void CReportObj::AddError(int section, CDelvObj& object, std::uint32_t textId) {
    m_pMaster->AddError(section, object, textId);
}

void CReportObj::AddObjError(int section, CDelvObj& object, std::string_view text, std::uint32_t textId) {
    m_pMaster->AddObjError(section, object, text, textId);
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

void CReportObj::WriteObjectList(std::ostream& stream, const CObjectList& list) {
    CHeading heading;
    for (CDelvObj* object : list) {
        if (heading.Moves(*object)) {
            if (heading.WasOpen()) stream << kObjectGroupEnd;
            stream << "<DL>\n<DT>" << heading.GetName() << "\\</DT>\n<DD><TABLE>";
        }
        WriteChange(stream, *object);
    }
    if (heading.IsOpen()) stream << kObjectGroupEnd;
}

void CReportObj::WriteNameList(std::ostream& stream, const CDiffList& list) {
    CHeading heading;
    for (const auto& change : list) {
        if (heading.Moves(*change->m_pObject)) {
            if (heading.WasOpen()) stream << kNameGroupEnd;
            stream << "<DL>\n<DT>" << heading.GetName() << "\\</DT>\n";
        }
        WriteChange(stream, *change);
    }
    if (heading.IsOpen()) stream << kNameGroupEnd;
}

void CReportObj::WriteChange(std::ostream& stream, CDelvObj& item) {
    if (IsExactly<CDelvDiffObj>(item)) {
        const auto& change = static_cast<const CDelvDiffObj&>(item);
        stream << "<DD><TABLE><TR>" << change.m_pObject->m_name << "</TR>\n</TABLE>\n</DD>\n";
    } else {
        stream << "<TR><TD>" << item.m_name << "</TD></TR>\n";
    }
}

void CReportObj::WriteRawLists(std::ostream& stream, const CRawHeadings& headings) {
    if (m_added.empty() && m_deleted.empty() && m_changed.empty()) return;
    stream << "<H3>" << LoadResString(headings.m_titleId) << "</H3>\n";
    const auto begin = [&](std::uint32_t headingId, std::string_view suffix) {
        BeginRawList(suffix);
        stream << "<HR SIZE=4 WIDTH=100%>\n<H4>"
               << MakeAnchor(LoadResString(headingId), CString(headings.m_anchor).append(suffix)) << "</H4>\n";
    };
    if (!m_added.empty()) {
        begin(headings.m_addedId, "Add");
        WriteObjectList(stream, m_added);
    }
    if (!m_deleted.empty()) {
        begin(headings.m_deletedId, "Del");
        WriteObjectList(stream, m_deleted);
    }
    if (!m_changed.empty()) {
        begin(headings.m_changedId, "Chg");
        WriteNameList(stream, m_changed);
    }
}

CString MakeLink(std::string_view text, std::size_t condition, std::string_view anchor) {
    if (condition == 0) return CString(text);
    return "<A HREF=\"#" + CString(anchor) + "\">" + CString(text) + "</A>";
}

CString MakeAnchor(std::string_view text, std::string_view anchor) {
    return "<A NAME=\"" + CString(anchor) + "\">" + CString(text) + "</A>";
}

}  // namespace delvane
