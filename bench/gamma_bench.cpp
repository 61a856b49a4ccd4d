#include "gamma.h"

#include "bench.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr int kGrey = 0x808080;
constexpr Region kWhole = {0, 0, kWidth - 1, kHeight - 1};

void gamma(benchmark::State& state) {
    Locked source(noise(1)), result(noise(3));
    measure(state, [&] { PrivAdjustGamma(source, result, kWhole, kGrey, 1.4, 1.2, 0.7, 0); });
}

void gamma_with_mask(benchmark::State& state) {
    Locked source(noise(1)), mask(noise(2)), result(noise(3));
    measure(state, [&] { PrivAdjustGammaWithMask(source, mask, result, kGrey, 1.4, 1.2, 0.7, 0); });
}

BENCHMARK(gamma)->Name("gamma")->UseManualTime();
BENCHMARK(gamma_with_mask)->Name("gamma with mask")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
