#include "cases.h"

#include <algorithm>
#include <stdexcept>

namespace tarvo::test {
namespace {

constexpr Color kGrey{0x808080}, kWhite{0xFFFFFF}, kBlack{0x000000}, kAmber{0xFFB000}, kNight{0x102060};
constexpr Color kDusk{0x102040}, kSand{0xFFD080}, kWine{0x401020};

template <class... Arguments>
std::vector<Value> with(Arguments&&... arguments) {
    return {value(std::forward<Arguments>(arguments))...};
}

ObjectRef region(Stage& on) { return on.rectangle(30, 12, 48, 40); }

constexpr GoldenCase kCases[] = {
    // --- tone and colour ---
    {"adjust-contrast", "TRV_AdjustContrast(extends p",
     [](Stage& on) { return with(on.coffee(), nullptr, kGrey, 1.6, 1.6, 1.6, 0); }},
    {"adjust-contrast-region", "TRV_AdjustContrast(extends p",
     [](Stage& on) { return with(on.coffee(), region(on), Color{0xA06020}, 0.4, 1.0, 2.5, 0); }},
    {"adjust-contrast-keeps-mask", "TRV_AdjustContrast(extends p",
     [](Stage& on) { return with(on.masked_coffee(), nullptr, kGrey, 1.6, 1.6, 1.6, 0); }},
    {"adjust-contrast-16-bits", "TRV_AdjustContrast(extends p",
     [](Stage& on) { return with(on.coffee_of_depth(16), nullptr, kGrey, 1.6, 1.6, 1.6, 0); }},
    {"adjust-contrast-with-mask", "TRV_AdjustContrastWithMask(extends p",
     [](Stage& on) { return with(on.coffee(), on.spot(), kGrey, 2.5, 2.5, 2.5, 0); }},
    {"adjust-gamma-brighter", "TRV_AdjustGamma(extends p",
     [](Stage& on) { return with(on.coffee(), nullptr, kGrey, 1.4, 1.4, 1.4, 0); }},
    {"adjust-gamma-darker", "TRV_AdjustGamma(extends p",
     [](Stage& on) { return with(on.coffee(), nullptr, kGrey, 0.6, 0.6, 0.6, 0); }},
    {"adjust-gamma-with-mask", "TRV_AdjustGammaWithMask(extends p",
     [](Stage& on) { return with(on.coffee(), on.spot(), kGrey, 1.4, 1.0, 0.4, 0); }},
    {"adjust-hsv", "TRV_AdjustHSV(extends p",
     [](Stage& on) { return with(on.coffee(), nullptr, 120.0, 1.2, 1.0, false, 0); }},
    {"adjust-hsv-negative", "TRV_AdjustHSV(extends p",
     [](Stage& on) { return with(on.coffee(), region(on), -60.0, 0.5, 0.8, true, 0); }},
    {"adjust-hsv-with-mask", "TRV_AdjustHSVWithMask(extends p",
     [](Stage& on) { return with(on.coffee(), on.spot(), 180.0, 1.5, 1.0, 0); }},
    {"average-rgb", "TRV_AverageRGB(extends p",
     [](Stage& on) { return with(on.coffee(), nullptr, Color{0x204080}, 1.0, 1.0, 1.0, 0); }},
    {"average-rgb-with-mask", "TRV_AverageRGBWithMask(extends p",
     [](Stage& on) { return with(on.coffee(), on.spot(), Color{0x204080}, 4.0, 1.0, 0.5, 0); }},
    {"adjust-rgb", "picture.TRV_AdjustRGB(rect as TRV_Rectangle, red_delta",
     [](Stage& on) { return with(on.coffee(), nullptr, 40, 0, -60); }},
    {"adjust-rgb-in-place", "picture.TRV_AdjustRGB_InPlace(",
     [](Stage& on) { return with(on.coffee(), region(on), -50, 70, 0); }},
    {"adjust-rgb-with-mask", "picture.TRV_AdjustRGBWithMask(mask as picture, red_delta",
     [](Stage& on) { return with(on.coffee(), on.spot(), 40, -120, 200); }},
    {"adjust-rgb-matrix", "picture.TRV_AdjustRGB(rect as TRV_Rectangle, cm",
     [](Stage& on) { return with(on.coffee(), nullptr, on.sepia()); }},
    {"adjust-rgb-matrix-with-mask", "picture.TRV_AdjustRGBWithMask(mask as picture, cm",
     [](Stage& on) { return with(on.coffee(), on.spot(), on.sepia()); }},

    // --- several pictures ---
    {"add", "TRV_Add(extends p", [](Stage& on) { return with(on.coffee(), on.chelsea(), 0); }},
    {"subtract", "TRV_Subtract(extends p", [](Stage& on) { return with(on.coffee(), on.chelsea(), 0); }},
    {"difference", "picture.TRV_Difference(",
     [](Stage& on) {
         const Value changed = on.session.call(on.coffee(), "TRV_AdjustRGB", region(on), 1, 0, 0);
         const Value cut = on.session.call(object_in(changed), "TRV_Trim", on.rectangle(0, 0, 130, 44), kBlack);
         return with(on.coffee(), object_in(cut));
     }},
    {"composite", "TRV_Composite(extends p as picture, overlay",
     [](Stage& on) { return with(on.coffee(), on.chelsea(), 0.6, 30, 20, 0); }},
    {"composite-masked", "TRV_Composite(extends p as picture, overlay",
     [](Stage& on) { return with(on.coffee(), on.masked_chelsea(), 1.0, 20, -10, 0); }},
    {"composite-keeps-mask", "TRV_Composite(extends p as picture, overlay",
     [](Stage& on) { return with(on.masked_coffee(24), on.chelsea(), 0.6, 30, 20, 0); }},
    {"composite-16-bits", "TRV_Composite(extends p as picture, overlay",
     [](Stage& on) { return with(on.chelsea(), on.coffee_of_depth(16), 0.5, -30, 10, 0); }},
    {"composite-color", "TRV_Composite(extends p as picture, rect",
     [](Stage& on) { return with(on.coffee(), region(on), kAmber, 0.5, 0); }},
    {"composite-with-mask", "TRV_CompositeWithMask(",
     [](Stage& on) { return with(on.coffee(), on.chelsea(), on.spot(), 20, -10, 0); }},
    {"transition-0.2", "TRV_Transition(", [](Stage& on) { return with(on.spot(), on.coffee(), on.chelsea(), 0.2); }},
    {"transition-0.5", "TRV_Transition(", [](Stage& on) { return with(on.spot(), on.coffee(), on.chelsea(), 0.5); }},
    {"transition-0.8", "TRV_Transition(", [](Stage& on) { return with(on.spot(), on.coffee(), on.chelsea(), 0.8); }},

    // --- geometry ---
    {"flip-horizontal", "TRV_FlipRotate(", [](Stage& on) { return with(on.coffee(), true, false, 0, 0); }},
    {"flip-vertical", "TRV_FlipRotate(", [](Stage& on) { return with(on.coffee(), false, true, 0, 0); }},
    {"rotate-quarter", "TRV_FlipRotate(", [](Stage& on) { return with(on.coffee(), false, false, 1, 0); }},
    {"rotate-half", "TRV_FlipRotate(", [](Stage& on) { return with(on.coffee(), false, false, 2, 0); }},
    {"rotate-three-quarters", "TRV_FlipRotate(", [](Stage& on) { return with(on.coffee(), false, false, 3, 0); }},
    {"flip-horizontal-rotate-quarter", "TRV_FlipRotate(",
     [](Stage& on) { return with(on.coffee(), true, false, 1, 0); }},
    {"flip-vertical-rotate-quarter-mask", "TRV_FlipRotate(",
     [](Stage& on) { return with(on.masked_coffee(16), false, true, 1, 0); }},
    {"shear-horizontal",
     "TRV_ShearHorizontal(extends p as picture, width as integer, height as integer, shear as double, y",
     [](Stage& on) { return with(on.coffee(), 110, 70, 0.25, 0); }},
    {"shear-horizontal-frame",
     "TRV_ShearHorizontal(extends p as picture, width as integer, height as integer, shear as double, frame_color",
     [](Stage& on) { return with(on.coffee(), 150, 60, -0.8, kWhite, 0); }},
    {"shear-vertical",
     "TRV_ShearVertical(extends p as picture, width as integer, height as integer, shear as double, y",
     [](Stage& on) { return with(on.masked_coffee(), 100, 90, -0.25, 0); }},
    {"shear-vertical-frame",
     "TRV_ShearVertical(extends p as picture, width as integer, height as integer, shear as double, frame_color",
     [](Stage& on) { return with(on.coffee(), 90, 150, 0.8, kAmber, 0); }},
    {"stretch-smaller", "TRV_Stretch(extends p", [](Stage& on) { return with(on.coffee(), 41, 27, 0); }},
    {"stretch-larger", "TRV_Stretch(extends p", [](Stage& on) { return with(on.coffee(), 150, 100, 0); }},
    {"stretch-wide-and-low", "TRV_Stretch(extends p",
     [](Stage& on) { return with(on.coffee_of_depth(16), 160, 20, 0); }},
    {"stretch-mask", "TRV_Stretch(extends p", [](Stage& on) { return with(on.masked_coffee(), 64, 90, 0); }},
    {"trim", "TRV_Trim(extends p", [](Stage& on) { return with(on.coffee(), region(on), kAmber); }},
    {"trim-beyond", "TRV_Trim(extends p",
     [](Stage& on) { return with(on.masked_coffee(), on.rectangle(-8, 20, 112, 60), kAmber); }},

    // --- filters and generators ---
    {"convolute-blur", "TRV_Convolute(",
     [](Stage& on) {
         return with(on.chelsea(), nullptr, on.convolution({1, 4, 6, 4, 1}), on.convolution({1, 4, 6, 4, 1}));
     }},
    {"convolute-sharpen", "TRV_Convolute(",
     [](Stage& on) {
         return with(on.chelsea(), region(on), on.convolution({-1, -1, 7, -1, -1}), on.convolution({-1, 3, -1}));
     }},
    {"convolute-along-rows", "TRV_Convolute(",
     [](Stage& on) {
         return with(on.coffee_of_depth(16), nullptr, on.convolution({1, 1, 1, 1, 1, 1, 1, 1, 1}), nullptr);
     }},
    {"crawling-ants", "TRV_CrawlingAnts(",
     [](Stage& on) { return with(on.coffee(), region(on), kWhite, kBlack, 4, 0); }},
    {"crawling-ants-crawled", "TRV_CrawlingAnts(",
     [](Stage& on) { return with(on.coffee(), region(on), kAmber, kNight, 3, 5); }},
    {"downsample-1", "TRV_Downsample(", [](Stage& on) { return with(on.chelsea(), 1); }},
    {"downsample-2", "TRV_Downsample(", [](Stage& on) { return with(on.chelsea(), 2); }},
    {"downsample-5", "TRV_Downsample(", [](Stage& on) { return with(on.chelsea(), 5); }},
    {"pixelate", "TRV_Pixelate(", [](Stage& on) { return with(on.chelsea(), nullptr, 7); }},
    {"pixelate-region", "TRV_Pixelate(", [](Stage& on) { return with(on.chelsea(), region(on), 8); }},
    {"threshold-lighter-all", "TRV_Threshold(",
     [](Stage& on) { return with(on.coffee(), nullptr, false, true, Color{0x707070}, kNight); }},
    {"threshold-lighter-any", "TRV_Threshold(",
     [](Stage& on) { return with(on.coffee(), nullptr, false, false, Color{0x707070}, kNight); }},
    {"threshold-darker-all", "TRV_Threshold(",
     [](Stage& on) { return with(on.coffee(), region(on), true, true, Color{0x707070}, kNight); }},
    {"threshold-darker-any", "TRV_Threshold(",
     [](Stage& on) { return with(on.coffee(), nullptr, true, false, Color{0x707070}, kNight); }},
    {"threshold-with-mask", "TRV_ThresholdWithMask(",
     [](Stage& on) { return with(on.coffee(), on.spot(), true, true, Color{0x707070}, kNight); }},
    {"make-gradient", "TRV_MakeGradient(", [](Stage&) { return with(24, 64, kDusk, kSand, 0); }},
    {"make-double-gradient", "TRV_MakeDoubleGradient(", [](Stage&) { return with(24, 65, kDusk, kSand, kWine, 0); }},

    // --- strings ---
    {"convert-to-picture", "TRV_ConvertToPicture(",
     [](Stage& on) { return with(object_in(on.session.call(on.masked_coffee(), "TRV_ConvertToString"))); }},
};

constexpr NotKept kNotKept[] = {
    {"TRV_FreeRotateByShear(", "sine and cosine differ between C libraries"},
    {"picture.TRV_FreeRotateDirect(", "sine and cosine differ between C libraries"},
    {"TRV_ScreenCapture(", "shows what the screen shows"},
};

}  // namespace

std::span<const GoldenCase> golden_cases() { return kCases; }
std::span<const NotKept> not_kept() { return kNotKept; }

bool is_declared(const host::Callable& method, std::string_view beginning) {
    return full_declaration(method).starts_with(beginning);
}

ObjectRef result_of(const GoldenCase& shown, Stage& stage) {
    const auto& all = stage.session.caller.callables();
    const auto method =
        std::ranges::find_if(all, [&](const auto& each) { return is_declared(each, shown.declaration); });
    if (method == all.end()) throw std::runtime_error("nothing is declared so: " + std::string(shown.declaration));
    std::vector<Value> arguments = shown.arguments(stage);
    const Value result = stage.session.caller.invoke(*method, arguments);
    return object_in(method->declaration.result ? result : arguments.front());
}

}  // namespace tarvo::test
