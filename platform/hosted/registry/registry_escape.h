// The texts of Wine's registry files: escaped UTF-16 in quotation marks or brackets.
//
// A registry file is little else, and the reader spends its time here: a text is moved eight bytes at a time up to the
// first byte that needs a decision, and all is inline.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "platform/utf.h"

namespace delvane::registry_escape {

constexpr const char* kZeroByte = "a zero byte inside a text";

constexpr unsigned kNoDigit = 0x80;
constexpr std::array<unsigned char, 256> kDigits = [] {
    constexpr std::string_view kCharacters = "0123456789abcdefABCDEF";
    std::array<unsigned char, 256> table{};
    table.fill(kNoDigit);
    for (unsigned char i = 0; i < kCharacters.size(); ++i)
        table[static_cast<unsigned char>(kCharacters[i])] = i < 16 ? i : i - 6;
    return table;
}();

inline unsigned Digit(const char* at) { return kDigits[static_cast<unsigned char>(*at)]; }
inline bool IsBlank(char c) { return c == ' ' || c == '\t'; }

inline const char* SkipBlanks(const char* at, const char* end) {
    while (at < end && IsBlank(*at)) {
        ++at;
    }
    return at;
}

// Reads hexadecimal digits, at most `limit` of them; 0 where there is none.
inline std::uint32_t ReadHexNumber(const char*& at, const char* end, std::ptrdiff_t limit) {
    std::uint32_t number = 0;
    at = std::from_chars(at, at + std::min(limit, end - at), number, 16).ptr;
    return number;
}

// Eight bytes of text at once. Each test below marks, in the high bit of its byte, every byte that it looks for; it may
// mark wrongly only above one that it marks rightly, so the lowest mark is always true.
constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101;
constexpr std::uint64_t kHighBits = kOnes << 7;
constexpr std::uint64_t EveryByte(char c) { return kOnes * static_cast<unsigned char>(c); }
constexpr std::uint64_t MarkZeros(std::uint64_t word) { return (word - kOnes) & ~word & kHighBits; }
constexpr std::uint64_t MarkControls(std::uint64_t word) { return (word - kOnes * 0x20) & ~word & kHighBits; }

// Marks the bytes that end a run of plain text: the closing character, a backslash, a control character.
template <char kClosing>
inline std::uint64_t MarkSpecial(std::uint64_t word) {
    return MarkZeros(word ^ EveryByte(kClosing)) | MarkZeros(word ^ EveryByte('\\')) | MarkControls(word);
}

inline std::uint64_t LoadWord(const char* at) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

constexpr std::size_t kWord = sizeof(std::uint64_t);
inline unsigned FirstMark(std::uint64_t marks) { return static_cast<unsigned>(std::countr_zero(marks)) / 8; }

// Reads the escape behind a backslash that is not the end of the text.
inline std::uint32_t ReadEscape(const char*& at, const char* end) {
    const char c = *at++;
    if (c == 'x') {
        const char* const digits = at;
        const std::uint32_t high = ReadHexNumber(at, end, 4);
        if (at == digits) return 'x';
        if (!IsHighSurrogate(high) || end - at < 3 || at[0] != '\\' || at[1] != 'x') return high;
        const char* next = at + 2;
        const std::uint32_t low = ReadHexNumber(next, end, 4);
        if (!IsLowSurrogate(low)) return high;
        at = next;
        return JoinSurrogates(high, low);
    }
    constexpr std::string_view kLetters = "abefnrtv";
    constexpr std::string_view kMeanings = "\x07\x08\x1B\x0C\x0A\x0D\x09\x0B";
    const std::size_t letter = c >= 'a' ? kLetters.find(c) : std::string_view::npos;
    if (letter != std::string_view::npos) return static_cast<unsigned char>(kMeanings[letter]);
    if (c < '0' || c > '7') return static_cast<unsigned char>(c);
    auto unit = static_cast<std::uint32_t>(c - '0');
    for (int digits = 1; digits < 3 && at < end && *at >= '0' && *at <= '7'; ++digits) {
        unit = unit << 3 | static_cast<std::uint32_t>(*at++ - '0');
    }
    return unit;
}

// How many bytes two texts begin with in common, of `limit` that both have.
inline std::size_t CommonLength(const char* a, const char* b, std::size_t limit) {
    std::size_t length = 0;
    for (; limit - length >= kWord; length += kWord) {
        const std::uint64_t differing = LoadWord(a + length) ^ LoadWord(b + length);
        if (differing != 0) return length + FirstMark(differing);
    }
    while (length < limit && a[length] == b[length])
        ++length;
    return length;
}

struct CDecoded {
    const char* m_pNext;    // behind the closing character, or where the text went wrong
    std::size_t m_nLength;  // of what stands in the buffer
    const char* m_pReason;  // null when all is well
};

// The beginning of a component of a path.
struct CComponent {
    std::size_t m_nEscaped;  // where it stands in the line,
    std::size_t m_nDecoded;  // and in the path
};

// Writes the escaped text at `at` into the buffer, up to its closing character; the buffer has room for one more byte
// then. In a path, `components` is given, empty components vanish, as they do when Wine makes the key; those that are
// known already stand in the buffer, and reading goes on at the last of them.
template <char kClosing>
CDecoded Decode(const char* at, const char* end, std::vector<char>& buffer, const char* unclosed,
                std::vector<CComponent>* components = nullptr) {
    constexpr bool kPath = kClosing == ']';
    constexpr std::size_t kRoom = 2 * kWord;  // more than any one step writes
    if (buffer.size() < kRoom) buffer.resize(kRoom * 16);
    char* to = buffer.data();
    char* limit = to + buffer.size() - kRoom;
    [[maybe_unused]] const char* const line = at;
    if constexpr (kPath) {
        if (!components->empty()) {
            at += components->back().m_nEscaped;
            to += components->back().m_nDecoded;
        }
    }
    for (;;) {
        if (to > limit) {
            const std::ptrdiff_t written = to - buffer.data();
            buffer.resize(buffer.size() * 2);
            to = buffer.data() + written;
            limit = buffer.data() + buffer.size() - kRoom;
        }
        if (static_cast<std::size_t>(end - at) >= kWord) {
            const std::uint64_t marks = MarkSpecial<kClosing>(LoadWord(at));
            std::memcpy(to, at, kWord);
            if (marks == 0) {
                at += kWord;
                to += kWord;
                continue;
            }
            at += FirstMark(marks);
            to += FirstMark(marks);
        } else if (at == end) {
            return {at, 0, unclosed};
        }
        const char c = *at;
        if (c == kClosing) break;
        if (c == '\n') return {at, 0, unclosed};
        if (c == '\0') return {at, 0, kZeroByte};
        ++at;
        if (c != '\\') {
            *to++ = c;
            continue;
        }
        if (at == end || *at == '\n' || *at == '\0') return {at, 0, unclosed};
        if (static_cast<unsigned char>(*at) >= 0x80) continue;
        const std::uint32_t decoded = ReadEscape(at, end);
        if (kPath && decoded == '\\' && (to == buffer.data() || to[-1] == '\\')) continue;
        to = PutUtf8(to, decoded);
        if constexpr (kPath) {
            if (decoded == '\\') {
                components->push_back(
                    {static_cast<std::size_t>(at - line), static_cast<std::size_t>(to - buffer.data())});
            }
        }
    }
    if (kPath && to != buffer.data() && to[-1] == '\\') --to;
    return {at + 1, static_cast<std::size_t>(to - buffer.data()), nullptr};
}

}  // namespace delvane::registry_escape
