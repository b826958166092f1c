#include "shell/dialog.h"

#include "core/context.h"

namespace delvane {

std::uint32_t CDialog::DoModal() {
    m_pWindow = theContext.GetToolkit().CreateDialog(GetDialogTemplate(m_nTemplate), *this);
    return m_pWindow->RunModal();
}

void CDialog::OnControl(std::uint32_t id, EControlEvent event) {
    if (id == IDOK) {
        OnOK();
    } else if (id == IDCANCEL) {
        OnCancel();
    } else {
        OnCommand(id, event);
    }
}

}  // namespace delvane
