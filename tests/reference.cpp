#include "reference.hpp"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>

namespace reference {
namespace {

struct Step {
    int y, x;
};
constexpr Step cross[] = {{-1, 0}, {0, -1}, {0, 1}, {1, 0}};
constexpr Step diagonals[] = {{-1, -1}, {-1, 1}, {1, -1}, {1, 1}};

int clamped(int value, int top) { return std::min(std::max(value, 0), top); }

// The colour beside a green site in its own row.
Colour rowColour(Phase phase, int y) {
    const Colour first = colourAt(phase, y, 0);
    return first == green ? colourAt(phase, y, 1) : first;
}

Colour opposite(Colour colour) { return colour == red ? blue : red; }

// ---- bilinear ----

int meanOfPresent(const std::vector<int>& values) {
    int sum = 0;
    for (int value : values) {
        sum += value;
    }
    return values.size() == 4 ? sum >> 2 : values.size() == 2 ? sum >> 1 : sum;
}

// Green at a red or blue site. One neighbour missing: the opposite one counts twice. Two missing: a corner.
int crossMean(const Mosaic& m, int y, int x) {
    int sum = 0;
    int present = 0;
    for (Step s : cross) {
        if (m.has(y + s.y, x + s.x)) {
            sum += m.at(y + s.y, x + s.x);
            ++present;
        }
    }
    if (present == 4) {
        return sum >> 2;
    }
    if (present == 2) {
        return sum >> 1;
    }
    for (Step s : cross) {
        if (!m.has(y + s.y, x + s.x)) {
            sum += m.at(y - s.y, x - s.x);
        }
    }
    return sum >> 2;
}

template <size_t N>
int presentMean(const Mosaic& m, int y, int x, const Step (&steps)[N]) {
    std::vector<int> values;
    for (Step s : steps) {
        if (m.has(y + s.y, x + s.x)) {
            values.push_back(m.at(y + s.y, x + s.x));
        }
    }
    return meanOfPresent(values);
}

constexpr Step horizontal[] = {{0, -1}, {0, 1}};
constexpr Step vertical[] = {{-1, 0}, {1, 0}};

Pixel bilinearPixel(const Mosaic& m, int y, int x) {
    Pixel pixel;
    const Colour own = m.colour(y, x);
    pixel[own] = m.at(y, x);
    if (own == green) {
        const Colour beside = rowColour(m.phase, y);
        pixel[beside] = presentMean(m, y, x, horizontal);
        pixel[opposite(beside)] = presentMean(m, y, x, vertical);
    } else {
        pixel[green] = crossMean(m, y, x);
        pixel[opposite(own)] = presentMean(m, y, x, diagonals);
    }
    return pixel;
}

// The three values of a green-first frame of odd width that use a fixed sample of the left edge.
void setMarkedValues(const Mosaic& m, Picture& picture) {
    const int w = m.width;
    const Colour top = rowColour(m.phase, 0);
    picture.at(0, w - 2)[green] = (m.at(0, 0) + m.at(0, w - 1) + 2 * m.at(1, w - 2)) >> 2;
    picture.at(1, w - 2)[top] = (m.at(0, w - 2) + m.at(2, 1)) >> 1;
    picture.at(1, w - 1)[top] = (m.at(0, w - 2) + m.at(2, 1)) >> 1;
}

// Two's complement sum of 16 bits, shifted with its sign, stored as 16 bits.
int wrappedMean(std::initializer_list<int> values) {
    unsigned sum = 0;
    for (int value : values) {
        sum += static_cast<unsigned>(value);
    }
    sum &= 0xFFFFu;
    const int asSigned = sum >= 0x8000u ? static_cast<int>(sum) - 0x10000 : static_cast<int>(sum);
    const int divisor = static_cast<int>(values.size());
    const int floored = (asSigned - (((asSigned % divisor) + divisor) % divisor)) / divisor;
    return floored & 0xFFFF;
}

Pixel wrappedPixel(const Mosaic& m, int y, int x) {
    Pixel pixel;
    const Colour own = m.colour(y, x);
    pixel[own] = m.at(y, x);
    if (own == green) {
        const Colour beside = rowColour(m.phase, y);
        pixel[beside] = wrappedMean({m.at(y, x - 1), m.at(y, x + 1)});
        pixel[opposite(beside)] = wrappedMean({m.at(y - 1, x), m.at(y + 1, x)});
    } else {
        pixel[green] = wrappedMean({m.at(y - 1, x), m.at(y, x - 1), m.at(y, x + 1), m.at(y + 1, x)});
        pixel[opposite(own)] =
            wrappedMean({m.at(y - 1, x - 1), m.at(y - 1, x + 1), m.at(y + 1, x - 1), m.at(y + 1, x + 1)});
    }
    return pixel;
}

// ---- edge-directed ----

struct Candidate {
    int value;
    int gradient;
};

// How a second difference behaves where its far same-colour sample lies outside.
enum class OneSided {
    doubledForOneGreen,  // 8 bits: doubled only where the green on that side is outside as well
    alwaysDoubled        // 16 bits
};

Candidate along(const Mosaic& m, int y, int x, int dy, int dx, OneSided oneSided) {
    const int centre = m.at(y, x);
    const bool greenBefore = m.has(y - dy, x - dx);
    const bool greenAfter = m.has(y + dy, x + dx);
    const bool farBefore = m.has(y - 2 * dy, x - 2 * dx);
    const bool farAfter = m.has(y + 2 * dy, x + 2 * dx);
    const bool bothGreens = greenBefore && greenAfter;

    int second = 0;
    if (farBefore && farAfter) {
        second = 2 * centre - m.at(y - 2 * dy, x - 2 * dx) - m.at(y + 2 * dy, x + 2 * dx);
    } else {
        const int inner = farBefore ? m.at(y - 2 * dy, x - 2 * dx) : m.at(y + 2 * dy, x + 2 * dx);
        const bool doubled = oneSided == OneSided::alwaysDoubled || !bothGreens;
        second = doubled ? 2 * (centre - inner) : centre - inner;
    }

    if (!bothGreens) {
        const int single = greenBefore ? m.at(y - dy, x - dx) : m.at(y + dy, x + dx);
        return {single + (second >> 2), std::abs(second)};
    }
    const int a = m.at(y - dy, x - dx);
    const int b = m.at(y + dy, x + dx);
    return {((a + b) >> 1) + (second >> 2), std::abs(second) + std::abs(a - b)};
}

std::vector<int> greensOf(const Mosaic& m, OneSided oneSided, int top) {
    std::vector<int> greens(m.sample);
    for (int y = 0; y < m.height; ++y) {
        for (int x = 0; x < m.width; ++x) {
            if (m.colour(y, x) == green) {
                continue;
            }
            const Candidate h = along(m, y, x, 0, 1, oneSided);
            const Candidate v = along(m, y, x, 1, 0, oneSided);
            const int value = h.gradient < v.gradient ? h.value : v.value;
            greens[place(y, x, m.width)] = clamped(value, top);
        }
    }
    return greens;
}

template <size_t N>
int meanDifference(const Mosaic& m, const std::vector<int>& greens, int y, int x, const Step (&steps)[N]) {
    std::vector<int> differences;
    for (Step s : steps) {
        if (m.has(y + s.y, x + s.x)) {
            const size_t index = place(y + s.y, x + s.x, m.width);
            differences.push_back(m.sample[index] - greens[index]);
        }
    }
    return meanOfPresent(differences);
}

Picture coloursOf(const Mosaic& m, const std::vector<int>& greens, int top) {
    Picture picture(m.height, m.width);
    for (int y = 0; y < m.height; ++y) {
        for (int x = 0; x < m.width; ++x) {
            Pixel& pixel = picture.at(y, x);
            const int g = greens[place(y, x, m.width)];
            const Colour own = m.colour(y, x);
            pixel[green] = g;
            if (own == green) {
                const Colour beside = rowColour(m.phase, y);
                pixel[beside] = clamped(g + meanDifference(m, greens, y, x, horizontal), top);
                pixel[opposite(beside)] = clamped(g + meanDifference(m, greens, y, x, vertical), top);
            } else {
                pixel[own] = m.at(y, x);
                pixel[opposite(own)] = clamped(g + meanDifference(m, greens, y, x, diagonals), top);
            }
        }
    }
    return picture;
}

}  // namespace

Colour colourAt(Phase phase, int y, int x) {
    // The 2 x 2 tile of each phase, row by row.
    static const char* const tile[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
    const char c = tile[static_cast<int>(phase)][2 * (y % 2) + x % 2];
    return c == 'R' ? red : c == 'G' ? green : blue;
}

Picture nearest(const Mosaic& m) {
    Picture picture(m.height, m.width);
    for (int y = 0; y < m.height; ++y) {
        for (int x = 0; x < m.width; ++x) {
            Pixel& pixel = picture.at(y, x);
            const int top = y == 0 ? 0 : y - 1;
            const int left = x == 0 ? 0 : x - 1;
            for (int by = top; by < top + 2; ++by) {
                for (int bx = left; bx < left + 2; ++bx) {
                    if (m.colour(by, bx) != green) {
                        pixel[m.colour(by, bx)] = m.at(by, bx);
                    }
                }
            }
            if (m.colour(y, x) == green) {
                pixel[green] = m.at(y, x);
            } else if (x > 0) {
                pixel[green] = m.at(y, x - 1);
            } else {
                pixel[green] = y == 0 ? m.at(0, 1) : m.at(y - 1, 0);
            }
        }
    }
    return picture;
}

Picture bilinearByRule(const Mosaic& m) {
    Picture picture(m.height, m.width);
    for (int y = 0; y < m.height; ++y) {
        for (int x = 0; x < m.width; ++x) {
            picture.at(y, x) = bilinearPixel(m, y, x);
        }
    }
    return picture;
}

Picture bilinear(const Mosaic& m) {
    Picture picture = bilinearByRule(m);
    if (m.colour(0, 0) == green && m.width % 2 == 1) {
        setMarkedValues(m, picture);
    }
    return picture;
}

Picture bilinearU16(const Mosaic& m) {
    Picture picture = bilinearByRule(m);
    const Span blocks = u16BlockColumns(m.width);
    for (int y = 1; y < borderStart(m.height); ++y) {
        for (int x = blocks.begin; x < blocks.end; ++x) {
            picture.at(y, x) = wrappedPixel(m, y, x);
        }
    }
    return picture;
}

std::vector<int> edgeGreens(const Mosaic& m) { return greensOf(m, OneSided::doubledForOneGreen, 255); }

Picture edgeColours(const Mosaic& m, const std::vector<int>& greens) { return coloursOf(m, greens, 255); }

Picture edge(const Mosaic& m) { return edgeColours(m, edgeGreens(m)); }

Picture edgeU16(const Mosaic& m, int clampMax) {
    return coloursOf(m, greensOf(m, OneSided::alwaysDoubled, clampMax), clampMax);
}

Picture demosaic(Method method, const Mosaic& m) {
    switch (method) {
        case Method::nearest:
            return nearest(m);
        case Method::bilinear:
            return bilinear(m);
        default:
            return edge(m);
    }
}

Span edgeBlockColumns(int width) {
    int end = 1;
    for (int c = 2; c < width - 17; c += 16) {
        end = c + 15;  // a block completes columns c - 1 to c + 14
    }
    return {1, end};
}

Span edgeStepRows(Phase phase, int height) {
    const int first = colourAt(phase, 0, 0) == green ? 3 : 2;
    int end = first - 1;
    for (int counter = first; counter < height - 3; counter += 2) {
        end = counter + 1;  // a step completes rows counter - 1 and counter
    }
    return {first - 1, end};
}

Span u16BlockColumns(int width) {
    int end = 1;
    for (int c = 1; c < width - 8; c += 8) {
        end = c + 8;
    }
    return {1, end};
}

bool edgeStepWritesGreenBelow(int x, int width) {
    if (x < 2) {
        return true;
    }
    int afterBlocks = 2;
    for (int c = 2; c < width - 17; c += 16) {
        afterBlocks = c + 16;
    }
    return x >= afterBlocks;
}

AlphaMap alphaOf(Method method, Phase phase, int height, int width) {
    if (method != Method::edge) {
        return [](int, int) { return true; };
    }
    const Span rows = edgeStepRows(phase, height);
    const Span columns = edgeBlockColumns(width);
    return [rows, columns](int y, int x) { return rows.holds(y) && columns.holds(x); };
}

int luma(const Pixel& pixel, const std::array<uint32_t, 3>& weights) {
    uint32_t sum = 128;
    for (size_t i = 0; i < 3; ++i) {
        sum += weights[i] * static_cast<uint32_t>(pixel[i]);
    }
    return static_cast<int>((sum >> 8) & 0xFFu);
}

Bytes packed(const Picture& picture, uint32_t outputCode, const AlphaMap& alpha) {
    const size_t n = picture.pixel.size();
    Bytes bytes;
    auto add = [&bytes](int value, bool isWritten) {
        bytes.value.push_back(static_cast<uint8_t>(value));
        bytes.written.push_back(isWritten);
    };
    const bool redFirst = outputCode == 0x02180014u || outputCode == 0x02200016u || outputCode == 0x02180021u;
    const std::array<Colour, 3> order =
        redFirst ? std::array<Colour, 3>{red, green, blue} : std::array<Colour, 3>{blue, green, red};
    bytes.value.reserve(4 * n);
    bytes.written.reserve(4 * n);
    if (outputCode == 0x02180021u || outputCode == 0x02180025u) {
        for (Colour colour : order) {
            for (const Pixel& pixel : picture.pixel) {
                add(pixel[colour], true);
            }
        }
        return bytes;
    }
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const Pixel& pixel = picture.at(y, x);
            if (outputCode == 0x01080001u) {
                add(luma(pixel, lumaWeights), true);
                continue;
            }
            for (Colour colour : order) {
                add(pixel[colour], true);
            }
            if (outputCode == 0x02200016u || outputCode == 0x02200017u) {
                add(0, alpha(y, x));
            }
        }
    }
    return bytes;
}

