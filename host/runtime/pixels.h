#pragma once

// Stored pixels of any depth from 1 to 32 bits. They are packed from the left, the most significant bit first.

#include <cstdint>
#include <span>

#include "platform.h"

namespace tarvo::host {

std::uint32_t load_pixel(const std::uint8_t* row, int x, int depth);
void store_pixel(std::uint8_t* row, int x, int depth, std::uint32_t value);
// Fills the bytes with pixels of one stored value. Bits behind the last whole pixel are filled as if one began there.
void fill_pixels(std::span<std::uint8_t> bytes, int depth, std::uint32_t value);

// Convert a stored value to a colour 0x00RRGGBB and back. `colors` is the colour table of depths up to 8; without one,
// values are grey levels. At 1 bit a set bit is black. A depth that means nothing reads black, and stores the colour's
// low bits.
std::uint32_t color_of(std::uint32_t value, int depth, std::span<const RGBColor> colors);
std::uint32_t value_of(std::uint32_t color, int depth, std::span<const RGBColor> colors);

// Returns the colour 0x00RRGGBB of an entry of a colour table.
std::uint32_t packed_color(const RGBColor& color);

}  // namespace tarvo::host
