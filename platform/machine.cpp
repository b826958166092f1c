#include "platform/machine.h"

#include <cstring>
#include <exception>
#include <new>

namespace delvane {

CFileError::CFileError(std::string_view path, std::string_view action, std::uint32_t code, std::string_view reason)
    : std::runtime_error(CString(path) + ": " + CString(action) + ": " + CString(reason) + " (" + std::to_string(code) +
                         ")"),
      m_dwCode(code) {}

bool FillRoom(CRoom& room, std::string_view bytes, bool wantsNul) {
    const bool fits = room.m_nSize >= bytes.size() + (wantsNul ? 1 : 0);
    room.m_nSize = static_cast<std::uint32_t>(bytes.size());
    if (fits) {
        if (!bytes.empty()) std::memcpy(room.m_pBytes, bytes.data(), bytes.size());
        if (wantsNul) room.m_pBytes[bytes.size()] = '\0';
    }
    return fits;
}

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
