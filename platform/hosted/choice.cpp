#include "platform/hosted/choice.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <unistd.h>

#include "platform/hosted/files/host_file.h"
#include "platform/machine.h"

namespace delvane {
namespace {

constexpr const char* kWindowsFolders[] = {"C:\\Windows", "C:\\WINNT"};

std::string HomeFolder() {
    std::string home = GetVariable("HOME");
    if (home.empty()) {
        const passwd* const account = getpwuid(getuid());
        if (account != nullptr && account->pw_dir != nullptr) home = account->pw_dir;
    }
    return home;
}

bool TakeMachine(const std::string& folder, CMachineChoice& choice) {
    std::error_code error;
    const bool isPrefix = std::filesystem::is_regular_file(folder + "/system.reg", error);
    const std::string real = RealHostPath(folder);
    choice.m_bIsVolume = !isPrefix && !real.empty() && !FindWindowsFolder(real).empty();
    if (isPrefix || choice.m_bIsVolume) choice.m_strFolder = real;
    return !choice.m_strFolder.empty();
}

// The folder that keeps this process from seeing whether a machine is there; empty where none does.
std::string FindDeniedFolder(const std::string& folder) {
    const auto isDenied = [](const std::string& path) {
        return access(path.c_str(), R_OK | X_OK) != 0 && errno == EACCES;
    };
    if (isDenied(folder)) return folder;
    const CPathMap paths = VolumeAsDrive(RealHostPath(folder));
    for (const char* const name : kWindowsFolders) {
        for (const char* const part : {"", "\\System32", "\\System32\\config"}) {
            const auto path = paths.Find(CString(name) + part);
            if (path && isDenied(*path)) return *path;
        }
    }
    return {};
}

CString WhyNoMachine(const std::string& folder) {
    if (const std::string denied = FindDeniedFolder(folder); !denied.empty()) return denied + ": Permission denied";
    if (!IsHostDirectory(folder)) return folder + " is no directory";
    return folder +
           " holds neither system.reg, as a Wine prefix does, nor Windows/System32/config/SOFTWARE, as a "
           "Windows volume does";
}

}  // namespace

std::string ExecutableFolder() {
    const std::string executable = RealHostPath("/proc/self/exe");
    return executable.substr(0, executable.rfind('/'));
}

std::string FindDocumentFolder(const std::string& executableFolder) {
    const auto hasPage = [](const std::string& folder) { return access((folder + "/Using.htm").c_str(), F_OK) == 0; };
    if (hasPage(executableFolder)) return executableFolder;
    const std::string installed = RealHostPath(executableFolder + "/../share/delvane");
    return !installed.empty() && hasPage(installed) ? installed : executableFolder;
}

std::string GetVariable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string WholeHostPath(const std::string& path) {
    std::error_code error;
    return (std::filesystem::current_path(error) / path).string();
}

CPathMap VolumeAsDrive(const std::string& volume) {
    return {{{'C', volume, volume, DRIVE_FIXED, false}}, {volume, false, {}}};
}

std::string FindWindowsFolder(const std::string& volume) {
    const CPathMap paths = VolumeAsDrive(volume);
    for (const char* const name : kWindowsFolders) {
        const auto hive = paths.Find(CString(name) + "\\System32\\config\\SOFTWARE");
        const auto folder = paths.Find(name);
        std::error_code error;
        if (hive && folder && std::filesystem::is_regular_file(*hive, error)) {
            return folder->substr(folder->rfind('/') + 1);
        }
    }
    return {};
}

CMachineChoice ChooseMachine() {
    CMachineChoice choice;
    for (const char* variable : {"DELVANE_MACHINE", "WINEPREFIX"}) {
        const std::string folder = GetVariable(variable);
        if (folder.empty()) continue;
        if (!TakeMachine(folder, choice)) {
            choice.m_bVariable = true;
            choice.m_strProblem = CString(variable) + " names no machine: " + WhyNoMachine(folder);
        }
        return choice;
    }
    const std::string standard = HomeFolder() + "/.wine";
    if (!TakeMachine(standard, choice)) {
        const std::string denied = FindDeniedFolder(standard);
        choice.m_strProblem =
            "no machine to examine: " +
            (denied.empty() ? standard + " is no Wine prefix (a folder that holds system.reg)"
                            : denied + ": Permission denied") +
            "; DELVANE_MACHINE or WINEPREFIX names another, or DELVANE_MACHINE the folder where a Windows volume is "
            "mounted";
    }
    return choice;
}

std::string ChooseProgramFolder() {
    std::string folder = GetVariable("DELVANE_HOME");
    if (folder.empty()) {
        folder = ExecutableFolder();
        // A bin is shared by many programs: nothing is kept there, not even for root, who may write to it.
        const bool isInstalled = FindDocumentFolder(folder) != folder;
        if (!isInstalled && access(folder.c_str(), W_OK) == 0) return folder;
        const std::string data = GetVariable("XDG_DATA_HOME");
        // The variable counts only as an absolute path.
        folder = (data.starts_with('/') ? data : HomeFolder() + "/.local/share") + "/delvane";
    }
    folder = WholeHostPath(folder);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const std::string real = RealHostPath(folder);
    return real.empty() ? folder : real;
}

}  // namespace delvane
