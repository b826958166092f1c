// The folders that a machine may be asked for, by their published numbers.
#pragma once

namespace delvane {

constexpr int CSIDL_PERSONAL = 5;
constexpr int CSIDL_STARTMENU = 11;
constexpr int CSIDL_COMMON_STARTMENU = 22;
constexpr int CSIDL_APPDATA = 26;
constexpr int CSIDL_LOCAL_APPDATA = 28;
constexpr int CSIDL_COMMON_APPDATA = 35;
constexpr int CSIDL_WINDOWS = 36;
constexpr int CSIDL_SYSTEM = 37;
constexpr int CSIDL_PROGRAM_FILES = 38;
constexpr int CSIDL_COMMON_DOCUMENTS = 46;

}  // namespace delvane
