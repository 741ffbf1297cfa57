#include "selftest/digests.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <new>

#include "selftest/frame.hpp"

namespace cli {

namespace {

// Odd and even sizes, some blocks of columns and an end, more columns than any strip has.
constexpr std::array<Shape, 4> shapes{
    {{37, 23, 0, false, 1, 0},
     {131, 10, 6, false, 2, KRO_VIEW_FULL_RANGE},
     {64, 7, 10, true, 3, KRO_VIEW_BIG_ENDIAN | KRO_VIEW_LEFT_ALIGNED | KRO_VIEW_ALPHA},
     {2653, 5, 2, false, 2, KRO_VIEW_ALPHA | KRO_VIEW_FULL_RANGE}}};

// Layouts of samples, each with the depth that it has in each of the shapes.
struct Layout {
    const char* name;
    Packing packing;
    std::array<int, shapes.size()> bits;
};
constexpr std::array<Layout, 3> frameLayouts{{{"bytes", Packing::byte, {8, 8, 8, 8}},
                                              {"words", Packing::word, {10, 12, 16, 12}},
                                              {"GigE", Packing::packed, {10, 12, 10, 12}}}};
constexpr std::array<Layout, 5> viewLayouts{{{"bytes", Packing::byte, {8, 8, 8, 8}},
                                             {"words", Packing::word, {10, 12, 14, 16}},
                                             {"GigE", Packing::packed, {12, 10, 12, 10}},
                                             {"PFNC", Packing::lsb, {10, 12, 14, 12}},
                                             {"CSI-2", Packing::csi2, {14, 12, 10, 14}}}};

constexpr std::array<uint32_t, 7> frameOutputs{KRO_MONO8, KRO_BGR8,        KRO_RGB8,       KRO_BGRA8,
                                               KRO_RGBA8, KRO_BGR8_PLANAR, KRO_RGB8_PLANAR};

// A phase by an algorithm, or grey, which knows none.
struct Family {
    Phase phase;
    KroAlgorithm algorithm;
};

template <typename Algorithms>
std::vector<Family> allFamilies(const Algorithms& algorithms) {
    std::vector<Family> families{{Phase::mono, KRO_EDGE}};
    for (const KroAlgorithm algorithm : algorithms) {
        for (const Phase phase : {Phase::rg, Phase::gr, Phase::gb, Phase::bg}) {
            families.push_back({phase, algorithm});
        }
    }
    return families;
}

std::string nameOf(const Family& family) {
    constexpr std::array<const char*, 4> algorithms{"nearest ", "bilinear ", "edge ", "fine "};
    const bool grey = family.phase == Phase::mono;
    return (grey ? "" : algorithms[static_cast<std::size_t>(family.algorithm)]) +
           std::string(firstSites(family.phase));
}

std::string kindOf(const OutputFormat& format) {
    const auto name = [&] {
        switch (format.order) {
            case Order::grey:
                return "luma";
            case Order::rgba:
            case Order::bgra:
                return "colour+alpha";
            case Order::argb:
            case Order::abgr:
                return "alpha+colour";
            default:
                return format.planar ? "planes" : "colour";
        }
    };
    return name() + std::to_string(format.bits);
}

class Digest {
public:
    // Of 64 bits each; each step is one to one in the number as in the state.
    void add(uint64_t number) {
        state_ = (state_ ^ number) * 0x9E3779B97F4A7C15u;
        state_ ^= state_ >> 32;
    }
    // Samples of a depth, the first of each eight bytes lowest, so that the order of bytes in memory does not count.
    void add(const std::vector<uint8_t>& memory, int bits) {
        add(memory.size());
        bits == 8 ? addSamples<uint8_t>(memory) : addSamples<uint16_t>(memory);
    }
    uint64_t value() const { return state_; }

private:
    template <typename Sample>
    void addSamples(const std::vector<uint8_t>& memory) {
        constexpr std::size_t together = 8 / sizeof(Sample);
        const std::size_t count = memory.size() / sizeof(Sample);
        for (std::size_t i = 0; i < count; i += together) {
            uint64_t number = 0;
            for (std::size_t k = 0; k < std::min(together, count - i); k++) {
                Sample sample;
                std::memcpy(&sample, &memory[(i + k) * sizeof(Sample)], sizeof sample);
                number |= static_cast<uint64_t>(sample) << (k * 8 * sizeof(Sample));
            }
            add(number);
        }
    }

    uint64_t state_ = 0x6B726F2073656C66u;
};

// Where nothing is written it stays as it is here.
constexpr uint8_t unwritten = 0xA5;

// That memory ran out says nothing of the bytes.
uint32_t finished(int32_t status) {
    if (status == KRO_ERR_NO_MEMORY) {
        throw std::bad_alloc();
    }
    return static_cast<uint32_t>(status);
}

struct ReleaseHandle {
    void operator()(KroContext* handle) const { kroRelease(&handle); }
};

// kroDemosaicing: neither strides nor bands nor options.
class FramePictures {
public:
    static constexpr const char* name = "frame";
    static constexpr const auto& layouts = frameLayouts;
    static constexpr std::array<KroAlgorithm, 3> algorithms{KRO_NEAREST, KRO_BILINEAR, KRO_EDGE};

    explicit FramePictures(const Conversions& conversions) : conversions_(conversions) {
        KroContext* handle = nullptr;
        finished(kroCreate(&handle));
        handle_.reset(handle);
    }
    static Shape shapeFor(const Shape& shape, const InputFormat& /*format*/) {
        return {shape.width, shape.height, 0, false, 1, 0};
    }
    static std::vector<OutputFormat> outputs() {
        std::vector<OutputFormat> formats;
        for (const uint32_t code : frameOutputs) {
            formats.push_back(outputFormat(code));
        }
        return formats;
    }

