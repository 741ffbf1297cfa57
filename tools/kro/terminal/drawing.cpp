#include "terminal/drawing.hpp"

#include <sixel.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

#include "pictures/png_file.hpp"
#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

std::string base64(const Bytes& data) {
    constexpr const char* digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < data.size(); at += 3) {
        uint32_t group = 0;
        for (std::size_t i = 0; i < 3; i++) {
            group = group << 8 | (at + i < data.size() ? data[at + i] : 0u);
        }
        for (std::size_t i = 0; i < 4; i++) {
            text += at + i > data.size() ? '=' : digits[group >> (18 - 6 * i) & 63];
        }
    }
    return text;
}

// A PNG file in pieces, shown pixel by pixel; no answer is wanted.
std::string drawnByKitty(const Picture& picture) {
    constexpr std::size_t piece = 4096;
    const std::string data = base64(encodePng(picture, EncodeOptions{}.pngLevel));
    std::string text;
    for (std::size_t at = 0; at < data.size(); at += piece) {
        text += "\033_G";
        text += at == 0 ? "a=T,f=100,q=2," : "";
        text += at + piece < data.size() ? "m=1;" : "m=0;";
        text += data.substr(at, piece) + "\033\\";
    }
    return text + "\n";
}

// What libsixel writes. It does not look at the answer, so that there was no memory is kept here.
struct Written {
    std::string text;
    bool outOfMemory = false;
};

int appendTo(char* data, int size, void* target) {
    Written& written = *static_cast<Written*>(target);
    try {
        written.text.append(data, static_cast<std::size_t>(size));
        return 0;
    } catch (const std::bad_alloc&) {
        written.outOfMemory = true;
        return -1;
    }
}

void requireGood(SIXELSTATUS status) {
    if (SIXEL_FAILED(status)) {
        throw Failure(std::string("sixel graphics cannot be made: ") + sixel_helper_format_error(status));
    }
}

// libsixel does not look at all that its allocations return, so they do not return without memory.
void* orEnd(void* memory) {
    if (memory == nullptr) {
        console::error("out of memory");
        std::_Exit(exitFailed);
    }
    return memory;
}
void* sixelMalloc(std::size_t size) { return orEnd(std::malloc(std::max<std::size_t>(size, 1))); }
void* sixelCalloc(std::size_t count, std::size_t size) {
    return orEnd(std::calloc(std::max<std::size_t>(count, 1), std::max<std::size_t>(size, 1)));
}
void* sixelRealloc(void* memory, std::size_t size) {
    return orEnd(std::realloc(memory, std::max<std::size_t>(size, 1)));
}

std::string drawnBySixel(const Picture& picture) {
    constexpr int colours = 256;
    Written written;
    sixel_allocator_t* madeAllocator = nullptr;
    requireGood(sixel_allocator_new(&madeAllocator, sixelMalloc, sixelCalloc, sixelRealloc, std::free));
    const std::unique_ptr<sixel_allocator_t, void (*)(sixel_allocator_t*)> allocator(madeAllocator,
                                                                                     sixel_allocator_unref);
    sixel_output_t* madeOutput = nullptr;
    requireGood(sixel_output_new(&madeOutput, appendTo, &written, madeAllocator));
    const std::unique_ptr<sixel_output_t, void (*)(sixel_output_t*)> output(madeOutput, sixel_output_unref);
    sixel_dither_t* madeDither = nullptr;
    requireGood(sixel_dither_new(&madeDither, colours, madeAllocator));
    const std::unique_ptr<sixel_dither_t, void (*)(sixel_dither_t*)> dither(madeDither, sixel_dither_unref);
    Bytes pixels = picture.data;
    requireGood(sixel_dither_initialize(dither.get(), pixels.data(), picture.size.width, picture.size.height,
                                        SIXEL_PIXELFORMAT_RGB888, SIXEL_LARGE_AUTO, SIXEL_REP_AUTO,
                                        SIXEL_QUALITY_AUTO));
    requireGood(sixel_encode(pixels.data(), picture.size.width, picture.size.height, 3, dither.get(), output.get()));
    if (written.outOfMemory) {
        throw std::bad_alloc();
    }
    return written.text + "\n";
}

std::string cellColour(const uint8_t* pixel, bool background, bool trueColour) {
    const std::string kind = background ? "48;" : "38;";
    if (trueColour) {
        return kind + "2;" + std::to_string(pixel[0]) + ";" + std::to_string(pixel[1]) + ";" +
               std::to_string(pixel[2]);
    }
    // A cube of six levels a colour, at 0, 95, 135, 175, 215 and 255.
    const auto level = [](int value) { return value < 48 ? 0 : value < 115 ? 1 : (value - 35) / 40; };
    return kind + "5;" + std::to_string(16 + 36 * level(pixel[0]) + 6 * level(pixel[1]) + level(pixel[2]));
}

// Each character is the upper half of its cell in one colour, before a ground in the other.
std::string drawnByBlocks(const Picture& picture, bool trueColour) {
    const std::size_t width = static_cast<std::size_t>(picture.size.width);
    const std::size_t height = static_cast<std::size_t>(picture.size.height);
    std::string text;
    for (std::size_t y = 0; y < height; y += 2) {
        for (std::size_t x = 0; x < width; x++) {
            const uint8_t* upper = &picture.data[(y * width + x) * 3];
            text += "\033[" + cellColour(upper, false, trueColour);
            text += y + 1 < height ? ";" + cellColour(upper + width * 3, true, trueColour) : ";49";
            text += "m\u2580";
        }
        text += "\033[0m\n";
    }
    return text;
}

}  // namespace

FrameSize pixelsOf(const Screen& screen, int columns, int rows) {
    return screen.graphics == Graphics::blocks ? FrameSize{columns, 2 * rows}
                                               : FrameSize{columns * screen.cellWidth, rows * screen.cellHeight};
}

std::string drawn(const Picture& picture, const Screen& screen) {
    switch (screen.graphics) {
        case Graphics::kitty:
            return drawnByKitty(picture);
        case Graphics::sixel:
            return drawnBySixel(picture);
        case Graphics::blocks:
            break;
    }
    return drawnByBlocks(picture, screen.trueColour);
}

}  // namespace cli
