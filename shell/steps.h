// The steps of a run, each written once: a snapshot is created or loaded, a report is made. Who takes a step, a run
// without a window or a dialog, tells what came of it.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "report/master.h"
#include "tree/snapshot.h"

namespace delvane {

// What came of a step.
struct COutcome {
    bool m_bDone = false;
    CString m_strReason;         // why it was not done, in words; empty for a cancelled capture
    bool m_bUnreadable = false;  // the file to be loaded is damaged or cannot be read; m_strReason names it
};

// Replaces the side by a snapshot of that name, captured by `capture` and then saved. The side is empty after a capture
// that gave false or threw; a snapshot that could not be saved stays in it.
COutcome CreateSnapshot(std::unique_ptr<CSnapshot>& side, const CString& name,
                        const std::function<bool(CSnapshot&)>& capture);

// Replaces the side by the snapshot in the file of that name, or leaves it empty.
COutcome LoadSnapshot(std::unique_ptr<CSnapshot>& side, const CString& name);

// Compares and writes the page. A page that could not be finished is not there; whatever stood in its place before
// still does.
COutcome MakeReport(CMasterReport& report);

// What is said of a step that was not done: "snapshot "Before" was not loaded: ...".
CString NotDone(const CString& name, std::string_view what, const CString& reason);

// Opens the document, or says where it stands.
void ShowDocument(const CString& path);

// The names of the snapshots in the results directory, in their order without regard to case.
std::vector<CString> ListSnapshots();

}  // namespace delvane
