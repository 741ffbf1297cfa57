// What all targets of the command's readers share: reading ends with something whole or with a failure in one line.
#pragma once

#include <string>

#include "memory.hpp"
#include "pictures/picture_file.hpp"
#include "support/failure.hpp"

namespace fuzz {

// True where the reader took it. Any exception but a failure, and any signal, ends the run.
template <class Read>
bool readOrRefuse(const Read& read) {
    try {
        read();
        return true;
    } catch (const cli::Failure& failure) {
        require(*failure.what() != '\0', "a failure without words");
        return false;
    }
}

inline void requireWhole(const cli::DecodedPicture& picture) {
    require(picture.size.width > 0 && picture.size.height > 0, "a picture without pixels");
    require(picture.channels == 1 || picture.channels == 3, "a picture is neither grey nor RGB");
    require(picture.maximum > 0 && picture.maximum <= 65535, "a picture's maximum fits no sample");
    require(picture.samples.size() == picture.size.samples() * static_cast<size_t>(picture.channels),
            "samples are missing or left over");
    require(*std::max_element(picture.samples.begin(), picture.samples.end()) <= picture.maximum,
            "a sample is above the maximum");
}

// Checksums as a PNG file's writer would have made them; a change of a byte comes nowhere without.
cli::Bytes withGoodChecksums(cli::Bytes file);

}  // namespace fuzz
