// Blocks exactly as large as promised, so that a sanitizer sees the first byte beyond; and what ends a run.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace fuzz {

inline void require(bool right, const char* what) {
    if (!right) {
        std::fprintf(stderr, "broken promise: %s\n", what);
        std::abort();
    }
}

// All of a record, padding too: to see that nobody wrote to it.
template <class Record>
std::vector<uint8_t> bytesOf(const Record& record) {
    const uint8_t* const first = reinterpret_cast<const uint8_t*>(&record);
    return {first, first + sizeof record};
}

// What a destination holds before a call; differs from byte to byte.
inline uint8_t filled(size_t i) { return static_cast<uint8_t>(0xA5 ^ (i * 37)); }

class Block {
public:
    // The data begins `shift` bytes behind an address fit for anything.
    explicit Block(size_t bytes = 0, size_t shift = 0)
        : memory_(new uint8_t[bytes + shift]), bytes_(bytes), shift_(shift) {
        fill();
    }
    Block(const std::vector<uint8_t>& content, size_t shift) : Block(content.size(), shift) {
        std::copy(content.begin(), content.end(), data());
    }
    void fill() {
        for (size_t i = 0; i < bytes_ + shift_; ++i) {
            memory_[i] = filled(i);
        }
    }
    uint8_t* data() const { return memory_.get() + shift_; }
    size_t size() const { return bytes_; }
    std::vector<uint8_t> content() const { return {data(), data() + bytes_}; }
    bool untouched(size_t first, size_t count) const {
        for (size_t i = first; i < first + count; ++i) {
            if (data()[i] != filled(i + shift_)) {
                return false;
            }
        }
        return true;
    }
    bool untouched() const { return untouched(0, bytes_) && frontUntouched(); }
    // The bytes that only misalign the data.
    bool frontUntouched() const {
        for (size_t i = 0; i < shift_; ++i) {
            if (memory_[i] != filled(i)) {
                return false;
            }
        }
        return true;
    }

private:
    std::unique_ptr<uint8_t[]> memory_;
    size_t bytes_, shift_;
};

}  // namespace fuzz
