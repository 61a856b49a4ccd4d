#include "errors.h"

namespace tarvo::python {

nb::object error_function(const char* name) { return nb::module_::import_("tarvo._errors").attr(name); }

namespace {

[[noreturn]] void raise_object(const nb::object& exception) {
    PyErr_SetObject(exception.type().ptr(), exception.ptr());
    throw nb::python_error();
}

// Texts of the library may repeat bytes of a caller's that are no UTF-8.
nb::object text(const char* bytes) {
    return nb::steal(PyUnicode_DecodeUTF8(bytes, static_cast<Py_ssize_t>(std::char_traits<char>::length(bytes)),
                                          "backslashreplace"));
}

}  // namespace

void raise(tarvo_status status, tarvo_error* error) {
    const std::int32_t code = tarvo_error_code(error);
    const nb::object message = text(error ? tarvo_error_message(error) : "failed");
    const nb::object operation = text(tarvo_error_operation(error)), argument = text(tarvo_error_argument(error));
    tarvo_error_free(error);
    raise_object(error_function("error_of")(static_cast<int>(status), code, message, operation, argument));
}

void raise_out_of_range(const std::string& operation, const std::string& argument, const std::string& message) {
    raise_object(error_function("out_of_range")(message, operation, argument));
}

void raise_type_error(const std::string& message) {
    PyErr_SetString(PyExc_TypeError, message.c_str());
    throw nb::python_error();
}

}  // namespace tarvo::python
