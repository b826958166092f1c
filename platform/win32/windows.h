// The Windows API, for the sources of this folder alone.
//
// Its header makes macros of the names of many operations and constants, some of which are ours too. Operations are
// taken back here; the sources name the form that they call, RegOpenKeyExA. Our constants stand before it: then a macro
// of the same value does no harm, unless it is of another type.
#pragma once

#include "platform/machine.h"
#include "platform/toolkit.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>  // IWYU pragma: export
// Behind it, since it uses what is taken back below.
#include <commctrl.h>  // IWYU pragma: export

// Operations.
#undef CreateDialog
#undef CreateDirectory
#undef CreateFile
#undef DeleteFile
#undef GetComputerName
#undef GetDriveType
#undef GetFileVersionInfo
#undef GetModuleFileName
#undef GetTempPath
#undef GetSystemDirectory
#undef GetUserName
#undef GetWindowsDirectory
#undef PostMessage
#undef RegEnumKeyEx
#undef RegEnumValue
#undef RegOpenKeyEx
#undef RegQueryInfoKey
#undef RegQueryValueEx

// Constants of another type than ours.
#undef HKEY_CLASSES_ROOT
#undef HKEY_CURRENT_CONFIG
#undef HKEY_CURRENT_USER
#undef HKEY_LOCAL_MACHINE
#undef HKEY_USERS
