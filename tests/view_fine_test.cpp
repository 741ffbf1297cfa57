// The fine algorithm on views: strips of columns and what lies where they meet, bands, and samples that make its sums
// large.
#include "fine_extremes.hpp"
#include "view_kinds.hpp"

namespace {

using reference::InputFormat;
using reference::Layout;
using reference::Method;
using reference::Mosaic;
using reference::Phase;
using reference::ViewOutput;

const InputFormat& formatOf(Layout layout, Phase phase, uint32_t turn) {
    static const std::vector<InputFormat> all = reference::viewInputFormats();
    std::vector<const InputFormat*> found;
    for (const InputFormat& format : all) {
        if (!format.mono && format.layout == layout && format.phase == phase) {
            found.push_back(&format);
        }
    }
    return *found[mixed(turn) % found.size()];
}
const ViewOutput& outputOf(int depth, uint32_t turn) {
    std::vector<const ViewOutput*> found;
    for (const ViewOutput& output : reference::viewOutputs) {
        if (output.depth == depth) {
            found.push_back(&output);
        }
    }
    return *found[turn % found.size()];
}
Phase phaseOf(uint32_t turn) { return reference::allPhases[turn % 4]; }

// ---- strips ----

class ViewFine : public testing::TestWithParam<Layout> {
protected:
    reference::Scene hold(ViewCheck& check, Size size, uint32_t turn) {
        format_ = &formatOf(GetParam(), phaseOf(turn), turn);
        words_ = wordOptions(*format_, mixed(turn));
        const Content content = turn % 4 == 0 ? allContents[turn / 4 % 6] : Content::noise;
        const auto numbers = numbersFor(*format_, words_, content, size, turn, turn % 5 == 0);
        check.hold(*format_, size, numbers, spacingOfTurn(turn), words_, placementOfTurn(turn));
        return check.scene(*format_, words_);
    }
    Conversion conversion(reference::Scene& scene, int depth, uint32_t turn) const {
        return {scene, outputOf(depth, turn), words_, Method::fine, mixed(turn)};
    }

private:
    const InputFormat* format_ = nullptr;
    KroViewOptions words_ = noOptions;
};
constexpr Layout allLayouts[] = {Layout::bytes, Layout::words, Layout::packed, Layout::lsbFirst, Layout::csi2};
std::string layoutName(const testing::TestParamInfo<Layout>& layout) {
    static const char* const names[] = {"bytes", "words", "packed", "lsbFirst", "csi2"};
    return names[static_cast<int>(layout.param)];
}
INSTANTIATE_TEST_SUITE_P(Of, ViewFine, testing::ValuesIn(allLayouts), layoutName);

// Rows are made in strips of 100 to 250 columns: widths that end all over one, two, and several.
TEST_P(ViewFine, EveryWidthAroundStrips) {
    ViewCheck check({9, 1040});
    uint32_t turn = static_cast<uint32_t>(GetParam());
    // The five layouts share the widths.
    const int step = static_cast<int>(stepOf(3, 23));
    const int start = static_cast<int>(GetParam()) % step;
    for (const auto& [from, to] : {std::pair{90, 310}, {425, 440}, {460, 485}, {525, 545}, {1000, 1020}}) {
        for (int width = from + start; width <= to; width += step) {
            ++turn;
            reference::Scene scene = hold(check, {4 + static_cast<int>(mixed(turn) % 6), width}, turn);
            for (const int depth : {8, 16}) {
                const Conversion whole = conversion(scene, depth, turn);
                ASSERT_TRUE(check.convert(whole.asked, whole.expected));
            }
        }
    }
}

TEST_P(ViewFine, EveryBandOfStrips) {
    ViewCheck check({13, 1030});
    uint32_t turn = static_cast<uint32_t>(GetParam()) * 3;
    const uint32_t step = stepOf(7, 17);
    for (const int width : {31, 127, 187, 251, 517, 1030}) {
        for (int height = 4; height <= 13; height += reducedRun ? 4 : 1) {
            ++turn;
            reference::Scene scene = hold(check, {height, width}, turn);
            const Conversion whole = conversion(scene, turn % 2 == 0 ? 8 : 16, turn / 2);
            uint32_t band = turn;
            for (int first = 0; first < height; ++first) {
                for (int rows = 1; first + rows <= height; ++rows) {
                    if (++band % step != 0) {
                        continue;
                    }
                    Asked asked = whole.asked;
                    asked.options.firstRow = first;
                    asked.options.rowCount = rows;
                    ASSERT_TRUE(check.convert(asked, whole.expected));
                }
            }
        }
    }
}

// ---- large sums ----

// Samples of 0 and 255: blocks of small patterns, of a value for each colour, and of coin flips, some with samples
// that do not belong.
std::vector<uint16_t> patterns(Size size, uint32_t seed) {
    constexpr int block = 24;
    uint32_t state = seed * 2654435761u + 1;
    std::vector<uint16_t> result(size.pixels());
    for (int top = 0; top < size.height; top += block) {
        for (int left = 0; left < size.width; left += block) {
            const uint64_t bits = uint64_t{randomWord(state)} << 32 | randomWord(state);
            const int periodY = 1 + static_cast<int>(randomWord(state) % 6);
            const int periodX = 1 + static_cast<int>(randomWord(state) % 6);
            const uint32_t oneIn[] = {2, 16, 64, 1u << 31};
            const uint32_t flips = oneIn[randomWord(state) % 4];
            for (int y = top; y < std::min(top + block, size.height); ++y) {
                for (int x = left; x < std::min(left + block, size.width); ++x) {
                    const bool high = (bits >> (y % periodY * periodX + x % periodX) & 1) != 0;
                    const bool flipped = randomWord(state) % flips == 0;
                    result[reference::place(y, x, size.width)] = high != flipped ? 255 : 0;
                }
            }
        }
    }
    return result;
}

// Mosaics whose sums have been driven to their ends, side by side; colours lie where the phase has them.
constexpr int cell = extremeSize + 1;
std::vector<uint16_t> driven(const std::vector<Mosaic>& mosaics, Size size, Phase phase) {
    const int down = phase == Phase::gb || phase == Phase::bg ? 1 : 0;
    const int along = phase == Phase::gr || phase == Phase::bg ? 1 : 0;
    std::vector<uint16_t> result(size.pixels());
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const size_t i = static_cast<size_t>((y + down) / cell * 7 + (x + along) / cell) % mosaics.size();
            const int inY = std::min((y + down) % cell, extremeSize - 1);
            const int inX = std::min((x + along) % cell, extremeSize - 1);
            result[reference::place(y, x, size.width)] = static_cast<uint16_t>(mosaics[i].at(inY, inX));
        }
    }
    return result;
}

