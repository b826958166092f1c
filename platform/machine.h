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
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "platform/image.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "platform/version_block.h"

namespace delvane {

constexpr std::uint32_t ERROR_SUCCESS = 0;
constexpr std::uint32_t ERROR_FILE_NOT_FOUND = 2;
constexpr std::uint32_t ERROR_PATH_NOT_FOUND = 3;
constexpr std::uint32_t ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr std::uint32_t ERROR_ACCESS_DENIED = 5;
constexpr std::uint32_t ERROR_WRITE_PROTECT = 19;
constexpr std::uint32_t ERROR_INVALID_HANDLE = 6;
constexpr std::uint32_t ERROR_GEN_FAILURE = 31;
constexpr std::uint32_t ERROR_DISK_FULL = 112;
constexpr std::uint32_t ERROR_INVALID_NAME = 123;
constexpr std::uint32_t ERROR_ALREADY_EXISTS = 183;
constexpr std::uint32_t ERROR_FILENAME_EXCED_RANGE = 206;
constexpr std::uint32_t ERROR_MORE_DATA = 234;
constexpr std::uint32_t ERROR_NO_MORE_ITEMS = 259;
constexpr std::uint32_t ERROR_BADKEY = 1010;
constexpr std::uint32_t ERROR_CANT_RESOLVE_FILENAME = 1921;
constexpr std::uint32_t ERROR_NOT_CONNECTED = 2250;

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

// An open key of the registry; 0 is none. The predefined ones are open at all times.
using HKEY = std::uint32_t;
constexpr HKEY HKEY_CLASSES_ROOT = 0x80000000;
constexpr HKEY HKEY_CURRENT_USER = 0x80000001;
constexpr HKEY HKEY_LOCAL_MACHINE = 0x80000002;
constexpr HKEY HKEY_USERS = 0x80000003;
constexpr HKEY HKEY_CURRENT_CONFIG = 0x80000005;

constexpr std::uint32_t REG_NONE = 0;
constexpr std::uint32_t REG_SZ = 1;
constexpr std::uint32_t REG_EXPAND_SZ = 2;
constexpr std::uint32_t REG_BINARY = 3;
constexpr std::uint32_t REG_DWORD = 4;
constexpr std::uint32_t REG_DWORD_BIG_ENDIAN = 5;
constexpr std::uint32_t REG_LINK = 6;
constexpr std::uint32_t REG_MULTI_SZ = 7;
constexpr std::uint32_t REG_RESOURCE_LIST = 8;

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
    std::string_view m_name;  // lives until the search moves on or ends
};

// One search over a directory. While it is open, its sub-directories are found from it without going through the
// path again, so a walk keeps the search of each level open. The destructor closes it.
class CFileSearch {
public:
    virtual ~CFileSearch() = default;
    // The next entry, in ascending order of names (by byte); false when there is none. "." and ".." may be among them.
    virtual bool Next(CFindData& data) = 0;
};

// What a key holds, in numbers: the lengths of names are without their NUL, all are in bytes.
struct CKeyInfo {
    std::uint32_t m_nSubkeys = 0;
    std::uint32_t m_nLongestSubkey = 0;
    std::uint32_t m_nValues = 0;
    std::uint32_t m_nLongestValueName = 0;
    std::uint32_t m_nLargestData = 0;
};

// Room for a text or for data that a call is to fill in.
struct CRoom {
    char* m_pBytes = nullptr;
    std::uint32_t m_nSize = 0;  // on the way in the room, on the way out what was written; a name's NUL does not count
};

// Puts the bytes into the room, and a NUL behind them if that is wanted. False if the room is too small; its size is
// that of the bytes either way.
bool FillRoom(CRoom& room, std::string_view bytes, bool wantsNul);

struct CVersionRecord {
    std::uint32_t m_dwPlatformId = VER_PLATFORM_WIN32_NT;
    std::uint32_t m_dwMajorVersion = 0;
    std::uint32_t m_dwMinorVersion = 0;
    std::uint32_t m_dwBuildNumber = 0;
    CString m_strServicePack;
};

