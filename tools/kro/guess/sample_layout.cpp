#include "guess/sample_layout.hpp"

namespace cli::guess {

namespace {

using Format = kro::PixelFormat;

constexpr std::array<SampleLayout, 11> layouts{{
    {"8", "a byte a sample", Format::Mono8, 8, 1, 1, {true}, false, false},
    {"16", "little-endian words", Format::Mono16, 16, 2, 1, {false, true}, false, false},
    {"16", "big-endian words", Format::Mono16, 16, 2, 1, {true}, true, false},
    {"10Packed", "two samples in three bytes", Format::Mono10Packed, 10, 3, 2, {true, false, true}, false, false},
    {"12Packed", "two samples in three bytes", Format::Mono12Packed, 12, 3, 2, {true, false, true}, false, false},
    {"10p",
     "four samples in five bytes, low bits first",
     Format::Mono10p,
     10,
     5,
     4,
     {false, false, false, false, true},
     false,
     false},
    {"12p",
     "two samples in three bytes, low bits first",
     Format::Mono12p,
     12,
     3,
     2,
     {false, false, true},
     false,
     false},
    {"14p",
     "four samples in seven bytes, low bits first",
     Format::Mono14p,
     14,
     7,
     4,
     {false, false, false, false, false, false, true},
     false,
     false},
    {"10P",
     "CSI-2 packing, four samples in five bytes",
     Format::Y10P,
     10,
     5,
     4,
     {true, true, true, true},
     false,
     true},
    {"12P", "CSI-2 packing, two samples in three bytes", Format::Y12P, 12, 3, 2, {true, true}, false, true},
    {"14P",
     "CSI-2 packing, four samples in seven bytes",
     Format::Y14P,
     14,
     7,
     4,
     {true, true, true, true},
     false,
     true},
}};

}  // namespace

const std::array<SampleLayout, 11>& sampleLayouts() { return layouts; }

std::size_t SampleLayout::rowBytes(std::size_t width) const {
    return (width + groupSamples - 1) / groupSamples * groupBytes;
}

std::string SampleLayout::formatName(Phase phase, int significantBits) const {
    const std::string depth = isWords() ? std::to_string(significantBits) : suffix;
    const std::string sites = phase == Phase::mono ? "" : firstSites(phase);
    if (csi2) {
        return (sites.empty() ? "Y" : "S" + sites) + depth;
    }
    return (sites.empty() ? "Mono" : "Bayer" + sites.substr(0, 2)) + depth;
}

void unpackRows(const Rows& rows, const SampleLayout& layout, Samples& samples) {
    samples.resize(rows.width * rows.count);
    Bytes aligned;
    const uint8_t* first = rows.first;
    if (layout.isWords() && reinterpret_cast<std::uintptr_t>(first) % 2 != 0) {
        aligned.assign(first, first + rows.stride * (rows.count - 1) + layout.rowBytes(rows.width));
        first = aligned.data();
    }
    const kro::Frame frame{first, static_cast<int32_t>(rows.count), static_cast<int32_t>(rows.width), layout.mono,
                           static_cast<std::ptrdiff_t>(rows.stride)};
    kro::Options options;
    options.bigEndian = layout.bigEndian;
    kro::convert(frame, {samples.data(), Format::Mono16}, options);
}

}  // namespace cli::guess
