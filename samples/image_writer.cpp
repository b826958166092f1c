#include "samples/image_writer.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/little_endian.h"

namespace delvane {

namespace {

constexpr std::size_t kNewHeader = 0x80;  // where the newer header stands, behind the stub for MS-DOS

constexpr std::pair<std::string_view, EImageKind> kKindNames[] = {
    {"pe32", EImageKind::Pe32},
    {"pe64", EImageKind::Pe64},
    {"pe32-native", EImageKind::Pe32Native},
    {"pe64-native", EImageKind::Pe64Native},
    {"dll", EImageKind::Dll},
    {"ne", EImageKind::Ne},
    {"le", EImageKind::Le},
    {"mz", EImageKind::Mz},
};

// Bytes under construction; numbers are little-endian. Each operation takes whatever integer the caller has and keeps
// its low part, since offsets and sizes in these images are small.
class CImageBytes {
public:
    void Add8(std::uint64_t number) { m_bytes += BytesOf(number, 1); }
    void Add16(std::uint64_t number) { m_bytes += BytesOf(number, 2); }
    void Add32(std::uint64_t number) { m_bytes += BytesOf(number, 4); }
    void AddBytes(std::string_view bytes) { m_bytes += bytes; }
    // A name in eight bytes, or one with its length in front.
    void AddName8(std::string_view name) {
        m_bytes += name;
        m_bytes.append(8 - name.size(), '\0');
    }
    void AddCountedName(std::string_view name) {
        Add8(name.size());
        m_bytes += name;
    }
    void FillTo(std::size_t size) {
        assert(size >= m_bytes.size());
        m_bytes.resize(size);
    }
    void AlignTo(std::size_t unit) { FillTo((m_bytes.size() + unit - 1) / unit * unit); }
    void Set16(std::size_t offset, std::uint64_t number) { m_bytes.replace(offset, 2, BytesOf(number, 2)); }

