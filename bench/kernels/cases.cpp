#include "kernels/cases.hpp"

#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include "kro/view.h"

namespace bench {
namespace {

constexpr uint32_t lumaWeights[3] = {77, 150, 29};

// One overload per signature of the exported frame routines: the buffers of the frame in the routine's own order.
template <class Status>
void call(Status (*routine)(const uint8_t*, int32_t, int32_t, uint8_t*), const Frame& f) {
    routine(f.source<uint8_t>(), f.height(), f.width(), f.destination());
}
template <class Status>
void call(Status (*routine)(const uint8_t*, int32_t, int32_t, uint8_t*, int32_t), const Frame& f) {
    routine(f.source<uint8_t>(), f.height(), f.width(), f.destination(), 0);
}
template <class Status>
void call(Status (*routine)(const uint8_t*, int32_t, int32_t, uint8_t*, uint32_t), const Frame& f) {
    routine(f.source<uint8_t>(), f.height(), f.width(), f.destination(), 0);
}
template <class Status>
void call(Status (*routine)(const uint8_t*, int32_t, int32_t, uint8_t*, uint32_t, uint8_t*), const Frame& f) {
    routine(f.source<uint8_t>(), f.height(), f.width(), f.destination(), 0, f.workingMemory());
}
template <class Status>
void call(Status (*routine)(const uint8_t*, int32_t, int32_t, const uint32_t*, uint8_t*), const Frame& f) {
    routine(f.source<uint8_t>(), f.height(), f.width(), lumaWeights, f.destination());
}
template <class Status>
void call(Status (*routine)(const uint8_t*, int32_t, int32_t, uint8_t*, uint8_t*, uint8_t*), const Frame& f) {
    routine(f.source<uint8_t>(), f.height(), f.width(), f.plane<uint8_t>(0), f.plane<uint8_t>(1),
            f.plane<uint8_t>(2));
}
template <class Status>
void call(Status (*routine)(const uint8_t*, int32_t, int32_t, uint8_t*, uint8_t*, uint8_t*, uint8_t*),
          const Frame& f) {
    routine(f.source<uint8_t>(), f.height(), f.width(), f.plane<uint8_t>(0), f.plane<uint8_t>(1), f.plane<uint8_t>(2),
            f.workingMemory());
}
template <class Status>
void call(Status (*routine)(const uint16_t*, int32_t, int32_t, uint16_t*), const Frame& f) {
    routine(f.source<uint16_t>(), f.height(), f.width(), f.plane<uint16_t>(0));
}
template <class Status>
void call(Status (*routine)(const uint16_t*, int32_t, int32_t, uint16_t*, uint16_t*, uint16_t*), const Frame& f) {
    routine(f.source<uint16_t>(), f.height(), f.width(), f.plane<uint16_t>(0), f.plane<uint16_t>(1),
            f.plane<uint16_t>(2));
}
void call(void (*routine)(const uint16_t*, int32_t, int32_t, uint32_t, uint8_t*), const Frame& f) {
    const uint32_t shift = f.samples() == Samples::u10 ? 2 : f.samples() == Samples::u12 ? 4 : 8;
    routine(f.source<uint16_t>(), f.height(), f.width(), shift, f.destination());
}

template <class Routine>
Case kernelCase(const char* name, Samples samples, size_t outputBytes, Routine, const char* symbol) {
    return {name, samples, outputBytes, [symbol](const Table& table, const Frame& frame) -> Work {
                const auto routine = reinterpret_cast<Routine>(table.routine(table.index, symbol));
                if (routine == nullptr) {
                    return {};
                }
                return [routine, &frame] { call(routine, frame); };
            }};
}

void require(int32_t status, const char* what) {
    if (status != KRO_OK) {
        throw std::runtime_error(std::string(what) + " returned " + std::to_string(status));
    }
}

std::shared_ptr<KroContext> handleFor(uint32_t outputFormat) {
    KroContext* handle = nullptr;
    require(kroCreate(&handle), "kroCreate");
    std::shared_ptr<KroContext> owner(handle, [](KroContext* owned) { kroRelease(&owned); });
    require(kroDemosaicSetConfig(handle, &outputFormat), "kroDemosaicSetConfig");
    return owner;
}

// As a host calls it: through the main entry, reduction included.
Case entryCase(const char* name, Samples samples, size_t outputBytes, uint32_t inputFormat, KroAlgorithm algorithm,
               uint32_t outputFormat = KRO_BGR8) {
    return {name, samples, outputBytes, [=](const Table& table, const Frame& frame) -> Work {
                const std::shared_ptr<KroContext> handle = handleFor(outputFormat);
                return [=, &frame] {
                    const KroImage input{frame.height(), frame.width(), inputFormat,
                                         const_cast<uint8_t*>(frame.source<uint8_t>())};
                    KroImage output{0, 0, 0, frame.destination()};
                    require(table.demosaicing(table.index, handle.get(), &input, algorithm, &output),
                            "kroDemosaicing");
                };
            }};
}

// A frame of rows with a gap between them, where `gap` bytes are asked for, to a picture of such rows.
struct ViewBuffers {
    size_t in, out;  // from row to row
    Buffer source, destination;
    KroSourceView frame;
    KroPictureView picture;

