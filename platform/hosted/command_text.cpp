// From the argument list of a POSIX shell to the one text that the tokenizer of the command line takes apart.
#include <algorithm>

#include "platform/host.h"
#include "platform/hosted/choice.h"
#include "platform/hosted/files/path_map.h"

namespace delvane {

CString MakeCommandLine(int argumentCount, const char* const* arguments) {
    CString text;
    for (int i = 0; i < argumentCount; ++i) {
        CString argument = arguments[i];
        if (!text.empty()) text += ' ';
        std::replace(argument.begin(), argument.end(), ' ', kHeldBlank);
        std::replace(argument.begin(), argument.end(), '\t', kHeldTab);
        text += argument;
    }
    return text;
}

CString MakeOwnPath(std::string_view typed) {
    const std::string path(typed);
    if (path.starts_with('\\')) return path;
    const bool isDrive = path.size() >= 2 && path[1] == ':';
    return ToHostForm(isDrive ? path : WholeHostPath(path));
}

CString MakeResultsPath(CString typed) {
    return typed.find('/') == CString::npos || typed.starts_with('"') ? typed : MakeOwnPath(typed);
}

}  // namespace delvane
