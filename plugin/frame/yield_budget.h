#pragma once

#include <cstdint>

#include "host_services.h"

namespace tarvo::plugin {

// The budget of kernels that never give the host control.
inline constexpr int kNoYielding = 0;

// Gives the host control during an operation: before a row, when at least `yield` pixels have been worked on since the
// last time. It does not before the first row, nor at all with a budget of 0 or below.
class YieldBudget {
public:
    explicit YieldBudget(int yield) : yield_(yield) {}

    void before_row(std::int32_t width) {
        if (yield_ <= 0) return;
        if (worked_ >= yield_) {
            REALYieldToRB();
            worked_ = 0;
        }
        worked_ += width;
    }

    // The same for the rows that follow until the host is due, whole units of them or all that are `left`: returns how
    // many they are.
    std::int32_t before_rows_until_due(std::int32_t width, std::int32_t left, std::int32_t unit) {
        if (yield_ <= 0 || width <= 0) return left;
        const std::int64_t due = worked_ < yield_ ? (yield_ - worked_ + width - 1) / width : 0;
        const auto rows = static_cast<std::int32_t>(due >= left ? left : due / unit * unit);
        worked_ += std::int64_t{rows} * width;
        return rows;
    }

private:
    std::int32_t yield_;
    std::int64_t worked_ = 0;
};

}  // namespace tarvo::plugin
