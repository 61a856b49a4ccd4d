#include "shape.h"

#include <cstdio>

namespace tarvo::host {
namespace {

std::string shape_of(const Type& type) {
    switch (type.kind) {
        case TypeKind::integer: return "<integer>";
        case TypeKind::real: return "<double>";
        case TypeKind::boolean: return "<boolean>";
        case TypeKind::color: return "<color>";
        case TypeKind::string: return "<string>";
        case TypeKind::object: return type.name;
    }
    return "?";
}

struct LiteralShape {
    std::string operator()(Nil) const { return "nil"; }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(std::int32_t value) const { return std::to_string(value); }
    std::string operator()(double value) const { return formatted("%#g", value); }
    std::string operator()(Color value) const { return formatted("&c%06X", value.rgb); }
    std::string operator()(const std::string& value) const { return formatted("\"%s\"", value.c_str()); }

    template <class T>
    static std::string formatted(const char* format, T value) {
        char text[64];
        std::snprintf(text, sizeof text, format, value);
        return text;
    }
};

}  // namespace

std::string shape_of(const Declaration& declaration) {
    std::string text = declaration.name;
    for (const Parameter& parameter : declaration.parameters) {
        text += parameter.extends ? " ^" : parameter.by_ref ? " &" : " ";
        text += parameter.name + (parameter.type.array ? "[]:" : ":") + shape_of(parameter.type);
        if (parameter.default_value) text.append("=").append(std::visit(LiteralShape{}, *parameter.default_value));
    }
    if (declaration.result) text += " -> " + shape_of(*declaration.result);
    return text;
}

}  // namespace tarvo::host
