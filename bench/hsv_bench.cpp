#include "hsv.h"

#include "bench.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr Region kWhole = {0, 0, kWidth - 1, kHeight - 1};

void hsv(benchmark::State& state, bool negative) {
    Locked source(noise(1)), result(noise(3));
    measure(state, [&] { PrivAdjustHSV(source, result, kWhole, 77.0, 1.2, 0.9, negative, 0); });
}

void hsv_with_mask(benchmark::State& state) {
    Locked source(noise(1)), mask(noise(2)), result(noise(3));
    measure(state, [&] { PrivAdjustHSVWithMask(source, mask, result, 77.0, 1.2, 0.9, 0); });
}

void average_hsv(benchmark::State& state) {
    Locked source(noise(1));
    double hue = 0.0, saturation = 0.0, brightness = 0.0;
    measure(state, [&] { PrivGetAverageHSV(source, kWhole, &hue, &saturation, &brightness, 0); });
}

BENCHMARK_CAPTURE(hsv, plain, false)->Name("HSV")->UseManualTime();
BENCHMARK_CAPTURE(hsv, negative, true)->Name("HSV, negative")->UseManualTime();
BENCHMARK(hsv_with_mask)->Name("HSV with mask")->UseManualTime();
BENCHMARK(average_hsv)->Name("average HSV")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
