// The stream limit: how fast this core reads as many bytes and writes as many bytes as a kernel does, doing nothing else.
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

// Per width: the loop that moves `in` vectors in and `out` out at a step; null where the ratio has none.
enum class StreamKind { plain, unrolled, bypass };
StreamLoop streamLoopSse2(size_t in, size_t out, StreamKind kind);
StreamLoop streamLoopAvx2(size_t in, size_t out, StreamKind kind);
StreamLoop streamLoopAvx512(size_t in, size_t out, StreamKind kind);

}  // namespace bench
