// Makes small executable images, for the sample machine and for the tests.
//
// The images are whole: their headers, tables and version resources are those that a linker and a resource compiler
// write, and the PE programs run (and end at once with exit code 0). Nothing in them depends on the time or the host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace delvane {

enum class EImageKind {
    Pe32,
    Pe64,
    Pe32Native,  // a driver: a PE image of the native subsystem
    Pe64Native,
    Dll,  // 64-bit
    Ne,   // a program for 16-bit Windows
    Le,   // a virtual device driver
    Mz,   // a program for MS-DOS
};

// The kind by its name: pe32, pe64, pe32-native, pe64-native, dll, ne, le, mz.
std::optional<EImageKind> FindImageKind(std::string_view name);

// Only PE and NE images have a version resource here.
bool CanHaveVersion(EImageKind kind);

// The strings of a version resource, as UTF-8. A missing one is left out. Each stands in the string table of its own
// language, eight hexadecimal digits; where the two languages are the same they share a table.
struct CVersionStrings {
    std::optional<std::string> m_strProductVersion;
    std::optional<std::string> m_strFileVersion;
    std::string m_strProductLanguage = "040904B0";
    std::string m_strFileLanguage = "040904B0";

    bool IsEmpty() const { return !m_strProductVersion && !m_strFileVersion; }
};

// The bytes of an image, filled up with zeros to at least `size`. Throws std::invalid_argument for a version resource
// that the kind cannot have, a language that is not eight digits, or strings too long for a version resource.
std::string MakeImage(EImageKind kind, const CVersionStrings& version = {}, std::size_t size = 0);

// The version block alone: wide as a PE image has it (UTF-16; three bytes of a lone surrogate make a lone surrogate),
// else as an NE image has it (Latin-1; other characters become question marks).
std::string MakeVersionBlock(const CVersionStrings& version, bool wide);

}  // namespace delvane
