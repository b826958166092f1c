#include "platform/text.h"

namespace delvane {

bool IsPrefixNoCase(std::string_view prefix, std::string_view text) {
    if (prefix.empty() || text.size() < prefix.size()) return false;
    return mbsicmp(prefix, text.substr(0, prefix.size())) == 0;
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

CString DecimalText(std::int64_t number) { return std::to_string(number); }

CString GroupedDecimalText(std::int64_t number) {
    CString digits = std::to_string(number);
    const std::size_t first = number < 0 ? 1 : 0;
    for (std::size_t at = digits.size(); at > first + 3;) {
        at -= 3;
        digits.insert(at, 1, ',');
    }
    return digits;
}

std::string_view ExtensionOf(std::string_view fileName) {
    const std::size_t separator = fileName.find_last_of("\\/:");
    const std::size_t period = fileName.rfind('.');
    if (period == std::string_view::npos || (separator != std::string_view::npos && period < separator)) return {};
    return fileName.substr(period, 255);
}

}  // namespace delvane
