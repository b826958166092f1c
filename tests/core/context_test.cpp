// Identity, folders, drive selection, the configuration file and the error log.
#include <tuple>

#include "core/drive_names.h"
#include "tests/support/machine_test.h"

namespace delvane {
namespace {

class Context : public CMachineTest {
protected:
    static constexpr const char* kConfig = "C:\\Delvane\\delvane.cfg";
};

TEST_F(Context, TheSystemTextFollowsTheVersionRecord) {
    const std::tuple<CVersionRecord, const char*> kCases[] = {
        {{VER_PLATFORM_WIN32_WINDOWS, 4, 0, 0x03B6, "B"}, "Windows '95 - B"},
        {{VER_PLATFORM_WIN32_WINDOWS, 4, 10, 0x08AE, " A "}, "Windows '98"},
        {{VER_PLATFORM_WIN32_NT, 3, 51, 1057, ""}, "Windows NT 4.0 (Build 1057)"},
        {{VER_PLATFORM_WIN32_NT, 4, 0, 1381, "Service Pack 6a"}, "Windows NT 4.0 - Service Pack 6a (Build 1381)"},
        {{VER_PLATFORM_WIN32_NT, 10, 0, 19045, ""}, "Windows 2000 (Build 19045)"},
    };
    for (const auto& [version, text] : kCases) {
        m_pMachine->m_version = version;
        theContext.Initialize();
        EXPECT_EQ(theContext.m_strOsName, text);
        theContext.m_bWin98 = theContext.m_bWinNT4 = theContext.m_bWin2000 = false;
    }
}

TEST_F(Context, TheProgramsTopFolderAndTheTemporaryOneAreSkipped) {
    const std::pair<const char*, const char*> kCases[] = {
        {"C:\\Tools\\Delvane\\Bin\\delvane.exe", "C:\\Tools"},
        {"C:\\Delvane\\delvane.exe", "C:\\Delvane"},
        {"C:\\delvane.exe", "C:"},
        {"\\\\server\\share\\tools\\delvane.exe", "\\\\server\\share\\tools"},
    };
    for (const auto& [program, skipped] : kCases) {
        m_pHost->m_strProgram = program;
        theContext.m_lstSkipDirs.clear();
        theContext.Initialize();
        EXPECT_EQ(theContext.m_lstSkipDirs.front(), skipped) << program;
    }
    EXPECT_FALSE(theContext.IsDirAllowed("c:\\TEMP"));
    EXPECT_TRUE(theContext.IsDirAllowed("C:\\Temp\\deeper"));
    EXPECT_FALSE(theContext.IsNameAllowed("Recycler"));
}

TEST_F(Context, DrivesAreSelectedByMaskThenByKind) {
    const char* const disks = R"(
        C: fixed
        D: cdrom
        E: remote
        F: removable
        G: ramdisk
    )";
    const auto selected = [&](const char* commandLine) {
        std::destroy_at(&theContext);
        std::construct_at(&theContext);
        theContext.SetSystem({std::make_unique<CScriptedMachine>(disks), std::make_unique<CScriptedHost>()});
        theContext.Initialize();
        Parse(commandLine);
        CString drives;
        for (char letter = 'A'; letter <= 'Z'; ++letter) {
            if (theContext.IsDriveSelected(CString(1, letter) + ":")) drives += letter;
        }
        return drives;
    };
    EXPECT_EQ(selected(""), "C");
    EXPECT_EQ(selected("/dg:cd /dg:nd /dg:rd"), "CDEF");
    EXPECT_EQ(selected("/dg:cd /dg:hd-"), "") << "hard drives are the gate for every kind";
    EXPECT_EQ(selected("/dg:hd- /d:d"), "D");
    EXPECT_EQ(selected("/d:c- /d:c+"), "C") << "on is tested before off";
    EXPECT_EQ(selected("/d:c-"), "");
    EXPECT_EQ(selected("/d:g /d:x"), "CG") << "a RAM disk by its letter alone, and no drive that is not there";
    m_pMachine = nullptr;
}

TEST_F(Context, FoldersComeFromTheLibraryOrFromTheSystemsOwnRule) {
    m_pMachine->m_folders[CSIDL_APPDATA] = "C:\\Users\\t\\AppData";
    theContext.Initialize();
    EXPECT_EQ(*theContext.GetFolder(CSIDL_APPDATA), "C:\\Users\\t\\AppData");
    EXPECT_EQ(*theContext.GetFolder(CSIDL_PERSONAL), "") << "Windows 2000 has no rule of its own";
    EXPECT_EQ(*theContext.GetFolder(CSIDL_PROGRAM_FILES), "C:\\Program Files");
    EXPECT_EQ(*theContext.GetFolder(CSIDL_WINDOWS), "C:\\WINNT");
    EXPECT_EQ(theContext.GetFolder(99), nullptr);
    m_pMachine->m_folders[CSIDL_PERSONAL] = "C:\\late";
    EXPECT_EQ(*theContext.GetFolder(CSIDL_PERSONAL), "C:\\late") << "an empty answer is not kept";
    m_pMachine->m_folders[CSIDL_PERSONAL] = "C:\\later";
    EXPECT_EQ(*theContext.GetFolder(CSIDL_PERSONAL), "C:\\late") << "any other is";
}

TEST_F(Context, OlderSystemsKeepProfilesUnderTheWindowsDirectory) {
    m_pMachine->m_bFolderLibrary = false;
    m_pMachine->m_version = {VER_PLATFORM_WIN32_NT, 4, 0, 1381, ""};
    theContext.Initialize();
    EXPECT_EQ(*theContext.GetFolder(CSIDL_LOCAL_APPDATA),
              "C:\\WINNT\\Profiles\\tester\\Local Settings\\Application Data");
    EXPECT_EQ(*theContext.GetFolder(CSIDL_COMMON_DOCUMENTS), "C:\\WINNT\\Profiles\\All Users\\Personal");
    theContext.m_strPersonal.clear();
    theContext.m_bWinNT4 = false;
    theContext.m_bWin98 = true;
    EXPECT_EQ(*theContext.GetFolder(CSIDL_PERSONAL), "C:\\WINNT\\My Documents");
    EXPECT_EQ(*theContext.GetFolder(CSIDL_COMMON_APPDATA), "");
    theContext.m_strPersonal.clear();
    m_pMachine->SetDisks("C: fixed\n  WINNT\\\n    Profiles\\\n      tester\\\n        Personal\\\n");
    EXPECT_EQ(*theContext.GetFolder(CSIDL_PERSONAL), "C:\\WINNT\\Profiles\\tester\\Personal");
}

TEST_F(Context, TheResultsDirectoryIsMadeOrGivenUpForTheProgramsOwn) {
    Start("");
    EXPECT_EQ(theContext.GetResultsDir(), "C:\\Delvane\\Results");
    EXPECT_TRUE(m_pHost->DirectoryExists("C:\\Delvane\\Results"));
    Parse("/res:C:\\missing\\parent\\");
    EXPECT_EQ(theContext.GetResultsDir(), "C:\\Delvane");
    m_pHost->m_directories.emplace_back("C:\\Out");
    Parse("/res:C:\\Out\\");
    EXPECT_EQ(theContext.GetResultsDir(), "C:\\Out\\");
}

TEST_F(Context, TheFirstRunWritesTheDefaultsAndSoDoesOneWithAShortFile) {
    m_pHost->m_files[kConfig] = CString(39, '\xFF');
    theContext.Initialize();
    EXPECT_EQ(m_pHost->m_files[kConfig].size(), 40U);
    m_pHost->m_files.clear();
    theContext.Initialize();
    EXPECT_EQ(theContext.m_dwDrivesOn, 0U);
    EXPECT_EQ(m_pHost->m_files[kConfig], CString(20, '\0') + CString("\1\0\0\0\1\0\0\0\1\0\0\0\1\0\0\0\1\0\0\0", 20));
    EXPECT_EQ(m_pHost->m_files.size(), 1U) << "and no error log";
}

TEST_F(Context, StoredOptionsAreReadAndSwitchesStandAboveThem) {
    CString stored(40, '\0');
    stored[0] = '\x08';   // drive D: on
    stored[12] = '\x02';  // compact discs, by a value other than 1
    m_pHost->m_files[kConfig] = stored + "more";
    Start("", "/r:hklm");
    EXPECT_EQ(theContext.m_dwDrivesOn, 8U);
    EXPECT_TRUE(theContext.m_bCompactDiscs);
    EXPECT_FALSE(theContext.m_bHardDrives);
    EXPECT_TRUE(theContext.m_bHklm);
    EXPECT_EQ(m_pHost->m_files[kConfig].size(), 44U) << "a run writes no switch back";
    EXPECT_TRUE(theContext.WriteConfig());
    EXPECT_EQ(m_pHost->m_files[kConfig][12], '\1');
}

TEST_F(Context, TheLogOfAnEarlierRunGoesAndAReadOnlyFolderLosesEntriesInSilence) {
    m_pHost->m_files["C:\\Delvane\\delvane.err"] = "old";
    Start("", "/q");
    EXPECT_EQ(ErrorLog(), "Bad Cmdline Switch: /q\n");
    theContext.m_pErrorLog.reset();
    theContext.Initialize();
    EXPECT_FALSE(m_pHost->FileExists("C:\\Delvane\\delvane.err"));
    m_pHost->m_bReadOnly = true;
    Parse("/q");
    EXPECT_EQ(ErrorLog(), "");
}

TEST_F(Context, DriveNamesAndMasksBelongTogether) {
    EXPECT_EQ(DriveBit("C:"), 4U);
    EXPECT_EQ(DriveName(0x14), "C:");
    EXPECT_EQ(DriveName(0), "");
    EXPECT_EQ(DriveNames(0x2C), "C:, D:, F:");
    EXPECT_EQ(DriveTypeText(5), "CD-Rom");
    EXPECT_EQ(DriveTypeText(7), "");
    m_pMachine->SetDisks(R"(
        C: fixed [System]
        D: fixed
        N: remote [\\server\share]
    )");
    EXPECT_EQ(DriveDisplayName("C:"), "C: [System]");
    EXPECT_EQ(DriveDisplayName("D:"), "D:");
    EXPECT_EQ(VolumeNameOf("N:"), "\\\\server\\share");
}

}  // namespace
}  // namespace delvane
