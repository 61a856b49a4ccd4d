#include "free_rotate_direct.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "back_mapping.h"
#include "flip_rotate.h"
#include "forms.h"
#include "free_rotation.h"
#include "host_services.h"
#include "numbers.h"
#include "row_clones.h"
#include "rows.h"

namespace {

using free_rotation::BackMapping;
using free_rotation::Footprint;
using free_rotation::RowStart;

// --- sums of weighted colours ----------------------------------------------------------------------------------------

// The three channels of a colour, each with room for a sum.
using Channels = std::uint64_t;
constexpr int kRedAt = 42, kGreenAt = 21;
constexpr std::uint32_t kChannelMask = (1u << kGreenAt) - 1;

constexpr Channels spread(PixelColor color) {
    return Channels{red_of(color)} << kRedAt | Channels{green_of(color)} << kGreenAt | blue_of(color);
}

// A footprint reaches over three source pixels at most each way.
constexpr std::int32_t kReach = 3;
constexpr std::uint32_t kMostWeight = 24 * 24;
static_assert(kMostWeight * 255 <= kChannelMask);

// sum / weight as a product: a factor is too large by at most 1, a quotient by less than 1 / weight.
class Reciprocals {
public:
    Reciprocals() {
        for (std::uint32_t weight = 1; weight <= kMostWeight; ++weight) factors_[weight] = (1u << kBits) / weight + 1;
    }
    PixelColor mean(Channels sums, std::int64_t weight) const {
        const std::uint64_t factor = factors_[static_cast<std::size_t>(weight)];
        const auto quotient = [factor](std::uint64_t sum) {
            return static_cast<std::uint32_t>((sum & kChannelMask) * factor >> kBits);
        };
        return pack_rgb(quotient(sums >> kRedAt), quotient(sums >> kGreenAt), quotient(sums));
    }

private:
    static constexpr int kBits = 31;
    static_assert(std::uint64_t{255} * kMostWeight * kMostWeight < std::uint64_t{1} << kBits);
    std::array<std::uint32_t, kMostWeight + 1> factors_{};
};

TARVO_ROW_CLONES void spread_row(const PixelColor* __restrict colors, Channels* __restrict channels,
                                 std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) channels[x] = spread(colors[x]);
}

// --- the part of the source that a tile of the result shows ----------------------------------------------------------

constexpr std::int32_t kTile = 32;
// The tile's diagonal, and the reach of a footprint, and the mapping's own inexactness.
constexpr std::int32_t kWindow = 56;

struct Box {
    std::int32_t left, top, right, bottom;  // the last two lie behind

    std::int32_t width() const { return right - left; }
    bool meets(const TRV_Picture& picture) const {
        return left < picture.width() && right > 0 && top < picture.height() && bottom > 0;
    }
};

// Source pixels ready to be summed. Beyond the source lies the frame, and is averaged like it.
class SourceWindow {
public:
    SourceWindow(const TRV_Picture& source, PixelColor frame, const char* caller)
        : source_(source), frame_(frame), caller_(caller) {}

    // What is loaded next.
    void prefetch(const Box& box) const {
        const std::int32_t left = std::max(box.left, 0), right = std::min(box.right, source_.width());
        const std::int32_t top = std::max(box.top, 0), bottom = std::min(box.bottom, source_.height());
        if (left >= right) return;
        for (std::int32_t row = top; row < bottom; ++row)
            source_.Prefetch(row, left, static_cast<std::size_t>(right - left));
    }
    void load(const Box& box) {
        box_ = box;
        for (std::int32_t row = box.top; row < box.bottom; ++row) {
            std::array<PixelColor, kWindow> colors;
            read(row, {colors.data(), static_cast<std::size_t>(box.width())});
            spread_row(colors.data(), &channels_[index(row, box.left)], static_cast<std::size_t>(box.width()));
        }
    }
    const Channels* at(std::int32_t row, std::int32_t column) const { return &channels_[index(row, column)]; }

private:
    std::size_t index(std::int32_t row, std::int32_t column) const {
        return static_cast<std::size_t>(row - box_.top) * kWindow + static_cast<std::size_t>(column - box_.left);
    }
    void read(std::int32_t row, std::span<PixelColor> colors) const {
        const bool in_source = row >= 0 && row < source_.height();
        const std::int32_t first = in_source ? std::clamp(-box_.left, 0, box_.width()) : box_.width();
        const std::int32_t end = std::clamp(source_.width() - box_.left, first, box_.width());
        std::fill(colors.begin(), colors.begin() + first, frame_);
        if (first < end) source_.GetPixels(row, box_.left + first, colors.subspan(first, end - first), caller_);
        std::fill(colors.begin() + end, colors.end(), frame_);
    }

