// A folder of a test's own, gone with it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace delvane {

class CTemporaryFolder {
public:
    CTemporaryFolder() {
        std::random_device random;
        do {
            m_strPath =
                (std::filesystem::temp_directory_path() / ("delvane-test-" + std::to_string(random()))).string();
        } while (!std::filesystem::create_directory(m_strPath));
    }
    ~CTemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_strPath, ignored);
    }
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;

    std::string operator/(std::string_view below) const { return m_strPath + "/" + std::string(below); }
    const std::string& GetPath() const { return m_strPath; }

    // Writes a file and the folders above it; gives its path.
    std::string Write(std::string_view below, std::string_view bytes = {}) const {
        const std::filesystem::path path = *this / below;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
        return path.string();
    }
    std::string Read(std::string_view below) const {
        std::ifstream file(*this / below, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string MakeFolder(std::string_view below) const {
        std::filesystem::create_directories(*this / below);
        return *this / below;
    }
    bool Exists(std::string_view below) const { return std::filesystem::exists(*this / below); }

private:
    std::string m_strPath;
};

}  // namespace delvane
