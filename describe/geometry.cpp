#include "common.h"
#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Argument side(Text name, Text text) {
    return {.name = name, .text = text, .unit = "pixels", .minimum = including(1)};
}

constexpr Argument kFrame{.name = "frame_color",
                          .text =
                              "the colour of what the picture does not cover; the forms without it leave that "
                              "transparent"};
constexpr Argument kRotation{.name = "rotation",
                             .text = "the turn, clockwise",
                             .unit = "degrees",
                             .minimum = including(0),
                             .maximum = excluding(360)};
constexpr Argument kShear{.name = "shear",
                          .text = "how much farther each line is shifted than the next one",
                          .unit = "pixels",
                          .minimum = including(-1),
                          .maximum = including(1)};

constexpr Error kNoSize{0, {}, "width"};
constexpr Error kNoHeight{0, {}, "height"};
constexpr Error kNotMade{0, "a picture or mask cannot be made or locked"};

constexpr Text kLastCodeStays = "All checks of arguments run, and the last one that fails leaves its code.";
constexpr Text kMadeOpaque =
    "Without a frame colour the host makes a mask where the source has none, an opaque one: it looks the same "
    "afterwards.";
constexpr Text kPi = "Pi counts as 3.14159 here.";

constexpr Forms kWithMask = forms_without("frame_color");

