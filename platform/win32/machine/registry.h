// The registry of the machine that the program runs on.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/open_keys.h"

namespace delvane {

// Open keys by number. The contents of a key are read in one go when they are first asked for, since the registry of a
// living machine changes at any time: what a caller enumerates is what was there at one moment, and a key that another
// process shrinks or deletes meanwhile ends nothing.
class CWin32Registry {
public:
    CWin32Registry();
    ~CWin32Registry();

    // As CMachine tells them.
    void BeginWalk() { m_nBehindLinks = 0; }
    std::uint32_t OpenKey(HKEY parent, std::string_view name, HKEY& key);
    void CloseKey(HKEY key);
    std::uint32_t QueryInfo(HKEY key, CKeyInfo& info);
    std::uint32_t EnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type, CRoom& data);
    std::uint32_t EnumKey(HKEY key, std::uint32_t index, CRoom& name);
    std::uint32_t QueryValue(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data);
    // What the user should know of the walks so far, in a sentence each.
    const std::vector<CString>& GetNotices() const { return m_notices; }

private:
    struct COpenKey;

    COpenKey* Find(HKEY key);
    COpenKey* FindPredefined(HKEY key);
    bool MayShow(const COpenKey& parent, COpenKey& key);

    COpenKeys<COpenKey> m_keys;
    std::vector<std::unique_ptr<COpenKey>> m_predefined;  // open at all times
    std::size_t m_nBehindLinks = 0;                       // keys behind links, in this walk
    std::vector<CString> m_notices;
};

}  // namespace delvane
