// Run in node: whether a table of kernels, or the module of the package, gives the digests of kro selftest.
//     kro-web-digests TABLE     scalar or simd128, or package: the host's function converts views then
#include <cstdio>
#include <cstring>

#include "table_conversions.hpp"

__attribute__((import_module("kro"), import_name("convertView"))) extern "C" int32_t packageConvertView(
    const KroSourceView* source, const KroPictureView* picture, const KroViewOptions* options);

namespace {

cli::Conversions conversionsNamed(const char* name) {
    if (std::strcmp(name, "package") != 0) {
        return conversionsOf(std::strcmp(name, "scalar") == 0 ? kro::scalarKernels : kro::simd128Kernels);
    }
    cli::Conversions conversions = conversionsOf(kro::scalarKernels);
    conversions.convertView = packageConvertView;
    return conversions;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: kro-web-digests scalar | simd128 | package\n");
        return 2;
    }
    const std::vector<cli::NamedDigest> expected = cli::expectedDigests();
    const std::vector<cli::NamedDigest> found = cli::computeDigests(conversionsNamed(arguments[1]));
    const std::vector<std::string> wrong = cli::namesThatDiffer(found, expected);
    for (const std::string& name : wrong) {
        std::printf("differs: %s\n", name.c_str());
    }
    std::printf("%s: %zu digests, %zu differ\n", arguments[1], found.size(), wrong.size());
    return wrong.empty() ? 0 : 1;
}
