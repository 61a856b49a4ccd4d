#pragma once

// How stored pixels are seen: the eight orientations of Exif.

namespace tarvo::host {

// A displayed pixel (x, y) is the stored one at (x, y), or (y, x) when transposed, counted from the far side when
// flipped: `flip_x` along stored rows, `flip_y` across them.
struct Turn {
    bool transposed = false, flip_x = false, flip_y = false;

    bool turns() const { return transposed || flip_x || flip_y; }
};

// Returns the turn of an orientation of 1 to 8; other numbers mean 1.
constexpr Turn turn_of(int orientation) {
    constexpr Turn kTurns[] = {
        {false, false, false},  // 1: as stored
        {false, true, false},   // 2: mirrored left to right
        {false, true, true},    // 3: half a turn
        {false, false, true},   // 4: mirrored top to bottom
        {true, false, false},   // 5: mirrored along the falling diagonal
        {true, false, true},    // 6: a quarter turn clockwise
        {true, true, true},     // 7: mirrored along the rising diagonal
        {true, true, false},    // 8: a quarter turn anticlockwise
    };
    return orientation >= 1 && orientation <= 8 ? kTurns[orientation - 1] : kTurns[0];
}

}  // namespace tarvo::host
