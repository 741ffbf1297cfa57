// Whole views: every input format, output format, algorithm, distance from row to row and instruction set.
#include "view_kinds.hpp"

namespace {

using reference::InputFormat;
using reference::Method;
using reference::ViewOutput;

// ---- every format ----

class ViewFormats : public testing::TestWithParam<InputFormat> {};
INSTANTIATE_TEST_SUITE_P(Every, ViewFormats, testing::ValuesIn(reference::viewInputFormats()), inputName);

TEST_P(ViewFormats, EveryOutputAlgorithmAndSpacing) {
    ViewCheck check({13, 70});
    uint32_t turn = GetParam().code & 3;
    std::vector<Size> sizes = {{4, 4}, {5, 5}, {4, 70}, {6, 17}, {7, 4}, {5, 20}, {8, 36}, {13, 31}};
    if (reducedRun) {
        sizes.resize(3);
    }
    for (const Size size : sizes) {
        ++turn;
        const KroViewOptions words = wordOptions(GetParam(), turn);
        const auto numbers = numbersFor(GetParam(), words, Content::noise, size, turn, turn % 3 == 0);
        check.hold(GetParam(), size, numbers, Spacing::continuous, words);
        reference::Scene scene = check.scene(GetParam(), words);
        const std::vector<Conversion> conversions = everyConversion(scene, GetParam(), words, turn);
        for (const Spacing spacing : allSpacings) {
            check.hold(GetParam(), size, numbers, spacing, words, placementOfTurn(turn));
            for (size_t i = 0; i < conversions.size(); ++i) {
                Asked asked = conversions[i].asked;
                asked.spacing = spacingOfTurn(turn + static_cast<uint32_t>(spacing) + static_cast<uint32_t>(i));
                ASSERT_TRUE(check.convert(asked, conversions[i].expected));
            }
        }
    }
}

TEST_P(ViewFormats, EveryShape) {
    ViewCheck check({20, 130});
    uint32_t turn = GetParam().code & 0xFF;
    for (const Size size : everyShape(turn * 37)) {
        ++turn;
        const KroViewOptions words = wordOptions(GetParam(), turn);
        const Content content = turn % 2 == 0 ? Content::noise : allContents[turn / 2 % 6];
        const auto numbers = numbersFor(GetParam(), words, content, size, turn, turn % 3 == 0);
        check.hold(GetParam(), size, numbers, spacingOfTurn(turn), words, placementOfTurn(turn));
        reference::Scene scene = check.scene(GetParam(), words);
        for (const Conversion& conversion : everyConversion(scene, GetParam(), words, turn)) {
            ASSERT_TRUE(check.convert(conversion.asked, conversion.expected));
        }
    }
}

// All positions of a row's end in groups, blocks and vectors.
TEST_P(ViewFormats, EveryWidth) {
    ViewCheck check({5, 140});
    for (int width = 4; width <= 140; width += reducedRun ? 9 : 1) {
        const uint32_t turn = static_cast<uint32_t>(width) + GetParam().code % 7;
        const Size size{4 + width % 2, width};
        const KroViewOptions words = wordOptions(GetParam(), turn);
        const auto numbers = numbersFor(GetParam(), words, Content::noise, size, turn, turn % 5 == 0);
        for (const Spacing spacing : {Spacing::continuous, allSpacings[1 + turn % 5]}) {
            check.hold(GetParam(), size, numbers, spacing, words, placementOfTurn(turn));
            reference::Scene scene = check.scene(GetParam(), words);
            for (const char* output : {"BGR8", "Mono16"}) {
                const Conversion conversion(scene, outputNamed(output), words, Method::bilinear, turn);
                ASSERT_TRUE(check.convert(conversion.asked, conversion.expected));
            }
        }
    }
}

// ---- every kind of frame: a phase and an algorithm, or grey ----

class ViewKinds : public testing::TestWithParam<Kind> {};
INSTANTIATE_TEST_SUITE_P(Every, ViewKinds, testing::ValuesIn(allKinds()), kindName);

// All outputs of one frame whose format, words and distances change from turn to turn.
void checkAllOutputs(ViewCheck& check, const Kind& kind, Size size, Content content, uint32_t turn) {
    const InputFormat& format = kind.formatOfTurn(turn);
    const KroViewOptions words = wordOptions(format, turn);
    const auto numbers = numbersFor(format, words, content, size, turn, turn % 5 == 0);
    check.hold(format, size, numbers, spacingOfTurn(turn), words, placementOfTurn(turn));
    reference::Scene scene = check.scene(format, words);
    for (const ViewOutput& output : reference::viewOutputs) {
        ++turn;
        const Conversion conversion(scene, output, words, kind.method, turn);
        ASSERT_TRUE(check.convert(conversion.asked, conversion.expected));
    }
}

TEST_P(ViewKinds, EverySmallSize) {
    ViewCheck check({9, 70});
    const std::vector<Size> sizes = smallSizes();
    // What takes long shares the sizes among the phases.
    const size_t step = takesLong(GetParam()) ? stepOf(4, 4) : 1;
    const size_t rounds = takesLong(GetParam()) ? 1 : 2;
    for (size_t i = static_cast<size_t>(GetParam().phase) % step; i < rounds * sizes.size(); i += step) {
        const uint32_t turn = static_cast<uint32_t>(i / step) + 1;
        checkAllOutputs(check, GetParam(), sizes[i % sizes.size()],
                        turn % 3 == 0 ? allContents[turn / 3 % 6] : Content::noise, turn);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST_P(ViewKinds, EveryContent) {
    ViewCheck check({19, 53});
    uint32_t turn = 0;
    for (const Size size : {Size{5, 5}, Size{7, 21}, Size{18, 36}, Size{19, 53}}) {
        for (const Content content : allContents) {
            checkAllOutputs(check, GetParam(), size, content, turn++);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

// Wider than any strip of columns that a row is worked through in.
TEST_P(ViewKinds, WideFrames) {
    ViewCheck check({7, 9001});
    uint32_t turn = 100;
    for (const Size size : {Size{7, 1500}, Size{6, 1501}, Size{5, 3000}, Size{4, 9001}}) {
        if ((reducedRun || takesLong(GetParam())) && size.width > 2000) {
            break;
        }
        checkAllOutputs(check, GetParam(), size, turn % 2 == 0 ? Content::noise : Content::extremes, turn);
        if (HasFatalFailure()) {
            return;
        }
        turn += 7;
    }
}

TEST_P(ViewKinds, LargeSizes) {
    ViewCheck check({65, 1921});
    uint32_t turn = 200;
    for (const Size size : {Size{33, 129}, Size{65, 257}, Size{11, 1921}, Size{48, 640}}) {
        if (reducedRun && size.width > 200) {
            break;
        }
        checkAllOutputs(check, GetParam(), size, Content::noise, turn += 5);
        if (HasFatalFailure()) {
            return;
        }
    }
}

}  // namespace
