// The walk over the registry, what it leaves out, and what counts as changed.
#include "capture/registry.h"

#include "tests/support/machine_test.h"

namespace delvane {
namespace {

class Registry : public CMachineTest {
protected:
    Registry() { Start("C: fixed"); }

    std::unique_ptr<CSnapshot> Capture(std::string_view registry, CCaptureProgress* progress = nullptr) {
        SetRegistry(registry);
        auto snapshot = std::make_unique<CSnapshot>();
        snapshot->SetName("Snap");
        m_bComplete = snapshot->Capture(progress);
        EXPECT_EQ(m_pMachine->m_registry.GetOpenCount(), 0U) << "every key was closed";
        return snapshot;
    }
    CString Walked(std::string_view registry, CCaptureProgress* progress = nullptr) {
        return ListRegistry(*Capture(registry, progress)->m_pRegistry);
    }
    // Added, deleted and changed, a line each, and the warnings of the general section.
    CString Compared(std::string_view before, std::string_view after, const CString& options = "/s") {
        Parse("/s /r:hklm+ /r:hkcu+ /r:hkcr+");
        const auto baseline = Capture(before);
        const auto current = Capture(after);
        Parse(options);
        CMasterReport report(*current, *baseline);
        current->m_pRegistry->Compare(*baseline->m_pRegistry, report.m_registryReport);
        CString lines;
        const auto add = [&lines](char mark, const CDelvObj& object) {
            lines += mark + object.GetFullName() + " " + CString(object.m_name) + "\n";
        };
        for (const CDelvObj* object : report.m_registryReport.m_added)
            add('+', *object);
        for (const CDelvObj* object : report.m_registryReport.m_deleted)
            add('-', *object);
        for (const auto& change : report.m_registryReport.m_changed)
            add('*', *change->m_pObject);
        for (const CString& line : report.m_lstWarnings[0])
            lines += line.substr(0, 43) + "\n";
        return lines;
    }

    bool m_bComplete = false;
};

TEST_F(Registry, WalkKeepsKeysAndValuesInByteOrderAndLeavesOutTheClassesOfTheMachine) {
    EXPECT_EQ(Walked(R"(
        HKLM
          SOFTWARE\
            Classes\
              .txt\
            classes\
            vendor\
            Vendor\
              b = dword 7
              B = sz "text"
              @ = expand "%x%"
              11 = hex(11) 01 02 03 04 05 06 07 08
            Other\
              Classes\
        HKCU
          Software\
            Classes\
              empty = hex(3)
              @ = hex(0)
    )"),
              "HKCR\\\n"
              "HKCU\\\n"
              "HKCU\\Software\\\n"
              "HKCU\\Software\\Classes\\\n"
              "HKCU\\Software\\Classes empty 3:0\n"
              "HKLM\\\n"
              "HKLM\\SOFTWARE\\\n"
              "HKLM\\SOFTWARE\\Other\\\n"
              "HKLM\\SOFTWARE\\Other\\Classes\\\n"
              "HKLM\\SOFTWARE\\Vendor\\\n"
              "HKLM\\SOFTWARE\\Vendor (default) 2:4\n"
              "HKLM\\SOFTWARE\\Vendor 11 11:8\n"
              "HKLM\\SOFTWARE\\Vendor B 1:5\n"
              "HKLM\\SOFTWARE\\Vendor b 4:4\n"
              "HKLM\\SOFTWARE\\classes\\\n"
              "HKLM\\SOFTWARE\\vendor\\\n");
}

constexpr std::string_view kTroubled = R"(
    HKLM
      A\
        Grows\
          lost = sz "longer than it was"  grows
        Locked\  unopenable
          lost = dword 1
        Shrinks\  shrinks
          lost = dword 1
          Below\
        Whole\
          kept = dword 1
      B\
)";

TEST_F(Registry, KeyThatFailsCostsItsSubtreeWithAProgressRecordAndTheCaptureWithout) {
    CCaptureProgress progress;
    EXPECT_EQ(Walked(kTroubled, &progress),
              "HKCR\\\nHKCU\\\nHKLM\\\nHKLM\\A\\\nHKLM\\A\\Whole\\\nHKLM\\A\\Whole kept 4:4\nHKLM\\B\\\n");
    EXPECT_TRUE(m_bComplete);
    EXPECT_EQ(progress.m_nKeys, 6U) << "a key is counted before it is opened, a shrinking one's subkeys never are";
    EXPECT_EQ(progress.m_nValues, 2U);
    EXPECT_EQ(progress.m_nHives, 3U);
    const auto snapshot = Capture(kTroubled);
    EXPECT_FALSE(m_bComplete);
    EXPECT_EQ(snapshot->GetError(), "HKLM\\A\\Grows: the registry key could not be read to its end (234)");
    const auto second = Capture("HKLM\n  A\\  shrinks\n");
    EXPECT_EQ(second->GetError(), "HKLM\\A: the registry key could not be read to its end (259)");
}

TEST_F(Registry, ValueThatCameWithoutDataIsAskedForAgain) {
    CCaptureProgress progress;
    EXPECT_EQ(Walked(R"(
        HKCU
          K\
            late = sz "there"  late
            gone = sz "no more"  vanishes
    )",
                     &progress),
              "HKCR\\\nHKCU\\\nHKCU\\K\\\nHKCU\\K late 1:6\nHKLM\\\n");
    EXPECT_EQ(progress.m_nValues, 1U);
}

