#include "platform/link_visits.h"

namespace delvane {

bool CLinkVisits::MayVisit(const CDirectoryIdentity& identity) {
    constexpr std::uint32_t kMostVisits = 16;
    if (++m_visits[identity] <= kMostVisits) return true;
    if (!m_bLimitTold) {
        m_bLimitTold = true;
        m_notices.push_back("links lead to the same directories again and again; what lies there is listed " +
                            std::to_string(kMostVisits) + " times at most");
    }
    return false;
}

}  // namespace delvane
