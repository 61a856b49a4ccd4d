#include "contrast.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "adjustment.h"
#include "channel_lanes.h"
#include "numbers.h"
#include "row_clones.h"
#include "rows.h"

namespace {

// y = c + floor(F * (x - c) / 256), clamped to 0..255, for each channel.
struct ContrastCurve {
    struct Channel {
        std::int32_t center;  // c
        std::int32_t factor;  // F, 256 for no change
    };
    Channel red, green, blue;
};

std::int32_t fixed_factor(double factor) { return truncate_to_int32(factor * 256.0); }

ContrastCurve curve_of(int center, double red_factor, double green_factor, double blue_factor) {
    const auto color = static_cast<PixelColor>(center);
    const auto channel = [](std::uint32_t value, double factor) {
        return ContrastCurve::Channel{static_cast<std::int32_t>(value), fixed_factor(factor)};
    };
    return {channel(red_of(color), red_factor), channel(green_of(color), green_factor),
            channel(blue_of(color), blue_factor)};
}

// --- any factors: lanes of 32 bits; products wrap, which only a factor that is not a number brings about --------------

[[gnu::always_inline]] inline std::uint32_t contrast(std::uint32_t value, ContrastCurve::Channel channel) {
    const std::int32_t distance = static_cast<std::int32_t>(value) - channel.center;
    const std::int32_t product = wrapping_multiply(channel.factor, distance);
    return static_cast<std::uint32_t>(clamp_to_byte(channel.center + floor_shift(product, 8)));
}

TARVO_ROW_CLONES void contrast_row(PixelColor* colors, std::size_t count, const ContrastCurve& curve) {
    const auto [red, green, blue] = curve;
    for (std::size_t x = 0; x < count; ++x)
        colors[x] = pack_rgb(contrast(red_of(colors[x]), red), contrast(green_of(colors[x]), green),
                             contrast(blue_of(colors[x]), blue));
}

// --- factors below 64: lanes of 16 bits ------------------------------------------------------------------------------

// F * (x - c) / 256 is the high half of (2 * F) * (128 * (x - c)), each factor of which fits in 16 bits.
struct LaneCurve {
    ChannelConstants center;
    ChannelConstants doubled_factor;
};

bool fits_in_lanes(const ContrastCurve& curve) {
    constexpr std::int32_t kEnd = 64 * 256;
    return curve.red.factor >= 0 && curve.red.factor < kEnd && curve.green.factor >= 0 && curve.green.factor < kEnd &&
           curve.blue.factor >= 0 && curve.blue.factor < kEnd;
}

LaneCurve lane_curve_of(const ContrastCurve& curve) {
    return {ChannelConstants::of(curve.red.center, curve.green.center, curve.blue.center),
            ChannelConstants::of(2 * curve.red.factor, 2 * curve.green.factor, 2 * curve.blue.factor)};
}

TARVO_ROW_CLONES void contrast_row_in_lanes(PixelColor* colors, std::size_t count, const LaneCurve& curve) {
    const auto [center, doubled_factor] = curve;
    map_channels(
        colors, count,
        [](std::int16_t x, std::int16_t c, std::int16_t doubled) {
            const auto distance = static_cast<std::int16_t>((x - c) * 128);
            const auto moved = static_cast<std::int16_t>(c + (std::int32_t{doubled} * distance >> 16));
            return std::clamp<std::int16_t>(moved, 0, 255);
        },
        center, doubled_factor);
}

// The curve on spans of colours, by the faster of the two ways that is exact for its factors.
class ContrastSpan {
public:
    explicit ContrastSpan(const ContrastCurve& curve)
        : curve_(curve), lanes_(lane_curve_of(curve)), fits_in_lanes_(fits_in_lanes(curve)) {}

