#pragma once

// Python values as arguments of a call.

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>

#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "object.h"
#include "tarvo.h"

namespace tarvo::python {

namespace nb = nanobind;

enum class Kind { integer, real, boolean, color, bytes, picture, integers, object };

struct Parameter {
    std::string name;
    Kind kind;
    std::string class_name;  // of objects
    bool may_be_left_out;    // by None
};

// Whether a value is of a kind's type, so that the parameter can be meant by it.
bool looks_like(nb::handle value, const Parameter& parameter);

// The arguments of one call, and what they point to.
class Arguments {
public:
    explicit Arguments(const std::string& operation) : operation_(operation) {}
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;
    ~Arguments();

    // Raises TypeError, or tarvo.OutOfRangeError, which tell the argument.
    void add(const Parameter& parameter, nb::handle value);
    void add_without_name(const Parameter& parameter, nb::handle value);
    tarvo_value value_of(const Parameter& parameter, nb::handle value);

    const std::vector<tarvo_argument>& list() const { return list_; }
    // Holds the objects; not to be called with the interpreter.
    std::vector<std::unique_lock<std::mutex>> locked() const;

private:
    const std::string& operation_;
    std::vector<tarvo_argument> list_;
    std::vector<nb::object> kept_;
    std::vector<const Object*> objects_;
    std::deque<Py_buffer> buffers_;
    std::deque<std::vector<std::int32_t>> integers_;
};

}  // namespace tarvo::python
