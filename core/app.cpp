#include "core/app.h"

#include "core/context.h"
#include "shell/main_dialog.h"

namespace delvane {

bool CInstallApp::InitInstance() {
    theContext.Initialize();
    theContext.ParseCommandLine();
    if (theContext.m_bSilent) {
        CMainDlg().RunUnattended();
    } else {
        CString problem;
        std::unique_ptr<CToolkit> toolkit = LoadToolkit(problem);
        if (toolkit != nullptr) {
            theContext.SetToolkit(std::move(toolkit));
            // However the run ends, the toolkit does not outlive it.
            const auto forget = [](CRunContext* context) { context->SetToolkit(nullptr); };
            const std::unique_ptr<CRunContext, decltype(forget)> run(&theContext, forget);
            CMainDlg().RunVisible();
        } else {
            theContext.Say("no window can be shown: " + problem +
                           "; add /s for an unattended run (--help lists the switches)");
            m_nExitCode |= kExitNoWindow;
        }
    }
    return false;
}

}  // namespace delvane
