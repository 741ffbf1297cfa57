// A scene that is hard on demosaicing, drawn from formulas: nothing of it is stored anywhere.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "font.hpp"
#include "frames/frame_size.hpp"
#include "image.hpp"
#include "support/failure.hpp"

namespace demo {

namespace {

constexpr double pi = 3.14159265358979323846;
// The scene is laid out on this many units and stretched to whatever size is asked for.
constexpr double sceneWidth = 1280;
constexpr double sceneHeight = 960;
constexpr double panelSide = 320;
constexpr int subsamples = 4;

struct Point {
    double x;
    double y;
};

Colour grey(double level) { return {level, level, level}; }

Colour mix(const Colour& from, const Colour& to, double share) {
    return {from.red + (to.red - from.red) * share, from.green + (to.green - from.green) * share,
            from.blue + (to.blue - from.blue) * share};
}

// A fully saturated colour of the circle; turns counts from red over green and blue.
Colour hue(double turns) {
    const auto wave = [](double t) { return 0.5 + 0.5 * std::cos(2 * pi * t); };
    return {wave(turns), wave(turns - 1.0 / 3), wave(turns + 1.0 / 3)};
}

// Numbers in 0 to 1 that look random and are the same everywhere.
double scatter(uint32_t seed) {
    seed = (seed ^ 61u ^ (seed >> 16)) * 9u;
    seed = (seed ^ (seed >> 4)) * 0x27d4eb2du;
    return static_cast<double>((seed ^ (seed >> 15)) & 0xFFFFu) / 65535.0;
}

// Rings whose spacing reaches two pixels, the least a picture can hold, at the middle of the panel's sides.
Colour zonePlate(Point p) {
    const double x = p.x - panelSide / 2;
    const double y = p.y - panelSide / 2;
    return grey(0.5 + 0.45 * std::cos(pi * (x * x + y * y) / panelSide));
}

// Squares turned by five degrees: edges that cross the pixel grid slowly, in grey and between colours.
Colour slantedEdges(Point p) {
    constexpr double cell = panelSide / 2;
    const int index = (p.y < cell ? 0 : 2) + (p.x < cell ? 0 : 1);
    constexpr std::array<std::array<Colour, 2>, 4> pairs{{
        {{{0.85, 0.85, 0.85}, {0.12, 0.12, 0.12}}},
        {{{0.78, 0.16, 0.14}, {0.10, 0.55, 0.22}}},
        {{{0.16, 0.22, 0.70}, {0.93, 0.80, 0.15}}},
        {{{0.90, 0.87, 0.82}, {0.45, 0.12, 0.16}}},
    }};
    const double x = std::fmod(p.x, cell) - cell / 2;
    const double y = std::fmod(p.y, cell) - cell / 2;
    const double angle = 5 * pi / 180;
    const double turnedX = x * std::cos(angle) - y * std::sin(angle);
    const double turnedY = x * std::sin(angle) + y * std::cos(angle);
    const bool inside = std::max(std::abs(turnedX), std::abs(turnedY)) < cell * 0.32;
    return pairs[static_cast<std::size_t>(index)][inside ? 1 : 0];
}

// Five rows of patches: saturated, pastel, dark, earthen, grey.
Colour colourPatches(Point p) {
    constexpr double cell = panelSide / 5;
    const int column = std::min(4, static_cast<int>(p.x / cell));
    const int row = std::min(4, static_cast<int>(p.y / cell));
    constexpr double gap = 4;
    const double fromEdge = std::min(
        {std::fmod(p.x, cell), cell - std::fmod(p.x, cell), std::fmod(p.y, cell), cell - std::fmod(p.y, cell)});
    if (fromEdge < gap) {
        return grey(0.08);
    }
    const Colour pure = hue(column / 5.0 + row * 0.04);
    switch (row) {
        case 0:
            return mix(grey(0.1), pure, 0.85);
        case 1:
            return mix(grey(0.9), pure, 0.3);
        case 2:
            return mix(grey(0.05), pure, 0.35);
        case 3:
            return mix({0.35, 0.27, 0.18}, {0.80, 0.68, 0.55}, column / 4.0);
        default:
            return grey(0.05 + 0.225 * column);
    }
}

// Fans of lines that narrow towards their centre, grey over colours.
Colour lineFan(Point p) {
    const double x = p.x - panelSide / 2;
    const double y = p.y - panelSide / 2;
    const double radius = std::hypot(x, y);
    const Colour ground = x < 0 ? Colour{0.88, 0.86, 0.80} : Colour{0.55, 0.70, 0.86};
    const Colour line = y < 0 ? Colour{0.12, 0.12, 0.14} : Colour{0.38, 0.12, 0.10};
    if (radius < 12 || radius > 152) {
        return ground;
    }
    constexpr int lines = 48;
    return std::cos(std::atan2(y, x) * lines) > 0 ? line : ground;
}

struct TextLine {
    const char* text;
    double top;
    double dot;
    Colour ink;
};

// Text from barely readable to plain, on paper that is light above and dark below.
Colour textPanel(Point p) {
    static constexpr std::array<TextLine, 9> lines{{
        {"KRO: RAW FRAMES TO PICTURES", 14, 1.0, {0.05, 0.05, 0.06}},
        {"BAYER RG GR GB BG, 8 10 12 16 BITS", 28, 1.25, {0.10, 0.10, 0.12}},
        {"THE QUICK BROWN FOX 0123456789", 46, 1.5, {0.55, 0.08, 0.06}},
        {"JUMPS OVER LAZY DOGS", 68, 2.0, {0.05, 0.28, 0.10}},
        {"EDGE-DIRECTED", 96, 3.2, {0.06, 0.10, 0.50}},
        {"WHITE ON BLACK 12345", 172, 2.0, {0.95, 0.95, 0.95}},
        {"YELLOW AND CYAN", 200, 2.6, {0.95, 0.85, 0.12}},
        {"SMALL PRINT ON A DARK GROUND", 232, 1.5, {0.20, 0.80, 0.88}},
        {"NEAREST BILINEAR", 262, 2.6, {0.94, 0.45, 0.38}},
    }};
    for (const TextLine& line : lines) {
        const int column = static_cast<int>(std::floor((p.x - 14) / line.dot));
        const int row = static_cast<int>(std::floor((p.y - line.top) / line.dot));
        if (textDot(line.text, column, row)) {
            return line.ink;
        }
    }
    return p.y < 148 ? Colour{0.93, 0.92, 0.88} : Colour{0.09, 0.09, 0.11};
}

// A strand is a curve of slowly changing direction, about a pixel and a half wide.
struct Strand {
    double start;
    double lean;
    double bow;
    double turns;
    double halfWidth;
    Colour colour;
};

std::vector<Strand> makeStrands() {
    std::vector<Strand> strands;
    for (uint32_t i = 0; i < 60; i++) {
        const auto roll = [i](uint32_t which) { return scatter(i * 16 + which); };
        strands.push_back({-60 + 440 * roll(0), -0.5 + roll(1), 10 + 25 * roll(2), 0.3 + 0.8 * roll(3),
                           0.5 + 0.6 * roll(4), mix({0.13, 0.08, 0.05}, {0.72, 0.52, 0.30}, roll(5))});
    }
    return strands;
}

// Hair before a soft ground: fine, curved, overlapping, hardly any of it along the grid.
Colour hairPanel(Point p) {
    static const std::vector<Strand> strands = makeStrands();
    Colour colour = mix({0.82, 0.66, 0.56}, {0.58, 0.70, 0.62}, (p.x + p.y) / (2 * panelSide));
    for (const Strand& strand : strands) {
        const double angle = 2 * pi * strand.turns * p.y / panelSide;
        const double centre = strand.start + strand.lean * p.y + strand.bow * std::sin(angle);
        const double slope = strand.lean + strand.bow * std::cos(angle) * 2 * pi * strand.turns / panelSide;
        if (std::abs(p.x - centre) < strand.halfWidth * std::sqrt(1 + slope * slope)) {
            colour = strand.colour;
        }
    }
    return colour;
}

// Bars two to seven pixels apart, upright, lying and diagonal: a roof, a fence, a shirt.
Colour barsPanel(Point p) {
    constexpr double cell = panelSide / 3;
    const int column = std::min(2, static_cast<int>(p.x / cell));
    const int row = std::min(2, static_cast<int>(p.y / cell));
    constexpr std::array<Colour, 3> inks{{{0.10, 0.10, 0.10}, {0.50, 0.14, 0.10}, {0.10, 0.20, 0.45}}};
    const double along = column == 0 ? p.x : column == 1 ? p.y : (p.x + p.y * 0.6) / std::hypot(1.0, 0.6);
    const double period = 3 + 2.0 * row + 0.25 * column;
    return std::fmod(along, period) < period / 2 ? inks[static_cast<std::size_t>(row)] : Colour{0.86, 0.85, 0.80};
}

// Ramps of grey, each primary and the colour circle, where steps and tints would show.
Colour gradientsPanel(Point p) {
    const double share = p.x / panelSide;
    switch (static_cast<int>(p.y / (panelSide / 5))) {
        case 0:
            return grey(share);
        case 1:
            return {0.1 + 0.8 * share, 0.12, 0.12};
        case 2:
            return {0.12, 0.1 + 0.8 * share, 0.12};
        case 3:
            return {0.12, 0.12, 0.1 + 0.8 * share};
        default:
            return mix(grey(0.2), hue(share), 0.75);
    }
}

// Sky, hills and leaves: what most of a photograph is like, smooth ground with texture before it.
Colour landscapePanel(Point p) {
    const double hills = 170 + 24 * std::sin(p.x / 41) + 9 * std::sin(p.x / 13 + 1);
    const double meadow = 232 + 12 * std::sin(p.x / 57 + 2);
    if (p.y < hills) {
        return mix({0.32, 0.52, 0.82}, {0.86, 0.88, 0.90}, p.y / 200);
    }
    if (p.y < meadow) {
        const double ripple = 0.5 + 0.25 * std::sin(p.x / 2.7 + p.y / 3.9) + 0.25 * std::sin(p.y / 2.1 - p.x / 5.3);
        return mix({0.16, 0.24, 0.16}, {0.34, 0.42, 0.26}, ripple);
    }
    const double blade = std::sin(p.x * 1.3 + 6 * std::sin(p.y / 17)) * std::sin(p.y / 4 + p.x / 9);
    return mix({0.20, 0.38, 0.10}, {0.62, 0.74, 0.24}, 0.5 + 0.5 * blade);
}

// A larger zone plate in two colours, far from the finest rings: what false colour likes best.
Colour colouredRings(Point p) {
    const double radius = std::hypot(p.x - 40, p.y - 40);
    return mix({0.75, 0.35, 0.20}, {0.20, 0.55, 0.65}, 0.5 + 0.5 * std::cos(radius * radius / 560));
}

// Rounded stones in earthen colours with dark joints: closed edges in all directions.
Colour tilesPanel(Point p) {
    constexpr double pitch = 22;
    const int row = static_cast<int>(p.y / pitch);
    const double shifted = p.x + (row % 2) * pitch / 2;
    const int column = static_cast<int>(shifted / pitch);
    const double x = shifted - (column + 0.5) * pitch;
    const double y = p.y - (row + 0.5) * pitch;
    const uint32_t stone = static_cast<uint32_t>(row * 64 + column);
    if (std::hypot(x, y) > pitch * (0.36 + 0.12 * scatter(stone))) {
        return {0.16, 0.14, 0.13};
    }
    const Colour base = mix({0.62, 0.42, 0.30}, {0.72, 0.72, 0.66}, scatter(stone + 5000));
    return mix(base, grey(0.1), std::clamp(0.4 + (x + y) / pitch, 0.0, 0.8));
}

// Cloth: two threads of different colour over and under each other.
Colour wovenPanel(Point p) {
    const double x = p.x * 0.94 + p.y * 0.34;
    const double y = p.y * 0.94 - p.x * 0.34;
    const double thread = 4.6;
    const double across = std::sin(pi * x / thread);
    const double along = std::sin(pi * y / thread);
    const double light = 0.55 + 0.45 * std::max(std::abs(across), std::abs(along));
    const Colour cloth = across * along > 0 ? Colour{0.70, 0.24, 0.26} : Colour{0.86, 0.80, 0.66};
    return mix(grey(0.05), cloth, light);
}

using Panel = Colour (*)(Point);
constexpr std::array<Panel, 12> panels{
    zonePlate,      slantedEdges,  colourPatches, lineFan,         //
    textPanel,      hairPanel,     barsPanel,     landscapePanel,  //
    gradientsPanel, colouredRings, tilesPanel,    wovenPanel,
};

Colour sceneAt(Point p) {
    const int column = static_cast<int>(p.x / panelSide);
    const int row = static_cast<int>(p.y / panelSide);
    const Point inPanel{p.x - column * panelSide, p.y - row * panelSide};
    return panels[static_cast<std::size_t>(row) * 4 + static_cast<std::size_t>(column)](inPanel);
}

uint8_t sampleOf(double sum) {
    return static_cast<uint8_t>(std::lround(std::clamp(sum / (subsamples * subsamples), 0.0, 1.0) * 255));
}

Image drawScene(int width, int height) {
    Image image(width, height);
    for (int row = 0; row < height; row++) {
        for (int column = 0; column < width; column++) {
            Colour sum;
            for (int part = 0; part < subsamples * subsamples; part++) {
                const int partColumn = part % subsamples;
                const int partRow = part / subsamples;
                const double x = column + (partColumn + 0.5) / subsamples;
                const double y = row + (partRow + 0.5) / subsamples;
                const Colour colour = sceneAt({x * sceneWidth / width, y * sceneHeight / height});
                sum = {sum.red + colour.red, sum.green + colour.green, sum.blue + colour.blue};
            }
            uint8_t* pixel = image.pixel(column, row);
            pixel[0] = sampleOf(sum.red);
            pixel[1] = sampleOf(sum.green);
            pixel[2] = sampleOf(sum.blue);
        }
    }
    return image;
}

int run(const std::vector<std::string>& arguments) {
    if (arguments.empty() || arguments.size() > 2) {
        throw cli::UsageFailure("expected a file name and perhaps a size");
    }
    const cli::FrameSize size = cli::parseFrameSize(arguments.size() == 2 ? arguments[1] : "1280x960");
    writeImage(arguments[0], drawScene(size.width, size.height));
    return 0;
}

}  // namespace

}  // namespace demo

int main(int argumentCount, char** arguments) {
    return demo::runTool("kro-demo-scene", "OUT.ppm [WxH]", argumentCount, arguments, demo::run);
}
