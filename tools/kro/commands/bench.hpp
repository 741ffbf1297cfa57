#pragma once

namespace cli {

// Becomes kro-bench, found beside this program or in PATH, with the given arguments. Returns only by a failure.
[[noreturn]] void becomeBench(char** arguments);

}  // namespace cli
