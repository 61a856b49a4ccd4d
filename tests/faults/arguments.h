#pragma once

// Arguments with which every operation succeeds, whatever its declaration: found by type and name.

#include <string>
#include <vector>

#include "client_pictures.h"

namespace tarvo::test {

// How the picture and client-picture arguments of a call are made.
struct Variant {
    std::string name;
    Shape shape = {};  // of pictures, also of those behind client pictures
    host::Backing mask_backing = host::Backing::graphics_world;
    bool own_memory = false;  // of client pictures: instead of a picture, with the shape's depth and mask
    bool as_picture = false;
};

// The variants that make a difference to the method.
std::vector<Variant> variants_of(const host::Callable& method);
// One for each parameter. What a ByRef variable holds at first is kUntouched.
std::vector<Value> arguments_for(Session& session, Random& random, const host::Callable& method,
                                 const Variant& variant);

inline constexpr int kUntouched = 4711;

}  // namespace tarvo::test
