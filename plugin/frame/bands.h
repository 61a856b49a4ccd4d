#pragma once

// One operation on several processors. The plugin makes no threads: whoever links its objects may give a thread a
// runner, and the walks of that thread's operations hand their rows to it in bands. The bytes, the codes and the times
// when the host gets control do not depend on it, since a row is worked on in one piece, between two of those times.
//
// A band calls no host service and leaves no error, which builds for debugging check.

#include <algorithm>
#include <cstdint>
#include <functional>

#include "pixel_blocks.h"
#include "yield_budget.h"

namespace tarvo::plugin {

class BandRunner {
public:
    virtual ~BandRunner() = default;
    // How many bands can be worked on at once.
    virtual int threads() const = 0;
    // Calls `band(0)` to `band(count - 1)` in any order, on any threads with 256 KiB of stack, and returns when all
    // have ended. If some throw, it throws what one of them threw.
    virtual void run(int count, const std::function<void(int)>& band) = 0;
    // A band has at least so many pixels, that it is worth its thread.
    virtual std::int64_t least_pixels() const { return std::int64_t{1} << 18; }
};

// Makes the calling thread use the runner while this lives; null for none. A runner's own threads have none.
class UsedRunner {
public:
    explicit UsedRunner(BandRunner* runner);
    ~UsedRunner();
    UsedRunner(const UsedRunner&) = delete;
    UsedRunner& operator=(const UsedRunner&) = delete;

private:
    BandRunner* before_;
};

namespace bands {

// How many bands a number of units of rows, each of so many pixels, is worth. 1 without a runner.
int count_of(std::int64_t units, std::int64_t unit_pixels);
// Has the calling thread's runner call `band(0)` to `band(count - 1)`.
void run(int count, const std::function<void(int)>& band);

}  // namespace bands

// The unit of rows that are worked on one by one.
inline constexpr std::int32_t kSingleRows = 1;

// Calls `work(first, end)` for bands that together are the rows from `first` to before `end`. Each begins a multiple of
// `unit` rows behind the first.
template <class Work>
void in_bands(std::int32_t first, std::int32_t end, std::int32_t width, std::int32_t unit, const Work& work) {
    const std::int64_t units = (std::int64_t{end} - first + unit - 1) / unit;
    const int count = bands::count_of(units, std::int64_t{std::max(width, 0)} * unit);
    if (count <= 1) return work(first, end);
    const auto row_of = [&](int band) {
        return static_cast<std::int32_t>(std::min<std::int64_t>(first + units * band / count * unit, end));
    };
    bands::run(count, [&](int band) {
        work(row_of(band), row_of(band + 1));
        finish_streaming(StoreMode::streamed);  // the thread's own lines
    });
}

// The same for rows between which the host gets control, as the budget has it for rows of `width` pixels: before each
// unit, as often as it is due for the unit's rows.
template <class Work>
void in_bands_between_yields(std::int32_t rows, std::int32_t width, std::int32_t unit, YieldBudget& budget,
                             const Work& work) {
    for (std::int32_t first = 0; first < rows;) {
        std::int32_t end = std::min(first + unit, rows);
        for (std::int32_t row = first; row < end; ++row) budget.before_row(width);
        end += budget.before_rows_until_due(width, rows - end, unit);
        in_bands(first, end, width, unit, work);
        first = end;
    }
}

}  // namespace tarvo::plugin
