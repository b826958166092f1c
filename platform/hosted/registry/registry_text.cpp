// The form of the file, line by line:
//
//     WINE REGISTRY Version 2
//     ;; a comment                            #arch=win64 and other options
//     [Key\\Sub] 1795385263                   a key and its time in Unix seconds
//     #time=1dd7acde5e01048                   options of the key: a finer time, #link, #class="..."
//     @="text"                                the unnamed value
//     "name"=str(2):"%SystemRoot%\\x"         also str(7):, dword:0000002a
//     "name"=hex(3):01,02,\                   bytes, the list may go on in the next line
//       03
//
// Texts are escaped UTF-16: \\ \" \[ \], the letters of C, up to three octal digits, or \x and up to four
// hexadecimal ones, a surrogate pair as two such escapes. Wine writes ASCII alone but reads UTF-8, so other bytes are
// taken for UTF-8 here.
#include "platform/hosted/registry/registry_text.h"

#include <algorithm>
#include <cstring>

#include "platform/hosted/registry/registry_escape.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace delvane {

using namespace registry_escape;

namespace {

constexpr std::string_view kHeader = "WINE REGISTRY Version 2";

constexpr const char* kEndsInValue = "the text ends inside a value";
constexpr const char* kEndsInKey = "the text ends inside a key line";

// The first character of a line that cannot be the middle of a list of bytes.
bool BeginsLine(char c) { return c == '[' || c == '"' || c == '@' || c == '#' || c == ';' || c == '\r' || c == '\n'; }

bool StartsWith(const char* at, const char* end, std::string_view prefix) {
    return std::string_view(at, static_cast<std::size_t>(end - at)).starts_with(prefix);
}

}  // namespace

CRegistryText::CRegistryText(std::string_view text)
    : m_pBegin(text.data()), m_pEnd(text.data() + text.size()), m_pNext(m_pEnd) {
    std::string_view first = text.substr(0, text.find('\n'));
    const bool ended = first.size() < text.size();
    if (first.ends_with('\r')) first.remove_suffix(1);
    m_bHeader = first == kHeader;
    if (!m_bHeader) {
        m_bEndSeen = true;
        m_bCut = !ended && kHeader.starts_with(first);
        Note(m_pBegin, "the file does not begin with \"WINE REGISTRY Version 2\"");
        return;
    }
    SkipLine(m_pBegin);
    for (char c = FindLine(); c == '"' || c == '@'; c = FindLine()) {
        Note(m_pNext, "a value in front of the first key");
        SkipValue(m_pNext);
    }
}

bool CRegistryText::NextKey(CKey& key) {
    while (FindKey()) {
        if (ReadKey(key)) return true;
    }
    return false;
}

bool CRegistryText::NextValue(CValue& value) {
    for (;;) {
        const char c = FindLine();
        if (c != '"' && c != '@') return false;
        if (ReadValue(value)) return true;
    }
}

// The next bracket with nothing but blanks in front of it in its line. None stands so inside a value: a line end within
// a text is escaped, and a list of bytes holds no bracket.
bool CRegistryText::FindKey() {
    for (const char* at = m_pNext; at < m_pEnd; ++at) {
        at = static_cast<const char*>(std::memchr(at, '[', static_cast<std::size_t>(m_pEnd - at)));
        if (at == nullptr) break;
        const char* before = at;
        while (before > m_pNext && (IsBlank(before[-1]) || before[-1] == '\r')) {
            --before;
        }
        if (before == m_pNext || before[-1] == '\n') {
            m_pKeyLine = at + 1;
            return true;
        }
    }
    m_pNext = m_pEnd;
    NoteEnd();
    return false;
}