    const TRV_Picture& source_;
    PixelColor frame_;
    const char* caller_;
    Box box_{};
    std::array<Channels, std::size_t{kWindow} * kWindow> channels_;
};

// --- the kernel ------------------------------------------------------------------------------------------------------

// How much of a footprint's extent lies in each of the pixels that it reaches, from the first on. It is a pixel long at
// least, and so ends behind the first.
template <int kUnitBits>
struct Overlap {
    std::int32_t first;  // pixel
    std::uint32_t weights[kReach];

    Overlap(std::int64_t begin, std::int64_t end) {
        constexpr std::uint32_t kUnit = 1u << kUnitBits;
        first = static_cast<std::int32_t>(begin >> kUnitBits);
        const auto length = static_cast<std::uint32_t>(end - begin);
        weights[0] = kUnit - (static_cast<std::uint32_t>(begin) & (kUnit - 1));
        weights[1] = std::min(length - weights[0], kUnit);
        weights[2] = length - weights[0] - weights[1];
    }
};

// Rotates with footprints measured in 1 << kUnitBits parts of a source pixel.
template <int kUnitBits>
class Rotator {
public:
    Rotator(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color, const char* caller)
        : source_(source),
          result_(result),
          mapping_({source.width(), source.height()}, {result.width(), result.height()}, angle, kUnitBits),
          frame_(static_cast<PixelColor>(frame_color) & 0xFFFFFF),
          caller_(caller),
          window_(source, frame_, caller) {}

    void run() {
        for (std::int32_t row = 0; row < result_.height(); row += kTile) {
            const std::int32_t rows = std::min(kTile, result_.height() - row);
            for (std::int32_t i = 0; i < rows; ++i) starts_[i] = mapping_.row_start(row + i);
            for_each_chunk(0, result_.width() - 1, [&](std::int32_t column, std::size_t columns) {
                for (std::int32_t i = 0; i < rows; ++i) std::fill_n(band_[i].begin(), columns, frame_);
                draw_tiles(rows, column, columns);
                for (std::int32_t i = 0; i < rows; ++i)
                    result_.SetPixels(row + i, column, {band_[i].data(), columns}, caller_);
            });
        }
    }

private:
    // The band's first `columns`, which are the result's from `column` on.
    void draw_tiles(std::int32_t rows, std::int32_t column, std::size_t columns) {
        const auto box_from = [&](std::size_t done) {
            const std::size_t end = std::min(done + kTile, columns);
            return source_box(rows, column + static_cast<std::int32_t>(done), column + static_cast<std::int32_t>(end));
        };
        Box next = box_from(0);
        for (std::size_t done = 0; done < columns; done += kTile) {
            const Box box = next;
            next = box_from(done + kTile);
            if (!box.meets(source_)) continue;
            window_.load(box);
            window_.prefetch(next);
            const std::size_t tile_columns = std::min<std::size_t>(kTile, columns - done);
            for (std::int32_t i = 0; i < rows; ++i)
                draw_run(starts_[i], column + static_cast<std::int32_t>(done), {band_[i].data() + done, tile_columns});
        }
    }

    // All that footprints of the tile's pixels reach. To the right, places in the source move right and up.
    Box source_box(std::int32_t rows, std::int32_t column, std::int32_t end) const {
        constexpr std::int32_t kFar = std::numeric_limits<std::int32_t>::max() / 2;
        Box box = {kFar, kFar, -kFar, -kFar};
        for (std::int32_t i = 0; i < rows; ++i) {
            const RowStart& start = starts_[i];
            if (start.column >= end) continue;
            const Footprint first = mapping_.footprint(start, std::max(column, start.column));
            const Footprint last = mapping_.footprint(start, end - 1);
            box.left = std::min(box.left, pixel_of(first.left));
            box.top = std::min(box.top, pixel_of(last.top));
            box.right = std::max(box.right, pixel_of(last.left) + kReach);
            box.bottom = std::max(box.bottom, pixel_of(first.top) + kReach);
        }
        return box;
    }
    static std::int32_t pixel_of(std::int64_t units) { return static_cast<std::int32_t>(units >> kUnitBits); }

