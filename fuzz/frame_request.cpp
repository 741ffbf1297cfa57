#include "frame_request.hpp"

#include <climits>
#include <cstring>

#include "kro/view.h"

namespace fuzz {
namespace {

constexpr size_t mostPixels = 8192;

const reference::OutputFormat* outputOf(uint32_t code) {
    for (const reference::OutputFormat& format : reference::outputFormats) {
        if (format.code == code) {
            return &format;
        }
    }
    return nullptr;
}

}  // namespace

FrameRequest::FrameRequest(Choices& choices, uint32_t outputFormat)
    : input_(choices.entryOf(reference::inputFormats)), output_(outputOf(outputFormat)), outputFormat_(outputFormat) {
    std::memset(&frame_, 0, sizeof frame_);  // its padding is compared, too
    constexpr KroAlgorithm algorithms[] = {KRO_NEAREST, KRO_BILINEAR, KRO_EDGE, KRO_EDGE, 3, -1, INT_MIN};
    chooseSize(choices);
    algorithm_ = choices.oneOf(algorithms);
    frame_.pixelFormat = input_ != nullptr ? input_->code : KRO_BGR8 + choices.byte();
    result_ = {-7, -8, 0xABCDu, nullptr};
    const bool small = frame_.height > 0 && frame_.width > 0 && pixels() <= mostPixels;
    if (small && input_ != nullptr) {
        samples_ = Block(choices.samples(reference::inputBytes(*input_, pixels())), choices.oneIn(2) ? 2 : 0);
    }
    if (small && output_ != nullptr) {
        picture_ = Block(pixels() * static_cast<size_t>(output_->bytesPerPixel), choices.byte() % size_t{4});
    }
    samplesBefore_ = samples_.content();
    frame_.data = samples_.data();
    result_.data = picture_.data();
    if (choices.oneIn(32)) {
        const int which = choices.below(5);
        handleGiven_ = which != 0;
        frameGiven_ = which != 1;
        resultGiven_ = which != 2;
        frame_.data = which == 3 ? nullptr : frame_.data;
        result_.data = which == 4 ? nullptr : result_.data;
    }
    before_ = result_;
}

void FrameRequest::chooseSize(Choices& choices) {
    constexpr int32_t odd[] = {3, 0, -1, INT_MIN, INT_MAX, 46341, 65536, 1 << 30};
    frame_.height = 4 + choices.below(14);
    frame_.width = 4 + choices.below(choices.oneIn(4) ? 200 : 40);
    if (choices.oneIn(24)) {
        (choices.oneIn(2) ? frame_.height : frame_.width) = choices.oneOf(odd);
    }
    if (choices.oneIn(64)) {
        frame_.height = choices.oneOf(odd);
        frame_.width = choices.oneOf(odd);
    }
}

int32_t FrameRequest::run(KroContext* handle, const Demosaic& demosaic) {
    picture_.fill();
    result_ = before_;
    const KroImage frame = frame_;
    const std::vector<uint8_t> described = bytesOf(frame);
    const int32_t status = demosaic(handleGiven_ ? handle : nullptr, frameGiven_ ? &frame : nullptr, algorithm_,
                                    resultGiven_ ? &result_ : nullptr);
    require(described == bytesOf(frame) && samplesBefore_ == samples_.content(), "the frame was changed");
    return status;
}

// ---- the status, from the text of the interface ----

bool FrameRequest::anyNull() const {
    return !handleGiven_ || !frameGiven_ || !resultGiven_ || frame_.data == nullptr || result_.data == nullptr;
}

// The sign of the product in 32 bits.
bool FrameRequest::sizeIsBad() const {
    const uint32_t product = static_cast<uint32_t>(frame_.height) * static_cast<uint32_t>(frame_.width);
    return frame_.height <= 3 || frame_.width <= 3 || product > static_cast<uint32_t>(INT32_MAX);
}

int32_t FrameRequest::scratchNeed() const {
    if (anyNull() || sizeIsBad() || input_ == nullptr) {
        return 0;
    }
    const int64_t rows = inPlace() ? 1 : int64_t{frame_.height} + 1;
    const int64_t need = rows * frame_.width + 64;
    return need > INT32_MAX ? 0 : static_cast<int32_t>(need);
}

int32_t FrameRequest::expectedStatus() const {
    if (anyNull()) {
        return KRO_ERR_NULL;
    }
    if (sizeIsBad()) {
        return KRO_ERR_SIZE;
    }
    if (input_ == nullptr) {
        return KRO_ERR_FORMAT;
    }
    return scratchNeed() == 0 ? KRO_ERR_NO_MEMORY : output_ == nullptr ? KRO_ERR_OUTPUT_FORMAT : KRO_OK;
}

// ---- the bytes ----

// The same picture by the entry for views, which differs in alpha alone.
std::vector<uint8_t> FrameRequest::pictureOfViews() const {
    const KroSourceView source{frame_.data, 0, frame_.height, frame_.width, frame_.pixelFormat};
    KroViewOptions options{};
    options.size = sizeof options;
    options.algorithm = input_->mono ? KRO_NEAREST : algorithm_;
    const Block block(picture_.size());
    KroPictureView view{};
    view.format = outputFormat_;
    const bool planar = outputFormat_ == KRO_RGB8_PLANAR || outputFormat_ == KRO_BGR8_PLANAR;
    for (size_t plane = 0; plane < (planar ? 3 : 1); ++plane) {
        view.plane[plane] = block.data() + plane * pixels();
    }
    require(kroConvertView(&source, &view, &options) == KRO_OK, "a frame is no view");
    return block.content();
}

void FrameRequest::requireResult(int32_t status) const {
    require(status == expectedStatus(), "the status is not the first check's that fails");
    require(picture_.frontUntouched(), "bytes before the picture were written");
    const KroImage wanted =
        status == KRO_OK ? KroImage{frame_.height, frame_.width, outputFormat_, before_.data} : before_;
    require(result_.height == wanted.height && result_.width == wanted.width &&
                result_.pixelFormat == wanted.pixelFormat && result_.data == wanted.data,
            "the descriptor is not what was promised");
    const bool unknown = algorithm_ < KRO_NEAREST || algorithm_ > KRO_EDGE;
    if (status != KRO_OK || (unknown && !input_->mono)) {
        require(picture_.untouched(), "a call that makes no picture wrote");
        return;
    }
    const std::vector<uint8_t> expected = pictureOfViews();
    for (size_t i = 0; i < expected.size(); ++i) {
        const uint8_t byte = picture_.data()[i];
        require(isAlpha(i) ? byte == 0 || picture_.untouched(i, 1) : byte == expected[i],
                "frame and view give different pictures");
    }
}

}  // namespace fuzz
