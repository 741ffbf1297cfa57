// kro.hpp and threads.hpp as a host sees them: names, errors, executors, bands, and the bytes of kroConvertView.
#include <gtest/gtest.h>
#include <linux/videodev2.h>
#include <kro/kro.hpp>
#include <kro/threads.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using kro::Algorithm;
using kro::PixelFormat;

// ---- names ----

struct NamedCode {
    const char* name;
    uint32_t code;
};

// Names of PFNC and V4L2, and our own in the spelling of PFNC.
constexpr NamedCode allNames[] = {
    {"Mono8", 0x01080001},
    {"Mono10", 0x01100003},
    {"Mono12", 0x01100005},
    {"Mono14", 0x01100025},
    {"Mono16", 0x01100007},
    {"Mono10Packed", 0x010C0004},
    {"Mono12Packed", 0x010C0006},
    {"Mono10p", 0x010A0046},
    {"Mono12p", 0x010C0047},
    {"Mono14p", 0x010E0104},
    {"BayerGR8", 0x01080008},
    {"BayerRG8", 0x01080009},
    {"BayerGB8", 0x0108000A},
    {"BayerBG8", 0x0108000B},
    {"BayerGR10", 0x0110000C},
    {"BayerRG10", 0x0110000D},
    {"BayerGB10", 0x0110000E},
    {"BayerBG10", 0x0110000F},
    {"BayerGR12", 0x01100010},
    {"BayerRG12", 0x01100011},
    {"BayerGB12", 0x01100012},
    {"BayerBG12", 0x01100013},
    {"BayerGR14", 0x01100109},
    {"BayerRG14", 0x0110010A},
    {"BayerGB14", 0x0110010B},
    {"BayerBG14", 0x0110010C},
    {"BayerGR16", 0x0110002E},
    {"BayerRG16", 0x0110002F},
    {"BayerGB16", 0x01100030},
    {"BayerBG16", 0x01100031},
    {"BayerGR10Packed", 0x010C0026},
    {"BayerRG10Packed", 0x010C0027},
    {"BayerGB10Packed", 0x010C0028},
    {"BayerBG10Packed", 0x010C0029},
    {"BayerGR12Packed", 0x010C002A},
    {"BayerRG12Packed", 0x010C002B},
    {"BayerGB12Packed", 0x010C002C},
    {"BayerBG12Packed", 0x010C002D},
    {"BayerBG10p", 0x010A0052},
    {"BayerGB10p", 0x010A0054},
    {"BayerGR10p", 0x010A0056},
    {"BayerRG10p", 0x010A0058},
    {"BayerBG12p", 0x010C0053},
    {"BayerGB12p", 0x010C0055},
    {"BayerGR12p", 0x010C0057},
    {"BayerRG12p", 0x010C0059},
    {"BayerGR14p", 0x010E0105},
    {"BayerRG14p", 0x010E0106},
    {"BayerGB14p", 0x010E0107},
    {"BayerBG14p", 0x010E0108},
    {"Y10P", V4L2_PIX_FMT_Y10P},
    {"Y12P", v4l2_fourcc('Y', '1', '2', 'P')},  // not in the videodev2.h of Linux 6.1
    {"Y14P", v4l2_fourcc('Y', '1', '4', 'P')},
    {"SRGGB10P", V4L2_PIX_FMT_SRGGB10P},
    {"SGRBG10P", V4L2_PIX_FMT_SGRBG10P},
    {"SGBRG10P", V4L2_PIX_FMT_SGBRG10P},
    {"SBGGR10P", V4L2_PIX_FMT_SBGGR10P},
    {"SRGGB12P", V4L2_PIX_FMT_SRGGB12P},
    {"SGRBG12P", V4L2_PIX_FMT_SGRBG12P},
    {"SGBRG12P", V4L2_PIX_FMT_SGBRG12P},
    {"SBGGR12P", V4L2_PIX_FMT_SBGGR12P},
    {"SRGGB14P", V4L2_PIX_FMT_SRGGB14P},
    {"SGRBG14P", V4L2_PIX_FMT_SGRBG14P},
    {"SGBRG14P", V4L2_PIX_FMT_SGBRG14P},
    {"SBGGR14P", V4L2_PIX_FMT_SBGGR14P},
    {"RGB8", 0x02180014},
    {"BGR8", 0x02180015},
    {"RGBa8", 0x02200016},
    {"BGRa8", 0x02200017},
    {"RGBx8", 0x82200001},
    {"BGRx8", 0x82200002},
    {"aRGB8", 0x82200003},
    {"aBGR8", 0x82200004},
    {"xRGB8", 0x82200005},
    {"xBGR8", 0x82200006},
    {"RGB8_Planar", 0x02180021},
    {"BGR8_Planar", 0x02180025},
    {"RGB16", 0x02300033},
    {"BGR16", 0x0230004B},
    {"RGBa16", 0x02400064},
    {"BGRa16", 0x02400051},
    {"aRGB16", 0x82400007},
    {"aBGR16", 0x82400008},
    {"RGB16_Planar", 0x02300024},
    {"BGR16_Planar", 0x82300009},
};

