#pragma once

// What is told of operations, beside what plugins have registered: forms, types and texts come from the plugin,
// meanings from the tables. What is registered and not described is not in it, nor the other way round.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "caller.h"
#include "tables.h"

namespace tarvo::reference {

// A declaration, with its object and what that form does.
struct Form {
    const host::Callable* callable;
    std::string self;    // the type in front of the dot; "none" for a plain function
    std::string result;  // what comes back, whatever is declared; "none" for nothing
    bool yields, keeps_mask, changes_self;

    const std::string& declaration() const { return callable->declaration.text; }
};

// Of one name and one type; another type under the same name is another argument.
struct Argument {
    const describe::Argument* about;
    std::string type;
    bool by_ref;
    std::vector<std::size_t> forms;  // that take it

    // The tool and the library fill in what may be left out.
    bool required() const { return about->left_out.empty(); }
};

struct Error {
    const describe::Error* about;
    std::string when;
    std::vector<std::size_t> forms;
};

struct Operation {
    const describe::Operation* about;
    std::string_view family;  // empty for a class's method
    std::vector<Form> forms;  // one at least
    std::vector<Argument> arguments;
    std::vector<Error> errors;

    // The error that a value beyond the argument's range ends in; null for an argument without a range.
    const Error* range_error(const Argument& argument) const;
};

struct Property {
    const describe::Property* about;
    std::string type;
    bool read_only;
};

struct Class {
    const describe::Class* about;
    std::vector<Property> properties;
    std::vector<Operation> methods;
};

struct Code {
    int code;
    std::string_view name;
    std::string text;  // the plugin's
};

class Reference {
public:
    // The caller must outlive it. Asks the plugin for the texts of codes.
    explicit Reference(host::Caller& caller);

    const std::vector<Operation>& operations() const { return operations_; }
    const std::vector<Class>& classes() const { return classes_; }
    const std::vector<Code>& codes() const { return codes_; }

private:
    std::vector<Operation> operations_;
    std::vector<Class> classes_;
    std::vector<Code> codes_;
};

}  // namespace tarvo::reference
