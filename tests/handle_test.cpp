// The handle: creation, defaults, configuration, scratch memory.
#include <cstring>

#include "allocation.hpp"
#include "support.hpp"

namespace {

struct Handle {
    KroContext* context = nullptr;
    Handle() { EXPECT_EQ(KRO_OK, kroCreate(&context)); }
    ~Handle() {
        if (context != nullptr) {
            kroRelease(&context);
        }
    }
    KroContext* operator->() const { return context; }
};

void expectDefaults(const KroContext& context) {
    EXPECT_EQ(0x02180015u, context.outputFormat);
    EXPECT_EQ(12, context.reservedA);
    EXPECT_EQ(1, context.reservedB);
    for (const auto& triple : context.reservedTriple) {
        EXPECT_EQ(0, triple[0]);
        EXPECT_EQ(8, triple[1]);
        EXPECT_EQ(1, triple[2]);
    }
    EXPECT_EQ(nullptr, context.scratch.data);
    EXPECT_EQ(0, context.scratch.capacity);
}

TEST(Handle, CreateGivesDefaults) {
    Handle handle;
    ASSERT_NE(nullptr, handle.context);
    expectDefaults(*handle.context);
    EXPECT_EQ(0, handle->reservedC);
    EXPECT_EQ(0, handle->reservedD);
}

TEST(Handle, CreateRejectsNull) { EXPECT_EQ(KRO_ERR_NULL, kroCreate(nullptr)); }

TEST(Handle, CreateOutOfMemoryLeavesNullHandle) {
    KroContext sentinel{};
    KroContext* handle = &sentinel;
    allocation::refuse(true);
    const int32_t status = kroCreate(&handle);
    allocation::refuse(false);
    EXPECT_EQ(KRO_ERR_NO_MEMORY, status);
    EXPECT_EQ(nullptr, handle);
}

TEST(Handle, InitWritesDefaultsAndDropsScratchButLeavesTheLastReservedFields) {
    KroContext context;
    std::memset(&context, 0x5A, sizeof context);
    kroInit(&context);
    expectDefaults(context);
    EXPECT_EQ(0x5A5A5A5A, context.reservedC);
    EXPECT_EQ(0x5A5A5A5A, context.reservedD);
}

TEST(Handle, InitDoesNotFreeTheScratchItDrops) {
    Handle handle;
    ASSERT_EQ(KRO_OK, kroMemRealloc(&handle->scratch, 100));
    void* const dropped = handle->scratch.data;
    kroInit(handle.context);
    std::memset(dropped, 1, 100);  // still ours
    EXPECT_EQ(nullptr, handle->scratch.data);
    std::free(dropped);
}

TEST(Handle, ReleaseNullsTheVariableAndRejectsNull) {
    Handle handle;
    ASSERT_EQ(KRO_OK, kroMemRealloc(&handle->scratch, 100));
    EXPECT_EQ(KRO_OK, kroRelease(&handle.context));
    EXPECT_EQ(nullptr, handle.context);
    EXPECT_EQ(KRO_ERR_NULL, kroRelease(nullptr));
}

TEST(Handle, GetConfigChecksBothPointers) {
    Handle handle;
    uint32_t format = 7;
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicGetConfig(handle.context, nullptr));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicGetConfig(nullptr, &format));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicGetConfig(nullptr, nullptr));
    EXPECT_EQ(7u, format);
    EXPECT_EQ(KRO_OK, kroDemosaicGetConfig(handle.context, &format));
    EXPECT_EQ(0x02180015u, format);
}

TEST(Handle, SetConfigAcceptsExactlySevenFormats) {
    Handle handle;
    for (const reference::OutputFormat& format : reference::outputFormats) {
        EXPECT_EQ(KRO_OK, kroDemosaicSetConfig(handle.context, &format.code)) << format.name;
        uint32_t back = 0;
        EXPECT_EQ(KRO_OK, kroDemosaicGetConfig(handle.context, &back));
        EXPECT_EQ(format.code, back);
    }
    const uint32_t mono = KRO_MONO8;
    ASSERT_EQ(KRO_OK, kroDemosaicSetConfig(handle.context, &mono));
    for (uint32_t refused :
         {0x01080009u, 0x01100007u, 0x02180013u, 0x02180018u, 0x02180016u, 0x02200015u, 0x02200018u, 0x02180020u,
          0x02180022u, 0x02180024u, 0x02180026u, 0x01080002u, 0u, 0xFFFFFFFFu}) {
        EXPECT_EQ(KRO_ERR_OUTPUT_FORMAT, kroDemosaicSetConfig(handle.context, &refused)) << std::hex << refused;
        EXPECT_EQ(mono, handle->outputFormat);
    }
}

TEST(Handle, SetConfigChecksBothPointers) {
    Handle handle;
    const uint32_t format = KRO_MONO8;
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicSetConfig(handle.context, nullptr));
    EXPECT_EQ(KRO_ERR_NULL, kroDemosaicSetConfig(nullptr, &format));
    EXPECT_EQ(0x02180015u, handle->outputFormat);
}

TEST(Scratch, GrowsOnlyAndKeepsTheBufferOtherwise) {
    KroScratch scratch{nullptr, 0};
    const int before = allocation::count();
    EXPECT_EQ(KRO_OK, kroMemRealloc(&scratch, 0));
    EXPECT_EQ(KRO_OK, kroMemRealloc(&scratch, -5));
    EXPECT_EQ(nullptr, scratch.data);
    EXPECT_EQ(before, allocation::count());

    EXPECT_EQ(KRO_OK, kroMemRealloc(&scratch, 1000));
    EXPECT_EQ(before + 1, allocation::count());
    EXPECT_EQ(1000u, allocation::lastSize());
    EXPECT_EQ(1000, scratch.capacity);
    void* const data = scratch.data;
    ASSERT_NE(nullptr, data);
    std::memset(data, 1, 1000);
    for (int32_t size : {1000, 999, 1, 0, -1}) {
        EXPECT_EQ(KRO_OK, kroMemRealloc(&scratch, size));
        EXPECT_EQ(data, scratch.data);
        EXPECT_EQ(1000, scratch.capacity);
    }
    EXPECT_EQ(before + 1, allocation::count());

    EXPECT_EQ(KRO_OK, kroMemRealloc(&scratch, 1001));
    EXPECT_EQ(before + 2, allocation::count());
    EXPECT_EQ(1001, scratch.capacity);
    std::memset(scratch.data, 2, 1001);
    std::free(scratch.data);
}

TEST(Scratch, FailedGrowthLeavesItEmptyAndTheNextCallStartsFromNothing) {
    KroScratch scratch{nullptr, 0};
    ASSERT_EQ(KRO_OK, kroMemRealloc(&scratch, 10));
    allocation::refuse(true);
    const int32_t status = kroMemRealloc(&scratch, 20);
    allocation::refuse(false);
    EXPECT_EQ(KRO_ERR_NO_MEMORY, status);
    EXPECT_EQ(nullptr, scratch.data);
    EXPECT_EQ(0, scratch.capacity);
    EXPECT_EQ(KRO_OK, kroMemRealloc(&scratch, 5));
    EXPECT_EQ(5, scratch.capacity);
    std::free(scratch.data);
}

}  // namespace
