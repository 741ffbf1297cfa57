#include "views.hpp"

#include <cstring>

#include "pictures/picture.hpp"

namespace binding {

namespace {

constexpr Py_ssize_t leastSide = 4;
constexpr Py_ssize_t mostSide = Py_ssize_t{1} << 30;

// ---- what a buffer says of itself ----

// "(480, 640)" with what its items are: "'B' (480, 640)".
Reference describe(const Py_buffer& view) {
    Reference sides(checked(PyTuple_New(view.ndim)));
    for (int i = 0; i < view.ndim; i++) {
        PyTuple_SetItem(sides.get(), i, checked(PyLong_FromSsize_t(view.shape[i])));
    }
    return Reference(checked(PyUnicode_FromFormat("an array of '%s' and shape %R",
                                                  view.format == nullptr ? "B" : view.format, sides.get())));
}

[[noreturn]] void refuse(const char* argument, const Py_buffer& view, const char* expected) {
    raise(PyExc_ValueError, "%s: %U came, expected %s", argument, describe(view).get(), expected);
}

enum class Items { bytes, words, swappedWords, others };

Items itemsOf(const Py_buffer& view) {
    const char* format = view.format == nullptr ? "B" : view.format;
    const bool swapped = *format == '>' || *format == '!';
    format += std::strchr("@=<>!", *format) != nullptr && *format != '\0' ? 1 : 0;
    if (format[0] == '\0' || format[1] != '\0') {
        return Items::others;
    }
    if (view.itemsize == 1 && std::strchr("Bbc", *format) != nullptr) {
        return Items::bytes;
    }
    return view.itemsize == 2 && *format == 'H' ? swapped ? Items::swappedWords : Items::words : Items::others;
}

// ---- shapes ----

Py_ssize_t sideOf(PyObject* shape, Py_ssize_t place) {
    const Reference side(checked(PySequence_GetItem(shape, place)));
    const Py_ssize_t value = PyNumber_AsSsize_t(side.get(), PyExc_OverflowError);
    if (value == -1 && PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        raise(PyExc_TypeError, "shape: %R came, expected (height, width) in whole numbers", shape);
    }
    return value;
}

Shape givenShape(PyObject* shape) {
    if (PySequence_Check(shape) == 0 || PySequence_Size(shape) != 2) {
        PyErr_Clear();
        raise(PyExc_TypeError, "shape: %R came, expected (height, width)", shape);
    }
    return {sideOf(shape, 0), sideOf(shape, 1)};
}

// Without a shape that was given an array of samples says it itself.
Shape shapeOf(const Py_buffer& view, PyObject* shape, const Input& input) {
    if (shape != Py_None) {
        return givenShape(shape);
    }
    const bool plain = input.format->packing == cli::Packing::byte || input.format->packing == cli::Packing::word;
    if (view.ndim != 2 || !plain || view.itemsize != sampleBytes(*input.format)) {
        raise(PyExc_TypeError, "shape: None came with a frame that is %U, expected (height, width) of the %s samples",
              describe(view).get(), input.format->name);
    }
    return {view.shape[0], view.shape[1]};
}

void requireSides(const Shape& shape, bool given) {
    if (shape.height < leastSide || shape.width < leastSide || shape.height > mostSide || shape.width > mostSide) {
        raise(PyExc_ValueError, "%s: (%zd, %zd) came, expected a height and a width of 4 to 2^30",
              given ? "shape" : "frame", shape.height, shape.width);
    }
}

// ---- frames ----

// Rows that follow each other without gaps, packed groups running on over their ends. Eight samples are whole groups
// of every packing.
Py_ssize_t frameBytes(const Shape& shape, const cli::InputFormat& format) {
    const Py_ssize_t samples = shape.height * shape.width;
    const Py_ssize_t eight = kroRowBytes(format.code, 8);
    return samples / 8 * eight + kroRowBytes(format.code, static_cast<int32_t>(samples % 8));
}

void requireLength(const Py_buffer& view, const Shape& shape, const cli::InputFormat& format) {
    const Py_ssize_t expected = frameBytes(shape, format);
    if (view.len == expected) {
        return;
    }
    const Py_ssize_t row = kroRowBytes(format.code, static_cast<int32_t>(shape.width));
    const Py_ssize_t stride = view.len / shape.height;
    if (stride > row && stride * shape.height == view.len && stride - row <= row / 8 + 256) {
        raise(PyExc_ValueError,
              "frame: %zd bytes came, expected %zd for %s of shape (%zd, %zd); are its rows %zd bytes apart? "
              "numpy.frombuffer(frame, 'u1').reshape(%zd, %zd) says so",
              view.len, expected, format.name, shape.height, shape.width, stride, shape.height, stride);
    }
    raise(PyExc_ValueError, "frame: %zd bytes came, expected %zd for %s of shape (%zd, %zd)", view.len, expected,
          format.name, shape.height, shape.width);
}

void requireRows(const Py_buffer& view, const Shape& shape, const cli::InputFormat& format) {
    const Py_ssize_t row = kroRowBytes(format.code, static_cast<int32_t>(shape.width));
    if (view.shape[0] != shape.height || view.shape[1] < row / view.itemsize) {
        raise(PyExc_ValueError, "frame: %U came, expected %zd rows of at least %zd for %s of shape (%zd, %zd)",
              describe(view).get(), shape.height, row / view.itemsize, format.name, shape.height, shape.width);
    }
}

void requireItems(const Py_buffer& view, Items items, const cli::InputFormat& format) {
    const bool words = format.packing == cli::Packing::word;
    if (items == Items::others || (items != Items::bytes && !words)) {
        raise(PyExc_ValueError, "frame: %U came, expected %s for %s", describe(view).get(),
              words ? "unsigned words ('H') or bytes ('B')" : "bytes ('B')", format.name);
    }
}

// Rows as the library takes them: items of a row follow each other, rows do not lie in one another.
bool inPlace(const Py_buffer& view, Py_ssize_t row) {
    const Py_ssize_t stride = view.ndim == 1 ? row : view.strides[0];
    return view.strides[view.ndim - 1] == view.itemsize && (stride >= row || -stride >= row);
}

void gather(const Py_buffer& view, Py_ssize_t rows, Py_ssize_t items, char* target) {
    const char* start = static_cast<const char*>(view.buf);
    const Py_ssize_t step = view.strides[view.ndim - 1];
    const std::size_t size = static_cast<std::size_t>(view.itemsize);
    for (Py_ssize_t row = 0; row < rows; row++) {
        const char* item = start + (view.ndim == 1 ? 0 : row * view.strides[0]);
        for (Py_ssize_t i = 0; i < items; i++, item += step, target += size) {
            target[0] = item[0];
            target[size - 1] = item[size - 1];
        }
    }
}

std::unique_ptr<char, FreePythonMemory> copied(const Py_buffer& view, Py_ssize_t rows, Py_ssize_t rowBytes,
                                               PyObject* copyWarning) {
    if (PyErr_WarnEx(
            copyWarning,
            "frame: the items of a row are not one behind the other in memory, or rows overlap, so the frame "
            "is copied first (numpy.ascontiguousarray does that once for all)",
            1) != 0) {
        throw Raised{};
    }
    const std::size_t size = static_cast<std::size_t>(rowBytes);
    if (size > static_cast<std::size_t>(PY_SSIZE_T_MAX) / static_cast<std::size_t>(rows)) {
        throw std::bad_alloc();
    }
    std::unique_ptr<char, FreePythonMemory> copy(
        static_cast<char*>(PyMem_Malloc(size * static_cast<std::size_t>(rows))));
    if (!copy) {
        throw std::bad_alloc();
    }
    const Unlocked unlocked;
    gather(view, rows, rowBytes / view.itemsize, copy.get());
    return copy;
}

}  // namespace

Buffer::Buffer(PyObject* owner, int flags, const char* argument) {
    if (PyObject_GetBuffer(owner, &view_, flags) == 0) {
        return;
    }
    PyObject* kind = nullptr;
    PyObject* value = nullptr;
    PyObject* trace = nullptr;
    PyErr_Fetch(&kind, &value, &trace);
    const Reference ownedKind(kind);
    const Reference ownedValue(value);
    const Reference ownedTrace(trace);
    PyObject* came = reinterpret_cast<PyObject*>(Py_TYPE(owner));
    if (PyErr_GivenExceptionMatches(kind, PyExc_TypeError) != 0) {
        raise(PyExc_TypeError, "%s: %R came, expected an object with the buffer protocol (bytes, an array ...)",
              argument, came);
    }
    if (PyErr_GivenExceptionMatches(kind, PyExc_MemoryError) != 0) {
        throw std::bad_alloc();
    }
    raise(kind, "%s: %R came, expected memory that can be %s: %S", argument, came,
          (flags & PyBUF_WRITABLE) != 0 ? "written" : "read", value == nullptr ? Py_None : value);
}

SourceFrame sourceFrame(const Buffer& buffer, PyObject* shape, const Input& input, PyObject* copyWarning) {
    const Py_buffer& view = *buffer;
    const cli::InputFormat& format = *input.format;
    const Items items = itemsOf(view);
    requireItems(view, items, format);
    if (view.ndim != 1 && view.ndim != 2) {
        refuse("frame", view, "one of one dimension (bytes) or two (rows)");
    }
    const Shape sides = shapeOf(view, shape, input);
    requireSides(sides, shape != Py_None);
    const Py_ssize_t row = kroRowBytes(format.code, static_cast<int32_t>(sides.width));
    view.ndim == 1 ? requireLength(view, sides, format) : requireRows(view, sides, format);
    SourceFrame source;
    source.bigEndian = input.bigEndian || items == Items::swappedWords;
    const void* data = view.buf;
    Py_ssize_t stride = view.ndim == 1 ? 0 : view.strides[0];
    if (!inPlace(view, row)) {
        const bool rows = view.ndim == 2;
        source.copy = copied(view, rows ? sides.height : 1, rows ? row : view.len, copyWarning);
        data = source.copy.get();
        stride = rows ? row : 0;
    }
    source.frame = {data, static_cast<int32_t>(sides.height), static_cast<int32_t>(sides.width),
                    static_cast<kro::PixelFormat>(format.code), stride};
    return source;
}

// ---- pictures ----

ArrayShape arrayShape(const Shape& shape, const cli::OutputFormat& output) {
    const int channels = cli::channelCount(output.order);
    if (channels == 1) {
        return {2, {shape.height, shape.width, 1}};
    }
    return output.planar ? ArrayShape{3, {channels, shape.height, shape.width}}
                         : ArrayShape{3, {shape.height, shape.width, channels}};
}

namespace {

[[noreturn]] void refuseOut(const Py_buffer& view, const ArrayShape& array, const cli::OutputFormat& output,
                            const char* how) {
    Reference sides(array.count == 2 ? checked(Py_BuildValue("(nn)", array.side[0], array.side[1]))
                                     : checked(Py_BuildValue("(nnn)", array.side[0], array.side[1], array.side[2])));
    raise(PyExc_ValueError, "out: %U came, expected one of '%s' and shape %R for %s%s", describe(view).get(),
          output.bits == 8 ? "B" : "H", sides.get(), nameOf(output.code), how);
}

bool hasShape(const Py_buffer& view, const ArrayShape& array) {
    return view.ndim == array.count &&
           std::memcmp(view.shape, array.side, static_cast<std::size_t>(array.count) * sizeof array.side[0]) == 0;
}

// Pixels of a row follow each other, and rows do not lie in one another.
bool hasRows(const Py_buffer& view, const ArrayShape& array, int rows) {
    Py_ssize_t run = view.itemsize;
    for (int i = array.count - 1; i > rows; i--) {
        if (view.strides[i] != run) {
            return false;
        }
        run *= view.shape[i];
    }
    return view.strides[rows] >= run || -view.strides[rows] >= run;
}

kro::Picture pictureAt(char* start, Py_ssize_t plane, Py_ssize_t stride, const cli::OutputFormat& output) {
    const auto format = static_cast<kro::PixelFormat>(output.code);
    if (!output.planar) {
        return {start, format, stride};
    }
    return {{start, stride}, {start + plane, stride}, {start + 2 * plane, stride}, format};
}

}  // namespace

kro::Picture pictureIn(const Buffer& buffer, const Shape& shape, const cli::OutputFormat& output) {
    const Py_buffer& view = *buffer;
    const ArrayShape array = arrayShape(shape, output);
    const Items items = itemsOf(view);
    const int sample = output.bits / 8;
    const Py_ssize_t row = kroRowBytes(output.code, static_cast<int32_t>(shape.width));
    const Py_ssize_t planes = output.planar ? array.side[0] : 1;
    if (reinterpret_cast<uintptr_t>(view.buf) % static_cast<uintptr_t>(sample) != 0) {
        refuseOut(view, array, output, ", at an even address");
    }
    char* start = static_cast<char*>(view.buf);
    if (view.ndim == 1 && (items == Items::bytes || (items == Items::words && sample == 2)) &&
        view.strides[0] == view.itemsize && view.len == planes * shape.height * row) {
        return pictureAt(start, shape.height * row, row, output);
    }
    if (items != (sample == 1 ? Items::bytes : Items::words) || !hasShape(view, array)) {
        refuseOut(view, array, output, "");
    }
    const int rows = output.planar ? 1 : 0;
    if (!hasRows(view, array, rows)) {
        refuseOut(view, array, output, ", the pixels of a row one behind the other");
    }
    return pictureAt(start, view.strides[0], view.strides[rows], output);
}

namespace {

struct Extent {
    uintptr_t first;
    uintptr_t end;
};

Extent extentOf(const Py_buffer& view) {
    Extent extent{reinterpret_cast<uintptr_t>(view.buf), reinterpret_cast<uintptr_t>(view.buf)};
    for (int i = 0; i < view.ndim; i++) {
        const Py_ssize_t reach = (view.shape[i] - 1) * view.strides[i];
        (reach < 0 ? extent.first : extent.end) += static_cast<uintptr_t>(reach);
    }
    extent.end += static_cast<uintptr_t>(view.itemsize);
    return extent;
}

}  // namespace

void requireApart(const Buffer& frame, const Buffer& out) {
    const Extent a = extentOf(*frame);
    const Extent b = extentOf(*out);
    if (a.first < b.end && b.first < a.end) {
        raise(PyExc_ValueError, "out: the frame's own memory came, expected memory of its own");
    }
}

}  // namespace binding
