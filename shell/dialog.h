// The base of all dialogs: a template, and handlers for what its window tells.
#pragma once

#include <memory>

#include "resources/dialogs.h"

namespace delvane {

class CDialog : protected CDialogEvents {
public:
    explicit CDialog(std::uint32_t templateId) : m_nTemplate(templateId) {}
    CDialog(const CDialog&) = delete;
    CDialog& operator=(const CDialog&) = delete;

    // Shows the dialog until it is ended, and gives its result: IDOK or IDCANCEL. What a handler throws ends the dialog
    // and comes out here.
    std::uint32_t DoModal();

protected:
    void OnInitDialog() override {}
    virtual void OnOK() { EndDialog(IDOK); }
    virtual void OnCancel() { EndDialog(IDCANCEL); }
    virtual void OnCommand(std::uint32_t, EControlEvent) {}
    void OnMessage(std::uint32_t, std::uint32_t) override {}

    void EndDialog(std::uint32_t result) { m_pWindow->End(result); }
    CDialogWindow& GetWindow() const { return *m_pWindow; }

private:
    void OnControl(std::uint32_t id, EControlEvent event) final;

    std::uint32_t m_nTemplate;
    // Of the last showing. It dies behind everything that a derived class holds, a thread that posts to it for
    // instance.
    std::unique_ptr<CDialogWindow> m_pWindow;
};

}  // namespace delvane
