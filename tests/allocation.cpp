#include "allocation.hpp"

namespace {
int allocations = 0;
size_t latest = 0;
bool refused = false;
}  // namespace

extern "C" {
void* __real_malloc(size_t size);

void* __wrap_malloc(size_t size) {
    ++allocations;
    latest = size;
    return refused ? nullptr : __real_malloc(size);
}
}

namespace allocation {

int count() { return allocations; }
size_t lastSize() { return latest; }
void refuse(bool on) { refused = on; }

}  // namespace allocation
