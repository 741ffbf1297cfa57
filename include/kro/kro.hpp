// kro for C++17 and later: the frames, pictures and formats of view.h as types, errors as std::error_code or
// exception, and conversion on many cores by an executor of the caller's. Header only; the work is done by
// kroConvertView.
//
//     kro::Frame frame{samples, 1024, 1536, kro::PixelFormat::SRGGB12P, 2304};
//     kro::convert(frame, {pixels, kro::PixelFormat::RGBa8});                    // this thread, throws on error
//
//     kro::Threads threads(4);                                                   // kro/threads.hpp
//     kro::convert(frame, {pixels, kro::PixelFormat::RGBa8}, {}, threads);       // four threads, the same bytes
//
// SHAPES AND UNITS
//   height counts rows, width samples or pixels of a row, both 4 or more; a picture has the height and width of the
//   frame it is made from. Strides are bytes from the start of a row to the start of the next; a negative stride
//   belongs to a buffer whose row 0 is the last in memory, 0 to rows without gaps.
//
// OWNERSHIP
//   Frame and Picture own nothing: buffers stay the caller's and must live as long as the call. The frame is only
//   read. Frame and picture must not overlap.
//
// ALLOCATION
//   Nothing here allocates or copies samples or pixels, but for an exception that is thrown.
//
// ERRORS
//   Each conversion has two forms, as std::filesystem's functions have: one with a std::error_code& at the end, which
//   is cleared or set, and one without, which throws std::system_error with the same code. On an error nothing has
//   been written. Codes are kro::Error, of kro::errorCategory(). What an executor throws passes through either form.
//
// THREADS
//   Functions without an executor work on the caller's thread, those with one on the threads that it chooses. All are
//   re-entrant: calls on different pictures, or on different bands of one, may run at the same time.
#ifndef KRO_KRO_HPP
#define KRO_KRO_HPP

#if defined(_MSVC_LANG) ? _MSVC_LANG < 201703L : __cplusplus < 201703L
#error "kro.hpp needs C++17 or later"
#endif

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "kro/kro.h"
#include "kro/view.h"

