// What the report makes of changes: categories, findings, and the page.
#include "capture/executable.h"
#include "tests/support/report_test.h"

namespace delvane {
namespace {

class FileReport : public CReportTest {
protected:
    FileReport() {
        m_pMachine->m_folders = {{CSIDL_STARTMENU, "C:\\Prof\\me\\Start Menu"},
                                 {CSIDL_COMMON_STARTMENU, "C:\\Prof\\All\\Start Menu"},
                                 {CSIDL_APPDATA, "C:\\Prof\\me\\AppData"},
                                 {CSIDL_LOCAL_APPDATA, "C:\\Prof\\me\\Local"},
                                 {CSIDL_COMMON_APPDATA, "C:\\Prof\\All\\AppData"},
                                 {CSIDL_PERSONAL, "C:\\Prof\\me\\Documents"},
                                 {CSIDL_COMMON_DOCUMENTS, "C:\\Prof\\All\\Documents"},
                                 {CSIDL_PROGRAM_FILES, "C:\\Program Files"}};
    }
};

TEST_F(FileReport, ExecutablesAreSortedByPlaceAndByKind) {
    CMasterReport& report = Compare(R"(
        C: fixed
          Program Files\
            old.exe  ticks=1 image=pe32
          WINNT\
            sys.dll  ticks=1 image=pe32
    )",
                                    R"(
        C: fixed
          App\
            tool.exe  image=dos
          Prof\
            me\
              AppData\
                part.exe  image=pe32
          Program Files\
            app.exe  image=pe32
            old.exe  ticks=2 image=pe32
          Program Files2\
            near.exe  image=pe32
          WINNT\
            drv.sys  image=native
            sys.dll  ticks=2 image=dos
            text.txt
    )");
    const CFileReport& files = report.m_fileReport;
    EXPECT_EQ(PathsOf(files.m_exesProgramFiles), "C:\\Program Files\\app.exe\nC:\\Program Files2\\near.exe\n")
        << "a prefix knows no boundary";
    EXPECT_EQ(PathsOf(files.m_exesSystemAdded), "C:\\WINNT\\drv.sys\n");
    EXPECT_EQ(PathsOf(files.m_exesSystemChanged), "C:\\WINNT\\sys.dll\n");
    EXPECT_EQ(PathsOf(files.m_exesReplaced), "C:\\Program Files\\old.exe\nC:\\WINNT\\sys.dll\n");
    EXPECT_EQ(files.m_exesSystemChanged[0], files.m_exesReplaced[1]) << "one copy in both";
    EXPECT_EQ(PathsOf(files.m_exesOtherAdded), "C:\\App\\tool.exe\nC:\\Prof\\me\\AppData\\part.exe\n");
    EXPECT_EQ(PathsOf(files.m_exes16Bit), "C:\\App\\tool.exe\nC:\\WINNT\\sys.dll\n");
    EXPECT_EQ(PathsOf(files.m_exesKernelMode), "C:\\WINNT\\drv.sys\n");
    EXPECT_EQ(PathsOf(files.m_otherAdded), "C:\\App\nC:\\App\\tool.exe\nC:\\Prof\nC:\\Prof\\me\n");
    EXPECT_EQ(ObjectsOf(report.m_lstWarnings[1]), "Files/Directories\nFiles/Directories\n") << "182 and 265, once each";
    EXPECT_EQ(report.m_lstWarnings[2].size(), 1U);
    EXPECT_EQ(report.m_lstWarnings[5].size(), 1U);
    EXPECT_EQ(report.m_lstWarnings[7].size(), 1U);
    EXPECT_EQ(theApp.m_nExitCode, kExitFindings);
}

TEST_F(FileReport, KnownFoldersTakeWhatLiesInThemAndTheStartMenuIsNotedOnce) {
    CMasterReport& report = Compare(R"(
        C: fixed
          Prof\
            All\
              Documents\
                gone.doc
              Start Menu\  ticks=1
            me\
              Local\
                state  ticks=1
              Start Menu\
                gone.lnk
    )",
                                    R"(
        C: fixed
          Prof\
            All\
              Documents\
              Start Menu\  ticks=2
                new.lnk
            me\
              AppData\
              Documents\
                letter.doc
              Local\
                state  ticks=2
              Start Menu\
    )");
    const CFileReport& files = report.m_fileReport;
    EXPECT_EQ(PathsOf(files.m_startChanged), "C:\\Prof\\All\\Start Menu\n") << "the folder is a prefix of itself";
    EXPECT_EQ(PathsOf(files.m_startAdded), "C:\\Prof\\All\\Start Menu\\new.lnk\n");
    EXPECT_EQ(PathsOf(files.m_startDeleted), "C:\\Prof\\me\\Start Menu\\gone.lnk\n");
    EXPECT_EQ(PathsOf(files.m_appDataAdded), "C:\\Prof\\me\\AppData\n");
    EXPECT_EQ(PathsOf(files.m_appDataChanged), "C:\\Prof\\me\\Local\\state\n");
    EXPECT_EQ(PathsOf(files.m_docsAdded), "C:\\Prof\\me\\Documents\nC:\\Prof\\me\\Documents\\letter.doc\n");
    EXPECT_EQ(PathsOf(files.m_docsDeleted), "C:\\Prof\\All\\Documents\\gone.doc\n");
    EXPECT_TRUE(files.m_otherAdded.empty());
    EXPECT_EQ(report.m_lstInfo[6].size(), 1U);
    EXPECT_EQ(files.m_nFilesChanged, 1U) << "a changed directory is counted nowhere";
    EXPECT_EQ(files.m_changed.size(), 2U);
    EXPECT_EQ(files.m_nDirsAdded, 2U);
    EXPECT_EQ(files.m_nFilesAdded, 2U);
    EXPECT_EQ(files.m_nFilesDeleted, 2U);
}

