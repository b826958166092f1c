// The searches over the directories of a machine. What a walk is, is the same on every system; how a directory is read
// stands in the file_search.cpp of each.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/machine.h"

namespace delvane {

class CPathMap;

// A directory, wherever a path leads to it: volume or device, and file or inode.
using CDirectoryIdentity = std::pair<std::uint64_t, std::uint64_t>;

// Opens searches and knows the ones that are open, so that a directory is checked against those above it.
class CSearchSet {
public:
    virtual ~CSearchSet() = default;

    // As CMachine tells them.
    void BeginWalk() { m_visits.clear(); }
    virtual void PassOver(const std::vector<CString>& folders) = 0;
    virtual std::unique_ptr<CFileSearch> Open(std::string_view path, std::uint32_t& error) = 0;
    virtual std::uint32_t FindPath(std::string_view path, CFileWords& words) = 0;
    // What the user should know of the searches so far.
    const std::vector<CNotice>& GetNotices() const { return m_notices; }

protected:
    // An open search.
    struct CLevel : CFileSearch {
        CLevel(CSearchSet& set, std::string_view path, bool isBehindLink);
        ~CLevel() override { std::erase(m_set.m_open, this); }
        std::uint32_t GetError() const override { return m_dwError; }
        // Whether the path is that of the entry which was delivered last, and whether that lies behind a link.
        bool HasDelivered(std::string_view path) const;
        bool IsCurrentBehindLink() const { return m_bBehindLink || m_bCurrentIsLink; }

        CSearchSet& m_set;
        CString m_strPath;  // as a machine path
        bool m_bBehindLink;
        std::string_view m_current;  // the name that was delivered last; empty before the first and behind the last
        bool m_bCurrentIsLink = false;
        std::uint32_t m_dwError = ERROR_SUCCESS;  // why the list breaks off
    };

    // Asked for each directory behind a link. Directories that lead to each other by links show each other's contents
    // again and again, factorially at worst. So each is visited a number of times in a walk.
    bool MayVisit(const CDirectoryIdentity& identity);

    std::vector<CLevel*> m_open;  // in the order of opening

private:
    std::map<CDirectoryIdentity, std::uint32_t> m_visits;
    std::vector<CNotice> m_notices;
};

// The one of the system: of the machine that the program runs on, or of a hosted one.
std::unique_ptr<CSearchSet> MakeSearchSet();
std::unique_ptr<CSearchSet> MakeSearchSet(const CPathMap& paths);

}  // namespace delvane
