// The standard streams of a program without a console of its own.
#include <array>
#include <iostream>
#include <streambuf>

#include "platform/host.h"
#include "platform/win32/system.h"
#include "platform/win32/windows.h"

namespace delvane {
namespace {

// Writes to a handle: to a console in UTF-16, whatever its code page, to a file or a pipe the bytes as they are.
class CHandleBuffer : public std::streambuf {
public:
    explicit CHandleBuffer(HANDLE handle) : m_handle(handle) {
        DWORD mode = 0;
        m_bConsole = GetConsoleMode(handle, &mode) != 0;
    }

    bool IsConsole() const { return m_bConsole; }

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        const char byte = traits_type::to_char_type(c);
        return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
    }
    // What comes in pieces is given to the system by lines, unless the stream wants it at once.
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        m_strHeld.append(bytes, static_cast<std::size_t>(count));
        return !m_strHeld.ends_with('\n') || Flush() ? count : 0;
    }
    int sync() override { return Flush() ? 0 : -1; }

private:
    bool Flush() {
        DWORD written = 0;
        bool isWritten = true;
        if (m_bConsole) {
            const std::wstring wide = Widen(m_strHeld);
            isWritten = WriteConsoleW(m_handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr) != 0;
        } else {
            for (std::size_t at = 0; isWritten && at < m_strHeld.size(); at += written)
                isWritten = WriteFile(m_handle, m_strHeld.data() + at, static_cast<DWORD>(m_strHeld.size() - at),
                                      &written, nullptr) != 0 &&
                            written != 0;
        }
        m_strHeld.clear();
        return isWritten;
    }

    HANDLE m_handle;
    bool m_bConsole = false;
    CString m_strHeld;
};

// What the stream writes to from now on: what the program was started with, else the console of whoever started it.
// With neither it writes nowhere.
// Gives whether that is a console.
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
