// Draws the program's pictures and writes them as a C++ source: the icon, the drive images with their mask, the splash.
//   draw_pictures SOURCE [ICON]       ICON becomes the icon in all its sizes, as an .ico file
//   draw_pictures --icon SIZE FILE    the icon alone, as a PNG file
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "resources/png.h"

namespace {

struct CColour {
    double r = 0, g = 0, b = 0, a = 1;
};
CColour Rgb(std::uint32_t rgb, double alpha = 1) {
    return {(rgb >> 16 & 0xFF) / 255.0, (rgb >> 8 & 0xFF) / 255.0, (rgb & 0xFF) / 255.0, alpha};
}
CColour Mix(const CColour& x, const CColour& y, double share) {
    return {x.r + (y.r - x.r) * share, x.g + (y.g - x.g) * share, x.b + (y.b - x.b) * share, x.a + (y.a - x.a) * share};
}

struct CPoint {
    double x = 0, y = 0;
};

class CCanvas {
public:
    CCanvas(int width, int height, CColour ground) : m_nWidth(width), m_nHeight(height) {
        m_pixels.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), ground);
    }

    // Paints where the shape is; its edge is smoothed by sixteen looks at each pixel.
    template <class Shape, class Paint>
    void Fill(const Shape& shape, const Paint& paint) {
        for (int y = 0; y < m_nHeight; ++y) {
            for (int x = 0; x < m_nWidth; ++x) {
                int inside = 0;
                for (int sample = 0; sample < 16; ++sample) {
                    const int column = sample % 4;
                    const int row = sample / 4;
                    const CPoint point{x + (column + 0.5) / 4, y + (row + 0.5) / 4};
                    inside += shape(point) ? 1 : 0;
                }
                if (inside == 0) continue;
                const CColour colour = paint(CPoint{x + 0.5, y + 0.5});
                const double share = colour.a * inside / 16;
                CColour& pixel = At(x, y);
                const double alpha = share + pixel.a * (1 - share);
                if (alpha == 0) continue;
                const auto over = [&](double top, double below) {
                    return (top * share + below * pixel.a * (1 - share)) / alpha;
                };
                pixel = {over(colour.r, pixel.r), over(colour.g, pixel.g), over(colour.b, pixel.b), alpha};
            }
        }
    }
    template <class Shape>
    void Fill(const Shape& shape, const CColour& colour) {
        Fill(shape, [&](CPoint) { return colour; });
    }

    CColour& At(int x, int y) {
        return m_pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_nWidth) + static_cast<std::size_t>(x)];
    }
    const int m_nWidth;
    const int m_nHeight;

private:
    std::vector<CColour> m_pixels;
};

// Shapes.

auto Box(double left, double top, double right, double bottom, double round = 0) {
    return [=](CPoint p) {
        if (p.x < left || p.x > right || p.y < top || p.y > bottom) return false;
        const double dx = std::max({left + round - p.x, p.x - (right - round), 0.0});
        const double dy = std::max({top + round - p.y, p.y - (bottom - round), 0.0});
        return dx * dx + dy * dy <= round * round || (dx == 0 || dy == 0);
    };
}
auto Disc(double x, double y, double radiusX, double radiusY) {
    return [=](CPoint p) { return std::pow((p.x - x) / radiusX, 2) + std::pow((p.y - y) / radiusY, 2) <= 1; };
}
double DistanceToLine(CPoint p, CPoint a, CPoint b) {
    const double length = std::pow(b.x - a.x, 2) + std::pow(b.y - a.y, 2);
    const double along =
        length == 0 ? 0 : std::clamp(((p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y)) / length, 0.0, 1.0);
    return std::hypot(p.x - a.x - along * (b.x - a.x), p.y - a.y - along * (b.y - a.y));
}
auto Stroke(std::vector<std::pair<CPoint, CPoint>> lines, double width) {
    return [lines = std::move(lines), width](CPoint p) {
        return std::any_of(lines.begin(), lines.end(),
                           [&](const auto& line) { return DistanceToLine(p, line.first, line.second) <= width / 2; });
    };
}

