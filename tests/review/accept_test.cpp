// Reviewed lists: what a pattern fits, which entry gives the reason, and what is refused.
#include "review/accept.h"

#include <gtest/gtest.h>

#include "review/change_list.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::uint64_t kToday = 13'440'000'000 * kTicksPerSecond;  // 2026-11-24

bool Fits(const CString& pattern, std::string_view path) {
    CAcceptList list;
    list.Read("list.toml", "[[accept]]\npath = '" + pattern + "'\nreason = 'x'", kToday);
    CChange change;
    change.m_path = path;
    return list.Find(change) != nullptr;
}

TEST(Accept, APatternFitsByLevels) {
    const struct {
        const char* m_pattern;
        const char* m_path;
        bool m_bFits;
    } kCases[] = {
        {"C:\\x", "c:\\X", true},
        {"C:\\x", "C:\\x\\y", false},
        {"C:\\x\\", "C:\\x", true},
        {"C:\\*\\y", "C:\\a\\y", true},
        {"C:\\*\\y", "C:\\a\\b\\y", false},
        {"C:\\x\\**", "C:\\x", true},
        {"C:\\x\\**", "C:\\x\\a\\b", true},
        {"C:\\x\\**", "C:\\xy", false},
        {"C:\\**\\y", "C:\\y", true},
        {"C:\\**\\y", "C:\\a\\b\\y", true},
        {"**", "C:\\a\\b", true},
        {"**\\b\\**\\d", "C:\\b\\b\\c\\d", true},
        {"**.tmp", "C:\\a\\b.tmp", true},
        {"C:\\a**z", "C:\\abc\\d\\xyz", true},
        {"C:\\a**z", "C:\\abcz", true},
        {"C:\\a**z", "C:\\abc\\d\\xy", false},
        {"C:\\?.txt", "C:\\\xC3\xA9.txt", true},
        {"C:\\?.txt", "C:\\\xFF.txt", true},
        {"C:\\?.txt", "C:\\ab.txt", false},
        {"C:\\*??", "C:\\\xC3\xA9", false},
        {"C:\\[*]", "C:\\*", true},
        {"C:\\[*]", "C:\\a", false},
        {"C:\\a[1].txt", "C:\\A[1].txt", true},
        {"C:\\[[]*]", "C:\\[a]", true},
        {"C:\\\xC3\x89t\xC3\xA9", "C:\\\xC3\xA9T\xC3\x89", true},
        {"C:\\*a*b*a", "C:\\xaabba", true},
        {"C:\\*a*b*a", "C:\\xaabb", false},
    };
    for (const auto& [pattern, path, fits] : kCases)
        EXPECT_EQ(Fits(pattern, path), fits) << pattern << " on " << path;
}

TEST(Accept, TheFirstEntryThatFitsGivesTheReasonAndAllThatFitAreNoted) {
    CAcceptList list;
    list.Read("a.toml", R"(
        [[accept]]
        path = 'HKLM\**'
        name = 'Inst*'
        change = ["changed"]
        reason = "by name"
        [[accept]]
        path = 'HKLM\Soft*\X'
        kind = "value"
        reason = "by key"
        [[accept]]
        path = '**'
        until = 2026-11-23
        reason = "expired")",
              kToday);
    list.Read("b.toml",
              "[[accept]]\npath = '**'\nuntil = 2026-11-24\nreason = 'last day'\n"
              "[[accept]]\nfinding = 'files-outside'\nreason = 'rule'",
              kToday);
    CChange change;
    const auto reasonOf = [&](EKind kind, EChange what, std::string_view path, std::string_view name) {
        change.m_kind = kind;
        change.m_change = what;
        change.m_path = path;
        change.m_name = name;
        const CAcceptEntry* const entry = list.Find(change);
        return entry == nullptr ? CString() : entry->m_strReason;
    };
    EXPECT_EQ(reasonOf(EKind::kValue, EChange::kAdded, "HKLM\\Software\\X", "InstallTime"), "by key");
    EXPECT_FALSE(list.GetEntries()[0].m_bFits) << "it asks for changed values";
    EXPECT_EQ(reasonOf(EKind::kValue, EChange::kChanged, "HKLM\\Software\\X", "installTime"), "by name");
    EXPECT_EQ(reasonOf(EKind::kKey, EChange::kChanged, "HKLM\\Software\\X", {}), "last day") << "a key has no name";
    EXPECT_EQ(reasonOf(EKind::kValue, EChange::kChanged, "HKLM", "Inst\\all"), "by name") << "a name is one level";
    EXPECT_TRUE(list.GetEntries()[2].m_bExpired);
    EXPECT_TRUE(list.GetEntries()[3].m_bFits);
    EXPECT_EQ(list.Find(*FindRule("bad-extensions")), nullptr);
    EXPECT_EQ(list.Find(*FindRule("files-outside"))->GetPlace(), "b.toml:5: files-outside");
}

TEST(Accept, FaultsAreToldWithLineAndColumn) {
    const struct {
        const char* m_text;
        const char* m_message;
    } kCases[] = {
        {"[[accept]\n", "l:1:10: "},
        {"[accept]\npath = 'x'\nreason = 'y'", "l:1:2: accept is a list"},
        {"[[accept]]\npath = 'x'", "l:1:1: an entry needs a reason"},
        {"[[accept]]\npath = 'x'\nreason = ' '", "l:3:10: reason is empty"},
        {"[[accept]]\nreason = 'y'", "l:1:1: an entry needs a path or a finding"},
        {"[[accept]]\npath = 'x'\nfinding = 'files-outside'\nreason = 'y'", "l:1:1: an entry has a path or a finding"},
        {"[[accept]]\nfinding = 'nope'\nreason = 'y'", "l:2:11: unknown rule \"nope\""},
        {"[[accept]]\npath = 'x'\nkind = ['file', 'dir']\nreason = 'y'",
         "l:3:17: kind is a list of these words: file,"},
        {"[[accept]]\npath = 'x'\nchange = []\nreason = 'y'", "l:3:10: change is a list of"},
        {"[[accept]]\npath = 'x'\nuntil = '2027-01-01'\nreason = 'y'", "l:3:9: until is a date"},
        {"[[accept]]\npath = 'x'\nuntil = 2027-02-30\nreason = 'y'", "l:3:"},
        {"[[accept]]\npath = 'x'\nnmae = 'z'\nreason = 'y'", "l:3:1: unknown key \"nmae\""},
        {"[[accept]]\nfinding = 'files-outside'\nname = 'z'\nreason = 'y'", "l:3:8: name goes with a path"},
        {"[[accept]]\npath = 'a**b**c**d**e**f**g**h'\nreason = 'y'", "l:1:1: path holds too many **"},
        {"title = 'x'", "l:1:1: unknown key \"title\""},
    };
    for (const auto& [text, message] : kCases) {
        CAcceptList list;
        try {
            list.Read("l", text, kToday);
            ADD_FAILURE() << text;
        } catch (const CAcceptError& error) {
            EXPECT_EQ(CString(error.what()).substr(0, CString(message).size()), message);
        }
    }
}

}  // namespace
}  // namespace delvane
