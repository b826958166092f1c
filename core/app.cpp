#include "core/app.h"

#include "core/context.h"
#include "shell/main_dialog.h"

namespace delvane {

CInstallApp theApp;

bool CInstallApp::InitInstance() {
    theContext.Initialize();
    theContext.ParseCommandLine();
    CMainDlg dialog;
    if (theContext.m_bSilent) {
        dialog.RunUnattended();
    } else {
        theContext.Say("this build has no window yet; add /s for an unattended run (--help lists the switches)");
        m_nExitCode |= kExitNoWindow;
    }
    return false;
}

int CInstallApp::ExitInstance() { return m_nExitCode; }

}  // namespace delvane
