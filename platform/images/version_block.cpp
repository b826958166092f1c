// How a version block is found and read
//
// PE: the section table says where in the file a virtual address lies. The resource directory is a tree of three
// levels, type, name and language, and its leaf is a data entry with the address and size of the block. NE: the
// resource table is a flat list of types with their resources, in units of an alignment that the table states.
//
// The block itself is a tree of entries. Each begins with its length, the length of its value and, in the 32-bit form,
// the type of the value (1 text, 0 binary); the key follows, then the value, then the children, each on a multiple
// of four bytes. An entry's length is 16 bits wide, which bounds a block to 64 KB.
//
// Nothing here is trusted: a range is compared with what the file holds before it is read, the levels are counted by
// the code and never by the data, and every step through a list goes forward. Where the way ends, CNotThere leads out.
#include <algorithm>
#include <initializer_list>
#include <utility>

#include "platform/images/image.h"
#include "platform/little_endian.h"
#include "platform/utf.h"

namespace delvane {

namespace {

constexpr std::uint64_t kMaxResourceSize = 1 << 20;  // a larger version resource is taken for damage
constexpr std::size_t kMaxSections = 1024;           // linkers write some ten; loaders up to Vista refused 96
constexpr std::size_t kMaxDirectoryEntries = 4096;   // in one resource directory on the way
constexpr std::size_t kMaxNeTableSize = 0x10000;     // tables of an NE image are found by 16-bit offsets

constexpr std::uint32_t kTypeVersion = 16;
constexpr std::uint32_t kNameVersionInfo = 1;  // the only one that the version API asks for
constexpr std::uint32_t kLanguageNeutral = 0;
constexpr std::uint32_t kLanguageEnglishUs = 0x409;

std::size_t AlignTo4(std::size_t offset) { return (offset + 3) & ~std::size_t{3}; }

struct CNotThere {};

void Need(bool holds) {
    if (!holds) throw CNotThere();
}

std::string ReadRange(const CByteSource& file, std::uint64_t offset, std::uint64_t size) {
    const std::uint64_t fileSize = file.GetSize();
    Need(size <= kMaxResourceSize && offset <= fileSize && size <= fileSize - offset);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    Need(file.Read(offset, bytes.data(), bytes.size()) == bytes.size());
    return bytes;
}

// The address space of a PE image, as far as bytes of the file stand behind it.
class CPeSections {
public:
    CPeSections(const CByteSource& file, std::string table) : m_file(file), m_table(std::move(table)) {}

    std::string ReadAddress(std::uint64_t address, std::uint64_t size) const {
        for (std::size_t section = 0; section + kSectionSize <= m_table.size(); section += kSectionSize) {
            const std::uint64_t begin = U32(m_table, section + 12);
            const std::uint64_t rawSize = U32(m_table, section + 16);
            if (address < begin || address - begin > rawSize || size > rawSize - (address - begin)) continue;
            return ReadRange(m_file, U32(m_table, section + 20) + (address - begin), size);
        }
        throw CNotThere();
    }