// Capitals as strokes, four wide and six high.
using CGlyph = std::vector<std::vector<CPoint>>;
CGlyph GlyphOf(char letter) {
    switch (letter) {
        case 'A':
            return {{{0, 6}, {2, 0}, {4, 6}}, {{0.7, 4}, {3.3, 4}}};
        case 'D':
            return {{{0, 0}, {0, 6}, {1.8, 6}, {3.2, 5.4}, {4, 4}, {4, 2}, {3.2, 0.6}, {1.8, 0}, {0, 0}}};
        case 'E':
            return {{{4, 0}, {0, 0}, {0, 6}, {4, 6}}, {{0, 3}, {3.2, 3}}};
        case 'I':
            return {{{0, 0}, {0, 6}}};
        case 'L':
            return {{{0, 0}, {0, 6}, {3.6, 6}}};
        case 'N':
            return {{{0, 6}, {0, 0}, {4, 6}, {4, 0}}};
        case 'S':
            return {{{3.9, 1},
                     {3, 0.2},
                     {2, 0},
                     {1, 0.2},
                     {0.2, 0.9},
                     {0.2, 1.9},
                     {1, 2.7},
                     {3, 3.3},
                     {3.8, 4.1},
                     {3.8, 5.1},
                     {3, 5.8},
                     {2, 6},
                     {1, 5.8},
                     {0.1, 5}}};
        case 'T':
            return {{{0, 0}, {4, 0}}, {{2, 0}, {2, 6}}};
        case 'V':
            return {{{0, 0}, {2, 6}, {4, 0}}};
        default:
            return {};
    }
}
std::vector<std::pair<CPoint, CPoint>> LinesOf(std::string_view text, CPoint at, double unit) {
    std::vector<std::pair<CPoint, CPoint>> lines;
    for (const char letter : text) {
        for (const std::vector<CPoint>& part : GlyphOf(letter)) {
            for (std::size_t i = 1; i < part.size(); ++i) {
                lines.push_back({{at.x + part[i - 1].x * unit, at.y + part[i - 1].y * unit},
                                 {at.x + part[i].x * unit, at.y + part[i].y * unit}});
            }
        }
        at.x += (letter == 'I' ? 2.0 : letter == ' ' ? 3.4 : 5.8) * unit;
    }
    return lines;
}

// The mark of the program: two sheets, the later one in front, with the lines that are new.
void DrawMark(CCanvas& canvas, double left, double top, double size) {
    const auto at = [&](double x, double y) { return CPoint{left + x * size, top + y * size}; };
    const auto box = [&](double x1, double y1, double x2, double y2, double round) {
        return Box(at(x1, y1).x, at(x1, y1).y, at(x2, y2).x, at(x2, y2).y, round * size);
    };
    canvas.Fill(box(0.06, 0.04, 0.66, 0.80, 0.06), Rgb(0x24435E));
    canvas.Fill(box(0.09, 0.07, 0.63, 0.77, 0.04), Rgb(0xB9CBD8));
    for (const double y : {0.18, 0.30, 0.42, 0.54})
        canvas.Fill(box(0.16, y, 0.50, y + 0.045, 0.02), Rgb(0x7F9BB0));
    canvas.Fill(box(0.32, 0.20, 0.94, 0.97, 0.06), Rgb(0x24435E));
    canvas.Fill(box(0.35, 0.23, 0.91, 0.94, 0.04), Rgb(0xFFFFFF));
    for (const double y : {0.34, 0.58, 0.82})
        canvas.Fill(box(0.42, y, 0.84, y + 0.045, 0.02), Rgb(0x7F9BB0));
    canvas.Fill(box(0.42, 0.455, 0.84, 0.505, 0.02), Rgb(0xE07B1A));
    canvas.Fill(box(0.42, 0.695, 0.70, 0.745, 0.02), Rgb(0xE07B1A));
}

