#include "bench.h"
#include "copy.h"
#include "flip_rotate.h"
#include "free_rotate_by_shear.h"
#include "free_rotate_direct.h"
#include "plain_rotation.h"
#include "quarter_turns.h"
#include "rectangle.h"
#include "shear_kernels.h"
#include "stretch.h"
#include "trim.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr int kGrey = 0x808080;

void copy(benchmark::State& state) {
    Locked source(noise(1)), result(noise(2));
    measure(state, [&] { PrivCopyPicture(source, result); });
}

void trim(benchmark::State& state, int border) {
    const TRV_Rectangle_Data area = {-border, -border, kWidth + 2 * border, kHeight + 2 * border};
    Locked source(noise(1)), result(noise(2, area.width, area.height));
    measure(state, [&] { PrivTrim(source, result, area, {kGrey, kGrey}); });
}

void turn(benchmark::State& state, QuarterTurn& kernel, bool swaps_sides) {
    Locked source(noise(1)), result(swaps_sides ? noise(2, kHeight, kWidth) : noise(2));
    measure(state, [&] { kernel(source, result, 0); });
}

template <auto Kernel>
void shear(benchmark::State& state) {
    Locked source(noise(1)), result(noise(2));
    measure(state, [&] { Kernel(source, result, 0.25, kGrey, 0); });
}

template <auto Kernel>
void shear_masked(benchmark::State& state) {
    Locked source(noise(1)), result(noise(2)), source_mask(noise(3)), result_mask(noise(4));
    measure(state, [&] { Kernel(source, result, source_mask, result_mask, 0.25, 0); });
}

using Framed = void (*)(const TRV_Picture&, TRV_Picture&, double, int, int);
using Masked = int (*)(const TRV_Picture&, TRV_Picture&, const TRV_Picture&, TRV_Picture&, double, int);

void stretch(benchmark::State& state, int width, int height) {
    Locked source(noise(1)), result(noise(2, width, height));
    measure(state, [&] { PrivStretch_NonVector_NoMask(source, result, 0); });
}

void stretch_rows(benchmark::State& state, int width) {
    Locked source(noise(1)), result(noise(2, width, kHeight));
    measure(state, [&] { Priv_StetchHorizontal(source, result, 0); });
}

void stretch_columns(benchmark::State& state, int height) {
    Locked source(noise(1)), result(noise(2, kWidth, height));
    measure(state, [&] { Priv_StetchVertical(source, result, 0); });
}

// The size of 4000 x 3000 pixels turned by 30 degrees.
template <auto& Kernel>
void rotate(benchmark::State& state) {
    constexpr double kAngle = 30.0 * 3.14159 / 180.0;
    Locked source(noise(1)), result(noise(2, 4965, 4599));
    measure(state, [&] { Kernel(source, result, kAngle, kGrey); });
}

// What the direct rotation is compared with: the same, one pixel at a time.
void rotate_plainly(benchmark::State& state) {
    const host::ObjectRef source = noise(1);
    const auto& picture = dynamic_cast<const host::Picture&>(*source.get());
    measure(state, [&] { test::plain_rotation(picture, {.degrees = 30.0, .frame = kGrey, .units = 16}); });
}

template <class Rotate>
void whole_call(benchmark::State& state, Rotate rotate) {
    const host::ObjectRef source = noise(1);
    measure(state, [&] { host::ObjectRef::adopt(bench_host().objects().find(rotate(handle(source)))); });
}

BENCHMARK(copy)->UseManualTime();
BENCHMARK_CAPTURE(trim, whole, 0)->UseManualTime();
BENCHMARK_CAPTURE(trim, framed, 20)->UseManualTime();

BENCHMARK_CAPTURE(turn, as_it_is, Priv_Rotate0, false)->UseManualTime();
BENCHMARK_CAPTURE(turn, left_right, Priv_Rotate0_H, false)->UseManualTime();
BENCHMARK_CAPTURE(turn, top_bottom, Priv_Rotate0_V, false)->UseManualTime();
BENCHMARK_CAPTURE(turn, half, Priv_Rotate180, false)->UseManualTime();
BENCHMARK_CAPTURE(turn, quarter, Priv_Rotate90, true)->UseManualTime();
BENCHMARK_CAPTURE(turn, three_quarters, Priv_Rotate270, true)->UseManualTime();
BENCHMARK_CAPTURE(turn, transpose, Priv_Rotate90_V, true)->UseManualTime();
BENCHMARK_CAPTURE(turn, other_transpose, Priv_Rotate90_H, true)->UseManualTime();

BENCHMARK(shear<Framed{Priv_ShearHorizontal}>)->Name("shear rows, framed")->UseManualTime();
BENCHMARK(shear<Framed{Priv_ShearVertical}>)->Name("shear columns, framed")->UseManualTime();
BENCHMARK(shear_masked<Masked{Priv_ShearHorizontal}>)->Name("shear rows, masked")->UseManualTime();
BENCHMARK(shear_masked<Masked{Priv_ShearVertical}>)->Name("shear columns, masked")->UseManualTime();

BENCHMARK_CAPTURE(stretch, half, kWidth / 2, kHeight / 2)->UseManualTime();
BENCHMARK_CAPTURE(stretch, to_1714_x_1286, 1714, 1286)->UseManualTime();
BENCHMARK_CAPTURE(stretch, double, 2 * kWidth, 2 * kHeight)->UseManualTime();
BENCHMARK_CAPTURE(stretch_rows, half, kWidth / 2)->UseManualTime();
BENCHMARK_CAPTURE(stretch_rows, double, 2 * kWidth)->UseManualTime();
BENCHMARK_CAPTURE(stretch_columns, half, kHeight / 2)->UseManualTime();
BENCHMARK_CAPTURE(stretch_columns, double, 2 * kHeight)->UseManualTime();

BENCHMARK(rotate<PrivRotateDirect>)->Name("free rotation, direct")->UseManualTime();
BENCHMARK(rotate_plainly)->Name("free rotation, direct, pixel by pixel")->UseManualTime()->Iterations(1);
BENCHMARK(rotate<PrivRotateFast>)->Name("free rotation, fast")->UseManualTime();

constexpr double kDegrees = 30.0;
BENCHMARK_CAPTURE(whole_call, by_shear_framed,
                  [](REALpictureStruct* p) { return TRV_FreeRotateByShear_Frame(p, kDegrees, kGrey, 0); })
    ->Name("free rotation by shear, framed")
    ->UseManualTime();
BENCHMARK_CAPTURE(whole_call, by_shear_masked,
                  [](REALpictureStruct* p) { return TRV_FreeRotateByShear(p, kDegrees, 0); })
    ->Name("free rotation by shear, masked")
    ->UseManualTime();
BENCHMARK_CAPTURE(whole_call, direct, [](REALpictureStruct* p) { return TRV_FreeRotateDirect(p, kDegrees, kGrey); })
    ->Name("free rotation, direct, whole call")
    ->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
