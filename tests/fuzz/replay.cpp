// Gives the files of a folder to a fuzz target, one by one: what a fuzzer has found stays found.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1]))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& path : files) {
        std::printf("%s\n", path.filename().string().c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    return files.empty() ? 1 : 0;
}
