#include "frames/samples.hpp"

#include <kro/kro.hpp>

namespace cli {

namespace {

// The grey format of the same layout: read as that a mosaic's samples are pixels. Words have all their bits.
const InputFormat& greyTwin(const InputFormat& format) {
    const int bits = format.packing == Packing::word ? 16 : format.bits;
    return *findInputFormat(Phase::mono, bits, format.packing);
}

// The low bits of a run of bytes from bit `at` on, least significant first. They must be 0 before.
void putBits(uint8_t* bytes, std::size_t at, uint32_t bits) {
    bits <<= at % 8;
    for (std::size_t i = at / 8; bits != 0; i++, bits >>= 8) {
        bytes[i] = static_cast<uint8_t>(bytes[i] | (bits & 255));
    }
}

// Two samples in three bytes, the high bits outside.
void putPacked(uint8_t* bytes, std::size_t i, uint32_t sample, std::size_t lowCount) {
    uint8_t* group = bytes + i / 2 * 3;
    group[i % 2 * 2] = static_cast<uint8_t>(sample >> lowCount);
    putBits(group + 1, i % 2 * 4, sample & ((1u << lowCount) - 1));
}

// As many samples in a group as make their low bits whole bytes, which stand behind the high ones.
void putCsi2(uint8_t* bytes, std::size_t i, uint32_t sample, std::size_t lowCount) {
    const std::size_t inGroup = lowCount == 4 ? 2 : 4;
    uint8_t* group = bytes + i / inGroup * (inGroup + inGroup * lowCount / 8);
    group[i % inGroup] = static_cast<uint8_t>(sample >> lowCount);
    putBits(group + inGroup, i % inGroup * lowCount, sample & ((1u << lowCount) - 1));
}

void putSample(uint8_t* bytes, std::size_t i, uint32_t sample, const FrameLayout& layout) {
    const std::size_t bits = static_cast<std::size_t>(layout.format->bits);
    switch (layout.format->packing) {
        case Packing::byte:
            bytes[i] = static_cast<uint8_t>(sample);
            break;
        case Packing::word:
            bytes[2 * i + (layout.bigEndian ? 1 : 0)] = static_cast<uint8_t>(sample);
            bytes[2 * i + (layout.bigEndian ? 0 : 1)] = static_cast<uint8_t>(sample >> 8);
            break;
        case Packing::packed:
            putPacked(bytes, i, sample, bits - 8);
            break;
        case Packing::lsb:
            putBits(bytes, i * bits, sample);
            break;
        case Packing::csi2:
            putCsi2(bytes, i, sample, bits - 8);
            break;
    }
}

}  // namespace

void unpackSamples(const Bytes& frame, const FrameLayout& layout, Samples& samples) {
    samples.resize(layout.size.samples());
    const kro::Frame source{frame.data(), layout.size.height, layout.size.width,
                            static_cast<kro::PixelFormat>(greyTwin(*layout.format).code),
                            static_cast<std::ptrdiff_t>(layout.stride)};
    kro::Options options;
    options.bigEndian = layout.bigEndian;
    kro::convert(source, {samples.data(), kro::PixelFormat::Mono16}, options);
}

Bytes packSamples(const Samples& samples, const FrameLayout& layout) {
    Bytes frame(layout.bytes());
    const std::size_t run = layout.stride != 0 ? static_cast<std::size_t>(layout.size.width) : samples.size();
    uint8_t* row = frame.data();
    for (std::size_t first = 0; first < samples.size(); first += run, row += layout.stride) {
        for (std::size_t i = 0; i < run; i++) {
            putSample(row, i, samples[first + i], layout);
        }
    }
    return frame;
}

}  // namespace cli
