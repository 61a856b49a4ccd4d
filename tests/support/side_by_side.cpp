#include "side_by_side.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace tarvo::test {
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

}  // namespace

void side_by_side(int threads, int count, const std::function<void(int)>& work) {
    Shared shared(count, work);
    std::vector<std::jthread> helpers;
    for (int i = 1; i < std::min(threads, count); ++i)
        helpers.emplace_back([&shared] { shared.work_on_what_is_left(); });
    shared.work_on_what_is_left();
    helpers.clear();
    shared.throw_what_was_thrown();
}

}  // namespace tarvo::test
