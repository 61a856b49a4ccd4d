#include "side_by_side.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace tarvo::host {
namespace {

TEST(SideBySide, DoesEachPieceOnce) {
    for (const int threads : {0, 1, 2, 5})
        for (const int count : {0, 1, 2, 100}) {
            std::vector<std::atomic<int>> done(static_cast<std::size_t>(count));
            side_by_side(threads, count, [&](int index) { ++done[static_cast<std::size_t>(index)]; });
            for (const auto& each : done) EXPECT_EQ(each, 1);
        }
}

TEST(SideBySide, HasNoMoreThreadsThanAllowed) {
    for (const std::size_t threads : {std::size_t{1}, std::size_t{3}}) {
        std::mutex lock;
        std::set<std::thread::id> seen;
        side_by_side(static_cast<int>(threads), 50, [&](int) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            const std::lock_guard one_at_a_time(lock);
            seen.insert(std::this_thread::get_id());
        });
        EXPECT_LE(seen.size(), threads);
        EXPECT_TRUE(threads > 1 || seen.contains(std::this_thread::get_id()));
    }
}

TEST(SideBySide, ThrowsWhatIsThrownAndBeginsNoMore) {
    std::atomic<int> begun = 0;
    EXPECT_THROW(side_by_side(1, 100,
                              [&](int index) {
                                  ++begun;
                                  if (index == 3) throw std::out_of_range("the fourth");
                              }),
                 std::out_of_range);
    EXPECT_EQ(begun, 4);
}

TEST(SideBySide, NewThreadsTakeNoSignals) {
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    const std::thread::id caller = std::this_thread::get_id();
    std::atomic<int> taking = 0;
    side_by_side(4, 40, [&](int) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        sigset_t held_back;
        pthread_sigmask(SIG_SETMASK, nullptr, &held_back);
        if (std::this_thread::get_id() != caller && !sigismember(&held_back, SIGTERM)) ++taking;
    });
    EXPECT_EQ(taking, 0);
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    EXPECT_EQ(sigismember(&after, SIGTERM), sigismember(&before, SIGTERM));
}

}  // namespace
}  // namespace tarvo::host
