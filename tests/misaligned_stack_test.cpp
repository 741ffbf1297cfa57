// 32-bit callers whose stack is aligned to 4 bytes only, which is all that some compilers and languages keep to.
#include <cstdint>
#include <vector>

#include "KROView.hpp"
#include "support.hpp"

namespace {

struct Conversion {
    const kro::Kernels& table;
    KroSourceView source;
    KroPictureView picture;
    KroViewOptions options;
    int32_t status = -1;
};

void convert(void* given) {
    Conversion& c = *static_cast<Conversion*>(given);
    c.status = kro::convertView(c.table, &c.source, &c.picture, &c.options);
}

// Calls with the stack `shift` bytes below a multiple of 16.
__attribute__((noinline)) void callShifted(uint32_t shift, void (*function)(void*), void* argument) {
    asm volatile(
        "movl %%esp, %%esi\n\t"
        "andl $-16, %%esp\n\t"
        "subl %%eax, %%esp\n\t"
        "subl $12, %%esp\n\t"
        "pushl %%edx\n\t"
        "call *%%ecx\n\t"
        "movl %%esi, %%esp"
        : "+a"(shift), "+c"(function), "+d"(argument)
        :
        : "esi", "memory", "cc");
}

std::vector<uint16_t> converted(const kro::Kernels& table, uint32_t from, uint32_t to, KroAlgorithm algorithm,
                                uint32_t shift) {
    constexpr int32_t height = 24, width = 300;
    std::vector<uint16_t> frame(static_cast<size_t>(height) * width);
    for (size_t i = 0; i < frame.size(); ++i) {
        frame[i] = static_cast<uint16_t>((i * 40503u >> 4) & 0xFFF);
    }
    std::vector<uint16_t> picture(frame.size() * 4);
    Conversion conversion{table,
                          {frame.data(), 0, height, width, from},
                          {{picture.data()}, {}, to},
                          {sizeof(KroViewOptions), algorithm, 0, 0, 0, 0, 0}};
    callShifted(shift, convert, &conversion);
    EXPECT_EQ(KRO_OK, conversion.status);
    return picture;
}

TEST(MisalignedStack, GivesTheSamePictures) {
    const uint32_t pairs[][2] = {{KRO_BAYER_RG8, KRO_BGR8},    {KRO_BAYER_GB12, KRO_BGRA8},
                                 {KRO_BAYER_RG12P, KRO_MONO8}, {KRO_BAYER_GR12, KRO_RGBA16},
                                 {KRO_SRGGB10P, KRO_BGR16},    {KRO_MONO12, KRO_MONO8}};
    for (const kro::Kernels* table : usableTables()) {
        for (const auto& pair : pairs) {
            for (const KroAlgorithm algorithm : {KRO_NEAREST, KRO_BILINEAR, KRO_EDGE, KRO_FINE}) {
                const std::vector<uint16_t> expected = converted(*table, pair[0], pair[1], algorithm, 0);
                for (const uint32_t shift : {4u, 8u, 12u}) {
                    EXPECT_EQ(expected, converted(*table, pair[0], pair[1], algorithm, shift))
                        << table->name << ", stack shifted by " << shift;
                }
            }
        }
    }
}

}  // namespace