TEST_F(Registry, CancelEndsTheWalkAtTheNextNode) {
    CCaptureProgress progress;
    progress.m_bKeepGoing = false;
    Capture(kTroubled, &progress);
    EXPECT_FALSE(m_bComplete);
    EXPECT_EQ(progress.m_nKeys, 0U);
}

constexpr std::string_view kFull = R"(
    HKCR
      .txt\
        @ = sz "txtfile"
      txt\
    HKCU
      Software\
    HKLM
      SOFTWARE\
        Name = sz "value"
        Name\
          Inner = dword 1
)";

TEST_F(Registry, PathsLeadToValuesBeforeSubkeysWithoutRegardToCase) {
    const auto snapshot = Capture(kFull);
    EXPECT_EQ(snapshot->FindObject("HKLM")->m_name, "HKLM");
    EXPECT_EQ(snapshot->FindObject("HKLM\\software\\NAME\\inner")->GetFullName(), "HKLM\\SOFTWARE\\Name");
    EXPECT_TRUE(IsExactly<CDelvRegValObj>(*snapshot->FindObject("HKLM\\SOFTWARE\\Name")));
    EXPECT_EQ(snapshot->FindObject("HKCR\\.TXT\\(default)")->m_name, "(default)");
    EXPECT_EQ(snapshot->FindObject("hklm\\SOFTWARE"), nullptr);
    EXPECT_EQ(snapshot->FindObject("HKLM\\SOFTWARE\\Name\\Inner\\x"), nullptr);
}

TEST_F(Registry, FileHoldsThreeHivesAndGivesTheTreeBack) {
    Parse("/s /r:hklm-");
    const auto snapshot = Capture(kFull);
    const CString tree = ListRegistry(*snapshot->m_pRegistry);
    EXPECT_EQ(CountOf(tree, "HKLM"), 1) << "an unselected hive stays, empty";
    const auto loaded = LoadFrom(Store(*snapshot));
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(ListRegistry(*loaded->m_pRegistry), tree);
    EXPECT_EQ(loaded->FindObject("HKCR")->m_fullName, "");
}

TEST_F(Registry, ValueHasChangedWhenItsTypeOrAnyByteHas) {
    EXPECT_EQ(Compared(R"(
        HKLM
          K\
            bytes = sz "text"
            case = sz "text"
            Name = dword 1
            same = hex(3)
            type = hex(4) 01 00 00 00
            longer = sz "text"
          Old\
            v = dword 1
    )",
                       R"(
        HKLM
          K\
            bytes = sz "texT"
            case = sz "text"
            name = dword 1
            same = hex(3)
            type = hex(5) 01 00 00 00
            longer = sz "text\0"
          New\
            Sub\
            v = dword 1
    )",
                       "/s /r:hkcr- /r:hkcu-"),
              "+HKLM\\K name\n+HKLM\\New New\n+HKLM\\New v\n+HKLM\\New\\Sub Sub\n"
              "-HKLM\\K Name\n-HKLM\\Old Old\n-HKLM\\Old v\n"
              "*HKLM\\K bytes\n*HKLM\\K longer\n*HKLM\\K type\n");
}

TEST_F(Registry, HiveThatOneSideLacksIsAWarningAndNothingBelowItIsCompared) {
    constexpr std::string_view kValuesOnly = "HKLM\n  only = sz \"a value\"\n";
    EXPECT_EQ(Compared(kValuesOnly, kFull, "/s /r:hkcr- /r:hkcu-"), "WARNING - Registry Hive(HKLM): The Baseline\n");
    EXPECT_EQ(Compared(kFull, kValuesOnly, "/s /r:hkcr- /r:hkcu-"), "WARNING - Registry Hive(HKLM): The Current \n");
    EXPECT_EQ(Compared("", "", "/s /r:hkcr- /r:hkcu-"),
              "WARNING - Registry Hive(HKLM): The Current \n"
              "WARNING - Registry Hive(HKLM): The Baseline\n");
    EXPECT_EQ(Compared("", kFull, "/s /r:hkcr- /r:hkcu- /r:hklm-"), "");
}

}  // namespace
}  // namespace delvane
