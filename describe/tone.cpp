#include "common.h"
#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr Argument channel(Text name, Text text) {
    return {.name = name, .text = text, .minimum = including(0), .maximum = including(255)};
}

constexpr Argument delta(Text name, Text text) {
    return {.name = name, .text = text, .minimum = including(-255), .maximum = including(255)};
}

constexpr Argument scale(Text name, Text text, double limit) {
    return {.name = name, .text = text, .minimum = including(0), .maximum = excluding(limit)};
}

constexpr Argument kHue{.name = "hue_degrees",
                        .text = "the turn: 60 from red to yellow, 120 from red to green",
                        .unit = "degrees",
                        .minimum = excluding(-360),
                        .maximum = excluding(360)};

constexpr Argument kDarker{.name = "darker", .text = "true: darker pixels match; false: lighter ones"};
constexpr Argument kAndThreshold{.name = "and_threshold", .text = "true: all channels must pass; false: one is enough"};
constexpr Argument kThreshold{.name = "threshold", .text = "the colour to compare with"};

constexpr Error kMatrixNil{24, "the matrix is nil, or an object that holds none", {}, Gives::nothing, forms_with("cm")};

constexpr Text kDeclaredAsPicture = "The forms on client pictures give a client picture, whatever they declare.";
constexpr Text kAlsoPlain =
    "The same declaration is also registered as a plain function: called so, it takes its first argument for the "
    "picture and fails with a code.";
constexpr Text kMatrixCounts =
    "Of a missing picture, mask and matrix the matrix counts: its code replaces those before it.";

// The curve's upper segment is made of the product of white, the centre and what the factor adds to 1, in 256ths. A
// centre at white has none.
constexpr Caution upper_segment_wraps(Text factor, Part channel) {
    constexpr double kWhite = 65280, kMost = 2147483647;
    return {.argument = factor,
            .text =
                "its product with the centre does not fit in 32 bits and wraps: values above the centre come out "
                "wrong",
            .when = {{.product = {{"center", channel, kWhite}, {factor, Part::value, 256, -256}},
                      .minimum = including(-kMost - 1),
                      .maximum = including(kMost),
                      .outside = true},
                     {.product = {{"center", channel}}, .maximum = including(254)}}};
}

constexpr Caution kGammaCautions[] = {upper_segment_wraps("red_factor", Part::red),
                                      upper_segment_wraps("green_factor", Part::green),
                                      upper_segment_wraps("blue_factor", Part::blue)};

