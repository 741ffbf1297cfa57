// Shuffle tables, computed by the compiler from their one formula.
#pragma once

#include <cstdint>

namespace kro {
namespace {

// What a back end of bytes wants of three channels that it interleaves.
enum class Interleaving {
    channels,  // each in column order
    pairs,     // samples that become neighbours, as words
    packs,     // signed lanes of the outer ones as a pack leaves them
};

constexpr uint8_t nothing = 0x80;  // pshufb writes 0 for it

constexpr int alignmentOf(int size) { return size < 64 ? size : 64; }

template <int size>
struct alignas(alignmentOf(size)) Shuffle {
    uint8_t byte[size];
};

// Elements (of `wide` bytes) of channel c of 3 in output vector j of a lane of `size` bytes; nothing elsewhere.
template <int size, int wide>
constexpr Shuffle<size> spread3(int channel, int vector) {
    Shuffle<size> table{};
    for (int o = 0; o < size; ++o) {
        const int element = (o / wide) + vector * (size / wide);
        table.byte[o] = element % 3 == channel ? static_cast<uint8_t>((element / 3) * wide + o % wide) : nothing;
    }
    return table;
}

// One rotation serves all three output vectors of a channel: 3 is invertible modulo a power of two, so pixel i of the
// channel can wait at place 3 i + c modulo the lane's length, where each output vector needs it.
template <int size, int lane, int wide>
constexpr Shuffle<size> rotate3(int channel) {
    Shuffle<size> table{};
    const int places = lane / wide;
    for (int start = 0; start < size; start += lane) {
        for (int i = 0; i < places; ++i) {
            const int place = (3 * i + channel) % places;
            for (int b = 0; b < wide; ++b) {
                table.byte[start + place * wide + b] = static_cast<uint8_t>(i * wide + b);
            }
        }
    }
    return table;
}

// The same of bytes that a lane-wise pack of two vectors left apart: what belongs at even places is in the lower half
// of each 16-byte lane, what belongs at odd ones in the upper.
template <int size, int lane, int wide>
constexpr Shuffle<size> rotatePacked3(int channel) {
    Shuffle<size> table = rotate3<size, lane, wide>(channel);
    for (uint8_t& byte : table.byte) {
        byte = static_cast<uint8_t>(byte / 16 * 16 + byte % 2 * 8 + byte % 16 / 2);
    }
    return table;
}

// The same rotation as indices of 16-bit elements over the whole vector.
template <int elements>
struct alignas(64) WordIndices {
    uint16_t word[elements];
};
template <int elements>
constexpr WordIndices<elements> rotateWords3(int channel) {
    WordIndices<elements> table{};
    for (int i = 0; i < elements; ++i) {
        table.word[(3 * i + channel) % elements] = static_cast<uint16_t>(i);
    }
    return table;
}

// 0xFF at the elements that are q modulo 3 within each lane.
template <int size, int lane, int wide>
constexpr Shuffle<size> everyThird(int q) {
    Shuffle<size> table{};
    for (int o = 0; o < size; ++o) {
        table.byte[o] = ((o % lane) / wide) % 3 == q ? 0xFF : 0;
    }
    return table;
}
constexpr uint64_t everyThirdBit(int q) {
    uint64_t bits = 0;
    for (int o = 0; o < 64; ++o) {
        bits |= static_cast<uint64_t>(o % 3 == q) << o;
    }
    return bits;
}

// 4 x 4 transposition of groups of four bytes: a lane-wise interleave of the result leaves whole runs in order.
struct alignas(64) DwordIndices {
    uint32_t dword[16];
};
template <int lanes>
constexpr DwordIndices transposedDwords() {
    DwordIndices table{};
    for (int lane = 0; lane < lanes; ++lane) {
        for (int slot = 0; slot < 4; ++slot) {
            table.dword[4 * lane + slot] = static_cast<uint32_t>(slot * lanes + lane);
        }
    }
    return table;
}

// Elements (of `wide` bytes) of each 16-byte lane: those at even places, then those at odd ones.
template <int size, int wide>
constexpr Shuffle<size> sitesApart() {
    Shuffle<size> table{};
    for (int o = 0; o < size; ++o) {
        const int element = o % 16 / wide, half = 8 / wide;
        const int from = element < half ? 2 * element : 2 * (element - half) + 1;
        table.byte[o] = static_cast<uint8_t>(o / 16 * 16 + from * wide + o % wide);
    }
    return table;
}

// Elements (of `wide` bytes) of a load from the row's first element that continue mirrored to the left of it,
// `outside` of them: 2 1 0 1 2 3 .. for two.
template <int size, int wide>
constexpr Shuffle<size> leftOf(int outside) {
    Shuffle<size> table{};
    for (int o = 0; o < size; ++o) {
        const int element = o / wide - outside;
        table.byte[o] = static_cast<uint8_t>((element < 0 ? -element : element) * wide + o % wide);
    }
    return table;
}
// Of a load that ends with the row's last element, n of them, those `outside` elements on: .. n-2 n-1 n-2 n-3 for
// two.
template <int size, int wide>
constexpr Shuffle<size> rightOf(int outside) {
    Shuffle<size> table{};
    const int n = size / wide;
    for (int o = 0; o < size; ++o) {
        const int element = o / wide + outside;
        table.byte[o] = static_cast<uint8_t>((element < n ? element : 2 * (n - 1) - element) * wide + o % wide);
    }
    return table;
}
// The same as indices of 16-bit elements.
template <int elements>
constexpr WordIndices<elements> elementsOf(const Shuffle<elements * 2>& bytes) {
    WordIndices<elements> table{};
    for (int i = 0; i < elements; ++i) {
        table.word[i] = static_cast<uint16_t>(bytes.byte[2 * i] / 2);
    }
    return table;
}

// Grey bytes three times over: vector j of the three that `size` bytes become.
template <int size>
constexpr Shuffle<size> triple(int j) {
    Shuffle<size> table{};
    for (int o = 0; o < size; ++o) {
        table.byte[o] = static_cast<uint8_t>((size * j + o) / 3);
    }
    return table;
}
// The same for 64 bytes in two steps, without byte permutes across lanes: the two groups of 8 that each lane of
// vector j draws on, then the bytes within them.
struct alignas(64) QwordIndices {
    uint64_t qword[8];
};
constexpr QwordIndices tripleSource(int j) {
    QwordIndices table{};
    for (int lane = 0; lane < 4; ++lane) {
        const uint64_t first = static_cast<uint64_t>((64 * j + 16 * lane) / 3 / 8);
        table.qword[2 * lane] = first;
        table.qword[2 * lane + 1] = first + 1 < 8 ? first + 1 : 7;
    }
    return table;
}
constexpr Shuffle<64> tripleWithin(int j) {
    Shuffle<64> table{};
    for (int o = 0; o < 64; ++o) {
        const int firstGroup = (64 * j + o / 16 * 16) / 3 / 8;
        table.byte[o] = static_cast<uint8_t>((64 * j + o) / 3 - 8 * firstGroup);
    }
    return table;
}

// Four pixels of three bytes, from byte `from` on, to four bytes each with 0 as the fourth.
constexpr Shuffle<16> widen3to4(int from) {
    Shuffle<16> table{};
    for (int o = 0; o < 16; ++o) {
        table.byte[o] = o % 4 == 3 ? nothing : static_cast<uint8_t>(from + o / 4 * 3 + o % 4);
    }
    return table;
}

constexpr int modulo3(int value) { return ((value % 3) + 3) % 3; }

}  // namespace
}  // namespace kro
