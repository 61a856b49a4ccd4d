#include "add_subtract.h"

#include "bench.h"

namespace tarvo::bench {
namespace {

template <auto Kernel>
void kernel(benchmark::State& state) {
    Locked source(noise(1)), other(noise(2)), result(noise(3));
    measure(state, [&] { Kernel(source, other, result, 0); });
}

template <auto Operation>
void whole_call(benchmark::State& state) {
    const host::ObjectRef source = noise(1), other = noise(2);
    measure(state,
            [&] { host::ObjectRef::adopt(bench_host().objects().find(Operation(handle(source), handle(other), 0))); });
}

BENCHMARK(kernel<PrivAdd>)->Name("add")->UseManualTime();
BENCHMARK(kernel<PrivSubtract>)->Name("subtract")->UseManualTime();
BENCHMARK(whole_call<TRV_Add>)->Name("add, whole call")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
