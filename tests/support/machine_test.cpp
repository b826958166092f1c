#include "tests/support/machine_test.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

#include "capture/drives.h"
#include "capture/registry.h"

namespace delvane {
namespace {

// The two globals of the program, as they are at the start of a process.
void ResetGlobals() {
    std::destroy_at(&theContext);
    std::construct_at(&theContext);
    std::destroy_at(&theApp);
    std::construct_at(&theApp);
}

}  // namespace

CMachineTest::CMachineTest() {
    ResetGlobals();
    auto machine = std::make_unique<CScriptedMachine>();
    auto host = std::make_unique<CScriptedHost>();
    m_pMachine = machine.get();
    m_pHost = host.get();
    theContext.SetSystem({std::move(machine), std::move(host)});
}

CMachineTest::~CMachineTest() { ResetGlobals(); }

void CMachineTest::Start(std::string_view disks, CString commandLine) {
    m_pMachine->SetDisks(disks);
    theContext.Initialize();
    Parse(std::move(commandLine));
}

void CMachineTest::Parse(CString commandLine) {
    theApp.SetCommandLine(std::move(commandLine));
    theApp.m_pszCmdCursor = nullptr;
    theContext.ParseCommandLine();
}

std::unique_ptr<CSnapshot> CMachineTest::TakeSnapshot(std::string_view name) {
    auto snapshot = std::make_unique<CSnapshot>();
    snapshot->SetName(name);
    EXPECT_TRUE(snapshot->Capture(nullptr)) << snapshot->GetError();
    return snapshot;
}

std::unique_ptr<CSnapshot> CMachineTest::TakeSnapshotOf(std::string_view disks, std::string_view name) {
    m_pMachine->SetDisks(disks);
    theContext.m_dwLogicalDrives = m_pMachine->GetLogicalDrives();
    return TakeSnapshot(name);
}

CString CMachineTest::Store(CSnapshot& snapshot) {
    EXPECT_TRUE(snapshot.Save());
    return m_pHost->m_files[snapshot.GetSavePath()];
}

std::unique_ptr<CSnapshot> CMachineTest::LoadFrom(const CString& bytes) {
    auto snapshot = std::make_unique<CSnapshot>();
    snapshot->SetName("loaded");
    m_pHost->m_files[snapshot->GetLoadPath()] = bytes;
    return snapshot->Load() ? std::move(snapshot) : nullptr;
}

CString CMachineTest::PageOf(CSnapshot& current, CSnapshot& baseline) {
    CMasterReport report(current, baseline);
    EXPECT_TRUE(report.GenerateReport());
    return m_pHost->m_files[report.m_strReportPath];
}

CString CMachineTest::ErrorLog() const {
    const auto found = m_pHost->m_files.find("C:\\Delvane\\delvane.err");
    return found == m_pHost->m_files.end() ? CString() : found->second;
}

CString ListTree(const CDelvObj& node) {
    CString lines;
    if (const auto* const directory = dynamic_cast<const CDelvDirObj*>(&node)) {
        for (const CDelvObj* file : directory->m_files)
            lines += file->GetFullName() + "\n";
        for (const CDelvObj* subdir : directory->m_subdirs) {
            lines += subdir->GetFullName() + "\\\n" + ListTree(*subdir);
        }
    }
    return lines;
}

CString ListRegistry(const CDelvObj& node) {
    CString lines;
    const auto& key = dynamic_cast<const CDelvRegKeyObj&>(node);
    for (const CDelvObj* child : key.m_values) {
        const auto& value = dynamic_cast<const CDelvRegValObj&>(*child);
        lines += value.GetFullName() + " " + CString(value.m_name) + " " + std::to_string(value.m_dwType) + ":" +
                 std::to_string(value.m_data.size()) + "\n";
    }
    for (const CDelvObj* child : key.m_subkeys)
        lines += child->GetFullName() + "\\\n" + ListRegistry(*child);
    return lines;
}

void ExpectGolden(const CString& name, const CString& text) {
    const CString path = CString(DELVANE_SOURCE_DIR) + "/tests/" + name;
    if (std::getenv("UPDATE_GOLDEN") != nullptr) std::ofstream(path, std::ios::binary) << text;
    std::ifstream file(path, std::ios::binary);
    const CString golden{std::istreambuf_iterator<char>(file), {}};
    ASSERT_FALSE(golden.empty()) << path;
    EXPECT_EQ(text, golden);
}

int CountOf(std::string_view text, std::string_view part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

}  // namespace delvane
