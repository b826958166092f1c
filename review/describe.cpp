#include "review/describe.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "capture/registry.h"
#include "platform/little_endian.h"
#include "platform/machine.h"

namespace delvane {
namespace {

// How many of the first bytes are ASCII, by eight at a time.
std::size_t AsciiLength(std::string_view text) {
    std::size_t length = 0;
    for (std::uint64_t word = 0; length + sizeof word <= text.size(); length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        if ((word & 0x8080808080808080U) != 0) break;
    }
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80)
        ++length;
    return length;
}

}  // namespace

CCharacter NextCharacter(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead < 0x80                    ? 1
                               : lead >= 0xC2 && lead <= 0xDF ? 2
                               : lead >= 0xE0 && lead <= 0xEF ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                              : 0;
    // The range of the second byte keeps overlong forms, surrogates and what is beyond Unicode out.
    unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    std::uint32_t number = length < 2 ? lead : lead & (0x7FU >> length);
    std::size_t taken = 1;
    for (; taken < std::min(length, text.size()); ++taken) {
        const auto byte = static_cast<unsigned char>(text[taken]);
        if (byte < lowest || byte > highest) break;
        number = number << 6 | (byte & 0x3FU);
        lowest = 0x80;
        highest = 0xBF;
    }
    const CCharacter character = {text.substr(0, taken), taken == length ? number : CCharacter::kNone};
    text.remove_prefix(taken);
    return character;
}

bool CCharacter::IsInvisible() const {
    const std::uint32_t c = m_nNumber;
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0xAD || c == 0x61C || (c >= 0x200B && c <= 0x200F) ||
           (c >= 0x2028 && c <= 0x202E) || c == 0x2060 || (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
}

CString CleanText(std::string_view text) {
    if (IsCleanText(text)) return CString(text);
    CString clean;
    while (!text.empty()) {
        const CCharacter character = NextCharacter(text);
        clean += character.IsValid() ? character.m_bytes : kReplacement;
    }
    return clean;
}

bool IsCleanText(std::string_view text) {
    while (true) {
        text.remove_prefix(AsciiLength(text));
        if (text.empty()) return true;
        if (!NextCharacter(text).IsValid()) return false;
    }
}

CString VisibleText(std::string_view text) {
    CString visible;
    while (!text.empty()) {
        const CCharacter character = NextCharacter(text);
        if (character.IsInvisible()) {
            visible += Printed("<U+%04X>", character.m_nNumber);
        } else {
            visible += character.IsValid() ? character.m_bytes : kReplacement;
        }
    }
    return visible;
}

std::string_view EscapedCharacter(std::string_view bytes) {
    return bytes == "<" ? "&lt;" : bytes == ">" ? "&gt;" : bytes == "&" ? "&amp;" : bytes == "\"" ? "&quot;" : bytes;
}

CString Printed(const char* format, ...) {
    std::array<char, 64> text{};
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return text.data();
}

CString Plural(std::size_t count, std::string_view word) {
    return std::to_string(count) + " " + CString(word) + (count == 1 ? "" : "s");
}

CString IsoTime(std::uint64_t ticks) {
    using namespace std::chrono;
    constexpr std::uint64_t kTicksPerDay = 86400 * kTicksPerSecond;
    const sys_days day = sys_days(year(1601) / January / 1) + days(ticks / kTicksPerDay);
    // The library's years end in 32767; later ones count as those of 400 years before, which are alike.
    constexpr auto kDaysPerCycle = days(146097);
    const auto cycles = (day - sys_days(year(1601) / January / 1)) / kDaysPerCycle;
    const year_month_day date(day - cycles * kDaysPerCycle);
    const std::uint64_t rest = ticks % kTicksPerDay;
    const auto second = static_cast<unsigned>(rest / kTicksPerSecond);
    return Printed("%04d-%02u-%02uT%02u:%02u:%02u.%07uZ",
                   static_cast<int>(date.year()) + static_cast<int>(cycles) * 400, static_cast<unsigned>(date.month()),
                   static_cast<unsigned>(date.day()), second / 3600, second / 60 % 60, second % 60,
                   static_cast<unsigned>(rest % kTicksPerSecond));
}

std::vector<CString> AttributeWords(std::uint32_t attributes) {
    static constexpr std::array<std::string_view, 15> kWords = {
        "readonly",  "hidden", "system",        {},           "directory", "archive",     "device",   "normal",
        "temporary", "sparse", "reparse-point", "compressed", "offline",   "not-indexed", "encrypted"};
    std::vector<CString> words;
    for (std::size_t bit = 0; bit < 32; ++bit) {
        if ((attributes >> bit & 1) == 0) continue;
        const bool hasWord = bit < kWords.size() && !kWords[bit].empty();
        words.push_back(hasWord ? CString(kWords[bit]) : Printed("0x%x", 1U << bit));
    }
    return words;
}

CString TypeWord(std::uint32_t type) {
    static constexpr std::array<std::string_view, 12> kWords = {"REG_NONE",
                                                                "REG_SZ",
                                                                "REG_EXPAND_SZ",
                                                                "REG_BINARY",
                                                                "REG_DWORD",
                                                                "REG_DWORD_BIG_ENDIAN",
                                                                "REG_LINK",
                                                                "REG_MULTI_SZ",
                                                                "REG_RESOURCE_LIST",
                                                                "REG_FULL_RESOURCE_DESCRIPTOR",
                                                                "REG_RESOURCE_REQUIREMENTS_LIST",
                                                                "REG_QWORD"};
    return type < kWords.size() ? CString(kWords[type]) : Printed("0x%x", type);
}

CValueData DescribeData(const CDelvRegValObj& value) {
    using enum CValueData::EForm;
    const std::string_view data = value.m_data;
    switch (value.m_dwType) {
        case REG_SZ:
        case REG_EXPAND_SZ: {
            const std::string_view text = data.substr(0, data.find('\0'));
            return {kText, text, 0, text.size() + 1 < data.size()};
        }
        case REG_MULTI_SZ: {
            // Texts up to an empty one, which ends the list.
            std::size_t end = 0;
            while (end < data.size() && data[end] != '\0')
                end = std::min(data.find('\0', end), data.size() - 1) + 1;
            const bool hasTerminator = end != 0 && data[end - 1] == '\0';
            return {kTexts, data.substr(0, hasTerminator ? end - 1 : end), 0, data.size() - end > 1};
        }
        case REG_DWORD:
            if (data.size() == 4) return {kNumber, {}, U32(data, 0), false};
            break;
        case kRegQword:
            if (data.size() == 8) return {kBigNumber, {}, U64(data, 0), false};
            break;
        default:
            break;
    }
    return {kHex, {}, 0, true};
}

CString HexText(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    CString text(bytes.size() * 2, '0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        text[2 * i] = kDigits[byte >> 4];
        text[2 * i + 1] = kDigits[byte & 0xF];
    }
    return text;
}

bool IsLinkKey(const CDelvRegKeyObj& key) {
    return std::any_of(key.m_values.begin(), key.m_values.end(), [](const CDelvObj* value) {
        return static_cast<const CDelvRegValObj*>(value)->m_dwType == REG_LINK && value->m_name == "SymbolicLinkValue";
    });
}

}  // namespace delvane
