// A Windows volume as a machine: where its hives and folders are, whose account it is, what it shows of itself.
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

#include "platform/hosted/hosted_machine.h"
#include "samples/regf_writer.h"
#include "tests/support/search.h"
#include "tests/support/temporary_folder.h"

namespace delvane {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<CString>;

// A volume with the folders of that Windows, and one account, Anna.
struct CLayout {
    std::string m_strWindows = "Windows";
    std::string m_strUsers = "Users";
    std::string m_strConfig = "System32/config";
    std::string m_strUserHive = "NTUSER.DAT";
};

class CVolume : public CTemporaryFolder {
public:
    explicit CVolume(CLayout layout = {}) : m_layout(std::move(layout)) {
        auto& version = m_software.GetRoot().Make("Microsoft\\Windows NT\\CurrentVersion");
        SetText(version, "SystemRoot", "C:\\" + m_layout.m_strWindows);
        SetText(version, "CurrentVersion", "5.0");
        SetText(version, "CurrentBuildNumber", "2195");
        auto& profiles = version.Make("ProfileList");
        SetText(profiles, "ProfilesDirectory", "%SystemDrive%\\" + m_layout.m_strUsers);
        SetText(profiles, "AllUsersProfile", "All Users");
        SetText(profiles.Make("S-1-5-21-1-2-3-1001"), "ProfileImagePath", "C:\\" + m_layout.m_strUsers + "\\Anna");
        SetText(m_software.GetRoot().Make("Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders"),
                "Common AppData", "%ALLUSERSPROFILE%\\Application Data");
        SetText(m_software.GetRoot().Make("Classes\\.a"), "", "machine");
        SetText(m_software.GetRoot().Make("Classes\\.b"), "", "machine");
        m_system.GetRoot().Make("Select").Set("Current", 4, std::string("\2\0\0\0", 4));
        SetText(m_system.GetRoot().Make("ControlSet001\\Control\\ComputerName\\ComputerName"), "ComputerName", "OLD");
        SetText(m_system.GetRoot().Make("ControlSet002\\Control\\ComputerName\\ComputerName"), "ComputerName", "BENCH");
        SetText(m_user.GetRoot().Make("Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders"),
                "Personal", "%USERPROFILE%\\Papers");
        SetText(m_user.GetRoot().Make("Environment"), "TEMP", "%USERPROFILE%\\Temp");
        SetText(m_classes.GetRoot().Make(".a"), "", "user");
        auto& link = m_user.GetRoot().Make("ToClasses");
        link.m_nFlags = 0x10;
        link.Set("SymbolicLinkValue", 6, ToUtf16("\\Registry\\User\\S-1-5-21-1-2-3-1001_Classes"));
        WriteHives();
    }

    static void SetText(CRegfWriter::CKey& key, std::string_view name, const std::string& text) {
        key.Set(name, 2, ToUtf16(text + '\0'));
    }
    void WriteHives() {
        Write(Config("SOFTWARE"), m_software.Build());
        Write(Config("SYSTEM"), m_system.Build());
        Write(Config("SAM"), CRegfWriter().Build());
        Write(Config("SECURITY"), CRegfWriter().Build());
        Write(Account() + "/" + m_layout.m_strUserHive, m_user.Build());
        Write(Account() + "/AppData/Local/Microsoft/Windows/UsrClass.dat", m_classes.Build());
    }
    std::string Config(const std::string& name) const {
        return m_layout.m_strWindows + "/" + m_layout.m_strConfig + "/" + name;
    }
    std::string Account() const { return m_layout.m_strUsers + "/Anna"; }

    CLayout m_layout;
    CRegfWriter m_software;
    CRegfWriter m_system;
    CRegfWriter m_user;
    CRegfWriter m_classes;
};

class Volume : public testing::Test {
protected:
    Volume() { unsetenv("DELVANE_USER"); }
    ~Volume() override { unsetenv("DELVANE_USER"); }

