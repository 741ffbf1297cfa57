#include <cstddef>

static constexpr size_t vectorBytes = 64;

#include "stream/stream_loop.hpp"

bench::StreamLoop bench::streamLoopAvx512(size_t ratio, StreamKind kind) { return anyLoop(ratio, kind); }
