// What a review makes of a comparison, record by record.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "review/describe.h"
#include "review/gap_list.h"
#include "review/rules.h"
#include "tests/review/review_case.h"

namespace delvane {
namespace {

constexpr std::string_view kDiskBefore = R"(
    C: fixed
      Program Files\
        old.txt  size=5 written=2001-02-03T04:05:06
      Temp2\
        gone.txt  size=1
)";
constexpr std::string_view kDiskAfter = R"(
    C: fixed
      Program Files\
        old.txt  size=6 written=2001-02-03T04:05:06
        app.exe  size=7 image=pe32 version=1.2 attributes=0x8021
      Outside\
        o.txt  size=1
)";
constexpr std::string_view kRegistryBefore = R"(
    HKLM
      Software\
        X\
          Version = sz "1"
          Gone = dword 7
)";
constexpr std::string_view kRegistryAfter = R"(
    HKLM
      Software\
        X\
          Version = sz "2\0tail"
          @ = multi "a" "b"
          Wide = hex(11) 01 00 00 00 00 00 00 80
          Short = hex(4) 01 02
          Odd = hex(153) 0a
        New\
)";

class Review : public CReviewTest {
protected:
    void TakeBoth() {
        m_input.m_baseline = Take(kDiskBefore, kRegistryBefore, "Before");
        m_input.m_current = Take(kDiskAfter, kRegistryAfter, "After");
    }
};

// The lines of one kind of record.
CString Only(const CString& lines, const CString& record) {
    CString text;
    std::istringstream stream(lines);
    for (CString line; std::getline(stream, line);) {
        EXPECT_TRUE(nlohmann::json::accept(line)) << line;
        if (line.starts_with("{\"record\":\"" + record + "\"")) text += line + "\n";
    }
    return text;
}

// Statuses by id: "1 open\n".
CString StatusesOf(const CReview& review) {
    CString text;
    for (const CChange& change : review.m_changes) {
        text += CString(change.m_path) + " " + CString(change.m_name) + " " + CString(WordOf(change.m_status)) + " " +
                CString(WordOf(change.m_leftover)) + (change.m_bUncertain ? " uncertain" : "") + "\n";
    }
    return text;
}

TEST_F(Review, EachRecordHasItsFieldsInTheirOrder) {
    TakeBoth();
    CString lines = LinesOf(Judge(R"([[accept]]
        path = 'HKLM\Software\New\**'
        reason = "looked at")"));
    const CString version = "\"program\":\"" DELVANE_VERSION "\"";
    lines.erase(lines.find(version), version.size() + 1);
    ExpectGolden("review/golden/lines.jsonl", lines);
}

TEST_F(Review, TheListIsAskedBeforeTheControlAndFindingsFollowTheirChanges) {
    TakeBoth();
    m_input.m_control = Take(kDiskAfter, kRegistryBefore, "Idle");
    const CReview& review = Judge("[[accept]]\npath = 'C:\\out*\\**'\nkind = ['file']\nreason = 'mine'");
    EXPECT_TRUE(StatusesOf(review).starts_with("C:\\Outside  noise \nC:\\Outside\\o.txt  accepted \n"))
        << StatusesOf(review);
    EXPECT_EQ(review.m_counts.m_changes, (std::array<std::size_t, 3>{7, 1, 5}));
    const CFinding& outside = review.m_findings.back();
    EXPECT_EQ(outside.m_pRule->m_id, "files-outside");
    EXPECT_EQ(WordOf(outside.m_status), "accepted") << "none of its changes is open, and not all are noise";
    EXPECT_EQ(outside.m_strReason, "mine");
    EXPECT_EQ(WordOf(Judge().m_findings.back().m_status), "noise");
}

TEST_F(Review, ANameWhoseCaseHasChangedIsNoiseInBothItsChanges) {
    m_input.m_baseline = Take("C: fixed\n  a.txt\n", kRegistryBefore, "Before");
    m_input.m_current = Take("C: fixed\n  A.TXT\n", kRegistryBefore, "After");
    m_input.m_control = Take("C: fixed\n  A.TXT\n", kRegistryBefore, "Idle");
    EXPECT_EQ(StatusesOf(Judge()), "C:\\A.TXT  noise \nC:\\a.txt  noise \n");
}

TEST_F(Review, AFailOnLevelLooksAtOpenFindingsOrAtOpenChanges) {
    TakeBoth();
    constexpr std::string_view kRules = R"(
        [[accept]]
        finding = 'files-outside'
        reason = 'x'
        [[accept]]
        finding = 'no-uninstall-entry'
        reason = 'x'
        [[accept]]
        finding = 'current-without-hive'
        reason = 'x'
        [[accept]]
        finding = 'baseline-without-hive'
        reason = 'x')";
    const struct {
        EFailOn m_level;
        std::string_view m_accept;
        int m_exit;
    } kCases[] = {
        {EFailOn::kError, {}, 0},
        {EFailOn::kWarning, {}, 1},
        {EFailOn::kInfo, {}, 1},
        {EFailOn::kNone, {}, 0},
        {EFailOn::kChange, kRules, 1},
        {EFailOn::kInfo, kRules, 0},
        {EFailOn::kChange, "[[accept]]\npath = '**'\nreason = 'x'", 0},
    };
    for (const auto& [level, accept, exit] : kCases) {
        m_input.m_failOn = level;
        EXPECT_EQ(Judge(accept).m_nExit, exit) << WordOf(level) << accept;
    }
}

