#include "bands.h"

#include <utility>

#include "band_check.h"

namespace tarvo::plugin {
namespace {

constinit thread_local BandRunner* runner = nullptr;

// Threads that are done with a band early take another.
constexpr int kBandsOfAThread = 4;

}  // namespace

UsedRunner::UsedRunner(BandRunner* used) : before_(std::exchange(runner, used)) {}

UsedRunner::~UsedRunner() { runner = before_; }

namespace bands {

int count_of(std::int64_t units, std::int64_t unit_pixels) {
    if (!runner || units <= 1) return 1;
    const std::int64_t worth = units * unit_pixels / std::max<std::int64_t>(runner->least_pixels(), 1);
    const std::int64_t most = std::int64_t{runner->threads()} * kBandsOfAThread;
    return static_cast<int>(std::min({worth, most, units}));
}

// What a band calls runs on its own thread alone.
void run(int count, const std::function<void(int)>& band) {
    runner->run(count, [&](int index) {
        const UsedRunner none(nullptr);
        const InBand here;
        band(index);
    });
}

}  // namespace bands
}  // namespace tarvo::plugin
