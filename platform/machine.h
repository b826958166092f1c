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
#include "platform/file_search.h"
#include "platform/images/image.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace delvane {

constexpr std::uint32_t DRIVE_UNKNOWN = 0;
constexpr std::uint32_t DRIVE_NO_ROOT_DIR = 1;
constexpr std::uint32_t DRIVE_REMOVABLE = 2;
constexpr std::uint32_t DRIVE_FIXED = 3;
constexpr std::uint32_t DRIVE_REMOTE = 4;
constexpr std::uint32_t DRIVE_CDROM = 5;
constexpr std::uint32_t DRIVE_RAMDISK = 6;

constexpr std::uint32_t VER_PLATFORM_WIN32_WINDOWS = 1;
constexpr std::uint32_t VER_PLATFORM_WIN32_NT = 2;

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
    bool IsPresent() const { return GetProblem().empty(); }
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
    // The file system and the registry under examination.
    virtual CSearchSet& GetSearches() = 0;
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
