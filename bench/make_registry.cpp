// Makes the registries that are measured. The same arguments give the same registry.
//   make_registry text FOLDER VALUES     a prefix whose system.reg has that many values, about two a key
//   make_registry hive FOLDER VALUES     the same as the SOFTWARE hive of a Windows volume
//   make_registry flat-text FOLDER KEYS [shuffled]    a prefix with one key of that many subkeys
//   make_registry flat-hive FOLDER KEYS [shuffled]    the same in a hive
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>

#include "samples/regf_writer.h"

namespace fs = std::filesystem;

namespace {

using delvane::CRegfWriter;

constexpr const char* kWords[] = {"Setup",    "Policies", "Uninstall", "CurrentVersion", "Explorer", "Shell",
                                  "Services", "Control",  "Driver",    "Device",         "Network",  "Security",
                                  "Cache",    "Settings", "Language",  "Installer",      "Products", "Update"};

// Texts stand in the tree as they are; only a hive makes UTF-16 of them.
class CRegistryMaker {
public:
    explicit CRegistryMaker(std::uint64_t valueCount) : m_nLeft(valueCount) {}

    void Fill(CRegfWriter::CKey& top) {
        CRegfWriter::CKey& objects = AddKey(AddKey(top, "Objects"), "CLSID");  // HKCR would show Classes again
        const std::uint64_t general = m_nLeft / 2;
        while (m_nLeft > general) {
            CRegfWriter::CKey& object = AddKey(objects, Guid());
            AddValues(object, 1);
            AddValues(AddKey(object, "InprocServer32"), 2);
            AddValues(AddKey(object, "ProgID"), 1);
        }
        for (std::uint64_t number = 0; m_nLeft > 0; ++number)
            FillBelow(AddKey(top, Word() + std::to_string(number)), 0);
    }

private:
    void FillBelow(CRegfWriter::CKey& key, int depth) {
        AddValues(key, m_random() % 8);
        const std::uint64_t subkeys = depth > 7 ? 0 : m_random() % 4;
        for (std::uint64_t i = 0; i < subkeys && m_nLeft > 0; ++i)
            FillBelow(AddKey(key, Word() + std::to_string(i)), depth + 1);
    }
    static CRegfWriter::CKey& AddKey(CRegfWriter::CKey& parent, std::string name) {
        parent.m_subkeys.push_back(std::make_unique<CRegfWriter::CKey>());
        parent.m_subkeys.back()->m_strName = std::move(name);
        return *parent.m_subkeys.back();
    }
    void AddValues(CRegfWriter::CKey& key, std::uint64_t count) {
        for (std::uint64_t i = 0; i < count && m_nLeft > 0; ++i, --m_nLeft) {
            const std::string name = i == 0 ? "" : Word() + std::to_string(i);
            const std::uint64_t kind = m_random() % 100;
            if (kind < 65) {
                key.m_values.push_back({name, 1, Text() + '\0'});
            } else if (kind < 85) {
                key.m_values.push_back({name, 4, std::string(3, '\0') + static_cast<char>(kind)});
            } else if (kind < 97) {
                std::string bytes(16 + m_random() % 200, '\0');
                std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<char>(m_random()); });
                key.m_values.push_back({name, 3, bytes});
            } else {
                key.m_values.push_back({name, 2, "%SystemRoot%\\" + Text() + '\0'});
            }
        }
    }
    std::string Word() { return kWords[m_random() % std::size(kWords)]; }
    std::string Guid() {
        char text[40];
        std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%04X-%012llX}", static_cast<unsigned>(m_random()),
                      static_cast<unsigned>(m_random() & 0xFFFF), static_cast<unsigned>(m_random() & 0xFFFF),
                      static_cast<unsigned>(m_random() & 0xFFFF),
                      static_cast<unsigned long long>(m_random() & 0xFFFF'FFFF'FFFF));
        return text;
    }
    std::string Text() {
        const std::uint64_t kind = m_random() % 3;
        if (kind == 0) return Guid();
        if (kind == 1) return "C:\\Program Files\\" + Word() + "\\" + Word() + "\\" + Word() + ".dll";
        return Word() + " " + Word() + " \"" + Word() + "\"";
    }

    std::mt19937_64 m_random{20'010'203};
    std::uint64_t m_nLeft;
};

std::string Escaped(const std::string& text, char special) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == special) escaped += '\\';
        escaped += c;
    }
    return escaped;
}

