// The walk over drives and directories, and what counts as changed.
#include "capture/drives.h"
#include "tests/support/machine_test.h"

namespace delvane {
namespace {

// A dialog that writes down what is posted to it and handles it as it likes.
class CWatcher : public CMessageTarget {
public:
    void PostMessage(std::uint32_t message, std::uint32_t wParam) override {
        m_strPosted += (message == kMsgEnded ? "end " : "") + std::to_string(wParam) + " ";
        if (m_bHandles) m_progress.m_bUpdatePosted = false;
    }
    CString m_strPosted;
    bool m_bHandles = false;
    CCaptureProgress m_progress;
};

class Walk : public CMachineTest {
protected:
    CString Walked(std::string_view disks, const CString& commandLine = "/s") {
        Start(disks, commandLine);
        return ListTree(*TakeSnapshot()->m_pDrives);
    }
};

TEST_F(Walk, LeavesOutWhatTheListsAndTheTemporaryAttributeSay) {
    EXPECT_EQ(Walked(R"(
        C: fixed
          .
          ..\
          PageFile.sys
          Delvane\
            Results\
          Sub\
            pagefile.sys
            RECYCLER
            Recycler\
              gone.txt
            Temp\
              kept.txt
          TEMP\
            scratch.txt
          hidden.txt  attributes=0x26
          scratch.tmp  attributes=0x120
          tmpdir\  attributes=0x110
            below.txt
          win386.SWP
    )"),
              "C:\\\n"
              "C:\\hidden.txt\n"
              "C:\\Sub\\\n"
              "C:\\Sub\\Temp\\\n"
              "C:\\Sub\\Temp\\kept.txt\n");
    EXPECT_EQ(m_pMachine->m_nOpenSearches, 0U);
}

// What could not be read is kept, told in a sentence, and stands beside the snapshot until a whole one takes its place.
TEST_F(Walk, KeepsAListOfWhatItCouldNotRead) {
    constexpr const char* kDisks = R"(
        C: fixed
          cut\  cut
            a.txt
          locked\  unreadable
            below.txt
          locked.txt  unreadable
    )";
    SetRegistry(
        "HKCR\n  .x\\\nHKCU\n  Software\\\nHKLM\n  SAM\\  unopenable\n  SOFTWARE\\\n    Hid = sz \"x\"  denied\n");
    EXPECT_EQ(Walked(kDisks, "/s /d:Q"), "C:\\\nC:\\cut\\\nC:\\cut\\a.txt\nC:\\locked\\\n");
    const auto snapshot = TakeSnapshot("Snap");
    EXPECT_EQ(snapshot->GetGaps().GetSummary(),
              "1 drive, 2 directories, 1 entry, 1 key and 1 value could not be read, first HKLM\\SAM (5)");
    Store(*snapshot);
    const CString path = "C:\\Delvane\\Results\\Snap.gaps.jsonl";
    EXPECT_EQ(m_pHost->m_files[path],
              R"({"record":"gap","snapshot":"Snap","kind":"key","path":"HKLM\\SAM","code":5,"reason":"access denied"}
{"record":"gap","snapshot":"Snap","kind":"value","path":"HKLM\\SOFTWARE","name":"Hid","code":5,"reason":"access denied"}
{"record":"gap","snapshot":"Snap","kind":"directory","path":"C:\\cut","code":23,"reason":"data error"}
{"record":"gap","snapshot":"Snap","kind":"directory","path":"C:\\locked","code":5,"reason":"access denied"}
{"record":"gap","snapshot":"Snap","kind":"entry","path":"C:\\locked.txt","code":5,"reason":"access denied"}
{"record":"gap","snapshot":"Snap","kind":"drive","path":"Q:\\","code":3,"reason":"path not found"}
)");
    SetRegistry("HKLM\n  SOFTWARE\\\n");
    theContext.m_dwDrivesOn = 0;
    Store(*TakeSnapshotOf("C: fixed", "Snap"));
    EXPECT_FALSE(m_pHost->m_files.contains(path)) << "it was another snapshot's";
}

TEST_F(Walk, VisitsTheSelectedDrivesAndKeepsTheirKindAndVolume) {
    EXPECT_EQ(Walked(R"(
        C: fixed [System]
          a
        D: cdrom [Disc]
          b
        N: remote [\\server\share]
          c
    )",
                     "/s /d:n"),
              "C:\\\nC:\\a\nN:\\\nN:\\c\n");
    const auto snapshot = TakeSnapshot();
    EXPECT_EQ(snapshot->m_pDrives->m_dwDrives, 0x2004U);
    auto* const share = static_cast<CDelvDriveObj*>(snapshot->m_pDrives->m_subdirs.back());
    m_pMachine->SetDisks("");
    EXPECT_EQ(share->GetVolume(), "\\\\server\\share") << "a captured drive asks no more";
    EXPECT_EQ(share->GetTypeText(), "Network Share");
}

