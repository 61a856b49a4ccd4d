#include "memory_block.h"
#include "picture_string.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include "bench.h"
#include "bulk_memory.h"

namespace tarvo::bench {
namespace {

constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

// Where the plugin builds a string, and where the host keeps strings and blocks.
std::unique_ptr<std::uint8_t[]> bytes(std::size_t count) { return std::make_unique<std::uint8_t[]>(count); }
host::BulkMemory host_bytes(std::size_t count) { return host::BulkMemory(count); }

host::ObjectRef adopt(void* handle) { return host::ObjectRef::adopt(bench_host().objects().find(handle)); }

void string_out(benchmark::State& state) {
    Locked source(noise(1));
    const auto plane = bytes(3 * kPixels);
    measure(state, [&] { PrivWriteColorPlane(source, plane.get(), kWidth, kHeight); });
}

void string_in(benchmark::State& state) {
    Locked source(noise(1)), result(noise(2));
    const auto plane = host_bytes(3 * kPixels);
    PrivWriteColorPlane(source, plane.data(), kWidth, kHeight);
    measure(state, [&] { PrivReadColorPlane(plane.data(), kWidth, kHeight, result); });
}

void mask_out(benchmark::State& state) {
    Locked mask(noise(1));
    const auto plane = bytes(kPixels);
    measure(state, [&] { PrivWriteMaskPlane(mask, plane.get(), kWidth, kHeight); });
}

void mask_in(benchmark::State& state) {
    Locked mask(noise(1));
    const auto plane = host_bytes(kPixels);
    std::fill_n(plane.data(), kPixels, std::uint8_t{7});
    measure(state, [&] { PrivReadMaskPlane(plane.data(), kWidth, kHeight, mask); });
}

void string_out_call(benchmark::State& state) {
    const host::ObjectRef source = noise(1);
    measure(state, [&] { adopt(TRV_ConvertToString(handle(source))); });
}

void string_in_call(benchmark::State& state) {
    const host::ObjectRef string = adopt(TRV_ConvertToString(handle(noise(1))));
    measure(state, [&] { adopt(TRV_ConvertToPicture(static_cast<REALstringStruct*>(string.handle()))); });
}

template <int depth>
void memory_block(benchmark::State& state) {
    Locked source(noise(1, kWidth, kHeight, depth));
    const auto block = host_bytes(4 * kPixels);
    measure(state, [&] { PrivMakeMemoryBlock(source, {0, 0, kWidth - 1, kHeight - 1}, block.data()); });
}

void memory_block_call(benchmark::State& state) {
    const host::ObjectRef source = noise(1);
    measure(state, [&] { adopt(TRV_MakeMemoryBlock(handle(source), nullptr, false, nullptr)); });
}

BENCHMARK(string_out)->Name("picture to string")->UseManualTime();
BENCHMARK(string_in)->Name("string to picture")->UseManualTime();
BENCHMARK(mask_out)->Name("mask to string")->UseManualTime();
BENCHMARK(mask_in)->Name("string to mask")->UseManualTime();
BENCHMARK(string_out_call)->Name("picture to string, whole call")->UseManualTime();
BENCHMARK(string_in_call)->Name("string to picture, whole call")->UseManualTime();
BENCHMARK(memory_block<32>)->Name("memory block")->UseManualTime();
BENCHMARK(memory_block<16>)->Name("memory block, 16 bits")->UseManualTime();
BENCHMARK(memory_block_call)->Name("memory block, whole call")->UseManualTime();

}  // namespace
}  // namespace tarvo::bench
