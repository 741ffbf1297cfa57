// The reference of views against layouts, samples and pixels worked by hand.
#include <gtest/gtest.h>

#include "kro/view.h"
#include "support.hpp"
#include "view_reference.hpp"

namespace {

using reference::InputFormat;
using reference::Picture;
using reference::Pixel;

const InputFormat& named(const char* name) {
    static const std::vector<InputFormat> formats = reference::viewInputFormats();
    for (const InputFormat& format : formats) {
        if (std::string(name) == format.name) {
            return format;
        }
    }
    throw std::runtime_error(name);
}

std::vector<uint16_t> numbers(const char* format, const std::vector<uint8_t>& run, int count,
                              bool bigEndian = false) {
    return reference::numbersOf(named(format), {run.data(), 0, 1, count}, bigEndian);
}
using Numbers = std::vector<uint16_t>;
using Octets = std::vector<uint8_t>;

// ---- layouts ----

// Words are spelled out in bytes.
#define SKIP_WHERE_WORDS_ARE_BIG_ENDIAN()                          \
    if (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__) {                  \
        GTEST_SKIP() << "the bytes are those of other processors"; \
    }

TEST(ViewReference, PackedPairs) {
    EXPECT_EQ((Numbers{0xABD, 0xEFC}), numbers("BayerRG12Packed", {0xAB, 0xCD, 0xEF}, 2));
    EXPECT_EQ((Numbers{0x2AD, 0x3BC}), numbers("BayerRG10Packed", {0xAB, 0xCD, 0xEF}, 2));
    EXPECT_EQ((Numbers{0x2AF, 0x3BF}), numbers("Mono10Packed", {0xAB, 0x33, 0xEF}, 2));
    EXPECT_EQ((Numbers{0x2AC, 0x3BC}), numbers("Mono10Packed", {0xAB, 0xCC, 0xEF}, 2));  // its unused bits
}

TEST(ViewReference, BitsOneAfterTheOther) {
    EXPECT_EQ((Numbers{0xDAB, 0xEFC}), numbers("Mono12p", {0xAB, 0xCD, 0xEF}, 2));
    EXPECT_EQ((Numbers{0x1AB, 0x3F3, 0x12E, 0x0D0}), numbers("Mono10p", {0xAB, 0xCD, 0xEF, 0x12, 0x34}, 4));
    EXPECT_EQ((Numbers{0x2301, 0x1D14, 0x3896, 0x336A}),
              numbers("BayerGB14p", {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD}, 4));
}

TEST(ViewReference, Csi2Groups) {
    EXPECT_EQ((Numbers{0xABF, 0xCDE}), numbers("SRGGB12P", {0xAB, 0xCD, 0xEF}, 2));
    EXPECT_EQ((Numbers{0x2AD, 0x336, 0x3BF, 0x048}), numbers("Y10P", {0xAB, 0xCD, 0xEF, 0x12, 0x39}, 4));
    EXPECT_EQ((Numbers{0x2AC1, 0x334C, 0x3BD2, 0x0491}),
              numbers("SBGGR14P", {0xAB, 0xCD, 0xEF, 0x12, 0x01, 0x23, 0x45}, 4));
}

TEST(ViewReference, BytesAndWords) {
    SKIP_WHERE_WORDS_ARE_BIG_ENDIAN();
    EXPECT_EQ((Numbers{0x12, 0xFE}), numbers("BayerGR8", {0x12, 0xFE}, 2));
    EXPECT_EQ((Numbers{0x1234, 0xCDAB}), numbers("Mono12", {0x34, 0x12, 0xAB, 0xCD}, 2));
    EXPECT_EQ((Numbers{0x3412, 0xABCD}), numbers("Mono12", {0x34, 0x12, 0xAB, 0xCD}, 2, true));
}

TEST(ViewReference, GroupsByTheirBytes) {
    const struct {
        const char* format;
        size_t samples, bytes;
    } groups[] = {{"Mono8", 5, 5},     {"Mono16", 5, 10},  {"Mono12Packed", 5, 9}, {"BayerRG10Packed", 4, 6},
                  {"Mono10p", 5, 10},  {"Mono12p", 5, 9},  {"Mono14p", 5, 14},     {"Mono14p", 8, 14},
                  {"SRGGB10P", 8, 10}, {"SRGGB12P", 6, 9}, {"SRGGB14P", 4, 7},     {"SRGGB14P", 9, 21}};
    for (const auto& group : groups) {
        EXPECT_EQ(group.bytes, reference::inputBytes(named(group.format), group.samples)) << group.format;
    }
}

// Three samples a row: the second row begins in the middle of a group, or with one of its own.
TEST(ViewReference, GroupsRunOverTheEndsOfRowsOnlyWithoutAStride) {
    const Octets run = {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE, 0x01, 0x23, 0x45, 0x67};
    EXPECT_EQ((Numbers{0x210, 0x543, 0x876, 0xBA9, 0xEDC, 0x01F}),
              reference::numbersOf(named("Mono12p"), {run.data(), 0, 2, 3}, false));
    EXPECT_EQ((Numbers{0x210, 0x543, 0x876, 0xEDC, 0x01F, 0x523}),
              reference::numbersOf(named("Mono12p"), {run.data(), 6, 2, 3}, false));
    EXPECT_EQ((Numbers{0xEDC, 0x01F, 0x523, 0x210, 0x543, 0x876}),
              reference::numbersOf(named("Mono12p"), {run.data() + 6, -6, 2, 3}, false));
}

TEST(ViewReference, EveryBitOfAGroupIsASamplesOrNoOnes) {
    for (const InputFormat& format : reference::viewInputFormats()) {
        const reference::Group group = reference::groupOf(format);
        const bool unused = format.layout == reference::Layout::packed && format.bits == 10;
        for (const bool bigEndian : {false, true}) {
            std::vector<int> owners(group.bytes * 8);
            for (size_t i = 0; i < group.samples; ++i) {
                const int bits = format.layout == reference::Layout::words ? 16 : format.bits;
                for (int bit = 0; bit < bits; ++bit) {
                    ++owners[reference::bitPlace(format, i, bit, bigEndian)];
                }
            }
            EXPECT_EQ(unused ? 4 : 0, std::count(owners.begin(), owners.end(), 0)) << format.name;
            EXPECT_EQ(0, std::count_if(owners.begin(), owners.end(), [](int n) { return n > 1; })) << format.name;
        }
    }
}

TEST(ViewReference, NumbersComeBackAsTheyWereSet) {
    for (const InputFormat& format : reference::viewInputFormats()) {
        const Numbers put = samples(Content::noise, {1, 37}, (1 << format.bits) - 1, 3);
        Octets run(reference::inputBytes(format, put.size()), 0xA5);
        for (size_t i = 0; i < put.size(); ++i) {
            reference::setNumber(format, run.data(), i, false, put[i]);
        }
        EXPECT_EQ(put, reference::numbersOf(format, {run.data(), 0, 1, 37}, false)) << format.name;
    }
}

// ---- formats ----

TEST(ViewReference, EveryFormatHasItsOwnCode) {
    std::vector<uint32_t> codes;
    for (const InputFormat& format : reference::viewInputFormats()) {
        codes.push_back(format.code);
    }
    std::sort(codes.begin(), codes.end());
    EXPECT_EQ(65u, codes.size());
    EXPECT_EQ(codes.end(), std::unique(codes.begin(), codes.end()));
}

TEST(ViewReference, CodesOfTheHeader) {
    const std::pair<const char*, uint32_t> inputs[] = {{"Mono10p", KRO_MONO10P},
                                                       {"Mono12p", KRO_MONO12P},
                                                       {"Mono14p", KRO_MONO14P},
                                                       {"BayerBG10p", KRO_BAYER_BG10P},
                                                       {"BayerBG12p", KRO_BAYER_BG12P},
                                                       {"BayerBG14p", KRO_BAYER_BG14P},
                                                       {"BayerGB10p", KRO_BAYER_GB10P},
                                                       {"BayerGB12p", KRO_BAYER_GB12P},
                                                       {"BayerGB14p", KRO_BAYER_GB14P},
                                                       {"BayerGR10p", KRO_BAYER_GR10P},
                                                       {"BayerGR12p", KRO_BAYER_GR12P},
                                                       {"BayerGR14p", KRO_BAYER_GR14P},
                                                       {"BayerRG10p", KRO_BAYER_RG10P},
                                                       {"BayerRG12p", KRO_BAYER_RG12P},
                                                       {"BayerRG14p", KRO_BAYER_RG14P},
                                                       {"BayerBG14", KRO_BAYER_BG14},
                                                       {"BayerGB14", KRO_BAYER_GB14},
                                                       {"BayerGR14", KRO_BAYER_GR14},
                                                       {"BayerRG14", KRO_BAYER_RG14},
                                                       {"Y10P", KRO_Y10P},
                                                       {"Y12P", KRO_Y12P},
                                                       {"Y14P", KRO_Y14P},
                                                       {"SRGGB10P", KRO_SRGGB10P},
                                                       {"SRGGB12P", KRO_SRGGB12P},
                                                       {"SRGGB14P", KRO_SRGGB14P},
                                                       {"SGRBG10P", KRO_SGRBG10P},
                                                       {"SGRBG12P", KRO_SGRBG12P},
                                                       {"SGRBG14P", KRO_SGRBG14P},
                                                       {"SGBRG10P", KRO_SGBRG10P},
                                                       {"SGBRG12P", KRO_SGBRG12P},
                                                       {"SGBRG14P", KRO_SGBRG14P},
                                                       {"SBGGR10P", KRO_SBGGR10P},
                                                       {"SBGGR12P", KRO_SBGGR12P},
                                                       {"SBGGR14P", KRO_SBGGR14P}};
    EXPECT_EQ(reference::furtherInputFormats.size(), std::size(inputs));
    for (const auto& input : inputs) {
        EXPECT_EQ(input.second, named(input.first).code) << input.first;
    }
    const uint32_t outputs[] = {
        KRO_MONO8,  KRO_RGB8,   KRO_BGR8,   KRO_RGBA8,       KRO_BGRA8,        KRO_RGBX8,       KRO_BGRX8, KRO_ARGB8,
        KRO_ABGR8,  KRO_XRGB8,  KRO_XBGR8,  KRO_RGB8_PLANAR, KRO_BGR8_PLANAR,  KRO_MONO16,      KRO_RGB16, KRO_BGR16,
        KRO_RGBA16, KRO_BGRA16, KRO_ARGB16, KRO_ABGR16,      KRO_RGB16_PLANAR, KRO_BGR16_PLANAR};
    ASSERT_EQ(reference::viewOutputs.size(), std::size(outputs));
    for (size_t i = 0; i < std::size(outputs); ++i) {
        EXPECT_EQ(outputs[i], reference::viewOutputs[i].code) << reference::viewOutputs[i].name;
    }
    EXPECT_EQ(0x41415270u, named("SRGGB10P").code);
}

// ---- samples ----

TEST(ViewReference, EightBitsOfWords) {
    const InputFormat& twelve = named("BayerRG12");
    Numbers words(17, 0x0ABC);
    words[1] = 0x1000;
    words[2] = 0x7FFF;
    words[3] = 0x8000;
    words[16] = 0x1234;
    Octets wanted(17, 0xAB);
    wanted[1] = wanted[2] = 255;  // saturated, in a whole block
    wanted[3] = 0;                // negative as a signed word
    wanted[16] = 0x23;            // cut off
    EXPECT_EQ(wanted, reference::eightBits(twelve, words, {12, false, false}));
    EXPECT_EQ((Octets{0x12, 0xFF}), reference::eightBits(twelve, {0x1234, 0xFF80}, {12, false, true}));
    EXPECT_EQ((Octets{0x80, 0x7F}), reference::eightBits(named("Mono16"), {0x80FF, 0x7F00}, {16, false, false}));
    EXPECT_EQ((Octets{0xD5}), reference::eightBits(named("Mono12"), {0x03AB}, {9, false, false}));
}

TEST(ViewReference, EightHighBitsOfPackedSamples) {
    EXPECT_EQ((Octets{0xAB, 0xFF}), reference::eightBits(named("Mono12p"), {0xABC, 0xFFF}, {12, false, false}));
    EXPECT_EQ((Octets{0xAB}), reference::eightBits(named("Y14P"), {0x2AFF}, {14, false, false}));
    EXPECT_EQ((Octets{0x80}), reference::eightBits(named("Mono10Packed"), {0x203}, {10, false, false}));
}

TEST(ViewReference, AllBits) {
    const InputFormat& twelve = named("BayerRG12");
    EXPECT_EQ((Numbers{0xABC, 0xFFF, 0xFFF}),
              reference::allBits(twelve, {0x0ABC, 0x1000, 0x8000}, {12, false, false}));
    EXPECT_EQ((Numbers{0xABC, 0x800}), reference::allBits(twelve, {0xABCF, 0x8000}, {12, false, true}));
    EXPECT_EQ((Numbers{0x2AF}), reference::allBits(twelve, {0xABCF}, {10, false, true}));
    EXPECT_EQ((Numbers{0xABCF}), reference::allBits(twelve, {0xABCF}, {16, false, true}));
    EXPECT_EQ((Numbers{0xFFFF}), reference::allBits(twelve, {0xFFFF}, {16, false, false}));
    EXPECT_EQ((Numbers{0x3FFF}), reference::allBits(named("Mono14p"), {0x3FFF}, {14, false, false}));
}

TEST(ViewReference, FullRange) {
    const struct {
        int value, bits, wanted;
    } examples[] = {{0x3FF, 10, 0xFFFF}, {0x200, 10, 0x8020}, {0x800, 12, 0x8008},  {0xFFF, 12, 0xFFFF},
                    {0xAB, 8, 0xABAB},   {0x100, 9, 0x8040},  {0x1234, 16, 0x1234}, {0x2000, 14, 0x8002},
                    {0, 13, 0},          {0x1FFF, 13, 0xFFFF}};
    for (const auto& example : examples) {
        EXPECT_EQ(example.wanted, reference::fullRange(example.value, example.bits)) << example.bits;
    }
}

// ---- pictures ----

Picture deep(reference::Method method, const char* format, const Numbers& samples, int height, int width) {
    Octets run(samples.size() * 2);
    for (size_t i = 0; i < samples.size(); ++i) {
        reference::setNumber(named(format), run.data(), i, false, samples[i]);
    }
    reference::Scene scene(named(format), {run.data(), 0, height, width}, {named(format).bits, false, false});
    return scene.picture(method, 16);
}

TEST(ViewReference, SumsOf16BitsDoNotWrap) {
    for (const char* format : {"BayerRG16", "BayerGR16", "BayerGB16", "BayerBG16"}) {
        for (const reference::Method method : reference::viewMethods) {
            for (const Pixel& pixel : deep(method, format, Numbers(6 * 20, 0xFFFF), 6, 20).pixel) {
                ASSERT_EQ((Pixel{0xFFFF, 0xFFFF, 0xFFFF}), pixel) << format;
            }
        }
    }
}

// Sample (y, x) is 1000 y + 10 x: what 8 bits take from column 0 and 1 comes from where the border rule says.
TEST(ViewReference, BilinearOf16BitsHasNoMarkedValues) {
    Numbers samples;
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) {
            samples.push_back(static_cast<uint16_t>(1000 * y + 10 * x));
        }
    }
    const Picture p = deep(reference::Method::bilinear, "BayerGR16", samples, 4, 5);
    EXPECT_EQ((20 + 40 + 2 * 1030) / 4, p.at(0, 3)[reference::green]);
    EXPECT_EQ((30 + 2030) / 2, p.at(1, 3)[reference::red]);
    EXPECT_EQ((30 + 2030) / 2, p.at(1, 4)[reference::red]);
}

