#pragma once

#include <optional>
#include <string>

#include "developing/library.hpp"
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
    int shift = 0;
    bool opaque = false;
    Tone tone;
};

KroAlgorithm parseAlgorithm(const std::string& name);

// A usage failure that says what exists, where the frame has no 16-bit path or the options leave no bits of it.
void requireDeepPath(const std::string& name, const InputFormat& format, const DevelopOptions& options);

// Turns frames into pictures. Owns a handle, so each thread has one of its own.
class Developer {
public:
    Picture develop(const Bytes& frame, const FrameLayout& layout, const OutputFormat* output,
                    const DevelopOptions& options, const std::string& name);

private:
    Picture developShallow(const Bytes& frame, const FrameLayout& layout, const OutputFormat& output,
                           KroAlgorithm algorithm, const std::string& name);
    Picture developDeep(const Bytes& frame, const FrameLayout& layout, const DevelopOptions& options,
                        const std::string& name);

    Handle handle_;
    Samples samples_;
};

}  // namespace cli
