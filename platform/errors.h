// What goes wrong: the error numbers of Windows, and the exceptions that carry them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/text.h"

namespace delvane {

constexpr std::uint32_t ERROR_SUCCESS = 0;
constexpr std::uint32_t ERROR_FILE_NOT_FOUND = 2;
constexpr std::uint32_t ERROR_PATH_NOT_FOUND = 3;
constexpr std::uint32_t ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr std::uint32_t ERROR_ACCESS_DENIED = 5;
constexpr std::uint32_t ERROR_INVALID_HANDLE = 6;
constexpr std::uint32_t ERROR_WRITE_PROTECT = 19;
constexpr std::uint32_t ERROR_NOT_READY = 21;
constexpr std::uint32_t ERROR_CRC = 23;
constexpr std::uint32_t ERROR_GEN_FAILURE = 31;
constexpr std::uint32_t ERROR_SHARING_VIOLATION = 32;
constexpr std::uint32_t ERROR_LOCK_VIOLATION = 33;
constexpr std::uint32_t ERROR_BAD_NETPATH = 53;
constexpr std::uint32_t ERROR_DISK_FULL = 112;
constexpr std::uint32_t ERROR_INVALID_NAME = 123;
constexpr std::uint32_t ERROR_ALREADY_EXISTS = 183;
constexpr std::uint32_t ERROR_FILENAME_EXCED_RANGE = 206;
constexpr std::uint32_t ERROR_FILE_TOO_LARGE = 223;
constexpr std::uint32_t ERROR_MORE_DATA = 234;
constexpr std::uint32_t ERROR_NO_MORE_ITEMS = 259;
constexpr std::uint32_t ERROR_BADDB = 1009;
constexpr std::uint32_t ERROR_BADKEY = 1010;
constexpr std::uint32_t ERROR_REGISTRY_CORRUPT = 1015;
constexpr std::uint32_t ERROR_REGISTRY_IO_FAILED = 1016;
constexpr std::uint32_t ERROR_NOT_REGISTRY_FILE = 1017;
constexpr std::uint32_t ERROR_IO_DEVICE = 1117;
constexpr std::uint32_t ERROR_FILE_CORRUPT = 1392;
constexpr std::uint32_t ERROR_CANT_RESOLVE_FILENAME = 1921;
constexpr std::uint32_t ERROR_NOT_CONNECTED = 2250;

// What the number says, in words that are the same on every system: "access denied". "error N" for a number that has
// none.
CString ErrorWords(std::uint32_t code);

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

// What a machine has found wrong with itself.
struct CNotice {
    CString m_strSentence;  // for a person; begins with the path where there is one
    // Of a registry file that is missing, damaged or cannot be read: its path as the host spells it, and an ERROR_...
    // number. Empty and 0 for anything else.
    std::string m_strPath = {};
    std::uint32_t m_dwCode = 0;

    // What is wrong with the file: the sentence without the file.
    CString GetReason() const {
        const std::size_t at = m_strSentence.starts_with(m_strPath) ? m_strPath.size() : 0;
        return m_strSentence.substr(std::min(m_strSentence.find_first_not_of(": ", at), m_strSentence.size()));
    }
    bool operator==(const CNotice&) const = default;
};

}  // namespace delvane
