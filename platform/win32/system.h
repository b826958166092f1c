// Small owners and calls shared by the sources of this folder and those below.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/host.h"
#include "platform/machine.h"
#include "platform/text.h"
#include "platform/win32/windows.h"

namespace delvane {

// Between the process's code page and the UTF-16 of the system.
std::wstring Widen(std::string_view text);
CString Narrow(std::wstring_view text);

// A handle of the kernel and its close.
struct CHandleClose {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
class CHandle : public std::unique_ptr<void, CHandleClose> {
public:
    explicit CHandle(HANDLE handle = nullptr) : unique_ptr(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
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

// The path that a call writes into a room of bytes; empty where it has none.
template <class Call>
CString PathOf(const Call& call) {
    CString path(0x8000, '\0');  // far beyond the usual length
    const auto size = static_cast<DWORD>(path.size());
    const DWORD length = call(path.data(), size);
    path.resize(length < size ? length : 0);
    return path;
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
    HANDLE Get() const { return m_file.get(); }

private:
    CHandle m_file;
    std::uint64_t m_nSize = 0;
};

// The two halves of what MakeSystem gives. The folder is that of the program's own files, without a backslash at its
// end.
std::unique_ptr<CMachine> MakeMachine();
std::unique_ptr<CHost> MakeHost(CString programFolder);

}  // namespace delvane
