#include "pictures/tiff_file.hpp"

#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "support/failure.hpp"

namespace cli {

namespace {

// A file in memory, as libtiff's callbacks want it.
struct MemoryFile {
    Bytes bytes;
    std::size_t at = 0;
    bool outOfMemory = false;
};

MemoryFile& fileOf(thandle_t handle) { return *static_cast<MemoryFile*>(handle); }

tmsize_t onRead(thandle_t handle, void* target, tmsize_t size) {
    MemoryFile& file = fileOf(handle);
    const std::size_t left = file.bytes.size() - std::min(file.bytes.size(), file.at);
    const std::size_t count = std::min(left, static_cast<std::size_t>(size));
    std::memcpy(target, file.bytes.data() + file.at, count);
    file.at += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t onWrite(thandle_t handle, void* source, tmsize_t size) {
    MemoryFile& file = fileOf(handle);
    const std::size_t count = static_cast<std::size_t>(size);
    try {
        file.bytes.resize(std::max(file.bytes.size(), file.at + count));
    } catch (const std::exception&) {
        file.outOfMemory = true;
        return -1;
    }
    std::memcpy(file.bytes.data() + file.at, source, count);
    file.at += count;
    return size;
}

toff_t onSeek(thandle_t handle, toff_t offset, int whence) {
    MemoryFile& file = fileOf(handle);
    const std::size_t base = whence == SEEK_END ? file.bytes.size() : whence == SEEK_CUR ? file.at : 0;
    file.at = base + static_cast<std::size_t>(offset);
    return static_cast<toff_t>(file.at);
}

int onClose(thandle_t) { return 0; }

toff_t onSize(thandle_t handle) { return static_cast<toff_t>(fileOf(handle).bytes.size()); }

void describe(TIFF* tiff, const Picture& picture) {
    const int channels = channelCount(picture.order);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(picture.size.width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(picture.size.height));
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, channels);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.bits);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    if (hasAlpha(picture.order)) {
        const uint16_t extra = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &extra);
    }
}

bool writeRows(TIFF* tiff, const Picture& picture) {
    const std::size_t height = static_cast<std::size_t>(picture.size.height);
    const std::size_t rowBytes = picture.data.size() / height;
    // libtiff takes the row as writable, since it may have to swap its bytes.
    Bytes row(rowBytes);
    for (std::size_t y = 0; y < height; y++) {
        std::memcpy(row.data(), picture.data.data() + y * rowBytes, rowBytes);
        if (TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y), 0) < 0) {
            return false;
        }
    }
    return TIFFFlush(tiff) == 1;
}

}  // namespace

Bytes encodeTiff(const Picture& picture) {
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    MemoryFile file;
    const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(
        TIFFClientOpen("memory", "w", &file, onRead, onWrite, onSeek, onClose, onSize, nullptr, nullptr), TIFFClose);
    if (!tiff) {
        throw std::bad_alloc();
    }
    describe(tiff.get(), picture);
    const bool written = writeRows(tiff.get(), picture);
    if (file.outOfMemory) {
        throw std::bad_alloc();
    }
    if (!written) {
        throw Failure("TIFF cannot be made: it would pass 4 GiB");
    }
    return std::move(file.bytes);
}

}  // namespace cli
