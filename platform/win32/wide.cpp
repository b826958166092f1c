#include "platform/win32/wide.h"

#include "platform/win32/windows.h"

namespace delvane {

std::wstring Widen(std::string_view text) {
    std::wstring wide(text.size(), L'\0');  // no code page has more units than bytes
    const int length = text.empty() ? 0
                                    : MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()),
                                                          wide.data(), static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

CString Narrow(std::wstring_view text) {
    constexpr std::size_t kMostBytes = 3;  // of a unit, in any code page
    CString narrow(text.size() * kMostBytes, '\0');
    const int length = text.empty()
                           ? 0
                           : WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), narrow.data(),
                                                 static_cast<int>(narrow.size()), nullptr, nullptr);
    narrow.resize(static_cast<std::size_t>(length));
    return narrow;
}

}  // namespace delvane
