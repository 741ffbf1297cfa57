// kro._kro: what the package kro has from the library and from the command.
#include <kro/view.h>
#include <array>

#include "convert.hpp"
#include "formats.hpp"
#include "frames/format_names.hpp"
#include "frames/frame_count.hpp"
#include "frames/inference.hpp"
#include "support/failure.hpp"

namespace binding {

namespace {

// Wrong words of a user's become ValueError, with Python's names for the command's options.
template <typename Work>
PyObject* answered(Work&& work) {
    return guarded([&] {
        try {
            return work();
        } catch (const cli::Failure& failure) {
            raise(PyExc_ValueError, "%s", inPython(failure.what()).c_str());
        }
    });
}

PyObject* formats(PyObject*, PyObject*) {
    return guarded([] { return listFormats(); });
}

PyObject* inputName(PyObject* module, PyObject* asked) {
    return guarded([&] {
        const State& state = *static_cast<const State*>(PyModule_GetState(module));
        return checked(PyUnicode_FromString(inputOf(asked, state.inputs).format->name));
    });
}

PyObject* outputName(PyObject* module, PyObject* asked) {
    return guarded([&] {
        const State& state = *static_cast<const State*>(PyModule_GetState(module));
        return checked(PyUnicode_FromString(nameOf(outputOf(asked, state.outputs).code)));
    });
}

// (format, samples) -> how they are packed, and their bytes.
PyObject* row(PyObject*, PyObject* arguments) {
    return answered([&] {
        const char* format = nullptr;
        int samples = 0;
        if (PyArg_ParseTuple(arguments, "si", &format, &samples) == 0) {
            throw Raised{};
        }
        const cli::InputFormat& known = *cli::requireInputFormat(format).format;
        return checked(
            Py_BuildValue("(sn)", packingName(known), static_cast<Py_ssize_t>(kroRowBytes(known.code, samples))));
    });
}

// (path, bytes, format, size, skip, stride, big_endian, ignore_rest) -> how the file's frames are to be read.
PyObject* layout(PyObject*, PyObject* arguments) {
    return answered([&] {
        const char* path = nullptr;
        const char* format = nullptr;
        const char* size = nullptr;
        Py_ssize_t bytes = 0;
        Py_ssize_t skip = 0;
        Py_ssize_t stride = 0;
        int bigEndian = 0;
        int ignoreRest = 0;
        if (PyArg_ParseTuple(arguments, "snssnnpp", &path, &bytes, &format, &size, &skip, &stride, &bigEndian,
                             &ignoreRest) == 0) {
            throw Raised{};
        }
        const cli::FrameRequest request{format, size, static_cast<uint64_t>(skip), static_cast<uint64_t>(stride),
                                        bigEndian != 0};
        cli::requireGoodRequest(request);
        const cli::FrameLayout found = cli::inferLayout(path, request, static_cast<uint64_t>(bytes));
        const uint64_t frames = cli::countFrames(path, static_cast<uint64_t>(bytes), found, ignoreRest != 0);
        return checked(Py_BuildValue("(siinnO)", found.format->name, found.size.height, found.size.width,
                                     static_cast<Py_ssize_t>(found.bytes()), static_cast<Py_ssize_t>(frames),
                                     found.bigEndian ? Py_True : Py_False));
    });
}

// (path, format, largest sample that the file can hold) -> the format of an array's frames.
PyObject* containedName(PyObject*, PyObject* arguments) {
    return answered([&] {
        const char* path = nullptr;
        const char* format = nullptr;
        unsigned maximum = 0;
        if (PyArg_ParseTuple(arguments, "ssI", &path, &format, &maximum) == 0) {
            throw Raised{};
        }
        cli::FrameRequest request;
        request.formatName = format;
        return checked(PyUnicode_FromString(cli::inferContained(path, request, maximum).name));
    });
}

PyCFunction asFunction(_PyCFunctionFastWithKeywords function) {
    return reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function));
}

std::array<PyMethodDef, 8> methods{{{"convert", asFunction(convert), METH_FASTCALL | METH_KEYWORDS, convertDoc},
                                    {"formats", formats, METH_NOARGS, nullptr},
                                    {"input_name", inputName, METH_O, nullptr},
                                    {"output_name", outputName, METH_O, nullptr},
                                    {"row", row, METH_VARARGS, nullptr},
                                    {"layout", layout, METH_VARARGS, nullptr},
                                    {"contained_name", containedName, METH_VARARGS, nullptr},
                                    {nullptr, nullptr, 0, nullptr}}};

int execute(PyObject* module) {
    const Reference done(guarded([&] {
        prepareConvert(module);
        if (PyModule_AddStringConstant(module, "version", KRO_VERSION) != 0) {
            throw Raised{};
        }
        Py_IncRef(Py_None);
        return Py_None;
    }));
    return done.get() == nullptr ? -1 : 0;
}

template <typename Visit>
int eachObject(PyObject* module, Visit&& visit) {
    State* state = static_cast<State*>(PyModule_GetState(module));
    if (state == nullptr) {
        return 0;
    }
    for (PyObject*& name : state->argumentNames) {
        visit(name);
    }
    for (PyObject** object : {&state->inputs, &state->outputs, &state->algorithms, &state->empty, &state->uint8,
                              &state->uint16, &state->copyWarning}) {
        visit(*object);
    }
    return 0;
}

int traverse(PyObject* module, visitproc visit, void* argument) {
    int result = 0;
    eachObject(module, [&](PyObject* object) {
        result = result == 0 && object != nullptr ? visit(object, argument) : result;
    });
    return result;
}

int clear(PyObject* module) {
    return eachObject(module, [](PyObject*& object) { Py_XDECREF(std::exchange(object, nullptr)); });
}

void release(void* module) { clear(static_cast<PyObject*>(module)); }

std::array<PyModuleDef_Slot, 2> slots{{{Py_mod_exec, reinterpret_cast<void*>(execute)}, {0, nullptr}}};

PyModuleDef definition{PyModuleDef_HEAD_INIT, "kro._kro", nullptr, sizeof(State), methods.data(),
                       slots.data(),          traverse,   clear,   release};

}  // namespace

}  // namespace binding

PyMODINIT_FUNC PyInit__kro() { return PyModuleDef_Init(&binding::definition); }
