// The steps of an unattended run.
#include "shell/main_dialog.h"

#include "tests/support/machine_test.h"

namespace delvane {
namespace {

using UnattendedRun = CMachineTest;

TEST_F(UnattendedRun, TheReportIsOpenedOnDemandAlone) {
    const CString page = "C:\\Delvane\\Results\\b - a.htm";
    Start("C: fixed", "/s /bc:a /cc:b /g");
    CMainDlg().RunUnattended();
    EXPECT_TRUE(m_pHost->m_opened.empty());
    Parse("/gd");
    CMainDlg().RunUnattended();
    EXPECT_EQ(m_pHost->m_opened, std::vector<CString>{page});
    m_pHost->m_files[page] = "kept";
    Parse("/gu");
    CMainDlg().RunUnattended();
    EXPECT_EQ(m_pHost->m_files[page], "kept");
    EXPECT_EQ(m_pHost->m_opened.size(), 2U);
    EXPECT_EQ(theApp.m_nExitCode, kExitFindings);
}

TEST_F(UnattendedRun, AFullDiskIsAFailedSaveAndAFailedReport) {
    Start("C: fixed", "/s /bc:a /cc:b");
    CMainDlg().RunUnattended();
    EXPECT_EQ(theApp.m_nExitCode, 0);
    m_pHost->m_nFreeBytes = 10;
    CMainDlg().RunUnattended();
    EXPECT_EQ(theApp.m_nExitCode, kExitCreateFailed);
    EXPECT_FALSE(m_pHost->m_files["C:\\Delvane\\Results\\a.dvs"].empty());
    theContext.m_bCreateBaseline = theContext.m_bCreateCurrent = false;
    Parse("/g");
    m_pHost->m_files["C:\\Delvane\\Results\\b - a.htm"] = "earlier";
    theApp.m_nExitCode = 0;
    CMainDlg().RunUnattended();
    EXPECT_EQ(theApp.m_nExitCode, kExitFindings | kExitNoReport);
    EXPECT_EQ(m_pHost->m_files["C:\\Delvane\\Results\\b - a.htm"], "earlier");
}

// What stands in the program's own top folder is never captured, which matters where that is Program Files.
TEST_F(UnattendedRun, AProgramAmongTheFoldersOfTheMachineIsTold) {
    m_pHost->m_strProgram = "C:\\program files\\Delvane\\delvane.exe";
    m_pHost->m_directories.emplace_back("C:\\program files\\Delvane");
    Start("C: fixed", "/s /bc:a");
    testing::internal::CaptureStderr();
    CMainDlg().RunUnattended();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "delvane: nothing below C:\\program files is captured, as the program's own files lie there "
              "(C:\\program files\\Delvane); put them into a folder of their own at the top of a drive\n");
    EXPECT_EQ(theApp.m_nExitCode, 0);
}

TEST_F(UnattendedRun, AnUnreadableSnapshotIsLoggedInOneLine) {
    Start("C: fixed", "/s /b:a /cc:never");
    m_pHost->m_directories.emplace_back("C:\\Delvane\\Results");
    m_pHost->m_files["C:\\Delvane\\Results\\a.dvs"] = "VLED";
    CMainDlg().RunUnattended();
    EXPECT_EQ(theApp.m_nExitCode, kExitLoadFailed);
    EXPECT_EQ(ErrorLog(), "C:\\Delvane\\Results\\a.dvs: cut off at byte 4: the file ends after 0 of 4 bytes\n");
    EXPECT_FALSE(m_pHost->FileExists("C:\\Delvane\\Results\\never.dvs"));
}

TEST_F(UnattendedRun, ANameThatIsNearlyThatOfASnapshotIsOffered) {
    const struct {
        const char* m_name;
        const char* m_words;
    } kCases[] = {
        {"before", "; did you mean \"Before\"?"},  // on a system that tells them apart
        {"Befor", "; did you mean \"Before\"?"},      {"Bef\u00E4re", "; did you mean \"Before\"?"},
        {"Before.dvs", "; did you mean \"Before\"?"}, {"Bafora", ""},
    };
    for (const auto& test : kCases) {
        Start("C: fixed", CString("/s /b:") + test.m_name);
        m_pHost->m_files["C:\\Delvane\\Results\\Before.dvs"] = "x";
        m_pHost->m_directories.emplace_back("C:\\Delvane\\Results");
        testing::internal::CaptureStderr();
        CMainDlg().RunUnattended();
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  CString("delvane: snapshot \"") + test.m_name + "\" was not loaded: C:\\Delvane\\Results\\" +
                      test.m_name + ".dvs: open: not there (2)" + test.m_words + "\n");
    }
}

TEST_F(UnattendedRun, WhereNoProgramOpensTheReportItsPlaceIsSaid) {
    Start("C: fixed", "/s /bc:a /cc:b /gd");
    m_pHost->m_bHasOpener = false;
    testing::internal::CaptureStderr();
    CMainDlg().RunUnattended();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "delvane: C:\\Delvane\\Results\\b - a.htm: open: no program was found that opens it\n");
}

}  // namespace
}  // namespace delvane
