#include "side_by_side.h"

#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace tarvo::host {
namespace {

// What all threads of one call share.
class Shared {
public:
    Shared(int count, const std::function<void(int)>& work) : count_(count), work_(work) {}

    void work_on_what_is_left() noexcept {
        for (int index = next_++; index < count_; index = next_++) {
            try {
                work_(index);
            } catch (...) {
                keep(std::current_exception());
            }
        }
    }

    void throw_what_was_thrown() const {
        if (thrown_) std::rethrow_exception(thrown_);
    }

private:
    void keep(std::exception_ptr thrown) {
        const std::lock_guard one_at_a_time(lock_);
        if (!thrown_) thrown_ = std::move(thrown);
        next_ = count_;
    }

    const int count_;
    const std::function<void(int)>& work_;
    std::atomic<int> next_ = 0;
    std::mutex lock_;
    std::exception_ptr thrown_;
};

// Holds back all signals, so that threads that are made meanwhile never take one.
class SignalsHeldBack {
public:
    SignalsHeldBack() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsHeldBack() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeldBack(const SignalsHeldBack&) = delete;
    SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;

private:
    sigset_t before_;
};

}  // namespace

void side_by_side(int threads, int count, const std::function<void(int)>& work) {
    Shared shared(count, work);
    std::vector<std::jthread> helpers;
    {
        const SignalsHeldBack held_back;
        try {
            for (int i = 1; i < std::min(threads, count); ++i)
                helpers.emplace_back([&shared] { shared.work_on_what_is_left(); });
        } catch (const std::system_error&) {
        }
    }
    shared.work_on_what_is_left();
    helpers.clear();
    shared.throw_what_was_thrown();
}

}  // namespace tarvo::host
