// The demosaicing entry: checks in their order, scratch requests, what stays untouched.
#include <algorithm>
#include <climits>
#include <cstring>

#include "KRODemosaicing.hpp"
#include "allocation.hpp"
#include "kro/view.h"
#include "support.hpp"
#include "view_reference.hpp"

namespace {

constexpr int32_t unknownAlgorithms[] = {KRO_FINE, 4, 7, -1, INT32_MAX, INT32_MIN};

// A handle and two images that any call would accept; tests spoil one thing at a time.
struct Call {
    Size size;
    std::vector<uint8_t> source;
    guard::Buffer destination;
    KroContext handle{};
    KroImage input{};
    KroImage output{};

    explicit Call(Size s = {8, 8}) : size(s), source(s.pixels() * 2 + 3, uint8_t{77}), destination(s.pixels() * 4) {
        kroInit(&handle);
        input = {s.height, s.width, KRO_BAYER_RG8, source.data()};
        output = {-7, -8, 0xABCDu, destination.place(s.pixels() * 4, guard::Placement::againstEnd, guard::Fill::one)};
    }
    ~Call() { std::free(handle.scratch.data); }

    int32_t run(const kro::Kernels& table, KroAlgorithm algorithm = KRO_NEAREST) {
        return kro::demosaicing(table, &handle, &input, algorithm, &output);
    }
    void expectDescriptorUntouched() const {
        EXPECT_EQ(-7, output.height);
        EXPECT_EQ(-8, output.width);
        EXPECT_EQ(0xABCDu, output.pixelFormat);
    }
    void expectNothingWritten() const {
        EXPECT_TRUE(holds(destination, untouched(static_cast<size_t>(size.height * size.width * 4))));
    }
};

const kro::Kernels& anyTable() { return kro::bestKernels(); }

TEST(Entry, NullPointersInTheirOrder) {
    Call call;
    const KroImage badInput{0, 0, 0, nullptr};
    KroImage badOutput{0, 0, 0, nullptr};
    EXPECT_EQ(KRO_ERR_NULL, kro::demosaicing(anyTable(), nullptr, nullptr, 0, nullptr));
    EXPECT_EQ(KRO_ERR_NULL, kro::demosaicing(anyTable(), &call.handle, nullptr, 0, &call.output));
    EXPECT_EQ(KRO_ERR_NULL, kro::demosaicing(anyTable(), nullptr, &call.input, 0, &call.output));
    EXPECT_EQ(KRO_ERR_NULL, kro::demosaicing(anyTable(), &call.handle, &call.input, 0, nullptr));
    // Null data is found before the sizes and formats that are wrong too.
    EXPECT_EQ(KRO_ERR_NULL, kro::demosaicing(anyTable(), &call.handle, &badInput, 0, &call.output));
    call.input.height = 1;
    call.input.pixelFormat = 1;
    EXPECT_EQ(KRO_ERR_NULL, kro::demosaicing(anyTable(), &call.handle, &call.input, 0, &badOutput));
    EXPECT_EQ(nullptr, call.handle.scratch.data);
    call.expectDescriptorUntouched();
    call.expectNothingWritten();
}

TEST(Entry, SizesBelowFourAreRefusedBeforeFormats) {
    for (Size size : {Size{3, 100}, Size{100, 3}, Size{3, 3}, Size{0, 8}, Size{8, 0}, Size{-5, 8}, Size{8, -5},
                      Size{-8, -8}, Size{INT_MIN, 8}, Size{8, INT_MIN}}) {
        for (uint32_t format : {KRO_BAYER_RG8, KRO_BGR8}) {
            Call call;
            call.input.height = size.height;
            call.input.width = size.width;
            call.input.pixelFormat = format;
            EXPECT_EQ(KRO_ERR_SIZE, call.run(anyTable())) << describe(size);
            EXPECT_EQ(nullptr, call.handle.scratch.data);
            call.expectDescriptorUntouched();
            call.expectNothingWritten();
        }
    }
}

TEST(Entry, ProductNegativeIn32BitsIsRefused) {
    for (Size size : {Size{46341, 46341}, Size{65536, 32768}, Size{4, INT_MAX}, Size{1 << 16, (1 << 16) - 1}}) {
        Call call;
        call.input.height = size.height;
        call.input.width = size.width;
        call.input.pixelFormat = 1;  // unknown: found later
        EXPECT_EQ(KRO_ERR_SIZE, call.run(anyTable())) << describe(size);
    }
}

TEST(Entry, ProductThatWrapsToAPositiveValuePassesTheSizeCheck) {
    Call call;
    call.input.height = 1 << 16;
    call.input.width = 1 << 16;
    call.input.pixelFormat = 1;
    EXPECT_EQ(KRO_ERR_FORMAT, call.run(anyTable()));
}

TEST(Entry, UnknownInputFormatsAreRefused) {
    for (uint32_t format : {KRO_BGR8, KRO_RGB8, KRO_BGRA8, KRO_RGB8_PLANAR, 0u, 0x01080002u, 0x01080007u, 0x0108000Cu,
                            0xFFFFFFFFu, 0x0110002Du, 0x01100032u}) {
        Call call;
        call.input.pixelFormat = format;
        call.handle.outputFormat = 1;  // wrong too, but found later
        EXPECT_EQ(KRO_ERR_FORMAT, call.run(anyTable())) << std::hex << format;
        EXPECT_EQ(nullptr, call.handle.scratch.data);
        call.expectDescriptorUntouched();
        call.expectNothingWritten();
    }
}

TEST(Entry, FormatsOfViewsAloneAreRefused) {
    for (const reference::InputFormat& format : reference::furtherInputFormats) {
        Call call;
        call.input.pixelFormat = format.code;
        EXPECT_EQ(KRO_ERR_FORMAT, call.run(anyTable())) << format.name;
        EXPECT_EQ(nullptr, call.handle.scratch.data);
        call.expectDescriptorUntouched();
        call.expectNothingWritten();
    }
    for (const reference::ViewOutput& output : reference::viewOutputs) {
        const auto& known = reference::outputFormats;
        if (std::any_of(known.begin(), known.end(), [&](const auto& format) { return format.code == output.code; })) {
            continue;
        }
        Call call;
        EXPECT_EQ(KRO_ERR_OUTPUT_FORMAT, kroDemosaicSetConfig(&call.handle, &output.code)) << output.name;
        call.handle.outputFormat = output.code;
        EXPECT_EQ(KRO_ERR_OUTPUT_FORMAT, call.run(anyTable())) << output.name;
        call.expectDescriptorUntouched();
        call.expectNothingWritten();
    }
}

TEST(Entry, ScratchIsGrownToTheExactNeed) {
    for (const reference::InputFormat& format : reference::inputFormats) {
        for (Size size : {Size{4, 4}, Size{5, 7}, Size{12, 33}}) {
            for (KroAlgorithm algorithm : {KRO_NEAREST, KRO_BILINEAR, KRO_EDGE}) {
                Call call(size);
                call.input.pixelFormat = format.code;
                EXPECT_EQ(KRO_OK, call.run(anyTable(), algorithm)) << format.name;
                const int32_t need =
                    format.layout == reference::Layout::bytes ? size.width + 64 : (size.height + 1) * size.width + 64;
                EXPECT_EQ(need, call.handle.scratch.capacity) << format.name << " " << describe(size);
                EXPECT_EQ(static_cast<size_t>(need), allocation::lastSize());
            }
        }
    }
}

TEST(Entry, EqualFramesAllocateOnceAndSmallerOnesNever) {
    Call call({8, 8});
    call.input.pixelFormat = KRO_BAYER_RG12;
    ASSERT_EQ(KRO_OK, call.run(anyTable()));
    const int after = allocation::count();
    void* const data = call.handle.scratch.data;
    for (int32_t height : {8, 8, 4}) {
        call.input.height = height;
        EXPECT_EQ(KRO_OK, call.run(anyTable()));
    }
    EXPECT_EQ(after, allocation::count());
    EXPECT_EQ(data, call.handle.scratch.data);
    EXPECT_EQ(9 * 8 + 64, call.handle.scratch.capacity);
}

TEST(Entry, FailedAllocationLeavesScratchEmptyAndOutputUntouched) {
    Call call;
    ASSERT_EQ(KRO_OK, kroMemRealloc(&call.handle.scratch, 10));
    allocation::refuse(true);
    const int32_t status = call.run(anyTable());
    allocation::refuse(false);
    EXPECT_EQ(KRO_ERR_NO_MEMORY, status);
    EXPECT_EQ(nullptr, call.handle.scratch.data);
    EXPECT_EQ(0, call.handle.scratch.capacity);
    call.expectDescriptorUntouched();
    call.expectNothingWritten();
}

TEST(Entry, ScratchNeedBeyond31BitsIsRefusedBeforeAnythingIsTouched) {
    const struct {
        Size size;
        uint32_t format;
    } cases[] = {{{46341, 46340}, KRO_BAYER_RG12},         // exact need 2^31 + 4696 or so
                 {{1 << 16, 1 << 16}, KRO_MONO10_PACKED},  // product wraps to 0
                 {{5, INT_MAX - 9}, KRO_BAYER_GB8},        // width + 64
                 {{5, INT_MAX - 9}, KRO_MONO16},
                 {{(1 << 16) + 4, 1 << 16}, KRO_BAYER_BG10}};
    for (const auto& c : cases) {
        Call call;
        ASSERT_EQ(KRO_OK, kroMemRealloc(&call.handle.scratch, 10));
        void* const data = call.handle.scratch.data;
        const int before = allocation::count();
        call.input.height = c.size.height;
        call.input.width = c.size.width;
        call.input.pixelFormat = c.format;
        EXPECT_EQ(KRO_ERR_NO_MEMORY, call.run(anyTable())) << describe(c.size);
        EXPECT_EQ(before, allocation::count());
        EXPECT_EQ(data, call.handle.scratch.data);
        EXPECT_EQ(10, call.handle.scratch.capacity);
        call.expectDescriptorUntouched();
        call.expectNothingWritten();
    }
}

TEST(Entry, OutputFormatIsCheckedBeforeTheAlgorithmAndAfterTheScratch) {
    for (uint32_t input :
         {KRO_BAYER_RG8, KRO_BAYER_GR10, KRO_BAYER_GB12_PACKED, KRO_BAYER_BG16, KRO_MONO8, KRO_MONO12}) {
        for (KroAlgorithm algorithm : {KRO_NEAREST, KRO_BILINEAR, KRO_EDGE, KRO_FINE, -1}) {
            Call call;
            call.input.pixelFormat = input;
            call.handle.outputFormat = 0x02180016u;
            EXPECT_EQ(KRO_ERR_OUTPUT_FORMAT, call.run(anyTable(), algorithm));
            EXPECT_NE(0, call.handle.scratch.capacity);
            call.expectDescriptorUntouched();
            call.expectNothingWritten();
        }
    }
}

TEST(Entry, UnknownAlgorithmSucceedsWithoutWriting) {
    for (const kro::Kernels* table : usableTables()) {
        for (KroAlgorithm algorithm : unknownAlgorithms) {
            for (const reference::OutputFormat& output : reference::outputFormats) {
                for (uint32_t input : {KRO_BAYER_RG8, KRO_BAYER_GR8, KRO_BAYER_GB8, KRO_BAYER_BG8, KRO_BAYER_BG12}) {
                    Call call;
                    call.input.pixelFormat = input;
                    call.handle.outputFormat = output.code;
                    EXPECT_EQ(KRO_OK, call.run(*table, algorithm));
                    EXPECT_EQ(8, call.output.height);
                    EXPECT_EQ(8, call.output.width);
                    EXPECT_EQ(output.code, call.output.pixelFormat);
                    call.expectNothingWritten();
                }
            }
        }
    }
}

TEST(Entry, GreyInputIgnoresTheAlgorithm) {
    for (const kro::Kernels* table : usableTables()) {
        Call call;
        call.input.pixelFormat = KRO_MONO8;
        call.handle.outputFormat = KRO_MONO8;
        EXPECT_EQ(KRO_OK, call.run(*table, 7));
        EXPECT_EQ(0, std::memcmp(call.source.data(), call.output.data, 64));
    }
}

TEST(Entry, InputStaysAsItWas) {
    Call call;
    const std::vector<uint8_t> before = call.source;
    const std::vector<uint8_t> described = recordBytes(call.input);
    for (KroAlgorithm algorithm : {KRO_NEAREST, KRO_BILINEAR, KRO_EDGE}) {
        EXPECT_EQ(KRO_OK, call.run(anyTable(), algorithm));
    }
    EXPECT_EQ(before, call.source);
    EXPECT_EQ(described, recordBytes(call.input));
}

}  // namespace
