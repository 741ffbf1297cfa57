// Pictures made in parts: every division into bands gives the bytes of the whole, and touches no other row.
#include <thread>

#include "view_kinds.hpp"

namespace {

using reference::InputFormat;
using reference::Method;
using reference::ViewOutput;

class ViewBands : public testing::TestWithParam<Kind> {
protected:
    // Holds a frame whose format, words and distances are those of a turn.
    reference::Scene hold(ViewCheck& check, Size size, uint32_t turn) {
        const InputFormat& format = GetParam().formatOfTurn(turn);
        words_ = wordOptions(format, turn);
        const auto numbers = numbersFor(format, words_, Content::noise, size, turn, turn % 3 != 0);
        check.hold(format, size, numbers, spacingOfTurn(turn), words_, placementOfTurn(turn));
        return check.scene(format, words_);
    }
    bool band(ViewCheck& check, const Conversion& conversion, int firstRow, int rowCount) {
        Asked asked = conversion.asked;
        asked.options.firstRow = firstRow;
        asked.options.rowCount = rowCount;
        return check.convert(asked, conversion.expected);
    }
    Conversion conversion(reference::Scene& scene, const ViewOutput& output, uint32_t turn) const {
        return {scene, output, words_, GetParam().method, turn};
    }

private:
    KroViewOptions words_ = noOptions;
};
INSTANTIATE_TEST_SUITE_P(Every, ViewBands, testing::ValuesIn(allKinds()), kindName);

TEST_P(ViewBands, EveryBandOfSmallFrames) {
    ViewCheck check({9, 70});
    uint32_t turn = 1;
    for (const Size size : {Size{4, 5}, Size{5, 17}, Size{8, 36}, Size{9, 70}, Size{7, 23}}) {
        if (reducedRun && size.height > 5) {
            break;
        }
        for (int again = takesLong(GetParam()) ? 1 : 0; again < 2; ++again) {
            reference::Scene scene = hold(check, size, turn++);
            for (const ViewOutput& output : reference::viewOutputs) {
                const Conversion whole = conversion(scene, output, turn++);
                for (int first = 0; first < size.height; ++first) {
                    for (int rows = 0; first + rows <= size.height; ++rows) {
                        ASSERT_TRUE(band(check, whole, first, rows));
                    }
                }
            }
        }
    }
}

TEST_P(ViewBands, OfWideFrames) {
    ViewCheck check({11, 9001});
    uint32_t turn = 50;
    for (const Size size : {Size{11, 1501}, Size{9, 9001}}) {
        if ((reducedRun || takesLong(GetParam())) && size.width > 2000) {
            break;
        }
        reference::Scene scene = hold(check, size, turn++);
        for (const char* output : {"BGRa8", "RGB8Planar", "Mono16", "RGB16", "BGR16Planar", "Mono8"}) {
            const Conversion whole = conversion(scene, outputNamed(output), turn++);
            for (const Band part : {Band{0, 1}, Band{1, 3}, Band{4, 0}, Band{size.height - 1, 1}}) {
                ASSERT_TRUE(band(check, whole, part.first, part.rows));
            }
        }
    }
}

TEST_P(ViewBands, OfHigherFrames) {
    ViewCheck check({65, 129});
    uint32_t turn = 80;
    for (const Size size : {Size{37, 45}, Size{65, 129}}) {
        reference::Scene scene = hold(check, size, turn++);
        for (const ViewOutput& output : reference::viewOutputs) {
            const Conversion whole = conversion(scene, output, turn++);
            for (const Band part : {Band{0, 16}, Band{16, 16}, Band{31, 2}, Band{33, 0}, Band{15, 1}}) {
                ASSERT_TRUE(band(check, whole, part.first, part.rows));
            }
        }
    }
}

class ViewBandsOfFormats : public testing::TestWithParam<InputFormat> {};
INSTANTIATE_TEST_SUITE_P(Every, ViewBandsOfFormats, testing::ValuesIn(reference::viewInputFormats()), inputName);

TEST_P(ViewBandsOfFormats, EveryOutputAndAlgorithm) {
    ViewCheck check({12, 70});
    uint32_t turn = GetParam().code & 7;
    for (const Size size : {Size{11, 37}, Size{12, 67}}) {
        const KroViewOptions words = wordOptions(GetParam(), ++turn);
        const auto numbers = numbersFor(GetParam(), words, Content::noise, size, turn, true);
        check.hold(GetParam(), size, numbers, spacingOfTurn(turn), words);
        reference::Scene scene = check.scene(GetParam(), words);
        for (const Conversion& whole : everyConversion(scene, GetParam(), words, turn)) {
            for (const Band part : {Band{0, 3}, Band{3, 1}, Band{4, 5}, Band{9, 0}}) {
                Asked asked = whole.asked;
                asked.options.firstRow = part.first;
                asked.options.rowCount = part.rows;
                ASSERT_TRUE(check.convert(asked, whole.expected));
            }
        }
    }
}

// What a thread needs for its bands of a picture that several of them write.
TEST(ViewThreads, BandsOfOnePictureAtTheSameTime) {
    constexpr int threadCount = 16;
    const Size size{64, 333};
    const InputFormat& format = inputNamed("BayerGR12Packed");
    const ViewOutput& output = outputNamed("BGRa16");
    ViewSource source(1 << 16);
    source.hold(format, size, numbersFor(format, noOptions, Content::noise, size, 8), Spacing::continuous, false,
                guard::Placement::againstEnd);
    reference::Scene scene(format, source.rows(), wordsOf(format, noOptions));
    ViewPicture picture(1 << 18);
    for (const kro::Kernels* table : usableTables()) {
        for (const Method method : reference::viewMethods) {
            picture.lay(output, size, Spacing::padded, guard::Placement::againstEnd, guard::Fill::one, false);
            std::vector<std::thread> threads;
            for (int thread = 0; thread < threadCount; ++thread) {
                threads.emplace_back([&, thread] {
                    for (int row = thread; row < size.height; row += threadCount) {
                        KroViewOptions options = withAlgorithm(method);
                        options.firstRow = row;
                        options.rowCount = 1;
                        EXPECT_EQ(KRO_OK, kro::convertView(*table, &source.view(), &picture.view(), &options));
                    }
                });
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
            const Planes expected = planesOf(scene, output, withAlgorithm(method));
            EXPECT_TRUE(picture.holds(expected, {0, size.height})) << table->name;
            countComparison(*table, expected[0].size());
        }
    }
}

}  // namespace
