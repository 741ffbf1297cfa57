// Memory that starts where a measurement wants it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace bench {

enum class Place {
    aligned,        // to a line of the cache
    odd,            // one sample beyond that: rows at odd addresses
    guardedBefore,  // at the start of a page, behind one that nobody may touch
    guardedBehind,  // at the start of a page; behind the page in which the bytes end comes one that nobody may touch
};

class Buffer {
public:
    static constexpr size_t alignment = 64;

    // Every page is there before the first timing.
    explicit Buffer(size_t size, Place place = Place::aligned, size_t sampleBytes = 1);

    uint8_t* data() const { return data_; }

private:
    struct Free {
        size_t mapped;  // 0: from the heap
        void operator()(uint8_t* memory) const;
    };
    using Memory = std::unique_ptr<uint8_t, Free>;
    static Memory allocate(size_t size);
    static Memory map(size_t size, Place guarded);

    Memory memory_;
    uint8_t* data_;
};

}  // namespace bench
