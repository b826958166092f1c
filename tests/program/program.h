// The whole program, run as a user or a script runs it.
#pragma once

#include <algorithm>
#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace delvane {

class CProgramTest : public testing::Test {
protected:
    // Runs the program on the machine of this test; its exit code, with what it wrote in m_strOutput and m_strErrors.
    // The environment is a shell's, and for a build that a shell runs.
    int Run(const std::string& arguments, const std::string& environment = {});
    // Runs it where it fails: its exit code, no output, one sentence with these words, no snapshot "never".
    void RunFailing(const std::string& arguments, int code, std::string_view words,
                    const std::string& environment = {}) {
        SCOPED_TRACE(arguments + " " + environment);
        EXPECT_EQ(Run(arguments, environment), code);
        EXPECT_EQ(m_strOutput, "");
        EXPECT_EQ(Lines(m_strErrors), 1) << m_strErrors;
        EXPECT_NE(m_strErrors.find(words), std::string::npos) << m_strErrors;
        EXPECT_FALSE(m_home.Exists("Results/never.dvs"));
    }
    static std::ptrdiff_t Lines(std::string_view text) { return std::count(text.begin(), text.end(), '\n'); }

    static const std::string kReads;      // switches for a capture that need not last
    static const std::string kLineEnd;    // of a text file
    static const std::string kSeparator;  // of a path

    CTemporaryFolder m_home;
    std::string m_strProgram = DELVANE_PROGRAM;
    std::string m_strMachine;  // its folder, where there is one
    std::string m_strOutput;
    std::string m_strErrors;
};

}  // namespace delvane
