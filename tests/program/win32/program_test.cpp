// The whole program, run as a script runs it.
#include <algorithm>
#include <gtest/gtest.h>

#include "platform/win32/machine/system.h"
#include "platform/win32/wide.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace delvane {
namespace {

class Program : public testing::Test {
protected:
    Program() { SetEnvironmentVariableA("DELVANE_HOME", m_home.GetPath().c_str()); }
    ~Program() override { SetEnvironmentVariableA("DELVANE_HOME", nullptr); }

    // Runs the program; its exit code, with what it wrote in m_output and m_errors.
    int Run(const std::string& arguments) {
        const CHandle output = MakeFile("stdout");
        const CHandle errors = MakeFile("stderr");
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output.Get();
        startup.hStdError = errors.Get();
        PROCESS_INFORMATION process{};
        std::string command = "\"" DELVANE_PROGRAM "\" " + arguments;
        if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process) ==
            0) {
            return -1;
        }
        const CHandle running(process.hProcess);
        const CHandle thread(process.hThread);
        WaitForSingleObject(running.Get(), INFINITE);
        DWORD code = 0;
        GetExitCodeProcess(running.Get(), &code);
        m_output = m_home.Read("stdout");
        m_errors = m_home.Read("stderr");
        return static_cast<int>(code);
    }
    static auto Lines(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

    CTemporaryFolder m_home;
    std::string m_output;
    std::string m_errors;

private:
    CHandle MakeFile(std::string_view name) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        return CHandle(CreateFileA((m_home / name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                                   0, nullptr));
    }
};

TEST_F(Program, SnapshotChangeSnapshotReport) {
    // Drives and the large hives have tests of their own.
    const std::string reads = " /dg:HD- /r:hklm- /r:hkcr-";
    EXPECT_EQ(Run("/s /bc:Before" + reads), 0) << m_errors;
    EXPECT_EQ(m_output + m_errors, "");
    const ::HKEY user = SystemKey(HKEY_CURRENT_USER);
    ::HKEY key = nullptr;
    // Several tests run at a time, and there is one registry.
    const std::string name = "Software\\Delvane Program " + std::to_string(GetCurrentProcessId());
    RegCreateKeyExA(user, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    RegSetValueExA(key, "Path", 0, REG_SZ, reinterpret_cast<const BYTE*>("C:\\New"), 7);
    RegCloseKey(key);
    EXPECT_EQ(Run("/s /b:Before \"/cc:After it\"" + reads + " /g"), 1) << m_errors;
    RegDeleteTreeA(user, name.c_str());
    EXPECT_EQ(m_output + m_errors, "");
    const std::string page = m_home.Read("Results/After it - Before.htm");
    EXPECT_NE(page.find(name), std::string::npos);
    EXPECT_EQ(m_home.Read("delvane.cfg").size(), 40U);
    EXPECT_FALSE(m_home.Exists("delvane.err"));
}

TEST_F(Program, EachFailureHasItsBitAndOneSentence) {
    EXPECT_EQ(Run("/s"), 0);
    const struct {
        const char* m_arguments;
        int m_code;
        const char* m_words;
    } kCases[] = {
        {"/s /g", 16, "no report was made"},
        {"/s /b:none /cc:never /g", 8, "snapshot \"none\" was not loaded"},
        {"/s /bc:a /res:C:\\windows\\win.ini /dg:HD- /r:hklm- /r:hkcr- /r:hkcu-", 0, ""},
        {"/s \"/bc:a?b\" /dg:HD- /r:hklm- /r:hkcr- /r:hkcu-", 4, "a?b"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.m_arguments);
        EXPECT_EQ(Run(test.m_arguments), test.m_code);
        EXPECT_EQ(m_output, "");
        EXPECT_EQ(Lines(m_errors), test.m_code == 0 ? 0 : 1) << m_errors;
        EXPECT_NE(m_errors.find(test.m_words), std::string::npos) << m_errors;
    }
    EXPECT_FALSE(m_home.Exists("Results/never.dvs"));
}

TEST_F(Program, HelpAndVersionAnswerBeforeAnythingElse) {
    EXPECT_EQ(Run("--version"), 0);
    EXPECT_EQ(m_output, "Install Delvane " DELVANE_VERSION "\n");
    EXPECT_EQ(Run("--help"), 0);
    EXPECT_NE(m_output.find("/bc:NAME"), std::string::npos);
    EXPECT_FALSE(m_home.Exists("delvane.cfg"));
    EXPECT_EQ(Run("/s --version"), 0) << "beside another switch it is a bad switch";
    EXPECT_EQ(m_home.Read("delvane.err"), "Bad Cmdline Switch: --version\r\n");
}

TEST_F(Program, NamesComeThroughAsTheyWereTyped) {
    const std::string reads = " /dg:HD- /r:hklm- /r:hkcr- /r:hkcu-";
    EXPECT_EQ(Run("/s /bc:V\xC3\xB6r /cc:\"Da nach\"" + reads), 0) << m_errors;
    const std::filesystem::path results = Widen(m_home / "Results");
    EXPECT_TRUE(std::filesystem::exists(results / L"V\u00F6r.dvs"));
    EXPECT_TRUE(std::filesystem::exists(results / L"Da nach.dvs"));
    EXPECT_EQ(Run("/s /bc:a \"/res:" + m_home.GetPath() + "\\my results\\\"" + reads), 0) << m_errors;
    EXPECT_TRUE(m_home.Exists("my results/a.dvs"));
}

}  // namespace
}  // namespace delvane
