#include "pictures/tiff_io.hpp"

#include <cstdio>
#include <exception>
#include <new>

namespace cli {

namespace {

TiffIo& ioOf(thandle_t handle) { return *static_cast<TiffIo*>(handle); }

template <typename Transfer>
tmsize_t transferred(TiffIo& io, Transfer&& transfer) {
    try {
        const std::size_t count = transfer();
        io.at += count;
        return static_cast<tmsize_t>(count);
    } catch (const std::bad_alloc&) {
        io.outOfMemory = true;
    } catch (const std::exception& failure) {
        std::snprintf(io.message.data(), io.message.size(), "%s", failure.what());
    }
    return -1;
}

tmsize_t onRead(thandle_t handle, void* target, tmsize_t size) {
    TiffIo& io = ioOf(handle);
    return transferred(io,
                       [&] { return io.read(io.at, static_cast<uint8_t*>(target), static_cast<std::size_t>(size)); });
}

tmsize_t onWrite(thandle_t handle, void* source, tmsize_t size) {
    TiffIo& io = ioOf(handle);
    return transferred(io, [&] {
        io.write(io.at, static_cast<const uint8_t*>(source), static_cast<std::size_t>(size));
        return static_cast<std::size_t>(size);
    });
}

toff_t onSeek(thandle_t handle, toff_t offset, int whence) {
    TiffIo& io = ioOf(handle);
    io.at = offset + (whence == SEEK_END ? io.size() : whence == SEEK_CUR ? io.at : 0);
    return io.at;
}

int onClose(thandle_t) { return 0; }

toff_t onSize(thandle_t handle) { return ioOf(handle).size(); }

// The first of several messages names the cause.
int onError(TIFF*, void* user, const char*, const char* format, va_list values) {
    TiffIo& io = *static_cast<TiffIo*>(user);
    if (io.message[0] == '\0') {
        std::vsnprintf(io.message.data(), io.message.size(), format, values);
    }
    return 1;
}

int onWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

}  // namespace

Tiff openTiff(TiffIo& io, const char* mode) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    if (!options) {
        throw std::bad_alloc();
    }
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(io.mostMemory));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &io);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, nullptr);
    Tiff tiff(TIFFClientOpenExt("picture", mode, &io, onRead, onWrite, onSeek, onClose, onSize, nullptr, nullptr,
                                options.get()),
              TIFFClose);
    if (io.outOfMemory || (!tiff && io.message[0] == '\0')) {
        throw std::bad_alloc();
    }
    return tiff;
}

}  // namespace cli