    static constexpr std::size_t kSectionSize = 40;

private:
    const CByteSource& m_file;
    std::string m_table;
};

// Where a resource directory leads: from the entry of the first wanted number that it has, else from its first entry if
// that will do. The top bit of the answer is set where a directory is there.
std::uint32_t FindResourceEntry(const CPeSections& sections, std::uint64_t directory,
                                std::initializer_list<std::uint32_t> wanted, bool orFirst) {
    const std::string header = sections.ReadAddress(directory, 16);
    const std::size_t count = std::size_t{U16(header, 12)} + U16(header, 14);
    Need(count != 0 && count <= kMaxDirectoryEntries);
    const std::string entries = sections.ReadAddress(directory + 16, count * 8);
    for (const std::uint32_t number : wanted) {
        for (std::size_t entry = 0; entry < entries.size(); entry += 8) {
            if (U32(entries, entry) == number) return U32(entries, entry + 4);
        }
    }
    Need(orFirst);
    return U32(entries, 4);
}

std::string ReadPeResource(const CByteSource& file, std::uint64_t header) {
    const std::string coff = ReadRange(file, header, 24);
    const std::size_t sectionCount = U16(coff, 6);
    const std::size_t optionalSize = U16(coff, 20);
    Need(optionalSize >= 2 && sectionCount <= kMaxSections);
    const std::string optional = ReadRange(file, header + 24, optionalSize);

    // The 64-bit form is the longer one; behind its fields stand the number of data directories and the directories.
    const std::uint16_t magic = U16(optional, 0);
    Need(magic == 0x10b || magic == 0x20b);
    const std::size_t directories = magic == 0x20b ? 112 : 96;
    constexpr std::size_t kResources = 2;
    Need(optionalSize >= directories + (kResources + 1) * 8 && U32(optional, directories - 4) > kResources);
    const std::uint64_t root = U32(optional, directories + kResources * 8);
    Need(root != 0);
    const CPeSections sections(file,
                               ReadRange(file, header + 24 + optionalSize, sectionCount * CPeSections::kSectionSize));

    const auto below = [root](std::uint32_t entry, bool isDirectory) {
        constexpr std::uint32_t kIsDirectory = 0x80000000;
        Need(((entry & kIsDirectory) != 0) == isDirectory);
        return root + (entry & ~kIsDirectory);
    };
    const std::uint64_t type = below(FindResourceEntry(sections, root, {kTypeVersion}, false), true);
    const std::uint64_t name = below(FindResourceEntry(sections, type, {kNameVersionInfo}, false), true);
    // The order in which an English Windows looks for a resource when no language is asked for.
    const std::uint64_t language =
        below(FindResourceEntry(sections, name, {kLanguageNeutral, kLanguageEnglishUs}, true), false);
    const std::string data = sections.ReadAddress(language, 16);
    return sections.ReadAddress(U32(data, 0), U32(data, 4));
}

std::string ReadNeResource(const CByteSource& file, std::uint64_t header) {
    const std::string fields = ReadRange(file, header, 0x40);
    const std::size_t tableOffset = U16(fields, 0x24);
    const std::size_t nextTable = U16(fields, 0x26);
    Need(tableOffset != nextTable);  // else there are no resources

    const std::uint64_t fileSize = file.GetSize();
    const std::uint64_t tableBegin = std::min(header + tableOffset, fileSize);
    const std::string table =
        ReadRange(file, tableBegin, std::min<std::uint64_t>(kMaxNeTableSize, fileSize - tableBegin));
    Need(table.size() >= 2);
    const unsigned shift = U16(table, 0);
    Need(shift <= 16);

    constexpr std::uint32_t kIsNumber = 0x8000;
    std::size_t type = 2;
    while (type + 8 <= table.size()) {
        const std::uint32_t number = U16(table, type);
        const std::size_t count = U16(table, type + 2);
        if (number == 0) break;  // the end of the list
        const std::size_t resources = type + 8;
        type = resources + count * 12;
        if (number != (kIsNumber | kTypeVersion)) continue;
        for (std::size_t resource = resources; resource < type && resource + 12 <= table.size(); resource += 12) {
            if (U16(table, resource + 6) != (kIsNumber | kNameVersionInfo)) continue;
            const std::uint64_t offset = std::uint64_t{U16(table, resource)} << shift;
            const std::uint64_t size = std::uint64_t{U16(table, resource + 2)} << shift;
            Need(offset <= fileSize);
            // The size is rounded up to whole units, and the last unit of a file need not be whole.
            return ReadRange(file, offset, std::min(size, fileSize - offset));
        }
    }
    throw CNotThere();
}

std::string ReadVersionResource(const CByteSource& file) {
    const std::string dosHeader = ReadRange(file, 0, 0x40);
    Need(dosHeader.starts_with("MZ"));
    const std::uint64_t header = U32(dosHeader, 0x3c);
    const std::string signature = ReadRange(file, header, 4);
    if (signature == std::string_view("PE\0\0", 4)) return ReadPeResource(file, header);
    Need(signature.starts_with("NE"));
    return ReadNeResource(file, header);
}

// Code page 1252 is Latin-1 but for these 32 characters. The five that it leaves open stay control characters, as
// Windows has it.
constexpr char16_t kCodePage1252[32] = {0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                        0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008d, 0x017d, 0x008f,
                                        0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                        0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};

// The text at the start of the bytes, up to its first NUL or their end.
std::string DecodeText(std::string_view bytes, bool wide) {
    if (wide) {
        std::size_t end = 0;
        while (end + 2 <= bytes.size() && U16(bytes, end) != 0)
            end += 2;
        return TextFromUtf16(bytes.substr(0, end));
    }
    bytes = bytes.substr(0, bytes.find('\0'));
    std::string text(bytes.size() * 3, '\0');
    char* end = text.data();
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        end = PutUtf8(end, byte >= 0x80 && byte < 0xa0 ? kCodePage1252[byte - 0x80] : byte);
    }
    text.resize(static_cast<std::size_t>(end - text.data()));
    return text;
}

bool IsSameKey(std::string_view left, std::string_view right) {
    const auto fold = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](char a, char b) { return fold(a) == fold(b); });
}

