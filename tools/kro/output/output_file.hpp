#pragma once

#include <set>
#include <string>

#include "frames/frame_reader.hpp"

namespace cli {

// From here on an interrupt first removes what is half written.
void guardAgainstInterrupts();

// Writes the whole file or nothing: into a temporary file beside the target, which then takes the target's name.
// Targets that are no regular files (pipes, devices) are written straight.
void writeFile(const std::string& path, const Bytes& data, bool mayReplace);

// Both throw ReaderGone where nobody reads any more, and OutputGone where it cannot be written otherwise.
void writeStandardOutput(const Bytes& data);
void flushStandardOutput();

// Refuses a target that is one of the inputs, by whatever name, or that may not be replaced or written.
void checkTarget(const std::string& path, const std::set<FileId>& inputs, bool mayReplace);

// A picture or frame for standard output must not end on somebody's screen.
void refuseTerminal();

}  // namespace cli
