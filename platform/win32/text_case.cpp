// Case and order on Windows: in UTF-8, where the system grants it, by Unicode's simple folding; in any other code page
// by the run-time library, whose answers for all characters are asked for once.
#include <algorithm>
#include <array>
#include <mbctype.h>
#include <mbstring.h>
#include <vector>

#include "platform/case_fold.h"
#include "platform/win32/windows.h"

namespace delvane {
namespace {

bool IsUtf8() {
    static const bool isUtf8 = GetACP() == CP_UTF8;
    return isUtf8;
}

// What the run-time library knows of the process's code page, by character: a lead byte stands above its trail byte.
class CRunTimeTable {
public:
    CRunTimeTable() : m_lower(0x10000) {
        for (unsigned c = 0; c < m_bLead.size(); ++c)
            m_bLead[c] = IsDBCSLeadByte(static_cast<BYTE>(c)) != 0;
        for (unsigned c = 0; c < m_lower.size(); ++c) {
            const bool isSingle = c < m_bLead.size();
            const bool isCharacter = isSingle ? !m_bLead[c] : m_bLead[c >> 8];
            m_lower[c] = static_cast<std::uint16_t>(isCharacter ? _mbctolower(c) & (isSingle ? 0xFF : 0xFFFF) : c);
        }
    }

    bool HasDoubleBytes() const { return std::ranges::find(m_bLead, true) != m_bLead.end(); }
    std::uint32_t TakeCharacter(std::string_view& text) const {
        const auto first = static_cast<unsigned char>(text[0]);
        if (!m_bLead[first] || text.size() < 2) {
            text.remove_prefix(1);
            return first;
        }
        const auto second = static_cast<unsigned char>(text[1]);
        text.remove_prefix(2);
        return static_cast<std::uint32_t>(first << 8 | second);
    }
    std::uint32_t Lower(std::uint32_t c) const { return m_lower[c]; }

    template <class Map>
    int Compare(std::string_view a, std::string_view b, const Map& map) const {
        while (!a.empty() && !b.empty()) {
            const std::uint32_t x = map(TakeCharacter(a));
            const std::uint32_t y = map(TakeCharacter(b));
            if (x != y) return x < y ? -1 : 1;
        }
        return a.empty() ? (b.empty() ? 0 : -1) : 1;
    }

private:
    std::vector<std::uint16_t> m_lower;
    std::array<bool, 0x100> m_bLead{};
};

const CRunTimeTable& GetTable() {
    static const CRunTimeTable table;
    return table;
}

}  // namespace

const bool kHasDoubleBytes = !IsUtf8() && GetTable().HasDoubleBytes();

int CompareDoubleBytes(std::string_view a, std::string_view b) {
    return GetTable().Compare(a, b, [](std::uint32_t c) { return c; });
}

std::uint64_t DoubleByteHead(std::string_view text) {
    std::uint64_t head = 0;
    for (int i = 0; i < 4; ++i)
        head = head << 16 | (text.empty() ? 0 : GetTable().TakeCharacter(text));
    return head;
}

int mbsicmp(std::string_view a, std::string_view b) {
    if (IsUtf8()) return CompareFolded(a, b, Fold);
    const CRunTimeTable& table = GetTable();
    return table.Compare(a, b, [&table](std::uint32_t c) { return table.Lower(c); });
}

CString MakeLower(std::string_view text) {
    if (IsUtf8()) return MapCharacters(text, ToLower);
    CString lower(text);
    CharLowerBuffA(lower.data(), static_cast<DWORD>(lower.size()));
    return lower;
}

CString FoldCase(std::string_view text) {
    if (IsUtf8()) return MapCharacters(text, Fold);
    CString folded;
    folded.reserve(text.size());
    while (!text.empty()) {
        const std::uint32_t c = GetTable().Lower(GetTable().TakeCharacter(text));
        if (c > 0xFF) folded += static_cast<char>(c >> 8);
        folded += static_cast<char>(c);
    }
    return folded;
}

}  // namespace delvane