TEST_F(FileReport, DeletionsFileNoFinding) {
    CMasterReport& report = Compare(R"(
        C: fixed
          Prof\
            me\
              Start Menu\
                gone.lnk
          autoexec.bat
          tool.exe  image=dos
    )",
                                    R"(
        C: fixed
          Prof\
            me\
              Start Menu\
    )");
    EXPECT_EQ(report.m_fileReport.m_startDeleted.size(), 1U);
    EXPECT_EQ(theApp.m_nExitCode, 0);
}

TEST_F(FileReport, SystemFilesCountInTheirOwnPlacesOnly) {
    CMasterReport& report = Compare(R"(
        C: fixed
          WINNT\
            WIN.INI  ticks=1
            win\
        D: fixed
    )",
                                    R"(
        C: fixed
          AutoExec.bat
          WINNT\
            WIN.INI  ticks=2
            system.ini
            win\
              win.ini
        D: fixed
          config.sys
    )");
    EXPECT_EQ(ObjectsOf(report.m_lstWarnings[3]),
              "File(C:\\AutoExec.bat)\nFile(C:\\WINNT\\WIN.INI)\nFile(C:\\WINNT\\system.ini)\n");
    EXPECT_NE(report.m_lstWarnings[3][0].find("HREF=\"#AutoExec.bat\""), CString::npos);
    const CString page = PageOf(*m_pCurrent, *m_pBaseline);
    EXPECT_EQ(CountOf(page, "<A NAME=\"WIN.INI\">WIN.INI</A>"), 1);
    EXPECT_EQ(CountOf(page, "<A NAME=\"win.ini\">"), 0);
}