    CHostedMachine& Open(const CVolume& volume) {
        setenv("DELVANE_MACHINE", volume.GetPath().c_str(), 1);
        const CMachineChoice choice = ChooseMachine();
        unsetenv("DELVANE_MACHINE");
        EXPECT_TRUE(choice.m_bIsVolume) << choice.m_strProblem;
        m_pMachine = MakeHostedMachine(choice);
        return *m_pMachine;
    }
    // The text of a value, or an error's number.
    CString Text(HKEY root, const std::string& path, const char* name) {
        HKEY key = root;
        CKeyInfo info;
        m_pMachine->GetRegistry().RegQueryInfoKey(root, info);
        std::vector<HKEY> open;
        std::uint32_t error = ERROR_SUCCESS;
        for (std::string rest = path; !rest.empty() && error == ERROR_SUCCESS;) {
            const std::string component = rest.substr(0, rest.find('\\'));
            rest.erase(0, component.size() + 1);
            error = m_pMachine->GetRegistry().RegOpenKeyEx(key, component, key);
            if (error == ERROR_SUCCESS) open.push_back(key);
        }
        std::string bytes(100, '\0');
        CRoom room{bytes.data(), 100};
        if (error == ERROR_SUCCESS) error = m_pMachine->GetRegistry().RegQueryValueEx(key, name, nullptr, room);
        std::for_each(open.rbegin(), open.rend(), [&](HKEY opened) { m_pMachine->GetRegistry().RegCloseKey(opened); });
        return error == ERROR_SUCCESS ? bytes.substr(0, bytes.find('\0')) : "error " + std::to_string(error);
    }
    Lines Sentences() {
        Lines sentences;
        for (const CNotice& notice : m_pMachine->TakeNotices())
            sentences.push_back(notice.m_strSentence);
        return sentences;
    }
    CString ComputerName() {
        CString name;
        return m_pMachine->GetComputerName(name) ? name : "";
    }
    CString User() {
        CString name;
        return m_pMachine->GetUserName(name) ? name : "";
    }
    CString Folder(int kind) {
        CString path;
        return m_pMachine->LoadFolderLibrary()(kind, path) ? path : "";
    }

