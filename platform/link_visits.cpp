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

void CLinkVisits::NoteCut(std::string_view path) {
    if (m_bCutTold) return;
    m_bCutTold = true;
    m_notices.push_back("a directory could not be read to its end, " + CString(path) + "; there may be others");
}

}  // namespace delvane
