// A .reg file that makes the registry of one snapshot that of the other, as far as the changes between them are open.
//
// Keys go first, the deepest first. A key goes only when all of its content may go with it: whoever deletes a key
// deletes what lies below it, and something below may have been accepted. Then come keys and values in the order of a
// tree. A name that holds a control character, or bytes that stand for no character, cannot be written in this form; a
// comment shows it.
#include <algorithm>
#include <array>
#include <cstdio>
#include <map>

#include "capture/registry.h"
#include "review/describe.h"
#include "review/formats/writers.h"

namespace delvane {
namespace {

constexpr std::size_t kLongestLine = 78;

bool IsControl(std::uint32_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F); }

// The next UTF-16 unit or pair of a text, where an unpaired surrogate stands as three bytes of its own. Gives false for
// bytes that stand for nothing; they become U+FFFD.
bool TakeCharacter(std::string_view& text, std::uint32_t& character) {
    std::size_t bad = 0;
    const std::size_t length = SequenceLength(text, bad);
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    if (length != 0) {
        character = DecodeSequence(text.substr(0, length));
        text.remove_prefix(length);
        return true;
    }
    const bool isSurrogate =
        text.size() >= 3 && byte(0) == 0xED && byte(1) >= 0xA0 && byte(1) <= 0xBF && (byte(2) & 0xC0) == 0x80;
    character = isSurrogate ? 0xD000U | (byte(1) & 0x3FU) << 6 | (byte(2) & 0x3FU) : 0xFFFDU;
    text.remove_prefix(isSurrogate ? 3 : bad);
    return isSurrogate;
}

CString ToUtf16(std::string_view text) {
    CString units;
    const auto put = [&](std::uint32_t unit) {
        units += static_cast<char>(unit & 0xFF);
        units += static_cast<char>(unit >> 8);
    };
    while (!text.empty()) {
        std::uint32_t character = 0;
        TakeCharacter(text, character);
        if (character < 0x10000) {
            put(character);
        } else {
            put(0xD800 + ((character - 0x10000) >> 10));
            put(0xDC00 + ((character - 0x10000) & 0x3FF));
        }
    }
    return units;
}

// Whether a name may stand in the file as it is.
bool IsWritable(std::string_view name) {
    while (!name.empty()) {
        std::uint32_t character = 0;
        if (!TakeCharacter(name, character) || IsControl(character)) return false;
    }
    return true;
}

// A name in a comment: "<0a>" for what cannot stand there.
CString Shown(std::string_view name) {
    CString shown;
    while (!name.empty()) {
        const std::string_view before = name;
        std::uint32_t character = 0;
        const bool isGood = TakeCharacter(name, character) && !IsControl(character);
        const std::string_view bytes = before.substr(0, before.size() - name.size());
        if (isGood) {
            shown += bytes;
            continue;
        }
        for (const char c : bytes)
            shown += "<" + HexText({&c, 1}) + ">";
    }
    return shown;
}

CString Quoted(std::string_view text) {
    CString quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

CString WholeKey(std::string_view path) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kHives = {{
        {"HKLM", "HKEY_LOCAL_MACHINE"},
        {"HKCU", "HKEY_CURRENT_USER"},
        {"HKCR", "HKEY_CLASSES_ROOT"},
        {"HKU", "HKEY_USERS"},
        {"HKCC", "HKEY_CURRENT_CONFIG"},
    }};
    const std::string_view hive = path.substr(0, path.find('\\'));
    for (const auto& [name, whole] : kHives) {
        if (name == hive) return CString(whole) + CString(path.substr(hive.size()));
    }
    return CString(path);
}

// "hex:" or "hex(7):" and the bytes, in lines as the system's own editor breaks them.
CString HexData(std::uint32_t type, std::string_view bytes, std::size_t column) {
    std::array<char, 24> head{};
    std::snprintf(head.data(), head.size(), "hex(%x):", type);
    CString text = type == REG_BINARY ? "hex:" : head.data();
    column += text.size();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text += HexText(bytes.substr(i, 1));
        if (i + 1 == bytes.size()) break;
        text += ',';
        column += 3;
        if (column < kLongestLine) continue;
        text += "\\\n  ";
        column = 2;
    }
    return text;
}

