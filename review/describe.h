// What all writers of a review share: machine texts made clean, times, and the words for attributes, types and data.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace delvane {

class CDelvRegKeyObj;
class CDelvRegValObj;

// The text as valid UTF-8: U+FFFD for each maximal part of a sequence that is none. IsCleanText tells whether nothing
// had to be replaced.
CString CleanText(std::string_view text);
bool IsCleanText(std::string_view text);
// The length of the valid UTF-8 sequence at the begin of the text, which is not empty. Where there is none, 0, and
// `bad` is how many bytes make one replacement.
std::size_t SequenceLength(std::string_view text, std::size_t& bad);
std::uint32_t DecodeSequence(std::string_view sequence);  // its character

// The text on one line of a terminal or a report: clean, and "<U+202E>" for each character that controls, changes the
// direction or has no width.
CString VisibleText(std::string_view text);
bool IsInvisible(std::uint32_t character);

// "2026-11-23T10:00:00.0000000Z", for all ticks.
CString IsoTime(std::uint64_t ticks);
CString IsoDate(std::uint64_t ticks);  // the first ten characters

// "readonly", "hidden", ...; a bit without a word as "0x...". In the order of the bits.
std::vector<CString> AttributeWords(std::uint32_t attributes);

constexpr std::uint32_t kRegQword = 11;

// "REG_SZ"; an unknown type as "0x1f".
CString TypeWord(std::uint32_t type);

// The data of a value as they are written: exactly one of the four forms, or the hex digits alone; and the hex digits
// of all bytes beside it where the form does not hold all.
struct CValueData {
    enum class EForm { kText, kNumber, kBigNumber, kTexts, kHex };
    EForm m_form = EForm::kHex;
    CString m_strText;             // REG_SZ, REG_EXPAND_SZ: up to the terminator, raw bytes
    std::uint64_t m_nNumber = 0;   // REG_DWORD; REG_QWORD, which is written as a decimal text
    std::vector<CString> m_texts;  // REG_MULTI_SZ, raw bytes
    bool m_bHex = false;           // the hex digits stand too
};
CValueData DescribeData(const CDelvRegValObj& value);
CString HexText(std::string_view bytes);  // lower case, without separators

// Whether the key holds a link to another key instead of content of its own.
bool IsLinkKey(const CDelvRegKeyObj& key);

}  // namespace delvane
