// The tables of kernels: complete, distinct, and exactly those that this processor can run.
#include <elf.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include "support.hpp"

namespace {

struct Member {
    const char* routine;
    const void* address;
};

std::vector<Member> membersOf(const kro::Kernels& table) {
    std::vector<Member> members;
#define KRO_KERNEL(routine, ...) members.push_back({#routine, reinterpret_cast<const void*>(table.routine)});
#include "table/kernels.def"
#undef KRO_KERNEL
    return members;
}

#if defined(__arm__)
// Emulators show their own machine's /proc/cpuinfo; what a program is started with tells of the processor.
bool processorHas(const std::vector<std::string>& wanted) {
    std::ifstream startedWith("/proc/self/auxv", std::ios::binary);
    unsigned long entry[2], capabilities = 0;
    while (startedWith.read(reinterpret_cast<char*>(entry), sizeof entry)) {
        capabilities = entry[0] == AT_HWCAP ? entry[1] : capabilities;
    }
    const bool neon = (capabilities & 1ul << 12) != 0;
    return std::all_of(wanted.begin(), wanted.end(),
                       [=](const std::string& name) { return name == "fpu=neon" && neon; });
}
#else
bool processorHas(const std::vector<std::string>& wanted) {
    std::ifstream info("/proc/cpuinfo");
    std::string line;
    std::set<std::string> flags;
    while (std::getline(info, line)) {
        if (line.rfind("flags", 0) == 0) {
            std::istringstream words(line);
            for (std::string word; words >> word;) {
                flags.insert(word);
            }
            break;
        }
    }
    for (const std::string& flag : wanted) {
        if (flags.count(flag) == 0) {
            return false;
        }
    }
    return true;
}
#endif

// What a set's unit is compiled for: the names after -m, as /proc/cpuinfo spells them.
std::vector<std::string> instructionsIn(const std::string& compilerFlags) {
    std::vector<std::string> names;
    std::istringstream words(compilerFlags);
    for (std::string word; words >> word;) {
        if (word.rfind("-m", 0) == 0) {
            std::replace(word.begin(), word.end(), '.', '_');
            names.push_back(word.substr(2));
        }
    }
    return names;
}

TEST(Dispatch, TablesAreThoseThatTheProcessorRuns) {
    const struct {
        const char* name;
        const char* compilerFlags;
    } all[] = {
#define KRO_SET(name, backEnd, header, usable, compilerFlags) {#name, compilerFlags},
#include "table/sets.def"
#undef KRO_SET
    };
    std::vector<std::string> expected;
    for (const auto& set : all) {
        if (processorHas(instructionsIn(set.compilerFlags))) {
            expected.push_back(set.name);
        }
    }
    std::vector<std::string> found;
    for (const kro::Kernels* table : usableTables()) {
        found.push_back(table->name);
    }
    EXPECT_EQ(expected, found);
}

TEST(Dispatch, BestIsTheLastUsableTable) { EXPECT_EQ(usableTables().back(), &kro::bestKernels()); }

TEST(Dispatch, ListingHonoursTheRoomGiven) {
    const kro::Kernels* tables[2] = {nullptr, nullptr};
    const int count = kro::usableKernels(tables, 1);
    EXPECT_EQ(static_cast<int>(usableTables().size()), count);
    EXPECT_NE(nullptr, tables[0]);
    EXPECT_EQ(nullptr, tables[1]);
}

// The internal kernels, of both sample widths.
std::vector<void (*)(const kro::FrameJob&)> framesOf(const kro::Kernels& table) {
    std::vector<void (*)(const kro::FrameJob&)> all;
    for (int kind = 0; kind < kro::outputKinds; ++kind) {
        for (int algorithm = 0; algorithm < kro::algorithms; ++algorithm) {
            all.push_back(table.bytes[algorithm][kind]);
            all.push_back(table.words[algorithm][kind]);
        }
        all.push_back(table.greyBytes[kind]);
        all.push_back(table.greyWords[kind]);
    }
    return all;
}

TEST(Dispatch, EveryTableIsComplete) {
    for (const kro::Kernels* table : usableTables()) {
        for (const Member& member : membersOf(*table)) {
            EXPECT_NE(nullptr, member.address) << table->name << " " << member.routine;
        }
        for (const auto kernel : framesOf(*table)) {
            EXPECT_TRUE(kernel != nullptr) << table->name;
        }
    }
}

// What is tested under a table's name is that table's own code.
TEST(Dispatch, NoRoutineIsSharedBetweenTables) {
    std::set<const void*> seen;
    size_t count = 0;
    for (const kro::Kernels* table : usableTables()) {
        for (const Member& member : membersOf(*table)) {
            if (member.address != nullptr) {
                EXPECT_TRUE(seen.insert(member.address).second) << table->name << " " << member.routine;
                ++count;
            }
        }
        for (const auto kernel : framesOf(*table)) {
            EXPECT_TRUE(seen.insert(reinterpret_cast<const void*>(kernel)).second) << table->name;
        }
    }
    EXPECT_GT(count, 0u);
}

}  // namespace
