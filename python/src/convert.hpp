#pragma once

#include "python.hpp"

namespace binding {

constexpr int argumentCount = 8;

// What one interpreter's module holds.
struct State {
    PyObject* argumentNames[argumentCount];
    PyObject* inputs;
    PyObject* outputs;
    PyObject* algorithms;
    PyObject* empty;
    PyObject* uint8;
    PyObject* uint16;
    PyObject* copyWarning;
};

extern const char* const convertDoc;

void prepareConvert(PyObject* module);
PyObject* convert(PyObject* module, PyObject* const* values, Py_ssize_t count, PyObject* names);

}  // namespace binding
