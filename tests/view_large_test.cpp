// Pictures so large that the kernels ask for rows ahead of making them. What counts is the distance that rows reach
// over; so rows lie two megabytes apart, and only the pages that they touch are there.
#include <algorithm>

#include "view_kinds.hpp"

namespace {

using reference::ViewOutput;

constexpr size_t apart = size_t{2} << 20;

// Planes of rows that end, or begin, with a page, between pages that nobody may touch.
class DistantRows {
public:
    DistantRows(size_t rows, size_t planes) : rows_(rows), size_(rows * planes * apart) {
        void* const range = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (range == MAP_FAILED) {
            throw std::runtime_error("no address range");
        }
        base_ = static_cast<uint8_t*>(range);
        for (size_t page = toPages; page < size_; page += apart) {
            if (mprotect(base_ + page, rowPages * pageSize, PROT_READ | PROT_WRITE) != 0) {
                throw std::runtime_error("no rows");
            }
        }
    }
    ~DistantRows() { munmap(base_, size_); }
    DistantRows(const DistantRows&) = delete;
    DistantRows& operator=(const DistantRows&) = delete;

    // Row 0 of a plane whose rows take so many bytes; all of the rows' pages are filled.
    uint8_t* plane(size_t index, size_t rowBytes, guard::Placement placement, uint8_t fill) {
        const size_t room = rowPages * pageSize;
        if (rowBytes > room) {
            throw std::runtime_error("rows too long");
        }
        offset_ = placement == guard::Placement::againstStart ? 0 : room - rowBytes;
        uint8_t* const first = base_ + index * rows_ * apart + toPages;
        for (size_t y = 0; y < rows_; ++y) {
            std::memset(first + y * apart, fill, room);
        }
        return first + offset_;
    }
    // How many bytes beside the row were changed.
    int64_t changedBeside(const uint8_t* row, size_t rowBytes, uint8_t fill) const {
        const uint8_t *const begin = row - offset_, *const end = begin + rowPages * pageSize;
        const auto changed = [fill](const uint8_t* from, const uint8_t* to) {
            return to - from - std::count(from, to, fill);
        };
        return changed(begin, row) + changed(row + rowBytes, end);
    }

private:
    static constexpr size_t pageSize = 4096, rowPages = 2;
    static constexpr size_t toPages = apart / 2;  // from where a row's range begins
    size_t rows_, size_, offset_ = 0;
    uint8_t* base_ = nullptr;
};

// One conversion to distant rows, upside down every other time.
class LargePictures : public testing::TestWithParam<Kind> {
protected:
    static constexpr int mostRows = 13;

    void check(Size size, uint32_t turn) {
        const reference::InputFormat& format = GetParam().formatOfTurn(turn);
        const KroViewOptions words = wordOptions(format, turn);
        source_.hold(format, size, numbersFor(format, words, Content::noise, size, turn), spacingOfTurn(turn),
                     (words.flags & KRO_VIEW_BIG_ENDIAN) != 0, placementOfTurn(turn));
        reference::Scene scene{format, source_.rows(), wordsOf(format, words)};
        for (const ViewOutput& output : reference::viewOutputs) {
            ++turn;
            Conversion conversion(scene, output, words, GetParam().method, turn);
            conversion.asked.alphaPlane = false;
            conversion.expected.resize(output.planar ? 3 : 1);
            for (const kro::Kernels* table : usableTables()) {
                ASSERT_NO_FATAL_FAILURE(convert(*table, conversion, size, turn));
            }
        }
    }

private:
    void convert(const kro::Kernels& table, const Conversion& conversion, Size size, uint32_t turn) {
        const ptrdiff_t stride = turn % 2 == 0 ? static_cast<ptrdiff_t>(apart) : -static_cast<ptrdiff_t>(apart);
        const uint8_t fill = turn % 4 < 2 ? 0x35 : 0xCA;
        const size_t rows = static_cast<size_t>(size.height);
        const size_t rowBytes = conversion.expected[0].size() / rows;
        KroPictureView picture{{}, {stride, stride, stride, 0}, conversion.asked.output.code};
        const uint8_t* highest[3] = {};
        for (size_t plane = 0; plane < conversion.expected.size(); ++plane) {
            uint8_t* const first = picture_.plane(plane, rowBytes, placementOfTurn(turn), fill);
            picture.plane[plane] = stride > 0 ? first : first + (rows - 1) * apart;
            highest[plane] = first;
        }
        ASSERT_EQ(kro::convertView(table, &source_.view(), &picture, &conversion.asked.options), KRO_OK);
        for (size_t plane = 0; plane < conversion.expected.size(); ++plane) {
            for (size_t y = 0; y < rows; ++y) {
                const uint8_t* const row = highest[plane] + (stride > 0 ? y : rows - 1 - y) * apart;
                ASSERT_TRUE(rowHolds(row, conversion.expected[plane].data() + y * rowBytes, rowBytes))
                    << table.name << ", " << describe(source_.view(), conversion.asked) << ", row " << y;
                ASSERT_EQ(picture_.changedBeside(row, rowBytes, fill), 0)
                    << table.name << ", " << describe(source_.view(), conversion.asked) << ", row " << y;
            }
            countComparison(table, conversion.expected[plane].size());
        }
    }

    ViewSource source_{mostRows * (400 * 2 + 64)};
    DistantRows picture_{mostRows, 3};
};
INSTANTIATE_TEST_SUITE_P(Every, LargePictures, testing::ValuesIn(allKinds()), kindName);

TEST_P(LargePictures, SmallSizesFarApart) {
    uint32_t turn = static_cast<uint32_t>(GetParam().phase) * 3;
    for (const Size size : {Size{4, 4}, Size{5, 31}, Size{4, 66}, Size{7, 97}, Size{6, 130}, Size{8, 197},
                            Size{9, 256}, Size{4, 333}, Size{13, 177}}) {
        if (reducedRun && size.width % 3 != 0) {
            continue;
        }
        ASSERT_NO_FATAL_FAILURE(check(size, turn += 3));
    }
}

}  // namespace
