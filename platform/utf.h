// UTF-16 to UTF-8 as the program needs it: nothing is lost or merged, so half a surrogate pair becomes the three bytes
// that its number would have (which no strict decoder takes, and no two texts share).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/little_endian.h"

namespace delvane {

// Writes one character, one to four bytes, and gives what is behind it.
inline char* PutUtf8(char* to, std::uint32_t c) {
    if (c < 0x80) {
        *to++ = static_cast<char>(c);
    } else if (c < 0x800) {
        *to++ = static_cast<char>(0xC0 | c >> 6);
        *to++ = static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        *to++ = static_cast<char>(0xE0 | c >> 12);
        *to++ = static_cast<char>(0x80 | (c >> 6 & 0x3F));
        *to++ = static_cast<char>(0x80 | (c & 0x3F));
    } else {
        *to++ = static_cast<char>(0xF0 | c >> 18);
        *to++ = static_cast<char>(0x80 | (c >> 12 & 0x3F));
        *to++ = static_cast<char>(0x80 | (c >> 6 & 0x3F));
        *to++ = static_cast<char>(0x80 | (c & 0x3F));
    }
    return to;
}

constexpr bool IsHighSurrogate(std::uint32_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool IsLowSurrogate(std::uint32_t unit) { return (unit & 0xFC00) == 0xDC00; }
constexpr std::uint32_t JoinSurrogates(std::uint32_t high, std::uint32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Three bytes of UTF-8 hold any UTF-16 unit, and four a pair of them.
constexpr std::size_t Utf8Room(std::size_t bytes) { return bytes / 2 * 3; }

// Writes UTF-16, least significant byte first; an odd byte at the end is dropped. Gives what is behind it.
inline char* PutUtf16AsUtf8(char* to, std::string_view bytes) {
    const auto unit = [bytes](std::size_t at) { return std::uint32_t{U16(bytes, at)}; };
    const std::size_t size = bytes.size() & ~std::size_t{1};
    for (std::size_t i = 0; i < size; i += 2) {
        std::uint32_t c = unit(i);
        if (IsHighSurrogate(c) && i + 2 < size && IsLowSurrogate(unit(i + 2))) {
            c = JoinSurrogates(c, unit(i + 2));
            i += 2;
        }
        to = PutUtf8(to, c);
    }
    return to;
}

inline std::string TextFromUtf16(std::string_view bytes) {
    std::string text(Utf8Room(bytes.size()), '\0');
    text.resize(static_cast<std::size_t>(PutUtf16AsUtf8(text.data(), bytes) - text.data()));
    return text;
}

}  // namespace delvane
