#include "review/page_text.h"

#include <algorithm>

#include "review/describe.h"

namespace delvane {
namespace {

constexpr std::size_t kLongText = 600;  // bytes that are shown whole
constexpr std::size_t kCutText = 400;   // and of a longer text
constexpr std::size_t kLead = 80;       // of them ahead of the difference
constexpr std::size_t kLineSize = 16;
constexpr std::size_t kLongDump = 16;  // lines
constexpr std::size_t kCutDump = 6;

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The nearest bound of a character that does not lie behind. A character has at most three continuation bytes; more of
// them belong to none.
std::size_t BoundBefore(std::string_view text, std::size_t at) {
    std::size_t bound = at;
    for (int steps = 0; bound > 0 && bound < text.size() && IsContinuation(text[bound]); --bound) {
        if (++steps > 3) return at;
    }
    return bound;
}

// The length of what needs no look at its characters.
std::size_t PlainLength(std::string_view text) {
    const auto isPlain = [](char c) { return c >= 0x20 && c < 0x7F && c != '<' && c != '>' && c != '&' && c != '"'; };
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPlain) - text.begin());
}

// The one place where text of a machine becomes text of the page.
void AppendText(CString& html, std::string_view text, EText form) {
    while (true) {
        const std::size_t plain = PlainLength(text);
        html += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) return;
        const CCharacter character = NextCharacter(text);
        const std::uint32_t c = character.m_nNumber;
        if (!character.IsValid()) {
            html += kReplacement;
        } else if (!character.IsInvisible() || (form == EText::kData && (c == '\t' || c == '\n'))) {
            html += EscapedCharacter(character.m_bytes);
        } else if (form == EText::kList && c == 0) {
            html += '\n';
        } else {
            html += Printed(form == EText::kTitle ? "U+%04X" : "<mark>U+%04X</mark>", c);
        }
    }
}

void AppendTag(CString& html, std::string_view begin, std::string_view tag) {
    if (!tag.empty()) ((html += begin) += tag) += '>';
}

}  // namespace

CSide::CSide(std::string_view tag, std::string_view text, std::string_view opposite)
    : m_tag(tag), m_text(text), m_opposite(opposite) {
    if (tag.empty()) return;
    const auto same = std::mismatch(text.begin(), text.end(), opposite.begin(), opposite.end()).first - text.begin();
    const auto bound = static_cast<std::size_t>(same);
    m_part.m_nBegin = std::min(BoundBefore(text, bound), BoundBefore(opposite, bound));
    const std::string_view tail = text.substr(m_part.m_nBegin);
    const std::string_view oppositeTail = opposite.substr(m_part.m_nBegin);
    const auto end = std::mismatch(tail.rbegin(), tail.rend(), oppositeTail.rbegin(), oppositeTail.rend()).first;
    m_part.m_nEnd = text.size() - static_cast<std::size_t>(end - tail.rbegin());
    while (m_part.m_nEnd < text.size() && IsContinuation(text[m_part.m_nEnd]))
        ++m_part.m_nEnd;
}

CPageText& CPageText::Text(std::string_view text, EText form) {
    AppendText(m_strHtml, text, form);
    return *this;
}

CPageText& CPageText::Object(std::string_view path, std::optional<std::string_view> name) {
    if (name) return *this << "<code>" << path << "</code> <b>" << *name << "</b>";
    const std::size_t last = path.rfind('\\') + 1;  // 0 where there is none
    return *this << "<code>" << path.substr(0, last) << "<b>" << path.substr(last) << "</b></code>";
}

CPageText& CPageText::Field(std::string_view text, std::string_view tag, bool differs, EText form) {
    const std::string_view marked = differs ? tag : std::string_view();
    AppendTag(m_strHtml, "<", marked);
    AppendText(m_strHtml, text, form);
    AppendTag(m_strHtml, "</", marked);
    return *this;
}

void CPageText::Flush() {
    m_stream.write(m_strHtml.data(), static_cast<std::streamsize>(m_strHtml.size()));
    m_strHtml.clear();
}

// A part of a side's text, in an element that keeps its lines where it has some.
void CPageText::Marked(const CSide& side, CPart part, EText form) {
    const auto between = [&](std::size_t begin, std::size_t end) {
        begin = std::clamp(begin, part.m_nBegin, part.m_nEnd);
        return side.m_text.substr(begin, std::clamp(end, begin, part.m_nEnd) - begin);
    };
    const char lineEnd = form == EText::kList ? '\0' : '\n';
    const bool hasLines = form != EText::kLine && between(0, part.m_nEnd).find(lineEnd) != std::string_view::npos;
    const auto [begin, end] = side.m_part;
    Raw(hasLines ? "<pre>\n" : "<code>");  // the line feed behind <pre> is none of the text
    Raw(part.m_nBegin != 0 ? "\u2026" : "").Text(between(0, begin), form);
    Field(between(begin, end), side.m_tag, begin < end, form).Text(between(end, side.m_text.size()), form);
    Raw(part.m_nEnd != side.m_text.size() ? "\u2026" : "").Raw(hasLines ? "</pre>" : "</code>");
}

