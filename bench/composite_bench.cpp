#include "composite.h"

#include "bench.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr Region kWhole = {0, 0, kWidth - 1, kHeight - 1};
constexpr double kFraction = 0.3;

host::ObjectRef noise_with_mask(unsigned seed) {
    host::ObjectRef made = noise(seed);
    dynamic_cast<host::Picture&>(*made.get()).set_mask(noise(seed + 1));
    return made;
}

void by_fraction(benchmark::State& state, int depth) {
    Locked source(noise(1, kWidth, kHeight, depth)), overlay(noise(2, kWidth, kHeight, depth)),
        result(noise(3, kWidth, kHeight, depth));
    measure(state, [&] { PrivComposite(source, overlay, kFraction, 0, 0, result); });
}

void by_own_mask(benchmark::State& state) {
    Locked source(noise(1)), overlay(noise_with_mask(2)), result(noise(4));
    measure(state, [&] { PrivComposite(source, overlay, kFraction, 0, 0, result); });
}

void with_mask(benchmark::State& state) {
    Locked source(noise(1)), overlay(noise(2)), mask(noise(3)), result(noise(4));
    measure(state, [&] { PrivCompositeWithMask(source, overlay, mask, 0, 0, result); });
}

void by_color(benchmark::State& state) {
    Locked source(noise(1)), result(noise(3));
    measure(state, [&] { PrivCompositeColor(source, result, kWhole, 0x3366CC, kFraction, 0); });
}

void whole_call(benchmark::State& state) {
    const host::ObjectRef source = noise(1), overlay = noise(2);
    measure(state, [&] {
        host::ObjectRef::adopt(
            bench_host().objects().find(TRV_Composite(handle(source), handle(overlay), kFraction, 0, 0, 0)));
    });
}

BENCHMARK_CAPTURE(by_fraction, depth, 32)->Name("composite by fraction")->UseManualTime();
BENCHMARK_CAPTURE(by_fraction, depth, 24)->Name("composite by fraction, 24 bits")->UseManualTime();
BENCHMARK_CAPTURE(by_fraction, depth, 16)->Name("composite by fraction, 16 bits")->UseManualTime();
BENCHMARK(by_own_mask)->Name("composite by the overlay's mask")->UseManualTime();
BENCHMARK(with_mask)->Name("composite with mask")->UseManualTime();
BENCHMARK(by_color)->Name("composite by colour")->UseManualTime();
BENCHMARK(whole_call)->Name("composite by fraction, whole call")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
