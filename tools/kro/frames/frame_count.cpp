#include "frames/frame_count.hpp"

#include "frames/length_advice.hpp"
#include "support/failure.hpp"

namespace cli {

std::string framesText(uint64_t count) { return std::to_string(count) + (count == 1 ? " frame" : " frames"); }

std::string needText(const FrameLayout& layout) {
    return "one " + layout.text() + " frame takes " + std::to_string(layout.bytes());
}

uint64_t countFrames(const std::string& name, uint64_t length, const FrameLayout& layout, bool ignoreRest) {
    const std::string holds = name + ": ";
    if (length == 0) {
        throw Failure(holds + "the file is empty, but " + needText(layout) + " bytes");
    }
    if (layout.skip >= length) {
        throw Failure(holds + "--skip " + std::to_string(layout.skip) + " leaves nothing of its " +
                      std::to_string(length) + " bytes");
    }
    const uint64_t payload = length - layout.skip;
    const uint64_t count = payload / layout.bytes();
    const uint64_t rest = payload % layout.bytes();
    if (rest >= layout.leastBytes()) {
        return count + 1;
    }
    if (count == 0) {
        throw Failure(holds + "has " + std::to_string(payload) + " bytes, but " + needText(layout) +
                      " (short file, or wrong size or format)");
    }
    if (rest != 0 && !ignoreRest) {
        throw Failure(holds + "has " + std::to_string(payload) + " bytes, but " + needText(layout) + ": " +
                      framesText(count) + " and " + std::to_string(rest) + " bytes more (" +
                      lengthAdvice(layout, payload) + ")");
    }
    return count;
}

}  // namespace cli
