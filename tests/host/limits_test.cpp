// What a host may take: pictures, masks, strings and memory blocks count, whoever asks for them.

#include <gtest/gtest.h>

#include "test_plugin.h"

namespace tarvo::host {
namespace {

// What the host said of the last thing it did not make; empty when it made all.
std::string refused(Host& host) {
    const std::string text = host.refusal() ? host.refusal()->what() : "";
    host.clear_refusal();
    return text;
}

TEST(HostLimits, OfMemoryCountWhateverIsMade) {
    Host host({.limits = {.max_memory = 1000}});
    TestPlugin plugin(host);
    REALpictureStruct* picture = plugin.new_picture(10, 10, 32);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(host.objects().bytes(), 400u);
    ASSERT_NE(plugin.mask(picture, true), nullptr);
    EXPECT_EQ(host.objects().bytes(), 800u);
    ASSERT_NE(plugin.build_string(std::string(100, 'x')), nullptr);
    ASSERT_NE(plugin.new_memory_block(100), nullptr);
    EXPECT_EQ(host.objects().bytes(), 1000u);
    EXPECT_EQ(refused(host), "");

    EXPECT_EQ(plugin.new_picture(1, 1, 32), nullptr);
    EXPECT_EQ(refused(host), "a picture of 1 x 1 pixels, 32 bits: 4 bytes, 1000 are taken already, the limit is 1000");
    EXPECT_EQ(plugin.build_string("a"), nullptr);
    EXPECT_EQ(refused(host), "a string of 1 bytes: 1 bytes, 1000 are taken already, the limit is 1000");
    EXPECT_EQ(plugin.new_memory_block(7), nullptr);
    EXPECT_EQ(refused(host), "a memory block of 7 bytes: 7 bytes, 1000 are taken already, the limit is 1000");
    const std::uint8_t pixels[4] = {};
    EXPECT_EQ(plugin.from_buffer(1, 1, pixelTypeXRGB32, pixels, 4), nullptr);
    EXPECT_NE(refused(host), "");
}

TEST(HostLimits, OfMemoryAreFreeAgainWhenAnObjectDies) {
    Host host({.limits = {.max_memory = 400}});
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(host.new_picture({.width = 10, .height = 10}));
    const ObjectRef held = host.new_picture({.width = 10, .height = 5});
    EXPECT_TRUE(host.new_picture({.width = 10, .height = 5}));
    EXPECT_THROW(host.new_picture({.width = 10, .height = 6}), Refusal);
    EXPECT_EQ(refused(host), "");  // nothing that a plugin wanted
}

TEST(HostLimits, OfStringsAreTheirRecords) {
    Host host({.limits = {.max_pixels = 1, .max_memory = std::numeric_limits<std::uint64_t>::max()}});
    bool filled = false;
    try {
        host.new_string(Host::kLongestString + 1, [&](std::span<std::uint8_t>) { filled = true; });
        FAIL();
    } catch (const Refusal& refusal) {
        EXPECT_STREQ(refusal.what(), "a string of 2147483648 bytes is too long");
        EXPECT_EQ(refusal.limit(), std::nullopt);
    }
    EXPECT_FALSE(filled);
}

TEST(HostLimits, OfPixelsHoldForEveryPicture) {
    Host host({.limits = {.max_pixels = 100}});
    TestPlugin plugin(host);
    EXPECT_NE(plugin.new_picture(10, 10, 8), nullptr);
    EXPECT_EQ(plugin.new_picture(101, 1, 1), nullptr);
    ASSERT_TRUE(host.refusal());
    EXPECT_EQ(host.refusal()->limit(), Limit::pixels);
    EXPECT_EQ(plugin.new_picture(40000, 1, 1), nullptr);
    EXPECT_EQ(refused(host), "a picture of 101 x 1 pixels, 1 bits: the limit is 100 pixels");  // the first is kept
    EXPECT_EQ(plugin.new_picture(40000, 1, 1), nullptr);
    EXPECT_EQ(refused(host), "a picture of 40000 x 1 pixels: a side may have 1 to 32767");
}

// Mappings that nobody uses are kept for the next picture, but not beyond the limit.
TEST(HostLimits, HoldForIdleMemoryToo) {
    constexpr std::uint64_t kMost = std::uint64_t{40} << 20;
    Host host({.limits = {.max_memory = kMost}});
    BulkMemory::release_idle();
    host.new_picture({.width = 2500, .height = 3000});
    EXPECT_GT(BulkMemory::idle(), std::size_t{28} << 20);
    const ObjectRef small = host.new_picture({.width = 1000, .height = 1000});  // too small to take such a one
    EXPECT_GT(BulkMemory::idle(), std::size_t{28} << 20);
    const ObjectRef second = host.new_picture({.width = 1000, .height = 2200});
    EXPECT_EQ(BulkMemory::idle(), 0u);
}

}  // namespace
}  // namespace tarvo::host
