#include "transition.h"

#include "bench.h"

namespace tarvo::bench {
namespace {

constexpr double kFraction = 0.3;

void transition(benchmark::State& state) {
    Locked source(noise(1)), overlay_a(noise(2)), overlay_b(noise(3)), result(noise(4));
    measure(state, [&] { PrivTransition(source, overlay_a, overlay_b, kFraction, result); });
}

void whole_call(benchmark::State& state) {
    const host::ObjectRef source = noise(1), overlay_a = noise(2), overlay_b = noise(3);
    measure(state, [&] {
        host::ObjectRef::adopt(bench_host().objects().find(
            TRV_Transition(handle(source), handle(overlay_a), handle(overlay_b), kFraction)));
    });
}

BENCHMARK(transition)->Name("transition")->UseManualTime();
BENCHMARK(whole_call)->Name("transition, whole call")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
