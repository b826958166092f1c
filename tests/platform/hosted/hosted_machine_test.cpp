// A Wine prefix as a machine: its drives, identity, paths and searches.
#include "platform/hosted/hosted_machine.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/hosted/files/host_file.h"
#include "tests/support/prefix.h"
#include "tests/support/search.h"

namespace delvane {
namespace {

namespace fs = std::filesystem;

class HostedMachine : public testing::Test {
protected:
    CHostedMachine& Open(const CPrefix& prefix) {
        m_pMachine = MakePrefix(prefix.GetPath());
        m_pHost = MakeHostedHost(m_pMachine->GetPaths(), m_home.GetPath());
        return *m_pMachine;
    }
    // The attributes of what the search lists, by name.
    std::map<std::string, std::uint32_t> List(CHostedMachine& machine, const char* path) {
        std::map<std::string, std::uint32_t> entries;
        const auto search = SearchOf(machine, path);
        if (search == nullptr) return {{"(no search)", 0}};
        std::string before;
        for (CFindData data; search->Next(data);) {
            EXPECT_LT(before, data.m_name) << "names come in byte order";
            before = data.m_name;
            entries[before] = data.m_dwAttributes;
        }
        return entries;
    }
    // How many directories a walk enters below the path.
    std::size_t CountWalked(CHostedMachine& machine, const std::string& path) {
        const auto search = SearchOf(machine, path);
        if (search == nullptr) return 0;
        std::size_t count = 1;
        for (CFindData data; search->Next(data);) {
            if ((data.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
                count += CountWalked(machine, path + "\\" + std::string(data.m_name));
            }
        }
        return count;
    }

    CTemporaryFolder m_home;
    std::unique_ptr<CHostedMachine> m_pMachine;
    std::unique_ptr<CHost> m_pHost;
};

TEST_F(HostedMachine, VariablesThatMultiplyComeToAnEnd) {
    std::string bomb = "\n[Environment] 1700000001\n\"TEMP\"=\"%A%\"\n\"A\"=\"";
    for (int i = 0; i < 40; ++i)
        bomb += "%A%";
    EXPECT_LT(Open(CPrefix({}, bomb + "\"\n")).GetTempPath().size(), 100'000U);
}

TEST_F(HostedMachine, FoldersThatLinkToEachOtherAreListedSomeTimes) {
    const CPrefix prefix;
    constexpr int kFolders = 12;
    for (int i = 0; i < kFolders; ++i) {
        const std::string folder = prefix.MakeFolder("drive_c/web/" + std::to_string(i));
        for (int other = 0; other < kFolders; ++other)
            fs::create_directory_symlink("../" + std::to_string(other), folder + "/to" + std::to_string(other));
    }
    CHostedMachine& machine = Open(prefix);
    const std::size_t walked = CountWalked(machine, "C:\\web");
    EXPECT_GT(walked, 100U);
    EXPECT_LE(walked, 1U + kFolders + 16 * kFolders);
    machine.BeginWalk();
    EXPECT_EQ(CountWalked(machine, "C:\\web"), walked) << "each walk begins anew";
    ASSERT_EQ(machine.TakeNotices().size(), 1U);
    prefix.MakeFolder("drive_c/fan/target");
    for (int i = 0; i < 20; ++i)
        fs::create_directory_symlink("target", prefix / ("drive_c/fan/to" + std::to_string(i)));
    EXPECT_EQ(CountWalked(machine, "C:\\fan"), 1U + 1 + 16) << "itself, and so many times by links";
}

TEST_F(HostedMachine, ReadsItsIdentityOutOfTheRegistry) {
    const CPrefix prefix;
    CHostedMachine& machine = Open(prefix);
    const CVersionRecord version = machine.GetVersion();
    EXPECT_EQ(version.m_dwMajorVersion, 6U);
    EXPECT_EQ(version.m_dwMinorVersion, 1U);
    EXPECT_EQ(version.m_dwBuildNumber, 7601U);
    EXPECT_EQ(version.m_strServicePack, "Service Pack 1");
    CString text;
    EXPECT_TRUE(machine.GetComputerName(text));
    EXPECT_EQ(text, "BENCH");
    EXPECT_TRUE(machine.GetUserName(text));
    EXPECT_EQ(text, "tester");
    EXPECT_EQ(machine.GetSystemDirectory(), "C:\\windows\\system32");
    EXPECT_EQ(machine.GetTempPath(), "C:\\users\\tester\\Temp\\");
    const CFolderFunction folder = machine.LoadFolderLibrary();
    EXPECT_TRUE(folder(CSIDL_PERSONAL, text));
    EXPECT_EQ(text, "C:\\users\\tester\\Documents") << "user shell folders are expanded";
    EXPECT_TRUE(folder(CSIDL_COMMON_APPDATA, text));
    EXPECT_EQ(text, "C:\\ProgramData");
    EXPECT_TRUE(folder(CSIDL_PROGRAM_FILES, text));
    EXPECT_EQ(text, "C:\\Program Files");
    EXPECT_FALSE(folder(CSIDL_APPDATA, text));
    EXPECT_TRUE(machine.TakeNotices().empty());
}

// As the capture does: through links, and of what stands twice the last.
TEST_F(HostedMachine, IdentityIsReadAsACaptureReadsIt) {
    const auto link = [](const std::string& key, const std::string& target) {
        std::string line = "\n[" + key + "] 1\n#link\n\"SymbolicLinkValue\"=hex(6):";
        constexpr std::string_view kDigits = "0123456789abcdef";
        for (const char c : target)
            line.append({kDigits[static_cast<unsigned char>(c) >> 4], kDigits[c & 15], ',', '0', '0', ','});
        line.back() = '\n';
        return line;
    };
    const CPrefix prefix(
        "\n[System\\\\ControlSet001\\\\Control\\\\ComputerName\\\\ComputerName] 1\n\"ComputerName\"=\"LINKED\"\n"
        "\n[Software\\\\Microsoft\\\\Windows NT\\\\CURRENTVERSION] 1\n\"systemroot\"=\"c:\\\\windows\"\n"
        "\n[Software\\\\Microsoft\\\\Windows\\\\CurrentVersion] 1\n\"ProgramFilesDir\"=\"c:\\\\Programs\"\n",
        link("Environment", "\\Registry\\User\\S-1-5-21-0-0-0-1000\\Real") + "\n[Real] 1\n\"TEMP\"=\"d:\\\\t\"\n");
    std::string system = prefix.Read("system.reg");
    system.erase(system.find("[System\\\\CurrentControlSet"), std::string("[System\\\\CurrentControlSet").size());
    system.insert(system.find("\\\\Control\\\\ComputerName"), "[System\\\\ControlSet002");
    prefix.Write("system.reg",
                 system + link("System\\\\CurrentControlSet", "\\Registry\\Machine\\System\\ControlSet001"));
    CHostedMachine& machine = Open(prefix);
    CString text;
    EXPECT_TRUE(machine.GetComputerName(text));
    EXPECT_EQ(text, "LINKED");
    EXPECT_EQ(machine.GetSystemDirectory(), "C:\\windows\\system32") << "drives have capitals";
    EXPECT_EQ(machine.GetTempPath(), "D:\\t\\");
    EXPECT_TRUE(machine.LoadFolderLibrary()(CSIDL_PROGRAM_FILES, text));
    EXPECT_EQ(text, "C:\\Programs");
}

TEST_F(HostedMachine, TellsAnotherVersionThanTheRegistryWhereWineWould) {
    const CPrefix modern(
        "\n[Software\\\\Microsoft\\\\Windows NT\\\\CurrentVersion]\n\"CurrentMajorVersionNumber\"=dword:0000000a\n"
        "\"CurrentMinorVersionNumber\"=dword:00000000\n");
    EXPECT_EQ(Open(modern).GetVersion().m_dwMajorVersion, 10U);
    const CPrefix old("", "\n[Software\\\\Wine]\n\"Version\"=\"win98\"\n");
    const CVersionRecord version = Open(old).GetVersion();
    EXPECT_EQ(version.m_dwPlatformId, VER_PLATFORM_WIN32_WINDOWS);
    EXPECT_EQ(version.m_dwMinorVersion, 10U);
}

TEST_F(HostedMachine, DamagedRegistryTextIsToldAndTheRestCounts) {
    const CPrefix prefix;
    const std::string whole = prefix.Read("system.reg");
    prefix.Write("system.reg", whole.substr(0, whole.find("ProgramFilesDir") + 20));
    fs::remove(prefix / "user.reg");
    CHostedMachine& machine = Open(prefix);
    std::vector<CNotice> notices = machine.TakeNotices();
    ASSERT_EQ(notices.size(), 2U);
    const std::string why = "open: No such file or directory (2); HKCU stays empty";
    EXPECT_EQ(notices[0], (CNotice{(prefix / "user.reg") + ": " + why, prefix / "user.reg", ERROR_FILE_NOT_FOUND}));
    EXPECT_EQ(notices[0].GetReason(), why);
    EXPECT_EQ(notices[1].GetReason(), "is cut off: line 13: the last line has no end");
    EXPECT_FALSE(machine.IsPresent()) << "half a registry is no machine to take a snapshot of";
    EXPECT_EQ(machine.GetProblem(), notices[1].m_strSentence);
    EXPECT_EQ(machine.GetVersion().m_dwBuildNumber, 7601U);
    prefix.Write("user.reg", "garbage");
    prefix.Write("system.reg", whole + "[Key] 1\n\"a\"=broken\n");
    notices = Open(prefix).TakeNotices();
    ASSERT_EQ(notices.size(), 1U);
    EXPECT_EQ(notices[0].m_strSentence, (prefix / "user.reg") + " is no registry text of Wine; HKCU stays empty");
    EXPECT_EQ(notices[0].m_dwCode, ERROR_NOT_REGISTRY_FILE);
    EXPECT_TRUE(m_pMachine->IsPresent());
    HKEY key = 0;
    ASSERT_EQ(m_pMachine->GetRegistry().RegOpenKeyEx(HKEY_LOCAL_MACHINE, "Key", key), ERROR_SUCCESS);
    notices = m_pMachine->TakeNotices();
    ASSERT_EQ(notices.size(), 1U) << "a line that cannot be read costs that line, and is told when it is met";
    EXPECT_NE(notices[0].m_strSentence.find("system.reg is damaged: line "), CString::npos);
    EXPECT_EQ(notices[0].m_dwCode, ERROR_REGISTRY_CORRUPT);
    prefix.Write("system.reg", "REGEDIT4\n");
    EXPECT_FALSE(Open(prefix).IsPresent());
}

// Another process stands in for the server: a process does not see its own locks.
TEST_F(HostedMachine, AWineThatRunsIsToldAtACapture) {
    const CPrefix prefix;
    struct stat status {};
    ASSERT_EQ(stat(prefix.GetPath().c_str(), &status), 0);
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "wine/server-%llx-%llx/lock",
                  static_cast<unsigned long long>(status.st_dev), static_cast<unsigned long long>(status.st_ino));
    const std::string lockFile = m_home.Write(name.data());
    setenv("XDG_RUNTIME_DIR", m_home.GetPath().c_str(), 1);
    CKeyInfo info;
    Open(prefix).GetRegistry().RegQueryInfoKey(HKEY_LOCAL_MACHINE, info);
    EXPECT_TRUE(m_pMachine->TakeNotices().empty()) << "the lock is nobody's";
    const CDescriptor file(open(lockFile.c_str(), O_RDWR));
    int channel[2];
    ASSERT_EQ(pipe(channel), 0);
    const pid_t server = fork();
    if (server == 0) {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_len = 1;
        const bool isLocked = fcntl(file.Get(), F_SETLK, &lock) == 0 && write(channel[1], "", 1) == 1;
        if (isLocked) pause();
        _exit(0);
    }
    close(channel[1]);
    char byte = 0;
    EXPECT_EQ(read(channel[0], &byte, 1), 1);
    close(channel[0]);
    EXPECT_TRUE(Open(prefix).TakeNotices().empty()) << "nor is it a matter of comparisons";
    m_pMachine->GetRegistry().RegQueryInfoKey(HKEY_LOCAL_MACHINE, info);
    const std::vector<CNotice> notices = m_pMachine->TakeNotices();
    kill(server, SIGKILL);
    waitpid(server, nullptr, 0);
    unsetenv("XDG_RUNTIME_DIR");
    ASSERT_EQ(notices.size(), 1U);
    EXPECT_NE(notices[0].m_strSentence.find("wineserver -w"), CString::npos);
}

TEST_F(HostedMachine, DrivesAreTheLinksAndTheHostsRootIsAShare) {
    const CPrefix prefix("\n[Software\\\\Wine\\\\Drives]\n\"d:\"=\"cdrom\"\n");
    prefix.Write("disc/.windows-label", "My Disc  \nsecond line");
    fs::create_directory_symlink("../disc", prefix / "dosdevices/d:");
    fs::create_directory_symlink("../gone", prefix / "dosdevices/e:");
    fs::create_symlink("/dev/null", prefix / "dosdevices/c::");
    CHostedMachine& machine = Open(prefix);
    EXPECT_EQ(machine.GetLogicalDrives(), 0x200001CU);
    EXPECT_EQ(machine.GetDriveType("C:\\"), DRIVE_FIXED);
    EXPECT_EQ(machine.GetDriveType("D:\\"), DRIVE_CDROM);
    EXPECT_EQ(machine.GetDriveType("E:\\"), DRIVE_NO_ROOT_DIR);
    EXPECT_EQ(machine.GetDriveType("Z:\\"), DRIVE_REMOTE);
    EXPECT_EQ(machine.GetDriveType("Q:\\"), DRIVE_NO_ROOT_DIR);
    CString label;
    EXPECT_EQ(machine.GetVolumeLabel("D:\\", label), ERROR_SUCCESS);
    EXPECT_EQ(label, "My Disc");
    EXPECT_EQ(machine.GetConnection("Z:", label), ERROR_NOT_CONNECTED);
    fs::remove(prefix / "dosdevices/c:");
    fs::create_directory_symlink("../moved", prefix / "dosdevices/c:");
    EXPECT_EQ(Open(prefix).GetDriveType("C:\\"), DRIVE_FIXED) << "drive_c is there, wherever the link leads";
    EXPECT_TRUE(m_pHost->DirectoryExists("C:\\windows"));
}

TEST_F(HostedMachine, PathsAreFoundWithoutRegardToCaseAndStayOnTheirDrive) {
    const CPrefix prefix;
    prefix.Write("drive_c/Program Files/App/Lies Mich.TXT", "x");
    prefix.Write("drive_c/Twice/a", "lower");
    prefix.Write("drive_c/TWICE/A", "upper");
    Open(prefix);
    EXPECT_TRUE(m_pHost->FileExists("c:\\PROGRAM FILES\\app\\lies mich.txt"));
    EXPECT_TRUE(m_pHost->FileExists("C:/Program Files//App\\Lies Mich.TXT"));
    EXPECT_TRUE(m_pHost->DirectoryExists("C:\\windows\\"));
    EXPECT_EQ(m_pHost->ReadFile("C:\\Twice\\a", 100).GetBytes(), "lower") << "an exact match first";
    EXPECT_EQ(m_pHost->ReadFile("C:\\tWICE\\A", 100).GetBytes(), "upper") << "then the first by byte";
    EXPECT_FALSE(m_pHost->FileExists("C:\\Program Files\\missing"));
    EXPECT_TRUE(m_pHost->DirectoryExists("C:\\..\\..\\windows")) << "no way above a drive's root";
    EXPECT_FALSE(m_pHost->FileExists("C:\\..\\system.reg"));
    EXPECT_FALSE(m_pHost->FileExists("X:\\windows"));
    EXPECT_FALSE(m_pHost->FileExists("relative"));
    EXPECT_FALSE(m_pHost->FileExists(std::string_view("C:\\windows\0\\x", 13)));
}

TEST_F(HostedMachine, ListsAttributesTimesAndSizesAsWineShowsThem) {
    const CPrefix prefix;
    prefix.Write("drive_c/t/plain.txt", "12345");
    prefix.Write("drive_c/t/.dot");
    chmod(prefix.Write("drive_c/t/locked").c_str(), 0444);
    chmod(prefix.MakeFolder("drive_c/t/lockeddir").c_str(), 0555);
    fs::create_symlink("plain.txt", prefix / "drive_c/t/filelink");
    fs::create_symlink("lockeddir", prefix / "drive_c/t/dirlink");
    fs::create_symlink("nowhere", prefix / "drive_c/t/dangling");
    fs::create_symlink("loop2", prefix / "drive_c/t/loop1");
    fs::create_symlink("loop1", prefix / "drive_c/t/loop2");
    fs::create_symlink("/proc", prefix / "drive_c/t/proc");
    fs::create_symlink("../..", prefix / "drive_c/t/prefix");
    ASSERT_EQ(mkfifo((prefix / "drive_c/t/pipe").c_str(), 0600), 0);
    CHostedMachine& machine = Open(prefix);
    const std::map<std::string, std::uint32_t> expected = {{".dot", 0x22},     {"dirlink", 0x411},  {"filelink", 0x20},
                                                           {"locked", 0x21},   {"lockeddir", 0x11}, {"pipe", 0x20},
                                                           {"plain.txt", 0x20}};
    EXPECT_EQ(List(machine, "C:\\t"), expected);
    timespec times[2] = {{-1000, 0}, {1'600'000'000, 123'456'789}};
    utimensat(AT_FDCWD, (prefix / "drive_c/t/plain.txt").c_str(), times, 0);
    CFileWords words;
    ASSERT_EQ(machine.GetSearches().FindPath("C:\\t\\FILELINK", words), ERROR_SUCCESS);
    EXPECT_EQ(words.GetSize(), 5U);
    EXPECT_EQ(words.m_ftLastWrite.GetTicks(), kUnixEpochTicks + 16'000'000'001'234'567U) << "rounded down to a tick";
    EXPECT_EQ(words.m_ftCreation, words.m_ftLastWrite);
    EXPECT_EQ(words.m_ftLastAccess.GetTicks(), kUnixEpochTicks - 1000 * kTicksPerSecond);
}

TEST_F(HostedMachine, HiddenAndSystemComeFromTheExtendedAttribute) {
    const CPrefix prefix;
    const std::string file = prefix.Write("drive_c/t/f");
    if (setxattr(file.c_str(), "user.DOSATTRIB", "0x27", 4, 0) != 0) GTEST_SKIP() << "no extended attributes here";
    setxattr(prefix.Write("drive_c/t/g").c_str(), "user.DOSATTRIB", "6", 1, 0);
    setxattr(prefix.Write("drive_c/t/h").c_str(), "user.DOSATTRIB", "0x2zz", 5, 0);
    setxattr(prefix.Write("drive_c/t/i").c_str(), "user.DOSATTRIB", "0x2", 4, 0);
    const std::map<std::string, std::uint32_t> expected = {{"f", 0x26}, {"g", 0x20}, {"h", 0x20}, {"i", 0x22}};
    EXPECT_EQ(List(Open(prefix), "C:\\t"), expected) << "only hidden and system count, and only behind 0x";
}

TEST_F(HostedMachine, DotFilesAreShownWhereThePrefixSaysSo) {
    const CPrefix prefix("", "\n[Software\\\\Wine]\n\"ShowDotFiles\"=\"Y\"\n");
    prefix.Write("drive_c/t/.dot");
    EXPECT_EQ(List(Open(prefix), "C:\\t")[".dot"], 0x20U);
}

TEST_F(HostedMachine, AWalkLeavesAccessTimesAsTheyWere) {
    const CPrefix prefix;
    const std::string file = prefix.Write("drive_c/t/f", "MZ");
    timespec times[2] = {{1000, 0}, {2000, 0}};  // an access before the last write is one that reading would renew
    for (const std::string& path : {file, prefix / "drive_c/t"})
        utimensat(AT_FDCWD, path.c_str(), times, 0);
    CHostedMachine& machine = Open(prefix);
    EXPECT_EQ(List(machine, "C:\\t").size(), 1U);
    CLoadedImage image;
    machine.MapAndLoad("C:\\t\\f", image);
    EXPECT_TRUE(image.fDOSImage);
    for (const std::string& path : {file, prefix / "drive_c/t"}) {
        struct stat status {};
        stat(path.c_str(), &status);
        EXPECT_EQ(status.st_atim.tv_sec, 1000) << path;
    }
}

TEST_F(HostedMachine, LinksRoundInACircleEndTheWalk) {
    const CPrefix prefix;
    fs::create_directory_symlink(".", prefix / "drive_c/self");
    prefix.MakeFolder("drive_c/a/b");
    fs::create_directory_symlink("../..", prefix / "drive_c/a/b/top");
    fs::create_directory_symlink("../a", prefix / "drive_c/a/again");
    fs::create_directory_symlink("a/b", prefix / "drive_c/side");
    CHostedMachine& machine = Open(prefix);
    // The drive, windows, system32, a, a\b, and side as a second way to b. From side its link "top" leads to an
    // ancestor.
    EXPECT_EQ(CountWalked(machine, "C:"), 6U);
    EXPECT_EQ(List(machine, "C:\\a")["again"], 0x410U) << "listed, though not entered";
}

TEST_F(HostedMachine, DeepTreesAreWalkedToTheLimitAndNotBeyond) {
    const CPrefix prefix;
    fs::path deep = prefix / "drive_c";
    const fs::path before = fs::current_path();
    fs::current_path(deep);
    for (std::uint32_t i = 0; i < kMaxTreeDepth + 5; ++i) {
        fs::create_directory("d");
        fs::current_path("d");
    }
    fs::current_path(before);
    EXPECT_EQ(CountWalked(Open(prefix), "C:"), kMaxTreeDepth + 2) << "and windows\\system32";
}

TEST_F(HostedMachine, FoldersOfTheProgramAreDrivePathsOnlyOnADisk) {
    const CPrefix prefix;
    const auto folderOf = [&](const std::string& program) {
        return MakeHostedHost(Open(prefix).GetPaths(), program)->GetModuleFileName();
    };
    const std::string real = fs::canonical(prefix.MakeFolder("drive_c/Tools"));
    EXPECT_EQ(folderOf(real), "C:\\Tools\\delvane");
    const auto hostForm = [](std::string path) {
        std::replace(path.begin(), path.end(), '/', '\\');
        return path;
    };
    EXPECT_EQ(folderOf(m_home.GetPath()), hostForm(m_home.GetPath()) + "\\delvane");
    EXPECT_EQ(m_pHost->GetDocumentFolder(), hostForm(ExecutableFolder())) << "there is no help page beside the tests";
}

TEST_F(HostedMachine, TheDocumentsStandBesideTheProgramOrInTheShareOfItsInstallation) {
    const std::string bin = m_home.MakeFolder("bin");
    EXPECT_EQ(FindDocumentFolder(bin), bin) << "there are none";
    m_home.MakeFolder("share/delvane");
    EXPECT_EQ(FindDocumentFolder(bin), bin) << "a folder of that name is not enough: it may hold somebody's results";
    m_home.Write("share/delvane/Using.htm");
    EXPECT_EQ(FindDocumentFolder(bin), fs::canonical(m_home / "share/delvane"));
    m_home.Write("bin/Using.htm");
    EXPECT_EQ(FindDocumentFolder(bin), bin);
}

TEST_F(HostedMachine, WithoutAMachineItsOwnFilesStillWork) {
    m_pMachine = MakeHostedMachine({{}, "nothing here", true});
    CHostedMachine& machine = *m_pMachine;
    m_pHost = MakeHostedHost(machine.GetPaths(), m_home.GetPath());
    EXPECT_FALSE(machine.IsPresent());
    EXPECT_EQ(machine.TakeNotices(), std::vector<CNotice>{{"nothing here"}});
    EXPECT_EQ(SearchOf(machine, "C:"), nullptr);
    EXPECT_EQ(machine.GetDriveType("C:\\"), DRIVE_FIXED) << "what two snapshots hold may be compared";
    std::string host = m_home.GetPath() + "/x";
    std::replace(host.begin(), host.end(), '/', '\\');
    const auto file = m_pHost->CreateFile(host);
    ASSERT_NE(file, nullptr);
    file->Write("bytes");
    file->Commit();
    EXPECT_EQ(m_home.Read("x"), "bytes");
}

}  // namespace
}  // namespace delvane