    void add(Digest& digest, const Rows& frame, const InputFormat& format, const Shape& shape,
             const OutputFormat& output, KroAlgorithm algorithm) {
        const std::size_t plane = static_cast<std::size_t>(kroRowBytes(output.code, shape.width * shape.height));
        std::vector<uint8_t> pixels(output.planar ? 3 * plane : plane, unwritten);
        uint32_t wanted = output.code;
        const KroImage source{shape.height, shape.width, format.code, const_cast<uint8_t*>(frame.rowZero())};
        KroImage picture{0, 0, 0, pixels.data()};
        digest.add(finished(kroDemosaicSetConfig(handle_.get(), &wanted)));
        digest.add(finished(conversions_.demosaicing(handle_.get(), &source, algorithm, &picture)));
        digest.add(pixels, 8);
    }

private:
    Conversions conversions_;
    std::unique_ptr<KroContext, ReleaseHandle> handle_;
};

// kroConvertView, with all that it can be asked for.
class ViewPictures {
public:
    static constexpr const char* name = "view";
    static constexpr const auto& layouts = viewLayouts;
    static constexpr std::array<KroAlgorithm, 4> algorithms{KRO_NEAREST, KRO_BILINEAR, KRO_EDGE, KRO_FINE};

    explicit ViewPictures(const Conversions& conversions) : conversions_(conversions) {}
    static Shape shapeFor(Shape shape, const InputFormat& format) {
        if (format.packing != Packing::word) {
            shape.flags &= ~(KRO_VIEW_BIG_ENDIAN | KRO_VIEW_LEFT_ALIGNED);
        }
        return shape;
    }
    static const auto& outputs() { return outputFormats(); }

    void add(Digest& digest, const Rows& frame, const InputFormat& format, const Shape& shape,
             const OutputFormat& output, KroAlgorithm algorithm) const {
        const bool alpha = (shape.flags & KRO_VIEW_ALPHA) != 0;
        const KroSourceView source{frame.rowZero(), frame.stride(), shape.height, shape.width, format.code};
        KroPictureView picture{{}, {}, output.code};
        std::vector<Rows> planes(output.planar ? (alpha ? 4 : 3) : 1, Rows(output.code, shape));
        for (std::size_t i = 0; i < planes.size(); i++) {
            std::fill(planes[i].memory().begin(), planes[i].memory().end(), unwritten);
            picture.plane[i] = planes[i].rowZero();
            picture.stride[i] = planes[i].stride();
        }
        KroViewOptions options{sizeof options, algorithm, shape.flags, 0, 0, 0, 0};
        options.alpha = !alpha ? 0 : output.bits == 8 ? 0x5A : 0xA55A;
        for (int32_t band = 0; band < shape.bands; band++) {
            options.firstRow = shape.height * band / shape.bands;
            options.rowCount = shape.height * (band + 1) / shape.bands - options.firstRow;
            digest.add(finished(conversions_.convertView(&source, &picture, &options)));
        }
        for (const Rows& plane : planes) {
            digest.add(plane.memory(), output.bits);
        }
    }

private:
    Conversions conversions_;
};

// Of one layout and family: a digest a kind of output, in the order in which the formats name the kinds.
template <typename Pictures>
void addFamily(std::vector<NamedDigest>& all, Pictures& pictures, const Layout& layout, const Family& family) {
    std::vector<std::string> kinds;
    std::map<std::string, Digest> digests;
    for (std::size_t i = 0; i < shapes.size(); i++) {
        const InputFormat& format = *findInputFormat(family.phase, layout.bits[i], layout.packing);
        const Shape shape = Pictures::shapeFor(shapes[i], format);
        const Rows frame = generateFrame(format, shape);
        for (const OutputFormat& output : Pictures::outputs()) {
            const std::string kind = kindOf(output);
            if (digests.count(kind) == 0) {
                kinds.push_back(kind);
            }
            pictures.add(digests[kind], frame, format, shape, output, family.algorithm);
        }
    }
    const std::string start = std::string(Pictures::name) + " " + layout.name + " " + nameOf(family) + " ";
    for (const std::string& kind : kinds) {
        all.push_back({start + kind, digests[kind].value()});
    }
}

template <typename Pictures>
void addPictures(std::vector<NamedDigest>& all, const Conversions& conversions) {
    Pictures pictures(conversions);
    for (const Layout& layout : Pictures::layouts) {
        for (const Family& family : allFamilies(Pictures::algorithms)) {
            addFamily(all, pictures, layout, family);
        }
    }
}

}  // namespace

std::vector<NamedDigest> computeDigests(const Conversions& conversions) {
    std::vector<NamedDigest> all;
    addPictures<FramePictures>(all, conversions);
    addPictures<ViewPictures>(all, conversions);
    return all;
}

std::vector<NamedDigest> expectedDigests() {
    return {
#define KRO_DIGEST(name, value) {name, value},
#include "selftest/digests.def"
#undef KRO_DIGEST
    };
}

std::vector<std::string> namesThatDiffer(const std::vector<NamedDigest>& found,
                                         const std::vector<NamedDigest>& expected) {
    std::map<std::string, uint64_t> wanted;
    for (const NamedDigest& digest : expected) {
        wanted.emplace(digest.name, digest.value);
    }
    std::vector<std::string> names;
    for (const NamedDigest& digest : found) {
        const auto same = wanted.find(digest.name);
        if (same == wanted.end() || same->second != digest.value) {
            names.push_back(digest.name);
        }
        if (same != wanted.end()) {
            wanted.erase(same);
        }
    }
    for (const auto& [name, value] : wanted) {
        names.push_back(name);
    }
    return names;
}

}  // namespace cli
