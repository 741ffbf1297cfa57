// The converters of each mosaic phase and of grey, called directly.
#include "KRODemosaicingFuncs/converters.hpp"
#include "kro/view.h"
#include "support.hpp"

namespace {

constexpr struct {
    reference::Phase phase;
    kro::InputFormat input;
    decltype(&::rg8Convert) exported;
} converters[] = {
    {reference::Phase::rg, {KRO_BAYER_RG8, false, kro::phaseRG, kro::Layout::bytes, 8, true}, ::rg8Convert},
    {reference::Phase::gr, {KRO_BAYER_GR8, false, kro::phaseGR, kro::Layout::bytes, 8, true}, ::gr8Convert},
    {reference::Phase::gb, {KRO_BAYER_GB8, false, kro::phaseGB, kro::Layout::bytes, 8, true}, ::gb8Convert},
    {reference::Phase::bg, {KRO_BAYER_BG8, false, kro::phaseBG, kro::Layout::bytes, 8, true}, ::bg8Convert}};
constexpr kro::InputFormat grey = {KRO_MONO8, true, kro::phaseRG, kro::Layout::bytes, 8, true};

TEST(Converters, EveryPhaseOutputAndAlgorithm) {
    Destination destination(4 * 40 * 40);
    guard::Buffer source(40 * 40);
    guard::Buffer working(64);
    for (Size size : {Size{4, 4}, Size{5, 9}, Size{9, 38}, Size{8, 21}}) {
        const std::vector<uint8_t> mosaic = sampleBytes(Content::noise, size, 8);
        const uint8_t* const from = source.hold(mosaic, guard::Placement::againstEnd);
        for (const auto& converter : converters) {
            for (reference::Method method : reference::allMethods) {
                const reference::Picture picture =
                    reference::demosaic(method, {size.height, size.width, converter.phase, mosaic.data()});
                for (const reference::OutputFormat& output : reference::outputFormats) {
                    const Expected expected = reference::packed(
                        picture, output.code, reference::alphaOf(method, converter.phase, size.height, size.width));
                    const auto where = [&] { return describe(size) + " to " + output.name; };
                    const auto algorithm = static_cast<KroAlgorithm>(method);
                    for (const kro::Kernels* table : usableTables()) {
                        destination.check(
                            *table, expected,
                            [&](uint8_t* to) {
                                EXPECT_EQ(KRO_OK, kro::convertFrame(*table, converter.input,
                                                                    kro::plainSource(from, size.width), to,
                                                                    size.height, size.width, output.code, algorithm));
                            },
                            where);
                    }
                    destination.check(
                        kro::bestKernels(), expected,
                        [&](uint8_t* to) {
                            uint8_t* const scratch = working.place(static_cast<size_t>(size.width),
                                                                   guard::Placement::againstEnd, guard::Fill::one);
                            EXPECT_EQ(KRO_OK,
                                      converter.exported(from, to, size.height, size.width,
                                                         static_cast<int32_t>(output.code), algorithm, scratch));
                            EXPECT_TRUE(working.canariesHold());
                        },
                        where);
                }
            }
        }
    }
}

TEST(Converters, UnknownOutputFormatComesBeforeUnknownAlgorithm) {
    const std::vector<uint8_t> mosaic(64);
    std::vector<uint8_t> to(64 * 4, 9);
    std::vector<uint8_t> working(8);
    for (const auto& converter : converters) {
        for (KroAlgorithm algorithm : {KRO_NEAREST, KRO_BILINEAR, KRO_EDGE, KRO_FINE}) {
            for (int32_t code : {0x02180016, 0, -1, 0x01080009}) {
                EXPECT_EQ(KRO_ERR_OUTPUT_FORMAT,
                          converter.exported(mosaic.data(), to.data(), 8, 8, code, algorithm, working.data()));
            }
        }
        EXPECT_EQ(KRO_OK, converter.exported(mosaic.data(), to.data(), 8, 8, 0x02180015, KRO_FINE, working.data()));
    }
    EXPECT_EQ(KRO_ERR_OUTPUT_FORMAT, ::mono8Convert(mosaic.data(), to.data(), 8, 8, 0x02180016));
    EXPECT_EQ(std::vector<uint8_t>(64 * 4, 9), to);
}

TEST(Converters, MonoExpandsEveryLength) {
    Destination destination(4 * 80);
    guard::Buffer source(80);
    for (int width = 1; width <= 80; ++width) {
        const Size size{1, width};
        const std::vector<uint8_t> levels = sampleBytes(Content::noise, size, 5);
        const uint8_t* const from = source.hold(levels, guard::Placement::againstEnd);
        reference::Picture picture(1, width);
        for (int x = 0; x < width; ++x) {
            const int v = levels[static_cast<size_t>(x)];
            picture.at(0, x) = {v, v, v};
        }
        for (const reference::OutputFormat& output : reference::outputFormats) {
            const Expected expected = reference::packed(picture, output.code, [](int, int) { return true; });
            for (const kro::Kernels* table : usableTables()) {
                destination.check(
                    *table, expected,
                    [&](uint8_t* to) {
                        EXPECT_EQ(KRO_OK, kro::convertFrame(*table, grey, kro::plainSource(from, width), to, 1, width,
                                                            output.code, KRO_NEAREST));
                    },
                    [&] { return describe(size) + " to " + output.name; });
            }
        }
    }
}

}  // namespace
