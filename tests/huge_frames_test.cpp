// Frames whose planes and pixels lie beyond 2 GiB. Source and destination are windows of a few rows mapped over and
// over, so that the address range is real and the memory is not; only the rows that are checked have pages of their
// own.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "KRODemosaicing.hpp"
#include "KROView.hpp"
#include "fine_reference.hpp"
#include "regions.hpp"
#include "view_reference.hpp"

namespace {

#if defined(__x86_64__)

constexpr int width = 32768;   // eight pages a row
constexpr int height = 65535;  // 2^31 - 2^15 samples
constexpr int windowRows = 64;
constexpr size_t rowBytes = width;

// `bytes` of address space that repeat one window of `windowRows * pixel` rows.
class Repeated {
public:
    Repeated(size_t bytes, size_t window) : bytes_(bytes) {
        file_ = memfd_create("kro-test-window", 0);
        if (file_ < 0 || ftruncate(file_, static_cast<off_t>(window)) != 0) {
            throw std::runtime_error("no window");
        }
        void* const range = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (range == MAP_FAILED) {
            throw std::runtime_error("no address range");
        }
        base_ = static_cast<uint8_t*>(range);
        for (size_t at = 0; at < bytes; at += window) {
            map(base_ + at, std::min(window, bytes - at), MAP_SHARED, file_);
        }
    }
    ~Repeated() {
        munmap(base_, bytes_);
        close(file_);
    }
    Repeated(const Repeated&) = delete;
    Repeated& operator=(const Repeated&) = delete;

