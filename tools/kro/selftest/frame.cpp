#include "selftest/frame.hpp"

#include <cstring>

namespace cli {

namespace {

uint32_t mix(uint32_t k) {
    k *= 0x9E3779B1u;
    k ^= k >> 15;
    k *= 0x85EBCA77u;
    k ^= k >> 13;
    k *= 0xC2B2AE3Du;
    return k ^ k >> 16;
}

uint16_t valueAt(uint32_t x, uint32_t y) {
    const uint32_t tile = mix(x / 8 + 65536 * (y / 4));
    const uint32_t noise = mix(x + 65536 * y + 0x5BD1E995u);
    switch (tile & 3) {
        case 0:
            return static_cast<uint16_t>(noise);
        case 1:
            return static_cast<uint16_t>((tile >> 8) + 911 * x + 1777 * y);
        case 2:
            return noise % 2 == 0 ? 0 : 65535;
        default:
            return static_cast<uint16_t>((tile >> 16) + (noise >> 24));
    }
}

void putWord(uint8_t* to, uint16_t word, bool bigEndian) {
    if (bigEndian) {
        to[0] = static_cast<uint8_t>(word >> 8);
        to[1] = static_cast<uint8_t>(word);
    } else {
        std::memcpy(to, &word, sizeof word);
    }
}

}  // namespace

Rows::Rows(uint32_t format, const Shape& shape) {
    const bool continuous = shape.gap == 0 && !shape.flipped;
    const std::size_t row = static_cast<std::size_t>(kroRowBytes(format, shape.width));
    const std::size_t above = static_cast<std::size_t>(shape.height) - 1;
    rowDistance_ = row + static_cast<std::size_t>(shape.gap);
    stride_ = continuous ? 0 : static_cast<ptrdiff_t>(rowDistance_);
    if (shape.flipped) {
        stride_ = -stride_;
        rowZero_ = rowDistance_ * above;
    }
    memory_.resize(continuous ? static_cast<std::size_t>(kroRowBytes(format, shape.width * shape.height))
                              : rowDistance_ * above + row);
}

Rows generateFrame(const InputFormat& format, const Shape& shape) {
    Rows rows(format.code, shape);
    std::vector<uint8_t>& memory = rows.memory();
    const bool words = format.packing == Packing::word;
    const std::size_t unit = words ? 2 : 1;
    const std::size_t unitsARow = rows.rowDistance() / unit;
    for (std::size_t i = 0; i < memory.size() / unit; i++) {
        const uint16_t value = valueAt(static_cast<uint32_t>(i % unitsARow), static_cast<uint32_t>(i / unitsARow));
        if (!words) {
            memory[i] = static_cast<uint8_t>(value >> 8);
            continue;
        }
        const bool whole = (shape.flags & KRO_VIEW_LEFT_ALIGNED) != 0 || i % 31 == 0;
        putWord(&memory[2 * i], whole ? value : static_cast<uint16_t>(value >> (16 - format.bits)),
                (shape.flags & KRO_VIEW_BIG_ENDIAN) != 0);
    }
    return rows;
}

}  // namespace cli
