// The search over directories of a hosted machine, as Wine or Windows shows them to a program.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/hosted/files/path_map.h"
#include "platform/hosted/identity/identity.h"
#include "platform/link_visits.h"
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
    const std::vector<CString>& GetNotices() const { return m_visits.GetNotices(); }

private:
    friend class CHostedSearch;
    struct CLevel;

    using CIdentity = CDirectoryIdentity;
    // What the host knows of one entry.
    struct CEntry {
        CFileWords m_words;
        CIdentity m_identity;
        bool m_bIsLink = false;
    };

    int OpenDirectory(std::string_view path, CIdentity& identity, bool& isBehindLink);
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
    CLinkVisits m_visits;
};

}  // namespace delvane
