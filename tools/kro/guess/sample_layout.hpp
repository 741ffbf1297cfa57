#pragma once

#include <array>
#include <cstdint>
#include <kro/kro.hpp>
#include <string>
#include <vector>

#include "frames/formats.hpp"
#include "frames/samples.hpp"

namespace cli::guess {

// How samples may lie in a file: groups of bytes that hold whole samples each.
struct SampleLayout {
    // What follows "Mono" or "Bayer.." in the format's name; of CSI-2 packings what follows "Y" or "SRGGB".
    const char* suffix;
    const char* description;
    kro::PixelFormat mono;
    int bits;
    std::size_t groupBytes;
    std::size_t groupSamples;
    // Bytes of a group that hold the high bits of a sample and nothing else.
    std::array<bool, 7> high;
    bool bigEndian;
    bool csi2;

    bool isWords() const { return groupBytes == 2; }
    // Bytes of a row of whole groups.
    std::size_t rowBytes(std::size_t width) const;
    // Samples of whole groups in a row of so many bytes.
    std::size_t samplesIn(std::size_t rowBytes) const { return rowBytes / groupBytes * groupSamples; }
    // Empty where there is no such format.
    std::string formatName(Phase phase, int significantBits) const;
};

const std::array<SampleLayout, 11>& sampleLayouts();

// A piece of a file in which a frame is looked for: rows of samples, none of them read beyond the piece.
struct Rows {
    const uint8_t* first;
    std::size_t stride;
    std::size_t width;
    std::size_t count;
};

// The samples of rows (four or more, four or more samples wide) as numbers, row by row.
void unpackRows(const Rows& rows, const SampleLayout& layout, Samples& samples);

}  // namespace cli::guess