// A file of the program's own that could not be read or written. what() is one plain sentence that names the file, the
// action and the cause: "C:\Results\a.dvs: write: disk full (112)".
class CFileError : public std::runtime_error {
public:
    CFileError(std::string_view path, std::string_view action, std::uint32_t code, std::string_view reason);
    std::uint32_t GetCode() const { return m_dwCode; }

private:
    std::uint32_t m_dwCode;
};

// The file could not even be opened or created.
class CFileOpenError : public CFileError {
public:
    using CFileError::CFileError;
};

// What the exception that is being handled says, in words. Called in a catch block.
CString DescribeCurrentException();

// Somebody asked the process to end while a capture or a save was under way (SIGINT, SIGTERM, SIGHUP).
class CInterrupted : public std::runtime_error {
public:
    CInterrupted() : std::runtime_error("interrupted by a signal") {}
};

// A file of the program's own under way to its place. Whatever stood there stays whole until Commit, which flushes the
// bytes to the disk and puts the new file in its place in one step. Without Commit nothing is left behind.
class CFileWriter {
public:
    virtual ~CFileWriter() = default;
    virtual void Write(std::string_view bytes) = 0;  // throws CFileError, CInterrupted
    virtual void Commit() = 0;                       // throws the same
};

// What was read of a file: a buffer that may be larger than the file, and the file's size.
struct CFileBytes {
    CPageBuffer m_buffer;
    std::size_t m_nSize = 0;

    std::string_view GetBytes() const { return {m_buffer.GetData(), m_nSize}; }
};

using CFolderFunction = std::function<bool(int kind, CString& path)>;

class CMachine {
public:
    virtual ~CMachine() = default;

    // Whether there is a machine to take a snapshot of. Without one the program's own files still work; everything
    // else answers as far as it can. GetProblem then says in one sentence what is wrong, or what was looked for and
    // how to name it.
    virtual bool IsPresent() const = 0;
    virtual CString GetProblem() const = 0;
    // What the user should be told and has not been told yet, a sentence each: a variable that names no machine, a
    // damaged registry file. Asked for at the start and after each capture.
    virtual std::vector<CString> TakeNotices() = 0;

    // Identity.
    virtual CVersionRecord GetVersion() = 0;
    virtual bool GetUserName(CString& name) = 0;
    virtual bool GetComputerName(CString& name) = 0;
    virtual CString GetSystemDirectory() = 0;
    virtual CString GetWindowsDirectory() = 0;
    virtual CString GetTempPath() = 0;        // ends in a backslash
    virtual CString GetModuleFileName() = 0;  // the program's own file
    // The folder of the documents that came with the program, without a backslash at the end.
    virtual CString GetDocumentFolder() = 0;
    virtual std::uint64_t GetSystemTime() = 0;
    // SHGetFolderPath of the library ShFolder; empty where the machine has no such library. The function gives false
    // for a folder that the machine does not know.
    virtual CFolderFunction LoadFolderLibrary() = 0;

    // Drives. A root is "C:\", a name "C:".
    virtual std::uint32_t GetLogicalDrives() = 0;
    virtual std::uint32_t GetDriveType(std::string_view root) = 0;
    virtual std::uint32_t GetVolumeLabel(std::string_view root, CString& label) = 0;  // a Win32 error number
    virtual std::uint32_t GetConnection(std::string_view name, CString& share) = 0;   // a Win32 error number

    // The file system under examination. OpenSearch lists the directory at `path`; null when it cannot be read, when
    // it is its own ancestor through a link, or when it lies too deep. FindPath looks up the one entry at `path`. Both
    // throw CInterrupted once an interruption was asked for, and CFileError when the process has run out of
    // descriptors or memory: it must not call a directory empty then.
    virtual std::unique_ptr<CFileSearch> OpenSearch(std::string_view path) = 0;
    virtual bool FindPath(std::string_view path, CFileWords& words) = 0;

