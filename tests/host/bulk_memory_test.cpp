#include "bulk_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <thread>
#include <vector>

#include "watched_memory.h"

namespace tarvo::host {
namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;
constexpr std::uintptr_t kHugePage = 2 * kMegabyte;

std::uintptr_t address(const BulkMemory& memory) { return reinterpret_cast<std::uintptr_t>(memory.data()); }

TEST(BulkMemory, HoldsWhatItIsAskedFor) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{100}, kMegabyte - 1, kMegabyte, 5 * kMegabyte + 7}) {
        const BulkMemory memory(size);
        ASSERT_EQ(memory.size(), size);
        std::memset(memory.data(), 0x77, size);
        EXPECT_EQ(memory.data()[size - 1], 0x77);
    }
}

TEST(BulkMemory, IsNothingByDefault) {
    const BulkMemory memory;
    EXPECT_EQ(memory.data(), nullptr);
    EXPECT_EQ(memory.size(), 0u);
}

TEST(BulkMemory, LargeOnesStartAtHugePages) {
    for (const std::size_t size : {kMegabyte, 3 * kMegabyte, 20 * kMegabyte}) {
        EXPECT_EQ(address(BulkMemory(size)) % kHugePage, 0u);
    }
}

TEST(BulkMemory, LargeOnesAreUsedAgain) {
    std::uintptr_t first = 0;
    {
        const BulkMemory memory(30 * kMegabyte);
        first = address(memory);
    }
    EXPECT_GE(BulkMemory::idle(), 30 * kMegabyte);
    const BulkMemory again(29 * kMegabyte);
    EXPECT_EQ(address(again), first);
}

TEST(BulkMemory, TwoAtATimeAreNeverTheSame) {
    std::vector<BulkMemory> all;
    for (int i = 0; i < 4; ++i) {
        all.emplace_back(8 * kMegabyte);
        std::memset(all.back().data(), i, all.back().size());
    }
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(all[i].data()[0], i);
        EXPECT_EQ(all[i].data()[8 * kMegabyte - 1], i);
    }
}

TEST(BulkMemory, ALittleIsNotTakenFromMuch) {
    std::uintptr_t large = 0;
    {
        const BulkMemory memory(100 * kMegabyte);
        large = address(memory);
    }
    const BulkMemory small(10 * kMegabyte);
    EXPECT_NE(address(small), large);
}

// What goes back to the system reads as zeros, if anybody reads it.
TEST(BulkMemory, GivesBackWhatIsNotReadAgain) {
    BulkMemory memory(9 * kMegabyte), small(1000);
    std::memset(memory.data(), 0x77, memory.size());
    std::memset(small.data(), 0x77, small.size());
    const auto first_kept = [&] {
        std::uint8_t* const end = memory.data() + memory.size();
        return static_cast<std::size_t>(std::find(memory.data(), end, 0x77) - memory.data());
    };
    memory.release_before(2 * kMegabyte - 1);
    EXPECT_EQ(first_kept(), 0u);
    memory.release_before(3 * kMegabyte);
    EXPECT_EQ(first_kept(), 2 * kMegabyte);
    memory.data()[0] = 0x77;
    memory.release_before(2 * kMegabyte);
    EXPECT_EQ(first_kept(), 0u) << "once is enough";
    memory.data()[0] = 0;
    memory.release_before(memory.size());
    EXPECT_EQ(first_kept(), 8 * kMegabyte);
    small.release_before(small.size());
    EXPECT_EQ(small.data()[0], 0x77);
}

TEST(BulkMemory, IdleMemoryIsBounded) {
    {
        std::vector<BulkMemory> all;
        for (int i = 0; i < 5; ++i) all.emplace_back(100 * kMegabyte);
    }
    EXPECT_LE(BulkMemory::idle(), BulkMemory::kMostIdle);
    EXPECT_GE(BulkMemory::idle(), 200 * kMegabyte);
    { const BulkMemory larger_than_all(BulkMemory::kMostIdle + 1); }
    EXPECT_LE(BulkMemory::idle(), BulkMemory::kMostIdle);
}