// Keys come in the order of their paths, so most of a line is that of the line before, and is not decoded again.
bool CRegistryText::ReadKey(CKey& key) {
    const std::size_t most = m_components.empty() ? 0 : m_components.back().m_nEscaped;
    const std::size_t common =
        CommonLength(m_pKeyLine, m_pLastKeyLine, std::min(most, static_cast<std::size_t>(m_pEnd - m_pKeyLine)));
    while (!m_components.empty() && m_components.back().m_nEscaped > common)
        m_components.pop_back();
    m_pLastKeyLine = m_pKeyLine;
    key.m_nCommon = m_components.empty() ? 0 : m_components.back().m_nDecoded;
    const CDecoded path = Decode<']'>(m_pKeyLine, m_pEnd, m_path, "a key without a closing bracket", &m_components);
    if (path.m_pReason != nullptr) {
        m_components.clear();
        const char* const end = GetLineEnd(path.m_pNext);
        if (end == m_pEnd) {
            NoteCut(kEndsInKey);
        } else {
            Note(path.m_pNext, path.m_pReason);
        }
        SkipLine(end);
        return false;
    }
    key.m_path = {m_path.data(), path.m_nLength};
    // Every escape is longer than what it stands for.
    const CComponent last = m_components.empty() ? CComponent{} : m_components.back();
    const bool isPlain = m_pKeyLine + last.m_nEscaped + path.m_nLength + 1 == path.m_pNext + last.m_nDecoded;
    key.m_pName = isPlain ? m_pKeyLine + last.m_nEscaped : nullptr;
    key.m_nCommon = std::min(key.m_nCommon, path.m_nLength);
    const char* at = SkipBlanks(path.m_pNext, m_pEnd);
    while (at < m_pEnd && *at >= '0' && *at <= '9')
        ++at;
    FinishLine(at);
    key.m_bIsLink = ReadOptions();
    return true;
}

// The options of a key stand between its line and its first value. Tells whether one of them makes it a link.
bool CRegistryText::ReadOptions() {
    bool isLink = false;
    for (;;) {
        while (m_pNext < m_pEnd && (IsBlank(*m_pNext) || *m_pNext == '\r' || *m_pNext == '\n')) {
            ++m_pNext;
        }
        if (m_pNext == m_pEnd || (*m_pNext != '#' && *m_pNext != ';')) return isLink;
        isLink = isLink || StartsWith(m_pNext, m_pEnd, "#link");
        SkipLine(GetLineEnd(m_pNext));
    }
}

// Goes to the next line that is a key or a value and gives its first character; 0 at the end of the text.
char CRegistryText::FindLine() {
    while (m_pNext < m_pEnd) {
        const char c = *m_pNext;
        if (c == '"' || c == '@' || c == '[') return c;
        if (IsBlank(c) || c == '\r' || c == '\n') {
            ++m_pNext;
            continue;
        }
        const char* const end = GetLineEnd(m_pNext);
        if (c != '#' && c != ';' && end < m_pEnd) Note(m_pNext, "a line that is neither a key nor a value");
        SkipLine(end);
    }
    NoteEnd();
    return 0;
}

bool CRegistryText::ReadValue(CValue& value) {
    const char* at = ReadName(value);
    if (at == nullptr) return false;
    if (StartsWith(at, m_pEnd, "dword:")) {
        at = ReadNumber(at + 6, value);
    } else if (StartsWith(at, m_pEnd, "hex")) {
        at = ReadHex(at + 3, value);
    } else {
        at = ReadText(at, value);
    }
    if (at == nullptr) return false;
    FinishLine(at);
    return true;
}

// The parts of a value: each begins at `at` (ReadName at the start of the line) and gives what is behind it, null when
// it cannot be read.
const char* CRegistryText::ReadName(CValue& value) {
    const char* at = m_pNext + 1;
    value.m_name = {};
    if (*m_pNext == '"') {
        const CDecoded name = Decode<'"'>(at, m_pEnd, m_name, "a value name without a closing quotation mark");
        if (name.m_pReason != nullptr) return Refuse(name.m_pNext, name.m_pReason);
        value.m_name = {m_name.data(), name.m_nLength};
        at = name.m_pNext;
    }
    at = SkipBlanks(at, m_pEnd);
    if (at == m_pEnd || *at != '=') return Refuse(at, "a value without an equals sign");
    return SkipBlanks(at + 1, m_pEnd);
}

