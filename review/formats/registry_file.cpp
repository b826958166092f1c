// A .reg file that makes the registry of one snapshot that of the other, as far as the changes between them are open.
//
// Keys go first, the deepest first. A key goes only when all of its content may go with it: whoever deletes a key
// deletes what lies below it, and something below may have been accepted. Then come keys and values in the order of a
// tree. A name that holds a control character, or bytes that stand for no character, cannot be written in this form; a
// comment shows it.
#include <algorithm>
#include <array>
#include <map>

#include "capture/registry.h"
#include "platform/little_endian.h"
#include "review/describe.h"
#include "review/formats/writers.h"

namespace delvane {
namespace {

constexpr std::size_t kLongestLine = 78;
constexpr std::string_view kUnnamed = "(default)";

// The next character of a text, where half a surrogate pair stands as three bytes of its own. Other bytes that are no
// UTF-8 stand for nothing.
CCharacter TakeUnits(std::string_view& text) {
    const std::string_view before = text;
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(before[at]); };
    const CCharacter character = NextCharacter(text);
    if (character.IsValid() || before.size() < 3 || byte(0) != 0xED || byte(1) < 0xA0 || byte(1) > 0xBF ||
        (byte(2) & 0xC0) != 0x80) {
        return character;
    }
    text = before.substr(3);
    return {before.substr(0, 3), 0xD000U | (byte(1) & 0x3FU) << 6 | (byte(2) & 0x3FU)};
}

CString ToUtf16(std::string_view text) {
    CString units;
    const auto put = [&](std::uint32_t unit) {
        units += static_cast<char>(unit & 0xFF);
        units += static_cast<char>(unit >> 8);
    };
    while (!text.empty()) {
        const CCharacter character = TakeUnits(text);
        const std::uint32_t c = character.IsValid() ? character.m_nNumber : 0xFFFD;
        if (c < 0x10000) {
            put(c);
        } else {
            put(0xD800 + ((c - 0x10000) >> 10));
            put(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return units;
}

bool IsWritable(const CCharacter& character) {
    const std::uint32_t c = character.m_nNumber;
    return character.IsValid() && c >= 0x20 && (c < 0x7F || c > 0x9F);
}

// Whether a name may stand in the file as it is.
bool IsWritable(std::string_view name) {
    while (!name.empty()) {
        if (!IsWritable(TakeUnits(name))) return false;
    }
    return true;
}

// A name in a comment: "<0a>" for what cannot stand there.
CString Shown(std::string_view name) {
    CString shown;
    while (!name.empty()) {
        const CCharacter character = TakeUnits(name);
        if (IsWritable(character)) {
            shown += character.m_bytes;
        } else {
            for (const char c : character.m_bytes)
                shown += Printed("<%02x>", static_cast<unsigned char>(c));
        }
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
    CString text = type == REG_BINARY ? "hex:" : Printed("hex(%x):", type);
    column += text.size();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text += HexText(bytes.substr(i, 1));
        if (i + 1 == bytes.size()) break;
        text += ',';
        column += 3;
        if (column < kLongestLine) continue;
        text += "\\\r\n  ";
        column = 2;
    }
    return text;
}

CString DataText(const CDelvRegValObj& value, std::size_t column) {
    const std::string_view data = value.m_data;
    const std::uint32_t type = value.m_dwType;
    if (type == REG_DWORD && data.size() == 4) return Printed("dword:%08x", U32(data, 0));
    if (type == REG_SZ && data.ends_with('\0')) {
        const std::string_view text = data.substr(0, data.size() - 1);
        // Whatever a name cannot hold, a quoted text cannot either. NULs are among it.
        if (IsWritable(text) && IsCleanText(text)) return Quoted(text);
    }
    const bool isText = type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
    return HexData(type, isText ? ToUtf16(data) : CString(data), column);
}

// Whether the key holds a value that is named like an unnamed one, beside it.
bool HasTwoUnnamed(const CDelvObj& value) {
    const auto& key = static_cast<const CDelvRegKeyObj&>(*value.m_pParent);
    return std::count_if(key.m_values.begin(), key.m_values.end(),
                         [](const CDelvObj* sibling) { return sibling->m_name == kUnnamed; }) > 1;
}

class CRegistryWriter {
public:
    CRegistryWriter(const CReview& review, std::ostream& stream, bool isRedo)
        : m_review(review), m_stream(stream), m_isRedo(isRedo) {}

    void Write() {
        Collect();
        m_stream.write("\xFF\xFE", 2);
        Line("Windows Registry Editor Version 5.00");
        Line("");
        const CString before = Shown(m_review.GetBaselineName());
        const CString after = Shown(m_review.GetCurrentName());
        Line(m_isRedo ? "; redo: makes the registry of " + before + " that of " + after
                      : "; undo: makes the registry of " + after + " that of " + before);
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
    const CDelvObj* Wanted(const CChange& change) const { return m_isRedo ? change.m_pAfter : change.m_pBefore; }
    bool Goes(const CChange& change) const { return Wanted(change) == nullptr; }

    void Line(const CString& text) {
        const CString units = ToUtf16(text + "\r\n");
        m_stream.write(units.data(), static_cast<std::streamsize>(units.size()));
    }

    void Collect() {
        const std::vector<CChange>& changes = m_review.m_changes;
        for (std::size_t at = 0; at < changes.size();) {
            const CChange& change = changes[at];
            const bool isKeyThatGoes = change.m_kind == EKind::kKey && Goes(change);
            // Such a key stands ahead of its whole content, which goes with it.
            if (const std::size_t end = isKeyThatGoes ? m_review.FindOpenContentEnd(at) : 0; end != 0) {
                for (; at < end; ++at) {
                    if (changes[at].m_kind == EKind::kKey) m_deletedKeys.push_back(&changes[at]);
                }
                continue;
            }
            ++at;
            if (!change.IsRegistry() || !change.IsOpen()) continue;
            if (isKeyThatGoes) {
                m_kept.push_back(&change);
            } else {
                m_contents[TreeOrder(change.m_path)].push_back(&change);
            }
        }
        const auto depth = [](const CChange* key) { return -std::count(key->m_path.begin(), key->m_path.end(), '\\'); };
        std::ranges::stable_sort(m_deletedKeys, {}, depth);
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
        for (auto& [order, changes] : m_contents) {
            const CString key = WholeKey(changes.back()->m_path);
            if (!IsWritable(key)) {
                Line("; cannot be written, with its values: " + Shown(key));
            } else {
                Line("[" + key + "]");
                std::stable_partition(changes.begin(), changes.end(), [&](const CChange* c) { return Goes(*c); });
                for (const CChange* change : changes) {
                    if (change->m_kind == EKind::kValue) WriteValue(*change);
                }
            }
            Line("");
        }
    }

    void WriteValue(const CChange& change) {
        if (!IsWritable(change.m_name)) return Line("; cannot be written: the value " + Shown(change.m_name));
        const bool isUnnamed = change.m_name == kUnnamed;
        if (isUnnamed && HasTwoUnnamed(change.GetNode()))
            Line("; the key has two values of this look: one without a name, and one with the name (default)");
        const CString name = (isUnnamed ? "@" : Quoted(change.m_name)) + "=";
        const CDelvObj* const value = Wanted(change);
        Line(name + (value == nullptr ? "-" : DataText(static_cast<const CDelvRegValObj&>(*value), name.size())));
    }

    const CReview& m_review;
    std::ostream& m_stream;
    bool m_isRedo;
    std::vector<const CChange*> m_deletedKeys;  // the deepest first
    std::vector<const CChange*> m_kept;         // open, and cannot go
    // By key, in the order of a tree: it comes, or values in it come, go or change.
    std::map<CString, std::vector<const CChange*>> m_contents;
};

}  // namespace

void WriteUndo(const CReview& review, std::ostream& stream) { CRegistryWriter(review, stream, false).Write(); }
void WriteRedo(const CReview& review, std::ostream& stream) { CRegistryWriter(review, stream, true).Write(); }

}  // namespace delvane
