// The text of the stream loop. Each width's unit defines vectorBytes before it is included.
#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

#include "stream/stream.hpp"

namespace {

typedef long long Vector __attribute__((vector_size(vectorBytes), aligned(1), may_alias));

#if defined(__x86_64__) || defined(__i386__)
template <size_t bytes, class Value>
inline void storeBypassing(uint8_t* destination, Value value) {
    if constexpr (bytes == 64) {
        _mm512_stream_si512(reinterpret_cast<__m512i*>(destination), reinterpret_cast<__m512i>(value));
    } else if constexpr (bytes == 32) {
        _mm256_stream_si256(reinterpret_cast<__m256i*>(destination), reinterpret_cast<__m256i>(value));
    } else {
        _mm_stream_si128(reinterpret_cast<__m128i*>(destination), reinterpret_cast<__m128i>(value));
    }
}

// Keeps the loads that no store needs.
inline void use(Vector sum) { __asm__ volatile("" : : "x"(sum)); }
#else
template <size_t bytes, class Value>
void storeBypassing(uint8_t* destination, Value value);  // nobody calls it

inline void use(Vector sum) { __asm__ volatile("" : : "m"(sum)); }
#endif

template <bool bypass>
inline void put(uint8_t* destination, Vector value) {
    if constexpr (bypass) {
        storeBypassing<vectorBytes>(destination, value);
    } else {
        *reinterpret_cast<Vector*>(destination) = value;
    }
}

template <size_t in, size_t out, bool bypass>
void stream(const uint8_t* source, size_t sourceSize, uint8_t* destination, size_t destinationSize) {
    constexpr size_t size = sizeof(Vector);
    const uint8_t* const sourceEnd = source + sourceSize;
    uint8_t* const destinationEnd = destination + destinationSize;
    if (bypass) {
        const size_t head = (0 - reinterpret_cast<uintptr_t>(destination)) % size;
        std::memset(destination, 0, head < destinationSize ? head : destinationSize);
        destination += head;
    }
    Vector sum{};
    while (static_cast<size_t>(sourceEnd - source) >= in * size &&
           destinationEnd - destination >= static_cast<ptrdiff_t>(out * size)) {
        Vector loaded[in];
        for (size_t i = 0; i < in; ++i) {
            loaded[i] = *reinterpret_cast<const Vector*>(source + i * size);
            sum |= loaded[i];
        }
        for (size_t i = 0; i < out; ++i) {
            put<bypass>(destination + i * size, loaded[i % in]);
        }
        source += in * size;
        destination += out * size;
        __asm__ volatile("" : : : "memory");  // neither split into two loops nor turned into a copy
    }
    use(sum);
    uint8_t rest = 0;
    while (source < sourceEnd) {
        rest = static_cast<uint8_t>(rest | *source++);
    }
    if (destination < destinationEnd) {
        std::memset(destination, rest, static_cast<size_t>(destinationEnd - destination));
    }
}

template <size_t ratio>
bench::StreamLoop loopOf(bench::StreamKind kind) {
    constexpr size_t in = bench::streamRatios[ratio].in;
    constexpr size_t out = bench::streamRatios[ratio].out;
    switch (kind) {
        case bench::StreamKind::plain:
            return stream<in, out, false>;
        case bench::StreamKind::unrolled:
            return stream<in * 4, out * 4, false>;
        default:
            return stream<in, out, bench::streamsBypass>;
    }
}

template <size_t... ratios>
bench::StreamLoop loopAmong(std::index_sequence<ratios...>, size_t ratio, bench::StreamKind kind) {
    constexpr bench::StreamLoop (*loops[])(bench::StreamKind) = {loopOf<ratios>...};
    return loops[ratio](kind);
}

bench::StreamLoop anyLoop(size_t ratio, bench::StreamKind kind) {
    return loopAmong(std::make_index_sequence<std::size(bench::streamRatios)>(), ratio, kind);
}

}  // namespace
