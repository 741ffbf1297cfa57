#include "view_reference.hpp"

#include <algorithm>
#include <cstring>

#include "fine_reference.hpp"

namespace reference {
namespace {

int storedBits(const InputFormat& format) { return format.layout == Layout::words ? 16 : format.bits; }

// Two samples in three bytes: high bits, low bits of both from bits 0 and 4 on, high bits.
size_t bitOfPackedPair(int bits, size_t i, int bit) {
    const int low = bits - 8;
    const bool second = i % 2 == 1;
    const int inGroup = bit >= low ? (second ? 16 : 0) + bit - low : 8 + (second ? 4 : 0) + bit;
    return i / 2 * 24 + static_cast<size_t>(inGroup);
}

// A byte for the high bits of each sample, then the low bits of all of them.
size_t bitOfCsi2(const Group& group, int bits, size_t i, int bit) {
    const size_t low = static_cast<size_t>(bits - 8);
    const size_t start = i / group.samples * group.bytes * 8;
    const size_t inGroup = i % group.samples;
    const size_t b = static_cast<size_t>(bit);
    return start + (b >= low ? inGroup * 8 + b - low : group.samples * 8 + inGroup * low + b);
}

Picture greyPicture(const std::vector<uint16_t>& samples, int height, int width) {
    Picture picture(height, width);
    std::transform(samples.begin(), samples.end(), picture.pixel.begin(), [](uint16_t v) { return Pixel{v, v, v}; });
    return picture;
}

// 16 bits: the plain border rules, sums that do not wrap, and one limit for every phase.
Picture deepPicture(Method method, const Mosaic& mosaic, int bits) {
    switch (method) {
        case Method::nearest:
            return nearest(mosaic);
        case Method::bilinear:
            return bilinearByRule(mosaic);
        case Method::fine:
            return fine(mosaic, fineScale16(bits));
        default:
            return edgeU16(mosaic, (1 << bits) - 1);
    }
}

int viewLuma(const Pixel& pixel) {
    const int sum = 77 * pixel[red] + 150 * pixel[green] + 29 * pixel[blue] + 128;
    return std::min(sum >> 8, 65535);
}

int valueOf(char letter, const Pixel& pixel, const Finish& finish) {
    const auto finished = [&](int value) {
        return finish.fullRangeOf == 0 ? value : fullRange(value, finish.fullRangeOf);
    };
    switch (letter) {
        case 'R':
            return finished(pixel[red]);
        case 'G':
            return finished(pixel[green]);
        case 'B':
            return finished(pixel[blue]);
        case 'Y':
            return finished(viewLuma(pixel));
        default:
            return finish.alpha;
    }
}

}  // namespace

std::vector<std::string> planesOf(const ViewOutput& output, bool alphaPlane) {
    if (!output.planar) {
        return {output.letters};
    }
    std::vector<std::string> planes;
    for (const char letter : std::string(output.letters) + (alphaPlane ? "A" : "")) {
        planes.push_back(std::string(1, letter));
    }
    return planes;
}

// Words are the machine's, if not said to be big-endian.
constexpr bool machineIsBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;

size_t bitPlace(const InputFormat& format, size_t i, int bit, bool bigEndian) {
    switch (format.layout) {
        case Layout::bytes:
            return 8 * i + static_cast<size_t>(bit);
        case Layout::words:
            return 16 * i + static_cast<size_t>(bigEndian || machineIsBigEndian ? (bit + 8) % 16 : bit);
        case Layout::packed:
            return bitOfPackedPair(format.bits, i, bit);
        case Layout::lsbFirst:
            return static_cast<size_t>(format.bits) * i + static_cast<size_t>(bit);
        default:
            return bitOfCsi2(groupOf(format), format.bits, i, bit);
    }
}

uint16_t numberAt(const InputFormat& format, const uint8_t* run, size_t i, bool bigEndian) {
    int number = 0;
    for (int bit = 0; bit < storedBits(format); ++bit) {
        const size_t place = bitPlace(format, i, bit, bigEndian);
        number |= (run[place / 8] >> place % 8 & 1) << bit;
    }
    return static_cast<uint16_t>(number);
}

void setNumber(const InputFormat& format, uint8_t* run, size_t i, bool bigEndian, uint16_t number) {
    for (int bit = 0; bit < storedBits(format); ++bit) {
        const size_t place = bitPlace(format, i, bit, bigEndian);
        const int mask = 1 << place % 8;
        uint8_t& byte = run[place / 8];
        byte = static_cast<uint8_t>((number >> bit & 1) != 0 ? byte | mask : byte & ~mask);
    }
}

std::vector<uint16_t> numbersOf(const InputFormat& format, const Rows& rows, bool bigEndian) {
    std::vector<uint16_t> numbers;
    numbers.reserve(place(rows.height, 0, rows.width));
    for (int y = 0; y < rows.height; ++y) {
        for (int x = 0; x < rows.width; ++x) {
            numbers.push_back(rows.stride == 0
                                  ? numberAt(format, rows.data, place(y, x, rows.width), bigEndian)
                                  : numberAt(format, rows.data + y * rows.stride, static_cast<size_t>(x), bigEndian));
        }
    }
    return numbers;
}

std::vector<uint8_t> eightBits(const InputFormat& format, const std::vector<uint16_t>& numbers, const Words& words) {
    if (format.layout == Layout::words && !words.leftAligned) {
        return reduced(numbers, static_cast<unsigned>(words.bits - 8));
    }
    const int shift = format.layout == Layout::words ? 8 : format.bits - 8;
    std::vector<uint8_t> samples;
    for (uint16_t number : numbers) {
        samples.push_back(static_cast<uint8_t>(number >> shift));
    }
    return samples;
}

std::vector<uint16_t> allBits(const InputFormat& format, const std::vector<uint16_t>& numbers, const Words& words) {
    if (format.layout != Layout::words) {
        return numbers;
    }
    const int top = (1 << words.bits) - 1;
    std::vector<uint16_t> samples;
    for (uint16_t number : numbers) {
        const int sample = words.leftAligned ? number >> (16 - words.bits) : std::min<int>(number, top);
        samples.push_back(static_cast<uint16_t>(sample));
    }
    return samples;
}

Scene::Scene(const InputFormat& format, const Rows& rows, const Words& words)
    : format_(format),
      height_(rows.height),
      width_(rows.width),
      bits_(format.layout == Layout::words ? words.bits : format.bits) {
    const std::vector<uint16_t> numbers = numbersOf(format, rows, words.bigEndian);
    eight_ = eightBits(format, numbers, words);
    all_ = allBits(format, numbers, words);
}

Picture Scene::made(Method method, int depth) const {
    if (format_.mono) {
        return greyPicture(depth == 8 ? std::vector<uint16_t>(eight_.begin(), eight_.end()) : all_, height_, width_);
    }
    if (depth == 8) {
        const Mosaic mosaic(height_, width_, format_.phase, eight_.data());
        return method == Method::fine ? fine(mosaic, fineScale8) : demosaic(method, mosaic);
    }
    return deepPicture(method, {height_, width_, format_.phase, all_.data()}, bits_);
}

const Picture& Scene::picture(Method method, int depth) {
    const auto key = std::make_pair(format_.mono ? Method::nearest : method, depth);
    const auto found = pictures_.find(key);
    return found != pictures_.end() ? found->second : pictures_.emplace(key, made(method, depth)).first->second;
}

int fullRange(int value, int bits) { return (value << (16 - bits)) | (value >> (2 * bits - 16)); }

std::vector<uint8_t> planeBytes(const Picture& picture, const std::string& letters, int depth, const Finish& finish) {
    std::vector<uint8_t> bytes;
    bytes.reserve(picture.pixel.size() * bytesOf(letters, depth));
    for (const Pixel& pixel : picture.pixel) {
        for (const char letter : letters) {
            const int value = valueOf(letter, pixel, finish);
            if (depth == 8) {
                bytes.push_back(static_cast<uint8_t>(value));
                continue;
            }
            const uint16_t word = static_cast<uint16_t>(value);
            uint8_t parts[2];
            std::memcpy(parts, &word, sizeof word);
            bytes.insert(bytes.end(), parts, parts + 2);
        }
    }
    return bytes;
}

}  // namespace reference
