// The peer of the Windows build: walks a directory or a hive by the same calls and keeps nothing.
//   api_walk ROOT | HKLM | HKCR
// Prints how many entries it saw.
#include <array>
#include <cstdio>
#include <string>
#include <vector>
#include <windows.h>

namespace {

unsigned long long g_seen = 0;

void WalkDirectory(const std::string& path) {
    WIN32_FIND_DATAA data;
    const HANDLE search = FindFirstFileA((path + "\\*").c_str(), &data);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        const std::string name = data.cFileName;
        if (name == "." || name == "..") continue;
        ++g_seen;
        const bool isLink = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && !isLink) WalkDirectory(path + "\\" + name);
    } while (FindNextFileA(search, &data) != 0);
    FindClose(search);
}

void WalkKey(HKEY key) {
    DWORD subkeys = 0;
    DWORD longestSubkey = 0;
    DWORD values = 0;
    DWORD longestName = 0;
    DWORD largestData = 0;
    if (RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &subkeys, &longestSubkey, nullptr, &values, &longestName,
                         &largestData, nullptr, nullptr) != 0) {
        return;
    }
    constexpr std::size_t kBytesOfUnit = 3;
    std::vector<char> name((longestName + longestSubkey + std::size_t{1}) * kBytesOfUnit);
    std::vector<BYTE> data(largestData * std::size_t{2} + 1);
    for (DWORD i = 0; i < values; ++i, ++g_seen) {
        auto nameLength = static_cast<DWORD>(name.size());
        auto dataLength = static_cast<DWORD>(data.size());
        RegEnumValueA(key, i, name.data(), &nameLength, nullptr, nullptr, data.data(), &dataLength);
    }
    for (DWORD i = 0; i < subkeys; ++i, ++g_seen) {
        auto nameLength = static_cast<DWORD>(name.size());
        HKEY below = nullptr;
        if (RegEnumKeyExA(key, i, name.data(), &nameLength, nullptr, nullptr, nullptr, nullptr) != 0) continue;
        if (RegOpenKeyExA(key, name.data(), 0, KEY_READ, &below) != 0) continue;
        WalkKey(below);
        RegCloseKey(below);
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    const std::string what = arguments[1];
    if (what == "HKLM") {
        WalkKey(HKEY_LOCAL_MACHINE);
    } else if (what == "HKCR") {
        WalkKey(HKEY_CLASSES_ROOT);
    } else {
        WalkDirectory(what);
    }
    std::printf("%llu\n", g_seen);
    return g_seen == 0 ? 1 : 0;
}
