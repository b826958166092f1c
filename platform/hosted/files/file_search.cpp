// A directory is read by name first, and the names are sorted; each entry's one metadata call comes when the entry is
// asked for. So a walk holds, for each level that it has open, one descriptor and the names, and the words of an entry
// go straight to whoever asked.
#include "platform/hosted/files/file_search.h"

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

namespace delvane {
namespace {

constexpr std::size_t kDirectoryBuffer = 1 << 16;

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

std::uint64_t DeviceOf(const struct statx& status) { return makedev(status.stx_dev_major, status.stx_dev_minor); }

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
    const rlim_t wanted = kMaxTreeDepth + 256;
    if (limit.rlim_cur >= wanted) return;
    limit.rlim_cur = limit.rlim_max < wanted ? limit.rlim_max : wanted;
    setrlimit(RLIMIT_NOFILE, &limit);
}

// A directory that nobody may read is a gap, but a process that has run out of descriptors or memory could read none:
// that ends the capture.
void ThrowIfExhausted(std::string_view path, int error) {
    if (error != EMFILE && error != ENFILE && error != ENOMEM) return;
    throw CFileError(path, "open directory", Win32Error(error), ErrorText(error));
}

}  // namespace

// An open search: its directory, the sorted names, and the entry that was delivered last.
struct CSearchSet::CLevel {
    std::string m_strPath;  // as a machine path
    CDescriptor m_directory;
    CIdentity m_identity;
    std::vector<char> m_names;  // each with its NUL
    std::vector<CNameEntry> m_entries;
    std::size_t m_nNext = 0;
    std::string_view m_current;  // the name delivered last
    CIdentity m_currentIdentity;
    bool m_bCurrentIsLink = false;
    bool m_bBehindLink = false;
    std::uint32_t m_dwError = ERROR_SUCCESS;  // why the list breaks off

    void ReadNames(std::vector<char>& buffer);
};

