// A call on views that bytes make up: mostly one that must succeed, sometimes with anything in any field.
#pragma once

#include <functional>

#include "choices.hpp"
#include "kro/view.h"
#include "memory.hpp"
#include "view_expected.hpp"

namespace fuzz {

class ViewRequest {
public:
    explicit ViewRequest(Choices& choices);

    using Convert = std::function<int32_t(const KroSourceView*, const KroPictureView*, const KroViewOptions*)>;
    // Over pictures filled anew.
    int32_t run(const Convert& convert);

    // Are frame and picture laid out in memory? A call that must succeed needs that.
    bool fits() const;
    // What the interface promises for these arguments.
    int32_t expectedStatus() const;
    // Everything that the call may have written is as it must be.
    void requireResult(int32_t status) const;
    // All bytes of all planes, for comparison.
    std::vector<uint8_t> written() const;

private:
    void chooseSize(Choices& choices);
    ptrdiff_t chooseStride(Choices& choices, size_t rowBytes);
    void chooseOptions(Choices& choices);
    void layOut(Choices& choices);

    size_t sourceRow() const;
    size_t pictureRow() const;
    size_t planesNeeded() const { return output_ != nullptr && output_->planar ? 3 : 1; }
    size_t planesUsed() const {
        return planesNeeded() + (planesNeeded() == 3 && picture_.plane[3] != nullptr ? 1 : 0);
    }

    bool anyNull() const;
    bool sizeIsBad() const;
    bool optionsAreBad() const;
    bool rowsAreTooClose() const;
    bool misaligned() const;
    bool isOfWords() const { return input_->layout == reference::Layout::words; }
    void requireRows(size_t plane, const std::vector<uint8_t>& expected, Band band) const;

    const reference::InputFormat* input_ = nullptr;
    const reference::ViewOutput* output_ = nullptr;
    bool sourceGiven_ = true, pictureGiven_ = true, optionsGiven_ = true;
    KroSourceView source_{};
    KroPictureView picture_{};
    KroViewOptions options_{};  // as the call must understand them
    bool tailIsZero_ = true;
    Block record_;  // the options as given
    Block samples_;
    std::vector<uint8_t> samplesBefore_;
    std::array<Block, 4> planes_;
};

}  // namespace fuzz
