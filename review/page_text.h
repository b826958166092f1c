// How the page of a review is written. What comes from a machine is made safe here, and nowhere else.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include "platform/text.h"

namespace delvane {

struct CChange;

// Where a text stands. A character that controls, changes the direction or has no width is written as U+202E and the
// like, in <mark>; bytes that are no UTF-8 as U+FFFD.
enum class EText {
    kLine,   // a name, a path
    kTitle,  // the page's title or the value of an attribute, which hold no markup
    kData,   // data: tabs and line feeds stay
    kList,   // data of several texts, a NUL between two: each gets a line of its own
};

// A part of a text, in bytes.
struct CPart {
    std::size_t m_nBegin = 0;
    std::size_t m_nEnd = 0;
};

// One of two sides that are compared, or the only one there is.
struct CSide {
    CSide(std::string_view tag, std::string_view text, std::string_view opposite);

    std::string_view m_tag;       // "del", "ins", or empty: nothing is marked
    std::string_view m_text;      // this side's
    std::string_view m_opposite;  // and what it is held against
    CPart m_part;  // of m_text: what remains without the beginning and the end that both share, at bounds of characters
};

// The page as it grows, handed to the stream piece by piece. A literal is markup; any other text is taken for one of a
// machine and made safe.
class CPageText {
public:
    explicit CPageText(std::ostream& stream) : m_stream(stream) {}
    ~CPageText() { Flush(); }
    CPageText(const CPageText&) = delete;
    CPageText& operator=(const CPageText&) = delete;

    CPageText& operator<<(const char* markup) { return Raw(markup); }
    CPageText& operator<<(std::string_view text) { return Text(text); }
    CPageText& operator<<(std::integral auto number) { return Raw(std::to_string(number)); }
    CPageText& Raw(std::string_view markup) {
        m_strHtml += markup;
        return *this;
    }
    CPageText& Text(std::string_view text, EText form = EText::kLine);
    // A path, with its last part set off; or that of a key and the name of a value.
    CPageText& Object(std::string_view path, std::optional<std::string_view> name);
    // A text that is marked as a whole where it differs.
    CPageText& Field(std::string_view text, std::string_view tag, bool differs, EText form = EText::kLine);
    // Data with their differing part marked; long ones are cut, and a way leads to the whole.
    CPageText& Data(const CSide& side, EText form);
    CPageText& Dump(const CSide& side);  // 16 bytes a line: offset, bytes, characters

    void FlushSome() {
        if (m_strHtml.size() >= kPiece) Flush();
    }

private:
    static constexpr std::size_t kPiece = std::size_t{1} << 18;

    void Flush();
    void Marked(const CSide& side, CPart part, EText form);
    void DumpLines(const CSide& side, std::size_t first, std::size_t end);
    void Rest(std::size_t size, auto write);

    std::ostream& m_stream;
    CString m_strHtml;
    std::size_t m_nRoom = std::size_t{48} << 20;  // for whole data behind cut ones, in bytes of the page
};

// The page's style and script, with their SHA-256 in hexadecimal: resources/review.css and .js, put into the program by
// the build.
struct CPageResource {
    std::string_view m_text;
    std::string_view m_hash;
};
extern const CPageResource kReviewStyle;
extern const CPageResource kReviewScript;

// "2026-11-23 10:00:00 UTC"
CString PageTime(std::uint64_t ticks);

// A change as an element of a list.
void WriteChangeItem(CPageText& page, const CChange& change);

}  // namespace delvane
