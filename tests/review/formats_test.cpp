// The forms that other programs read: each against what its readers ask for.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "capture/drives.h"
#include "tests/review/review_case.h"

namespace delvane {
namespace {

class ReviewFormats : public CReviewTest {
protected:
    void TakeRegistries(std::string_view before, std::string_view after) {
        constexpr std::string_view kDisk = "C: fixed\n  a\\\n";
        m_input.m_baseline = Take(kDisk, before, "Before");
        m_input.m_current = Take(kDisk, after, "After");
    }
    // The file without its head, in UTF-8. Only ASCII stands in these tests.
    CString RegistryFile(void (*write)(const CReview&, std::ostream&)) {
        const CString units = TextOf([&](std::ostream& s) { write(*m_pReview, s); });
        EXPECT_EQ(units.substr(0, 2), "\xFF\xFE");
        CString text;
        for (std::size_t i = 2; i < units.size(); i += 2)
            text += units[i + 1] == '\0' ? units[i] : '?';
        EXPECT_EQ(CountOf(text, "\n"), CountOf(text, "\r\n"));
        std::erase(text, '\r');
        const std::size_t body = text.find("\n\n", text.find("\n;")) + 2;
        return text.substr(body);
    }
};

constexpr std::string_view kBefore = R"(
    HKLM
      Keep\
        Text = sz "old \"q\" C:\x"
        Bare = hex(1) 61
        Multi = multi "a"
        Number = dword 255
        Bytes = hex(3) 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17 18 19
        Away = expand "%T%"
      Old\
        Deep\
          @ = sz "d"
)";
constexpr std::string_view kAfter = R"(
    HKLM
      Keep\
        Text = sz "new"
        Bare = sz "b"
        Multi = multi "b"
        Number = hex(4) 01
        Bytes = hex(3) 01
        Plus = hex(11) 01
      New\
        Sub\
          a = sz "1"
          b = sz "x\0y"
)";

TEST_F(ReviewFormats, AnUndoFilePutsTheBaselineBack) {
    TakeRegistries(kBefore, kAfter);
    Judge();
    EXPECT_EQ(RegistryFile(WriteUndo), R"([-HKEY_LOCAL_MACHINE\New\Sub]
[-HKEY_LOCAL_MACHINE\New]

[HKEY_LOCAL_MACHINE\Keep]
"Plus"=-
"Away"=hex(2):25,00,54,00,25,00,00,00
"Bare"=hex(1):61,00
"Bytes"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\
  16,17,18,19
"Multi"=hex(7):61,00,00,00,00,00
"Number"=dword:000000ff
"Text"="old \"q\" C:\\x"

[HKEY_LOCAL_MACHINE\Old]

[HKEY_LOCAL_MACHINE\Old\Deep]
@="d"

)");
    EXPECT_NE(RegistryFile(WriteRedo).find("\"Away\"=-\n\"Plus\"=hex(b):01\n\"Bare\"=\"b\"\n"), CString::npos)
        << RegistryFile(WriteRedo);
    EXPECT_NE(RegistryFile(WriteRedo).find("\"b\"=hex(1):78,00,00,00,79,00,00,00\n"), CString::npos);
}

// Whoever deletes a key deletes what somebody has accepted below it.
TEST_F(ReviewFormats, AKeyWithSomethingAcceptedInItStays) {
    TakeRegistries(kBefore, kAfter);
    Judge(
        "[[accept]]\npath = 'HKLM\\New\\Sub'\nname = 'a'\nreason = 'x'\n[[accept]]\npath = 'HKLM\\Keep\\**'\nreason = "
        "'x'");
    EXPECT_EQ(RegistryFile(WriteUndo),
              R"(; stays, as something in it is accepted or noise: HKEY_LOCAL_MACHINE\New
; stays, as something in it is accepted or noise: HKEY_LOCAL_MACHINE\New\Sub

[HKEY_LOCAL_MACHINE\New\Sub]
"b"=-

[HKEY_LOCAL_MACHINE\Old]

[HKEY_LOCAL_MACHINE\Old\Deep]
@="d"

)");
}

TEST_F(ReviewFormats, NamesThatCannotBeWrittenAreShownInAComment) {
    TakeRegistries("HKLM\n  K\\\n    @ = sz \"1\"\n    (default) = sz \"1\"\n",
                   "HKLM\n  K\\\n    @ = sz \"2\"\n    (default) = sz \"1\"\n    a\x01z = sz \"1\"\n  B\x7F\\\n    v = "
                   "sz \"1\"\n");
    Judge();
    EXPECT_EQ(RegistryFile(WriteRedo), R"(; cannot be written, with its values: HKEY_LOCAL_MACHINE\B<7f>

[HKEY_LOCAL_MACHINE\K]
; cannot be written: the value a<01>z
; the key has two values of this look: one without a name, and one with the name (default)
@="2"

)");
}

