#include "average_rgb.h"

#include "bench.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr int kCenter = 0x8040C0;
constexpr Region kWhole = {0, 0, kWidth - 1, kHeight - 1};

void average_blend(benchmark::State& state) {
    Locked source(noise(1)), result(noise(3));
    measure(state, [&] { PrivAverageRGB(source, result, kWhole, kCenter, 1.0, 0.3, 7.7, 0); });
}

void average_blend_with_mask(benchmark::State& state) {
    Locked source(noise(1)), mask(noise(2)), result(noise(3));
    measure(state, [&] { PrivAverageRGBWithMask(source, mask, result, kCenter, 1.0, 0.3, 7.7, 0); });
}

BENCHMARK(average_blend)->Name("average blend")->UseManualTime();
BENCHMARK(average_blend_with_mask)->Name("average blend with mask")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
