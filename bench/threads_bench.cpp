// Calls in hosts of their own, one thread beside two, and one picture on two threads.
//
// Gains by the clock are worth reading where two processors are free: "spin" beside them is what two threads that only
// count gain over one in the same seconds, 2.00 on a machine of one's own. "gain_by_work" needs no free machine: it is
// what would be gained if both threads always ran, by the processor time that all of them took.

#include <time.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "bands.h"
#include "bench.h"
#include "caller.h"
#include "side_by_side.h"

namespace tarvo::bench {
namespace {

using host::PictureValue;
using host::Value;

const host::Callables& callables() {
    static const host::Callables all(bench_host().registry());
    return all;
}

PictureValue noise_value(int width, int height) {
    return PictureValue::of(dynamic_cast<host::Picture&>(*noise(1, width, height).get()));
}

const std::vector<Value> kContrast = {host::Nil{}, host::Color{0x808080}, 1.6, 1.6, 1.6, 0};
const std::vector<Value> kHSV = {host::Nil{}, 77.0, 1.2, 0.9, false, 0};

// A whole call: a host, the picture wrapped, the result's pixels taken over.
PictureValue call(const PictureValue& picture, const char* name, std::vector<Value> arguments) {
    host::Host host(bench_host().registry(), {.paper = host::Picture::Paper::unset});
    const host::Host::Entered entered(host);
    host::Caller caller(host, callables());
    const Value result = caller.call_on(host.new_picture(picture), name, arguments);
    return PictureValue::of(dynamic_cast<host::Picture&>(*std::get<host::ObjectRef>(result).get()));
}

double seconds_of(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}
double seconds_now() { return seconds_of(CLOCK_MONOTONIC); }
double seconds_of_thread() { return seconds_of(CLOCK_THREAD_CPUTIME_ID); }

// Work that is done again and again by some threads: how often in a second, and how long it takes a thread.
struct Repeated {
    double rate, thread_seconds;
};

template <class Work>
Repeated repeat(int threads, const Work& work) {
    constexpr double kSeconds = 0.05;
    std::atomic<std::int64_t> done = 0, nanoseconds = 0;
    const double start = seconds_now();
    test::side_by_side(threads, threads, [&](int) {
        const double own_start = seconds_of_thread();
        std::int64_t own = 0;
        for (; seconds_now() - start < kSeconds; ++own) work();
        done += own;
        nanoseconds += static_cast<std::int64_t>(1e9 * (seconds_of_thread() - own_start));
    });
    const auto times = static_cast<double>(done);
    return {times / (seconds_now() - start), 1e-9 * static_cast<double>(nanoseconds) / times};
}

void spin() {
    for (int i = 0; i < 1000; ++i) benchmark::DoNotOptimize(i);
}
double gain_of_spinning() { return repeat(2, spin).rate / repeat(1, spin).rate; }

double median(std::vector<double> all) {
    std::ranges::sort(all);
    return all[all.size() / 2];
}

// In bursts that follow each other.
void two_threads(benchmark::State& state, int width, int height) {
    const PictureValue picture = noise_value(width, height);
    const auto work = [&] { call(picture, "TRV_AdjustContrast", kContrast); };
    std::vector<double> gains, gains_by_work, spins, times;
    for (auto _ : state) {
        spins.push_back(gain_of_spinning());
        const Repeated one = repeat(1, work), two = repeat(2, work);
        gains.push_back(two.rate / one.rate);
        gains_by_work.push_back(2.0 * one.thread_seconds / two.thread_seconds);
        times.push_back(one.thread_seconds);
        state.SetIterationTime(one.thread_seconds);
    }
    state.counters["gain"] = median(gains);
    state.counters["gain_by_work"] = median(gains_by_work);
    state.counters["spin"] = median(spins);
    state.counters["us"] = 1e6 * median(times);
}

class TwoThreads final : public plugin::BandRunner {
public:
    int threads() const override { return 2; }
    void run(int count, const std::function<void(int)>& band) override {
        const std::thread::id caller = std::this_thread::get_id();
        test::side_by_side(2, count, [&](int index) {
            const double start = seconds_of_thread();
            band(index);
            const auto taken = static_cast<std::int64_t>(1e9 * (seconds_of_thread() - start));
            nanoseconds_ += taken;
            if (std::this_thread::get_id() == caller) callers_nanoseconds_ += taken;
        });
    }

    // What a caller that took so long would have taken if the bands had been shared evenly.
    double with_even_bands(double callers_seconds) const {
        return callers_seconds +
               1e-9 * (0.5 * static_cast<double>(nanoseconds_) - static_cast<double>(callers_nanoseconds_));
    }

private:
    std::atomic<std::int64_t> nanoseconds_ = 0, callers_nanoseconds_ = 0;
};

void one_picture(benchmark::State& state, const char* name, const std::vector<Value>& arguments) {
    const PictureValue picture = noise_value(kWidth, kHeight);
    struct Seconds {
        double passed, worked;
    };
    const auto seconds = [&](plugin::BandRunner* runner) -> Seconds {
        const plugin::UsedRunner used(runner);
        const double start = seconds_now(), thread_start = seconds_of_thread();
        call(picture, name, arguments);
        return {seconds_now() - start, seconds_of_thread() - thread_start};
    };
    std::vector<double> gains, gains_by_work, spins;
    for (auto _ : state) {
        TwoThreads runner;
        spins.push_back(gain_of_spinning());
        const Seconds alone = seconds(nullptr), together = seconds(&runner);
        gains.push_back(alone.passed / together.passed);
        gains_by_work.push_back(alone.worked / runner.with_even_bands(together.worked));
        state.SetIterationTime(together.passed);
    }
    state.counters["gain"] = median(gains);
    state.counters["gain_by_work"] = median(gains_by_work);
    state.counters["spin"] = median(spins);
}

BENCHMARK_CAPTURE(two_threads, small, 1, 1)->Name("two threads, contrast, 1 x 1")->UseManualTime()->Iterations(20);
BENCHMARK_CAPTURE(two_threads, large, 1600, 1250)
    ->Name("two threads, contrast, 2 Mpx")
    ->UseManualTime()
    ->Iterations(20);
BENCHMARK_CAPTURE(one_picture, hsv, "TRV_AdjustHSV", kHSV)
    ->Name("one picture on two threads, HSV")
    ->UseManualTime()
    ->Iterations(20);
BENCHMARK_CAPTURE(one_picture, contrast, "TRV_AdjustContrast", kContrast)
    ->Name("one picture on two threads, contrast")
    ->UseManualTime()
    ->Iterations(20);

}  // namespace
}  // namespace tarvo::bench
