#include <nanobind/nanobind.h>

#include "method.h"
#include "object.h"
#include "picture.h"
#include "tarvo.h"

namespace nb = nanobind;

NB_MODULE(_native, module) {
    nb::set_leak_warnings(false);  // the classes of the package live as long as the process
    module.doc() = "The native part of tarvo: calls of libtarvo, and what they are given.";
    nb::enum_<tarvo_status>(module, "Status", nb::is_arithmetic(), "What kind of failure it is.")
        .value("OPERATION", TARVO_OPERATION, "an operation refused what it was given: `code` tells why")
        .value("USE", TARVO_USE, "the call is wrong: its name, its arguments, its text")
        .value("FILE", TARVO_FILE, "a file or an encoded picture cannot be read or written")
        .value("LIMIT", TARVO_LIMIT, "a picture would be larger than is possible or allowed")
        .value("MEMORY", TARVO_MEMORY, "there is not as much memory")
        .value("CANCELLED", TARVO_CANCELLED, "`progress` answered with false");
    tarvo::python::define_picture(module);
    tarvo::python::define_object(module);
    tarvo::python::define_method(module);
    module.def("version", &tarvo_version);
    module.def("description", [] { return nb::bytes(tarvo_description()); });
}
