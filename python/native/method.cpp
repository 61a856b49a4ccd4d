// Operations and members of classes as callables. What they are is told by the module that is made of the description.

#include "method.h"

#include <nanobind/stl/optional.h>
#include <nanobind/stl/vector.h>

#include <memory>
#include <optional>
#include <vector>

#include "arguments.h"
#include "errors.h"
#include "picture.h"
#include "types.h"
#include "watch.h"

namespace tarvo::python {
namespace {

constexpr std::int32_t kYieldPixels = 1 << 16;
constexpr const char* kMessage = "message";  // what a message box has shown

using Result = std::unique_ptr<tarvo_result, void (*)(tarvo_result*)>;

// Stands for what has to be given.
struct Required {};

std::optional<Kind> kind_named(const std::string& type) {
    if (type == "integer") return Kind::integer;
    if (type == "double") return Kind::real;
    if (type == "boolean") return Kind::boolean;
    if (type == "color") return Kind::color;
    if (type == "string" || type == "bytes") return Kind::bytes;
    if (type == "picture") return Kind::picture;
    if (type == "integer()") return Kind::integers;
    return std::nullopt;
}

Parameter parameter_of(nb::handle told) {
    const auto fields = nb::cast<nb::tuple>(told);
    const auto name = nb::cast<std::string>(fields[0]), type = nb::cast<std::string>(fields[1]);
    const auto kind = kind_named(type);
    return {name, kind.value_or(Kind::object), kind ? "" : type, nb::cast<bool>(fields[2])};
}

nb::object text_of(const tarvo_bytes& bytes) {
    return nb::steal(
        PyUnicode_DecodeUTF8(static_cast<const char*>(bytes.data), static_cast<Py_ssize_t>(bytes.length), "replace"));
}

nb::object from_value(const tarvo_value& value, const std::string& type) {
    switch (value.type) {
        case TARVO_NIL: break;
        case TARVO_INTEGER: return nb::int_(value.as.integer);
        case TARVO_REAL: return nb::float_(value.as.real);
        case TARVO_BOOLEAN: return nb::bool_(value.as.boolean != 0);
        case TARVO_COLOR: return nb::int_(value.as.color);
        case TARVO_BYTES:
            if (type == "text") return text_of(value.as.bytes);
            return nb::bytes(value.as.bytes.data, value.as.bytes.length);
        case TARVO_PICTURE: return new_picture(tarvo_picture_retain(value.as.picture));
        case TARVO_OBJECT: return new_object(type, tarvo_object_retain(value.as.object));
        case TARVO_INTEGERS: {
            nb::list made;
            for (std::size_t i = 0; i < value.as.integers.count; ++i) made.append(value.as.integers.data[i]);
            return made;
        }
    }
    return nb::none();
}

tarvo_call_options options_for(Watch& watch) {
    tarvo_call_options options = {};
    options.size = sizeof options;
    options.threads = 1;
    options.yield_pixels = kYieldPixels;
    watch.put_into(options);
    return options;
}

void warn_of(const tarvo_result* result, const std::string& operation) {
    const std::int32_t code = tarvo_result_code(result);
    if (code != 0) error_function("warn_of")(operation, code);
}

class Method {
public:
    // A form is a list of parameters, and a parameter its name, its type, and whether None leaves it out. So is `self`,
    // which is None for what is called on nothing. `result` is a type, "text", or "" for none. `outputs` are the names
    // of what comes back in arguments, which `gathered` makes one value of, behind the result.
    Method(std::string operation, std::string name, const nb::list& forms, nb::handle self, std::string result,
           std::vector<std::string> outputs, nb::object gathered)
        : operation_(std::move(operation)),
          name_(std::move(name)),
          result_(std::move(result)),
          outputs_(std::move(outputs)),
          gathered_(std::move(gathered)) {
        for (nb::handle form : forms) {
            auto& made = forms_.emplace_back();
            for (nb::handle parameter : form) made.push_back(parameter_of(parameter));
        }
        if (!self.is_none()) self_ = parameter_of(self);
    }

    // Values in the order of the only form; `required` stands for those that were not given.
    nb::object call(nb::handle self, nb::handle progress, const nb::args& values) const {
        Arguments arguments(name_);
        const std::vector<Parameter>& form = only_form(values.size());
        std::string missing;
        for (std::size_t i = 0; i < form.size(); ++i) {
            const nb::handle value = values[i];
            if (nb::isinstance<Required>(value))
                missing += (missing.empty() ? "'" : ", '") + form[i].name + "'";
            else if (missing.empty())
                arguments.add(form[i], value);
        }
        if (!missing.empty()) raise_type_error(name_ + "() needs " + missing);
        return finish(self, progress, arguments);
    }

    // Arguments as they were given, of the first form that they fit.
    nb::object call_overloaded(nb::handle self, nb::handle progress, const nb::tuple& places,
                               const nb::dict& named) const {
        for (const auto& form : forms_) {
            const auto values = fitting(form, places, named);
            if (values.empty()) continue;
            Arguments arguments(name_);
            for (std::size_t i = 0; i < form.size(); ++i)
                if (values[i].is_valid()) arguments.add(form[i], values[i]);
            return finish(self, progress, arguments);
        }
        std::string message = "these arguments fit none of";
        for (const auto& form : forms_) {
            message += "\n    " + name_ + "(";
            for (const Parameter& parameter : form)
                message += (&parameter == form.data() ? "" : ", ") + parameter.name +
                           (parameter.may_be_left_out ? "=None" : "");
            message += ")";
        }
        raise_type_error(message);
    }

