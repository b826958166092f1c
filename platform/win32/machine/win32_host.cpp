#include "platform/win32/machine/win32_host.h"

#include <algorithm>
#include <array>

#include "platform/own_file.h"
#include "platform/win32/machine/system.h"
#include "platform/win32/machine/win32_machine.h"

// Behind windows.h, which they need.
#include <objbase.h>
#include <shellapi.h>

namespace delvane {
namespace {

// Room for a path of the usual length in any code page.
constexpr std::size_t kPathRoom = MAX_PATH * 3;

CString ExecutableFolder() {
    std::array<char, kPathRoom> program{};
    const DWORD length = GetModuleFileNameA(nullptr, program.data(), static_cast<DWORD>(program.size()));
    CString folder(program.data(), length);
    folder.resize(std::min(folder.size(), folder.rfind('\\')));
    return folder;
}

}  // namespace

class CWin32Host::CLock {
public:
    explicit CLock(CHandle mutex) : m_mutex(std::move(mutex)) {}

private:
    CHandle m_mutex;
};

CWin32Host::CWin32Host(CString programFolder) : m_strProgramFolder(std::move(programFolder)) {}

CWin32Host::~CWin32Host() = default;

std::uint64_t CWin32Host::GetSystemTime() {
    SYSTEMTIME now{};
    ::FILETIME time{};
    ::GetSystemTime(&now);
    SystemTimeToFileTime(&now, &time);
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

bool CWin32Host::FileExists(std::string_view path) {
    const DWORD attributes = GetFileAttributesA(CString(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool CWin32Host::DirectoryExists(std::string_view path) {
    const DWORD attributes = GetFileAttributesA(CString(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool CWin32Host::CreateDirectory(std::string_view path) {
    return CreateDirectoryA(CString(path).c_str(), nullptr) != 0;
}

bool CWin32Host::DeleteFile(std::string_view path) { return DeleteFileA(CString(path).c_str()) != 0; }

std::vector<CString> CWin32Host::ListFiles(std::string_view folder) {
    std::vector<CString> names;
    WIN32_FIND_DATAA data;
    const HANDLE search = FindFirstFileA((CString(folder) + "\\*").c_str(), &data);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more != 0; more = FindNextFileA(search, &data)) {
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) names.emplace_back(data.cFileName);
    }
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
    return names;
}

CFileBytes CWin32Host::ReadFile(std::string_view path, std::uint64_t limit) {
    const CString shown = GetDisplayPath(path);
    return ReadOwnFile(shown, shown, limit, false);
}

CFileBytes CWin32Host::ReadFileHead(std::string_view path, std::size_t size) {
    const CString shown = GetDisplayPath(path);
    return ReadOwnFile(shown, shown, size, true);
}

std::unique_ptr<CFileWriter> CWin32Host::CreateFile(std::string_view path) {
    const CString shown = GetDisplayPath(path);
    return CreateOwnFile(shown, shown);
}

std::unique_ptr<std::ostream> CWin32Host::CreateTextFile(std::string_view path) {
    return CreateOwnTextFile(CString(path));
}

// A mutex of the folder's name, for all sessions of the machine; one that another user made cannot even be opened.
bool CWin32Host::LockProgramFolder() {
    CString name = "Global\\delvane " + FoldCase(m_strProgramFolder);
    std::replace(name.begin() + 7, name.end(), '\\', '/');
    CHandle mutex(CreateMutexA(nullptr, TRUE, name.c_str()));
    const DWORD code = GetLastError();
    if (code == ERROR_ALREADY_EXISTS || (!mutex && code == ERROR_ACCESS_DENIED)) return false;
    m_pLock = std::make_unique<CLock>(std::move(mutex));
    return true;
}

bool CWin32Host::OpenDocument(std::string_view path) {
    const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    const HINSTANCE result = ShellExecuteA(nullptr, nullptr, CString(path).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    if (SUCCEEDED(initialized)) CoUninitialize();
    constexpr INT_PTR kLargestError = 32;
    return reinterpret_cast<INT_PTR>(result) > kLargestError;
}

CString CWin32Host::GetDocumentFolder() { return ExecutableFolder(); }

CSystem MakeSystem() {
    // A drive without a disk in it answers with an error, not with a box that waits for somebody.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    std::array<char, kPathRoom> program{};
    const DWORD home = GetEnvironmentVariableA("DELVANE_HOME", program.data(), static_cast<DWORD>(program.size()));
    CString folder(program.data(), home < program.size() ? home : 0);
    while (folder.ends_with('\\') || folder.ends_with('/'))
        folder.pop_back();
    if (folder.empty()) folder = ExecutableFolder();
    return {std::make_unique<CWin32Machine>(), std::make_unique<CWin32Host>(std::move(folder))};
}

}  // namespace delvane
