// Files of frames by their names: PGM, PNG, TIFF and NPY with headers of their own, raw ones with all that names and
// options can say of them.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "choices.hpp"
#include "frames/container.hpp"
#include "frames/length_advice.hpp"
#include "frames/samples.hpp"
#include "reading.hpp"

namespace {

using fuzz::Choices;

// A folder of this process, gone with it.
class Folder {
public:
    Folder() : path_(std::filesystem::temp_directory_path() / ("kro-fuzz-" + std::to_string(getpid()))) {
        std::filesystem::create_directory(path_);
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string write(const std::string& name, const cli::Bytes& content) const {
        std::ofstream file(path_ / name, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
        fuzz::require(file.good(), "the temporary folder takes no file");
        return path_ / name;
    }

private:
    std::filesystem::path path_;
};

std::string nameIn(Choices& choices) {
    constexpr const char* names[] = {"f_rggb.pgm",
                                     "f_bggr12.png",
                                     "f_mono.tif",
                                     "f_gbrg.npy",
                                     "f_8x6_BayerRG8.raw",
                                     "f_8x6_rggb_packed.raw",
                                     "f_4x4_SRGGB12_CSI2P.bin",
                                     "f_8x4_Y16_BE.raw",
                                     "f_rggb.raw",
                                     "f_8x6.raw"};
    return choices.oneOf(names);
}

cli::FrameRequest requestOf(Choices& choices) {
    constexpr const char* formats[] = {"", "", "rggb", "BayerGR12", "mono", "Mono10p", "SBGGR14P", "y16be", "rg99"};
    constexpr const char* sizes[] = {"", "", "", "8x6", "4x4", "5x4", "8x", "70000x30000"};
    constexpr uint64_t strides[] = {0, 0, 0, 8, 16, 17, 1000, 2147483647};  // the most that --stride takes
    constexpr uint64_t skips[] = {0, 0, 0, 1, 48, 999999999999999999};
    cli::FrameRequest request;
    request.formatName = choices.oneOf(formats);
    request.sizeText = choices.oneOf(sizes);
    request.stride = choices.oneOf(strides);
    request.skip = choices.oneOf(skips);
    request.bigEndian = choices.oneIn(8);
    return request;
}

void readFrames(const cli::InputFile& file, const cli::FrameLayout& layout) {
    const bool raw = layout.container == cli::Container::none;
    const cli::FrameRange range =
        raw ? cli::framesInFile(file, layout, {}) : cli::FrameRange{1, layout.frames, false};
    cli::Bytes frame;
    for (uint64_t number = range.first; number <= range.last && number < range.first + 3; ++number) {
        if (raw) {
            cli::readFrame(file, layout, number, frame);
        } else {
            cli::readContained(file, layout, number, frame);
        }
        fuzz::require(frame.size() >= layout.leastBytes(), "a frame lacks bytes");
        cli::Samples samples;
        cli::unpackSamples(frame, layout, samples);
        fuzz::require(samples.size() == layout.size.samples(), "a frame lacks samples");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Folder folder;
    constexpr size_t decisions = 8;
    Choices choices(data, size);
    const std::string name = nameIn(choices);
    const cli::FrameRequest request = requestOf(choices);
    const cli::Bytes content =
        size > decisions ? fuzz::withGoodChecksums(cli::Bytes(data + decisions, data + size)) : cli::Bytes();
    const std::string path = folder.write(name, content);
    fuzz::readOrRefuse([&] {
        const cli::InputFile file(path);
        cli::requireGoodRequest(request);
        const cli::FrameLayout layout = cli::layoutOf(file, request);
        fuzz::require(layout.format != nullptr && layout.size.samples() > 0, "a layout without format or size");
        cli::lengthAdvice(layout, content.size());
        readFrames(file, layout);
    });
    return 0;
}