TEST(ViewReference, EdgeOf16BitsStaysWithinItsBits) {
    for (const char* format : {"BayerRG10", "BayerGR12", "BayerGB14", "BayerBG14"}) {
        const int top = (1 << named(format).bits) - 1;
        const Picture p = deep(reference::Method::edge, format, samples(Content::extremes, {9, 21}, top, 4), 9, 21);
        for (const Pixel& pixel : p.pixel) {
            for (const int value : pixel) {
                ASSERT_GE(top, value) << format;
            }
        }
    }
}

TEST(ViewReference, LettersOfEveryOutput) {
    SKIP_WHERE_WORDS_ARE_BIG_ENDIAN();
    Picture one(1, 1);
    one.at(0, 0) = {0x0102, 0x0304, 0x0506};
    const reference::Finish finish{0x0708, 0};
    auto words = [&](const char* letters) {
        const Octets bytes = reference::planeBytes(one, letters, 16, finish);
        Numbers result;
        for (size_t i = 0; i < bytes.size(); i += 2) {
            result.push_back(static_cast<uint16_t>(bytes[i] | bytes[i + 1] << 8));
        }
        return result;
    };
    EXPECT_EQ((Numbers{0x0708, 0x0102, 0x0304, 0x0506}), words("ARGB"));
    EXPECT_EQ((Numbers{0x0506, 0x0304, 0x0102}), words("BGR"));
    EXPECT_EQ((Numbers{(77 * 0x0102 + 150 * 0x0304 + 29 * 0x0506 + 128) >> 8}), words("Y"));
    one.at(0, 0) = {1, 2, 3};
    EXPECT_EQ((Octets{3, 2, 1, 9}), reference::planeBytes(one, "BGRA", 8, {9, 0}));
    EXPECT_EQ((Octets{9, 3, 2, 1}), reference::planeBytes(one, "ABGR", 8, {9, 0}));
    EXPECT_EQ((Octets{2}), reference::planeBytes(one, "Y", 8, {9, 0}));  // (77 + 300 + 87 + 128) >> 8
}

