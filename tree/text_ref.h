// A text that a node points to, in the form of the snapshot file.
#pragma once

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string_view>

#include "platform/text.h"

namespace delvane {

// A length in front of a text: one byte below 255; else 0xFF and two bytes; from 65534 on 0xFF 0xFF 0xFF and four
// bytes, least significant first.
inline constexpr std::size_t kLargestTextHead = 7;
inline constexpr std::size_t kShortestMiddleText = 0xFF;
inline constexpr std::size_t kShortestLongText = 0xFFFE;

// Puts the head of a text of that length at `into` and gives its size.
std::size_t EncodeTextHead(std::size_t length, char* into);
// The text with its head in front.
CString EncodeText(std::string_view text);

// One pointer to head and text, so that a node needs eight bytes for a name and a loaded one can point into its file.
// Whoever makes one has checked the head and keeps the bytes alive. With two std::string in its place a file node would
// have 120 bytes and not 72, and each text of more than 15 bytes a block of its own.
class CTextRef {
public:
    constexpr CTextRef() = default;  // the empty text
    explicit constexpr CTextRef(const char* encoded) : m_pEncoded(encoded) {}

    std::string_view Get() const {
        const auto first = static_cast<unsigned char>(*m_pEncoded);
        if (first != 0xFF) return {m_pEncoded + 1, first};
        return GetLong();
    }
    operator std::string_view() const { return Get(); }  // NOLINT(google-explicit-constructor): it is a text
    bool empty() const { return *m_pEncoded == '\0'; }
    std::size_t size() const { return Get().size(); }

    friend bool operator==(CTextRef a, CTextRef b) { return a.Get() == b.Get(); }
    friend bool operator==(CTextRef a, std::string_view b) { return a.Get() == b; }
    friend bool operator==(CTextRef a, const char* b) { return a.Get() == b; }
    friend std::ostream& operator<<(std::ostream& stream, CTextRef text) { return stream << text.Get(); }

private:
    std::string_view GetLong() const;

    const char* m_pEncoded = "";
};

}  // namespace delvane
