// The entry for views: checks in their order, lengths of rows.
#include <climits>
#include <cstring>

#include "view_call.hpp"

namespace {

using reference::InputFormat;
using reference::Layout;
using reference::ViewOutput;

constexpr uint32_t noFormat = 0x0110FFFFu;

void moveByOneByte(const void*& address) { address = static_cast<const uint8_t*>(address) + 1; }
void moveByOneByte(void*& address) { address = static_cast<uint8_t*>(address) + 1; }

// ---- each check ----

TEST(ViewEntry, NullPointers) {
    const ViewCall call;
    const kro::Kernels& table = kro::bestKernels();
    EXPECT_EQ(KRO_ERR_NULL, kro::convertView(table, nullptr, &call.picture, &call.options));
    EXPECT_EQ(KRO_ERR_NULL, kro::convertView(table, &call.source, nullptr, &call.options));
    EXPECT_EQ(KRO_ERR_NULL, kro::convertView(table, nullptr, nullptr, nullptr));
    ViewCall noData;
    noData.source.data = nullptr;
    noData.expect(KRO_ERR_NULL, "data");
    for (const char* output : {"RGB8Planar", "BGR8Planar", "RGB16Planar", "BGR16Planar"}) {
        for (int plane = 0; plane < 3; ++plane) {
            ViewCall noPlane("BayerRG12", output, true);
            noPlane.picture.plane[plane] = nullptr;
            noPlane.expect(KRO_ERR_NULL, output);
        }
    }
    ViewCall interleaved;
    interleaved.picture.plane[0] = nullptr;
    interleaved.picture.plane[1] = interleaved.picture.plane[2] = call.picture.plane[0];
    interleaved.expect(KRO_ERR_NULL, "plane 0");
}

// What stands in the record for planes that the format has not is not even looked at.
TEST(ViewEntry, OnlyPlanesOfTheFormatMatter) {
    for (const ViewOutput& output : reference::viewOutputs) {
        ViewCall call("BayerRG12", output.name);
        std::vector<uint8_t> elsewhere(4096, 0x11);
        for (int plane = output.planar ? 3 : 1; plane < 4; ++plane) {
            call.picture.plane[plane] = output.planar ? nullptr : elsewhere.data() + 1;
            call.picture.stride[plane] = plane == 2 ? 1 : PTRDIFF_MIN;
        }
        call.expect(KRO_OK, output.name);
        EXPECT_EQ(std::vector<uint8_t>(4096, 0x11), elsewhere) << output.name;
    }
}

TEST(ViewEntry, SidesBeyondTwoToThe30) {
    constexpr int32_t beyond = (1 << 30) + 1;
    for (const Size size : {Size{beyond, 8}, Size{8, beyond}, Size{INT_MAX, 8}, Size{8, INT_MAX}}) {
        ViewCall call;
        call.source.height = size.height;
        call.source.width = size.width;
        call.expect(KRO_ERR_SIZE, describe(size).c_str());
    }
}

TEST(ViewEntry, SizesBelowFour) {
    for (const Size size : {Size{3, 100}, Size{100, 3}, Size{3, 3}, Size{0, 8}, Size{8, 0}, Size{-5, 8}, Size{8, -5},
                            Size{-8, -8}, Size{INT_MIN, 8}, Size{8, INT_MIN}}) {
        ViewCall call;
        call.source.height = size.height;
        call.source.width = size.width;
        call.expect(KRO_ERR_SIZE, describe(size).c_str());
    }
}

TEST(ViewEntry, ViewsLargerThanTheAddressSpace) {
    for (const ptrdiff_t stride : {PTRDIFF_MAX - 1, PTRDIFF_MIN, PTRDIFF_MIN + 2, PTRDIFF_MAX / 4 * 2}) {
        ViewCall source;
        source.source.stride = stride;
        source.expect(KRO_ERR_SIZE, "stride of the source");
        ViewCall picture;
        picture.picture.stride[0] = stride;
        picture.expect(KRO_ERR_SIZE, "stride of the picture");
        ViewCall plane("BayerRG12", "RGB16Planar", true);
        plane.picture.stride[3] = stride;
        plane.expect(KRO_ERR_SIZE, "stride of the alpha plane");
    }
    ViewCall rows;  // 2^31 rows of 2^31 pixels of 8 bytes
    rows.source.height = rows.source.width = INT_MAX;
    rows.source.stride = rows.picture.stride[0] = 0;
    rows.expect(KRO_ERR_SIZE, "rows without gaps");
}

TEST(ViewEntry, UnknownFormats) {
    for (const uint32_t format :
         {KRO_RGB8, KRO_RGB16, KRO_ARGB8, noFormat, 0u, 0xFFFFFFFFu, 0x010A0045u, 0x010E0109u}) {
        ViewCall call;
        call.source.format = format;
        call.expect(KRO_ERR_FORMAT, "input");
    }
    for (const uint32_t format : {KRO_MONO12, KRO_BAYER_RG8, KRO_Y10P, noFormat, 0u, 0xFFFFFFFFu, 0x8230000Au}) {
        ViewCall call;
        call.picture.format = format;
        call.expect(KRO_ERR_OUTPUT_FORMAT, "output");
    }
}

TEST(ViewEntry, RowsCloserThanTheyAreLong) {
    for (const InputFormat& format : reference::viewInputFormats()) {
        const ptrdiff_t row = static_cast<ptrdiff_t>(reference::inputBytes(format, 9));
        const ptrdiff_t less = format.layout == Layout::words ? row - 2 : row - 1;
        for (const ptrdiff_t stride : {less, -less, ptrdiff_t{1}, ptrdiff_t{-1}}) {
            ViewCall call(format.name);
            call.source.stride = stride;
            call.expect(KRO_ERR_STRIDE, format.name);
        }
    }
    for (const ViewOutput& output : reference::viewOutputs) {
        const size_t planes = output.planar ? 4 : 1;
        for (size_t plane = 0; plane < planes; ++plane) {
            ViewCall call("BayerRG12", output.name, true);
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
    ViewCall source;
    moveByOneByte(source.source.data);
    source.expect(KRO_ERR_ALIGNMENT, "source");
    ViewCall sourceStride;
    sourceStride.source.stride += 1;
    sourceStride.expect(KRO_ERR_ALIGNMENT, "stride of the source");
    for (const ViewOutput& output : reference::viewOutputs) {
        for (size_t plane = 0; plane < (output.planar ? 4u : 1u) && output.depth == 16; ++plane) {
            ViewCall address("BayerRG8", output.name, true);
            moveByOneByte(address.picture.plane[plane]);
            address.expect(KRO_ERR_ALIGNMENT, output.name);
            ViewCall stride("BayerRG8", output.name, true);
            stride.picture.stride[plane] = 9 * 16 + 1;
            stride.expect(KRO_ERR_ALIGNMENT, output.name);
        }
    }
}

// ---- their order ----

TEST(ViewEntry, TheFirstOfSeveralFaultsIsReported) {
    const struct {
        int32_t status;
        void (*spoil)(ViewCall&);
    } faults[] = {
        {KRO_ERR_NULL, [](ViewCall& c) { c.source.data = nullptr; }},
        {KRO_ERR_SIZE, [](ViewCall& c) { c.source.height = 3; }},
        {KRO_ERR_FORMAT, [](ViewCall& c) { c.source.format = noFormat; }},
        {KRO_ERR_OUTPUT_FORMAT, [](ViewCall& c) { c.picture.format = noFormat; }},
        {KRO_ERR_OPTION, [](ViewCall& c) { c.options.bits = 17; }},
        {KRO_ERR_STRIDE, [](ViewCall& c) { c.picture.stride[0] = 3; }},
        {KRO_ERR_ALIGNMENT, [](ViewCall& c) { c.source.stride |= 1; }},
    };
    for (size_t first = 0; first < std::size(faults); ++first) {
        for (size_t second = first; second < std::size(faults); ++second) {
            ViewCall call;
            faults[second].spoil(call);
            faults[first].spoil(call);
            call.expect(faults[first].status, std::to_string(second).c_str());
        }
        ViewCall call;
        for (size_t all = first; all < std::size(faults); ++all) {
            faults[all].spoil(call);
        }
        call.expect(faults[first].status, "and all after it");
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
