#include "platform/hosted/registry/registry_text.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace delvane {
namespace {

using namespace std::string_literals;

const std::string kStart = "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\Machine\n\n#arch=win64\n\n";

// What a reader delivers: a key as "[path]", perhaps with "link", a value as "path: name (type) data".
// The zero bytes show as "~".
struct CReading {
    std::vector<std::string> m_lines;
    std::size_t m_nProblems = 0;
    std::string m_strProblem;
    bool m_bCut = false;
};

std::string Shown(std::string_view text) {
    std::string shown(text);
    for (char& c : shown) {
        if (c == '\0') c = '~';
    }
    return shown;
}

CReading Read(std::string_view text) {
    CRegistryText reader(text);
    CReading reading;
    for (CRegistryText::CKey key; reader.NextKey(key);) {
        const std::string path = Shown(key.m_path);
        reading.m_lines.push_back("[" + path + (key.m_bIsLink ? "] link" : "]"));
        for (CRegistryText::CValue value; reader.NextValue(value);) {
            reading.m_lines.push_back(path + ": " + Shown(value.m_name) + " (" + std::to_string(value.m_dwType) + ") " +
                                      Shown(value.m_data));
        }
    }
    reading.m_nProblems = reader.GetProblemCount();
    reading.m_strProblem = reader.GetProblem();
    reading.m_bCut = reader.IsCut();
    return reading;
}

// A value as the ANSI calls give it, whatever form the file has it in.
TEST(RegistryText, ValuesAreGivenAsTheAnsiCallsGiveThem) {
    struct {
        std::string_view m_line;
        std::string m_strName;
        std::uint32_t m_dwType;
        std::string m_data;
    } const cases[] = {
        {R"(@="text")", "", 1, "text\0"s},
        {R"("a"="")", "a", 1, "\0"s},
        {R"("a name as long as two words"="a text as long as two words")", "a name as long as two words", 1,
         "a text as long as two words\0"s},
        {R"("a"=str:"b")", "a", 1, "b\0"s},
        {R"("a"=str(2):"%TEMP%\\x")", "a", 2, "%TEMP%\\x\0"s},
        {R"("a"=str(7):"one\0two\0")", "a", 7, "one\0two\0\0"s},
        {R"("a"=dword:0102ff7f)", "a", 4, "\x7f\xff\x02\x01"s},
        {R"("a"=dword:7)", "a", 4, "\7\0\0\0"s},
        {R"("a"=hex:)", "a", 3, ""},
        {R"("a"=hex:00,ff,0A)", "a", 3, "\0\xff\n"s},
        {"\"a\"=hex:01,\\\n  02,03,\\\n  04", "a", 3, "\1\2\3\4"},
        {"\"a\"=hex:1, 2 ,03,", "a", 3, "\1\2\3"},
        {R"("a"=hex(0):)", "a", 0, ""},
        {R"("a"=hex(4):01,02)", "a", 4, "\1\2"},
        {R"("a"=hex(5):00,00,00,2a)", "a", 5, "\0\0\0*"s},
        {R"("a"=hex(6):5c,00,52,00)", "a", 6, "\\\0R\0"s},
        {R"("a"=hex(b):01,00,00,00,00,00,00,80)", "a", 11, "\1\0\0\0\0\0\0\x80"s},
        {R"("a"=hex(80000001):41,00,42)", "a", 0x80000001, "A\0B"s},
        // UTF-16 in bytes: its terminators count, an odd last byte does not.
        {R"("a"=hex(1):)", "a", 1, ""},
        {R"("a"=hex(1):41)", "a", 1, ""},
        {R"("a"=hex(1):41,00,e9,00,00,00,42)", "a", 1, "A\u00e9\0"s},
        {R"("a"=hex(2):34,d8,1e,dd,0d,20)", "a", 2, "\U0001D11E\u200D"},
        {R"("a"=hex(7):41,00,00,00,34,d8)", "a", 7, "A\0\xed\xa0\xb4"s},
        // Escapes, in names as in texts.
        {R"("\\\"\[\]\a\b\e\f\n\r\t\v"="\\\"\[\]\a\b\e\f\n\r\t\v")", "\\\"[]\a\b\x1b\f\n\r\t\v", 1,
         "\\\"[]\a\b\x1b\f\n\r\t\v\0"s},
        {R"("a\0b"="\1z\12z\1234z\777")", "a\0b"s, 1, "\1z\nzS4z\u01ff\0"s},
        {R"("\0"="\0\0")", "\0"s, 1, "\0\0\0"s},
        {R"("\xe9"="\x7z\x7f.\x7ff.\xffff.\x00e9e\x20acc\xg")", "\u00e9", 1,
         "\7z\x7f.\u07ff.\uffff.\u00e9e\u20accxg\0"s},
        {R"("\xd83d\xde00"="1\xd834\xdd1e2")", "\U0001F600", 1, "1\U0001D11E2\0"s},
        {R"("\xd83d"="a\xdd1e\xd834b\xd834\xd834\xdd1e")", "\xed\xa0\xbd", 1,
         "a\xed\xb4\x9e\xed\xa0\xb4"
         "b\xed\xa0\xb4\U0001D11E\0"s},
        {R"("\xd83dA"="\xd83d\x41\xd83d\\xde00")", "\xed\xa0\xbd\x41", 1, "\xed\xa0\xbd\x41\xed\xa0\xbd\\xde00\0"s},
        // What Wine reads but does not write: UTF-8 and any other byte as it is, a blank around the equals sign.
        {"  \"\u00e9\\\u00e9\"  =  \"\t\xff\x80\" ", "\u00e9\u00e9", 1, "\t\xff\x80\0"s},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.m_line);
        for (const std::string lineEnd : {"\n", "\r\n"}) {
            std::string text = kStart + "[Key] 1\n" + std::string(test.m_line) + "\n@=dword:00000001\n";
            for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + lineEnd.size())) {
                text.replace(at, 1, lineEnd);
            }
            CRegistryText reader(text);
            CRegistryText::CKey key;
            CRegistryText::CValue value;
            ASSERT_TRUE(reader.NextKey(key));
            ASSERT_TRUE(reader.NextValue(value));
            EXPECT_EQ(value.m_name, test.m_strName);
            EXPECT_EQ(value.m_dwType, test.m_dwType);
            EXPECT_EQ(value.m_data, test.m_data);
            ASSERT_TRUE(reader.NextValue(value));
            EXPECT_EQ(value.m_name, "");
            EXPECT_FALSE(reader.NextValue(value));
            EXPECT_FALSE(reader.NextKey(key));
            EXPECT_EQ(reader.GetProblem(), "");
            EXPECT_FALSE(reader.IsCut());
        }
    }
}

