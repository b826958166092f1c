// The files of a call: snapshots and their gaps, the results folder, what is written.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <vector>

#include "review/change_list.h"

namespace delvane {

// A call that ends with that exit code. what() is a sentence a line.
class CCallError : public std::runtime_error {
public:
    CCallError(int exitCode, const CString& text) : std::runtime_error(text), m_nExitCode(exitCode) {}
    int GetExitCode() const { return m_nExitCode; }

private:
    int m_nExitCode;
};

// Chooses the machine and starts theContext for a run without a window.
void PrepareContext();
// Looks for snapshots in that folder from now on; an empty text keeps the default. CCallError where it is missing and
// one of the names is looked for in it. The default one is made when it is missing, but not for a call that neither
// looks for a name in it nor writes into it.
void UseResultsFolder(const CString& typed, const std::vector<CString>& names, bool writes);

// Loads the snapshot of that name or path, or its identity alone, and says where it lies. CCallError where it cannot be
// loaded.
std::unique_ptr<CSnapshot> LoadSnapshot(const CString& name, CString& displayPath,
                                        bool (CSnapshot::*load)() = &CSnapshot::Load);
// A table of the snapshots in a folder; an empty text is the results folder. One that cannot be read is told on
// standard error. CCallError where the folder cannot be read.
void ListSnapshots(const CString& folder, std::ostream& stream);
// The gaps of the snapshot of that name or path. A list that cannot be read is told.
void LoadGaps(const CString& name, std::vector<CReviewGap>& gaps);

// The folder for what is written, made when it is missing; an empty text is the results folder.
CString MakeOutputFolder(const CString& typed);
// Writes a file that takes its place when it is complete, and gives its path as a person writes it.
CString WriteWholeFile(const CString& path, const std::function<void(std::ostream&)>& write);

}  // namespace delvane
