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

// An object value holds a reference. Strings are objects too.
using Value = std::variant<Nil, std::int32_t, double, bool, Color, ObjectRef>;

// "integer", "TRV_Rectangle", "nil": the type as a program would name it.
std::string type_name(const Value& value);

}  // namespace tarvo::host
