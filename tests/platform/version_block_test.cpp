#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/images/image.h"
#include "platform/little_endian.h"
#include "samples/image_writer.h"
#include "tests/support/memory_source.h"

namespace delvane {
namespace {

constexpr std::string_view kNothing = "(nothing)";

std::string Query(const CByteSource& file, std::string_view path) {
    const std::unique_ptr<const CVersionInfo> block = ReadVersionBlock(file);
    if (!block) return "(no block)";
    return block->Query(path).value_or(std::string(kNothing));
}

std::string Query(std::string_view image, std::string_view path) { return Query(CMemorySource(image), path); }

std::string Wide(std::string_view ascii) {
    std::string wide;
    for (const char c : ascii)
        wide.append({c, '\0'});
    return wide;
}

// Where the entry with the key stands in a PE image: its length, the length of its value and its type.
std::size_t FindWideEntry(std::string_view image, std::string_view key) {
    const std::size_t at = image.find(Wide(key));
    EXPECT_NE(at, std::string_view::npos) << key;
    return at - 6;
}

constexpr const char* kProductE4 = "\\StringFileInfo\\040904E4\\ProductVersion";
constexpr const char* kProductB0 = "\\StringFileInfo\\040904B0\\ProductVersion";
constexpr const char* kFileE4 = "\\StringFileInfo\\040904E4\\FileVersion";
constexpr const char* kFileB0 = "\\StringFileInfo\\040904B0\\FileVersion";

constexpr EImageKind kKindsWithVersion[] = {EImageKind::Pe32,       EImageKind::Pe64, EImageKind::Pe32Native,
                                            EImageKind::Pe64Native, EImageKind::Dll,  EImageKind::Ne};

CVersionStrings SampleStrings() {
    CVersionStrings version;
    version.m_strProductVersion = "7.5";
    version.m_strFileVersion = "7.5.0.12";
    version.m_strFileLanguage = "040904E4";
    return version;
}

// Places in the images that the writer makes.
constexpr std::size_t kNewHeader = 0x80;
constexpr std::size_t kPe32Sections = kNewHeader + 24 + 224;
constexpr std::size_t kResourceSection = kPe32Sections + 40;  // its header
constexpr std::size_t kResources = 0x400;                     // its bytes
constexpr std::uint32_t kResourceAddress = 0x2000;
constexpr std::size_t kNameEntry = kResources + 24 + 16;
constexpr std::size_t kDataEntry = kResources + 72;
constexpr std::size_t kNeTable = kNewHeader + 0x48;

TEST(VersionBlock, EachStringIsFoundUnderItsOwnLanguage) {
    for (const EImageKind kind : kKindsWithVersion) {
        SCOPED_TRACE(static_cast<int>(kind));
        const std::string image = MakeImage(kind, SampleStrings());
        EXPECT_EQ(Query(image, kProductB0), "7.5");
        EXPECT_EQ(Query(image, kFileE4), "7.5.0.12");
        EXPECT_EQ(Query(image, kProductE4), kNothing);
        EXPECT_EQ(Query(image, kFileB0), kNothing);
        EXPECT_EQ(Query(MakeImage(kind), kFileB0), "(no block)");
    }
    EXPECT_EQ(Query(MakeImage(EImageKind::Le), kFileB0), "(no block)");
    EXPECT_EQ(Query(MakeImage(EImageKind::Mz), kFileB0), "(no block)");
    EXPECT_EQ(Query("", kFileB0), "(no block)");
}

TEST(VersionBlock, PathsAreFollowedKeyByKeyWithoutRegardToCase) {
    for (const EImageKind kind : {EImageKind::Pe64, EImageKind::Ne}) {
        SCOPED_TRACE(static_cast<int>(kind));
        const std::string image = MakeImage(kind, SampleStrings());
        EXPECT_EQ(Query(image, "\\STRINGFILEINFO\\040904e4\\fileversion"), "7.5.0.12");
        EXPECT_EQ(Query(image, "StringFileInfo\\040904E4\\FileVersion"), "7.5.0.12");
        for (const char* const path :
             {"", "\\", "\\StringFileInfo\\\\FileVersion", "\\StringFileInfo\\040904E4\\",
              "\\StringFileInfo\\040904E4\\FileVersio", "\\StringFileInfo\\040904E4\\FileVersions",
              "\\040904E4\\FileVersion", "\\StringFileInfo\\040904E4\\FileVersion\\x"}) {
            EXPECT_EQ(Query(image, path), kNothing) << path;
        }
    }
}

TEST(VersionBlock, TextsBecomeUtf8) {
    CVersionStrings version;
    version.m_strFileVersion = "\u00a9 \u2122 \u65e5 \U0001f600 \xed\xa0\x80x \xed\xb0\x80";
    EXPECT_EQ(Query(MakeImage(EImageKind::Pe32, version), kFileB0), *version.m_strFileVersion);

    version.m_strFileVersion = "\u00a9\u00ae \u00ff e t n";
    std::string image = MakeImage(EImageKind::Ne, version);
    image.replace(image.find("e t n"), 5, "\x80 \x99 \x81");
    EXPECT_EQ(Query(image, kFileB0), "\u00a9\u00ae \u00ff \u20ac \u2122 \u0081");
}

TEST(VersionBlock, ItsOwnValueMayBeCalledText) {
    std::string image = MakeImage(EImageKind::Pe32, SampleStrings());
    const std::size_t block = FindWideEntry(image, "VS_VERSION_INFO");
    Patch(image, block + 2, U16(image, block + 2) / 2, 2);  // counted in characters then
    Patch(image, block + 4, 1, 2);
    EXPECT_EQ(Query(image, kFileE4), "7.5.0.12");
}

TEST(VersionBlock, TextsEndAtTheirNulAndWithinTheirEntry) {
    const std::string image = MakeImage(EImageKind::Pe32, SampleStrings());
    const std::size_t entry = FindWideEntry(image, "FileVersion");
    const std::size_t valueSize = U16(image, entry + 2);
    ASSERT_EQ(valueSize, 9u);
    for (const auto& [claim, expected] : std::vector<std::pair<std::uint32_t, std::string>>{
             {18, "7.5.0.12"},  // counted in bytes, as some tools do
             {0xffff, "7.5.0.12"},
             {8, "7.5.0.12"},  // without the NUL
             {3, "7.5"},
             {0, ""},
         }) {
        std::string patched = image;
        Patch(patched, entry + 2, claim, 2);
        EXPECT_EQ(Query(patched, kFileE4), expected) << claim;
        // What the text of one string claims does not disturb the next table.
        EXPECT_EQ(Query(patched, kProductB0), "7.5") << claim;
    }

    std::string endless = image;
    endless.replace(endless.find(Wide("7.5.0.12")) + 16, 4, Wide("xy"));  // the NUL, and the padding behind the entry
    Patch(endless, entry + 2, 0xffff, 2);
    EXPECT_EQ(Query(endless, kFileE4), "7.5.0.12x");

    std::string cut = image;
    cut[cut.find(Wide("7.5.0.12")) + 6] = '\0';
    EXPECT_EQ(Query(cut, kFileE4), "7.5");
}

TEST(VersionBlock, AnEntryMayOutgrowItsParentButNotTheBlock) {
    const std::string image = MakeImage(EImageKind::Pe32, SampleStrings());
    std::string shortParent = image;
    const std::size_t table = FindWideEntry(image, "040904E4");
    Patch(shortParent, table, U16(image, table) - 4, 2);
    EXPECT_EQ(Query(shortParent, kFileE4), "7.5.0.12");

    std::string longEntry = image;
    Patch(longEntry, FindWideEntry(image, "FileVersion"), 0xfff0, 2);
    EXPECT_EQ(Query(longEntry, kFileE4), kNothing);
    EXPECT_EQ(Query(longEntry, kProductB0), "7.5");

    // The last entry ends with the block; four bytes more are too many.
    constexpr const char* kLast = "\\VarFileInfo\\Translation";
    std::string longLast = image;
    const std::size_t last = FindWideEntry(image, "Translation");
    ASSERT_NE(Query(image, kLast), kNothing);
    Patch(longLast, last, U16(image, last) + 4, 2);
    EXPECT_EQ(Query(longLast, kLast), kNothing);
    // An entry may end behind the NUL of its key, but not before.
    const std::uint32_t keyEnd = 6 + 2 * 11;
    Patch(longLast, last, keyEnd + 2, 2);
    EXPECT_EQ(Query(longLast, kLast), "");
    Patch(longLast, last, keyEnd, 2);
    EXPECT_EQ(Query(longLast, kLast), kNothing);

    std::string longBlock = image;
    Patch(longBlock, FindWideEntry(image, "VS_VERSION_INFO"), 0xfff0, 2);
    EXPECT_EQ(Query(longBlock, kFileE4), "(no block)");
}

// A PE image whose version resource has each of the languages, with the language as its text.
std::string WithLanguages(const std::vector<std::pair<std::uint32_t, std::string>>& languages) {
    constexpr std::size_t kDirectory = 0x400;
    constexpr std::size_t kBlocks = 0x600;
    constexpr std::size_t kBlockRoom = 0x400;
    const std::size_t size = kBlocks + languages.size() * kBlockRoom;

    std::string image = MakeImage(EImageKind::Pe32, SampleStrings());
    image.resize(kResources + size);
    Patch(image, kResourceSection + 16, static_cast<std::uint32_t>(size), 4);
    Patch(image, kNameEntry + 4, 0x80000000u + kDirectory, 4);
    Patch(image, kResources + kDirectory + 14, static_cast<std::uint32_t>(languages.size()), 2);
    for (std::size_t at = 0; at < languages.size(); ++at) {
        CVersionStrings version;
        version.m_strFileVersion = languages[at].second;
        const std::string bytes = MakeVersionBlock(version, true);
        const std::size_t data = kDirectory + 0x100 + at * 16;
        const std::size_t block = kBlocks + at * kBlockRoom;
        Patch(image, kResources + kDirectory + 16 + at * 8, languages[at].first, 4);
        Patch(image, kResources + kDirectory + 20 + at * 8, static_cast<std::uint32_t>(data), 4);
        Patch(image, kResources + data, static_cast<std::uint32_t>(kResourceAddress + block), 4);
        Patch(image, kResources + data + 4, static_cast<std::uint32_t>(bytes.size()), 4);
        image.replace(kResources + block, bytes.size(), bytes);
    }
    return image;
}

TEST(VersionBlock, NeutralThenEnglishThenTheFirstLanguageIsTaken) {
    EXPECT_EQ(Query(WithLanguages({{0, "neutral"}, {0x407, "German"}, {0x409, "English"}}), kFileB0), "neutral");
    EXPECT_EQ(Query(WithLanguages({{0x407, "German"}, {0x409, "English"}, {0x40c, "French"}}), kFileB0), "English");
    EXPECT_EQ(Query(WithLanguages({{0x407, "German"}, {0x40c, "French"}}), kFileB0), "German");
}

// Each of these leads somewhere else than to a version block, or makes a claim that the file cannot hold.
TEST(VersionBlock, AWrongStepOnTheWayIsRefused) {
    struct CStep {
        const char* m_name;
        std::size_t m_offset;
        std::uint32_t m_number;
        std::size_t m_size;
    };
    constexpr std::size_t kOptional = kNewHeader + 24;
    const std::string pe = MakeImage(EImageKind::Pe32, SampleStrings());
    for (const CStep& step : std::vector<CStep>{
             {"no sections", kNewHeader + 6, 0, 2},
             {"more sections than the file holds", kNewHeader + 6, 0xffff, 2},
             {"no optional header", kNewHeader + 20, 0, 2},
             {"optional header past the end", kNewHeader + 20, 0xffff, 2},
             {"unknown optional header", kOptional, 0x107, 2},
             {"two data directories", kOptional + 92, 2, 4},
             {"no resources", kOptional + 96 + 16, 0, 4},
             {"resources in no section", kOptional + 96 + 16, 0x7fffff00, 4},
             {"section past the end of the file", kResourceSection + 20, 0xfffffff0, 4},
             {"section without bytes", kResourceSection + 16, 0, 4},
             {"no version type", kResources + 16, 15, 4},
             {"empty directory", kResources + 14, 0, 2},
             {"directory larger than the file", kResources + 14, 0xffff, 2},
             {"type that is data", kResources + 20, 24, 4},
             {"name that leads back to the root", kNameEntry + 4, 0x80000000, 4},
             {"another number than 1", kNameEntry, 5, 4},
             {"data in no section", kDataEntry, 0xfffffff0, 4},
             {"data larger than its section", kDataEntry + 4, 0xffffffff, 4},
             {"data shorter than the block", kDataEntry + 4, 100, 4},
             {"no data", kDataEntry + 4, 0, 4},
         }) {
        std::string patched = pe;
        Patch(patched, step.m_offset, step.m_number, step.m_size);
        EXPECT_EQ(Query(patched, kFileE4), "(no block)") << step.m_name;
    }

    const std::string ne = MakeImage(EImageKind::Ne, SampleStrings());
    ASSERT_EQ(U16(ne, kNeTable + 2), 0x8010u);
    for (const CStep& step : std::vector<CStep>{
             {"table past the end", kNewHeader + 0x24, 0xffff, 2},
             {"alignment beyond all sense", kNeTable, 60, 2},
             {"another type", kNeTable + 2, 0x8009, 2},
             {"no resources of the type", kNeTable + 4, 0, 2},
             {"another number than 1", kNeTable + 16, 0x8002, 2},
             {"resource past the end", kNeTable + 10, 0xffff, 2},
             {"resource shorter than the block", kNeTable + 12, 2, 2},
         }) {
        std::string patched = ne;
        Patch(patched, step.m_offset, step.m_number, step.m_size);
        EXPECT_EQ(Query(patched, kFileE4), "(no block)") << step.m_name;
    }

    std::string large = pe;
    large.resize(kResources + (2u << 20));
    Patch(large, kResourceSection + 16, 2u << 20, 4);
    Patch(large, kDataEntry + 4, (1u << 20) + 1, 4);
    EXPECT_EQ(Query(large, kFileE4), "(no block)") << "resource of more than a megabyte";
}

TEST(VersionBlock, EveryTruncationGivesTheWholeAnswerOrNone) {
    for (const EImageKind kind : {EImageKind::Pe32, EImageKind::Pe64, EImageKind::Ne}) {
        const std::string whole = MakeImage(kind, SampleStrings());
        bool found = false;
        for (std::size_t size = 0; size <= whole.size(); ++size) {
            SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + " cut to " + std::to_string(size));
            const std::string cut = Query(std::string_view(whole).substr(0, size), kFileE4);
            ASSERT_TRUE(cut == "7.5.0.12" || (cut == "(no block)" && !found)) << cut;
            found = cut != "(no block)";
            // The same where the file ends before the size that it states.
            const std::string shrunk = Query(CMemorySource(whole, size), kFileE4);
            ASSERT_TRUE(shrunk == "(no block)" || (shrunk == "7.5.0.12" && found)) << shrunk;
        }
        EXPECT_TRUE(found);
    }
}

}  // namespace
}  // namespace delvane
