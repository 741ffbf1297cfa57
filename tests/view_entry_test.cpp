// The entry for views: checks in their order, option records of every size, lengths of rows.
#include <climits>
#include <cstring>

#include "view_support.hpp"

namespace {

using reference::InputFormat;
using reference::Layout;
using reference::ViewOutput;

constexpr uint32_t noFormat = 0x0110FFFFu;

// A call that would succeed; tests spoil one thing, or several to see which is found first.
struct Call {
    Size size{6, 9};
    ViewSource frame{4096};
    ViewPicture pixels{4096};
    KroSourceView source{};
    KroPictureView picture{};
    KroViewOptions options = noOptions;

    explicit Call(const char* input = "BayerRG12", const char* output = "RGBa16", bool alphaPlane = false) {
        const InputFormat& format = inputNamed(input);
        frame.hold(format, size, numbersFor(format, noOptions, Content::noise, size, 1), Spacing::exact, false,
                   guard::Placement::againstEnd);
        source = frame.view();
        picture = pixels.lay(outputNamed(output), size, Spacing::exact, guard::Placement::againstEnd,
                             guard::Fill::one, alphaPlane);
    }
    int32_t run() const { return kro::convertView(kro::bestKernels(), &source, &picture, &options); }
    void expect(int32_t status, const char* what) const {
        EXPECT_EQ(status, run()) << what;
        if (status != KRO_OK) {
            EXPECT_TRUE(pixels.untouched()) << what;
        }
    }
};

void moveByOneByte(const void*& address) { address = static_cast<const uint8_t*>(address) + 1; }
void moveByOneByte(void*& address) { address = static_cast<uint8_t*>(address) + 1; }

// ---- each check ----

TEST(ViewEntry, NullPointers) {
    const Call call;
    const kro::Kernels& table = kro::bestKernels();
    EXPECT_EQ(KRO_ERR_NULL, kro::convertView(table, nullptr, &call.picture, &call.options));
    EXPECT_EQ(KRO_ERR_NULL, kro::convertView(table, &call.source, nullptr, &call.options));
    EXPECT_EQ(KRO_ERR_NULL, kro::convertView(table, nullptr, nullptr, nullptr));
    Call noData;
    noData.source.data = nullptr;
    noData.expect(KRO_ERR_NULL, "data");
    for (const char* output : {"RGB8Planar", "BGR8Planar", "RGB16Planar", "BGR16Planar"}) {
        for (int plane = 0; plane < 3; ++plane) {
            Call noPlane("BayerRG12", output, true);
            noPlane.picture.plane[plane] = nullptr;
            noPlane.expect(KRO_ERR_NULL, output);
        }
    }
    Call interleaved;
    interleaved.picture.plane[0] = nullptr;
    interleaved.picture.plane[1] = interleaved.picture.plane[2] = call.picture.plane[0];
    interleaved.expect(KRO_ERR_NULL, "plane 0");
}

// What stands in the record for planes that the format has not is not even looked at.
TEST(ViewEntry, OnlyPlanesOfTheFormatMatter) {
    for (const ViewOutput& output : reference::viewOutputs) {
        Call call("BayerRG12", output.name);
        std::vector<uint8_t> elsewhere(4096, 0x11);
        for (int plane = output.planar ? 3 : 1; plane < 4; ++plane) {
            call.picture.plane[plane] = output.planar ? nullptr : elsewhere.data() + 1;
            call.picture.stride[plane] = plane == 2 ? 1 : PTRDIFF_MIN;
        }
        call.expect(KRO_OK, output.name);
        EXPECT_EQ(std::vector<uint8_t>(4096, 0x11), elsewhere) << output.name;
    }
}

TEST(ViewEntry, SizesBelowFour) {
    for (const Size size : {Size{3, 100}, Size{100, 3}, Size{3, 3}, Size{0, 8}, Size{8, 0}, Size{-5, 8}, Size{8, -5},
                            Size{-8, -8}, Size{INT_MIN, 8}, Size{8, INT_MIN}}) {
        Call call;
        call.source.height = size.height;
        call.source.width = size.width;
        call.expect(KRO_ERR_SIZE, describe(size).c_str());
    }
}

TEST(ViewEntry, ViewsLargerThanTheAddressSpace) {
    for (const ptrdiff_t stride : {PTRDIFF_MAX - 1, PTRDIFF_MIN, PTRDIFF_MIN + 2, PTRDIFF_MAX / 4 * 2}) {
        Call source;
        source.source.stride = stride;
        source.expect(KRO_ERR_SIZE, "stride of the source");
        Call picture;
        picture.picture.stride[0] = stride;
        picture.expect(KRO_ERR_SIZE, "stride of the picture");
        Call plane("BayerRG12", "RGB16Planar", true);
        plane.picture.stride[3] = stride;
        plane.expect(KRO_ERR_SIZE, "stride of the alpha plane");
    }
    Call rows;  // 2^31 rows of 2^31 pixels of 8 bytes
    rows.source.height = rows.source.width = INT_MAX;
    rows.source.stride = rows.picture.stride[0] = 0;
    rows.expect(KRO_ERR_SIZE, "rows without gaps");
}

TEST(ViewEntry, UnknownFormats) {
    for (const uint32_t format :
         {KRO_RGB8, KRO_RGB16, KRO_ARGB8, noFormat, 0u, 0xFFFFFFFFu, 0x010A0045u, 0x010E0109u}) {
        Call call;
        call.source.format = format;
        call.expect(KRO_ERR_FORMAT, "input");
    }
    for (const uint32_t format : {KRO_MONO12, KRO_BAYER_RG8, KRO_Y10P, noFormat, 0u, 0xFFFFFFFFu, 0x8230000Au}) {
        Call call;
        call.picture.format = format;
        call.expect(KRO_ERR_OUTPUT_FORMAT, "output");
    }
}

TEST(ViewEntry, AlgorithmsAndFlags) {
    for (const char* input : {"BayerRG8", "Mono8", "Mono12p"}) {  // grey knows no algorithm, but checks it
        for (const int32_t algorithm : {3, -1, INT_MAX, INT_MIN}) {
            Call call(input);
            call.options.algorithm = algorithm;
            call.expect(KRO_ERR_OPTION, "algorithm");
        }
    }
    for (const uint32_t flag : {16u, 32u, 0x80000000u, 0xFFFFFFFFu}) {
        Call call;
        call.options.flags = flag;
        call.expect(KRO_ERR_OPTION, "flag");
    }
}

TEST(ViewEntry, AlphaRange) {
    const struct {
        const char* output;
        int32_t alpha, status;
    } cases[] = {{"RGBa8", 255, KRO_OK},
                 {"RGBa8", 256, KRO_ERR_OPTION},
                 {"BGRx8", 256, KRO_ERR_OPTION},
                 {"aRGB8", -1, KRO_ERR_OPTION},
                 {"RGB8Planar", 0, KRO_OK},
                 {"RGB8Planar", 256, KRO_ERR_OPTION},
                 {"RGBa16", 256, KRO_OK},
                 {"RGBa16", 65535, KRO_OK},
                 {"aBGR16", 65536, KRO_ERR_OPTION},
                 {"RGB16Planar", INT_MIN, KRO_ERR_OPTION}};
    for (const auto& c : cases) {
        Call call("BayerRG12", c.output, true);
        call.options.flags = KRO_VIEW_ALPHA;
        call.options.alpha = c.alpha;
        call.expect(c.status, c.output);
    }
}

TEST(ViewEntry, BitsAndWordFlagsFitTheFormat) {
    for (const InputFormat& format : reference::viewInputFormats()) {
        const bool words = format.layout == Layout::words;
        for (const int32_t bits : {INT_MIN, -1, 0, 1, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, INT_MAX}) {
            Call call(format.name);
            call.options.bits = bits;
            const bool fits = bits == 0 || (words ? bits >= 8 && bits <= 16 : bits == format.bits);
            call.expect(fits ? KRO_OK : KRO_ERR_OPTION, (format.name + std::to_string(bits)).c_str());
        }
        for (const uint32_t flags :
             {KRO_VIEW_BIG_ENDIAN, KRO_VIEW_LEFT_ALIGNED, KRO_VIEW_BIG_ENDIAN | KRO_VIEW_LEFT_ALIGNED}) {
            Call call(format.name);
            call.options.flags = flags;
            call.expect(words ? KRO_OK : KRO_ERR_OPTION, format.name);
        }
        Call call(format.name, "BGR8");
        call.options.flags = KRO_VIEW_ALPHA | KRO_VIEW_FULL_RANGE;  // without effect, but no error
        call.expect(KRO_OK, format.name);
    }
}

TEST(ViewEntry, BandsOutsideThePicture) {
    const struct {
        int32_t first, rows, status;
    } cases[] = {{0, 6, KRO_OK},
                 {5, 1, KRO_OK},
                 {5, 0, KRO_OK},
                 {6, 0, KRO_ERR_OPTION},
                 {6, 1, KRO_ERR_OPTION},
                 {0, 7, KRO_ERR_OPTION},
                 {5, 2, KRO_ERR_OPTION},
                 {-1, 0, KRO_ERR_OPTION},
                 {-1, 3, KRO_ERR_OPTION},
                 {0, -1, KRO_ERR_OPTION},
                 {3, -2, KRO_ERR_OPTION},
                 {1, INT_MAX, KRO_ERR_OPTION},
                 {INT_MAX, 1, KRO_ERR_OPTION},
                 {INT_MIN, INT_MIN, KRO_ERR_OPTION},
                 {INT_MIN, 0, KRO_ERR_OPTION}};
    for (const auto& c : cases) {
        Call call;
        call.options.firstRow = c.first;
        call.options.rowCount = c.rows;
        call.expect(c.status, (std::to_string(c.first) + " + " + std::to_string(c.rows)).c_str());
    }
}

TEST(ViewEntry, RowsCloserThanTheyAreLong) {
    for (const InputFormat& format : reference::viewInputFormats()) {
        const ptrdiff_t row = static_cast<ptrdiff_t>(reference::inputBytes(format, 9));
        const ptrdiff_t less = format.layout == Layout::words ? row - 2 : row - 1;
        for (const ptrdiff_t stride : {less, -less, ptrdiff_t{1}, ptrdiff_t{-1}}) {
            Call call(format.name);
            call.source.stride = stride;
            call.expect(KRO_ERR_STRIDE, format.name);
        }
    }
    for (const ViewOutput& output : reference::viewOutputs) {
        const size_t planes = output.planar ? 4 : 1;
        for (size_t plane = 0; plane < planes; ++plane) {
            Call call("BayerRG12", output.name, true);
            const ptrdiff_t step = output.depth / 8;
            const ptrdiff_t row =
                9 * step * (output.planar ? 1 : static_cast<ptrdiff_t>(std::strlen(output.letters)));
            for (const ptrdiff_t stride : {row - step, step - row, ptrdiff_t{1}}) {
                call.picture.stride[plane] = stride;
                call.expect(KRO_ERR_STRIDE, output.name);
            }
        }
    }
}

TEST(ViewEntry, MisalignedWords) {
    Call source;
    moveByOneByte(source.source.data);
    source.expect(KRO_ERR_ALIGNMENT, "source");
    Call sourceStride;
    sourceStride.source.stride += 1;
    sourceStride.expect(KRO_ERR_ALIGNMENT, "stride of the source");
    for (const ViewOutput& output : reference::viewOutputs) {
        for (size_t plane = 0; plane < (output.planar ? 4u : 1u) && output.depth == 16; ++plane) {
            Call address("BayerRG8", output.name, true);
            moveByOneByte(address.picture.plane[plane]);
            address.expect(KRO_ERR_ALIGNMENT, output.name);
            Call stride("BayerRG8", output.name, true);
            stride.picture.stride[plane] = 9 * 16 + 1;
            stride.expect(KRO_ERR_ALIGNMENT, output.name);
        }
    }
}

// ---- their order ----

TEST(ViewEntry, TheFirstOfSeveralFaultsIsReported) {
    const struct {
        int32_t status;
        void (*spoil)(Call&);
    } faults[] = {
        {KRO_ERR_NULL, [](Call& c) { c.source.data = nullptr; }},
        {KRO_ERR_SIZE, [](Call& c) { c.source.height = 3; }},
        {KRO_ERR_FORMAT, [](Call& c) { c.source.format = noFormat; }},
        {KRO_ERR_OUTPUT_FORMAT, [](Call& c) { c.picture.format = noFormat; }},
        {KRO_ERR_OPTION, [](Call& c) { c.options.bits = 17; }},
        {KRO_ERR_STRIDE, [](Call& c) { c.picture.stride[0] = 3; }},
        {KRO_ERR_ALIGNMENT, [](Call& c) { c.source.stride |= 1; }},
    };
    for (size_t first = 0; first < std::size(faults); ++first) {
        for (size_t second = first; second < std::size(faults); ++second) {
            Call call;
            faults[second].spoil(call);
            faults[first].spoil(call);
            call.expect(faults[first].status, std::to_string(second).c_str());
        }
        Call call;
        for (size_t all = first; all < std::size(faults); ++all) {
            faults[all].spoil(call);
        }
        call.expect(faults[first].status, "and all after it");
    }
}

// ---- option records ----

// A record of so many bytes that ends where readable memory does.
struct Record {
    guard::Buffer buffer{4096};
    KroViewOptions* options;

