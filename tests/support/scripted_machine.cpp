#include "tests/support/scripted_machine.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "samples/image_writer.h"
#include "tests/support/memory_source.h"

namespace delvane {

struct CScriptedMachine::CEntry {
    CString m_strName;
    CFileWords m_words;
    bool m_bUnreadable = false;
    bool m_bCut = false;
    CString m_strImage;
    CString m_strVersion;
    std::uint32_t m_nDriveType = 0;
    CString m_strLabel;
    std::vector<std::shared_ptr<CEntry>> m_children;
};

namespace {

std::uint64_t TicksOf(const CString& text) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    if (std::sscanf(text.c_str(), "%d-%u-%uT%u:%u:%u", &year, &month, &day, &hour, &minute, &second) != 6) {
        throw std::invalid_argument("no time: " + text);
    }
    const std::chrono::sys_days date = std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
    const std::chrono::seconds time = date.time_since_epoch() + std::chrono::hours(hour) +
                                      std::chrono::minutes(minute) + std::chrono::seconds(second);
    return static_cast<std::uint64_t>(time.count()) * kTicksPerSecond + kUnixEpochTicks;
}

std::uint32_t KindOf(const CString& word) {
    const char* const kWords[] = {"unknown", "noroot", "removable", "fixed", "remote", "cdrom", "ramdisk"};
    for (std::uint32_t kind = 0; kind < std::size(kWords); ++kind) {
        if (word == kWords[kind]) return kind;
    }
    throw std::invalid_argument("no kind of drive: " + word);
}

}  // namespace

CScriptedMachine::CScriptedMachine(std::string_view text) { SetDisks(text); }

void CScriptedMachine::SetDisks(std::string_view text) {
    m_pRoot = std::make_shared<CEntry>();
    std::vector<CEntry*> open = {m_pRoot.get()};
    std::istringstream lines{CString(text)};
    std::size_t margin = CString::npos;
    for (CString line; std::getline(lines, line);) {
        const std::size_t indent = line.find_first_not_of(' ');
        if (indent == CString::npos) continue;
        if (margin == CString::npos) margin = indent;
        const std::size_t level = (indent - margin) / 2;
        if (indent < margin || level >= open.size()) throw std::invalid_argument("indented too far: " + line);
        open.resize(level + 1);
        auto entry = std::make_shared<CEntry>();
        const std::size_t nameEnd = level == 0 ? line.find(' ', indent) : line.find("  ", indent);
        entry->m_strName = line.substr(indent, nameEnd - indent);
        std::istringstream words(nameEnd == CString::npos ? CString() : line.substr(nameEnd));
        entry->m_words.m_dwAttributes = FILE_ATTRIBUTE_ARCHIVE;
        if (level == 0) {
            CString kind;
            words >> kind;
            entry->m_nDriveType = KindOf(kind);
            const std::size_t bracket = line.find('[');
            if (bracket != CString::npos) entry->m_strLabel = line.substr(bracket + 1, line.rfind(']') - bracket - 1);
        } else if (entry->m_strName.ends_with('\\')) {
            entry->m_strName.pop_back();
            entry->m_words.m_dwAttributes = FILE_ATTRIBUTE_DIRECTORY;
        }
        for (CString word; level > 0 && words >> word;) {
            const std::size_t equals = word.find('=');
            const CString key = word.substr(0, equals);
            const CString value = equals == CString::npos ? CString() : word.substr(equals + 1);
            if (key == "size") {
                entry->m_words.SetSize(std::stoull(value));
            } else if (key == "written") {
                entry->m_words.m_ftLastWrite = FILETIME::FromTicks(TicksOf(value));
            } else if (key == "ticks") {
                entry->m_words.m_ftLastWrite = FILETIME::FromTicks(std::stoull(value));
            } else if (key == "attributes") {
                entry->m_words.m_dwAttributes = static_cast<std::uint32_t>(std::stoul(value, nullptr, 16));
            } else if (key == "image") {
                entry->m_strImage = value;
            } else if (key == "version") {
                entry->m_strVersion = value;
            } else if (key == "unreadable") {
                entry->m_bUnreadable = true;
            } else if (key == "cut") {
                entry->m_bCut = true;
            } else {
                throw std::invalid_argument("no such word: " + word);
            }
        }
        open.back()->m_children.push_back(entry);
        open.push_back(entry.get());
    }
}

