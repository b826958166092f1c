// The calls that go by a word, run as a user runs them: files, exit codes, sentences.
#include "tests/program/program.h"
#include "tests/support/prefix.h"

namespace delvane {
namespace {

namespace fs = std::filesystem;

class ReviewCalls : public CProgramTest {
protected:
    ReviewCalls() {
        m_strMachine = m_prefix.GetPath();
        EXPECT_EQ(Run("/s /bc:Before"), 0);
        m_prefix.Write("drive_c/new.txt", "x");
        EXPECT_EQ(Run("/s /cc:After"), 0);
    }

    CPrefix m_prefix;
};

TEST_F(ReviewCalls, AReviewWritesItsFilesAndGatesByItsExitCode) {
    EXPECT_EQ(Run("review Before ./Results/After.dvs --write html,jsonl,sarif,junit,markdown,reg --output new/out"), 1);
    for (const char* const ending :
         {".review.html", ".review.jsonl", ".sarif", ".junit.xml", ".review.md", ".undo.reg", ".redo.reg"}) {
        EXPECT_TRUE(m_home.Exists(std::string("new/out/After - Before") + ending)) << ending;
    }
    EXPECT_NE(m_strOutput.find("wrote " + m_home.GetPath() + "/new/out/After - Before.redo.reg\n"), std::string::npos);
    EXPECT_EQ(m_strErrors, "");
    EXPECT_EQ(Run("review Before After --write none --draft draft.toml --quiet"), 1);
    EXPECT_EQ(m_strOutput + m_strErrors, "");
    std::string draft = m_home.Read("draft.toml");
    for (std::size_t at = 0; (at = draft.find("\"\"\n", at)) != std::string::npos;)
        draft.replace(at, 2, "\"r\"");
    m_home.Write("filled.toml", draft + "[[accept]]\npath = 'C:\\never'\nreason = 'r'\n");
    EXPECT_EQ(Run("review Before After --write none --fail-on change --accept filled.toml --quiet"), 0);
    EXPECT_TRUE(m_strErrors.ends_with(": C:\\never: fits nothing\n")) << m_strErrors;
}

TEST_F(ReviewCalls, AWrongCallWritesNothing) {
    m_home.Write("bad.toml", "[[accept]]\npath = 'x'\n");
    fs::remove_all(m_home.GetPath() + "/Results");
    fs::remove(m_home.GetPath() + "/delvane.cfg");
    const struct {
        const char* m_arguments;
        const char* m_sentence;
    } kCases[] = {
        {"review Before", "delvane: CURRENT is required; delvane review --help lists the options\n"},
        {"review Before After --write html,pdf", "delvane: --write: \"pdf\" is no format; there are html, "},
        {"review Before After --write none,html", "delvane: --write: none goes alone\n"},
        {"review Before After --fail-on sometimes", "delvane: --fail-on: \"sometimes\" is no level; there are error, "},
        {"review Before After --limit many", "delvane: Could not convert: --limit = many; "},
        {"review Before After --output out --accept bad.toml", "delvane: bad.toml:1:1: an entry needs a reason\n"},
        {"review Before After --output out --accept none.toml", "delvane: none.toml: the accept list cannot be read\n"},
        {"list --what", "delvane: The following argument was not expected: --what; "},
    };
    for (const auto& [arguments, sentence] : kCases) {
        EXPECT_EQ(Run(arguments), 2) << arguments;
        EXPECT_EQ(m_strErrors.substr(0, std::string(sentence).size()), sentence);
        EXPECT_EQ(m_strOutput, "");
    }
    for (const char* const made : {"Results", "out", "delvane.cfg"})
        EXPECT_FALSE(m_home.Exists(made)) << made;
}

TEST_F(ReviewCalls, WhatCannotBeReadOrWrittenIsToldInOneSentence) {
    m_home.Write("Results/Cut.dvs", m_home.Read("Results/After.dvs").substr(0, 500));
    m_home.Write("file", "x");
    const std::string home = m_home.GetPath();
    const std::pair<std::string, std::string> kCases[] = {
        {"review Before None", "snapshot \"None\" was not loaded: " + home + "/Results/None.dvs: open: "},
        {"review Before After --results nowhere",
         "snapshot \"Before\" was not loaded: " + home + "/nowhere is no folder"},
        {"review Before Cut", "snapshot \"Cut\" was not loaded: " + home + "/Results/Cut.dvs: cut off or damaged"},
        {"review Before After --output file", home + "/file: the folder cannot be made\n"},
        {"review Before After --draft no/d.toml", home + "/no/d.toml: create: "},
        {"export None", "snapshot \"None\" was not loaded: "},
        {"list --results nowhere", home + "/nowhere is no folder"},
    };
    for (const auto& [arguments, sentence] : kCases) {
        EXPECT_EQ(Run(arguments), 3) << arguments;
        EXPECT_EQ(m_strErrors.substr(0, sentence.size() + 9), "delvane: " + sentence);
        EXPECT_EQ(std::count(m_strErrors.begin(), m_strErrors.end(), '\n'), 1);
    }
    EXPECT_FALSE(m_home.Exists("nowhere"));
    for (const std::string call : {"list", "review --help", "export After", "review Before After --write none"}) {
        EXPECT_EQ(Run(call + " >/dev/full 2>told; exit; :"), 3) << call;
        EXPECT_TRUE(m_home.Read("told").starts_with("delvane: standard output: write: ")) << call;
    }
}

TEST_F(ReviewCalls, SnapshotsAreListedAndExported) {
    m_home.Write("Results/Other.dvs", "no snapshot");
    EXPECT_EQ(Run("list"), 0);
    EXPECT_EQ(std::count(m_strOutput.begin(), m_strOutput.end(), '\n'), 3) << m_strOutput;
    EXPECT_NE(m_strErrors.find("Other.dvs: this is no snapshot file"), std::string::npos);
    EXPECT_EQ(Run("export After"), 0);
    EXPECT_TRUE(m_strOutput.starts_with("{\"record\":\"snapshot\",\"version\":1,"));
    EXPECT_NE(m_strOutput.find("\n{\"record\":\"end\",\"drive\":1,"), std::string::npos);
}

}  // namespace
}  // namespace delvane
