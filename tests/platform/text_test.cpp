#include "platform/text.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace delvane {
namespace {

TEST(Text, CaseIsFoldedForEveryLetterAndTheRestIsNot) {
    EXPECT_EQ(mbsicmp("Program Files", "PROGRAM FILES"), 0);
    EXPECT_EQ(mbsicmp("\xC3\x89t\xC3\xA9", "\xC3\xA9T\xC3\x89"), 0);  // Été
    EXPECT_EQ(mbsicmp("\xCF\x82", "\xCE\xA3"), 0);                    // both sigmas fold to one
    EXPECT_EQ(mbsicmp("\xE2\x84\xAA", "k"), 0);                       // the Kelvin sign
    EXPECT_NE(mbsicmp("\xC4\xB1", "i"), 0);                           // dotless i is its own letter
    EXPECT_NE(mbsicmp("stra\xC3\x9F"
                      "e",
                      "strasse"),
              0);  // one character for one
    EXPECT_LT(mbsicmp("_", "a"), 0);
    EXPECT_LT(mbsicmp("abc", "ABCD"), 0);
    EXPECT_GT(mbsicmp("b", "A"), 0);
}

TEST(Text, BytesThatAreNoCharactersStandForThemselves) {
    EXPECT_EQ(mbsicmp("a\xFF", "A\xFF"), 0);
    EXPECT_NE(mbsicmp("\xFF", "\xFE"), 0);
    EXPECT_NE(mbsicmp("\xC3", "\xC3\x89"), 0);
    EXPECT_EQ(MakeLower("A\xFF\xC3\x89"), "a\xFF\xC3\xA9");
}

TEST(Text, APrefixKnowsNoPathBoundary) {
    EXPECT_TRUE(IsPrefixNoCase("C:\\Program Files", "c:\\program files2\\x"));
    EXPECT_TRUE(IsPrefixNoCase("C:\\App", "C:\\App"));
    EXPECT_FALSE(IsPrefixNoCase("C:\\App", "C:\\Ap"));
    EXPECT_FALSE(IsPrefixNoCase("", ""));
    EXPECT_FALSE(IsPrefixNoCase("", "C:\\"));
}

TEST(Text, PlaceholdersAreFilledInOnePass) {
    EXPECT_EQ(FormatString2("%1 and %2, %1", "a%2", "b"), "a%2 and b, a%2");
    EXPECT_EQ(FormatString1("100% of %1", "x"), "100% of x");
}

TEST(Text, ThousandsAreGrouped) {
    EXPECT_EQ(GroupedDecimalText(0), "0");
    EXPECT_EQ(GroupedDecimalText(999), "999");
    EXPECT_EQ(GroupedDecimalText(1000), "1,000");
    EXPECT_EQ(GroupedDecimalText(-1234567), "-1,234,567");
    EXPECT_EQ(GroupedDecimalText(9223372036854775807), "9,223,372,036,854,775,807");
}

TEST(Text, TheExtensionBeginsWithTheLastPeriod) {
    EXPECT_EQ(ExtensionOf("README.TXT"), ".TXT");
    EXPECT_EQ(ExtensionOf("a.tar.gz"), ".gz");
    EXPECT_EQ(ExtensionOf("odd."), ".");
    EXPECT_EQ(ExtensionOf(".profile"), ".profile");
    EXPECT_EQ(ExtensionOf("none"), "");
    EXPECT_EQ(ExtensionOf("x." + CString(300, 'e')).size(), 255U);
}

TEST(Text, TimesPrintInTheLocalZone) {
    const std::uint64_t ticks = 126'227'808'000'000'000;  // 1 January 2001, 00:00 UTC
    EXPECT_EQ(LocalTimeText(ticks, "%m/%d/%y %I:%M %p"), "01/01/01 12:00 AM");
    EXPECT_EQ(LocalTimeText(ticks - kTicksPerSecond, "%a %b %d %H:%M:%S %Y"), "Sun Dec 31 23:59:59 2000");
    EXPECT_EQ(LocalTimeText(ticks + 45'000 * kTicksPerSecond, "%y %I:%M %p"), "01 12:30 PM");
    EXPECT_EQ(LocalTimeText(0, "%Y-%m-%d %y"), "1601-01-01 01");
    EXPECT_EQ(LocalTimeText(std::uint64_t{1} << 63, "%Y"), "");
}

}  // namespace
}  // namespace delvane
