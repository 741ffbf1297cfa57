#include "frames/samples.hpp"

#include <algorithm>

namespace cli {

namespace {

// Of two packed samples the high bytes stand outside; the byte between holds the low bits, the first sample's from
// bit 0 and the second's from bit 4.
struct LowBits {
    int count;
    uint32_t mask;
};

LowBits lowBits(const InputFormat& format) {
    const int count = format.bits - 8;
    return {count, (1u << count) - 1};
}

}  // namespace

void unpackSamples(const Bytes& frame, const InputFormat& format, std::size_t count, Samples& samples) {
    samples.resize(count);
    const LowBits low = lowBits(format);
    for (std::size_t i = 0; i < count; i++) {
        switch (format.packing) {
            case Packing::byte:
                samples[i] = frame[i];
                break;
            case Packing::word:
                samples[i] = static_cast<uint16_t>(frame[2 * i] | frame[2 * i + 1] << 8);
                break;
            case Packing::packed: {
                const uint8_t* group = &frame[i / 2 * 3];
                const uint32_t rest = static_cast<uint32_t>(group[1]) >> (i % 2 * 4) & low.mask;
                samples[i] = static_cast<uint16_t>(static_cast<uint32_t>(group[i % 2 * 2]) << low.count | rest);
                break;
            }
        }
    }
}

Bytes packSamples(const Samples& samples, const InputFormat& format) {
    Bytes frame(format.frameBytes(samples.size()));
    for (std::size_t i = 0; i < samples.size(); i++) {
        const uint32_t sample = samples[i];
        switch (format.packing) {
            case Packing::byte:
                frame[i] = static_cast<uint8_t>(sample);
                break;
            case Packing::word:
                frame[2 * i] = static_cast<uint8_t>(sample);
                frame[2 * i + 1] = static_cast<uint8_t>(sample >> 8);
                break;
            case Packing::packed: {
                const LowBits low = lowBits(format);
                uint8_t* group = &frame[i / 2 * 3];
                group[i % 2 * 2] = static_cast<uint8_t>(sample >> low.count);
                group[1] = static_cast<uint8_t>(group[1] | (sample & low.mask) << (i % 2 * 4));
                break;
            }
        }
    }
    return frame;
}

}  // namespace cli
