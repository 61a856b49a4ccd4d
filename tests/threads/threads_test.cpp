// Calls on many threads at once: equal results, whatever they share.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <cstdlib>
#include <thread>

#include "calls.h"
#include "random_arguments.h"
#include "watched.h"

namespace tarvo::test {
namespace {

using host::Callable;
using host::PictureValue;
using Paper = Picture::Paper;

constexpr int kThreads = 8;

#if defined(__powerpc__)
constexpr bool kEmulated = true;
#else
constexpr bool kEmulated = false;
#endif

// A call that any thread can make: its arguments come from a seed, but for its pictures, which all threads share.
class Scenario {
public:
    static Scenario random(const Callable& method, std::uint32_t seed) { return {method, seed, std::nullopt}; }
    // With pictures of at least 1 MiB, whose memory is recycled.
    static Scenario large(const Callable& method) {
        return {method, 1,
                Variant{.name = "large", .shape = {.mask_depth = 8}, .size = {513, 512}, .as_picture = true}};
    }

    Seen run() const {
        Session session(linked_plugin(), {.paper = Paper::unset});
        std::vector<Value> given = arguments(session);
        for (std::size_t i = 0; i < given.size(); ++i)
            if (shared_[i]) given[i] = session.host.new_picture(*shared_[i]);
        return see(session, *method_, given);
    }

private:
    Scenario(const Callable& method, std::uint32_t seed, std::optional<Variant> good)
        : method_(&method), seed_(seed), good_(std::move(good)) {
        Session session(linked_plugin());
        for (const Value& argument : arguments(session)) {
            const Picture* const picture = picture_in(argument);
            const bool shares = picture && picture->shared_pixels().bytes && !picture->options().any_sides &&
                                !method.changes_its_picture();
            shared_.push_back(shares ? std::optional(PictureValue::of(*picture)) : std::nullopt);
        }
    }

    std::vector<Value> arguments(Session& session) const {
        Random random(seed_);
        if (good_) return good_arguments(session, random, *method_, *good_);
        return RandomArguments(session, random).for_method(*method_);
    }

    const Callable* method_;
    std::uint32_t seed_;
    std::optional<Variant> good_;
    std::vector<std::optional<PictureValue>> shared_;
};

// Calls `work(thread)` on all threads at once.
template <class Work>
void on_threads(const Work& work) {
    std::barrier start(kThreads);
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&, thread] {
            start.arrive_and_wait();
            work(thread);
        });
}

TEST(Threads, SeeWhatOneThreadSees) {
    std::vector<Scenario> scenarios;
    for (const Callable& method : linked_plugin().callables.all())
        for (std::uint32_t seed = 0; seed < 5; ++seed) scenarios.push_back(Scenario::random(method, seed));
    std::vector<Seen> expected;
    for (const Scenario& each : scenarios) expected.push_back(each.run());
    std::atomic<int> different = 0;
    on_threads([&](int thread) {
        const std::size_t count = scenarios.size(), first = static_cast<std::size_t>(thread) * 37;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t which = (first + i) % count;
            if (!(scenarios[which].run() == expected[which])) ++different;
        }
    });
    EXPECT_EQ(different, 0);
}

TEST(Threads, SeeTheSameOfLargePictures) {
    std::vector<Scenario> scenarios;
    for (const Callable& method : linked_plugin().callables.all())
        if (method.owner.empty() || method.extends()) scenarios.push_back(Scenario::large(method));
    std::vector<Seen> expected;
    for (const Scenario& each : scenarios) expected.push_back(each.run());
    std::atomic<int> different = 0;
    on_threads([&](int thread) {
        for (std::size_t i = static_cast<std::size_t>(thread) % 4; i < scenarios.size(); i += 4)
            if (!(scenarios[i].run() == expected[i])) ++different;
    });
    EXPECT_EQ(different, 0);
}

TEST(Threads, ThatEndLeaveTheirPictures) {
    PictureValue made;
    std::vector<std::uint8_t> bytes;
    std::thread([&] {
        Session session(linked_plugin());
        Random random(5);
        const ObjectRef picture = random_picture(session, random, {}, 600, 500);
        bytes = all_bytes(picture);
        made = PictureValue::of(pixels(picture));
    }).join();
    Session session(linked_plugin());
    EXPECT_EQ(all_bytes(session.host.new_picture(made)), bytes);
}

// --- first calls -------------------------------------------------------------------------------------------------------

// Run by the test below: nothing has been looked up, cached or made when the threads start.
TEST(FirstCalls, DISABLED_OnAllThreadsAtOnce) {
    constexpr std::size_t kCalls = 8;
    const auto seed = static_cast<std::uint32_t>(std::strtoul(std::getenv("TARVO_PROCESS"), nullptr, 10));
    const auto scenario_of = [&](int thread, std::size_t call) {
        const auto& all = linked_plugin().callables.all();
        Random random(seed * 1000 + static_cast<std::uint32_t>(call) * 10 + static_cast<std::uint32_t>(thread) % 2);
        return Scenario::random(all[random() % all.size()], seed);
    };
    std::vector<std::vector<Seen>> seen(kThreads);
    on_threads([&](int thread) {
        for (std::size_t call = 0; call < kCalls; ++call)
            seen[static_cast<std::size_t>(thread)].push_back(scenario_of(thread, call).run());
    });
    for (int thread = 0; thread < kThreads; ++thread)
        for (std::size_t call = 0; call < kCalls; ++call)
            EXPECT_EQ(seen[static_cast<std::size_t>(thread)][call], scenario_of(thread, call).run());
}

TEST(FirstCalls, OfFreshProcesses) {
    if (kEmulated) GTEST_SKIP() << "an emulated program starts no other";
    char self[4096] = {};
    ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
    for (int process = 0; process < 20; ++process) {
        const std::string command =
            "env -u GTEST_TOTAL_SHARDS -u GTEST_SHARD_INDEX -u GTEST_OUTPUT TARVO_PROCESS=" + std::to_string(process) +
            " '" + self +
            "' --gtest_also_run_disabled_tests "
            "--gtest_filter=FirstCalls.DISABLED_OnAllThreadsAtOnce > /dev/null";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }
}

// --- processes that are copied ------------------------------------------------------------------------------------------

// The exit code of a copy of this process that makes the call: 0 for the same result.
int copied_process_sees(const Scenario& scenario, const Seen& expected) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        _exit(scenario.run() == expected ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

TEST(Forks, MakeCallsToo) {
    const Callable& method = *linked_plugin().callables.named("TRV_AdjustContrast").front();
    const Scenario scenario = Scenario::large(method);
    const Seen expected = scenario.run();
    EXPECT_EQ(copied_process_sees(scenario, expected), 0);
    EXPECT_EQ(scenario.run(), expected);
}

TEST(Forks, MayBeMadeWhileAnotherThreadCalls) {
    if (kEmulated) GTEST_SKIP() << "the emulator has threads of its own";
    if (kAddressesWatched) GTEST_SKIP() << "a copy may find the sanitizer's own allocator locked";
    const Callable& method = *linked_plugin().callables.named("TRV_AdjustContrast").front();
    const Scenario scenario = Scenario::large(method);
    const Seen expected = scenario.run();
    std::atomic<bool> goes_on = true;
    const std::jthread busy([&] {
        while (goes_on) scenario.run();
    });
    for (int i = 0; i < 20 && !HasFailure(); ++i) EXPECT_EQ(copied_process_sees(scenario, expected), 0);
    goes_on = false;
}

}  // namespace
}  // namespace tarvo::test
