// The machine that the program runs on, by the calls of the Windows API in its code page.
#include <algorithm>
#include <array>

#include "platform/file_search.h"
#include "platform/registry.h"
#include "platform/win32/system.h"

// Behind windows.h, which they need.
#include <imagehlp.h>
#include <winnetwk.h>

namespace delvane {
namespace {

// The part of a mapped image that its headers are read from.
class CMappedSource : public CByteSource {
public:
    CMappedSource(const unsigned char* bytes, std::size_t size) : m_pBytes(bytes), m_nSize(size) {}
    std::uint64_t GetSize() const override { return m_nSize; }
    std::size_t Read(std::uint64_t offset, void* into, std::size_t size) const override {
        if (offset >= m_nSize) return 0;
        const std::size_t there = std::min<std::size_t>(size, m_nSize - static_cast<std::size_t>(offset));
        std::copy_n(m_pBytes + offset, there, static_cast<unsigned char*>(into));
        return there;
    }

private:
    const unsigned char* m_pBytes;
    std::size_t m_nSize;
};

// Whether the drive is the root of the host that Wine runs on, which is no disk of the machine under examination.
bool IsHostRoot(const CString& root) {
    using CGetUnixName = char* CDECL(const wchar_t*);
    static auto* const getName = FindOperation<CGetUnixName>("kernel32.dll", "wine_get_unix_file_name");
    if (getName == nullptr) return false;
    char* const name = getName(Widen(root).c_str());
    const bool isRoot = name != nullptr && std::string_view(name).find_first_not_of("/.") == std::string_view::npos;
    HeapFree(GetProcessHeap(), 0, name);
    return isRoot;
}

// A version block as the system keeps it, and its look-up.
class CSystemVersion : public CVersionInfo {
public:
    explicit CSystemVersion(std::vector<char> block) : m_block(std::move(block)) {}
    std::optional<std::string> Query(std::string_view path) const override {
        void* text = nullptr;
        UINT length = 0;  // with the NUL
        if (VerQueryValueA(m_block.data(), CString(path).c_str(), &text, &length) == 0 || text == nullptr) return {};
        const char* const begin = static_cast<const char*>(text);
        return std::string(begin, strnlen(begin, length));
    }

private:
    std::vector<char> m_block;
};

class CWin32Machine : public CMachine {
public:
    CString GetProblem() const override { return {}; }

    CVersionRecord GetVersion() override {
        OSVERSIONINFOA version{};
        version.dwOSVersionInfoSize = sizeof version;
        if (GetVersionExA(&version) == 0) return {};
        return {version.dwPlatformId, version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber,
                CString(version.szCSDVersion, strnlen(version.szCSDVersion, sizeof version.szCSDVersion))};
    }
    bool GetUserName(CString& name) override {
        DWORD size = 0;  // with the NUL
        GetUserNameA(nullptr, &size);
        name.resize(size);
        const bool isKnown = size != 0 && GetUserNameA(name.data(), &size) != 0;
        name.resize(isKnown ? size - 1 : 0);
        return isKnown;
    }
    bool GetComputerName(CString& name) override {
        name.resize((MAX_COMPUTERNAME_LENGTH + 1) * 3);
        auto size = static_cast<DWORD>(name.size());
        const bool isKnown = GetComputerNameA(name.data(), &size) != 0;
        name.resize(isKnown ? size : 0);
        return isKnown;
    }
    CString GetSystemDirectory() override { return PathOf(GetSystemDirectoryA); }
    CString GetWindowsDirectory() override { return PathOf(GetWindowsDirectoryA); }
    CString GetTempPath() override {
        return PathOf([](char* path, DWORD size) { return GetTempPathA(size, path); });
    }
    // The library is looked for in the system's own directory alone, not beside the program.
    CFolderFunction LoadFolderLibrary() override {
        const CString path = GetSystemDirectory() + "\\ShFolder.dll";
        const std::shared_ptr<HINSTANCE__> library(LoadLibraryA(path.c_str()), [](HMODULE module) {
            if (module != nullptr) FreeLibrary(module);
        });
        using CGetFolderPath = HRESULT WINAPI(HWND, int, HANDLE, DWORD, char*);
        auto* const getPath = FindOperation<CGetFolderPath>(library.get(), "SHGetFolderPathA");
        if (getPath == nullptr) return {};
        return [library, getPath](int kind, CString& folder) {
            std::array<char, MAX_PATH * 3> buffer{};  // of any code page
            if (getPath(nullptr, kind, nullptr, 0, buffer.data()) < 0) return false;
            folder = buffer.data();
            return true;
        };
    }

