// Whether tables give the digests of kro selftest. With the name of a table that is the one which must be chosen
// here: run under an emulator, which plays processors that are not at hand. Without one all tables that this
// processor can run.
//     emulated-processor [NAME]
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "table_conversions.hpp"

namespace {

bool givesDigests(const kro::Kernels& table) {
    const std::vector<cli::NamedDigest> expected = cli::expectedDigests();
    const std::vector<std::string> wrong = cli::namesThatDiffer(cli::computeDigests(conversionsOf(table)), expected);
    for (const std::string& name : wrong) {
        std::printf("differs: %s\n", name.c_str());
    }
    std::printf("%s: %zu digests, %zu differ\n", table.name, expected.size(), wrong.size());
    return wrong.empty();
}

bool allGiveDigests() {
    const kro::Kernels* tables[16];
    const int count = kro::usableKernels(tables, 16);
    return std::count_if(tables, tables + count, [](const kro::Kernels* table) { return givesDigests(*table); }) ==
           count;
}

}  // namespace

int main(int count, char** arguments) {
    if (count > 2) {
        std::fprintf(stderr, "usage: emulated-processor [NAME]\n");
        return 2;
    }
    if (count == 1) {
        return allGiveDigests() ? 0 : 1;
    }
    const kro::Kernels& table = kro::bestKernels();
    if (std::strcmp(table.name, arguments[1]) != 0) {
        std::printf("the library chose %s, expected %s\n", table.name, arguments[1]);
        return 1;
    }
    return givesDigests(table) ? 0 : 1;
}
