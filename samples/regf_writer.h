// Writes registry hive files for the sample machine and the tests.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace delvane {

// A hive in the making: a tree of keys, then its bytes. Names and texts are given in UTF-8 (an unpaired surrogate as
// its three bytes) and stored as Latin-1 or UTF-16.
class CRegfWriter {
public:
    struct CValue {
        std::string m_strName;  // empty: the unnamed value
        std::uint32_t m_dwType = 0;
        std::string m_data;  // as it is stored
    };
    struct CKey {
        std::string m_strName;
        std::uint16_t m_nFlags = 0;  // 0x10 a symbolic link, 0x40 a predefined key
        std::vector<CValue> m_values;
        std::vector<std::unique_ptr<CKey>> m_subkeys;

        // The subkey at that path, components joined by a backslash, made where it is missing.
        CKey& Make(std::string_view path);
        // Puts the value in the place of one of that name. Types 1, 2 and 7 take the UTF-16 that is stored.
        void Set(std::string_view name, std::uint32_t type, std::string_view data);
    };

    CKey& GetRoot() { return m_root; }
    std::string Build();

    std::uint32_t m_nMinorVersion = 5;
    std::string m_strListKind;         // "lf", "lh" or "li"; empty: what the version has
    std::size_t m_nLargestList = 507;  // longer lists are cut up below a list of lists
    bool m_bSorts = true;              // subkeys by their names, as Windows has them; else as they were made
    std::uint32_t m_nSequence1 = 1;
    std::uint32_t m_nSequence2 = 1;

private:
    std::size_t GetCellHead() const { return m_nMinorVersion <= 1 ? 8 : 4; }
    std::uint32_t AddCell(std::string_view content);
    std::uint32_t AddKey(const CKey& key, std::uint32_t parent);
    std::uint32_t AddSubkeys(const CKey& key, std::uint32_t cell);
    std::uint32_t AddList(const std::vector<std::pair<const CKey*, std::uint32_t>>& keys, std::size_t begin,
                          std::size_t end);
    std::uint32_t AddValues(const CKey& key);
    std::uint32_t AddValue(const CValue& value);
    std::uint32_t AddData(std::string_view data);

    CKey m_root;
    std::string m_cells;
    std::uint32_t m_nSecurity = 0;
};

// UTF-8 as UTF-16, least significant byte first.
std::string ToUtf16(std::string_view text);

// Puts the sum over a base block where it belongs, in the first 512 bytes of a hive or a log.
void SetChecksum(std::string& bytes);

}  // namespace delvane
