#include <cstddef>

static constexpr size_t vectorBytes = 16;

#include "stream/stream_loop.hpp"

bench::StreamLoop bench::streamLoopAny(size_t ratio, StreamKind kind) { return anyLoop(ratio, kind); }
