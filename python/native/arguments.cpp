#include "arguments.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

#include "errors.h"
#include "picture.h"
#include "types.h"

namespace tarvo::python {
namespace {

std::string type_text(nb::handle value) { return nb::cast<std::string>(nb::str(nb::type_name(value.type()))); }

bool is_boolean(nb::handle value) {
    if (PyBool_Check(value.ptr())) return true;
    const std::string_view name = Py_TYPE(value.ptr())->tp_name;
    return name == "numpy.bool" || name == "numpy.bool_";
}

// Integers of Python and numpy, but no booleans: those are mistakes.
bool is_integer(nb::handle value) {
    return PyIndex_Check(value.ptr()) && !is_boolean(value) && !PySequence_Check(value.ptr());
}

bool is_real(nb::handle value) {
    if (PyFloat_Check(value.ptr()) || is_integer(value)) return true;
    return !is_boolean(value) && !PySequence_Check(value.ptr()) && Py_TYPE(value.ptr())->tp_as_number &&
           Py_TYPE(value.ptr())->tp_as_number->nb_float;
}

bool is_text(nb::handle value) { return PyUnicode_Check(value.ptr()) != 0; }

// Returns the number, if it fits.
std::optional<std::int32_t> integer_of(nb::handle value) {
    const nb::object integer = nb::steal(PyNumber_Index(value.ptr()));
    if (!integer.is_valid()) throw nb::python_error();
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(integer.ptr(), &overflow);
    if (overflow != 0 || number < std::numeric_limits<std::int32_t>::min() ||
        number > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return static_cast<std::int32_t>(number);
}

int hexadecimal(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

std::optional<std::uint32_t> color_of_text(nb::handle text) {
    Py_ssize_t length = 0;
    const char* digits = PyUnicode_AsUTF8AndSize(text.ptr(), &length);
    if (!digits) {
        PyErr_Clear();
        return std::nullopt;
    }
    if (length != 7 || digits[0] != '#') return std::nullopt;
    std::uint32_t color = 0;
    for (int i = 1; i < 7; ++i) {
        const int digit = hexadecimal(digits[i]);
        if (digit < 0) return std::nullopt;
        color = color << 4 | static_cast<std::uint32_t>(digit);
    }
    return color;
}

constexpr const char* kColor = "a colour (0xRRGGBB, \"#rrggbb\" or three integers)";

const char* kind_text(const Parameter& parameter) {
    switch (parameter.kind) {
        case Kind::integer: return "an integer";
        case Kind::real: return "a number";
        case Kind::boolean: return "True or False";
        case Kind::color: return kColor;
        case Kind::bytes: return "bytes";
        case Kind::picture: return "a tarvo.Picture";
        case Kind::integers: return "a sequence of integers";
        case Kind::object: break;
    }
    return "";
}

bool is_sequence(nb::handle value) {
    return !is_text(value) && !PyBytes_Check(value.ptr()) && PySequence_Check(value.ptr()) != 0;
}

}  // namespace

bool looks_like(nb::handle value, const Parameter& parameter) {
    switch (parameter.kind) {
        case Kind::integer: return is_integer(value);
        case Kind::real: return is_real(value);
        case Kind::boolean: return is_boolean(value);
        case Kind::color: return is_integer(value) || is_text(value) || (is_sequence(value) && nb::len(value) == 3);
        case Kind::bytes: return is_text(value) || PyObject_CheckBuffer(value.ptr());
        case Kind::picture: return value.is_none() || picture_in(value) != nullptr;
        case Kind::integers: return is_sequence(value);
        case Kind::object: break;
    }
    if (value.is_none()) return true;
    const ObjectType& type = types().objects.at(parameter.class_name);
    return nb::isinstance(value, type.type) || (is_sequence(value) && !picture_in(value));
}

Arguments::~Arguments() {
    for (Py_buffer& buffer : buffers_) PyBuffer_Release(&buffer);
}

void Arguments::add(const Parameter& parameter, nb::handle value) {
    if (value.is_none() && parameter.may_be_left_out) return;
    list_.push_back({parameter.name.c_str(), value_of(parameter, value)});
}

void Arguments::add_without_name(const Parameter& parameter, nb::handle value) {
    list_.push_back({nullptr, value_of(parameter, value)});
}

tarvo_value Arguments::value_of(const Parameter& parameter, nb::handle value) {
    const auto wrong_type = [&](const char* expected) {
        raise_type_error(operation_ + "(): " + parameter.name + " must be " + expected + ", not " + type_text(value));
    };
    const auto out_of_range = [&](const std::string& allowed) {
        raise_out_of_range(operation_, parameter.name,
                           operation_ + ": " + parameter.name + " is " + nb::cast<std::string>(nb::repr(value)) +
                               ", allowed is " + allowed);
    };
    tarvo_value made = {};
    const bool nullable = parameter.kind == Kind::picture || parameter.kind == Kind::object;
    if (nullable && value.is_none()) return made;
    if (parameter.kind != Kind::object && !looks_like(value, parameter)) wrong_type(kind_text(parameter));
    switch (parameter.kind) {
        case Kind::integer: {
            const auto number = integer_of(value);
            if (!number) out_of_range("what fits 32 bits");
            made.type = TARVO_INTEGER;
            made.as.integer = *number;
            break;
        }
        case Kind::real:
            made.type = TARVO_REAL;
            made.as.real = PyFloat_AsDouble(value.ptr());
            if (made.as.real == -1.0 && PyErr_Occurred()) {
                if (!PyErr_ExceptionMatches(PyExc_OverflowError)) throw nb::python_error();
                PyErr_Clear();
                out_of_range("what a double holds");
            }
            break;
        case Kind::boolean: {
            const int truth = PyObject_IsTrue(value.ptr());
            if (truth < 0) throw nb::python_error();
            made.type = TARVO_BOOLEAN;
            made.as.boolean = truth;
            break;
        }
        case Kind::color: {
            std::optional<std::uint32_t> color;
            if (is_text(value)) {
                color = color_of_text(value);
                if (!color) out_of_range("\"#rrggbb\"");
            } else if (is_integer(value)) {
                const auto number = integer_of(value);
                if (!number || *number < 0 || *number > 0xFFFFFF) out_of_range("0 to 0xFFFFFF");
                color = static_cast<std::uint32_t>(*number);
            } else {
                color = 0;
                for (Py_ssize_t i = 0; i < 3; ++i) {
                    const nb::object channel = nb::steal(PySequence_GetItem(value.ptr(), i));
                    if (!channel.is_valid()) throw nb::python_error();
                    if (!is_integer(channel)) wrong_type(kColor);
                    const auto number = integer_of(channel);
                    if (!number || *number < 0 || *number > 255) out_of_range("0 to 255 for each channel");
                    color = *color << 8 | static_cast<std::uint32_t>(*number);
                }
            }
            made.type = TARVO_COLOR;
            made.as.color = *color;
            break;
        }
        case Kind::bytes: {
            made.type = TARVO_BYTES;
            if (is_text(value)) {
                Py_ssize_t length = 0;
                const char* text = PyUnicode_AsUTF8AndSize(value.ptr(), &length);
                if (!text) throw nb::python_error();
                kept_.push_back(nb::borrow(value));
                made.as.bytes = {text, static_cast<std::size_t>(length)};
                break;
            }
            Py_buffer buffer;
            if (PyObject_GetBuffer(value.ptr(), &buffer, PyBUF_SIMPLE) != 0) throw nb::python_error();
            buffers_.push_back(buffer);
            made.as.bytes = {buffer.buf, static_cast<std::size_t>(buffer.len)};
            break;
        }
        case Kind::picture:
            kept_.push_back(nb::borrow(value));
            made.type = TARVO_PICTURE;
            made.as.picture = picture_in(value)->get();
            break;
        case Kind::integers: {
            auto& numbers = integers_.emplace_back();
            const Py_ssize_t count = PySequence_Size(value.ptr());
            if (count < 0) throw nb::python_error();
            for (Py_ssize_t i = 0; i < count; ++i) {
                const nb::object element = nb::steal(PySequence_GetItem(value.ptr(), i));
                if (!element.is_valid()) throw nb::python_error();
                if (!is_integer(element)) wrong_type("a sequence of integers");
                const auto number = integer_of(element);
                if (!number) out_of_range("what fits 32 bits");
                numbers.push_back(*number);
            }
            made.type = TARVO_INTEGERS;
            made.as.integers = {numbers.data(), numbers.size()};
            break;
        }
        case Kind::object: {
            const ObjectType& type = types().objects.at(parameter.class_name);
            nb::object object = nb::borrow(value);
            if (!nb::isinstance(object, type.type)) object = type.convert(value, parameter.name);
            if (!nb::inst_ready(object)) wrong_type(("a " + parameter.class_name + " that has been made").c_str());
            const Object* inner = nb::inst_ptr<Object>(object);
            kept_.push_back(std::move(object));
            objects_.push_back(inner);
            made.type = TARVO_OBJECT;
            made.as.object = inner->get();
            break;
        }
    }
    return made;
}

std::vector<std::unique_lock<std::mutex>> Arguments::locked() const {
    std::vector<const Object*> objects = objects_;
    std::sort(objects.begin(), objects.end(), std::less<>());
    objects.erase(std::unique(objects.begin(), objects.end()), objects.end());
    std::vector<std::unique_lock<std::mutex>> locks;
    for (const Object* object : objects) locks.emplace_back(object->lock());
    return locks;
}

}  // namespace tarvo::python
