// Writes the table of case_fold.h, where the build runs, from the Unicode data of utf8proc.
//   make_case_table FILE
#include <array>
#include <cstdint>
#include <fstream>
#include <map>
#include <utf8proc.h>
#include <vector>

namespace {

// Folding by upper and then lower case joins all forms of a letter (both small sigmas, the Kelvin sign and k). It would
// change the meaning of these only, which stay as they are.
bool IsNotFolded(utf8proc_int32_t c) {
    constexpr utf8proc_int32_t kDottedCapitalI = 0x130;
    constexpr utf8proc_int32_t kDotlessSmallI = 0x131;
    constexpr utf8proc_int32_t kSharpS = 0xDF;
    return c == kDottedCapitalI || c == kDotlessSmallI || c == kSharpS;
}

utf8proc_int32_t Fold(utf8proc_int32_t c) { return IsNotFolded(c) ? c : utf8proc_tolower(utf8proc_toupper(c)); }

// The other case of a letter that has one in both directions.
utf8proc_int32_t FoldInName(utf8proc_int32_t c) {
    constexpr utf8proc_int32_t kLastOfBasicPlane = 0xFFFF;
    if (c > kLastOfBasicPlane) return c;
    const utf8proc_int32_t folded = Fold(c);
    return folded == c || utf8proc_toupper(folded) == c ? folded : c;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    constexpr utf8proc_int32_t kBeyondUnicode = 0x110000;
    using CRow = std::vector<std::array<utf8proc_int32_t, 3>>;
    std::vector<CRow> rows;
    std::map<CRow, std::size_t> numbers;
    std::ofstream out(arguments[1]);
    out << "// Written by make_case_table.\n#include \"platform/case_fold.h\"\n\nnamespace delvane {\n\n"
           "const std::uint8_t kCaseRowNumbers[] = {\n";
    // The last row stands for the bytes that are no characters.
    for (utf8proc_int32_t first = 0; first <= kBeyondUnicode; first += 256) {
        CRow row;
        for (utf8proc_int32_t c = first; c < first + 256; ++c) {
            if (c < kBeyondUnicode) {
                row.push_back({utf8proc_tolower(c) - c, Fold(c) - c, FoldInName(c) - c});
            } else {
                row.push_back({});
            }
        }
        const auto [place, isNew] = numbers.try_emplace(row, rows.size());
        if (isNew) rows.push_back(row);
        out << place->second << (first / 256 % 32 == 31 ? ",\n" : ",");
    }
    out << "};\n\nconst CCaseForms kCaseRows[][256] = {\n";
    for (const CRow& row : rows) {
        out << "{";
        for (std::size_t i = 0; i < row.size(); ++i)
            out << "{" << row[i][0] << "," << row[i][1] << "," << row[i][2] << (i % 16 == 15 ? "},\n" : "},");
        out << "},\n";
    }
    out << "};\n\n}  // namespace delvane\n";
    out.close();
    return out && rows.size() <= 256 ? 0 : 1;
}
