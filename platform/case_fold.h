// Comparison and mapping of UTF-8 text character by character, and the cases of characters.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/text.h"
#include "platform/utf.h"

namespace delvane {

// Of 0x00 to 0x7F all folds agree.
inline constexpr std::array<unsigned char, 128> kAsciiFold = [] {
    std::array<unsigned char, 128> table{};
    for (unsigned i = 0; i < table.size(); ++i) {
        table[i] = static_cast<unsigned char>(i >= 'A' && i <= 'Z' ? i + ('a' - 'A') : i);
    }
    return table;
}();

// What leads from a character to another form of it. Windows' own tables differ from release to release; with this one,
// which make_case_table writes when the program is built, two machines agree, and the builds do.
struct CCaseForms {
    std::int32_t m_nLower;
    std::int32_t m_nFold;      // what all cases of a letter share
    std::int32_t m_nNameFold;  // the same for names of keys: only where both cases lead to each other
};
extern const std::uint8_t kCaseRowNumbers[];  // by all but the last byte of the character
extern const CCaseForms kCaseRows[][256];

inline const CCaseForms& CaseFormsOf(std::uint32_t c) { return kCaseRows[kCaseRowNumbers[c >> 8]][c & 0xFF]; }

// Of a character, or of what TakeCharacter gives for a byte that is none.
inline std::uint32_t ToLower(std::uint32_t c) { return c + static_cast<std::uint32_t>(CaseFormsOf(c).m_nLower); }
inline std::uint32_t Fold(std::uint32_t c) { return c + static_cast<std::uint32_t>(CaseFormsOf(c).m_nFold); }
inline std::uint32_t FoldInName(std::uint32_t c) { return c + static_cast<std::uint32_t>(CaseFormsOf(c).m_nNameFold); }

constexpr std::uint32_t kBeyondUnicode = 0x110000;

// Takes one character off the text. A byte that begins no valid character stands for itself, above all characters.
inline std::uint32_t TakeCharacter(std::string_view& text) {
    const auto byte = [text](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])); };
    const auto isTail = [&](std::size_t i) { return i < text.size() && (byte(i) & 0xC0) == 0x80; };
    const std::uint32_t first = byte(0);
    std::uint32_t c = kBeyondUnicode + first;
    std::size_t length = 1;
    if (first < 0x80) {
        c = first;
    } else if (first >= 0xC2 && first < 0xE0 && isTail(1)) {
        c = (first & 0x1F) << 6 | (byte(1) & 0x3F);
        length = 2;
    } else if ((first & 0xF0) == 0xE0 && isTail(1) && isTail(2)) {
        const std::uint32_t joined = (first & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
        if (joined >= 0x800 && (joined & 0xF800) != 0xD800) {
            c = joined;
            length = 3;
        }
    } else if (first >= 0xF0 && first < 0xF5 && isTail(1) && isTail(2) && isTail(3)) {
        const std::uint32_t joined =
            (first & 0x07) << 18 | (byte(1) & 0x3F) << 12 | (byte(2) & 0x3F) << 6 | (byte(3) & 0x3F);
        if (joined >= 0x10000 && joined < kBeyondUnicode) {
            c = joined;
            length = 4;
        }
    }
    text.remove_prefix(length);
    return c;
}

// Below 0, 0 or above 0. `fold` is given what is beyond ASCII.
template <class FoldCharacter>
int CompareFolded(std::string_view a, std::string_view b, const FoldCharacter& fold) {
    std::size_t i = 0;
    const std::size_t shorter = a.size() < b.size() ? a.size() : b.size();
    while (i < shorter) {
        const auto x = static_cast<unsigned char>(a[i]);
        const auto y = static_cast<unsigned char>(b[i]);
        if ((x | y) >= 0x80) break;
        if (kAsciiFold[x] != kAsciiFold[y]) return kAsciiFold[x] < kAsciiFold[y] ? -1 : 1;
        ++i;
    }
    a.remove_prefix(i);
    b.remove_prefix(i);
    const auto take = [&fold](std::string_view& text) {
        const std::uint32_t c = TakeCharacter(text);
        return c < kAsciiFold.size() ? kAsciiFold[c] : fold(c);
    };
    while (!a.empty() && !b.empty()) {
        const std::uint32_t x = take(a);
        const std::uint32_t y = take(b);
        if (x != y) return x < y ? -1 : 1;
    }
    return a.empty() ? (b.empty() ? 0 : -1) : 1;
}

// Maps each character of the text, to lower case or folded. What maps to itself is copied, bytes that are no characters
// too.
template <class MapCharacter>
CString MapCharacters(std::string_view text, const MapCharacter& map) {
    const auto isBeyondAscii = [](char c) { return static_cast<signed char>(c) < 0; };
    const auto ascii = std::find_if(text.begin(), text.end(), isBeyondAscii);
    CString result(static_cast<std::size_t>(ascii - text.begin()), '\0');
    std::transform(text.begin(), ascii, result.begin(),
                   [](char c) { return static_cast<char>(kAsciiFold[static_cast<unsigned char>(c)]); });
    text.remove_prefix(result.size());
    while (!text.empty()) {
        const std::string_view before = text;
        const std::uint32_t c = TakeCharacter(text);
        const std::uint32_t mapped = map(c);
        if (mapped == c) {
            result += before.substr(0, before.size() - text.size());
        } else {
            std::array<char, 4> bytes{};
            result.append(bytes.data(), PutUtf8(bytes.data(), mapped));
        }
    }
    return result;
}

}  // namespace delvane
