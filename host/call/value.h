#pragma once

// A value of the host's language.

#include <cstdint>
#include <string>
#include <variant>

#include "object.h"

namespace tarvo::host {

struct Nil {
    friend bool operator==(Nil, Nil) = default;
};

struct Color {
    std::uint32_t rgb = 0;  // 0x00RRGGBB
    friend bool operator==(Color, Color) = default;
};

// Returns the colour in the low 24 bits.
constexpr Color color_of(std::uint32_t bits) { return {bits & 0xFFFFFF}; }

// An object value holds a reference. Strings are objects too.
using Value = std::variant<Nil, std::int32_t, double, bool, Color, ObjectRef>;

// A value as a text spells it. Its strings are no objects yet.
using Literal = std::variant<Nil, std::int32_t, double, bool, Color, std::string>;

// Whether a value is nil or a reference to nothing.
bool is_nil(const Value& value);

// Returns the type of a value as a program would name it: "integer", "TRV_Rectangle", "nil".
std::string type_name(const Value& value);
// Returns the class of an object as a program would name it: "picture", "TRV_Rectangle", "integer()".
std::string class_name(const Object& object);

}  // namespace tarvo::host
