// The Windows API, for the sources of this folder alone.
//
// Its header makes macros of the names of many operations and constants, some of which are ours too; those are taken
// back here. The sources name the form that they call, RegOpenKeyExA.
#pragma once

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
#undef GetMessage
#undef GetModuleFileName
#undef GetObject
#undef GetTempPath
#undef GetSystemDirectory
#undef GetUserName
#undef GetWindowsDirectory
#undef LoadString
#undef PostMessage
#undef RegEnumKeyEx
#undef RegEnumValue
#undef RegOpenKeyEx
#undef RegQueryInfoKey
#undef RegQueryValueEx

// Constants, which platform/machine.h, platform/errors.h and platform/toolkit.h have with the same values.
#undef DRIVE_CDROM
#undef DRIVE_FIXED
#undef DRIVE_NO_ROOT_DIR
#undef DRIVE_RAMDISK
#undef DRIVE_REMOTE
#undef DRIVE_REMOVABLE
#undef DRIVE_UNKNOWN
#undef ERROR_ACCESS_DENIED
#undef ERROR_ALREADY_EXISTS
#undef ERROR_BADDB
#undef ERROR_BADKEY
#undef ERROR_BAD_NETPATH
#undef ERROR_CANT_RESOLVE_FILENAME
#undef ERROR_CRC
#undef ERROR_DISK_FULL
#undef ERROR_FILENAME_EXCED_RANGE
#undef ERROR_FILE_CORRUPT
#undef ERROR_FILE_NOT_FOUND
#undef ERROR_FILE_TOO_LARGE
#undef ERROR_GEN_FAILURE
#undef ERROR_INVALID_HANDLE
#undef ERROR_INVALID_NAME
#undef ERROR_IO_DEVICE
#undef ERROR_LOCK_VIOLATION
#undef ERROR_MORE_DATA
#undef ERROR_NOT_CONNECTED
#undef ERROR_NOT_READY
#undef ERROR_NOT_REGISTRY_FILE
#undef ERROR_NO_MORE_ITEMS
#undef ERROR_PATH_NOT_FOUND
#undef ERROR_REGISTRY_CORRUPT
#undef ERROR_REGISTRY_IO_FAILED
#undef ERROR_SHARING_VIOLATION
#undef ERROR_SUCCESS
#undef ERROR_TOO_MANY_OPEN_FILES
#undef ERROR_WRITE_PROTECT
#undef FILE_ATTRIBUTE_ARCHIVE
#undef FILE_ATTRIBUTE_DIRECTORY
#undef FILE_ATTRIBUTE_HIDDEN
#undef FILE_ATTRIBUTE_READONLY
#undef FILE_ATTRIBUTE_REPARSE_POINT
#undef FILE_ATTRIBUTE_SYSTEM
#undef FILE_ATTRIBUTE_TEMPORARY
#undef HKEY_CLASSES_ROOT
#undef HKEY_CURRENT_CONFIG
#undef HKEY_CURRENT_USER
#undef HKEY_LOCAL_MACHINE
#undef HKEY_USERS
#undef IDCANCEL
#undef IDNO
#undef IDOK
#undef IDYES
#undef REG_BINARY
#undef REG_DWORD
#undef REG_DWORD_BIG_ENDIAN
#undef REG_EXPAND_SZ
#undef REG_LINK
#undef REG_MULTI_SZ
#undef REG_NONE
#undef REG_RESOURCE_LIST
#undef REG_SZ
#undef VER_PLATFORM_WIN32_NT
#undef VER_PLATFORM_WIN32_WINDOWS
#undef WM_USER
