#include "tests/support/contract_machine.h"

#include "samples/image_writer.h"
#include "tests/support/scripted_machine.h"

namespace delvane {
namespace {

class CScriptedContract : public CContractMachine {
public:
    CScriptedContract() { m_machine.m_registry = CScriptedRegistry(kContractRegistry.substr(1)); }
    CMachine& Get() override { return m_machine; }
    CHost& GetHost() override { return m_host; }
    CString GetFolder() const override { return "C:\\Contract"; }
    CString GetOwnFolder() const override { return "C:\\Delvane"; }

private:
    CScriptedHost m_host;
    CScriptedMachine m_machine{R"(
        C: fixed [System]
          Contract\
            Alpha.txt  size=5 written=2001-02-03T04:05:06
            app.exe  image=pe32 version=1.2
            beta\
              inner.txt
            driver.sys  image=native
            empty\
            old.exe  image=dos
            Été.txt
    )"};
};

}  // namespace

CContractCase GetScriptedCase() {
    return {"Scripted", [] { return std::make_unique<CScriptedContract>(); }};
}

std::string ContractBytes(std::string_view name) {
    if (name == "Alpha.txt") return "hello";
    if (name == "app.exe") return MakeImage(EImageKind::Pe64, {{}, "1.2"});
    if (name == "driver.sys") return MakeImage(EImageKind::Pe64Native);
    if (name == "old.exe") return MakeImage(EImageKind::Ne);
    return "x";
}

}  // namespace delvane
