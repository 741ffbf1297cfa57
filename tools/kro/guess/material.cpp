#include "guess/material.hpp"

#include <algorithm>
#include <cctype>

#include "frames/container.hpp"
#include "support/failure.hpp"

namespace cli::guess {

namespace {

// Frames of any sensor fit in, and what follows the first ones tells no more.
constexpr std::size_t mostBytes = std::size_t{1} << 28;
constexpr std::size_t fewestBytes = 2048;

Material readFile(const InputFile& file) {
    Material material{Bytes(static_cast<std::size_t>(std::min<uint64_t>(*file.length(), mostBytes))), *file.length()};
    material.bytes.resize(file.readAt(0, material.bytes.data(), material.bytes.size()));
    return material;
}

// Two bytes such as "P5" begin a raw frame now and then.
Container containerOf(const Bytes& bytes) {
    const Container container = containerIn(bytes.data(), bytes.size());
    return container == Container::pgm && std::isspace(bytes[2]) == 0 ? Container::none : container;
}

// The rest of a pipe is counted, not kept.
Material readStream(const InputFile& file) {
    constexpr std::size_t step = std::size_t{1} << 20;
    Material material;
    Bytes piece(step);
    std::size_t got = step;
    while (got == step) {
        got = file.readNext(piece.data(), step);
        material.length += got;
        if (material.bytes.size() < mostBytes) {
            material.bytes.insert(material.bytes.end(), piece.begin(),
                                  piece.begin() + static_cast<std::ptrdiff_t>(got));
        }
    }
    return material;
}

}  // namespace

Material readMaterial(const InputFile& file) {
    Material material = file.isStream() ? readStream(file) : readFile(file);
    const Bytes& bytes = material.bytes;
    const std::string name = file.shownName() + ": ";
    if (bytes.empty()) {
        throw Failure(name + "is empty");
    }
    if (bytes.size() < fewestBytes) {
        throw Failure(name + "has " + std::to_string(bytes.size()) + " bytes, too few to tell a frame by, expected " +
                      std::to_string(fewestBytes) + " or more");
    }
    const Container container = containerOf(bytes);
    if (container != Container::none) {
        throw Failure(name + "is a " + nameOf(container) +
                      " file, which says its size itself; under a name that says so too, kro convert reads it");
    }
    if (std::all_of(bytes.begin(), bytes.end(), [&](uint8_t byte) { return byte == bytes.front(); })) {
        throw Failure(name + "all of its " + std::to_string(material.length) + " bytes are " +
                      std::to_string(bytes.front()) + ", which can be anything");
    }
    return material;
}

}  // namespace cli::guess