const char* CRegistryText::ReadNumber(const char* at, CValue& value) {
    const char* const digits = at;
    const auto number = ReadHexNumber(at, m_pEnd, 8);
    // Wine writes eight digits; at the end of the text fewer may be what a cut has left.
    const bool complete = at < m_pEnd ? IsBlank(*at) || *at == '\r' || *at == '\n' : at - digits == 8;
    if (at == digits || !complete) return Refuse(at, "a number that is not one to eight hexadecimal digits");
    m_data.resize(std::max(m_data.size(), sizeof number));
    for (unsigned i = 0; i < sizeof number; ++i) {
        m_data[i] = static_cast<char>(number >> 8 * i);
    }
    value.m_dwType = REG_DWORD;
    value.m_data = {m_data.data(), sizeof number};
    return at;
}

const char* CRegistryText::ReadText(const char* at, CValue& value) {
    struct CTextForm {
        std::string_view m_opening;
        std::uint32_t m_dwType;
    };
    static constexpr std::array<CTextForm, 4> kForms = {
        {{"\"", REG_SZ}, {"str(2):\"", REG_EXPAND_SZ}, {"str(7):\"", REG_MULTI_SZ}, {"str:\"", REG_SZ}}};
    for (const CTextForm& form : kForms) {
        if (!StartsWith(at, m_pEnd, form.m_opening)) continue;
        const CDecoded text =
            Decode<'"'>(at + form.m_opening.size(), m_pEnd, m_data, "a value without a closing quotation mark");
        if (text.m_pReason != nullptr) return Refuse(text.m_pNext, text.m_pReason);
        m_data[text.m_nLength] = '\0';  // the file leaves the terminator out
        value.m_dwType = form.m_dwType;
        value.m_data = {m_data.data(), text.m_nLength + 1};
        return text.m_pNext;
    }
    return Refuse(at, "data of an unknown form");
}

// `:` or `(type):`, and the bytes behind it.
const char* CRegistryText::ReadHex(const char* at, CValue& value) {
    value.m_dwType = REG_BINARY;
    if (StartsWith(at, m_pEnd, "(")) {
        const char* const digits = ++at;
        value.m_dwType = ReadHexNumber(at, m_pEnd, 8);
        if (at == digits || !StartsWith(at, m_pEnd, ")")) {
            return Refuse(at, "a type that is not one to eight hexadecimal digits");
        }
        ++at;
    }
    if (!StartsWith(at, m_pEnd, ":")) return Refuse(at, "data of an unknown form");
    std::size_t length = 0;
    at = ReadBytes(at + 1, length);
    if (at == nullptr) return nullptr;
    value.m_data = {m_data.data(), length};
    if (value.m_dwType == REG_SZ || value.m_dwType == REG_EXPAND_SZ || value.m_dwType == REG_MULTI_SZ) {
        m_text.resize(std::max(m_text.size(), Utf8Room(length)));
        const char* const end = PutUtf16AsUtf8(m_text.data(), value.m_data);
        value.m_data = {m_text.data(), static_cast<std::size_t>(end - m_text.data())};
    }
    return at;
}

const char* CRegistryText::ReadBytes(const char* at, std::size_t& length) {
    constexpr const char* kNoByte = "a byte that is not two hexadecimal digits";
    const auto put = [this, &length](unsigned byte) {
        if (length == m_data.size()) m_data.resize(std::max<std::size_t>(256, length * 2));
        m_data[length++] = static_cast<char>(byte);
    };
    for (;;) {
        while (m_pEnd - at >= 3 && at[2] == ',') {
            const unsigned high = Digit(at);
            const unsigned low = Digit(at + 1);
            if (((high | low) & kNoDigit) != 0) break;
            put(high << 4 | low);
            at += 3;
        }
        at = SkipBlanks(at, m_pEnd);
        if (at == m_pEnd) return Refuse(at, kNoByte);  // how many more there were is not known
        if (*at == '\r' || *at == '\n') return at;
        if (*at == '\\') {
            at = ContinueBytes(at);
            if (at == nullptr) return nullptr;
            continue;
        }
        // The last byte of the list. Wine also reads one digit for a byte, and blanks around a comma.
        const char* const digits = at;
        const auto byte = ReadHexNumber(at, m_pEnd, 2);
        const bool found = at > digits;
        at = SkipBlanks(at, m_pEnd);
        if (!found || (at < m_pEnd && *at != ',' && *at != '\\' && *at != '\r' && *at != '\n')) {
            return Refuse(at, kNoByte);
        }
        put(byte);
        if (at < m_pEnd && *at == ',') ++at;
    }
}

