#include "platform/hosted/registry/registry_lookup.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "platform/hosted/registry/registry_text.h"
#include "platform/text.h"

namespace delvane {
namespace {

using namespace std::string_literals;

const std::string kHeader = "WINE REGISTRY Version 2\n";
const std::string kVersionKey = "Software\\Microsoft\\Windows NT\\CurrentVersion";

TEST(RegistryLookup, ValuesAreFoundByTypeWithoutRegardToCase) {
    const CRegistryLookup lookup(kHeader + R"(
[Software\\Microsoft\\windows nt\\CurrentVersion] 1
@="unnamed"
"CSDVersion"="Service Pack 1\0ignored"
"CurrentMajorVersionNumber"=dword:0000000a
"Empty"=""
"Hex"=hex(1):36,00,2e,00
"List"=str(7):"a\0b\0"
"Short"=hex(4):01
"SystemRoot"=str(2):"%SystemDrive%\\windows"
"\xc4rger"="ja"
)",
                                 {kVersionKey, "Software\\Absent"});
    const auto text = [&lookup](std::string_view name) { return lookup.FindText(kVersionKey, name).value_or("-"); };
    EXPECT_EQ(text(""), "unnamed");
    EXPECT_EQ(text("csdversion"), "Service Pack 1");
    EXPECT_EQ(text("SYSTEMROOT"), "%SystemDrive%\\windows");
    EXPECT_EQ(text("Empty"), "");
    EXPECT_EQ(text("Hex"), "6.");
    EXPECT_EQ(text("\u00e4rger"), "ja");
    EXPECT_EQ(text("List"), "-") << "no text";
    EXPECT_EQ(text("CurrentMajorVersionNumber"), "-") << "no text";
    EXPECT_EQ(text("Absent"), "-");
    EXPECT_EQ(lookup.FindNumber("SOFTWARE\\Microsoft\\Windows NT\\CURRENTVERSION", "currentmajorversionnumber"), 10U);
    EXPECT_FALSE(lookup.FindNumber(kVersionKey, "Short"));
    EXPECT_FALSE(lookup.FindNumber(kVersionKey, "Empty"));
    EXPECT_EQ(lookup.GetValues(kVersionKey).size(), 9U);
    EXPECT_EQ(lookup.GetValues(kVersionKey)[5].m_data, "a\0b\0\0"s);
    EXPECT_TRUE(lookup.GetValues("Software\\Absent").empty());
    EXPECT_FALSE(lookup.FindText("Software\\Absent", ""));
    EXPECT_EQ(lookup.GetProblem(), "");
}

// Key lines are told apart before they are decoded; the outcome must be that of decoding every one.
TEST(RegistryLookup, KeysAreThoseThatAFullReadingFinds) {
    const std::vector<std::string> lines = {
        "[Software\\\\Key]",
        "[Software\\\\Kex]",
        "[Software\\\\keY\\\\]",
        "[Software\\\\Key\\\\Sub]",
        "[Softwarex\\\\Key]",
        "[oftware\\\\Key]",
        "[Software\\\\\\\\Key\\\\A]",
        "[Software\\\\a\\[1\\]]",
        "[Software\\\\A[1]",
        "[Software\\\\\\xc9t\\xe9]",
        "[Software\\\\K\\xe9y]",
        "[Software\\\\\\x4bey\\\\x]",
        "[Software\\\\Key\\\\B] 12]",
        "  [Software\\\\Key\\\\C]",
        "[Software\\\\key\\\\D]\r",
        "[]",
        "[Software\\\\\u00c9x]",
        "[Software\\Key\\\\E]",
        "[Software\\\\+ey]",
        "[Software\\\\\x0b"
        "ey]",
    };
    std::string text = kHeader;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        text += lines[i] + "\n\"x\"=\"[Software\\\\Key]\"\n\"number\"=hex(3):00,\\\n  01\n\"line\"=\"" +
                std::to_string(i) + "\"\n\n";
    }
    std::map<std::string, std::string> all;  // path and its "line"
    CRegistryText reader(text);
    for (CRegistryText::CKey key; reader.NextKey(key);) {
        const std::string path(key.m_path);
        for (CRegistryText::CValue value; reader.NextValue(value);) {
            if (value.m_name == "line") all[path] = value.m_data.substr(0, value.m_data.size() - 1);
        }
    }
    ASSERT_EQ(all.size(), lines.size());

