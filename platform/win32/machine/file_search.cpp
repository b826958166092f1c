// A directory is read to its end when its search is opened, and its entries are sorted: NTFS hands them out in an order
// without case, other file systems in any. The calls in the code page do the work. Where a name does not fit their
// record, or the path their buffer, the directory is read again in UTF-16.
#include "platform/file_search.h"

#include <algorithm>
#include <cstring>

#include "platform/host.h"
#include "platform/win32/system.h"

namespace delvane {
namespace {

struct CCloseSearch {
    void operator()(void* search) const { FindClose(search); }
};
using CFindHandle = std::unique_ptr<void, CCloseSearch>;

CFindHandle Found(HANDLE search) { return CFindHandle(search == INVALID_HANDLE_VALUE ? nullptr : search); }

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
    const CFindHandle search = Found(Form::First(path, data));
    if (!search) return GetLastError();
    words = WordsOf(data);
    return ERROR_SUCCESS;
}

[[noreturn]] void ThrowExhausted(std::string_view path, std::uint32_t code) {
    throw CFileError(path, "list directory", code, ErrorText(code));
}

std::optional<CDirectoryIdentity> IdentityOf(std::string_view directory) {
    constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const CHandle handle(CreateFileW(LongWidePath(directory).c_str(), 0, kShare, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!handle || GetFileInformationByHandle(handle.get(), &information) == 0) return std::nullopt;
    return CDirectoryIdentity{information.dwVolumeSerialNumber,
                              std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

std::string_view LastNameOf(std::string_view path) {
    while (path.ends_with('\\'))
        path.remove_suffix(1);
    return path.substr(path.rfind('\\') + 1);
}

class CWin32Searches : public CSearchSet {
public:
    void PassOver(const std::vector<CString>& folders) override {
        m_own.clear();
        for (const CString& folder : folders) {
            if (const auto identity = IdentityOf(folder)) m_own.emplace_back(*identity, LastNameOf(folder));
        }
    }

    std::unique_ptr<CFileSearch> Open(std::string_view path, std::uint32_t& error) override;

    std::uint32_t FindPath(std::string_view path, CFileWords& words) override {
        ThrowIfInterrupted();
        if (path.find_first_of("*?<>\"") != std::string_view::npos) return ERROR_INVALID_NAME;  // it would be a pattern
        return IsPlainPath(path) ? FindOne<CNarrowForm>(path, words) : FindOne<CWideForm>(path, words);
    }

private:
    struct CDirectory;

    // Whether the directory is a link or lies below one. The one that the innermost search has just delivered says so
    // itself; any other is asked.
    bool IsBehindLink(std::string_view path) const {
        if (!m_open.empty() && m_open.back()->HasDelivered(path)) return m_open.back()->IsCurrentBehindLink();
        constexpr std::size_t kLongestRoot = 3;
        if (path.size() <= kLongestRoot) return false;
        const DWORD attributes = GetFileAttributesA(CString(path).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    }

    // A drive may stand for a folder of another one, and a link may have any name: those and what bears an own folder's
    // name are worth a look.
    bool IsOwn(std::string_view parent, std::string_view name, const CFileWords& words) const {
        if ((words.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return false;
        const bool isLink = (words.m_dwAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        const bool isNamed =
            std::any_of(m_own.begin(), m_own.end(), [&](const auto& own) { return mbsicmp(name, own.second) == 0; });
        if (m_own.empty() || (!isLink && !isNamed)) return false;
        const auto identity = IdentityOf(CString(parent) + (parent.ends_with('\\') ? "" : "\\") + CString(name));
        return std::any_of(m_own.begin(), m_own.end(), [&](const auto& own) { return own.first == identity; });
    }

    // The program's own folders: what tells a directory, and its name.
    std::vector<std::pair<CDirectoryIdentity, CString>> m_own;
};

// A directory, read to its end, and nothing left open.
struct CWin32Searches::CDirectory : CLevel {
    struct CEntry {
        std::uint64_t m_nHead;
        std::uint32_t m_nOffset;  // of the name
        std::uint32_t m_nLength;
        CFileWords m_words;
    };
    enum class EOutcome { kRead, kUnreadable, kDoesNotFit };

    using CLevel::CLevel;
    bool Next(CFindData& data) override;
    template <class Form>
    EOutcome Read();
    bool ReadEntries();
    std::string_view NameOf(const CEntry& entry) const { return {m_names.data() + entry.m_nOffset, entry.m_nLength}; }

    std::vector<char> m_names;
    std::vector<CEntry> m_entries;
    std::size_t m_nNext = 0;
};

template <class Form>
CWin32Searches::CDirectory::EOutcome CWin32Searches::CDirectory::Read() {
    m_names.clear();
    m_entries.clear();
    m_dwError = ERROR_SUCCESS;
    typename Form::CData data;
    Form::Clear(data);
    const CFindHandle search = Found(Form::First(m_strPath + (m_strPath.ends_with('\\') ? "*" : "\\*"), data));
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
    } while (Form::Next(search.get(), data));
    const DWORD code = GetLastError();
    if (IsExhaustion(code)) ThrowExhausted(m_strPath, code);
    // Another failure than the end: a name that the code page's record cannot take. In UTF-16 there is none such.
    constexpr DWORD kNoMoreFiles = 18;
    if (code == kNoMoreFiles) return EOutcome::kRead;
    m_dwError = code;  // what was read before still counts
    return EOutcome::kDoesNotFit;
}

bool CWin32Searches::CDirectory::ReadEntries() {
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

bool CWin32Searches::CDirectory::Next(CFindData& data) {
    ThrowIfInterrupted();
    m_current = {};
    while (m_nNext < m_entries.size()) {
        const CEntry& entry = m_entries[m_nNext++];
        if (static_cast<CWin32Searches&>(m_set).IsOwn(m_strPath, NameOf(entry), entry.m_words)) continue;
        static_cast<CFileWords&>(data) = entry.m_words;
        data.m_name = m_current = NameOf(entry);
        m_bCurrentIsLink = (entry.m_words.m_dwAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        return true;
    }
    return false;
}

// A directory behind a link is entered unless it is one that it lies in. One that cannot be told fails to be listed
// too.
std::unique_ptr<CFileSearch> CWin32Searches::Open(std::string_view path, std::uint32_t& error) {
    ThrowIfInterrupted();
    error = m_open.size() >= kMaxTreeDepth                       ? ERROR_FILENAME_EXCED_RANGE
            : path.find_first_of("*?") != std::string_view::npos ? ERROR_INVALID_NAME
                                                                 : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return nullptr;
    const bool isBehindLink = IsBehindLink(path);
    if (const auto identity = isBehindLink ? IdentityOf(path) : std::nullopt) {
        for (const CLevel* const level : m_open) {
            if (IdentityOf(level->m_strPath) == identity) return nullptr;
        }
        if (!MayVisit(*identity)) {
            error = ERROR_CANT_RESOLVE_FILENAME;
            return nullptr;
        }
    }
    auto directory = std::make_unique<CDirectory>(*this, path, isBehindLink);
    if (directory->ReadEntries()) return directory;
    error = directory->m_dwError;
    return nullptr;
}

}  // namespace

std::unique_ptr<CSearchSet> MakeSearchSet() { return std::make_unique<CWin32Searches>(); }

}  // namespace delvane