TEST(RegistryText, LongTextsAreWhole) {
    for (std::size_t size = 0; size < 5000; size = size * 5 / 4 + 1) {
        SCOPED_TRACE(size);
        std::string escaped;
        std::string plain;
        std::string bytes;
        for (std::size_t i = 0; i < size; ++i) {
            escaped += i % 9 == 0 ? "\\xe9" : i % 7 == 0 ? "\\\"" : "x";
            plain += i % 9 == 0 ? "\u00e9" : i % 7 == 0 ? "\"" : "x";
            bytes += i % 9 == 0 ? "e9,00," : i % 7 == 0 ? "22,00,\\\n  " : "78,00,";
        }
        const CReading reading =
            Read(kStart + "[" + escaped + "]\n\"" + escaped + "\"=\"" + escaped + "\"\n@=hex(2):" + bytes + "00,00\n");
        EXPECT_EQ(reading.m_lines,
                  (std::vector<std::string>{"[" + plain + "]", plain + ": " + plain + " (1) " + plain + "~",
                                            plain + ":  (2) " + plain + "~"}));
    }
}

TEST(RegistryText, KeysComeWithTheirPathAndLink) {
    struct {
        std::string_view m_section;
        std::string_view m_expected;
    } const cases[] = {
        {"[Key\\\\Sub Key]", "[Key\\Sub Key]"},
        {"[Key] 1", "[Key]"},
        {"[Key] 1795385263\n#time=1dd7acde5e01048", "[Key]"},
        {"[]", "[]"},
        {"[a\\[b\\]c\"d\\te\\0f\\xe9\\xd83d\\xde00]", "[a[b]c\"d\te~f\u00e9\U0001F600]"},
        {"[\\\\a\\\\\\\\b\\\\]", "[a\\b]"},
        {"[Key]\n#link", "[Key] link"},
        {"[Key]\n\n;; comment\n#unknown=1\n#link\n#class=\"c\"\n#time=ff", "[Key] link"},
        {"  [Key] 1  ", "[Key]"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.m_section);
        const CReading reading = Read(kStart + std::string(test.m_section) + "\n\n[Next]\n");
        EXPECT_EQ(reading.m_lines, (std::vector<std::string>{std::string(test.m_expected), "[Next]"}));
        EXPECT_EQ(reading.m_strProblem, "");
    }
}