    void operator()(PixelColor* colors, std::size_t count) const {
        if (fits_in_lanes_)
            contrast_row_in_lanes(colors, count, lanes_);
        else
            contrast_row(colors, count, curve_);
    }

private:
    ContrastCurve curve_;
    LaneCurve lanes_;
    bool fits_in_lanes_;
};

// --- weighted by a mask ----------------------------------------------------------------------------------------------

// Mixes adjusted colours into the source's by a weight of 256ths: the mask's low byte, those above 127 raised by one so
// that white takes all of the adjusted colour. A weight of 0 leaves the whole word, top byte included.
TARVO_ROW_CLONES void mix_by_256ths_row(PixelColor* colors, const PixelColor* adjusted, const PixelColor* masks,
                                        std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
        const std::uint32_t level = masks[x] & 255;
        const std::uint32_t weight = level + (level > 127);
        // Red and blue share a word: their products have 16 bits each.
        const std::uint32_t red_blue = (colors[x] & 0xFF00FF) * (256 - weight) + (adjusted[x] & 0xFF00FF) * weight;
        const std::uint32_t green = (colors[x] >> 8 & 0xFF) * (256 - weight) + (adjusted[x] >> 8 & 0xFF) * weight;
        const PixelColor mixed = (red_blue >> 8 & 0xFF00FF) | (green & 0xFF00);
        colors[x] = weight ? mixed : colors[x];
    }
}

// --- average distance ------------------------------------------------------------------------------------------------

struct ChannelSums {
    std::uint64_t red = 0, green = 0, blue = 0, count = 0;
};

std::uint32_t distance(std::uint32_t a, std::uint32_t b) { return a > b ? a - b : b - a; }

// A chunk's sums fit in 32 bits.
TARVO_ROW_CLONES void sum_distances_row(const PixelColor* colors, std::size_t count, PixelColor center,
                                        ChannelSums& sums) {
    std::uint32_t red = 0, green = 0, blue = 0;
    for (std::size_t x = 0; x < count; ++x) {
        red += distance(red_of(colors[x]), red_of(center));
        green += distance(green_of(colors[x]), green_of(center));
        blue += distance(blue_of(colors[x]), blue_of(center));
    }
    sums.red += red;
    sums.green += green;
    sums.blue += blue;
    sums.count += count;
}

// --- both forms ------------------------------------------------------------------------------------------------------

// Bounds are inclusive; a factor that is not a number passes.
bool out_of_bounds(double factor) { return factor < 0.0 || factor > 255.0; }

bool factors_pass(double red_factor, double green_factor, double blue_factor) {
    if (out_of_bounds(red_factor)) return SetError(ErrorCode::red), false;
    if (out_of_bounds(green_factor)) return SetError(ErrorCode::green), false;
    if (out_of_bounds(blue_factor)) return SetError(ErrorCode::blue), false;
    return true;
}

template <class Form>
typename Form::Handle adjust_contrast(Form form, typename Form::Handle p, REALobjectStruct* rect, int center,
                                      double red_factor, double green_factor, double blue_factor, int yield) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (!factors_pass(red_factor, green_factor, blue_factor)) return nullptr;
    return adjust_region(form, p, rect, SourceMask::copied, "TRV_AdjustContrast",
                         [&](const TRV_Picture& source, TRV_Picture& result, const Region& region) {
                             PrivAdjustContrast(source, result, region, center, red_factor, green_factor, blue_factor,
                                                yield);
                         });
}

template <class Form>
typename Form::Handle adjust_contrast_with_mask(Form form, typename Form::Handle p, REALpictureStruct* mask, int center,
                                                double red_factor, double green_factor, double blue_factor,
                                                int yield) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (!mask) return Fail(ErrorCode::mask_nil);
    if (!factors_pass(red_factor, green_factor, blue_factor)) return nullptr;
    return adjust_with_mask(form, p, mask,
                            [&](const TRV_Picture& source, const TRV_Picture& weights, TRV_Picture& result) {
                                PrivAdjustContrastWithMask(source, weights, result, center, red_factor, green_factor,
                                                           blue_factor, yield);
                            });
}

