// Text and walks where the code page is not UTF-8.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "platform/win32/system.h"
#include "tests/support/key_view.h"
#include "tests/support/search.h"
#include "tests/support/temporary_folder.h"

namespace delvane {
namespace {

namespace fs = std::filesystem;

class CodePage : public testing::Test {
protected:
    explicit CodePage(unsigned page) : m_nPage(page) {}
    void SetUp() override { ASSERT_EQ(GetACP(), m_nPage); }

    // The names below the path, of directories with what lies in them.
    CString List(CMachine& machine, const CString& path) {
        const auto search = SearchOf(machine, path);
        if (search == nullptr) return "!";
        CString names;
        for (CFindData data; search->Next(data);) {
            names += CString(data.m_name);
            if ((data.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
                names += "(" + List(machine, path + "\\" + CString(data.m_name)) + ")";
            }
            names += " ";
        }
        return names;
    }

private:
    unsigned m_nPage;
};

class CodePage1252 : public CodePage {
protected:
    CodePage1252() : CodePage(1252) {}
};
class CodePage932 : public CodePage {
protected:
    CodePage932() : CodePage(932) {}
};

TEST_F(CodePage1252, CaseIsThatOfTheRunTimeLibrary) {
    EXPECT_FALSE(kHasDoubleBytes);
    EXPECT_EQ(mbsicmp("\xC9t\xE9 A", "\xE9T\xC9 a"), 0);  // Été
    EXPECT_NE(mbsicmp("\xD7", "\xF7"), 0);                // the signs of multiplication and division
    EXPECT_LT(mbsicmp("ab", "ABC"), 0);
    EXPECT_EQ(MakeLower("\xC9T\xC9"), "\xE9t\xE9");
    EXPECT_EQ(FoldCase("\xC9T\xE9"), FoldCase("\xE9t\xC9"));
    EXPECT_GT(mbscmp("\xE9", "z"), 0);
}

// Names that the code page has no form for are listed as it writes them, and cost what lies below them, no more.
TEST_F(CodePage1252, NamesWithoutAFormDoNotEndAWalk) {
    const CTemporaryFolder folder;
    const fs::path root = folder.GetPath();
    fs::create_directory(root / L"\u65E5");
    std::ofstream(root / L"\u65E5" / "inside.txt") << "x";
    std::ofstream(root / L"\u20AC.txt") << "x";
    std::ofstream(root / "z.txt") << "x";
    const std::unique_ptr<CMachine> machine = MakeMachine();
    EXPECT_EQ(List(*machine, folder.GetPath()), "?(!) z.txt \x80.txt ");
}

TEST_F(CodePage1252, KeysWithoutAFormDoNotEndAWalk) {
    const ::HKEY user = SystemKey(HKEY_CURRENT_USER);
    for (const wchar_t* name : {L"\u65E5\u672C", L"after"}) {
        ::HKEY key = nullptr;
        RegCreateKeyExW(user, (std::wstring(L"Software\\Page\\") + name).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                        nullptr, &key, nullptr);
        RegCloseKey(key);
    }
    const std::unique_ptr<CMachine> machine = MakeMachine();
    CRegistry& registry = machine->GetRegistry();
    const HKEY page = OpenPath(registry, HKEY_CURRENT_USER, "Software\\Page");
    const std::vector<CString> names = ViewKey(registry, page).m_subkeys;
    EXPECT_EQ(names.size(), 2U);
    std::vector<CString> opened;
    for (const CString& name : names) {
        HKEY key = 0;
        if (registry.RegOpenKeyEx(page, name, key) == ERROR_SUCCESS) opened.push_back(name);
    }
    EXPECT_EQ(opened, std::vector<CString>{"after"});
    RegDeleteTreeW(user, L"Software\\Page");
}

TEST_F(CodePage932, CharactersOfTwoBytesAreOneCharacter) {
    ASSERT_TRUE(kHasDoubleBytes);
    // A half-width kana has one byte, above the lead byte of the full-width letter, and a smaller code.
    const CString kana = "\xB1";
    const CString letter = "\x82\x60";
    EXPECT_LT(mbscmp(kana, letter), 0);
    EXPECT_LT(TextHead(kana), TextHead(letter));
    EXPECT_EQ(mbscmp(letter, letter), 0);
    EXPECT_LT(mbscmp("a", letter), 0);
    // Full-width letters have two cases; the second byte of a character is no letter of its own.
    EXPECT_EQ(mbsicmp(letter, "\x82\x81"), 0);
    EXPECT_NE(mbsicmp("\x83\x41", "\x83\x61"), 0);
    EXPECT_EQ(MakeLower("A" + letter), "a\x82\x81");
}

}  // namespace
}  // namespace delvane