std::vector<uint8_t> reduced(const std::vector<uint16_t>& words, unsigned shift) {
    const size_t n = words.size();
    const size_t inBlocks = shift <= 7 ? n / 16 * 16 : 0;
    std::vector<uint8_t> bytes(n);
    for (size_t i = 0; i < n; ++i) {
        if (i < inBlocks) {
            const int value = words[i] >= 0x8000 ? 0 : words[i] >> shift;
            bytes[i] = static_cast<uint8_t>(clamped(value, 255));
        } else {
            bytes[i] = static_cast<uint8_t>(words[i] >> shift);
        }
    }
    return bytes;
}

std::vector<uint8_t> unpacked(const std::vector<uint8_t>& groups, size_t samples) {
    std::vector<uint8_t> bytes;
    for (size_t group = 0; 2 * group < samples; ++group) {
        bytes.push_back(groups[3 * group]);
        bytes.push_back(groups[3 * group + 2]);
    }
    return bytes;
}

namespace {

// One 2 x 2 step of the 16-bit interior at a red site, in coordinates of the whole frame.
class InteriorStep {
public:
    InteriorStep(const Mosaic& mosaic, U16Frame& frame, int clampMax) : m(mosaic), f(frame), top(clampMax) {}

    void at(int r, int c) {
        const int gr = greenAt(r, c);
        const int gb = greenAt(r + 1, c + 1);
        put(r, c, red, m.at(r, c));
        put(r, c + 1, green, m.at(r, c + 1));
        put(r + 1, c, green, m.at(r + 1, c));
        put(r + 1, c + 1, blue, m.at(r + 1, c + 1));

        put(r, c - 1, red, clamped(((d(r, c) + d(r, c - 2)) >> 1) + m.at(r, c - 1), top));
        put(r - 1, c, red, clamped(((d(r, c) + d(r - 2, c)) >> 1) + m.at(r - 1, c), top));
        put(r - 1, c - 1, red,
            clamped(((d(r - 2, c) + d(r, c - 2) + d(r - 2, c - 2) + d(r, c)) >> 2) + g(r - 1, c - 1), top));

        put(r, c + 1, blue, clamped(((d(r + 1, c + 1) + d(r - 1, c + 1)) >> 1) + m.at(r, c + 1), top));
        put(r + 1, c, blue, clamped(((d(r + 1, c + 1) + d(r + 1, c - 1)) >> 1) + m.at(r + 1, c), top));
        put(r, c, blue,
            clamped(((d(r - 1, c - 1) + d(r + 1, c - 1) + d(r - 1, c + 1) + d(r + 1, c + 1)) >> 2) + gr, top));
        static_cast<void>(gb);
    }

private:
    const Mosaic& m;
    U16Frame& f;
    int top;

