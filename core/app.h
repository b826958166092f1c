// The application object: the start and the end of the process, the command line's tokens and the exit code.
#pragma once

#include "platform/text.h"

namespace delvane {

// The bits of the exit code. They are only ever set.
constexpr int kExitFindings = 1;      // a comparison filed an information or a warning
constexpr int kExitErrors = 2;        // a comparison filed an error
constexpr int kExitCreateFailed = 4;  // the capture or the saving of a snapshot failed
constexpr int kExitLoadFailed = 8;    // the loading of a snapshot failed
constexpr int kExitNoReport = 16;     // a snapshot is missing for the report, or the report could not be made
constexpr int kExitNoWindow = 32;     // a visible run was asked for, and no window can be shown
constexpr int kExitNotStarted = 64;   // the program could not start or go on

class CInstallApp {
public:
    // Runs the whole program. Always false: no message loop follows.
    bool InitInstance();
    // What becomes the exit code of the process.
    int ExitInstance() const { return m_nExitCode; }

    // The arguments without the program's name, as one text.
    void SetCommandLine(CString text) { m_strCmdLine = std::move(text); }
    // The next token of the command line, quotation marks and all; empty at the end.
    CString GetNextToken();

    const char* m_pszCmdCursor = nullptr;  // null until the first token is asked for
    int m_nExitCode = 0;

private:
    CString m_strCmdLine;
};

extern CInstallApp theApp;

}  // namespace delvane
