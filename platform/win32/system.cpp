#include "platform/win32/system.h"

#include <algorithm>
#include <array>

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

CString ErrorText(std::uint32_t code) {
    std::array<wchar_t, 512> text{};
    // In English, as all that the program says, or else in the user's language.
    constexpr DWORD kEnglish = 0x0409;
    DWORD length = 0;
    for (const DWORD language : {kEnglish, DWORD{0}}) {
        if (length != 0) break;
        length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, language,
                                text.data(), static_cast<DWORD>(text.size()), nullptr);
    }
    std::wstring_view words(text.data(), length);
    while (!words.empty() && (words.back() <= L' ' || words.back() == L'.'))
        words.remove_suffix(1);
    return words.empty() ? CString("the system gives no reason") : Narrow(words);
}

bool IsExhaustion(std::uint32_t code) {
    static constexpr DWORD kCodes[] = {ERROR_NOT_ENOUGH_MEMORY, ERROR_OUTOFMEMORY,      ERROR_NO_SYSTEM_RESOURCES,
                                       ERROR_NOT_ENOUGH_QUOTA,  ERROR_COMMITMENT_LIMIT, ERROR_TOO_MANY_OPEN_FILES};
    return std::find(std::begin(kCodes), std::end(kCodes), code) != std::end(kCodes);
}

std::wstring LongWidePath(std::string_view path) {
    std::wstring wide = Widen(path);
    if (path.size() < 3 || path[1] != ':') return wide;
    // The long form is taken as it stands: one kind of separator, and no two of them in a row.
    std::replace(wide.begin(), wide.end(), L'/', L'\\');
    wide.erase(std::unique(wide.begin(), wide.end(), [](wchar_t a, wchar_t b) { return a == L'\\' && b == L'\\'; }),
               wide.end());
    return L"\\\\?\\" + wide;
}

bool IsLongPath(std::string_view path) {
    constexpr std::size_t kRoomForName = 13;
    return path.size() + kRoomForName > MAX_PATH;
}

CDiskFile::CDiskFile(std::string_view path)
    : m_file(CreateFileA(CString(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                         nullptr, OPEN_EXISTING, 0, nullptr)) {
    if (!m_file) return;
    LARGE_INTEGER size{};
    if (GetFileType(m_file.get()) != FILE_TYPE_DISK || GetFileSizeEx(m_file.get(), &size) == 0) {
        m_file.reset();
        SetLastError(ERROR_BAD_DEVICE);
        return;
    }
    m_nSize = static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t CDiskFile::Read(std::uint64_t offset, void* into, std::size_t size) const {
    constexpr std::size_t kMostAtOnce = 1 << 30;
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD got = 0;
    if (ReadFile(m_file.get(), into, static_cast<DWORD>(std::min(size, kMostAtOnce)), &got, &place) == 0) return 0;
    return got;
}

}  // namespace delvane