// From the backslash that ends a line of bytes to the bytes of the next line.
const char* CRegistryText::ContinueBytes(const char* at) {
    const char* next = at + 1;
    if (next < m_pEnd && *next == '\r') ++next;
    if (next < m_pEnd && *next != '\n') return Refuse(at, "a backslash inside a list of bytes");
    if (next < m_pEnd) next = SkipBlanks(next + 1, m_pEnd);
    m_pNext = next;
    if (next == m_pEnd) {
        NoteCut(kEndsInValue);
        return nullptr;
    }
    if (!BeginsLine(*next)) return next;
    Note(next, "a list of bytes that breaks off in the line above");
    return nullptr;
}

const char* CRegistryText::GetLineEnd(const char* at) const {
    if (at == m_pEnd) return m_pEnd;
    const void* const end = std::memchr(at, '\n', static_cast<std::size_t>(m_pEnd - at));
    return end == nullptr ? m_pEnd : static_cast<const char*>(end);
}

void CRegistryText::SkipLine(const char* at) {
    const char* const end = GetLineEnd(at);
    m_pNext = end == m_pEnd ? end : end + 1;
}

// Behind what was read of a line there is nothing more.
void CRegistryText::FinishLine(const char* at) {
    while (at < m_pEnd && (IsBlank(*at) || *at == '\r')) {
        ++at;
    }
    if (at < m_pEnd && *at == '\n') {
        m_pNext = at + 1;
        return;
    }
    const char* const end = GetLineEnd(at);
    if (end < m_pEnd) Note(at, "something behind the end of a key or a value");
    SkipLine(end);
}

// Passes over the rest of a value that cannot be read, with the lines that its list of bytes goes on in.
void CRegistryText::SkipValue(const char* at) {
    for (;;) {
        const char* const begin = at;
        const char* const end = GetLineEnd(at);
        SkipLine(end);
        const char* last = end;
        if (last > begin && last[-1] == '\r') --last;
        if (last == begin || last[-1] != '\\') return;
        at = SkipBlanks(m_pNext, m_pEnd);
        if (at == m_pEnd || BeginsLine(*at)) return;
    }
}

// A value that went wrong at `at`; always null. In a line without an end the cause is that the text was cut.
const char* CRegistryText::Refuse(const char* at, const char* reason) {
    if (GetLineEnd(at) == m_pEnd) {
        NoteCut(kEndsInValue);
    } else {
        Note(at, reason);
    }
    SkipValue(at);
    return nullptr;
}

void CRegistryText::Note(const char* at, const char* reason) {
    if (m_nProblems++ != 0) return;
    m_strProblem = "line " + std::to_string(1 + std::count(m_pBegin, at, '\n')) + ": " + reason;
}

void CRegistryText::NoteCut(const char* reason) {
    if (m_bCut) return;
    m_bCut = true;
    Note(m_pEnd[-1] == '\n' ? m_pEnd - 1 : m_pEnd, reason);  // in the last line
}

// Looks at how the text ends, once the end is reached.
void CRegistryText::NoteEnd() {
    if (m_bEndSeen) return;
    m_bEndSeen = true;
    const std::string_view text(m_pBegin, static_cast<std::size_t>(m_pEnd - m_pBegin));
    if (!text.ends_with('\n')) {
        NoteCut("the last line has no end");
    } else if (text.ends_with("\\\n") || text.ends_with("\\\r\n")) {
        NoteCut(kEndsInValue);
    }
}

}  // namespace delvane
