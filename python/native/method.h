#pragma once

#include <nanobind/nanobind.h>

namespace tarvo::python {

void define_method(nanobind::module_& module);

}  // namespace tarvo::python
