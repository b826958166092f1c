// The search over directories of a hosted machine, as Wine or Windows shows them to a program.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/hosted/files/host_file.h"
#include "platform/hosted/files/path_map.h"
#include "platform/hosted/identity/identity.h"
#include "platform/link_visits.h"
#include "platform/machine.h"

struct statx;  // of the kernel

namespace delvane {

// Opens searches and knows the ones that are open, so that the directory that a search has just delivered is opened
// from its parent's descriptor and checked against the directories above it.
class CSearchSet {
public:
    CSearchSet(const CPathMap& paths, CDiskRules rules);
    ~CSearchSet();

    // As CMachine tells them.
    void BeginWalk() { m_visits.BeginWalk(); }
    void PassOver(const std::vector<CString>& folders);
    std::unique_ptr<CFileSearch> Open(std::string_view path, std::uint32_t& error);
    std::uint32_t FindPath(std::string_view path, CFileWords& words);
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
        std::uint32_t m_dwError = ERROR_SUCCESS;  // of what could not be read of it
    };
    enum class EOutcome { kRead, kUnlisted, kUnreadable };

    std::uint32_t OpenDirectory(std::string_view path, CDescriptor& directory, CIdentity& identity, bool& isBehindLink);
    EOutcome ReadEntry(int directory, const char* name, bool mayBeLink, std::uint64_t directoryDevice, CEntry& entry);
    EOutcome ReadStatus(int directory, const char* name, bool mayBeLink, unsigned mask, struct statx& status,
                        CEntry& entry);
    void ReadPrefixWords(int directory, const char* name, const struct statx& status, CEntry& entry);
    void ReadVolumeWords(int directory, const char* name, const struct statx& status, CEntry& entry);
    bool IsUnlisted(const CIdentity& identity) const;
    bool IsOwn(const CIdentity& identity) const;
    static void NoteLostAttribute(int error, CEntry& entry);
    std::uint32_t ReadDosAttributes(int directory, const char* name, CEntry& entry);
    void Close(CLevel& level);

    const CPathMap& m_paths;
    CDiskRules m_rules;
    bool m_bNtfsAttributes = false;  // the volume's file system tells attributes and creation times beside the entries
    std::vector<CIdentity> m_unlisted;
    std::vector<std::uint64_t> m_unlistedDevices;  // file systems that are no disk: all that lies on them
    std::vector<CIdentity> m_own;                  // the program's own folders
    std::vector<char> m_buffer;                    // what the kernel hands a directory out in
    std::vector<CLevel*> m_open;                   // in the order of opening
    std::vector<std::unique_ptr<CLevel>> m_spare;  // closed, kept for their buffers
    std::uint64_t m_nPlainDevice = 0;              // the last device seen that keeps no such attributes
    bool m_bPlainDeviceKnown = false;
    CLinkVisits m_visits;
};

}  // namespace delvane
