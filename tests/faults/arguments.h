#pragma once

// Arguments with which every operation succeeds, whatever its declaration: found by type and name.

#include <string>
#include <vector>

#include "client_pictures.h"

namespace tarvo::test {

// Of pictures: the last column and row are beside the rectangle that is selected.
inline constexpr Size kUsualSize = {7, 6};

// What client pictures hold: such a picture, memory of their own, with the shape's depth and mask, or nothing as new
// ones do.
enum class ClientStore { picture, own_memory, nothing };

// How the picture and client-picture arguments of a call are made.
struct Variant {
    std::string name;
    Shape shape = {};  // of pictures, also of those behind client pictures
    host::Backing mask_backing = host::Backing::graphics_world;
    Size size = kUsualSize;  // of all pictures, so that they fit each other
    ClientStore store = ClientStore::picture;
    bool as_picture = false;
};

// The variants that make a difference to the method.
std::vector<Variant> variants_of(const host::Callable& method);
// One for each parameter. What a ByRef variable holds at first is kUntouched.
std::vector<Value> arguments_for(Session& session, Random& random, const host::Callable& method,
                                 const Variant& variant);

inline constexpr int kUntouched = 4711;

}  // namespace tarvo::test