constexpr Operation kOperations[] = {
    {.name = "TRV_FlipRotate",
     .summary = "Mirrors a picture and turns it by quarter turns",
     .words = {"flip", "mirror", "rotate", "turn", "transpose", "orientation", "90", "180", "270", "upside down"},
     .arguments = {{.name = "flip_h", .text = "mirror left and right, before the turn"},
                   {.name = "flip_v", .text = "mirror top and bottom, before the turn"},
                   {.name = "rotation",
                    .text = "the turn, clockwise",
                    .unit = "quarter turns",
                    .minimum = including(0),
                    .maximum = including(3)},
                   kYield},
     .yields = kEveryForm,
     .keeps_mask = kEveryForm,
     .errors = {kSourceNil,
                out_of_range(31, "rotation"),
                kSourceLock,
                {9, "the source's mask cannot be locked"},
                {6, "the result, or the result's mask, cannot be made or locked"}},
     .notes = {kLastCodeStays, "Both flips and a half turn are a copy.",
               "With a mask the work is done twice, and the pixels for yield are counted anew for the mask.",
               "Single bits are seen only with both flips or none: with one flip 1-bit pictures come out white, 16-bit "
               "results of them black."},
     .example = {kChelsea, "TRV_FlipRotate(true, false, 1, 0)"}},

    {.name = "TRV_ShearHorizontal",
     .summary = "Shifts the rows of a picture sideways, each a little more than the one below it",
     .words = {"shear", "skew", "slant", "tilt", "italic"},
     .arguments = {side("width", "the result's width; the picture lies in its middle"),
                   side("height", "the result's height"), kShear, kFrame, kYield},
     .yields = kEveryForm,
     .keeps_mask = kWithMask,
     .errors = {kSourceNil, out_of_range(33, "shear"), kNoSize, kNoHeight, kNotMade},
     .notes = {kLastCodeStays, "With a positive shear the top row is shifted farthest, to the right.",
               "A shear that is not a number is out of range.", kMadeOpaque,
               "A result whose mask cannot be locked is returned as it was made."},
     .example = {kRocket, "TRV_ShearHorizontal(280, 160, 0.25, &cFFFFFF, 0)"}},

    {.name = "TRV_ShearVertical",
     .summary = "Shifts the columns of a picture up and down, each a little more than the one beside it",
     .words = {"shear", "skew", "slant", "tilt"},
     .arguments = {side("width", "the result's width; the picture lies in its middle"),
                   side("height", "the result's height"), kShear, kFrame, kYield},
     .yields = kEveryForm,
     .keeps_mask = kWithMask,
     .errors = {kSourceNil, out_of_range(33, "shear"), kNoSize, kNoHeight, kNotMade},
     .notes = {kLastCodeStays, "With a positive shear the leftmost column is shifted farthest, down.",
               "A shear that is not a number is out of range.", kMadeOpaque,
               "A result whose mask cannot be locked is returned as it was made."},
     .example = {kRocket, "TRV_ShearVertical(240, 220, 0.25, &cFFFFFF, 0)"}},

    {.name = "TRV_FreeRotateByShear",
     .summary = "Turns a picture by any angle, smoothly, with transparent or coloured corners",
     .words = {"rotate", "turn", "angle", "straighten", "tilt", "degrees", "level"},
     .arguments = {kRotation, kFrame, kYield},
     .yields = kEveryForm,
     .keeps_mask = kWithMask,
     .errors = {kSourceNil, out_of_range(31, "rotation"), kNotMade},
     .notes = {kLastCodeStays, "Whole quarter turns give exactly the quarter-turned picture.",
               "A rotation that is not a number gives nil and no code.", kMadeOpaque,
               "A mask of 2, 4 or 8 bits cannot be turned along: the result is nil.",
               "Each step on the way counts its own pixels for yield.", kPi},
     .example = {kRocket, "TRV_FreeRotateByShear(30.0, 0)"}},

    {.name = "TRV_FreeRotateDirect",
     .summary = "Turns a picture by any angle in one pass, with smooth edges in a frame of one colour",
     .words = {"rotate", "turn", "angle", "straighten", "tilt", "degrees", "level"},
     .arguments = {kRotation, {.name = "frame_color", .text = "the colour of the corners"}},
     .errors = {kSourceNil,
                out_of_range(31, "rotation"),
                kSourceLock,
                {9, "the source's mask cannot be locked"},
                {6, "the quarter-turned picture or the result cannot be made or locked"},
                {5, "the quarter-turned picture cannot be locked again"}},
     .notes = {"A whole quarter turn gives what TRV_FlipRotate gives, the mask included; other turns keep no mask.",
               "A nil source and a rotation out of range leave 31. A rotation that is not a number gives 31, for a nil "
               "source 2.",
               kPi},
     .example = {kRocket, "TRV_FreeRotateDirect(30.0, &cFFFFFF)"}},

    {.name = "TRV_Stretch",
     .summary = "Makes a picture larger or smaller, to any width and height",
     .words = {"stretch", "resize", "scale", "thumbnail", "zoom", "enlarge", "shrink", "reduce", "resample", "size",
               "smaller", "larger"},
     .arguments = {side("width", "the result's width"), side("height", "the result's height"), kYield, kAsPicture},
     .yields = kEveryForm,
     .keeps_mask = kEveryForm,
     .scales = true,
     .errors =
         {kSourceNil,
          out_of_range(34, "width"),
          out_of_range(35, "height"),
          kSourceLock,
          {0, "the resulting picture cannot be made or locked", {}, Gives::nothing, forms_with("p")},
          {6, "the resulting client picture cannot be made", {}, Gives::nothing, forms_with("cp")},
          kClientUnpainted,
          {4,
           "the source's or the result's mask cannot be locked: the result is returned, unpainted",
           {},
           Gives::result},
          {5, "a picture on the way cannot be made or locked: the result is returned, unpainted", {}, Gives::result}},
     .notes =
         {kLastCodeStays, "The same size is a copy.",
          "The proportions are not kept: ask for a height that fits the width.",
          "Pictures of 2, 4 and 8 bits cannot be stretched: nil and no code, or a client picture that stays white."},
     .example = {kCoffee, "TRV_Stretch(120, 160, 0)"}},

    {.name = "TRV_Trim",
     .summary = "Cuts a rectangle out of a picture, or puts a frame around it",
     .words = {"trim", "crop", "cut", "extract", "clip", "pad", "border", "frame", "canvas", "margin", "copy"},
     .arguments = {{.name = "trim_rect",
                    .text = "the area, at least 1 by 1; it may reach beyond the picture; nil for all of the picture",
                    .left_out = "nil"},
                   {.name = "frame_color", .text = "the colour beyond the picture"}},
     .keeps_mask = forms_with("p"),
     .errors = {kSourceNil,
                kSourceLock,
                {39, "the area is none: a width or height below 1, or edges that 32 bits do not hold"},
                kResult},
     .notes =
         {"Without a rectangle it is a copy, at least 16 bits deep, with its mask.",
          "The mask is transparent on rows beyond the picture, but beside it, on the picture's own rows, it has the "
          "frame's colour.",
          "A mask that cannot be locked is left out, without a code.",
          "A resulting client picture is in own memory and has no mask."},
     .example = {kChelsea, "TRV_Trim(rect(64, -10, 150, 180), &cFFB000)"}},
};

}  // namespace

constinit const Family kGeometry{"geometry", "Geometry", kOperations};

}  // namespace tarvo::describe
