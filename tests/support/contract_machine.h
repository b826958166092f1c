// A machine of known contents, of whatever kind: what the contract of CMachine and CHost is tested on.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host.h"
#include "platform/machine.h"

namespace delvane {

// In GetFolder():
//   Alpha.txt    five bytes, last written at kContractTime
//   app.exe      a PE image with the file version 1.2
//   beta\        holds inner.txt
//   driver.sys   a PE image of the native subsystem
//   empty\       holds nothing
//   old.exe      a 16-bit image
//   Été.txt
// and HKCU\Software\Contract as kContractRegistry has it, with GetKeyName() instead of Contract.
class CContractMachine {
public:
    virtual ~CContractMachine() = default;
    virtual CMachine& Get() = 0;
    virtual CHost& GetHost() = 0;
    virtual CString GetFolder() const = 0;     // without a backslash at its end
    virtual CString GetOwnFolder() const = 0;  // empty, for the program's own files; the same
    virtual CString GetLineEnd() const { return "\n"; }
    virtual CString GetKeyName() const { return "Contract"; }
};

inline constexpr std::uint64_t kContractTime = 126'256'467'060'000'000;  // 3 February 2001, 04:05:06 UTC

// The text of CScriptedRegistry, below HKCU\Software.
inline constexpr std::string_view kContractRegistry = R"(
HKCU
  Software\
    Contract\
      @ = sz "unnamed"
      Binary = hex(3) 00 01 ff
      Expand = expand "%x%"
      Multi = multi "a" "b"
      Number = dword 12
      Text = sz "abc"
      Ünï = sz "Ü€"
      Alpha\
        Deep\
          last = dword 1
      beta\
)";

struct CContractCase {
    std::string m_strName;
    std::function<std::unique_ptr<CContractMachine>()> m_make;
};
inline void PrintTo(const CContractCase& test, std::ostream* to) { *to << test.m_strName; }

// The kinds that this build can make.
std::vector<CContractCase> GetContractCases();
// The scripted one, which every build has.
CContractCase GetScriptedCase();

// The bytes of a file of the list above, by its name.
std::string ContractBytes(std::string_view name);

}  // namespace delvane
