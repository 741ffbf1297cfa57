#include "kernels/buffer.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace bench {
namespace {

size_t pageBytes() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

bool isGuarded(Place place) { return place == Place::guardedBefore || place == Place::guardedBehind; }

}  // namespace

void Buffer::Free::operator()(uint8_t* memory) const {
    if (mapped != 0) {
        munmap(memory, mapped);
    } else {
        std::free(memory);
    }
}

Buffer::Memory Buffer::allocate(size_t size) {
    const size_t rounded = (size + 2 * alignment) / alignment * alignment;
    Memory memory(static_cast<uint8_t*>(std::aligned_alloc(alignment, rounded)), {0});
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    std::memset(memory.get(), 0, rounded);
    return memory;
}

// A page more at both ends, one of them the guard.
Buffer::Memory Buffer::map(size_t size, Place guarded) {
    const size_t page = pageBytes();
    const size_t inner = (size + page - 1) / page * page;
    void* const mapping =
        mmap(nullptr, inner + 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    Memory memory(static_cast<uint8_t*>(mapping), {inner + 2 * page});
    uint8_t* const guard = memory.get() + (guarded == Place::guardedBefore ? 0 : page + inner);
    if (mprotect(guard, page, PROT_NONE) != 0) {
        throw std::bad_alloc();
    }
    return memory;
}

Buffer::Buffer(size_t size, Place place, size_t sampleBytes)
    : memory_(isGuarded(place) ? map(size, place) : allocate(size)),
      data_(memory_.get() + (isGuarded(place)      ? pageBytes()
                             : place == Place::odd ? sampleBytes
                                                   : 0)) {}

}  // namespace bench
