// What the report makes of changes in the registry and of extensions.
#include "capture/registry.h"
#include "tests/support/report_test.h"

namespace delvane {
namespace {

class RegistryReport : public CReportTest {
protected:
    // Compares two registries on the disk.
    CRegistryReport& CompareRegistries(std::string_view before, std::string_view after) {
        constexpr std::string_view kDisk = R"(
            C: fixed
              App\
                c.sys
              WINNT\
                system32\
                  a.sys
                  b.sys
        )";
        return Compare(kDisk, before, kDisk, after).m_registryReport;
    }
    CString TextOf(std::uint32_t type, std::string_view data) {
        CSnapshot snapshot;
        const CDelvRegValObj value(&snapshot, snapshot.GetArena(), {}, type, data);
        return ValueTypeName(value) + " " + ValueDataText(value);
    }
};

constexpr std::string_view kEmpty = R"(
    HKCR
      x\
    HKCU
      Software\
    HKLM
      SOFTWARE\
        Microsoft\
          Windows\
            CurrentVersion\
              Uninstall\
                Old\
      SYSTEM\
        CurrentControlSet\
          Services\
)";

TEST_F(RegistryReport, AdditionsUnderUninstallAreListedAndFiledOnce) {
    CRegistryReport& report = CompareRegistries(kEmpty, R"(
        HKCR
          x\
        HKCU
          Software\
        HKLM
          Software\
          SOFTWARE\
            Microsoft\
              Windows\
                CurrentVersion\
                  Uninstall\
                    New\
                      DisplayName = sz "New"
                      UninstallString = sz "new.exe"
                  UninstallTools\
    )");
    EXPECT_EQ(CountOf(PathsOf(report.m_uninstallAdded), "\\Uninstall\\New\n"), 3) << "two values and their key";
    EXPECT_EQ(CountOf(PathsOf(report.m_uninstallAdded), "\\UninstallTools\n"), 1) << "a name that begins alike";
    EXPECT_EQ(report.m_uninstallAdded.size(), 4U);
    EXPECT_EQ(report.m_nKeysAdded, 3U);
    EXPECT_EQ(report.m_nValuesAdded, 2U);
    EXPECT_EQ(report.m_nKeysDeleted, 4U);
    EXPECT_EQ(ObjectsOf(m_pReport->m_lstInfo[1]), "Registry\n");
    EXPECT_TRUE(m_pReport->m_lstInfo[5].empty());
    EXPECT_EQ(CountOf(PageOf(*m_pCurrent, *m_pBaseline), "No additions detected in the Uninstall"), 0);
}

TEST_F(RegistryReport, AnyChangeOfTheUsersHiveIsFiledOnce) {
    CompareRegistries(kEmpty, kEmpty);
    EXPECT_TRUE(m_pReport->m_lstInfo[5].empty());
    for (const char* const change : {"HKCU\n  Software\\\n  New\\\n    v = dword 1\n", "HKCU\n  Other\\\n"}) {
        CompareRegistries(kEmpty, change + CString("HKCR\n  x\\\nHKLM\n  SOFTWARE\\\n"));
        EXPECT_EQ(ObjectsOf(m_pReport->m_lstInfo[5]), "Registry\n");
    }
}

TEST_F(RegistryReport, AddedServicesListTheirDriverInWhateverFormTheyNameIt) {
    const auto driversOf = [this](const CString& path, const CString& key = "CurrentControlSet",
                                  const CString& name = "ImagePath") {
        CString text(kEmpty);
        text += "            New\\\n              " + name + " = expand \"" + path + "\"\n";
        if (key != "CurrentControlSet") text.replace(text.find("CurrentControlSet"), 17, key);
        CompareRegistries(kEmpty, text);
        return PathsOf(m_pReport->m_fileReport.m_exesKernelMode);
    };
    EXPECT_EQ(driversOf("System32\\a.sys"), "C:\\WINNT\\system32\\a.sys\n");
    EXPECT_EQ(driversOf("SYSTEM32\\b.sys"), "C:\\WINNT\\system32\\b.sys\n");
    EXPECT_EQ(driversOf("\\SystemRoot\\System32\\a.sys"), "C:\\WINNT\\system32\\a.sys\n");
    EXPECT_EQ(driversOf("%SystemRoot%\\system32\\a.sys"), "C:\\WINNT\\system32\\a.sys\n");
    EXPECT_EQ(driversOf("\\??\\C:\\App\\c.sys"), "C:\\App\\c.sys\n");
    EXPECT_EQ(driversOf("system32\\a.sys"), "") << "in small letters it is no form of its own";
    EXPECT_EQ(driversOf("C:\\App"), "") << "no file";
    EXPECT_EQ(driversOf("System32\\a.sys", "ControlSet001"), "");
    EXPECT_EQ(driversOf("System32\\a.sys", "CurrentControlSet", "imagepath"), "");
    EXPECT_TRUE(m_pReport->m_lstWarnings[7].empty()) << "the list files no finding of its own";
}

TEST_F(RegistryReport, DataPrintByTheirTypeAndNeverBeyondTheirEnd) {
    EXPECT_EQ(TextOf(REG_SZ, "no terminator"), "String no terminator");
    EXPECT_EQ(TextOf(REG_SZ, ""), "String <NULL>");
    EXPECT_EQ(TextOf(REG_MULTI_SZ, {"a\0b", 3}), "Strings a\n<BR>b");
    EXPECT_EQ(TextOf(REG_MULTI_SZ, {"\0b\0", 3}), "Strings ");
    EXPECT_EQ(TextOf(REG_DWORD, "\x01\x02"), "DWORD 0x00000201");
    EXPECT_EQ(TextOf(REG_DWORD_BIG_ENDIAN, "\x01\x02"), "DWORD 0x01020000");
    EXPECT_EQ(TextOf(REG_DWORD, "\x01\x02\x03\x04\x05"), "DWORD 0x04030201");
    EXPECT_EQ(TextOf(REG_RESOURCE_LIST, CString(17, '\xAB')).size(),
              std::string_view("Resource List ").size() + 17 * 3 + 5);
    EXPECT_EQ(TextOf(0xFFFF0012, "\x7F"), "Binary 7f ");
}

TEST_F(RegistryReport, OnlyAddedAndChangedExtensionsAreTested) {
    constexpr std::string_view kDisk = "C: fixed\n  seen.ext";
    Compare(kDisk, R"(
        HKCR
          .bad\
          .ext\
            @ = sz "good"
          good\
    )",
            kDisk, R"(
        HKCR
          .bad\
          .new\
            @ = sz "good"
          .two\
            @ = sz "nowhere"
          good\
            DefaultIcon\
              @ = sz "icon"
            NoOpen = sz ""
    )");
    const CExtReport& report = m_pReport->m_extReport;
    EXPECT_EQ(PathsOf(report.m_added), ".new\n.two\n");
    EXPECT_EQ(PathsOf(report.m_changed), ".ext\n") << "its key is gone, the file is still there";
    EXPECT_EQ(PathsOf(report.m_badExtensions), ".ext\n.two\n");
    EXPECT_EQ(ObjectsOf(m_pReport->m_lstWarnings[4]), "Extensions\n");
}

}  // namespace
}  // namespace delvane
