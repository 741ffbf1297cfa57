#include "convert.hpp"

#include <algorithm>
#include <array>
#include <limits>

#include "threads.hpp"
#include "views.hpp"

namespace binding {

const char* const convertDoc =
    "convert($module, /, frame, format, shape=None, *, algorithm='edge', output='RGB8', out=None,\n"
    "        threads=None, bits=None)\n"
    "--\n\n"
    "The picture of a raw frame, as a NumPy array.\n\n"
    "frame      anything with the buffer protocol: bytes, bytearray, memoryview, mmap, an array. Its rows may lie\n"
    "           any distance apart, and upwards; where the items of a row are not one behind the other the frame\n"
    "           is copied first, which kro.CopyWarning tells. Bytes, or unsigned words of 16 bits in either order\n"
    "format     the name or code of its pixel format: 'BayerRG12p', 'SRGGB10P', 'bayer_rggb8' (kro.formats())\n"
    "shape      (height, width). May be left out where the frame is an array of bytes or words with just these two\n"
    "           dimensions. Of an array of bytes each row must hold a row of samples, and may be longer\n"
    "algorithm  'nearest', 'bilinear', 'edge' or 'fine'\n"
    "output     the name or code of the picture's format\n"
    "out        the array to write into, which is returned then: (height, width, channels); (height, width) of\n"
    "           grey and (3, height, width) of planar formats; uint8 or uint16. Rows may lie any distance apart.\n"
    "           Or a buffer of one dimension with just as many bytes\n"
    "threads    how many work on one frame from 0.5 megapixels on, this one among them; None: this one alone.\n"
    "           Other threads of the interpreter run meanwhile in either case\n"
    "bits       significant bits of samples in words, 8 to 16; None: the format's own. Pictures of 8 bits show the\n"
    "           high ones, pictures of 16 bits hold the samples as numbers\n\n"
    ">>> import kro, numpy\n"
    ">>> frame = numpy.full((4, 6), 1023, 'uint16')\n"
    ">>> kro.convert(frame, 'BayerRG10').shape\n"
    "(4, 6, 3)\n"
    ">>> kro.convert(bytes(36), 'BayerRG12p', shape=(4, 6), output='Mono16').max()\n"
    "0\n";

namespace {

constexpr std::array<const char*, argumentCount> argumentNames{"frame",  "format", "shape",   "algorithm",
                                                               "output", "out",    "threads", "bits"};
constexpr Py_ssize_t mostPositional = 3;
constexpr std::array<const char*, 4> algorithmNames{"nearest", "bilinear", "edge", "fine"};

struct Arguments {
    PyObject* frame = nullptr;
    PyObject* format = nullptr;
    PyObject* shape = Py_None;
    PyObject* algorithm = nullptr;
    PyObject* output = nullptr;
    PyObject* out = Py_None;
    PyObject* threads = Py_None;
    PyObject* bits = Py_None;
};

// Names are nearly always the very objects that were interned.
int placeOf(const State& state, PyObject* name) {
    for (int i = 0; i < argumentCount; i++) {
        if (name == state.argumentNames[i]) {
            return i;
        }
    }
    for (int i = 0; i < argumentCount; i++) {
        if (PyUnicode_Compare(name, state.argumentNames[i]) == 0) {
            return i;
        }
    }
    raise(PyExc_TypeError, "convert() has no argument '%U'", name);
}

Arguments arguments(const State& state, PyObject* const* values, Py_ssize_t count, PyObject* names) {
    Arguments given;
    const std::array<PyObject**, argumentCount> places{&given.frame,  &given.format, &given.shape,   &given.algorithm,
                                                       &given.output, &given.out,    &given.threads, &given.bits};
    if (count > mostPositional) {
        raise(PyExc_TypeError, "convert() takes frame, format and shape by place, all others by name; %zd came",
              count);
    }
    for (Py_ssize_t i = 0; i < count; i++) {
        *places[static_cast<std::size_t>(i)] = values[i];
    }
    const Py_ssize_t named = names == nullptr ? 0 : PyTuple_Size(names);
    for (Py_ssize_t i = 0; i < named; i++) {
        const int place = placeOf(state, PyTuple_GetItem(names, i));
        if (place < count) {
            raise(PyExc_TypeError, "convert() got '%s' twice", argumentNames[static_cast<std::size_t>(place)]);
        }
        *places[static_cast<std::size_t>(place)] = values[count + i];
    }
    if (given.frame == nullptr || given.format == nullptr) {
        raise(PyExc_TypeError, "convert() needs '%s'", given.frame == nullptr ? "frame" : "format");
    }
    return given;
}

kro::Algorithm algorithmOf(const State& state, PyObject* asked) {
    if (asked == nullptr) {
        return kro::Algorithm::edge;
    }
    PyObject* known = PyUnicode_Check(asked) ? PyDict_GetItemWithError(state.algorithms, asked) : nullptr;
    if (known == nullptr) {
        PyErr_Clear();
        raise(PyUnicode_Check(asked) ? PyExc_ValueError : PyExc_TypeError,
              "algorithm: %R came, expected 'nearest', 'bilinear', 'edge' or 'fine'", asked);
    }
    return static_cast<kro::Algorithm>(PyLong_AsLong(known));
}

// A whole number, or `absent` for None.
Py_ssize_t numberOf(PyObject* number, const char* argument, Py_ssize_t absent, const char* expected) {
    if (number == Py_None) {
        return absent;
    }
    const Py_ssize_t value = PyNumber_AsSsize_t(number, nullptr);
    if (value == -1 && PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        raise(PyExc_TypeError, "%s: %R came, expected %s", argument, number, expected);
    }
    return value;
}

unsigned threadsOf(PyObject* asked) {
    constexpr const char* expected = "a number of 1 or more, or None";
    const Py_ssize_t count = numberOf(asked, "threads", 1, expected);
    if (count < 1) {
        raise(PyExc_ValueError, "threads: %R came, expected %s", asked, expected);
    }
    return static_cast<unsigned>(std::min<Py_ssize_t>(count, std::numeric_limits<int>::max()));
}

int bitsOf(PyObject* asked, const cli::InputFormat& format) {
    const Py_ssize_t bits = numberOf(asked, "bits", format.bits, "a number from 8 to 16, or None");
    const bool words = format.packing == cli::Packing::word;
    if (words && (bits < 8 || bits > 16)) {
        raise(PyExc_ValueError, "bits: %R came, expected 8 to 16, or None, for %s", asked, format.name);
    }
    if (!words && bits != format.bits) {
        raise(PyExc_ValueError, "bits: %R came, expected %d or None for %s, whose samples are no words", asked,
              format.bits, format.name);
    }
    return static_cast<int>(bits);
}

Reference newPicture(const State& state, const ArrayShape& array, const cli::OutputFormat& output) {
    const Reference shape(checked(array.count == 2
                                      ? Py_BuildValue("(nn)", array.side[0], array.side[1])
                                      : Py_BuildValue("(nnn)", array.side[0], array.side[1], array.side[2])));
    PyObject* type = output.bits == 8 ? state.uint8 : state.uint16;
    return Reference(checked(PyObject_CallFunctionObjArgs(state.empty, shape.get(), type, nullptr)));
}

// What sourceFrame and pictureIn leave to the library's checks.
[[noreturn]] void raiseStatus(const std::error_code& error, const Buffer& frame, int sampleBytes) {
    const bool frames = error == make_error_code(kro::Error::alignment) && sampleBytes == 2 &&
                        (reinterpret_cast<uintptr_t>(frame->buf) % 2 != 0 || frame->strides[0] % 2 != 0);
    if (error == make_error_code(kro::Error::alignment)) {
        raise(PyExc_ValueError,
              "%s: words at an odd address or rows an odd number of bytes apart came, expected even ones",
              frames ? "frame" : "out");
    }
    raise(PyExc_ValueError, "frame: %s", error.message().c_str());
}

std::error_code run(const SourceFrame& source, const kro::Picture& picture, const kro::Options& options,
                    unsigned threads) {
    const Unlocked unlocked;
    std::error_code error;
    if (threads == 1) {
        kro::convert(source.frame, picture, options, error);
    } else {
        kro::convert(source.frame, picture, options, Executor(threads), error);
    }
    return error;
}

PyObject* picture(const State& state, const Arguments& given) {
    const Input input = inputOf(given.format, state.inputs);
    const cli::OutputFormat& output =
        given.output == nullptr ? cli::outputFormat(KRO_RGB8) : outputOf(given.output, state.outputs);
    kro::Options options;
    options.algorithm = algorithmOf(state, given.algorithm);
    options.bits = bitsOf(given.bits, *input.format);
    const unsigned threads = threadsOf(given.threads);
    const Buffer frame(given.frame, PyBUF_RECORDS_RO, "frame");
    const SourceFrame source = sourceFrame(frame, given.shape, input, state.copyWarning);
    options.bigEndian = source.bigEndian;
    const Shape shape{source.frame.height, source.frame.width};
    const bool fresh = given.out == Py_None;
    if (!fresh) {
        Py_IncRef(given.out);
    }
    Reference result = fresh ? newPicture(state, arrayShape(shape, output), output) : Reference(given.out);
    const Buffer out(result.get(), PyBUF_RECORDS, "out");
    const kro::Picture target = pictureIn(out, shape, output);
    if (!fresh) {
        requireApart(frame, out);
    }
    if (const std::error_code error = run(source, target, options, threads)) {
        raiseStatus(error, frame, sampleBytes(*input.format));
    }
    return result.release();
}

PyObject* attributeOf(const char* module, const char* name) {
    const Reference holder(checked(PyImport_ImportModule(module)));
    return checked(PyObject_GetAttrString(holder.get(), name));
}

}  // namespace

void prepareConvert(PyObject* module) {
    State& state = *static_cast<State*>(PyModule_GetState(module));
    for (int i = 0; i < argumentCount; i++) {
        state.argumentNames[i] = checked(PyUnicode_InternFromString(argumentNames[static_cast<std::size_t>(i)]));
    }
    state.inputs = checked(PyDict_New());
    state.outputs = checked(PyDict_New());
    state.algorithms = checked(PyDict_New());
    for (std::size_t i = 0; i < algorithmNames.size(); i++) {
        const Reference number(checked(PyLong_FromSize_t(i)));
        if (PyDict_SetItemString(state.algorithms, algorithmNames[i], number.get()) != 0) {
            throw Raised{};
        }
    }
    state.empty = attributeOf("numpy", "empty");
    const Reference kind(attributeOf("numpy", "dtype"));
    state.uint8 = checked(PyObject_CallFunction(kind.get(), "s", "uint8"));
    state.uint16 = checked(PyObject_CallFunction(kind.get(), "s", "uint16"));
    state.copyWarning = checked(PyErr_NewExceptionWithDoc(
        "kro.CopyWarning",
        "A frame was copied before it was converted, because the items of its rows are not one behind the other.",
        PyExc_RuntimeWarning, nullptr));
    Py_IncRef(state.copyWarning);
    if (PyModule_AddObject(module, "CopyWarning", state.copyWarning) != 0) {
        Py_DecRef(state.copyWarning);
        throw Raised{};
    }
    keepThreadsOutOfForks();
}

PyObject* convert(PyObject* module, PyObject* const* values, Py_ssize_t count, PyObject* names) {
    return guarded([&] {
        const State& state = *static_cast<const State*>(PyModule_GetState(module));
        return picture(state, arguments(state, values, count, names));
    });
}

}  // namespace binding
