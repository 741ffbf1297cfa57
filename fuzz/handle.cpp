// Handles made, set, used and released in any order.
#include "frame_request.hpp"

namespace {

using fuzz::Block;
using fuzz::Choices;
using fuzz::require;

// A handle, perhaps, and what it must hold.
struct Slot {
    KroContext* handle = nullptr;
    uint32_t format = KRO_BGR8;
    int32_t capacity = 0;

    void requireState() const {
        require(handle == nullptr || (handle->outputFormat == format && handle->scratch.capacity == capacity &&
                                      (handle->scratch.data != nullptr) == (capacity != 0)),
                "the handle is not what the calls made of it");
    }
};

void create(Slot& slot) {
    require(kroCreate(nullptr) == KRO_ERR_NULL, "no place for a handle was taken for one");
    if (slot.handle == nullptr) {
        slot = {};
        require(kroCreate(&slot.handle) == KRO_OK && slot.handle != nullptr, "no handle");
    }
}

void release(Slot& slot) {
    require(kroRelease(nullptr) == KRO_ERR_NULL, "no place of a handle was taken for one");
    if (slot.handle != nullptr) {
        require(kroRelease(&slot.handle) == KRO_OK && slot.handle == nullptr, "a handle was not released");
    }
}

void setConfig(Choices& choices, Slot& slot) {
    const auto* const output = choices.entryOf(reference::outputFormats);
    const uint32_t format = output != nullptr ? output->code : KRO_BGR8 + 1 + choices.byte() % 8;
    const bool given = !choices.oneIn(16);
    const int32_t status = kroDemosaicSetConfig(slot.handle, given ? &format : nullptr);
    const bool good = slot.handle != nullptr && given && output != nullptr;
    require(status == (slot.handle == nullptr || !given ? KRO_ERR_NULL
                       : good                           ? KRO_OK
                                                        : KRO_ERR_OUTPUT_FORMAT),
            "status of kroDemosaicSetConfig");
    slot.format = good ? format : slot.format;
}

void getConfig(Choices& choices, Slot& slot) {
    uint32_t format = 7;
    const bool given = !choices.oneIn(16);
    const int32_t status = kroDemosaicGetConfig(slot.handle, given ? &format : nullptr);
    const bool good = slot.handle != nullptr && given;
    require(status == (good ? KRO_OK : KRO_ERR_NULL) && format == (good ? slot.format : 7),
            "kroDemosaicGetConfig does not give what was set");
}

void demosaic(Choices& choices, Slot& slot) {
    if (slot.handle == nullptr) {
        KroImage none{};
        require(kroDemosaicing(nullptr, &none, KRO_EDGE, &none) == KRO_ERR_NULL, "no handle was taken for one");
        return;
    }
    fuzz::FrameRequest request(choices, slot.format);
    // Gigabytes of scratch are not asked for here.
    const int32_t need = request.scratchNeed();
    if (need > (1 << 20) || (request.expectedStatus() == KRO_OK && !request.fits())) {
        return;
    }
    request.requireResult(request.run(slot.handle, kroDemosaicing));
    slot.capacity = need > slot.capacity ? need : slot.capacity;
}

void growScratch(Choices& choices, Slot& slot) {
    const int32_t size = choices.byte() * 16 - 64;
    if (slot.handle != nullptr) {
        require(kroMemRealloc(&slot.handle->scratch, size) == KRO_OK, "no scratch");
        slot.capacity = size > slot.capacity ? size : slot.capacity;
    }
}

void adjust(Choices& choices, Slot& slot) {
    const int32_t height = choices.below(9), width = choices.below(40);
    const size_t rows = static_cast<size_t>(height), packed = static_cast<size_t>(width) * 3;
    const size_t padded = (packed + 3) / 4 * 4;
    const Block block(rows * padded);
    const KroImage image{height, width, 0, choices.oneIn(16) ? nullptr : block.data()};
    const std::vector<uint8_t> before = block.content();
    const int32_t status = kroBMPAdjust(slot.handle, &image);
    if (slot.handle == nullptr || image.data == nullptr || height <= 3 || width <= 3) {
        const bool null = slot.handle == nullptr || image.data == nullptr;
        require(status == (null ? KRO_ERR_NULL : KRO_ERR_SIZE) && block.untouched(), "a refused picture was padded");
        return;
    }
    bool right = status == KRO_OK;
    for (size_t i = 0; i < rows * padded; ++i) {
        const size_t row = i / padded, column = i % padded;
        right = right && block.data()[i] == (column < packed ? before[row * packed + column] : 0);
    }
    require(right, "rows of a bitmap are not padded as promised");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Choices choices(data, size);
    Slot slots[3];
    while (!choices.over()) {
        const uint8_t step = choices.byte();
        Slot& slot = slots[step / 8 % 3];
        switch (step % 8) {
            case 0:
                create(slot);
                break;
            case 1:
                release(slot);
                break;
            case 2:
                setConfig(choices, slot);
                break;
            case 3:
                getConfig(choices, slot);
                break;
            case 4:
                growScratch(choices, slot);
                break;
            case 5:
                adjust(choices, slot);
                break;
            default:
                demosaic(choices, slot);
                break;
        }
        slot.requireState();
    }
    for (Slot& slot : slots) {
        release(slot);
    }
    return 0;
}