TEST_F(ReviewFormats, ADraftThatIsFilledInAcceptsAllThatIsOpen) {
    m_input.m_baseline = Take("C: fixed\n  a\\\n", "HKLM\n  K\\\n    v = sz \"1\"\n", "Before");
    m_input.m_current = Take("C: fixed\n  a\\\n    it's [1]*.txt\n    \xFF\xFE?.bin\n  new\\\n    x\\\n      y\n",
                             "HKLM\n  K\\\n    v = sz \"2\"\n    a*\x01'\"\\b = sz \"1\"\n    @ = sz \"1\"\n", "After");
    Judge("[[accept]]\nfinding = 'files-outside'\nreason = 'x'");
    CString draft = TextOf([&](std::ostream& s) { WriteDraft(*m_pReview, s); });
    EXPECT_THROW(Judge(draft), CAcceptError) << "nobody has given a reason";
    EXPECT_EQ(CountOf(draft, "[[accept]]"), 5 + 1 + 4) << draft;
    for (std::size_t at = 0; (at = draft.find("\"\"\n", at)) != CString::npos;)
        draft.replace(at, 2, "\"r\"");
    const CReview& review = Judge(draft);
    EXPECT_EQ(review.m_counts.m_changes[0], 0U) << draft;
    EXPECT_EQ(review.m_counts.m_openFindings, (std::array<std::size_t, 3>{}));
    for (const CAcceptEntry& entry : review.m_accept.GetEntries())
        EXPECT_TRUE(entry.m_bFits) << entry.GetPlace();
}

TEST_F(ReviewFormats, SarifHasARuleForEachResultAndASuppressionForWhatIsAccepted) {
    m_input.m_baseline = Take("C: fixed\n  a\\\n", kBefore, "Before");
    m_input.m_current = Take("C: fixed\n  a\\\n    100% \xC3\xA9#.txt\n", kAfter, "After");
    Judge("[[accept]]\nfinding = 'no-uninstall-entry'\nreason = 'portable'");
    const auto log = nlohmann::json::parse(TextOf([&](std::ostream& s) { WriteSarif(*m_pReview, s); }));
    const auto& run = log.at("runs").at(0);
    const auto& rules = run.at("tool").at("driver").at("rules");
    EXPECT_EQ(rules.size(), 26U);
    int suppressed = 0;
    for (const auto& result : run.at("results")) {
        EXPECT_EQ(rules.at(result.at("ruleIndex").get<std::size_t>()).at("id"), result.at("ruleId"));
        EXPECT_FALSE(result.at("message").at("text").get<std::string>().empty());
        if (result.at("suppressions").empty()) continue;
        ++suppressed;
        EXPECT_EQ(result["suppressions"][0]["justification"], "portable");
    }
    EXPECT_EQ(suppressed, 1);
    const auto& last = run.at("results").back();
    EXPECT_EQ(last.at("locations").at(0).at("physicalLocation").at("artifactLocation").at("uri"),
              "file:///C:/a/100%25%20%C3%A9%23.txt");
    // FNV-1a of rule, NUL and object in lower case: services know an alert by it from run to run.
    EXPECT_EQ(last.at("ruleId"), "files-outside");
    EXPECT_EQ(last.at("partialFingerprints").begin().value(), "9131e001a10619bd");
}

TEST_F(ReviewFormats, JUnitFailsWhatReachesTheLevelAndSkipsWhatIsAccepted) {
    TakeRegistries("HKCU\n  K\\\n", "HKCU\n  K\\\n    <&\x01> = sz \"1\"\n");
    Judge("[[accept]]\nfinding = 'no-uninstall-entry'\nreason = '\"ok\"'");
    const CString xml = TextOf([&](std::ostream& s) { WriteJUnit(*m_pReview, s); });
    for (const char* const part : {
             "tests=\"26\" failures=\"4\" errors=\"0\" skipped=\"1\">",
             "name=\"no-uninstall-entry\">\n      <skipped message=\"accepted: &quot;ok&quot;\"/>",
             "name=\"user-settings-changed\">\n      <system-out>Registry: ",
             "added HKCU\\K\\&lt;&amp;&lt;U+0001&gt;&gt;",
         }) {
        EXPECT_NE(xml.find(part), CString::npos) << part << "\n" << xml;
    }
}