    std::size_t GetSize() const { return m_bytes.size(); }
    std::string TakeBytes() { return std::move(m_bytes); }

private:
    std::string m_bytes;
};

// ---- version block

// One character of UTF-8. A byte that begins none stands for itself.
std::uint32_t TakeCodePoint(std::string_view& text) {
    const auto byteAt = [&text](std::size_t at) -> std::uint32_t {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u;
    };
    std::uint32_t codePoint = byteAt(0);
    const std::size_t tail = codePoint >= 0xf0 ? 3 : codePoint >= 0xe0 ? 2 : codePoint >= 0xc0 ? 1 : 0;
    if (tail > 0) codePoint &= 0x3fu >> tail;
    for (std::size_t at = 1; at <= tail; ++at)
        codePoint = codePoint << 6 | (byteAt(at) & 0x3f);
    text.remove_prefix(std::min(tail + 1, text.size()));
    return codePoint;
}

// The text in the form of the block, its terminator included.
std::string EncodeText(std::string_view text, bool wide) {
    CImageBytes bytes;
    while (!text.empty()) {
        const std::uint32_t codePoint = TakeCodePoint(text);
        if (!wide) {
            bytes.Add8(codePoint < 0x80 || (codePoint >= 0xa0 && codePoint < 0x100) ? codePoint : '?');
        } else if (codePoint < 0x10000) {
            bytes.Add16(codePoint);
        } else {
            bytes.Add16(0xd800 + (codePoint - 0x10000) / 0x400);
            bytes.Add16(0xdc00 + (codePoint - 0x10000) % 0x400);
        }
    }
    if (wide) bytes.Add8(0);
    bytes.Add8(0);
    return bytes.TakeBytes();
}

// An entry of a version block. Its children are whole entries, and each begins on a multiple of four bytes.
std::string MakeEntry(std::string_view key, std::string_view value, bool text, const std::vector<std::string>& children,
                      bool wide) {
    CImageBytes bytes;
    bytes.Add16(0);  // the length, known at the end
    bytes.Add16(wide && text ? value.size() / 2 : value.size());
    if (wide) bytes.Add16(text ? 1 : 0);
    bytes.AddBytes(EncodeText(key, wide));
    if (!value.empty()) {
        bytes.AlignTo(4);
        bytes.AddBytes(value);
    }
    for (const std::string& child : children) {
        bytes.AlignTo(4);
        bytes.AddBytes(child);
    }
    if (bytes.GetSize() > 0xffff) throw std::invalid_argument("the version strings are too long");
    bytes.Set16(0, bytes.GetSize());
    return bytes.TakeBytes();
}

std::uint32_t ParseLanguage(const std::string& language) {
    std::uint32_t number = 0;
    const char* const end = language.data() + language.size();
    const auto [rest, error] = std::from_chars(language.data(), end, number, 16);
    if (language.size() != 8 || error != std::errc() || rest != end) {
        throw std::invalid_argument("a language is eight hexadecimal digits, such as 040904B0: " + language);
    }
    return number;
}

// The four numbers of a version such as "2.1.0 (release)"; those that it does not have are 0.
std::array<std::uint32_t, 4> ParseVersion(std::string_view text) {
    std::array<std::uint32_t, 4> numbers{};
    for (std::uint32_t& number : numbers) {
        const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
        if (error != std::errc() || !text.starts_with('.')) break;
        text.remove_prefix(1);
    }
    return numbers;
}

// VS_FIXEDFILEINFO: the versions as numbers.
std::string MakeFixedInfo(const CVersionStrings& version) {
    CImageBytes bytes;
    bytes.Add32(0xfeef04bd);
    bytes.Add32(0x00010000);
    for (const auto& text : {version.m_strFileVersion, version.m_strProductVersion}) {
        const auto numbers = ParseVersion(text.value_or(""));
        bytes.Add16(numbers[1]);
        bytes.Add16(numbers[0]);
        bytes.Add16(numbers[3]);
        bytes.Add16(numbers[2]);
    }
    bytes.Add32(0x3f);     // which flags count
    bytes.Add32(0);        // none set
    bytes.Add32(0x40004);  // for Windows
    bytes.Add32(1);        // an application
    bytes.FillTo(52);
    return bytes.TakeBytes();
}

// ---- 16-bit images

constexpr std::string_view kStubText = "This program cannot be run in DOS mode.\r\r\n$";

// The MZ header with a program that prints one line and ends. With `newHeader` the rest of the file follows there.
void AddDosProgram(CImageBytes& bytes, bool newHeader) {
    constexpr std::string_view kCode("\x0e\x1f\xba\x0e\x00\xb4\x09\xcd\x21\xb8\x01\x4c\xcd\x21", 14);
    constexpr std::size_t kSize = 0x40 + kCode.size() + kStubText.size();
    bytes.AddBytes("MZ");
    bytes.Add16(kSize);   // bytes in the last page
    bytes.Add16(1);       // pages of 512 bytes
    bytes.Add16(0);       // relocations
    bytes.Add16(4);       // the header's size in paragraphs
    bytes.Add16(16);      // memory needed beyond the program, in paragraphs
    bytes.Add16(0xffff);  // and wanted
    bytes.Add16(0);       // SS
    bytes.Add16(0xb8);    // SP
    bytes.Add16(0);       // checksum
    bytes.Add16(0);       // IP
    bytes.Add16(0);       // CS
    bytes.Add16(0x40);    // the relocation table
    bytes.FillTo(0x3c);
    bytes.Add32(newHeader ? kNewHeader : 0);
    bytes.AddBytes(kCode);
    bytes.AddBytes(kStubText);
    if (newHeader) bytes.FillTo(kNewHeader);
}

void AddNeImage(CImageBytes& bytes, const std::string& versionBlock) {
    constexpr std::size_t kShift = 4;  // segments and resources stand at multiples of 16 bytes
    constexpr std::size_t kUnit = std::size_t{1} << kShift;
    constexpr std::string_view kCode("\xb8\x00\x4c\xcd\x21", 5);  // end with exit code 0
    constexpr std::string_view kName = "SAMPLE";
    constexpr std::string_view kDescription = "sample program";

    // The tables, each right behind the one before; offsets count from the NE header but for the last table's.
    constexpr std::size_t kSegments = 0x40;
    constexpr std::size_t kResources = kSegments + 8;
    const std::size_t resourcesSize = versionBlock.empty() ? 0 : 2 + 8 + 12 + 2 + 1;
    const std::size_t residentNames = kResources + resourcesSize;
    const std::size_t importedNames = residentNames + 1 + kName.size() + 2 + 1;
    const std::size_t entries = importedNames + 1;
    const std::size_t otherNames = kNewHeader + entries + 2;
    const std::size_t otherNamesSize = 1 + kDescription.size() + 2 + 1;
    const std::size_t code = (otherNames + otherNamesSize + kUnit - 1) / kUnit;  // in units
    const std::size_t resource = code + 1;

    bytes.AddBytes("NE");
    bytes.Add8(5);  // linker 5.10
    bytes.Add8(10);
    bytes.Add16(entries);
    bytes.Add16(2);      // size of the entry table
    bytes.Add32(0);      // checksum
    bytes.Add16(0x300);  // uses the Windows API; no data segment
    bytes.Add16(0);
    bytes.Add16(0);        // heap
    bytes.Add16(0);        // stack
    bytes.Add32(0x10000);  // starts at segment 1, offset 0
    bytes.Add32(0);
    bytes.Add16(1);  // segments
    bytes.Add16(0);  // modules
    bytes.Add16(otherNamesSize);
    bytes.Add16(kSegments);
    bytes.Add16(kResources);
    bytes.Add16(residentNames);
    bytes.Add16(importedNames);  // the module references, of which there are none
    bytes.Add16(importedNames);
    bytes.Add32(otherNames);
    bytes.Add16(0);  // movable entries
    bytes.Add16(kShift);
    bytes.Add16(0);  // resource segments
    bytes.Add8(2);   // for Windows
    bytes.Add8(0);
    bytes.Add16(0);  // fast-load area
    bytes.Add16(0);
    bytes.Add16(0);
    bytes.Add16(0x30a);  // Windows 3.10

    bytes.Add16(code);
    bytes.Add16(kCode.size());
    bytes.Add16(0);
    bytes.Add16(kCode.size());
    if (!versionBlock.empty()) {
        bytes.Add16(kShift);
        bytes.Add16(0x8010);  // version resources: one
        bytes.Add16(1);
        bytes.Add32(0);
        bytes.Add16(resource);
        bytes.Add16((versionBlock.size() + kUnit - 1) / kUnit);
        bytes.Add16(0x0c30);  // movable, shareable, loaded when it is called for
        bytes.Add16(0x8001);
        bytes.Add32(0);
        bytes.Add16(0);  // no more types
        bytes.Add8(0);   // no names
    }
    bytes.AddCountedName(kName);
    bytes.Add16(0);
    bytes.Add8(0);
    bytes.Add8(0);   // no imported names
    bytes.Add16(0);  // no entries
    bytes.AddCountedName(kDescription);
    bytes.Add16(0);
    bytes.Add8(0);

    bytes.AlignTo(kUnit);
    assert(bytes.GetSize() == code * kUnit);
    bytes.AddBytes(kCode);
    bytes.AlignTo(kUnit);
    bytes.AddBytes(versionBlock);
    bytes.AlignTo(kUnit);
}

// A driver without objects, so nothing but its header.
void AddLeImage(CImageBytes& bytes) {
    bytes.AddBytes("LE");
    bytes.Add16(0);        // little-endian bytes and words
    bytes.Add32(0);        // format level
    bytes.Add16(2);        // for a 386
    bytes.Add16(4);        // for Windows/386
    bytes.Add32(0);        // module version
    bytes.Add32(0x28000);  // a virtual device driver
    bytes.FillTo(kNewHeader + 0x28);
    bytes.Add32(0x1000);  // page size
    bytes.FillTo(kNewHeader + 0xc4);
}

// ---- PE images

constexpr std::size_t kFileUnit = 0x200;
constexpr std::size_t kPageSize = 0x1000;

std::size_t RoundUp(std::size_t size, std::size_t unit) { return (size + unit - 1) / unit * unit; }

struct CPeTraits {
    bool m_bWide;               // 64-bit
    std::uint16_t m_subsystem;  // 1 native, 3 console
    bool m_bLibrary;
    std::string_view m_code;  // at the entry point: gives 0, a library true
};

CPeTraits GetPeTraits(EImageKind kind) {
    constexpr std::string_view kReturn("\x31\xc0\xc3", 3);                  // xor eax,eax; ret
    constexpr std::string_view kReturn8("\x31\xc0\xc2\x08\x00", 5);         // xor eax,eax; ret 8
    constexpr std::string_view kReturnTrue("\xb8\x01\x00\x00\x00\xc3", 6);  // mov eax,1; ret
    switch (kind) {
        case EImageKind::Pe32:
            return {false, 3, false, kReturn};
        case EImageKind::Pe32Native:
            return {false, 1, false, kReturn8};
        case EImageKind::Pe64Native:
            return {true, 1, false, kReturn};
        case EImageKind::Dll:
            return {true, 3, true, kReturnTrue};
        default:
            return {true, 3, false, kReturn};
    }
}

void AddSection(CImageBytes& bytes, std::string_view name, std::size_t size, std::size_t address, std::size_t offset,
                std::uint32_t flags) {
    bytes.AddName8(name);
    bytes.Add32(size);
    bytes.Add32(address);
    bytes.Add32(RoundUp(size, kFileUnit));
    bytes.Add32(offset);
    bytes.FillTo(bytes.GetSize() + 12);  // no relocations, no line numbers
    bytes.Add32(flags);
}

// The section .rsrc with one resource: version, number 1, in the language given.
std::string MakeResources(const std::string& block, std::uint32_t language, std::size_t address) {
    CImageBytes bytes;
    constexpr std::size_t kDirectorySize = 24;
    constexpr std::size_t kBlock = 3 * kDirectorySize + 16;
    const std::uint32_t numbers[] = {16, 1, language};
    for (std::size_t level = 0; level < 3; ++level) {
        bytes.FillTo(bytes.GetSize() + 12);
        bytes.Add16(0);  // entries with a name
        bytes.Add16(1);  // with a number
        bytes.Add32(numbers[level]);
        bytes.Add32((level + 1) * kDirectorySize | (level < 2 ? 0x80000000u : 0u));
    }
    bytes.Add32(address + kBlock);
    bytes.Add32(block.size());
    bytes.Add32(0);
    bytes.Add32(0);
    bytes.AddBytes(block);
    return bytes.TakeBytes();
}

void AddPeImage(CImageBytes& bytes, EImageKind kind, const std::string& versionBlock, std::uint32_t language) {
    const CPeTraits traits = GetPeTraits(kind);
    const bool wide = traits.m_bWide;
    constexpr std::size_t kCodeAddress = kPageSize;
    constexpr std::size_t kResourceAddress = 2 * kPageSize;
    constexpr std::size_t kCodeOffset = kFileUnit;
    constexpr std::size_t kResourceOffset = 2 * kFileUnit;
    const std::string resources =
        versionBlock.empty() ? std::string() : MakeResources(versionBlock, language, kResourceAddress);
    const auto addAddress = [&](std::uint64_t number) {
        bytes.Add32(number);
        if (wide) bytes.Add32(number >> 32);
    };

    bytes.AddBytes(std::string_view("PE\0\0", 4));
    bytes.Add16(wide ? 0x8664 : 0x14c);
    bytes.Add16(resources.empty() ? 1 : 2);
    bytes.Add32(0x40000000);  // a time stamp of 2004
    bytes.Add32(0);           // no symbols
    bytes.Add32(0);
    bytes.Add16(wide ? 240 : 224);
    // Executable; large addresses or a 32-bit machine; a library, or else not to be moved.
    bytes.Add16(0x0002u | (wide ? 0x0020u : 0x0100u) | (traits.m_bLibrary ? 0x2000u : 0x0001u));

    bytes.Add16(wide ? 0x20b : 0x10b);
    bytes.Add8(2);  // linker 2.40
    bytes.Add8(40);
    bytes.Add32(kFileUnit);  // code
    bytes.Add32(RoundUp(resources.size(), kFileUnit));
    bytes.Add32(0);
    bytes.Add32(kCodeAddress);  // the entry point
    bytes.Add32(kCodeAddress);
    if (!wide) bytes.Add32(kResourceAddress);
    addAddress(wide ? 0x140000000u : 0x400000u);  // the image's base
    bytes.Add32(kPageSize);
    bytes.Add32(kFileUnit);
    bytes.Add16(5);  // needs system 5.0
    bytes.Add16(0);
    bytes.Add32(0);  // the image's own version
    bytes.Add16(5);  // needs subsystem 5.0
    bytes.Add16(0);
    bytes.Add32(0);
    bytes.Add32(kResourceAddress + RoundUp(resources.size(), kPageSize));
    bytes.Add32(kFileUnit);  // headers
    bytes.Add32(0);          // checksum
    bytes.Add16(traits.m_subsystem);
    bytes.Add16(traits.m_bLibrary ? 0x0140 : 0x0100);  // no execution of data; a library may be moved
    addAddress(0x100000);                              // stack, reserved and committed
    addAddress(0x1000);
    addAddress(0x100000);  // heap, reserved and committed
    addAddress(0x1000);
    bytes.Add32(0);
    bytes.Add32(16);  // data directories, of which only the third is in use: resources
    const std::size_t directories = bytes.GetSize();
    bytes.FillTo(directories + 2 * 8);
    bytes.Add32(resources.empty() ? 0 : kResourceAddress);
    bytes.Add32(resources.size());
    bytes.FillTo(directories + 16 * 8);

    AddSection(bytes, ".text", traits.m_code.size(), kCodeAddress, kCodeOffset, 0x60000020);
    if (!resources.empty()) {
        AddSection(bytes, ".rsrc", resources.size(), kResourceAddress, kResourceOffset, 0x40000040);
    }
    bytes.FillTo(kCodeOffset);
    bytes.AddBytes(traits.m_code);
    bytes.AlignTo(kFileUnit);
    bytes.AddBytes(resources);
    bytes.AlignTo(kFileUnit);
}

}  // namespace

std::optional<EImageKind> FindImageKind(std::string_view name) {
    for (const auto& [kindName, kind] : kKindNames) {
        if (name == kindName) return kind;
    }
    return std::nullopt;
}

bool CanHaveVersion(EImageKind kind) { return kind != EImageKind::Le && kind != EImageKind::Mz; }

std::string MakeVersionBlock(const CVersionStrings& version, bool wide) {
    struct CTable {
        std::string m_strLanguage;
        std::vector<std::string> m_strings;
    };
    std::vector<CTable> tables;
    const auto add = [&](const std::string& language, std::string_view key, const std::optional<std::string>& text) {
        if (!text) return;
        if (tables.empty() || tables.back().m_strLanguage != language) tables.push_back({language, {}});
        tables.back().m_strings.push_back(MakeEntry(key, EncodeText(*text, wide), true, {}, wide));
    };
    add(version.m_strFileLanguage, "FileVersion", version.m_strFileVersion);
    add(version.m_strProductLanguage, "ProductVersion", version.m_strProductVersion);

    std::vector<std::string> entries;
    CImageBytes translations;
    for (const CTable& table : tables) {
        const std::uint32_t language = ParseLanguage(table.m_strLanguage);
        translations.Add16(language >> 16);
        translations.Add16(language);
        entries.push_back(MakeEntry(table.m_strLanguage, {}, true, table.m_strings, wide));
    }
    const std::string translation = MakeEntry("Translation", translations.TakeBytes(), false, {}, wide);
    return MakeEntry(
        "VS_VERSION_INFO", MakeFixedInfo(version), false,
        {MakeEntry("StringFileInfo", {}, true, entries, wide), MakeEntry("VarFileInfo", {}, true, {translation}, wide)},
        wide);
}

std::string MakeImage(EImageKind kind, const CVersionStrings& version, std::size_t size) {
    if (!version.IsEmpty() && !CanHaveVersion(kind)) {
        throw std::invalid_argument("only PE and NE images have a version resource");
    }
    std::string block;
    if (!version.IsEmpty()) block = MakeVersionBlock(version, kind != EImageKind::Ne);

    CImageBytes bytes;
    AddDosProgram(bytes, kind != EImageKind::Mz);
    if (kind == EImageKind::Ne) {
        AddNeImage(bytes, block);
    } else if (kind == EImageKind::Le) {
        AddLeImage(bytes);
    } else if (kind != EImageKind::Mz) {
        const std::string& language =
            version.m_strProductVersion ? version.m_strProductLanguage : version.m_strFileLanguage;
        AddPeImage(bytes, kind, block, block.empty() ? 0 : ParseLanguage(language) >> 16);
    }
    bytes.FillTo(std::max(size, bytes.GetSize()));
    return bytes.TakeBytes();
}

}  // namespace delvane
