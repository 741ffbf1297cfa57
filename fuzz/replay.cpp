// Feeds files, all files of folders, or inputs made up on the spot to a fuzz target, for builds without libFuzzer.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;
using Input = std::vector<char>;

void run(const Input& input) {
    // A copy of its own: a sanitizer sees who reads beyond it.
    const std::vector<uint8_t> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

Input contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
        std::exit(1);
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<fs::path> filesOf(int count, char** arguments) {
    std::vector<fs::path> files;
    for (int i = 0; i < count; ++i) {
        if (!fs::is_directory(arguments[i])) {
            files.emplace_back(arguments[i]);
            continue;
        }
        for (const fs::directory_entry& entry : fs::directory_iterator(arguments[i])) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

// A seed with some bytes replaced, cut off or put behind.
Input varied(Input input, std::mt19937& random) {
    for (uint32_t changes = random() % 16; changes > 0; --changes) {
        if (input.empty() || random() % 8 == 0) {
            input.push_back(static_cast<char>(random()));
        } else if (random() % 16 == 0) {
            input.resize(random() % input.size());
        } else {
            input[random() % input.size()] = static_cast<char>(random());
        }
    }
    return input;
}

}  // namespace

// replay [--vary COUNT [--from NUMBER]] FILE-OR-FOLDER ...: the variants of another number are others.
int main(int count, char** arguments) {
    const bool vary = count > 3 && std::string(arguments[1]) == "--vary";
    const bool from = vary && count > 5 && std::string(arguments[3]) == "--from";
    const unsigned long variants = vary ? std::stoul(arguments[2]) : 0;
    const int options = from ? 5 : vary ? 3 : 1;
    std::vector<Input> inputs;
    for (const fs::path& file : filesOf(count - options, arguments + options)) {
        inputs.push_back(contentOf(file));
        run(inputs.back());
    }
    if (inputs.empty()) {
        std::fprintf(stderr, "usage: %s [--vary COUNT [--from NUMBER]] FILE-OR-FOLDER ...\n", arguments[0]);
        return 2;
    }
    std::mt19937 random(from ? static_cast<uint32_t>(std::stoul(arguments[4])) : 1);
    for (unsigned long i = 0; i < variants; ++i) {
        run(varied(inputs[random() % inputs.size()], random));
    }
    std::printf("%zu seeds, %lu variants of them\n", inputs.size(), variants);
    return 0;
}
