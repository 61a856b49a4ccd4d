#include "gradient.h"

#include "bench.h"

namespace tarvo::bench {
namespace {

void gradient(benchmark::State& state) {
    Locked result(noise(3));
    measure(state, [&] { PrivMakeGradient(result, 0x102030, 0xF0E0D0); });
}

void double_gradient(benchmark::State& state) {
    Locked result(noise(3));
    measure(state, [&] { PrivMakeDoubleGradient(result, 0x102030, 0xFFD700, 0xF0E0D0); });
}

BENCHMARK(gradient)->Name("gradient")->UseManualTime();
BENCHMARK(double_gradient)->Name("double gradient")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
