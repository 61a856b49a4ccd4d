#include "downsample.h"
#include "threshold.h"

#include "bench.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr int kGrey = 0x808080, kTarget = 0xFFD700;
constexpr Region kWhole = {0, 0, kWidth - 1, kHeight - 1};

void threshold(benchmark::State& state, bool and_threshold) {
    Locked source(noise(1)), result(noise(3));
    measure(state, [&] { PrivThreshold(source, result, kWhole, true, and_threshold, kGrey, kTarget); });
}

void threshold_with_mask(benchmark::State& state) {
    Locked source(noise(1)), mask(noise(2)), result(noise(3));
    measure(state, [&] { PrivThresholdWithMask(source, mask, result, true, true, kGrey, kTarget); });
}

void downsample(benchmark::State& state) {
    Locked source(noise(1)), result(noise(3));
    measure(state, [&] { PrivDownsample(source, result, 3); });
}

BENCHMARK_CAPTURE(threshold, all, true)->Name("threshold, all channels")->UseManualTime();
BENCHMARK_CAPTURE(threshold, any, false)->Name("threshold, any channel")->UseManualTime();
BENCHMARK(threshold_with_mask)->Name("threshold with mask")->UseManualTime();
BENCHMARK(downsample)->Name("downsample")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
