#include "bench.h"

#include <time.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "plugin_entry.h"

namespace tarvo::bench {

host::Host& bench_host() {
    static host::Host& host = []() -> host::Host& {
        static host::Host made;
        made.start_plugin(REALPluginMain);
        return made;
    }();
    return host;
}

host::ObjectRef noise(unsigned seed, int width, int height, int depth) {
    host::ObjectRef made = bench_host().new_picture({.width = width, .height = height, .depth = depth});
    auto& picture = dynamic_cast<host::Picture&>(*made.get());
    std::minstd_rand random(seed);
    for (int y = 0; y < height; ++y)
        for (std::size_t i = 0; i < picture.packed_row_bytes(); ++i)
            picture.row(y)[i] = static_cast<std::uint8_t>(random() >> 8);
    return made;
}

REALpictureStruct* handle(const host::ObjectRef& picture) { return static_cast<REALpictureStruct*>(picture.handle()); }

Locked::Locked(host::ObjectRef picture) : picture_(std::move(picture)), locked_(handle(picture_), false) {
    locked_.Lock();
}

namespace {

// Of this thread: what others do on a shared machine does not count, as far as it leaves the memory alone.
double seconds_of(const std::function<void()>& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    work();
    return now() - start;
}

double median(std::vector<double> times) {
    std::ranges::nth_element(times, times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2));
    return times[times.size() / 2];
}

// The yardstick: one picture copied into another.
void copy_picture() {
    static const host::ObjectRef from = noise(1), to = noise(2);
    const auto row = [](const host::ObjectRef& picture) { return dynamic_cast<host::Picture&>(*picture.get()).row(0); };
    std::memcpy(row(to), row(from), std::size_t{kWidth} * kHeight * kDepth / 8);
}

}  // namespace

// Machines are shared: each run of the kernel is followed by one of the yardstick, so that both see the same weather.
void measure(benchmark::State& state, const std::function<void()>& kernel) {
    std::vector<double> kernel_times, copy_times;
    kernel();
    copy_picture();
    for (auto _ : state) {
        kernel_times.push_back(seconds_of(kernel));
        state.SetIterationTime(kernel_times.back());
        copy_times.push_back(seconds_of(copy_picture));
    }
    const double time = median(kernel_times);
    state.counters["of_memcpy"] = time / median(copy_times);
    state.counters["Mpx/s"] = 1e-6 * kWidth * kHeight / time;
}

}  // namespace tarvo::bench
