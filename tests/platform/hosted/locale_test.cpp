// A window system sets the locale of the whole process; what the program writes stays the same bytes.
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "platform/hosted/files/host_file.h"
#include "tests/support/machine_test.h"
#include "tests/support/temporary_folder.h"

namespace delvane {
namespace {

class Locale : public CMachineTest {
protected:
    // German words, a comma in numbers, and neither AM nor PM.
    void SpeakGerman() {
        const std::string make = "localedef -i de_DE -f UTF-8 " + m_locales / "de_DE.UTF-8";
        ASSERT_EQ(std::system(make.c_str()), 0) << "the package locales is missing";
        setenv("LOCPATH", m_locales.GetPath().c_str(), 1);
        ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
        char number[8];
        std::snprintf(number, sizeof number, "%.1f", 1.5);
        ASSERT_STREQ(number, "1,5");
    }
    ~Locale() override {
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
    }

    CTemporaryFolder m_locales;
};

TEST_F(Locale, NothingThatIsWrittenFollowsIt) {
    const auto write = [this] {
        m_pMachine->SetDisks("C: fixed");
        Start("C: fixed");
        const auto baseline = TakeSnapshotOf("C: fixed", "Before");
        const auto current = TakeSnapshotOf("C: fixed\n  f  size=1536 written=2001-10-03T14:05:06\n", "After");
        // 7 March 2001, a Wednesday
        current->m_ftCreated = FILETIME::FromTicks(126'283'970'000'000'000);
        return PageOf(*current, *baseline) + current->GetTimeString() + ErrorText(ENOENT) + Store(*current);
    };
    const CString expected = write();
    ASSERT_NE(expected.find("10/03/01 02:05 PM</TD><TD> - 1.5KB (1,536 bytes)"), CString::npos);
    ASSERT_NE(expected.find("Wed Mar 07 "), CString::npos);
    ASSERT_NO_FATAL_FAILURE(SpeakGerman());
    EXPECT_TRUE(write() == expected);
}

}  // namespace
}  // namespace delvane
