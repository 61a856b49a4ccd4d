// Downsample, through the built library.

#include <gtest/gtest.h>

#include "judge.h"
#include "session.h"

namespace tarvo::test {
namespace {

int plain_level(int x, int bits) {
    int step = 1;
    for (int i = bits; i < 8; ++i) step *= 2;
    return std::min(step * ((x + step / 2) / step), 255);
}

class Downsample : public ::testing::Test {
protected:
    Value downsample(const ObjectRef& source, int bits) { return session.call(source, "TRV_Downsample", bits); }
    int one(int level, int bits) {
        const ObjectRef source = session.picture(1, 1);
        write_pixel(pixels(source), 0, 0, static_cast<std::uint32_t>(level) * 0x010101);
        return channel(read_pixel(*picture_in(downsample(source, bits)), 0, 0), 8);
    }

    Session session;
    Random random{7202};
};

TEST_F(Downsample, EveryKindAndMaskAgreesWithTheJudge) {
    for (int bits = 1; bits <= 8; ++bits) {
        for (Shape shape : source_shapes()) {
            const bool drawing = shape.backing == host::Backing::drawing_commands;
            shape.mask_depth = drawing ? 0 : mask_depths()[random() % mask_depths().size()];
            SCOPED_TRACE(shape.name() + " to " + std::to_string(bits));
            const ObjectRef source =
                random_picture(session, random, shape, any_of(random, 1, 40), any_of(random, 1, 5));
            const auto before = all_bytes(source);
            const Value result = downsample(source, bits);
            ASSERT_TRUE(picture_in(result)) << session.last_error();
            EXPECT_EQ(session.last_error(), 0);
            PlainImage expected = read_image(pixels(source));
            for (std::uint32_t& color : expected.colors)
                color = each_channel([&](int shift) { return plain_level(channel(color, shift), bits); });
            EXPECT_EQ(difference(*picture_in(result), expected, std::max(shape.depth, 16)), "");
            EXPECT_FALSE(picture_in(result)->mask());
            EXPECT_EQ(all_bytes(source), before);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(Downsample, EveryLevelIsExactInWideRows) {
    for (const int width : {511, 512, 513, 1025}) {
        const ObjectRef source = session.picture(width, 1);
        for (int x = 0; x < width; ++x)
            write_pixel(pixels(source), x, 0, each_channel([&](int shift) { return (x * 5 + shift * 17) % 256; }));
        const PlainImage image = read_image(pixels(source));
        for (int bits = 1; bits <= 8; ++bits) {
            const Value result = downsample(source, bits);
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(read_pixel(*picture_in(result), x, 0),
                          each_channel([&](int shift) { return plain_level(channel(image.at(x, 0), shift), bits); }));
        }
    }
}

// One level more than the bits can tell apart.
TEST_F(Downsample, KnownValues) {
    EXPECT_EQ(one(63, 1), 0);
    EXPECT_EQ(one(64, 1), 128);
    EXPECT_EQ(one(191, 1), 128);
    EXPECT_EQ(one(192, 1), 255);
    const int two_bits[] = {0, 64, 128, 192, 255};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(one(std::min(64 * i, 255), 2), two_bits[i]);
    for (int x = 0; x < 256; ++x) ASSERT_EQ(one(x, 8), x);
}

TEST_F(Downsample, ChecksComeInOrder) {
    const ObjectRef source = session.picture(3, 2), unlockable = session.picture(3, 2);
    pixels(unlockable).set_purged(true);
    const auto code = [&](const ObjectRef& p, int bits) {
        const Value result = session.invoke("TRV_Downsample(extends p", p, bits);
        EXPECT_EQ(picture_in(result) == nullptr, session.last_error() != 0);
        return session.last_error();
    };
    EXPECT_EQ(code({}, 0), 2);
    for (const int wrong : {0, 9, -1, -2147483647 - 1, 2147483647}) EXPECT_EQ(code(unlockable, wrong), 48);
    EXPECT_EQ(code(unlockable, 4), 4);
    EXPECT_EQ(code(source, 1), 0);
    EXPECT_EQ(code(source, 8), 0);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(code(source, 4), 6);
}

TEST_F(Downsample, NothingIsLeftBehindAndTheHostGetsNoControl) {
    const ObjectRef source = session.picture(60, 40);
    const auto before = session.host.accounts();
    ASSERT_TRUE(picture_in(downsample(source, 4)));
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_EQ(session.host.yields(), 0);
}

}  // namespace
}  // namespace tarvo::test
