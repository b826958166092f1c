#include "core/app.h"

#include "core/context.h"
#include "shell/main_dialog.h"

namespace delvane {

bool CInstallApp::InitInstance() {
    theContext.Initialize();
    theContext.ParseCommandLine();
    CMainDlg dialog;
    if (theContext.m_bSilent) {
        dialog.RunUnattended();
    } else {
        CString problem;
        std::unique_ptr<CToolkit> toolkit = LoadToolkit(problem);
        if (toolkit != nullptr) {
            theContext.SetToolkit(std::move(toolkit));
            dialog.RunVisible();
            theContext.SetToolkit(nullptr);  // it does not outlive the run
        } else {
            theContext.Say("no window can be shown: " + problem +
                           "; add /s for an unattended run (--help lists the switches)");
            m_nExitCode |= kExitNoWindow;
        }
    }
    return false;
}

}  // namespace delvane
