// Pixel formats by every name that the command knows, for Python.
#pragma once

#include "frames/formats.hpp"
#include "python.hpp"

namespace binding {

struct Input {
    const cli::InputFormat* format;
    bool bigEndian;
};

// By name or code; a Python exception that names the argument for anything else. `found` remembers what has been
// asked for.
Input inputOf(PyObject* asked, PyObject* found);
const cli::OutputFormat& outputOf(PyObject* asked, PyObject* found);

// The name in the library's own list.
const char* nameOf(uint32_t code);
const char* packingName(const cli::InputFormat& format);
inline int sampleBytes(const cli::InputFormat& format) { return format.packing == cli::Packing::word ? 2 : 1; }

// A failure's text with arguments of Python in place of the command's options.
std::string inPython(std::string text);

PyObject* listFormats();

}  // namespace binding
