// A call of the entry for frames that bytes make up, and what it must do.
#pragma once

#include <functional>

#include "choices.hpp"
#include "kro/kro.h"
#include "memory.hpp"
#include "reference.hpp"

namespace fuzz {

class FrameRequest {
public:
    // For a picture of that format.
    FrameRequest(Choices& choices, uint32_t outputFormat);

    using Demosaic = std::function<int32_t(KroContext*, const KroImage*, KroAlgorithm, KroImage*)>;
    int32_t run(KroContext* handle, const Demosaic& demosaic);

    bool handleGiven() const { return handleGiven_; }
    bool fits() const { return samples_.size() != 0 && picture_.size() != 0; }
    int32_t expectedStatus() const;
    // Bytes of scratch that the handle must have afterwards, at least; 0 where the call does not come so far.
    int32_t scratchNeed() const;
    void requireResult(int32_t status) const;
    std::vector<uint8_t> written() const { return picture_.content(); }

private:
    void chooseSize(Choices& choices);
    std::vector<uint8_t> pictureOfViews() const;
    bool inPlace() const { return input_->layout == reference::Layout::bytes; }
    bool sizeIsBad() const;
    bool anyNull() const;
    size_t pixels() const { return static_cast<size_t>(frame_.height) * static_cast<size_t>(frame_.width); }
    bool isAlpha(size_t byte) const { return output_->bytesPerPixel == 4 && byte % 4 == 3; }

    const reference::InputFormat* input_ = nullptr;
    const reference::OutputFormat* output_ = nullptr;  // null: the handle holds none that there is
    bool handleGiven_ = true, frameGiven_ = true, resultGiven_ = true;
    KroAlgorithm algorithm_ = KRO_NEAREST;
    uint32_t outputFormat_;
    KroImage frame_{};
    KroImage result_{};
    KroImage before_{};
    Block samples_;
    std::vector<uint8_t> samplesBefore_;
    Block picture_;
};

}  // namespace fuzz
