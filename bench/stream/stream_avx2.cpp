#include <cstddef>

static constexpr size_t vectorBytes = 32;

#include "stream/stream_loop.hpp"

bench::StreamLoop bench::streamLoopAvx2(size_t ratio, StreamKind kind) { return anyLoop(ratio, kind); }