    // The registry under examination. Each but RegCloseKey gives a Win32 error number. Text is in the code page, data
    // of the types REG_SZ, REG_EXPAND_SZ and REG_MULTI_SZ too. A key is opened by the name of one level, no path. A
    // name's room needs a byte more for a NUL. A key that stands for something else than itself (performance data)
    // cannot be opened. ERROR_MORE_DATA where a room is too small; RegQueryValueEx takes a null room for a question
    // after the size alone, and gives the size either way.
    virtual std::uint32_t RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) = 0;
    virtual void RegCloseKey(HKEY key) = 0;
    virtual std::uint32_t RegQueryInfoKey(HKEY key, CKeyInfo& info) = 0;
    virtual std::uint32_t RegEnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type,
                                       CRoom& data) = 0;
    virtual std::uint32_t RegEnumKeyEx(HKEY key, std::uint32_t index, CRoom& name) = 0;
    virtual std::uint32_t RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) = 0;

    // Executables. MapAndLoad is that of platform/image.h on the file at `path`; false too where it is no regular
    // file or cannot be read.
    virtual bool MapAndLoad(std::string_view path, CLoadedImage& image) = 0;
    virtual std::unique_ptr<const CVersionInfo> GetFileVersionInfo(std::string_view path) = 0;  // null without one

    // The program's own files. Only regular files are ever opened.
    virtual bool FileExists(std::string_view path) = 0;
    virtual bool DirectoryExists(std::string_view path) = 0;
    virtual bool CreateDirectory(std::string_view path) = 0;  // the last level only
    virtual bool DeleteFile(std::string_view path) = 0;
    // ReadFile gives the whole of a file of no more than `limit` bytes, ReadFileHead the first `size` bytes or what
    // there is. Each throws CFileOpenError where there is no such file or it cannot be opened or created, CFileError
    // where it cannot be read or is too large.
    virtual CFileBytes ReadFile(std::string_view path, std::uint64_t limit) = 0;
    virtual CFileBytes ReadFileHead(std::string_view path, std::size_t size) = 0;
    virtual std::unique_ptr<CFileWriter> CreateFile(std::string_view path) = 0;
    virtual std::unique_ptr<std::ostream> CreateTextFile(std::string_view path) = 0;  // null if it cannot be created
    // The path as a person on this system would write it, for messages.
    virtual CString GetDisplayPath(std::string_view path) const = 0;
    // Keeps other processes from the folder of the program's own files until this one ends. False where another one
    // has it.
    virtual bool LockProgramFolder() = 0;
    // Opens a document with the program that the system has for it; nobody waits for it.
    virtual void OpenDocument(std::string_view path) = 0;
};

// While one lives, a request to end the process (SIGINT, SIGTERM, SIGHUP) makes searches and file writers throw
// CInterrupted instead of ending the process at once. One at a time.
class CInterruptGuard {
public:
    CInterruptGuard();
    ~CInterruptGuard();
    CInterruptGuard(const CInterruptGuard&) = delete;
    CInterruptGuard& operator=(const CInterruptGuard&) = delete;
};

// Called first of all: lets what the program says reach the console, file or pipe that it was started with, and keeps
// the numbers of the standard streams from the program's files.
void PrepareStandardStreams();

// Made once, by the program's entry. The machine of this build: the one that it runs on, or a hosted one.
std::unique_ptr<CMachine> MakeMachine();

// The text of the command line behind the program's name. Where the system hands over separate arguments, they stand
// with blanks between them, a blank or tab inside an argument is held by one of the two bytes below, and an ordinary
// host path behind /res: takes the host form.
constexpr char kHeldBlank = '\x1F';
constexpr char kHeldTab = '\x1E';
CString MakeCommandLine(int argumentCount, const char* const* arguments);

}  // namespace delvane
