// Memory around views: rows on pages of their own, rows far apart, addresses of every kind.
#include <sys/mman.h>

#include <cstring>

#include "view_kinds.hpp"

namespace {

using reference::InputFormat;
using reference::Method;
using reference::ViewOutput;

constexpr size_t page = 4096;

// Rows at a fixed distance, each on readable pages between unreadable ones, at their start or their end.
class RowPages {
public:
    RowPages(int height, size_t rowBytes, size_t distance, guard::Placement placement)
        : height_(static_cast<size_t>(height)),
          room_((rowBytes + page - 1) / page * page),
          distance_(distance),
          offset_(placement == guard::Placement::againstStart ? 0 : room_ - rowBytes) {
        bytes_ = page + height_ * distance_;
        void* const whole = mmap(nullptr, bytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (whole == MAP_FAILED || distance < room_ + page) {
            throw std::runtime_error("no pages for rows");
        }
        base_ = static_cast<uint8_t*>(whole);
        for (size_t y = 0; y < height_; ++y) {
            if (mprotect(pagesOf(y), room_, PROT_READ | PROT_WRITE) != 0) {
                throw std::runtime_error("no pages for a row");
            }
        }
    }
    ~RowPages() { munmap(base_, bytes_); }
    RowPages(const RowPages&) = delete;
    RowPages& operator=(const RowPages&) = delete;

    // Row y of a view, whose rows may go up or down in memory.
    uint8_t* row(int y, bool flipped) {
        return pagesOf(flipped ? height_ - 1 - static_cast<size_t>(y) : static_cast<size_t>(y)) + offset_;
    }
    ptrdiff_t stride(bool flipped) const {
        return flipped ? -static_cast<ptrdiff_t>(distance_) : static_cast<ptrdiff_t>(distance_);
    }
    void fill(uint8_t value) {
        for (size_t y = 0; y < height_; ++y) {
            std::memset(pagesOf(y), value, room_);
        }
    }
    // The pages hold rows of that length and otherwise what they were filled with.
    bool onlyRowsWritten(size_t rowBytes, uint8_t filledWith) {
        const std::vector<uint8_t> filled(room_, filledWith);
        const size_t after = offset_ + rowBytes;
        for (size_t y = 0; y < height_; ++y) {
            if (std::memcmp(pagesOf(y), filled.data(), offset_) != 0 ||
                std::memcmp(pagesOf(y) + after, filled.data(), room_ - after) != 0) {
                return false;
            }
        }
        return true;
    }

private:
    uint8_t* pagesOf(size_t y) { return base_ + page + y * distance_; }

    size_t height_, room_, distance_, offset_, bytes_ = 0;
    uint8_t* base_ = nullptr;
};

struct RowLayout {
    guard::Placement placement;
    bool flipped;
    size_t between;  // bytes of a row and what follows it up to the next
};

// A frame and a picture of isolated rows.
class IsolatedRows {
public:
    IsolatedRows(const InputFormat& format, Size size, RowLayout layout, uint32_t seed)
        : format_(format),
          size_(size),
          layout_(layout),
          rowBytes_(reference::inputBytes(format, static_cast<size_t>(size.width))),
          source_(size.height, rowBytes_, layout.between, layout.placement) {
        const auto numbers = numbersFor(format, noOptions, Content::noise, size, seed);
        source_.fill(0x5A);
        for (int y = 0; y < size.height; ++y) {
            const auto row = rowOf(format, numbers.data() + reference::place(y, 0, size.width),
                                   static_cast<size_t>(size.width), false);
            std::copy(row.begin(), row.end(), source_.row(y, layout.flipped));
        }
        view_ = {source_.row(0, layout.flipped), source_.stride(layout.flipped), size.height, size.width,
                 format.code};
    }

    reference::Scene scene() const {
        return {format_,
                {static_cast<const uint8_t*>(view_.data), view_.stride, size_.height, size_.width},
                wordsOf(format_, noOptions)};
    }

