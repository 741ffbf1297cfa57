// Run under an emulator, which plays processors that are not at hand: the table that is chosen there, by name, and
// whether it gives the digests of kro selftest.
//     emulated-processor NAME
#include <cstdio>
#include <cstring>

#include "table_conversions.hpp"

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: emulated-processor NAME\n");
        return 2;
    }
    const kro::Kernels& table = kro::bestKernels();
    if (std::strcmp(table.name, arguments[1]) != 0) {
        std::printf("the library chose %s, expected %s\n", table.name, arguments[1]);
        return 1;
    }
    const std::vector<cli::NamedDigest> expected = cli::expectedDigests();
    const std::vector<std::string> wrong = cli::namesThatDiffer(cli::computeDigests(conversionsOf(table)), expected);
    for (const std::string& name : wrong) {
        std::printf("differs: %s\n", name.c_str());
    }
    std::printf("%s: %zu digests, %zu differ\n", table.name, expected.size(), wrong.size());
    return wrong.empty() ? 0 : 1;
}