// What two lines in turn have in common is not decoded again; a path must be that of its line alone, and what is told
// to be common must be so.
TEST(RegistryText, KeysAreTheSameBehindEveryOther) {
    const std::vector<std::string> lines = {
        "[Software\\\\Key]",          "[Software\\\\keY\\\\]",
        "[Software\\\\Key\\\\Sub]",   "[Softwarex\\\\Key]",
        "[Software\\\\\\\\Key\\\\A]", "[Software\\\\a\\[1\\]]",
        "[Software\\\\\\xc9t\\xe9]",  "[Software\\\\\\x4bey\\\\x]",
        "[Software\\\\Key\\\\B] 12]", "  [Software\\\\Key\\\\C]",
        "[Software\\x5cKey\\\\D]",    "[]",
        "[Software\\\\Key",           "[Software\\Key\\E]",
        "[\\\\Software\\\\Key]",      "[Software\\\\]",
        "[Software\\\\\\\\]",         "[Software]",
    };
    for (const std::string& first : lines) {
        for (const std::string& second : lines) {
            SCOPED_TRACE(first + " " + second);
            std::vector<std::string> expected = Read(kStart + first + "\n").m_lines;
            for (const std::string& line : Read(kStart + second + "\n").m_lines)
                expected.push_back(line);
            const std::string text = kStart + first + "\n" + second + "\n";
            EXPECT_EQ(Read(text).m_lines, expected);
            CRegistryText reader(text);
            std::string before;
            for (CRegistryText::CKey key; reader.NextKey(key); before = key.m_path) {
                EXPECT_TRUE(key.m_nCommon <= key.m_path.size() &&
                            (before + "\\").starts_with(key.m_path.substr(0, key.m_nCommon)));
                const std::string_view name = key.m_path.substr(key.m_path.rfind('\\') + 1);
                EXPECT_TRUE(key.m_pName == nullptr || std::string_view(key.m_pName).starts_with(name));
            }
        }
    }
}

// A bracket at the start of a text or of a comment is none of a key line, and a key that is not asked for its values
// ends where the next begins.
TEST(RegistryText, NextKeyPassesOverTheValuesLeft) {
    const std::string text = kStart +
                             "[A]\n\"1\"=\"[No]\"\n\"[No]\"=hex:01,\\\n  02\n;[No]\n\"2\"=\"\"\n\n"
                             "[B]\n\"3\"=dword:00000003\n[C]\n";
    CRegistryText reader(text);
    CRegistryText::CKey key;
    CRegistryText::CValue value;
    EXPECT_FALSE(reader.NextValue(value)) << "no key yet";
    ASSERT_TRUE(reader.NextKey(key));
    EXPECT_EQ(key.m_path, "A");
    ASSERT_TRUE(reader.NextValue(value));
    EXPECT_EQ(value.m_name, "1");
    ASSERT_TRUE(reader.NextKey(key));
    EXPECT_EQ(key.m_path, "B");
    ASSERT_TRUE(reader.NextKey(key));
    EXPECT_EQ(key.m_path, "C");
    EXPECT_FALSE(reader.NextKey(key));
    EXPECT_FALSE(reader.NextValue(value));
}

TEST(RegistryText, OtherFilesAreRefused) {
    for (const std::string text : {"", "WINE", "WINE REGISTRY Version 1\n[Key]\n\"a\"=\"b\"\n",
                                   "WINE REGISTRY Version 22\n[Key]\n", "REGEDIT4\n\n[Key]\n", "\n[Key]\n"}) {
        SCOPED_TRACE(text);
        CRegistryText reader(text);
        CRegistryText::CKey key;
        EXPECT_FALSE(reader.HasHeader());
        EXPECT_FALSE(reader.NextKey(key));
        EXPECT_EQ(reader.GetProblem(), "line 1: the file does not begin with \"WINE REGISTRY Version 2\"");
    }
}

