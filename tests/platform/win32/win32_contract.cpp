// The machine that the tests run on, with the contents of the contract: its files in a temporary folder, its keys below
// those of the user.
#include <cstring>

#include "platform/win32/system.h"
#include "tests/support/contract_machine.h"
#include "tests/support/temporary_folder.h"

namespace delvane {
namespace {

// Texts are written in UTF-16, as any program may do it.
void SetText(::HKEY key, std::wstring_view name, DWORD type, std::wstring_view text) {
    std::wstring whole(text);
    whole += L'\0';
    RegSetValueExW(key, std::wstring(name).c_str(), 0, type, reinterpret_cast<const BYTE*>(whole.data()),
                   static_cast<DWORD>(whole.size() * sizeof(wchar_t)));
}

class CWin32Contract : public CContractMachine {
public:
    CWin32Contract() {
        for (const char* name : {"Alpha.txt", "app.exe", "beta/inner.txt", "driver.sys", "old.exe"})
            m_folder.Write("files/" + std::string(name), ContractBytes(name));
        const std::wstring wide = Widen(m_folder.GetPath()) + L"\\files\\";
        CloseHandle(
            CreateFileW((wide + L"\u00C9t\u00E9.txt").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
        m_folder.MakeFolder("files/empty");
        m_folder.MakeFolder("own");
        const HANDLE alpha =
            CreateFileW((wide + L"Alpha.txt").c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        const ::FILETIME time{static_cast<DWORD>(kContractTime), static_cast<DWORD>(kContractTime >> 32)};
        SetFileTime(alpha, nullptr, nullptr, &time);
        CloseHandle(alpha);
        RegDeleteTreeW(SystemKey(HKEY_CURRENT_USER), m_strKey.c_str());
        ::HKEY key = nullptr;
        RegCreateKeyExW(SystemKey(HKEY_CURRENT_USER), m_strKey.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr);
        SetText(key, L"", REG_SZ, L"unnamed");
        RegSetValueExA(key, "Binary", 0, REG_BINARY, reinterpret_cast<const BYTE*>("\0\1\xFF"), 3);
        SetText(key, L"Expand", REG_EXPAND_SZ, L"%x%");
        SetText(key, L"Multi", REG_MULTI_SZ, std::wstring_view(L"a\0b\0", 4));
        RegSetValueExA(key, "Number", 0, REG_DWORD, reinterpret_cast<const BYTE*>("\x0C\0\0\0"), 4);
        SetText(key, L"Text", REG_SZ, L"abc");
        SetText(key, L"\u00DCn\u00EF", REG_SZ, L"\u00DC\u20AC");
        ::HKEY below = nullptr;
        RegCreateKeyExW(key, L"Alpha\\Deep", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &below, nullptr);
        RegSetValueExA(below, "last", 0, REG_DWORD, reinterpret_cast<const BYTE*>("\1\0\0\0"), 4);
        RegCloseKey(below);
        RegCreateKeyExW(key, L"beta", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &below, nullptr);
        RegCloseKey(below);
        RegCloseKey(key);
    }
    ~CWin32Contract() override { RegDeleteTreeW(SystemKey(HKEY_CURRENT_USER), m_strKey.c_str()); }

    CMachine& Get() override { return *m_pMachine; }
    CHost& GetHost() override { return *m_pHost; }
    CString GetFolder() const override { return Slashed("files"); }
    CString GetOwnFolder() const override { return Slashed("own"); }
    CString GetLineEnd() const override { return "\r\n"; }
    CString GetKeyName() const override { return Narrow(m_strKey.substr(m_strKey.rfind(L'\\') + 1)); }

private:
    CString Slashed(std::string_view below) const { return m_folder.GetPath() + "\\" + CString(below); }

    // Several tests run at a time, and there is one registry.
    std::wstring m_strKey = L"Software\\Contract " + std::to_wstring(GetCurrentProcessId());
    CTemporaryFolder m_folder;
    const std::unique_ptr<CMachine> m_pMachine = MakeMachine();
    const std::unique_ptr<CHost> m_pHost = MakeHost(Slashed("own"));
};

}  // namespace

std::vector<CContractCase> GetContractCases() {
    return {GetScriptedCase(), {"Win32", [] { return std::make_unique<CWin32Contract>(); }}};
}

}  // namespace delvane