TEST(HppFormats, EveryNameAndCodeGoBothWays) {
    for (const NamedCode& named : allNames) {
        const PixelFormat format = static_cast<PixelFormat>(named.code);
        EXPECT_EQ(kro::nameOf(format), named.name);
        EXPECT_EQ(kro::formatNamed(named.name), format) << named.name;
    }
}

TEST(HppFormats, ListHoldsEachOnce) {
    std::set<uint32_t> listed;
    for (const kro::NamedFormat& named : kro::pixelFormats) {
        EXPECT_TRUE(listed.insert(static_cast<uint32_t>(named.format)).second) << named.name;
        EXPECT_GT(kro::rowBytes(named.format, 16), 0) << named.name;
    }
    std::set<uint32_t> expected;
    for (const NamedCode& named : allNames) {
        expected.insert(named.code);
    }
    EXPECT_EQ(listed, expected);
}

TEST(HppFormats, CaseAndUnderscoresDoNotMatter) {
    EXPECT_EQ(kro::formatNamed("bayerrg12PACKED"), PixelFormat::BayerRG12Packed);
    EXPECT_EQ(kro::formatNamed("RGB8Planar"), PixelFormat::RGB8_Planar);
    EXPECT_EQ(kro::formatNamed("_bgr16__planar_"), PixelFormat::BGR16_Planar);
}

TEST(HppFormats, OtherTextIsNone) {
    for (const char* text : {"", "_", "BayerRG", "BayerRG8x", "ayerRG8", "RGB 8", "SRGGB10", "Mono8\n"}) {
        EXPECT_EQ(kro::formatNamed(text), std::nullopt) << text;
    }
    EXPECT_EQ(kro::formatNamed(std::string_view("RGB8\0", 5)), std::nullopt);
    EXPECT_EQ(kro::nameOf(PixelFormat{}), "");
    EXPECT_EQ(kro::rowBytes(PixelFormat{}, 16), 0);
}

static_assert(kro::formatNamed("BayerGB10p") == PixelFormat::BayerGB10p, "names are known at compile time");
static_assert(kro::nameOf(PixelFormat::SRGGB12P) == "SRGGB12P");

// ---- frames and pictures to try ----

std::vector<uint8_t> noise(size_t bytes) {
    std::vector<uint8_t> noise(bytes);
    uint32_t state = 12345;
    for (uint8_t& byte : noise) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return noise;
}

constexpr uint8_t untouched = 0xA5;

testing::AssertionResult sameBytes(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    if (a.size() != b.size()) {
        return testing::AssertionFailure() << a.size() << " bytes and " << b.size();
    }
    const auto different = std::mismatch(a.begin(), a.end(), b.begin());
    if (different.first == a.end()) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "byte " << different.first - a.begin() << " differs";
}

// A frame with gaps between its rows, and room for a picture of the same size.
struct Scene {
    Scene(PixelFormat format, int32_t height, int32_t width)
        : samples(noise(static_cast<size_t>(stride(format, width) * height))),
          frame{samples.data(), height, width, format, stride(format, width)} {}

    static std::ptrdiff_t stride(PixelFormat format, int32_t width) { return kro::rowBytes(format, width) + 6; }