// A frame of 0 and 255, its 255 the largest samples that words of these bits hold, to pictures of 8 and 16 bits.
testing::AssertionResult holdsInBits(ViewCheck& check, Size size, std::vector<uint16_t> numbers, Phase phase,
                                     int bits, uint32_t turn) {
    const InputFormat& format = formatOf(bits == 8 ? Layout::bytes : Layout::words, phase, turn);
    KroViewOptions words = noOptions;
    words.bits = bits;
    for (uint16_t& number : numbers) {
        number = static_cast<uint16_t>(number == 0 ? 0 : (1 << bits) - 1);
    }
    check.hold(format, size, numbers, spacingOfTurn(turn), words, placementOfTurn(turn));
    reference::Scene scene = check.scene(format, words);
    for (const char* output : {"BGR8", "RGB16"}) {
        const Conversion whole(scene, outputNamed(output), words, Method::fine, turn);
        if (!check.convert(whole.asked, whole.expected)) {
            return testing::AssertionFailure() << "with the largest of " << bits << " bits";
        }
    }
    return testing::AssertionSuccess();
}

constexpr int someBits[] = {8, 10, 12, 14, 16};

class ViewFineSums : public testing::TestWithParam<Phase> {};
std::string phaseName(const testing::TestParamInfo<Phase>& phase) {
    static const char* const names[] = {"RG", "GR", "GB", "BG"};
    return names[static_cast<int>(phase.param)];
}
INSTANTIATE_TEST_SUITE_P(Of, ViewFineSums, testing::ValuesIn(reference::allPhases), phaseName);

TEST_P(ViewFineSums, Patterns) {
    const Size size{48, 233};
    ViewCheck check(size);
    const uint32_t frames = reducedRun ? 2 : 24;
    for (uint32_t turn = 1; turn <= frames; ++turn) {
        const uint32_t seed = turn * 4 + static_cast<uint32_t>(GetParam());
        ASSERT_TRUE(
            holdsInBits(check, size, patterns(size, seed), GetParam(), turn % 2 == 0 ? 8 : someBits[turn % 5], turn));
    }
}

TEST_P(ViewFineSums, DrivenToTheirEnds) {
    const std::vector<FineExtreme> extremes = fineExtremes();
    std::vector<Mosaic> mosaics;
    const size_t step = stepOf(3, 9);
    for (size_t i = static_cast<size_t>(GetParam()) % step; i < extremes.size(); i += step) {
        mosaics.push_back(fineExtreme(extremes[i], reducedRun ? 60 : 300));
    }
    const Size size{5 * cell, 13 * cell + 7};
    ViewCheck check(size);
    for (const int bits : someBits) {
        ASSERT_TRUE(holdsInBits(check, size, driven(mosaics, size, GetParam()), GetParam(), bits, 3));
    }
}

// ---- words ----

class ViewFineBits : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Of, ViewFineBits, testing::Range(8, 17),
                         [](const auto& bits) { return std::to_string(bits.param); });

