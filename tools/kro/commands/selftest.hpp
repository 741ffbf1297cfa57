#pragma once

namespace cli {

// Whether the library gives the bytes that it must on this processor; says so and returns the exit code.
int selftest();

}  // namespace cli