const CScriptedMachine::CEntry* CScriptedMachine::Find(std::string_view path, bool wantsDirectory) const {
    const CEntry* at = m_pRoot.get();
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find_first_of("\\/"));
        path.remove_prefix(std::min(path.size(), name.size() + 1));
        if (name.empty()) continue;
        const bool last = path.empty() && !wantsDirectory;
        const auto found = std::find_if(at->m_children.begin(), at->m_children.end(), [&](const auto& child) {
            const bool holds = child->m_nDriveType != 0 || (child->m_words.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY);
            return mbsicmp(child->m_strName, name) == 0 && (last || holds);
        });
        if (found == at->m_children.end()) return nullptr;
        at = found->get();
    }
    return at;
}

bool CScriptedMachine::GetUserName(CString& name) {
    name = m_strUser;
    return !name.empty();
}

bool CScriptedMachine::GetComputerName(CString& name) {
    name = m_strComputer;
    return !name.empty();
}

CFolderFunction CScriptedMachine::LoadFolderLibrary() {
    if (!m_bFolderLibrary) return {};
    return [this](int kind, CString& path) {
        const auto found = m_folders.find(kind);
        if (found != m_folders.end()) path = found->second;
        return found != m_folders.end();
    };
}

std::uint32_t CScriptedMachine::GetLogicalDrives() {
    std::uint32_t mask = 0;
    for (const auto& drive : m_pRoot->m_children)
        mask |= std::uint32_t{1} << (drive->m_strName[0] - 'A');
    return mask;
}

std::uint32_t CScriptedMachine::GetDriveType(std::string_view root) {
    const CEntry* const drive = Find(root);
    return drive == nullptr ? DRIVE_NO_ROOT_DIR : drive->m_nDriveType;
}

std::uint32_t CScriptedMachine::GetVolumeLabel(std::string_view root, CString& label) {
    const CEntry* const drive = Find(root);
    if (drive == nullptr) return ERROR_PATH_NOT_FOUND;
    label = drive->m_strLabel;
    return ERROR_SUCCESS;
}

std::uint32_t CScriptedMachine::GetConnection(std::string_view name, CString& share) {
    return GetDriveType(name) == DRIVE_REMOTE ? GetVolumeLabel(name, share) : ERROR_NOT_CONNECTED;
}

class CScriptedMachine::CSearch : public CFileSearch {
public:
    CSearch(CScriptedMachine& machine, const CEntry& directory) : m_machine(machine), m_directory(directory) {
        ++machine.m_nOpenSearches;
    }
    ~CSearch() override { --m_machine.m_nOpenSearches; }

