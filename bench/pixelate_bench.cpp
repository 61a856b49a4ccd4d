#include "crawling_ants.h"
#include "pixelate.h"

#include "bench.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr Region kWhole = {0, 0, kWidth - 1, kHeight - 1};

void pixelate(benchmark::State& state) {
    Locked source(noise(1)), result(noise(3));
    const int pixelation = static_cast<int>(state.range(0));
    measure(state, [&] { PrivPixelate(source, result, kWhole, pixelation); });
}

void crawling_ants(benchmark::State& state) {
    const host::ObjectRef source = noise(1);
    measure(state, [&] {
        host::ObjectRef::adopt(
            bench_host().objects().find(TRV_CrawlingAnts(handle(source), nullptr, 0xFFFFFF, 0x000000, 4, 1)));
    });
}

BENCHMARK(pixelate)->Name("pixelate by")->Arg(2)->Arg(16)->Arg(100)->Arg(1000)->UseManualTime();
BENCHMARK(crawling_ants)->Name("crawling ants, whole call")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
