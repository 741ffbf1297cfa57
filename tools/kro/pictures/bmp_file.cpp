#include "pictures/bmp_file.hpp"

#include <kro/kro.h>

#include "developing/library.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

constexpr uint32_t headerBytes = 14 + 40;

void put(Bytes& file, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; i++) {
        file.push_back(static_cast<uint8_t>(value >> (8 * i)));
    }
}

Bytes header(const Picture& picture, std::size_t pixelBytes) {
    Bytes file{'B', 'M'};
    put(file, static_cast<uint32_t>(headerBytes + pixelBytes), 4);
    put(file, 0, 4);
    put(file, headerBytes, 4);
    put(file, 40, 4);
    put(file, static_cast<uint32_t>(picture.size.width), 4);
    // A negative height says that the rows stand from top to bottom.
    put(file, static_cast<uint32_t>(-picture.size.height), 4);
    put(file, 1, 2);
    put(file, static_cast<uint32_t>(8 * channelCount(picture.order)), 2);
    put(file, 0, 4);
    put(file, static_cast<uint32_t>(pixelBytes), 4);
    for (int i = 0; i < 4; i++) {
        put(file, 0, 4);
    }
    return file;
}

// Rows of three-byte pixels grow to multiples of four bytes.
Bytes padRows(const Picture& picture) {
    const std::size_t height = static_cast<std::size_t>(picture.size.height);
    const std::size_t rowBytes = (picture.data.size() / height + 3) / 4 * 4;
    Bytes pixels(rowBytes * height);
    std::copy(picture.data.begin(), picture.data.end(), pixels.begin());
    const Handle handle;
    const KroImage image{picture.size.height, picture.size.width, KRO_BGR8, pixels.data()};
    checkStatus(kroBMPAdjust(handle.get(), &image), "bitmap rows");
    return pixels;
}

}  // namespace

Bytes encodeBmp(const Picture& picture) {
    const Bytes pixels = hasAlpha(picture.order) ? picture.data : padRows(picture);
    if (pixels.size() > UINT32_MAX - headerBytes) {
        throw Failure("BMP cannot be made: it would pass 4 GiB");
    }
    Bytes file = header(picture, pixels.size());
    file.insert(file.end(), pixels.begin(), pixels.end());
    return file;
}

}  // namespace cli
