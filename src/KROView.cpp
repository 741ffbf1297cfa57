// Frames as they come: views with any distance from row to row, in every packing, whole or in bands.
#include "KROView.hpp"

#include <cstring>
#include <limits>

#include "KRODemosaicingFuncs/converters.hpp"
#include "row/packing.hpp"

namespace kro {
namespace {

constexpr uint32_t wordFlags = KRO_VIEW_BIG_ENDIAN | KRO_VIEW_LEFT_ALIGNED;
constexpr uint32_t knownFlags = KRO_VIEW_ALPHA | wordFlags | KRO_VIEW_FULL_RANGE;
constexpr int32_t longest = 1 << 30;  // most rows and columns: sums of columns stay within 31 bits

// Planes that a picture of this format must have, and those that this one has: perhaps one for alpha.
int planesOf(const OutputFormat& output) { return output.kind == Output::planar ? 3 : 1; }
int planesOf(const OutputFormat& output, const KroPictureView& picture) {
    return planesOf(output) + (output.kind == Output::planar && picture.plane[3] != nullptr ? 1 : 0);
}
bool ofWords(const InputFormat& input) { return input.layout == Layout::words; }

int64_t rowBytes(const InputFormat& input, int32_t width) {
    return ofWords(input) ? int64_t{width} * 2 : packedBytes(input.layout, width);
}
int64_t rowBytes(const OutputFormat& output, int32_t width) {
    const int channels = output.kind == Output::bgr                                   ? 3
                         : output.kind == Output::bgra || output.kind == Output::abgr ? 4
                                                                                      : 1;
    return int64_t{width} * channels * output.sampleBytes;
}

// ---- the checks, in their order ----

bool anyNull(const KroSourceView* source, const KroPictureView* picture) {
    if (source == nullptr || picture == nullptr || source->data == nullptr || picture->plane[0] == nullptr) {
        return true;
    }
    const OutputFormat* const output = findOutput(picture->format);
    return output != nullptr && planesOf(*output) == 3 &&
           (picture->plane[1] == nullptr || picture->plane[2] == nullptr);
}

// Rows so far apart, or, without gaps, so long, lie within what a pointer difference can say.
template <class Format>
bool addressable(ptrdiff_t stride, const Format* format, int32_t height, int32_t width) {
    constexpr ptrdiff_t most = std::numeric_limits<ptrdiff_t>::max();
    if (stride == std::numeric_limits<ptrdiff_t>::min()) {
        return false;
    }
    const int64_t apart = stride != 0         ? (stride < 0 ? -stride : stride)
                          : format != nullptr ? rowBytes(*format, width)
                                              : 0;
    return apart <= most / height;
}
bool sizeIsBad(const KroSourceView& source, const KroPictureView& picture) {
    if (source.height <= 3 || source.width <= 3 || source.height > longest || source.width > longest) {
        return true;
    }
    const OutputFormat* const output = findOutput(picture.format);
    bool bad = !addressable(source.stride, findInput(source.format), source.height, source.width);
    for (int plane = 0; plane < (output == nullptr ? 1 : planesOf(*output, picture)); ++plane) {
        bad = bad || !addressable(picture.stride[plane], output, source.height, source.width);
    }
    return bad;
}

// Of a record of another size what both know; the rest must be 0.
bool readOptions(const KroViewOptions* given, KroViewOptions& options) {
    options = {sizeof options, given == nullptr ? KRO_EDGE : KRO_NEAREST, 0, 0, 0, 0, 0};
    if (given == nullptr) {
        return true;
    }
    const uint32_t size = given->size;
    if (size < sizeof size) {
        return false;
    }
    std::memcpy(&options, given, size < sizeof options ? size : sizeof options);
    const unsigned char* const bytes = reinterpret_cast<const unsigned char*>(given);
    for (size_t i = sizeof options; i < size; ++i) {
        if (bytes[i] != 0) {
            return false;
        }
    }
    return true;
}

// Completes what 0 leaves open. False where an option has no meaning here.
bool complete(KroViewOptions& options, const InputFormat& input, const OutputFormat& output, int32_t height) {
    const int32_t opaque = output.sampleBytes == 1 ? 255 : 65535;
    if ((options.flags & KRO_VIEW_ALPHA) == 0) {
        options.alpha = opaque;
    }
    if (options.bits == 0) {
        options.bits = input.bits;
    }
    if (options.firstRow < 0 || options.firstRow >= height || options.rowCount < 0 ||
        options.rowCount > height - options.firstRow) {
        return false;
    }
    if (options.rowCount == 0) {
        options.rowCount = height - options.firstRow;
    }
    return options.algorithm >= KRO_NEAREST && options.algorithm <= KRO_FINE && (options.flags & ~knownFlags) == 0 &&
           options.alpha >= 0 && options.alpha <= opaque && options.bits >= 8 && options.bits <= 16 &&
           (ofWords(input) || (options.bits == input.bits && (options.flags & wordFlags) == 0));
}

template <class Format>
bool tooClose(ptrdiff_t stride, const Format& format, int32_t width) {
    const int64_t row = rowBytes(format, width);
    return stride != 0 && stride < row && stride > -row;
}
bool isOdd(const void* data, ptrdiff_t stride) {
    return (reinterpret_cast<uintptr_t>(data) & 1) != 0 || (stride & 1) != 0;
}

int32_t checkRows(const KroSourceView& source, const InputFormat& input, const KroPictureView& picture,
                  const OutputFormat& output) {
    bool close = tooClose(source.stride, input, source.width);
    bool odd = ofWords(input) && isOdd(source.data, source.stride);
    for (int plane = 0; plane < planesOf(output, picture); ++plane) {
        close = close || tooClose(picture.stride[plane], output, source.width);
        odd = odd || (output.sampleBytes == 2 && isOdd(picture.plane[plane], picture.stride[plane]));
    }
    return close ? KRO_ERR_STRIDE : odd ? KRO_ERR_ALIGNMENT : KRO_OK;
}

// ---- the job ----

constexpr bool littleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

Source sourceOf(const KroSourceView& view, const InputFormat& input, const KroViewOptions& options) {
    const bool unpacked = ofWords(input) || input.layout == Layout::bytes;
    const ptrdiff_t gapless = unpacked ? static_cast<ptrdiff_t>(rowBytes(input, view.width)) : 0;
    return {view.data,
            view.stride != 0 ? view.stride : gapless,
            input.layout,
            options.bits,
            littleEndian && (options.flags & KRO_VIEW_BIG_ENDIAN) != 0,
            options.bits < 16 && (options.flags & KRO_VIEW_LEFT_ALIGNED) != 0,
            nullptr,
            0};
}

ptrdiff_t strideOf(const KroPictureView& picture, int plane, const OutputFormat& output, int32_t width) {
    return picture.stride[plane] != 0 ? picture.stride[plane] : static_cast<ptrdiff_t>(rowBytes(output, width));
}
Target targetOf(const KroPictureView& picture, const OutputFormat& output, const KroViewOptions& options,
                int32_t width) {
    Target target = interleavedTarget(picture.plane[0], strideOf(picture, 0, output, width), output.redFirst);
    if (output.kind == Output::planar) {
        for (int plane = 0; plane < 3; ++plane) {
            const int from = output.redFirst ? plane : 2 - plane;
            target.plane[plane] = picture.plane[from];
            target.stride[plane] = strideOf(picture, from, output, width);
        }
    }
    target.alpha = static_cast<uint16_t>(options.alpha);
    target.alphaEverywhere = true;
    const bool spreads = output.sampleBytes == 2 && options.bits < 16 && (options.flags & KRO_VIEW_FULL_RANGE) != 0;
    target.spreadBits = spreads ? options.bits : 0;
    return target;
}

template <class Sample>
void fillRow(Sample* row, int32_t width, int32_t value) {
    for (int32_t x = 0; x < width; ++x) {
        row[x] = static_cast<Sample>(value);
    }
}
void fillAlphaPlane(const KroPictureView& picture, const OutputFormat& output, const KroViewOptions& options,
                    int32_t width) {
    for (int32_t y = options.firstRow; y < options.firstRow + options.rowCount; ++y) {
        void* const row = advanced(static_cast<char*>(picture.plane[3]), y * strideOf(picture, 3, output, width));
        output.sampleBytes == 1 ? fillRow(static_cast<uint8_t*>(row), width, options.alpha)
                                : fillRow(static_cast<uint16_t*>(row), width, options.alpha);
    }
}

}  // namespace

int32_t convertView(const Kernels& kernels, const KroSourceView* source, const KroPictureView* picture,
                    const KroViewOptions* given) {
    if (anyNull(source, picture)) {
        return KRO_ERR_NULL;
    }
    if (sizeIsBad(*source, *picture)) {
        return KRO_ERR_SIZE;
    }
    const InputFormat* const input = findInput(source->format);
    const OutputFormat* const output = findOutput(picture->format);
    if (input == nullptr || output == nullptr) {
        return input == nullptr ? KRO_ERR_FORMAT : KRO_ERR_OUTPUT_FORMAT;
    }
    KroViewOptions options;
    if (!readOptions(given, options) || !complete(options, *input, *output, source->height)) {
        return KRO_ERR_OPTION;
    }
    if (const int32_t status = checkRows(*source, *input, *picture, *output); status != KRO_OK) {
        return status;
    }
    runFrame(kernels, *input, *output, options.algorithm,
             frameJob(sourceOf(*source, *input, options), source->height, source->width, input->phase,
                      targetOf(*picture, *output, options, source->width),
                      {options.firstRow, options.firstRow + options.rowCount}, (1 << options.bits) - 1));
    if (planesOf(*output, *picture) == 4) {
        fillAlphaPlane(*picture, *output, options, source->width);
    }
    return KRO_OK;
}

}  // namespace kro

int32_t kroConvertView(const KroSourceView* source, const KroPictureView* picture, const KroViewOptions* options) {
    return kro::convertView(kro::bestKernels(), source, picture, options);
}

ptrdiff_t kroRowBytes(uint32_t format, int32_t width) {
    const kro::InputFormat* const input = kro::findInput(format);
    const kro::OutputFormat* const output = kro::findOutput(format);
    if (width <= 0 || (input == nullptr && output == nullptr)) {
        return 0;
    }
    return static_cast<ptrdiff_t>(input != nullptr ? kro::rowBytes(*input, width) : kro::rowBytes(*output, width));
}
