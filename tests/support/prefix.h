// A small folder in the shape of a Wine prefix.
#pragma once

#include <string>

#include "tests/support/temporary_folder.h"

namespace delvane {

// C: is drive_c, Z: the host's root. The registry names the computer, the version and the folders; `moreUser` and
// `moreSystem` stand behind it.
class CPrefix : public CTemporaryFolder {
public:
    explicit CPrefix(const std::string& moreSystem = {}, const std::string& moreUser = {}) {
        MakeFolder("drive_c/windows/system32");
        MakeFolder("dosdevices");
        std::filesystem::create_directory_symlink("../drive_c", *this / "dosdevices/c:");
        std::filesystem::create_directory_symlink("/", *this / "dosdevices/z:");
        Write("system.reg", R"(WINE REGISTRY Version 2
;; All keys relative to REGISTRY\\Machine

#arch=win64

[Software\\Microsoft\\Windows NT\\CurrentVersion] 1700000000
"CSDVersion"="Service Pack 1"
"CurrentBuildNumber"="7601"
"CurrentVersion"="6.1"
"SystemRoot"="C:\\windows"

[Software\\Microsoft\\Windows\\CurrentVersion] 1700000000
"ProgramFilesDir"="C:\\Program Files"

[Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders] 1700000000
"Common AppData"="C:\\ProgramData"

[System\\CurrentControlSet\\Control\\ComputerName\\ComputerName] 1700000000
"ComputerName"="BENCH"
)" + moreSystem);
        Write("user.reg", R"(WINE REGISTRY Version 2
;; All keys relative to REGISTRY\\User\\S-1-5-21-0-0-0-1000

[Environment] 1700000000
"TEMP"=str(2):"%USERPROFILE%\\Temp"

[Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders] 1700000000
"Personal"=str(2):"%USERPROFILE%\\Documents"

[Volatile Environment] 1700000000
"USERNAME"="tester"
"USERPROFILE"="C:\\users\\tester"
)" + moreUser);
    }
};

}  // namespace delvane
