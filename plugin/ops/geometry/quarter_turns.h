#pragma once

// The kernels that mirror and turn. The number in a name is the degrees clockwise; H and V tell what is mirrored before
// the turn, left and right or top and bottom. Each kernel moves every pixel from a locked source to a locked result of
// the turned size. The sixteen combinations are only eight mappings, so eight of the names are second names.

#include <cstdint>

#include "picture.h"
#include "region.h"

namespace tarvo::plugin {

using QuarterTurn = void(const TRV_Picture& source, TRV_Picture& result, int yield);

// What is mirrored: left and right, or top and bottom.
struct Flips {
    bool horizontal = false, vertical = false;
};

// Returns the kernel for mirroring and then turning by 0 to 3 quarter turns clockwise.
QuarterTurn& quarter_turn(int turns, Flips flips = {});
// Whether width and height change places.
constexpr bool swaps_sides(int turns) { return turns % 2 != 0; }

// Returns the size of a picture after quarter turns.
inline Size turned_size(const TRV_Picture& source, int turns) {
    const auto [width, height] = size_of(source);
    return swaps_sides(turns) ? Size{height, width} : Size{width, height};
}

}  // namespace tarvo::plugin

void Priv_Rotate0(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate0_H(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate0_V(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate0_HV(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate90(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate90_H(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate90_V(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate90_HV(const TRV_Picture& source, TRV_Picture& result, int yield);

void Priv_Rotate180(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate180_H(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate180_V(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate180_HV(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate270(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate270_H(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate270_V(const TRV_Picture& source, TRV_Picture& result, int yield);
void Priv_Rotate270_HV(const TRV_Picture& source, TRV_Picture& result, int yield);
