// Small owners and calls shared by the sources of this folder.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/machine.h"
#include "platform/text.h"
#include "platform/win32/windows.h"

namespace delvane {

// A handle of the kernel and its close.
class CHandle {
public:
    explicit CHandle(HANDLE handle = nullptr) : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    CHandle(CHandle&& other) noexcept : m_handle(other.Release()) {}
    CHandle& operator=(CHandle&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    ~CHandle() { Reset(); }

    HANDLE Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }
    // False where the close reports a failure.
    bool Reset(HANDLE handle = nullptr) {
        const bool isClosed = m_handle == nullptr || CloseHandle(m_handle) != 0;
        m_handle = handle;
        return isClosed;
    }
    HANDLE Release() {
        const HANDLE handle = m_handle;
        m_handle = nullptr;
        return handle;
    }

private:
    HANDLE m_handle;
};

// One of the predefined keys, as the system has it.
inline ::HKEY SystemKey(HKEY key) { return reinterpret_cast<::HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(key))); }

// An operation of a library of the system, null where it does not have it.
template <class Operation>
Operation* FindOperation(HMODULE library, const char* name) {
    return library == nullptr ? nullptr
                              : reinterpret_cast<Operation*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}
template <class Operation>
Operation* FindOperation(const char* library, const char* name) {
    return FindOperation<Operation>(LoadLibraryA(library), name);
}

// What the system says of one of its error numbers, without a period.
CString ErrorText(std::uint32_t code);

// Whether the process has run out of something, as against the file or directory that it asked for.
bool IsExhaustion(std::uint32_t code);

// The path for the calls in UTF-16, in the form that has no limit of length.
std::wstring LongWidePath(std::string_view path);

// Whether a path may be too long for the calls in the code page, with room for a name or a pattern behind it.
bool IsLongPath(std::string_view path);

// A regular file open for reading; GetLastError tells why it could not be opened.
class CDiskFile : public CByteSource {
public:
    explicit CDiskFile(std::string_view path);

    explicit operator bool() const { return static_cast<bool>(m_file); }
    std::uint64_t GetSize() const override { return m_nSize; }
    std::size_t Read(std::uint64_t offset, void* into, std::size_t size) const override;
    HANDLE Get() const { return m_file.Get(); }

private:
    CHandle m_file;
    std::uint64_t m_nSize = 0;
};

}  // namespace delvane
