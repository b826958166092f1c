// How the program is run on Windows, and what it does there alone.
#include "tests/program/program.h"

#include "platform/win32/system.h"
#include "tests/support/environment.h"

namespace delvane {

const std::string CProgramTest::kReads = " /dg:HD- /r:hklm- /r:hkcr- /r:hkcu-";
const std::string CProgramTest::kLineEnd = "\r\n";
const std::string CProgramTest::kSeparator = "\\";

int CProgramTest::Run(const std::string& arguments, const std::string&) {
    const auto makeFile = [this](std::string_view name) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        return CHandle(CreateFileA((m_home / name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                                   0, nullptr));
    };
    const CHandle output = makeFile("stdout");
    const CHandle errors = makeFile("stderr");
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output.get();
    startup.hStdError = errors.get();
    PROCESS_INFORMATION process{};
    std::string command = "\"" + m_strProgram + "\" " + arguments;
    SetVariable("DELVANE_HOME", m_home.GetPath().c_str());
    const BOOL started =
        CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process);
    SetVariable("DELVANE_HOME", "");
    if (started == 0) return -1;
    const CHandle running(process.hProcess);
    const CHandle thread(process.hThread);
    WaitForSingleObject(running.get(), INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(running.get(), &code);
    m_strOutput = m_home.Read("stdout");
    m_strErrors = m_home.Read("stderr");
    return static_cast<int>(code);
}

namespace {

using Win32Program = CProgramTest;

TEST_F(Win32Program, SnapshotChangeSnapshotReport) {
    // Drives and the large hives have tests of their own.
    const std::string reads = " /dg:HD- /r:hklm- /r:hkcr-";
    EXPECT_EQ(Run("/s /bc:Before" + reads), 0) << m_strErrors;
    EXPECT_EQ(m_strOutput + m_strErrors, "");
    const ::HKEY user = SystemKey(HKEY_CURRENT_USER);
    ::HKEY key = nullptr;
    // Several tests run at a time, and there is one registry.
    const std::string name = "Software\\Delvane Program " + std::to_string(GetCurrentProcessId());
    RegCreateKeyExA(user, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    RegSetValueExA(key, "Path", 0, REG_SZ, reinterpret_cast<const BYTE*>("C:\\New"), 7);
    RegCloseKey(key);
    EXPECT_EQ(Run("/s /b:Before \"/cc:After it\"" + reads + " /g"), 1) << m_strErrors;
    RegDeleteTreeA(user, name.c_str());
    EXPECT_EQ(m_strOutput + m_strErrors, "");
    const std::string page = m_home.Read("Results/After it - Before.htm");
    EXPECT_NE(page.find(name), std::string::npos);
    EXPECT_EQ(m_home.Read("delvane.cfg").size(), 40U);
    EXPECT_FALSE(m_home.Exists("delvane.err"));
}

TEST_F(Win32Program, ANameThatTheSystemRefusesIsNamed) { RunFailing("/s \"/bc:a?b\"" + kReads, 4, "a?b"); }

TEST_F(Win32Program, AFileIsNoFolderOfResults) {
    EXPECT_EQ(Run("/s /bc:a /res:C:\\windows\\win.ini" + kReads), 0);
    EXPECT_EQ(Lines(m_strErrors), 1) << m_strErrors;
    EXPECT_TRUE(m_home.Exists("a.dvs"));
}

}  // namespace
}  // namespace delvane
