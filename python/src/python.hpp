// Python's limited interface of 3.11, the first with the buffer protocol in it: one file serves that version and all
// later ones.
#pragma once

#define PY_SSIZE_T_CLEAN
#ifndef Py_LIMITED_API
#define Py_LIMITED_API 0x030B0000
#endif
#include <Python.h>
#include <unistd.h>

#include <exception>
#include <new>
#include <string>
#include <utility>

namespace binding {

// A Python exception is set, and on its way out.
struct Raised {};

template <typename T>
T* checked(T* object) {
    if (object == nullptr) {
        throw Raised{};
    }
    return object;
}

// An object that is held for as long as this is.
class Reference {
public:
    explicit Reference(PyObject* owned = nullptr) noexcept : object_(owned) {}
    ~Reference() { Py_XDECREF(object_); }
    Reference(Reference&& other) noexcept : object_(other.release()) {}
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    Reference& operator=(Reference&&) = delete;
    PyObject* get() const noexcept { return object_; }
    PyObject* release() noexcept { return std::exchange(object_, nullptr); }

private:
    PyObject* object_;
};

// Not PyErr_Format, which loses the text and says nothing where memory for it is lacking.
template <typename... Values>
[[noreturn]] void raise(PyObject* type, const char* text, Values... values) {
    const Reference message(checked(PyUnicode_FromFormat(text, values...)));
    PyErr_SetObject(type, message.get());
    throw Raised{};
}

// The interpreter's lock given back to other threads for as long as this lives. A thread that wants it back while the
// interpreter ends is ended by Python before 3.14, in the midst of C++; it waits for the end of the process instead.
class Unlocked {
public:
    Unlocked() noexcept : state_(PyEval_SaveThread()) {}
    ~Unlocked() {
        try {
            PyEval_RestoreThread(state_);
        } catch (...) {
            for (;;) {
                pause();
            }
        }
    }
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;

private:
    PyThreadState* state_;
};

// What C++ throws as what Python raises.
template <typename Work>
PyObject* guarded(Work&& work) noexcept {
    try {
        return work();
    } catch (const Raised&) {
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& failure) {
        PyErr_SetString(PyExc_RuntimeError, failure.what());
    }
    return nullptr;
}

}  // namespace binding
