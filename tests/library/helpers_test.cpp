// The threads that help a call with its bands.

#include "helpers.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// How many threads the system still gives, and whether there is memory.
std::atomic<int> threads_left = 1000;
std::atomic<bool> memory_is_short = false;

}  // namespace

#ifndef TARVO_SANITIZED
// The program's own definition stands before the C library's.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     const pthread_attr_t* attributes,
                                                                     void* (*run)(void*), void* argument) {
    if (threads_left-- <= 0) return EAGAIN;
    static const auto real = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return real(thread, attributes, run, argument);
}

void* operator new(std::size_t size) {
    void* const block = memory_is_short ? nullptr : std::malloc(size);
    if (!block) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
#endif

namespace tarvo::library {
namespace {

// Runs the bands and tells how often each was run.
std::vector<int> runs(Helpers& helpers, int count) {
    std::vector<std::atomic<int>> times(static_cast<std::size_t>(count));
    helpers.run(count, [&](int band) { ++times[static_cast<std::size_t>(band)]; });
    return {times.begin(), times.end()};
}

TEST(Helpers, WorkOnEveryBandOnce) {
    for (const int threads : {1, 2, 5}) {
        Helpers helpers(threads);
        EXPECT_EQ(helpers.threads(), threads);
        for (const int count : {1, 2, 100, 3}) EXPECT_EQ(runs(helpers, count), std::vector<int>(count, 1));
    }
    EXPECT_GE(Helpers(0).threads(), 1);
}

TEST(Helpers, ThrowWhatABandThrowsOnceAllHaveEnded) {
    for (const int threads : {1, 4}) {
        Helpers helpers(threads);
        for (const int bad : {0, 7, 19}) {
            std::atomic<int> ended = 0;
            EXPECT_THROW(helpers.run(20,
                                     [&](int band) {
                                         ++ended;
                                         if (band == bad) throw std::runtime_error("a band");
                                     }),
                         std::runtime_error);
            EXPECT_EQ(ended, 20);
        }
        EXPECT_EQ(runs(helpers, 20), std::vector<int>(20, 1)) << "nothing is left of the failures";
    }
}

TEST(Helpers, ThrowOneOfSeveral) {
    Helpers helpers(3);
    EXPECT_THROW(helpers.run(9, [](int band) { throw std::out_of_range(std::to_string(band)); }), std::out_of_range);
    EXPECT_EQ(runs(helpers, 9), std::vector<int>(9, 1));
}

#ifndef TARVO_SANITIZED
TEST(Helpers, ThatTheSystemDoesNotGiveAreDoneWithout) {
    for (const int left : {0, 1}) {
        threads_left = left;
        {
            Helpers helpers(4);
            EXPECT_EQ(runs(helpers, 20), std::vector<int>(20, 1)) << left;
        }
        threads_left = 1000;
    }
}

TEST(Helpers, ThatThereIsNoMemoryForAreDoneWithout) {
    Helpers helpers(4);
    std::atomic<int> ended = 0;
    const std::function<void(int)> band = [&](int) { ++ended; };
    memory_is_short = true;
    helpers.run(20, band);
    memory_is_short = false;
    EXPECT_EQ(ended, 20);
}
#endif

}  // namespace
}  // namespace tarvo::library
