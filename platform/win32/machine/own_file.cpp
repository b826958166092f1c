#include "platform/own_file.h"

#include <algorithm>
#include <fstream>

#include "platform/host.h"
#include "platform/win32/system.h"

namespace delvane {
namespace {

template <class Error = CFileError>
[[noreturn]] void Throw(std::string_view path, std::string_view action, std::uint32_t code = GetLastError()) {
    throw Error(path, action, code, ErrorText(code));
}

// Whether a new file may take this place, with the error number if not: nothing is there, or a regular file that may be
// written.
DWORD MayTakePlace(const CString& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD code = GetLastError();
        return code == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : code;
    }
    if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) return ERROR_ACCESS_DENIED;
    constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const CHandle file(CreateFileA(path.c_str(), GENERIC_WRITE, kShare, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file) return GetLastError();
    return GetFileType(file.get()) == FILE_TYPE_DISK ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

class COwnFileWriter : public CFileWriter {
public:
    COwnFileWriter(CHandle file, CString temporary, CString target)
        : m_file(std::move(file)), m_strTemporary(std::move(temporary)), m_strTarget(std::move(target)) {}
    ~COwnFileWriter() override {
        m_file.reset();
        if (!m_strTemporary.empty()) DeleteFileA(m_strTemporary.c_str());
    }

    void Write(std::string_view bytes) override {
        constexpr std::size_t kMostAtOnce = 1 << 24;
        while (!bytes.empty()) {
            ThrowIfInterrupted();
            DWORD written = 0;
            const auto size = static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce));
            if (WriteFile(m_file.get(), bytes.data(), size, &written, nullptr) == 0) Throw(m_strTarget, "write");
            bytes.remove_prefix(written);
        }
    }

    // As a text stream of this system does: a carriage return before each line feed.
    void WriteText(std::string_view text) override {
        CString lines;
        lines.reserve(text.size() + text.size() / 16);
        for (const char c : text) {
            if (c == '\n') lines += '\r';
            lines += c;
        }
        Write(lines);
    }

    // The bytes reach the disk before the name does, so that a crash leaves the old file or the new one, never half.
    void Commit() override {
        ThrowIfInterrupted();
        if (FlushFileBuffers(m_file.get()) == 0) Throw(m_strTarget, "flush");
        if (CloseHandle(m_file.release()) == 0) Throw(m_strTarget, "close");
        ThrowIfInterrupted();  // flushing takes the longest
        if (MoveFileExA(m_strTemporary.c_str(), m_strTarget.c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
            Throw(m_strTarget, "replace");
        }
        m_strTemporary.clear();
    }

private:
    // Dies last: by then the temporary file is gone.
    const CInterruptGuard m_guard{CInterruptGuard::EOwner::kCleansUp};
    CHandle m_file;
    CString m_strTemporary;  // empty once it has taken the target's place
    CString m_strTarget;
};

CString DirectoryOf(const CString& path) {
    const std::size_t end = path.find_last_of("\\/");
    if (end == CString::npos) return path.size() >= 2 && path[1] == ':' ? path.substr(0, 2) : CString();
    return path.substr(0, end + 1);
}

}  // namespace

std::unique_ptr<CFileWriter> CreateOwnFile(const std::string& path, std::string_view shownPath) {
    DWORD code = MayTakePlace(path);
    if (code != ERROR_SUCCESS) Throw<CFileOpenError>(shownPath, "create", code);
    const CInterruptGuard guard(CInterruptGuard::EOwner::kCleansUp);  // until the writer has its own
    CHandle file;
    std::string temporary = NameTemporary(DirectoryOf(path), GetCurrentProcessId(), [&](const std::string& name) {
        file =
            CHandle(CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        code = GetLastError();
        return file || code != ERROR_FILE_EXISTS;
    });
    if (!file) Throw<CFileOpenError>(shownPath, "create", code);
    return std::make_unique<COwnFileWriter>(std::move(file), std::move(temporary), path);
}

std::unique_ptr<std::ostream> CreateOwnTextFile(const std::string& path) {
    if (MayTakePlace(path) != ERROR_SUCCESS) return nullptr;
    auto stream = std::make_unique<std::ofstream>(path, std::ios::trunc);  // with CR LF
    if (!stream->is_open()) return nullptr;
    return stream;
}

CFileBytes ReadOwnFile(const std::string& path, std::string_view shownPath, std::uint64_t limit, bool headOnly) {
    const CDiskFile file(path);
    if (!file) Throw<CFileOpenError>(shownPath, "open");
    return ReadOpenFile(file.GetSize(), shownPath, limit, headOnly, [&](char* into, std::size_t size) {
        constexpr std::size_t kMostAtOnce = 1 << 24;
        DWORD got = 0;
        if (ReadFile(file.Get(), into, static_cast<DWORD>(std::min(size, kMostAtOnce)), &got, nullptr) == 0) {
            Throw(shownPath, "read");
        }
        return std::size_t{got};
    });
}

}  // namespace delvane
