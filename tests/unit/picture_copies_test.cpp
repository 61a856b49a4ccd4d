// TRV_Picture: runs of pixels and mask levels, copied from one picture to another.

#include <algorithm>
#include <vector>

#include "locked_picture.h"
#include "pixel_runs.h"
#include "plain_image.h"

using namespace tarvo::plugin;

namespace tarvo::test {
namespace {

TEST_F(LockedPicture, CopiesOfEqualDepthsKeepTheStoredValues) {
    for (const int depth : {16, 32}) {
        const ObjectRef from = make({.width = 9, .height = 1, .depth = depth});
        const ObjectRef to = make({.width = 9, .height = 1, .depth = depth});
        TRV_Picture source(handle(from), false), target(handle(to), false);
        ASSERT_TRUE(source.Lock() && target.Lock());
        void *s = source.row_start(0), *t = target.row_start(0);
        source.CopyPixels(target, &s, &t, 9, nullptr);
        EXPECT_TRUE(std::equal(of(from).row(0), of(from).row(0) + 9 * depth / 8, of(to).row(0)));
        EXPECT_EQ(s, source.row_start(0) + 9 * depth / 8);
        EXPECT_EQ(t, target.row_start(0) + 9 * depth / 8);
        source.CopyPixels(target, &s, &t, 0, nullptr);
        source.CopyPixels(target, &s, &t, -3, nullptr);
        EXPECT_EQ(s, source.row_start(0) + 9 * depth / 8);
    }
}

TEST_F(LockedPicture, CopiesBetweenDepthsGoThroughColours) {
    for (const int from_depth : {8, 16, 24, 32}) {
        for (const int to_depth : {16, 24, 32}) {
            const ObjectRef from = make({.width = 9, .height = 1, .depth = from_depth});
            const ObjectRef to = make({.width = 9, .height = 1, .depth = to_depth});
            TRV_Picture source(handle(from), false), target(handle(to), false);
            ASSERT_TRUE(source.Lock() && target.Lock());
            void *s = source.row_start(0), *t = target.row_start(0);
            source.CopyPixels(target, &s, &t, 9, nullptr);
            EXPECT_EQ(difference(of(to), read_image(of(from)), to_depth), "");
        }
    }
}

TEST_F(LockedPicture, CopiesBelowEightBitsMoveNoAddress) {
    const ObjectRef from = make({.width = 9, .height = 1, .depth = 1});
    const ObjectRef to = make({.width = 9, .height = 1, .depth = 4});
    TRV_Picture source(handle(from), false), target(handle(to), false);
    ASSERT_TRUE(source.Lock() && target.Lock());
    void *s = source.row_start(0), *t = target.row_start(0);
    source.CopyPixels(target, &s, &t, 9, nullptr);
    EXPECT_EQ(s, source.row_start(0));
    EXPECT_EQ(t, target.row_start(0));
}

TEST_F(LockedPicture, MaskLevelsAreConvertedByTheirOwnRules) {
    const auto copied = [&](int from_depth, std::uint32_t value, int to_depth) {
        const ObjectRef from = make({.width = 1, .height = 1, .depth = from_depth});
        const ObjectRef to = make({.width = 1, .height = 1, .depth = to_depth});
        for (int i = 0; i < from_depth / 8; ++i)
            of(from).row(0)[i] = static_cast<std::uint8_t>(value >> (from_depth - 8 - 8 * i));
        TRV_Picture source(handle(from), false), target(handle(to), false);
        EXPECT_TRUE(source.Lock() && target.Lock());
        void *s = source.row_start(0), *t = target.row_start(0);
        source.CopyMaskPixels(target, &s, &t, 1, nullptr);
        EXPECT_EQ(s, source.row_start(0) + from_depth / 8);
        EXPECT_EQ(t, target.row_start(0) + to_depth / 8);
        std::uint32_t stored = 0;
        for (int i = 0; i < to_depth / 8; ++i) stored = stored << 8 | of(to).row(0)[i];
        return stored;
    };
    EXPECT_EQ(copied(32, 0xA5808182, 32), 0xA5808182u);
    EXPECT_EQ(copied(32, 0xA5808182, 16), 16u * 0x421);
    EXPECT_EQ(copied(32, 0xA5FF0000, 8), 31u);  // five bits reach eight unscaled
    EXPECT_EQ(copied(16, 0xFC00, 32), 0xF8F8F8u);
    EXPECT_EQ(copied(16, 0x83FF, 32), 0x000000u);  // the red field counts
    EXPECT_EQ(copied(16, 0xFFFF, 16), 0xFFFFu);
    EXPECT_EQ(copied(16, 0x7C00, 8), 0xF8u);
    EXPECT_EQ(copied(8, 0x80, 32), 0x808080u);
    EXPECT_EQ(copied(8, 31, 16), 31u * 0x421);
    EXPECT_EQ(copied(8, 255, 16), 255u * 0x421 & 0xFFFF);  // spills into the neighbouring fields
    EXPECT_EQ(copied(8, 0xFE, 8), 0xFEu);
    EXPECT_EQ(copied(24, 0x123456, 32), 0x123456u);  // no rule: through colours
}

TEST_F(LockedPicture, NothingIsCopiedFromOrToNowhere) {
    for (const auto copy : {&TRV_Picture::CopyPixels, &TRV_Picture::CopyMaskPixels}) {
        const ObjectRef from = make({.width = 3, .height = 1}), to = make({.width = 3, .height = 1});
        TRV_Picture source(handle(from), false), target(handle(to), false);
        ASSERT_TRUE(source.Lock() && target.Lock());
        const std::vector<std::uint8_t> before(of(to).row(0), of(to).row(0) + 12);
        void *here = source.row_start(0), *there = target.row_start(0), *nowhere = nullptr;
        (source.*copy)(target, &nowhere, &there, 3, nullptr);
        (source.*copy)(target, &here, &nowhere, 3, nullptr);
        for (const long count : {0L, -1L}) (source.*copy)(target, &here, &there, count, nullptr);
        EXPECT_EQ(nowhere, nullptr);
        EXPECT_EQ(here, source.row_start(0));
        EXPECT_EQ(there, target.row_start(0));
        EXPECT_TRUE(std::equal(before.begin(), before.end(), of(to).row(0)));
    }
}

TEST_F(LockedPicture, RunsOfNothingAreNotMirrored) {
    const ObjectRef from = make({.width = 3, .height = 1}), to = make({.width = 3, .height = 1});
    TRV_Picture source(handle(from), false), target(handle(to), false);
    ASSERT_TRUE(source.Lock() && target.Lock());
    const std::vector<std::uint8_t> before(of(to).row(0), of(to).row(0) + 12);
    for (const int count : {0, -1}) mirror_run(source, {0, 0}, target, {0, 0}, count, nullptr);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), of(to).row(0)));
}

TEST_F(LockedPicture, RunsOf16BitsAreNotCopiedFromOrToPicturesWithoutPixels) {
    TRV_ClientPicture_Data data = {};
    data.width = 3;
    data.height = 1;
    data.depth = 16;
    TRV_Picture without_pixels(&data, false);
    const ObjectRef to = make({.width = 3, .height = 1, .depth = 16});
    TRV_Picture target(handle(to), false);
    ASSERT_TRUE(without_pixels.Lock() && target.Lock());
    const std::vector<std::uint8_t> before(of(to).row(0), of(to).row(0) + 6);
    copy_run_whole(without_pixels, target, {0, 1}, 2, nullptr);
    copy_run_whole(target, without_pixels, {0, 1}, 2, nullptr);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), of(to).row(0)));
}

}  // namespace
}  // namespace tarvo::test
