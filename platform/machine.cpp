#include "platform/machine.h"

namespace delvane {

CFileError::CFileError(std::string_view path, std::string_view action, std::uint32_t code, std::string_view reason)
    : std::runtime_error(CString(path) + ": " + CString(action) + ": " + CString(reason) + " (" + std::to_string(code) +
                         ")"),
      m_dwCode(code) {}

}  // namespace delvane
