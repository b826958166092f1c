// A registry in memory, written as indented text, on which the refusals of real ones can be staged.
#pragma once

#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace delvane {

// The text: a hive a line ("HKLM"), what it holds indented by two blanks a level below it. A name that ends in a
// backslash is a key, any other line a value, "@" the unnamed one:
//   Setup\                      behind two blanks one of: unopenable, shrinks (a value goes during the walk)
//     Path = sz "C:\Tools"      also expand "..", multi "a" "b", dword 12, hex(3) 01 02 ff; \" and \0 in texts
// Behind the data of a value, separated by two blanks: grows (its data grew between the calls), late (the enumeration
// gives no data, the query does), vanishes (neither gives any), denied (the
// query may not).
class CScriptedRegistry : public CRegistry {
public:
    explicit CScriptedRegistry(std::string_view text = {});

    std::vector<CNotice> GetProblems() const override { return {}; }
    std::uint32_t RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) override;
    void RegCloseKey(HKEY key) override { m_keys.Close(key); }
    std::uint32_t RegQueryInfoKey(HKEY key, CKeyInfo& info) override;
    std::uint32_t RegEnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type, CRoom& data) override;
    std::uint32_t RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) override;

    std::size_t GetOpenCount() const { return m_keys.GetCount(); }

private:
    struct CValue {
        CString m_strName;
        std::uint32_t m_dwType = REG_NONE;
        CString m_data;
        CString m_strRefusal;
    };
    struct CKey {
        CString m_strName;
        CString m_strRefusal;
        std::vector<CValue> m_values;
        std::vector<std::shared_ptr<CKey>> m_subkeys;
    };

    static CValue ParseValue(std::string_view line);
    struct COpenKey {
        void Show(const CKey& key);

        const CKey* m_pKey = nullptr;
        CKeyContents m_contents;
    };
    COpenKey* Find(HKEY key);
    std::uint32_t ReadKey(HKEY key, bool anew, CKeyContents*& contents) override;

    CKey m_top;  // of the hives
    COpenKeys<COpenKey> m_keys;
    std::map<HKEY, COpenKey> m_roots;
};

}  // namespace delvane