TEST_F(Walk, CountsAndPostsOnceUntilTheMessageIsHandled) {
    Start(R"(
        C: fixed
          Dir\
            f
          g
    )");
    CWatcher watcher;
    watcher.m_progress.m_pDialog = &watcher;
    CSnapshot snapshot;
    EXPECT_TRUE(snapshot.Capture(&watcher.m_progress));
    EXPECT_EQ(watcher.m_strPosted, "1009 end 0 ");
    EXPECT_EQ(watcher.m_progress.m_nFiles, 2U);
    EXPECT_EQ(watcher.m_progress.m_nDirs, 1U);
    EXPECT_EQ(watcher.m_progress.m_nDrives, 1U);
    watcher.m_progress.m_bUpdatePosted = false;
    watcher.m_bHandles = true;
    watcher.m_strPosted.clear();
    CSnapshot second;
    second.m_pProgress = &watcher.m_progress;
    EXPECT_TRUE(second.Capture(nullptr)) << "the snapshot's own record serves";
    EXPECT_EQ(watcher.m_strPosted, "1009 1010 1009 1010 1009 1010 1007 1000 1001 1002 1002 end 0 ");
}

TEST_F(Walk, ACancelEndsItAtTheNextEntryAndClosesEverySearch) {
    Start(R"(
        C: fixed
          a\
            b\
              c
              never
    )");
    CWatcher watcher;
    watcher.m_progress.m_pDialog = &watcher;
    m_pMachine->m_onEntry = [&](std::string_view name) {
        if (name == "c") watcher.m_progress.m_bKeepGoing = false;
    };
    CSnapshot snapshot;
    EXPECT_FALSE(snapshot.Capture(&watcher.m_progress));
    EXPECT_EQ(snapshot.GetError(), "");
    EXPECT_EQ(m_pMachine->m_nOpenSearches, 0U);
    EXPECT_TRUE(watcher.m_strPosted.ends_with("end 1 ")) << watcher.m_strPosted;
    EXPECT_EQ(ListTree(*snapshot.m_pDrives), "C:\\\nC:\\a\\\nC:\\a\\b\\\n");
}

TEST_F(Walk, AnyOtherFailureEndsItWithItsReason) {
    Start("C: fixed\n  a");
    m_pMachine->m_onEntry = [](std::string_view) { throw CInterrupted(); };
    CSnapshot snapshot;
    EXPECT_FALSE(snapshot.Capture(nullptr));
    EXPECT_EQ(snapshot.GetError(), "interrupted by a signal");
    m_pMachine->m_bPresent = false;
    EXPECT_FALSE(snapshot.Capture(nullptr));
    EXPECT_EQ(snapshot.GetError(), "no machine here");
}

