#pragma once

// The package's classes, which it tells the extension when it is imported.

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>

#include <string>
#include <unordered_map>

namespace tarvo::python {

namespace nb = nanobind;

struct ObjectType {
    nb::object type;     // a subclass of Object
    nb::object convert;  // makes one of what stands for it: a tuple, an array
};

struct Types {
    nb::object picture;
    std::unordered_map<std::string, ObjectType> objects;  // by registered names
};

// Lives as long as the process: the interpreter may be gone before static objects are.
Types& types();

}  // namespace tarvo::python
