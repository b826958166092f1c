// Any bytes as a snapshot file: refused, or loaded, compared with themselves and an empty snapshot, and stored again.
#include <cstddef>
#include <cstdint>

#include "core/context.h"
#include "report/master.h"
#include "tests/support/scripted_machine.h"
#include "tree/archive.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace delvane;
    static CScriptedHost* const host = [] {
        auto owned = std::make_unique<CScriptedHost>();
        CScriptedHost* const made = owned.get();
        theContext.SetSystem({std::make_unique<CScriptedMachine>("C: fixed"), std::move(owned)});
        theContext.m_bSilent = true;
        theContext.Initialize();
        return made;
    }();
    CSnapshot snapshot;
    snapshot.SetName("fuzz");
    host->m_files[snapshot.GetLoadPath()].assign(reinterpret_cast<const char*>(data), size);
    try {
        if (!snapshot.Load()) return 0;
    } catch (const CArchiveError&) {
        return 0;
    }
    CSnapshot empty;
    for (CSnapshot* baseline : {&snapshot, &empty}) {
        CMasterReport report(snapshot, *baseline);
        report.GenerateReport();
        host->m_files.erase(report.m_strReportPath);
    }
    snapshot.FindObject("C:\\a\\b");
    snapshot.m_fullName = snapshot.GetArena().Copy("C:\\Delvane\\Results");
    snapshot.SetName("again");
    snapshot.Save();
    return 0;
}
