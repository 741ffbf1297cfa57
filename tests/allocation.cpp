#include "allocation.hpp"

namespace {
int allocations = 0;
size_t latest = 0;
bool refused = false;
int untilRefusal = 0;
bool refusedForGood = false;

bool refusesNow() {
    if (untilRefusal > 0 && --untilRefusal == 0) {
        refused = refusedForGood;
        return true;
    }
    return refused;
}
}  // namespace

extern "C" {
void* __real_malloc(size_t size);

void* __wrap_malloc(size_t size) {
    ++allocations;
    latest = size;
    return refusesNow() ? nullptr : __real_malloc(size);
}
}

namespace allocation {

int count() { return allocations; }
size_t lastSize() { return latest; }
void refuse(bool on) { refuseFrom(on ? 1 : 0, on); }
void refuseFrom(int number, bool forGood) {
    untilRefusal = number;
    refusedForGood = forGood;
    refused = false;
}

}  // namespace allocation
