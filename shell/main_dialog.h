// The main dialog: the holder of the two snapshots, and what can be done with them.
#pragma once

#include <memory>

#include "shell/dialog.h"
#include "tree/snapshot.h"

namespace delvane {

// A visible run is its DoModal; an unattended one uses it without a window.
class CMainDlg : public CDialog {
public:
    CMainDlg() : CDialog(IDD_MAIN) {}

    // What the command line of an unattended run asks for: baseline, current, report. The first failure of the two
    // snapshots ends it. What went wrong stands in the exit code, and in one sentence on standard error.
    void RunUnattended();
    // A visible run: tells what stands in its way, and shows the dialog.
    void RunVisible();

    std::unique_ptr<CSnapshot> m_pBaseline;  // destroyed after the Current
    std::unique_ptr<CSnapshot> m_pCurrent;

protected:
    void OnInitDialog() override;
    void OnCommand(std::uint32_t id, EControlEvent event) override;
    void OnMessage(std::uint32_t message, std::uint32_t wParam) override;

private:
    // Of RunUnattended. Each gives true if the snapshot is in place or the report stands, and sets its bits of the exit
    // code.
    bool RunBaseline();
    bool RunCurrent();
    bool RunReport();

    void OnCreate(std::unique_ptr<CSnapshot>& side);
    void OnLoad(std::unique_ptr<CSnapshot>& side);
    void OnCompare();
    // What a command line without /s asks for.
    void AutoSide(std::unique_ptr<CSnapshot>& side, const CString& name, bool create);
    void AutoCompare();

    // Each replaces the side by a snapshot of that name, or leaves it empty.
    bool CreateSide(std::unique_ptr<CSnapshot>& side, const CString& name);
    void LoadSide(std::unique_ptr<CSnapshot>& side, const CString& name);
    void UpdateFields(const std::unique_ptr<CSnapshot>& side);
    void UpdateCompareState();
};

}  // namespace delvane
