// The page of a review, as far as no browser is needed: what becomes of texts, and what the limit leaves out.
#include <gtest/gtest.h>

#include "review/page_text.h"
#include "tests/review/review_case.h"

namespace delvane {
namespace {

class ReviewPage : public CReviewTest {
protected:
    static CString Shown(std::string_view text, EText form) {
        return TextOf([&](std::ostream& stream) { CPageText(stream).Text(text, form); });
    }
    static CString Side(std::string_view text, std::string_view opposite) {
        return TextOf([&](std::ostream& stream) { CPageText(stream).Data({"ins", text, opposite}, EText::kData); });
    }
    static CString Dump(std::string_view bytes, std::string_view opposite) {
        return TextOf([&](std::ostream& stream) { CPageText(stream).Dump({"del", bytes, opposite}); });
    }
};

TEST_F(ReviewPage, MarksWhatCannotBeSeen) {
    EXPECT_EQ(Shown("<&\">'", EText::kLine), "&lt;&amp;&quot;&gt;'");
    EXPECT_EQ(Shown("a\u202Eb\tc", EText::kLine), "a<mark>U+202E</mark>b<mark>U+0009</mark>c");
    EXPECT_EQ(Shown("a\u202Eb", EText::kTitle), "aU+202Eb");
    EXPECT_EQ(Shown("a\r\n\tb", EText::kData), "a<mark>U+000D</mark>\n\tb");
    EXPECT_EQ(Shown(std::string_view("a\0b\nc", 5), EText::kList), "a\nb<mark>U+000A</mark>c");
    EXPECT_EQ(Shown("\xFF\xE2\x82z\xC3\xA9\x80", EText::kLine), "\uFFFD\uFFFDz\u00E9\uFFFD");
}

TEST_F(ReviewPage, MarksWhatDiffersByCharacters) {
    EXPECT_EQ(Side("version 2", "version 1"), "<code>version <ins>2</ins></code>");
    EXPECT_EQ(Side("a\u00E9b", "a\u00E8b"), "<code>a<ins>\u00E9</ins>b</code>") << "no character is cut in two";
    EXPECT_EQ(Side("aXa", "aa"), "<code>a<ins>X</ins>a</code>") << "the common end does not reach into the beginning";
    EXPECT_EQ(Side("aa", "aXa"), "<code>aa</code>");
    EXPECT_EQ(Side("", "x"), "<span>empty</span>");
    const CString far(1000, 'x');
    const CString cut = Side(far + "2" + far, far + "1" + far);
    EXPECT_LT(cut.find("<ins>2</ins>"), cut.find("<details")) << "the cut shows what differs";
    EXPECT_NE(cut.find("<summary>all 2001 bytes</summary><code>" + far + "<ins>2</ins>" + far), CString::npos);
    const CString stray(1000, '\x80');
    EXPECT_EQ(CountOf(Side(stray, ""), "\uFFFD"), 1400) << "of bytes that are no text, too, a part is shown";
}

TEST_F(ReviewPage, DumpsBytes) {
    EXPECT_EQ(Dump("012345678\x01<\x7F", "0123456x8\x01<\x02"),
              "<pre class=\"hex\" tabindex=\"0\">\n0000  30 31 32 33 34 35 36 <del>37</del>  38 01 3c <del>7f</del>"
              "              0123456<del>7</del>8.&lt;<del>.</del>\n</pre>");
    EXPECT_NE(Dump(CString(65537, 'a'), "").find("\n00010000  <del>61</del>"), CString::npos);
}

TEST_F(ReviewPage, SaysWhyTheExitCodeIsWhatItIs) {
    m_input.m_baseline = Take("C: fixed\n  a", "HKLM\n  K\\\nHKCU\n  K\\\nHKCR\n  K\\\n", "Before");
    m_input.m_current =
        Take("C: fixed\n  a\n  b", "HKLM\n  K\\\nHKCU\n  K\\\n    v = sz \"1\"\nHKCR\n  K\\\n", "After");
    const struct {
        EFailOn m_level;
        const char* m_accepted;
        const char* m_why;
    } kCases[] = {
        {EFailOn::kNone, "path = 'x'", "With <code>--fail-on none</code> nothing is counted against it."},
        {EFailOn::kError, "path = 'x'", "Nothing that is open reaches <code>--fail-on error</code>."},
        {EFailOn::kWarning, "path = 'x'", "2 open warnings reach <code>"},
        {EFailOn::kWarning, "path = 'C:\\**'", "1 open warning reaches <code>"},
        {EFailOn::kInfo, "finding = 'no-uninstall-entry'", "1 open warning and 1 open info reach <code>"},
        {EFailOn::kChange, "path = 'x'", "2 open changes reach <code>"},
        {EFailOn::kChange, "path = 'C:\\**'", "1 open change reaches <code>"},
    };
    for (const auto& [level, accepted, why] : kCases) {
        CString list;
        for (const CString what :
             {"finding = 'current-without-extensions'", "finding = 'baseline-without-extensions'", accepted})
            list += "[[accept]]\n" + what + "\nreason = 'x'\n";
        m_input.m_failOn = level;
        const CReview& review = Judge(list);
        const CString page = TextOf([&](std::ostream& stream) { WriteReviewPage(review, stream, 9); });
        EXPECT_EQ(page.substr(page.find("</strong>") + 9, CString(why).size()), why);
    }
}

TEST_F(ReviewPage, LimitsEachGroupAndShowsWhatIsOpenFirst) {
    m_input.m_baseline = Take("C: fixed\n  old  size=1", "", "Before");
    m_input.m_current =
        Take("C: fixed\n  a  size=1\n  b  size=1\n  c  size=1\n  d  size=1\n  old  size=2", "", "After");
    const CReview& review = Judge("[[accept]]\npath = 'C:\\a'\nreason = 'x'\n");
    const CString page = TextOf([&](std::ostream& stream) { WriteReviewPage(review, stream, 2); });
    EXPECT_EQ(CountOf(page, "<li id=\"c"), 3);
    EXPECT_EQ(CountOf(page, "<li id=\"c1\""), 0) << "accepted, so it is left out before those that are open";
    EXPECT_EQ(CountOf(page, "4 in all, 2 left out"), 1);
    EXPECT_EQ(CountOf(page, "5 in all, of which 2 are left out here"), 1);
    EXPECT_EQ(CountOf(page, "<a href=\"#c1\">"), 0) << "nothing links to what is not there";
}

}  // namespace
}  // namespace delvane