constexpr Operation kOperations[] = {
    {.name = "TRV_AdjustContrast",
     .summary = "More or less contrast about a centre colour, in a region",
     .words = {"contrast", "levels", "tone", "flatten"},
     .arguments = {kRect,
                   {.name = "center", .text = "the colour that stays as it is"},
                   channel("red_factor", "how far red is stretched: above 1 more contrast, below 1 less"),
                   channel("green_factor", "how far green is stretched"),
                   channel("blue_factor", "how far blue is stretched"),
                   kYield,
                   kAsPicture},
     .yields = kEveryForm,
     .keeps_mask = kEveryForm,
     .errors = {kSourceNil, out_of_range(40, "red_factor"), out_of_range(41, "green_factor"),
                out_of_range(42, "blue_factor"), kSourceLock, kRegionEmpty, kResult, kClientUnpainted,
                mask_not_copied()},
     .notes = {"A factor of 1 changes nothing, one of 0 gives the centre colour.",
               "The distance from the centre is rounded toward minus infinity: with factor 0.5 about 100, 99 stays 99.",
               "A factor that is not a number is accepted, and gives black or the centre."},
     .example = {kCoffee, "TRV_AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6, 0)"}},

    {.name = "TRV_AdjustContrastWithMask",
     .summary = "More or less contrast about a centre colour, as far as a mask says",
     .words = {"contrast", "levels", "tone", "mask"},
     .arguments = {kMask,
                   {.name = "center", .text = "the colour that stays as it is"},
                   channel("red_factor", "how far red is stretched: above 1 more contrast, below 1 less"),
                   channel("green_factor", "how far green is stretched"),
                   channel("blue_factor", "how far blue is stretched"),
                   kYield,
                   kAsPicture},
     .yields = kEveryForm,
     .errors = {kSourceNil, kMaskNil, out_of_range(40, "red_factor"), out_of_range(41, "green_factor"),
                out_of_range(42, "blue_factor"), kSourceLock, kMaskLock, kMaskSize, kMaskDepth, kResult,
                kClientUnpainted},
     .notes = {"White mask pixels take all of the change, black ones none.",
               "A mask value of 128 weighs 129 of 256, one of 127 weighs 127.",
               "A factor that is not a number is accepted, and gives black or the centre."},
     .example = {kCoffee, "TRV_AdjustContrastWithMask(docs/pictures/fade.png, &c808080, 1.6, 1.6, 1.6, 0)"}},

    {.name = "TRV_GetAverageContrast",
     .summary = "How far a region's pixels lie from a centre colour, on average",
     .words = {"contrast", "mean", "average", "measure", "statistics"},
     .arguments = {kRect,
                   {.name = "center", .text = "the colour that distances are taken from"},
                   channel("red_contrast", "gets the mean distance of red, fractions cut off"),
                   channel("green_contrast", "gets that of green"),
                   channel("blue_contrast", "gets that of blue"),
                   kYield},
     .yields = kEveryForm,
     .errors = {kSourceNil, kSourceLock, kRegionEmpty},
     .example = {kCoffee, "TRV_GetAverageContrast(nil, &c808080, r, g, b, 0)"}},

    {.name = "TRV_AdjustGamma",
     .summary = "Brightens or darkens the middle tones, in a region",
     .words = {"gamma", "curve", "brighten", "darken", "lighten", "brightness", "tone", "levels"},
     .arguments = {kRect,
                   {.name = "center", .text = "the colour at whose values the curves bend"},
                   channel("red_factor", "how far the bend of red is moved: above 1 brighter, below 1 darker"),
                   channel("green_factor", "how far the bend of green is moved"),
                   channel("blue_factor", "how far the bend of blue is moved"),
                   kIdleYield,
                   kAsPicture},
     .errors = {kSourceNil, out_of_range(40, "red_factor"), out_of_range(41, "green_factor"),
                out_of_range(42, "blue_factor"), kSourceLock, kRegionEmpty, kResult, kClientUnpainted},
     .notes = {"The curve is two straight lines, from black to the bend and from the bend to white; a factor of 1 "
               "changes nothing.",
               "Products that do not fit in 32 bits wrap: about a centre of 128, factors above 2 turn values over the "
               "centre black.",
               "White can come out as 254: fractions are cut off three times on the way.",
               "A factor that is not a number is accepted, and gives what the most negative integer gives.",
               kDeclaredAsPicture},
     .cautions = kGammaCautions,
     .example = {kRocket, "TRV_AdjustGamma(nil, &c404040, 2.5, 2.5, 2.5, 0)"}},

    {.name = "TRV_AdjustGammaWithMask",
     .summary = "Brightens or darkens the middle tones, as far as a mask says",
     .words = {"gamma", "curve", "brighten", "darken", "lighten", "brightness", "tone", "levels", "mask"},
     .arguments = {kMask,
                   {.name = "center", .text = "the colour at whose values the curves bend"},
                   channel("red_factor", "how far the bend of red is moved: above 1 brighter, below 1 darker"),
                   channel("green_factor", "how far the bend of green is moved"),
                   channel("blue_factor", "how far the bend of blue is moved"),
                   kIdleYield,
                   kAsPicture},
     .errors = {kSourceNil, kMaskNil, out_of_range(40, "red_factor"), out_of_range(41, "green_factor"),
                out_of_range(42, "blue_factor"), kSourceLock, kMaskLock, kMaskSize, kMaskDepth, kResult,
                kClientUnpainted},
     .notes = {"White mask pixels take all of the change, black ones none.",
               "Products that do not fit in 32 bits wrap: about a centre of 128, factors above 2 turn values over the "
               "centre black.",
               "A factor that is not a number is accepted, and gives what the most negative integer gives.",
               kDeclaredAsPicture},
     .cautions = kGammaCautions,
     .example = {kCoffee, "TRV_AdjustGammaWithMask(docs/pictures/fade.png, &c808080, 1.4, 1.4, 1.4, 0)"}},

    {.name = "TRV_AdjustHSV",
     .summary = "Turns the hue, scales saturation and brightness, in a region; inverts the picture if asked to",
     .words = {"hue", "saturation", "brightness", "color", "colour", "tint", "vivid", "grey", "greyscale", "desaturate",
               "negative", "invert"},
     .arguments = {kRect,
                   kHue,
                   scale("saturation_factor", "0 for greys, 1 for no change", 1000),
                   scale("brightness_factor", "0 for black, 1 for no change", 1000),
                   {.name = "negative", .text = "invert the whole picture, pixels outside the region too"},
                   kIdleYield,
                   kAsPicture},
     .keeps_mask = kEveryForm,
     .errors = {kSourceNil, out_of_range(43, "hue_degrees"), out_of_range(44, "saturation_factor"),
                out_of_range(45, "brightness_factor"), kSourceLock, kRegionEmpty, kResult, kClientUnpainted,
                mask_not_copied()},
     .notes =
         {"0, 1, 1 can change a channel by a step: the integers lose fractions, and full saturation comes out as "
          "1023 of 1024.",
          "Turning the hue keeps the largest channel, not the brightness that the eye sees. Greys stay grey.",
          "Not a number is accepted: as hue it gives black but for greys, as saturation greys, as brightness black.",
          kDeclaredAsPicture},
     .example = {kCoffee, "TRV_AdjustHSV(nil, 120.0, 1.2, 1.0, false, 0)"}},

    {.name = "TRV_AdjustHSVWithMask",
     .summary = "Turns the hue, scales saturation and brightness, as far as a mask says",
     .words = {"hue", "saturation", "brightness", "color", "colour", "tint", "vivid", "grey", "greyscale", "desaturate",
               "mask"},
     .arguments = {kMask, kHue, scale("saturation_factor", "0 for greys, 1 for no change", 10),
                   scale("brightness_factor", "0 for black, 1 for no change", 10), kIdleYield, kAsPicture},
     .errors = {kSourceNil, kMaskNil, out_of_range(43, "hue_degrees"), out_of_range(44, "saturation_factor"),
                out_of_range(45, "brightness_factor"), kSourceLock, kMaskLock, kMaskSize, kMaskDepth, kResult,
                kClientUnpainted},
     .notes =
         {"White mask pixels take all of the change, black ones none.",
          "Not a number is accepted: as hue it gives black but for greys, as saturation greys, as brightness black.",
          kDeclaredAsPicture},
     .example = {kCoffee, "TRV_AdjustHSVWithMask(docs/pictures/fade.png, 180.0, 1.0, 1.0, 0)"}},

    {.name = "TRV_GetAverageHSV",
     .summary = "A region's average hue, saturation and brightness",
     .words = {"hue", "saturation", "brightness", "mean", "average", "measure", "statistics"},
     .arguments = {kRect,
                   {.name = "hue_degrees",
                    .text = "gets the hue of the region's mean colour; -1 for black, not a number for another grey",
                    .unit = "degrees"},
                   {.name = "saturation", .text = "gets the mean saturation, 0 to 1"},
                   {.name = "brightness",
                    .text = "gets the mean of the largest channels, of 256: white has 0.99609375"},
                   kIdleYield},
     .errors = {kSourceNil, kSourceLock, kRegionEmpty},
     .example = {kCoffee, "TRV_GetAverageHSV(nil, h, s, v, 0)"}},

    {.name = "TRV_AdjustRGB",
     .summary = "Adds a number to each channel, or mixes the channels by a matrix, in a region",
     .words = {"brightness", "brighten", "darken", "color", "colour", "balance", "tint", "sepia", "greyscale", "matrix",
               "channel"},
     .arguments = {kRect,
                   delta("red_delta", "what is added to red"),
                   delta("green_delta", "what is added to green"),
                   delta("blue_delta", "what is added to blue"),
                   {.name = "cm", .text = "how much of each source channel goes into each result channel"}},
     .errors = {kSourceNil, kMatrixNil, out_of_range(40, "red_delta"), out_of_range(41, "green_delta"),
                out_of_range(42, "blue_delta"), kSourceLock, kRegionEmpty, kResult},
     .notes = {"Results are clamped to 0 to 255.", kMatrixCounts, kAlsoPlain},
     .example = {kChelsea, "TRV_AdjustRGB(nil, 40, 0, -60)"}},

    {.name = "TRV_AdjustRGBWithMask",
     .summary = "Adds a number to each channel, or mixes the channels by a matrix, as far as a mask says",
     .words = {"brightness", "brighten", "darken", "color", "colour", "balance", "tint", "sepia", "matrix", "channel",
               "mask"},
     .arguments = {kMask,
                   delta("red_delta", "what is added to red"),
                   delta("green_delta", "what is added to green"),
                   delta("blue_delta", "what is added to blue"),
                   {.name = "cm", .text = "how much of each source channel goes into each result channel"}},
     .errors = {kSourceNil, kMaskNil, kMatrixNil, out_of_range(40, "red_delta"), out_of_range(41, "green_delta"),
                out_of_range(42, "blue_delta"), kSourceLock, kMaskLock, kMaskSize, kMaskDepth, kResult},
     .notes = {"White mask pixels take all of the change, black ones none.",
               "Only the mix is clamped: 250 with a delta of 100 at a mask value of 128 is 255, of 300.", kMatrixCounts,
               kAlsoPlain},
     .example = {kCoffee, "TRV_AdjustRGBWithMask(docs/pictures/fade.png, 80, 0, -80)"}},

    {.name = "TRV_AdjustRGB_InPlace",
     .summary = "Adds a number to each channel of a region of the picture itself",
     .words = {"brightness", "brighten", "darken", "color", "colour", "balance", "tint", "channel", "in place"},
     .arguments = {kRect, delta("red_delta", "what is added to red"), delta("green_delta", "what is added to green"),
                   delta("blue_delta", "what is added to blue")},
     .changes_self = kEveryForm,
     .errors = {kSourceNil, out_of_range(40, "red_delta"), out_of_range(41, "green_delta"),
                out_of_range(42, "blue_delta"), kSourceLock, kRegionEmpty},
     .notes = {"It gives nothing. Masks stay as they are.",
               "Pictures of 8 bits and less, whose pixels are no colours, and pictures made of drawing commands do not "
               "change.",
               kAlsoPlain},
     .example = {kCoffee, "TRV_AdjustRGB_InPlace(nil, 40, 0, -60)"}},

    {.name = "TRV_GetAverageRGB",
     .summary = "A region's mean colour",
     .words = {"color", "colour", "mean", "average", "measure", "statistics"},
     .arguments = {kRect, channel("red", "gets the mean of red, fractions cut off"),
                   channel("green", "gets that of green"), channel("blue", "gets that of blue")},
     .errors = {kSourceNil, kSourceLock, kRegionEmpty},
     .notes = {kAlsoPlain},
     .example = {kCoffee, "TRV_GetAverageRGB(nil, r, g, b)"}},

    {.name = "TRV_AverageRGB",
     .summary = "Pulls each pixel toward a centre colour, in a region",
     .words = {"tint", "fade", "wash", "blend", "mix", "color", "colour", "fog"},
     .arguments = {kRect,
                   {.name = "center", .text = "the colour that pixels are pulled toward"},
                   channel("red_weight", "how often the centre's red counts; the pixel counts once"),
                   channel("green_weight", "how often the centre's green counts"),
                   channel("blue_weight", "how often the centre's blue counts"),
                   kIdleYield,
                   kAsPicture},
     .keeps_mask = kEveryForm,
     .errors = {kSourceNil, out_of_range(40, "red_weight"), out_of_range(41, "green_weight"),
                out_of_range(42, "blue_weight"), kSourceLock, kRegionEmpty, kResult, kClientUnpainted,
                mask_not_copied()},
     .notes = {"A weight of 0 changes nothing, 1 gives the middle.",
               "The centre is never quite reached from below: black with a weight of 255 toward 200 becomes 199.",
               "A weight that is not a number is accepted, and gives 0 or 1.", kDeclaredAsPicture},
     .example = {kCoffee, "TRV_AverageRGB(nil, &c204080, 1.0, 1.0, 1.0, 0)"}},

    {.name = "TRV_AverageRGBWithMask",
     .summary = "Pulls each pixel toward a centre colour, as far as a mask says",
     .words = {"tint", "fade", "wash", "blend", "mix", "color", "colour", "fog", "mask"},
     .arguments = {kMask,
                   {.name = "center", .text = "the colour that pixels are pulled toward"},
                   channel("red_weight", "how often the centre's red counts; the pixel counts once"),
                   channel("green_weight", "how often the centre's green counts"),
                   channel("blue_weight", "how often the centre's blue counts"),
                   kIdleYield,
                   kAsPicture},
     .errors = {kSourceNil, kMaskNil, out_of_range(40, "red_weight"), out_of_range(41, "green_weight"),
                out_of_range(42, "blue_weight"), kSourceLock, kMaskLock, kMaskSize, kMaskDepth, kResult,
                kClientUnpainted},
     .notes = {"White mask pixels take all of the change, black ones none.",
               "A weight that is not a number is accepted, and gives 0 or 1.", kDeclaredAsPicture},
     .example = {kCoffee, "TRV_AverageRGBWithMask(docs/pictures/fade.png, &c204080, 1.0, 1.0, 1.0, 0)"}},

    {.name = "TRV_Threshold",
     .summary = "Replaces the pixels on one side of a colour by another colour, in a region",
     .words = {"threshold", "black and white", "binarize", "binary", "cutoff", "replace", "color", "colour"},
     .arguments =
         {kRect, kDarker, kAndThreshold, kThreshold, {.name = "target", .text = "the colour of matching pixels"}},
     .errors = {kSourceNil, kSourceLock, kRegionEmpty, kResult},
     .notes = {"A pixel of just the threshold's colour always matches.",
               "About black, with darker false, every pixel matches."},
     .example = {kCoffee, "TRV_Threshold(nil, true, true, &c707070, &c102060)"}},

    {.name = "TRV_ThresholdWithMask",
     .summary = "Mixes the pixels on one side of a colour with another colour, as far as a mask says",
     .words = {"threshold", "replace", "color", "colour", "mask"},
     .arguments = {kMask,
                   kDarker,
                   kAndThreshold,
                   kThreshold,
                   {.name = "target", .text = "the colour that matching pixels are mixed with"}},
     .errors = {kSourceNil, kMaskNil, kSourceLock, kMaskLock, kMaskSize, kMaskDepth, kResult},
     .notes = {"A white mask gives just what TRV_Threshold gives, a black one the source."},
     .example = {kCoffee, "TRV_ThresholdWithMask(docs/pictures/fade.png, true, true, &c707070, &c102060)"}},

    {.name = "TRV_Downsample",
     .summary = "Fewer levels for each channel, as on a display of few colours",
     .words = {"posterize", "quantize", "reduce colors", "levels", "bits", "depth", "palette"},
     .arguments = {{.name = "bits_per_channel",
                    .text = "how many bits tell a channel's levels apart",
                    .unit = "bits",
                    .minimum = including(1),
                    .maximum = including(8)}},
     .errors = {kSourceNil, out_of_range(48, "bits_per_channel"), kSourceLock, kResult},
     .notes = {"There is one level more than the bits can tell apart: 0, 128 and 255 with one bit.",
               "With 8 bits every colour stays."},
     .example = {kChelsea, "TRV_Downsample(2)"}},
};

}  // namespace

constinit const Family kTone{"tone", "Tone and colour", kOperations};

}  // namespace tarvo::describe
