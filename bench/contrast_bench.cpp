#include "contrast.h"

#include "bench.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr int kGrey = 0x808080;
constexpr Region kWhole = {0, 0, kWidth - 1, kHeight - 1};

void contrast(benchmark::State& state, double factor) {
    Locked source(noise(1)), result(noise(3));
    measure(state, [&] { PrivAdjustContrast(source, result, kWhole, kGrey, factor, factor, factor, 0); });
}

void contrast_with_mask(benchmark::State& state) {
    Locked source(noise(1)), mask(noise(2)), result(noise(3));
    measure(state, [&] { PrivAdjustContrastWithMask(source, mask, result, kGrey, 1.6, 1.6, 1.6, 0); });
}

void average_contrast(benchmark::State& state) {
    Locked source(noise(1));
    int red = 0, green = 0, blue = 0;
    measure(state, [&] { PrivGetAverageContrast(source, kWhole, kGrey, &red, &green, &blue, 0); });
}

void whole_call(benchmark::State& state) {
    const host::ObjectRef source = noise(1);
    measure(state, [&] {
        host::ObjectRef::adopt(
            bench_host().objects().find(TRV_AdjustContrast(handle(source), nullptr, kGrey, 1.6, 1.6, 1.6, 0)));
    });
}

BENCHMARK_CAPTURE(contrast, factor, 1.6)->Name("contrast")->UseManualTime();
BENCHMARK_CAPTURE(contrast, factor, 100.0)->Name("contrast, factor above 64")->UseManualTime();
BENCHMARK(contrast_with_mask)->Name("contrast with mask")->UseManualTime();
BENCHMARK(average_contrast)->Name("average contrast")->UseManualTime();
BENCHMARK(whole_call)->Name("contrast, whole call")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