void CSearchSet::CLevel::ReadNames(std::vector<char>& buffer) {
    m_names.clear();
    m_entries.clear();
    m_nNext = 0;
    m_current = {};
    m_dwError = ERROR_SUCCESS;
    buffer.resize(kDirectoryBuffer);
    // An entry's offset is where the next one would be looked for. Where that is the largest there is (ext4 and btrfs
    // put it behind the last entry), the call that would find nothing is spared.
    std::int64_t nextOffset = 0;
    while (nextOffset != std::numeric_limits<std::int64_t>::max()) {
        const long got = syscall(SYS_getdents64, m_directory.Get(), buffer.data(), buffer.size());
        if (got < 0 && errno != ENOENT) m_dwError = Win32Error(errno);  // else the directory has gone in the meantime
        if (got <= 0) break;
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

class CHostedSearch : public CFileSearch {
public:
    CHostedSearch(CSearchSet& set, CSearchSet::CLevel& level) : m_set(set), m_level(level) {}
    ~CHostedSearch() override { m_set.Close(m_level); }

    bool Next(CFindData& data) override {
        while (m_level.m_nNext < m_level.m_entries.size()) {
            ThrowIfInterrupted();
            const CNameEntry& next = m_level.m_entries[m_level.m_nNext++];
            const char* const name = m_level.m_names.data() + next.m_nOffset;
            const bool mayBeLink = next.m_nType == DT_LNK || next.m_nType == DT_UNKNOWN;
            CSearchSet::CEntry entry;
            const auto outcome =
                m_set.ReadEntry(m_level.m_directory.Get(), name, mayBeLink, m_level.m_identity.first, entry);
            const bool isDirectory = (entry.m_words.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            if (outcome == CSearchSet::EOutcome::kUnlisted) continue;
            if (isDirectory && (m_set.IsUnlisted(entry.m_identity) || m_set.IsOwn(entry.m_identity))) continue;
            static_cast<CFileWords&>(data) = entry.m_words;
            data.m_name = {name, next.m_nLength};
            data.m_dwError = entry.m_dwError;
            data.m_bNameOnly = outcome == CSearchSet::EOutcome::kUnreadable;
            m_level.m_current = data.m_name;
            m_level.m_currentIdentity = entry.m_identity;
            m_level.m_bCurrentIsLink = entry.m_bIsLink;
            return true;
        }
        m_level.m_current = {};
        return false;
    }
    std::uint32_t GetError() const override { return m_level.m_dwError; }

private:
    CSearchSet& m_set;
    CSearchSet::CLevel& m_level;
};

// The extended attributes in which NTFS's drivers for Linux tell what Windows knows of a file.
constexpr const char* kNtfsAttributes = "system.ntfs_attrib";
constexpr const char* kNtfsCreation = "system.ntfs_crtime";

CSearchSet::CSearchSet(const CPathMap& paths, CDiskRules rules) : m_paths(paths), m_rules(std::move(rules)) {
    RaiseDescriptorLimit();
    for (const std::string& hostPath : m_rules.m_unlisted) {
        struct stat status {};
        if (stat(hostPath.c_str(), &status) == 0) m_unlisted.push_back({status.st_dev, status.st_ino});
    }
    struct stat root {};
    stat("/", &root);
    for (const char* const place : {"/dev", "/proc", "/sys"}) {
        struct stat status {};
        if (stat(place, &status) != 0) continue;
        m_unlisted.push_back({status.st_dev, status.st_ino});
        if (status.st_dev != root.st_dev) m_unlistedDevices.push_back(status.st_dev);
    }
    std::uint32_t attributes = 0;
    m_bNtfsAttributes = !m_rules.m_bWine && getxattr(m_rules.m_strRoot.c_str(), kNtfsAttributes, &attributes,
                                                     sizeof attributes) == sizeof attributes;
}

CSearchSet::~CSearchSet() = default;

void CSearchSet::PassOver(const std::vector<CString>& folders) {
    m_own.clear();
    for (const CString& folder : folders) {
        const std::optional<std::string> hostPath = m_paths.Find(folder);
        struct stat status {};
        if (hostPath && stat(hostPath->c_str(), &status) == 0) m_own.push_back({status.st_dev, status.st_ino});
    }
}

bool CSearchSet::IsUnlisted(const CIdentity& identity) const {
    return std::find(m_unlisted.begin(), m_unlisted.end(), identity) != m_unlisted.end() ||
           std::find(m_unlistedDevices.begin(), m_unlistedDevices.end(), identity.first) != m_unlistedDevices.end();
}

bool CSearchSet::IsOwn(const CIdentity& identity) const {
    return std::find(m_own.begin(), m_own.end(), identity) != m_own.end();
}

// What the kernel knows of the entry, links followed. A link of a volume that leads out of it, into files of the host,
// leads nowhere.
CSearchSet::EOutcome CSearchSet::ReadStatus(int directory, const char* name, bool mayBeLink, unsigned mask,
                                            struct statx& status, CEntry& entry) {
    const auto fail = [&entry](int error) {
        entry.m_dwError = Win32Error(error);
        return IsNothing(error) ? EOutcome::kUnlisted : EOutcome::kUnreadable;
    };
    if (mayBeLink) {
        struct stat own {};
        if (fstatat(directory, name, &own, AT_SYMLINK_NOFOLLOW) != 0) return fail(errno);
        entry.m_bIsLink = S_ISLNK(own.st_mode);
    }
    if (entry.m_bIsLink && !m_rules.m_strRoot.empty()) {
        const std::string real = RealHostPath("/proc/self/fd/" + std::to_string(directory) + "/" + name);
        if (real.empty()) return fail(errno);
        if (!LiesWithin(real, m_rules.m_strRoot)) return EOutcome::kUnlisted;
    }
    if (statx(directory, name, AT_NO_AUTOMOUNT, mask, &status) != 0) return fail(errno);
    entry.m_identity = {DeviceOf(status), status.stx_ino};
    return EOutcome::kRead;
}

// One statx an entry, through links, as Wine sees it, and one more for what may be a link. A link or a mount of a
// volume is a junction or the like.
CSearchSet::EOutcome CSearchSet::ReadEntry(int directory, const char* name, bool mayBeLink,
                                           std::uint64_t directoryDevice, CEntry& entry) {
    const unsigned mask = STATX_BASIC_STATS | (m_rules.m_bWine ? 0U : STATX_BTIME);
    struct statx status;  // NOLINT(cppcoreguidelines-pro-type-member-init): statx fills it
    const EOutcome outcome = ReadStatus(directory, name, mayBeLink, mask, status, entry);
    if (outcome != EOutcome::kRead) return outcome;
    const bool isDirectory = S_ISDIR(status.stx_mode);
    CFileWords& words = entry.m_words;
    words.m_dwAttributes = isDirectory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    if ((status.stx_mode & 0222) == 0) words.m_dwAttributes |= FILE_ATTRIBUTE_READONLY;
    words.m_ftLastWrite = FILETIME::FromTicks(TicksOf(status.stx_mtime));
    words.m_ftLastAccess = FILETIME::FromTicks(TicksOf(status.stx_atime));
    words.m_ftCreation = words.m_ftLastWrite;
    words.SetSize(S_ISREG(status.stx_mode) ? status.stx_size : 0);
    if (m_rules.m_bWine) {
        ReadPrefixWords(directory, name, status, entry);
    } else {
        ReadVolumeWords(directory, name, status, entry);
    }
    if (isDirectory && (entry.m_bIsLink || entry.m_identity.first != directoryDevice)) {
        words.m_dwAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    }
    return EOutcome::kRead;
}

// The creation time is the last write's: Wine knows no other.
void CSearchSet::ReadPrefixWords(int directory, const char* name, const struct statx&, CEntry& entry) {
    if (name[0] == '.' && m_rules.m_bDotFilesHidden) entry.m_words.m_dwAttributes |= FILE_ATTRIBUTE_HIDDEN;
    entry.m_words.m_dwAttributes |= ReadDosAttributes(directory, name, entry);
}

// As Windows would show the entry.
void CSearchSet::ReadVolumeWords(int directory, const char* name, const struct statx& status, CEntry& entry) {
    CFileWords& words = entry.m_words;
    const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
    if (hasBirth) words.m_ftCreation = FILETIME::FromTicks(TicksOf(status.stx_btime));
    if (!m_bNtfsAttributes) return;
    const auto read = [&](const char* attribute, auto& into) {
        const ssize_t length = GetEntryXattr(directory, name, attribute, reinterpret_cast<char*>(&into), sizeof into);
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

// An attribute that is not there, or that this user may not see, is none. Any other failure is told.
void CSearchSet::NoteLostAttribute(int error, CEntry& entry) {
    if (error == ENODATA || error == EOPNOTSUPP || error == ERANGE || error == EACCES || error == EPERM) return;
    if (!IsNothing(error)) entry.m_dwError = Win32Error(error);
}

// Hidden and system, as Samba and Wine keep them: "0x" and hexadecimal digits. A file system without such attributes
// is asked once.
std::uint32_t CSearchSet::ReadDosAttributes(int directory, const char* name, CEntry& entry) {
    const std::uint64_t device = entry.m_identity.first;
    if (m_bPlainDeviceKnown && m_nPlainDevice == device) return 0;
    std::array<char, 65> text;  // NOLINT(cppcoreguidelines-pro-type-member-init): as long as the call says
    const ssize_t length = GetEntryXattr(directory, name, "user.DOSATTRIB", text.data(), text.size() - 1);
    if (length < 0 && errno == EOPNOTSUPP) {
        m_nPlainDevice = device;
        m_bPlainDeviceKnown = true;
    }
    if (length < 0) NoteLostAttribute(errno, entry);
    if (length <= 2 || text[0] != '0' || text[1] != 'x') return 0;
    text[static_cast<std::size_t>(length)] = '\0';
    char* end = nullptr;
    const unsigned long attributes = std::strtoul(text.data(), &end, 16);
    if (*end != '\0') return 0;  // with anything but a NUL behind the digits Wine takes none of it
    constexpr std::uint32_t kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    return static_cast<std::uint32_t>(attributes) & kKept;
}

// The directory that the innermost search has just delivered is opened from there; any other through its path.
std::uint32_t CSearchSet::OpenDirectory(std::string_view path, CDescriptor& directory, CIdentity& identity,
                                        bool& isBehindLink) {
    const auto open = [&](int from, const char* name) -> std::uint32_t {
        directory.Reset(OpenUntouched(from, name, O_DIRECTORY));
        if (directory) return ERROR_SUCCESS;
        const int error = errno;
        ThrowIfExhausted(path, error);
        return Win32Error(error);
    };
    if (!m_open.empty()) {
        const CLevel& parent = *m_open.back();
        if (!parent.m_current.empty() && path.size() == parent.m_strPath.size() + 1 + parent.m_current.size() &&
            path.starts_with(parent.m_strPath) && path[parent.m_strPath.size()] == '\\' &&
            path.ends_with(parent.m_current)) {
            identity = parent.m_currentIdentity;
            isBehindLink = parent.m_bBehindLink || parent.m_bCurrentIsLink;
            return open(parent.m_directory.Get(), parent.m_current.data());
        }
    }
    const std::optional<std::string> hostPath = m_paths.Find(path);
    if (!hostPath) return Win32Error(errno);
    const std::uint32_t error = open(AT_FDCWD, hostPath->c_str());
    struct stat status {};
    if (error != ERROR_SUCCESS || fstat(directory.Get(), &status) != 0) {
        return error != ERROR_SUCCESS ? error : Win32Error(errno);
    }
    identity = {status.st_dev, status.st_ino};
    return ERROR_SUCCESS;
}

std::unique_ptr<CFileSearch> CSearchSet::Open(std::string_view path, std::uint32_t& error) {
    ThrowIfInterrupted();
    CIdentity identity;
    bool isBehindLink = false;
    CDescriptor directory;
    error = OpenDirectory(path, directory, identity, isBehindLink);
    if (error == ERROR_SUCCESS && m_open.size() >= kMaxTreeDepth) error = ERROR_FILENAME_EXCED_RANGE;
    // What is listed nowhere is not met below a root; a drive that leads there has nothing to show.
    if (error == ERROR_SUCCESS && IsUnlisted(identity)) error = ERROR_ACCESS_DENIED;
    if (error != ERROR_SUCCESS) return nullptr;
    for (const CLevel* level : m_open) {
        if (level->m_identity == identity) return nullptr;  // its own ancestor, through a link
    }
    if (isBehindLink && !m_visits.MayVisit(identity)) {
        error = ERROR_CANT_RESOLVE_FILENAME;
        return nullptr;
    }
    if (m_spare.empty()) m_spare.push_back(std::make_unique<CLevel>());
    m_open.reserve(m_open.size() + 1);
    m_spare.reserve(m_spare.size() + m_open.size() + 1);  // so that Close needs no memory
    CLevel* const level = m_spare.back().get();
    level->m_strPath = path;
    level->m_directory = std::move(directory);
    level->m_identity = identity;
    level->m_bBehindLink = isBehindLink;
    level->ReadNames(m_buffer);
    m_open.push_back(m_spare.back().release());
    m_spare.pop_back();
    return std::make_unique<CHostedSearch>(*this, *level);
}

void CSearchSet::Close(CLevel& level) {
    std::erase(m_open, &level);
    level.m_directory.Reset();
    m_spare.emplace_back(&level);
}

std::uint32_t CSearchSet::FindPath(std::string_view path, CFileWords& words) {
    ThrowIfInterrupted();
    const std::optional<std::string> hostPath = m_paths.Find(path);
    if (!hostPath) return Win32Error(errno);
    const std::size_t nameStart = hostPath->rfind('/') + 1;
    const std::string directoryPath = hostPath->substr(0, nameStart);
    const CDescriptor directory(OpenUntouched(AT_FDCWD, directoryPath.c_str(), O_DIRECTORY));
    struct stat status {};
    if (!directory || fstat(directory.Get(), &status) != 0) return Win32Error(errno);
    CEntry entry;
    const EOutcome outcome = ReadEntry(directory.Get(), hostPath->c_str() + nameStart, true, status.st_dev, entry);
    if (outcome == EOutcome::kUnreadable) return entry.m_dwError;
    if (outcome == EOutcome::kUnlisted) return ERROR_FILE_NOT_FOUND;
    words = entry.m_words;
    return ERROR_SUCCESS;
}

}  // namespace delvane
