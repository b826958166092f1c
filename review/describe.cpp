#include "review/describe.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "capture/registry.h"
#include "platform/machine.h"

namespace delvane {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// The range of the byte behind a leading one, which keeps overlong forms, surrogates and what is beyond Unicode out.
std::pair<unsigned char, unsigned char> SecondByteRange(unsigned char lead) {
    switch (lead) {
        case 0xE0:
            return {0xA0, 0xBF};
        case 0xED:
            return {0x80, 0x9F};
        case 0xF0:
            return {0x90, 0xBF};
        case 0xF4:
            return {0x80, 0x8F};
        default:
            return {0x80, 0xBF};
    }
}

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

std::uint64_t LittleEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    return number;
}

CString HexNumber(std::uint32_t number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%x", number);
    return text.data();
}

}  // namespace

std::size_t SequenceLength(std::string_view text, std::size_t& bad) {
    const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(0);
    bad = 1;
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                               : lead >= 0xE0 && lead <= 0xEF ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                              : 0;
    if (length == 0 || text.size() < 2) return 0;
    const auto [lowest, highest] = SecondByteRange(lead);
    if (byte(1) < lowest || byte(1) > highest) return 0;
    for (bad = 2; bad < length; ++bad) {
        if (bad == text.size() || !IsContinuation(byte(bad))) return 0;
    }
    return length;
}

std::uint32_t DecodeSequence(std::string_view sequence) {
    const auto lead = static_cast<unsigned char>(sequence[0]);
    if (sequence.size() == 1) return lead;
    std::uint32_t character = lead & (0x7FU >> sequence.size());
    for (const char c : sequence.substr(1))
        character = character << 6 | (static_cast<unsigned char>(c) & 0x3FU);
    return character;
}

CString CleanText(std::string_view text) {
    CString clean;
    clean.reserve(text.size());
    while (!text.empty()) {
        std::size_t length = AsciiLength(text);
        std::size_t bad = 0;
        if (length == 0) length = SequenceLength(text, bad);
        clean += length == 0 ? kReplacement : text.substr(0, length);
        text.remove_prefix(length == 0 ? bad : length);
    }
    return clean;
}

bool IsCleanText(std::string_view text) {
    while (!text.empty()) {
        std::size_t length = AsciiLength(text);
        std::size_t bad = 0;
        if (length == 0) length = SequenceLength(text, bad);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

bool IsInvisible(std::uint32_t c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0xAD || c == 0x61C || (c >= 0x200B && c <= 0x200F) ||
           (c >= 0x2028 && c <= 0x202E) || c == 0x2060 || (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
}

CString VisibleText(std::string_view text) {
    const CString clean = CleanText(text);
    CString visible;
    std::size_t bad = 0;
    for (std::string_view rest = clean; !rest.empty();) {
        const std::size_t length = SequenceLength(rest, bad);
        const std::uint32_t character = DecodeSequence(rest.substr(0, length));
        if (IsInvisible(character)) {
            std::array<char, 16> mark{};
            std::snprintf(mark.data(), mark.size(), "<U+%04X>", character);
            visible += mark.data();
        } else {
            visible += rest.substr(0, length);
        }
        rest.remove_prefix(length);
    }
    return visible;
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
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02u:%02u:%02u.%07uZ",
                  static_cast<int>(date.year()) + static_cast<int>(cycles) * 400, static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), second / 3600, second / 60 % 60, second % 60,
                  static_cast<unsigned>(rest % kTicksPerSecond));
    return text.data();
}

CString IsoDate(std::uint64_t ticks) {
    CString text = IsoTime(ticks);
    text.resize(text.find('T'));
    return text;
}

std::vector<CString> AttributeWords(std::uint32_t attributes) {
    static constexpr std::array<std::string_view, 15> kWords = {
        "readonly",  "hidden", "system",        {},           "directory", "archive",     "device",   "normal",
        "temporary", "sparse", "reparse-point", "compressed", "offline",   "not-indexed", "encrypted"};
    std::vector<CString> words;
    for (std::uint32_t bit = 0; attributes >> bit != 0; ++bit) {
        if ((attributes >> bit & 1) == 0) continue;
        const bool hasWord = bit < kWords.size() && !kWords[bit].empty();
        words.push_back(hasWord ? CString(kWords[bit]) : HexNumber(std::uint32_t{1} << bit));
        if (bit == 31) break;
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
    return type < kWords.size() ? CString(kWords[type]) : HexNumber(type);
}

CValueData DescribeData(const CDelvRegValObj& value) {
    std::string_view data = value.m_data;
    CValueData described;
    switch (value.m_dwType) {
        case REG_SZ:
        case REG_EXPAND_SZ: {
            described.m_form = CValueData::EForm::kText;
            const std::size_t end = std::min(data.find('\0'), data.size());
            described.m_strText = data.substr(0, end);
            described.m_bHex = end + 1 < data.size();
            return described;
        }
        case REG_MULTI_SZ: {
            described.m_form = CValueData::EForm::kTexts;
            while (!data.empty() && data.front() != '\0') {
                const std::size_t end = std::min(data.find('\0'), data.size());
                described.m_texts.emplace_back(data.substr(0, end));
                data.remove_prefix(std::min(end + 1, data.size()));
            }
            described.m_bHex = data.size() > 1;
            return described;
        }
        case REG_DWORD:
        case kRegQword: {
            const bool isShort = value.m_dwType == REG_DWORD;
            if (data.size() != (isShort ? 4U : 8U)) break;
            described.m_form = isShort ? CValueData::EForm::kNumber : CValueData::EForm::kBigNumber;
            described.m_nNumber = LittleEndian(data);
            return described;
        }
        default:
            break;
    }
    described.m_bHex = true;
    return described;
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
