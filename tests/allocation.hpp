// The library's allocations, counted and refused on demand: the test program is linked with --wrap=malloc.
#pragma once

#include <cstddef>

namespace allocation {

int count();        // allocations so far
size_t lastSize();  // bytes the latest one asked for
void refuse(bool on);
// The number-th allocation from now on fails, and with `forGood` all that follow; 0: none.
void refuseFrom(int number, bool forGood);

}  // namespace allocation
