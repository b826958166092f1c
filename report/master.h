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

// Made after both snapshots are in memory, which outlive it; its GenerateReport is called once.
class CMasterReport : public CReportObj {
public:
    CMasterReport(CSnapshot& current, CSnapshot& baseline);

    // Compares the snapshots and writes the page at m_strReportPath, in one pass from top to bottom, replacing an
    // earlier one when it is complete. False if the comparison gives false; then no file is touched. A file that
    // cannot be created is told in one sentence on standard error, and the result is true all the same. CFileError
    // where it cannot be written to its end; then an earlier one stays as it was.
    bool GenerateReport();

    // Each files one line under its section and sets its bit of the exit code.
    void AddInfo(int section, CDelvObj& object, std::uint32_t textId) override;
    void AddObjInfo(int section, CDelvObj& object, std::string_view text) override;
    void AddWarning(int section, CDelvObj& object, std::uint32_t textId) override;
    void AddObjWarning(int section, CDelvObj& object, std::string_view text) override;
    void AddError(int section, CDelvObj& object, std::uint32_t textId) override;
    void AddObjError(int section, CDelvObj& object, std::string_view text) override;
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

    CFileReport m_fileReport;
    CRegistryReport m_registryReport;
    CExtReport m_extReport;

private:
    void WritePage(std::ostream& stream);
    void WriteHead(std::ostream& stream) const;
    void WriteSection(std::ostream& stream, std::size_t section) const;
};

}  // namespace delvane