TEST_F(Walk, PathsFindTheirNodesWithoutRegardToCase) {
    Start(R"(
        C: fixed
          same
          same\
            deep.txt
    )");
    const auto snapshot = TakeSnapshot();
    const auto found = [&](const char* path) -> CString {
        CDelvObj* const node = snapshot->FindObject(path);
        return node == nullptr ? "nothing"
                               : (IsKindOf<CDelvDirObj>(*node) ? "directory " : "file ") + node->GetFullName();
    };
    EXPECT_EQ(found("C:\\SAME"), "file C:\\same") << "a file comes before a directory of its name";
    EXPECT_EQ(found("C:\\Same\\DEEP.txt"), "file C:\\same\\deep.txt");
    EXPECT_EQ(found("\"C:\\same\\deep.txt\""), "file C:\\same\\deep.txt");
    EXPECT_EQ(found("\\??\\C:\\same\\deep.txt"), "file C:\\same\\deep.txt");
    EXPECT_EQ(found("\"C:\\same\\deep.txt\" /run"), "nothing");
    EXPECT_EQ(found("c:\\same"), "nothing") << "a drive letter is upper case";
    EXPECT_EQ(found("D:\\same"), "nothing");
    EXPECT_EQ(found("C:"), "directory C:");
}

TEST_F(Walk, ANodeWithoutDataAsksTheMachineForThem) {
    Start("C: fixed\n  f  size=7");
    CSnapshot snapshot;
    CDelvDriveObj drive(snapshot.m_pDrives, snapshot.GetArena(), "C:");
    CDelvFileObj file(&drive, snapshot.GetArena().Copy("f"));
    CDelvFileObj missing(&drive, snapshot.GetArena().Copy("g"));
    EXPECT_TRUE(file.Capture(nullptr));
    EXPECT_EQ(file.GetSize(), 7U);
    EXPECT_FALSE(missing.Capture(nullptr));
}

class Changes : public CMachineTest {
protected:
    // What a comparison of two states of drive C: calls changed, added and deleted, in its order.
    CString Compared(std::string_view before, std::string_view after, const CString& commandLine = "/s") {
        Start(before, commandLine);
        const auto baseline = TakeSnapshotOf(before, "Before");
        const auto current = TakeSnapshotOf(after, "After");
        CMasterReport report(*current, *baseline);
        current->Compare(*baseline, report);
        CString result;
        for (const auto& change : report.m_fileReport.m_changed)
            result += "~" + change->GetFullName() + " ";
        for (const CDelvObj* object : report.m_fileReport.m_added)
            result += "+" + object->GetFullName() + " ";
        for (const CDelvObj* object : report.m_fileReport.m_deleted)
            result += "-" + object->GetFullName() + " ";
        for (const auto& line : report.m_lstWarnings[0])
            result += "! " + line + " ";
        return result;
    }
};

TEST_F(Changes, LastWriteTimeAndSizeAloneDecide) {
    EXPECT_EQ(Compared("C: fixed\n  f  ticks=1000 size=5", "C: fixed\n  f  ticks=1000 size=5 attributes=0x27"), "");
    EXPECT_EQ(Compared("C: fixed\n  f  ticks=1000", "C: fixed\n  f  ticks=1001"), "~C:\\f ");
    EXPECT_EQ(Compared("C: fixed\n  f  size=7", "C: fixed\n  f  size=4294967303"), "~C:\\f ") << "high words differ";
    EXPECT_EQ(Compared("C: fixed\n  d\\  ticks=1\n    f", "C: fixed\n  d\\  ticks=2\n    f\n    g"),
              "~C:\\d +C:\\d\\g ")
        << "a directory's own change stands beside those in it";
}

TEST_F(Changes, AWholeTreeIsReportedFromItsTop) {
    EXPECT_EQ(Compared("C: fixed\n  a", "C: fixed\n  a\n  n\\\n    s\\\n      y\n    x"),
              "+C:\\n +C:\\n\\x +C:\\n\\s +C:\\n\\s\\y ");
    EXPECT_EQ(Compared("C: fixed\n  x", "C: fixed\n  x\\"), "+C:\\x -C:\\x ") << "a file is no directory";
}

