#pragma once

// Declarations of the host's language, as plugins register them:
//
//     TRV_Add(extends p as picture, addend as picture, yield as integer) as picture
//
// Names and keywords are compared without regard to case. The parser is strict: whatever it does not know is an error.

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "value.h"

namespace tarvo::host {

enum class TypeKind { integer, real, boolean, color, string, object };

struct Type {
    TypeKind kind = TypeKind::object;
    std::string name;  // as declared: "integer", "picture", "TRV_Rectangle"
    bool array = false;

    // Whether values of the type are objects to the plugin. Arrays and strings are.
    bool is_object() const { return array || kind == TypeKind::string || kind == TypeKind::object; }
};

// "integer", "double", "boolean", "color" and "string" are the language's own types; any other name is a class.
Type type_named(std::string_view name);
// Returns the type as it is declared: "integer", or "integer()" for an array.
std::string to_string(const Type& type);

struct Parameter {
    std::string name;
    Type type;
    bool extends = false;
    bool by_ref = false;                   // only of integers, doubles, booleans and colors
    std::optional<Literal> default_value;  // a literal of the parameter's type
};

struct Declaration {
    std::string text;  // as registered
    std::string name;
    std::vector<Parameter> parameters;
    std::optional<Type> result;  // none for a method that returns nothing

    bool extends() const { return !parameters.empty() && parameters.front().extends; }
};

// `column` counts characters from 1.
class DeclarationError : public std::runtime_error {
public:
    DeclarationError(std::string_view text, std::size_t column, std::string_view what);
    std::size_t column() const { return column_; }

private:
    std::size_t column_;
};

// Throws DeclarationError.
Declaration parse_declaration(std::string_view text);

}  // namespace tarvo::host
