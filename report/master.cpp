#include "report/master.h"

#include "core/app.h"
#include "core/context.h"
#include "platform/file_stream.h"
#include "resources/strings.h"

namespace delvane {
namespace {

constexpr std::string_view kRule = "<HR SIZE=5 NOSHADE>\n";
constexpr std::string_view kThinRule = "<HR SIZE=4 WIDTH=100%>\n";

CString LinkTo(std::string_view address) { return "<A HREF=\"" + CString(address) + "\">" + CString(address) + "</A>"; }

}  // namespace

CString FileNameOf(CString name) {
    for (char& c : name) {
        if (c == '\\' || c == '/' || c == '\0') c = '_';
    }
    return name;
}

CMasterReport::CMasterReport(CSnapshot& current, CSnapshot& baseline)
    : m_pCurrent(&current),
      m_pBaseline(&baseline),
      m_strReportName(CString(current.m_name) + " - " + CString(baseline.m_name)),
      m_strReportPath(theContext.GetResultsDir() + "\\" + FileNameOf(m_strReportName) + ".htm") {
    for (CReportObj* section : std::initializer_list<CReportObj*>{&m_fileReport, &m_registryReport, &m_extReport}) {
        section->m_pMaster = this;
    }
    m_registryReport.m_pFileReport = &m_fileReport;
}

void CMasterReport::AddFinding(EFinding severity, int section, CDelvObj& object, std::string_view text,
                               std::uint32_t textId) {
    struct CForm {
        std::string_view m_prefix;
        CFindings CMasterReport::*m_lines;
        int m_nExitBit;
    };
    static constexpr CForm kForms[] = {{"INFO - %1: ", &CMasterReport::m_lstInfo, kExitFindings},
                                       {"WARNING - %1: ", &CMasterReport::m_lstWarnings, kExitFindings},
                                       {"ERROR - %1: ", &CMasterReport::m_lstErrors, kExitErrors}};
    const CForm& form = kForms[static_cast<std::size_t>(severity)];
    (this->*form.m_lines)[static_cast<std::size_t>(section)].push_back(
        FormatString1(form.m_prefix, DescribeObject(object)).append(text));
    m_findings.push_back({section, &object, textId, CString(text)});
    theApp.m_nExitCode |= form.m_nExitBit;
}

bool CMasterReport::CompareSnapshots() {
    if (!m_pCurrent->Compare(*m_pBaseline, *this)) return false;
    if (m_registryReport.m_uninstallAdded.empty()) AddWarning(1, *m_pCurrent, IDS_NO_UNINSTALL_ADDITIONS);
    return true;
}

CReportObj& CMasterReport::GetSection(ESubtree subtree) {
    if (subtree == ESubtree::kFiles) return m_fileReport;
    if (subtree == ESubtree::kRegistry) return m_registryReport;
    return m_extReport;
}

bool CMasterReport::GenerateReport() {
    if (!CompareSnapshots()) return false;
    std::unique_ptr<CFileWriter> file;
    try {
        file = theContext.GetHost().CreateFile(m_strReportPath);
    } catch (const CFileOpenError& error) {
        theContext.Say("the report cannot be created: " + CString(error.what()));
        return true;
    }
    CFileStream stream(std::move(file), CFileStream::EForm::kText);
    WritePage(stream);
    stream.Commit();
    return true;
}

void CMasterReport::WritePage(std::ostream& stream) {
    WriteHead(stream);
    for (std::size_t section = 0; section < kSectionCount; ++section)
        WriteSection(stream, section);
    stream << "</FONT>\n<BR>\n" << kThinRule << "</FONT></TD></TR></TBODY></TABLE>" << kRule;
    const std::initializer_list<CReportObj*> sections = {&m_fileReport, &m_registryReport, &m_extReport};
    for (CReportObj* section : sections)
        section->WriteSummary(stream);
    for (CReportObj* section : sections) {
        stream << kRule;
        section->WriteDetails(stream);
    }
    for (CReportObj* section : sections) {
        stream << kRule;
        section->WriteRawData(stream);
    }
    stream << "</BODY>\n</HTML>";
}

void CMasterReport::WriteHead(std::ostream& stream) const {
    stream << "<HTML>\n<HEAD>\n<TITLE>" << FormatString1(kPageTitle, kVersionText) << "</TITLE>\n</HEAD><BODY>";
    stream << "<TABLE border=0>\n<TBODY>\n<TR>\n<TD vAlign=top><FONT face=Arial>";
    stream << "<H1 align=center>" << FormatString1(kPageBanner, kVersionText) << "</H1>\n";
    stream << "<BR>\n<BR>\n<H2>" << FormatString2(kPageSubject, m_pCurrent->GetLabel(), m_pBaseline->GetLabel())
           << "</H2>\n"
           << kThinRule;
    stream << "<H1>" << kSummaryTitle << "</H1>\n";
    stream << "<P><FONT SIZE=2>\n"
           << kIntroduction1 << LinkTo(kTestPlanAddress) << kIntroduction2 << LinkTo(kCertificationAddress)
           << kIntroduction3 << "</FONT>\n<P>" << kThinRule;
}

void CMasterReport::WriteSection(std::ostream& stream, std::size_t section) const {
    stream << kSectionHeadings[section];
    bool found = false;
    for (const CFindings* findings : {&m_lstErrors, &m_lstWarnings, &m_lstInfo}) {
        for (const CString& line : (*findings)[section]) {
            stream << "<P>" << line << "</P>\n";
            found = true;
        }
    }
    if (!found) stream << "<P>" << kNoIssues << "</P>\n";
}

}  // namespace delvane