// The line goes, its neighbours stay, and the first such line is named.
TEST(RegistryText, ALineThatCannotBeReadIsNotedAndSkipped) {
    struct {
        std::string m_strLine;
        std::string_view m_problem;
    } const cases[] = {
        {"\"bad\"=\"text", "line 8: a value without a closing quotation mark"},
        {"\"bad\"=\"text\\", "line 8: a value without a closing quotation mark"},
        {"\"bad=", "line 8: a value name without a closing quotation mark"},
        {"\"bad\"", "line 8: a value without an equals sign"},
        {"\"bad\"=text", "line 8: data of an unknown form"},
        {"\"bad\"=str(4):\"text\"", "line 8: data of an unknown form"},
        {"\"bad\"=hexa", "line 8: data of an unknown form"},
        {"\"bad\"=dword:", "line 8: a number that is not one to eight hexadecimal digits"},
        {"\"bad\"=dword:123456789", "line 8: a number that is not one to eight hexadecimal digits"},
        {"\"bad\"=hex(123456789):01", "line 8: a type that is not one to eight hexadecimal digits"},
        {"\"bad\"=hex():01", "line 8: a type that is not one to eight hexadecimal digits"},
        {"\"bad\"=hex:01,0g,03,\\\n  04,\\\n  05", "line 8: a byte that is not two hexadecimal digits"},
        {"\"bad\"=hex:01,102", "line 8: a byte that is not two hexadecimal digits"},
        {"\"bad\"=hex:01,\\\n  zz,\\\n  05", "line 9: a byte that is not two hexadecimal digits"},
        {"\"bad\"=hex:01,\\02", "line 8: a backslash inside a list of bytes"},
        {"\"bad\"=hex:01,\\", "line 9: a list of bytes that breaks off in the line above"},
        {"\"bad\"=\"te\0xt\""s, "line 8: a zero byte inside a text"},
        {std::string(5000, '\0'), "line 8: a line that is neither a key nor a value"},
        {"rubbish", "line 8: a line that is neither a key nor a value"},
        {"[bad\n\"lost\"=\"with its key\"\n[Key]", "line 8: a key without a closing bracket"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.m_strLine);
        const CReading reading =
            Read(kStart + "[Key]\n\"before\"=\"1\"\n" + test.m_strLine + "\n\"after\"=\"2\"\n[Next]\n");
        std::vector<std::string> lines = reading.m_lines;
        if (lines.size() == 5) lines.erase(lines.begin() + 2);  // where the key line is doubled
        EXPECT_EQ(lines, (std::vector<std::string>{"[Key]", "Key: before (1) 1~", "Key: after (1) 2~", "[Next]"}));
        EXPECT_EQ(reading.m_nProblems, 1U);
        EXPECT_EQ(reading.m_strProblem, test.m_problem);
        EXPECT_FALSE(reading.m_bCut);
    }
}

// Wine reads these all the same.
TEST(RegistryText, WhatIsTooMuchIsNotedAndTheRestGiven) {
    const CReading reading = Read("WINE REGISTRY Version 2\n\"early\"=hex:01,\\\n  02\n[Key] 1x\n\"a\"=\"b\"\"c\"\n");
    EXPECT_EQ(reading.m_lines, (std::vector<std::string>{"[Key]", "Key: a (1) b~"}));
    EXPECT_EQ(reading.m_nProblems, 3U);
    EXPECT_EQ(reading.m_strProblem, "line 2: a value in front of the first key");
}

// One of everything; no two lines are equal. Each element is a line, with those that its bytes go on in.
const std::vector<std::string> kSample = {
    "WINE REGISTRY Version 2\n",
    ";; All keys relative to REGISTRY\\\\Machine\n",
    "\n",
    "#arch=win64\n",
    "\n",
    "[Software\\\\K\\[1\\]\\xe9] 1795385263\n",
    "#time=1dd7acde5e01048\n",
    "#class=\"kind\"\n",
    "@=\"unnamed \\\"text\\\"\"\n",
    "\"bytes\"=hex:00,01,02,\\\n  03,04,\\\n  05\n",
    "\"expand\"=str(2):\"%TEMP%\\\\x\"\n",
    "\"face \\xd83d\\xde00\"=\"\\xd834\\xdd1e\"\n",
    "\"number\"=dword:0000002a\n",
    "\n",
    "[Software\\\\Link] 1795385264\n",
    "#link\n",
    "\"SymbolicLinkValue\"=hex(6):5c,00,52,00\n",
    "\n",
    "[Software\\\\Z] 1795385265\n",
    "\"list\"=str(7):\"one\\0two\\0\"\n",
    "\"odd\"=hex(1):41,00,42\n",
};

