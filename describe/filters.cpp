#include "common.h"
#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Argument side(Text name, Text text) {
    return {.name = name, .text = text, .unit = "pixels", .minimum = including(1)};
}

constexpr Argument kWidth = side("width", "the width of the new picture");
constexpr Argument kHeight = side("height", "the height of the new picture");
constexpr Text kBothChecks = "Of a width and a height out of range the height's code is left.";

constexpr Operation kOperations[] = {
    {.name = "TRV_Convolute",
     .summary = "A filter of two kernels, along the rows and then along the columns: blurs, sharpens, finds edges",
     .words = {"convolution", "filter", "blur", "soften", "smooth", "sharpen", "unsharp", "edges", "gaussian", "kernel",
               "noise", "denoise"},
     .arguments = {kRect,
                   {.name = "horiz_convolution", .text = "the kernel along the rows; nil leaves them as they are"},
                   {.name = "vert_convolution", .text = "the kernel along the columns; nil leaves them as they are"}},
     .errors = {kSourceNil,
                kSourceLock,
                kRegionEmpty,
                {5, "the picture between the passes cannot be made or locked"},
                kResult},
     .notes =
         {"A kernel whose coefficients add up to 0 changes nothing: to emphasise edges, let the sum be 1, as in -1, "
          "3, -1.",
          "Taps read beyond the region; beyond the picture they read the pixel at its edge.",
          "At 16 bits the first pass keeps five bits of each channel.",
          "Coefficients whose absolute values add up to 256 or less are computed in half the time."},
     .example = {kChelsea, "TRV_Convolute(nil, convolution(1, 2, 3, 4, 3, 2, 1), convolution(1, 2, 3, 4, 3, 2, 1))"}},

    {.name = "TRV_Pixelate",
     .summary = "A mosaic: square blocks become their mean colour, in a region",
     .words = {"pixelate", "mosaic", "blocks", "censor", "obscure", "anonymize", "blur"},
     .arguments = {kRect,
                   {.name = "pixelation", .text = "the side of a block", .unit = "pixels", .minimum = including(1)}},
     .errors = {kSourceNil,
                kSourceLock,
                kRegionEmpty,
                out_of_range(30, "pixelation"),
                {0, "the result cannot be made or locked"}},
     .notes = {"Blocks end where the picture does, not where the region does: the last ones reach beyond it.",
               "No block begins on the last row or the last column of the region: one that is one pixel wide or high "
               "stays as it is."},
     .example = {kChelsea, "TRV_Pixelate(rect(64, 32, 120, 56), 8)"}},

    {.name = "TRV_CrawlingAnts",
     .summary = "The dashed outline of a selection, one pixel wide, in two colours",
     .words = {"ants", "marching ants", "selection", "outline", "dashes", "border", "frame", "draw"},
     .arguments = {{.name = "rect",
                    .text = "what is outlined, clipped to the picture; nil for all of it",
                    .left_out = "nil"},
                   {.name = "ant_color", .text = "the colour of one half of the dashes"},
                   {.name = "shadow_color", .text = "the colour of the other half"},
                   {.name = "ant_size", .text = "the length of a dash", .unit = "pixels", .minimum = including(1)},
                   {.name = "ant_state",
                    .text = "how far the dashes have crawled",
                    .unit = "pixels",
                    .minimum = including(0),
                    .maximum = excluding(2, "ant_size")}},
     .errors = {kSourceNil,
                kSourceLock,
                kRegionEmpty,
                {46, {}, "ant_size", Gives::result},
                {47, {}, "ant_state", Gives::result},
                {46, "ant_size is out of range and the region is empty"},
                {47, "ant_state is out of range and the region is empty"},
                kResult},
     .notes = {"Called again with the next state, the dashes crawl.",
               "With an ant_size out of range the picture is made without an outline, with an ant_state out of range "
               "with one.",
               "The outline's two halves begin at the top left corner and meet at the bottom right as they happen to."},
     .example = {kCoffee, "TRV_CrawlingAnts(rect(64, 4, 108, 120), &cFFFFFF, &c000000, 4, 0)"}},

    {.name = "TRV_MakeGradient",
     .summary = "A new picture that fades from one colour at the top to another at the bottom",
     .words = {"gradient", "fade", "background", "ramp", "fill", "new", "create", "generate"},
     .arguments = {kWidth,
                   kHeight,
                   {.name = "color1", .text = "the colour at the top"},
                   {.name = "color2", .text = "the colour at the bottom"},
                   kIdleYield},
     .errors = {out_of_range(34, "width"), out_of_range(35, "height"), kResult},
     .notes = {kBothChecks, "A gradient of a single row is black, whatever its colours.",
               "The picture is 32 bits deep and has no mask."},
     .example = {{}, "TRV_MakeGradient(240, 160, &c102040, &cFFD080, 0)"}},

    {.name = "TRV_MakeDoubleGradient",
     .summary = "A new picture that fades from one colour, by way of a second in the middle, to a third",
     .words = {"gradient", "fade", "background", "ramp", "fill", "new", "create", "generate"},
     .arguments = {kWidth,
                   kHeight,
                   {.name = "color1", .text = "the colour at the top"},
                   {.name = "color2", .text = "the colour in the middle"},
                   {.name = "color3", .text = "the colour at the bottom"},
                   kIdleYield},
     .errors = {out_of_range(34, "width"), out_of_range(35, "height"), kResult},
     .notes = {kBothChecks, "The middle colour fills two rows: the last of the upper half and the first of the lower.",
               "A half of a single row is black: so is a picture of one or two rows, and the first row of three.",
               "The picture is 32 bits deep and has no mask."},
     .example = {{}, "TRV_MakeDoubleGradient(240, 160, &c102040, &cFFD080, &c401020, 0)"}},
};

}  // namespace

constinit const Family kFilters{"filters", "Filters, effects and generators", kOperations};

}  // namespace tarvo::describe