    for (const auto& [path, line] : all) {
        SCOPED_TRACE(path);
        const CRegistryLookup lookup(text, {"Software\\Nobody", path});
        // Two names that differ in case alone are one key, and its last value counts.
        const std::string expected = path == "Software\\Key" ? all["Software\\keY"] : line;
        EXPECT_EQ(lookup.FindText(path, "line").value_or("-"), expected);
        const std::string lower = MakeLower(path);
        EXPECT_EQ(CRegistryLookup(text, {lower}).FindText(lower, "line").value_or("-"), expected);
    }
}

TEST(RegistryLookup, LinksAreToldWithTheRestOfThePath) {
    // \Registry\Machine\A and \Registry\User\S-1\B
    const std::string text = kHeader + R"(
[System\\CurrentControlSet] 1
#link
"SymbolicLinkValue"=hex(6):5c,00,52,00,65,00,67,00,69,00,73,00,74,00,72,00,79,\
  00,5c,00,4d,00,61,00,63,00,68,00,69,00,6e,00,65,00,5c,00,41,00

[System\\Plain] 1
"SymbolicLinkValue"=hex(6):5c,00

[System\\User] 1
#link
"SymbolicLinkValue"=hex(6):5c,00,52,00,65,00,67,00,69,00,73,00,74,00,72,00,79,\
  00,5c,00,55,00,73,00,65,00,72,00,5c,00,53,00,2d,00,31,00,5c,00,42,00
)";
    const std::string name = "System\\currentcontrolset\\Control\\ComputerName";
    const CRegistryLookup lookup(text, {name, "System\\User", "System\\Plain\\Sub", "Software"});
    EXPECT_EQ(lookup.FindLink(name), "\\Registry\\Machine\\A\\Control\\ComputerName");
    EXPECT_EQ(lookup.FindLink("System\\User"), "\\Registry\\User\\S-1\\B");
    EXPECT_EQ(lookup.FindLink("System\\Plain\\Sub"), std::nullopt) << "an ordinary key with a value of that name";
    EXPECT_EQ(lookup.FindLink("Software"), std::nullopt);
    EXPECT_TRUE(lookup.GetValues("System\\User").empty());
}

TEST(RegistryLookup, DamageIsPassedOn) {
    struct {
        std::string m_text;
        std::string_view m_problem;
        bool m_bCut;
        std::string_view m_found;
    } const cases[] = {
        {"REGEDIT4\n[Key]\n\"a\"=\"1\"\n", "line 1: the file does not begin with \"WINE REGISTRY Version 2\"", false,
         "-"},
        {kHeader + "[Key] 1\n\"a\"=\"1\"\n[Other] 1\n\"b\"=\"no end", "line 5: the last line has no end", true, "1"},
        {kHeader + "[Key] 1\n\"a\"=\"1\"\n[Other] 1\n\"b\"=hex:01,\\\n", "line 5: the text ends inside a value", true,
         "1"},
        {kHeader + "[Key] 1\n\"b\"=\"2\n\"a\"=\"1\"\n", "line 3: a value without a closing quotation mark", false, "1"},
        {kHeader + "[Key\n\"a\"=\"1\"\n", "line 2: a key without a closing bracket", false, "-"},
        {kHeader + "[Key] 1\n\"a\"=\"1\"\n[Key] 2\n\"a\"=\"2\"\n", "", false, "2"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.m_text);
        const CRegistryLookup lookup(test.m_text, {"Key"});
        EXPECT_EQ(lookup.GetProblem(), test.m_problem);
        EXPECT_EQ(lookup.IsCut(), test.m_bCut);
        EXPECT_EQ(lookup.FindText("Key", "a").value_or("-"), test.m_found);
    }
}

}  // namespace
}  // namespace delvane
