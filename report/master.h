// The report of one comparison: every finding, and the page.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "report/base.h"
#include "report/extension.h"
#include "report/file.h"
#include "report/registry.h"
#include "resources/page.h"
#include "tree/snapshot.h"

namespace delvane {

// A finding as whoever asks for more than the page's line needs it.
struct CReportFinding {
    int m_nSection;
    CDelvObj* m_pObject;
    std::uint32_t m_textId;  // what the text was made of
    CString m_strText;
};

// The name as a file's: one that comes out of a file must not lead out of the folder that it is put into.
CString FileNameOf(CString name);

// Made after both snapshots are in memory, which outlive it; its GenerateReport is called once.
class CMasterReport : public CReportObj {
public:
    CMasterReport(CSnapshot& current, CSnapshot& baseline);

    // Compares the snapshots, and files the one finding that stands only at the end, that nothing was added to the
    // Uninstall key. False if the comparison gives false. Called once, by GenerateReport or in its stead.
    bool CompareSnapshots();

    // Compares the snapshots and writes the page at m_strReportPath, in one pass from top to bottom, replacing an
    // earlier one when it is complete. False if the comparison gives false; then no file is touched. A file that
    // cannot be created is told in one sentence on standard error, and the result is true all the same. CFileError
    // where it cannot be written to its end; then an earlier one stays as it was.
    bool GenerateReport();

    void CountCompared(std::size_t nodes) override {
        if (m_pfnCompared) m_pfnCompared(nodes);
    }

    std::function<void(std::size_t nodes)> m_pfnCompared;  // set by whoever wants to know how far a comparison is

    CReportObj& GetSection(ESubtree subtree) override;

    CSnapshot* m_pCurrent;
    CSnapshot* m_pBaseline;
    CString m_strReportName;  // "After - Before"
    CString m_strReportPath;  // in the results directory, whatever the snapshots are named

    using CFindings = std::array<std::vector<CString>, kSectionCount>;  // finished lines, in filing order
    CFindings m_lstInfo;
    CFindings m_lstWarnings;
    CFindings m_lstErrors;

    std::vector<CReportFinding> m_findings;  // the same in one list, in filing order

    CFileReport m_fileReport;
    CRegistryReport m_registryReport;
    CExtReport m_extReport;

protected:
    // Files one line under its section and sets its bit of the exit code.
    void AddFinding(EFinding severity, int section, CDelvObj& object, std::string_view text,
                    std::uint32_t textId) override;

private:
    void WritePage(std::ostream& stream);
    void WriteHead(std::ostream& stream) const;
    void WriteSection(std::ostream& stream, std::size_t section) const;
};

}  // namespace delvane
