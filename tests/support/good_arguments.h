#pragma once

// Arguments with which every operation succeeds, found by what is declared and described of them.

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "client_pictures.h"
#include "operation.h"

namespace tarvo::test {

// Of pictures: the last column is beside the rectangles that are selected.
inline constexpr Size kUsualSize = {7, 6};

// What client pictures hold: such a picture, memory of their own, with the shape's depth and mask, or nothing as new
// ones do.
enum class ClientStore { picture, own_memory, nothing };

// How the picture and client-picture arguments of a call are made.
struct Variant {
    std::string name = {};
    Shape shape = {};  // of pictures, also of those behind client pictures
    host::Backing mask_backing = host::Backing::graphics_world;
    Size size = kUsualSize;  // of all pictures, so that they fit each other
    ClientStore store = ClientStore::picture;
    bool as_picture = false;
    bool left_out = false;  // what may be left out has the value that stands for it
};
void PrintTo(const Variant& variant, std::ostream* out);

// An argument that is to have this number.
struct Fixed {
    std::size_t parameter;  // of the callable's
    double number;
};

// What a ByRef variable holds at first.
inline constexpr int kUntouched = 4711;

// One for each parameter. What depends on an argument that is fixed fits it.
std::vector<Value> good_arguments(Session& session, Random& random, const host::Callable& method,
                                  const Variant& variant, const std::optional<Fixed>& fixed = {});

// What is told of the parameter; null for the object in front of the dot.
const describe::Argument* description_of(const host::Callable& method, const host::Parameter& parameter);
// Whether the method is one of the operation's forms that are meant.
bool is_of(const describe::Forms& forms, const host::Callable& method);

// A number as the parameter takes it.
Value number_of(const host::Parameter& parameter, double number);
// The integer beside this one, or the double, in the direction of `step` (1 or -1).
double next_number(const host::Parameter& parameter, double number, int step);
// A bound's value, given the other arguments of the call.
double value_of(const describe::Bound& bound, const host::Callable& method, const std::vector<Value>& arguments);

}  // namespace tarvo::test
