// What the program does on every system.
#include "tests/program/program.h"

namespace delvane {
namespace {

using Program = CProgramTest;

TEST_F(Program, AnExistingReportIsKeptOnDemand) {
    EXPECT_EQ(Run("/s /bc:a /cc:b" + kReads), 0);
    m_home.Write("Results/b - a.htm", "kept");
    EXPECT_EQ(Run("/s /b:a /c:b /gu"), 0) << "nothing was compared";
    EXPECT_EQ(m_home.Read("Results/b - a.htm"), "kept");
    EXPECT_EQ(Run("/s /b:a /c:b /g"), 1);
    EXPECT_NE(m_home.Read("Results/b - a.htm"), "kept");
}

TEST_F(Program, EachFailureHasItsBitAndOneSentence) {
    EXPECT_EQ(Run("/s /bc:a" + kReads), 0);
    EXPECT_EQ(m_strOutput + m_strErrors, "");
    RunFailing("/s /g", 16, "no report was made");
    RunFailing("/s /b:none /cc:never /g", 8, "snapshot \"none\" was not loaded");
    RunFailing("/s /b:a /c:none /g", 8, "snapshot \"none\" was not loaded");
    RunFailing("/s /compare", 0, "switch passed over: /compare");
    const std::string whole = m_home.Read("Results/a.dvs");
    m_home.Write("Results/a.dvs", whole.substr(0, whole.size() - 1));
    RunFailing("/s /b:a /cc:never", 8, "a.dvs: cut off");
    const std::string log = m_home.Read("delvane.err");
    EXPECT_EQ(Lines(log), 1);
    EXPECT_NE(log.find("a.dvs: cut off"), std::string::npos) << log;
}

TEST_F(Program, NamesComeThroughAsTheyWereTyped) {
    const std::string folder = m_home / "my results" + kSeparator;
    EXPECT_EQ(Run("/s /bc:V\u00F6r \"/cc:Da nach\" \"/res:" + folder + "\"" + kReads), 0) << m_strErrors;
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(folder) / u8"V\u00F6r.dvs"));
    EXPECT_TRUE(m_home.Exists("my results/Da nach.dvs"));
}

TEST_F(Program, HelpAndVersionAnswerBeforeAnythingElse) {
    EXPECT_EQ(Run("--version"), 0);
    EXPECT_EQ(m_strOutput, "Install Delvane " DELVANE_VERSION "\n");
    EXPECT_EQ(Run("--help"), 0);
    EXPECT_NE(m_strOutput.find("/bc:NAME"), std::string::npos);
    EXPECT_FALSE(m_home.Exists("delvane.cfg"));
    EXPECT_EQ(Run("/s --version"), 0) << "beside another switch it is a bad switch";
    EXPECT_EQ(m_home.Read("delvane.err"), "Bad Cmdline Switch: --version" + kLineEnd);
}

}  // namespace
}  // namespace delvane
