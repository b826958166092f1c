// What every machine does alike, whether it is the one that the program runs on, a hosted one, or one in memory.
#include <gtest/gtest.h>
#include <map>

#include "tests/support/contract_machine.h"
#include "tests/support/key_view.h"
#include "tests/support/search.h"

namespace delvane {
namespace {

class MachineContract : public testing::TestWithParam<CContractCase> {
protected:
    CMachine& Machine() { return m_pContract->Get(); }
    CHost& Host() { return m_pContract->GetHost(); }
    CString Path(std::string_view below) const { return m_pContract->GetFolder() + "\\" + CString(below); }
    CString OwnPath(std::string_view below) const { return m_pContract->GetOwnFolder() + "\\" + CString(below); }

    std::vector<CString> List(const CString& path) {
        std::vector<CString> names;
        const auto search = SearchOf(Machine(), path);
        if (search == nullptr) return {"(no search)"};
        for (CFindData data; search->Next(data);) {
            if (data.m_name != "." && data.m_name != "..") names.emplace_back(data.m_name);
        }
        return names;
    }
    CRegistry& Registry() { return Machine().GetRegistry(); }
    HKEY Open(const CString& path) { return OpenPath(Registry(), HKEY_CURRENT_USER, path); }
    void WriteOwn(const CString& path, std::string_view bytes) {
        const auto file = Host().CreateFile(path);
        file->Write(bytes);
        file->Commit();
    }
    CString ReadOwn(const CString& path) { return CString(Host().ReadFile(path, 1000).GetBytes()); }

