// The registry of a hosted machine: hives put together under the predefined keys, and the handles to them.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/hosted/registry/hive.h"
#include "platform/registry.h"

namespace delvane {

// Read only. A key may show two hives' keys in one, as HKCR does on Windows: the subkeys of both, and of two values of
// one name that of the first layer. Symbolic link keys are followed; one that leads nowhere, or to a key that is open
// above it, cannot be opened.
class CHostedRegistry : public CRegistry {
public:
    // A key of a hive.
    struct CPlace {
        CHive* m_pHive = nullptr;
        std::uint32_t m_nKey = 0;

        explicit operator bool() const { return m_pHive != nullptr; }
        bool operator==(const CPlace&) const = default;
    };
    // What one key of the registry shows: a key of a hive, and perhaps another one behind it.
    struct CLayers {
        CPlace m_first;
        CPlace m_second;
    };

    CHostedRegistry();
    ~CHostedRegistry() override;

    // What the registry is made of. A predefined key without a root is an empty one. A mount is a subkey that leads to
    // another key, in place of any subkey of that name. Links are resolved through the roots: \Registry\Machine leads
    // to HKEY_LOCAL_MACHINE, and \Registry\User\SID to HKEY_CURRENT_USER if `userSid` is that text (or not known).
    CPlace AddHive(std::unique_ptr<CHive> hive);  // gives its root
    void SetRoot(HKEY root, CLayers layers);
    void Mount(CPlace parent, std::string_view name, CPlace target);
    void SetUserSid(std::string_view userSid) { m_strUserSid = userSid; }
    // A key that stands for something else than itself, so that an open yields no key.
    void SetUnopenable(CPlace key) { m_unopenable.push_back(key); }
    // What was found wrong while the registry was put together; kept once.
    void AddProblem(CNotice problem);

    // A file that the registry is about to be read from. HasChanged tells whether one of them is in another state by
    // now.
    void Watch(const std::string& hostPath);
    bool HasChanged() const;

    // The key at that path below a predefined key ("Software\Classes"); mounts and links are followed.
    std::optional<CLayers> Find(HKEY root, std::string_view path);
    // One value there, by name without regard to case: the text of a REG_SZ or REG_EXPAND_SZ up to its first NUL, the
    // number of a REG_DWORD; and the names of the subkeys there.
    std::optional<CString> FindText(HKEY root, std::string_view path, std::string_view name);
    std::optional<std::uint32_t> FindNumber(HKEY root, std::string_view path, std::string_view name);
    std::vector<CString> ListSubkeys(HKEY root, std::string_view path);
    std::size_t GetOpenCount() const { return m_open.GetCount(); }

    void BeginWalk() override {
        CRegistry::BeginWalk();
        m_nBytesBehindLinks = 0;
    }
    std::vector<CNotice> GetProblems() const override;
    std::uint32_t RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) override;
    void RegCloseKey(HKEY key) override;
    std::uint32_t RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) override;

private:
    struct CMount {
        CPlace m_parent;
        std::string m_strName;
        CPlace m_target;
    };
    // What tells one state of a file from a later one: device, inode, size, last write; zeros where there is none.
    using CFileMarks = std::array<std::int64_t, 5>;
    struct COpenKey;

    std::uint32_t ReadKey(HKEY key, bool anew, CKeyContents*& contents) override;
    COpenKey* GetOpenKey(HKEY key);
    bool Read(COpenKey& key);
    void ReadSecondLayer(COpenKey& key);
    void ApplyMounts(COpenKey& key);
    std::optional<std::size_t> FindChild(const COpenKey& key, std::string_view name) const;

    // `links` counts the links that one look-up has followed.
    std::optional<CLayers> FindBelow(CLayers key, std::string_view path, unsigned& links);
    static CFileMarks MarksOf(const std::string& hostPath);
    std::optional<CLayers> FindRoot(HKEY root) const;
    CPlace FindSubkey(CPlace parent, std::string_view name);
    std::optional<CLayers> FollowLinks(CLayers key, unsigned& links);
    std::optional<CLayers> FindLinkTarget(std::string_view target, unsigned& links);
    bool ReadAt(HKEY root, std::string_view path);
    const CKeyContents::CValue* FindValue(HKEY root, std::string_view path, std::string_view name);
    bool IsOpenAbove(const COpenKey* parent, CPlace place) const;
    bool CountBehindLinks(const COpenKey& key);

    std::vector<std::unique_ptr<CHive>> m_hives;
    std::vector<CMount> m_mounts;
    std::string m_strUserSid;
    std::vector<CPlace> m_unopenable;
    std::vector<CNotice> m_problems;
    std::vector<std::pair<std::string, CFileMarks>> m_files;

    COpenKeys<COpenKey> m_open;
    std::map<HKEY, std::unique_ptr<COpenKey>> m_roots;  // open at all times
    CKeyContents m_scratch;
    std::uint64_t m_nBytesBehindLinks = 0;  // what the keys behind links hold
};

}  // namespace delvane
