#pragma once

// The native part of rectangles, matrices and convolutions.

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>

#include <mutex>
#include <string>

#include "tarvo.h"

namespace tarvo::python {

namespace nb = nanobind;

// An object belongs to one thread at a time: whoever calls the library with it holds its lock, not the interpreter's.
class Object {
public:
    explicit Object(const std::string& class_name);
    // Takes one reference over.
    explicit Object(tarvo_object* owned) : object_(owned) {}
    ~Object() { tarvo_object_release(object_); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    tarvo_object* get() const { return object_; }
    std::mutex& lock() const { return lock_; }

private:
    tarvo_object* object_ = nullptr;
    mutable std::mutex lock_;
};

// Returns an instance of the package's class, which takes one reference over.
nb::object new_object(const std::string& class_name, tarvo_object* owned);

void define_object(nb::module_& module);

}  // namespace tarvo::python
