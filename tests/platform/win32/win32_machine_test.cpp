// What only a living machine does: its registry changes, its names outgrow the records of its calls.
#include <gtest/gtest.h>

#include "platform/win32/system.h"
#include "tests/support/key_view.h"
#include "tests/support/search.h"
#include "tests/support/temporary_folder.h"

namespace delvane {
namespace {

class Win32Machine : public testing::Test {
protected:
    Win32Machine() {
        Remove();
        m_key = Create(L"");
    }
    ~Win32Machine() override {
        RegCloseKey(m_key);
        Remove();
    }

    // A key below the test's own.
    static ::HKEY Create(const std::wstring& below) {
        ::HKEY key = nullptr;
        RegCreateKeyExW(SystemKey(HKEY_CURRENT_USER), (kKey + (below.empty() ? below : L"\\" + below)).c_str(), 0,
                        nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        return key;
    }
    static void Remove() { RegDeleteTreeW(SystemKey(HKEY_CURRENT_USER), kKey.c_str()); }

    HKEY OpenOwn() { return OpenPath(m_pMachine->GetRegistry(), HKEY_CURRENT_USER, Narrow(kKey)); }

    static const std::wstring kKey;
    CTemporaryFolder m_folder;
    const std::unique_ptr<CMachine> m_pMachine = MakeMachine();
    const std::unique_ptr<CHost> m_pHost = MakeHost(m_folder.GetPath());
    ::HKEY m_key = nullptr;
};

// Several tests run at a time, and there is one registry.
const std::wstring Win32Machine::kKey = L"Software\\Delvane Test " + std::to_wstring(GetCurrentProcessId());

// The sizes that the system tells count UTF-16 units on some systems; in UTF-8 the texts are up to three times as long.
TEST_F(Win32Machine, RoomsSufficeForTextsThatGrowInTheCodePage) {
    const std::wstring longName(200, L'\u65E5');
    const std::wstring longText(5000, L'\u672C');
    RegCloseKey(Create(longName));
    RegSetValueExW(m_key, longName.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(longText.c_str()),
                   static_cast<DWORD>((longText.size() + 1) * sizeof(wchar_t)));
    const CKeyView view = ViewKey(m_pMachine->GetRegistry(), OpenOwn());
    EXPECT_EQ(view.m_values.at(0).first, Narrow(longName));
    EXPECT_EQ(view.m_values.at(0).second.second, Narrow(longText) + '\0');
    EXPECT_EQ(view.m_subkeys, std::vector<CString>{Narrow(longName)});
}

// What a walk enumerates is what was there when it asked for the sizes.
TEST_F(Win32Machine, AKeyThatChangesDuringTheWalkEndsNothing) {
    RegCloseKey(Create(L"a"));
    RegCloseKey(Create(L"b"));
    RegSetValueExA(m_key, "v", 0, REG_SZ, reinterpret_cast<const BYTE*>("1"), 2);
    const HKEY key = OpenOwn();
    CKeyInfo info;
    ASSERT_EQ(m_pMachine->GetRegistry().RegQueryInfoKey(key, info), ERROR_SUCCESS);
    RegDeleteKeyA(m_key, "a");
    RegDeleteValueA(m_key, "v");
    char bytes[8] = {};
    CRoom name{bytes, sizeof bytes};
    ASSERT_EQ(m_pMachine->GetRegistry().RegEnumKeyEx(key, 0, name), ERROR_SUCCESS);
    EXPECT_EQ(CString(bytes, name.m_nSize), "a");
    HKEY gone = 0;
    EXPECT_EQ(m_pMachine->GetRegistry().RegOpenKeyEx(key, "a", gone), ERROR_FILE_NOT_FOUND);
    name.m_nSize = sizeof bytes;
    ASSERT_EQ(m_pMachine->GetRegistry().RegEnumKeyEx(key, 1, name), ERROR_SUCCESS);
    EXPECT_EQ(CString(bytes, name.m_nSize), "b");
    // One that goes between its opening and the first question is an empty one.
    HKEY below = 0;
    ASSERT_EQ(m_pMachine->GetRegistry().RegOpenKeyEx(key, "b", below), ERROR_SUCCESS);
    RegDeleteKeyA(m_key, "b");
    EXPECT_EQ(m_pMachine->GetRegistry().RegQueryInfoKey(below, info), ERROR_SUCCESS);
    EXPECT_EQ(info.m_nValues + info.m_nSubkeys, 0U);
}

TEST_F(Win32Machine, PerformanceDataAreNoKey) {
    const HKEY perflib = OpenPath(m_pMachine->GetRegistry(), HKEY_LOCAL_MACHINE,
                                  "Software\\Microsoft\\Windows NT\\CurrentVersion\\Perflib");
    HKEY key = 0;
    EXPECT_EQ(m_pMachine->GetRegistry().RegOpenKeyEx(perflib, "009", key), ERROR_INVALID_HANDLE);
    EXPECT_EQ(key, 0U);
}

TEST_F(Win32Machine, ALinkToItsOwnAncestorIsNotOpened) {
    const auto link = [](const wchar_t* name, const std::wstring& target) {
        ::HKEY key = nullptr;
        RegCreateKeyExW(SystemKey(HKEY_CURRENT_USER), (kKey + L"\\" + name).c_str(), 0, nullptr, REG_OPTION_CREATE_LINK,
                        KEY_ALL_ACCESS, nullptr, &key, nullptr);
        RegSetValueExW(key, L"SymbolicLinkValue", 0, REG_LINK, reinterpret_cast<const BYTE*>(target.data()),
                       static_cast<DWORD>(target.size() * sizeof(wchar_t)));
        RegCloseKey(key);
    };
    // Wine's registry has one user, of this name.
    const std::wstring own = L"\\Registry\\User\\S-1-5-21-0-0-0-1000\\" + kKey;
    RegCloseKey(Create(L"real\\below"));
    link(L"up", own);
    link(L"aside", own + L"\\real");
    const HKEY key = OpenOwn();
    HKEY opened = 0;
    EXPECT_EQ(m_pMachine->GetRegistry().RegOpenKeyEx(key, "up", opened), ERROR_CANT_RESOLVE_FILENAME);
    EXPECT_EQ(m_pMachine->GetRegistry().RegOpenKeyEx(key, "aside", opened), ERROR_SUCCESS);
    CKeyInfo info;
    EXPECT_EQ(m_pMachine->GetRegistry().RegQueryInfoKey(opened, info), ERROR_SUCCESS);
    EXPECT_EQ(info.m_nSubkeys, 1U);
    // A link is deleted by its own handle; deleting it by name would go to what it leads to.
    using CDeleteKey = LONG WINAPI(HANDLE);
    auto* const deleteKey = reinterpret_cast<CDeleteKey*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtDeleteKey")));
    for (const wchar_t* name : {L"up", L"aside"}) {
        ::HKEY made = nullptr;
        RegOpenKeyExW(m_key, name, REG_OPTION_OPEN_LINK, KEY_ALL_ACCESS, &made);
        EXPECT_EQ(deleteKey(made), 0);
        RegCloseKey(made);
    }
}

// Paths beyond the usual limit, and names with a period at their end, which the calls in the code page cut off.
TEST_F(Win32Machine, DirectoriesThatTheCallsDoNotReachAreListedAllTheSame) {
    const CString deep = m_folder.GetPath() + "\\" + CString(120, 'a') + "\\" + CString(120, 'b');
    const CString dotted = m_folder.GetPath() + "\\dotted.";
    CreateDirectoryW(LongWidePath(deep.substr(0, deep.rfind('\\'))).c_str(), nullptr);
    for (const CString& path : {deep, dotted}) {
        ASSERT_NE(CreateDirectoryW(LongWidePath(path).c_str(), nullptr), 0) << GetLastError();
        const CHandle file(CreateFileW(LongWidePath(path + "\\inside.txt").c_str(), GENERIC_WRITE, 0, nullptr,
                                       CREATE_NEW, 0, nullptr));
        ASSERT_TRUE(static_cast<bool>(file)) << GetLastError();
    }
    for (const CString& path : {deep, dotted}) {
        const auto search = SearchOf(*m_pMachine, path);
        ASSERT_NE(search, nullptr) << path;
        CFindData data;
        ASSERT_TRUE(search->Next(data));
        EXPECT_EQ(data.m_name, "inside.txt");
        EXPECT_FALSE(search->Next(data));
        CFileWords words;
        EXPECT_EQ(m_pMachine->GetSearches().FindPath(path + "\\inside.txt", words), ERROR_SUCCESS) << path;
    }
    for (const CString& path : {deep, dotted}) {
        DeleteFileW(LongWidePath(path + "\\inside.txt").c_str());
        RemoveDirectoryW(LongWidePath(path).c_str());
    }
}

TEST_F(Win32Machine, AFileThatMayNotBeWrittenStaysAsItIs) {
    const CString path = m_folder.GetPath() + "\\a.dvs";
    m_folder.Write("a.dvs", "good");
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_THROW(m_pHost->CreateFile(path), CFileOpenError);
    EXPECT_EQ(m_pHost->CreateTextFile(path), nullptr);
    EXPECT_EQ(m_folder.Read("a.dvs"), "good");
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    // The words of the failure are the system's.
    try {
        m_pHost->ReadFile(m_folder.GetPath() + "\\none", 1);
        FAIL();
    } catch (const CFileOpenError& error) {
        EXPECT_EQ(CString(error.what()), m_folder.GetPath() + "\\none: open: " + ErrorText(2) + " (2)");
    }
    EXPECT_FALSE(ErrorText(5).empty() || ErrorText(5).ends_with('.') || ErrorText(5).ends_with('\n'));
}

TEST_F(Win32Machine, AFolderIsLockedForOneAtATime) {
    EXPECT_TRUE(m_pHost->LockProgramFolder());
    EXPECT_FALSE(MakeHost(m_folder.GetPath())->LockProgramFolder());
    EXPECT_TRUE(MakeHost(m_folder.MakeFolder("other"))->LockProgramFolder());
}

}  // namespace
}  // namespace delvane
