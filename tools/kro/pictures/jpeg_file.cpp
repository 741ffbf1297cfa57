#include "pictures/jpeg_file.hpp"

#include <turbojpeg.h>

#include <memory>
#include <new>

#include "support/failure.hpp"

namespace cli {

namespace {

// Colour at half the resolution, as cameras do it, until somebody asks for more than they do.
constexpr int fullColourFrom = 90;

// A block of 64 pixels takes two bits at the very least.
constexpr std::size_t mostPixelsOfByte = 512;

struct Close {
    void operator()(void* handle) const { tjDestroy(handle); }
    void operator()(unsigned char* memory) const { tjFree(memory); }
};
using Codec = std::unique_ptr<void, Close>;

Codec made(tjhandle handle) {
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    return Codec(handle);
}

int pixelFormat(Order order) {
    switch (order) {
        case Order::grey:
            return TJPF_GRAY;
        case Order::bgr:
            return TJPF_BGR;
        default:
            return TJPF_RGB;
    }
}

int subsampling(Order order, int quality) {
    return order == Order::grey ? TJSAMP_GRAY : quality < fullColourFrom ? TJSAMP_420 : TJSAMP_444;
}

}  // namespace

Bytes encodeJpeg(const Picture& picture, int quality) {
    const Codec codec = made(tjInitCompress());
    unsigned char* made = nullptr;
    unsigned long size = 0;
    const int status = tjCompress2(codec.get(), picture.data.data(), picture.size.width, 0, picture.size.height,
                                   pixelFormat(picture.order), &made, &size, subsampling(picture.order, quality),
                                   quality, TJFLAG_ACCURATEDCT);
    const std::unique_ptr<unsigned char, Close> file(made);
    if (status != 0) {
        throw Failure(std::string("JPEG cannot be made: ") + tjGetErrorStr2(codec.get()));
    }
    return {file.get(), file.get() + size};
}

DecodedPicture decodeJpeg(const Bytes& file, const std::string& name) {
    const Codec codec = made(tjInitDecompress());
    const auto checked = [&](int status) {
        if (status != 0) {
            throw Failure(name + ": damaged JPEG: " + tjGetErrorStr2(codec.get()));
        }
    };
    int subsampled = 0;
    int colours = 0;
    DecodedPicture picture;
    checked(tjDecompressHeader3(codec.get(), file.data(), file.size(), &picture.size.width, &picture.size.height,
                                &subsampled, &colours));
    requireHoldable(name, picture.size, picture.size.samples() / mostPixelsOfByte, file.size());
    const bool grey = colours == TJCS_GRAY;
    picture.channels = grey ? 1 : 3;
    picture.maximum = 255;
    Bytes pixels(picture.size.samples() * static_cast<std::size_t>(picture.channels));
    checked(tjDecompress2(codec.get(), file.data(), file.size(), pixels.data(), picture.size.width, 0,
                          picture.size.height, grey ? TJPF_GRAY : TJPF_RGB, TJFLAG_ACCURATEDCT));
    picture.samples.assign(pixels.begin(), pixels.end());
    return picture;
}

}  // namespace cli