    void draw_run(const RowStart& start, std::int32_t column, std::span<PixelColor> colors) const {
        const std::int32_t end = column + static_cast<std::int32_t>(colors.size());
        for (std::int32_t x = std::max(column, start.column); x < end; ++x)
            colors[static_cast<std::size_t>(x - column)] = mean_under(mapping_.footprint(start, x));
    }

    PixelColor mean_under(const Footprint& footprint) const {
        const Overlap<kUnitBits> across(footprint.left, footprint.right), down(footprint.top, footprint.bottom);
        const Channels* const pixels = window_.at(down.first, across.first);
        Channels sums = 0;
        for (int i = 0; i < kReach; ++i) {
            const Channels* const row = pixels + i * kWindow;
            sums += (row[0] * across.weights[0] + row[1] * across.weights[1] + row[2] * across.weights[2]) *
                    down.weights[i];
        }
        return reciprocals_.mean(sums,
                                 (footprint.right - footprint.left) * (footprint.bottom - footprint.top));
    }

    const TRV_Picture& source_;
    TRV_Picture& result_;
    BackMapping mapping_;
    PixelColor frame_;
    const char* caller_;
    std::array<RowStart, kTile> starts_;
    std::array<Chunk, kTile> band_;  // rows of the result before they are written, which pays in long runs only
    SourceWindow window_;
    Reciprocals reciprocals_;
};

// --- both forms ------------------------------------------------------------------------------------------------------

using Kernel = void(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color);

// A host picture that goes when we are done with it.
class Temporary {
public:
    explicit Temporary(REALpictureStruct* picture) : picture_(picture) {}
    ~Temporary() {
        if (picture_) REALUnlockObject(picture_);
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    REALpictureStruct* get() const { return picture_; }
    REALpictureStruct* hand_over() { return std::exchange(picture_, nullptr); }

private:
    REALpictureStruct* picture_;
};

// A rotation that is not a number has no number of quarter turns either, and is refused there.
REALpictureStruct* rotate(REALpictureStruct* p, double rotation, int frame_color, Kernel& kernel) {
    const double turns = std::floor(rotation / 90.0);
    const double degrees = rotation - 90.0 * turns;
    Temporary turned(TRV_FlipRotate(p, false, false, truncate_to_int32(turns), 0));
    if (degrees == 0.0 || !turned.get()) return turned.hand_over();

    TRV_Picture source(turned.get(), false);
    if (!source.Lock()) return Fail(ErrorCode::intermediate_lock);
    const double angle = 2.0 * degrees * free_rotation::kPi / 360.0;
    const free_rotation::Diagonal diagonal(source.width(), source.height());
    return PictureForm{}.produce(diagonal.width_at(angle - diagonal.angle), diagonal.height_at(angle + diagonal.angle),
                                 result_depth(source), false,
                                 [&](TRV_Picture& result) { kernel(source, result, angle, frame_color); });
}

}  // namespace

void PrivRotateDirect(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color) {
    constexpr int kSixteenths = 4;
    Rotator<kSixteenths>(source, result, angle, frame_color, "TRV_FreeRotateDirect").run();
}

void PrivRotateFast(const TRV_Picture& source, TRV_Picture& result, double angle, int frame_color) {
    constexpr int kNoFraction = 0;
    Rotator<kNoFraction>(source, result, angle, frame_color, "TRV_FreeRotateFast").run();
}

REALpictureStruct* PrivFreeRotateDirect_NonVector(REALpictureStruct* p, double rotation, int frame_color) {
    return rotate(p, rotation, frame_color, PrivRotateDirect);
}

REALpictureStruct* PrivFreeRotateFast_NonVector(REALpictureStruct* p, double rotation, int frame_color) {
    return rotate(p, rotation, frame_color, PrivRotateFast);
}

REALpictureStruct* TRV_FreeRotateDirect(REALpictureStruct* p, double rotation, int frame_color) {
    if (!free_rotation::arguments_pass(p, rotation)) return nullptr;
    return PrivFreeRotateDirect_NonVector(p, rotation, frame_color);
}

REALpictureStruct* TRV_FreeRotateFast(REALpictureStruct* p, double rotation, int frame_color) {
    if (!free_rotation::arguments_pass(p, rotation)) return nullptr;
    return PrivFreeRotateFast_NonVector(p, rotation, frame_color);
}