// As Wine writes it.
void WriteText(const CRegfWriter::CKey& key, const std::string& path, std::ostream& out) {
    if (!key.m_values.empty() || key.m_subkeys.empty()) {
        out << '[' << path << "] 1700000000\n#time=1da1c0a7bd41a00\n";
        for (const CRegfWriter::CValue& value : key.m_values) {
            out << (value.m_strName.empty() ? "@" : '"' + Escaped(value.m_strName, '"') + '"') << '=';
            const std::string text = value.m_data.substr(0, value.m_data.size() - 1);
            char number[16];
            if (value.m_dwType == 1) {
                out << '"' << Escaped(text, '"') << "\"\n";
            } else if (value.m_dwType == 2) {
                out << "str(2):\"" << Escaped(text, '"') << "\"\n";
            } else if (value.m_dwType == 4) {
                std::snprintf(number, sizeof number, "%08x", static_cast<unsigned>(value.m_data[3]));
                out << "dword:" << number << '\n';
            } else {
                std::string line = "hex:";
                for (std::size_t i = 0; i < value.m_data.size(); ++i) {
                    std::snprintf(number, sizeof number, i + 1 < value.m_data.size() ? "%02x," : "%02x",
                                  static_cast<unsigned char>(value.m_data[i]));
                    line += number;
                    if (line.size() > 76 && i + 1 < value.m_data.size()) {
                        out << line << "\\\n";
                        line = "  ";
                    }
                }
                out << line << '\n';
            }
        }
        out << '\n';
    }
    for (const auto& subkey : key.m_subkeys)
        WriteText(*subkey, (path.empty() ? "" : path + "\\\\") + Escaped(subkey->m_strName, ']'), out);
}

void SortAll(CRegfWriter::CKey& key) {
    std::sort(key.m_subkeys.begin(), key.m_subkeys.end(),
              [](const auto& a, const auto& b) { return a->m_strName < b->m_strName; });
    for (const auto& subkey : key.m_subkeys)
        SortAll(*subkey);
}

void MakeUtf16(CRegfWriter::CKey& key) {
    for (CRegfWriter::CValue& value : key.m_values) {
        if (value.m_dwType <= 2) value.m_data = delvane::ToUtf16(value.m_data);
    }
    for (const auto& subkey : key.m_subkeys)
        MakeUtf16(*subkey);
}

void MakePrefix(const fs::path& folder, const CRegfWriter::CKey& software) {
    fs::create_directories(folder / "drive_c");
    fs::create_directories(folder / "dosdevices");
    fs::create_directory_symlink("../drive_c", folder / "dosdevices/c:");
    std::ofstream(folder / "user.reg") << "WINE REGISTRY Version 2\n";
    std::ofstream text(folder / "system.reg");
    text << "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\Machine\n\n#arch=win64\n\n";
    WriteText(software, "Software", text);
}

void MakeVolume(const fs::path& folder, CRegfWriter& software) {
    const fs::path config = folder / "Windows/System32/config";
    fs::create_directories(config);
    MakeUtf16(software.GetRoot());
    std::ofstream(config / "SOFTWARE", std::ios::binary) << software.Build();
    for (const char* const name : {"SAM", "SECURITY"})
        std::ofstream(config / name, std::ios::binary) << CRegfWriter().Build();
    CRegfWriter system;
    system.GetRoot().Make("Select").Set("Current", 4, std::string("\1\0\0\0", 4));
    system.GetRoot().Make("ControlSet001");
    std::ofstream(config / "SYSTEM", std::ios::binary) << system.Build();
    fs::create_directories(folder / "Users/Bench");
    std::ofstream(folder / "Users/Bench/NTUSER.DAT", std::ios::binary) << CRegfWriter().Build();
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 4) {
        std::cerr << "usage: make_registry text|hive|flat-text|flat-hive FOLDER COUNT [shuffled]\n";
        return 2;
    }
    const std::string kind = arguments[1];
    const std::uint64_t count = std::stoull(arguments[3]);
    CRegfWriter software;
    if (kind.starts_with("flat-")) {
        CRegfWriter::CKey& flat = software.GetRoot().Make("Flat");
        for (std::uint64_t i = 0; i < count; ++i) {
            flat.m_subkeys.push_back(std::make_unique<CRegfWriter::CKey>());
            flat.m_subkeys.back()->m_strName = "Key" + std::to_string(1'000'000 + i * 7919 % count);
            flat.m_subkeys.back()->m_values.push_back({"Number", 4, std::string(4, '\1')});
        }
    } else {
        CRegistryMaker(count).Fill(software.GetRoot());
    }
    software.m_bSorts = argumentCount < 5;
    if (software.m_bSorts) SortAll(software.GetRoot());
    if (kind.ends_with("text")) {
        MakePrefix(arguments[2], software.GetRoot());
    } else {
        MakeVolume(arguments[2], software);
    }
    return 0;
}