    std::uint32_t GetLogicalDrives() override { return ::GetLogicalDrives(); }
    std::uint32_t GetDriveType(std::string_view root) override {
        const CString name(root);
        const std::uint32_t type = GetDriveTypeA(name.c_str());
        return type == DRIVE_FIXED && IsHostRoot(name) ? DRIVE_REMOTE : type;
    }
    std::uint32_t GetVolumeLabel(std::string_view root, CString& label) override {
        std::array<char, MAX_PATH + 1> text{};
        if (GetVolumeInformationA(CString(root).c_str(), text.data(), static_cast<DWORD>(text.size()), nullptr, nullptr,
                                  nullptr, nullptr, 0) == 0) {
            return GetLastError();
        }
        label = text.data();
        return ERROR_SUCCESS;
    }
    std::uint32_t GetConnection(std::string_view name, CString& share) override {
        std::array<char, MAX_PATH + 1> text{};
        auto size = static_cast<DWORD>(text.size());
        const DWORD code = WNetGetConnectionA(CString(name).c_str(), text.data(), &size);
        if (code == ERROR_SUCCESS) share = text.data();
        return code;
    }

    void BeginWalk() override {
        m_pRegistry->BeginWalk();
        m_pSearches->BeginWalk();
    }
    CSearchSet& GetSearches() override { return *m_pSearches; }
    CRegistry& GetRegistry() override { return *m_pRegistry; }

    // An emulated MapAndLoad sets neither flag, so the headers are looked at again: where it maps them in the memory
    // that it gives, else in the file.
    bool MapAndLoad(std::string_view path, CLoadedImage& image) override {
        image = {};
        LOADED_IMAGE loaded{};
        CString name(path);
        const bool isMapped = ::MapAndLoad(name.data(), nullptr, &loaded, FALSE, TRUE) != 0;
        CLoadedImage seen;
        if (isMapped && loaded.MappedAddress != nullptr) {
            MapImage(CMappedSource(loaded.MappedAddress, loaded.SizeOfImage), seen);
        } else if (const CDiskFile file(path); file) {
            MapImage(file, seen);
        }
        image.fSystemImage = loaded.fSystemImage != 0 || seen.fSystemImage;
        image.fDOSImage = loaded.fDOSImage != 0 || seen.fDOSImage;
        UnMapAndLoad(&loaded);
        return isMapped;
    }
    std::unique_ptr<const CVersionInfo> GetFileVersionInfo(std::string_view path) override {
        const CString name(path);
        DWORD ignored = 0;
        const DWORD size = GetFileVersionInfoSizeA(name.c_str(), &ignored);
        if (size == 0) return nullptr;
        std::vector<char> block(size);
        if (GetFileVersionInfoA(name.c_str(), 0, size, block.data()) == 0) return nullptr;
        return std::make_unique<const CSystemVersion>(std::move(block));
    }

private:
    std::vector<CNotice> GetNotices() override {
        std::vector<CNotice> notices = m_pRegistry->GetProblems();
        notices.insert(notices.end(), m_pSearches->GetNotices().begin(), m_pSearches->GetNotices().end());
        return notices;
    }

    std::unique_ptr<CSearchSet> m_pSearches = MakeSearchSet();
    std::unique_ptr<CRegistry> m_pRegistry = MakeRegistry();
};

}  // namespace

std::unique_ptr<CMachine> MakeMachine() { return std::make_unique<CWin32Machine>(); }

}  // namespace delvane
