#include "platform/errors.h"

#include <exception>
#include <new>
#include <utility>

namespace delvane {

CString ErrorWords(std::uint32_t code) {
    static constexpr std::pair<std::uint32_t, const char*> kWords[] = {
        {ERROR_FILE_NOT_FOUND, "not found"},
        {ERROR_PATH_NOT_FOUND, "path not found"},
        {ERROR_TOO_MANY_OPEN_FILES, "too many open files"},
        {ERROR_ACCESS_DENIED, "access denied"},
        {ERROR_WRITE_PROTECT, "write protected"},
        {ERROR_NOT_READY, "device not ready"},
        {ERROR_CRC, "data error"},
        {ERROR_GEN_FAILURE, "device failure"},
        {ERROR_SHARING_VIOLATION, "in use by another process"},
        {ERROR_LOCK_VIOLATION, "locked by another process"},
        {ERROR_BAD_NETPATH, "network path not found"},
        {ERROR_DISK_FULL, "disk full"},
        {ERROR_INVALID_NAME, "name not allowed"},
        {ERROR_FILENAME_EXCED_RANGE, "too deep or too long"},
        {ERROR_MORE_DATA, "more data than room"},
        {ERROR_INVALID_HANDLE, "no key of its own"},
        {ERROR_FILE_CORRUPT, "file system damaged"},
        {ERROR_BADDB, "registry damaged"},
        {ERROR_BADKEY, "key damaged"},
        {ERROR_REGISTRY_CORRUPT, "registry file damaged"},
        {ERROR_REGISTRY_IO_FAILED, "registry file could not be read"},
        {ERROR_NOT_REGISTRY_FILE, "no registry file"},
        {ERROR_IO_DEVICE, "device failure"},
        {ERROR_CANT_RESOLVE_FILENAME, "links lead there again and again"},
    };
    for (const auto& [known, words] : kWords) {
        if (known == code) return words;
    }
    return "error " + std::to_string(code);
}

CFileError::CFileError(std::string_view path, std::string_view action, std::uint32_t code, std::string_view reason)
    : std::runtime_error(CString(path) + ": " + CString(action) + ": " + CString(reason) + " (" + std::to_string(code) +
                         ")"),
      m_dwCode(code) {}

CString DescribeCurrentException() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return "not enough memory";
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "an unknown failure";
    }
}

}  // namespace delvane
