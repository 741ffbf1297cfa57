#include "pictures/png_file.hpp"

#include <png.h>

#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "support/failure.hpp"

namespace cli {

namespace {

// What libpng's callbacks need. They leave by longjmp, so nothing with a destructor may live in the functions
// between: rows, buffers and messages are all kept here.
struct PngJob {
    png_structp png = nullptr;
    png_infop info = nullptr;
    Bytes bytes;
    std::size_t readAt = 0;
    std::vector<png_bytep> rows;
    std::array<char, 160> message{};
    bool outOfMemory = false;
    DecodedPicture decoded;
};

void onError(png_structp png, png_const_charp message) {
    PngJob& job = *static_cast<PngJob*>(png_get_error_ptr(png));
    std::snprintf(job.message.data(), job.message.size(), "%s", message);
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

void onWrite(png_structp png, png_bytep data, png_size_t size) {
    PngJob& job = *static_cast<PngJob*>(png_get_io_ptr(png));
    try {
        job.bytes.insert(job.bytes.end(), data, data + size);
        return;
    } catch (const std::bad_alloc&) {
        job.outOfMemory = true;
    }
    png_error(png, "out of memory");
}

void onFlush(png_structp) {}

png_voidp onMalloc(png_structp png, png_alloc_size_t size) {
    void* memory = std::malloc(size);
    static_cast<PngJob*>(png_get_mem_ptr(png))->outOfMemory |= memory == nullptr;
    return memory;
}

void onFree(png_structp, png_voidp memory) { std::free(memory); }

void onRead(png_structp png, png_bytep data, png_size_t size) {
    PngJob& job = *static_cast<PngJob*>(png_get_io_ptr(png));
    if (job.bytes.size() - job.readAt < size) {
        png_error(png, "the file ends too early");
    }
    std::memcpy(data, job.bytes.data() + job.readAt, size);
    job.readAt += size;
}

int colourType(Order order) {
    if (order == Order::grey) {
        return PNG_COLOR_TYPE_GRAY;
    }
    return hasAlpha(order) ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
}

bool hasStructs(PngJob& job) {
    job.info = job.png == nullptr ? nullptr : png_create_info_struct(job.png);
    job.outOfMemory |= job.info == nullptr;
    return job.info != nullptr;
}

[[noreturn]] void fail(const PngJob& job, const std::string& what) {
    if (job.outOfMemory) {
        throw std::bad_alloc();
    }
    throw Failure(what + ": " + job.message.data());
}

void pointRows(PngJob& job, Bytes& pixels, uint32_t height, std::size_t rowBytes) {
    job.rows.resize(height);
    for (std::size_t row = 0; row < height; row++) {
        job.rows[row] = pixels.data() + row * rowBytes;
    }
}

bool runEncoder(PngJob& job, const Picture& picture) {
    if (setjmp(png_jmpbuf(job.png)) != 0) {
        return false;
    }
    png_set_write_fn(job.png, &job, onWrite, onFlush);
    png_set_IHDR(job.png, job.info, static_cast<png_uint_32>(picture.size.width),
                 static_cast<png_uint_32>(picture.size.height), picture.bits, colourType(picture.order),
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    // Sensor noise hardly compresses: the higher levels take many times as long for one or two per cent.
    png_set_compression_level(job.png, 2);
    png_set_filter(job.png, 0, PNG_FILTER_SUB);
    png_write_info(job.png, job.info);
    if (picture.bits == 16) {
        png_set_swap(job.png);
    }
    png_write_image(job.png, job.rows.data());
    png_write_end(job.png, nullptr);
    return true;
}

bool readHeader(PngJob& job) {
    if (setjmp(png_jmpbuf(job.png)) != 0) {
        return false;
    }
    png_set_read_fn(job.png, &job, onRead);
    png_read_info(job.png, job.info);
    png_set_expand(job.png);
    png_set_strip_alpha(job.png);
    png_set_interlace_handling(job.png);
    if (png_get_bit_depth(job.png, job.info) == 16) {
        png_set_swap(job.png);
    }
    png_read_update_info(job.png, job.info);
    return true;
}

bool readPixels(PngJob& job) {
    if (setjmp(png_jmpbuf(job.png)) != 0) {
        return false;
    }
    png_read_image(job.png, job.rows.data());
    png_read_end(job.png, nullptr);
    return true;
}

void takeSamples(PngJob& job, const Bytes& pixels, std::size_t count) {
    std::vector<uint16_t>& samples = job.decoded.samples;
    samples.assign(pixels.begin(), pixels.begin() + static_cast<std::ptrdiff_t>(count));
    if (job.decoded.maximum == 65535) {
        std::memcpy(samples.data(), pixels.data(), count * 2);
    }
}

bool runDecoder(PngJob& job) {
    if (!readHeader(job)) {
        return false;
    }
    DecodedPicture& decoded = job.decoded;
    decoded.size = {static_cast<int32_t>(png_get_image_width(job.png, job.info)),
                    static_cast<int32_t>(png_get_image_height(job.png, job.info))};
    decoded.channels = png_get_channels(job.png, job.info);
    decoded.maximum = png_get_bit_depth(job.png, job.info) == 16 ? 65535 : 255;
    const std::size_t rowBytes = png_get_rowbytes(job.png, job.info);
    Bytes pixels(rowBytes * static_cast<std::size_t>(decoded.size.height));
    pointRows(job, pixels, static_cast<uint32_t>(decoded.size.height), rowBytes);
    if (!readPixels(job)) {
        return false;
    }
    takeSamples(job, pixels, decoded.size.samples() * static_cast<std::size_t>(decoded.channels));
    return true;
}

}  // namespace

Bytes encodePng(const Picture& picture) {
    PngJob job;
    Bytes pixels = picture.data;
    const std::size_t height = static_cast<std::size_t>(picture.size.height);
    pointRows(job, pixels, static_cast<uint32_t>(height), pixels.size() / height);
    job.png = png_create_write_struct_2(PNG_LIBPNG_VER_STRING, &job, onError, onWarning, &job, onMalloc, onFree);
    const bool done = hasStructs(job) && runEncoder(job, picture);
    png_destroy_write_struct(&job.png, &job.info);
    if (!done) {
        fail(job, "PNG cannot be made");
    }
    return std::move(job.bytes);
}

DecodedPicture decodePng(const Bytes& file, const std::string& name) {
    PngJob job;
    job.bytes = file;
    job.png = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, &job, onError, onWarning, &job, onMalloc, onFree);
    const bool done = hasStructs(job) && runDecoder(job);
    png_destroy_read_struct(&job.png, &job.info, nullptr);
    if (!done) {
        fail(job, name + ": damaged PNG");
    }
    return std::move(job.decoded);
}

}  // namespace cli
