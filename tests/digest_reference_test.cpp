// The digests that the repository holds are those of the per-pixel reference. With KRO_TEST_WRITE_DIGESTS=FILE it
// writes them there.
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <optional>

#include "selftest/digests.hpp"
#include "view_support.hpp"

namespace {

const reference::InputFormat& inputOf(uint32_t code) {
    static const std::vector<reference::InputFormat> formats = reference::viewInputFormats();
    for (const reference::InputFormat& format : formats) {
        if (format.code == code) {
            return format;
        }
    }
    throw std::runtime_error("no input format " + std::to_string(code));
}

template <class Outputs>
const auto& outputOf(const Outputs& outputs, uint32_t code) {
    for (const auto& output : outputs) {
        if (output.code == code) {
            return output;
        }
    }
    throw std::runtime_error("no output format " + std::to_string(code));
}

// What the library's two functions must do, done by the reference.
class ByReference {
public:
    int32_t demosaicing(const KroContext* handle, const KroImage* in, KroAlgorithm algorithm, KroImage* out) {
        const KroSourceView source{in->data, 0, in->height, in->width, in->pixelFormat};
        const reference::Method method = static_cast<reference::Method>(algorithm);
        const reference::InputFormat& format = inputOf(in->pixelFormat);
        reference::Scene& scene = sceneOf(source, noOptions);
        const auto alpha = format.mono
                               ? reference::alphaOf(reference::Method::nearest, format.phase, in->height, in->width)
                               : reference::alphaOf(method, format.phase, in->height, in->width);
        const reference::Bytes bytes = reference::packed(scene.picture(method, 8), handle->outputFormat, alpha);
        uint8_t* const to = static_cast<uint8_t*>(out->data);
        for (size_t i = 0; i < bytes.value.size(); ++i) {
            to[i] = bytes.written[i] ? bytes.value[i] : to[i];
        }
        return KRO_OK;
    }

    int32_t convertView(const KroSourceView* source, const KroPictureView* picture, const KroViewOptions* options) {
        const reference::ViewOutput& output = outputOf(reference::viewOutputs, picture->format);
        const bool alphaPlane = output.planar && picture->plane[3] != nullptr;
        const Planes planes = planesOf(sceneOf(*source, *options), output, *options, alphaPlane);
        const Band band = bandOf(*options, source->height);
        for (size_t plane = 0; plane < planes.size(); ++plane) {
            const size_t row = planes[plane].size() / static_cast<size_t>(source->height);
            const ptrdiff_t stride =
                picture->stride[plane] == 0 ? static_cast<ptrdiff_t>(row) : picture->stride[plane];
            for (int y = band.first; y < band.first + band.rows; ++y) {
                std::memcpy(static_cast<uint8_t*>(picture->plane[plane]) + y * stride,
                            planes[plane].data() + static_cast<size_t>(y) * row, row);
            }
        }
        return KRO_OK;
    }

private:
    // A scene serves all pictures of a frame; calls for the same one follow each other.
    reference::Scene& sceneOf(const KroSourceView& source, const KroViewOptions& options) {
        const reference::InputFormat& format = inputOf(source.format);
        const reference::Rows rows = {static_cast<const uint8_t*>(source.data), source.stride, source.height,
                                      source.width};
        const reference::Words words = wordsOf(format, options);
        std::vector<uint16_t> numbers = reference::numbersOf(format, rows, words.bigEndian);
        numbers.push_back(static_cast<uint16_t>(source.width));
        numbers.push_back(words.leftAligned ? 1 : 0);
        if (!scene_ || source.format != format_ || numbers != numbers_) {
            scene_.emplace(format, rows, words);
            format_ = source.format;
            numbers_ = numbers;
        }
        return *scene_;
    }

    std::optional<reference::Scene> scene_;
    uint32_t format_ = 0;
    std::vector<uint16_t> numbers_;
};

void write(const std::string& path, const std::vector<cli::NamedDigest>& digests) {
    std::ofstream file(path);
    file << "// What kro selftest must find, from the tests' per-pixel reference: KRO_TEST_WRITE_DIGESTS=<this file> "
            "kro-tests "
            "writes it.\n"
         << std::hex << std::uppercase << std::setfill('0');
    for (const cli::NamedDigest& digest : digests) {
        file << "KRO_DIGEST(\"" << digest.name << "\", 0x" << std::setw(16) << digest.value << "u)\n";
    }
    ASSERT_TRUE(file.flush()) << path << " cannot be written";
}

TEST(Digests, TheReferenceGivesThem) {
    ByReference pictures;
    const std::vector<cli::NamedDigest> found = cli::computeDigests(
        {[&](KroContext* handle, const KroImage* frame, KroAlgorithm algorithm, KroImage* picture) {
             return pictures.demosaicing(handle, frame, algorithm, picture);
         },
         [&](const KroSourceView* frame, const KroPictureView* picture, const KroViewOptions* options) {
             return pictures.convertView(frame, picture, options);
         }});
    if (const char* path = std::getenv("KRO_TEST_WRITE_DIGESTS")) {
        write(path, found);
        return;
    }
    EXPECT_EQ(std::vector<std::string>{}, cli::namesThatDiffer(found, cli::expectedDigests()));
}

}  // namespace
