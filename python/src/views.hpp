// Buffers of Python's as frames and pictures of the library's.
#pragma once

#include <kro/kro.hpp>
#include <memory>

#include "formats.hpp"

namespace binding {

// What an object lends by the buffer protocol, for as long as this is.
class Buffer {
public:
    Buffer(PyObject* owner, int flags, const char* argument);
    ~Buffer() { PyBuffer_Release(&view_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    const Py_buffer& operator*() const noexcept { return view_; }
    const Py_buffer* operator->() const noexcept { return &view_; }

private:
    Py_buffer view_;
};

// Rows and samples of a row.
struct Shape {
    Py_ssize_t height;
    Py_ssize_t width;
};

struct FreePythonMemory {
    void operator()(void* memory) const noexcept { PyMem_Free(memory); }
};

struct SourceFrame {
    kro::Frame frame;
    bool bigEndian = false;
    // Where columns are not one behind the other, the samples put so.
    std::unique_ptr<char, FreePythonMemory> copy;
};

// `shape` may be None where the buffer says it. A copy is announced as `copyWarning`.
SourceFrame sourceFrame(const Buffer& buffer, PyObject* shape, const Input& input, PyObject* copyWarning);

// How long the shape of an array for the picture is, and the shape.
struct ArrayShape {
    int count;
    Py_ssize_t side[3];
};
ArrayShape arrayShape(const Shape& shape, const cli::OutputFormat& output);
kro::Picture pictureIn(const Buffer& buffer, const Shape& shape, const cli::OutputFormat& output);

// An exception where both lie in the same bytes.
void requireApart(const Buffer& frame, const Buffer& out);

}  // namespace binding