    ViewBuffers(const Frame& given, size_t outputBytes, uint32_t inputFormat, uint32_t outputFormat, size_t gap)
        : in(sourceBytes(given.samples(), static_cast<size_t>(given.width())) + gap),
          out(static_cast<size_t>(given.width()) * outputBytes + gap),
          source(static_cast<size_t>(given.height()) * in, given.place(), given.sourceSampleBytes()),
          destination(static_cast<size_t>(given.height()) * out, given.place(), given.destinationSampleBytes()),
          frame{source.data(), static_cast<ptrdiff_t>(in), given.height(), given.width(), inputFormat},
          picture{{destination.data()}, {static_cast<ptrdiff_t>(out)}, outputFormat} {
        for (size_t y = 0; y < static_cast<size_t>(given.height()); ++y) {
            std::memcpy(source.data() + y * in, given.source<uint8_t>() + y * (in - gap), in - gap);
        }
    }
};

// A build made before an algorithm was, measured beside this one, refuses it.
bool knows(const Table& table, const KroSourceView& source, const KroPictureView& picture, KroViewOptions options) {
    options.rowCount = 1;
    return table.view(table.index, &source, &picture, &options) != KRO_ERR_OPTION;
}

Case viewCase(const char* name, Samples samples, size_t outputBytes, uint32_t inputFormat, KroAlgorithm algorithm,
              uint32_t outputFormat, size_t gap = 0, uint32_t flags = 0) {
    // The same for all instruction sets.
    const auto buffers = std::make_shared<std::map<const Frame*, std::weak_ptr<ViewBuffers>>>();
    return {name, samples, outputBytes, [=](const Table& table, const Frame& frame) -> Work {
                if (table.view == nullptr) {
                    return {};
                }
                std::shared_ptr<ViewBuffers> padded;
                KroSourceView source{frame.source<uint8_t>(), 0, frame.height(), frame.width(), inputFormat};
                KroPictureView picture{{frame.destination()}, {0}, outputFormat};
                if (gap != 0) {
                    padded = (*buffers)[&frame].lock();
                    if (padded == nullptr) {
                        padded = std::make_shared<ViewBuffers>(frame, outputBytes, inputFormat, outputFormat, gap);
                        (*buffers)[&frame] = padded;
                    }
                    source = padded->frame;
                    picture = padded->picture;
                }
                KroViewOptions options{};
                options.size = sizeof options;
                options.algorithm = algorithm;
                options.flags = flags;
                if (!knows(table, source, picture, options)) {
                    return {};
                }
                return [=] {
                    (void)padded;
                    require(table.view(table.index, &source, &picture, &options), "kroConvertView");
                };
            }};
}

#define KERNEL(name, samples, outputBytes, routine) \
    kernelCase(name, Samples::samples, outputBytes, &::routine, #routine)

std::vector<Case> makeCases() {
    return {
        entryCase("mono/Mono8/BGR8", Samples::u8, 3, KRO_MONO8, KRO_NEAREST, KRO_BGR8),
        entryCase("mono/Mono8/BGRa8", Samples::u8, 4, KRO_MONO8, KRO_NEAREST, KRO_BGRA8),
        entryCase("mono/Mono8/BGR8Planar", Samples::u8, 3, KRO_MONO8, KRO_NEAREST, KRO_BGR8_PLANAR),

        KERNEL("nearest/RG8/BGR8", u8, 3, rg8ToBgr8_nearest),
        KERNEL("nearest/GB8/BGR8", u8, 3, gb8ToBgr8_nearest),
        KERNEL("nearest/RG8/BGRa8", u8, 4, rg8ToBgra8_nearest),
        KERNEL("nearest/GB8/BGRa8", u8, 4, gb8ToBgra8_nearest),
        KERNEL("nearest/RG8/BGR8Planar", u8, 3, rg8ToBgr8P_nearest),
        KERNEL("nearest/GB8/BGR8Planar", u8, 3, gb8ToBgr8P_nearest),
        KERNEL("nearest/RG8/Mono8", u8, 1, rg8ToMono8_nearest),
        KERNEL("nearest/GB8/Mono8", u8, 1, gb8ToMono8_nearest),

        KERNEL("bilinear/RG8/BGR8", u8, 3, rg8ToBgr8_bilinear),
        KERNEL("bilinear/GR8/BGR8", u8, 3, gr8ToBgr8_bilinear),
        KERNEL("bilinear/GB8/BGR8", u8, 3, gb8ToBgr8_bilinear),
        KERNEL("bilinear/BG8/BGR8", u8, 3, bg8ToBgr8_bilinear),
        KERNEL("bilinear/RG8/BGRa8", u8, 4, rg8ToBgra8_bilinear),
        KERNEL("bilinear/GR8/BGRa8", u8, 4, gr8ToBgra8_bilinear),
        KERNEL("bilinear/GB8/BGRa8", u8, 4, gb8ToBgra8_bilinear),
        KERNEL("bilinear/BG8/BGRa8", u8, 4, bg8ToBgra8_bilinear),
        KERNEL("bilinear/RG8/BGR8Planar", u8, 3, rg8ToBgr8P_bilinear),
        KERNEL("bilinear/GR8/BGR8Planar", u8, 3, gr8ToBgr8P_bilinear),
        KERNEL("bilinear/RG8/Mono8", u8, 1, rg8ToMono8_bilinear),
        KERNEL("bilinear/GR8/Mono8", u8, 1, gr8ToMono8_bilinear),

        KERNEL("edge/RG8/BGR8", u8, 3, rg8ToBgr8_edge),
        KERNEL("edge/GB8/BGR8", u8, 3, gb8ToBgr8_edge),
        KERNEL("edge/RG8/BGRa8", u8, 4, rg8ToBgra8_edge),
        KERNEL("edge/GB8/BGRa8", u8, 4, gb8ToBgra8_edge),
        KERNEL("edge/RG8/BGR8Planar", u8, 3, rg8ToBgr8P_edge),
        KERNEL("edge/GB8/BGR8Planar", u8, 3, gb8ToBgr8P_edge),
        KERNEL("edge/RG8/Mono8", u8, 1, rg8ToMono8_edge),
        KERNEL("edge/GB8/Mono8", u8, 1, gb8ToMono8_edge),

        KERNEL("reduce/u10/u8", u10, 1, u16Tou8),
        KERNEL("reduce/u12/u8", u12, 1, u16Tou8),
        KERNEL("reduce/u16/u8", u16, 1, u16Tou8),
        KERNEL("reduce/packed/u8", packed12, 1, unpacked),
        KERNEL("widen/BGR8/BGRa8", bgr, 4, bgrToBgra),

        entryCase("entry-nearest/RG8/BGR8", Samples::u8, 3, KRO_BAYER_RG8, KRO_NEAREST),
        entryCase("entry-nearest/RG12/BGR8", Samples::u12, 3, KRO_BAYER_RG12, KRO_NEAREST),
        entryCase("entry-nearest/RG12Packed/BGR8", Samples::packed12, 3, KRO_BAYER_RG12_PACKED, KRO_NEAREST),
        entryCase("entry-bilinear/RG8/BGR8", Samples::u8, 3, KRO_BAYER_RG8, KRO_BILINEAR),
        entryCase("entry-bilinear/RG10/BGR8", Samples::u10, 3, KRO_BAYER_RG10, KRO_BILINEAR),
        entryCase("entry-bilinear/RG12/BGR8", Samples::u12, 3, KRO_BAYER_RG12, KRO_BILINEAR),
        entryCase("entry-bilinear/RG12Packed/BGR8", Samples::packed12, 3, KRO_BAYER_RG12_PACKED, KRO_BILINEAR),
        entryCase("entry-bilinear/RG16/BGR8", Samples::u16, 3, KRO_BAYER_RG16, KRO_BILINEAR),
        entryCase("entry-edge/RG8/BGR8", Samples::u8, 3, KRO_BAYER_RG8, KRO_EDGE),
        entryCase("entry-edge/RG12/BGR8", Samples::u12, 3, KRO_BAYER_RG12, KRO_EDGE),
        entryCase("entry-edge/RG12Packed/BGR8", Samples::packed12, 3, KRO_BAYER_RG12_PACKED, KRO_EDGE),

        KERNEL("bilinear/RG16/BGR16", u16, 6, demosaicingBilinearRGGBU16),
        KERNEL("bilinear/RG16/BGR16Planar", u16, 6, demosaicingBilinearRGGBU16P),
        KERNEL("edge/RG12/BGR16", u12, 6, demosaicingEdgeRGGBU16),
        KERNEL("edge/GR12/BGR16", u12, 6, demosaicingEdgeGRBGU16),
        KERNEL("edge/GB12/BGR16", u12, 6, demosaicingEdgeGBRGU16),
        KERNEL("edge/BG12/BGR16", u12, 6, demosaicingEdgeBGGRU16),
        KERNEL("edge/RG16/BGR16", u16, 6, demosaicingEdgeRGGBU16),
        KERNEL("edge/GR16/BGR16", u16, 6, demosaicingEdgeGRBGU16),
        KERNEL("edge/GB16/BGR16", u16, 6, demosaicingEdgeGBRGU16),
        KERNEL("edge/BG16/BGR16", u16, 6, demosaicingEdgeBGGRU16),

        viewCase("view-bilinear/RG8/BGR8", Samples::u8, 3, KRO_BAYER_RG8, KRO_BILINEAR, KRO_BGR8),
        viewCase("view-bilinear/RG8+64/BGR8", Samples::u8, 3, KRO_BAYER_RG8, KRO_BILINEAR, KRO_BGR8, 64),
        viewCase("view-edge/RG8/BGR8", Samples::u8, 3, KRO_BAYER_RG8, KRO_EDGE, KRO_BGR8),
        viewCase("view-edge/RG8+64/BGR8", Samples::u8, 3, KRO_BAYER_RG8, KRO_EDGE, KRO_BGR8, 64),
        viewCase("view-bilinear/RG12Packed/BGR8", Samples::packed12, 3, KRO_BAYER_RG12_PACKED, KRO_BILINEAR,
                 KRO_BGR8),
        viewCase("view-bilinear/RG10p/BGR8", Samples::packed10, 3, KRO_BAYER_RG10P, KRO_BILINEAR, KRO_BGR8),
        viewCase("view-bilinear/RG12p/BGR8", Samples::packed12, 3, KRO_BAYER_RG12P, KRO_BILINEAR, KRO_BGR8),
        viewCase("view-bilinear/RG14p/BGR8", Samples::packed14, 3, KRO_BAYER_RG14P, KRO_BILINEAR, KRO_BGR8),
        viewCase("view-bilinear/SRGGB10P/BGR8", Samples::packed10, 3, KRO_SRGGB10P, KRO_BILINEAR, KRO_BGR8),
        viewCase("view-bilinear/SRGGB12P/BGR8", Samples::packed12, 3, KRO_SRGGB12P, KRO_BILINEAR, KRO_BGR8),
        viewCase("view-bilinear/SRGGB14P/BGR8", Samples::packed14, 3, KRO_SRGGB14P, KRO_BILINEAR, KRO_BGR8),
        viewCase("view-edge/RG12Packed/BGR8", Samples::packed12, 3, KRO_BAYER_RG12_PACKED, KRO_EDGE, KRO_BGR8),
        viewCase("view-edge/RG12p/BGR8", Samples::packed12, 3, KRO_BAYER_RG12P, KRO_EDGE, KRO_BGR8),
        viewCase("view-edge/SRGGB10P/BGR8", Samples::packed10, 3, KRO_SRGGB10P, KRO_EDGE, KRO_BGR8),
        viewCase("view-bilinear/RG16/BGR16", Samples::u16, 6, KRO_BAYER_RG16, KRO_BILINEAR, KRO_BGR16),
        viewCase("view-bilinear/RG12/BGR16", Samples::u12, 6, KRO_BAYER_RG12, KRO_BILINEAR, KRO_BGR16),
        viewCase("view-bilinear/RG12/BGR16-full", Samples::u12, 6, KRO_BAYER_RG12, KRO_BILINEAR, KRO_BGR16, 0,
                 KRO_VIEW_FULL_RANGE),
        viewCase("view-edge/RG16/BGR16", Samples::u16, 6, KRO_BAYER_RG16, KRO_EDGE, KRO_BGR16),
        viewCase("view-edge/RG12/BGR16", Samples::u12, 6, KRO_BAYER_RG12, KRO_EDGE, KRO_BGR16),

        // Beside edge-directed pictures of the same kinds: what fine costs is a share of these.
        viewCase("view-edge/RG8/BGRa8", Samples::u8, 4, KRO_BAYER_RG8, KRO_EDGE, KRO_BGRA8),
        viewCase("view-edge/RG8/Mono8", Samples::u8, 1, KRO_BAYER_RG8, KRO_EDGE, KRO_MONO8),
        viewCase("view-fine/RG8/BGR8", Samples::u8, 3, KRO_BAYER_RG8, KRO_FINE, KRO_BGR8),
        viewCase("view-fine/RG8/BGRa8", Samples::u8, 4, KRO_BAYER_RG8, KRO_FINE, KRO_BGRA8),
        viewCase("view-fine/RG8/Mono8", Samples::u8, 1, KRO_BAYER_RG8, KRO_FINE, KRO_MONO8),
        viewCase("view-fine/RG12Packed/BGR8", Samples::packed12, 3, KRO_BAYER_RG12_PACKED, KRO_FINE, KRO_BGR8),
        viewCase("view-fine/RG12/BGR16", Samples::u12, 6, KRO_BAYER_RG12, KRO_FINE, KRO_BGR16),
        viewCase("view-fine/RG16/BGR16", Samples::u16, 6, KRO_BAYER_RG16, KRO_FINE, KRO_BGR16),
    };
}

#undef KERNEL

}  // namespace

const std::vector<Case>& allCases() {
    static const std::vector<Case> cases = makeCases();
    return cases;
}

}  // namespace bench
