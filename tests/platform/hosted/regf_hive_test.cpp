#include "platform/hosted/registry/regf_hive.h"

#include <gtest/gtest.h>

#include "platform/hosted/registry/regf.h"
#include "samples/regf_writer.h"
#include "tests/support/hive_lines.h"
#include "tests/support/memory_source.h"
#include "tests/support/temporary_folder.h"

namespace delvane {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

std::unique_ptr<CRegfHive> Open(std::string_view bytes, const std::vector<std::string>& logs = {}) {
    std::vector<CFileBytes> logBytes;
    for (const std::string& log : logs)
        logBytes.push_back(BytesOf(log));
    CNotice problem;
    auto hive = CRegfHive::Read(BytesOf(bytes), logBytes, "HIVE", problem);
    EXPECT_EQ(hive == nullptr, !problem.m_strSentence.empty());
    return hive;
}

// Lines and then problems.
Lines ListAll(std::string_view bytes, const std::vector<std::string>& logs = {}) {
    const auto hive = Open(bytes, logs);
    if (hive == nullptr) return {"(no hive)"};
    Lines lines = ListHive(*hive);
    for (const CNotice& problem : hive->GetProblems())
        lines.push_back("! " + problem.m_strSentence);
    return lines;
}

// Where the cell of the key or value of that name begins behind its size. Names are stored as they are.
std::size_t CellOf(const std::string& bytes, const std::string& kind, const std::string& name) {
    const std::size_t before = kind == "nk" ? 76 : 20;
    for (std::size_t at = bytes.find(name); at != std::string::npos; at = bytes.find(name, at + 1)) {
        if (at >= before && bytes.compare(at - before, 2, kind) == 0) return at - before;
    }
    ADD_FAILURE() << "no " << kind << " " << name;
    return 4100;
}
std::uint32_t NumberAt(const std::string& bytes, std::size_t at) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.data() + at, 4);
    return number;
}

std::string U32Bytes(std::uint64_t number, std::size_t size = 4) {
    std::string bytes(size, '\0');
    std::memcpy(bytes.data(), &number, size);
    return bytes;
}
// A small hive: \Apps\{Alpha,Beta}, two values each.
CRegfWriter MakeSmall() {
    CRegfWriter writer;
    writer.GetRoot().m_strName = "ROOT";
    for (const char* const name : {"Alpha", "Beta"}) {
        CRegfWriter::CKey& key = writer.GetRoot().Make("Apps\\"s + name);
        key.Set("First", REG_BINARY, "123456");
        key.Set("Second", REG_DWORD, "\1\2\3\4");
    }
    return writer;
}
const Lines kSmall = {"Apps",
                      "Apps\\Alpha",
                      "Apps\\Alpha: First (3) 123456",
                      "Apps\\Alpha: Second (4) \1\2\3\4",
                      "Apps\\Beta",
                      "Apps\\Beta: First (3) 123456",
                      "Apps\\Beta: Second (4) \1\2\3\4"};
Lines With(Lines lines, std::initializer_list<std::string> more) {
    lines.insert(lines.end(), more);
    return lines;
}
Lines Without(Lines lines, std::string_view part) {
    std::erase_if(lines, [&](const std::string& line) { return line.find(part) != std::string::npos; });
    return lines;
}