    std::vector<uint8_t> room(PixelFormat format) const {
        return std::vector<uint8_t>(static_cast<size_t>(stride(format, frame.width) * frame.height), untouched);
    }
    kro::Picture picture(std::vector<uint8_t>& room, PixelFormat format) const {
        return {room.data(), format, stride(format, frame.width)};
    }

    std::vector<uint8_t> samples;
    kro::Frame frame;
};

// ---- executors ----

void forwards(int count, const kro::BandTask& task) {
    for (int band = 0; band < count; ++band) {
        task(band);
    }
}

void backwards(int count, const std::function<void(int)>& task) {
    for (int band = count; band-- > 0;) {
        task(band);
    }
}

// A thread for each band.
struct OneThreadEach {
    template <class Task>
    void operator()(int count, Task task) const {
        std::vector<std::thread> threads;
        for (int band = 0; band < count; ++band) {
            threads.emplace_back([task, band] { task(band); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
};

// ---- the bytes of kroConvertView ----

std::vector<uint8_t> convertedByC(const Scene& scene, PixelFormat format, const KroViewOptions& options) {
    std::vector<uint8_t> room = scene.room(format);
    const KroSourceView source = {scene.frame.data, scene.frame.stride, scene.frame.height, scene.frame.width,
                                  static_cast<uint32_t>(scene.frame.format)};
    KroPictureView picture = {};
    picture.plane[0] = room.data();
    picture.stride[0] = Scene::stride(format, scene.frame.width);
    picture.format = static_cast<uint32_t>(format);
    EXPECT_EQ(kroConvertView(&source, &picture, &options), KRO_OK);
    return room;
}

template <class... Executor>
std::vector<uint8_t> converted(const Scene& scene, PixelFormat format, const kro::Options& options,
                               Executor&&... executor) {
    std::vector<uint8_t> room = scene.room(format);
    kro::convert(scene.frame, scene.picture(room, format), options, executor...);
    return room;
}

struct Case {
    PixelFormat in, out;
    kro::Options options;
    KroViewOptions same;
};

std::vector<Case> cases() {
    std::vector<Case> cases;
    const auto add = [&cases](PixelFormat in, PixelFormat out, uint32_t flags, int32_t alpha, int32_t bits) -> Case& {
        cases.push_back({in, out, {}, {sizeof(KroViewOptions), KRO_EDGE, flags, alpha, bits, 0, 0}});
        return cases.back();
    };
    add(PixelFormat::BayerRG8, PixelFormat::RGB8, 0, 0, 0);
    for (const Algorithm algorithm : {Algorithm::nearest, Algorithm::bilinear, Algorithm::edge, Algorithm::fine}) {
        Case& added = add(PixelFormat::SGBRG10P, PixelFormat::BGRa8, KRO_VIEW_ALPHA, 7, 0);
        added.options.algorithm = algorithm;
        added.options.alpha = 7;
        added.same.algorithm = static_cast<KroAlgorithm>(algorithm);
    }
    add(PixelFormat::BayerGR16, PixelFormat::aBGR16, KRO_VIEW_BIG_ENDIAN, 0, 0).options.bigEndian = true;
    Case& aligned = add(PixelFormat::BayerBG12, PixelFormat::RGB16, KRO_VIEW_LEFT_ALIGNED, 0, 12);
    aligned.options.leftAligned = true;
    aligned.options.bits = 12;
    add(PixelFormat::BayerRG14p, PixelFormat::RGBa16, KRO_VIEW_FULL_RANGE, 0, 0).options.fullRange = true;
    Case& rows = add(PixelFormat::Mono12Packed, PixelFormat::xRGB8, 0, 0, 0);
    rows.options.firstRow = rows.same.firstRow = 7;
    rows.options.rowCount = rows.same.rowCount = 390;
    Case& rest = add(PixelFormat::BayerGB12, PixelFormat::Mono16, 0, 0, 0);
    rest.options.firstRow = rest.same.firstRow = 11;
    return cases;
}

TEST(HppConvert, BytesAreThoseOfTheCInterface) {
    kro::Threads threads(16);
    for (const Case& trial : cases()) {
        const Scene scene(trial.in, 403, 1402);
        SCOPED_TRACE(kro::nameOf(trial.in));
        const std::vector<uint8_t> expected = convertedByC(scene, trial.out, trial.same);
        EXPECT_FALSE(sameBytes(expected, scene.room(trial.out)));
        EXPECT_TRUE(sameBytes(converted(scene, trial.out, trial.options), expected));
        EXPECT_TRUE(sameBytes(converted(scene, trial.out, trial.options, forwards), expected));
        EXPECT_TRUE(sameBytes(converted(scene, trial.out, trial.options, backwards), expected));
        EXPECT_TRUE(sameBytes(converted(scene, trial.out, trial.options, OneThreadEach()), expected));
        EXPECT_TRUE(sameBytes(converted(scene, trial.out, trial.options, threads), expected));
    }
}

// Three planes and alpha, each with a stride of its own and the third with row 0 last in memory.
struct Planes {
    static constexpr int32_t height = 500;
    static constexpr int32_t width = 1100;

    std::ptrdiff_t stride(size_t index) const { return width + static_cast<std::ptrdiff_t>(index) * 8; }
    kro::Plane plane(size_t index) {
        uint8_t* const first = rooms[index].data();
        return index == 2 ? kro::Plane{first + (height - 1) * stride(index), -stride(index)}
                          : kro::Plane{first, index == 0 ? 0 : stride(index)};
    }

    std::vector<std::vector<uint8_t>> rooms =
        std::vector<std::vector<uint8_t>>(4, std::vector<uint8_t>((width + 24) * height, untouched));
};

TEST(HppConvert, PlanesAreThoseOfTheCInterface) {
    const Scene scene(PixelFormat::BayerRG8, Planes::height, Planes::width);
    Planes expected;
    KroPictureView view = {{}, {}, KRO_BGR8_PLANAR};
    for (size_t i = 0; i < 4; ++i) {
        view.plane[i] = expected.plane(i).data;
        view.stride[i] = expected.plane(i).stride;
    }
    const KroSourceView source = {scene.frame.data, scene.frame.stride, Planes::height, Planes::width, KRO_BAYER_RG8};
    EXPECT_EQ(kroConvertView(&source, &view, nullptr), KRO_OK);

    Planes planes;
    const kro::Picture picture(planes.plane(0), planes.plane(1), planes.plane(2), PixelFormat::BGR8_Planar,
                               planes.plane(3));
    kro::convert(scene.frame, picture, {}, forwards);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(sameBytes(planes.rooms[i], expected.rooms[i])) << "plane " << i;
        EXPECT_FALSE(sameBytes(planes.rooms[i], Planes().rooms[i])) << "plane " << i;
    }
}

// ---- bands ----

// Rows that band `wanted` alone writes.
std::pair<int, int> rowsOfBand(const Scene& scene, const kro::Options& options, int wanted) {
    const std::vector<uint8_t> room =
        converted(scene, PixelFormat::RGB8, options, [wanted](int, const kro::BandTask& task) { task(wanted); });
    const std::ptrdiff_t stride = Scene::stride(PixelFormat::RGB8, scene.frame.width);
    int first = -1;
    int end = -1;
    for (int y = 0; y < scene.frame.height; ++y) {
        const auto row = room.begin() + y * stride;
        if (std::all_of(row, row + stride, [](uint8_t byte) { return byte == untouched; })) {
            continue;
        }
        first = first < 0 ? y : first;
        EXPECT_TRUE(end < 0 || end == y) << "rows " << end << " to " << y << " are left out";
        end = y + 1;
    }
    return {first, end};
}

int bandsOf(const Scene& scene, const kro::Options& options) {
    int bands = 0;
    converted(scene, PixelFormat::RGB8, options, [&bands](int count, const kro::BandTask& task) {
        bands = count;
        forwards(count, task);
    });
    return bands;
}

void expectTiles(int height, int width, const kro::Options& options) {
    SCOPED_TRACE(std::to_string(height) + " x " + std::to_string(width) + " from " +
                 std::to_string(options.firstRow));
    const Scene scene(PixelFormat::BayerRG8, height, width);
    const int bands = bandsOf(scene, options);
    ASSERT_GT(bands, 1);
    int next = options.firstRow;
    for (int band = 0; band < bands; ++band) {
        const auto [first, end] = rowsOfBand(scene, options, band);
        EXPECT_EQ(first, next) << band;
        EXPECT_TRUE(band == 0 || first % 2 == 0) << first;
        EXPECT_GE(end - first, 63 + (options.firstRow % 2 == 0 || band > 0)) << band;
        next = end;
    }
    EXPECT_EQ(next, options.rowCount == 0 ? height : options.firstRow + options.rowCount);
}

TEST(HppBands, TileTheRows) {
    expectTiles(960, 1280, {});
    expectTiles(961, 1283, {});
    expectTiles(128, 4000, {});
    expectTiles(509, 4000, {});
    kro::Options rows;
    rows.firstRow = 5;
    rows.rowCount = 777;
    expectTiles(1001, 900, rows);
    rows.rowCount = 0;
    expectTiles(1001, 900, rows);
}

TEST(HppBands, CountFollowsRowsAndPixels) {
    EXPECT_EQ(bandsOf(Scene(PixelFormat::BayerRG8, 960, 1280), {}), 4);
    EXPECT_EQ(bandsOf(Scene(PixelFormat::BayerRG8, 1080, 1920), {}), 8);
    EXPECT_EQ(bandsOf(Scene(PixelFormat::BayerRG8, 640, 4096), {}), 10);
    EXPECT_EQ(bandsOf(Scene(PixelFormat::BayerRG8, 128, 4096), {}), 2);
}

TEST(HppBands, SmallFramesAreMadeWithoutTheExecutor) {
    EXPECT_EQ(bandsOf(Scene(PixelFormat::BayerRG8, 4, 4), {}), 0);
    EXPECT_EQ(bandsOf(Scene(PixelFormat::BayerRG8, 624, 800), {}), 0);
    EXPECT_EQ(bandsOf(Scene(PixelFormat::BayerRG8, 127, 8000), {}), 0);
    kro::Options rows;
    rows.rowCount = 100;
    const Scene large(PixelFormat::BayerRG8, 960, 1280);
    EXPECT_EQ(bandsOf(large, rows), 0);
    const std::vector<uint8_t> made = converted(large, PixelFormat::RGB8, rows, forwards);
    EXPECT_TRUE(sameBytes(made, converted(large, PixelFormat::RGB8, rows)));
    EXPECT_FALSE(sameBytes(made, large.room(PixelFormat::RGB8)));
}

// ---- errors ----

struct Wrong {
    kro::Error error;
    std::function<void(kro::Frame&, kro::Picture&, kro::Options&)> change;
};

std::vector<Wrong> wrongs() {
    return {{kro::Error::null, [](kro::Frame& frame, kro::Picture&, kro::Options&) { frame.data = nullptr; }},
            {kro::Error::null, [](kro::Frame&, kro::Picture& picture, kro::Options&) { picture.plane[0] = {}; }},
            {kro::Error::null,
             [](kro::Frame&, kro::Picture& picture, kro::Options&) { picture.format = PixelFormat::RGB8_Planar; }},
            {kro::Error::size, [](kro::Frame& frame, kro::Picture&, kro::Options&) { frame.height = 3; }},
            {kro::Error::size, [](kro::Frame& frame, kro::Picture&, kro::Options&) { frame.width = -5; }},
            {kro::Error::format,
             [](kro::Frame& frame, kro::Picture&, kro::Options&) { frame.format = PixelFormat::RGB8; }},
            {kro::Error::format, [](kro::Frame& frame, kro::Picture&, kro::Options&) { frame.format = {}; }},
            {kro::Error::outputFormat,
             [](kro::Frame&, kro::Picture& picture, kro::Options&) { picture.format = PixelFormat::BayerRG8; }},
            {kro::Error::option, [](kro::Frame&, kro::Picture&, kro::Options& options) { options.alpha = 256; }},
            {kro::Error::option, [](kro::Frame&, kro::Picture&, kro::Options& options) { options.bits = 17; }},
            {kro::Error::option, [](kro::Frame&, kro::Picture&, kro::Options& options) { options.firstRow = -1; }},
            {kro::Error::option, [](kro::Frame&, kro::Picture&, kro::Options& options) { options.firstRow = 480; }},
            {kro::Error::option, [](kro::Frame&, kro::Picture&, kro::Options& options) { options.rowCount = 481; }},
            {kro::Error::option, [](kro::Frame&, kro::Picture&, kro::Options& options) { options.rowCount = -1; }},
            {kro::Error::option,
             [](kro::Frame&, kro::Picture&, kro::Options& options) { options.algorithm = Algorithm{4}; }},
            {kro::Error::stride, [](kro::Frame& frame, kro::Picture&, kro::Options&) { frame.stride = 2398; }},
            {kro::Error::stride,
             [](kro::Frame&, kro::Picture& picture, kro::Options&) { picture.plane[0].stride = -3599; }},
            {kro::Error::alignment, [](kro::Frame& frame, kro::Picture&, kro::Options&) { frame.stride = 2401; }}};
}

template <class Convert>
void expectErrors(const Convert& convertWith) {
    const Scene scene(PixelFormat::BayerGB12, 480, 1200);
    const std::vector<Wrong> all = wrongs();
    for (size_t i = 0; i < all.size(); ++i) {
        const Wrong& wrong = all[i];
        SCOPED_TRACE("wrong " + std::to_string(i) + ": " + make_error_code(wrong.error).message());
        std::vector<uint8_t> room = scene.room(PixelFormat::RGB8);
        kro::Frame frame = scene.frame;
        kro::Picture picture = scene.picture(room, PixelFormat::RGB8);
        kro::Options options;
        wrong.change(frame, picture, options);
        EXPECT_EQ(convertWith(frame, picture, options), wrong.error);
        EXPECT_TRUE(sameBytes(room, scene.room(PixelFormat::RGB8)));
    }
}

std::error_code thrownBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::system_error& error) {
        EXPECT_NE(std::string(error.what()).find(error.code().message()), std::string::npos);
        return error.code();
    }
    return {};
}

TEST(HppErrors, CodesWithoutException) {
    expectErrors([](const auto& frame, const auto& picture, const auto& options) {
        std::error_code error;
        kro::convert(frame, picture, options, error);
        return error;
    });
    expectErrors([](const auto& frame, const auto& picture, const auto& options) {
        std::error_code error;
        kro::convert(frame, picture, options, forwards, error);
        return error;
    });
}

TEST(HppErrors, Exceptions) {
    expectErrors([](const auto& frame, const auto& picture, const auto& options) {
        return thrownBy([&] { kro::convert(frame, picture, options); });
    });
    expectErrors([](const auto& frame, const auto& picture, const auto& options) {
        return thrownBy([&] { kro::convert(frame, picture, options, forwards); });
    });
}

TEST(HppErrors, SuccessClearsTheCode) {
    const Scene scene(PixelFormat::BayerRG8, 960, 1280);
    std::vector<uint8_t> room = scene.room(PixelFormat::RGB8);
    const kro::Picture picture = scene.picture(room, PixelFormat::RGB8);
    std::error_code error = kro::Error::size;
    kro::convert(scene.frame, picture, {}, error);
    EXPECT_FALSE(error);
    error = kro::Error::size;
    kro::convert(scene.frame, picture, {}, forwards, error);
    EXPECT_FALSE(error);
    static_assert(noexcept(kro::convert(scene.frame, picture, kro::Options(), error)));
}

TEST(HppErrors, Category) {
    std::set<std::string> messages;
    for (const int status : {KRO_ERR_FORMAT, KRO_ERR_SIZE, KRO_ERR_OUTPUT_FORMAT, KRO_ERR_NULL, KRO_ERR_NO_MEMORY,
                             KRO_ERR_STRIDE, KRO_ERR_OPTION, KRO_ERR_ALIGNMENT}) {
        const std::error_code error(status, kro::errorCategory());
        EXPECT_EQ(error, static_cast<kro::Error>(status));
        EXPECT_EQ(error, status == KRO_ERR_NO_MEMORY ? std::errc::not_enough_memory : std::errc::invalid_argument);
        EXPECT_TRUE(messages.insert(error.message()).second) << error.message();
        EXPECT_NE(error.message(), kro::errorCategory().message(-1));
    }
    EXPECT_STREQ(kro::errorCategory().name(), "kro");
}

// ---- executors ----

TEST(HppExecutors, TheirExceptionsPassThrough) {
    const Scene scene(PixelFormat::BayerRG8, 960, 1280);
    std::vector<uint8_t> room = scene.room(PixelFormat::RGB8);
    const auto failing = [](int, const kro::BandTask&) { throw std::out_of_range("no thread"); };
    const kro::Picture picture = scene.picture(room, PixelFormat::RGB8);
    std::error_code error;
    EXPECT_THROW(kro::convert(scene.frame, picture, {}, failing), std::out_of_range);
    EXPECT_THROW(kro::convert(scene.frame, picture, {}, failing, error), std::out_of_range);
    EXPECT_TRUE(sameBytes(room, scene.room(PixelFormat::RGB8)));
}

TEST(HppThreads, EachCallOnce) {
    for (const unsigned size : {0u, 1u, 2u, 5u}) {
        kro::Threads threads(size);
        EXPECT_EQ(threads.count(), std::max(size, 1u));
        for (const int count : {0, 1, 3, 200, -1}) {
            std::vector<std::atomic<int>> calls(200);
            threads(count, [&calls](int i) { ++calls[static_cast<size_t>(i)]; });
            for (int i = 0; i < 200; ++i) {
                ASSERT_EQ(calls[static_cast<size_t>(i)], i < count ? 1 : 0) << i << " of " << count;
            }
        }
    }
    EXPECT_GE(kro::Threads().count(), 1u);
}

TEST(HppThreads, AllTakePart) {
    kro::Threads threads(4);
    std::atomic<int> arrived{0};
    std::vector<std::thread::id> seen(4);
    threads(4, [&](int i) {
        seen[static_cast<size_t>(i)] = std::this_thread::get_id();
        ++arrived;
        while (arrived < 4) {  // none goes on before all four are here
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(std::set<std::thread::id>(seen.begin(), seen.end()).size(), 4u);
}

TEST(HppThreads, ComeBackWhenAllAreDone) {
    kro::Threads threads(2);
    const std::thread::id caller = std::this_thread::get_id();
    std::atomic<int> arrived{0};
    std::atomic<bool> done{false};
    threads(2, [&](int) {
        ++arrived;
        while (arrived < 2) {
            std::this_thread::yield();
        }
        if (std::this_thread::get_id() != caller) {  // the caller is through long before
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            done = true;
        }
    });
    EXPECT_TRUE(done);
}

TEST(HppThreads, NoCallBeginsAfterAFailure) {
    kro::Threads alone(1);
    int calls = 0;
    EXPECT_THROW(alone(100,
                       [&calls](int i) {
                           ++calls;
                           i == 17 ? throw std::runtime_error("17") : void();
                       }),
                 std::runtime_error);
    EXPECT_EQ(calls, 18);
}

TEST(HppThreads, RethrowAFailureAndGoOn) {
    kro::Threads threads(3);
    for (int round = 0; round < 50; ++round) {
        EXPECT_THROW(threads(100, [](int i) { i == 17 ? throw std::runtime_error("17") : void(); }),
                     std::runtime_error);
        std::atomic<int> sum{0};
        threads(100, [&sum](int i) { sum += i; });
        ASSERT_EQ(sum, 4950);
    }
}

TEST(HppThreads, CallersTakeTurns) {
    kro::Threads threads(3);
    std::atomic<int> total{0};
    std::atomic<int> working{0};
    const auto caller = [&] {
        for (int round = 0; round < 100; ++round) {
            std::atomic<int> own{0};
            threads(10, [&](int) {
                ++own;
                ++working;
            });
            EXPECT_EQ(own, 10);
            ++total;
        }
    };
    std::thread other(caller);
    caller();
    other.join();
    EXPECT_EQ(total, 200);
    EXPECT_EQ(working, 2000);
}

}  // namespace
