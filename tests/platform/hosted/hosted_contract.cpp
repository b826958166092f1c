// A Wine prefix and a Windows volume with the contents of the contract.
#include "platform/hosted/hosted_machine.h"
#include "samples/regf_writer.h"
#include "tests/support/contract_machine.h"
#include "tests/support/prefix.h"

namespace delvane {
namespace {

namespace fs = std::filesystem;

void WriteFiles(const CTemporaryFolder& machine, const std::string& folder) {
    for (const char* name : {"Alpha.txt", "app.exe", "beta/inner.txt", "driver.sys", "old.exe", "Été.txt"})
        machine.Write(folder + "/" + name, ContractBytes(name));
    machine.MakeFolder(folder + "/empty");
    const auto seconds = std::chrono::seconds((kContractTime - kUnixEpochTicks) / kTicksPerSecond);
    fs::last_write_time(machine / (folder + "/Alpha.txt"),
                        std::chrono::file_clock::from_sys(std::chrono::sys_seconds(seconds)));
}

class CPrefixContract : public CContractMachine {
public:
    CPrefixContract() { WriteFiles(m_prefix, "drive_c/Contract"); }
    CMachine& Get() override { return *m_pMachine; }
    CHost& GetHost() override { return *m_pHost; }
    CString GetFolder() const override { return "C:\\Contract"; }
    CString GetOwnFolder() const override { return "C:\\Own"; }

private:
    CPrefix m_prefix{{}, R"(
[Software\\Contract] 1700000000
@="unnamed"
"Binary"=hex:00,01,ff
"Expand"=str(2):"%x%"
"Multi"=str(7):"a\0b\0"
"Number"=dword:0000000c
"Text"="abc"
"\xdcn\xef"="\xdc\x20ac"

[Software\\Contract\\Alpha\\Deep] 1700000000
"last"=dword:00000001

[Software\\Contract\\beta] 1700000000
)"};
    std::string m_strOwn = m_prefix.MakeFolder("drive_c/Own");
    std::unique_ptr<CHostedMachine> m_pMachine = MakePrefix(m_prefix.GetPath());
    std::unique_ptr<CHost> m_pHost = MakeHostedHost(m_pMachine->GetPaths(), m_strOwn);
};

class CVolumeContract : public CContractMachine {
public:
    CVolumeContract() {
        auto& version = m_software.GetRoot().Make("Microsoft\\Windows NT\\CurrentVersion");
        SetText(version, "SystemRoot", "C:\\Windows");
        SetText(version.Make("ProfileList\\S-1-5-21-1-2-3-1001"), "ProfileImagePath", "C:\\Users\\Anna");
        m_system.GetRoot().Make("Select").Set("Current", REG_DWORD, std::string("\1\0\0\0", 4));
        SetText(m_system.GetRoot().Make("ControlSet001\\Control\\ComputerName\\ComputerName"), "ComputerName", "BENCH");
        SetText(m_user.GetRoot().Make("Environment"), "TEMP", "C:\\Temp");
        auto& contract = m_user.GetRoot().Make("Software\\Contract");
        SetText(contract, "", "unnamed", REG_SZ);
        contract.Set("Binary", REG_BINARY, std::string("\0\1\xFF", 3));
        SetText(contract, "Expand", "%x%");
        SetText(contract, "Multi", std::string("a\0b\0", 4), REG_MULTI_SZ);
        contract.Set("Number", REG_DWORD, std::string("\x0C\0\0\0", 4));
        SetText(contract, "Text", "abc", REG_SZ);
        SetText(contract, "Ünï", "Ü€", REG_SZ);
        contract.Make("Alpha\\Deep").Set("last", REG_DWORD, std::string("\1\0\0\0", 4));
        contract.Make("beta");
        m_volume.Write("Windows/System32/config/SOFTWARE", m_software.Build());
        m_volume.Write("Windows/System32/config/SYSTEM", m_system.Build());
        m_volume.Write("Users/Anna/NTUSER.DAT", m_user.Build());
        WriteFiles(m_volume, "Contract");
        m_volume.MakeFolder("Own");
        m_pMachine = MakeVolume(m_volume.GetPath());
        m_pHost = MakeHostedHost(m_pMachine->GetPaths(), m_volume / "Own");
    }
    CMachine& Get() override { return *m_pMachine; }
    CHost& GetHost() override { return *m_pHost; }
    CString GetFolder() const override { return "C:\\Contract"; }
    CString GetOwnFolder() const override { return "C:\\Own"; }

private:
    static void SetText(CRegfWriter::CKey& key, std::string_view name, const std::string& text,
                        std::uint32_t type = REG_EXPAND_SZ) {
        key.Set(name, type, ToUtf16(text + '\0'));
    }

    CTemporaryFolder m_volume;
    CRegfWriter m_software;
    CRegfWriter m_system;
    CRegfWriter m_user;
    std::unique_ptr<CHostedMachine> m_pMachine;
    std::unique_ptr<CHost> m_pHost;
};

}  // namespace

std::vector<CContractCase> GetContractCases() {
    return {GetScriptedCase(),
            {"Prefix", [] { return std::make_unique<CPrefixContract>(); }},
            {"Volume", [] { return std::make_unique<CVolumeContract>(); }}};
}

}  // namespace delvane
