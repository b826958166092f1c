// Our PNG files, read by a library that knows the format.
#include "resources/png.h"

#include <QtGui/QImage>
#include <gtest/gtest.h>
#include <random>

namespace delvane {
namespace {

TEST(Png, EveryPixelComesBack) {
    std::mt19937 random(1);  // NOLINT: the same pictures each time
    for (const int width : {1, 2, 3, 7, 48, 200}) {
        // From noise, which holds every byte, to runs of every length.
        for (const unsigned noise : {1U, 2U, 10U, 100U, 5000U}) {
            std::string pixels;
            for (std::size_t i = 0; i < static_cast<std::size_t>(width) * 31 * 4; ++i)
                pixels += pixels.empty() || random() % noise == 0 ? static_cast<char>(random()) : pixels.back();
            const std::string file = MakePng(static_cast<std::uint32_t>(width), pixels);
            QImage image;
            ASSERT_TRUE(image.loadFromData(reinterpret_cast<const uchar*>(file.data()), static_cast<int>(file.size())));
            ASSERT_EQ(image.size(), QSize(width, 31));
            for (int y = 0; y < 31; ++y) {
                for (int x = 0; x < width; ++x) {
                    const auto at = static_cast<std::size_t>(y * width + x) * 4;
                    const auto part = [&](std::size_t i) { return static_cast<unsigned char>(pixels[at + i]); };
                    ASSERT_EQ(image.pixel(x, y), qRgba(part(0), part(1), part(2), part(3))) << x << ' ' << y;
                }
            }
        }
    }
}

}  // namespace
}  // namespace delvane