TEST(RegfHive, EveryVersionAndKindOfListSaysTheSame) {
    CRegfWriter writer;
    Lines expected;
    CRegfWriter::CKey& values = writer.GetRoot().Make("Values");
    expected.emplace_back("Values");
    for (std::size_t size = 0; size <= 6; ++size) {
        values.Set("v" + std::to_string(size), REG_BINARY, std::string(size, 'x'));
        expected.push_back("Values: v" + std::to_string(size) + " (3) " + std::string(size, 'x'));
    }
    values.Set("", 0x1234'5678, "odd type");
    values.Set("large", REG_BINARY, std::string(16344, 'l') + 'L');
    values.Set("larger", REG_BINARY, std::string(16344 * 2 + 9, 'l') + 'R');
    values.Set("whole", REG_BINARY, std::string(16343, 'l') + 'W');
    expected.insert(expected.end(),
                    {"Values:  (305419896) odd type", "Values: large (3) 16345 bytes, last L",
                     "Values: larger (3) 32698 bytes, last R", "Values: whole (3) 16344 bytes, last W"});
    for (const char c : "abcdefg"s) {
        writer.GetRoot().Make("Values\\"s + c + "\\below");
        expected.push_back("Values\\"s + c);
        expected.push_back("Values\\"s + c + "\\below");
    }
    for (const std::uint32_t version : {0U, 1U, 2U, 3U, 4U, 5U, 6U}) {
        for (const char* const kind : {"li", "lf", "lh"}) {
            for (const std::size_t largest : {2U, 507U}) {
                writer.m_nMinorVersion = version;
                writer.m_strListKind = kind;
                writer.m_nLargestList = largest;
                EXPECT_EQ(ListAll(writer.Build()), expected) << version << " " << kind << " " << largest;
            }
        }
    }
}

TEST(RegfHive, NamesThatDifferStayApart) {
    CRegfWriter writer;
    writer.GetRoot().Make("A");
    const Lines names = {"a", "a\0b"s, "caf\u00E9", "\u65E5\u672C", "\U0001F600", "\xED\xA0\xBD", "\xED\xB8\x80"};
    for (const std::string& name : names) {
        writer.GetRoot().m_subkeys.push_back(std::make_unique<CRegfWriter::CKey>());
        writer.GetRoot().m_subkeys.back()->m_strName = name;
        writer.GetRoot().Set(name, REG_SZ, ToUtf16(name + '\0'));
    }
    const auto hive = Open(writer.Build());
    ASSERT_NE(hive, nullptr);
    CKeyContents contents;
    ASSERT_TRUE(hive->ReadKey(hive->GetRoot(), contents));
    ASSERT_EQ(contents.m_values.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(contents.Get(contents.m_values[i].m_name), names[i]);
        EXPECT_EQ(contents.Get(contents.m_values[i].m_data), names[i] + '\0');
        const auto key = hive->FindSubkey(hive->GetRoot(), names[i]);
        ASSERT_TRUE(key) << names[i];
        for (const CKeyContents::CSubkey& subkey : contents.m_subkeys)
            EXPECT_EQ(subkey.m_nKey == *key, contents.Get(subkey.m_name) == names[i]);
    }
    EXPECT_TRUE(hive->FindSubkey(hive->GetRoot(), "CAF\u00C9")) << "without regard to case";
    EXPECT_FALSE(hive->FindSubkey(hive->GetRoot(), "a\0c"s));
}

TEST(RegfHive, LooksUpAmongManyKeys) {
    CRegfWriter writer;
    for (int i = 0; i < 2000; ++i)
        writer.GetRoot().Make("Key" + std::to_string(i) + "\\Sub");
    const auto hive = Open(writer.Build());
    ASSERT_NE(hive, nullptr);
    // Long enough for the index to come, and each once more with it.
    for (int i = 0; i < 4000; ++i) {
        const auto key = hive->FindSubkey(hive->GetRoot(), "kEY" + std::to_string(i % 2000));
        ASSERT_TRUE(key) << i;
        EXPECT_TRUE(hive->FindSubkey(*key, "sub"));
        EXPECT_FALSE(hive->FindSubkey(*key, "Key1"));
    }
}

TEST(RegfHive, TextLosesAnOddByteAndNothingElse) {
    CRegfWriter writer;
    writer.GetRoot().Set("sz", REG_SZ, ToUtf16("\u00FCber\0more"s) + "x");
    writer.GetRoot().Set("expand", REG_EXPAND_SZ, ToUtf16("%A%"));
    writer.GetRoot().Set("multi", REG_MULTI_SZ, ToUtf16("a\0b\0\0"s));
    writer.GetRoot().Set("link", REG_LINK, ToUtf16("ab"));
    writer.GetRoot().Set("short", REG_SZ, "x");
    EXPECT_EQ(ListAll(writer.Build()), (Lines{": sz (1) \u00FCber~more", ": expand (2) %A%", ": multi (7) a~b~~",
                                              ": link (6) a~b~", ": short (1) "}));
}

TEST(RegfHive, LinksAndPredefinedKeysAreTold) {
    CRegfWriter writer = MakeSmall();
    CRegfWriter::CKey& link = writer.GetRoot().Make("Link");
    link.m_nFlags = 0x10;
    link.Set("SymbolicLinkValue", REG_LINK, ToUtf16("\\Registry\\Machine\\Software"));
    CRegfWriter::CKey& lost = writer.GetRoot().Make("Lost");
    lost.m_nFlags = 0x10;
    lost.Set("SymbolicLinkValue", REG_SZ, ToUtf16("\\Registry\\Machine\\Software"));
    writer.GetRoot().Make("Performance").m_nFlags = 0x40;
    const auto hive = Open(writer.Build());
    ASSERT_NE(hive, nullptr);
    const auto linkOf = [&](const char* name) { return hive->GetLink(hive->FindSubkey(0, name).value()); };
    EXPECT_EQ(linkOf("Link"), "\\Registry\\Machine\\Software");
    EXPECT_EQ(linkOf("Lost"), "");
    EXPECT_EQ(linkOf("Apps"), std::nullopt);
    CKeyContents contents;
    EXPECT_FALSE(hive->ReadKey(hive->FindSubkey(0, "Performance").value(), contents));
    EXPECT_TRUE(hive->GetProblems().empty());
}

TEST(RegfHive, DamageCostsWhatItHits) {
    const std::string whole = MakeSmall().Build();
    EXPECT_EQ(ListAll(whole), kSmall);
    const std::size_t alpha = CellOf(whole, "nk", "Alpha");
    const std::size_t beta = CellOf(whole, "nk", "Beta");
    const std::size_t apps = CellOf(whole, "nk", "Apps");
    const std::size_t second = CellOf(whole, "vk", "Second");
    const std::size_t appsList = 4096 + NumberAt(whole, apps + 28) + 4;
    const std::string keyNotice = "! HIVE is damaged: what cannot be read is left out, first a subkey of \\Apps";
    const std::string valueNotice =
        "! HIVE is damaged: what cannot be read is left out, first a value of \\Apps\\Alpha";
    const Lines noAlpha = With(Without(kSmall, "Alpha"), {keyNotice});
    const Lines noSecond = With(
        [] {
            Lines lines = kSmall;
            lines.erase(lines.begin() + 3);
            return lines;
        }(),
        {valueNotice});
    const struct {
        const char* m_what;
        std::size_t m_nAt;
        std::uint32_t m_nNumber;
        std::size_t m_nSize;
        Lines m_expected;
    } kCases[] = {
        {"a key without its letters", alpha, 0, 2, noAlpha},
        {"a name longer than its cell", alpha + 72, 0x4000, 2, noAlpha},
        {"a cell that is not in use", alpha - 4, 0x60, 4, noAlpha},
        {"a cell longer than the file", alpha - 4, 0x8000'0000, 4, noAlpha},
        {"an entry that leads out of the file", appsList + 4, 0xFFFF'FFF0, 4, noAlpha},
        {"an entry that leads back", appsList + 4, static_cast<std::uint32_t>(apps - 4100), 4, noAlpha},
        {"one key listed twice", appsList + 4, static_cast<std::uint32_t>(beta - 4100), 4,
         With(Without(kSmall, "Alpha"), {keyNotice})},
        {"a list of no kind", appsList, 0x7878, 2, With({"Apps"}, {keyNotice})},
        {"a list that lists itself", appsList, 0x6972, 2, {}},
        {"a value without its letters", second, 0, 2, noSecond},
        {"a value with a name too long", second + 2, 0xFFFF, 2, noSecond},
        {"resident data of five bytes", second + 4, 0x8000'0005, 4, noSecond},
        {"data that are nowhere", second + 4, 100, 4, noSecond},
        {"data larger than their cell", CellOf(whole, "vk", "First") + 4, 0x7FFF'FFFF, 4,
         With(Without(kSmall, "Alpha: First"), {valueNotice})},
        {"more values than the list has", alpha + 36, 0x7FFF'FFFF, 4, With(kSmall, {valueNotice})},
        {"a list of values that is nowhere", alpha + 40, 0x7000'0000, 4,
         With(Without(kSmall, "Alpha:"), {valueNotice})},
        {"fewer subkeys than the key tells", apps + 20, 3, 4, With(kSmall, {keyNotice})},
        {"cells behind the end of the hive", 40, static_cast<std::uint32_t>(apps - 4096), 4, {}},
        {"no root", 36, 0x7000'0000, 4, {"(no hive)"}},
        {"another file", 0, 0, 4, {"(no hive)"}},
    };
    for (const auto& test : kCases) {
        std::string bytes = whole;
        Patch(bytes, test.m_nAt, test.m_nNumber, test.m_nSize);
        if (test.m_nAt >= 4 && test.m_nAt < 512) SetChecksum(bytes);
        const Lines lines = ListAll(bytes);
        if (!test.m_expected.empty()) {
            EXPECT_EQ(lines, test.m_expected) << test.m_what;
        }
        EXPECT_NE(lines, kSmall) << test.m_what << " is told";
    }
    for (std::size_t size = 0; size < whole.size(); size += 97)
        ListAll(whole.substr(0, size));  // never behind the end, as the sanitizer sees
}

// Each row is a hive that takes long, or much memory, where it is believed.
TEST(RegfHive, WhatIsClaimedTwiceIsReadOnce) {
    CRegfWriter writer = MakeSmall();
    writer.GetRoot().Set("Lists", REG_BINARY, std::string(64'000, 'x'));
    writer.GetRoot().Set("Large", REG_BINARY, std::string(40'000, 'x'));
    writer.m_nMinorVersion = 3;
    std::string lists = writer.Build();
    // A list at each eighth byte, of 65,535 subkeys, all lists in one list.
    const std::size_t field = lists.find(std::string(64'000, 'x'));
    const std::size_t first = (field - 4096 + 7) / 8 * 8;
    std::string pattern;
    for (int i = 0; i < 7000; ++i)
        pattern +=
            "\x00\x00\xff\xff"
            "li\xff\xff"s;
    lists.replace(4096 + first, pattern.size(), pattern);
    const std::size_t outer = first + 32'000;
    std::string outerList = U32Bytes(0 - std::uint32_t{20'000}) + "ri" + U32Bytes(4'900, 2);
    for (std::uint32_t i = 0; i < 4'900; ++i)
        outerList += U32Bytes(static_cast<std::uint32_t>(first) + i * 8 % 24'000);
    lists.replace(4096 + outer, outerList.size(), outerList);
    Patch(lists, CellOf(lists, "nk", "Apps") + 28, static_cast<std::uint32_t>(outer), 4);
    EXPECT_EQ(ListAll(lists).back(), "! HIVE is damaged: what cannot be read is left out, first a subkey of \\Apps");

    writer.m_nMinorVersion = 5;
    std::string segments = writer.Build();
    const std::size_t value = CellOf(segments, "vk", "Large");
    const std::size_t db = 4100 + NumberAt(segments, value + 8);
    ASSERT_EQ(segments.substr(db, 2), "db");
    Patch(segments, value + 4, 0x3FFF'0000, 4);  // a thousand segments, one and the same cell
    Patch(segments, db + 2, 0xFFFF, 2);
    Patch(segments, db + 4, NumberAt(segments, CellOf(segments, "vk", "Lists") + 8), 4);
    for (const std::string& line : ListAll(segments))
        EXPECT_EQ(line.find("Large"), std::string::npos) << line;
}

TEST(RegfHive, ValuesThatShareTheirDataDoNotFillTheMemory) {
    CRegfWriter writer;
    CRegfWriter::CKey& key = writer.GetRoot().Make("Bomb");
    key.Set("large", REG_BINARY, std::string(16000, 'x'));
    for (int i = 0; i < 5000; ++i)
        key.m_values.push_back({"n" + std::to_string(i), REG_DWORD, "1234"});
    writer.GetRoot().Make("Sound").Set("value", REG_BINARY, "kept");
    std::string bytes = writer.Build();
    const std::size_t list = 4100 + NumberAt(bytes, CellOf(bytes, "nk", "Bomb") + 40);
    for (std::size_t i = 1; i <= 5000; ++i)
        Patch(bytes, list + 4 * i, NumberAt(bytes, list), 4);
    const auto hive = Open(bytes);
    ASSERT_NE(hive, nullptr);
    CKeyContents contents;
    ASSERT_TRUE(hive->ReadKey(hive->FindSubkey(0, "Bomb").value(), contents));
    EXPECT_TRUE(contents.m_values.empty());
    EXPECT_LT(contents.m_bytes.size(), 5 * bytes.size());
    EXPECT_EQ(hive->GetProblems().size(), 1U);
    contents.Clear();
    ASSERT_TRUE(hive->ReadKey(hive->FindSubkey(0, "Sound").value(), contents));
    EXPECT_EQ(contents.m_values.size(), 1U);
}

// Logs.

// A log of the newer form; an entry holds pages, each the place in the hive's cells and the bytes.
struct CLogEntry {
    std::uint32_t m_nSequence = 0;
    std::vector<std::pair<std::uint32_t, std::string>> m_pages;
};
std::string MakeLog(const std::string& hive, const std::vector<CLogEntry>& entries) {
    std::string log = hive.substr(0, 512);
    Patch(log, 28, 6, 4);
    SetChecksum(log);
    for (const CLogEntry& entry : entries) {
        std::string list;
        std::string pages;
        for (const auto& [at, bytes] : entry.m_pages) {
            list += U32Bytes(at) + U32Bytes(bytes.size());
            pages += bytes;
        }
        std::string head = "HvLE" + U32Bytes(40 + list.size() + pages.size()) + U32Bytes(0) +
                           U32Bytes(entry.m_nSequence) + hive.substr(40, 4) + U32Bytes(entry.m_pages.size());
        head += U32Bytes(HashOfLog(list + pages), 8);
        log += head + U32Bytes(HashOfLog(head), 8) + list + pages;
    }
    return log;
}

// The hive of MakeSmall, marked as one whose changes since sequence number 8 are in its logs.
std::string MakeDirty() {
    CRegfWriter writer = MakeSmall();
    writer.m_nSequence1 = 9;
    writer.m_nSequence2 = 8;
    return writer.Build();
}
const std::string kUnfinished = "! HIVE was not written to its end, and no log beside it completes it";

// An entry that turns the data of Alpha's First, "123456", into those.
CLogEntry ChangeFirst(const std::string& hive, std::uint32_t sequence, const std::string& data) {
    const std::size_t page = hive.find("123456") / 512 * 512;
    std::string bytes = hive.substr(page, 512);
    bytes.replace(hive.find("123456") - page, data.size(), data);
    return {sequence, {{static_cast<std::uint32_t>(page - 4096), bytes}}};
}
std::string FirstOf(const Lines& lines) { return lines.size() > 2 ? lines[2].substr(lines[2].size() - 6) : ""; }

TEST(RegfHive, TheHashOfLogsIsThatOfWindows) {
    // The head of an entry of a log of Windows 10, and the hash that stands behind it.
    const std::string head =
        "HvLE\x00\xae\x03\x00\x00\x00\x00\x00\x36\x02\x00\x00\x00\xe0\x0b\x00\x18\x00\x00\x00"
        "\xcd\xc9\x8b\x95\xd9\xa7\x67\x75"s;
    ASSERT_EQ(head.size(), 32U);
    EXPECT_EQ(HashOfLog(head), 0x3a77'21d2'8025'3d1cU);
}

TEST(RegfHive, LogsAreReplayedInTheirOrder) {
    const std::string hive = MakeDirty();
    const auto log = [&](std::vector<CLogEntry> entries) { return MakeLog(hive, entries); };
    const CLogEntry eight = ChangeFirst(hive, 8, "eight.");
    const CLogEntry nine = ChangeFirst(hive, 9, "nine..");
    const CLogEntry ten = ChangeFirst(hive, 10, "ten...");
    std::string brokenLast = log({nine, ten});
    brokenLast[brokenLast.size() - 3] ^= 1;
    // Windows begins each entry at a whole sector.
    const std::string filler = hive.substr(hive.size() - (512 - 56));
    const auto fillerAt = static_cast<std::uint32_t>(hive.size() - filler.size() - 4096);
    const CLogEntry wideEight{8, {{fillerAt, filler}, eight.m_pages.front()}};
    const CLogEntry wide{9, {{fillerAt, filler}, nine.m_pages.front()}};
    std::string brokenMiddle = log({wideEight, wide, ten});
    brokenMiddle[512 + 1024 + 100] ^= 1;
    CLogEntry outside = nine;
    outside.m_pages.front().first = 0x7FFF'F000;
    const struct {
        const char* m_what;
        std::vector<std::string> m_logs;
        const char* m_first;
        bool m_bTold;
    } kCases[] = {
        {"one log", {log({eight, nine})}, "nine..", false},
        {"two logs, the later one first", {log({ten}), log({eight, nine})}, "ten...", false},
        {"an older entry behind the last", {log({nine, eight})}, "nine..", false},
        {"what the hive has already", {log({ChangeFirst(hive, 7, "seven.")})}, "123456", true},
        {"a log that begins behind a gap, with all that was missing", {log({eight}), log({ten})}, "ten...", false},
        {"a last entry that is not whole", {brokenLast}, "nine..", false},
        {"one in the middle that is not whole", {brokenMiddle}, "eight.", true},
        {"the same, and a later log", {brokenMiddle, log({ChangeFirst(hive, 11, "eleven")})}, "eleven", false},
        {"a page that lies outside", {log({eight, outside, ten})}, "eight.", true},
        {"no log", {}, "123456", true},
        {"a log that is none", {"HvLE", std::string(600, 'x')}, "123456", true},
    };
    for (const auto& test : kCases) {
        const Lines lines = ListAll(hive, test.m_logs);
        EXPECT_EQ(FirstOf(lines), test.m_first) << test.m_what;
        EXPECT_EQ(lines.back() == kUnfinished, test.m_bTold) << test.m_what;
    }
    // A hive that is whole does not ask its logs.
    EXPECT_EQ(ListAll(MakeSmall().Build(), {log({eight})}), kSmall);
    // A damaged base block is that of the log.
    std::string damaged = hive;
    Patch(damaged, 36, 0, 4);
    EXPECT_EQ(FirstOf(ListAll(damaged, {log({eight})})), "eight.");
}

TEST(RegfHive, ALogOfTheOlderFormIsReplayed) {
    const std::string hive = MakeDirty();
    const CLogEntry change = ChangeFirst(hive, 0, "older.");
    const std::size_t sector = change.m_pages.front().first / 512;
    std::string log = hive.substr(0, 512);
    Patch(log, 4, 9, 4);
    Patch(log, 8, 9, 4);
    SetChecksum(log);
    std::string bits((hive.size() - 4096) / 512 / 8, '\0');
    bits[sector / 8] = static_cast<char>(1 << sector % 8);
    log += "DIRT" + bits;
    log.resize((log.size() + 511) / 512 * 512);
    log += change.m_pages.front().second;
    EXPECT_EQ(FirstOf(ListAll(hive, {log})), "older.");
    EXPECT_EQ(ListAll(hive, {log.substr(0, log.size() - 1)}).back(), kUnfinished) << "a sector is cut off";
    Patch(log, 12, 1, 4);
    SetChecksum(log);
    EXPECT_EQ(ListAll(hive, {log}).back(), kUnfinished) << "a log of another time";
}

TEST(RegfHive, LogsAreFoundBesideTheFile) {
    const CTemporaryFolder folder;
    const std::string hive = MakeDirty();
    const std::string path = folder.Write("NTUSER.DAT", hive);
    folder.Write("ntuser.dat.LOG2", MakeLog(hive, {ChangeFirst(hive, 9, "nine..")}));
    folder.Write("ntuser.dat.LOG1", MakeLog(hive, {ChangeFirst(hive, 8, "eight.")}));
    folder.Write("ntuser.dat.LOG3", MakeLog(hive, {ChangeFirst(hive, 10, "ten...")}));
    CNotice problem;
    const auto opened = CRegfHive::Open(path, problem);
    ASSERT_NE(opened, nullptr) << problem.m_strSentence;
    EXPECT_EQ(FirstOf(ListHive(*opened)), "nine..");
    EXPECT_EQ(folder.Read("NTUSER.DAT"), hive) << "nothing is written";
    EXPECT_EQ(CRegfHive::Open(folder / "none", problem), nullptr);
    EXPECT_NE(problem.m_strSentence.find("none: open: "), std::string::npos) << problem.m_strSentence;
}

}  // namespace
}  // namespace delvane
