#include "platform/images/image.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "samples/image_writer.h"
#include "tests/support/memory_source.h"

namespace delvane {
namespace {

// What MapImage says of the bytes, in one word. The flags come in set, so that one that is not reset shows.
std::string KindOf(std::string_view bytes) {
    CLoadedImage image{true, true};
    const bool mapped = MapImage(CMemorySource(bytes), image);
    std::string kind = mapped ? "image" : "none";
    if (image.fSystemImage) kind += "+system";
    if (image.fDOSImage) kind += "+dos";
    return kind;
}

// The same image with its newer header moved to the offset given.
std::string MovedTo(std::size_t newHeader, const std::string& image) {
    std::string moved = image.substr(0, 0x80);
    Patch(moved, 0x3c, static_cast<std::uint32_t>(newHeader), 4);
    moved.resize(newHeader);
    return moved + image.substr(0x80);
}

constexpr std::size_t kPeHeader = 0x80;
constexpr std::size_t kPeNeeded = kPeHeader + 24 + 70;  // through the subsystem

TEST(Image, EachKindIsToldApart) {
    EXPECT_EQ(KindOf(MakeImage(EImageKind::Pe32)), "image");
    EXPECT_EQ(KindOf(MakeImage(EImageKind::Pe64)), "image");
    EXPECT_EQ(KindOf(MakeImage(EImageKind::Dll)), "image");
    EXPECT_EQ(KindOf(MakeImage(EImageKind::Pe32Native)), "image+system");
    EXPECT_EQ(KindOf(MakeImage(EImageKind::Pe64Native)), "image+system");
    EXPECT_EQ(KindOf(MakeImage(EImageKind::Ne)), "none+dos");
    EXPECT_EQ(KindOf(MakeImage(EImageKind::Le)), "none+dos");
    EXPECT_EQ(KindOf(MakeImage(EImageKind::Mz)), "none+dos");

    EXPECT_EQ(KindOf(""), "none");
    EXPECT_EQ(KindOf("M"), "none");
    EXPECT_EQ(KindOf(std::string(2000, 'x')), "none");
    EXPECT_EQ(KindOf("ZM" + MakeImage(EImageKind::Mz).substr(2)), "none");
    EXPECT_EQ(KindOf(MakeImage(EImageKind::Pe32).substr(kPeHeader)), "none");
}

// An MZ header that leads to no newer one is an image of MS-DOS, whatever its last field says.
TEST(Image, MzThatLeadsNowhereIsADosImage) {
    std::string image = MakeImage(EImageKind::Pe32);
    for (const std::uint32_t newHeader : {0u, 0x3cu, 0x200u, 0x3fffffffu, 0x80000000u, 0xffffffffu}) {
        SCOPED_TRACE(newHeader);
        Patch(image, 0x3c, newHeader, 4);
        EXPECT_EQ(KindOf(image), "none+dos");
    }
    std::string unknown = MakeImage(EImageKind::Pe32);
    for (const char* const signature : {"LX", "PE", "XX"}) {
        SCOPED_TRACE(signature);
        unknown.replace(kPeHeader, 4, std::string(signature) + "\1\1");
        EXPECT_EQ(KindOf(unknown), "none+dos");
    }
}

// A damaged image of the new kind must not pass for an old one.
TEST(Image, ABrokenPeHeaderIsNoImageAtAll) {
    const std::string whole = MakeImage(EImageKind::Pe64Native);
    const auto patched = [&](std::size_t offset, std::uint32_t number) {
        std::string image = whole;
        Patch(image, kPeHeader + offset, number, 2);
        return image;
    };
    constexpr std::size_t kOptionalSize = 20;
    constexpr std::size_t kMagic = 24;
    EXPECT_EQ(KindOf(patched(kMagic, 0x107)), "none");  // a ROM image
    EXPECT_EQ(KindOf(patched(kMagic, 0)), "none");
    EXPECT_EQ(KindOf(patched(kOptionalSize, 0)), "none");
    EXPECT_EQ(KindOf(patched(kOptionalSize, 69)), "none");
    EXPECT_EQ(KindOf(patched(kOptionalSize, 70)), "image+system");
}

TEST(Image, EveryTruncationIsSeenForWhatIsLeft) {
    for (const EImageKind kind : {EImageKind::Pe32, EImageKind::Pe64, EImageKind::Pe32Native, EImageKind::Pe64Native,
                                  EImageKind::Dll, EImageKind::Ne, EImageKind::Le, EImageKind::Mz}) {
        const std::string whole = MakeImage(kind);
        const std::string wholeKind = KindOf(whole);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + " cut to " + std::to_string(size));
            std::string expected = wholeKind;
            if (size < 2) {
                expected = "none";
            } else if (size < kPeHeader + 4) {
                expected = "none+dos";
            } else if (size < kPeNeeded && wholeKind != "none+dos") {
                expected = "none";
            }
            ASSERT_EQ(KindOf(std::string_view(whole).substr(0, size)), expected);
        }
    }
}

// The header may stand within the first read, across its end or behind it, and there too the file may end.
TEST(Image, AFarHeaderIsFoundWithOneMoreRead) {
    const std::string image = MakeImage(EImageKind::Pe64Native);
    for (const std::size_t newHeader : {std::size_t{4000}, std::size_t{1024}, std::size_t{1023}, std::size_t{931},
                                        std::size_t{930}, std::size_t{500}}) {
        SCOPED_TRACE(newHeader);
        const std::string moved = MovedTo(newHeader, image);
        EXPECT_EQ(KindOf(moved), "image+system");
        EXPECT_EQ(KindOf(std::string_view(moved).substr(0, newHeader + 94)), "image+system");
        EXPECT_EQ(KindOf(std::string_view(moved).substr(0, newHeader + 93)), "none");
        EXPECT_EQ(KindOf(std::string_view(moved).substr(0, newHeader + 3)), "none+dos");

        const CMemorySource source(moved);
        CLoadedImage loaded;
        MapImage(source, loaded);
        EXPECT_EQ(source.m_nReads, newHeader <= 930 ? 1u : 2u);
        EXPECT_LE(source.m_nAskedFor, 1200u);
    }

    // Where the first read has reached the end, nothing can lie beyond it.
    std::string shortFile = image.substr(0, 600);
    Patch(shortFile, 0x3c, 5000, 4);
    const CMemorySource source(shortFile);
    CLoadedImage loaded;
    EXPECT_FALSE(MapImage(source, loaded));
    EXPECT_EQ(source.m_nReads, 1u);
}

}  // namespace
}  // namespace delvane
