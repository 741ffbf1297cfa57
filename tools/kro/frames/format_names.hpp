#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frames/formats.hpp"

namespace cli {

// How the phase is spelt: Mono, BayerRG; rggb, bayer_rggb, SRGGB, gray; RG; Y, R.
enum class Spelling { full, sites, letters, initial };

// What a piece of a name says about a format.
struct FormatHint {
    Phase phase = Phase::mono;
    // 0 where it says nothing of depth.
    int bits = 0;
    std::optional<Packing> packing;
    bool bigEndian = false;
    // It ends in p, but not as any of those who write it so would spell it.
    bool unclear = false;
    Spelling spelling = Spelling::full;
    // V4L2's and libcamera's SRGGB or Y.
    bool linux = false;
};

bool readFormatHint(std::string_view text, FormatHint& hint);

// Null where no format has the depth and packing.
const InputFormat* findInputFormat(const FormatHint& hint);

// Names of words may say their byte order as well.
struct NamedInput {
    const InputFormat* format = nullptr;
    bool bigEndian = false;
};

// A usage failure for a name that none has, with the nearest one, or that several have, with all of them.
NamedInput requireInputFormat(const std::string& name);

// "BayerRG10, BayerRG12p (PFNC's) or SRGGB12P (CSI-2)".
std::string listNames(const std::vector<const InputFormat*>& formats);

// The short name, as GStreamer has it or would have it.
std::string shortAlias(const InputFormat& format);

// What V4L2, libcamera, GStreamer and FFmpeg call it besides; each is taken as a name.
std::vector<std::string> otherNames(const InputFormat& format);

}  // namespace cli
