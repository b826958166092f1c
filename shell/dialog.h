// The base of all dialogs: a template, and handlers for what its window tells.
#pragma once

#include <memory>

#include "platform/toolkit.h"

namespace delvane {

class CDialog : public CDialogEvents {
public:
    explicit CDialog(std::uint32_t templateId) : m_nTemplate(templateId) {}
    CDialog(const CDialog&) = delete;
    CDialog& operator=(const CDialog&) = delete;

    // Shows the dialog until it is ended, and gives its result: IDOK or IDCANCEL.
    std::uint32_t DoModal();

protected:
    virtual void OnInitDialog() {}
    // Carries the fields to the controls, or the controls into the fields. Called with false behind OnInitDialog of
    // this class, and with true where UpdateData is called and by OnOK.
    virtual void DoDataExchange(bool) {}
    virtual void OnOK();
    virtual void OnCancel() { EndDialog(IDCANCEL); }
    virtual void OnCommand(std::uint32_t, EControlEvent) {}

    void UpdateData() { DoDataExchange(true); }
    void EndDialog(std::uint32_t result) { m_pWindow->End(result); }
    CDialogWindow& GetWindow() const { return *m_pWindow; }

    void OnInit() override;
    void OnControl(std::uint32_t id, EControlEvent event) override;
    void OnMessage(std::uint32_t, std::uint32_t, std::uint32_t) override {}
    void OnMenuOpening(std::size_t) override {}

private:
    std::uint32_t m_nTemplate;
    std::unique_ptr<CDialogWindow> m_pWindow;  // while the dialog is shown
};

// The wait cursor as long as one lives.
class CWaitCursor {
public:
    CWaitCursor();
    ~CWaitCursor();
    CWaitCursor(const CWaitCursor&) = delete;
    CWaitCursor& operator=(const CWaitCursor&) = delete;
};

}  // namespace delvane
