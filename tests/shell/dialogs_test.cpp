// The dialogs of a visible run, their buttons pressed by scripts.
#include "resources/dialogs.h"

#include <latch>

#include "shell/main_dialog.h"
#include "shell/name_dialogs.h"
#include "shell/options_dialog.h"
#include "shell/progress_dialog.h"
#include "tests/support/machine_test.h"
#include "tests/support/scripted_toolkit.h"

namespace delvane {
namespace {

using Steps = std::deque<CScriptedWindow::CStep>;
using Window = CScriptedWindow;

constexpr const char* kDisks = "C: fixed\n  a.txt\n";
const CString kResults = "C:\\Delvane\\Results\\";

class Dialogs : public CMachineTest {
protected:
    Dialogs() {
        auto toolkit = std::make_unique<CScriptedToolkit>();
        m_pToolkit = toolkit.get();
        theContext.SetToolkit(std::move(toolkit));
        m_pHost->m_directories.emplace_back("C:\\Delvane\\Results");
    }
    // A script of the name dialog that types a name and presses OK.
    void AnswerName(const char* name) {
        m_pToolkit->Script(IDD_NEW_SNAPSHOT, {[name](Window& window) { window.Type(IDC_NAME, name); },
                                              [](Window& window) { window.Click(IDOK); }});
    }
    void AnswerLoad(const char* name) {
        m_pToolkit->Script(IDD_LOAD_SNAPSHOT, {[name](Window& window) { window.Choose(IDC_SNAPSHOTS, name); },
                                               [](Window& window) { window.Click(IDOK); }});
    }
    static CScriptedWindow::CStep Press(std::uint32_t id) {
        return [id](Window& window) { window.Click(id); };
    }
    // Writes a snapshot file of that name.
    void StoreSnapshot(const char* name) { Store(*TakeSnapshot(name)); }
    // Runs the main dialog with that script, and closes it.
    void RunMain(Steps steps) {
        steps.emplace_back([](Window& window) { window.PressClose(); });
        m_pToolkit->Script(IDD_MAIN, std::move(steps));
        EXPECT_EQ(m_dialog.DoModal(), IDCANCEL);
        EXPECT_FALSE(m_pToolkit->m_bWaiting) << "every wait cursor has ended";
    }

