// The search over directories of the machine that the program runs on.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
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

    // As CMachine tells them.
    void BeginWalk() { m_visits.BeginWalk(); }
    void PassOver(const std::vector<CString>& folders);
    std::unique_ptr<CFileSearch> Open(std::string_view path, std::uint32_t& error);
    static std::uint32_t FindPath(std::string_view path, CFileWords& words);
    // What the user should know of the searches so far, in a sentence each.
    const std::vector<CString>& GetNotices() const { return m_visits.GetNotices(); }

private:
    friend class CWin32Search;
    struct CLevel;
    bool IsBehindLink(std::string_view path) const;
    enum class EEntry { kMay, kPassedOver, kTooOften };
    EEntry MayEnter(std::string_view path);
    bool IsOwn(std::string_view parent, std::string_view name, const CFileWords& words) const;
    void Close(CLevel& level);

    std::vector<CLevel*> m_open;                   // in the order of opening
    std::vector<std::unique_ptr<CLevel>> m_spare;  // closed, kept for their buffers
    CLinkVisits m_visits;
    // The program's own folders: what tells a directory, and its name.
    std::vector<std::pair<CDirectoryIdentity, CString>> m_own;
};

}  // namespace delvane
