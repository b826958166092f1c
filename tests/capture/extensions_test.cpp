// What a snapshot knows of file extensions, and which of them are properly registered.
#include "capture/extensions.h"

#include "capture/registry.h"
#include "tests/support/machine_test.h"

namespace delvane {
namespace {

class Extensions : public CMachineTest {
protected:
    // Name, type, icon, command, NoOpen, whether it has a key, and whether it is properly registered.
    static CString ListOf(const CSnapshot& snapshot) {
        CString lines;
        for (const CDelvObj* object : snapshot.m_pExtensions->m_extensions) {
            const auto& extension = static_cast<const CDelvExtObj&>(*object);
            lines += CString(extension.m_name) + " [" + CString(extension.m_strFileType) + "] [" +
                     CString(extension.m_strIcon) + "] [" + CString(extension.m_strOpenCommand) + "] " +
                     std::to_string(extension.m_bNoOpen) + (extension.m_pKey != nullptr ? " key" : "") +
                     (extension.IsProperlyRegistered() ? " good" : "") + "\n";
        }
        return lines;
    }
};

constexpr std::string_view kFiles = R"(
    C: fixed
      Program Files\
        app.unseen
      LETTER.DOC
      readme.txt
      new.zzz
      secret.hid  attributes=0x22
)";

constexpr std::string_view kClasses = R"(
    HKCR
      .\
        @ = sz "docfile"
      .DOC\
        @ = sz "docfile"
      .txt\
        @ = sz "TXTFILE"
      .dll\
        @ = sz "dllfile"
      .nam\
        @ = sz "nowhere"
      .non\
        other = sz "docfile"
      .emp\
        @ = sz ""
      .sub\
        @ = sz "Group\\Inner"
      docfile\
        @ = sz "A document"
        DefaultIcon\
          @ = expand "doc.ico\0tail"
        shell\
          open\
            command\
              @ = sz "edit %1"
      dllfile\
        NoOpen = sz ""
        DefaultIcon\
          @ = sz "dll.ico"
      txtfile\
        NoOpen\
        shell\
          open\
            command\
              @ = hex(3) 6e 6f 74 65
      nofullstop\
)";

constexpr std::string_view kList =
    ". [A document] [doc.ico] [edit %1] 0 key good\n"
    ".dll [dllfile] [dll.ico] [] 1 key good\n"
    ".doc [A document] [doc.ico] [edit %1] 0 key good\n"
    ".emp [] [] [] 0 key\n"
    ".nam [nowhere] [] [] 0 key\n"
    ".non [] [] [] 0 key\n"
    ".sub [Group\\\\Inner] [] [] 0 key\n"
    ".txt [TXTFILE] [] [note] 1 key\n"
    ".zzz [] [] [] 0\n";

TEST_F(Extensions, AreReadFromTheClassesAndCompletedFromTheFiles) {
    m_pMachine->m_folders = {{CSIDL_PROGRAM_FILES, "C:\\Program Files"}};
    SetRegistry(kClasses);
    Start(kFiles);
    const auto snapshot = TakeSnapshot();
    EXPECT_EQ(ListOf(*snapshot), kList);
    EXPECT_EQ(snapshot->FindObject(".zzz")->m_fullName, ".zzz");
    EXPECT_EQ(snapshot->FindObject(".ZZZ"), nullptr);
    const auto loaded = LoadFrom(Store(*snapshot));
    EXPECT_EQ(ListOf(*loaded), kList) << "keys are found again in the loaded registry";
    EXPECT_EQ(loaded->FindObject(".DOC"), nullptr);
    EXPECT_NE(loaded->FindObject(".doc"), nullptr);
}

TEST_F(Extensions, WithoutTheClassesOnlyThoseOfFilesAreKnownAndWithTheOptionOffNone) {
    m_pMachine->m_folders = {{CSIDL_PROGRAM_FILES, "C:\\Program Files"}};
    SetRegistry(kClasses);
    Start(kFiles, "/s /r:hkcr-");
    EXPECT_EQ(ListOf(*TakeSnapshot()), ".doc [] [] [] 0\n.txt [] [] [] 0\n.zzz [] [] [] 0\n");
    Parse("/s /ext-");
    EXPECT_EQ(ListOf(*TakeSnapshot()), "");
}

TEST_F(Extensions, ChangeWhenATextDiffersInMoreThanCase) {
    Start("C: fixed");
    const auto compared = [this](std::string_view before, std::string_view after) {
        SetRegistry(before);
        const auto baseline = TakeSnapshot();
        SetRegistry(after);
        const auto current = TakeSnapshot();
        CMasterReport report(*current, *baseline);
        current->m_pExtensions->Compare(*baseline->m_pExtensions, report.m_extReport);
        return std::to_string(report.m_extReport.m_changed.size()) + " " +
               std::to_string(report.m_lstWarnings[4].size());
    };
    const CString typed = R"(
        HKCR
          .a\
            @ = sz "Type"
    )";
    CString cased = typed;
    cased.replace(cased.find("Type"), 4, "tYPE");
    CString other = typed;
    other.replace(other.find("Type"), 4, "Typo");
    EXPECT_EQ(compared(typed, cased), "0 0");
    EXPECT_EQ(compared(typed, other), "1 1") << "and what it has become is not properly registered";
    EXPECT_EQ(compared("", typed), "0 1") << "without extensions on one side nothing is compared";
    EXPECT_EQ(compared("", ""), "0 2");
    Parse("/s /ext-");
    EXPECT_EQ(compared("", ""), "0 0");
}

}  // namespace
}  // namespace delvane
