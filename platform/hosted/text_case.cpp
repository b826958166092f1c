// Case off Windows, by Unicode's simple folding.
#include "platform/case_fold.h"
#include "platform/hosted/registry/hive.h"

namespace delvane {

const bool kHasDoubleBytes = false;
int CompareDoubleBytes(std::string_view a, std::string_view b) { return a.compare(b); }
std::uint64_t DoubleByteHead(std::string_view) { return 0; }

int mbsicmp(std::string_view a, std::string_view b) { return CompareFolded(a, b, Fold); }

CString MakeLower(std::string_view text) { return MapCharacters(text, ToLower); }

CString FoldCase(std::string_view text) { return MapCharacters(text, Fold); }

int CompareKeyNames(std::string_view a, std::string_view b) { return CompareFolded(a, b, FoldInName); }

bool KeyNamesEqual(std::string_view a, std::string_view b) { return CompareKeyNames(a, b) == 0; }

std::string FoldKeyName(std::string_view name) { return MapCharacters(name, FoldInName); }

}  // namespace delvane
