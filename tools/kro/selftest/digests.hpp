#pragma once

#include <kro/view.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Pictures of generated frames, told by a number for each kind of them: the same everywhere, whatever the processor,
// the compiler and its options.
namespace cli {

// What makes the pictures: the library's two functions, or what must do the same.
struct Conversions {
    std::function<int32_t(KroContext*, const KroImage*, KroAlgorithm, KroImage*)> demosaicing;
    std::function<int32_t(const KroSourceView*, const KroPictureView*, const KroViewOptions*)> convertView;
};

struct NamedDigest {
    std::string name;  // function, layout of the samples, algorithm and phase or grey, kind of output
    uint64_t value;
};

std::vector<NamedDigest> computeDigests(const Conversions& conversions);

// As they must be: digests.def, which the tests write from their per-pixel reference.
std::vector<NamedDigest> expectedDigests();

// Whatever one of the two has otherwise than the other, or not at all.
std::vector<std::string> namesThatDiffer(const std::vector<NamedDigest>& found,
                                         const std::vector<NamedDigest>& expected);

}  // namespace cli
