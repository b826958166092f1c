// From the argument list of a POSIX shell to the one text that the tokenizer of the command line takes apart.
#include <algorithm>

#include "platform/host.h"
#include "platform/hosted/choice.h"
#include "platform/hosted/files/path_map.h"

namespace delvane {
namespace {

// Behind /res: an ordinary path of the host takes the host form. A drive path, a path already in that form and a bare
// word stay as they are.
CString ResultsArgument(const CString& argument) {
    constexpr std::size_t kSwitch = 5;  // "/res:"
    CString value = argument.substr(kSwitch);
    const bool isDrive = value.size() >= 2 && value[1] == ':';
    if (value.find('/') == CString::npos || value.starts_with('\\') || value.starts_with('"')) return argument;
    value = isDrive ? ToHostForm(value) : ToHostForm(WholeHostPath(value));
    return argument.substr(0, kSwitch) + value;
}

}  // namespace

CString MakeCommandLine(int argumentCount, const char* const* arguments) {
    CString text;
    for (int i = 0; i < argumentCount; ++i) {
        CString argument = arguments[i];
        const bool isResults = argument.size() >= 5 && (argument[0] == '/' || argument[0] == '-') &&
                               mbsicmp(std::string_view(argument).substr(1, 4), "res:") == 0;
        if (isResults) argument = ResultsArgument(argument);
        if (!text.empty()) text += ' ';
        std::replace(argument.begin(), argument.end(), ' ', kHeldBlank);
        std::replace(argument.begin(), argument.end(), '\t', kHeldTab);
        text += argument;
    }
    return text;
}

}  // namespace delvane