// Lists end after twenty entries, and what is left out is counted.
TEST_F(ReviewFormats, TheVerdictShowsTheBeginningOfItsLists) {
    CString many = "C: fixed\n  a\\\n    0\n    a\n";
    m_input.m_baseline = Take("C: fixed\n  a\\\n    0\n", "", "Before");
    for (int i = 2; i <= 20; ++i)
        many += "    b" + std::to_string(i) + "\n";
    const auto verdict = [&](const CString& disks, int gaps) {
        m_input.m_current = Take(disks, "", "After");
        m_input.m_installed = m_input.m_current;
        for (int i = 0; i < gaps; ++i)
            m_input.m_current.m_gaps.push_back({{EGapKind::kValue, "HKLM\\K", "v", 5, "access denied"}, {}, false});
        Judge("[[accept]]\nfinding = 'files-outside'\nreason = 'x'");
        return TextOf([&](std::ostream& s) { WriteVerdict(*m_pReview, s); });
    };
    const CString whole = verdict(many, 20);
    EXPECT_TRUE(
        whole.starts_with("After against Before: exit code 1\nleft-behind: 20 open changes\n    file C:\\a\\a\n"))
        << whole;
    EXPECT_NE(whole.find("\nrequirement 5, Where files and settings belong: files-outside 1 warning, 0 open\n"),
              CString::npos)
        << whole;
    EXPECT_EQ(CountOf(whole, "not read in After: value HKLM\\K: v (5, access denied)\n"), 20);
    EXPECT_EQ(CountOf(whole, " more"), 0);
    const CString cut = verdict(many + "    c\n", 22);
    EXPECT_EQ(CountOf(cut, "    file "), 20);
    EXPECT_NE(cut.find("\n    and 1 more\nnot-restored: 0 open changes\n"), CString::npos) << cut;
    EXPECT_EQ(CountOf(cut, "not read in "), 20);
    EXPECT_TRUE(cut.ends_with(")\nnot read: 2 more places\n")) << cut;
}

TEST_F(ReviewFormats, AnExportHasALineForEachNodeAndCountsThem) {
    m_input.m_baseline =
        Take("C: fixed [System]\n  a\\\n    b\\\n      x.txt  size=3\n", "HKLM\n  K\\\n    v = dword 7\n", "Snap");
    CSnapshot& snapshot = *m_input.m_baseline.m_pSnapshot;
    std::uint32_t& type = static_cast<CDelvDriveObj*>(snapshot.m_pDrives->m_subdirs.front())->m_nDriveType;
    CString text;
    for (const auto& [number, word] : {std::pair(7U, "unknown"), {6U, "ram-disk"}, {3U, "fixed"}}) {
        type = number;  // a file may hold any
        text = TextOf([&](std::ostream& s) { ExportSnapshot(snapshot, "/x/Snap.dvs", s); });
        const CString drive = CString(R"({"record":"drive","path":"C:\\","type":")") + word + R"(","volume":"System"})";
        EXPECT_EQ(CountOf(text, drive), 1) << text;
    }
    EXPECT_TRUE(text.starts_with("{\"record\":\"snapshot\",\"version\":1,\"program\":\"" DELVANE_VERSION
                                 "\",\"name\":\"Snap\",\"created\":\""));
    for (const char* const part :
         {R"({"record":"directory","path":"C:\\a\\b",)", R"({"record":"file","path":"C:\\a\\b\\x.txt","size":3,)",
          R"({"record":"key","path":"HKLM\\K"})",
          R"({"record":"value","path":"HKLM\\K","name":"v","type":"REG_DWORD","data":7})"}) {
        EXPECT_EQ(CountOf(text, part), 1) << part << "\n" << text;
    }
    EXPECT_TRUE(
        text.ends_with("{\"record\":\"end\",\"drive\":1,\"directory\":2,\"file\":1,\"key\":4,\"value\":1,"
                       "\"extension\":1}\n"))
        << text;
}

TEST_F(ReviewFormats, MarkdownStaysSmallAndKeepsNamesFromBeingMarkup) {
    CString many = "C: fixed\n  a\\\n    <b>|`x`.txt\n";
    for (int i = 0; i < 3000; ++i)
        many += "    file number " + std::to_string(i) + "\n";
    m_input.m_baseline = Take("C: fixed\n  a\\\n", "", "Before");
    m_input.m_current = Take(many, "", "After|1");
    Judge();
    const CString page = TextOf([&](std::ostream& s) { WriteMarkdown(*m_pReview, s); });
    EXPECT_LE(page.size(), 60'000U);
    EXPECT_NE(page.find("# After&#124;1 against Before"), CString::npos);
    EXPECT_NE(page.find("&#60;b&#62;&#124;&#96;x&#96;.txt"), CString::npos);
    EXPECT_NE(page.find("more are not shown here."), CString::npos);
}

}  // namespace
}  // namespace delvane