TEST_F(FileReport, DoubtsAboutTheSnapshotsAreErrorsAndStopNothing) {
    Start("C: fixed");
    const auto baseline = TakeSnapshot("Before");
    m_pMachine->SetDisks("C: fixed\n  new.txt");
    const auto current = TakeSnapshot("After");
    current->m_strComputerName = "bench";
    current->m_strOsName = "Windows '98";
    baseline->m_strComputerName = "OTHER";
    baseline->m_strUserName = "somebody else";
    baseline->m_ftCreated = FILETIME::FromTicks(current->GetCreatedTicks() + kTicksPerSecond);
    CMasterReport report(*current, *baseline);
    current->Compare(*baseline, report);
    ASSERT_EQ(report.m_lstErrors[0].size(), 5U);
    EXPECT_EQ(report.m_lstErrors[0][0],
              "ERROR - Snapshot: The Current Snapshot was created on a different machine (bench) than the Baseline "
              "Snapshot (OTHER). Results may be unreliable!");
    EXPECT_NE(report.m_lstErrors[0][1].find("other than this one (BENCH)"), CString::npos) << "case matters";
    EXPECT_NE(report.m_lstErrors[0][2].find("machine (OTHER) other than this one"), CString::npos);
    EXPECT_EQ(report.m_fileReport.m_added.size(), 1U);
    EXPECT_EQ(theApp.m_nExitCode, kExitFindings | kExitErrors);
    baseline->m_ftCreated = FILETIME::FromTicks(current->GetCreatedTicks() + kTicksPerSecond - 1);
    CMasterReport sameSecond(*current, *baseline);
    current->Compare(*baseline, sameSecond);
    EXPECT_EQ(sameSecond.m_lstErrors[0].size(), 4U) << "snapshots of one second are of one age";
}

TEST_F(FileReport, SizesPrintInTheirUnitAndInFull) {
    const struct {
        std::uint64_t m_size;
        const char* m_text;
    } kCases[] = {{0, "0 bytes (0 bytes)"},
                  {512, "512 bytes (512 bytes)"},
                  {1024, "1024 bytes (1,024 bytes)"},
                  {1025, "1KB (1,025 bytes)"},
                  {1536, "1.5KB (1,536 bytes)"},
                  {1048064, "1.02e+03KB (1,048,064 bytes)"},
                  {1048577, "1MB (1,048,577 bytes)"},
                  {5ULL << 30, "5GB (5,368,709,120 bytes)"},
                  {3ULL << 41, "6TB (6,597,069,766,656 bytes)"}};
    Start("");
    for (const auto& test : kCases) {
        const auto baseline = TakeSnapshotOf("C: fixed", "Before");
        const auto current = TakeSnapshotOf("C: fixed\n  f  size=" + std::to_string(test.m_size), "After");
        EXPECT_NE(PageOf(*current, *baseline).find(" - " + CString(test.m_text) + "</TD></TR>"), CString::npos)
            << test.m_text;
    }
}

TEST_F(FileReport, ThePageStaysInTheResultsDirectoryWhateverTheSnapshotsAreNamed) {
    Start("");
    const auto baseline = TakeSnapshot("..\\..\\x");
    const auto current = TakeSnapshot(CString("/etc/\0y", 7));
    CMasterReport report(*current, *baseline);
    EXPECT_EQ(report.m_strReportPath, "C:\\Delvane\\Results\\_etc__y - .._.._x.htm");
}

TEST_F(FileReport, AFullDiskKeepsTheEarlierPageAndAReadOnlyFolderEndsNothing) {
    Start("");
    const auto snapshot = TakeSnapshot();
    CMasterReport report(*snapshot, *snapshot);
    m_pHost->m_files[report.m_strReportPath] = "earlier";
    m_pHost->m_nFreeBytes = 1000;
    EXPECT_THROW(report.GenerateReport(), CFileError);
    EXPECT_EQ(m_pHost->m_files[report.m_strReportPath], "earlier");
    m_pHost->m_bReadOnly = true;
    EXPECT_TRUE(report.GenerateReport());
}

}  // namespace
}  // namespace delvane
