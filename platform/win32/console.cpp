// The standard streams of a program without a console of its own.
#include <iostream>
#include <sstream>

#include "platform/host.h"
#include "platform/win32/system.h"
#include "platform/win32/windows.h"

namespace delvane {
namespace {

// Writes to a handle: to a console in UTF-16, whatever its code page, to a file or a pipe the bytes as they are.
class CHandleBuffer : public std::stringbuf {
public:
    explicit CHandleBuffer(HANDLE handle) : std::stringbuf(std::ios::out), m_handle(handle) {
        DWORD mode = 0;
        m_bConsole = GetConsoleMode(handle, &mode) != 0;
    }

    bool IsConsole() const { return m_bConsole; }

protected:
    // What comes in pieces is given to the system by lines, unless the stream wants it at once.
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        const bool isLine = count > 0 && bytes[count - 1] == '\n';
        const std::streamsize taken = std::stringbuf::xsputn(bytes, count);
        return !isLine || sync() == 0 ? taken : 0;
    }
    int sync() override {
        const CString held = std::move(*this).str();
        DWORD written = 0;
        if (m_bConsole) {
            const std::wstring wide = Widen(held);
            return WriteConsoleW(m_handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr) != 0 ? 0
                                                                                                                 : -1;
        }
        for (std::size_t at = 0; at < held.size(); at += written) {
            const auto size = static_cast<DWORD>(held.size() - at);
            if (WriteFile(m_handle, held.data() + at, size, &written, nullptr) == 0 || written == 0) return -1;
        }
        return 0;
    }

private:
    HANDLE m_handle;
    bool m_bConsole = false;
};

// What the stream writes to from now on: what the program was started with, else the console of whoever started it.
// With neither it writes nowhere. Gives whether that is a console.
bool Connect(std::ostream& stream, DWORD which) {
    HANDLE handle = GetStdHandle(which);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        if (GetConsoleWindow() == nullptr && AttachConsole(ATTACH_PARENT_PROCESS) == 0) return false;
        handle = CreateFileA("CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             OPEN_EXISTING, 0, nullptr);
        if (handle == INVALID_HANDLE_VALUE) return false;
    }
    // They live as long as the process.
    auto* const buffer = new CHandleBuffer(handle);
    stream.rdbuf(buffer);
    stream.clear();
    return buffer->IsConsole();
}

bool g_hasTerminal = false;

}  // namespace

void PrepareStandardStreams() {
    Connect(std::cout, STD_OUTPUT_HANDLE);
    g_hasTerminal = Connect(std::cerr, STD_ERROR_HANDLE);
}

bool HasTerminal() { return g_hasTerminal; }

}  // namespace delvane
