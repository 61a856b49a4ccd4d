#include "common.h"
#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Argument kOverlay{.name = "overlay", .text = "the picture on top, of any size"};
constexpr Argument kLeft{
    .name = "left", .text = "the source's column at which the overlay begins; may be negative", .unit = "pixels"};
constexpr Argument kTop{
    .name = "top", .text = "the source's row at which the overlay begins; may be negative", .unit = "pixels"};

constexpr Error kOverlayNil{13, "the overlay is nil", {}, Gives::nothing, forms_with("overlay")};
constexpr Error kOverlayLock{14, "the overlay cannot be locked", {}, Gives::nothing, forms_with("overlay")};

// The one of the three forms that lays a picture over a picture.
constexpr Forms kOverPicture = forms_with("overlay", "cp");

constexpr Operation kOperations[] = {
    {.name = "TRV_Add",
     .summary = "The sum of two pictures of one size, channel by channel, modulo 256",
     .words = {"add", "sum", "plus", "merge", "combine", "arithmetic"},
     .arguments = {{.name = "addend", .text = "the second picture, of the source's size"}, kYield, kAsPicture},
     .yields = kEveryForm,
     .errors = {kSourceNil,
                {18, "the addend is nil"},
                kSourceLock,
                {19, "the addend cannot be locked"},
                {20, "the addend has another size than the source"},
                kResult,
                kClientUnpainted},
     .notes = {"Nothing is clamped: 200 + 100 is 44.", "The resulting client picture has a mask, all zero."},
     .example = {kRocket, "TRV_Add(docs/pictures/rocket.png, 0)"}},

    {.name = "TRV_Subtract",
     .summary = "The difference of two pictures of one size, channel by channel, modulo 256",
     .words = {"subtract", "minus", "difference", "combine", "arithmetic"},
     .arguments = {{.name = "subtractend", .text = "the second picture, of the source's size"}, kYield, kAsPicture},
     .yields = kEveryForm,
     .errors = {kSourceNil,
                {21, "the subtractend is nil"},
                kSourceLock,
                {22, "the subtractend cannot be locked"},
                {23, "the subtractend has another size than the source"},
                kResult,
                kClientUnpainted},
     .notes = {"Nothing is clamped: 10 - 20 is 246.", "A picture subtracted from itself is black."},
     .example = {kCoffee, "TRV_Subtract(docs/pictures/rocket.png, 0)"}},

    {.name = "TRV_Compare",
     .summary = "Whether two pictures hold the same pixels, everywhere or in a region",
     .words = {"compare", "equal", "same", "identical", "diff"},
     .arguments = {{.name = "compare", .text = "the second picture"},
                   {.name = "rect",
                    .text = "the region, clipped to the picture; nil for all of it. It may be empty: then the answer "
                            "is true",
                    .left_out = "nil"}},
     .errors = {{49, "compare is nil; this replaces 2"}, kSourceNil, kSourceLock, {50, "compare cannot be locked"}},
     .notes =
         {"Pictures of different sizes or depths give false and no code.",
          "The last row and the last column of the region are never looked at: pictures that are one pixel wide or "
          "high are equal whatever they show.",
          "A picture equals itself without being locked."},
     .example = {kCoffee, "TRV_Compare(docs/pictures/coffee.png, nil)"}},

    {.name = "TRV_Difference",
     .summary = "A map of where two pictures differ",
     .words = {"difference", "compare", "diff", "changes"},
     .arguments = {{.name = "compare", .text = "the second picture, of any size"}},
     .errors = {{0, "a picture is nil or cannot be locked, or the map cannot be made or locked"}},
     .notes =
         {"White: equal. Red: different. Pale green: only the picture has a pixel there. Pale blue: the picture has "
          "none.",
          "It never changes the last error's code, also not to 0.",
          "At 32 bits the unused top byte counts: TRV_Compare can find equal what is red here."},
     .example = {kCoffee, "TRV_Difference(docs/pictures/threshold.png)"}},

    {.name = "TRV_Composite",
     .summary = "Lays a picture over another at a place, or a colour over a region, as transparent as asked for",
     .words = {"composite", "overlay", "blend", "merge", "paste", "watermark", "opacity", "alpha", "tint", "combine",
               "mix"},
     .arguments = {kRect,
                   kOverlay,
                   {.name = "overlay_color", .text = "the colour on top"},
                   {.name = "overlay_fraction",
                    .text = "how much of the overlay shows",
                    .minimum = including(0),
                    .maximum = including(1)},
                   kLeft,
                   kTop,
                   {.name = "yield",
                    .text = "give the host control about every so many pixels, at 32 bits only, and with a picture on "
                            "top only where that has a mask; 0 or below: never",
                    .unit = "pixels",
                    .left_out = "0"},
                   kAsPicture},
     .yields = forms_with("yield"),
     .keeps_mask = kOverPicture,
     .errors = {kSourceNil,
                kOverlayNil,
                out_of_range(15, "overlay_fraction"),
                kSourceLock,
                kOverlayLock,
                {38, "the region is empty", {}, Gives::nothing, forms_with("rect")},
                kResult,
                kClientUnpainted,
                mask_not_copied(kOverPicture)},
     .notes = {"What of the overlay lies outside of the source is cut off.",
               "An overlay's own mask counts when both pictures have 32 or 24 bits: black shows the overlay, white the "
               "source. At 24 bits it is read at the result's row and column, not the overlay's.",
               "An overlay's mask that cannot be locked is no error: the result is returned unpainted.",
               "Under a colour the weights add up to 255, unless the fraction is a whole number of 256ths: the region "
               "gets a trace darker.",
               "A fraction that is not a number is accepted and weighs nothing: the source stays; under a colour the "
               "region becomes black."},
     .example = {kCoffee, "TRV_Composite(docs/pictures/chelsea.png, 0.6, 80, 24, 0)"}},

    {.name = "TRV_CompositeWithMask",
     .summary = "Lays a picture over another at a place, as much of each pixel as a mask says",
     .words = {"composite", "overlay", "blend", "merge", "paste", "alpha", "mask", "combine", "cut out"},
     .arguments = {kOverlay,
                   {.name = "mask", .text = "a picture of the overlay's size, of 1, 2, 4, 8, 16, 24 or 32 bits"},
                   kLeft,
                   kTop,
                   kIdleYield},
     .errors = {kSourceNil,
                kOverlayNil,
                kMaskNil,
                kSourceLock,
                kOverlayLock,
                {16,
                 "the overlay lies wholly outside the source; the mask is checked all the same, and its code "
                 "replaces this one"},
                kMaskLock,
                {10, "the mask has another size than the overlay"},
                kMaskDepth,
                kResult},
     .notes = {"White mask pixels show the overlay, black ones the source: the opposite of a picture's own mask.",
               "A mask value of 128 weighs 129 of 256, one of 127 weighs 127."},
     .example = {kRocket, "TRV_CompositeWithMask(docs/pictures/chelsea.png, docs/pictures/fade.png, 0, 0, 0)"}},

    {.name = "TRV_Transition",
     .summary = "One frame of a cross-fade from one picture to another, with a third beneath",
     .words = {"transition", "fade", "crossfade", "dissolve", "blend", "mix", "animation", "combine"},
     .arguments = {{.name = "overlay_a", .text = "the picture that a fraction of 1 shows, of the picture's size"},
                   {.name = "overlay_b", .text = "the picture that a fraction of 0 shows, of the picture's size"},
                   {.name = "overlay_a_fraction",
                    .text = "how far the transition has come",
                    .minimum = including(0),
                    .maximum = including(1)}},
     .errors = {kSourceNil,
                {13, "an overlay is nil"},
                out_of_range(15, "overlay_a_fraction"),
                kSourceLock,
                {14, "an overlay cannot be locked"},
                {17, "an overlay has another size than the picture"},
                kResult},
     .notes =
         {"Unless the fraction is a whole number of 256ths the weights add up to 255, twice: white between white and "
          "white is then 253.",
          "A fraction that is not a number is accepted, and gives black."},
     .example = {"docs/pictures/make-gradient.png",
                 "TRV_Transition(docs/pictures/chelsea.png, docs/pictures/coffee.png, 0.5)"}},
};

}  // namespace

constinit const Family kCombine{"combine", "Pictures combined", kOperations};

}  // namespace tarvo::describe
