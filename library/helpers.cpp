#include "helpers.h"

#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace tarvo::library {
namespace {

// Signals are for the program's own threads.
class WithoutSignals {
public:
    WithoutSignals() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~WithoutSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    WithoutSignals(const WithoutSignals&) = delete;
    WithoutSignals& operator=(const WithoutSignals&) = delete;

private:
    sigset_t before_;
};

// More help nobody.
constexpr int kMostThreads = 256;

int processors() { return std::max(1, static_cast<int>(std::thread::hardware_concurrency())); }

}  // namespace

Helpers::Helpers(std::int32_t threads) : threads_(std::min(threads == 0 ? processors() : threads, kMostThreads)) {}

Helpers::~Helpers() {
    {
        const std::scoped_lock lock(mutex_);
        ending_ = true;
    }
    bands_come_.notify_all();
    for (std::thread& helper : helpers_) helper.join();
}

void Helpers::start() {
    const WithoutSignals blocked;
    try {
        helpers_.reserve(static_cast<std::size_t>(threads_ - 1));
        while (helpers_.size() + 1 < static_cast<std::size_t>(threads_)) helpers_.emplace_back([this] { help(); });
    } catch (const std::system_error&) {  // those that there are will do
    } catch (const std::bad_alloc&) {
    }
}

void Helpers::help() {
    std::unique_lock lock(mutex_);
    for (;;) {
        bands_come_.wait(lock, [this] { return ending_ || next_ < count_; });
        if (ending_) return;
        work(lock);
    }
}

// Works on bands as long as there are some. The lock is held in between.
void Helpers::work(std::unique_lock<std::mutex>& lock) {
    ++running_;
    while (next_ < count_) {
        const int number = next_++;
        const auto& band = *band_;
        lock.unlock();
        std::exception_ptr thrown;
        try {
            band(number);
        } catch (...) {
            thrown = std::current_exception();
        }
        lock.lock();
        if (thrown && !thrown_) thrown_ = thrown;
    }
    if (--running_ == 0) bands_end_.notify_all();
}

void Helpers::run(int count, const std::function<void(int)>& band) {
    if (helpers_.empty()) start();
    std::unique_lock lock(mutex_);
    band_ = &band;
    next_ = 0;
    count_ = count;
    bands_come_.notify_all();
    work(lock);
    bands_end_.wait(lock, [this] { return running_ == 0; });
    count_ = 0;
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
}

}  // namespace tarvo::library
