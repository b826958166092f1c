// The search over directories of a hosted machine, as Wine or Windows shows them to a program.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/hosted/identity.h"
#include "platform/hosted/path_map.h"
#include "platform/machine.h"

namespace delvane {

// Opens searches and knows the ones that are open, so that the directory that a search has just delivered is opened
// from its parent's descriptor and checked against the directories above it.
class CSearchSet {
public:
    CSearchSet(const CPathMap& paths, CDiskRules rules);
    ~CSearchSet();

    std::unique_ptr<CFileSearch> Open(std::string_view path);
    bool FindPath(std::string_view path, CFileWords& words);
    // What the user should know of the searches so far, in a sentence each.
    const std::vector<CString>& GetNotices() const { return m_notices; }

private:
    friend class CHostedSearch;
    struct CLevel;

    struct CIdentity {
        std::uint64_t m_nDevice = 0;
        std::uint64_t m_nInode = 0;
        bool operator==(const CIdentity&) const = default;
    };
    // What the host knows of one entry.
    struct CEntry {
        CFileWords m_words;
        CIdentity m_identity;
        bool m_bIsLink = false;
    };
    struct CIdentityHash {
        std::size_t operator()(const CIdentity& identity) const { return identity.m_nInode * 31 + identity.m_nDevice; }
    };

    int OpenDirectory(std::string_view path, CIdentity& identity, bool& isBehindLink);
    bool MayVisit(const CIdentity& identity);
    void AddNotice(CString notice);
    bool ReadEntry(int directory, const char* name, bool mayBeLink, std::uint64_t directoryDevice, CEntry& entry);
    bool ReadVolumeEntry(int directory, const char* name, bool mayBeLink, std::uint64_t directoryDevice, CEntry& entry);
    bool IsUnlisted(const CIdentity& identity) const;
    bool LeadsOut(int directory, const char* name) const;
    std::uint32_t ReadDosAttributes(int directory, const char* name, std::uint64_t device);
    void Close(CLevel& level);

    const CPathMap& m_paths;
    CDiskRules m_rules;
    bool m_bNtfsAttributes = false;  // the volume's file system tells attributes and creation times beside the entries
    std::vector<CIdentity> m_unlisted;
    std::vector<char> m_buffer;                    // what the kernel hands a directory out in
    std::vector<CLevel*> m_open;                   // in the order of opening
    std::vector<std::unique_ptr<CLevel>> m_spare;  // closed, kept for their buffers
    std::uint64_t m_nPlainDevice = 0;              // the last device seen that keeps no such attributes
    bool m_bPlainDeviceKnown = false;
    std::unordered_map<CIdentity, std::uint32_t, CIdentityHash> m_visits;  // of directories behind links, in this walk
    bool m_bCutTold = false;
    std::vector<CString> m_notices;
};

}  // namespace delvane