    bool Next(CFindData& data) override {
        if (m_nNext == m_directory.m_children.size()) return false;
        const CEntry& entry = *m_directory.m_children[m_nNext++];
        static_cast<CFileWords&>(data) = entry.m_words;
        data.m_name = entry.m_strName;
        data.m_bNameOnly = entry.m_bUnreadable && (entry.m_words.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
        data.m_dwError = data.m_bNameOnly ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
        if (m_machine.m_onEntry) m_machine.m_onEntry(entry.m_strName);
        return true;
    }
    std::uint32_t GetError() const override { return m_directory.m_bCut ? ERROR_CRC : ERROR_SUCCESS; }

private:
    CScriptedMachine& m_machine;
    const CEntry& m_directory;
    std::size_t m_nNext = 0;
};

std::unique_ptr<CFileSearch> CScriptedMachine::CSearches::Open(std::string_view path, std::uint32_t& error) {
    const CEntry* const directory = m_machine.Find(path, true);
    error = directory == nullptr       ? ERROR_PATH_NOT_FOUND
            : directory->m_bUnreadable ? ERROR_ACCESS_DENIED
                                       : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return nullptr;
    return std::make_unique<CSearch>(m_machine, *directory);
}

std::uint32_t CScriptedMachine::CSearches::FindPath(std::string_view path, CFileWords& words) {
    const CEntry* const entry = m_machine.Find(path);
    if (entry == nullptr) return ERROR_FILE_NOT_FOUND;
    words = entry->m_words;
    return ERROR_SUCCESS;
}

bool CScriptedMachine::MapAndLoad(std::string_view path, CLoadedImage& image) {
    image = {};
    const CEntry* const entry = Find(path);
    if (entry == nullptr) return false;
    image.fDOSImage = entry->m_strImage == "dos";
    image.fSystemImage = entry->m_strImage == "native";
    return !entry->m_strImage.empty() && !image.fDOSImage;
}

std::unique_ptr<const CVersionInfo> CScriptedMachine::GetFileVersionInfo(std::string_view path) {
    const CEntry* const entry = Find(path);
    if (entry == nullptr || entry->m_strVersion.empty()) return nullptr;
    CVersionStrings strings;
    strings.m_strFileVersion = entry->m_strVersion;
    const CString bytes = MakeImage(EImageKind::Pe32, strings);
    return ReadVersionBlock(CMemorySource(bytes));
}

bool CScriptedHost::FileExists(std::string_view path) { return m_files.contains(CString(path)); }

bool CScriptedHost::DirectoryExists(std::string_view path) {
    if (path.ends_with('\\')) path.remove_suffix(1);
    return std::find(m_directories.begin(), m_directories.end(), path) != m_directories.end();
}

bool CScriptedHost::MayCreate(std::string_view path) {
    return !m_bReadOnly && DirectoryExists(path.substr(0, path.rfind('\\')));
}

bool CScriptedHost::CreateDirectory(std::string_view path) {
    if (DirectoryExists(path) || !MayCreate(path)) return false;
    m_directories.emplace_back(path);
    return true;
}

bool CScriptedHost::DeleteFile(std::string_view path) { return m_files.erase(CString(path)) != 0; }

std::vector<CString> CScriptedHost::ListFiles(std::string_view folder) {
    std::vector<CString> names;
    for (const auto& [path, bytes] : m_files) {
        const std::size_t end = path.rfind('\\');
        if (path.substr(0, end) == folder) names.push_back(path.substr(end + 1));
    }
    return names;
}

CFileBytes CScriptedHost::ReadFile(std::string_view path, std::uint64_t limit) {
    const auto found = m_files.find(CString(path));
    if (found == m_files.end()) throw CFileOpenError(path, "open", ERROR_FILE_NOT_FOUND, "not there");
    if (found->second.size() > limit) throw CFileError(path, "read", ERROR_DISK_FULL, "too large");
    return ReadFileHead(path, found->second.size());
}

CFileBytes CScriptedHost::ReadFileHead(std::string_view path, std::size_t size) {
    const auto found = m_files.find(CString(path));
    if (found == m_files.end()) throw CFileOpenError(path, "open", ERROR_FILE_NOT_FOUND, "not there");
    CFileBytes bytes;
    size = std::min(size, found->second.size());
    if (size == 0) return bytes;
    bytes.m_buffer = CPageBuffer(size);
    bytes.m_nSize = found->second.copy(bytes.m_buffer.GetData(), size);
    return bytes;
}

class CScriptedHost::CWriter : public CFileWriter {
public:
    CWriter(CScriptedHost& host, std::string_view path) : m_host(host), m_strPath(path) {}

    void Write(std::string_view bytes) override {
        if (m_bytes.size() + bytes.size() > m_host.m_nFreeBytes) {
            throw CFileError(m_strPath, "write", ERROR_DISK_FULL, "disk full");
        }
        m_bytes += bytes;
    }
    void Commit() override { m_host.m_files[m_strPath] = m_bytes; }

private:
    CScriptedHost& m_host;
    CString m_strPath;
    CString m_bytes;
};

std::unique_ptr<CFileWriter> CScriptedHost::CreateFile(std::string_view path) {
    if (DirectoryExists(path) || !MayCreate(path)) {
        throw CFileOpenError(path, "create", ERROR_ACCESS_DENIED, "access denied");
    }
    return std::make_unique<CWriter>(*this, path);
}

std::unique_ptr<std::ostream> CScriptedHost::CreateTextFile(std::string_view path) {
    if (!MayCreate(path)) return nullptr;
    // A stream whose every flush shows in m_files.
    class CText : public std::ostringstream {
    public:
        class CBuffer : public std::stringbuf {
        public:
            explicit CBuffer(CString& file) : m_file(file) {}
            int sync() override {
                m_file = str();
                return 0;
            }

        private:
            CString& m_file;
        };
        explicit CText(CString& file) : m_buffer(file) { std::ios::rdbuf(&m_buffer); }

    private:
        CBuffer m_buffer;
    };
    return std::make_unique<CText>(m_files[CString(path)]);
}

}  // namespace delvane
