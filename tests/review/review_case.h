// The ground of the tests of reviews: two states of a machine are compared and judged.
#pragma once

#include <sstream>

#include "review/change_list.h"
#include "review/formats/writers.h"
#include "tests/support/machine_test.h"

namespace delvane {

class CReviewTest : public CMachineTest {
protected:
    // A state of disks and registry as a snapshot that lives as long as the test.
    CReviewInput::CSide Take(std::string_view disks, std::string_view registry, std::string_view name) {
        if (theContext.m_dwLogicalDrives == 0) Start(disks);
        m_pHost->m_nNow += kTicksPerSecond;
        SetRegistry(registry);
        m_snapshots.push_back(TakeSnapshotOf(disks, name));
        return {m_snapshots.back().get(), CString(name) + ".dvs", {}};
    }
    // A review of what m_input holds, judged by a list.
    const CReview& Judge(std::string_view accept = {}) {
        CReviewInput input = m_input;
        input.m_nCreated = kUnixEpochTicks;
        input.m_accept.Read("list.toml", accept, kUnixEpochTicks);
        m_pReview = std::make_unique<CReview>(std::move(input));
        return *m_pReview;
    }
    template <class Write>
    static CString TextOf(Write write) {
        std::ostringstream stream;
        write(stream);
        return stream.str();
    }
    CString LinesOf(const CReview& review) {
        return TextOf([&](std::ostream& stream) { WriteLines(review, stream); });
    }

    std::vector<std::unique_ptr<CSnapshot>> m_snapshots;
    CReviewInput m_input;
    std::unique_ptr<CReview> m_pReview;
};

}  // namespace delvane