TEST(ViewReference, LumaComesBeforeFullRangeAndAlphaStays) {
    SKIP_WHERE_WORDS_ARE_BIG_ENDIAN();
    Picture one(1, 1);
    one.at(0, 0) = {0x3FF, 0, 0};
    const Octets grey = reference::planeBytes(one, "Y", 16, {0, 10});
    const int luma = (77 * 0x3FF + 128) >> 8;  // 308
    EXPECT_EQ(308, luma);
    EXPECT_EQ((308 << 6) | (308 >> 4), grey[0] | grey[1] << 8);
    const Octets colour = reference::planeBytes(one, "RA", 16, {0x1234, 10});
    EXPECT_EQ((Octets{0xFF, 0xFF, 0x34, 0x12}), colour);
}

TEST(ViewReference, PlanesOfOutputs) {
    using Letters = std::vector<std::string>;
    for (const reference::ViewOutput& output : reference::viewOutputs) {
        if (std::string(output.name) == "BGR16Planar") {
            EXPECT_EQ((Letters{"B", "G", "R"}), reference::planesOf(output, false));
            EXPECT_EQ((Letters{"B", "G", "R", "A"}), reference::planesOf(output, true));
        } else if (!output.planar) {
            EXPECT_EQ(Letters{output.letters}, reference::planesOf(output, true));
        }
    }
}

}  // namespace
