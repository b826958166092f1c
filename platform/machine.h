// The machine under examination: everything that the program asks of Windows, in our own types.
//
// Paths are machine paths (C:\Tools\edit.exe). Off Windows a path that begins with a backslash and no drive is a path
// of the host: \home\u\x is /home/u/x. Either separator and doubled separators are accepted; names are found without
// regard to case, an exact match first. Failures carry the Win32 error numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

#include "platform/errors.h"
#include "platform/images/image.h"
#include "platform/text.h"

namespace delvane {

class CRegistry;

constexpr std::uint32_t FILE_ATTRIBUTE_READONLY = 0x1;
constexpr std::uint32_t FILE_ATTRIBUTE_HIDDEN = 0x2;
constexpr std::uint32_t FILE_ATTRIBUTE_SYSTEM = 0x4;
constexpr std::uint32_t FILE_ATTRIBUTE_DIRECTORY = 0x10;
constexpr std::uint32_t FILE_ATTRIBUTE_ARCHIVE = 0x20;
constexpr std::uint32_t FILE_ATTRIBUTE_TEMPORARY = 0x100;
constexpr std::uint32_t FILE_ATTRIBUTE_REPARSE_POINT = 0x400;

constexpr std::uint32_t DRIVE_UNKNOWN = 0;
constexpr std::uint32_t DRIVE_NO_ROOT_DIR = 1;
constexpr std::uint32_t DRIVE_REMOVABLE = 2;
constexpr std::uint32_t DRIVE_FIXED = 3;
constexpr std::uint32_t DRIVE_REMOTE = 4;
constexpr std::uint32_t DRIVE_CDROM = 5;
constexpr std::uint32_t DRIVE_RAMDISK = 6;

constexpr std::uint32_t VER_PLATFORM_WIN32_WINDOWS = 1;
constexpr std::uint32_t VER_PLATFORM_WIN32_NT = 2;

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

struct CVersionRecord {
    std::uint32_t m_dwPlatformId = VER_PLATFORM_WIN32_NT;
    std::uint32_t m_dwMajorVersion = 0;
    std::uint32_t m_dwMinorVersion = 0;
    std::uint32_t m_dwBuildNumber = 0;
    CString m_strServicePack;
};

// The folders that a machine may be asked for, by their published numbers.
constexpr int CSIDL_PERSONAL = 5;
constexpr int CSIDL_STARTMENU = 11;
constexpr int CSIDL_COMMON_STARTMENU = 22;
constexpr int CSIDL_APPDATA = 26;
constexpr int CSIDL_LOCAL_APPDATA = 28;
constexpr int CSIDL_COMMON_APPDATA = 35;
constexpr int CSIDL_WINDOWS = 36;
constexpr int CSIDL_SYSTEM = 37;
constexpr int CSIDL_PROGRAM_FILES = 38;
constexpr int CSIDL_COMMON_DOCUMENTS = 46;

using CFolderFunction = std::function<bool(int kind, CString& path)>;

// Nothing here writes.
class CMachine {
public:
    virtual ~CMachine() = default;

    // Whether there is a machine to take a snapshot of. Without one the program's own files still work; everything
    // else answers as far as it can. GetProblem then says in one sentence what is wrong, or what was looked for and
    // how to name it.
    virtual bool IsPresent() const = 0;
    virtual CString GetProblem() const = 0;
    // What the user should be told and has not been told yet: a variable that names no machine, a damaged registry
    // file. Asked for at the start and after each capture.
    std::vector<CNotice> TakeNotices() {
        std::vector<CNotice> notices = GetNotices();
        std::erase_if(notices, [this](const CNotice& notice) { return !m_told.insert(notice.m_strSentence).second; });
        return notices;
    }

    // Identity.
    virtual CVersionRecord GetVersion() = 0;
    virtual bool GetUserName(CString& name) = 0;
    virtual bool GetComputerName(CString& name) = 0;
    virtual CString GetSystemDirectory() = 0;
    virtual CString GetWindowsDirectory() = 0;
    virtual CString GetTempPath() = 0;  // ends in a backslash
    // SHGetFolderPath of the library ShFolder; empty where the machine has no such library. The function gives false
    // for a folder that the machine does not know.
    virtual CFolderFunction LoadFolderLibrary() = 0;

    // Drives. A root is "C:\", a name "C:".
    virtual std::uint32_t GetLogicalDrives() = 0;
    virtual std::uint32_t GetDriveType(std::string_view root) = 0;
    virtual std::uint32_t GetVolumeLabel(std::string_view root, CString& label) = 0;  // a Win32 error number
    virtual std::uint32_t GetConnection(std::string_view name, CString& share) = 0;   // a Win32 error number

    // Begins a walk over one hive or one drive, as they are now.
    virtual void BeginWalk() = 0;
    // The program's own folders, which searches pass over from now on, however a walk reaches them; but not the root of
    // a drive.
    virtual void PassOver(const std::vector<CString>& folders) = 0;

    // The file system under examination. OpenSearch lists the directory at `path`; null with an error number when it
    // cannot be read or lies too deep, and null with ERROR_SUCCESS when it is passed over: its own ancestor through a
    // link, or what no program of the machine may wander into. FindPath looks up the one entry at `path` and gives an
    // error number. Both throw CInterrupted once an interruption was asked for, and CFileError when the process has run
    // out of descriptors or memory: it must not call a directory empty then.
    virtual std::unique_ptr<CFileSearch> OpenSearch(std::string_view path, std::uint32_t& error) = 0;
    virtual std::uint32_t FindPath(std::string_view path, CFileWords& words) = 0;

    // The registry under examination, as it was when the walk began.
    virtual CRegistry& GetRegistry() = 0;

    // Executables. MapAndLoad is that of platform/images/image.h on the file at `path`; false too where it is no
    // regular file or cannot be read.
    virtual bool MapAndLoad(std::string_view path, CLoadedImage& image) = 0;
    virtual std::unique_ptr<const CVersionInfo> GetFileVersionInfo(std::string_view path) = 0;  // null without one

protected:
    virtual std::vector<CNotice> GetNotices() = 0;  // all there were

private:
    std::set<CString> m_told;
};

}  // namespace delvane
