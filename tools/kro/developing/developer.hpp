#pragma once

#include <kro/kro.hpp>
#include <kro/threads.hpp>
#include <optional>
#include <string>
#include <vector>

#include "developing/tone.hpp"
#include "frames/samples.hpp"
#include "pictures/picture.hpp"

namespace cli {

struct DevelopOptions {
    KroAlgorithm algorithm = KRO_EDGE;
    // Without a choice it follows the frame and the file type.
    const OutputFormat* output = nullptr;
    int depth = 8;
    bool scale = false;
    std::optional<int> bits;
    uint32_t black = 0;
    int shift = 0;
    bool opaque = false;
    Tone tone;
};

// By name, as the library numbers them.
const std::vector<std::string>& algorithms();
KroAlgorithm parseAlgorithm(const std::string& name);

// A usage failure where the options leave nothing of the format's samples, or ask for more than they have.
void requireSomeBits(const std::string& name, const InputFormat& format, const DevelopOptions& options);

// Turns frames into pictures, each in bands on so many threads. Serves one thread itself.
class Developer {
public:
    explicit Developer(unsigned threads = 1) : threads_(threads) {}

    Picture develop(const Bytes& frame, const FrameLayout& layout, const OutputFormat& output,
                    const DevelopOptions& options, const std::string& name);

private:
    // What the library reads, and how it is to read it.
    struct Source {
        kro::Frame frame;
        kro::Options options;
    };

    Source sourceOf(const Bytes& frame, const FrameLayout& layout, const DevelopOptions& options,
                    const OutputFormat& output);
    void runBands(int count, const kro::BandTask& task);

    unsigned threads_;
    std::optional<kro::Threads> pool_;
    Samples samples_;
};

}  // namespace cli
