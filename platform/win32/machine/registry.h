// The registry of the machine that the program runs on.
#pragma once

#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/open_keys.h"

namespace delvane {

// The part of the machine that answers for its registry. The contents of a key are read in one go when they are first
// asked for, since the registry of a living machine changes at any time: what a caller enumerates is what was there at
// one moment, and a key that another process shrinks or deletes meanwhile ends nothing.
class CWin32Registry : public CMachine {
public:
    CWin32Registry();
    ~CWin32Registry() override;

    std::vector<CNotice> TakeNotices() override;
    void BeginWalk() override { m_nBehindLinks = 0; }
    std::uint32_t RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) override;
    void RegCloseKey(HKEY key) override;
    std::uint32_t RegQueryInfoKey(HKEY key, CKeyInfo& info) override;
    std::uint32_t RegEnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type, CRoom& data) override;
    std::uint32_t RegEnumKeyEx(HKEY key, std::uint32_t index, CRoom& name) override;
    std::uint32_t RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) override;

private:
    struct COpenKey;

    COpenKey* Find(HKEY key);
    bool MayShow(const COpenKey& parent, COpenKey& key);

    COpenKeys<COpenKey> m_keys;
    std::map<HKEY, std::unique_ptr<COpenKey>> m_predefined;  // open at all times
    std::size_t m_nBehindLinks = 0;                          // keys behind links, in this walk
    enum class ENotice { kNone, kDue, kTaken } m_notice = ENotice::kNone;
};

}  // namespace delvane
