#pragma once

// The plain versions of what many operations share, and the comparison of an operation with its plain version on
// pictures of every kind.

#include <functional>

#include "forms.h"
#include "pictures.h"
#include "plain_image.h"

namespace tarvo::test {

// Edges inclusive, before clipping.
struct Area {
    int left, top, width, height;
    bool has(int x, int y) const { return x >= left && x < left + width && y >= top && y < top + height; }
};

// An area that lies in the picture at least in part, and often reaches out of it.
Area any_area(Random& random, int width, int height);

// What a copied mask holds, by the rules for each pair of depths, where both masks exist.
void plain_copy_mask(const Picture& source, Picture& destination);

// That the unused bit of a 16-bit result is the source's where it is kept, and else clear: colours have no place for
// it.
void expect_unused_bits(const Picture& result, const Picture& source, const std::function<bool(int x, int y)>& kept);

// An operation that changes pixels, each on its own: those of a region, or all as far as a mask says.
struct Adjustment {
    OperationName name;
    bool copies_mask = false;   // the source's, into the result of the form that changes a region
    bool copies_words = false;  // around the region, at 16 bits with the unused bit
};
using PlainChange = std::function<std::uint32_t(std::uint32_t color)>;
using PlainMaskedChange = std::function<std::uint32_t(std::uint32_t color, std::uint32_t mask)>;

// Random pictures of every depth, kind and mask, each with a random rectangle and with none; and wide rectangles. An
// empty picture has no region to change: code 38.
void expect_region_agreement(Session& session, Random& random, const Adjustment& adjustment, const Numbers& numbers,
                             const PlainChange& change);
// Random pictures of every depth and kind, with masks of their own, and random mask arguments of every depth and kind;
// and wide pictures. Of empty pictures no result can be made: code 6.
void expect_mask_agreement(Session& session, Random& random, const Adjustment& adjustment, const Numbers& numbers,
                           const PlainMaskedChange& change);

// In 255ths, as most operations weigh by a mask: a colour that has changed as far as the mask's level says.
std::uint32_t plain_mix_in_255ths(std::uint32_t color, std::uint32_t changed, int level);

}  // namespace tarvo::test
