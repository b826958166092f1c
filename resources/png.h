// A picture as a PNG file, for draw_pictures.
//
// The deflate stream is one block of the fixed codes, and its only matches repeat the pixel before: each row is stored
// as its difference to the row above, so a drawing of plain areas becomes long runs of equal pixels.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace delvane {

class CDeflater {
public:
    // The bytes in the zlib format.
    static std::string Compress(std::string_view bytes) {
        CDeflater deflater;
        deflater.m_out = "\x78\x01";
        deflater.PutBits(0b011, 3);  // the last block, of the fixed codes
        for (std::size_t at = 0; at < bytes.size();) {
            std::size_t run = 0;
            while (at >= 4 && run < 258 && at + run < bytes.size() && bytes[at + run] == bytes[at + run - 4])
                ++run;
            if (run < 3) {
                deflater.PutSymbol(static_cast<unsigned char>(bytes[at++]));
            } else {
                deflater.PutLength(static_cast<std::uint32_t>(run));
                deflater.PutCode(3, 5);  // a distance of four
                at += run;
            }
        }
        deflater.PutSymbol(256);
        if (deflater.m_nHeld != 0) deflater.PutBits(0, 8 - deflater.m_nHeld);
        std::uint32_t low = 1;
        std::uint32_t high = 0;
        for (const char byte : bytes) {
            low = (low + static_cast<unsigned char>(byte)) % 65521;
            high = (high + low) % 65521;
        }
        return deflater.m_out + BigEndian(high << 16 | low);
    }

    static std::string BigEndian(std::uint32_t number) {
        std::string bytes;
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(number >> shift);
        return bytes;
    }

private:
    // From the lowest bit on, as everything in a stream but the codes.
    void PutBits(std::uint32_t bits, int count) {
        for (int i = 0; i < count; ++i) {
            m_nGathered |= (bits >> i & 1) << m_nHeld;
            if (++m_nHeld < 8) continue;
            m_out += static_cast<char>(m_nGathered);
            m_nGathered = 0;
            m_nHeld = 0;
        }
    }
    void PutCode(std::uint32_t code, int count) {
        while (count-- > 0)
            PutBits(code >> count, 1);
    }
    void PutSymbol(std::uint32_t symbol) {
        if (symbol < 144) {
            PutCode(0x30 + symbol, 8);
        } else if (symbol < 256) {
            PutCode(0x190 + symbol - 144, 9);
        } else if (symbol < 280) {
            PutCode(symbol - 256, 7);
        } else {
            PutCode(0xC0 + symbol - 280, 8);
        }
    }

    // 3 to 258. Each power of two has four codes, told apart by the bits behind its highest one; the rest follow.
    void PutLength(std::uint32_t length) {
        const std::uint32_t beyond = length - 3;
        if (length == 258) {
            PutSymbol(285);
        } else if (beyond < 8) {
            PutSymbol(257 + beyond);
        } else {
            const int more = std::bit_width(beyond) - 3;
            PutSymbol(257 + 4 * static_cast<std::uint32_t>(more) + (beyond >> more));
            PutBits(beyond, more);
        }
    }

    std::string m_out;
    std::uint32_t m_nGathered = 0;
    int m_nHeld = 0;
};

// `pixels` are red, green, blue and alpha, a byte each, in rows from the top down.
inline std::string MakePng(std::uint32_t width, std::string_view pixels) {
    const std::size_t rowSize = std::size_t{width} * 4;
    std::string rows;
    for (std::size_t at = 0; at < pixels.size(); ++at) {
        if (at % rowSize == 0) rows += '\2';  // the difference to the row above
        const char above = at < rowSize ? '\0' : pixels[at - rowSize];
        rows += static_cast<char>(pixels[at] - above);
    }
    std::string file = "\x89PNG\r\n\x1A\n";
    const auto put = [&file](std::string_view type, std::string_view data) {
        std::string chunk(type);
        chunk += data;
        std::uint32_t check = 0xFFFFFFFF;
        for (const char byte : chunk) {
            check ^= static_cast<unsigned char>(byte);
            for (int bit = 0; bit < 8; ++bit)
                check = check >> 1 ^ ((check & 1) != 0 ? 0xEDB88320 : 0);
        }
        file += CDeflater::BigEndian(static_cast<std::uint32_t>(data.size())) + chunk + CDeflater::BigEndian(~check);
    };
    const auto height = static_cast<std::uint32_t>(pixels.size() / rowSize);
    put("IHDR", CDeflater::BigEndian(width) + CDeflater::BigEndian(height) + std::string("\x08\x06\0\0\0", 5));
    put("IDAT", CDeflater::Compress(rows));
    put("IEND", {});
    return file;
}

}  // namespace delvane
