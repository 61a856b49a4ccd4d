#include "declaration.h"

#include <algorithm>
#include <array>
#include <utility>

#include "names.h"
#include "scanner.h"
#include "shown_text.h"

namespace tarvo::host {
namespace {

bool is_reserved(std::string_view name) {
    static constexpr std::array<std::string_view, 6> kReserved = {"as", "byref", "extends", "false", "nil", "true"};
    const auto is_name = [&](std::string_view word) { return same_name(word, name); };
    return std::any_of(kReserved.begin(), kReserved.end(), is_name);
}

// Returns the literal as a default of the type, for which an integer may become a double; none when it does not fit.
std::optional<Literal> as_default(const Literal& literal, const Type& type) {
    const auto when = [&](bool fits) { return fits ? std::optional<Literal>(literal) : std::nullopt; };
    if (type.array) return when(std::holds_alternative<Nil>(literal));
    switch (type.kind) {
        case TypeKind::integer: return when(std::holds_alternative<std::int32_t>(literal));
        case TypeKind::real:
            if (const auto* whole = std::get_if<std::int32_t>(&literal)) return static_cast<double>(*whole);
            return when(std::holds_alternative<double>(literal));
        case TypeKind::boolean: return when(std::holds_alternative<bool>(literal));
        case TypeKind::color: return when(std::holds_alternative<Color>(literal));
        case TypeKind::string: return when(std::holds_alternative<std::string>(literal));
        case TypeKind::object: return when(std::holds_alternative<Nil>(literal));
    }
    return std::nullopt;
}

class Parser {
public:
    explicit Parser(std::string_view text) : scanner_(text) {}

    Declaration parse() {
        Declaration result;
        result.text = scanner_.text();
        result.name = name("a method's name");
        if (!scanner_.take('(')) scanner_.fail_expecting("\"(\"");
        result.parameters = parameters();
        if (scanner_.take_word("as")) result.result = type();
        if (!scanner_.at_end()) scanner_.fail_expecting(result.result ? "the end" : "\"as\" and a type, or the end");
        return result;
    }

private:
    std::string name(std::string_view what) {
        if (scanner_.next_name().empty() || is_reserved(scanner_.next_name())) scanner_.fail_expecting(what);
        return std::string(scanner_.take_name());
    }

    Type type() { return type_named(name("a type")); }

    std::vector<Parameter> parameters() {
        std::vector<Parameter> result;
        if (scanner_.take(')')) return result;
        do result.push_back(parameter(result));
        while (scanner_.take(','));
        if (!scanner_.take(')')) scanner_.fail_expecting("\",\" or \")\"");
        return result;
    }

    Parameter parameter(const std::vector<Parameter>& earlier) {
        Parameter result;
        const std::size_t begin = scanner_.position();
        result.extends = scanner_.take_word("extends");
        if (result.extends && !earlier.empty())
            scanner_.fail_at(begin, "only the first parameter may be one that the method \"extends\"");
        result.by_ref = !result.extends && scanner_.take_word("byref");
        result.name = new_name(earlier);
        const bool array = scanner_.take('(');
        if (array && !scanner_.take(')')) scanner_.fail_expecting("\")\" of an array");
        if (!scanner_.take_word("as")) scanner_.fail_expecting("\"as\" and a type");
        const std::size_t type_position = scanner_.position();
        result.type = type();
        result.type.array = array;
        if (result.by_ref && result.type.is_object())
            scanner_.fail_at(type_position, "a ByRef parameter is an integer, double, boolean or color, not " +
                                                quoted(to_string(result.type)));
        result.default_value = default_value(result, !earlier.empty() && earlier.back().default_value);
        return result;
    }

    std::string new_name(const std::vector<Parameter>& earlier) {
        const std::size_t begin = scanner_.position();
        std::string result = name("a parameter's name");
        for (const Parameter& other : earlier)
            if (same_name(other.name, result)) scanner_.fail_at(begin, "a second parameter named " + quoted(result));
        return result;
    }

    std::optional<Literal> default_value(const Parameter& parameter, bool wanted) {
        const std::size_t begin = scanner_.position();
        if (!scanner_.take('=')) {
            if (wanted) scanner_.fail_expecting("\"=\" and a default value, as the parameter before has one");
            return std::nullopt;
        }
        if (parameter.extends || parameter.by_ref)
            scanner_.fail_at(begin, "a ByRef or extends parameter has no default value");
        const std::size_t value_position = scanner_.position();
        const std::string expected = "a default value of type " + to_string(parameter.type);
        const std::optional<Literal> literal = scanner_.take_literal();
        std::optional<Literal> result = literal ? as_default(*literal, parameter.type) : std::nullopt;
        if (!result) {
            scanner_.move_to(value_position);
            scanner_.fail_expecting(expected);
        }
        return result;
    }

    Scanner scanner_;
};

}  // namespace

Type type_named(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, TypeKind>, 5> kBuiltIn = {{
        {"integer", TypeKind::integer},
        {"double", TypeKind::real},
        {"boolean", TypeKind::boolean},
        {"color", TypeKind::color},
        {"string", TypeKind::string},
    }};
    Type result{TypeKind::object, std::string(name), false};
    for (const auto& [built_in, kind] : kBuiltIn)
        if (same_name(built_in, name)) result.kind = kind;
    return result;
}

std::string to_string(const Type& type) { return type.name + (type.array ? "()" : ""); }

DeclarationError::DeclarationError(std::string_view text, std::size_t column, std::string_view what)
    : std::runtime_error("column " + std::to_string(column) + ": " + std::string(what) + ", in the declaration \"" +
                         std::string(text) + '"'),
      column_(column) {}

Declaration parse_declaration(std::string_view text) {
    try {
        return Parser(text).parse();
    } catch (const ScanError& error) {
        throw DeclarationError(text, error.column(), error.what());
    }
}

}  // namespace tarvo::host