CCanvas DrawIcon(int size) {
    CCanvas canvas(size, size, Rgb(0, 0));
    DrawMark(canvas, 0, 0, size);
    return canvas;
}

CCanvas DrawSplash() {
    CCanvas canvas(591, 368, Rgb(0x10283C));
    canvas.Fill(Box(0, 0, 591, 368), [](CPoint p) {
        return Mix(Rgb(0x0E2436), Rgb(0x2B5A7C), std::clamp((p.x * 0.45 + p.y) / 560, 0.0, 1.0));
    });
    // Rings, as of something that came into still water.
    for (int ring = 0; ring < 6; ++ring) {
        const double radius = 60.0 + ring * 46;
        canvas.Fill([=](CPoint p) { return std::abs(std::hypot(p.x - 150, (p.y - 150) * 1.0) - radius) < 1.1; },
                    Rgb(0xFFFFFF, 0.16 - ring * 0.02));
    }
    DrawMark(canvas, 78, 66, 150);
    canvas.Fill(Stroke(LinesOf("INSTALL", {268, 96}, 6.2), 5.2), Rgb(0xFFFFFF));
    canvas.Fill(Stroke(LinesOf("DELVANE", {268, 160}, 6.2), 5.2), Rgb(0xF0A04B));
    canvas.Fill(Box(268, 220, 513, 222.5), Rgb(0xFFFFFF, 0.55));
    canvas.Fill(Box(0, 318, 591, 368), Rgb(0x0A1A28, 0.55));
    // What a report tells by: added, changed, deleted.
    const std::uint32_t colours[] = {0x6FBF73, 0xF0A04B, 0xD9695F};
    for (int i = 0; i < 3; ++i) {
        for (int bar = 0; bar < 9; ++bar) {
            const double left = 40 + i * 175 + bar * 16;
            const double height = 5 + (bar * (i + 2) + 2 * i) % 5 * 4.5;
            canvas.Fill(Box(left, 354 - height, left + 10, 354, 1.5), Rgb(colours[i]));
        }
    }
    return canvas;
}

// The images of the kinds of drives, by the number that Windows has for them.
CCanvas DrawDrives() {
    CCanvas canvas(128, 13, Rgb(0, 0));
    const auto body = [&](double x, double y, double width, double height, std::uint32_t colour) {
        canvas.Fill(Box(x, y, x + width, y + height), Rgb(0x000000));
        canvas.Fill(Box(x + 1, y + 1, x + width - 1, y + height - 1), Rgb(colour));
    };
    for (int kind = 0; kind < 8; ++kind) {
        const double x = kind * 16;
        switch (kind) {
            case 2:  // a floppy disk
                body(x + 2, 0, 12, 13, 0x000080);
                canvas.Fill(Box(x + 5, 1, x + 11, 5), Rgb(0xC0C0C0));
                canvas.Fill(Box(x + 8, 1, x + 10, 4), Rgb(0x000080));
                canvas.Fill(Box(x + 4, 7, x + 12, 12), Rgb(0xFFFFFF));
                break;
            case 4:  // a share: a drive on a cable
                body(x + 1, 1, 14, 6, 0xC0C0C0);
                canvas.Fill(Box(x + 11, 4, x + 13, 5), Rgb(0x00FF00));
                canvas.Fill(Box(x + 7, 7, x + 9, 10), Rgb(0x808080));
                canvas.Fill(Box(x, 10, x + 16, 12), Rgb(0x008080));
                canvas.Fill(Box(x + 6, 9, x + 10, 13), Rgb(0x008080));
                break;
            case 5:  // a compact disc above its drive
                canvas.Fill(Disc(x + 8, 6, 6.5, 6), Rgb(0x000000));
                canvas.Fill(Disc(x + 8, 6, 5.5, 5), Rgb(0xC0C0C0));
                canvas.Fill(Disc(x + 10, 4, 2.4, 2), Rgb(0x00FFFF));
                canvas.Fill(Disc(x + 8, 6, 2.2, 2), Rgb(0x000000));
                canvas.Fill(Disc(x + 8, 6, 1.2, 1), Rgb(0xFFFFFF));
                body(x, 9, 16, 4, 0x808080);
                break;
            case 6:  // memory: a chip with its pins
                for (int pin = 0; pin < 4; ++pin)
                    canvas.Fill(Box(x + 3 + pin * 3, 1, x + 4 + pin * 3, 12), Rgb(0x808000));
                body(x + 1, 3, 14, 7, 0x008000);
                break;
            case 7:
                break;
            default:  // a hard drive
                body(x, 4, 16, 7, 0xC0C0C0);
                canvas.Fill(Box(x + 1, 8, x + 15, 10), Rgb(0x808080));
                canvas.Fill(Box(x + 11, 6, x + 13, 7), Rgb(kind == 3 ? 0x00FF00 : 0xFF0000));
        }
    }
    return canvas;
}

