// The registry of a hosted machine through its calls: hives laid together, mounts, links, handles.
#include <array>
#include <gtest/gtest.h>

#include "platform/hosted/registry/regf_hive.h"
#include "platform/hosted/registry/registry.h"
#include "platform/hosted/registry/text_hive.h"
#include "samples/regf_writer.h"
#include "tests/support/hive_lines.h"
#include "tests/support/key_view.h"

namespace delvane {
namespace {

using Lines = std::vector<std::string>;

class HostedRegistry : public testing::Test {
protected:
    CHostedRegistry::CPlace Add(const std::string& text) {
        return m_registry.AddHive(std::make_unique<CTextHive>(BytesOf("WINE REGISTRY Version 2\n" + text), "TEXT"));
    }
    // A link in registry text.
    static std::string Link(const std::string& key, const std::string& target) {
        std::string line = "[" + key + "] 1\n#link\n\"SymbolicLinkValue\"=hex(6):";
        for (const char c : target) {
            std::array<char, 8> hex{};
            std::snprintf(hex.data(), hex.size(), "%02x,00,", static_cast<unsigned>(c));
            line += hex.data();
        }
        return line.substr(0, line.size() - 1) + "\n";
    }
    // What the calls show below a key. Keys that cannot be opened have the error behind them. Each value is asked for
    // by its name as well.
    void Walk(HKEY key, const std::string& path, Lines& lines) {
        const CKeyView view = ViewKey(m_registry, key);
        for (const auto& [name, value] : view.m_values) {
            CRoom none;
            EXPECT_EQ(m_registry.RegQueryValueEx(key, name, nullptr, none), ERROR_SUCCESS);
            EXPECT_EQ(none.m_nSize, value.second.size());
            lines.push_back(path + ": " + name + "=" + value.second.c_str());
        }
        for (const CString& name : view.m_subkeys) {
            HKEY below = 0;
            const std::uint32_t opened = m_registry.RegOpenKeyEx(key, name, below);
            lines.push_back(path + "\\" + name + (opened == ERROR_SUCCESS ? "" : " !" + std::to_string(opened)));
            if (opened != ERROR_SUCCESS) continue;
            Walk(below, path + "\\" + name, lines);
            m_registry.RegCloseKey(below);
        }
    }
    Lines WalkRoot(HKEY root) {
        m_registry.BeginWalk();
        Lines lines;
        Walk(root, "", lines);
        EXPECT_EQ(m_registry.GetOpenCount(), 0U);
        return lines;
    }

