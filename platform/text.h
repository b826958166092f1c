// Text: strings in the machine's code page, their comparisons, and the few conversions that the program needs.
//
// Text is bytes in the machine's ANSI code page and is never converted to another one. Off Windows that code page is
// UTF-8, and on Windows too where the system grants it; bytes that are no valid UTF-8 (a file name may hold any)
// compare as the bytes that they are. A Windows that does not grant it has a code page of its own.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

namespace delvane {

using CString = std::string;

// Some Eastern code pages have characters of two bytes, and of single bytes above some of those.
extern const bool kHasDoubleBytes;
int CompareDoubleBytes(std::string_view a, std::string_view b);
std::uint64_t DoubleByteHead(std::string_view text);

// _mbscmp: by character code, respecting case. Below 0, 0 or above 0. In UTF-8, and where all characters have one byte,
// that is byte order.
inline int mbscmp(std::string_view a, std::string_view b) {
    return kHasDoubleBytes ? CompareDoubleBytes(a, b) : a.compare(b);
}

// The first characters as a number: of two texts whose numbers differ, the one with the smaller comes first. Sorting by
// it spares most looks at the texts themselves.
inline std::uint64_t TextHead(std::string_view text) {
    if (kHasDoubleBytes) return DoubleByteHead(text);
    std::uint64_t head = 0;
    std::memcpy(&head, text.data(), std::min(text.size(), sizeof head));
    return std::endian::native == std::endian::little ? __builtin_bswap64(head) : head;
}

// _mbsicmp: the same without regard to case (Unicode simple folding, so that É equals é).
int mbsicmp(std::string_view a, std::string_view b);

// The text in a form that is equal for texts that equal each other without regard to case: a key for maps.
CString FoldCase(std::string_view text);

// True if `text` begins with `prefix` without regard to case; false for an empty prefix. As many bytes of the text
// are compared as the prefix has (_mbsnbicmp), so it knows nothing of path separators.
bool IsPrefixNoCase(std::string_view prefix, std::string_view text);
// True if `text` ends with `suffix` in the same way.
bool IsSuffixNoCase(std::string_view suffix, std::string_view text);

// The characters of a text in UTF-8.
std::size_t CountCharacters(std::string_view text);

// CharLowerBuff: the text in lower case.
CString MakeLower(std::string_view text);

// The text with %1 and %2 replaced, as AfxFormatString1 and AfxFormatString2 do it: in one pass over `text`, so
// that a placeholder inside an argument stays as it is. %2 is dropped when there is no second argument.
CString FormatString1(std::string_view text, std::string_view first);
CString FormatString2(std::string_view text, std::string_view first, std::string_view second);

// None of these depends on a locale, which a window system may set.
//
// A number in decimal with a comma between each group of three digits.
CString GroupedDecimalText(std::int64_t number);

// A number as the format %.3g gives it.
CString ThreeDigitText(double number);

// A path with one separator where several stand in a row, but for the two that a share's name begins with.
CString SingleSeparators(std::string_view path);

// _splitpath: the extension of a file name, its period included, at most 255 bytes; empty if there is none.
std::string_view ExtensionOf(std::string_view fileName);

// 100-nanosecond ticks since 1 January 1601, UTC.
constexpr std::uint64_t kTicksPerSecond = 10'000'000;
constexpr std::uint64_t kUnixEpochTicks = 116'444'736'000'000'000;

// A time of the calendar by a format of strftime, in English words whatever the locale: of its conversions %a %b %d %m
// %y %Y %H %I %M %S %p.
CString CalendarText(const std::tm& time, std::string_view format);

// A time in local calendar form by such a format. The zone is the process's (TZ is honoured). Empty for ticks of 2^63
// and above, which calendar conversion does not take.
CString LocalTimeText(std::uint64_t ticks, std::string_view format);

}  // namespace delvane
