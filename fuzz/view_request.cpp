#include "view_request.hpp"

#include <climits>
#include <cstring>

namespace fuzz {
namespace {

constexpr uint32_t knownFlags = KRO_VIEW_ALPHA | KRO_VIEW_BIG_ENDIAN | KRO_VIEW_LEFT_ALIGNED | KRO_VIEW_FULL_RANGE;
constexpr size_t mostMemory = size_t{1} << 16;

const std::vector<reference::InputFormat>& inputs() {
    static const std::vector<reference::InputFormat> formats = reference::viewInputFormats();
    return formats;
}

// No format's code.
uint32_t oddCode(Choices& choices) {
    constexpr uint32_t codes[] = {0, 0xFFFFFFFFu, 0x01080002u, 0x0110FFFFu, KRO_BGR8 + 1, KRO_MONO8 ^ 0x80000000u};
    return choices.oneOf(codes);
}

size_t apart(ptrdiff_t stride, size_t row) {
    return stride == 0 ? row : stride < 0 ? size_t{0} - static_cast<size_t>(stride) : static_cast<size_t>(stride);
}

// Bytes from the first to the last of all rows; 0 where they are too many for a test.
size_t extent(ptrdiff_t stride, size_t row, int32_t height) {
    const size_t rows = height > 0 ? static_cast<size_t>(height) : 0;
    const size_t step = apart(stride, row);
    return rows == 0 || step > mostMemory / rows || row > mostMemory ? 0 : step * (rows - 1) + row;
}

// Row 0 in memory that holds such rows.
uint8_t* rowZero(const Block& block, ptrdiff_t stride, int32_t height) {
    return stride < 0 && block.size() != 0 ? block.data() + apart(stride, 0) * static_cast<size_t>(height - 1)
                                           : block.data();
}

}  // namespace

ViewRequest::ViewRequest(Choices& choices) : input_(choices.entryOf(inputs())), output_(nullptr) {
    std::memset(&source_, 0, sizeof source_);  // padding is compared, too
    std::memset(&picture_, 0, sizeof picture_);
    output_ = choices.entryOf(reference::viewOutputs);
    source_.format = input_ != nullptr ? input_->code : oddCode(choices);
    picture_.format = output_ != nullptr ? output_->code : oddCode(choices);
    chooseSize(choices);
    source_.stride = chooseStride(choices, sourceRow());
    chooseOptions(choices);
    layOut(choices);
}

void ViewRequest::chooseSize(Choices& choices) {
    constexpr int32_t odd[] = {3, 0, -1, INT_MIN, INT_MAX, (1 << 30) + 1, 1 << 30, 65536};
    source_.height = 4 + choices.below(14);
    source_.width = 4 + choices.below(choices.oneIn(4) ? 200 : 40);
    if (choices.oneIn(24)) {
        (choices.oneIn(2) ? source_.height : source_.width) = choices.oneOf(odd);
    }
}

size_t ViewRequest::sourceRow() const {
    return input_ != nullptr && source_.width > 0 ? reference::inputBytes(*input_, static_cast<size_t>(source_.width))
                                                  : 8;
}

size_t ViewRequest::pictureRow() const {
    const std::string letters = output_ == nullptr ? "Y"
                                : output_->planar  ? std::string("R")
                                                   : std::string(output_->letters);
    const uint64_t pixel = reference::bytesOf(letters, output_ == nullptr ? 8 : output_->depth);
    // In 32 bits the largest width may take more than can be said.
    return static_cast<size_t>(
        std::min<uint64_t>(pixel * static_cast<uint64_t>(source_.width > 0 ? source_.width : 1), SIZE_MAX));
}

ptrdiff_t ViewRequest::chooseStride(Choices& choices, size_t rowBytes) {
    const ptrdiff_t row = static_cast<ptrdiff_t>(std::min<size_t>(rowBytes, PTRDIFF_MAX / 2));
    const ptrdiff_t gap = choices.below(16);
    switch (choices.below(16)) {
        case 0:
        case 1:
        case 2:
            return 0;
        case 3:
        case 4:
            return row;
        case 5:
            return -row;
        case 6:
        case 7:
            return -(row + gap / 2 * 2);
        case 8:
            return row + gap;
        case 9: {
            const ptrdiff_t odd[] = {PTRDIFF_MIN, PTRDIFF_MAX, PTRDIFF_MAX / 4 * 2, row - 1, 1 - row, PTRDIFF_MIN + 2,
                                     row / 2,     -2};
            return choices.oneOf(odd);
        }
        default:
            return row + gap / 2 * 2;
    }
}

void ViewRequest::chooseOptions(Choices& choices) {
    constexpr int32_t oddNumbers[] = {-1, 7, 17, 65536, INT_MAX, INT_MIN};
    optionsGiven_ = !choices.oneIn(16);
    KroViewOptions& o = options_;
    o = {sizeof o, choices.below(4), choices.byte() & knownFlags, choices.byte(), 0, 0, 0};
    o.bits = choices.oneIn(3) ? 8 + choices.below(9) : 0;
    if (choices.oneIn(2) && source_.height > 0 && source_.height < 256) {
        o.firstRow = choices.below(source_.height);
        o.rowCount = choices.below(source_.height - o.firstRow + 1);
    }
    if (input_ != nullptr && !isOfWords()) {
        o.flags &= KRO_VIEW_ALPHA | KRO_VIEW_FULL_RANGE;
        o.bits = 0;
    }
    if (choices.oneIn(16)) {
        int32_t* const fields[] = {&o.algorithm, &o.alpha, &o.bits, &o.firstRow, &o.rowCount};
        *choices.oneOf(fields) = choices.oneOf(oddNumbers);
    }
    o.flags |= choices.oneIn(32) ? choices.word() : 0;
    o.size = choices.oneIn(8) ? static_cast<uint32_t>(choices.below(48)) : o.size;
    std::vector<uint8_t> bytes(std::max<size_t>(o.size, sizeof o.size));
    std::memcpy(bytes.data(), &o, std::min(bytes.size(), sizeof o));
    for (size_t i = sizeof o; i < bytes.size(); ++i) {
        bytes[i] = choices.oneIn(32) ? 1 : 0;
        tailIsZero_ = tailIsZero_ && bytes[i] == 0;
    }
    record_ = Block(bytes, 0);
    const KroViewOptions given = o;
    o = {given.size, optionsGiven_ ? KRO_NEAREST : KRO_EDGE, 0, 0, 0, 0, 0};
    if (optionsGiven_) {
        std::memcpy(&o, &given, std::min<size_t>(given.size, sizeof given));
    }
}

void ViewRequest::layOut(Choices& choices) {
    constexpr size_t shifts[] = {0, 0, 0, 0, 2, 6, 1, 8};
    const size_t bytes = extent(source_.stride, sourceRow(), source_.height);
    const size_t run =
        source_.stride == 0 && bytes != 0 && input_ != nullptr && source_.width > 0
            ? reference::inputBytes(*input_, static_cast<size_t>(source_.height) * static_cast<size_t>(source_.width))
            : bytes;
    samples_ = Block(choices.samples(run), choices.oneOf(shifts));
    samplesBefore_ = samples_.content();
    source_.data = rowZero(samples_, source_.stride, source_.height);
    const size_t planes = planesNeeded() == 3 ? (choices.oneIn(2) ? 4 : 3) : 1;
    for (size_t plane = 0; plane < planes; ++plane) {
        picture_.stride[plane] = chooseStride(choices, pictureRow());
        planes_[plane] = Block(extent(picture_.stride[plane], pictureRow(), source_.height), choices.oneOf(shifts));
        picture_.plane[plane] = rowZero(planes_[plane], picture_.stride[plane], source_.height);
    }
    if (choices.oneIn(32)) {
        const int which = choices.below(6);
        sourceGiven_ = which != 0;
        pictureGiven_ = which != 1;
        source_.data = which == 2 ? nullptr : source_.data;
        if (which > 2) {
            picture_.plane[which - 3] = nullptr;
        }
    }
}

bool ViewRequest::fits() const {
    bool all = samples_.size() != 0;
    for (size_t plane = 0; plane < planesUsed(); ++plane) {
        all = all && planes_[plane].size() != 0;
    }
    return all;
}

int32_t ViewRequest::run(const Convert& convert) {
    for (Block& plane : planes_) {
        plane.fill();
    }
    const KroSourceView source = source_;
    const KroPictureView picture = picture_;
    const auto records = [&] {
        return std::array<std::vector<uint8_t>, 3>{bytesOf(source), bytesOf(picture), record_.content()};
    };
    const auto before = records();
    const int32_t status = convert(sourceGiven_ ? &source : nullptr, pictureGiven_ ? &picture : nullptr,
                                   optionsGiven_ ? reinterpret_cast<const KroViewOptions*>(record_.data()) : nullptr);
    require(before == records(), "a record of the call was changed");
    require(samplesBefore_ == samples_.content() && samples_.frontUntouched(), "the source was changed");
    return status;
}

// ---- the status, from the text of the interface ----

bool ViewRequest::anyNull() const {
    if (!sourceGiven_ || !pictureGiven_ || source_.data == nullptr || picture_.plane[0] == nullptr) {
        return true;
    }
    return planesNeeded() == 3 && (picture_.plane[1] == nullptr || picture_.plane[2] == nullptr);
}

bool ViewRequest::sizeIsBad() const {
    constexpr int32_t longest = 1 << 30;
    const int32_t height = source_.height, width = source_.width;
    if (height <= 3 || width <= 3 || height > longest || width > longest) {
        return true;
    }
    // What an unknown format's rows without gaps take nobody knows.
    const auto tooFar = [&](ptrdiff_t stride, size_t row, bool known) {
        return (known || stride != 0) && apart(stride, row) > static_cast<size_t>(PTRDIFF_MAX / height);
    };
    bool bad = tooFar(source_.stride, sourceRow(), input_ != nullptr);
    for (size_t plane = 0; plane < planesUsed(); ++plane) {
        bad = bad || tooFar(picture_.stride[plane], pictureRow(), output_ != nullptr);
    }
    return bad;
}

bool ViewRequest::optionsAreBad() const {
    const KroViewOptions& o = options_;
    const bool words = isOfWords();
    const int32_t opaque = output_->depth == 8 ? 255 : 65535;
    if (optionsGiven_ && (o.size < 4 || !tailIsZero_)) {
        return true;
    }
    if (o.algorithm < KRO_NEAREST || o.algorithm > KRO_FINE || (o.flags & ~knownFlags) != 0) {
        return true;
    }
    if ((o.flags & KRO_VIEW_ALPHA) != 0 && (o.alpha < 0 || o.alpha > opaque)) {
        return true;
    }
    if (o.firstRow < 0 || o.firstRow >= source_.height || o.rowCount < 0 ||
        o.rowCount > source_.height - o.firstRow) {
        return true;
    }
    if (words) {
        return o.bits != 0 && (o.bits < 8 || o.bits > 16);
    }
    return (o.bits != 0 && o.bits != input_->bits) || (o.flags & (KRO_VIEW_BIG_ENDIAN | KRO_VIEW_LEFT_ALIGNED)) != 0;
}

bool ViewRequest::rowsAreTooClose() const {
    bool close = source_.stride != 0 && apart(source_.stride, 0) < sourceRow();
    for (size_t plane = 0; plane < planesUsed(); ++plane) {
        close = close || (picture_.stride[plane] != 0 && apart(picture_.stride[plane], 0) < pictureRow());
    }
    return close;
}

bool ViewRequest::misaligned() const {
    const auto odd = [](const void* data, ptrdiff_t stride) {
        return reinterpret_cast<uintptr_t>(data) % 2 != 0 || stride % 2 != 0;
    };
    bool any = isOfWords() && odd(source_.data, source_.stride);
    for (size_t plane = 0; output_->depth == 16 && plane < planesUsed(); ++plane) {
        any = any || odd(picture_.plane[plane], picture_.stride[plane]);
    }
    return any;
}

int32_t ViewRequest::expectedStatus() const {
    if (anyNull()) {
        return KRO_ERR_NULL;
    }
    if (sizeIsBad()) {
        return KRO_ERR_SIZE;
    }
    if (input_ == nullptr) {
        return KRO_ERR_FORMAT;
    }
    if (output_ == nullptr) {
        return KRO_ERR_OUTPUT_FORMAT;
    }
    if (optionsAreBad()) {
        return KRO_ERR_OPTION;
    }
    return rowsAreTooClose() ? KRO_ERR_STRIDE : misaligned() ? KRO_ERR_ALIGNMENT : KRO_OK;
}

// ---- the bytes ----

void ViewRequest::requireRows(size_t plane, const std::vector<uint8_t>& expected, Band band) const {
    const Block& block = planes_[plane];
    const size_t row = pictureRow(), step = apart(picture_.stride[plane], row);
    const int32_t height = source_.height;
    for (int32_t y = 0; y < height; ++y) {
        const int32_t inMemory = picture_.stride[plane] < 0 ? height - 1 - y : y;
        const size_t at = static_cast<size_t>(inMemory) * step;
        if (band.holds(y)) {
            const uint8_t* const wanted = expected.data() + static_cast<size_t>(y) * row;
            require(std::memcmp(block.data() + at, wanted, row) == 0, "a row differs from the reference");
        } else {
            require(block.untouched(at, row), "a row outside the band was written");
        }
        require(inMemory + 1 == height || block.untouched(at + row, step - row), "bytes between rows were written");
    }
    require(block.frontUntouched(), "bytes before a picture were written");
}

void ViewRequest::requireResult(int32_t status) const {
    require(status == expectedStatus(), "the status is not the first check's that fails");
    if (status != KRO_OK) {
        for (const Block& plane : planes_) {
            require(plane.untouched(), "a call that fails wrote");
        }
        return;
    }
    reference::Scene scene(*input_,
                           {static_cast<const uint8_t*>(source_.data), source_.stride, source_.height, source_.width},
                           wordsOf(*input_, options_));
    const Planes expected = planesOf(scene, *output_, options_, planesUsed() == 4);
    for (size_t plane = 0; plane < expected.size(); ++plane) {
        requireRows(plane, expected[plane], bandOf(options_, source_.height));
    }
}

std::vector<uint8_t> ViewRequest::written() const {
    std::vector<uint8_t> bytes;
    for (const Block& plane : planes_) {
        const std::vector<uint8_t> own = plane.content();
        bytes.insert(bytes.end(), own.begin(), own.end());
    }
    return bytes;
}

}  // namespace fuzz
