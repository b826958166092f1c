#include "shell/name_dialogs.h"

#include "core/context.h"
#include "shell/steps.h"

namespace delvane {
namespace {

// Posted by the dialog to itself: when it is handled, the edit part of the combo box holds the chosen entry.
constexpr std::uint32_t kMsgChosen = WM_USER + 6;

}  // namespace

void CNewSnapshotDlg::OnInitDialog() {
    UpdateOkState();
    GetWindow().SetCheck(IDC_COMPARE_AFTER, m_bCompareAfter ? 1 : 0);
    GetWindow().Enable(IDC_COMPARE_AFTER, m_bCompareEnabled);
}

void CNewSnapshotDlg::UpdateOkState() {
    m_strName = GetWindow().GetText(IDC_NAME);
    GetWindow().Enable(IDOK, !m_strName.empty());
}

void CNewSnapshotDlg::OnCommand(std::uint32_t id, EControlEvent event) {
    if (id != IDC_NAME) return;
    UpdateOkState();
    if (event == EControlEvent::kSelected) GetWindow().PostMessage(kMsgChosen, 0);
}

void CNewSnapshotDlg::OnMessage(std::uint32_t message, std::uint32_t) {
    if (message == kMsgChosen) UpdateOkState();
}

void CNewSnapshotDlg::OnOK() {
    UpdateOkState();
    if (m_strName.empty()) return;
    const CString path = theContext.GetResultsDir() + "\\" + m_strName + ".dvs";
    if (theContext.GetHost().FileExists(path)) {
        const std::uint32_t answer = theContext.GetToolkit().ShowMessage(
            FormatString1("The Snapshot \"%1\" already exists.\nDo you wish to replace it?", m_strName), kProgramTitle,
            EMessageKind::kYesNo);
        if (answer != IDYES) return;
    }
    m_bCompareAfter = GetWindow().GetCheck(IDC_COMPARE_AFTER) != 0;
    CDialog::OnOK();
}

void CLoadSnapshotDlg::OnInitDialog() {
    const std::vector<CString> names = ListSnapshots();
    for (const CString& name : names)
        GetWindow().AddEntry(IDC_SNAPSHOTS, name);
    GetWindow().Enable(IDC_SNAPSHOTS, !names.empty());
    GetWindow().Enable(IDOK, false);
}

void CLoadSnapshotDlg::OnCommand(std::uint32_t id, EControlEvent event) {
    if (id != IDC_SNAPSHOTS || event != EControlEvent::kSelected) return;
    m_strName = GetWindow().GetText(IDC_SNAPSHOTS);
    if (!m_strName.empty()) GetWindow().Enable(IDOK, true);
}

}  // namespace delvane