CString DataText(const CDelvRegValObj& value, std::size_t column) {
    const std::string_view data = value.m_data;
    switch (value.m_dwType) {
        case REG_SZ: {
            const std::string_view text = data.substr(0, data.empty() ? 0 : data.size() - 1);
            // Whatever a name cannot hold, a quoted text cannot either. NULs are among it.
            if (data.ends_with('\0') && IsWritable(text) && IsCleanText(text)) return Quoted(text);
            return HexData(REG_SZ, ToUtf16(data), column);
        }
        case REG_EXPAND_SZ:
        case REG_MULTI_SZ:
            return HexData(value.m_dwType, ToUtf16(data), column);
        case REG_DWORD:
            if (data.size() == 4) {
                std::array<char, 24> text{};
                std::snprintf(text.data(), text.size(), "dword:%08x",
                              static_cast<unsigned>(DescribeData(value).m_nNumber));
                return text.data();
            }
            [[fallthrough]];
        default:
            return HexData(value.m_dwType, data, column);
    }
}

bool IsUnnamed(const CChange& change) { return change.m_name == "(default)"; }

// Whether the key holds a value that is named like an unnamed one, beside it.
bool HasTwoUnnamed(const CDelvObj& value) {
    const auto& key = static_cast<const CDelvRegKeyObj&>(*value.m_pParent);
    return std::count_if(key.m_values.begin(), key.m_values.end(),
                         [](const CDelvObj* sibling) { return sibling->m_name == "(default)"; }) > 1;
}

bool IsRegistry(const CChange& change) { return change.m_kind == EKind::kKey || change.m_kind == EKind::kValue; }

enum class EDirection { kRedo, kUndo };

class CRegistryWriter {
public:
    CRegistryWriter(const CReview& review, std::ostream& stream, EDirection direction)
        : m_review(review), m_stream(stream), m_direction(direction) {}

    void Write() {
        CollectDeletedKeys();
        CollectContents();
        m_stream.write("\xFF\xFE", 2);
        Line("Windows Registry Editor Version 5.00");
        Line("");
        const bool isRedo = m_direction == EDirection::kRedo;
        Line("; " + CString(isRedo ? "redo" : "undo") + ": makes the registry of " +
             Shown(isRedo ? m_review.m_baseline.m_strName : m_review.m_current.m_strName) + " that of " +
             Shown(isRedo ? m_review.m_current.m_strName : m_review.m_baseline.m_strName));
        if (!m_deletedKeys.empty()) {
            Line(
                "; A capture reads a link to a key as that key. If one of these is a link, what it leads to is "
                "deleted");
            Line("; through it, and the link stays: look through them first.");
        }
        Line("");
        WriteDeletedKeys();
        WriteContents();
    }

private:
    // What is to be done in one key.
    struct CContent {
        std::string_view m_path;
        std::vector<const CChange*> m_deleted;
        std::vector<const CChange*> m_set;
    };

    const CDelvObj* Wanted(const CChange& change) const {
        return m_direction == EDirection::kRedo ? change.m_pAfter : change.m_pBefore;
    }
    bool Goes(const CChange& change) const { return Wanted(change) == nullptr; }

    void Line(const CString& text) {
        CString line;
        for (const char c : text)
            line += c == '\n' ? CString("\r\n") : CString(1, c);
        const CString units = ToUtf16(line + "\r\n");
        m_stream.write(units.data(), static_cast<std::streamsize>(units.size()));
    }