    std::unique_ptr<CContractMachine> m_pContract = GetParam().m_make();
};

TEST_P(MachineContract, ASearchListsTheDirectoryInByteOrder) {
    const std::vector<CString> names = {"Alpha.txt", "app.exe", "beta", "driver.sys", "empty", "old.exe", "Été.txt"};
    EXPECT_EQ(List(m_pContract->GetFolder()), names);
    EXPECT_EQ(List(Path("beta")), std::vector<CString>{"inner.txt"});
    EXPECT_EQ(List(Path("empty")), std::vector<CString>());
    for (const char* none : {"missing", "Alpha.txt", "Alpha.txt\\x", "b*"})
        EXPECT_EQ(List(Path(none)), std::vector<CString>{"(no search)"}) << none;
}

TEST_P(MachineContract, AnEntryTellsItsWords) {
    const auto search = SearchOf(Machine(), m_pContract->GetFolder());
    ASSERT_NE(search, nullptr);
    bool isSeen = false;
    for (CFindData data; search->Next(data);) {
        const bool isDirectory = data.m_name == "beta" || data.m_name == "empty";
        EXPECT_EQ((data.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0, isDirectory) << data.m_name;
        // Searches of what was just delivered may be opened, and do not disturb the one above.
        if (isDirectory) {
            EXPECT_EQ(List(Path(data.m_name)).size(), data.m_name == "beta" ? 1U : 0U);
        }
        CFileWords found;
        EXPECT_EQ(Machine().GetSearches().FindPath(Path(data.m_name), found), ERROR_SUCCESS) << data.m_name;
        EXPECT_EQ(found.m_dwAttributes, data.m_dwAttributes);
        EXPECT_EQ(found.GetSize(), data.GetSize());
        EXPECT_EQ(found.m_ftLastWrite, data.m_ftLastWrite);
        if (data.m_name != "Alpha.txt") continue;
        isSeen = true;
        EXPECT_EQ(data.GetSize(), 5U);
        EXPECT_EQ(data.m_ftLastWrite.GetTicks(), kContractTime);
    }
    EXPECT_TRUE(isSeen);
}

TEST_P(MachineContract, PathsAreFoundWithoutRegardToCase) {
    CFileWords words;
    for (const char* path : {"alpha.TXT", "BETA\\INNER.TXT", "beta\\\\inner.txt", "beta/inner.txt", "éTÉ.txt"})
        EXPECT_EQ(Machine().GetSearches().FindPath(Path(path), words), ERROR_SUCCESS) << path;
    for (const char* path : {"gamma.txt", "beta\\gamma", "*.txt", "alpha.tx?"})
        EXPECT_NE(Machine().GetSearches().FindPath(Path(path), words), ERROR_SUCCESS) << path;
    EXPECT_EQ(List(Path("BETA")), std::vector<CString>{"inner.txt"});
}

TEST_P(MachineContract, ImagesAreToldApart) {
    CLoadedImage image;
    EXPECT_TRUE(Machine().MapAndLoad(Path("app.exe"), image));
    EXPECT_FALSE(image.fSystemImage || image.fDOSImage);
    EXPECT_TRUE(Machine().MapAndLoad(Path("driver.sys"), image));
    EXPECT_TRUE(image.fSystemImage && !image.fDOSImage);
    EXPECT_FALSE(Machine().MapAndLoad(Path("old.exe"), image));
    EXPECT_TRUE(image.fDOSImage && !image.fSystemImage);
    for (const char* path : {"Alpha.txt", "beta", "missing"}) {
        EXPECT_FALSE(Machine().MapAndLoad(Path(path), image)) << path;
        EXPECT_FALSE(image.fDOSImage || image.fSystemImage) << path;
    }
}

TEST_P(MachineContract, VersionsAreFoundByTheirPath) {
    const auto version = Machine().GetFileVersionInfo(Path("app.exe"));
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(version->Query("\\StringFileInfo\\040904B0\\FileVersion"), "1.2");
    EXPECT_EQ(version->Query("\\stringfileinfo\\040904b0\\fileversion"), "1.2");
    EXPECT_EQ(version->Query("\\StringFileInfo\\040704B0\\FileVersion"), std::nullopt);
    EXPECT_EQ(version->Query("\\StringFileInfo\\040904B0\\ProductVersion"), std::nullopt);
    EXPECT_EQ(Machine().GetFileVersionInfo(Path("driver.sys")), nullptr);
    EXPECT_EQ(Machine().GetFileVersionInfo(Path("missing")), nullptr);
}

// A walk asks for the sizes first; rooms of those sizes hold everything.
TEST_P(MachineContract, AKeyIsEnumeratedInRoomsOfTheSizesThatItTells) {
    const HKEY key = Open("Software\\" + m_pContract->GetKeyName());
    using namespace std::string_literals;
    const std::map<CString, std::pair<std::uint32_t, CString>> expected = {
        {"", {REG_SZ, "unnamed\0"s}},
        {"Binary", {REG_BINARY, "\0\1\xFF"s}},
        {"Expand", {REG_EXPAND_SZ, "%x%\0"s}},
        {"Multi", {REG_MULTI_SZ, "a\0b\0\0"s}},
        {"Number", {REG_DWORD, "\x0C\0\0\0"s}},
        {"Text", {REG_SZ, "abc\0"s}},
        {"Ünï", {REG_SZ, "Ü€\0"s}},
    };
    const CKeyView view = ViewKey(Registry(), key);
    EXPECT_EQ(std::map(view.m_values.begin(), view.m_values.end()), expected);
    EXPECT_EQ(view.m_subkeys, (std::vector<CString>{"Alpha", "beta"}));
    char small[4];
    CRoom tooSmall{small, sizeof small};
    EXPECT_EQ(Registry().RegEnumKeyEx(key, 0, tooSmall), ERROR_MORE_DATA);
    Registry().RegCloseKey(key);
}

TEST_P(MachineContract, KeysAndValuesAreFoundWithoutRegardToCase) {
    const HKEY key = Open("SOFTWARE\\" + MakeLower(m_pContract->GetKeyName()));
    CRoom size;
    EXPECT_EQ(Registry().RegQueryValueEx(key, "TEXT", nullptr, size), ERROR_SUCCESS);
    EXPECT_EQ(size.m_nSize, 4U);
    char bytes[8] = {};
    CRoom room{bytes, sizeof bytes};
    std::uint32_t type = 0;
    EXPECT_EQ(Registry().RegQueryValueEx(key, "ünÏ", &type, room), ERROR_SUCCESS);
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(CString(bytes, room.m_nSize), CString("Ü€", 6));
    CRoom small{bytes, 2};
    EXPECT_EQ(Registry().RegQueryValueEx(key, "Text", &type, small), ERROR_MORE_DATA);
    EXPECT_EQ(Registry().RegQueryValueEx(key, "none", &type, room), ERROR_FILE_NOT_FOUND);
    const HKEY deep = Open("Software\\" + m_pContract->GetKeyName() + "\\ALPHA\\deep");
    CKeyInfo info;
    EXPECT_EQ(Registry().RegQueryInfoKey(deep, info), ERROR_SUCCESS);
    EXPECT_EQ(info.m_nValues, 1U);
    HKEY none = 0;
    EXPECT_EQ(Registry().RegOpenKeyEx(key, "Gamma", none), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(none, 0U);
    Registry().RegCloseKey(deep);
    EXPECT_NE(Registry().RegQueryInfoKey(deep, info), ERROR_SUCCESS) << "it is closed";
    Registry().RegCloseKey(0);
}

// Whatever stood in a file's place stays whole until the new one is.
TEST_P(MachineContract, AFileIsReplacedAsAWholeOrNotAtAll) {
    const CString path = OwnPath("a.dvs");
    EXPECT_FALSE(Host().FileExists(path));
    Host().CreateFile(path)->Write("left half way");
    EXPECT_FALSE(Host().FileExists(path));
    WriteOwn(path, "one");
    EXPECT_EQ(ReadOwn(path), "one");
    {
        const auto file = Host().CreateFile(path);
        file->Write("two");
        EXPECT_EQ(ReadOwn(path), "one");
    }
    EXPECT_EQ(ReadOwn(path), "one");
    WriteOwn(path, "three");
    EXPECT_EQ(ReadOwn(path), "three");
    EXPECT_TRUE(Host().DeleteFile(path));
    EXPECT_FALSE(Host().FileExists(path) || Host().DeleteFile(path));
}

TEST_P(MachineContract, FilesAreReadWithinALimit) {
    const CString path = OwnPath("a.dvs");
    WriteOwn(path, "0123456789");
    EXPECT_EQ(Host().ReadFile(path, 10).GetBytes(), "0123456789");
    EXPECT_THROW(Host().ReadFile(path, 9), CFileError);
    EXPECT_EQ(Host().ReadFileHead(path, 4).GetBytes(), "0123");
    EXPECT_EQ(Host().ReadFileHead(path, 40).GetBytes(), "0123456789");
    WriteOwn(path, "");
    EXPECT_EQ(Host().ReadFile(path, 10).GetBytes(), "");
    EXPECT_THROW(Host().ReadFile(OwnPath("none"), 10), CFileOpenError);
    EXPECT_THROW(Host().ReadFile(OwnPath("none\\none"), 10), CFileOpenError);
    EXPECT_THROW(Host().CreateFile(OwnPath("none\\a.dvs")), CFileOpenError);
    EXPECT_EQ(Host().CreateTextFile(OwnPath("none\\a.htm")), nullptr);
    *Host().CreateTextFile(path) << "line\n" << std::flush;
    EXPECT_EQ(ReadOwn(path), "line" + m_pContract->GetLineEnd());
    const auto file = Host().CreateFile(path);
    file->Write("a\nb");
    file->WriteText("\n\nc");
    file->Commit();
    EXPECT_EQ(ReadOwn(path), "a\nb" + m_pContract->GetLineEnd() + m_pContract->GetLineEnd() + "c");
}

TEST_P(MachineContract, DirectoriesAreMadeOneLevelAtATime) {
    EXPECT_FALSE(Host().CreateDirectory(OwnPath("a\\b")));
    EXPECT_TRUE(Host().CreateDirectory(OwnPath("a")));
    EXPECT_TRUE(Host().DirectoryExists(OwnPath("a")) && Host().DirectoryExists(OwnPath("a\\")));
    EXPECT_FALSE(Host().FileExists(OwnPath("a")));
    EXPECT_FALSE(Host().CreateDirectory(OwnPath("a"))) << "it is there";
    EXPECT_TRUE(Host().CreateDirectory(OwnPath("a\\b")));
    WriteOwn(OwnPath("a\\b\\c"), "x");
    EXPECT_FALSE(Host().DirectoryExists(OwnPath("a\\b\\c")));
    EXPECT_THROW(Host().CreateFile(OwnPath("a\\b")), CFileOpenError) << "a directory stands there";
}

TEST_P(MachineContract, TheMachineKnowsItself) {
    EXPECT_TRUE(Machine().IsPresent());
    const CString folder = m_pContract->GetFolder();
    const std::uint32_t drive = std::uint32_t{1} << (folder[0] - 'A');
    EXPECT_NE(Machine().GetLogicalDrives() & drive, 0U);
    EXPECT_EQ(Machine().GetDriveType(folder.substr(0, 3)), DRIVE_FIXED);
    CString label;
    EXPECT_EQ(Machine().GetVolumeLabel(folder.substr(0, 3), label), ERROR_SUCCESS);
    EXPECT_NE(Machine().GetConnection(folder.substr(0, 2), label), ERROR_SUCCESS);
    EXPECT_EQ(Machine().GetDriveType("Q:\\"), DRIVE_NO_ROOT_DIR);
    CString name;
    EXPECT_TRUE(Machine().GetUserName(name) && !name.empty());
    EXPECT_TRUE(Machine().GetComputerName(name) && !name.empty());
    EXPECT_TRUE(Machine().GetTempPath().ends_with('\\'));
    const CString windows = Machine().GetWindowsDirectory();
    EXPECT_TRUE(IsPrefixNoCase(windows + "\\", Machine().GetSystemDirectory())) << windows;
    EXPECT_GT(Host().GetSystemTime(), kContractTime - kTicksPerSecond * 86400 * 365);
}

INSTANTIATE_TEST_SUITE_P(Of, MachineContract, testing::ValuesIn(GetContractCases()),
                         [](const auto& test) { return test.param.m_strName; });

}  // namespace
}  // namespace delvane
