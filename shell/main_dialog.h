// The main dialog: the holder of the two snapshots, and the steps of a run that the command line asks for.
#pragma once

#include <memory>

#include "tree/snapshot.h"

namespace delvane {

class CMainDlg {
public:
    // What the command line of an unattended run asks for: baseline, current, report. The first failure of the two
    // snapshots ends it. What went wrong stands in the exit code, and in one sentence on standard error.
    void RunUnattended();

private:
    // Each gives true if the snapshot is in place or the report stands, and sets its bits of the exit code.
    bool RunBaseline();
    bool RunCurrent();
    bool RunReport();

    std::unique_ptr<CSnapshot> m_pBaseline;  // destroyed after the Current
    std::unique_ptr<CSnapshot> m_pCurrent;
};

}  // namespace delvane