    explicit Record(const std::vector<uint8_t>& bytes)
        : options(const_cast<KroViewOptions*>(
              reinterpret_cast<const KroViewOptions*>(buffer.hold(bytes, guard::Placement::againstEnd)))) {}
};

std::vector<uint8_t> recordBytes(KroViewOptions options, size_t size, uint8_t beyond = 0) {
    options.size = static_cast<uint32_t>(size);
    std::vector<uint8_t> bytes(std::max(size, sizeof options), beyond);
    std::memcpy(bytes.data(), &options, sizeof options);
    bytes.resize(std::max<size_t>(size, 4));
    return bytes;
}

int32_t runWith(const Call& call, const std::vector<uint8_t>& record) {
    const Record placed(record);
    return kro::convertView(kro::bestKernels(), &call.source, &call.picture, placed.options);
}

Planes expectedOf(const Call& call, const KroViewOptions& options) {
    reference::Scene scene(inputNamed("BayerRG12"), call.frame.rows(), wordsOf(inputNamed("BayerRG12"), options));
    return planesOf(scene, outputNamed("RGBa16"), options);
}

TEST(ViewEntry, RecordsBelowFourBytesAreRefused) {
    for (const uint32_t size : {0u, 1u, 2u, 3u}) {
        Call call;
        call.options.size = size;
        call.expect(KRO_ERR_OPTION, "size");
    }
}

// Every field that a shorter record lacks counts as 0, whatever lies in memory there.
TEST(ViewEntry, ShorterRecordsEndInZeros) {
    KroViewOptions given = withAlgorithm(reference::Method::bilinear);
    given.flags = KRO_VIEW_ALPHA | KRO_VIEW_FULL_RANGE;
    given.alpha = 0x1234;
    given.bits = 13;
    given.firstRow = 2;
    given.rowCount = 3;
    for (size_t size = 4; size <= sizeof given; ++size) {
        Call call;
        const std::vector<uint8_t> bytes = recordBytes(given, size);
        KroViewOptions counts{};
        std::memcpy(&counts, bytes.data(), size);
        EXPECT_EQ(KRO_OK, runWith(call, bytes));
        EXPECT_TRUE(call.pixels.holds(expectedOf(call, counts), bandOf(counts, call.size.height))) << size;
    }
}

TEST(ViewEntry, ARecordOfNothingButItsSizeMeansNearest) {
    Call call;
    EXPECT_EQ(KRO_OK, runWith(call, {4, 0, 0, 0}));
    EXPECT_TRUE(call.pixels.holds(expectedOf(call, withAlgorithm(reference::Method::nearest)), {0, 6}));
}

TEST(ViewEntry, NoRecordMeansEdge) {
    Call call;
    EXPECT_EQ(KRO_OK, kro::convertView(kro::bestKernels(), &call.source, &call.picture, nullptr));
    EXPECT_TRUE(call.pixels.holds(expectedOf(call, withAlgorithm(reference::Method::edge)), {0, 6}));
}

TEST(ViewEntry, LongerRecordsMustEndInZeros) {
    const size_t known = sizeof(KroViewOptions);
    for (const size_t more : {size_t{1}, size_t{4}, size_t{9}, size_t{100}}) {
        Call good;
        EXPECT_EQ(KRO_OK, runWith(good, recordBytes(noOptions, known + more)));
        EXPECT_TRUE(good.pixels.holds(expectedOf(good, noOptions), {0, 6}));
        for (const size_t at : {known, known + more / 2, known + more - 1}) {
            Call bad;
            std::vector<uint8_t> bytes = recordBytes(noOptions, known + more);
            bytes[at] = 1;
            EXPECT_EQ(KRO_ERR_OPTION, runWith(bad, bytes)) << more << " " << at;
            EXPECT_TRUE(bad.pixels.untouched());
        }
    }
}

// ---- lengths of rows ----

TEST(ViewEntry, RowBytesOfEveryFormat) {
    for (const int32_t width : {1, 2, 3, 4, 5, 6, 7, 8, 9, 1536, 4095, 1 << 20}) {
        for (const InputFormat& format : reference::viewInputFormats()) {
            EXPECT_EQ(static_cast<ptrdiff_t>(reference::inputBytes(format, static_cast<size_t>(width))),
                      kroRowBytes(format.code, width))
                << format.name << " " << width;
        }
        for (const ViewOutput& output : reference::viewOutputs) {
            const size_t pixel = reference::bytesOf(reference::planesOf(output, false)[0], output.depth);
            EXPECT_EQ(static_cast<ptrdiff_t>(pixel) * width, kroRowBytes(output.code, width)) << output.name;
        }
    }
}

TEST(ViewEntry, RowBytesOfKnownRows) {
    EXPECT_EQ(2304, kroRowBytes(KRO_SRGGB12P, 1536));
    EXPECT_EQ(51, kroRowBytes(KRO_MONO12_PACKED, 33));
    EXPECT_EQ(10, kroRowBytes(KRO_MONO10P, 5));
    EXPECT_EQ(14, kroRowBytes(KRO_BAYER_GB14P, 5));
    EXPECT_EQ(40, kroRowBytes(KRO_ARGB16, 5));
    EXPECT_EQ(10, kroRowBytes(KRO_BGR16_PLANAR, 5));
    EXPECT_EQ(5, kroRowBytes(KRO_RGB8_PLANAR, 5));
}

TEST(ViewEntry, RowBytesOfNothing) {
    for (const int32_t width : {0, -1, INT_MIN}) {
        EXPECT_EQ(0, kroRowBytes(KRO_BAYER_RG8, width));
        EXPECT_EQ(0, kroRowBytes(KRO_RGB8, width));
    }
    for (const uint32_t format : {noFormat, 0u, 0xFFFFFFFFu}) {
        EXPECT_EQ(0, kroRowBytes(format, 64));
    }
}

#if PTRDIFF_MAX > INT32_MAX
TEST(ViewEntry, RowBytesBeyondFourGigabytes) {
    EXPECT_EQ(ptrdiff_t{8} * INT_MAX, kroRowBytes(KRO_RGBA16, INT_MAX));
    EXPECT_EQ(ptrdiff_t{5} << 29, kroRowBytes(KRO_MONO10P, INT_MAX));
}
#endif

}  // namespace
