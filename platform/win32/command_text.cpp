#include <algorithm>

#include "platform/host.h"
#include "platform/win32/system.h"
#include "platform/win32/windows.h"

namespace delvane {
namespace {

// Where the argument at `begin` ends: at a blank outside quotation marks.
std::size_t EndOfArgument(std::string_view text, std::size_t begin) {
    bool isQuoted = false;
    std::size_t end = begin;
    while (end < text.size() && (isQuoted || (text[end] != ' ' && text[end] != '\t'))) {
        if (text[end] == '"') isQuoted = !isQuoted;
        ++end;
    }
    return end;
}

// Shells and scripts put quotation marks around a whole argument that holds a blank, switch and all: "/bc:My Snap".
// Such a one is handed over without them.
CString Unquoted(std::string_view argument) {
    CString text(argument);
    const bool isWhole = text.size() > 3 && text.front() == '"' && text.find('"', 1) == text.size() - 1;
    if (!isWhole || (text[1] != '/' && text[1] != '-')) return text;
    text = text.substr(1, text.size() - 2);
    std::replace(text.begin(), text.end(), ' ', kHeldBlank);
    std::replace(text.begin(), text.end(), '\t', kHeldTab);
    return text;
}

}  // namespace

// The system keeps the text as it was typed, the program's name first.
CString MakeCommandLine(int, const char* const*) {
    const std::string_view text = GetCommandLineA();
    CString result;
    std::size_t at = EndOfArgument(text, 0);
    while ((at = text.find_first_not_of(" \t", at)) != std::string_view::npos) {
        const std::size_t end = EndOfArgument(text, at);
        if (!result.empty()) result += ' ';
        result += Unquoted(text.substr(at, end - at));
        at = end;
    }
    return result;
}

CString MakeOwnPath(std::string_view typed) {
    const std::wstring wide = Widen(typed);
    std::wstring whole(GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
    whole.resize(GetFullPathNameW(wide.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr));
    return whole.empty() ? CString(typed) : Narrow(whole);
}

CString MakeResultsPath(CString typed) { return typed; }

}  // namespace delvane