    // A key that goes stands ahead of its whole content, which goes too.
    void CollectDeletedKeys() {
        const std::vector<CChange>& changes = m_review.m_changes;
        m_coversContent.assign(changes.size(), false);
        for (std::size_t at = 0; at < changes.size(); ++at) {
            const CChange& key = changes[at];
            if (key.m_kind != EKind::kKey || !Goes(key) || m_coversContent[at]) continue;
            std::size_t end = at;
            bool allOpen = true;
            for (; end < changes.size() && changes[end].m_change == key.m_change && IsRegistry(changes[end]) &&
                   changes[end].IsWithin(key.m_path);
                 ++end)
                allOpen = allOpen && changes[end].m_status == EStatus::kOpen;
            if (!allOpen) {
                if (key.m_status == EStatus::kOpen) m_kept.push_back(&key);
                continue;
            }
            for (std::size_t i = at; i < end; ++i) {
                m_coversContent[i] = true;
                if (changes[i].m_kind == EKind::kKey) m_deletedKeys.push_back(&changes[i]);
            }
        }
        const auto depth = [](const CChange* key) { return std::count(key->m_path.begin(), key->m_path.end(), '\\'); };
        std::stable_sort(m_deletedKeys.begin(), m_deletedKeys.end(),
                         [&](const CChange* a, const CChange* b) { return depth(a) > depth(b); });
    }

    void CollectContents() {
        for (std::size_t at = 0; at < m_review.m_changes.size(); ++at) {
            const CChange& change = m_review.m_changes[at];
            const bool isValue = change.m_kind == EKind::kValue;
            if (!IsRegistry(change) || change.m_status != EStatus::kOpen || m_coversContent[at]) continue;
            if (!isValue && Goes(change)) continue;
            CContent& content = m_contents[TreeOrder(change.m_path)];
            content.m_path = change.m_path;
            if (isValue) (Goes(change) ? content.m_deleted : content.m_set).push_back(&change);
        }
    }

    // So that a key stands ahead of what lies below it, and that ahead of keys whose name it begins.
    static CString TreeOrder(std::string_view path) {
        CString order = FoldCase(path);
        std::replace(order.begin(), order.end(), '\\', '\0');
        return order;
    }

    void WriteDeletedKeys() {
        for (const CChange* key : m_kept)
            Line("; stays, as something in it is accepted or noise: " + Shown(WholeKey(key->m_path)));
        for (const CChange* key : m_deletedKeys) {
            if (IsLinkKey(static_cast<const CDelvRegKeyObj&>(key->GetNode())))
                Line("; a link to another key: it is deleted through the link and may stay");
            const CString path = WholeKey(key->m_path);
            Line(IsWritable(path) ? "[-" + path + "]"
                                  : "; cannot be written, so it stays unless a key above it goes: " + Shown(path));
        }
        if (!m_kept.empty() || !m_deletedKeys.empty()) Line("");
    }

    void WriteContents() {
        for (const auto& [order, content] : m_contents) {
            if (!IsWritable(content.m_path)) {
                Line("; cannot be written, with its values: " + Shown(WholeKey(content.m_path)));
                Line("");
                continue;
            }
            Line("[" + WholeKey(content.m_path) + "]");
            for (const CChange* change : content.m_deleted)
                WriteValue(*change);
            for (const CChange* change : content.m_set)
                WriteValue(*change);
            Line("");
        }
    }

    void WriteValue(const CChange& change) {
        if (!IsWritable(change.m_name)) return Line("; cannot be written: the value " + Shown(change.m_name));
        if (IsUnnamed(change) && HasTwoUnnamed(change.GetNode()))
            Line("; the key has two values of this look: one without a name, and one with the name (default)");
        const CString name = (IsUnnamed(change) ? "@" : Quoted(change.m_name)) + "=";
        const CDelvObj* const value = Wanted(change);
        Line(name + (value == nullptr ? "-" : DataText(static_cast<const CDelvRegValObj&>(*value), name.size())));
    }

    const CReview& m_review;
    std::ostream& m_stream;
    EDirection m_direction;
    std::vector<bool> m_coversContent;          // by change: it goes with a key that goes
    std::vector<const CChange*> m_deletedKeys;  // the deepest first
    std::vector<const CChange*> m_kept;         // open, and cannot go
    std::map<CString, CContent> m_contents;
};

}  // namespace

void WriteUndo(const CReview& review, std::ostream& stream) {
    CRegistryWriter(review, stream, EDirection::kUndo).Write();
}

void WriteRedo(const CReview& review, std::ostream& stream) {
    CRegistryWriter(review, stream, EDirection::kRedo).Write();
}

}  // namespace delvane
