// Every allocation of the public interface fails in turn, once and for good: a status, nothing else, and the next
// call goes on as if nothing had been.
#include "allocation.hpp"
#include "kro/view.h"
#include "support.hpp"

namespace {

constexpr Size size = {6, 20};

// Two handles made and used with frames that need more and more scratch, and a call that needs none.
class Day {
public:
    Day() : frame_(size.pixels() * 2 * 4, uint8_t{7}), picture_(size.pixels() * 4 * 4) {}
    ~Day() {
        for (KroContext*& handle : handles_) {
            if (handle != nullptr) {
                kroRelease(&handle);
            }
        }
    }
    Day(const Day&) = delete;
    Day& operator=(const Day&) = delete;

    // What failed; every failure must be for memory and leave things as they were.
    int live() {
        for (KroContext*& handle : handles_) {
            create(handle);
            for (const uint32_t format : {KRO_BAYER_RG8, KRO_BAYER_GB12_PACKED, KRO_BAYER_GR16}) {
                demosaic(handle, format, size);
            }
            demosaic(handle, KRO_MONO10, {2 * size.height, 2 * size.width});
            if (handle != nullptr) {
                grow(handle->scratch);
            }
            convertView();
        }
        return failures_;
    }

private:
    bool succeeded(int32_t status) {
        EXPECT_TRUE(status == KRO_OK || status == KRO_ERR_NO_MEMORY) << status;
        failures_ += status == KRO_OK ? 0 : 1;
        return status == KRO_OK;
    }
    void create(KroContext*& handle) {
        if (!succeeded(kroCreate(&handle))) {
            EXPECT_EQ(nullptr, handle);
        }
    }
    void grow(KroScratch& scratch) {
        if (!succeeded(kroMemRealloc(&scratch, scratch.capacity + 1000))) {
            EXPECT_EQ(nullptr, scratch.data);
            EXPECT_EQ(0, scratch.capacity);
        }
    }
    void demosaic(KroContext* handle, uint32_t format, Size of) {
        if (handle == nullptr) {
            return;
        }
        std::fill(picture_.begin(), picture_.end(), uint8_t{0x5A});
        const KroImage input{of.height, of.width, format, frame_.data()};
        KroImage output{-1, -2, 3, picture_.data()};
        if (succeeded(kroDemosaicing(handle, &input, KRO_EDGE, &output))) {
            EXPECT_EQ(of.width, output.width);
            EXPECT_NE(0x5A, picture_[0]);
            return;
        }
        EXPECT_EQ(0, handle->scratch.capacity);
        EXPECT_EQ(nullptr, handle->scratch.data);
        EXPECT_TRUE(output.height == -1 && output.width == -2 && output.pixelFormat == 3);
        EXPECT_EQ(std::vector<uint8_t>(picture_.size(), 0x5A), picture_);
    }
    // Needs no memory, so nothing can fail.
    void convertView() {
        const int before = allocation::count();
        const KroSourceView source{frame_.data(), 0, size.height, size.width, KRO_BAYER_RG12};
        KroPictureView picture{};
        picture.plane[0] = picture_.data();
        picture.format = KRO_RGBA8;
        EXPECT_EQ(KRO_OK, kroConvertView(&source, &picture, nullptr));
        EXPECT_EQ(before, allocation::count());
    }

    std::vector<uint8_t> frame_, picture_;
    KroContext* handles_[2] = {nullptr, nullptr};
    int failures_ = 0;
};

// Counted around the library's calls alone: containers get their memory by operator new, which is not wrapped.
int allocationsOfADay() {
    Day day;
    const int before = allocation::count();
    EXPECT_EQ(0, day.live());
    return allocation::count() - before;
}

TEST(Allocation, EachFailsOnceAndIsForgotten) {
    const int count = allocationsOfADay();
    EXPECT_GE(count, 8);
    for (int number = 1; number <= count; ++number) {
        Day day;
        allocation::refuseFrom(number, false);
        EXPECT_EQ(1, day.live()) << number;
        allocation::refuseFrom(0, false);
    }
}

TEST(Allocation, EachFailsAndAllThatFollow) {
    const int count = allocationsOfADay();
    for (int number = 1; number <= count; ++number) {
        Day day;
        allocation::refuseFrom(number, true);
        EXPECT_LE(1, day.live()) << number;
        allocation::refuseFrom(0, false);
    }
}

// Frames of a camera come as the first one did: that one's memory serves them all.
TEST(Allocation, NoneOnASteadyStream) {
    const std::vector<uint8_t> frame(size.pixels() * 2, uint8_t{7});
    std::vector<uint8_t> picture(size.pixels() * 4);
    for (const uint32_t format : {KRO_BAYER_RG8, KRO_BAYER_GB12_PACKED, KRO_BAYER_GR16, KRO_MONO10}) {
        for (const uint32_t output : {KRO_BGR8, KRO_RGBA8, KRO_RGB8_PLANAR, KRO_MONO8}) {
            for (const KroAlgorithm algorithm : {KRO_NEAREST, KRO_BILINEAR, KRO_EDGE}) {
                KroContext handle{};
                kroInit(&handle);
                handle.outputFormat = output;
                const KroImage input{size.height, size.width, format, const_cast<uint8_t*>(frame.data())};
                int before = 0;
                for (int turn = 0; turn < 5; ++turn) {
                    KroImage made{0, 0, 0, picture.data()};
                    ASSERT_EQ(KRO_OK, kroDemosaicing(&handle, &input, algorithm, &made));
                    before = turn == 0 ? allocation::count() : before;
                }
                EXPECT_EQ(before, allocation::count()) << std::hex << format << " " << output << " " << algorithm;
                std::free(handle.scratch.data);
            }
        }
    }
}

}  // namespace