    void check(reference::Scene& scene, const ViewOutput& output, Method method) {
        const Planes expected = planesOf(scene, output, withAlgorithm(method), output.planar);
        std::vector<std::unique_ptr<RowPages>> planes;
        KroPictureView picture{{}, {}, output.code};
        for (size_t plane = 0; plane < expected.size(); ++plane) {
            const size_t row = expected[plane].size() / static_cast<size_t>(size_.height);
            planes.push_back(
                std::make_unique<RowPages>(size_.height, row, layout_.between + 2 * page * plane, layout_.placement));
            picture.plane[plane] = planes[plane]->row(0, layout_.flipped);
            picture.stride[plane] = planes[plane]->stride(layout_.flipped);
        }
        for (const kro::Kernels* table : usableTables()) {
            for (const auto& plane : planes) {
                plane->fill(0xC3);
            }
            const KroViewOptions options = withAlgorithm(method);
            ASSERT_EQ(KRO_OK, kro::convertView(*table, &view_, &picture, &options));
            for (size_t plane = 0; plane < expected.size(); ++plane) {
                comparePlane(*table, *planes[plane], expected[plane],
                             std::string(format_.name) + " to " + output.name);
            }
        }
    }

private:
    void comparePlane(const kro::Kernels& table, RowPages& plane, const std::vector<uint8_t>& expected,
                      const std::string& what) {
        const size_t row = expected.size() / static_cast<size_t>(size_.height);
        for (int y = 0; y < size_.height; ++y) {
            const uint8_t* const wanted = expected.data() + static_cast<size_t>(y) * row;
            ASSERT_TRUE(rowHolds(plane.row(y, layout_.flipped), wanted, row))
                << table.name << " " << what << " " << describe(size_) << " row " << y;
        }
        ASSERT_TRUE(plane.onlyRowsWritten(row, 0xC3)) << table.name << " " << what << " " << describe(size_);
        countComparison(table, expected.size());
    }

    InputFormat format_;
    Size size_;
    RowLayout layout_;
    size_t rowBytes_;
    RowPages source_;
    KroSourceView view_{};
};

class ViewPages : public testing::TestWithParam<InputFormat> {};
INSTANTIATE_TEST_SUITE_P(Every, ViewPages, testing::ValuesIn(reference::viewInputFormats()), inputName);

TEST_P(ViewPages, NothingBetweenRowsIsTouched) {
    const RowLayout layouts[] = {{guard::Placement::againstEnd, false, 2 * page},
                                 {guard::Placement::againstStart, false, 3 * page},
                                 {guard::Placement::againstEnd, true, 3 * page},
                                 {guard::Placement::againstStart, true, 2 * page}};
    uint32_t turn = GetParam().code & 15;
    for (const Size size : {Size{4, 4}, Size{5, 23}, Size{6, 70}, Size{7, 149}}) {
        for (const RowLayout& layout : layouts) {
            IsolatedRows rows(GetParam(), size, layout, turn);
            reference::Scene scene = rows.scene();
            for (const Method method : reference::viewMethods) {
                for (int i = 0; i < 5; ++i) {
                    rows.check(scene, reference::viewOutputs[++turn % reference::viewOutputs.size()], method);
                    if (HasFatalFailure()) {
                        return;
                    }
                }
            }
        }
    }
}

#if defined(__x86_64__)
TEST(ViewMemory, RowsFartherApartThanFourGigabytes) {
    if (sanitizedRun) {
        GTEST_SKIP() << "sanitizers take part of the address space";
    }
    for (const bool flipped : {false, true}) {
        for (const char* name : {"BayerGB8", "SRGGB12P", "Mono10p", "BayerRG16"}) {
            const RowLayout layout{guard::Placement::againstEnd, flipped, (size_t{9} << 29) + 2 * page};
            IsolatedRows rows(inputNamed(name), {5, 37}, layout, 3);
            reference::Scene scene = rows.scene();
            for (const Method method : reference::viewMethods) {
                rows.check(scene, outputNamed("BGRa8"), method);
                rows.check(scene, outputNamed("RGB16Planar"), method);
            }
        }
    }
}
#endif

TEST(ViewMemory, RecordsStayAsTheyWere) {
    const Size size{8, 21};
    ViewSource source(4096);
    source.hold(inputNamed("BayerRG8"), size, numbersFor(inputNamed("BayerRG8"), noOptions, Content::noise, size, 1),
                Spacing::negative, false, guard::Placement::againstEnd);
    ViewPicture picture(4096);
    for (const kro::Kernels* table : usableTables()) {
        const std::vector<uint8_t> before = recordBytes(source.view());
        const std::vector<uint8_t> pictureBefore = recordBytes(picture.lay(
            outputNamed("RGB8Planar"), size, Spacing::padded, guard::Placement::againstEnd, guard::Fill::one, true));
        const KroViewOptions options = noOptions;
        EXPECT_EQ(KRO_OK, kro::convertView(*table, &source.view(), &picture.view(), &options));
        EXPECT_EQ(before, recordBytes(source.view()));
        EXPECT_EQ(pictureBefore, recordBytes(picture.view()));
        EXPECT_EQ(recordBytes(noOptions), recordBytes(options));
    }
}

}  // namespace
