// The pixel formats: one table of those that go in, one of those that come out.
#pragma once

#include "records/job.hpp"

namespace kro {

struct InputFormat {
    uint32_t code;
    bool grey;
    Phase phase;
    Layout layout;
    int32_t bits;
    bool ofFrames;  // of kro.h; the others are for views only
};

struct OutputFormat {
    uint32_t code;
    Output kind;
    bool redFirst;
    int32_t sampleBytes;
    bool ofFrames;
};

// Null where there is none of that code.
const InputFormat* findInput(uint32_t code);
const OutputFormat* findOutput(uint32_t code);

}  // namespace kro
