// The search over directories of the machine that the program runs on.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

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
    const std::vector<CString>& GetNotices() const { return m_notices; }

private:
    friend class CWin32Search;
    struct CLevel;
    using CIdentity = std::pair<std::uint64_t, std::uint64_t>;  // volume, file

    bool IsBehindLink(std::string_view path) const;
    bool MayEnterLink(std::string_view path);
    void AddNotice(CString notice);
    void Close(CLevel& level);

    std::vector<CLevel*> m_open;                   // in the order of opening
    std::vector<std::unique_ptr<CLevel>> m_spare;  // closed, kept for their buffers
    std::map<CIdentity, std::uint32_t> m_visits;   // of directories behind links, in this walk
    bool m_bCutTold = false;
    std::vector<CString> m_notices;
};

}  // namespace delvane
