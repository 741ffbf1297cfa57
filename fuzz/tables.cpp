// The same input on every table of kernels that this processor can run gives the same bytes.
#include "KRODemosaicing.hpp"
#include "KROView.hpp"
#include "frame_request.hpp"
#include "view_request.hpp"

namespace {

using fuzz::Block;
using fuzz::Choices;
using kro::Kernels;

// What a call returned and wrote.
struct Outcome {
    int32_t status;
    std::vector<uint8_t> bytes;
    bool operator==(const Outcome& other) const { return status == other.status && bytes == other.bytes; }
};

template <class Call>
void compare(const Call& call) {
    const Kernels* tables[16];
    const int count = kro::usableKernels(tables, 16);
    const Outcome first = call(*tables[0]);
    for (int i = 1; i < count; ++i) {
        fuzz::require(call(*tables[i]) == first, tables[i]->name);
    }
}

void views(Choices& choices) {
    fuzz::ViewRequest request(choices);
    if (request.expectedStatus() != KRO_OK || !request.fits()) {
        return;
    }
    compare([&](const Kernels& table) {
        const int32_t status = request.run(
            [&table](const KroSourceView* source, const KroPictureView* picture, const KroViewOptions* options) {
                return kro::convertView(table, source, picture, options);
            });
        return Outcome{status, request.written()};
    });
}

void frames(Choices& choices) {
    const auto& formats = reference::outputFormats;
    const uint32_t output = formats[static_cast<size_t>(choices.below(static_cast<int>(formats.size())))].code;
    fuzz::FrameRequest request(choices, output);
    if (request.expectedStatus() != KRO_OK || !request.fits()) {
        return;
    }
    compare([&](const Kernels& table) {
        KroContext* handle = nullptr;
        fuzz::require(kroCreate(&handle) == KRO_OK, "no handle");
        fuzz::require(kroDemosaicSetConfig(handle, &output) == KRO_OK, "no output format");
        const int32_t status = request.run(
            handle, [&table](KroContext* context, const KroImage* frame, KroAlgorithm algorithm, KroImage* picture) {
                return kro::demosaicing(table, context, frame, algorithm, picture);
            });
        kroRelease(&handle);
        return Outcome{status, request.written()};
    });
}

// Whole frames of words to pictures of words, any bits set.
void words(Choices& choices) {
    using Routine = int32_t (*Kernels::*)(const uint16_t*, int32_t, int32_t, uint16_t*);
    constexpr Routine routines[] = {&Kernels::demosaicingBilinearRGGBU16, &Kernels::demosaicingEdgeRGGBU16,
                                    &Kernels::demosaicingEdgeGRBGU16, &Kernels::demosaicingEdgeGBRGU16,
                                    &Kernels::demosaicingEdgeBGGRU16};
    const Routine routine = choices.oneOf(routines);
    const int32_t height = 4 + choices.below(14), width = 4 + choices.below(100);
    const size_t pixels = static_cast<size_t>(height) * static_cast<size_t>(width);
    const Block source(choices.samples(pixels * 2), 2);
    Block picture(pixels * 6, 2);
    compare([&](const Kernels& table) {
        picture.fill();
        const int32_t status = (table.*routine)(reinterpret_cast<const uint16_t*>(source.data()), height, width,
                                                reinterpret_cast<uint16_t*>(picture.data()));
        return Outcome{status, picture.content()};
    });
}

// One byte more than the count may be written of an odd number of packed samples.
void reductions(Choices& choices) {
    const int32_t height = 1 + choices.below(9), width = 1 + choices.below(100);
    const uint32_t shift = static_cast<uint32_t>(choices.below(9));
    const bool packed = choices.oneIn(2);
    const size_t count = static_cast<size_t>(height) * static_cast<size_t>(width);
    const Block source(choices.samples(packed ? (count + 1) / 2 * 3 : count * 2), 2);
    Block picture(packed ? (count + 1) / 2 * 2 : count);
    compare([&](const Kernels& table) {
        picture.fill();
        if (packed) {
            table.unpacked(source.data(), height, width, picture.data());
        } else {
            table.u16Tou8(reinterpret_cast<const uint16_t*>(source.data()), height, width, shift, picture.data());
        }
        return Outcome{0, picture.content()};
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Choices choices(data, size);
    constexpr void (*kinds[])(Choices&) = {views, frames, words, reductions};
    choices.oneOf(kinds)(choices);
    return 0;
}