    size_t index(int y, int x, Colour colour) const {
        return place(y, x, f.width) * 3 + static_cast<size_t>(blue - colour);  // B, G, R
    }
    int g(int y, int x) const { return f.bgr[index(y, x, green)]; }
    int d(int y, int x) const { return m.at(y, x) - g(y, x); }
    void put(int y, int x, Colour colour, int value) {
        f.bgr[index(y, x, colour)] = static_cast<uint16_t>(value);
        f.written[index(y, x, colour)] = true;
    }
    int greenAt(int y, int x) {
        const int h2 = 2 * m.at(y, x) - m.at(y, x - 2) - m.at(y, x + 2);
        const int v2 = 2 * m.at(y, x) - m.at(y - 2, x) - m.at(y + 2, x);
        const int dh = std::abs(m.at(y, x - 1) - m.at(y, x + 1)) + std::abs(h2);
        const int dv = std::abs(m.at(y - 1, x) - m.at(y + 1, x)) + std::abs(v2);
        const int value = dh < dv ? (h2 >> 2) + ((m.at(y, x + 1) + m.at(y, x - 1)) >> 1)
                                  : (v2 >> 2) + ((m.at(y + 1, x) + m.at(y - 1, x)) >> 1);
        put(y, x, green, clamped(value, top));
        return g(y, x);
    }
};

}  // namespace

Covered edgeInteriorU16(const Mosaic& mosaic, U16Frame& frame, int firstRow, int rows, int startColumn,
                        int clampMax) {
    if (rows <= 1) {
        return {startColumn, 0};
    }
    const int pairs = (rows - 2) / 2 + 1;
    int after = startColumn;
    InteriorStep step(mosaic, frame, clampMax);
    for (int pair = 0; pair < pairs; ++pair) {
        for (int c = startColumn; c < mosaic.width - 3; c += 2) {
            step.at(firstRow + 2 * pair, c);
            after = c + 2;
        }
    }
    return {after, 2 * pairs};
}

}  // namespace reference
