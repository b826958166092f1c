// A directory is read by name first, and the names are sorted; each entry's one metadata call comes when the entry is
// asked for. So a walk holds, for each level that it has open, one descriptor and the names, and the words of an entry
// go straight to whoever asked.
#include "platform/file_search.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/host.h"
#include "platform/hosted/files/host_file.h"
#include "platform/hosted/files/path_map.h"

namespace delvane {
namespace {

// As the kernel hands directory entries out.
struct CKernelEntry {
    std::uint64_t m_nInode;
    std::int64_t m_nOffset;
    std::uint16_t m_nLength;
    std::uint8_t m_nType;

    // The name follows the kind, without padding.
    const char* GetName() const { return reinterpret_cast<const char*>(&m_nType) + 1; }
};

// One name of a directory. The first eight bytes of the name stand here too, in an order that an integer comparison
// keeps, so that sorting seldom has to follow the offset.
struct CNameEntry {
    std::uint64_t m_nHead;
    std::uint32_t m_nOffset;
    std::uint16_t m_nLength;
    std::uint8_t m_nType;
};

std::uint64_t TicksOf(const statx_timestamp& time) {
    return static_cast<std::uint64_t>(time.tv_sec) * kTicksPerSecond + kUnixEpochTicks + time.tv_nsec / 100;
}

// getxattrat came with Linux 6.13, and the C library of this system does not know it yet.
#ifndef SYS_getxattrat
#define SYS_getxattrat 464
#endif

struct CXattrArguments {
    std::uint64_t m_value;
    std::uint32_t m_nSize;
    std::uint32_t m_nFlags;
};

// The extended attribute of an entry, links followed; its length, or -1 with errno. Older kernels reach the entry
// through the descriptor's name in /proc.
ssize_t GetEntryXattr(int directory, const char* name, const char* attribute, char* value, std::size_t size) {
    static bool kernelHasCall = true;
    if (kernelHasCall) {
        CXattrArguments arguments{reinterpret_cast<std::uint64_t>(value), static_cast<std::uint32_t>(size), 0};
        const long length = syscall(SYS_getxattrat, directory, name, 0, attribute, &arguments, sizeof arguments);
        if (length >= 0 || errno != ENOSYS) return length;
        kernelHasCall = false;
    }
    const std::string path = "/proc/self/fd/" + std::to_string(directory) + "/" + name;
    return getxattr(path.c_str(), attribute, value, size);
}

// A walk holds one descriptor a level, and the usual soft limit would end it before kMaxTreeDepth does.
void RaiseDescriptorLimit() {
    struct rlimit limit {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = std::max(limit.rlim_cur, std::min<rlim_t>(limit.rlim_max, kMaxTreeDepth + 256));
    setrlimit(RLIMIT_NOFILE, &limit);
}

// A directory that nobody may read is a gap, but a process that has run out of descriptors or memory could read none:
// that ends the capture.
void ThrowIfExhausted(std::string_view path, int error) {
    if (error != EMFILE && error != ENFILE && error != ENOMEM) return;
    throw CFileError(path, "open directory", Win32Error(error), ErrorText(error));
}

template <class T>
bool Contains(const std::vector<T>& list, const T& item) {
    return std::find(list.begin(), list.end(), item) != list.end();
}

void AddIdentity(const std::string& hostPath, std::vector<CDirectoryIdentity>& identities) {
    struct stat status {};
    if (stat(hostPath.c_str(), &status) == 0) identities.emplace_back(status.st_dev, status.st_ino);
}

// The extended attributes in which NTFS's drivers for Linux tell what Windows knows of a file.
constexpr const char* kNtfsAttributes = "system.ntfs_attrib";
constexpr const char* kNtfsCreation = "system.ntfs_crtime";

// What the host knows of one entry.
struct CEntry {
    CFileWords m_words;
    CDirectoryIdentity m_identity;
    bool m_bIsLink = false;
    std::uint32_t m_dwError = ERROR_SUCCESS;  // of what could not be read of it
};
enum class EOutcome { kRead, kUnlisted, kUnreadable };

// An attribute that is not there, or that this user may not see, is none. Any other failure is told.
void NoteLostAttribute(int error, CEntry& entry) {
    if (error == ENODATA || error == EOPNOTSUPP || error == ERANGE || error == EACCES || error == EPERM) return;
    if (!IsNothing(error)) entry.m_dwError = Win32Error(error);
}

// Reads entries by the rules of the machine's disks.
class CEntryReader {
public:
    explicit CEntryReader(const CDiskRules& rules) : m_rules(rules) {
        std::uint32_t attributes = 0;
        m_bNtfsAttributes =
            getxattr(rules.m_strVolume.c_str(), kNtfsAttributes, &attributes, sizeof attributes) == sizeof attributes;
    }

    // One statx an entry, through links, as Wine sees it, and one more for what may be a link. A link or a mount of a
    // volume is a junction or the like. Wine knows no creation time but the last write's.
    EOutcome Read(int directory, const char* name, bool mayBeLink, std::uint64_t directoryDevice, CEntry& entry) {
        struct statx status;  // NOLINT(cppcoreguidelines-pro-type-member-init): statx fills it
        const EOutcome outcome = ReadStatus(directory, name, mayBeLink, status, entry);
        if (outcome != EOutcome::kRead) return outcome;
        const bool isDirectory = S_ISDIR(status.stx_mode);
        CFileWords& words = entry.m_words;
        words.m_dwAttributes = isDirectory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
        if ((status.stx_mode & 0222) == 0) words.m_dwAttributes |= FILE_ATTRIBUTE_READONLY;
        words.m_ftLastWrite = FILETIME::FromTicks(TicksOf(status.stx_mtime));
        words.m_ftLastAccess = FILETIME::FromTicks(TicksOf(status.stx_atime));
        words.m_ftCreation = words.m_ftLastWrite;
        words.SetSize(S_ISREG(status.stx_mode) ? status.stx_size : 0);
        if (m_rules.m_strVolume.empty()) {
            if (name[0] == '.' && m_rules.m_bDotFilesHidden) words.m_dwAttributes |= FILE_ATTRIBUTE_HIDDEN;
            words.m_dwAttributes |= ReadDosAttributes(directory, name, entry);
        } else {
            ReadVolumeWords(directory, name, status, entry);
        }
        if (isDirectory && (entry.m_bIsLink || entry.m_identity.first != directoryDevice)) {
            words.m_dwAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
        }
        return EOutcome::kRead;
    }

private:
    // What the kernel knows of the entry, links followed. A link of a volume that leads out of it, into files of the
    // host, leads nowhere.
    EOutcome ReadStatus(int directory, const char* name, bool mayBeLink, struct statx& status, CEntry& entry) const {
        const auto fail = [&entry](int error) {
            entry.m_dwError = Win32Error(error);
            return IsNothing(error) ? EOutcome::kUnlisted : EOutcome::kUnreadable;
        };
        if (mayBeLink) {
            struct stat own {};
            if (fstatat(directory, name, &own, AT_SYMLINK_NOFOLLOW) != 0) return fail(errno);
            entry.m_bIsLink = S_ISLNK(own.st_mode);
        }
        if (entry.m_bIsLink && !m_rules.m_strVolume.empty()) {
            const std::string real = RealHostPath("/proc/self/fd/" + std::to_string(directory) + "/" + name);
            if (real.empty()) return fail(errno);
            if (!LiesWithin(real, m_rules.m_strVolume)) return EOutcome::kUnlisted;
        }
        const unsigned mask = STATX_BASIC_STATS | (m_rules.m_strVolume.empty() ? 0U : STATX_BTIME);
        if (statx(directory, name, AT_NO_AUTOMOUNT, mask, &status) != 0) return fail(errno);
        entry.m_identity = {makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_ino};
        return EOutcome::kRead;
    }

    // As Windows would show the entry.
    void ReadVolumeWords(int directory, const char* name, const struct statx& status, CEntry& entry) const {
        CFileWords& words = entry.m_words;
        const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
        if (hasBirth) words.m_ftCreation = FILETIME::FromTicks(TicksOf(status.stx_btime));
        if (!m_bNtfsAttributes) return;
        const auto read = [&](const char* attribute, auto& into) {
            const ssize_t length =
                GetEntryXattr(directory, name, attribute, reinterpret_cast<char*>(&into), sizeof into);
            if (length < 0) NoteLostAttribute(errno, entry);
            return length == static_cast<ssize_t>(sizeof into);
        };
        constexpr std::uint32_t kTold = 0xFFFF & ~FILE_ATTRIBUTE_DIRECTORY;
        std::uint32_t attributes = 0;
        std::uint64_t created = 0;
        if (read(kNtfsAttributes, attributes)) {
            words.m_dwAttributes = (words.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) | (attributes & kTold);
        }
        if (!hasBirth && read(kNtfsCreation, created)) words.m_ftCreation = FILETIME::FromTicks(created);
    }

    // Hidden and system, as Samba and Wine keep them: "0x" and hexadecimal digits. A file system without such
    // attributes is asked once.
    std::uint32_t ReadDosAttributes(int directory, const char* name, CEntry& entry) {
        if (m_plainDevice == entry.m_identity.first) return 0;
        std::array<char, 65> text;  // NOLINT(cppcoreguidelines-pro-type-member-init): as long as the call says
        const ssize_t length = GetEntryXattr(directory, name, "user.DOSATTRIB", text.data(), text.size() - 1);
        if (length < 0 && errno == EOPNOTSUPP) m_plainDevice = entry.m_identity.first;
        if (length < 0) NoteLostAttribute(errno, entry);
        if (length <= 2 || text[0] != '0' || text[1] != 'x') return 0;
        text[static_cast<std::size_t>(length)] = '\0';
        char* end = nullptr;
        const unsigned long attributes = std::strtoul(text.data(), &end, 16);
        if (*end != '\0') return 0;  // with anything but a NUL behind the digits Wine takes none of it
        constexpr std::uint32_t kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
        return static_cast<std::uint32_t>(attributes) & kKept;
    }

    const CDiskRules& m_rules;
    bool m_bNtfsAttributes;  // the volume's file system tells attributes and creation times beside the entries
    std::optional<std::uint64_t> m_plainDevice;  // the last device seen that keeps no attributes of DOS
};

class CHostedSearches : public CSearchSet {
public:
    explicit CHostedSearches(const CPathMap& paths) : m_paths(paths), m_reader(paths.GetRules()) {
        RaiseDescriptorLimit();
        for (const std::string& hostPath : paths.GetRules().m_unlisted)
            AddIdentity(hostPath, m_unlisted);
        std::vector<CDirectoryIdentity> places;
        for (const char* const place : {"/", "/dev", "/proc", "/sys"})
            AddIdentity(place, places);
        for (std::size_t i = 1; i < places.size(); ++i) {
            m_unlisted.push_back(places[i]);
            if (places[i].first != places[0].first) m_unlistedDevices.push_back(places[i].first);
        }
    }

    void PassOver(const std::vector<CString>& folders) override {
        m_own.clear();
        for (const CString& folder : folders)
            AddIdentity(m_paths.Find(folder).value_or(""), m_own);
    }

    std::unique_ptr<CFileSearch> Open(std::string_view path, std::uint32_t& error) override;

    std::uint32_t FindPath(std::string_view path, CFileWords& words) override {
        ThrowIfInterrupted();
        const std::optional<std::string> hostPath = m_paths.Find(path);
        if (!hostPath) return Win32Error(errno);
        const std::size_t nameStart = hostPath->rfind('/') + 1;
        const CDescriptor directory(OpenUntouched(AT_FDCWD, hostPath->substr(0, nameStart).c_str(), O_DIRECTORY));
        struct stat status {};
        if (!directory || fstat(directory.Get(), &status) != 0) return Win32Error(errno);
        CEntry entry;
        const EOutcome outcome =
            m_reader.Read(directory.Get(), hostPath->c_str() + nameStart, true, status.st_dev, entry);
        if (outcome == EOutcome::kUnreadable) return entry.m_dwError;
        if (outcome == EOutcome::kUnlisted) return ERROR_FILE_NOT_FOUND;
        words = entry.m_words;
        return ERROR_SUCCESS;
    }

private:
    struct CDirectory;

    bool IsUnlisted(const CDirectoryIdentity& identity) const {
        return Contains(m_unlisted, identity) || Contains(m_unlistedDevices, identity.first);
    }

    const CPathMap& m_paths;
    CEntryReader m_reader;
    std::vector<CDirectoryIdentity> m_unlisted;
    std::vector<std::uint64_t> m_unlistedDevices;             // file systems that are no disk: all that lies on them
    std::vector<CDirectoryIdentity> m_own;                    // the program's own folders
    std::vector<char> m_buffer = std::vector<char>(1 << 16);  // what the kernel hands a directory out in
};

// The directory of an open search, its sorted names, and the entry that was delivered last.
struct CHostedSearches::CDirectory : CLevel {
    CDirectory(CHostedSearches& set, std::string_view path, bool isBehindLink, CDescriptor descriptor,
               const CDirectoryIdentity& identity)
        : CLevel(set, path, isBehindLink), m_searches(set), m_descriptor(std::move(descriptor)), m_identity(identity) {
        ReadNames();
    }

    bool Next(CFindData& data) override {
        m_current = {};
        while (m_nNext < m_entries.size()) {
            ThrowIfInterrupted();
            const CNameEntry& next = m_entries[m_nNext++];
            const char* const name = m_names.data() + next.m_nOffset;
            const bool mayBeLink = next.m_nType == DT_LNK || next.m_nType == DT_UNKNOWN;
            CEntry entry;
            const EOutcome outcome =
                m_searches.m_reader.Read(m_descriptor.Get(), name, mayBeLink, m_identity.first, entry);
            const bool isDirectory = (entry.m_words.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            if (outcome == EOutcome::kUnlisted) continue;
            if (isDirectory &&
                (m_searches.IsUnlisted(entry.m_identity) || Contains(m_searches.m_own, entry.m_identity))) {
                continue;
            }
            static_cast<CFileWords&>(data) = entry.m_words;
            data.m_name = m_current = {name, next.m_nLength};
            data.m_dwError = entry.m_dwError;
            data.m_bNameOnly = outcome == EOutcome::kUnreadable;
            m_currentIdentity = entry.m_identity;
            m_bCurrentIsLink = entry.m_bIsLink;
            return true;
        }
        return false;
    }

    void ReadNames() {
        std::vector<char>& buffer = m_searches.m_buffer;
        // An entry's offset is where the next one would be looked for. Where that is the largest there is (ext4 and
        // btrfs put it behind the last entry), the call that would find nothing is spared.
        constexpr std::size_t kUsualEntry = 32;
        std::int64_t nextOffset = 0;
        while (nextOffset != std::numeric_limits<std::int64_t>::max()) {
            const long got = syscall(SYS_getdents64, m_descriptor.Get(), buffer.data(), buffer.size());
            // Where nothing is found the directory has gone in the meantime.
            if (got < 0 && errno != ENOENT) m_dwError = Win32Error(errno);
            if (got <= 0) break;
            if (m_entries.empty()) {
                m_entries.reserve(static_cast<std::size_t>(got) / kUsualEntry);
                m_names.reserve(static_cast<std::size_t>(got));
            }
            for (long at = 0; at < got;) {
                const auto* const entry = reinterpret_cast<const CKernelEntry*>(buffer.data() + at);
                at += entry->m_nLength;
                nextOffset = entry->m_nOffset;
                const std::string_view name = entry->GetName();
                if (name == "." || name == "..") continue;
                m_entries.push_back({TextHead(name), static_cast<std::uint32_t>(m_names.size()),
                                     static_cast<std::uint16_t>(name.size()), entry->m_nType});
                m_names.insert(m_names.end(), name.data(), name.data() + name.size() + 1);
            }
        }
        std::sort(m_entries.begin(), m_entries.end(), [this](const CNameEntry& a, const CNameEntry& b) {
            if (a.m_nHead != b.m_nHead) return a.m_nHead < b.m_nHead;
            return std::strcmp(m_names.data() + a.m_nOffset, m_names.data() + b.m_nOffset) < 0;
        });
    }

    CHostedSearches& m_searches;
    CDescriptor m_descriptor;
    CDirectoryIdentity m_identity;
    std::vector<char> m_names;  // each with its NUL
    std::vector<CNameEntry> m_entries;
    std::size_t m_nNext = 0;
    CDirectoryIdentity m_currentIdentity;
};

// The directory that the innermost search has just delivered is opened from there; any other through its path.
std::unique_ptr<CFileSearch> CHostedSearches::Open(std::string_view path, std::uint32_t& error) {
    ThrowIfInterrupted();
    const auto* const parent = m_open.empty() ? nullptr : static_cast<const CDirectory*>(m_open.back());
    const bool isDelivered = parent != nullptr && parent->HasDelivered(path);
    CDescriptor directory;
    struct stat status {};
    if (isDelivered) {
        directory.Reset(OpenUntouched(parent->m_descriptor.Get(), parent->m_current.data(), O_DIRECTORY));
    } else if (const std::optional<std::string> hostPath = m_paths.Find(path)) {
        directory.Reset(OpenUntouched(AT_FDCWD, hostPath->c_str(), O_DIRECTORY));
    }
    if (!directory || (!isDelivered && fstat(directory.Get(), &status) != 0)) {
        error = Win32Error(errno);
        ThrowIfExhausted(path, errno);
        return nullptr;
    }
    const CDirectoryIdentity identity =
        isDelivered ? parent->m_currentIdentity : CDirectoryIdentity{status.st_dev, status.st_ino};
    const bool isBehindLink = isDelivered && parent->IsCurrentBehindLink();
    // What is listed nowhere is not met below a root; a drive that leads there has nothing to show.
    error = m_open.size() >= kMaxTreeDepth ? ERROR_FILENAME_EXCED_RANGE
            : IsUnlisted(identity)         ? ERROR_ACCESS_DENIED
                                           : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return nullptr;
    for (const CLevel* const level : m_open) {
        // Its own ancestor, through a link.
        if (static_cast<const CDirectory*>(level)->m_identity == identity) return nullptr;
    }
    if (isBehindLink && !MayVisit(identity)) {
        error = ERROR_CANT_RESOLVE_FILENAME;
        return nullptr;
    }
    return std::make_unique<CDirectory>(*this, path, isBehindLink, std::move(directory), identity);
}

}  // namespace

std::unique_ptr<CSearchSet> MakeSearchSet(const CPathMap& paths) { return std::make_unique<CHostedSearches>(paths); }

}  // namespace delvane