// The way to the whole of what was cut. Behind a page of enormous data stand the lines.
void CPageText::Rest(std::size_t size, auto write) {
    constexpr std::size_t kLargestFactor = 6;  // a byte of data as a dump or as markup
    if (size * kLargestFactor > m_nRoom) {
        *this << "<p class=\"soft\">cut; all " << size
              << " bytes stand in the review's lines (<code>--write jsonl</code>)</p>";
        return;
    }
    *this << "<details class=\"rest\"><summary>all " << size << " bytes</summary>";
    const std::size_t begin = m_strHtml.size();
    write();
    m_nRoom -= std::min(m_nRoom, m_strHtml.size() - begin);
    Raw("</details>");
}

CPageText& CPageText::Data(const CSide& side, EText form) {
    const std::string_view text = side.m_text;
    if (text.empty()) return Raw("<span>empty</span>");
    if (text.size() <= kLongText) {
        Marked(side, {0, text.size()}, form);
        return *this;
    }
    const std::size_t first = std::min(side.m_part.m_nBegin, text.size() - kCutText + kLead);
    const std::size_t begin = BoundBefore(text, first > kLead ? first - kLead : 0);
    Marked(side, {begin, BoundBefore(text, std::min(begin + kCutText, text.size()))}, form);
    Rest(text.size(), [&] { Marked(side, {0, text.size()}, form); });
    return *this;
}

// Bytes at the same place are held against each other where the sizes are the same; else what lies between the common
// beginning and the common end differs.
void CPageText::DumpLines(const CSide& side, std::size_t first, std::size_t end) {
    const std::string_view bytes = side.m_text;
    const auto differs = [&](std::size_t at) {
        if (bytes.size() == side.m_opposite.size()) return bytes[at] != side.m_opposite[at];
        return at >= side.m_part.m_nBegin && at < side.m_part.m_nEnd;
    };
    // Writes what `append` gives for each byte of a line, with each run of those that differ in one element.
    const auto writeRuns = [&](std::size_t begin, std::size_t stop, std::string_view between, auto append) {
        bool isOpen = false;
        for (std::size_t at = begin; at < stop; ++at) {
            const bool isDifferent = differs(at);
            if (isOpen && !isDifferent) AppendTag(m_strHtml, "</", side.m_tag);
            if (at != begin) m_strHtml += at - begin == kLineSize / 2 && !between.empty() ? "  " : between;
            if (!isOpen && isDifferent) AppendTag(m_strHtml, "<", side.m_tag);
            isOpen = isDifferent;
            append(bytes.substr(at, 1));
        }
        if (isOpen) AppendTag(m_strHtml, "</", side.m_tag);
    };
    Raw("<pre class=\"hex\" tabindex=\"0\">\n");
    for (std::size_t line = first; line < end; ++line) {
        const std::size_t begin = line * kLineSize;
        const std::size_t stop = std::min(begin + kLineSize, bytes.size());
        const auto offset = static_cast<unsigned long long>(begin);
        Raw(Printed(bytes.size() > 0x10000 ? "%08llx  " : "%04llx  ", offset));
        writeRuns(begin, stop, " ", [&](std::string_view byte) { m_strHtml += HexText(byte); });
        const std::size_t missing = kLineSize - (stop - begin);
        m_strHtml.append(3 * missing + (missing >= kLineSize / 2 ? 1 : 0) + 2, ' ');
        writeRuns(begin, stop, "", [&](std::string_view byte) {
            const bool isShown = byte[0] >= 0x20 && byte[0] < 0x7F;
            AppendText(m_strHtml, isShown ? byte : ".", EText::kLine);
        });
        m_strHtml += '\n';
    }
    Raw("</pre>");
}

CPageText& CPageText::Dump(const CSide& side) {
    const std::string_view bytes = side.m_text;
    if (bytes.empty()) return Raw("<span>empty</span>");
    const std::size_t lines = (bytes.size() + kLineSize - 1) / kLineSize;
    if (lines <= kLongDump) {
        DumpLines(side, 0, lines);
        return *this;
    }
    std::size_t first = std::min(side.m_part.m_nBegin / kLineSize, lines - kCutDump);
    first -= std::min<std::size_t>(first, 1);
    DumpLines(side, first, first + kCutDump);
    Rest(bytes.size(), [&] { DumpLines(side, 0, lines); });
    return *this;
}

}  // namespace delvane
