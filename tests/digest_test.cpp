// The digests of kro selftest: every table gives those that the repository holds.
#include "support.hpp"
#include "table_conversions.hpp"

namespace {

TEST(Digests, EveryTableGivesThem) {
    const std::vector<cli::NamedDigest> expected = cli::expectedDigests();
    for (const kro::Kernels* table : usableTables()) {
        EXPECT_EQ(std::vector<std::string>{},
                  cli::namesThatDiffer(cli::computeDigests(conversionsOf(*table)), expected))
            << table->name;
    }
}

TEST(Digests, DifferencesAreNamed) {
    const std::vector<cli::NamedDigest> expected = {{"a", 1}, {"b", 2}, {"c", 3}};
    EXPECT_EQ((std::vector<std::string>{"b", "d", "c"}),
              cli::namesThatDiffer({{"a", 1}, {"b", 3}, {"d", 4}}, expected));
}

}  // namespace
