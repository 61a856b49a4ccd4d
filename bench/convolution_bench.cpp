#include <algorithm>
#include <vector>

#include "convolute.h"
#include "convolution_class.h"

#include "bench.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr Region kWhole = {0, 0, kWidth - 1, kHeight - 1};

REALobjectStruct* handle_of(const host::ObjectRef& instance) {
    return static_cast<REALobjectStruct*>(instance.handle());
}

host::ObjectRef convolution(const std::vector<std::int32_t>& coefficients) {
    host::ObjectRef made = bench_host().new_instance("TRV_Convolution");
    TRV_Convolution_Data& data = *TRV_Convolution_GetData(handle_of(made));
    std::ranges::copy(coefficients, data.coefficients);
    data.width = static_cast<std::int32_t>(coefficients.size());
    return made;
}

// A triangle of that many taps: 1, 2, 3, 2, 1; each side scaled by `scale`.
std::vector<std::int32_t> triangle(int taps, int scale) {
    std::vector<std::int32_t> coefficients;
    for (int i = 0; i < taps; ++i) coefficients.push_back(scale * (std::min(i, taps - 1 - i) + 1));
    return coefficients;
}

enum class Passes { horizontal, vertical, both };

void convolute(benchmark::State& state, Passes passes, int taps, int scale) {
    const host::ObjectRef kernel = convolution(triangle(taps, scale));
    Locked source(noise(1)), intermediate(noise(2)), result(noise(3));
    measure(state, [&] {
        if (passes != Passes::vertical) PrivConvoluteHorizontal(source, intermediate, handle_of(kernel), kWhole);
        if (passes != Passes::horizontal) PrivConvoluteVertical(intermediate, result, handle_of(kernel), kWhole);
    });
}

void whole_call(benchmark::State& state) {
    const host::ObjectRef source = noise(1), kernel = convolution(triangle(7, 1));
    measure(state, [&] {
        host::ObjectRef::adopt(
            bench_host().objects().find(TRV_Convolute(handle(source), nullptr, handle_of(kernel), handle_of(kernel))));
    });
}

// Coefficients of more than 257 together need wider arithmetic.
constexpr int kLarge = 1000;

#define CONVOLUTE(name, ...) BENCHMARK_CAPTURE(convolute, taps, __VA_ARGS__)->Name("convolute, " name)->UseManualTime()

CONVOLUTE("3 + 3 taps", Passes::both, 3, 1);
CONVOLUTE("7 + 7 taps", Passes::both, 7, 1);
CONVOLUTE("21 + 21 taps", Passes::both, 21, 1);
CONVOLUTE("7 taps across", Passes::horizontal, 7, 1);
CONVOLUTE("7 taps down", Passes::vertical, 7, 1);
CONVOLUTE("21 taps across", Passes::horizontal, 21, 1);
CONVOLUTE("21 taps down", Passes::vertical, 21, 1);
CONVOLUTE("3 + 3 large taps", Passes::both, 3, kLarge);
CONVOLUTE("7 + 7 large taps", Passes::both, 7, kLarge);
CONVOLUTE("21 + 21 large taps", Passes::both, 21, kLarge);
BENCHMARK(whole_call)->Name("convolute, 7 + 7 taps, whole call")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
