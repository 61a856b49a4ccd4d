#include "compare.h"

#include "bench.h"

namespace tarvo::bench {
namespace {

// Equal pictures: none of the comparison is spared.
void compare(benchmark::State& state, int depth) {
    const host::ObjectRef first = noise(1, kWidth, kHeight, depth), second = noise(1, kWidth, kHeight, depth);
    measure(state, [&] {
        if (!PrivCompare_NonVector(handle(first), handle(second), nullptr)) state.SkipWithError("they differ");
    });
}

void difference(benchmark::State& state) {
    Locked first(noise(1)), second(noise(1)), result(noise(3));
    measure(state, [&] { PrivDifference(first, second, result); });
}

void whole_call(benchmark::State& state) {
    const host::ObjectRef first = noise(1), second = noise(2);
    measure(state, [&] {
        host::ObjectRef::adopt(bench_host().objects().find(TRV_Difference(handle(first), handle(second))));
    });
}

BENCHMARK_CAPTURE(compare, depth, 32)->Name("compare")->UseManualTime();
BENCHMARK_CAPTURE(compare, depth, 24)->Name("compare, 24 bits")->UseManualTime();
BENCHMARK_CAPTURE(compare, depth, 16)->Name("compare, 16 bits")->UseManualTime();
BENCHMARK(difference)->Name("difference")->UseManualTime();
BENCHMARK(whole_call)->Name("difference, whole call")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
