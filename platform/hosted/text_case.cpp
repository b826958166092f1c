// Case folding off Windows, by Unicode's simple folding.
#include <array>
#include <utf8proc.h>

#include "platform/hosted/key_name.h"
#include "platform/text.h"

namespace delvane {
namespace {

constexpr std::array<unsigned char, 128> kAsciiFold = [] {
    std::array<unsigned char, 128> table{};
    for (unsigned i = 0; i < table.size(); ++i) {
        table[i] = static_cast<unsigned char>(i >= 'A' && i <= 'Z' ? i + ('a' - 'A') : i);
    }
    return table;
}();

// The folded character. Folding by upper and then lower case joins all forms of a letter (both small sigmas, the
// Kelvin sign and k); only the two Turkish letters would change their meaning and stay as they are.
utf8proc_int32_t Fold(utf8proc_int32_t c) {
    constexpr utf8proc_int32_t kDottedCapitalI = 0x130;
    constexpr utf8proc_int32_t kDotlessSmallI = 0x131;
    constexpr utf8proc_int32_t kSharpS = 0xDF;
    if (c == kDottedCapitalI || c == kDotlessSmallI || c == kSharpS) return c;
    return utf8proc_tolower(utf8proc_toupper(c));
}

// The other case of a letter that has one in both directions.
utf8proc_int32_t FoldInName(utf8proc_int32_t c) {
    constexpr utf8proc_int32_t kLastOfBasicPlane = 0xFFFF;
    if (c > kLastOfBasicPlane) return c;
    const utf8proc_int32_t folded = Fold(c);
    return folded == c || utf8proc_toupper(folded) == c ? folded : c;
}

constexpr utf8proc_int32_t kBeyondUnicode = 0x110000;

// Takes one character off the text. A byte that begins no valid character stands for itself, above all characters.
utf8proc_int32_t TakeCharacter(std::string_view& text) {
    utf8proc_int32_t c = 0;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                         static_cast<utf8proc_ssize_t>(text.size()), &c);
    if (length <= 0) {
        c = kBeyondUnicode + static_cast<unsigned char>(text.front());
        text.remove_prefix(1);
    } else {
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return c;
}

// `fold` is given characters beyond ASCII, where all folds agree.
template <class FoldCharacter>
int Compare(std::string_view a, std::string_view b, const FoldCharacter& fold) {
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
    while (!a.empty() && !b.empty()) {
        const utf8proc_int32_t x = fold(TakeCharacter(a));
        const utf8proc_int32_t y = fold(TakeCharacter(b));
        if (x != y) return x < y ? -1 : 1;
    }
    return a.empty() ? (b.empty() ? 0 : -1) : 1;
}

// Maps each character of the text. What maps to itself is copied, bytes that are no characters too.
CString MapCharacters(std::string_view text, utf8proc_int32_t (*map)(utf8proc_int32_t)) {
    CString result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto first = static_cast<unsigned char>(text.front());
        if (first < 0x80) {
            result += static_cast<char>(kAsciiFold[first]);
            text.remove_prefix(1);
            continue;
        }
        const std::string_view before = text;
        const utf8proc_int32_t c = TakeCharacter(text);
        const utf8proc_int32_t mapped = c < kBeyondUnicode ? map(c) : c;
        if (mapped == c) {
            result += before.substr(0, before.size() - text.size());
        } else {
            std::array<utf8proc_uint8_t, 4> bytes{};
            const auto length = utf8proc_encode_char(mapped, bytes.data());
            result.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(length));
        }
    }
    return result;
}

}  // namespace

int mbsicmp(std::string_view a, std::string_view b) { return Compare(a, b, Fold); }

CString MakeLower(std::string_view text) { return MapCharacters(text, utf8proc_tolower); }

CString FoldCase(std::string_view text) { return MapCharacters(text, Fold); }

int CompareKeyNames(std::string_view a, std::string_view b) { return Compare(a, b, FoldInName); }

bool KeyNamesEqual(std::string_view a, std::string_view b) { return CompareKeyNames(a, b) == 0; }

std::string FoldKeyName(std::string_view name) { return MapCharacters(name, FoldInName); }

std::string_view TakeKeyName(std::string_view& path) {
    const std::size_t end = path.find('\\');
    const std::string_view name = path.substr(0, end);
    path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    return name;
}

}  // namespace delvane
