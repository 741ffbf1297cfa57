// Frames from real sensors, where they lie beside the project: every algorithm and table against the reference.
#include <fstream>
#include <iterator>

#include "KRODemosaicing.hpp"
#include "KROView.hpp"
#include "fine_reference.hpp"
#include "regions.hpp"

namespace {

using reference::Method;
using reference::Mosaic;
using reference::Phase;

const char* const outdoor = "outdoor_2592x1536_BayerGR8.raw";
const char* const chart = "chart_1920x1080_BayerRG10.raw";
const char* const still = "still_768x512_BayerRG16.raw";

// Rows taken of a frame: sanitized builds are content with some.
constexpr int rowsOf(int height) { return reducedRun ? 61 : height; }

std::vector<uint8_t> read(const char* name) {
    std::ifstream file(std::string(KRO_FRAMES_DIR "/") + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<uint16_t> words(const std::vector<uint8_t>& bytes) {
    std::vector<uint16_t> result;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        result.push_back(static_cast<uint16_t>(bytes[i] | bytes[i + 1] << 8));
    }
    return result;
}

#define LOAD_OR_SKIP(variable, name)                                              \
    const std::vector<uint8_t> variable = read(name);                             \
    if (variable.empty()) {                                                       \
        GTEST_SKIP() << "no real frame " << name << " beside the project folder"; \
    }

void checkAllMethods(Size size, uint32_t format, const void* raw, const Mosaic& reduced) {
    Destination destination(reduced.sample.size() * 4);
    for (Method method : reference::allMethods) {
        const reference::Picture picture = reference::demosaic(method, reduced);
        for (uint32_t output : {KRO_BGR8, KRO_BGRA8, KRO_MONO8, KRO_RGB8_PLANAR}) {
            const Expected expected = reference::packed(
                picture, output, reference::alphaOf(method, reduced.phase, size.height, size.width));
            for (const kro::Kernels* table : usableTables()) {
                KroContext* handle = nullptr;
                ASSERT_EQ(KRO_OK, kroCreate(&handle));
                ASSERT_EQ(KRO_OK, kroDemosaicSetConfig(handle, &output));
                destination.check(
                    *table, expected,
                    [&](uint8_t* to) {
                        const KroImage in{size.height, size.width, format,
                                          static_cast<uint8_t*>(const_cast<void*>(raw))};
                        KroImage out{0, 0, 0, to};
                        EXPECT_EQ(KRO_OK,
                                  kro::demosaicing(*table, handle, &in, static_cast<KroAlgorithm>(method), &out));
                    },
                    [&] { return "algorithm " + std::to_string(static_cast<int>(method)); });
                kroRelease(&handle);
            }
        }
    }
}

TEST(RealFrames, Outdoor8Bits) {
    LOAD_OR_SKIP(raw, outdoor);
    ASSERT_EQ(2592u * 1536u, raw.size());
    const Size size{rowsOf(1536), 2592};
    checkAllMethods(size, KRO_BAYER_GR8, raw.data(), {size.height, size.width, Phase::gr, raw.data()});
}

TEST(RealFrames, Chart10Bits) {
    LOAD_OR_SKIP(raw, chart);
    ASSERT_EQ(1920u * 1080u * 2u, raw.size());
    const Size size{rowsOf(1080), 1920};
    const std::vector<uint16_t> samples = words(raw);
    const std::vector<uint8_t> reduced = reference::reduced(samples, 2);
    checkAllMethods(size, KRO_BAYER_RG10, samples.data(), {size.height, size.width, Phase::rg, reduced.data()});
}

// Rows of a frame to views of 8 and 16 bits, by the fine algorithm.
void checkFine(Size size, uint32_t format, int bits, const void* raw, const Mosaic& eight, const Mosaic& all) {
    Destination destination(eight.sample.size() * 6);
    const struct {
        uint32_t output;
        Expected expected;
    } pictures[] = {{KRO_BGR8, regions::bytesOf(reference::fine(eight, reference::fineScale8), {regions::Kind::bgr})},
                    {KRO_RGB16, regions::wordsOf(reference::fine(all, reference::fineScale16(bits)), false, true)}};
    const KroViewOptions options = {sizeof options, KRO_FINE, 0, 0, 0, 0, 0};
    for (const auto& picture : pictures) {
        for (const kro::Kernels* table : usableTables()) {
            destination.check(
                *table, picture.expected,
                [&](uint8_t* to) {
                    const KroSourceView in = {raw, 0, size.height, size.width, format};
                    const KroPictureView out = {{to}, {0}, picture.output};
                    EXPECT_EQ(KRO_OK, kro::convertView(*table, &in, &out, &options));
                },
                [&] { return "output " + std::to_string(picture.output); });
        }
    }
}

TEST(RealFrames, FineOf8And10Bits) {
    LOAD_OR_SKIP(eight, outdoor);
    LOAD_OR_SKIP(ten, chart);
    const Size size{reducedRun ? 20 : 200, 2592};
    const uint8_t* const half = eight.data() + reference::place(700, 0, size.width);
    const Mosaic bytes(size.height, size.width, Phase::gr, half);
    checkFine(size, KRO_BAYER_GR8, 8, half, bytes, bytes);
    const Size other{size.height, 1920};
    const std::vector<uint16_t> all = words(ten);
    const std::vector<uint16_t> part(all.begin(),
                                     all.begin() + static_cast<ptrdiff_t>(reference::place(other.height, 0, 1920)));
    checkFine(other, KRO_BAYER_RG10, 10, part.data(),
              {other.height, other.width, Phase::rg, reference::reduced(part, 2).data()},
              {other.height, other.width, Phase::rg, part.data()});
}

void checkWords(Size size, const std::vector<uint8_t>& raw) {
    const std::vector<uint16_t> from = words(raw);
    const Mosaic m(size.height, size.width, Phase::rg, from.data());
    Destination destination(m.sample.size() * 6);
    const Expected bilinear = regions::wordsOf(reference::bilinearU16(m), false, false);
    const Expected edge = regions::wordsOf(reference::edgeU16(m, 4095), false, false);
    for (const kro::Kernels* t : usableTables()) {
        destination.check(
            *t, bilinear,
            [&](uint8_t* to) {
                call(t->demosaicingBilinearRGGBU16, from.data(), size.height, size.width,
                     reinterpret_cast<uint16_t*>(to));
            },
            [] { return std::string("bilinear"); });
        destination.check(
            *t, edge,
            [&](uint8_t* to) {
                call(t->demosaicingEdgeRGGBU16, from.data(), size.height, size.width,
                     reinterpret_cast<uint16_t*>(to));
            },
            [] { return std::string("edge"); });
    }
}

TEST(RealFrames, Still14BitsIn16BitFamilies) {
    LOAD_OR_SKIP(raw, still);
    ASSERT_EQ(768u * 512u * 2u, raw.size());
    checkWords({rowsOf(512), 768}, raw);
}

TEST(RealFrames, Chart10BitsIn16BitFamilies) {
    LOAD_OR_SKIP(raw, chart);
    checkWords({rowsOf(1080), 1920}, raw);
}

}  // namespace
