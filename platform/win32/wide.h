// Between the process's code page and the UTF-16 of the system.
#pragma once

#include <string>
#include <string_view>

#include "platform/text.h"

namespace delvane {

std::wstring Widen(std::string_view text);
CString Narrow(std::wstring_view text);

}  // namespace delvane