template <class Form>
void get_average_contrast(Form form, typename Form::Handle p, REALobjectStruct* rect, int center, int* red, int* green,
                          int* blue, int yield) {
    ClearError();
    if (!p) return SetError(ErrorCode::source_nil);
    measure_region_of(form, p, rect, [&](const TRV_Picture& source, const Region& region) {
        PrivGetAverageContrast(source, region, center, red, green, blue, yield);
    });
}

}  // namespace

void PrivAdjustContrast(const TRV_Picture& source, TRV_Picture& result, const Region& region, int center,
                        double red_factor, double green_factor, double blue_factor, int yield) {
    const ContrastSpan contrast_span(curve_of(center, red_factor, green_factor, blue_factor));
    transform_region(source, result, region, yield, "PrivAdjustContrast", contrast_span);
}

void PrivAdjustContrastWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                                double red_factor, double green_factor, double blue_factor, int yield) {
    const ContrastSpan contrast_span(curve_of(center, red_factor, green_factor, blue_factor));
    combine_pictures(source, mask, result, yield, "PrivAdjustContrastWithMask",
                     [&](PixelColor* colors, const PixelColor* masks, std::size_t count) {
                         Chunk adjusted;
                         std::copy_n(colors, count, adjusted.begin());
                         contrast_span(adjusted.data(), count);
                         mix_by_256ths_row(colors, adjusted.data(), masks, count);
                     });
}

void PrivGetAverageContrast(const TRV_Picture& source, const Region& region, int center, int* red, int* green,
                            int* blue, int yield) {
    ChannelSums sums;
    measure_region(source, region, yield, "PrivGetAverageContrast", [&](const PixelColor* colors, std::size_t count) {
        sum_distances_row(colors, count, static_cast<PixelColor>(center), sums);
    });
    if (red) *red = static_cast<int>(sums.red / sums.count);
    if (green) *green = static_cast<int>(sums.green / sums.count);
    if (blue) *blue = static_cast<int>(sums.blue / sums.count);
}

REALpictureStruct* TRV_AdjustContrast(REALpictureStruct* p, REALobjectStruct* rect, int center, double red_factor,
                                      double green_factor, double blue_factor, int yield) {
    return adjust_contrast(PictureForm{}, p, rect, center, red_factor, green_factor, blue_factor, yield);
}

REALobjectStruct* TRV_ClientPicture_AdjustContrast(REALobjectStruct* cp, REALobjectStruct* rect, int center,
                                                   double red_factor, double green_factor, double blue_factor,
                                                   int yield, bool as_picture) {
    return adjust_contrast(ClientForm{as_picture}, cp, rect, center, red_factor, green_factor, blue_factor, yield);
}

REALpictureStruct* TRV_AdjustContrastWithMask(REALpictureStruct* p, REALpictureStruct* mask, int center,
                                              double red_factor, double green_factor, double blue_factor, int yield) {
    return adjust_contrast_with_mask(PictureForm{}, p, mask, center, red_factor, green_factor, blue_factor, yield);
}

REALobjectStruct* TRV_ClientPicture_AdjustContrastWithMask(REALobjectStruct* cp, REALpictureStruct* mask, int center,
                                                           double red_factor, double green_factor, double blue_factor,
                                                           int yield, bool as_picture) {
    return adjust_contrast_with_mask(ClientForm{as_picture}, cp, mask, center, red_factor, green_factor, blue_factor,
                                     yield);
}

void TRV_GetAverageContrast(REALpictureStruct* p, REALobjectStruct* rect, int center, int* red_contrast,
                            int* green_contrast, int* blue_contrast, int yield) {
    get_average_contrast(PictureForm{}, p, rect, center, red_contrast, green_contrast, blue_contrast, yield);
}

void TRV_ClientPicture_GetAverageContrast(REALobjectStruct* cp, REALobjectStruct* rect, int center, int* red_contrast,
                                          int* green_contrast, int* blue_contrast, int yield) {
    get_average_contrast(ClientForm{false}, cp, rect, center, red_contrast, green_contrast, blue_contrast, yield);
}