    CHostedRegistry m_registry;
};

TEST_F(HostedRegistry, ShowsItsRootsAndNothingElse) {
    m_registry.SetRoot(HKEY_LOCAL_MACHINE, {Add("[A] 1\n\"v\"=\"1\"\n[A\\\\B] 1\n"), {}});
    EXPECT_EQ(WalkRoot(HKEY_LOCAL_MACHINE), (Lines{"\\A", "\\A: v=1", "\\A\\B"}));
    EXPECT_EQ(WalkRoot(HKEY_CURRENT_USER), Lines{}) << "a predefined key without a root is an empty one";
    HKEY key = 0;
    EXPECT_EQ(m_registry.RegOpenKeyEx(HKEY_LOCAL_MACHINE, "a", key), ERROR_SUCCESS) << "without regard to case";
    CRoom none;
    EXPECT_EQ(m_registry.RegQueryValueEx(key, "V", nullptr, none), ERROR_SUCCESS);
    EXPECT_EQ(none.m_nSize, 2U);
    std::array<char, 2> bytes{};
    CRoom small{bytes.data(), 1};
    EXPECT_EQ(m_registry.RegQueryValueEx(key, "v", nullptr, small), ERROR_MORE_DATA);
    EXPECT_EQ(small.m_nSize, 2U);
    CRoom name{bytes.data(), 1};
    std::uint32_t type = 0;
    CRoom data{bytes.data(), 2};
    EXPECT_EQ(m_registry.RegEnumValue(key, 0, name, type, data), ERROR_MORE_DATA) << "no room for the NUL";
    EXPECT_EQ(m_registry.RegQueryValueEx(key, "w", nullptr, none), ERROR_FILE_NOT_FOUND);
    HKEY other = 0;
    EXPECT_EQ(m_registry.RegOpenKeyEx(key, "C", other), ERROR_FILE_NOT_FOUND);
    m_registry.RegCloseKey(key);
    CKeyInfo info;
    EXPECT_EQ(m_registry.RegQueryInfoKey(key, info), ERROR_INVALID_HANDLE);
    EXPECT_EQ(m_registry.RegQueryInfoKey(0, info), ERROR_INVALID_HANDLE);
}

TEST_F(HostedRegistry, TwoLayersShowAsOne) {
    const auto first = Add("[.a] 1\n@=\"user\"\n[Type\\\\shell] 1\n\"X\"=\"1\"\n");
    const auto second =
        Add("[.A] 1\n@=\"machine\"\n\"more\"=\"2\"\n[.b] 1\n[type\\\\Icon] 1\n[type\\\\SHELL] "
            "1\n\"x\"=\"2\"\n[type\\\\SHELL\\\\open] 1\n");
    m_registry.SetRoot(HKEY_CLASSES_ROOT, {first, second});
    EXPECT_EQ(WalkRoot(HKEY_CLASSES_ROOT),
              (Lines{"\\.a", "\\.a: =user", "\\.a: more=2", "\\Type", "\\Type\\shell", "\\Type\\shell: X=1",
                     "\\Type\\shell\\open", "\\Type\\Icon", "\\.b"}));
    EXPECT_TRUE(m_registry.Find(HKEY_CLASSES_ROOT, "TYPE\\icon"));
}

TEST_F(HostedRegistry, MountsTakeThePlaceOfSubkeys) {
    const auto root = Add("[Software] 1\n\"hidden\"=\"1\"\n[Software\\\\Old] 1\n");
    const auto software = Add("[New] 1\n");
    m_registry.SetRoot(HKEY_LOCAL_MACHINE, {root, {}});
    m_registry.Mount(root, "SOFTWARE", software);
    m_registry.Mount(software, "More", Add("\n[X] 1\n"));
    EXPECT_EQ(WalkRoot(HKEY_LOCAL_MACHINE),
              (Lines{"\\Software", "\\Software\\New", "\\Software\\More", "\\Software\\More\\X"}));
    EXPECT_TRUE(m_registry.Find(HKEY_LOCAL_MACHINE, "software\\more\\x"));
    EXPECT_FALSE(m_registry.Find(HKEY_LOCAL_MACHINE, "Software\\Old"));
}

TEST_F(HostedRegistry, LinksLeadToTheirTargetsAndNowhereElse) {
    m_registry.SetUserSid("S-1-5-21-7");
    m_registry.SetRoot(HKEY_CURRENT_USER, {Add("[Software\\\\Classes\\\\.u] 1\n[Mine] 1\n\"m\"=\"1\"\n"), {}});
    m_registry.SetRoot(
        HKEY_LOCAL_MACHINE,
        {Add("[Real\\\\Sub] 1\n" + Link("Plain", "\\Registry\\Machine\\Real") +
             Link("Chain", "\\REGISTRY\\MACHINE\\plain\\sub") + Link("User", "\\Registry\\User\\S-1-5-21-7\\Mine") +
             Link("Classes", "\\Registry\\User\\S-1-5-21-7_Classes") +
             Link("Stranger", "\\Registry\\User\\S-1-5-21-8\\Mine") + Link("Gone", "\\Registry\\Machine\\Nowhere") +
             Link("Elsewhere", "\\Device\\X") + Link("Round", "\\Registry\\Machine\\Trip") +
             Link("Trip", "\\Registry\\Machine\\Round") + Link("Nest\\\\Up", "\\Registry\\Machine\\Nest")),
         {}});
    EXPECT_EQ(WalkRoot(HKEY_LOCAL_MACHINE),
              (Lines{"\\Real", "\\Real\\Sub", "\\Plain", "\\Plain\\Sub", "\\Chain", "\\User", "\\User: m=1",
                     "\\Classes", "\\Classes\\.u", "\\Stranger !2", "\\Gone !2", "\\Elsewhere !2", "\\Round !2",
                     "\\Trip !2", "\\Nest", "\\Nest\\Up !1921"}));
    EXPECT_TRUE(m_registry.GetProblems().empty());
}

TEST_F(HostedRegistry, LinksThatFanOutComeToAnEnd) {
    std::string text;
    for (int level = 0; level < 30; ++level) {
        for (const char* const side : {"a", "b"}) {
            text +=
                Link("L" + std::to_string(level) + "\\\\" + side, "\\Registry\\Machine\\L" + std::to_string(level + 1));
        }
    }
    m_registry.SetRoot(HKEY_LOCAL_MACHINE, {Add(text + "[L30] 1\n"), {}});
    const std::size_t count = WalkRoot(HKEY_LOCAL_MACHINE).size();
    EXPECT_GT(count, 200'000U);
    EXPECT_LT(count, 1'000'000U);
    ASSERT_EQ(m_registry.GetProblems().size(), 1U);
    EXPECT_NE(m_registry.GetProblems().front().m_strSentence.find("links lead to the same keys"), std::string::npos);
    EXPECT_EQ(WalkRoot(HKEY_LOCAL_MACHINE).size(), count) << "each walk begins anew";
    EXPECT_EQ(m_registry.GetProblems().size(), 1U) << "told once";
}

// Once what links show has more bytes than a walk may take, no link is followed any more, not even to a small key.
TEST_F(HostedRegistry, LargeKeysBehindLinksComeToAnEnd) {
    const std::string large = "[Large] 1\n\"v\"=\"" + std::string(4 << 20, 'x') + "\"\n[Small] 1\n";
    m_registry.SetRoot(HKEY_LOCAL_MACHINE, {Add(large + Link("ToLarge", "\\Registry\\Machine\\Large") +
                                                Link("ToSmall", "\\Registry\\Machine\\Small")),
                                            {}});
    HKEY key = 0;
    std::size_t opened = 0;
    for (; m_registry.RegOpenKeyEx(HKEY_LOCAL_MACHINE, "ToLarge", key) == ERROR_SUCCESS && opened < 100; ++opened)
        m_registry.RegCloseKey(key);
    EXPECT_EQ(opened, 12U) << "eight times the hive, and 16 MB";
    EXPECT_EQ(m_registry.RegOpenKeyEx(HKEY_LOCAL_MACHINE, "ToSmall", key), ERROR_CANT_RESOLVE_FILENAME);
    m_registry.BeginWalk();
    EXPECT_EQ(m_registry.RegOpenKeyEx(HKEY_LOCAL_MACHINE, "ToSmall", key), ERROR_SUCCESS);
}

TEST_F(HostedRegistry, LinksInPathsOfLinksComeToAnEnd) {
    std::string text = "[X] 1\n";
    for (int i = 0; i < 40; ++i) {
        const std::string next = "L" + std::to_string(i + 1);
        text += Link("X\\\\L" + std::to_string(i), "\\Registry\\Machine\\X\\" + next + "\\" + next);
    }
    m_registry.SetRoot(HKEY_LOCAL_MACHINE, {Add(text + Link("X\\\\L40", "\\Registry\\Machine\\X")), {}});
    EXPECT_FALSE(m_registry.Find(HKEY_LOCAL_MACHINE, "X\\L0"));
    EXPECT_TRUE(m_registry.Find(HKEY_LOCAL_MACHINE, "X\\L40"));
}

TEST_F(HostedRegistry, KeysThatLieTooDeepAreToldOnce) {
    std::string path = "k";
    for (int i = 0; i < 1100; ++i)
        path += "\\\\k";
    m_registry.SetRoot(HKEY_LOCAL_MACHINE, {Add("[" + path + "] 1\n[" + path + "2] 1\n"), {}});
    EXPECT_EQ(WalkRoot(HKEY_LOCAL_MACHINE).size(), 1001U);
    EXPECT_EQ(m_registry.GetProblems().size(), 1U);
}

TEST_F(HostedRegistry, NamesThatDifferInCaseAloneAreOpenedExactly) {
    CRegfWriter writer;
    for (const char* const name : {"KEY", "Key", "key"}) {
        writer.GetRoot().m_subkeys.push_back(std::make_unique<CRegfWriter::CKey>());
        writer.GetRoot().m_subkeys.back()->m_strName = name;
        writer.GetRoot().m_subkeys.back()->Set("is", REG_BINARY, name);
    }
    CNotice problem;
    auto hive = CRegfHive::Read(BytesOf(writer.Build()), {}, "HIVE", problem);
    m_registry.SetRoot(HKEY_LOCAL_MACHINE, {m_registry.AddHive(std::move(hive)), {}});
    EXPECT_EQ(WalkRoot(HKEY_LOCAL_MACHINE),
              (Lines{"\\KEY", "\\KEY: is=KEY", "\\Key", "\\Key: is=Key", "\\key", "\\key: is=key"}));
}

TEST_F(HostedRegistry, AParentMayBeClosedFirst) {
    m_registry.SetRoot(HKEY_LOCAL_MACHINE,
                       {Add("[A\\\\B\\\\C] 1\n" + Link("A\\\\B\\\\C\\\\Up", "\\Registry\\Machine\\A")), {}});
    HKEY a = 0;
    HKEY b = 0;
    HKEY c = 0;
    HKEY up = 0;
    ASSERT_EQ(m_registry.RegOpenKeyEx(HKEY_LOCAL_MACHINE, "A", a), ERROR_SUCCESS);
    ASSERT_EQ(m_registry.RegOpenKeyEx(a, "B", b), ERROR_SUCCESS);
    m_registry.RegCloseKey(a);
    ASSERT_EQ(m_registry.RegOpenKeyEx(b, "C", c), ERROR_SUCCESS);  // in the memory of A
    EXPECT_EQ(m_registry.RegOpenKeyEx(c, "Up", up), ERROR_SUCCESS) << "A is not open any more";
}

TEST_F(HostedRegistry, AKeyThatStandsForAnotherIsNotOpened) {
    const auto root = Add("[Perflib\\\\009] 1\n\"Counter\"=\"x\"\n");
    m_registry.SetRoot(HKEY_LOCAL_MACHINE, {root, {}});
    m_registry.SetUnopenable(m_registry.Find(HKEY_LOCAL_MACHINE, "Perflib\\009")->m_first);
    EXPECT_EQ(WalkRoot(HKEY_LOCAL_MACHINE), (Lines{"\\Perflib", "\\Perflib\\009 !6"}));
}

}  // namespace
}  // namespace delvane
