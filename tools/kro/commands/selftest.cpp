#include "commands/selftest.hpp"

#include <cstdio>

#include "selftest/digests.hpp"
#include "support/failure.hpp"
#include "table/processor.hpp"

namespace cli {

namespace {

// The instruction sets of this processor that the library has code for, by the library's own list. It works with the
// last.
std::string instructionSets() {
    std::string names;
#define KRO_SET(set, backEnd, header, usable, flags)              \
    if (usable) {                                                 \
        names += (names.empty() ? "" : ", ") + std::string(#set); \
    }
#include "table/sets.def"
#undef KRO_SET
    return names;
}

}  // namespace

int selftest() {
    std::printf("instruction sets: %s (the last is in use)\n", instructionSets().c_str());
    const std::vector<NamedDigest> expected = expectedDigests();
    const std::vector<std::string> wrong =
        namesThatDiffer(computeDigests({kroDemosaicing, kroConvertView}), expected);
    for (const std::string& name : wrong) {
        std::printf("differs: %s\n", name.c_str());
    }
    std::printf("digests: %zu\n", expected.size());
    if (!wrong.empty()) {
        throw Failure("self-test: " + std::to_string(wrong.size()) + " of " + std::to_string(expected.size()) +
                      " digests differ: libkro does not give the bytes that it must on this machine");
    }
    std::printf("all right\n");
    return exitOk;
}

}  // namespace cli
