// Which folder of the host is the machine to examine.
#pragma once

#include <string>

#include "platform/hosted/files/path_map.h"
#include "platform/text.h"

namespace delvane {

// A Wine prefix or a Windows volume, chosen by DELVANE_MACHINE, else WINEPREFIX, else ~/.wine.
struct CMachineChoice {
    std::string m_strFolder;   // in full; empty where there is no machine
    CString m_strProblem;      // then: what was looked for, and which variable names it, in one sentence
    bool m_bVariable = false;  // a variable was set, and it names no machine
    bool m_bIsVolume = false;
};

CMachineChoice ChooseMachine();

// A Windows volume as drive C:, and the folder of Windows on it in its own spelling ("WINNT"): the one that holds
// System32/config/SOFTWARE, found without regard to case. Empty where there is none.
CPathMap VolumeAsDrive(const std::string& volume);
std::string FindWindowsFolder(const std::string& volume);

// The folder of the program's own files: DELVANE_HOME, else where the executable stands if that can be written to and
// is no folder of an installation, else the user's data folder. Made when needed.
std::string ChooseProgramFolder();

// Where the executable stands.
std::string ExecutableFolder();
// The folder of the help page and its pictures: the executable's own if the page stands there, else that of an
// installation, share/delvane beside the executable's bin; where neither has it, the executable's own.
std::string FindDocumentFolder(const std::string& executableFolder);

// An environment variable; empty if it is not set.
std::string GetVariable(const char* name);
// The path made whole with the working directory.
std::string WholeHostPath(const std::string& path);

}  // namespace delvane