std::string Join(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line;
    return text;
}

// A file that was cut is noticed wherever that happened inside a line, and all lines in front of it are given.
TEST(RegistryText, EveryCutIsNoticed) {
    const std::string whole = Join(kSample);
    const std::vector<std::string> all = Read(whole).m_lines;
    ASSERT_EQ(all.size(), 11U);
    std::size_t line = 0;
    std::string ended;  // the whole lines in front of the cut
    for (std::size_t size = 0; size < whole.size(); ++size) {
        SCOPED_TRACE("cut to " + std::to_string(size) + " bytes");
        if (size == ended.size() + kSample[line].size()) ended += kSample[line++];
        const CReading reading = Read(std::string_view(whole).substr(0, size));
        const bool atLineEnd = size == ended.size() && size != 0;
        EXPECT_EQ(reading.m_bCut, !atLineEnd);
        EXPECT_EQ(reading.m_nProblems, atLineEnd ? 0U : 1U);

        std::vector<std::string> lines = reading.m_lines;
        const std::vector<std::string> before = Read(ended).m_lines;
        ASSERT_GE(lines.size(), before.size());
        ASSERT_LE(lines.size(), before.size() + 1) << "at most the line that was cut, when nothing but its end is gone";
        for (std::size_t i = 0; i < lines.size(); ++i) {
            // Whether the last key is a link may be told behind the cut.
            EXPECT_TRUE(all[i].starts_with(lines[i])) << lines[i];
        }
    }
    EXPECT_EQ(Read(kStart + "[Key]\n\"a\"=hex:01,02").m_strProblem, "line 7: the text ends inside a value");
    EXPECT_EQ(Read(kStart + "[Key]\n\"a\"=hex:01,\\\n").m_strProblem, "line 7: the text ends inside a value");
    EXPECT_EQ(Read(kStart + "[Key]\n\"a\"=dword:0000").m_strProblem, "line 7: the text ends inside a value");
    EXPECT_EQ(Read(kStart + "[Key").m_strProblem, "line 6: the text ends inside a key line");
    EXPECT_EQ(Read(kStart + "[Key] 12").m_strProblem, "line 6: the last line has no end");
}

// Any byte of any line may be replaced: the values of all other lines come through unchanged.
TEST(RegistryText, DamageStaysInItsLine) {
    const std::vector<std::string> all = Read(Join(kSample)).m_lines;
    std::size_t index = 0;  // what the damaged line delivers
    for (std::size_t line = 5; line < kSample.size(); ++line) {
        const char first = kSample[line].front();
        if (first != '"' && first != '@') {
            index += first == '[';
            continue;
        }
        std::vector<std::string> others = all;
        others.erase(others.begin() + static_cast<std::ptrdiff_t>(index));
        for (std::size_t at = 0; at + 1 < kSample[line].size(); ++at) {
            for (const char bad : {'"', '\\', '\0', 'x', '\n', ';', ',', '\xff', '='}) {
                SCOPED_TRACE("byte " + std::to_string(at) + " of " + kSample[line] + " is " + bad);
                std::vector<std::string> lines = kSample;
                lines[line][at] = bad;
                std::vector<std::string> read = Read(Join(lines)).m_lines;
                if (read.size() == all.size()) read.erase(read.begin() + static_cast<std::ptrdiff_t>(index));
                EXPECT_EQ(read, others);
            }
        }
        ++index;
    }
}

TEST(RegistryText, Utf16BecomesUtf8) {
    EXPECT_EQ(TextFromUtf16("\\\0R\0\xe9\0"s), "\\R\u00e9");
    EXPECT_EQ(TextFromUtf16("\x34\xd8\x1e\xdd\x1e\xdd\x34\xd8\x34\xd8!"s),
              "\U0001D11E\xed\xb4\x9e\xed\xa0\xb4\xed\xa0\xb4");
    EXPECT_EQ(TextFromUtf16(""), "");
}

}  // namespace
}  // namespace delvane
