// Where a machine's registry says what the machine is. The names of the hives are those of HKLM and HKCU.
#pragma once

namespace delvane {

inline constexpr const char* kVersionKey = "Software\\Microsoft\\Windows NT\\CurrentVersion";
inline constexpr const char* kCurrentVersionKey = "Software\\Microsoft\\Windows\\CurrentVersion";
inline constexpr const char* kShellFoldersKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
inline constexpr const char* kUserShellFoldersKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
inline constexpr const char* kComputerNameKey = "System\\CurrentControlSet\\Control\\ComputerName\\ComputerName";
inline constexpr const char* kSystemEnvironmentKey = "System\\CurrentControlSet\\Control\\Session Manager\\Environment";
inline constexpr const char* kEnvironmentKey = "Environment";
inline constexpr const char* kVolatileEnvironmentKey = "Volatile Environment";

}  // namespace delvane
