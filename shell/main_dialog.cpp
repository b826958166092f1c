#include "shell/main_dialog.h"

#include <array>
#include <optional>

#include "core/app.h"
#include "core/context.h"
#include "shell/name_dialogs.h"
#include "shell/options_dialog.h"
#include "shell/progress_dialog.h"
#include "shell/steps.h"

namespace delvane {
namespace {

constexpr std::uint32_t kMsgAutoBaseline = WM_USER + 3;
constexpr std::uint32_t kMsgAutoCurrent = WM_USER + 4;
constexpr std::uint32_t kMsgAutoCompare = WM_USER + 5;

constexpr std::chrono::seconds kSplashTime(5);

// The fields of one side: name, machine, user, time, system.
using CFieldIds = std::array<std::uint32_t, 5>;
constexpr CFieldIds kBaselineFields = {1003, 1006, 1007, 1009, 1016};
constexpr CFieldIds kCurrentFields = {1017, 1020, 1021, 1022, 1023};

// The wait cursor as long as one lives.
struct CWaitCursor {
    CWaitCursor() { theContext.GetToolkit().SetWaiting(true); }
    ~CWaitCursor() { theContext.GetToolkit().SetWaiting(false); }
    CWaitCursor(const CWaitCursor&) = delete;
    CWaitCursor& operator=(const CWaitCursor&) = delete;
};

void ShowError(const CString& text) { theContext.GetToolkit().ShowMessage(text, kProgramTitle, EMessageKind::kError); }

// A failed report is told without a box.
bool TellReport(const COutcome& outcome) {
    if (!outcome.m_bDone) theContext.Say("no report was made: " + outcome.m_strReason);
    return outcome.m_bDone;
}

}  // namespace

void CMainDlg::RunVisible() {
    CHost& host = theContext.GetHost();
    if (!host.LockProgramFolder()) {
        ShowError("Install Delvane is open already, with the same folder for its files: " +
                  host.GetDisplayPath(theContext.m_strProgramDir));
        theApp.m_nExitCode |= kExitNotStarted;
        return;
    }
    const CMachine& machine = theContext.GetMachine();
    if (!machine.IsPresent()) {
        ShowError("No snapshot can be created: " + machine.GetProblem() + "\n\nSaved ones can be loaded and compared.");
    }
    try {
        // Gone again at once: what is not committed leaves nothing behind.
        host.CreateFile(theContext.GetResultsDir() + "\\delvane.dvs");
    } catch (const CFileError& error) {
        ShowError(CString("Snapshots and reports cannot be saved: ") + error.what());
    }
    DoModal();
}

void CMainDlg::OnInitDialog() {
    CToolkit& toolkit = theContext.GetToolkit();
    const bool hasSplash = !theContext.m_bNoLogo;
    if (hasSplash) toolkit.ShowSplash();
    UpdateCompareState();
    if (!theContext.m_strBaselineName.empty()) {
        GetWindow().PostMessage(kMsgAutoBaseline, 0);
    } else if (!theContext.m_strCurrentName.empty()) {
        GetWindow().PostMessage(kMsgAutoCurrent, 0);
    } else if (hasSplash) {
        toolkit.Sleep(kSplashTime);
        toolkit.HideSplash();
    }
}

void CMainDlg::OnCommand(std::uint32_t id, EControlEvent event) {
    if (event != EControlEvent::kClicked) return;
    switch (id) {
        case IDC_CREATE_BASELINE:
            return OnCreate(m_pBaseline);
        case IDC_CREATE_CURRENT:
            return OnCreate(m_pCurrent);
        case IDC_LOAD_BASELINE:
            return OnLoad(m_pBaseline);
        case IDC_LOAD_CURRENT:
            return OnLoad(m_pCurrent);
        case IDC_COMPARE:
            return OnCompare();
        case IDM_EXIT:
            return EndDialog(IDOK);
        case IDM_OPTIONS:
            COptionsDlg().DoModal();
            return;
        case IDM_USING:
            return ShowDocument(theContext.GetHelpPath());
        case IDM_ABOUT:
            CDialog(IDD_ABOUT).DoModal();
            return;
        default:
            return;
    }
}

// The commands.

void CMainDlg::OnCreate(std::unique_ptr<CSnapshot>& side) {
    CNewSnapshotDlg question;
    question.m_bCompareEnabled = question.m_bCompareAfter = &side == &m_pCurrent && m_pBaseline != nullptr;
    if (question.DoModal() == IDOK) {
        if (CreateSide(side, question.m_strName) && question.m_bCompareAfter) OnCompare();
        UpdateFields(side);
    }
    UpdateCompareState();
}

void CMainDlg::OnLoad(std::unique_ptr<CSnapshot>& side) {
    CLoadSnapshotDlg question;
    if (question.DoModal() == IDOK) {
        const CWaitCursor wait;
        LoadSide(side, question.m_strName);
        UpdateFields(side);
    }
    UpdateCompareState();
}

// What the side held is gone from the start: a cancelled capture leaves it empty. A snapshot that cannot be saved stays
// usable without a file.
bool CMainDlg::CreateSide(std::unique_ptr<CSnapshot>& side, const CString& name) {
    std::optional<CWaitCursor> wait;
    theContext.TellSkippedFolders();
    const COutcome outcome = CreateSnapshot(side, name, [&wait](CSnapshot& snapshot) {
        CProgressDlg progress;
        progress.m_pSnapshot = &snapshot;
        const bool isCaptured = progress.DoModal() == IDOK;
        wait.emplace();
        return isCaptured;
    });
    theContext.TellNotices();
    if (!outcome.m_strReason.empty()) {
        theContext.Say(NotDone(name, side != nullptr ? "saved" : "created", outcome.m_strReason));
    }
    if (side == nullptr) return false;
    CString notices;
    for (const CString& notice : theContext.TakeNotices())
        notices += (notices.empty() ? "" : "\n\n") + notice;
    if (!notices.empty()) theContext.GetToolkit().ShowMessage(notices, kProgramTitle, EMessageKind::kWarning);
    return true;
}

void CMainDlg::LoadSide(std::unique_ptr<CSnapshot>& side, const CString& name) {
    const COutcome outcome = LoadSnapshot(side, name);
    if (outcome.m_bDone) return;
    theContext.Say(NotDone(name, "loaded", outcome.m_strReason));
    if (outcome.m_bUnreadable) ShowError(outcome.m_strReason);
}

void CMainDlg::OnCompare() {
    CMasterReport report(*m_pCurrent, *m_pBaseline);
    std::uint32_t answer = IDNO;
    if (theContext.GetHost().FileExists(report.m_strReportPath)) {
        answer = theContext.GetToolkit().ShowMessage(
            FormatString1("The Report \"%1\" already exists.\nIf you proceed, you will overwrite the existing "
                          "report.\n\nWould you prefer instead to view the existing report?",
                          report.m_strReportName),
            kProgramTitle, EMessageKind::kYesNoCancel);
    }
    if (answer == IDCANCEL) return;
    if (answer == IDNO) {
        const CWaitCursor wait;
        if (!TellReport(MakeReport(report))) return;
    }
    ShowDocument(report.m_strReportPath);
}

// The automatic steps. Each posts the next, and the last takes the splash away.

void CMainDlg::OnMessage(std::uint32_t message, std::uint32_t) {
    if (message == kMsgAutoCompare) return AutoCompare();
    std::uint32_t next = 0;
    if (message == kMsgAutoBaseline) {
        AutoSide(m_pBaseline, theContext.m_strBaselineName, theContext.m_bCreateBaseline);
        if (!theContext.m_strCurrentName.empty()) next = kMsgAutoCurrent;
    } else {
        AutoSide(m_pCurrent, theContext.m_strCurrentName, theContext.m_bCreateCurrent);
        if (theContext.m_bGenerateReport && m_pBaseline != nullptr && m_pCurrent != nullptr) next = kMsgAutoCompare;
    }
    if (next != 0) {
        GetWindow().PostMessage(next, 0);
    } else {
        theContext.GetToolkit().HideSplash();
    }
}

void CMainDlg::AutoSide(std::unique_ptr<CSnapshot>& side, const CString& name, bool create) {
    if (create) {
        CreateSide(side, name);
    } else {
        const CWaitCursor wait;
        LoadSide(side, name);
    }
    UpdateFields(side);
    UpdateCompareState();
}

void CMainDlg::AutoCompare() {
    CMasterReport report(*m_pCurrent, *m_pBaseline);
    const bool isKept = theContext.m_bUseExistingReport && theContext.GetHost().FileExists(report.m_strReportPath);
    const bool stands = isKept || TellReport(MakeReport(report));
    theContext.GetToolkit().HideSplash();
    if (stands && theContext.m_bDisplayReport) ShowDocument(report.m_strReportPath);
}

// What the dialog shows.

void CMainDlg::UpdateFields(const std::unique_ptr<CSnapshot>& side) {
    const CFieldIds& ids = &side == &m_pBaseline ? kBaselineFields : kCurrentFields;
    std::array<CString, std::tuple_size_v<CFieldIds>> texts;
    if (side != nullptr) {
        texts = {CString(side->m_name) + " (" + side->m_strVersion + ")", side->m_strComputerName, side->m_strUserName,
                 side->GetTimeString(), side->m_strOsName};
    }
    for (std::size_t i = 0; i < ids.size(); ++i)
        GetWindow().SetText(ids[i], texts[i]);
}

void CMainDlg::UpdateCompareState() {
    GetWindow().Enable(IDC_COMPARE, m_pBaseline != nullptr && m_pCurrent != nullptr);
}

}  // namespace delvane
