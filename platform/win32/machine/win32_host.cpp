// The system that the program runs on, as the host of its own files.
#include <algorithm>

#include "platform/own_file.h"
#include "platform/win32/system.h"

// Behind windows.h, which they need.
#include <objbase.h>
#include <shellapi.h>

namespace delvane {
namespace {

CString ExecutableFolder() {
    CString folder = PathOf([](char* path, DWORD size) { return GetModuleFileNameA(nullptr, path, size); });
    folder.resize(std::min(folder.size(), folder.rfind('\\')));
    return folder;
}

class CWin32Host : public CHost {
public:
    explicit CWin32Host(CString programFolder) : m_strProgramFolder(std::move(programFolder)) {}

    CString GetModuleFileName() override { return m_strProgramFolder + "\\delvane.exe"; }
    CString GetDocumentFolder() override { return ExecutableFolder(); }
    std::uint64_t GetSystemTime() override {
        SYSTEMTIME now{};  // in milliseconds
        ::FILETIME time{};
        ::GetSystemTime(&now);
        SystemTimeToFileTime(&now, &time);
        return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    }

    bool FileExists(std::string_view path) override {
        const DWORD attributes = GetFileAttributesA(CString(path).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    }
    bool DirectoryExists(std::string_view path) override {
        const DWORD attributes = GetFileAttributesA(CString(path).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }
    bool CreateDirectory(std::string_view path) override {
        return CreateDirectoryA(CString(path).c_str(), nullptr) != 0;
    }
    bool DeleteFile(std::string_view path) override { return DeleteFileA(CString(path).c_str()) != 0; }
    std::vector<CString> ListFiles(std::string_view folder) override {
        std::vector<CString> names;
        WIN32_FIND_DATAA data;
        const HANDLE search = FindFirstFileA((CString(folder) + "\\*").c_str(), &data);
        for (BOOL more = search != INVALID_HANDLE_VALUE; more != 0; more = FindNextFileA(search, &data)) {
            if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) names.emplace_back(data.cFileName);
        }
        if (search != INVALID_HANDLE_VALUE) FindClose(search);
        return names;
    }
    CFileBytes ReadFile(std::string_view path, std::uint64_t limit) override {
        const CString shown = GetDisplayPath(path);
        return ReadOwnFile(shown, shown, limit, false);
    }
    CFileBytes ReadFileHead(std::string_view path, std::size_t size) override {
        const CString shown = GetDisplayPath(path);
        return ReadOwnFile(shown, shown, size, true);
    }
    std::unique_ptr<CFileWriter> CreateFile(std::string_view path) override {
        const CString shown = GetDisplayPath(path);
        return CreateOwnFile(shown, shown);
    }
    std::unique_ptr<std::ostream> CreateTextFile(std::string_view path) override {
        return CreateOwnTextFile(CString(path));
    }
    CString GetDisplayPath(std::string_view path) const override { return SingleSeparators(path); }
    CString GetMachinePath(std::string_view path) const override { return CString(path); }
    // A mutex of the folder's name, for all sessions of the machine; one that another user made cannot even be opened.
    bool LockProgramFolder() override {
        CString name = "Global\\delvane " + FoldCase(m_strProgramFolder);
        std::replace(name.begin() + 7, name.end(), '\\', '/');
        CHandle mutex(CreateMutexA(nullptr, TRUE, name.c_str()));
        const DWORD code = GetLastError();
        if (code == ERROR_ALREADY_EXISTS || (!mutex && code == ERROR_ACCESS_DENIED)) return false;
        m_lock = std::move(mutex);
        return true;
    }
    bool OpenDocument(std::string_view path) override {
        const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
        const HINSTANCE result =
            ShellExecuteA(nullptr, nullptr, CString(path).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
        if (SUCCEEDED(initialized)) CoUninitialize();
        constexpr INT_PTR kLargestError = 32;
        return reinterpret_cast<INT_PTR>(result) > kLargestError;
    }

private:
    CString m_strProgramFolder;
    CHandle m_lock;
};

}  // namespace

std::unique_ptr<CHost> MakeHost(CString programFolder) {
    return std::make_unique<CWin32Host>(std::move(programFolder));
}

CSystem MakeSystem() {
    // A drive without a disk in it answers with an error, not with a box that waits for somebody.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    CString folder = PathOf([](char* path, DWORD size) { return GetEnvironmentVariableA("DELVANE_HOME", path, size); });
    while (folder.ends_with('\\') || folder.ends_with('/'))
        folder.pop_back();
    return {MakeMachine(), MakeHost(folder.empty() ? ExecutableFolder() : folder)};
}

}  // namespace delvane
