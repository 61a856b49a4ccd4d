#pragma once

// Benchmarks of operations: 4000 x 3000 pixels at 32 bits, one thread. Beside the time of each stands the multiple of a
// `memcpy` of the same bytes, measured in the same run.

#include <benchmark/benchmark.h>

#include <functional>

#include "host.h"
#include "picture.h"

namespace tarvo::bench {

inline constexpr int kWidth = 4000;
inline constexpr int kHeight = 3000;
inline constexpr int kDepth = 32;

// The host of the run, the plugin linked in and started.
host::Host& bench_host();

// A picture full of noise; the same for the same number.
host::ObjectRef noise(unsigned seed, int width = kWidth, int height = kHeight, int depth = kDepth);
REALpictureStruct* handle(const host::ObjectRef& picture);

// A locked picture, as kernels take it.
class Locked {
public:
    explicit Locked(host::ObjectRef picture);
    operator TRV_Picture&() { return locked_; }

private:
    host::ObjectRef picture_;
    TRV_Picture locked_;
};

// Times `kernel`, and adds the counters "of memcpy" (a multiple) and "Mpx/s".
void measure(benchmark::State& state, const std::function<void()>& kernel);

}  // namespace tarvo::bench
