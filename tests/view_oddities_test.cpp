// Where views differ on purpose from what one might expect, each with the values that show it; and where 8-bit
// pictures of views are those of the demosaicing entry, with that entry beside them.
#include <cstring>

#include "KRODemosaicing.hpp"
#include "view_support.hpp"

namespace {

using reference::InputFormat;
using reference::Method;
using reference::ViewOutput;

// A small frame of words converted by every table: what each has made of it, as numbers of the picture's depth.
class WordFrame {
public:
    WordFrame(const char* input, Size size, std::vector<uint16_t> numbers)
        : input_(inputNamed(input)), size_(size), words_(std::move(numbers)) {}
    WordFrame(const char* input, Size size, uint16_t flat)
        : WordFrame(input, size, std::vector<uint16_t>(static_cast<size_t>(size.height * size.width), flat)) {}

    uint16_t& at(int y, int x) { return words_[reference::place(y, x, size_.width)]; }

    // Calls `look` with every table's picture: a function of row, column and letter (its place among the format's).
    template <class Look>
    void show(const char* output, const KroViewOptions& options, Look look) const {
        const ViewOutput& format = outputNamed(output);
        const size_t letters = std::strlen(format.letters);
        const size_t n = words_.size() * letters;
        for (const kro::Kernels* table : usableTables()) {
            std::vector<uint16_t> pixels(n, 0xDEAD);
            const KroSourceView source{words_.data(), 0, size_.height, size_.width, input_.code};
            const KroPictureView picture{{pixels.data()}, {0}, format.code};
            ASSERT_EQ(KRO_OK, kro::convertView(*table, &source, &picture, &options)) << table->name;
            look([&](int y, int x, size_t letter) {
                const size_t i = reference::place(y, x, size_.width) * letters + letter;
                return format.depth == 8 ? int(reinterpret_cast<const uint8_t*>(pixels.data())[i]) : int(pixels[i]);
            });
            countComparison(*table, n * static_cast<size_t>(format.depth) / 8);
        }
    }

private:
    InputFormat input_;
    Size size_;
    std::vector<uint16_t> words_;
};

KroViewOptions with(Method method, uint32_t flags = 0, int bits = 0) {
    KroViewOptions options = withAlgorithm(method);
    options.flags = flags;
    options.bits = bits;
    return options;
}

// ---- samples ----

TEST(ViewOddities, WordsBeyondTheirBitsSaturateInBlocksOf16CountedThroughAllRows) {
    WordFrame frame("Mono12", {5, 9},
                    0x1234);  // 45 samples: two blocks, which end within rows 1 and 3, and thirteen more
    frame.at(1, 2) = 0x8000;
    frame.at(4, 6) = 0x8000;
    frame.show("Mono8", with(Method::nearest), [](auto value) {
        EXPECT_EQ(255, value(0, 0, 0));
        EXPECT_EQ(0, value(1, 2, 0));  // negative as a signed word
        EXPECT_EQ(255, value(3, 4, 0));
        EXPECT_EQ(0x23, value(3, 5, 0));  // cut off from sample 32 on
        EXPECT_EQ(0x00, value(4, 6, 0));
    });
    frame.show("Mono16", with(Method::nearest), [](auto value) {
        EXPECT_EQ(0xFFF, value(0, 0, 0));  // 16 bits: the largest sample, everywhere
        EXPECT_EQ(0xFFF, value(1, 2, 0));
        EXPECT_EQ(0xFFF, value(4, 5, 0));
    });
}

TEST(ViewOddities, BandsCountBlocksOf16FromTheFramesFirstSample) {
    const WordFrame frame("Mono12", {5, 9}, 0x1234);
    KroViewOptions lastRows = with(Method::nearest);
    lastRows.firstRow = 3;
    frame.show("Mono8", lastRows, [](auto value) {
        EXPECT_EQ(255, value(3, 4, 0));
        EXPECT_EQ(0x23, value(3, 5, 0));
    });
}

TEST(ViewOddities, WordsOf16BitsAreNeverSigned) {
    const WordFrame frame("BayerRG16", {4, 8}, 0x9ABC);
    frame.show("Mono8", with(Method::nearest), [](auto value) { EXPECT_EQ(0x9A, value(2, 2, 0)); });
    frame.show("Mono16", with(Method::nearest), [](auto value) { EXPECT_EQ(0x9ABC, value(2, 2, 0)); });
}

TEST(ViewOddities, LeftAlignedWordsHaveNoBeyondAndTheirLowBitsDoNotCount) {
    const WordFrame frame("Mono10", {4, 8}, 0xABFF);
    frame.show("Mono8", with(Method::nearest, KRO_VIEW_LEFT_ALIGNED),
               [](auto value) { EXPECT_EQ(0xAB, value(3, 3, 0)); });
    frame.show("Mono16", with(Method::nearest, KRO_VIEW_LEFT_ALIGNED),
               [](auto value) { EXPECT_EQ(0xABFF >> 6, value(3, 3, 0)); });
}

TEST(ViewOddities, BitsOfWordsMayBeMoreOrLessThanTheFormats) {
    const WordFrame frame("Mono12", {4, 8}, 0x03AB);
    frame.show("Mono8", with(Method::nearest, 0, 10), [](auto value) { EXPECT_EQ(0xEA, value(0, 0, 0)); });
    frame.show("Mono8", with(Method::nearest, 0, 16), [](auto value) { EXPECT_EQ(0x03, value(0, 0, 0)); });
    frame.show("Mono16", with(Method::nearest, 0, 8), [](auto value) { EXPECT_EQ(0xFF, value(0, 0, 0)); });
}

TEST(ViewOddities, FullRangeRepeatsTheHighBits) {
    const WordFrame frame("Mono12", {4, 8}, 0x0812);
    frame.show("Mono16", with(Method::nearest, KRO_VIEW_FULL_RANGE),
               [](auto value) { EXPECT_EQ(0x8128, value(0, 0, 0)); });
    frame.show("Mono8", with(Method::nearest, KRO_VIEW_FULL_RANGE),
               [](auto value) { EXPECT_EQ(0x81, value(0, 0, 0)); });
}

// ---- alpha ----

TEST(ViewOddities, AlphaIsOpaqueEverywhereWhateverTheAlgorithm) {
    for (const Method method : reference::viewMethods) {
        WordFrame frame("BayerGR12", {9, 41}, 0x0123);
        for (const int y : {0, 4, 8}) {
            for (const int x : {0, 1, 20, 40}) {
                frame.show("BGRa8", with(method), [&](auto value) { EXPECT_EQ(255, value(y, x, 3)); });
                frame.show("xRGB8", with(method), [&](auto value) { EXPECT_EQ(255, value(y, x, 0)); });
                frame.show("aBGR16", with(method), [&](auto value) { EXPECT_EQ(65535, value(y, x, 0)); });
            }
        }
    }
}

TEST(ViewOddities, AlphaAndTheByteWithoutMeaningAreTheOptionsAndNeverScaled) {
    const WordFrame frame("BayerGR12", {4, 8}, 0x0123);
    KroViewOptions options = with(Method::edge, KRO_VIEW_ALPHA | KRO_VIEW_FULL_RANGE);
    options.alpha = 0x7F;
    frame.show("RGBx8", options, [](auto value) { EXPECT_EQ(0x7F, value(2, 2, 3)); });
    frame.show("aRGB16", options, [](auto value) { EXPECT_EQ(0x7F, value(2, 2, 0)); });
    options.alpha = 0;
    frame.show("RGBa16", options, [](auto value) { EXPECT_EQ(0, value(3, 7, 3)); });
}

// ---- algorithms in 16 bits ----

TEST(ViewOddities, SumsOf16BitsDoNotWrapForAnyPhase) {
    for (const char* format : {"BayerRG16", "BayerGR16", "BayerGB16", "BayerBG16"}) {
        const WordFrame frame(format, {6, 40}, 0xFFFF);
        for (const Method method : reference::viewMethods) {
            frame.show("RGB16", with(method), [&](auto value) {
                for (const int x : {0, 1, 8, 20, 39}) {
                    EXPECT_EQ(0xFFFF, value(2, x, 0)) << format;
                    EXPECT_EQ(0xFFFF, value(3, x, 1)) << format;
                    EXPECT_EQ(0xFFFF, value(3, x, 2)) << format;
                }
            });
            frame.show("Mono16", with(method), [](auto value) { EXPECT_EQ(0xFFFF, value(2, 5, 0)); });
        }
    }
}

// Of a green-first frame of odd width: 16 bits follow the border rule, 8 bits have their three marked values.
TEST(ViewOddities, BilinearMarkedValuesAreThoseOf8BitsAlone) {
    WordFrame deep("BayerGR16", {5, 7}, 0);
    deep.at(0, 0) = 0x4000;  // marked green of (0, 5) takes it, the rule takes (0, 4)
    deep.at(2, 1) = 0x2000;  // marked reds of (1, 5) and (1, 6) take it, the rule takes (2, 5)
    deep.show("RGB16", with(Method::bilinear), [](auto value) {
        EXPECT_EQ(0, value(0, 5, 1));
        EXPECT_EQ(0, value(1, 5, 0));
        EXPECT_EQ(0, value(1, 6, 0));
    });
    deep.show("RGB8", with(Method::bilinear), [](auto value) {
        EXPECT_EQ(0x10, value(0, 5, 1));
        EXPECT_EQ(0x10, value(1, 5, 0));
        EXPECT_EQ(0x10, value(1, 6, 0));
    });
}

TEST(ViewOddities, EdgeOf16BitsEndsAtTheSamplesBitsInEveryPhase) {
    const struct {
        const char* format;
        int y, x;  // a red or blue site in the middle
    } sites[] = {{"BayerRG12", 4, 4}, {"BayerGR12", 4, 5}, {"BayerGB12", 5, 4}, {"BayerBG12", 4, 4}};
    for (const auto& site : sites) {
        WordFrame frame(site.format, {9, 10}, 0);
        frame.at(site.y, site.x) = 0xFFF;
        frame.at(site.y - 1, site.x) = frame.at(site.y + 1, site.x) = 0xFFF;
        frame.at(site.y, site.x - 1) = frame.at(site.y, site.x + 1) = 0xFFF;
        frame.show("RGB16", with(Method::edge), [&](auto value) {
            EXPECT_EQ(0xFFF, value(site.y, site.x, 1)) << site.format;  // 4095 + 2 x 4095 / 4 before the limit
        });
        frame.show("RGB16", with(Method::edge, 0, 16),
                   [&](auto value) { EXPECT_EQ(0xFFF + 0x7FF, value(site.y, site.x, 1)) << site.format; });
    }
}

// At (1, 1) the sample two rows up lies outside: 16 bits double the one-sided difference, 8 bits do not.
TEST(ViewOddities, EdgeOf16BitsReplacesAnOutsideFarSampleByTheOppositeOne) {
    WordFrame frame("BayerRG16", {6, 6}, 0);
    frame.at(1, 1) = 0x4000;
    frame.at(0, 1) = frame.at(2, 1) = 0x1000;
    frame.at(3, 1) = 0x3000;
    frame.show("RGB16", with(Method::edge), [](auto value) { EXPECT_EQ(0x1000 + 0x2000 / 4, value(1, 1, 1)); });
    frame.show("RGB8", with(Method::edge), [](auto value) { EXPECT_EQ(0x10 + 0x10 / 4, value(1, 1, 1)); });
}

TEST(ViewOddities, NearestGreenOfColumnZeroComesFromAboveIn16BitsToo) {
    WordFrame frame("BayerRG16", {4, 6}, 0);
    frame.at(1, 0) = 0x1111;
    frame.at(2, 1) = 0x2222;
    frame.at(0, 1) = 0x3333;
    frame.show("RGB16", with(Method::nearest), [](auto value) {
        EXPECT_EQ(0x1111, value(2, 0, 1));
        EXPECT_EQ(0x3333, value(0, 0, 1));  // in row 0 from the right
    });
}

// ---- beside kroDemosaicing ----

// The picture of the demosaicing entry in rows without gaps.
std::vector<uint8_t> demosaiced(const kro::Kernels& table, const KroSourceView& frame, Method method, uint32_t output,
                                size_t bytes) {
    std::vector<uint8_t> pixels(bytes);
    KroContext* handle = nullptr;
    EXPECT_EQ(KRO_OK, kroCreate(&handle));
    EXPECT_EQ(KRO_OK, kroDemosaicSetConfig(handle, &output));
    const KroImage in{frame.height, frame.width, frame.format, const_cast<void*>(frame.data)};
    KroImage out{0, 0, 0, pixels.data()};
    EXPECT_EQ(KRO_OK, kro::demosaicing(table, handle, &in, static_cast<KroAlgorithm>(method), &out));
    EXPECT_EQ(KRO_OK, kroRelease(&handle));
    return pixels;
}

std::vector<uint8_t> viewed(const kro::Kernels& table, const KroSourceView& frame, Method method,
                            const reference::OutputFormat& output, size_t bytes) {
    std::vector<uint8_t> pixels(bytes);
    const size_t plane = bytes / 3;
    const KroPictureView picture{
        {pixels.data(), pixels.data() + plane, pixels.data() + 2 * plane, nullptr}, {0, 0, 0, 0}, output.code};
    const KroViewOptions options = withAlgorithm(method);
    EXPECT_EQ(KRO_OK, kro::convertView(table, &frame, &picture, &options));
    return pixels;
}

class ViewBesideEntry : public testing::TestWithParam<InputFormat> {};
INSTANTIATE_TEST_SUITE_P(Every, ViewBesideEntry, testing::ValuesIn(reference::inputFormats), inputName);

TEST_P(ViewBesideEntry, SameBytesButForAlpha) {
    ViewSource source(size_t{1} << 16);
    uint32_t seed = 1;
    for (const Size size : {Size{4, 4}, Size{5, 5}, Size{7, 19}, Size{12, 36}, Size{33, 129}}) {
        source.hold(GetParam(), size, numbersFor(GetParam(), noOptions, Content::noise, size, ++seed, true),
                    Spacing::continuous, false, guard::Placement::againstEnd);
        for (const reference::OutputFormat& output : reference::outputFormats) {
            const size_t bytes =
                static_cast<size_t>(size.height * size.width) * static_cast<size_t>(output.bytesPerPixel);
            for (const kro::Kernels* table : usableTables()) {
                for (const Method method : reference::allMethods) {
                    auto wanted = demosaiced(*table, source.view(), method, output.code, bytes);
                    for (size_t i = 3; output.bytesPerPixel == 4 && i < bytes; i += 4) {
                        wanted[i] = 255;
                    }
                    ASSERT_EQ(wanted, viewed(*table, source.view(), method, output, bytes))
                        << table->name << " " << describe(size) << " to " << output.name;
                    countComparison(*table, bytes);
                }
            }
        }
    }
}

TEST(ViewOddities, AnUnknownAlgorithmIsAnErrorHere) {
    std::vector<uint8_t> pixels(4 * 8 * 3, 0x77);
    const std::vector<uint8_t> samples(4 * 8, 1);
    const KroSourceView source{samples.data(), 0, 4, 8, KRO_BAYER_RG8};
    const KroPictureView picture{{pixels.data()}, {0}, KRO_RGB8};
    KroViewOptions options = noOptions;
    options.algorithm = 7;
    for (const kro::Kernels* table : usableTables()) {
        EXPECT_EQ(KRO_ERR_OPTION, kro::convertView(*table, &source, &picture, &options));
        EXPECT_EQ(std::vector<uint8_t>(4 * 8 * 3, 0x77), pixels);
    }
}

// 65536 x 65536 passes the size test of kroDemosaicing, which wraps; here it is what it is, and in 32 bits too large.
TEST(ViewOddities, SizesDoNotWrap) {
    const uint8_t sample = 0;
    uint8_t pixel = 0;
    const KroSourceView source{&sample, 0, 65536, 65536, sizeof(void*) == 4 ? KRO_BAYER_RG8 : 1u};
    const KroPictureView picture{{&pixel}, {0}, KRO_RGB8};
    EXPECT_EQ(sizeof(void*) == 4 ? KRO_ERR_SIZE : KRO_ERR_FORMAT,
              kro::convertView(kro::bestKernels(), &source, &picture, nullptr));
}

}  // namespace
