// The file system of a machine: what a search finds, and the searches. What a walk is, is the same on every system; how
// a directory is read stands in the file_search.cpp of each.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/errors.h"

namespace delvane {

class CPathMap;

constexpr std::uint32_t FILE_ATTRIBUTE_READONLY = 0x1;
constexpr std::uint32_t FILE_ATTRIBUTE_HIDDEN = 0x2;
constexpr std::uint32_t FILE_ATTRIBUTE_SYSTEM = 0x4;
constexpr std::uint32_t FILE_ATTRIBUTE_DIRECTORY = 0x10;
constexpr std::uint32_t FILE_ATTRIBUTE_ARCHIVE = 0x20;
constexpr std::uint32_t FILE_ATTRIBUTE_TEMPORARY = 0x100;
constexpr std::uint32_t FILE_ATTRIBUTE_REPARSE_POINT = 0x400;

// Directories nested deeper than this are neither walked nor loaded. Windows itself stops at 260 characters of path,
// or at 32767 with long paths, which nobody nests one letter at a time.
constexpr std::uint32_t kMaxTreeDepth = 1000;

// 100-nanosecond ticks since 1 January 1601, UTC, in two words.
struct FILETIME {
    std::uint32_t dwLowDateTime = 0;
    std::uint32_t dwHighDateTime = 0;

    std::uint64_t GetTicks() const { return std::uint64_t{dwHighDateTime} << 32 | dwLowDateTime; }
    static FILETIME FromTicks(std::uint64_t ticks) {
        return {static_cast<std::uint32_t>(ticks), static_cast<std::uint32_t>(ticks >> 32)};
    }
    bool operator==(const FILETIME&) const = default;
};

// The nine words at the head of WIN32_FIND_DATA: what a directory entry says of a file.
struct CFileWords {
    std::uint32_t m_dwAttributes = 0;
    FILETIME m_ftCreation;
    FILETIME m_ftLastAccess;
    FILETIME m_ftLastWrite;
    std::uint32_t m_dwSizeHigh = 0;
    std::uint32_t m_dwSizeLow = 0;

    std::uint64_t GetSize() const { return std::uint64_t{m_dwSizeHigh} << 32 | m_dwSizeLow; }
    void SetSize(std::uint64_t size) {
        m_dwSizeHigh = static_cast<std::uint32_t>(size >> 32);
        m_dwSizeLow = static_cast<std::uint32_t>(size);
    }
    bool operator==(const CFileWords&) const = default;
};

struct CFindData : CFileWords {
    std::string_view m_name;                  // lives until the search moves on or ends
    std::uint32_t m_dwError = ERROR_SUCCESS;  // why something of the entry cannot be read,
    bool m_bNameOnly = false;                 // and whether that is all but its name
};

// One search over a directory. While it is open, its sub-directories are found from it without going through the
// path again, so a walk keeps the search of each level open. The destructor closes it.
class CFileSearch {
public:
    virtual ~CFileSearch() = default;
    // The next entry, in ascending order of names (by byte); false when there is none. "." and ".." may be among them.
    virtual bool Next(CFindData& data) = 0;
    // Why the list breaks off; ERROR_SUCCESS where it was read to its end.
    virtual std::uint32_t GetError() const = 0;
};

// A directory, wherever a path leads to it: volume or device, and file or inode.
using CDirectoryIdentity = std::pair<std::uint64_t, std::uint64_t>;

// Opens searches and knows the ones that are open, so that a directory is checked against those above it.
class CSearchSet {
public:
    virtual ~CSearchSet() = default;

    void BeginWalk() { m_visits.clear(); }
    // The program's own folders, which searches pass over from now on, however a walk reaches them; but not the root of
    // a drive.
    virtual void PassOver(const std::vector<CString>& folders) = 0;
    // Open lists the directory at `path`; null with an error number when it cannot be read or lies too deep, and null
    // with ERROR_SUCCESS when it is passed over: its own ancestor through a link, or what no program of the machine may
    // wander into. FindPath looks up the one entry at `path` and gives an error number. Both throw CInterrupted once an
    // interruption was asked for, and CFileError when the process has run out of descriptors or memory: it must not
    // call a directory empty then.
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