    CScriptedToolkit* m_pToolkit;  // owned by theContext
    CMainDlg m_dialog;
};

TEST_F(Dialogs, BothSidesAreCreatedAndCompared) {
    Start(kDisks, "/nologo");
    AnswerName("Before");
    m_pToolkit->Script(IDD_NEW_SNAPSHOT, {[](Window& window) {
                                              EXPECT_EQ(window.GetCheck(IDC_COMPARE_AFTER), 1);
                                              window.Choose(IDC_NAME, "Uninstall");
                                          },
                                          Press(IDOK)});
    RunMain({[](Window& window) {
                 EXPECT_EQ(window.m_strTitle, "Norvelle-Kestran Install Delvane - v2.1");
                 EXPECT_FALSE(window.IsEnabled(IDC_COMPARE));
                 window.Click(IDC_CREATE_BASELINE);
                 EXPECT_EQ(window.GetText(1003), "Before (v2.1)");
                 EXPECT_EQ(window.GetText(1006), "BENCH");
                 EXPECT_EQ(window.GetText(1007), "tester");
                 EXPECT_EQ(window.GetText(1009), "Mon Jan 01 00:00:00 2001");
                 EXPECT_EQ(window.GetText(1016), "Windows 2000 - Service Pack 4 (Build 2195)");
                 EXPECT_FALSE(window.IsEnabled(IDC_COMPARE));
             },
             [](Window& window) {
                 window.Click(IDC_CREATE_CURRENT);
                 EXPECT_EQ(window.GetText(1017), "Uninstall (v2.1)");
                 EXPECT_TRUE(window.IsEnabled(IDC_COMPARE));
             }});
    EXPECT_EQ(m_pHost->m_opened, std::vector<CString>{kResults + "Uninstall - Before.htm"});
    EXPECT_FALSE(m_pHost->m_files[kResults + "Before.dvs"].empty());
    EXPECT_TRUE(m_pToolkit->m_messages.empty());
    EXPECT_EQ(m_pToolkit->m_slept.count(), 0) << "without the splash nobody waits";
}

TEST_F(Dialogs, TheReportPromptHasThreeAnswers) {
    Start(kDisks, "/nologo");
    StoreSnapshot("b");
    StoreSnapshot("old");
    const CString page = kResults + "old - b.htm";
    m_pHost->m_files[page] = "kept";
    AnswerLoad("old");
    AnswerLoad("b");
    m_pToolkit->m_answers = {IDCANCEL, IDYES, IDNO};
    RunMain({Press(IDC_LOAD_CURRENT),
             [](Window& window) {
                 EXPECT_FALSE(window.IsEnabled(IDC_COMPARE)) << "by one side alone";
                 window.Click(IDC_LOAD_BASELINE);
             },
             [&](Window& window) {
                 window.Click(IDC_COMPARE);
                 EXPECT_TRUE(m_pHost->m_opened.empty());
                 window.Click(IDC_COMPARE);
                 EXPECT_EQ(m_pHost->m_opened.size(), 1U);
                 EXPECT_EQ(m_pHost->m_files[page], "kept");
                 window.Click(IDC_COMPARE);
                 EXPECT_EQ(m_pHost->m_opened.size(), 2U);
                 EXPECT_NE(m_pHost->m_files[page], "kept");
             }});
    ASSERT_EQ(m_pToolkit->m_messages.size(), 3U);
    EXPECT_EQ(m_pToolkit->m_messages.front(),
              "The Report \"old - b\" already exists.\nIf you proceed, you will overwrite "
              "the existing report.\n\nWould you prefer instead to view the existing "
              "report?");
}

// A box names the file that was chosen, whatever name and directory it holds; what comes without a box is said where an
// unattended run says it.
TEST_F(Dialogs, AFailedLoadEmptiesItsSide) {
    Start(kDisks, "/nologo");
    StoreSnapshot("b");
    const CString stored = m_pHost->m_files[kResults + "b.dvs"];
    AnswerLoad("b");
    for (int i = 0; i < 3; ++i)
        AnswerLoad("old");
    // The file goes while it is being chosen.
    m_pToolkit->Script(IDD_LOAD_SNAPSHOT, {[&](Window& window) {
                           window.Choose(IDC_SNAPSHOTS, "old");
                           m_pHost->m_files.erase(kResults + "old.dvs");
                           window.Click(IDOK);
                       }});
    testing::internal::CaptureStderr();
    RunMain({Press(IDC_LOAD_BASELINE), [&](Window& window) {
                 EXPECT_EQ(window.GetText(1003), "b (v2.1)");
                 m_pHost->m_files[kResults + "old.dvs"] = "no snapshot";
                 window.Click(IDC_LOAD_BASELINE);
                 EXPECT_EQ(window.GetText(1003), "");
                 EXPECT_EQ(m_pToolkit->m_messages.back(),
                           "File Signatures do not match.\nThis file was not generated by the Logo Delvane.");
                 m_pHost->m_files[kResults + "old.dvs"] = "VLED";
                 window.Click(IDC_LOAD_BASELINE);
                 EXPECT_EQ(m_pToolkit->m_messages.back(),
                           kResults + "old.dvs: cut off at byte 4: the file ends after 0 of 4 bytes");
                 m_pHost->m_files[kResults + "old.dvs"] = stored.substr(0, stored.size() - 1);
                 window.Click(IDC_LOAD_BASELINE);
                 EXPECT_NE(m_pToolkit->m_messages.back().find(kResults + "old.dvs: cut off"), CString::npos);
                 window.Click(IDC_LOAD_BASELINE);
             }});
    EXPECT_EQ(m_pToolkit->m_messages.size(), 3U);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("snapshot \"old\" was not loaded: " + kResults +
                                                          "old.dvs: open: not there (2)\n"),
              CString::npos);
    EXPECT_EQ(m_dialog.m_pBaseline, nullptr);
}

TEST_F(Dialogs, ACancelledCaptureEmptiesItsSide) {
    Start(kDisks, "/nologo");
    StoreSnapshot("b");
    AnswerLoad("b");
    AnswerName("old");
    m_pToolkit->m_answers = {IDYES};
    m_pHost->m_files[kResults + "old.dvs"] = "earlier";
    // The walk stands at its first entry until Cancel has been pressed, twice.
    std::latch cancelled(1);
    m_pToolkit->Script(IDD_PROGRESS, {[&](Window& window) {
                           window.Enter();
                           window.Click(IDCANCEL);
                           window.PressClose();
                           EXPECT_FALSE(window.HasEnded()) << "the worker ends the dialog";
                           cancelled.count_down();
                       }});
    RunMain({Press(IDC_LOAD_BASELINE),
             [&](Window&) { m_pMachine->m_onEntry = [&](std::string_view) { cancelled.wait(); }; },
             Press(IDC_CREATE_BASELINE), [](Window& window) { EXPECT_EQ(window.GetText(1003), ""); }});
    EXPECT_EQ(m_dialog.m_pBaseline, nullptr);
    EXPECT_EQ(m_pHost->m_files[kResults + "old.dvs"], "earlier");
    EXPECT_EQ(m_pToolkit->m_messages,
              std::vector<CString>{"The Snapshot \"old\" already exists.\nDo you wish to replace it?"});
}

// It ends every dialog that is open, and comes out where the run was started; no window system sees it.
TEST_F(Dialogs, WhatAHandlerThrowsEndsTheRun) {
    Start(kDisks, "/nologo");
    m_pToolkit->Script(IDD_OPTIONS, {[](Window& window) {
                           window.m_items.clear();
                           window.Click(IDC_HARD_DRIVES);  // of a list that has lost its items
                           EXPECT_TRUE(window.HasEnded());
                       }});
    m_pToolkit->Script(IDD_MAIN, {Press(IDM_OPTIONS)});
    EXPECT_THROW(m_dialog.DoModal(), std::out_of_range);
    EXPECT_EQ(m_pToolkit->m_dialogs.size(), 2U);
}

// The worker still posts to the window whose loop has ended.
TEST_F(Dialogs, ACaptureWhoseDialogFailsIsCancelled) {
    Start(kDisks, "/nologo");
    AnswerName("x");
    std::latch broken(1);
    m_pMachine->m_onEntry = [&](std::string_view) { broken.wait(); };
    m_pToolkit->Script(IDD_PROGRESS, Steps(200, [&](Window& window) {
                           std::this_thread::sleep_for(std::chrono::milliseconds(1));
                           if (window.m_texts[1009] != "3") return;  // the walk of the disks begins
                           window.m_texts.erase(kCodeFiles);
                           if (!broken.try_wait()) broken.count_down();
                       }));
    testing::internal::CaptureStderr();
    RunMain({Press(IDC_CREATE_BASELINE), [](Window& window) { EXPECT_EQ(window.GetText(1003), ""); }});
    EXPECT_NE(testing::internal::GetCapturedStderr().find("snapshot \"x\" was not created: "), CString::npos);
    EXPECT_FALSE(m_pHost->m_files.contains(kResults + "x.dvs"));
}

// Until a capture or a load begins a question can be left, and what the side holds stays.
TEST_F(Dialogs, ACancelledQuestionLeavesItsSideAsItIs) {
    Start(kDisks, "/nologo");
    StoreSnapshot("b");
    AnswerLoad("b");
    m_pToolkit->Script(IDD_LOAD_SNAPSHOT, {Press(IDCANCEL)});
    m_pToolkit->Script(IDD_NEW_SNAPSHOT, {[](Window& window) { window.Type(IDC_NAME, "x"); }, Press(IDCANCEL)});
    // The replacement is declined, and the name asked for again.
    m_pToolkit->Script(IDD_NEW_SNAPSHOT, {[](Window& window) { window.Type(IDC_NAME, "b"); }, Press(IDOK),
                                          [](Window& window) { EXPECT_FALSE(window.HasEnded()); }, Press(IDCANCEL)});
    m_pToolkit->m_answers = {IDNO};
    const CString stored = m_pHost->m_files[kResults + "b.dvs"];
    RunMain({Press(IDC_LOAD_BASELINE), Press(IDC_LOAD_BASELINE), Press(IDC_CREATE_BASELINE), Press(IDC_CREATE_BASELINE),
             [](Window& window) { EXPECT_EQ(window.GetText(1003), "b (v2.1)"); }});
    EXPECT_NE(m_dialog.m_pBaseline, nullptr);
    EXPECT_EQ(m_pToolkit->m_messages.size(), 1U);
    EXPECT_TRUE(m_pHost->m_files[kResults + "b.dvs"] == stored);
    EXPECT_FALSE(m_pHost->m_files.contains(kResults + "x.dvs"));
}

TEST_F(Dialogs, WhatIsWrongWithTheMachineIsToldInOneBoxBehindACapture) {
    m_pHost->m_strProgram = "C:\\program files\\Delvane\\delvane.exe";
    m_pHost->m_directories.emplace_back("C:\\program files\\Delvane");
    m_pMachine->m_notices = {{"C:\\a: damaged"}, {"C:\\b: damaged"}};
    testing::internal::CaptureStderr();
    Start(kDisks, "/nologo");
    AnswerName("a");
    AnswerName("b");
    RunMain({Press(IDC_CREATE_BASELINE), Press(IDC_CREATE_BASELINE)});
    EXPECT_EQ(CountOf(testing::internal::GetCapturedStderr(), "delvane: "), 3);
    ASSERT_EQ(m_pToolkit->m_messages.size(), 1U) << "and once";
    EXPECT_EQ(m_pToolkit->m_messages[0].find("C:\\a: damaged\n\nC:\\b: damaged\n\nnothing below C:\\program files"),
              0U);
}

// A capture that the command line asked for can be cancelled like any other: its side stays empty, the next step comes,
// and there is nothing to compare.
TEST_F(Dialogs, ACancelDuringTheAutomaticChainEndsItsStepAlone) {
    Start(kDisks, "/nologo /bc:Before /c:b /g");
    StoreSnapshot("b");
    std::latch cancelled(1);
    m_pMachine->m_onEntry = [&](std::string_view) { cancelled.wait(); };
    m_pToolkit->Script(IDD_PROGRESS, {[&](Window& window) {
                           window.Click(IDCANCEL);
                           cancelled.count_down();
                       }});
    RunMain({});
    EXPECT_EQ(m_dialog.m_pBaseline, nullptr);
    EXPECT_NE(m_dialog.m_pCurrent, nullptr);
    EXPECT_FALSE(m_pHost->m_files.contains(kResults + "Before.dvs"));
    EXPECT_FALSE(m_pHost->m_files.contains(kResults + "b - Before.htm"));
    EXPECT_TRUE(m_pHost->m_opened.empty());
}

TEST_F(Dialogs, TheCountersAreShown) {
    Start("C: fixed\n  Files\\\n    a.txt\n    b.txt\n", "/nologo");
    std::map<std::uint32_t, CString> last;
    CSnapshot snapshot;
    snapshot.SetName("s");
    CProgressDlg progress;
    progress.m_pSnapshot = &snapshot;
    std::latch seen(1);
    m_pMachine->m_onEntry = [&](std::string_view name) {
        if (name == "b.txt") seen.wait();
    };
    m_pToolkit->Script(IDD_PROGRESS, Steps(200, [&](Window& window) {
                           std::this_thread::sleep_for(std::chrono::milliseconds(1));
                           last = window.m_texts;
                           if (last[1002] == "1" && !seen.try_wait()) seen.count_down();
                           EXPECT_FALSE(window.HasEnded());
                       }));
    EXPECT_EQ(progress.DoModal(), IDOK);
    EXPECT_EQ(last[1000], "1") << "drives";
    EXPECT_EQ(last[1002], "1") << "files, while the walk stands at the second";
    EXPECT_EQ(last[1009], "3") << "hives";
    EXPECT_EQ(progress.m_pProgress, nullptr);
}

TEST_F(Dialogs, TheCommandLineIsWorkedOffByItself) {
    Start(kDisks, "/b:b /cc:After /gd");
    StoreSnapshot("b");
    m_pToolkit->Script(IDD_MAIN, {[&](Window& window) {
                           EXPECT_EQ(window.GetText(1003), "b (v2.1)");
                           EXPECT_EQ(window.GetText(1017), "After (v2.1)");
                           EXPECT_FALSE(m_pToolkit->m_bSplash);
                           EXPECT_FALSE(window.HasEnded()) << "the dialog stays for the user";
                           window.Click(IDM_EXIT);
                       }});
    EXPECT_EQ(m_dialog.DoModal(), IDOK);
    EXPECT_EQ(m_pHost->m_opened, std::vector<CString>{kResults + "After - b.htm"});
    EXPECT_EQ(m_pToolkit->m_slept.count(), 0);
    // A step with nothing to do is skipped, and a failed one does not end the chain.
    theContext.m_strBaselineName = "never";
    Parse("/gu");
    m_pHost->m_files[kResults + "After - b.htm"] = "kept";
    RunMain({});
    EXPECT_EQ(m_dialog.m_pBaseline, nullptr);
    EXPECT_NE(m_dialog.m_pCurrent, nullptr);
    EXPECT_FALSE(m_pToolkit->m_bSplash);
    EXPECT_EQ(m_pHost->m_files[kResults + "After - b.htm"], "kept");
}

TEST_F(Dialogs, TheSplashStaysFiveSecondsWithoutNames) {
    Start(kDisks, "");
    RunMain({[&](Window&) { EXPECT_FALSE(m_pToolkit->m_bSplash); }});
    EXPECT_EQ(m_pToolkit->m_slept.count(), 5000);
    theContext.m_strBaselineName = "never";
    RunMain({[&](Window&) { EXPECT_FALSE(m_pToolkit->m_bSplash) << "behind a chain of one step"; }});
}

TEST_F(Dialogs, HelpIsThePageBesideTheProgramsFilesOrTheOneThatCameWithIt) {
    Start(kDisks, "/nologo");
    RunMain({Press(IDM_USING)});
    EXPECT_EQ(m_pHost->m_opened.back(), "C:\\Delvane documents\\Using.htm");
    m_pHost->m_files["C:\\Delvane\\Using.htm"] = "page";
    RunMain({Press(IDM_USING)});
    EXPECT_EQ(m_pHost->m_opened.back(), "C:\\Delvane\\Using.htm");
    EXPECT_EQ(m_pHost->m_opened.size(), 2U);
}

TEST_F(Dialogs, WhatStandsInTheWayIsToldAtTheStart) {
    Start(kDisks, "/nologo");
    const Steps close = {[](Window& window) { window.PressClose(); }};
    m_pToolkit->Script(IDD_MAIN, close);
    m_dialog.RunVisible();
    EXPECT_TRUE(m_pToolkit->m_messages.empty());
    m_pMachine->m_bPresent = false;
    m_pHost->m_bReadOnly = true;
    m_pToolkit->Script(IDD_MAIN, close);
    m_dialog.RunVisible();
    ASSERT_EQ(m_pToolkit->m_messages.size(), 2U);
    EXPECT_NE(m_pToolkit->m_messages[0].find("no machine here"), CString::npos);
    EXPECT_NE(m_pToolkit->m_messages[1].find("cannot be saved"), CString::npos);
    EXPECT_EQ(theApp.m_nExitCode, 0);
    m_pHost->m_bLocked = true;
    m_dialog.RunVisible();
    EXPECT_EQ(m_pToolkit->m_messages.size(), 3U);
    EXPECT_EQ(m_pToolkit->m_dialogs.size(), 2U) << "no second window on the same files";
    EXPECT_EQ(theApp.m_nExitCode, kExitNotStarted);
}

TEST_F(Dialogs, ANameIsAskedFor) {
    Start(kDisks, "/nologo");
    m_pHost->m_files[kResults + "taken.dvs"] = "x";
    m_pToolkit->m_answers = {IDNO};
    CNewSnapshotDlg question;
    question.m_bCompareEnabled = false;
    m_pToolkit->Script(IDD_NEW_SNAPSHOT, {[](Window& window) {
                                              EXPECT_FALSE(window.IsEnabled(IDOK));
                                              EXPECT_FALSE(window.IsEnabled(IDC_COMPARE_AFTER));
                                              EXPECT_EQ(window.m_entries[IDC_NAME].size(), 4U);
                                              window.Type(IDC_NAME, "taken");
                                              EXPECT_TRUE(window.IsEnabled(IDOK));
                                              window.Click(IDOK);
                                              EXPECT_FALSE(window.HasEnded()) << "No keeps it open";
                                              window.Type(IDC_NAME, "");
                                              EXPECT_FALSE(window.IsEnabled(IDOK));
                                              window.Choose(IDC_NAME, "Uninstall");
                                          },
                                          [](Window& window) {
                                              EXPECT_TRUE(window.IsEnabled(IDOK)) << "the chosen text has come";
                                              window.Type(IDC_NAME, "taken.dvs");
                                              window.Click(IDOK);
                                          }});
    EXPECT_EQ(question.DoModal(), IDOK);
    EXPECT_EQ(question.m_strName, "taken.dvs");
    EXPECT_EQ(m_pToolkit->m_messages.size(), 1U);

    for (const char* name : {"old.dvs", "notes.txt", "b.DVS", "C.dvs"})
        m_pHost->m_files[kResults + name] = "x";
    m_pHost->m_files.erase(kResults + "taken.dvs");
    CLoadSnapshotDlg load;
    m_pToolkit->Script(IDD_LOAD_SNAPSHOT, {[](Window& window) {
                           EXPECT_EQ(window.m_entries[IDC_SNAPSHOTS], (std::vector<CString>{"b", "C", "old"}));
                           EXPECT_FALSE(window.IsEnabled(IDOK));
                           window.Choose(IDC_SNAPSHOTS, "old");
                           window.Click(IDOK);
                       }});
    EXPECT_EQ(load.DoModal(), IDOK);
    EXPECT_EQ(load.m_strName, "old");
    m_pHost->m_files.clear();
    m_pToolkit->Script(IDD_LOAD_SNAPSHOT, {[](Window& window) {
                           EXPECT_FALSE(window.IsEnabled(IDC_SNAPSHOTS));
                           window.PressClose();
                       }});
    EXPECT_EQ(load.DoModal(), IDCANCEL);
}

// The options.

class Options : public Dialogs {
protected:
    void Run(Steps steps, std::uint32_t result = IDOK) {
        COptionsDlg options;
        m_pToolkit->Script(IDD_OPTIONS, std::move(steps));
        EXPECT_EQ(options.DoModal(), result);
    }
};

TEST_F(Options, KindsAndDrivesFollowEachOther) {
    Start("C: fixed [System]\nD: fixed\nE: cdrom\n", "/nologo");
    Run({[](Window& window) {
        ASSERT_EQ(window.m_items.size(), 3U);
        EXPECT_EQ(window.m_items[0].m_strText, "C: [System]");
        EXPECT_EQ(window.m_items[2].m_nImage, DRIVE_CDROM);
        EXPECT_TRUE(window.m_items[1].m_bSelected && !window.m_items[2].m_bSelected);
        EXPECT_EQ(window.GetCheck(IDC_HARD_DRIVES), 1);
        EXPECT_EQ(window.GetCheck(IDC_COMPACT_DISCS), 0);
        EXPECT_TRUE(window.IsEnabled(IDC_COMPACT_DISCS));
        EXPECT_FALSE(window.IsEnabled(IDC_REMOVABLE_DRIVES) || window.IsEnabled(IDC_NETWORK_DRIVES));
        EXPECT_FALSE(window.IsEnabled(IDOK)) << "until something changes";
        window.ToggleItem(IDC_DRIVES, 0);
        EXPECT_EQ(window.GetCheck(IDC_HARD_DRIVES), 2);
        EXPECT_TRUE(window.IsEnabled(IDOK));
        window.Click(IDC_HARD_DRIVES);
        EXPECT_EQ(window.GetCheck(IDC_HARD_DRIVES), 0);
        EXPECT_FALSE(window.m_items[1].m_bSelected);
        window.Click(IDC_HARD_DRIVES);
        EXPECT_TRUE(window.m_items[0].m_bSelected && window.m_items[1].m_bSelected);
        window.Click(IDC_HARD_DRIVES);
        EXPECT_EQ(window.GetCheck(IDC_HARD_DRIVES), 0) << "never to the third state";
        window.ToggleItem(IDC_DRIVES, 1);
        window.Click(IDOK);
    }});
    EXPECT_EQ(theContext.m_dwDrivesOn, 8U) << "D: alone";
    EXPECT_FALSE(theContext.m_bHardDrives);
    EXPECT_FALSE(theContext.IsDriveSelected("C:"));
    EXPECT_TRUE(theContext.IsDriveSelected("D:"));
    Run({[](Window& window) {
        EXPECT_EQ(window.GetCheck(IDC_HARD_DRIVES), 2) << "the next opening shows the same";
        window.ToggleItem(IDC_DRIVES, 1);
        window.ToggleItem(IDC_DRIVES, 2);
        window.Click(IDOK);
    }});
    EXPECT_TRUE(theContext.m_bCompactDiscs);
    EXPECT_FALSE(theContext.IsDriveSelected("E:")) << "hard drives are the gate for the other kinds";
}

TEST_F(Options, ADriveOfNoKindIsChosenByItsLetter) {
    Start("C: fixed\nF: ramdisk\n", "/nologo");
    Run({[](Window& window) {
        window.ToggleItem(IDC_DRIVES, 1);
        EXPECT_EQ(window.GetCheck(IDC_HARD_DRIVES), 1);
        window.Click(IDOK);
    }});
    EXPECT_TRUE(theContext.IsDriveSelected("C:") && theContext.IsDriveSelected("F:"));
}

TEST_F(Options, ExtensionsAreTiedToTheirHive) {
    Start("C: fixed\n", "/nologo /r:hkcr-");
    Run({[](Window& window) {
        EXPECT_EQ(window.GetCheck(IDC_EXTENSIONS), 0) << "without HKCR there are none";
        window.Click(IDC_EXTENSIONS);
        EXPECT_EQ(window.GetCheck(IDC_HKCR), 1);
        window.Click(IDC_HKCR);
        EXPECT_EQ(window.GetCheck(IDC_EXTENSIONS), 0);
        window.Click(IDC_HKLM);
        window.Click(IDC_SAVE_SETTINGS);
        window.Click(IDOK);
    }});
    EXPECT_FALSE(theContext.m_bHkcr || theContext.m_bExtensions || theContext.m_bHklm);
    EXPECT_TRUE(theContext.m_bHkcu);
    theContext.m_bHklm = true;
    EXPECT_TRUE(theContext.ReadConfig());
    EXPECT_FALSE(theContext.m_bHklm) << "stored";
    Run({[](Window& window) {
            EXPECT_EQ(window.GetCheck(IDC_SAVE_SETTINGS), 0);
            window.Click(IDC_HKLM);
            window.PressClose();
        }},
        IDCANCEL);
    EXPECT_FALSE(theContext.m_bHklm) << "Cancel changes nothing";
}

}  // namespace
}  // namespace delvane
