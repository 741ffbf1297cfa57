// What the package's JavaScript calls, and the tables it takes its lists from. JavaScript places view.h's records,
// the frame and the picture in the module's memory, behind all that is the module's own.
#include <kro/kro.hpp>

#include "KROView.hpp"
#include "records/formats.hpp"

#define KRO_WEB(name) extern "C" __attribute__((export_name(#name)))

namespace {

// kro-scalar.wasm is the same module for engines without vectors.
#ifdef KRO_WEB_SCALAR
constexpr const kro::Kernels& kernels = kro::scalarKernels;
#else
constexpr const kro::Kernels& kernels = kro::simd128Kernels;
#endif

// What there is to know of a format.
struct Format {
    uint32_t code;
    const char* name;
    int32_t nameLength;
    int32_t bits;       // of a sample
    int32_t layout;     // of a frame's samples, a kro::Layout; -1: not a format of frames
    int32_t ofWords;    // of a frame: 1 where samples lie in words
    const char* sites;  // the first two of a mosaic; empty for grey
    int32_t planes;     // of a picture; 0: not a format of pictures
};

const char* sitesOf(const kro::InputFormat& format) {
    constexpr const char* sites[2][2] = {{"RG", "BG"}, {"GR", "GB"}};
    return format.grey ? "" : sites[format.phase.greenFirst ? 1 : 0][format.phase.blueRow ? 1 : 0];
}

Format described(const kro::NamedFormat& named) {
    const uint32_t code = static_cast<uint32_t>(named.format);
    Format format{code, named.name.data(), static_cast<int32_t>(named.name.size()), 0, -1, 0, "", 0};
    if (const kro::OutputFormat* picture = kro::findOutput(code)) {
        format.bits = picture->sampleBytes * 8;
        format.planes = picture->kind == kro::Output::planar ? 3 : 1;
    }
    if (const kro::InputFormat* frame = kro::findInput(code)) {
        format.bits = frame->bits;
        format.layout = static_cast<int32_t>(frame->layout);
        format.ofWords = frame->layout == kro::Layout::words;
        format.sites = sitesOf(*frame);
    }
    return format;
}

Format format;

}  // namespace

KRO_WEB(kroConvertView)
int32_t convertView(const KroSourceView* source, const KroPictureView* picture, const KroViewOptions* options) {
    return kro::convertView(kernels, source, picture, options);
}

KRO_WEB(kroRowBytes)
ptrdiff_t rowBytes(uint32_t code, int32_t width) { return kroRowBytes(code, width); }

KRO_WEB(formatCount)
int32_t formatCount() { return static_cast<int32_t>(sizeof kro::pixelFormats / sizeof kro::pixelFormats[0]); }

// A record that the next call overwrites.
KRO_WEB(formatAt)
const Format* formatAt(int32_t index) {
    format = described(kro::pixelFormats[index]);
    return &format;
}

KRO_WEB(instructionSet)
const char* instructionSet() { return kernels.name; }
