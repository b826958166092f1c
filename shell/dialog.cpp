#include "shell/dialog.h"

#include "core/context.h"
#include "resources/dialogs.h"

namespace delvane {

std::uint32_t CDialog::DoModal() {
    m_pFailure = nullptr;
    m_pWindow = theContext.GetToolkit().CreateDialog(GetDialogTemplate(m_nTemplate), *this);
    const std::uint32_t result = m_pWindow->RunModal();
    if (m_pFailure != nullptr) std::rethrow_exception(m_pFailure);
    return result;
}

template <class Handler>
void CDialog::Handle(Handler handler) {
    if (m_pFailure != nullptr) return;  // the dialog is ending
    try {
        handler();
    } catch (...) {
        m_pFailure = std::current_exception();
        EndDialog(IDCANCEL);
    }
}

void CDialog::OnInit() {
    Handle([this] {
        DoDataExchange(false);
        OnInitDialog();
    });
}

void CDialog::OnControl(std::uint32_t id, EControlEvent event) {
    Handle([&] { Dispatch(id, event); });
}

void CDialog::OnMessage(std::uint32_t message, std::uint32_t wParam, std::uint32_t lParam) {
    Handle([&] { OnPosted(message, wParam, lParam); });
}

void CDialog::OnMenuOpening(std::size_t popup) {
    Handle([&] { OnMenu(popup); });
}

void CDialog::OnOK() {
    UpdateData();
    EndDialog(IDOK);
}

void CDialog::Dispatch(std::uint32_t id, EControlEvent event) {
    if (id == IDOK) {
        OnOK();
    } else if (id == IDCANCEL) {
        OnCancel();
    } else {
        OnCommand(id, event);
    }
}

CWaitCursor::CWaitCursor() { theContext.GetToolkit().BeginWaitCursor(); }

CWaitCursor::~CWaitCursor() { theContext.GetToolkit().EndWaitCursor(); }

}  // namespace delvane
