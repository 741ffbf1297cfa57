#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "pictures/png_file.hpp"

namespace cli {

namespace {

// What a row is predicted from before it is compressed; the numbers are those in the file. Of photographs the others
// take longer than they gain, so they serve the higher levels only.
enum Filter : uint8_t { none, sub, up, average, paeth };
constexpr int leastLevelOfPaeth = 5;

struct Rows {
    const uint8_t* first;
    std::size_t count;
    std::size_t bytes;
    std::size_t pixelBytes;
};

void predictPaeth(const uint8_t* row, const uint8_t* above, const Rows& rows, uint8_t* out) {
    for (std::size_t i = 0; i < rows.bytes; i++) {
        const bool first = i < rows.pixelBytes;
        const int left = first ? 0 : row[i - rows.pixelBytes];
        const int corner = first ? 0 : above[i - rows.pixelBytes];
        const int toLeft = std::abs(above[i] - corner);
        const int toAbove = std::abs(left - corner);
        const int toCorner = std::abs(left + above[i] - 2 * corner);
        const int other = toAbove <= toCorner ? above[i] : corner;
        out[i] = static_cast<uint8_t>(row[i] - (toLeft <= toAbove && toLeft <= toCorner ? left : other));
    }
}

void predictSub(const uint8_t* row, const Rows& rows, uint8_t* out) {
    std::copy(row, row + rows.pixelBytes, out);
    for (std::size_t i = rows.pixelBytes; i < rows.bytes; i++) {
        out[i] = static_cast<uint8_t>(row[i] - row[i - rows.pixelBytes]);
    }
}

void predictUp(const uint8_t* row, const uint8_t* above, const Rows& rows, uint8_t* out) {
    for (std::size_t i = 0; i < rows.bytes; i++) {
        out[i] = static_cast<uint8_t>(row[i] - above[i]);
    }
}

void predictAverage(const uint8_t* row, const uint8_t* above, const Rows& rows, uint8_t* out) {
    for (std::size_t i = 0; i < rows.pixelBytes; i++) {
        out[i] = static_cast<uint8_t>(row[i] - above[i] / 2);
    }
    for (std::size_t i = rows.pixelBytes; i < rows.bytes; i++) {
        out[i] = static_cast<uint8_t>(row[i] - (row[i - rows.pixelBytes] + above[i]) / 2);
    }
}

void predict(Filter filter, const uint8_t* row, const uint8_t* above, const Rows& rows, uint8_t* out) {
    switch (filter) {
        case none:
            std::copy(row, row + rows.bytes, out);
            break;
        case sub:
            predictSub(row, rows, out);
            break;
        case up:
            predictUp(row, above, rows, out);
            break;
        case average:
            predictAverage(row, above, rows, out);
            break;
        case paeth:
            predictPaeth(row, above, rows, out);
            break;
    }
}

// The bits that values of these frequencies take on their own.
double bitsOf(const std::array<uint32_t, 256>& counts) {
    double all = 0;
    double bits = 0;
    for (const uint32_t count : counts) {
        all += count;
        bits -= count == 0 ? 0 : count * std::log2(count);
    }
    return all == 0 ? 0 : bits + all * std::log2(all);
}

// One filter for the whole picture, by what some of its rows would take. A choice for each row costs more time than
// the compression itself and gains a per cent.
Filter chooseFilter(const Rows& rows, int level) {
    constexpr std::size_t rowStep = 32;
    Filter best = none;
    double fewest = std::numeric_limits<double>::infinity();
    std::vector<uint8_t> predicted(rows.bytes);
    for (const Filter filter : {none, sub, up, average, paeth}) {
        if (filter == paeth && level < leastLevelOfPaeth) {
            continue;
        }
        std::array<uint32_t, 256> counts{};
        for (std::size_t y = 1; y < rows.count; y += rowStep) {
            const uint8_t* row = rows.first + y * rows.bytes;
            predict(filter, row, row - rows.bytes, rows, predicted.data());
            for (const uint8_t value : predicted) {
                counts[value]++;
            }
        }
        const double bits = bitsOf(counts);
        best = bits < fewest ? filter : best;
        fewest = std::min(bits, fewest);
    }
    return best;
}

// Memory that is not filled with zeros first.
using Buffer = std::unique_ptr<uint8_t[]>;

struct Data {
    Buffer bytes;
    std::size_t size;
};

Data filterRows(const Rows& rows, Filter filter) {
    Data filtered{Buffer(new uint8_t[rows.count * (rows.bytes + 1)]), rows.count * (rows.bytes + 1)};
    const Bytes aboveFirst(rows.bytes);
    uint8_t* out = filtered.bytes.get();
    for (std::size_t y = 0; y < rows.count; y++) {
        const uint8_t* row = rows.first + y * rows.bytes;
        *out = filter;
        predict(filter, row, y == 0 ? aboveFirst.data() : row - rows.bytes, rows, out + 1);
        out += rows.bytes + 1;
    }
    return filtered;
}

Data compress(const Data& data, int level) {
    const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(
        libdeflate_alloc_compressor(level), libdeflate_free_compressor);
    if (!compressor) {
        throw std::bad_alloc();
    }
    const std::size_t most = libdeflate_zlib_compress_bound(compressor.get(), data.size);
    Data packed{Buffer(new uint8_t[most]), most};
    packed.size = libdeflate_zlib_compress(compressor.get(), data.bytes.get(), data.size, packed.bytes.get(), most);
    return packed;
}

void putNumber(Bytes& file, std::size_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        file.push_back(static_cast<uint8_t>(value >> shift));
    }
}

void putChunk(Bytes& file, const char* kind, const uint8_t* data, std::size_t size) {
    putNumber(file, size);
    const std::size_t checkedFrom = file.size();
    file.insert(file.end(), kind, kind + 4);
    file.insert(file.end(), data, data + size);
    putNumber(file, libdeflate_crc32(0, file.data() + checkedFrom, file.size() - checkedFrom));
}

uint8_t colourType(Order order) { return order == Order::grey ? 0 : hasAlpha(order) ? 6 : 2; }

void putHeader(Bytes& file, const Picture& picture) {
    Bytes header;
    putNumber(header, static_cast<std::size_t>(picture.size.width));
    putNumber(header, static_cast<std::size_t>(picture.size.height));
    header.insert(header.end(), {static_cast<uint8_t>(picture.bits), colourType(picture.order), 0, 0, 0});
    putChunk(file, "IHDR", header.data(), header.size());
}

}  // namespace

Bytes encodePng(Picture picture, int level) {
    constexpr std::size_t mostOfChunk = (std::size_t{1} << 31) - 1;
    if (picture.bits == 16) {
        swapWords(picture.data.data(), picture.data.size());
    }
    const std::size_t height = static_cast<std::size_t>(picture.size.height);
    const std::size_t pixelBytes = static_cast<std::size_t>(channelCount(picture.order) * picture.bits / 8);
    const Rows rows{picture.data.data(), height, picture.data.size() / height, pixelBytes};
    const Data packed = compress(filterRows(rows, chooseFilter(rows, level)), level);
    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    file.reserve(packed.size + 100);
    putHeader(file, picture);
    for (std::size_t at = 0; at < packed.size; at += mostOfChunk) {
        putChunk(file, "IDAT", packed.bytes.get() + at, std::min(mostOfChunk, packed.size - at));
    }
    putChunk(file, "IEND", nullptr, 0);
    return file;
}

}  // namespace cli
