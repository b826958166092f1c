// What is told of snapshots one by one: every node of one, and which there are.
#pragma once

#include <ostream>

#include "platform/text.h"

namespace delvane {

class CSnapshot;

// A line of JSON for the snapshot, one for each of its nodes, and one with their counts. `file` is where it lies.
void ExportSnapshot(const CSnapshot& snapshot, const CString& file, std::ostream& stream);

// A table of the snapshots in a folder; an empty text is the results folder. One that cannot be read is told on
// standard error. CCallError where the folder cannot be read.
void ListSnapshots(const CString& folder, std::ostream& stream);

}  // namespace delvane