    // A member that is assigned to: its arguments have no names.
    void assign(nb::handle self, const nb::args& values) const {
        Arguments arguments(name_);
        const std::vector<Parameter>& form = only_form(values.size());
        for (std::size_t i = 0; i < form.size(); ++i) arguments.add_without_name(form[i], values[i]);
        finish(self, nb::none(), arguments);
    }

private:
    const std::vector<Parameter>& only_form(std::size_t count) const {
        if (forms_.size() != 1 || forms_.front().size() != count) raise_type_error(name_ + "(): other values");
        return forms_.front();
    }

    // Returns a value, or null for one left out, for each parameter; nothing if the arguments are not this form's.
    std::vector<nb::object> fitting(const std::vector<Parameter>& form, const nb::tuple& places,
                                    const nb::dict& named) const {
        std::vector<nb::object> values;
        std::size_t used = 0;
        if (places.size() > form.size()) return {};
        for (std::size_t i = 0; i < form.size(); ++i) {
            nb::object value;
            const nb::object by_name = nb::borrow(PyDict_GetItemString(named.ptr(), form[i].name.c_str()));
            if (i < places.size()) {
                if (by_name.is_valid()) return {};
                value = places[i];
            } else if (by_name.is_valid()) {
                value = by_name;
                ++used;
            }
            if (value.is_valid() ? !looks_like(value, form[i]) : !form[i].may_be_left_out) return {};
            values.push_back(std::move(value));
        }
        if (used != named.size()) return {};
        return values;
    }

    nb::object finish(nb::handle self, nb::handle progress, Arguments& arguments) const {
        Watch watch(progress);
        const tarvo_call_options options = options_for(watch);
        tarvo_value on = {};
        if (self_) on = arguments.value_of(*self_, self);
        tarvo_result* made = nullptr;
        watch.run([&](tarvo_error** error) {
            const auto locks = arguments.locked();
            return tarvo_call(operation_.c_str(), self_ ? &on : nullptr, arguments.list().data(),
                              arguments.list().size(), &options, &made, error);
        });
        const Result result(made, &tarvo_result_release);
        warn_of(made, operation_);
        return gathered(made);
    }

    nb::object gathered(const tarvo_result* result) const {
        nb::object value = from_value(*tarvo_result_value(result), result_);
        if (outputs_.empty()) {
            const tarvo_value* message = value.is_none() ? tarvo_result_output(result, kMessage) : nullptr;
            return message ? from_value(*message, "text") : value;
        }
        nb::list values;
        if (!result_.empty()) values.append(value);
        for (const std::string& name : outputs_) {
            const tarvo_value* output = tarvo_result_output(result, name.c_str());
            values.append(output ? from_value(*output, "") : nb::none());
        }
        return gathered_(*values);
    }

    std::string operation_, name_, result_;
    std::vector<std::string> outputs_;
    nb::object gathered_;
    std::vector<std::vector<Parameter>> forms_;
    std::optional<Parameter> self_;
};

// Calls what a text says, and gives the value and what came back in arguments of the names.
nb::object apply(const std::string& text, std::optional<nb::handle> picture, nb::handle progress,
                 const std::vector<std::string>& outputs) {
    const Picture* on = picture ? picture_in(*picture) : nullptr;
    Watch watch(progress);
    const tarvo_call_options options = options_for(watch);
    tarvo_result* made = nullptr;
    watch.run([&](tarvo_error** error) {
        return tarvo_apply(text.c_str(), on ? on->get() : nullptr, &options, &made, error);
    });
    const Result result(made, &tarvo_result_release);
    warn_of(made, text);
    nb::dict given;
    for (const std::string& name : outputs)
        if (const tarvo_value* output = tarvo_result_output(made, name.c_str()))
            given[name.c_str()] = from_value(*output, "");
    return nb::make_tuple(from_value(*tarvo_result_value(made), ""), given);
}

}  // namespace

void define_method(nb::module_& module) {
    nb::class_<Required>(module, "Required").def("__repr__", [](const Required&) { return "required"; });
    module.attr("required") = nb::cast(Required{});
    nb::class_<Method>(module, "Method")
        .def(nb::init<std::string, std::string, nb::list, nb::handle, std::string, std::vector<std::string>,
                      nb::object>(),
             nb::arg("operation"), nb::arg("name"), nb::arg("forms"), nb::arg("self_").none(), nb::arg("result"),
             nb::arg("outputs"), nb::arg("gathered").none())
        .def("__call__", &Method::call, nb::arg("self_").none(), nb::arg("progress").none(), nb::arg("values"))
        .def("call_overloaded", &Method::call_overloaded, nb::arg("self_").none(), nb::arg("progress").none(),
             nb::arg("places"), nb::arg("named"))
        .def("assign", &Method::assign);
    module.def("apply", &apply, nb::arg("text"), nb::arg("picture").none(), nb::arg("progress").none(),
               nb::arg("outputs"));
}

}  // namespace tarvo::python
