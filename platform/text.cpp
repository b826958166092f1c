#include "platform/text.h"

#include <array>
#include <cassert>
#include <charconv>

namespace delvane {
namespace {

CString WordAt(int index, std::string_view words) {
    return CString(words.substr(static_cast<std::size_t>(index) * 3, 3));
}

CString TwoDigits(int number) {
    return {static_cast<char>('0' + number / 10 % 10), static_cast<char>('0' + number % 10)};
}

// A conversion of CalendarText.
CString Converted(const std::tm& time, char conversion) {
    switch (conversion) {
        case 'a':
            return WordAt(time.tm_wday, "SunMonTueWedThuFriSat");
        case 'b':
            return WordAt(time.tm_mon, "JanFebMarAprMayJunJulAugSepOctNovDec");
        case 'd':
            return TwoDigits(time.tm_mday);
        case 'm':
            return TwoDigits(time.tm_mon + 1);
        case 'y':
            return TwoDigits((time.tm_year + 1900) % 100);
        case 'Y':
            return std::to_string(time.tm_year + 1900);
        case 'H':
            return TwoDigits(time.tm_hour);
        case 'I':
            return TwoDigits(time.tm_hour % 12 == 0 ? 12 : time.tm_hour % 12);
        case 'M':
            return TwoDigits(time.tm_min);
        case 'S':
            return TwoDigits(time.tm_sec);
        case 'p':
            return time.tm_hour < 12 ? "AM" : "PM";
        default:
            assert(false && "a conversion that is not known");
            return {};
    }
}

}  // namespace

bool IsPrefixNoCase(std::string_view prefix, std::string_view text) {
    if (prefix.empty() || text.size() < prefix.size()) return false;
    return mbsicmp(prefix, text.substr(0, prefix.size())) == 0;
}

bool IsSuffixNoCase(std::string_view suffix, std::string_view text) {
    if (suffix.empty() || text.size() < suffix.size()) return false;
    return mbsicmp(suffix, text.substr(text.size() - suffix.size())) == 0;
}

std::size_t CountCharacters(std::string_view text) {
    const auto isTail = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, isTail));
}

CString FormatString2(std::string_view text, std::string_view first, std::string_view second) {
    CString result;
    result.reserve(text.size() + first.size() + second.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool placeholder = text[i] == '%' && i + 1 < text.size() && (text[i + 1] == '1' || text[i + 1] == '2');
        if (!placeholder) {
            result += text[i];
            continue;
        }
        result += text[++i] == '1' ? first : second;
    }
    return result;
}

CString FormatString1(std::string_view text, std::string_view first) { return FormatString2(text, first, {}); }

CString GroupedDecimalText(std::int64_t number) {
    CString digits = std::to_string(number);
    const std::size_t first = number < 0 ? 1 : 0;
    for (std::size_t at = digits.size(); at > first + 3;) {
        at -= 3;
        digits.insert(at, 1, ',');
    }
    return digits;
}

CString ThreeDigitText(double number) {
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general, 3);
    return {text.data(), result.ptr};
}

CString CalendarText(const std::tm& time, std::string_view format) {
    CString text;
    for (std::size_t i = 0; i < format.size(); ++i)
        text += format[i] == '%' ? Converted(time, format[++i]) : CString(1, format[i]);
    return text;
}

CString SingleSeparators(std::string_view path) {
    const auto isSeparator = [](char c) { return c == '\\' || c == '/'; };
    CString text(path.substr(0, 1));
    for (std::size_t i = 1; i < path.size(); ++i) {
        if (i == 1 || !isSeparator(path[i]) || !isSeparator(path[i - 1])) text += path[i];
    }
    return text;
}

std::string_view ExtensionOf(std::string_view fileName) {
    const std::size_t separator = fileName.find_last_of("\\/:");
    const std::size_t period = fileName.rfind('.');
    if (period == std::string_view::npos || (separator != std::string_view::npos && period < separator)) return {};
    return fileName.substr(period, 255);
}

}  // namespace delvane
