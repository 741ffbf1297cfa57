#include "kernels/frame.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

namespace {

using bench::Buffer;
using bench::Frame;
using bench::Place;
using bench::Samples;

// The system reads the byte, so that none that cannot be read ends the test.
bool readable(const uint8_t* byte) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const bool taken = write(ends[1], byte, 1) == 1;
    EXPECT_TRUE(taken || errno == EFAULT);
    close(ends[0]);
    close(ends[1]);
    return taken;
}

const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));

size_t offsetIn(size_t unit, const uint8_t* data) { return reinterpret_cast<uintptr_t>(data) % unit; }

std::vector<uint8_t> bytesOf(const Frame& frame) {
    const auto* begin = frame.source<uint8_t>();
    return {begin, begin + frame.sourceSize()};
}

TEST(BenchFrame, SizesAreNamedAsTheyAreRead) {
    for (const char* name : {"64x64", "1280x960+1", "64x65+before", "640x480+behind"}) {
        EXPECT_EQ(nameOf(bench::shapeFrom(name)), name);
    }
    EXPECT_EQ(bench::shapeFrom("64x65+before").place, Place::guardedBefore);
    EXPECT_EQ(bench::shapeFrom("64x65+behind").place, Place::guardedBehind);
    for (const char* name :
         {"", "64", "64x", "64x64+", "64x64+2", "64x64before", "64x64+1+before", "3x64", "64x-64"}) {
        EXPECT_THROW(bench::shapeFrom(name), std::invalid_argument) << name;
    }
}

TEST(BenchFrame, BuffersStartAtLinesOrOneSampleBeyond) {
    EXPECT_EQ(offsetIn(64, Buffer(100).data()), 0U);
    EXPECT_EQ(offsetIn(64, Buffer(100, Place::odd, 1).data()), 1U);
    EXPECT_EQ(offsetIn(64, Buffer(100, Place::odd, 2).data()), 2U);
}

TEST(BenchFrame, GuardedBuffersStartAtPagesBesideOneThatCannotBeRead) {
    for (const size_t size : {size_t{1}, page - 1, page, page + 1, 3 * page}) {
        const size_t whole = (size + page - 1) / page * page;
        const Buffer before(size, Place::guardedBefore), behind(size, Place::guardedBehind);
        for (const Buffer* buffer : {&before, &behind}) {
            EXPECT_EQ(offsetIn(page, buffer->data()), 0U);
            std::memset(buffer->data(), 1, size);
        }
        EXPECT_FALSE(readable(before.data() - 1)) << size;
        EXPECT_TRUE(readable(before.data() + whole)) << size;
        EXPECT_TRUE(readable(behind.data() - 1)) << size;
        EXPECT_FALSE(readable(behind.data() + whole)) << size;
    }
}

TEST(BenchFrame, SourceAndDestinationLieWhereTheSizeSays) {
    const Frame odd(bench::shapeFrom("64x64+1"), Samples::u12, 6);
    EXPECT_EQ(offsetIn(64, odd.source<uint8_t>()), 2U);
    EXPECT_EQ(offsetIn(64, odd.destination()), 2U);
    const Frame guarded(bench::shapeFrom("64x64+behind"), Samples::u8, 3);
    EXPECT_EQ(offsetIn(page, guarded.source<uint8_t>()), 0U);
    EXPECT_EQ(offsetIn(page, guarded.destination()), 0U);
    EXPECT_FALSE(readable(guarded.source<uint8_t>() + (guarded.sourceSize() + page - 1) / page * page));
}

TEST(BenchFrame, SeedsDifferInTheirNoise) {
    for (const Samples samples : {Samples::u8, Samples::u12, Samples::packed12}) {
        const auto made = [&](uint32_t seed) { return bytesOf(Frame({64, 48, Place::aligned}, samples, 3, seed)); };
        EXPECT_EQ(made(1), made(1));
        EXPECT_NE(made(0), made(1));
        EXPECT_NE(made(1), made(2));
        EXPECT_NE(made(0), made(2));
    }
}

TEST(BenchFrame, SamplesFitTheirFormat) {
    const Frame frame({64, 48, Place::aligned}, Samples::u12, 3, 7);
    for (size_t i = 0; i < frame.pixels(); ++i) {
        ASSERT_LT(frame.source<uint16_t>()[i], 4096);
    }
}

}  // namespace
