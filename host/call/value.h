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

// 0x00RRGGBB.
struct Color {
    std::uint32_t rgb = 0;
    friend bool operator==(Color, Color) = default;
};

// The low 24 bits.
constexpr Color color_of(std::uint32_t bits) { return {bits & 0xFFFFFF}; }

// An object value holds a reference. Strings are objects too.
using Value = std::variant<Nil, std::int32_t, double, bool, Color, ObjectRef>;

// A value as text spells it: a string has no object yet.
using Literal = std::variant<Nil, std::int32_t, double, bool, Color, std::string>;

// Nil, or a reference to nothing.
bool is_nil(const Value& value);

// "integer", "TRV_Rectangle", "nil": the type as a program would name it.
std::string type_name(const Value& value);
// "picture", "TRV_Rectangle", "integer()": an object's type likewise.
std::string class_name(const Object& object);

}  // namespace tarvo::host
