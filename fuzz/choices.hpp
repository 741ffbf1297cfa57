// Decisions made by the bytes of a fuzzer's input. Past its end every decision is 0, so that any input is a whole
// one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace fuzz {

class Choices {
public:
    Choices(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    bool over() const { return at_ >= size_; }
    uint8_t byte() { return over() ? uint8_t{0} : data_[at_++]; }
    uint32_t word() {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8 | byte();
        }
        return value;
    }
    // 0 to n - 1, of at most 256.
    int below(int n) { return byte() % n; }
    bool oneIn(int n) { return below(n) == n - 1; }
    // An entry of the list, or null, rarely, for what is none of them.
    template <class List>
    const auto* entryOf(const List& list) {
        const size_t i = static_cast<size_t>(below(static_cast<int>(list.size()) + 1));
        return i < list.size() ? &list[i] : nullptr;
    }
    template <class Value, size_t count>
    Value oneOf(const Value (&values)[count]) {
        return values[below(static_cast<int>(count))];
    }

    // Samples take few bytes of the input: a seed and what to make of it.
    std::vector<uint8_t> samples(size_t count) {
        const int kind = below(4);
        const uint8_t detail = byte();
        uint32_t state = word() | 1;
        std::vector<uint8_t> bytes(count);
        for (size_t i = 0; i < count; ++i) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            bytes[i] = static_cast<uint8_t>(state >> 11);
        }
        const size_t step = kind == 3 ? 2 : 1;
        for (size_t i = step - 1; kind != 0 && i < count; i += step) {
            bytes[i] = kind != 2 ? bytes[i] & detail : (bytes[i] & 1) != 0 ? uint8_t{0xFF} : detail;
        }
        return bytes;
    }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

}  // namespace fuzz
