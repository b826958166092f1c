// Case off Windows, by Unicode's simple folding.
#include <utf8proc.h>

#include "platform/case_fold.h"
#include "platform/hosted/registry/key_name.h"

namespace delvane {

const bool kHasDoubleBytes = false;
int CompareDoubleBytes(std::string_view a, std::string_view b) { return a.compare(b); }
std::uint64_t DoubleByteHead(std::string_view) { return 0; }

namespace {

std::uint32_t ToLower(std::uint32_t c) {
    return static_cast<std::uint32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(c)));
}
std::uint32_t ToUpper(std::uint32_t c) {
    return static_cast<std::uint32_t>(utf8proc_toupper(static_cast<utf8proc_int32_t>(c)));
}

std::uint32_t Fold(std::uint32_t c) { return c >= kBeyondUnicode || IsNotFolded(c) ? c : ToLower(ToUpper(c)); }

// The other case of a letter that has one in both directions.
std::uint32_t FoldInName(std::uint32_t c) {
    constexpr std::uint32_t kLastOfBasicPlane = 0xFFFF;
    if (c > kLastOfBasicPlane) return c;
    const std::uint32_t folded = Fold(c);
    return folded == c || ToUpper(folded) == c ? folded : c;
}

}  // namespace

int mbsicmp(std::string_view a, std::string_view b) { return CompareFolded(a, b, Fold); }

CString MakeLower(std::string_view text) { return MapCharacters(text, ToLower); }

CString FoldCase(std::string_view text) { return MapCharacters(text, Fold); }

int CompareKeyNames(std::string_view a, std::string_view b) { return CompareFolded(a, b, FoldInName); }

bool KeyNamesEqual(std::string_view a, std::string_view b) { return CompareKeyNames(a, b) == 0; }

std::string FoldKeyName(std::string_view name) { return MapCharacters(name, FoldInName); }

std::string_view TakeKeyName(std::string_view& path) {
    const std::size_t end = path.find('\\');
    const std::string_view name = path.substr(0, end);
    path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    return name;
}

}  // namespace delvane