// Bitmaps.

void Put(std::string& bytes, std::uint32_t number, int size) {
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(number >> 8 * i);
}
std::string Header(const CCanvas& canvas, std::uint32_t bits, std::uint32_t colours) {
    std::string bytes;
    Put(bytes, 40, 4);
    Put(bytes, static_cast<std::uint32_t>(canvas.m_nWidth), 4);
    Put(bytes, static_cast<std::uint32_t>(canvas.m_nHeight), 4);
    Put(bytes, 1, 2);
    Put(bytes, bits, 2);
    for (int i = 0; i < 4; ++i)
        Put(bytes, 0, 4);
    Put(bytes, colours, 4);
    Put(bytes, 0, 4);
    return bytes;
}
std::uint32_t Byte(double part) { return static_cast<std::uint32_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255)); }

// Rows from the bottom up, each a multiple of four bytes; `indexOf` gives the number of a pixel.
template <class IndexOf>
void PutRows(std::string& bytes, const CCanvas& canvas, int bits, const IndexOf& indexOf) {
    for (int y = canvas.m_nHeight; y-- > 0;) {
        const std::size_t begin = bytes.size();
        std::uint32_t gathered = 0;
        int held = 0;
        for (int x = 0; x < canvas.m_nWidth; ++x) {
            const std::uint32_t index = indexOf(x, y);
            if (bits > 8) {
                Put(bytes, index, bits / 8);
                continue;
            }
            gathered = gathered << bits | index;
            held += bits;
            if (held == 8) {
                bytes += static_cast<char>(gathered);
                gathered = 0;
                held = 0;
            }
        }
        if (held != 0) bytes += static_cast<char>(gathered << (8 - held));
        while ((bytes.size() - begin) % 4 != 0)
            bytes += '\0';
    }
}

std::string WithAlpha(CCanvas canvas) {
    std::string bytes = Header(canvas, 32, 0);
    PutRows(bytes, canvas, 32, [&](int x, int y) {
        const CColour& c = canvas.At(x, y);
        return Byte(c.b) | Byte(c.g) << 8 | Byte(c.r) << 16 | Byte(c.a) << 24;
    });
    return bytes;
}

std::uint32_t Nearest(const std::vector<CColour>& table, const CColour& colour) {
    std::size_t best = 0;
    double distance = 10;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double d = std::pow(table[i].r - colour.r, 2) + std::pow(table[i].g - colour.g, 2) * 1.5 +
                         std::pow(table[i].b - colour.b, 2);
        if (d < distance) {
            distance = d;
            best = i;
        }
    }
    return static_cast<std::uint32_t>(best);
}
void PutTable(std::string& bytes, const std::vector<CColour>& table) {
    for (const CColour& c : table)
        Put(bytes, Byte(c.b) | Byte(c.g) << 8 | Byte(c.r) << 16, 4);
}