TEST(BulkMemory, ManySmallMappingsAreBoundedToo) {
    {
        std::vector<BulkMemory> all;
        for (int i = 0; i < 300; ++i) all.emplace_back(kMegabyte);
    }
    EXPECT_EQ(BulkMemory::idle(), BulkMemory::kMostIdle);
}

#ifdef WATCHED_MEMORY
TEST(BulkMemory, IsWatchedWhileNobodyUsesIt) {
    constexpr std::size_t kSize = 3 * kMegabyte + 5;
    std::uint8_t* bytes = nullptr;
    {
        const BulkMemory memory(kSize);
        bytes = memory.data();
        EXPECT_EQ(__asan_region_is_poisoned(bytes, kSize), nullptr);
        EXPECT_TRUE(__asan_address_is_poisoned(bytes + kSize));
    }
    EXPECT_TRUE(__asan_address_is_poisoned(bytes));
    const BulkMemory again(kSize - 10);
    ASSERT_EQ(again.data(), bytes);
    EXPECT_EQ(__asan_region_is_poisoned(bytes, kSize - 10), nullptr);
    EXPECT_TRUE(__asan_address_is_poisoned(bytes + kSize));
}
#endif

TEST(BulkMemory, KeepsAsMuchIdleAsItIsTold) {
    struct UsualLimit {
        ~UsualLimit() { BulkMemory::keep_idle(BulkMemory::kMostIdle); }
    } at_the_end;
    const auto use = [](std::size_t size) { const BulkMemory memory(size); };
    BulkMemory::release_idle();
    use(20 * kMegabyte);
    BulkMemory::keep_idle(30 * kMegabyte);
    EXPECT_EQ(BulkMemory::idle(), 20 * kMegabyte);
    use(6 * kMegabyte);
    EXPECT_EQ(BulkMemory::idle(), 26 * kMegabyte);
    use(8 * kMegabyte);
    EXPECT_EQ(BulkMemory::idle(), 14 * kMegabyte) << "what has been idle longest goes";
    use(40 * kMegabyte);
    EXPECT_EQ(BulkMemory::idle(), 0u) << "more than all that may be idle";
    use(10 * kMegabyte);
    BulkMemory::keep_idle(0);
    EXPECT_EQ(BulkMemory::idle(), 0u);
    use(2 * kMegabyte);
    EXPECT_EQ(BulkMemory::idle(), 0u);
}

TEST(BulkMemory, IsGivenBackOnAnyThread) {
    constexpr std::size_t kSize = 3 * kMegabyte;
    BulkMemory::release_idle();
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([thread] {
            for (int i = 0; i < 50; ++i) {
                const BulkMemory memory(kSize);
                std::memset(memory.data(), thread, kSize);
                EXPECT_EQ(memory.data()[kSize / 2], thread) << "nobody else has it";
            }
        });
    threads.clear();
    EXPECT_GE(BulkMemory::idle(), kSize);
    EXPECT_LE(BulkMemory::idle(), 4 * 4 * kMegabyte);
}

TEST(BulkMemory, MovesWithItsBytes) {
    BulkMemory first(10);
    const std::uintptr_t where = address(first);
    BulkMemory second = std::move(first);
    EXPECT_EQ(address(second), where);
    second = BulkMemory(2 * kMegabyte);
    EXPECT_EQ(second.size(), 2 * kMegabyte);
}

TEST(BulkMemory, TooMuchIsAnError) {
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    for (const std::size_t size : {kMost, kMost - 4096, kMost - (std::size_t{5} << 20)})
        EXPECT_THROW(BulkMemory{size}, std::bad_alloc) << size;
}

}  // namespace
}  // namespace tarvo::host