TEST_F(Review, LeftoversAreToldApartByTheInstalledSnapshot) {
    const auto registry = [](std::string_view values) { return "HKLM\n  Key\\\n" + CString(values); };
    constexpr std::string_view kDisk = "C: fixed\n  a\\\n";
    m_input.m_baseline =
        Take(kDisk, registry("    Kept = sz \"1\"\n    Gone = sz \"1\"\n    Late = sz \"1\"\n"), "Before");
    m_input.m_installed =
        Take(kDisk, registry("    Kept = sz \"2\"\n    Late = sz \"1\"\n    New = sz \"1\"\n    Tidy = sz \"1\"\n"),
             "Installed");
    m_input.m_current =
        Take(kDisk, registry("    Kept = sz \"3\"\n    New = sz \"2\"\n    After = sz \"1\"\n"), "Removed");
    EXPECT_EQ(StatusesOf(Judge()),
              "HKLM\\Key After open later\nHKLM\\Key New open left-behind\nHKLM\\Key Gone open not-restored\n"
              "HKLM\\Key Late open later\nHKLM\\Key Kept open not-restored\n");
    // What the installed snapshot did not hold cannot be told apart.
    m_input.m_installed = Take("D: fixed\n  a\\\n", "", "Empty");
    EXPECT_EQ(Judge().m_changes[0].m_leftover, ELeftover::kNone);
}

TEST_F(Review, WhatLiesAtOrBelowAGapIsUncertain) {
    TakeBoth();
    CString problem;
    constexpr std::string_view kGaps =
        R"({"record":"gap","snapshot":"?","kind":"directory","path":"c:\\OUTSIDE","code":5,"reason":"access denied"}

{"record":"gap","snapshot":"?","kind":"value","path":"HKLM\\Software\\X","name":"wide","code":234,"reason":"more"}
{"record":"gap","snapshot":"?","kind":"key","path":"HKLM\\Software\\Ne","code":5,"reason":"access denied"}
)";
    EXPECT_TRUE(ReadGaps(kGaps, m_input.m_current.m_gaps, problem)) << problem;
    const CReview& review = Judge();
    CString uncertain;
    for (const CChange& change : review.m_changes) {
        if (change.m_bUncertain) uncertain += std::to_string(change.m_nId) + " ";
    }
    EXPECT_EQ(uncertain, "1 2 11 ");
    EXPECT_EQ(
        Only(LinesOf(review), "gap").substr(0, 115),
        R"({"record":"gap","snapshot":"After","kind":"directory","path":"c:\\OUTSIDE","code":5,"reason":"access denied"})"
        "\n{\"rec");
    CGapIndex index;
    index.Add({{EGapKind::kRegistryFile, "/home/u/.wine/user.reg", {}, 1009, "damaged"}, {}, false});
    CChange change;
    change.m_kind = EKind::kKey;
    change.m_path = "HKCU\\Software";
    EXPECT_TRUE(index.Covers(change));
    change.m_path = "HKLM\\Software";
    EXPECT_FALSE(index.Covers(change));
    std::vector<CReviewGap> gaps;
    for (const char* const bad : {"{", "[1]", R"({"record":"gap","kind":"hole","path":"x"})",
                                  R"({"record":"gap","kind":"key"})", R"({"record":"gap","kind":"key","path":5})"}) {
        EXPECT_FALSE(ReadGaps(bad, gaps, problem)) << bad;
    }
    EXPECT_FALSE(ReadGaps(CString(1 << 20, '['), gaps, problem)) << "nesting is no depth of the stack";
    EXPECT_TRUE(gaps.empty());
}

TEST_F(Review, NamesThatAreNoUtf8AreReplacedAndSaidToBe) {
    m_input.m_baseline = Take("C: fixed\n  a\\\n", "HKLM\n  K\\\n    V = sz \"x\"\n", "Before");
    m_input.m_current =
        Take("C: fixed\n  a\\\n    \xE2\x82\xC3\xA9\xFF.txt\n", "HKLM\n  K\\\n    V = sz \"\xED\xA0\x80\"\n", "After");
    const CString lines = LinesOf(Judge());
    EXPECT_NE(lines.find("C:\\\\a\\\\\xEF\xBF\xBD\xC3\xA9\xEF\xBF\xBD.txt"), CString::npos) << lines;
    EXPECT_NE(lines.find("\"data\":\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\"},\"status\":\"open\",\"lossy\":true}"),
              CString::npos)
        << lines;
    EXPECT_EQ(CountOf(lines, "\"lossy\":true"), 2);
}

TEST(ReviewTexts, TimesGoFromTheFirstTickToTheLast) {
    EXPECT_EQ(IsoTime(0), "1601-01-01T00:00:00.0000000Z");
    EXPECT_EQ(IsoTime(134'399'196'000'000'001), "2026-11-23T15:00:00.0000001Z");
    EXPECT_EQ(IsoTime(UINT64_MAX), "60056-05-28T05:36:10.9551615Z");
}

}  // namespace
}  // namespace delvane
