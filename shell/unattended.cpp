// The steps of a run without a window.

#include "core/app.h"
#include "core/context.h"
#include "report/master.h"
#include "shell/main_dialog.h"
#include "tree/archive.h"

namespace delvane {
namespace {

// Runs an action whose failure is told by false or by any exception. Gives what went wrong, in words, or nothing.
template <class Action>
CString ReasonOfFailure(Action action) {
    try {
        return action();
    } catch (...) {
        return DescribeCurrentException();
    }
}

bool CreateSnapshot(CSnapshot& snapshot) {
    const CInterruptGuard guard;
    theContext.TellSkippedFolders();
    const CString reason = ReasonOfFailure([&]() -> CString {
        if (!snapshot.Capture(nullptr)) return snapshot.GetError();
        if (!snapshot.Save()) return snapshot.GetError();
        return {};
    });
    theContext.TellNotices();
    if (reason.empty()) {
        if (!snapshot.GetGaps().IsEmpty()) {
            const CString path = GapsPathOf(snapshot.GetSavePath());
            theContext.Say("snapshot \"" + CString(snapshot.m_name) + "\": " + snapshot.GetGaps().GetSummary() + "; " +
                           path.substr(path.rfind('\\') + 1) + " lists them");
        }
        return true;
    }
    // Without a machine the sentence tells everything, and it may have been said at the start.
    const bool noMachine = !theContext.GetMachine().IsPresent();
    theContext.Say(noMachine ? reason : "snapshot \"" + CString(snapshot.m_name) + "\" was not created: " + reason);
    theApp.m_nExitCode |= kExitCreateFailed;
    return false;
}

bool LoadSnapshot(CSnapshot& snapshot) {
    // Loading replaces the name by the one that the file holds.
    const CString name(snapshot.m_name);
    const CString path = theContext.GetHost().GetDisplayPath(snapshot.GetLoadPath());
    const CString reason = ReasonOfFailure([&]() -> CString {
        try {
            return snapshot.Load() ? CString() : snapshot.GetError();
        } catch (const CArchiveError& error) {
            const CString text = path + ": " + error.what();
            theContext.GetErrorLog() << text << '\n' << std::flush;
            return text;
        } catch (const CFileError& error) {
            theContext.GetErrorLog() << error.what() << '\n' << std::flush;
            throw;
        }
    });
    if (reason.empty()) return true;
    theContext.Say("snapshot \"" + name + "\" was not loaded: " + reason);
    theApp.m_nExitCode |= kExitLoadFailed;
    return false;
}

bool RunSnapshot(std::unique_ptr<CSnapshot>& side, const CString& name, bool create) {
    side.reset();
    side = std::make_unique<CSnapshot>();
    side->SetName(name);
    if (create ? CreateSnapshot(*side) : LoadSnapshot(*side)) return true;
    side.reset();
    return false;
}

}  // namespace

void CMainDlg::RunUnattended() {
    if (!theContext.m_strBaselineName.empty() && !RunBaseline()) return;
    if (!theContext.m_strCurrentName.empty() && !RunCurrent()) return;
    if (theContext.m_bGenerateReport) RunReport();
}

bool CMainDlg::RunBaseline() {
    return RunSnapshot(m_pBaseline, theContext.m_strBaselineName, theContext.m_bCreateBaseline);
}

bool CMainDlg::RunCurrent() {
    return RunSnapshot(m_pCurrent, theContext.m_strCurrentName, theContext.m_bCreateCurrent);
}

bool CMainDlg::RunReport() {
    if (m_pBaseline == nullptr || m_pCurrent == nullptr) {
        theContext.Say("no report was made: it needs a baseline (/b:NAME) and a current snapshot (/c:NAME)");
        theApp.m_nExitCode |= kExitNoReport;
        return false;
    }
    CMasterReport report(*m_pCurrent, *m_pBaseline);
    CHost& host = theContext.GetHost();
    if (!theContext.m_bUseExistingReport || !host.FileExists(report.m_strReportPath)) {
        bool complete = false;
        const CString reason = ReasonOfFailure([&]() -> CString {
            complete = report.GenerateReport();
            return {};
        });
        if (!reason.empty()) {
            // The page was not finished, and whatever stood in its place still does.
            theContext.Say("no report was made: " + reason);
            theApp.m_nExitCode |= kExitNoReport;
            return false;
        }
        if (!complete) {
            host.DeleteFile(report.m_strReportPath);
            theContext.Say("no report was made: the snapshots could not be compared");
            theApp.m_nExitCode |= kExitNoReport;
            return false;
        }
    }
    if (theContext.m_bDisplayReport) host.OpenDocument(report.m_strReportPath);
    return true;
}

}  // namespace delvane
