// The cells of a hive, by their first two letters:
//
//     nk   a key: flags, the list of its subkeys, the list of its values, its name
//     lf lh   a list of subkeys, eight bytes each: the key's cell and a hint at its name
//     li   a list of subkeys, four bytes each
//     ri   a list of such lists
//     vk   a value: size, data (up to four bytes stand in the value itself), type, name
//     db   large data: a list of segments
//
// Lists of values and plain data have no letters. All keys are visited once when the hive is read: the table that comes
// of it holds no key twice, whatever the lists say.
//
// The reader is our own because logs are replayed, damage costs a key and no more, and it is fast: a capture of 200,000
// values takes a fifth of the processor time in which hivexml prints them.
#include "platform/hosted/registry/regf_hive.h"

#include <algorithm>
#include <filesystem>

#include "platform/file_search.h"
#include "platform/hosted/files/host_file.h"
#include "platform/hosted/registry/regf.h"
#include "platform/own_file.h"
#include "platform/utf.h"

namespace delvane {

using namespace regf;

namespace {

// Cells are told by 32-bit offsets, of which Windows uses half.
constexpr std::uint64_t kLargestHive = std::uint64_t{1} << 31;

// Offsets in a key's cell.
constexpr std::size_t kKeyFlags = 2;
constexpr std::size_t kKeySubkeyCount = 20;
constexpr std::size_t kKeySubkeys = 28;
constexpr std::size_t kKeyValueCount = 36;
constexpr std::size_t kKeyValues = 40;
constexpr std::size_t kKeyNameSize = 72;
constexpr std::size_t kKeyName = 76;

constexpr std::uint16_t kFlagLink = 0x10;
constexpr std::uint16_t kFlagCompressed = 0x20;
constexpr std::uint16_t kFlagPredefined = 0x40;  // the key stands for a predefined one; its counts mean something else

// Offsets in a value's cell.
constexpr std::size_t kValueNameSize = 2;
constexpr std::size_t kValueSize = 4;
constexpr std::size_t kValueData = 8;
constexpr std::size_t kValueType = 12;
constexpr std::size_t kValueFlags = 16;
constexpr std::size_t kValueName = 20;
constexpr std::uint16_t kValueCompressed = 1;
constexpr std::uint32_t kResident = 0x8000'0000;

constexpr std::size_t kLargestSegment = 16344;
constexpr std::uint32_t kFirstVersionWithBigData = 4;
constexpr std::uint32_t kLastVersionWithOldCells = 1;  // a cell had a second word, of no use here

// Lists of lists have one level; a few more are followed.
constexpr unsigned kDeepestList = 8;

// What the keys of a hive may hand out in all. No two values share their data in a sound hive, and UTF-8 takes at most
// half as much again as UTF-16.
constexpr std::uint64_t kMostHandedOut = 4;

// A key that goes beyond it shows no values, and costs the other keys nothing as long as there are few such.
constexpr std::size_t kMostRefunds = 16;

bool IsText(std::uint32_t type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

}  // namespace

std::vector<std::string> CRegfHive::FindLogs(const std::string& hostPath) {
    const std::size_t nameAt = hostPath.rfind('/') + 1;
    const std::string folder = nameAt == 0 ? "./" : hostPath.substr(0, nameAt);
    std::vector<std::string> logs;
    std::error_code error;
    for (const std::string& name : NamesIn(folder)) {
        for (const char* const ending : {".LOG1", ".LOG2", ".LOG"}) {
            // A link may lead out of the volume.
            const bool isLog = mbsicmp(name, hostPath.substr(nameAt) + ending) == 0;
            if (isLog && !std::filesystem::is_symlink(folder + name, error)) logs.push_back(folder + name);
        }
    }
    return logs;
}

std::unique_ptr<CRegfHive> CRegfHive::Open(const std::string& hostPath, CNotice& problem) {
    CFileBytes bytes;
    if (!ReadHiveFile(hostPath, kLargestHive, bytes, problem)) return nullptr;
    std::vector<CFileBytes> logs;
    const bool isDirty =
        !IsBaseBlock(bytes.GetBytes()) || U32(bytes.GetBytes(), kSequence1) != U32(bytes.GetBytes(), kSequence2);
    for (const std::string& log : isDirty ? FindLogs(hostPath) : std::vector<std::string>()) {
        // A log that cannot be read is as if it were not there; what it would have completed is told.
        CFileBytes logBytes;
        CNotice ignored;
        if (ReadHiveFile(log, kLargestHive, logBytes, ignored)) logs.push_back(std::move(logBytes));
    }
    return Read(std::move(bytes), logs, hostPath, problem);
}

std::unique_ptr<CRegfHive> CRegfHive::Read(CFileBytes bytes, const std::vector<CFileBytes>& logs, std::string name,
                                           CNotice& problem) {
    const bool isFinished = ReplayLogs(bytes, logs);
    if (bytes.m_nSize < kBaseBlock || !bytes.GetBytes().starts_with("regf")) {
        problem = {name + " is no registry hive", name, ERROR_NOT_REGISTRY_FILE};
        return nullptr;
    }
    std::unique_ptr<CRegfHive> hive(new CRegfHive(std::move(bytes), std::move(name)));
    if (!hive->MakeTable()) {
        problem = {hive->m_strName + " is damaged: it has no root key", hive->m_strName, ERROR_REGISTRY_CORRUPT};
        return nullptr;
    }
    hive->m_bUnfinished = !isFinished;
    return hive;
}

CRegfHive::CRegfHive(CFileBytes bytes, std::string name) : CHive(std::move(bytes), std::move(name)) {
    const std::string_view whole = m_bytes.GetBytes();
    m_cells = whole.substr(kBaseBlock);
    const std::size_t size = U32(whole, kCellsSize);
    m_bCut = IsBaseBlock(whole) && size > m_cells.size();
    if (size != 0 && size < m_cells.size()) m_cells = m_cells.substr(0, size);
    m_nMinorVersion = U32(whole, kMinorVersion);
    m_nCellHead = U32(whole, kMajorVersion) == 1 && m_nMinorVersion <= kLastVersionWithOldCells ? 8 : 4;
}

// The table of keys.

bool CRegfHive::MakeTable() {
    m_claimed.resize(m_cells.size() / 8 + 1);
    const std::uint32_t root = U32(m_bytes.GetBytes(), kRootCell);
    if (GetKeyCell(root).empty()) return false;
    Claim(root);
    m_nodes.push_back({root, 0, 0, 0});
    std::size_t levelEnd = 1;
    for (std::uint32_t key = 0, depth = 0; key < m_nodes.size(); ++key) {
        if (key % 4096 == 0) ThrowIfInterrupted();
        if (key == levelEnd) {
            ++depth;
            levelEnd = m_nodes.size();
        }
        if (depth < kMaxTreeDepth) {
            AddChildren(key);
        } else if (U32(GetKeyCell(m_nodes[key].m_nCell), kKeySubkeyCount) != 0) {
            NoteBad("a subkey of ", key);
        }
    }
    m_counted.resize(m_nodes.size(), ECounted::kNot);
    return true;
}

void CRegfHive::AddChildren(std::uint32_t parent) {
    const std::string_view cell = GetKeyCell(m_nodes[parent].m_nCell);
    m_nodes[parent].m_nFirstChild = static_cast<std::uint32_t>(m_nodes.size());
    const std::uint32_t wanted = U32(cell, kKeySubkeyCount);
    if ((U16(cell, kKeyFlags) & kFlagPredefined) != 0 || wanted == 0) return;
    AddListed(parent, U32(cell, kKeySubkeys), 0);
    const auto count = static_cast<std::uint32_t>(m_nodes.size()) - m_nodes[parent].m_nFirstChild;
    m_nodes[parent].m_nChildCount = count;
    if (count < wanted) NoteBad("a subkey of ", parent);
}

// What cannot be added is missing in the count of the parent's subkeys, and told by that.
void CRegfHive::AddListed(std::uint32_t parent, std::uint32_t list, unsigned depth) {
    const std::string_view cell = GetCell(list);
    const bool isList = cell.starts_with("lf") || cell.starts_with("lh") || cell.starts_with("li");
    if (cell.size() < 4 || (!isList && !cell.starts_with("ri")) || depth > kDeepestList || !Claim(list)) return;
    const std::size_t entrySize = cell[1] == 'f' || cell[1] == 'h' ? 8 : 4;
    const std::size_t count = std::min<std::size_t>(U16(cell, 2), (cell.size() - 4) / entrySize);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t entry = U32(cell, 4 + i * entrySize);
        if (!isList) {
            AddListed(parent, entry, depth + 1);
        } else if (!GetKeyCell(entry).empty() && Claim(entry)) {
            m_nodes.push_back({entry, parent, 0, 0});
        }
    }
}

// Takes the room of a key or a list, which nothing else may lie in. So the time that all of them take has a bound.
bool CRegfHive::Claim(std::uint32_t cell) {
    const std::size_t end = (cell + m_nCellHead + GetCell(cell).size() + 7) / 8;
    for (std::size_t unit = cell / 8; unit < end; ++unit) {
        if (m_claimed[unit]) return false;
    }
    for (std::size_t unit = cell / 8; unit < end; ++unit)
        m_claimed[unit] = true;
    return true;
}

// Cells.

// What a cell in use holds; empty where there is none.
std::string_view CRegfHive::GetCell(std::uint32_t cell) const {
    if (cell % 8 != 0 || cell >= m_cells.size() || m_cells.size() - cell < m_nCellHead) return {};
    const std::uint32_t stored = U32(m_cells, cell);
    const std::uint32_t size = 0 - stored;
    if ((stored & 0x8000'0000) == 0 || size < m_nCellHead || size > m_cells.size() - cell) return {};
    return m_cells.substr(cell + m_nCellHead, size - m_nCellHead);
}

// The cell of a key, its name within it; empty where it is none.
std::string_view CRegfHive::GetKeyCell(std::uint32_t cell) const {
    const std::string_view content = GetCell(cell);
    if (content.size() < kKeyName || !content.starts_with("nk")) return {};
    return U16(content, kKeyNameSize) > content.size() - kKeyName ? std::string_view() : content;
}

// Compressed names are Latin-1, the others UTF-16.
CKeyContents::CSpan CRegfHive::AddName(std::string_view bytes, bool compressed, CKeyContents& contents) {
    if (!compressed) return AddText(bytes, contents);
    const bool isAscii =
        std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
    if (isAscii) return contents.Add(bytes);
    std::string wide;
    for (const char c : bytes)
        wide.append({c, '\0'});
    return AddText(wide, contents);
}

CKeyContents::CSpan CRegfHive::AddText(std::string_view bytes, CKeyContents& contents) {
    const std::size_t begin = contents.m_bytes.size();
    contents.m_bytes.resize(begin + Utf8Room(bytes.size()));
    char* const end = PutUtf16AsUtf8(contents.m_bytes.data() + begin, bytes);
    contents.m_bytes.resize(static_cast<std::size_t>(end - contents.m_bytes.data()));
    return {begin, contents.m_bytes.size() - begin};
}

CKeyContents::CSpan CRegfHive::AddKeyName(std::uint32_t key, CKeyContents& contents) const {
    const std::string_view cell = GetKeyCell(m_nodes[key].m_nCell);
    return AddName(cell.substr(kKeyName, U16(cell, kKeyNameSize)), (U16(cell, kKeyFlags) & kFlagCompressed) != 0,
                   contents);
}

bool CRegfHive::AddValue(std::uint32_t valueCell, CKeyContents& contents) {
    const std::string_view cell = GetCell(valueCell);
    if (cell.size() < kValueName || !cell.starts_with("vk")) return false;
    const std::size_t nameSize = U16(cell, kValueNameSize);
    std::string_view data;
    if (nameSize > cell.size() - kValueName || !GetData(U32(cell, kValueSize), cell, data)) return false;
    const bool compressed = (U16(cell, kValueFlags) & kValueCompressed) != 0;
    const std::uint32_t type = U32(cell, kValueType);
    const CKeyContents::CSpan name = AddName(cell.substr(kValueName, nameSize), compressed, contents);
    contents.m_values.push_back({name, type, IsText(type) ? AddText(data, contents) : contents.Add(data)});
    return true;
}

bool CRegfHive::GetData(std::uint32_t size, std::string_view valueCell, std::string_view& data) {
    if ((size & kResident) != 0) {
        size &= ~kResident;
        if (size > 4) return false;
        data = valueCell.substr(kValueData, size);
        return true;
    }
    if (size == 0) return true;
    const std::string_view cell = GetCell(U32(valueCell, kValueData));
    if (size <= cell.size()) {
        data = cell.substr(0, size);
        return true;
    }
    const bool mayBeBig = m_nMinorVersion >= kFirstVersionWithBigData && size > kLargestSegment;
    return mayBeBig && GetBigData(size, cell, data);
}

bool CRegfHive::GetBigData(std::uint32_t size, std::string_view cell, std::string_view& data) {
    if (cell.size() < 8 || !cell.starts_with("db")) return false;
    const std::string_view list = GetCell(U32(cell, 4));
    const std::size_t count = U16(cell, 2);
    if (list.size() / 4 < count || size > m_cells.size()) return false;
    m_bigData.clear();
    for (std::size_t i = 0; i < count && m_bigData.size() < size; ++i) {
        const std::size_t wanted = std::min<std::size_t>(kLargestSegment, size - m_bigData.size());
        const std::string_view segment = GetCell(U32(list, i * 4));
        if (segment.size() < wanted) return false;
        m_bigData += segment.substr(0, wanted);
    }
    data = m_bigData;
    return data.size() == size;
}

// What a key holds.

bool CRegfHive::ReadKey(std::uint32_t key, CKeyContents& contents) {
    const CNode& node = m_nodes[key];
    const std::string_view cell = GetKeyCell(node.m_nCell);
    if ((U16(cell, kKeyFlags) & kFlagPredefined) != 0) return false;
    for (std::uint32_t child = node.m_nFirstChild; child - node.m_nFirstChild < node.m_nChildCount; ++child)
        contents.m_subkeys.push_back({AddKeyName(child, contents), child});
    if (node.m_nChildCount < U32(cell, kKeySubkeyCount)) contents.m_dwError = ERROR_REGISTRY_CORRUPT;
    const std::size_t count = U32(cell, kKeyValueCount);
    if (count == 0) return true;
    const std::string_view list = GetCell(U32(cell, kKeyValues));
    const std::size_t listed = std::min(count, list.size() / 4);
    const ECounted verdict = m_counted[key];
    if (verdict == ECounted::kBeyond) {
        contents.m_dwError = ERROR_REGISTRY_CORRUPT;
        return true;
    }
    const std::size_t begin = contents.m_bytes.size();
    // With what the values take in the file beside their names and data: empty ones count too.
    const auto handedOut = [&](std::size_t values) {
        return contents.m_bytes.size() - begin + values * (kValueName + sizeof(std::uint32_t));
    };
    bool isWhole = listed == count;
    for (std::size_t i = 0; i < listed; ++i) {
        isWhole = AddValue(U32(list, i * 4), contents) && isWhole;
        if (verdict == ECounted::kWithin || m_nHandedOut + handedOut(i) <= m_bytes.m_nSize * kMostHandedOut) continue;
        contents.m_values.clear();
        contents.m_dwError = ERROR_REGISTRY_CORRUPT;
        m_counted[key] = ECounted::kBeyond;
        NoteBad("a value of ", key);
        if (m_nRefunds++ >= kMostRefunds) m_nHandedOut += handedOut(i);
        return true;
    }
    if (!isWhole) contents.m_dwError = ERROR_REGISTRY_CORRUPT;
    if (verdict == ECounted::kWithin) return true;
    m_counted[key] = ECounted::kWithin;
    m_nHandedOut += handedOut(listed);
    if (!isWhole) NoteBad("a value of ", key);
    return true;
}

std::optional<std::string> CRegfHive::GetLink(std::uint32_t key) {
    const std::string_view cell = GetKeyCell(m_nodes[key].m_nCell);
    if ((U16(cell, kKeyFlags) & kFlagLink) == 0) return std::nullopt;
    CKeyContents contents;
    if (!ReadKey(key, contents)) return std::nullopt;
    for (const CKeyContents::CValue& value : contents.m_values) {
        if (value.m_dwType != REG_LINK || !KeyNamesEqual(contents.Get(value.m_name), "SymbolicLinkValue")) continue;
        return TextFromUtf16(contents.Get(value.m_data));
    }
    return std::string();  // leads nowhere
}

std::string CRegfHive::NameOf(std::uint32_t key) const {
    CKeyContents contents;
    return std::string(contents.Get(AddKeyName(key, contents)));
}

// Problems.

// Of a long path the end.
std::string CRegfHive::PathOf(std::uint32_t key) const {
    constexpr std::size_t kLongest = 200;
    std::string path;
    for (; key != 0; key = m_nodes[key].m_nParent) {
        std::string name = NameOf(key);
        std::replace_if(
            name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
        if (path.size() + name.size() > kLongest) return "..." + path;
        path.insert(0, "\\" + name);
    }
    return path.empty() ? "its root" : path;
}

void CRegfHive::NoteBad(const char* what, std::uint32_t key) {
    if (m_strFirstBad.empty()) m_strFirstBad = what + PathOf(key);
}

std::vector<CNotice> CRegfHive::GetProblems() const {
    std::vector<CNotice> problems;
    const auto add = [&](const std::string& what) {
        problems.push_back({m_strName + what, m_strName, ERROR_REGISTRY_CORRUPT});
    };
    if (m_bCut) add(" is cut off: it is shorter than its head says");
    if (m_bUnfinished) add(" was not written to its end, and no log beside it completes it");
    if (!m_strFirstBad.empty()) add(" is damaged: what cannot be read is left out, first " + m_strFirstBad);
    return problems;
}

}  // namespace delvane
