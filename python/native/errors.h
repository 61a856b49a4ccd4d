#pragma once

// Failures as Python exceptions, which the package's `_errors` makes.

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>

#include <string>

#include "tarvo.h"

namespace tarvo::python {

namespace nb = nanobind;

// A function of the package's `_errors`.
nb::object error_function(const char* name);

// Raises what the library has told, and frees it. `error` is NULL where there was no memory for one.
[[noreturn]] void raise(tarvo_status status, tarvo_error* error);
// Raises a tarvo.OutOfRangeError.
[[noreturn]] void raise_out_of_range(const std::string& operation, const std::string& argument,
                                     const std::string& message);
[[noreturn]] void raise_type_error(const std::string& message);

}  // namespace tarvo::python
