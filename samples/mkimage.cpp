// Writes one small executable image to a file: what the sample installer installs.
#include <charconv>
#include <cstdio>
#include <exception>
#include <fstream>
#include <string>
#include <string_view>

#include "samples/image_writer.h"

namespace {

constexpr const char* kUsage =
    "usage: mkimage KIND OUT [--product TEXT] [--file TEXT] [--lang LANG]\n"
    "                        [--product-lang LANG] [--file-lang LANG] [--size N]\n"
    "KIND is pe32, pe64, pe32-native, pe64-native, dll, ne, le or mz.\n"
    "--product and --file give the version strings (PE and NE only), LANG is the key that they stand under: a\n"
    "language and a code page such as 040904E4 or 040904B0, the default. --size fills the file up with zeros.\n";

int FailUsage(std::string_view problem) {
    std::fprintf(stderr, "mkimage: %.*s\n%s", static_cast<int>(problem.size()), problem.data(), kUsage);
    return 2;
}

}  // namespace

// Exit codes: 0 written, 1 the file could not be written, 2 wrong arguments.
int main(int argumentCount, char** arguments) {
    using namespace delvane;
    if (argumentCount < 3) return FailUsage("KIND and OUT are needed");
    const std::optional<EImageKind> kind = FindImageKind(arguments[1]);
    if (!kind) return FailUsage(std::string("unknown kind ") + arguments[1]);

    CVersionStrings version;
    std::size_t size = 0;
    for (int at = 3; at < argumentCount; at += 2) {
        const std::string_view option = arguments[at];
        if (at + 1 == argumentCount) return FailUsage("no value after " + std::string(option));
        const std::string value = arguments[at + 1];
        if (option == "--product") {
            version.m_strProductVersion = value;
        } else if (option == "--file") {
            version.m_strFileVersion = value;
        } else if (option == "--lang") {
            version.m_strProductLanguage = version.m_strFileLanguage = value;
        } else if (option == "--product-lang") {
            version.m_strProductLanguage = value;
        } else if (option == "--file-lang") {
            version.m_strFileLanguage = value;
        } else if (option == "--size") {
            const char* const end = value.data() + value.size();
            const auto [rest, error] = std::from_chars(value.data(), end, size);
            if (error != std::errc() || rest != end || size > 1u << 30) return FailUsage("not a size: " + value);
        } else {
            return FailUsage("unknown option " + std::string(option));
        }
    }

    std::string bytes;
    try {
        bytes = MakeImage(*kind, version, size);
    } catch (const std::exception& error) {
        return FailUsage(error.what());
    }
    std::ofstream file(arguments[2], std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        std::fprintf(stderr, "mkimage: %s: cannot be written\n", arguments[2]);
        return 1;
    }
    return 0;
}
