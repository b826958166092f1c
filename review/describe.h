// What all writers of a review share: machine texts made clean, times, and the words for attributes, types and data.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace delvane {

class CDelvRegKeyObj;
class CDelvRegValObj;

// A character of UTF-8, or a maximal part of a sequence that is none.
struct CCharacter {
    static constexpr std::uint32_t kNone = ~std::uint32_t{0};

    bool IsValid() const { return m_nNumber != kNone; }
    // Whether it controls, changes the direction or has no width.
    bool IsInvisible() const;

    std::string_view m_bytes;
    std::uint32_t m_nNumber = kNone;
};
// Takes the first one off a text, which is not empty.
CCharacter NextCharacter(std::string_view& text);

constexpr std::string_view kReplacement = "\uFFFD";  // stands for bytes that are no UTF-8
CString CleanText(std::string_view text);
bool IsCleanText(std::string_view text);  // nothing has to be replaced
// The text on one line of a terminal or a report: clean, and "<U+202E>" for what cannot be seen.
CString VisibleText(std::string_view text);

// The bytes of a character, or the entity that HTML and XML write for it.
std::string_view EscapedCharacter(std::string_view bytes);

// A text by a format of printf, of at most 63 bytes.
[[gnu::format(printf, 1, 2)]] CString Printed(const char* format, ...);
CString Plural(std::size_t count, std::string_view word);  // "1 change", "2 changes"

// The words with a text between each two.
CString Joined(const auto& words, std::string_view between) {
    CString text;
    for (const auto& word : words)
        (text += text.empty() ? std::string_view() : between) += word;
    return text;
}

// "2026-11-23T10:00:00.0000000Z", for all ticks.
CString IsoTime(std::uint64_t ticks);

// "readonly", "hidden", ...; a bit without a word as "0x...". In the order of the bits.
std::vector<CString> AttributeWords(std::uint32_t attributes);

constexpr std::uint32_t kRegQword = 11;

// "REG_SZ"; an unknown type as "0x1f".
CString TypeWord(std::uint32_t type);

// The data of a value as they are written: in one of the forms, or as hex digits alone; and the hex digits of all bytes
// beside it where the form does not hold all.
struct CValueData {
    enum class EForm { kText, kNumber, kBigNumber, kTexts, kHex };
    EForm m_form = EForm::kHex;
    std::string_view m_text;      // raw bytes. REG_SZ, REG_EXPAND_SZ: up to the terminator; REG_MULTI_SZ: a NUL between
    std::uint64_t m_nNumber = 0;  // REG_DWORD; REG_QWORD, which is written as a decimal text
    bool m_bHex = false;          // the hex digits stand too
};
CValueData DescribeData(const CDelvRegValObj& value);
CString HexText(std::string_view bytes);  // lower case, without separators

// Whether the key holds a link to another key instead of content of its own.
bool IsLinkKey(const CDelvRegKeyObj& key);

}  // namespace delvane