TEST_P(ViewFineBits, EveryContentAndOutput) {
    ViewCheck check({12, 150});
    uint32_t turn = static_cast<uint32_t>(GetParam());
    for (const Size size : {Size{7, 23}, Size{12, 150}}) {
        for (const Content content : allContents) {
            KroViewOptions words = noOptions;
            words.bits = GetParam();
            words.flags = ++turn % 3 == 0 ? KRO_VIEW_LEFT_ALIGNED : 0;
            const InputFormat& format = formatOf(Layout::words, phaseOf(turn), turn);
            check.hold(format, size, numbersFor(format, words, content, size, turn, turn % 2 == 0),
                       spacingOfTurn(turn), words, placementOfTurn(turn));
            reference::Scene scene = check.scene(format, words);
            for (const ViewOutput& output : reference::viewOutputs) {
                const Conversion whole(scene, output, words, Method::fine, ++turn);
                ASSERT_TRUE(check.convert(whole.asked, whole.expected));
            }
        }
    }
}

// Few deep samples among shallow ones, and few that exceed their bits.
TEST_P(ViewFineBits, SingleDeepSamples) {
    const Size size{11, 260};
    ViewCheck check(size);
    const int shallow[] = {0, 255, 1023, 4095, 8191};
    for (uint32_t turn = 0; turn < (reducedRun ? 2 : 10); ++turn) {
        KroViewOptions words = noOptions;
        words.bits = GetParam();
        std::vector<uint16_t> numbers = samples(Content::noise, size, shallow[turn % 5], turn);
        uint32_t state = turn + 17;
        for (uint32_t deep = 0; deep <= turn; ++deep) {
            const bool beyond = turn % 3 == 2 && deep % 2 == 1;
            numbers[(randomWord(state) >> 8) % numbers.size()] =
                static_cast<uint16_t>(beyond ? 0xFFFF - deep : (1u << GetParam()) - 1 - deep % 3);
        }
        const InputFormat& format = formatOf(Layout::words, phaseOf(turn), turn);
        check.hold(format, size, numbers, spacingOfTurn(turn), words);
        reference::Scene scene = check.scene(format, words);
        for (const int depth : {16, 8}) {
            const Conversion whole(scene, outputOf(depth, turn), words, Method::fine, turn);
            ASSERT_TRUE(check.convert(whole.asked, whole.expected));
        }
    }
}

// ---- as it is seen from outside ----

// Green rises by 10 a column while red stays at 50 and blue at 90: red and blue do not follow it.
TEST(ViewFineSeen, ColoursThatDoNotFollowGreen) {
    const Size size{16, 18};
    std::vector<uint16_t> numbers(size.pixels());
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const int sample = (y + x) % 2 == 1 ? 10 * x : y % 2 == 0 ? 50 : 90;
            numbers[reference::place(y, x, size.width)] = static_cast<uint16_t>(sample);
        }
    }
    ViewSource source(4096);
    source.hold(inputNamed("BayerRG8"), size, numbers, Spacing::exact, false, guard::Placement::againstEnd);
    std::vector<uint8_t> pixels(size.pixels() * 3);
    const KroPictureView picture{{pixels.data()}, {0}, KRO_RGB8};
    const KroViewOptions options = withAlgorithm(Method::fine);
    for (const kro::Kernels* table : usableTables()) {
        std::fill(pixels.begin(), pixels.end(), uint8_t{7});
        ASSERT_EQ(KRO_OK, kro::convertView(*table, &source.view(), &picture, &options));
        for (int x = 6; x < 12; ++x) {
            for (const int y : {7, 8}) {
                const uint8_t* const pixel = pixels.data() + reference::place(y, x, size.width) * 3;
                EXPECT_EQ(50, pixel[0]) << table->name << " " << y << ", " << x;
                EXPECT_EQ(10 * x, pixel[1]) << table->name << " " << y << ", " << x;
                EXPECT_EQ(90, pixel[2]) << table->name << " " << y << ", " << x;
            }
        }
    }
}

// With the smallest frame every site is an outer one.
TEST(ViewFineSeen, TheSmallestFrames) {
    ViewCheck check({6, 6});
    uint32_t turn = 0;
    for (const Size size : {Size{4, 4}, Size{4, 5}, Size{5, 4}, Size{4, 6}, Size{6, 4}, Size{5, 5}, Size{6, 6}}) {
        for (const Content content : allContents) {
            for (const Phase phase : reference::allPhases) {
                ++turn;
                const InputFormat& format = formatOf(turn % 2 == 0 ? Layout::bytes : Layout::words, phase, turn);
                check.hold(format, size, numbersFor(format, noOptions, content, size, turn), spacingOfTurn(turn),
                           noOptions);
                reference::Scene scene = check.scene(format, noOptions);
                for (const int depth : {8, 16}) {
                    const Conversion whole(scene, outputOf(depth, turn), noOptions, Method::fine, turn);
                    ASSERT_TRUE(check.convert(whole.asked, whole.expected));
                }
            }
        }
    }
}

}  // namespace
