// The screen of the display that the environment names, such as that of `xvfb-run -s "-screen 0 1920x1080x24"`.

#include "main_screen.h"

#include "bench.h"
#include "screen_capture.h"

namespace tarvo::bench {
namespace {

void screen_capture(benchmark::State& state) {
    bench_host();
    const auto screen = host::MainScreen::open();
    if (!screen) return state.SkipWithError("there is no display");
    host::ObjectRef captured;
    for (auto _ : state)
        captured = host::ObjectRef::adopt(bench_host().objects().find(TRV_ScreenCapture(nullptr, nullptr)));
    const auto& picture = dynamic_cast<const host::Picture&>(*captured.get());
    state.SetLabel(picture.describe());
}

BENCHMARK(screen_capture)->Name("screen capture")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarvo::bench
