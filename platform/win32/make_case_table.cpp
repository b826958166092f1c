// Writes the table of case_table.h, where the build runs, from the Unicode data of utf8proc.
//   make_case_table FILE
#include <cstdio>
#include <fstream>
#include <utf8proc.h>

#include "platform/case_fold.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    std::ofstream out(arguments[1]);
    out << "// Written by make_case_table.\n#include \"platform/win32/case_table.h\"\n\nnamespace delvane {\n\n"
           "const CCaseEntry kCaseTable[] = {\n";
    int count = 0;
    for (utf8proc_int32_t c = 0x80; c < 0x110000; ++c) {
        const utf8proc_int32_t lower = utf8proc_tolower(c);
        const bool isFixed = delvane::IsNotFolded(static_cast<std::uint32_t>(c));
        const utf8proc_int32_t fold = isFixed ? c : utf8proc_tolower(utf8proc_toupper(c));
        if (lower == c && fold == c) continue;
        out << "    {" << c << ", " << lower << ", " << fold << "},\n";
        ++count;
    }
    out << "};\nconst std::size_t kCaseTableSize = " << count << ";\n\n}  // namespace delvane\n";
    out.close();
    return out ? 0 : 1;
}
