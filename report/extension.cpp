#include "report/extension.h"

#include "capture/extensions.h"
#include "resources/strings.h"
#include "tree/snapshot.h"

namespace delvane {
namespace {

// The words for an empty field are ids of the string table.
void WriteCell(std::ostream& stream, std::string_view text, std::uint32_t emptyId) {
    stream << "</TD><TD> - " << (text.empty() ? LoadResString(emptyId) : text);
}

void WriteSide(std::ostream& stream, std::uint32_t labelId, const CDelvObj& object) {
    stream << "<TR><TD></TD><TD>" << LoadResString(labelId);
    CExtReport::WriteExtensionCells(stream, static_cast<const CDelvExtObj&>(object));
    stream << "</TD></TR>\n";
}

}  // namespace

void CExtReport::NoteBadExtension(CDelvObj& extension) {
    if (static_cast<const CDelvExtObj&>(extension).IsProperlyRegistered()) return;
    ++m_nBadExtensions;
    m_badExtensions.push_back(&extension);
    if (m_bBadReported) return;
    m_bBadReported = true;
    AddWarning(4, *FindSnapshot(&extension)->m_pExtensions, IDS_BAD_EXTENSIONS);
}

void CExtReport::AddAdded(CDelvObj& object) {
    CReportObj::AddAdded(object);
    NoteBadExtension(object);
}

void CExtReport::AddChanged(CDelvObj& object, CDelvObj& baseline) {
    CReportObj::AddChanged(object, baseline);
    NoteBadExtension(object);
}

void CExtReport::WriteSummary(std::ostream& stream) {
    const auto writeRow = [&stream](std::uint32_t labelId, std::size_t count, std::string_view anchor) {
        stream << "<TR><TD>" << MakeLink(LoadResString(labelId), count, anchor) << "</TD><TD>" << count
               << "</TD></TR>\n";
    };
    stream << "<TABLE><TR><TH>" << LoadResString(IDS_EXTENSION_SUMMARY) << "</TH></TR>\n";
    writeRow(IDS_EXTENSIONS_ADDED_COUNT, m_added.size(), "ExtsAdd");
    writeRow(IDS_EXTENSIONS_DELETED_COUNT, m_deleted.size(), "ExtsDel");
    writeRow(IDS_EXTENSIONS_CHANGED_COUNT, m_changed.size(), "ExtsChg");
    writeRow(IDS_BAD_EXTENSIONS_COUNT, m_nBadExtensions, "BadRef");
    stream << "</TABLE>\n";
}

void CExtReport::WriteDetails(std::ostream& stream) {
    if (m_badExtensions.empty()) return;
    stream << "<H4>" << MakeAnchor(LoadResString(IDS_BAD_EXTENSIONS_TITLE), "BadRef") << "</H4>\n";
    WriteObjectList(stream, m_badExtensions);
}

void CExtReport::WriteRawData(std::ostream& stream) {
    WriteRawLists(
        stream, {IDS_EXTENSION_RAW_DATA, IDS_EXTENSIONS_ADDED, IDS_EXTENSIONS_DELETED, IDS_EXTENSIONS_CHANGED, "Exts"});
}

void CExtReport::WriteExtensionCells(std::ostream& stream, const CDelvExtObj& extension) {
    WriteCell(stream, extension.m_pKey != nullptr ? LoadResString(IDS_REGISTERED) : "", IDS_NOT_REGISTERED);
    WriteCell(stream, extension.m_strFileType, IDS_NO_FILE_TYPE);
    WriteCell(stream, extension.m_strIcon, IDS_NO_ICON);
    WriteCell(stream, extension.m_strOpenCommand, extension.m_bNoOpen != 0 ? IDS_NO_OPEN : IDS_NO_COMMAND);
}

void CExtReport::WriteChange(std::ostream& stream, CDelvObj& item) {
    if (IsExactly<CDelvDiffObj>(item)) {
        const auto& change = static_cast<const CDelvDiffObj&>(item);
        stream << "<DD><TABLE><TR>" << change.m_pObject->m_name << "</TR>\n";
        WriteSide(stream, IDS_AFTER, *change.m_pObject);
        WriteSide(stream, IDS_BEFORE, *change.m_pBaseline);
        stream << "</TABLE>\n</DD>\n";
        return;
    }
    stream << "<TR><TD>" << item.m_name;
    WriteExtensionCells(stream, static_cast<const CDelvExtObj&>(item));
    stream << "</TD></TR>\n";
}

}  // namespace delvane
