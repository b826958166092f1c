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

}  // namespace

void CExtReport::NoteBadExtension(CDelvObj& extension) {
    if (static_cast<const CDelvExtObj&>(extension).IsProperlyRegistered()) return;
    if (m_badExtensions.empty()) AddWarning(4, *FindSnapshot(&extension)->m_pExtensions, IDS_BAD_EXTENSIONS);
    m_badExtensions.push_back(&extension);
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
    stream << "<TABLE><TR><TH>" << LoadResString(IDS_EXTENSION_SUMMARY) << "</TH></TR>\n";
    WriteCountRow(stream, LoadResString(IDS_EXTENSIONS_ADDED_COUNT), m_added.size(), "ExtsAdd");
    WriteCountRow(stream, LoadResString(IDS_EXTENSIONS_DELETED_COUNT), m_deleted.size(), "ExtsDel");
    WriteCountRow(stream, LoadResString(IDS_EXTENSIONS_CHANGED_COUNT), m_changed.size(), "ExtsChg");
    WriteCountRow(stream, LoadResString(IDS_BAD_EXTENSIONS_COUNT), m_badExtensions.size(), "BadRef");
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

void CExtReport::WriteChange(std::ostream& stream, CDelvObj& item) {
    WriteEntry(stream, item, [&stream](const CDelvObj& object) {
        const auto& extension = static_cast<const CDelvExtObj&>(object);
        WriteCell(stream, extension.m_pKey != nullptr ? LoadResString(IDS_REGISTERED) : "", IDS_NOT_REGISTERED);
        WriteCell(stream, extension.m_strFileType, IDS_NO_FILE_TYPE);
        WriteCell(stream, extension.m_strIcon, IDS_NO_ICON);
        WriteCell(stream, extension.m_strOpenCommand, extension.m_bNoOpen != 0 ? IDS_NO_OPEN : IDS_NO_COMMAND);
    });
}

}  // namespace delvane
