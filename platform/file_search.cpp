#include "platform/file_search.h"

namespace delvane {

CSearchSet::CLevel::CLevel(CSearchSet& set, std::string_view path, bool isBehindLink)
    : m_set(set), m_strPath(path), m_bBehindLink(isBehindLink) {
    m_set.m_open.push_back(this);
}

bool CSearchSet::CLevel::HasDelivered(std::string_view path) const {
    if (m_current.empty() || !path.ends_with(m_current)) return false;
    path.remove_suffix(m_current.size());
    return path.ends_with('\\') && path.starts_with(m_strPath) && path.size() <= m_strPath.size() + 1;
}

bool CSearchSet::MayVisit(const CDirectoryIdentity& identity) {
    constexpr std::uint32_t kMostVisits = 16;
    if (++m_visits[identity] <= kMostVisits) return true;
    if (m_notices.empty()) {
        m_notices.push_back({"links lead to the same directories again and again; what lies there is listed " +
                             std::to_string(kMostVisits) + " times at most"});
    }
    return false;
}

}  // namespace delvane
