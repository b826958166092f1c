#include "samples/regf_writer.h"

#include <algorithm>

#include "platform/little_endian.h"
#include "platform/text.h"

namespace delvane {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kSegment = 16344;
constexpr std::uint32_t kNoCell = 0xFFFF'FFFF;

std::string U16(std::size_t number) { return BytesOf(number, 2); }
std::string U32(std::size_t number) { return BytesOf(number, 4); }

void Put(std::string& bytes, std::size_t at, const std::string& what) { bytes.replace(at, what.size(), what); }

std::uint32_t DecodeUtf8(std::string_view text, std::size_t& at) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(at++);
    if (first < 0x80) return first;
    const unsigned more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    std::uint32_t c = first & (0x3FU >> more);
    for (unsigned i = 0; i < more && at < text.size(); ++i)
        c = c << 6 | (byte(at++) & 0x3FU);
    return c;
}

// A name as it is stored: one byte a character where all are Latin-1.
std::string StoredName(std::string_view name, bool& compressed) {
    const std::string wide = ToUtf16(name);
    compressed = true;
    for (std::size_t i = 1; i < wide.size(); i += 2)
        compressed = compressed && wide[i] == '\0';
    if (!compressed) return wide;
    std::string narrow;
    for (std::size_t i = 0; i < wide.size(); i += 2)
        narrow += wide[i];
    return narrow;
}

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// Windows looks keys up in the order of their names in capitals.
bool SortsBefore(std::string_view a, std::string_view b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return static_cast<unsigned char>(Upper(x)) < static_cast<unsigned char>(Upper(y));
    });
}

// What a list tells of a name beside its cell: its first four characters, or a sum over all of them.
std::uint32_t HintOf(std::string_view name, bool hash) {
    const std::string wide = ToUtf16(name);
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < wide.size() && (hash || i < 8); i += 2) {
        const auto low = static_cast<unsigned char>(hash && wide[i + 1] == 0 ? Upper(wide[i]) : wide[i]);
        const std::uint32_t c = low | static_cast<std::uint32_t>(static_cast<unsigned char>(wide[i + 1])) << 8;
        sum = hash ? sum * 37 + c : sum | (c < 0x100 ? c : 0) << 4 * i;
    }
    return sum;
}

}  // namespace

std::string ToUtf16(std::string_view text) {
    std::string wide;
    for (std::size_t at = 0; at < text.size();) {
        const std::uint32_t c = DecodeUtf8(text, at);
        if (c < 0x10000) {
            wide += U16(c);
        } else {
            wide += U16(0xD800 + ((c - 0x10000) >> 10)) + U16(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return wide;
}

void SetChecksum(std::string& bytes) {
    std::string sum(4, '\0');
    for (std::size_t i = 0; i < 508; ++i)
        sum[i % 4] = static_cast<char>(sum[i % 4] ^ bytes[i]);
    if (sum == std::string(4, '\0')) sum[0] = 1;
    if (sum == std::string(4, '\xFF')) sum[0] = '\xFE';
    Put(bytes, 508, sum);
}

CRegfWriter::CKey& CRegfWriter::CKey::Make(std::string_view path) {
    CKey* key = this;
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find('\\'));
        path.remove_prefix(std::min(path.size(), name.size() + 1));
        auto& subkeys = key->m_subkeys;
        auto found = std::find_if(subkeys.begin(), subkeys.end(),
                                  [&](const auto& subkey) { return mbsicmp(subkey->m_strName, name) == 0; });
        if (found == subkeys.end()) {
            subkeys.push_back(std::make_unique<CKey>());
            subkeys.back()->m_strName = name;
            found = subkeys.end() - 1;
        }
        key = found->get();
    }
    return *key;
}

void CRegfWriter::CKey::Set(std::string_view name, std::uint32_t type, std::string_view data) {
    std::erase_if(m_values, [&](const CValue& value) { return mbsicmp(value.m_strName, name) == 0; });
    m_values.push_back({std::string(name), type, std::string(data)});
}

// One bin holds all cells; each begins at a multiple of eight with its size, negative for one in use, and in the first
// versions with a word more.
std::uint32_t CRegfWriter::AddCell(std::string_view content) {
    const auto cell = static_cast<std::uint32_t>(m_cells.size());
    const std::size_t size = (GetCellHead() + content.size() + 7) / 8 * 8;
    m_cells += U32(0 - size);
    m_cells.resize(cell + GetCellHead());
    m_cells += content;
    m_cells.resize(cell + size);
    return cell;
}

std::uint32_t CRegfWriter::AddKey(const CKey& key, std::uint32_t parent) {
    bool compressed = false;
    const std::string name = StoredName(key.m_strName, compressed);
    const bool isRoot = &key == &m_root;
    std::string content = "nk" + U16(key.m_nFlags + (compressed ? 0x20 : 0) + (isRoot ? 0xC : 0));
    content += BytesOf(0x01C4'09A2'BB01'6800, 8) + U32(0) + U32(parent);
    content += U32(key.m_subkeys.size()) + U32(0) + U32(kNoCell) + U32(kNoCell);
    content += U32(key.m_values.size()) + U32(kNoCell) + U32(m_nSecurity) + U32(kNoCell);
    content += std::string(20, '\0') + U16(name.size()) + U16(0) + name;
    const std::uint32_t cell = AddCell(content);
    // The lists know the cell of their key, so they come behind it.
    const std::uint32_t values = key.m_values.empty() ? kNoCell : AddValues(key);
    const std::uint32_t subkeys = key.m_subkeys.empty() ? kNoCell : AddSubkeys(key, cell);
    Put(m_cells, cell + GetCellHead() + 28, U32(subkeys));
    Put(m_cells, cell + GetCellHead() + 40, U32(values));
    return cell;
}

std::uint32_t CRegfWriter::AddSubkeys(const CKey& key, std::uint32_t cell) {
    std::vector<std::pair<const CKey*, std::uint32_t>> keys;
    for (const auto& subkey : key.m_subkeys)
        keys.emplace_back(subkey.get(), 0);
    if (m_bSorts) {
        std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) {
            return SortsBefore(a.first->m_strName, b.first->m_strName);
        });
    }
    for (auto& [subkey, place] : keys)
        place = AddKey(*subkey, cell);
    if (keys.size() <= m_nLargestList) return AddList(keys, 0, keys.size());
    std::string lists;
    for (std::size_t at = 0; at < keys.size(); at += m_nLargestList)
        lists += U32(AddList(keys, at, std::min(at + m_nLargestList, keys.size())));
    return AddCell("ri" + U16(lists.size() / 4) + lists);
}

