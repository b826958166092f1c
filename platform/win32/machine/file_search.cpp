// A directory is read to its end when its search is opened, and its entries are sorted: NTFS hands them out in an order
// without case, other file systems in any. The calls in the code page do the work. Where a name does not fit their
// record, or the path their buffer, the directory is read again in UTF-16.
#include "platform/win32/machine/file_search.h"

#include <algorithm>
#include <cstring>

#include "platform/host.h"
#include "platform/win32/machine/system.h"
#include "platform/win32/wide.h"

namespace delvane {
namespace {

// The search is closed on every way out.
class CFindHandle {
public:
    explicit CFindHandle(HANDLE handle) : m_handle(handle) {}
    CFindHandle(const CFindHandle&) = delete;
    CFindHandle& operator=(const CFindHandle&) = delete;
    ~CFindHandle() {
        if (m_handle != INVALID_HANDLE_VALUE) FindClose(m_handle);
    }
    HANDLE Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != INVALID_HANDLE_VALUE; }

private:
    HANDLE m_handle;
};

// Which form of the calls reads a directory.
struct CNarrowForm {
    using CData = WIN32_FIND_DATAA;
    static HANDLE First(std::string_view path, CData& data) {
        return FindFirstFileExA(CString(path).c_str(), FindExInfoBasic, &data, FindExSearchNameMatch, nullptr,
                                FIND_FIRST_EX_LARGE_FETCH);
    }
    static bool Next(HANDLE search, CData& data) { return FindNextFileA(search, &data) != 0; }
    static void Clear(CData& data) {
        data.cFileName[0] = '\0';
        data.cFileName[MAX_PATH - 1] = '\0';
    }
    // False where the name may have been cut off.
    static bool GetName(const CData& data, CString& name) {
        name.assign(data.cFileName, strnlen(data.cFileName, MAX_PATH));
        return !name.empty() && name.size() < MAX_PATH - 1;
    }
};

struct CWideForm {
    using CData = WIN32_FIND_DATAW;
    static HANDLE First(std::string_view path, CData& data) {
        return FindFirstFileExW(LongWidePath(path).c_str(), FindExInfoBasic, &data, FindExSearchNameMatch, nullptr,
                                FIND_FIRST_EX_LARGE_FETCH);
    }
    static bool Next(HANDLE search, CData& data) { return FindNextFileW(search, &data) != 0; }
    static void Clear(CData&) {}
    static bool GetName(const CData& data, CString& name) {
        name = Narrow({data.cFileName, wcsnlen(data.cFileName, MAX_PATH)});
        return !name.empty();
    }
};

template <class Data>
CFileWords WordsOf(const Data& data) {
    CFileWords words;
    words.m_dwAttributes = data.dwFileAttributes;
    words.m_ftCreation = {data.ftCreationTime.dwLowDateTime, data.ftCreationTime.dwHighDateTime};
    words.m_ftLastAccess = {data.ftLastAccessTime.dwLowDateTime, data.ftLastAccessTime.dwHighDateTime};
    words.m_ftLastWrite = {data.ftLastWriteTime.dwLowDateTime, data.ftLastWriteTime.dwHighDateTime};
    words.m_dwSizeHigh = data.nFileSizeHigh;
    words.m_dwSizeLow = data.nFileSizeLow;
    return words;
}

// Whether the calls in the code page take the path as it stands: they have a limit of length, and cut blanks and
// periods at the end of a name off, which a few names have all the same.
bool IsPlainPath(std::string_view path) {
    if (IsLongPath(path)) return false;
    for (std::size_t end = path.find('\\'); end != std::string_view::npos; end = path.find('\\', end + 1)) {
        if (end != 0 && (path[end - 1] == ' ' || path[end - 1] == '.')) return false;
    }
    return !path.ends_with(' ') && !path.ends_with('.');
}

template <class Form>
std::uint32_t FindOne(std::string_view path, CFileWords& words) {
    typename Form::CData data;
    const CFindHandle search(Form::First(path, data));
    if (!search) return GetLastError();
    words = WordsOf(data);
    return ERROR_SUCCESS;
}

[[noreturn]] void ThrowExhausted(std::string_view path, std::uint32_t code) {
    throw CFileError(path, "list directory", code, ErrorText(code));
}

CHandle OpenDirectoryHandle(std::string_view path) {
    constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return CHandle(CreateFileW(LongWidePath(path).c_str(), 0, kShare, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

bool IdentityOf(std::string_view directory, CDirectoryIdentity& identity) {
    const CHandle handle = OpenDirectoryHandle(directory);
    BY_HANDLE_FILE_INFORMATION information{};
    if (!handle || GetFileInformationByHandle(handle.Get(), &information) == 0) return false;
    identity = {information.dwVolumeSerialNumber,
                std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
    return true;
}

bool IsRoot(std::string_view path) { return path.size() <= 3; }

std::string_view LastNameOf(std::string_view path) {
    while (path.ends_with('\\'))
        path.remove_suffix(1);
    return path.substr(path.rfind('\\') + 1);
}

}  // namespace

struct CSearchSet::CLevel {
    struct CEntry {
        std::uint64_t m_nHead;
        std::uint32_t m_nOffset;  // of the name
        std::uint32_t m_nLength;
        CFileWords m_words;
    };

    CString m_strPath;
    std::vector<char> m_names;
    std::vector<CEntry> m_entries;
    std::size_t m_nNext = 0;
    std::uint32_t m_dwError = ERROR_SUCCESS;  // why the list breaks off, or why there is none
    bool m_bBehindLink = false;

    std::string_view NameOf(const CEntry& entry) const { return {m_names.data() + entry.m_nOffset, entry.m_nLength}; }
    // What was delivered last; null before the first entry and behind the last.
    const CEntry* GetCurrent() const {
        return m_nNext == 0 || m_nNext > m_entries.size() ? nullptr : &m_entries[m_nNext - 1];
    }

    enum class EOutcome { kRead, kUnreadable, kDoesNotFit };
    template <class Form>
    EOutcome Read();
    bool ReadEntries();
};

template <class Form>
CSearchSet::CLevel::EOutcome CSearchSet::CLevel::Read() {
    m_names.clear();
    m_entries.clear();
    m_nNext = 0;
    m_dwError = ERROR_SUCCESS;
    typename Form::CData data;
    Form::Clear(data);
    const CFindHandle search(Form::First(m_strPath + (m_strPath.ends_with('\\') ? "*" : "\\*"), data));
    if (!search) {
        const DWORD code = GetLastError();
        if (IsExhaustion(code)) ThrowExhausted(m_strPath, code);
        if (code == ERROR_FILENAME_EXCED_RANGE || code == ERROR_MORE_DATA || code == ERROR_INSUFFICIENT_BUFFER ||
            code == ERROR_NO_UNICODE_TRANSLATION) {
            return EOutcome::kDoesNotFit;
        }
        if (code == ERROR_FILE_NOT_FOUND) return EOutcome::kRead;  // an empty root has no entry
        m_dwError = code;
        return EOutcome::kUnreadable;
    }
    CString name;
    do {
        if (!Form::GetName(data, name)) return EOutcome::kDoesNotFit;
        if (name != "." && name != "..") {
            m_entries.push_back({TextHead(name), static_cast<std::uint32_t>(m_names.size()),
                                 static_cast<std::uint32_t>(name.size()), WordsOf(data)});
            m_names.insert(m_names.end(), name.begin(), name.end());
        }
        if (m_entries.size() % 1024 == 0) ThrowIfInterrupted();
        Form::Clear(data);
    } while (Form::Next(search.Get(), data));
    const DWORD code = GetLastError();
    if (IsExhaustion(code)) ThrowExhausted(m_strPath, code);
    // Another failure than the end: a name that the code page's record cannot take. In UTF-16 there is none such.
    constexpr DWORD kNoMoreFiles = 18;
    if (code == kNoMoreFiles) return EOutcome::kRead;
    m_dwError = code;  // what was read before still counts
    return EOutcome::kDoesNotFit;
}

bool CSearchSet::CLevel::ReadEntries() {
    EOutcome outcome = IsPlainPath(m_strPath) ? Read<CNarrowForm>() : EOutcome::kDoesNotFit;
    if (outcome == EOutcome::kDoesNotFit) outcome = Read<CWideForm>();
    if (outcome == EOutcome::kUnreadable) return false;
    if (outcome == EOutcome::kDoesNotFit && m_dwError == ERROR_SUCCESS) m_dwError = ERROR_INVALID_NAME;
    std::sort(m_entries.begin(), m_entries.end(), [this](const CEntry& a, const CEntry& b) {
        if (a.m_nHead != b.m_nHead) return a.m_nHead < b.m_nHead;
        return mbscmp(NameOf(a), NameOf(b)) < 0;
    });
    return true;
}

class CWin32Search : public CFileSearch {
public:
    CWin32Search(CSearchSet& set, CSearchSet::CLevel& level) : m_set(set), m_level(level) {}
    ~CWin32Search() override { m_set.Close(m_level); }

    bool Next(CFindData& data) override {
        ThrowIfInterrupted();
        while (m_level.m_nNext < m_level.m_entries.size()) {
            const CSearchSet::CLevel::CEntry& entry = m_level.m_entries[m_level.m_nNext++];
            if (m_set.IsOwn(m_level.m_strPath, m_level.NameOf(entry), entry.m_words)) continue;
            static_cast<CFileWords&>(data) = entry.m_words;
            data.m_name = m_level.NameOf(entry);
            return true;
        }
        m_level.m_nNext = m_level.m_entries.size() + 1;
        return false;
    }
    std::uint32_t GetError() const override { return m_level.m_dwError; }

private:
    CSearchSet& m_set;
    CSearchSet::CLevel& m_level;
};

CSearchSet::CSearchSet() = default;
CSearchSet::~CSearchSet() = default;

// Whether the directory is a link or lies below one. The one that the innermost search has just delivered says so
// itself; any other is asked.
bool CSearchSet::IsBehindLink(std::string_view path) const {
    if (!m_open.empty()) {
        const CLevel& parent = *m_open.back();
        const CLevel::CEntry* const current = parent.GetCurrent();
        if (current != nullptr && path.starts_with(parent.m_strPath) && path.ends_with(parent.NameOf(*current)) &&
            path.size() <= parent.m_strPath.size() + 1 + current->m_nLength) {
            return parent.m_bBehindLink || (current->m_words.m_dwAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        }
    }
    if (IsRoot(path)) return false;
    const DWORD attributes = GetFileAttributesA(CString(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

void CSearchSet::PassOver(const std::vector<CString>& folders) {
    m_own.clear();
    for (const CString& folder : folders) {
        CDirectoryIdentity identity;
        if (IdentityOf(folder, identity)) m_own.emplace_back(identity, LastNameOf(folder));
    }
}

// A drive may stand for a folder of another one, and a link may have any name: those and what bears an own folder's
// name are worth a look.
bool CSearchSet::IsOwn(std::string_view parent, std::string_view name, const CFileWords& words) const {
    if ((words.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return false;
    const bool isLink = (words.m_dwAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    const bool isNamed =
        std::any_of(m_own.begin(), m_own.end(), [&](const auto& own) { return mbsicmp(name, own.second) == 0; });
    CDirectoryIdentity identity;
    if (m_own.empty() || (!isLink && !isNamed)) return false;
    if (!IdentityOf(CString(parent) + (parent.ends_with('\\') ? "" : "\\") + CString(name), identity)) return false;
    return std::any_of(m_own.begin(), m_own.end(), [&](const auto& own) { return own.first == identity; });
}

// A directory behind a link is entered unless it is one that it lies in.
CSearchSet::EEntry CSearchSet::MayEnter(std::string_view path) {
    CDirectoryIdentity identity;
    if (!IdentityOf(path, identity)) return EEntry::kMay;  // then its search fails too
    for (const CLevel* level : m_open) {
        CDirectoryIdentity above;
        if (IdentityOf(level->m_strPath, above) && above == identity) return EEntry::kPassedOver;
    }
    return m_visits.MayVisit(identity) ? EEntry::kMay : EEntry::kTooOften;
}

std::unique_ptr<CFileSearch> CSearchSet::Open(std::string_view path, std::uint32_t& error) {
    ThrowIfInterrupted();
    error = m_open.size() >= kMaxTreeDepth                       ? ERROR_FILENAME_EXCED_RANGE
            : path.find_first_of("*?") != std::string_view::npos ? ERROR_INVALID_NAME
                                                                 : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return nullptr;
    const bool isBehindLink = IsBehindLink(path);
    if (isBehindLink) {
        const EEntry entry = MayEnter(path);
        if (entry == EEntry::kTooOften) error = ERROR_CANT_RESOLVE_FILENAME;
        if (entry != EEntry::kMay) return nullptr;
    }
    if (m_spare.empty()) m_spare.push_back(std::make_unique<CLevel>());
    m_open.reserve(m_open.size() + 1);
    m_spare.reserve(m_spare.size() + m_open.size() + 1);  // so that Close needs no memory
    CLevel* const level = m_spare.back().get();
    level->m_strPath = path;
    level->m_bBehindLink = isBehindLink;
    if (!level->ReadEntries()) {
        error = level->m_dwError;
        return nullptr;
    }
    m_open.push_back(m_spare.back().release());
    m_spare.pop_back();
    return std::make_unique<CWin32Search>(*this, *level);
}

void CSearchSet::Close(CLevel& level) {
    std::erase(m_open, &level);
    m_spare.emplace_back(&level);
}

std::uint32_t CSearchSet::FindPath(std::string_view path, CFileWords& words) {
    ThrowIfInterrupted();
    if (path.find_first_of("*?<>\"") != std::string_view::npos) return ERROR_INVALID_NAME;  // it would be a pattern
    return IsPlainPath(path) ? FindOne<CNarrowForm>(path, words) : FindOne<CWideForm>(path, words);
}

}  // namespace delvane