    std::unique_ptr<CHostedMachine> m_pMachine;
};

TEST_F(Volume, IsFoundInEverySpelling) {
    const CLayout kLayouts[] = {
        {},
        {"WINNT", "WINNT/Profiles", "System32/config", "NTUSER.DAT"},
        {"WINNT", "Documents and Settings", "system32/config", "ntuser.dat"},
        {"WINDOWS", "USERS", "SYSTEM32/CONFIG", "ntuser.DAT"},
    };
    for (const CLayout& layout : kLayouts) {
        SCOPED_TRACE(layout.m_strUsers);
        const CVolume volume(layout);
        CHostedMachine& machine = Open(volume);
        EXPECT_TRUE(machine.IsPresent());
        std::string users = layout.m_strUsers;
        std::replace(users.begin(), users.end(), '/', '\\');
        EXPECT_EQ(User(), "Anna");
        EXPECT_EQ(machine.GetWindowsDirectory(), "C:\\" + layout.m_strWindows);
        EXPECT_EQ(machine.GetSystemDirectory(), "C:\\" + layout.m_strWindows + "\\System32");
        EXPECT_EQ(machine.GetTempPath(), "C:\\" + users + "\\Anna\\Temp\\");
        EXPECT_EQ(ComputerName(), "BENCH") << "of the control set in use";
        EXPECT_EQ(machine.GetVersion().m_dwMajorVersion, 5U);
        EXPECT_EQ(machine.GetVersion().m_dwBuildNumber, 2195U);
        EXPECT_EQ(Folder(5), "C:\\" + users + "\\Anna\\Papers");
        EXPECT_EQ(Folder(35), "C:\\" + layout.m_strUsers + "\\All Users\\Application Data");
        EXPECT_EQ(machine.GetLogicalDrives(), 4U) << "the whole volume is drive C:";
        EXPECT_TRUE(machine.TakeNotices().empty());
    }
}

TEST_F(Volume, MountsTheHivesWhereWindowsDoes) {
    const CVolume volume;
    Open(volume);
    constexpr const char* kName = "CurrentControlSet\\Control\\ComputerName\\ComputerName";
    EXPECT_EQ(Text(HKEY_LOCAL_MACHINE, "SYSTEM\\" + std::string(kName), "ComputerName"), "BENCH");
    EXPECT_EQ(Text(HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes\\.a", ""), "machine");
    EXPECT_EQ(Text(HKEY_LOCAL_MACHINE, "SAM", ""), "error 2") << "it has no values, but it is there";
    EXPECT_EQ(Text(HKEY_CURRENT_USER, "Software\\Classes\\.a", ""), "user");
    EXPECT_EQ(Text(HKEY_CURRENT_USER, "ToClasses\\.a", ""), "user") << "a link names the account";
    EXPECT_EQ(Text(HKEY_CLASSES_ROOT, ".a", ""), "user") << "the user's classes lie over the machine's";
    EXPECT_EQ(Text(HKEY_CLASSES_ROOT, ".b", ""), "machine");
    CKeyInfo info;
    EXPECT_EQ(m_pMachine->GetRegistry().RegQueryInfoKey(HKEY_LOCAL_MACHINE, info), ERROR_SUCCESS);
    EXPECT_EQ(info.m_nSubkeys, 4U);
}

TEST_F(Volume, AnAccountIsChosen) {
    CVolume volume;
    CVolume::SetText(volume.m_user.GetRoot().Make("Who"), "", "Ben");
    volume.Write("Users/Ben/ntuser.dat", volume.m_user.Build());
    for (const char* const other : {"Default", "Public", "systemprofile"})
        volume.Write("Users/" + std::string(other) + "/NTUSER.DAT", volume.m_user.Build());
    const auto now = fs::file_time_type::clock::now();
    fs::last_write_time(volume / "Users/Anna/NTUSER.DAT", now - std::chrono::hours(2));
    fs::last_write_time(volume / "Users/Ben/ntuser.dat", now - std::chrono::hours(1));
    Open(volume);
    EXPECT_EQ(User(), "Ben") << "whose hive was written last";
    EXPECT_EQ(Text(HKEY_CURRENT_USER, "Who", ""), "Ben");
    fs::last_write_time(volume / "Users/Anna/NTUSER.DAT", now - std::chrono::hours(1));
    Open(volume);
    EXPECT_EQ(User(), "Anna") << "at the same time the first by name";
    setenv("DELVANE_USER", "anna", 1);
    Open(volume);
    EXPECT_EQ(User(), "Anna");
    EXPECT_EQ(Text(HKEY_CURRENT_USER, "Who", ""), "error 2");
    setenv("DELVANE_USER", "Carl", 1);
    EXPECT_FALSE(Open(volume).IsPresent());
    EXPECT_EQ(m_pMachine->GetProblem(),
              "DELVANE_USER names no account of " + volume.GetPath() + ": Carl; there are Anna, Ben");
}

TEST_F(Volume, AHiveThatIsMissingOrDamagedCostsItself) {
    CVolume volume;
    const std::string classes = volume.Account() + "/AppData/Local/Microsoft/Windows/UsrClass.dat";
    fs::remove(volume / volume.Config("SAM"));
    volume.Write(classes, "nothing of the kind");
    CHostedMachine& machine = Open(volume);
    EXPECT_TRUE(machine.IsPresent());
    EXPECT_EQ(Text(HKEY_CLASSES_ROOT, ".a", ""), "machine");
    EXPECT_EQ(Text(HKEY_CURRENT_USER, "Environment", "TEMP"), "%USERPROFILE%\\Temp");
    CKeyInfo info;
    machine.GetRegistry().RegQueryInfoKey(HKEY_LOCAL_MACHINE, info);
    EXPECT_EQ(info.m_nSubkeys, 3U) << "SOFTWARE, SYSTEM and SECURITY";
    EXPECT_EQ(Sentences(), (Lines{(volume / volume.Config("SAM")) + " is missing; HKLM\\SAM is left out",
                                  (volume / classes) + " is no registry hive; the user's classes are left out"}));
    EXPECT_TRUE(machine.TakeNotices().empty()) << "told once";
    volume.WriteHives();
    volume.Write(volume.Account() + "/NTUSER.DAT", "regf");
    Open(volume);
    EXPECT_EQ(Text(HKEY_CURRENT_USER, "Environment", "TEMP"), "error 2");
    EXPECT_EQ(Text(HKEY_CLASSES_ROOT, ".a", ""), "user") << "the user's classes are another file";
    EXPECT_EQ(Sentences(), Lines{(volume / volume.Account()) + "/NTUSER.DAT is no registry hive; HKCU stays empty"});
    fs::remove_all(volume / "Users");
    EXPECT_TRUE(Open(volume).IsPresent());
    EXPECT_EQ(User(), "");
    EXPECT_EQ(Text(HKEY_CURRENT_USER, "Environment", "TEMP"), "error 2");
    EXPECT_EQ(Text(HKEY_CLASSES_ROOT, ".a", ""), "machine");
    volume.m_system.GetRoot().Make("Select").Set("Current", 4, std::string("\7\0\0\0", 4));
    volume.WriteHives();
    Open(volume);
    const Lines notices = Sentences();
    ASSERT_EQ(notices.size(), 1U);
    EXPECT_NE(notices.front().find("CurrentControlSet is missing"), CString::npos);
}

TEST_F(Volume, WithoutItsMachineHivesItIsNoMachine) {
    CVolume volume;
    const std::string whole = volume.Read(volume.Config("SYSTEM"));
    struct {
        const char* m_hive;
        std::string m_bytes;
        const char* m_problem;
    } const kCases[] = {
        {"SOFTWARE", "", " is no registry hive"},
        {"SYSTEM", "regf", " is no registry hive"},
        {"SYSTEM", whole.substr(0, whole.size() - 1), " is cut off: it is shorter than its head says"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.m_problem);
        volume.WriteHives();
        volume.Write(volume.Config(test.m_hive), test.m_bytes);
        CHostedMachine& machine = Open(volume);
        EXPECT_FALSE(machine.IsPresent());
        EXPECT_EQ(machine.GetProblem(), (volume / volume.Config(test.m_hive)) + test.m_problem);
        const Lines notices = Sentences();
        EXPECT_EQ(std::count(notices.begin(), notices.end(), machine.GetProblem()), 1);
    }
    fs::remove(volume / volume.Config("SYSTEM"));
    EXPECT_FALSE(Open(volume).IsPresent());
}

TEST_F(Volume, HivesAreReadAnewWhenTheyHaveChanged) {
    CVolume volume;
    Open(volume);
    EXPECT_EQ(Text(HKEY_LOCAL_MACHINE, "SOFTWARE\\New", ""), "error 2");
    CVolume::SetText(volume.m_software.GetRoot().Make("New"), "", "there");
    volume.WriteHives();
    m_pMachine->BeginWalk();
    EXPECT_EQ(Text(HKEY_LOCAL_MACHINE, "SOFTWARE\\New", ""), "there");
}

TEST_F(Volume, LinksOutOfItAreNotListed) {
    CVolume volume;
    const CTemporaryFolder outside;
    outside.Write("file", "x");
    volume.Write("Inside/file", "x");
    fs::create_directory_symlink(outside.GetPath(), volume / "Out");
    fs::create_symlink(outside / "file", volume / "out.txt");
    fs::create_directory_symlink("Inside", volume / "In");
    CHostedMachine& machine = Open(volume);
    std::vector<std::string> names;
    const auto search = SearchOf(machine, "C:\\");
    for (CFindData data; search->Next(data);)
        names.emplace_back(data.m_name);
    EXPECT_EQ(names, (std::vector<std::string>{"In", "Inside", "Users", "Windows"}));
    CFileWords words;
    EXPECT_NE(machine.GetSearches().FindPath("C:\\Out\\file", words), ERROR_SUCCESS);
    EXPECT_EQ(machine.GetSearches().FindPath("C:\\In\\file", words), ERROR_SUCCESS);
}

}  // namespace
}  // namespace delvane
