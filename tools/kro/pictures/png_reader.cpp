#include <png.h>

#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "pictures/png_file.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

// No stream of the format's compression becomes more than this many times as long.
constexpr std::size_t mostInflated = 1032;

// What libpng's callbacks need. They leave by longjmp, so nothing with a destructor may live in the functions
// between: rows, buffers and messages are all kept here.
struct PngJob {
    PngJob() = default;
    ~PngJob() { png_destroy_read_struct(&png, &info, nullptr); }
    PngJob(const PngJob&) = delete;
    PngJob& operator=(const PngJob&) = delete;

    png_structp png = nullptr;
    png_infop info = nullptr;
    const Bytes* bytes = nullptr;
    std::size_t readAt = 0;
    std::vector<png_bytep> rows;
    std::array<char, 160> message{};
    bool outOfMemory = false;
    // As they lie in the file, before palettes and small samples are spread out.
    std::size_t packedRowBytes = 0;
    DecodedPicture decoded;
};

void onError(png_structp png, png_const_charp message) {
    PngJob& job = *static_cast<PngJob*>(png_get_error_ptr(png));
    std::snprintf(job.message.data(), job.message.size(), "%s", message);
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

png_voidp onMalloc(png_structp png, png_alloc_size_t size) {
    void* memory = std::malloc(size);
    static_cast<PngJob*>(png_get_mem_ptr(png))->outOfMemory |= memory == nullptr;
    return memory;
}

void onFree(png_structp, png_voidp memory) { std::free(memory); }

void onRead(png_structp png, png_bytep data, png_size_t size) {
    PngJob& job = *static_cast<PngJob*>(png_get_io_ptr(png));
    if (job.bytes->size() - job.readAt < size) {
        png_error(png, "the file ends too early");
    }
    std::memcpy(data, job.bytes->data() + job.readAt, size);
    job.readAt += size;
}

void pointRows(PngJob& job, Bytes& pixels, std::size_t height, std::size_t rowBytes) {
    job.rows.resize(height);
    for (std::size_t row = 0; row < height; row++) {
        job.rows[row] = pixels.data() + row * rowBytes;
    }
}

bool readHeader(PngJob& job) {
    if (setjmp(png_jmpbuf(job.png)) != 0) {
        return false;
    }
    png_set_read_fn(job.png, &job, onRead);
    png_read_info(job.png, job.info);
    job.packedRowBytes = png_get_rowbytes(job.png, job.info);
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

void takeHeader(PngJob& job, const std::string& name) {
    DecodedPicture& decoded = job.decoded;
    decoded.size = {static_cast<int32_t>(png_get_image_width(job.png, job.info)),
                    static_cast<int32_t>(png_get_image_height(job.png, job.info))};
    decoded.channels = png_get_channels(job.png, job.info);
    decoded.maximum = png_get_bit_depth(job.png, job.info) == 16 ? 65535 : 255;
    const std::size_t promised = job.packedRowBytes * static_cast<std::size_t>(decoded.size.height);
    requireHoldable(name, decoded.size, promised / mostInflated, job.bytes->size());
}

bool decode(PngJob& job) {
    const std::size_t height = static_cast<std::size_t>(job.decoded.size.height);
    const std::size_t rowBytes = png_get_rowbytes(job.png, job.info);
    Bytes pixels(rowBytes * height);
    pointRows(job, pixels, height, rowBytes);
    if (!readPixels(job)) {
        return false;
    }
    takeSamples(job, pixels, job.decoded.size.samples() * static_cast<std::size_t>(job.decoded.channels));
    return true;
}

void requireGood(const PngJob& job, bool good, const std::string& name) {
    if (job.outOfMemory) {
        throw std::bad_alloc();
    }
    if (!good) {
        throw Failure(name + ": damaged PNG: " + job.message.data());
    }
}

void open(PngJob& job, const Bytes& file, const std::string& name) {
    job.bytes = &file;
    job.png = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, &job, onError, onWarning, &job, onMalloc, onFree);
    job.info = job.png == nullptr ? nullptr : png_create_info_struct(job.png);
    job.outOfMemory |= job.info == nullptr;
    requireGood(job, !job.outOfMemory && readHeader(job), name);
    takeHeader(job, name);
}

}  // namespace

PictureHeader readPngHeader(const Bytes& file, const std::string& name) {
    PngJob job;
    open(job, file, name);
    return job.decoded;
}

DecodedPicture decodePng(const Bytes& file, const std::string& name) {
    PngJob job;
    open(job, file, name);
    requireGood(job, decode(job), name);
    return std::move(job.decoded);
}

}  // namespace cli
