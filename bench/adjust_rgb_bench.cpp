#include "bench.h"
#include "color_matrix_transform.h"
#include "rgb_offsets.h"

using namespace tarvo::plugin;

namespace tarvo::bench {
namespace {

constexpr Region kWhole = {0, 0, kWidth - 1, kHeight - 1};
constexpr TRV_ColorMatrix_Data kSepia = {{{0.393, 0.349, 0.272}, {0.769, 0.686, 0.534}, {0.189, 0.168, 0.131}}};

void offsets(benchmark::State& state) {
    Locked source(noise(1)), result(noise(3));
    measure(state, [&] { PrivAdjustRGB(source, result, kWhole, 20, -30, 7); });
}

void offsets_with_mask(benchmark::State& state) {
    Locked source(noise(1)), mask(noise(2)), result(noise(3));
    measure(state, [&] { PrivAdjustRGBWithMask(source, mask, result, 20, -30, 7); });
}

void offsets_in_place(benchmark::State& state) {
    Locked picture(noise(1));
    measure(state, [&] { PrivAdjustRGB_InPlace(picture, kWhole, 1, -1, 1); });
}

void matrix(benchmark::State& state) {
    Locked source(noise(1)), result(noise(3));
    measure(state, [&] { PrivAdjustRGB_Matrix(source, result, kWhole, kSepia); });
}

void matrix_with_mask(benchmark::State& state) {
    Locked source(noise(1)), mask(noise(2)), result(noise(3));
    measure(state, [&] { PrivAdjustRGBWithMask_Matrix(source, mask, result, kSepia); });
}

void average_rgb(benchmark::State& state) {
    Locked source(noise(1));
    int red = 0, green = 0, blue = 0;
    measure(state, [&] { PrivGetAverageRGB(source, kWhole, &red, &green, &blue); });
}

BENCHMARK(offsets)->Name("offsets")->UseManualTime();
BENCHMARK(offsets_with_mask)->Name("offsets with mask")->UseManualTime();
BENCHMARK(offsets_in_place)->Name("offsets in place")->UseManualTime();
BENCHMARK(matrix)->Name("colour matrix")->UseManualTime();
BENCHMARK(matrix_with_mask)->Name("colour matrix with mask")->UseManualTime();
BENCHMARK(average_rgb)->Name("average RGB")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
