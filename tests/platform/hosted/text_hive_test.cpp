#include "platform/hosted/registry/text_hive.h"

#include <gtest/gtest.h>

#include "tests/support/hive_lines.h"

namespace delvane {
namespace {

using Lines = std::vector<std::string>;

CTextHive Open(const std::string& text) { return {BytesOf("WINE REGISTRY Version 2\n" + text), "TEXT"}; }

TEST(TextHive, KeysFormATreeInTheOrderOfTheFile) {
    CTextHive hive =
        Open("\"stray\"=\"x\"\n[Zoo\\\\Ape] 1\n\"b\"=\"1\"\n@=\"2\"\n[Zoo] 1\n\"c\"=dword:1\n[App\\\\Bee\\\\Cat] 1\n");
    EXPECT_EQ(ListHive(hive), (Lines{"Zoo", "Zoo: c (4) \1~~~", "Zoo\\Ape", "Zoo\\Ape: b (1) 1~", "Zoo\\Ape:  (1) 2~",
                                     "App", "App\\Bee", "App\\Bee\\Cat"}));
}

TEST(TextHive, WhatComesTwiceIsOne) {
    CTextHive hive = Open(
        "[Key] 1\n\"a\"=\"1\"\n\"b\"=\"2\"\n[Other] 1\n[KEY] 1\n\"B\"=dword:2\n\"A\"=\"3\"\n"
        "[key\\\\Sub] 1\n[Key\\\\SUB] 1\n\"x\"=\"\"\n");
    EXPECT_EQ(ListHive(hive),
              (Lines{"Key", "Key: a (1) 3~", "Key: b (4) \2~~~", "Key\\Sub", "Key\\Sub: x (1) ~", "Other"}))
        << "later values replace the earlier ones in their places";
    EXPECT_TRUE(hive.GetProblems().empty());
}

TEST(TextHive, LettersThatShareTheirOtherCaseAreNotTheSame) {
    // k and the Kelvin sign, both small sigmas, the micro sign and mu, two letters beyond the basic plane.
    CTextHive hive = Open(
        "[k] 1\n[\u212A] 1\n[\u03C3] 1\n[\u03C2] 1\n[\u03A3] 1\n[\u00B5] 1\n[\u03BC] 1\n"
        "[\U00010400] 1\n[\U00010428] 1\n[v] 1\n\"K\"=\"1\"\n\"\u212A\"=\"2\"\n\"k\"=\"3\"\n");
    EXPECT_EQ(ListHive(hive), (Lines{"k", "\u212A", "\u03C3", "\u03C2", "\u00B5", "\u03BC", "\U00010400", "\U00010428",
                                     "v", "v: K (1) 3~", "v: \u212A (1) 2~"}));
}

TEST(TextHive, ManyKeysOutOfOrderAreToldApart) {
    constexpr int kCount = 600;  // long enough for the index to come
    std::string text;
    for (int i = kCount; i-- > 0;)
        text += "[Key\\\\" + std::to_string(i) + "x] 1\n\"n\"=dword:" + std::to_string(i) + "\n";
    for (int i = 0; i < kCount; ++i)
        text += "[Key\\\\" + std::to_string(i) + "X\\\\Sub] 1\n";
    CTextHive hive = Open(text);
    CKeyContents contents;
    const auto parent = hive.FindSubkey(hive.GetRoot(), "KEY");
    ASSERT_TRUE(parent && hive.ReadKey(*parent, contents));
    EXPECT_EQ(contents.m_subkeys.size(), std::size_t{kCount});
    for (int i = 0; i < kCount; ++i) {
        const auto key = hive.FindSubkey(*parent, std::to_string(i) + "X");
        ASSERT_TRUE(key);
        EXPECT_TRUE(hive.FindSubkey(*key, "sub"));
        EXPECT_FALSE(hive.FindSubkey(*key, "0x"));
    }
}

TEST(TextHive, LinksKnowWhereTheyLead) {
    CTextHive hive = Open(
        "[To] 1\n#link\n\"SymbolicLinkValue\"=hex(6):5c,00,61,00,5c,00,e9,00\n"
        "[Nowhere] 1\n#link\n[Wrong] 1\n#link\n\"SymbolicLinkValue\"=\"\\\\a\"\n[Plain] "
        "1\n\"SymbolicLinkValue\"=hex(6):5c,00\n");
    const auto linkOf = [&](const char* name) { return hive.GetLink(hive.FindSubkey(hive.GetRoot(), name).value()); };
    EXPECT_EQ(linkOf("to"), "\\a\\\u00E9");
    EXPECT_EQ(linkOf("Nowhere"), "");
    EXPECT_EQ(linkOf("Wrong"), "") << "a text is no target";
    EXPECT_EQ(linkOf("Plain"), std::nullopt);
}

TEST(TextHive, DamageIsTold) {
    CTextHive cut = Open("[Key] 1\n\"a\"=\"1\"\n\"b\"=\"2");
    EXPECT_EQ(ListHive(cut), (Lines{"Key", "Key: a (1) 1~"}));
    ASSERT_EQ(cut.GetProblems().size(), 1U);
    EXPECT_NE(cut.GetProblems().front().m_strSentence.find("TEXT is cut off: "), std::string::npos);
    CTextHive damaged = Open("[Key] 1\n\"a\"=\"1\"\nbroken\n\"b\"=\"2\"\n");
    EXPECT_EQ(ListHive(damaged).size(), 3U);
    ASSERT_EQ(damaged.GetProblems().size(), 1U);
    EXPECT_NE(damaged.GetProblems().front().m_strSentence.find("TEXT is damaged: "), std::string::npos);
}

}  // namespace
}  // namespace delvane