namespace kro {
// Keeps these names apart from those inside a libkro.a.
inline namespace v0 {

// ---- pixel formats ----

// Each format once: its name, as PFNC spells it, and its code. CSI-2 packings, which PFNC lacks, have V4L2's names
// (V4L2_PIX_FMT_SRGGB10P and so on); formats that neither has are spelt like their neighbours.
// clang-format off
#define KRO_PIXEL_FORMATS(X)                                                                                    \
    X(Mono8, KRO_MONO8) X(Mono10, KRO_MONO10) X(Mono12, KRO_MONO12) X(Mono14, KRO_MONO14)                       \
    X(Mono16, KRO_MONO16) X(Mono10Packed, KRO_MONO10_PACKED) X(Mono12Packed, KRO_MONO12_PACKED)                 \
    X(Mono10p, KRO_MONO10P) X(Mono12p, KRO_MONO12P) X(Mono14p, KRO_MONO14P)                                     \
    X(BayerRG8, KRO_BAYER_RG8) X(BayerGR8, KRO_BAYER_GR8) X(BayerGB8, KRO_BAYER_GB8) X(BayerBG8, KRO_BAYER_BG8) \
    X(BayerRG10, KRO_BAYER_RG10) X(BayerGR10, KRO_BAYER_GR10)                                                   \
    X(BayerGB10, KRO_BAYER_GB10) X(BayerBG10, KRO_BAYER_BG10)                                                   \
    X(BayerRG12, KRO_BAYER_RG12) X(BayerGR12, KRO_BAYER_GR12)                                                   \
    X(BayerGB12, KRO_BAYER_GB12) X(BayerBG12, KRO_BAYER_BG12)                                                   \
    X(BayerRG14, KRO_BAYER_RG14) X(BayerGR14, KRO_BAYER_GR14)                                                   \
    X(BayerGB14, KRO_BAYER_GB14) X(BayerBG14, KRO_BAYER_BG14)                                                   \
    X(BayerRG16, KRO_BAYER_RG16) X(BayerGR16, KRO_BAYER_GR16)                                                   \
    X(BayerGB16, KRO_BAYER_GB16) X(BayerBG16, KRO_BAYER_BG16)                                                   \
    X(BayerRG10Packed, KRO_BAYER_RG10_PACKED) X(BayerGR10Packed, KRO_BAYER_GR10_PACKED)                         \
    X(BayerGB10Packed, KRO_BAYER_GB10_PACKED) X(BayerBG10Packed, KRO_BAYER_BG10_PACKED)                         \
    X(BayerRG12Packed, KRO_BAYER_RG12_PACKED) X(BayerGR12Packed, KRO_BAYER_GR12_PACKED)                         \
    X(BayerGB12Packed, KRO_BAYER_GB12_PACKED) X(BayerBG12Packed, KRO_BAYER_BG12_PACKED)                         \
    X(BayerRG10p, KRO_BAYER_RG10P) X(BayerGR10p, KRO_BAYER_GR10P)                                               \
    X(BayerGB10p, KRO_BAYER_GB10P) X(BayerBG10p, KRO_BAYER_BG10P)                                               \
    X(BayerRG12p, KRO_BAYER_RG12P) X(BayerGR12p, KRO_BAYER_GR12P)                                               \
    X(BayerGB12p, KRO_BAYER_GB12P) X(BayerBG12p, KRO_BAYER_BG12P)                                               \
    X(BayerRG14p, KRO_BAYER_RG14P) X(BayerGR14p, KRO_BAYER_GR14P)                                               \
    X(BayerGB14p, KRO_BAYER_GB14P) X(BayerBG14p, KRO_BAYER_BG14P)                                               \
    X(Y10P, KRO_Y10P) X(Y12P, KRO_Y12P) X(Y14P, KRO_Y14P)                                                       \
    X(SRGGB10P, KRO_SRGGB10P) X(SGRBG10P, KRO_SGRBG10P) X(SGBRG10P, KRO_SGBRG10P) X(SBGGR10P, KRO_SBGGR10P)     \
    X(SRGGB12P, KRO_SRGGB12P) X(SGRBG12P, KRO_SGRBG12P) X(SGBRG12P, KRO_SGBRG12P) X(SBGGR12P, KRO_SBGGR12P)     \
    X(SRGGB14P, KRO_SRGGB14P) X(SGRBG14P, KRO_SGRBG14P) X(SGBRG14P, KRO_SGBRG14P) X(SBGGR14P, KRO_SBGGR14P)     \
    X(RGB8, KRO_RGB8) X(BGR8, KRO_BGR8)                                                                         \
    X(RGBa8, KRO_RGBA8) X(BGRa8, KRO_BGRA8) X(aRGB8, KRO_ARGB8) X(aBGR8, KRO_ABGR8)                             \
    X(RGBx8, KRO_RGBX8) X(BGRx8, KRO_BGRX8) X(xRGB8, KRO_XRGB8) X(xBGR8, KRO_XBGR8)                             \
    X(RGB8_Planar, KRO_RGB8_PLANAR) X(BGR8_Planar, KRO_BGR8_PLANAR)                                             \
    X(RGB16, KRO_RGB16) X(BGR16, KRO_BGR16)                                                                     \
    X(RGBa16, KRO_RGBA16) X(BGRa16, KRO_BGRA16) X(aRGB16, KRO_ARGB16) X(aBGR16, KRO_ABGR16)                     \
    X(RGB16_Planar, KRO_RGB16_PLANAR) X(BGR16_Planar, KRO_BGR16_PLANAR)
// clang-format on

// The layout of a frame's samples or of a picture's pixels; kro.h and view.h say what each looks like in memory.
// Values are the codes of those headers, so static_cast turns a code into a format and a format into a code. Mono8
// and Mono16 are formats of frames and of pictures.
enum class PixelFormat : std::uint32_t {
#define KRO_ENUMERATOR(name, code) name = (code),
    KRO_PIXEL_FORMATS(KRO_ENUMERATOR)
#undef KRO_ENUMERATOR
};

struct NamedFormat {
    PixelFormat format;
    std::string_view name;
};

// Every format once: those of frames, then those of pictures that are not among them.
inline constexpr NamedFormat pixelFormats[] = {
#define KRO_NAMED(name, code) {PixelFormat::name, #name},
    KRO_PIXEL_FORMATS(KRO_NAMED)
#undef KRO_NAMED
};

#undef KRO_PIXEL_FORMATS

// "BayerRG12p", "SRGGB10P", "RGBa8" ...; empty for a value that is no format. Lives as long as the program.
constexpr std::string_view nameOf(PixelFormat format) noexcept {
    for (const NamedFormat& named : pixelFormats) {
        if (named.format == format) {
            return named.name;
        }
    }
    return {};
}

namespace detail {

constexpr char lower(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

constexpr void dropUnderscores(std::string_view& text) noexcept {
    while (!text.empty() && text.front() == '_') {
        text.remove_prefix(1);
    }
}

constexpr bool sameName(std::string_view a, std::string_view b) noexcept {
    for (;;) {
        dropUnderscores(a);
        dropUnderscores(b);
        if (a.empty() || b.empty()) {
            return a.empty() && b.empty();
        }
        if (lower(a.front()) != lower(b.front())) {
            return false;
        }
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
}

}  // namespace detail

// The format of that name, in upper or lower case, with or without underscores; none where no format has the name.
constexpr std::optional<PixelFormat> formatNamed(std::string_view name) noexcept {
    for (const NamedFormat& named : pixelFormats) {
        if (detail::sameName(named.name, name)) {
            return named.format;
        }
    }
    return std::nullopt;
}

// Bytes of a row of `width` samples or pixels, whole groups of packed samples; in one plane of planar formats. The
// smallest stride. 0 for a value that is no format and for a width of 0 or below.
inline std::ptrdiff_t rowBytes(PixelFormat format, std::int32_t width) noexcept {
    return kroRowBytes(static_cast<std::uint32_t>(format), width);
}

// ---- errors ----

enum class Error : std::int32_t {
    format = KRO_ERR_FORMAT,               // the frame's format is no format of frames
    size = KRO_ERR_SIZE,                   // height or width below 4, or more than the address space
    outputFormat = KRO_ERR_OUTPUT_FORMAT,  // the picture's format is no format of pictures
    null = KRO_ERR_NULL,                   // the frame's data or a plane that the picture's format has is null
    noMemory = KRO_ERR_NO_MEMORY,          // from kro.h's functions; convert needs no memory
    stride = KRO_ERR_STRIDE,               // rows closer to each other than a row is long
    option = KRO_ERR_OPTION,               // an option without a meaning, or without one for the format
    alignment = KRO_ERR_ALIGNMENT          // 16-bit samples at an odd address or with an odd stride
};

namespace detail {

class Category final : public std::error_category {
public:
    const char* name() const noexcept override { return "kro"; }
    std::string message(int status) const override { return text(status); }
    std::error_condition default_error_condition(int status) const noexcept override {
        return status == KRO_ERR_NO_MEMORY ? std::errc::not_enough_memory : std::errc::invalid_argument;
    }

private:
    static const char* text(int status) noexcept {
        switch (status) {
            case KRO_ERR_FORMAT:
                return "the frame's pixel format is none that can be read";
            case KRO_ERR_SIZE:
                return "height or width is below 4, or the frame or picture is larger than the address space";
            case KRO_ERR_OUTPUT_FORMAT:
                return "the picture's pixel format is none that can be written";
            case KRO_ERR_NULL:
                return "the frame's data or one of the picture's planes is null";
            case KRO_ERR_NO_MEMORY:
                return "out of memory";
            case KRO_ERR_STRIDE:
                return "a stride is shorter than a row";
            case KRO_ERR_OPTION:
                return "an option is out of range, does not fit the pixel format, or asks for rows outside the "
                       "picture";
            case KRO_ERR_ALIGNMENT:
                return "16-bit samples at an odd address or with an odd stride";
            default:
                return "unknown status";
        }
    }
};

}  // namespace detail

// The category of kro's status codes; its conditions are std::errc::invalid_argument and not_enough_memory. Serves
// the status of any function of kro.h: std::error_code(status, kro::errorCategory()).
inline const std::error_category& errorCategory() noexcept {
    static const detail::Category category;
    return category;
}

inline std::error_code make_error_code(Error error) noexcept { return {static_cast<int>(error), errorCategory()}; }

}  // namespace v0
}  // namespace kro

template <>
struct std::is_error_code_enum<kro::Error> : std::true_type {};

namespace kro {
inline namespace v0 {

// ---- frames, pictures, options ----

// A frame as it came: `height` rows of `width` samples. Owns nothing.
struct Frame {
    const void* data = nullptr;  // the first sample of row 0
    std::int32_t height = 0;     // rows
    std::int32_t width = 0;      // samples in a row
    PixelFormat format{};
    std::ptrdiff_t stride = 0;  // bytes; 0: rows without gaps, groups of packed samples running on over their ends
};

// A plane of a picture. Owns nothing.
struct Plane {
    void* data = nullptr;       // pixel 0 of row 0
    std::ptrdiff_t stride = 0;  // bytes; 0: rows without gaps
};

// Where a picture goes: one buffer, or one for each plane. Owns nothing; height and width are the frame's.
struct Picture {
    Plane plane[4];  // interleaved formats: the first; planar ones: three in the order of the format's name, and,
                     // where its data is not null, one that is filled with alpha
    PixelFormat format{};

    Picture() = default;
    // Of an interleaved format.
    Picture(void* pixels, PixelFormat pixelFormat, std::ptrdiff_t stride = 0) noexcept
        : plane{{pixels, stride}, {}, {}, {}}, format(pixelFormat) {}
    // Of a planar format.
    Picture(Plane first, Plane second, Plane third, PixelFormat pixelFormat, Plane alpha = {}) noexcept
        : plane{first, second, third, alpha}, format(pixelFormat) {}
};

// How missing colours are made; kro.h describes each.
enum class Algorithm : KroAlgorithm {
    nearest = KRO_NEAREST,
    bilinear = KRO_BILINEAR,
    edge = KRO_EDGE,
    fine = KRO_FINE
};

// What else to know. The defaults suit most frames.
struct Options {
    Algorithm algorithm = Algorithm::edge;
    std::optional<std::int32_t> alpha;  // 0 to 255, of 16-bit pictures 0 to 65535; opaque where absent
    std::int32_t bits = 0;              // significant bits of samples in 16-bit words, 8 to 16; 0: the format's own
    bool bigEndian = false;             // words have their high byte first
    bool leftAligned = false;           // the significant bits are a word's high ones
    bool fullRange = false;             // 16-bit pictures use all 16 bits, however few the samples have
    std::int32_t firstRow = 0;          // only rows from here on are made,
    std::int32_t rowCount = 0;          // so many of them; 0: all
};

// ---- conversion ----

namespace detail {

// The records of one call, and how its rows are divided.
class Conversion {
public:
    Conversion(const Frame& frame, const Picture& picture, const Options& options) noexcept
        : source_{frame.data, frame.stride, frame.height, frame.width, static_cast<std::uint32_t>(frame.format)},
          picture_{},
          options_{},
          count_(1) {
        for (int i = 0; i < 4; ++i) {
            picture_.plane[i] = picture.plane[i].data;
            picture_.stride[i] = picture.plane[i].stride;
        }
        picture_.format = static_cast<std::uint32_t>(picture.format);
        options_.size = sizeof options_;
        options_.algorithm = static_cast<KroAlgorithm>(options.algorithm);
        options_.flags = (options.alpha ? KRO_VIEW_ALPHA : 0) | (options.bigEndian ? KRO_VIEW_BIG_ENDIAN : 0) |
                         (options.leftAligned ? KRO_VIEW_LEFT_ALIGNED : 0) |
                         (options.fullRange ? KRO_VIEW_FULL_RANGE : 0);
        options_.alpha = options.alpha.value_or(0);
        options_.bits = options.bits;
        options_.firstRow = options.firstRow;
        options_.rowCount = options.rowCount;
    }

    std::int32_t makeWhole() const noexcept { return kroConvertView(&source_, &picture_, &options_); }

    // How many bands the rows make. Rows that are none of the picture's are left to kroConvertView's checks.
    int divide() noexcept {
        const std::int64_t rows = this->rows();
        if (options_.firstRow >= 0 && options_.rowCount >= 0 && options_.firstRow + rows <= source_.height) {
            const std::int64_t byPixels = rows * source_.width / leastPixels;
            const std::int64_t byRows = rows / leastRows;
            const std::int64_t most = byPixels < byRows ? byPixels : byRows;
            count_ = most > 1 ? static_cast<int>(most) : 1;
        }
        return count_;
    }

    void makeBand(int band) noexcept {
        KroViewOptions options = options_;
        options.firstRow = startOf(band);
        options.rowCount = startOf(band + 1) - options.firstRow;
        const std::int32_t status = kroConvertView(&source_, &picture_, &options);
        if (status != KRO_OK) {
            status_.store(status, std::memory_order_relaxed);
        }
    }

    std::int32_t status() const noexcept { return status_.load(std::memory_order_relaxed); }

private:
    // Below these a thread costs more than it gains: waking one and waiting for it takes some 40 us, as long as the
    // edge-directed kernel takes for a quarter of a megapixel with AVX-512.
    static constexpr std::int64_t leastRows = 64;
    static constexpr std::int64_t leastPixels = 250000;

    std::int64_t rows() const noexcept {
        return options_.rowCount != 0 ? options_.rowCount : std::int64_t{source_.height} - options_.firstRow;
    }
    // Bands begin at even rows, so that none cuts a pair of rows.
    std::int32_t startOf(int band) const noexcept {
        const std::int64_t row = options_.firstRow + rows() * band / count_;
        return static_cast<std::int32_t>(band == 0 || band == count_ ? row : row / 2 * 2);
    }

    KroSourceView source_;
    KroPictureView picture_;
    KroViewOptions options_;
    int count_;
    std::atomic<std::int32_t> status_{KRO_OK};
};

inline std::error_code errorOf(std::int32_t status) noexcept {
    return status == KRO_OK ? std::error_code() : make_error_code(static_cast<Error>(status));
}

inline void throwIf(const std::error_code& error) {
    if (error) {
        throw std::system_error(error);
    }
}

}  // namespace detail

// What an executor runs: task(band) makes that band of the picture. May be copied freely and called from any thread,
// each band once; valid until the executor returns. Throws nothing. Fits into a std::function<void(int)>.
class BandTask {
public:
    explicit BandTask(detail::Conversion& conversion) noexcept : conversion_(&conversion) {}
    void operator()(int band) const noexcept { conversion_->makeBand(band); }

private:
    detail::Conversion* conversion_;
};

// Turns a frame into a picture on this thread. `error` is cleared, or set to a kro::Error.
inline void convert(const Frame& frame, const Picture& picture, const Options& options,
                    std::error_code& error) noexcept {
    error = detail::errorOf(detail::Conversion(frame, picture, options).makeWhole());
}

// The same; throws std::system_error.
inline void convert(const Frame& frame, const Picture& picture, const Options& options = {}) {
    std::error_code error;
    convert(frame, picture, options, error);
    detail::throwIf(error);
}

// Turns a frame into a picture in bands, on the threads of an executor. The bytes are those of the other forms.
//
//   executor   any callable (int count, task) that calls task(0) to task(count - 1) once each, in any order, on any
//              threads, and comes back, or throws, when none of these calls runs any more; task is a const BandTask&:
//
//                  [](int count, const kro::BandTask& task) {
//                      #pragma omp parallel for schedule(dynamic)
//                      for (int band = 0; band < count; ++band) task(band);
//                  }
//
//              It is called on this thread, once; not at all where there is one band, which this thread makes.
//   bands      of at least 64 rows and about 250000 pixels, about equally many in each; all but the first begin at
//              even rows. So below 0.5 Mpixel there is one, at 1280 x 960 there are 4, at 4096 x 3000 46
//
// `error` is cleared, or set to a kro::Error. An exception of the executor's leaves bands that it did not call
// unmade.
template <class Executor>
void convert(const Frame& frame, const Picture& picture, const Options& options, Executor&& executor,
             std::error_code& error) {
    static_assert(std::is_invocable_v<Executor&, int, const BandTask&>,
                  "an executor is called as executor(int count, const kro::BandTask& task)");
    detail::Conversion conversion(frame, picture, options);
    const int count = conversion.divide();
    if (count == 1) {
        error = detail::errorOf(conversion.makeWhole());
        return;
    }
    const BandTask task(conversion);
    executor(count, task);
    error = detail::errorOf(conversion.status());
}

// The same; throws std::system_error.
template <class Executor>
void convert(const Frame& frame, const Picture& picture, const Options& options, Executor&& executor) {
    std::error_code error;
    convert(frame, picture, options, executor, error);
    detail::throwIf(error);
}

}  // namespace v0
}  // namespace kro

#endif
