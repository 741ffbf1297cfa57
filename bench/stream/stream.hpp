// The stream limit: how fast this core reads as many bytes and writes as many bytes as a kernel does, doing nothing
// else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

using StreamLoop = void (*)(const uint8_t* source, size_t sourceSize, uint8_t* destination, size_t destinationSize);

struct StreamVariant {
    std::string name;
    StreamLoop loop;
    bool bypassesCache;  // reported beside the limit, never as the limit
};

// The ways to stream n bytes in and m bytes out that are worth trying on this processor. The limit is the fastest of
// those with plain stores.
std::vector<StreamVariant> streamVariants(size_t sourceSize, size_t destinationSize, bool withBypass);

// Reads the whole picture, as the program that receives it would.
uint64_t consume(const uint8_t* bytes, size_t size);

// Bytes in to bytes out, of every case there is.
struct StreamRatio {
    size_t in;
    size_t out;
};
constexpr StreamRatio streamRatios[] = {{1, 1}, {1, 2}, {1, 3}, {1, 4}, {2, 1}, {2, 3}, {3, 2}, {3, 4}};

// Do stores bypass the cache where they are asked to?
#if defined(__x86_64__) || defined(__i386__)
constexpr bool streamsBypass = true;
#else
constexpr bool streamsBypass = false;
#endif

// Per width: the loop that moves streamRatios[ratio].in vectors in and .out vectors out at a step.
enum class StreamKind { plain, unrolled, bypass };
StreamLoop streamLoopSse2(size_t ratio, StreamKind kind);
StreamLoop streamLoopAvx2(size_t ratio, StreamKind kind);
StreamLoop streamLoopAvx512(size_t ratio, StreamKind kind);
StreamLoop streamLoopAny(size_t ratio, StreamKind kind);

}  // namespace bench