// The sixteen colours of old.
std::string InSixteenColours(CCanvas canvas) {
    std::vector<CColour> table;
    for (const std::uint32_t rgb :
         {0x000000U, 0x800000U, 0x008000U, 0x808000U, 0x000080U, 0x800080U, 0x008080U, 0x808080U, 0xC0C0C0U, 0xFF0000U,
          0x00FF00U, 0xFFFF00U, 0x0000FFU, 0xFF00FFU, 0x00FFFFU, 0xFFFFFFU})
        table.push_back(Rgb(rgb));
    std::string bytes = Header(canvas, 4, 0);
    PutTable(bytes, table);
    PutRows(bytes, canvas, 4, [&](int x, int y) { return Nearest(table, canvas.At(x, y)); });
    return bytes;
}
std::string MaskOf(CCanvas canvas) {
    std::string bytes = Header(canvas, 1, 0);
    PutTable(bytes, {Rgb(0), Rgb(0xFFFFFF)});
    PutRows(bytes, canvas, 1, [&](int x, int y) { return canvas.At(x, y).a < 0.5 ? 1U : 0U; });
    return bytes;
}

// 256 colours, chosen by halving the box of colours that spreads most; what a pixel misses goes to its neighbours.
std::string InManyColours(CCanvas canvas) {
    std::vector<std::vector<CColour>> boxes(1);
    for (int y = 0; y < canvas.m_nHeight; ++y) {
        for (int x = 0; x < canvas.m_nWidth; ++x)
            boxes.front().push_back(canvas.At(x, y));
    }
    constexpr double CColour::*kParts[] = {&CColour::r, &CColour::g, &CColour::b};
    const auto spread = [](const std::vector<CColour>& box, double CColour::*part) {
        const auto [low, high] = std::minmax_element(
            box.begin(), box.end(), [part](const CColour& a, const CColour& b) { return a.*part < b.*part; });
        return (*high).*part - (*low).*part;
    };
    while (boxes.size() < 256) {
        std::size_t widest = 0;
        double most = -1;
        double CColour::*along = kParts[0];
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            for (double CColour::*part : kParts) {
                const double weight = spread(boxes[i], part) * std::sqrt(static_cast<double>(boxes[i].size()));
                if (weight > most) {
                    most = weight;
                    widest = i;
                    along = part;
                }
            }
        }
        std::vector<CColour>& box = boxes[widest];
        std::sort(box.begin(), box.end(), [along](const CColour& a, const CColour& b) { return a.*along < b.*along; });
        std::vector<CColour> upper(box.begin() + static_cast<std::ptrdiff_t>(box.size() / 2), box.end());
        box.resize(box.size() / 2);
        if (box.empty() || upper.empty()) break;
        boxes.push_back(std::move(upper));
    }
    std::vector<CColour> table;
    for (const std::vector<CColour>& box : boxes) {
        CColour sum{0, 0, 0, 1};
        for (const CColour& c : box)
            sum = {sum.r + c.r, sum.g + c.g, sum.b + c.b, 1};
        const auto count = static_cast<double>(box.size());
        table.push_back({sum.r / count, sum.g / count, sum.b / count, 1});
    }
    table.resize(256);
    const auto width = static_cast<std::size_t>(canvas.m_nWidth);
    const auto placeOf = [width](int x, int y) {
        return static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x);
    };
    std::vector<std::uint32_t> indices(width * static_cast<std::size_t>(canvas.m_nHeight));
    for (int y = 0; y < canvas.m_nHeight; ++y) {
        for (int x = 0; x < canvas.m_nWidth; ++x) {
            const CColour wanted = canvas.At(x, y);
            const std::uint32_t index = Nearest(table, wanted);
            indices[placeOf(x, y)] = index;
            const auto pass = [&](int dx, int dy, double share) {
                if (x + dx < 0 || x + dx >= canvas.m_nWidth || y + dy >= canvas.m_nHeight) return;
                CColour& other = canvas.At(x + dx, y + dy);
                other.r += (wanted.r - table[index].r) * share;
                other.g += (wanted.g - table[index].g) * share;
                other.b += (wanted.b - table[index].b) * share;
            };
            pass(1, 0, 7.0 / 16);
            pass(-1, 1, 3.0 / 16);
            pass(0, 1, 5.0 / 16);
            pass(1, 1, 1.0 / 16);
        }
    }
    std::string bytes = Header(canvas, 8, 0);
    PutTable(bytes, table);
    PutRows(bytes, canvas, 8, [&](int x, int y) { return indices[placeOf(x, y)]; });
    return bytes;
}

