// Whole pages, byte by byte. UPDATE_GOLDEN=1 writes them anew; read the difference like code.
#include "tests/support/report_test.h"

namespace delvane {
namespace {

class Page : public CReportTest {};

TEST_F(Page, OfTwoIdenticalSnapshots) {
    Start("C: fixed\n  f");
    const auto snapshot = TakeSnapshot("Same");
    ExpectGolden("report/golden/identical.htm", PageOf(*snapshot, *snapshot));
    EXPECT_EQ(theApp.m_nExitCode, kExitFindings) << "no addition under the Uninstall key is a warning";
}

TEST_F(Page, OfAnInstallation) {
    m_pMachine->m_folders = {{CSIDL_STARTMENU, "C:\\Prof\\me\\Start Menu"}, {CSIDL_PROGRAM_FILES, "C:\\Program Files"}};
    Compare(R"(
        C: fixed [System]
          Prof\
            me\
              Start Menu\
                old.lnk  size=300 written=2000-01-01T00:00:00
          WINNT\
            gone.dll  size=1 written=2000-02-29T12:00:00
            system32\
              shared.dll  size=1500 written=1999-12-31T23:59:59 image=pe32
            win.ini  size=10 written=2000-01-01T00:00:00
    )",
            R"(
        HKCR
          .old\
            @ = sz "oldfile"
          .txt\
            @ = sz "txtfile"
        HKCU
          Software\
            Gone\
              late = dword 1
        HKLM
          SOFTWARE\
            App\
              kept = sz "as it was"
              number = dword 1
              text = sz "before"
              kind = hex(3) 01 00 00 00
          SYSTEM\
    )",
            R"(
        C: fixed [System]
          Prof\
            me\
              Start Menu\
                old.lnk  size=301 written=2000-01-01T00:00:00
          Program Files\
            App & Co\
              app.exe  size=123456 written=2001-02-03T16:05:06 image=pe32 version=1.2.3
              café.txt  size=0 written=2001-02-03T04:05:06
          WINNT\
            system32\
              drivers\
                app.sys  size=5000 written=2001-02-03T04:05:06 image=native version=4.5
              shared.dll  size=1600 written=2001-02-03T04:05:06 image=dos
            win.ini  size=11 written=2001-02-03T04:05:06
          setup.log  size=70 written=2001-02-03T04:05:06
    )",
            R"(
        HKCR
          .app\
            @ = sz "appfile"
          .txt\
            @ = sz "txtfile"
          appfile\
            @ = sz "App & Co document"
            DefaultIcon\
              @ = sz "app.exe,0"
          txtfile\
            NoOpen = sz ""
        HKCU
          Software\
            New\
        HKLM
          SOFTWARE\
            App\
              big = hex(5) 00 00 00 01
              dump = hex(3) 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f ff
              empty = hex(0)
              kept = sz "as it was"
              kind = dword 1
              link = hex(6) 5c 00
              number = dword 4294967295
              short = hex(4) 01
              strings = multi "one" "<two>"
              text = expand "%after%"
              unknown = hex(11) 01 02 03 04 05 06 07 08
            Microsoft\
              Windows\
                CurrentVersion\
                  Uninstall\
                    App\
                      DisplayName = sz "App & Co"
          SYSTEM\
            CurrentControlSet\
              Services\
                app\
                  ImagePath = expand "System32\drivers\app.sys"
    )");
    ExpectGolden("report/golden/installation.htm", PageOf(*m_pCurrent, *m_pBaseline));
}

}  // namespace
}  // namespace delvane
