// The ground of the tests that need a machine and a run: both are made afresh for each test.
#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string_view>

#include "core/app.h"
#include "core/context.h"
#include "report/master.h"
#include "tests/support/scripted_machine.h"
#include "tree/snapshot.h"

namespace delvane {

class CMachineTest : public testing::Test {
protected:
    CMachineTest();
    ~CMachineTest() override;

    // Starts the run on the disks of that text, with that command line.
    void Start(std::string_view disks, CString commandLine = "/s");
    // Parses another command line on top.
    void Parse(CString commandLine);
    // A snapshot of the machine as it is.
    std::unique_ptr<CSnapshot> TakeSnapshot(std::string_view name = "Snap");
    // A snapshot of the disks of that text.
    std::unique_ptr<CSnapshot> TakeSnapshotOf(std::string_view disks, std::string_view name = "Snap");
    // Writes the snapshot and gives the file's bytes; loads a snapshot from bytes (what Load throws comes out).
    CString Store(CSnapshot& snapshot);
    std::unique_ptr<CSnapshot> LoadFrom(const CString& bytes);
    // The machine's registry from now on (see CScriptedRegistry).
    void SetRegistry(std::string_view text) { m_pMachine->m_registry = CScriptedRegistry(text); }
    // The page of a comparison.
    CString PageOf(CSnapshot& current, CSnapshot& baseline);

    CString ErrorLog() const;

    CScriptedMachine* m_pMachine;  // both owned by theContext
    CScriptedHost* m_pHost;
};

// The paths under a node, each on a line, directories with a backslash behind.
CString ListTree(const CDelvObj& node);

// The keys and values under a key, each on a line: keys with a backslash behind, values with type and length.
CString ListRegistry(const CDelvObj& node);

// The text is that of the file in tests/. With UPDATE_GOLDEN=1 the file is written anew.
void ExpectGolden(const CString& name, const CString& text);

// How often the part stands in the text.
int CountOf(std::string_view text, std::string_view part);

}  // namespace delvane