std::uint32_t CRegfWriter::AddList(const std::vector<std::pair<const CKey*, std::uint32_t>>& keys, std::size_t begin,
                                   std::size_t end) {
    std::string kind = m_strListKind;
    if (kind.empty()) kind = m_nMinorVersion >= 5 ? "lh" : m_nMinorVersion >= 3 ? "lf" : "li";
    std::string list = kind + U16(end - begin);
    for (std::size_t i = begin; i < end; ++i) {
        list += U32(keys[i].second);
        if (kind != "li") list += U32(HintOf(keys[i].first->m_strName, kind == "lh"));
    }
    return AddCell(list);
}

std::uint32_t CRegfWriter::AddValues(const CKey& key) {
    std::string list;
    for (const CValue& value : key.m_values)
        list += U32(AddValue(value));
    return AddCell(list);
}

std::uint32_t CRegfWriter::AddValue(const CValue& value) {
    bool compressed = false;
    const std::string name = StoredName(value.m_strName, compressed);
    const std::size_t size = value.m_data.size();
    std::string data;
    if (size <= 4) {
        data = value.m_data;
        data.resize(4);
    } else {
        data = U32(AddData(value.m_data));
    }
    return AddCell("vk" + U16(name.size()) + U32(size <= 4 ? size | 0x8000'0000 : size) + data + U32(value.m_dwType) +
                   U16(compressed && !name.empty() ? 1 : 0) + U16(0) + name);
}

std::uint32_t CRegfWriter::AddData(std::string_view data) {
    if (data.size() <= kSegment || m_nMinorVersion < 4) return AddCell(data);
    std::string segments;
    for (std::size_t at = 0; at < data.size(); at += kSegment)
        segments += U32(AddCell(std::string(data.substr(at, kSegment)) + std::string(4, '\0')));
    return AddCell("db" + U16(segments.size() / 4) + U32(AddCell(segments)) + U32(0));
}

std::string CRegfWriter::Build() {
    constexpr std::size_t kBinHead = 32;
    m_cells.assign(kBinHead, '\0');
    // The security that all keys share: a descriptor that says nothing.
    m_nSecurity = static_cast<std::uint32_t>(m_cells.size());
    AddCell("sk" + U16(0) + U32(m_nSecurity) + U32(m_nSecurity) + U32(1) + U32(20) + BytesOf(0x8000'0001, 4) +
            std::string(16, '\0'));
    const std::uint32_t root = AddKey(m_root, kNoCell);
    const std::size_t used = m_cells.size();
    const std::size_t size = (used + 8 + kPage - 1) / kPage * kPage;
    m_cells += U32(size - used);  // the rest is one free cell
    m_cells.resize(size);
    Put(m_cells, 0, "hbin" + U32(0) + U32(size));
    std::string base = "regf" + U32(m_nSequence1) + U32(m_nSequence2) + BytesOf(0x01C4'09A2'BB01'6800, 8) + U32(1) +
                       U32(m_nMinorVersion) + U32(0) + U32(1) + U32(root) + U32(size) + U32(1);
    base.resize(kPage);
    SetChecksum(base);
    return base + m_cells;
}

}  // namespace delvane
