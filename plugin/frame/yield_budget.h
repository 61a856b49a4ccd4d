#pragma once

#include <cstdint>

#include "host_services.h"

// The budget of kernels that keep the host waiting, whatever their caller's.
inline constexpr int kNoYielding = 0;

// When the host gets control during an operation: before a row, once at least `yield` pixels have been worked on since
// the last time; never with a budget of 0 or below, and never before the first row.
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

private:
    std::int32_t yield_;
    std::int64_t worked_ = 0;
};