TEST_F(Changes, DrivesThatAreNotTheSameMediumAreLeftOut) {
    EXPECT_EQ(Compared("C: fixed [a]\n  f", "C: fixed [A]"),
              "! WARNING - Drive(C:): The Volume of the Current (A) does not match the Volume of the Baseline (a). "
              "This drive will be ignored. ");
    EXPECT_EQ(Compared("C: fixed [a]\n  f", "C: removable [b]", "/d:c"),
              "! WARNING - Drive(C:): The DriveType of the Current (Removable) does not match the DriveType of the "
              "Baseline (Hard Drive). This drive will be ignored. ");
}

TEST_F(Changes, ADriveThatIsNotSelectedNowIsPassedOverInSilence) {
    Start("C: fixed\nR: removable", "/dg:rd");
    const auto baseline = TakeSnapshot("Before");
    const auto current = TakeSnapshotOf("C: fixed\n  f\nR: removable [other]\n  g", "After");
    Parse("/dg:rd-");
    CMasterReport report(*current, *baseline);
    current->Compare(*baseline, report);
    ASSERT_EQ(report.m_fileReport.m_added.size(), 1U);
    EXPECT_EQ(report.m_fileReport.m_added[0]->GetFullName(), "C:\\f");
    EXPECT_TRUE(report.m_lstWarnings[0].empty());
}

TEST_F(Changes, DrivesOfOneSideAreWarnedOfAsASetAndOneByOne) {
    const CString ignored = "They will be ignored. ";
    EXPECT_EQ(Compared("C: fixed\nD: fixed\n  f\nF: fixed", "C: fixed\nE: fixed"),
              "! WARNING - Files/Directories: The following drives (D:, F:) found in the Baseline are not found in the "
              "Current. " +
                  ignored +
                  "! WARNING - Files/Directories: The following drives (E:) found in the Current are not found in the "
                  "Baseline. " +
                  ignored +
                  "! WARNING - Drive(D:): This drive was not found in current snapshot. It will be ignored. "
                  "! WARNING - Drive(E:): This drive was not found in baseline snapshot. It will be ignored. "
                  "! WARNING - Drive(F:): This drive was not found in current snapshot. It will be ignored. ");
}

TEST_F(Changes, ADriveOnTheSkipListIsNotMissed) {
    Start("C: fixed");
    const auto baseline = TakeSnapshotOf("C: fixed\nD: fixed", "Before");
    const auto current = TakeSnapshotOf("C: fixed\nE: fixed", "After");
    theContext.m_lstSkipDirs.insert(theContext.m_lstSkipDirs.end(), {"d:", "E:"});
    CMasterReport report(*current, *baseline);
    current->Compare(*baseline, report);
    EXPECT_EQ(report.m_lstWarnings[0].size(), 2U) << "the two warnings of the set alone";
}

// Paths of a captured tree are composed, those of a loaded one are stored; the two must agree.
TEST_F(Changes, ACapturedTreeComparesWithALoadedOne) {
    const char* const disks = "C: fixed\n  A\\\n    B\\\n      f  size=1\n      g";
    Start(disks);
    const auto loaded = LoadFrom(Store(*TakeSnapshot("Before")));
    const auto current = TakeSnapshot("After");
    CMasterReport report(*current, *loaded);
    current->Compare(*loaded, report);
    EXPECT_TRUE(report.m_fileReport.m_changed.empty() && report.m_fileReport.m_added.empty());
    static_cast<CDelvFileObj*>(current->FindObject("C:\\A\\B\\f"))->SetSize(2);
    current->Compare(*loaded, report);
    ASSERT_EQ(report.m_fileReport.m_changed.size(), 1U);
    EXPECT_EQ(report.m_fileReport.m_changed[0]->GetFullName(), "C:\\A\\B\\f");
}

}  // namespace
}  // namespace delvane
