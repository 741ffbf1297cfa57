#pragma once

#include "frames/container.hpp"

namespace cli::guess {

// The layout that options and name give; where they leave it open, the failure also says what the bytes look like.
FrameLayout layoutOrHint(const InputFile& file, const FrameRequest& request);

}  // namespace cli::guess
