// How often a walk may come to the same directories through links.
#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "platform/text.h"

namespace delvane {

// A directory, wherever a path leads to it: volume or device, and file or inode.
using CDirectoryIdentity = std::pair<std::uint64_t, std::uint64_t>;

// Directories that lead to each other by links show each other's contents again and again, factorially at worst. So
// each is visited a number of times in a walk. What the user should know of it is kept in sentences, each once.
class CLinkVisits {
public:
    void BeginWalk() { m_visits.clear(); }
    // Asked for each directory behind a link.
    bool MayVisit(const CDirectoryIdentity& identity);
    const std::vector<CString>& GetNotices() const { return m_notices; }

private:
    std::map<CDirectoryIdentity, std::uint32_t> m_visits;
    bool m_bLimitTold = false;
    std::vector<CString> m_notices;
};

}  // namespace delvane