    uint8_t* data() { return base_; }
    // Gives a page-aligned stretch memory of its own.
    void detach(size_t at, size_t length) { map(base_ + at, length, MAP_PRIVATE | MAP_ANONYMOUS, -1); }

private:
    static void map(uint8_t* at, size_t length, int flags, int file) {
        if (mmap(at, length, PROT_READ | PROT_WRITE, flags | MAP_FIXED, file, 0) == MAP_FAILED) {
            throw std::runtime_error("no mapping");
        }
    }
    uint8_t* base_ = nullptr;
    size_t bytes_;
    int file_ = -1;
};

// Rows of the huge frame that are checked, at its ends; the picture of the rows around them is all that is computed.
constexpr int checkedRows = 4;

void check(reference::Method method, uint32_t output) {
    const Size size{windowRows, width};
    const std::vector<uint8_t> window = sampleBytes(Content::noise, size, 71);
    const size_t n = rowBytes * height;
    Repeated source(n, rowBytes * windowRows);
    std::copy(window.begin(), window.end(), source.data());

    const bool planar = output == KRO_RGB8_PLANAR;
    const size_t pixel = planar ? 1 : 3;
    const size_t planes = planar ? 3 : 1;
    Repeated destination(3 * n, rowBytes * windowRows);
    for (size_t plane = 0; plane < planes; ++plane) {
        destination.detach(plane * n, checkedRows * rowBytes * pixel);
        destination.detach(plane * n + (height - checkedRows) * rowBytes * pixel, checkedRows * rowBytes * pixel);
    }

    KroContext handle{};
    kroInit(&handle);
    handle.outputFormat = output;
    const KroImage in{height, width, KRO_BAYER_RG8, source.data()};
    KroImage out{0, 0, 0, destination.data()};
    const kro::Kernels& table = kro::bestKernels();
    ASSERT_EQ(KRO_OK, kro::demosaicing(table, &handle, &in, static_cast<KroAlgorithm>(method), &out));
    std::free(handle.scratch.data);

    // The first rows and, as the window repeats, the last ones: an even number of rows that ends where the frame
    // ends.
    const reference::Picture top = reference::demosaic(method, {16, width, reference::Phase::rg, window.data()});
    std::vector<uint8_t> lastRows;
    constexpr int tail = 15;  // odd: its first row is a red one, as row height - 15 is
    for (int y = height - tail; y < height; ++y) {
        const auto row = window.begin() + static_cast<ptrdiff_t>(y % windowRows) * width;
        lastRows.insert(lastRows.end(), row, row + width);
    }
    const reference::Picture bottom =
        reference::demosaic(method, {tail, width, reference::Phase::rg, lastRows.data()});
    const struct {
        const reference::Picture picture;
        size_t row;
    } ends[] = {{regions::rowsOf(top, 0, checkedRows), 0},
                {regions::rowsOf(bottom, tail - checkedRows, checkedRows), height - checkedRows}};
    for (const auto& end : ends) {
        const Expected expected =
            regions::bytesOf(end.picture, {planar ? regions::Kind::planar : regions::Kind::bgr, planar});
        const size_t part = expected.value.size() / planes;
        for (size_t plane = 0; plane < planes; ++plane) {
            const uint8_t* const found = destination.data() + plane * n + end.row * rowBytes * pixel;
            EXPECT_TRUE(
                std::equal(found, found + part, expected.value.begin() + static_cast<ptrdiff_t>(plane * part)))
                << "plane " << plane << " from row " << end.row;
            countComparison(table, part);
        }
    }
}

// Bands at both ends of a view; nothing else is computed. Pixels take 6 GiB.
void checkBands(reference::Method method) {
    const std::vector<uint8_t> window = sampleBytes(Content::noise, {windowRows, width}, 72);
    Repeated source(rowBytes * height, rowBytes * windowRows);
    std::copy(window.begin(), window.end(), source.data());
    Repeated destination(3 * rowBytes * height, 3 * rowBytes * windowRows);
    const KroSourceView frame = {source.data(), 0, height, width, KRO_BAYER_RG8};
    const KroPictureView picture = {{destination.data()}, {0}, KRO_RGB8};
    const kro::Kernels& table = kro::bestKernels();
    constexpr int around = 12;  // even; rows of which a pixel is made are at most 10 away
    for (const int first : {0, 45000, height - checkedRows}) {
        const KroViewOptions options = {sizeof options, static_cast<KroAlgorithm>(method), 0, 0, 0, first,
                                        checkedRows};
        ASSERT_EQ(KRO_OK, kro::convertView(table, &frame, &picture, &options));
        // Rows of the window as the band has them around it, those outside the frame reflected.
        const int start = std::max(first - first % 2 - around, 0);
        const int end = std::min(first + checkedRows + around, height);
        std::vector<uint8_t> rows;
        for (int y = start; y < end; ++y) {
            const auto row = window.begin() + static_cast<ptrdiff_t>(y % windowRows) * width;
            rows.insert(rows.end(), row, row + width);
        }
        const reference::Mosaic mosaic(end - start, width, reference::Phase::rg, rows.data());
        const reference::Picture made = method == reference::Method::fine
                                            ? reference::fine(mosaic, reference::fineScale8)
                                            : reference::demosaic(method, mosaic);
        const Expected expected =
            regions::bytesOf(regions::rowsOf(made, first - start, checkedRows), {regions::Kind::bgr, true});
        const uint8_t* const found = destination.data() + static_cast<size_t>(first) * rowBytes * 3;
        EXPECT_TRUE(std::equal(expected.value.begin(), expected.value.end(), found)) << "rows from " << first;
        countComparison(table, expected.value.size());
    }
}

class HugeFrames : public testing::TestWithParam<reference::Method> {};
INSTANTIATE_TEST_SUITE_P(Every, HugeFrames, testing::ValuesIn(reference::allMethods), [](const auto& tested) {
    return "algorithm" + std::to_string(static_cast<int>(tested.param));
});

TEST_P(HugeFrames, PlanesAndPixelsBeyondTwoGigabytes) {
    if (sanitizedRun) {
        GTEST_SKIP() << "sanitizers would need memory for the whole address range";
    }
    check(GetParam(), KRO_RGB8_PLANAR);
    check(GetParam(), KRO_BGR8);
}

class HugeViews : public testing::TestWithParam<reference::Method> {};
INSTANTIATE_TEST_SUITE_P(Every, HugeViews, testing::ValuesIn(reference::viewMethods), [](const auto& tested) {
    return "algorithm" + std::to_string(static_cast<int>(tested.param));
});

TEST_P(HugeViews, BandsBeyondTwoGigabytes) {
    if (sanitizedRun) {
        GTEST_SKIP() << "sanitizers would need memory for the whole address range";
    }
    checkBands(GetParam());
}

#endif

}  // namespace
