#pragma once

// Pictures of every kind, filled with random pixels, for the judge.

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "session.h"

namespace tarvo::test {

using Random = std::mt19937;

// What a picture is like, but for its size and pixels.
struct Shape {
    int depth = 32;
    host::Backing backing = host::Backing::graphics_world;
    int row_padding = 0;
    bool without_color_table = false;
    int mask_depth = 0;  // 0 for no mask

    std::string name() const;
};

// Every depth and kind that operations take as source, without masks.
const std::vector<Shape>& source_shapes();
// Every depth that masks come in: 0 (none), 1, 2, 4, 8, 16, 24, 32.
const std::vector<int>& mask_depths();

struct Size {
    int width, height;
    bool empty() const { return width < 1 || height < 1; }
};
std::string name_of(const Size& size);
// Sides of 0, and bounds that a program has turned inside out: pictures without pixels.
const std::vector<Size>& empty_sizes();

// Any number from `low` to `high`.
int any_of(Random& random, int low, int high);
std::uint32_t any_color(Random& random);
// Random stored bytes, padding and top bytes included; so also in the mask.
void scribble(Picture& picture, Random& random);
ObjectRef random_picture(Session& session, Random& random, const Shape& shape, int width, int height);
// A grey picture of the given depth, as operations take for a mask argument.
ObjectRef random_mask(Session& session, Random& random, int depth, int width, int height);
// All bytes of a picture and its mask, to see that an operation has left it as it was.
std::vector<std::uint8_t> all_bytes(const ObjectRef& picture);

}  // namespace tarvo::test
