// The handle's life and its one growable buffer.
#include <cstdlib>

#include "kro/kro.h"

int32_t kroCreate(KroContext** handleOut) {
    if (handleOut == nullptr) {
        return KRO_ERR_NULL;
    }
    *handleOut = static_cast<KroContext*>(std::malloc(sizeof(KroContext)));
    if (*handleOut == nullptr) {
        return KRO_ERR_NO_MEMORY;
    }
    (*handleOut)->reservedC = 0;
    (*handleOut)->reservedD = 0;
    kroInit(*handleOut);
    return KRO_OK;
}

// Initialises fresh memory: a buffer that the record may own already is dropped, not freed.
void kroInit(KroContext* handle) {
    handle->outputFormat = KRO_BGR8;
    handle->reservedA = 12;
    handle->reservedB = 1;
    for (int32_t(&triple)[3] : handle->reservedTriple) {
        triple[0] = 0;
        triple[1] = 8;
        triple[2] = 1;
    }
    handle->scratch = {nullptr, 0};
}

int32_t kroRelease(KroContext** handle) {
    if (handle == nullptr) {
        return KRO_ERR_NULL;
    }
    std::free((*handle)->scratch.data);
    (*handle)->scratch = {nullptr, 0};
    std::free(*handle);
    *handle = nullptr;
    return KRO_OK;
}

// Grows only; the old contents mean nothing and are not copied.
int32_t kroMemRealloc(KroScratch* scratch, int32_t size) {
    if (scratch->capacity >= size) {
        return KRO_OK;
    }
    std::free(scratch->data);
    scratch->capacity = 0;
    scratch->data = std::malloc(static_cast<size_t>(size));
    if (scratch->data == nullptr) {
        return KRO_ERR_NO_MEMORY;
    }
    scratch->capacity = size;
    return KRO_OK;
}
