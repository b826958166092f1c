// The ground of the tests of reports: two states of a machine are compared.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "tests/support/machine_test.h"

namespace delvane {

class CReportTest : public CMachineTest {
protected:
    // Compares two states of the disks and keeps the report.
    CMasterReport& Compare(std::string_view before, std::string_view after) { return Compare(before, "", after, ""); }
    // The same with a registry each; an empty text leaves the registry as it is.
    CMasterReport& Compare(std::string_view disksBefore, std::string_view registryBefore, std::string_view disksAfter,
                           std::string_view registryAfter) {
        Start(disksBefore);
        m_pBaseline = Take(disksBefore, registryBefore, "Before");
        m_pCurrent = Take(disksAfter, registryAfter, "After");
        m_pReport = std::make_unique<CMasterReport>(*m_pCurrent, *m_pBaseline);
        m_pCurrent->Compare(*m_pBaseline, *m_pReport);
        return *m_pReport;
    }
    static CString PathsOf(const CObjectList& list) {
        CString paths;
        for (const CDelvObj* object : list)
            paths += object->GetFullName() + "\n";
        return paths;
    }
    static CString PathsOf(const CDiffList& list) {
        CString paths;
        for (const auto& change : list)
            paths += change->GetFullName() + "\n";
        return paths;
    }
    // The findings of a section, each by its object: "File(C:\config.sys)".
    static CString ObjectsOf(const std::vector<CString>& findings) {
        CString objects;
        for (const CString& line : findings) {
            const std::size_t begin = line.find(" - ") + 3;
            objects += line.substr(begin, line.find(": ", begin) - begin) + "\n";
        }
        return objects;
    }

    std::unique_ptr<CSnapshot> m_pBaseline;
    std::unique_ptr<CSnapshot> m_pCurrent;
    std::unique_ptr<CMasterReport> m_pReport;

private:
    std::unique_ptr<CSnapshot> Take(std::string_view disks, std::string_view registry, std::string_view name) {
        if (!registry.empty()) SetRegistry(registry);
        return TakeSnapshotOf(disks, name);
    }
};

}  // namespace delvane
