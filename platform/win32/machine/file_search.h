// The search over directories of the machine that the program runs on.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/link_visits.h"
#include "platform/machine.h"

namespace delvane {

// Opens searches and knows the ones that are open, so that a directory behind a link is checked against the directories
// above it. Each search reads its directory at once and leaves nothing open.
class CSearchSet {
public:
    CSearchSet();
    ~CSearchSet();

    std::unique_ptr<CFileSearch> Open(std::string_view path);
    static bool FindPath(std::string_view path, CFileWords& words);
    // What the user should know of the searches so far, in a sentence each.
    const std::vector<CString>& GetNotices() const { return m_visits.GetNotices(); }

private:
    friend class CWin32Search;
    struct CLevel;
    bool IsBehindLink(std::string_view path) const;
    bool MayEnter(std::string_view path);
    void Close(CLevel& level);

    std::vector<CLevel*> m_open;                   // in the order of opening
    std::vector<std::unique_ptr<CLevel>> m_spare;  // closed, kept for their buffers
    CLinkVisits m_visits;
};

}  // namespace delvane
