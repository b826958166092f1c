// How the program is run on a prefix, and what it does there alone.
#include "tests/program/program.h"

#include <algorithm>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

#include "samples/image_writer.h"
#include "tests/support/prefix.h"

namespace delvane {

const std::string CProgramTest::kReads;
const std::string CProgramTest::kLineEnd = "\n";
const std::string CProgramTest::kSeparator = "/";

int CProgramTest::Run(const std::string& arguments, const std::string& environment) {
    const CPrefix prefix;  // of a test that has none of its own
    const std::string command =
        "cd " + m_home.GetPath() + " || exit; env -u WINEPREFIX DELVANE_HOME=" + m_home.GetPath() +
        " DELVANE_MACHINE=" + (m_strMachine.empty() ? prefix.GetPath() : m_strMachine) + " TZ=UTC " + environment +
        " '" + m_strProgram + "' " + arguments + " >stdout 2>stderr </dev/null";
    const int status = std::system(command.c_str());
    m_strOutput = m_home.Read("stdout");
    m_strErrors = m_home.Read("stderr");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

namespace {

namespace fs = std::filesystem;

class HostedProgram : public CProgramTest {
protected:
    HostedProgram() { m_strMachine = m_prefix.GetPath(); }

    CPrefix m_prefix;
};

TEST_F(HostedProgram, SnapshotInstallSnapshotReport) {
    EXPECT_EQ(Run("/s /bc:Before"), 0);
    EXPECT_EQ(m_strOutput + m_strErrors, "");
    m_prefix.Write("drive_c/Program Files/App/app.exe", MakeImage(EImageKind::Pe64, {{}, "1.2"}));
    m_prefix.Write("drive_c/windows/old.dll", MakeImage(EImageKind::Ne));
    m_prefix.Write("drive_c/CONFIG.SYS", "x");
    EXPECT_EQ(Run("/s /b:Before /cc:After /g"), 1);
    EXPECT_EQ(m_strOutput + m_strErrors, "");
    const std::string page = m_home.Read("Results/After - Before.htm");
    for (const char* part : {"<TR><TD><A HREF=\"#FileAdd\">Files Added:</A></TD><TD>3</TD></TR>", "app.exe</TD>",
                             " - 32-bit</TD><TD> - v.1.2<", "16-bit Executable Installed",
                             "WARNING - File(C:\\CONFIG.SYS): System File Added or Changed"}) {
        EXPECT_NE(page.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(m_home.Read("delvane.cfg").size(), 40U);
    EXPECT_FALSE(m_home.Exists("delvane.err"));
}

// One call after the other fails. Whatever it was: the program lives, a good snapshot is whole, nothing half is left,
// and a snapshot that lacks something goes with a word.
TEST_F(HostedProgram, NoFailedCallIsSilent) {
    if (DELVANE_IS_SANITIZED) GTEST_SKIP() << "the sanitizer's own calls would fail";
    m_prefix.Write("drive_c/Program Files/App/app.exe", "x");
    fs::create_symlink("App", m_prefix / "drive_c/Program Files/Link");
    ASSERT_EQ(Run("/s /bc:Whole"), 0);
    // Behind the names and the time, which differ, the contents are the same.
    const auto contents = [&](const std::string& name) {
        const std::string bytes = m_home.Read("Results/" + name + ".dvs");
        return bytes.substr(std::min(bytes.size(), bytes.find("My Computer")));
    };
    const std::string whole = contents("Whole");
    ASSERT_FALSE(whole.empty());
    std::size_t faults = 0;
    for (const char* call : {"openat", "statx", "stat", "lstat", "fstatat", "read", "write", "fsync", "rename",
                             "unlink", "realpath", "getdents64"}) {
        for (int at = 1;; ++at) {
            m_home.Write("Results/Snap.dvs", "earlier");
            const std::string told = m_home / "told";
            fs::remove(told);
            const int code =
                Run("/s /bc:Snap", "LD_PRELOAD=" DELVANE_FAIL_CALL " FAIL_TOLD=" + told + " FAIL_CALL=" + call +
                                       " FAIL_WITH=5 FAIL_AT=" + std::to_string(at));
            if (!fs::exists(told)) break;
            ++faults;
            SCOPED_TRACE(std::string(call) + " " + std::to_string(at) + ": " + m_strErrors);
            EXPECT_TRUE(code == 0 || code == 4 || code == 64) << code;
            EXPECT_TRUE(code == 0 || m_home.Read("Results/Snap.dvs") == "earlier");
            EXPECT_TRUE(!m_strErrors.empty() || contents("Snap") == whole);
            for (const auto& entry : fs::directory_iterator(m_home / "Results"))
                EXPECT_NE(entry.path().extension(), ".tmp");
            fs::remove(m_home / "Results/Snap.gaps.jsonl");
        }
    }
    EXPECT_GT(faults, 80U);
}

TEST_F(HostedProgram, WhatIsNoMachineOrNoPlaceForASnapshotIsNamed) {
    RunFailing("", 32, "no window can be shown: there is no display", "DISPLAY= WAYLAND_DISPLAY= QT_QPA_PLATFORM=");
    RunFailing("/s /bc:a", 4, "DELVANE_MACHINE names no machine", "DELVANE_MACHINE=/nowhere");
    RunFailing("/s /bc:a", 4, "WINEPREFIX names no machine", "DELVANE_MACHINE= WINEPREFIX=/tmp");
    RunFailing("/s /bc:a", 4, "no machine to examine", "DELVANE_MACHINE= HOME=/nowhere");
    RunFailing("/s /bc:a /res:/proc/", 4, "snapshot \"a\" was not created: /proc/a.dvs: create: ");
    EXPECT_EQ(Run("--version", "DELVANE_MACHINE=/nowhere"), 0);
    RunFailing("/s /bc:a", 4, "DELVANE_USER names no account", "DELVANE_USER=nobody");
    EXPECT_EQ(Run("/s /bc:a", "DELVANE_USER=TESTER"), 0);
    const std::string good = m_home.Read("Results/a.dvs");
    for (const char* const damaged : {"", "junk\n"}) {
        m_prefix.Write("system.reg", damaged);
        RunFailing("/s /bc:a", 4, m_prefix / "system.reg");
        EXPECT_EQ(m_home.Read("Results/a.dvs"), good);
    }
}

// A pipe that nobody reads, a full disk: what is said is lost, and the work is not.
TEST_F(HostedProgram, WhatCannotBeSaidEndsNothing) {
    const std::string pipe = m_home / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread reader([&] { std::ifstream(pipe).close(); });
    EXPECT_EQ(Run("/s /bc:a /q 2>pipe; exit; :"), 0);
    reader.join();
    EXPECT_EQ(Run("/s /bc:b /q 2>/dev/full; exit; :"), 0);
    EXPECT_TRUE(m_home.Exists("Results/a.dvs") && m_home.Exists("Results/b.dvs"));
}

// A process that cannot open directories any more must not call them empty.
TEST_F(HostedProgram, RunningOutOfDescriptorsIsAFailedCapture) {
    ASSERT_EQ(Run("/s /bc:a"), 0);
    const std::string good = m_home.Read("Results/a.dvs");
    m_prefix.MakeFolder("drive_c/1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17/18/19/20");
    EXPECT_EQ(Run("/s /bc:a", "prlimit --nofile=16"), 4);
    EXPECT_EQ(Lines(m_strErrors), 1) << m_strErrors;
    EXPECT_EQ(m_home.Read("Results/a.dvs"), good);
}

TEST_F(HostedProgram, EachVariableChoosesThePrefix) {
    EXPECT_EQ(Run("/s /bc:a", "DELVANE_MACHINE= WINEPREFIX=" + m_prefix.GetPath()), 0) << m_strErrors;
    fs::create_directory_symlink(m_prefix.GetPath(), m_home / ".wine");
    EXPECT_EQ(Run("/s /cc:b", "DELVANE_MACHINE= HOME=" + m_home.GetPath()), 0) << m_strErrors;
    EXPECT_EQ(Run("/s /b:a /c:b /g"), 1);
    const std::string page = m_home.Read("Results/b - a.htm");
    EXPECT_NE(page.find("<TR><TD>Files Changed:</TD><TD>0</TD></TR>"), std::string::npos) << "the same machine";
}

// A signal in the middle of a large walk: no file, no temporary file, and the earlier snapshot as it was.
TEST_F(HostedProgram, ASignalDuringACaptureIsAFailedCapture) {
    ASSERT_EQ(Run("/s /bc:a"), 0);
    const std::string good = m_home.Read("Results/a.dvs");
    // Each folder leads to all others by links, so the walk has four hundred thousand entries to see.
    constexpr int kFolders = 160;
    for (int i = 0; i < kFolders; ++i) {
        const std::string folder = m_prefix.MakeFolder("drive_c/w/" + std::to_string(i));
        for (int other = 0; other < kFolders; ++other)
            fs::create_directory_symlink("../" + std::to_string(other), folder + "/" + std::to_string(other));
    }
    // The signal comes when the walk has such a folder open.
    EXPECT_EQ(Run("/s /bc:a 2>said & child=$!; "
                  "while kill -0 $child && ! ls -l /proc/$child/fd | grep -q drive_c/w/; do :; done; "
                  "kill -TERM $child; wait $child"),
              4);
    EXPECT_EQ(m_home.Read("said"), "delvane: snapshot \"a\" was not created: interrupted by a signal\n");
    EXPECT_TRUE(m_home.Read("Results/a.dvs") == good);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_home / "Results"), {}), 1);
}

// A chain of lists, each of which claims the whole rest of the file, takes memory by what is there, not by the claims.
TEST_F(HostedProgram, NestedClaimsTakeNoMemory) {
    ASSERT_EQ(Run("/s /bc:a"), 0);
    const std::string whole = m_home.Read("Results/a.dvs");
    const auto number = [](std::uint32_t value) { return std::string(reinterpret_cast<const char*>(&value), 4); };
    const std::string registry = "\x0BMy Computer" + std::string(1, '\0');
    std::string file = whole.substr(0, whole.find(registry) + registry.size()) + number(1) + number(0x80000002);
    constexpr std::uint32_t kRest = 1 << 20;
    for (std::uint32_t i = 0; i < 900; ++i)
        file += std::string(2, '\0') + number(0) + number(kRest / 10 - i * 2);
    m_home.Write("Results/x.dvs", file + std::string(kRest, '\xFF'));
    EXPECT_EQ(Run("/s /b:x"), 8);
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    EXPECT_LT(usage.ru_maxrss, 400 * 1024) << "kilobytes; with every claim believed it would take two gigabytes";
    EXPECT_NE(m_strErrors.find("cut off at byte"), std::string::npos) << m_strErrors;
}

TEST_F(HostedProgram, TheDeepestWalkCanBeLoadedAgain) {
    const fs::path before = fs::current_path();
    fs::current_path(m_prefix / "drive_c");
    for (int i = 0; i < 1010; ++i) {
        fs::create_directory("d");
        fs::current_path("d");
    }
    fs::current_path(before);
    EXPECT_EQ(Run("/s /bc:deep"), 0) << m_strErrors;
    EXPECT_EQ(Run("/s /b:deep"), 0) << m_strErrors;
}

TEST_F(HostedProgram, WithoutAMachineTwoSnapshotsStillCompare) {
    ASSERT_EQ(Run("/s /bc:a"), 0);
    m_prefix.Write("drive_c/new.txt", "x");
    ASSERT_EQ(Run("/s /cc:b"), 0);
    EXPECT_EQ(Run("/s /b:a /c:b /g", "DELVANE_MACHINE= HOME=/nowhere"), 3);
    EXPECT_EQ(m_strErrors, "");
    EXPECT_NE(m_home.Read("Results/b - a.htm").find("new.txt"), std::string::npos);
}

TEST_F(HostedProgram, ResultsMayStandInAnyFolderOfTheHost) {
    m_home.MakeFolder("my results");
    EXPECT_EQ(Run("/s /bc:a '/res:" + m_home / "my results" + "'"), 0);
    EXPECT_TRUE(m_home.Exists("my results/a.dvs"));
    // The limit of a switch counts what was typed, and not the folder that it is typed in.
    const std::string deep = std::string(120, 'a') + "/" + std::string(120, 'b');
    m_home.MakeFolder(deep + "/out");
    EXPECT_EQ(Run("/s /bc:b /res:out/", "sh -c 'cd " + deep + " && exec \"$0\" \"$@\"'"), 0);
    EXPECT_TRUE(m_home.Exists(deep + "/out/b.dvs"));
    EXPECT_EQ(Run("/s /bc:c '/res:C:\\windows\\'"), 0) << "or on the machine itself";
    EXPECT_TRUE(m_prefix.Exists("drive_c/windows/c.dvs"));
}

// Even where its bin can be written to, as it can for root.
TEST_F(HostedProgram, AnInstallationKeepsNothingBesideTheProgram) {
    m_home.MakeFolder("usr/bin");
    m_strProgram = m_home / "usr/bin/delvane";
    fs::copy_file(DELVANE_PROGRAM, m_strProgram);
    const std::string ownFiles = "DELVANE_HOME= XDG_DATA_HOME=" + m_home.GetPath() + "/data";
    EXPECT_EQ(Run("/s /bc:a", ownFiles), 0);
    EXPECT_TRUE(m_home.Exists("usr/bin/Results/a.dvs")) << "a program by itself keeps its files together";
    fs::remove_all(m_home / "usr/bin/Results");
    fs::remove(m_home / "usr/bin/delvane.cfg");
    m_home.Write("usr/share/delvane/Using.htm");
    EXPECT_EQ(Run("/s /bc:a", ownFiles), 0);
    EXPECT_TRUE(m_home.Exists("data/delvane/Results/a.dvs"));
    EXPECT_EQ(std::distance(fs::directory_iterator(m_home / "usr/bin"), {}), 1) << "the program alone";
}

TEST_F(HostedProgram, AModuleThatCannotBeLoadedIsToldAndNotTheOneThatIsNotThere) {
    m_home.MakeFolder("usr/bin");
    m_strProgram = m_home / "usr/bin/delvane";
    fs::copy_file(DELVANE_PROGRAM, m_strProgram);
    EXPECT_EQ(Run("", "QT_QPA_PLATFORM=offscreen"), 32);
    EXPECT_NE(m_strErrors.find("delvane-qt.so is missing beside the program"), std::string::npos) << m_strErrors;
    m_home.Write("usr/lib/delvane/delvane-qt.so", "no module");
    EXPECT_EQ(Run("", "QT_QPA_PLATFORM=offscreen"), 32);
    EXPECT_NE(m_strErrors.find("lib/delvane/delvane-qt.so: file too short"), std::string::npos) << m_strErrors;
    EXPECT_EQ(Lines(m_strErrors), 1) << m_strErrors;
}

}  // namespace
}  // namespace delvane
