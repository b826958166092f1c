#include "platform/machine.h"
#include "platform/win32/windows.h"

namespace delvane {

// The system keeps the text as it was typed; the program's name at its beginning may stand in quotation marks.
CString MakeCommandLine(int, const char* const*) {
    std::string_view text = GetCommandLineA();
    bool isQuoted = false;
    std::size_t end = 0;
    while (end < text.size() && (isQuoted || (text[end] != ' ' && text[end] != '\t'))) {
        if (text[end] == '"') isQuoted = !isQuoted;
        ++end;
    }
    text.remove_prefix(end);
    const std::size_t first = text.find_first_not_of(" \t");
    return CString(first == std::string_view::npos ? std::string_view() : text.substr(first));
}

}  // namespace delvane
