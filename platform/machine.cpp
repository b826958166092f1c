#include "platform/machine.h"

#include <exception>
#include <new>

namespace delvane {

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
