// A run without a window: its steps, and what it says of them.
#include "core/app.h"
#include "core/context.h"
#include "shell/counter_line.h"
#include "shell/main_dialog.h"
#include "shell/steps.h"

namespace delvane {
namespace {

bool CreateOnDemand(std::unique_ptr<CSnapshot>& side, const CString& name) {
    theContext.TellSkippedFolders();
    const COutcome outcome = CreateSnapshot(side, name, [](CSnapshot& snapshot) {
        CCounterLine line;
        return snapshot.Capture(line.GetProgress());
    });
    theContext.TellNotices();
    if (outcome.m_bDone) {
        if (!side->GetGaps().IsEmpty()) {
            const CString path = GapsPathOf(side->GetSavePath());
            theContext.Say("snapshot \"" + name + "\": " + side->GetGaps().GetSummary() + "; " +
                           path.substr(path.rfind('\\') + 1) + " lists them");
        }
        return true;
    }
    side.reset();
    // Without a machine the reason tells everything, and it may have been said at the start.
    const bool noMachine = !theContext.GetMachine().IsPresent();
    theContext.Say(noMachine ? outcome.m_strReason : NotDone(name, "created", outcome.m_strReason));
    theApp.m_nExitCode |= kExitCreateFailed;
    return false;
}

bool LoadOnDemand(std::unique_ptr<CSnapshot>& side, const CString& name) {
    const COutcome outcome = LoadSnapshot(side, name);
    if (outcome.m_bDone) return true;
    if (outcome.m_bUnreadable) theContext.GetErrorLog() << outcome.m_strReason << '\n' << std::flush;
    theContext.Say(NotDone(name, "loaded", outcome.m_strReason));
    theApp.m_nExitCode |= kExitLoadFailed;
    return false;
}

COutcome MakeWithCounters(CMasterReport& report) {
    CCounterLine line;
    report.m_pfnCompared = [&line](std::size_t nodes) { line.CountCompared(nodes); };
    return MakeReport(report);
}

bool RefuseReport(const CString& reason) {
    theContext.Say("no report was made: " + reason);
    theApp.m_nExitCode |= kExitNoReport;
    return false;
}

}  // namespace

void CMainDlg::RunUnattended() {
    const CInterruptGuard guard(CInterruptGuard::EOwner::kAnswers);
    if (!theContext.m_strBaselineName.empty() && !RunBaseline()) return;
    if (!theContext.m_strCurrentName.empty() && !RunCurrent()) return;
    if (theContext.m_bGenerateReport) RunReport();
}

bool CMainDlg::RunBaseline() {
    const CString& name = theContext.m_strBaselineName;
    return theContext.m_bCreateBaseline ? CreateOnDemand(m_pBaseline, name) : LoadOnDemand(m_pBaseline, name);
}

bool CMainDlg::RunCurrent() {
    const CString& name = theContext.m_strCurrentName;
    return theContext.m_bCreateCurrent ? CreateOnDemand(m_pCurrent, name) : LoadOnDemand(m_pCurrent, name);
}

bool CMainDlg::RunReport() {
    if (m_pBaseline == nullptr || m_pCurrent == nullptr) {
        return RefuseReport("it needs a baseline (/b:NAME) and a current snapshot (/c:NAME)");
    }
    CMasterReport report(*m_pCurrent, *m_pBaseline);
    if (!theContext.m_bUseExistingReport || !theContext.GetHost().FileExists(report.m_strReportPath)) {
        const COutcome outcome = MakeWithCounters(report);
        if (!outcome.m_bDone) return RefuseReport(outcome.m_strReason);
    }
    if (theContext.m_bDisplayReport) ShowDocument(report.m_strReportPath);
    return true;
}

}  // namespace delvane