// One entry of a block.
struct CEntry {
    std::string_view m_key;
    std::string_view m_value;
    std::size_t m_nChildren = 0;  // offset into the block; may lie past m_nEnd: there are none
    std::size_t m_nEnd = 0;       // never past the end of the block
};

// Some tools give a parent a length a little too short for its last child, so an entry must end within the block, and
// need not end within its parent.
CEntry ReadEntry(std::string_view block, std::size_t begin, bool wide) {
    const std::size_t headerSize = wide ? 6 : 4;
    Need(begin <= block.size() && block.size() - begin >= headerSize);
    const std::size_t length = U16(block, begin);
    Need(length >= headerSize && length <= block.size() - begin);

    const std::size_t end = begin + length;
    const std::size_t key = begin + headerSize;
    const std::size_t unitSize = wide ? 2 : 1;
    std::size_t keyEnd = key;
    while (keyEnd + unitSize <= end && (wide ? U16(block, keyEnd) != 0 : block[keyEnd] != '\0')) {
        keyEnd += unitSize;
    }
    Need(keyEnd + unitSize <= end);

    // The length of a text counts UTF-16 units in the 32-bit form, but some tools count its bytes. Where the claim is
    // twice too large the entry's own end cuts it, and the text ends at its NUL in any case.
    std::size_t valueSize = U16(block, begin + 2);
    if (wide && U16(block, begin + 4) != 0) valueSize *= 2;
    const std::size_t value = AlignTo4(keyEnd + unitSize);
    const std::string_view rest = block.substr(0, end).substr(std::min(value, end));
    return {block.substr(key, keyEnd - key), rest.substr(0, valueSize), AlignTo4(value + valueSize), end};
}

CEntry FindChild(std::string_view block, const CEntry& parent, std::string_view key, bool wide) {
    for (std::size_t begin = parent.m_nChildren; begin < parent.m_nEnd;) {
        const CEntry child = ReadEntry(block, begin, wide);
        if (IsSameKey(DecodeText(child.m_key, wide), key)) return child;
        begin = AlignTo4(child.m_nEnd);
    }
    throw CNotThere();
}

class CVersionBlock : public CVersionInfo {
public:
    // The block tells its own form: behind the two lengths stands a type of 0 or 1, or the first letter of the key.
    explicit CVersionBlock(std::string bytes)
        : m_bytes(std::move(bytes)), m_bWide(static_cast<unsigned char>(m_bytes[4]) < ' ') {}

    std::optional<std::string> Query(std::string_view path) const override try {
        if (path.starts_with('\\')) path.remove_prefix(1);
        if (path.empty()) return std::nullopt;  // the block's own value is no text
        const std::string_view block = m_bytes;
        CEntry entry = ReadEntry(block, 0, m_bWide);
        for (;;) {
            const std::size_t separator = path.find('\\');
            entry = FindChild(block, entry, path.substr(0, separator), m_bWide);
            if (separator == std::string_view::npos) break;
            path.remove_prefix(separator + 1);
        }
        return DecodeText(entry.m_value, m_bWide);
    } catch (const CNotThere&) {
        return std::nullopt;
    }

private:
    std::string m_bytes;
    bool m_bWide;  // the 32-bit form
};

}  // namespace

std::unique_ptr<const CVersionInfo> ReadVersionBlock(const CByteSource& file) try {
    std::string bytes = ReadVersionResource(file);
    constexpr std::size_t kSmallest = 6;
    Need(bytes.size() >= kSmallest);
    const std::size_t length = U16(bytes, 0);
    Need(length >= kSmallest && length <= bytes.size());
    bytes.resize(length);
    return std::make_unique<const CVersionBlock>(std::move(bytes));
} catch (const CNotThere&) {
    return nullptr;
}

}  // namespace delvane
