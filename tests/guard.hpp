// Memory between two unreadable pages: whoever reads or writes one byte too far stops the test on the spot.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace guard {

enum class Placement { againstStart, againstEnd };
constexpr Placement bothPlacements[] = {Placement::againstStart, Placement::againstEnd};

// Two fills that differ in every byte: a byte that is right over both of them has been written.
enum class Fill { one, other };

class Buffer {
public:
    explicit Buffer(size_t capacity) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        size_ = (capacity + page - 1) / page * page + page;
        void* const whole =
            mmap(nullptr, size_ + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (whole == MAP_FAILED) {
            throw std::runtime_error("no guarded memory");
        }
        mapping_ = static_cast<uint8_t*>(whole);
        mappingSize_ = size_ + 2 * page;
        area_ = mapping_ + page;
        writable(true);
    }
    ~Buffer() { munmap(mapping_, mappingSize_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    void writable(bool on) { mprotect(area_, size_, on ? PROT_READ | PROT_WRITE : PROT_READ); }

    // `bytes` filled bytes against one of the guards, with canaries on the free side.
    uint8_t* place(size_t bytes, Placement placement, Fill fill) {
        if (bytes > size_) {
            throw std::runtime_error("guarded buffer too small");
        }
        data_ = placement == Placement::againstStart ? area_ : area_ + (size_ - bytes);
        bytes_ = bytes;
        fill_ = fill;
        const Stretch around = withMargins();
        for (size_t at = around.begin; at < around.end; at += period) {
            std::memcpy(area_ + at, pattern(fill), around.end - at < period ? around.end - at : period);
        }
        patternStart_ = around.begin;
        return data_;
    }

    template <class Sample>
    const Sample* hold(const std::vector<Sample>& content, Placement placement) {
        writable(true);
        const size_t bytes = content.size() * sizeof(Sample);
        uint8_t* const data = placement == Placement::againstStart ? area_ : area_ + (size_ - bytes);
        if (bytes != 0) {
            std::memcpy(data, content.data(), bytes);
        }
        writable(false);
        return reinterpret_cast<const Sample*>(data);
    }

    const uint8_t* data() const { return data_; }
    uint8_t filled(size_t i) const {
        const size_t at = static_cast<size_t>(data_ - area_) + i - patternStart_;
        return pattern(fill_)[at % period];
    }
    // Does a stretch of the placed bytes still hold what it was filled with?
    bool untouched(size_t offset, size_t bytes) const {
        const size_t begin = static_cast<size_t>(data_ - area_) + offset;
        return holds(begin, begin + bytes);
    }
    bool canariesHold() const {
        const Stretch around = withMargins();
        const size_t begin = static_cast<size_t>(data_ - area_);
        return holds(around.begin, begin) && holds(begin + bytes_, around.end);
    }

private:
    static constexpr size_t period = 4096;
    static constexpr size_t margin = 2048;
    struct Stretch {
        size_t begin, end;
    };

    static const uint8_t* pattern(Fill fill) {
        static const std::vector<uint8_t> one = makePattern(0);
        static const std::vector<uint8_t> other = makePattern(0xFF);
        return fill == Fill::one ? one.data() : other.data();
    }
    static std::vector<uint8_t> makePattern(uint8_t flip) {
        std::vector<uint8_t> bytes(period);
        uint32_t state = 0x9E3779B9u;
        for (uint8_t& byte : bytes) {
            state = state * 1664525u + 1013904223u;
            byte = static_cast<uint8_t>((state >> 24) ^ flip);
        }
        return bytes;
    }
    Stretch withMargins() const {
        const size_t begin = static_cast<size_t>(data_ - area_);
        const size_t end = begin + bytes_;
        return {begin > margin ? begin - margin : 0, size_ - end > margin ? end + margin : size_};
    }
    bool holds(size_t begin, size_t end) const {
        while (begin < end) {
            const size_t phase = (begin - patternStart_) % period;
            const size_t run = end - begin < period - phase ? end - begin : period - phase;
            if (std::memcmp(area_ + begin, pattern(fill_) + phase, run) != 0) {
                return false;
            }
            begin += run;
        }
        return true;
    }

    uint8_t* mapping_ = nullptr;
    size_t mappingSize_ = 0;
    uint8_t* area_ = nullptr;
    size_t size_ = 0;
    uint8_t* data_ = nullptr;
    size_t bytes_ = 0;
    size_t patternStart_ = 0;
    Fill fill_ = Fill::one;
};

}  // namespace guard