// An icon file: a directory, and each image as a bitmap of twice its height, whose lower half is a mask that nobody
// looks at beside the alpha.
std::string IconFile() {
    const int sizes[] = {16, 20, 24, 32, 40, 48, 64, 96, 128};
    std::string head;
    Put(head, 0, 2);
    Put(head, 1, 2);
    Put(head, static_cast<std::uint32_t>(std::size(sizes)), 2);
    std::string images;
    for (const int size : sizes) {
        CCanvas twice(size, size * 2, Rgb(0, 0));
        std::string image = Header(twice, 32, 0) + WithAlpha(DrawIcon(size)).substr(40);
        image.append(static_cast<std::size_t>((size + 31) / 32 * 4 * size), '\0');
        Put(head, static_cast<std::uint32_t>(size), 1);
        Put(head, static_cast<std::uint32_t>(size), 1);
        Put(head, 0, 2);
        Put(head, 1, 2);
        Put(head, 32, 2);
        Put(head, static_cast<std::uint32_t>(image.size()), 4);
        Put(head, static_cast<std::uint32_t>(6 + 16 * std::size(sizes) + images.size()), 4);
        images += image;
    }
    return head + images;
}

void WriteArray(std::ofstream& out, const char* name, const std::string& bytes) {
    out << "constexpr char " << name << "[] =\n";
    for (std::size_t at = 0; at < bytes.size(); at += 40) {
        out << "    \"";
        for (const char byte : bytes.substr(at, 40)) {
            char text[8];
            std::snprintf(text, sizeof text, "\\%03o", static_cast<unsigned>(static_cast<unsigned char>(byte)));
            out << text;
        }
        out << "\"\n";
    }
    out << "    ;\n";
}

bool WriteIcon(int size, const char* path) {
    CCanvas canvas = DrawIcon(size);
    std::string pixels;
    for (int i = 0; i < size * size; ++i) {
        const CColour& c = canvas.At(i % size, i / size);
        for (const double part : {c.r, c.g, c.b, c.a})
            Put(pixels, Byte(part), 1);
    }
    std::ofstream out(path, std::ios::binary);
    out << delvane::MakePng(static_cast<std::uint32_t>(size), pixels);
    out.close();
    return out.good();
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount == 4 && std::string_view(arguments[1]) == "--icon") {
        const int size = std::atoi(arguments[2]);
        return size > 0 && WriteIcon(size, arguments[3]) ? 0 : 1;
    }
    if (argumentCount != 2 && argumentCount != 3) return 2;
    if (argumentCount == 3) {
        std::ofstream icon(arguments[2], std::ios::binary);
        icon << IconFile() << std::flush;
        if (!icon) return 1;
    }
    std::ofstream out(arguments[1]);
    out << "// Written by draw_pictures.\n#include \"resources/pictures.h\"\n\nnamespace delvane {\nnamespace {\n\n";
    WriteArray(out, "kIcon", WithAlpha(DrawIcon(48)));
    WriteArray(out, "kDrives", InSixteenColours(DrawDrives()));
    WriteArray(out, "kDriveMask", MaskOf(DrawDrives()));
    WriteArray(out, "kSplash", InManyColours(DrawSplash()));
    out << "}  // namespace\n\nCPictureBytes GetPictures() {\n"
           "    return {{kIcon, sizeof kIcon - 1}, {kDrives, sizeof kDrives - 1}, {kDriveMask, sizeof kDriveMask - "
           "1},\n"
           "            {kSplash, sizeof kSplash - 1}};\n}\n\n}  // namespace delvane\n";
    out.close();
    return out ? 0 : 1;
}
