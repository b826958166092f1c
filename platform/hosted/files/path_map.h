// From machine paths to paths of the host and back.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace delvane {

// A drive of the hosted machine.
struct CHostedDrive {
    char m_letter = 'C';         // upper case
    std::string m_strRoot;       // the path by which the host reaches it
    std::string m_strRealRoot;   // the same with links resolved; empty where the link leads nowhere
    std::uint32_t m_nType = 0;   // as GetDriveType gives it
    bool m_bIsHostRoot = false;  // the host's own root: no disk of the machine
};

// How the disks show what is on them.
struct CDiskRules {
    std::string m_strVolume = {};   // the folder of a Windows volume, which no link leads out of; empty: Wine's disks
    bool m_bDotFilesHidden = true;  // names that begin with a period, under Wine
    std::vector<std::string> m_unlisted = {};  // directories of the host that no program of the machine may wander into
};

class CPathMap {
public:
    CPathMap() = default;
    CPathMap(std::vector<CHostedDrive> drives, CDiskRules rules)
        : m_drives(std::move(drives)), m_rules(std::move(rules)) {}

    const std::vector<CHostedDrive>& GetDrives() const { return m_drives; }
    const CDiskRules& GetRules() const { return m_rules; }
    const CHostedDrive* FindDrive(std::string_view path) const;  // that the path begins with; null if there is none

    // The path of the host for something that exists: as it is spelled, else the first match (by byte) in each
    // directory without regard to case. "." and ".." are worked out in the text and never lead above the root
    // of the drive or the host. Nothing, with an errno, where there is no such thing (IsNothing), where it cannot be
    // looked up, for a path of neither form and for a drive that is not there.
    std::optional<std::string> Find(std::string_view path) const;
    // The path of the host for something to be made: its directory by Find, and in it the name as it stands there, or
    // as it is spelled.
    std::optional<std::string> FindForCreation(std::string_view path) const;

    // The path as a person would write it: one in host form with the host's separators.
    std::string ToDisplay(std::string_view path) const;

    // A host path as a machine path: a drive path where it lies on a disk of the machine, else the host form.
    std::string ToMachine(const std::string& hostPath) const;

private:
    struct CParts {
        const CHostedDrive* m_pDrive = nullptr;  // null: a path in host form
        std::vector<std::string> m_names;
    };
    // The names of one directory by their folded form; of several that fold alike the first by byte.
    struct CListing {
        std::string m_strDirectory;
        std::pair<std::int64_t, std::int64_t> m_changed;  // the directory's change time
        std::unordered_map<std::string, std::string> m_names;
    };
    std::optional<CParts> Split(std::string_view path) const;
    std::optional<std::string> FindAnywhere(const CParts& parts) const;
    std::optional<std::string> FindName(const std::string& directory, std::string_view name) const;

    std::vector<CHostedDrive> m_drives;  // in the order of their letters
    CDiskRules m_rules;
    mutable CListing m_listing;  // the last directory that was searched for a name
};

// \home\u\x of /home/u/x, and back.
std::string ToHostForm(std::string_view hostPath);

}  // namespace delvane
