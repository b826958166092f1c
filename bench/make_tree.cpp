// Makes the trees that are measured: a prefix-shaped machine with many files, and small changes to it. The same
// arguments give the same tree.
//   make_tree machine FOLDER FILES   a machine of that many files, about seven a directory, some directories huge
//   make_tree flat FOLDER FILES      a machine with that many files in one directory
//   make_tree change FOLDER          changes, deletes or adds next to about one file in a hundred
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr const char* kWords[] = {"system", "Net",   "core",   "Data",    "shell",   "User",   "Config", "cache",
                                  "Common", "share", "driver", "Service", "install", "update", "Media",  "policy",
                                  "Event",  "trace", "log",    "Font",    "help",    "Größe",  "locale", "Module"};
constexpr const char* kExtensions[] = {".dll", ".exe", ".txt", ".xml", ".mui", ".png", ".json", ".dat", ".sys", ""};

class CTreeMaker {
public:
    explicit CTreeMaker(std::uint64_t fileCount) : m_nLeft(fileCount) {}

    void Fill(const fs::path& directory, int depth) {
        // Seven files a directory, as on an installed Windows, and one directory in two thousand is huge.
        const bool huge = m_nLeft > 20'000 && Random(2000) == 0;
        const std::uint64_t files = std::min<std::uint64_t>(m_nLeft, huge ? 4'000 : Random(12));
        for (std::uint64_t i = 0; i < files; ++i)
            MakeFile(directory / (Word() + Word() + Number() + Extension()));
        m_nLeft -= files;
        const std::uint64_t subdirs = depth < 3 ? 24 : depth < 8 ? Random(4) : 0;
        for (std::uint64_t i = 0; i < subdirs && m_nLeft > 0; ++i) {
            const fs::path subdir = directory / (Word() + "-" + Word() + Number());
            fs::create_directory(subdir);
            Fill(subdir, depth + 1);
        }
    }
    std::uint64_t GetLeft() const { return m_nLeft; }

private:
    std::uint64_t Random(std::uint64_t below) { return m_random() % below; }
    std::string Word() { return kWords[Random(std::size(kWords))]; }
    std::string Number() { return std::to_string(m_nNumber++); }
    std::string Extension() { return kExtensions[Random(std::size(kExtensions))]; }
    void MakeFile(const fs::path& path) {
        std::ofstream(path, std::ios::binary).close();
        fs::resize_file(path, Random(1 << 20));
        fs::last_write_time(path, fs::file_time_type(std::chrono::seconds(Random(100'000'000))));
    }

    std::mt19937_64 m_random{20'010'203};
    std::uint64_t m_nLeft;
    std::uint64_t m_nNumber = 0;
};

void MakeMachine(const fs::path& folder) {
    fs::create_directories(folder / "drive_c/windows/system32");
    fs::create_directories(folder / "dosdevices");
    fs::create_directory_symlink("../drive_c", folder / "dosdevices/c:");
    std::ofstream(folder / "system.reg") << "WINE REGISTRY Version 2\n";
    std::ofstream(folder / "user.reg") << "WINE REGISTRY Version 2\n";
}

void Change(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder / "drive_c")) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (std::size_t i = 50; i < files.size(); i += 100) {
        switch (i / 100 % 3) {
            case 0:
                fs::resize_file(files[i], fs::file_size(files[i]) + 1);
                break;
            case 1:
                fs::remove(files[i]);
                break;
            default:
                std::ofstream(files[i].string() + ".new").close();
        }
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    const std::string what = argumentCount > 2 ? arguments[1] : "";
    const fs::path folder = argumentCount > 2 ? arguments[2] : "";
    const std::uint64_t count = argumentCount > 3 ? std::stoull(arguments[3]) : 0;
    if (what == "machine" && count > 0) {
        MakeMachine(folder);
        CTreeMaker maker(count);
        for (int pass = 0; maker.GetLeft() > 0; ++pass) {
            const fs::path top = folder / "drive_c" / ("top" + std::to_string(pass));
            fs::create_directory(top);
            maker.Fill(top, 0);
        }
    } else if (what == "flat" && count > 0) {
        MakeMachine(folder);
        fs::create_directory(folder / "drive_c/flat");
        for (std::uint64_t i = 0; i < count; ++i) {
            // Not in the order of the names.
            std::ofstream(folder / "drive_c/flat" / ("file" + std::to_string(i * 7919 % count) + ".txt")).close();
        }
    } else if (what == "change") {
        Change(folder);
    } else {
        std::cerr << "usage: make_tree machine|flat FOLDER FILES | change FOLDER\n";
        return 2;
    }
    return 0;
}
