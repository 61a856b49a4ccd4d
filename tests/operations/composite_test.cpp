// One picture over another, through the built library.

#include <gtest/gtest.h>

#include <algorithm>

#include "client_pictures.h"
#include "judge.h"
#include "plain_blend.h"
#include "session.h"

namespace tarvo::test {
namespace {

// A drawing is rendered without its mask.
ObjectRef mask_of(const ObjectRef& picture) {
    return pixels(picture).backing() == host::Backing::drawing_commands ? ObjectRef() : pixels(picture).mask();
}

// What one pixel of the overlay's mask leaves of the weight; white where the mask does not reach.
int plain_left_over(int weight, const PlainImage& mask, std::int64_t x, std::int64_t y) {
    const bool inside = x >= 0 && y >= 0 && x < mask.width && y < mask.height;
    const int level = inside ? channel(mask.at(static_cast<int>(x), static_cast<int>(y)), 16) : 255;
    return weight * (255 - level) / 255;
}

PlainImage plain_composite(const ObjectRef& source, const ObjectRef& overlay, double fraction, Place place) {
    const PlainImage upper = read_image(pixels(overlay));
    const int depth = pixels(source).depth();
    const bool one_depth = depth == pixels(overlay).depth();
    const int a = plain_weight(fraction);
    const PlainImage mask = mask_of(overlay) ? read_image(pixels(mask_of(overlay)), true) : PlainImage();
    return each_pixel(read_image(pixels(source)), [&](int x, int y, std::uint32_t color) {
        if (!place.covers(upper, x, y)) return color;
        const std::uint32_t over = place.above(upper, x, y);
        if (one_depth && depth == 16) return plain_blend_555(color, over, 256 - a, a);
        if (one_depth && depth == 32 && mask_of(overlay)) {
            const int w = plain_left_over(a, mask, std::int64_t{x} - place.left, std::int64_t{y} - place.top);
            return plain_blend(color, over, 256 - w, w);
        }
        if (one_depth && depth == 24 && mask_of(overlay)) {
            const int w = plain_left_over(a, mask, x, y);
            return plain_blend(color, over, 256 - w, w);
        }
        return plain_blend(color, over, 256 - a, a);
    });
}

class Composite : public ::testing::Test {
protected:
    Value composite(const ObjectRef& source, const ObjectRef& overlay, double fraction, Place place, int yield = 0) {
        return session.call(source, "TRV_Composite", overlay, fraction, place.left, place.top, yield);
    }
    void expect_agreement(const ObjectRef& source, const ObjectRef& overlay, double fraction, Place place) {
        SCOPED_TRACE(::testing::Message() << fraction << " at " << place.left << ", " << place.top);
        const auto source_before = all_bytes(source), overlay_before = all_bytes(overlay);
        const Value result = composite(source, overlay, fraction, place);
        ASSERT_TRUE(picture_in(result)) << session.last_error();
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_EQ(difference(*picture_in(result), plain_composite(source, overlay, fraction, place),
                             std::max(pixels(source).depth(), 16)),
                  "");
        const PlainImage upper = read_image(pixels(overlay));
        expect_unused_bits(*picture_in(result), pixels(source),
                           [&](int x, int y) { return !place.covers(upper, x, y); });
        EXPECT_EQ(static_cast<bool>(picture_in(result)->mask()), static_cast<bool>(mask_of(source)));
        EXPECT_EQ(all_bytes(source), source_before);
        EXPECT_EQ(all_bytes(overlay), overlay_before);
    }
    ObjectRef plain(std::uint32_t color, int width, int height, int depth = 32) {
        const ObjectRef made = session.picture(width, height, depth);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) write_pixel(pixels(made), x, y, color);
        return made;
    }
    // A mask of the overlay's, of its size, random.
    void give_mask(const ObjectRef& picture, int depth, int width, int height) {
        pixels(picture).set_mask(session.picture(width, height, depth));
        scribble(pixels(pixels(picture).mask()), random);
    }
    template <class Call>
    int yields(Call call) {
        const int before = session.host.yields();
        call();
        return session.host.yields() - before;
    }

    Session session;
    Random random{5301};
};

TEST_F(Composite, EveryPairOfKindsAndEveryMaskAgreesWithTheJudge) {
    for (const Shape& lower : source_shapes()) {
        for (Shape upper : source_shapes()) {
            for (const int mask_depth : mask_depths()) {
                if (upper.backing == host::Backing::drawing_commands && mask_depth) continue;
                upper.mask_depth = mask_depth;
                SCOPED_TRACE(upper.name() + " over " + lower.name());
                const int width = any_of(random, 1, 30), height = any_of(random, 1, 6);
                const int overlay_width = any_of(random, 1, 30), overlay_height = any_of(random, 1, 6);
                const ObjectRef source = random_picture(session, random, lower, width, height);
                const ObjectRef overlay = random_picture(session, random, upper, overlay_width, overlay_height);
                for (const double fraction : kFractions)
                    expect_agreement(source, overlay, fraction,
                                     any_place(random, width, height, overlay_width, overlay_height));
            }
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(Composite, WideRowsAgreeWithTheJudge) {
    for (const int depth : {16, 24, 32}) {
        for (const int width : {511, 512, 513, 1025}) {
            for (const Place place : {Place{0, 0}, Place{1, 1}, Place{-1, -1}, Place{511, 0}, Place{-513, 0}}) {
                const ObjectRef source = random_picture(session, random, {.depth = depth}, width, 2);
                const ObjectRef overlay = random_picture(session, random, {.depth = depth, .mask_depth = 8}, 1025, 3);
                expect_agreement(source, overlay, 0.7, place);
            }
        }
    }
}

TEST_F(Composite, PlacesThatOverflowLeaveTheSource) {
    const ObjectRef source = random_picture(session, random, {}, 20, 4);
    const ObjectRef overlay = random_picture(session, random, {.mask_depth = 32}, 30, 5);
    for (const int left : {kLeast, kLeast + 29, -30, -29, 19, 20, kMost - 29, kMost})
        for (const int top : {kLeast, kLeast + 4, -5, -4, 3, 4, kMost - 4, kMost})
            expect_agreement(source, overlay, 1.0, {left, top});
}

TEST_F(Composite, KnownValues) {
    const ObjectRef black = plain(0x000000, 1, 1), white = plain(0xFFFFFF, 1, 1);
    const auto blended = [&](const ObjectRef& source, const ObjectRef& overlay, double fraction) {
        return read_pixel(*picture_in(composite(source, overlay, fraction, {0, 0})), 0, 0);
    };
    EXPECT_EQ(blended(black, white, 0.5), 0x7F7F7Fu);
    EXPECT_EQ(blended(black, white, 0.3), 0x4B4B4Bu);  // 255 * 76 / 256
    EXPECT_EQ(blended(white, black, 0.3), 0xB3B3B3u);  // 255 * 180 / 256
    EXPECT_EQ(blended(white, white, 0.3), 0xFFFFFFu);  // the weights add up to 256
}

TEST_F(Composite, BlendedPixelsLoseTheTopByteAndCopiedOnesKeepIt) {
    const ObjectRef source = plain(0xFF123456, 3, 1), overlay = plain(0xEEABCDEF, 1, 1);
    for (const auto& [fraction, color] : {std::pair{0.0, 0x123456u}, std::pair{1.0, 0xABCDEFu}}) {
        const Value result = composite(source, overlay, fraction, {1, 0});
        EXPECT_EQ(read_pixel(*picture_in(result), 0, 0), 0xFF123456u);
        EXPECT_EQ(read_pixel(*picture_in(result), 1, 0), color);
        EXPECT_EQ(read_pixel(*picture_in(result), 2, 0), 0xFF123456u);
    }
}

TEST_F(Composite, AnOverlayThatReachesOutIsClipped) {
    const ObjectRef source = plain(0x101010, 50, 1), overlay = session.picture(30, 1);
    for (int x = 0; x < 30; ++x) write_pixel(pixels(overlay), x, 0, static_cast<std::uint32_t>(x));
    const Value result = composite(source, overlay, 1.0, {-10, 0});
    for (int x = 0; x < 50; ++x)
        EXPECT_EQ(read_pixel(*picture_in(result), x, 0), x < 20 ? static_cast<std::uint32_t>(x + 10) : 0x101010u);
}

TEST_F(Composite, A32BitOverlayOnA24BitSourceIgnoresItsMasksLevels) {
    const ObjectRef overlay = plain(0xFFFFFF, 4, 4);
    pixels(overlay).set_mask(plain(0xFFFFFF, 4, 4));  // wholly transparent
    EXPECT_EQ(read_pixel(*picture_in(composite(plain(0, 9, 9, 24), overlay, 1.0, {5, 5})), 6, 6), 0xFFFFFFu);
    EXPECT_EQ(read_pixel(*picture_in(composite(plain(0, 9, 9, 32), overlay, 1.0, {5, 5})), 6, 6), 0x000000u);
}

// The mask's left half is opaque, its right half transparent; the overlay lies one pixel to the right.
TEST_F(Composite, WhereTheMaskIsReadDependsOnTheDepth) {
    for (const auto& [depth, opaque_until] : {std::pair{32, 3}, std::pair{24, 2}}) {
        const ObjectRef overlay = plain(0xFFFFFF, 4, 1, depth), mask = plain(0xFFFFFF, 4, 1);
        for (int x = 0; x < 2; ++x) write_pixel(pixels(mask), x, 0, 0);
        pixels(overlay).set_mask(mask);
        const Value result = composite(plain(0, 5, 1, depth), overlay, 1.0, {1, 0});
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(read_pixel(*picture_in(result), x, 0), x >= 1 && x < opaque_until ? 0xFFFFFFu : 0u)
                << x << " at " << depth;
    }
}

TEST_F(Composite, MasksSmallerThanTheOverlayAreTransparentBeyondTheirEdges) {
    for (const int depth : {24, 32}) {
        for (const int mask_depth : {1, 8, 16, 24, 32}) {
            for (const int width : {20, 120}) {
                const ObjectRef source = random_picture(session, random, {.depth = depth}, 2 * width, 9);
                const ObjectRef overlay = random_picture(session, random, {.depth = depth}, width, 7);
                give_mask(overlay, mask_depth, any_of(random, 1, width / 2), any_of(random, 1, 9));
                for (const Place place : {Place{0, 0}, Place{15, 3}, Place{-6, -2}})
                    expect_agreement(source, overlay, 0.9, place);
            }
        }
    }
}

// The mask's red channel counts, and of the mask argument of the other form its blue one.
TEST_F(Composite, TheMasksRedChannelCounts) {
    const ObjectRef overlay = plain(0xFFFFFF, 1, 1);
    pixels(overlay).set_mask(plain(0x00FFFF, 1, 1));
    EXPECT_EQ(read_pixel(*picture_in(composite(plain(0, 1, 1), overlay, 1.0, {0, 0})), 0, 0), 0xFFFFFFu);
    pixels(overlay).set_mask(plain(0xFF0000, 1, 1));
    EXPECT_EQ(read_pixel(*picture_in(composite(plain(0, 1, 1), overlay, 1.0, {0, 0})), 0, 0), 0x000000u);
}

TEST_F(Composite, EveryLevelAndWeightIsExact) {
    const ObjectRef source = plain(0x000000, 256, 1), overlay = plain(0xFFFFFF, 256, 1), mask = session.picture(256, 1);
    for (int x = 0; x < 256; ++x) write_pixel(pixels(mask), x, 0, static_cast<std::uint32_t>(x) << 16);
    pixels(overlay).set_mask(mask);
    for (int a = 0; a <= 256; ++a) {
        const Value result = composite(source, overlay, a / 256.0, {0, 0});
        for (int x = 0; x < 256; ++x)
            ASSERT_EQ(channel(read_pixel(*picture_in(result), x, 0), 8), a * (255 - x) / 255 * 255 / 256)
                << "level " << x << ", weight " << a;
    }
}

// Nothing of the result is written, its mask included, and there is no error code.
TEST_F(Composite, AMaskThatCannotBeLockedLeavesTheResultAsItIsMade) {
    for (const int depth : {8, 24, 32}) {
        const ObjectRef source = random_picture(session, random, {.depth = depth, .mask_depth = 8}, 5, 3);
        const ObjectRef overlay = random_picture(session, random, {.depth = depth, .mask_depth = 32}, 5, 3);
        pixels(mask_of(overlay)).set_purged(true);
        const Value result = composite(source, overlay, 0.5, {0, 0});
        ASSERT_TRUE(picture_in(result));
        EXPECT_EQ(session.last_error(), 0);
        const int result_depth = std::max(depth, 16);
        EXPECT_EQ(
            difference(*picture_in(result), read_image(pixels(session.picture(5, 3, result_depth))), result_depth), "");
        EXPECT_FALSE(picture_in(result)->mask());
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(Composite, SixteenBitsNeverAskForTheOverlaysMask) {
    const ObjectRef source = random_picture(session, random, {.depth = 16}, 5, 3);
    const ObjectRef overlay = random_picture(session, random, {.depth = 16, .mask_depth = 32}, 5, 3);
    pixels(mask_of(overlay)).set_purged(true);
    expect_agreement(source, overlay, 0.5, {1, 1});
}

TEST_F(Composite, TheSourcesMaskIsCopied) {
    for (const int depth : {8, 16, 24, 32}) {
        for (const int mask_depth : {8, 16, 24, 32}) {
            const ObjectRef source = random_picture(session, random, {.depth = depth, .mask_depth = mask_depth}, 9, 4);
            const Value result = composite(source, plain(0xFFFFFF, 3, 3, depth), 0.5, {2, 2});
            ASSERT_TRUE(picture_in(result));
            const Picture& mask = pixels(picture_in(result)->mask());
            const auto expected =
                Picture::make({.width = 9, .height = 4, .depth = mask.depth()}, Picture::Paper::black);
            plain_copy_mask(pixels(mask_of(source)), *expected);
            EXPECT_EQ(difference(mask, read_image(*expected), mask.depth()), "") << depth << " " << mask_depth;
        }
    }
}

TEST_F(Composite, AMaskThatCannotBeCopiedGivesCode9AndTheResult) {
    const ObjectRef source = plain(0x000000, 3, 2);
    pixels(source).set_mask(session.picture(3, 2));
    pixels(mask_of(source)).set_purged(true);
    const Value result = composite(source, plain(0xFFFFFF, 3, 2), 1.0, {0, 0});
    ASSERT_TRUE(picture_in(result));
    EXPECT_EQ(session.last_error(), 9);
    EXPECT_EQ(read_pixel(*picture_in(result), 2, 1), 0xFFFFFFu);
}

TEST_F(Composite, OnlyTheMasked32BitPathYields) {
    for (const int depth : {8, 16, 24, 32}) {
        for (const bool masked : {false, true}) {
            const ObjectRef source = session.picture(30, 13, depth), overlay = session.picture(3, 3, depth);
            if (masked) pixels(overlay).set_mask(session.picture(3, 3));
            const bool honours = depth == 32 && masked;
            EXPECT_EQ(yields([&] { composite(source, overlay, 0.5, {0, 0}, 100); }), honours ? 3 : 0);
            EXPECT_EQ(yields([&] { composite(source, overlay, 0.5, {99, 99}, 1); }), honours ? 12 : 0);
            EXPECT_EQ(yields([&] { composite(source, overlay, 0.5, {0, 0}, -1); }), 0);
        }
    }
}

TEST_F(Composite, ChecksComeInOrder) {
    const auto code = [&](const ObjectRef& p, const ObjectRef& overlay, double fraction) {
        const Value result =
            session.invoke("TRV_Composite(extends p as picture, overlay", p, overlay, fraction, 0, 0, 0);
        EXPECT_EQ(picture_in(result) == nullptr, session.last_error() != 0);
        return session.last_error();
    };
    const ObjectRef good = session.picture(3, 2), locked_out = session.picture(3, 2);
    pixels(locked_out).set_purged(true);
    EXPECT_EQ(code({}, {}, 2.0), 2);
    EXPECT_EQ(code(locked_out, {}, 2.0), 13);
    EXPECT_EQ(code(locked_out, locked_out, 2.0), 15);
    EXPECT_EQ(code(locked_out, locked_out, 1.0), 4);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(code(good, locked_out, 1.0), 14);
    EXPECT_EQ(code(good, good, 1.0), 6);
    for (const double wrong : {-1e-300, std::nextafter(1.0, 2.0), -HUGE_VAL, HUGE_VAL})
        EXPECT_EQ(code(good, good, wrong), 15);
    for (const double right : {0.0, 1.0, -0.0, kNotANumber}) EXPECT_EQ(code(good, good, right), 0);
}

TEST_F(Composite, APictureOverItself) {
    const ObjectRef picture = random_picture(session, random, {.mask_depth = 8}, 12, 5);
    expect_agreement(picture, picture, 0.4, {3, -2});
}

TEST_F(Composite, NothingIsLeftBehind) {
    const ObjectRef source = random_picture(session, random, {.mask_depth = 8}, 12, 5);
    const ObjectRef overlay = random_picture(session, random, {.mask_depth = 16}, 12, 5);
    composite(source, overlay, 0.4, {1, 1});
    const host::Accounts before = session.host.accounts();
    for (int i = 0; i < 3; ++i) composite(source, overlay, 0.4, {1, 1});
    EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
    EXPECT_TRUE(session.host.complaints().empty());
}

// --- the client form -------------------------------------------------------------------------------------------------

class ClientComposite : public Composite {
protected:
    Value composite(const ObjectRef& source, const ObjectRef& overlay, double fraction, Place place, bool as_picture) {
        return session.call(source, "TRV_Composite", overlay, fraction, place.left, place.top, as_picture);
    }
    // A host picture of the same pixels and mask, for the judge.
    ObjectRef picture_of(const ObjectRef& client) { return session.picture_of(client); }
};

TEST_F(ClientComposite, EveryPairOfDepthsAgreesWithTheJudge) {
    for (const int depth : {16, 24, 32}) {
        for (const int overlay_depth : {16, 24, 32}) {
            for (const bool masked : {false, true}) {
                for (const bool as_picture : {false, true}) {
                    SCOPED_TRACE(::testing::Message() << overlay_depth << " over " << depth << ", mask " << masked);
                    const ObjectRef source = client_in_own_memory(session, random, 600, 3, depth, true);
                    const ObjectRef overlay = client_in_own_memory(session, random, 590, 4, overlay_depth, masked);
                    const auto before = client_bytes(overlay);
                    const Place place = {any_of(random, -20, 20), any_of(random, -3, 2)};
                    const Value result = composite(source, overlay, 0.6, place, as_picture);
                    ASSERT_TRUE(is_client(result)) << session.last_error();
                    const ObjectRef made = object_in(result);
                    EXPECT_EQ(static_cast<bool>(picture_behind(session, made)), as_picture);
                    EXPECT_FALSE(client_has_mask(made));
                    const ObjectRef shown = picture_of(made);
                    EXPECT_FALSE(pixels(shown).mask());
                    EXPECT_EQ(difference(pixels(shown),
                                         plain_composite(picture_of(source), picture_of(overlay), 0.6, place), depth),
                              "");
                    EXPECT_EQ(client_bytes(overlay), before);
                }
            }
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(ClientComposite, BackedByPicturesOfEveryKind) {
    for (const Shape& shape : source_shapes()) {
        SCOPED_TRACE(shape.name());
        const ObjectRef lower = random_picture(session, random, shape, 20, 4);
        const ObjectRef upper = random_picture(session, random, shape, 20, 4);
        const Value result =
            composite(client_of_picture(session, lower), client_of_picture(session, upper), 0.5, {3, 1}, false);
        ASSERT_TRUE(is_client(result));
        EXPECT_EQ(difference(pixels(picture_of(object_in(result))), plain_composite(lower, upper, 0.5, {3, 1}),
                             std::max(shape.depth, 16)),
                  "");
    }
}

TEST_F(ClientComposite, OwnMemoryUnlessAskedOtherwiseAndNoYielding) {
    const ObjectRef source = client_in_own_memory(session, random, 30, 13, 32, false);
    const ObjectRef overlay = client_in_own_memory(session, random, 30, 13, 32, true);
    Value result;
    EXPECT_EQ(yields([&] { result = session.call(source, "TRV_Composite", overlay, 0.5, 0, 0); }), 0);
    ASSERT_TRUE(is_client(result));
    EXPECT_EQ(own_depth(object_in(result)), 32);
}

TEST_F(ClientComposite, ChecksComeInOrder) {
    const auto call = [&](const ObjectRef& p, const ObjectRef& overlay, double fraction, bool as_picture = false) {
        return session.invoke("TRV_Composite(extends cp", p, overlay, fraction, 0, 0, as_picture);
    };
    const ObjectRef good = client_in_own_memory(session, random, 3, 2, 32, false);
    const ObjectRef purged = session.picture(3, 2);
    pixels(purged).set_purged(true);
    const ObjectRef locked_out = client_of_picture(session, purged);
    const auto code = [&](const ObjectRef& p, const ObjectRef& overlay, double fraction) {
        EXPECT_FALSE(object_in(call(p, overlay, fraction)));
        return session.last_error();
    };
    EXPECT_EQ(code({}, {}, 2.0), 2);
    EXPECT_EQ(code(locked_out, {}, 2.0), 13);
    EXPECT_EQ(code(locked_out, locked_out, 2.0), 15);
    EXPECT_EQ(code(locked_out, locked_out, 1.0), 4);
    EXPECT_EQ(code(good, locked_out, 1.0), 14);

    session.host.faults.fail_at("newPicture", 1);
    EXPECT_FALSE(object_in(call(good, good, 1.0, true)));  // not even the client picture is made
    EXPECT_EQ(session.last_error(), 6);
    // Both inputs are in own memory: the one description that is locked is the result's.
    session.host.faults.fail_at("lockPictureDescription", 1, true);
    EXPECT_TRUE(is_client(call(good, good, 1.0, true)));
    EXPECT_EQ(session.last_error(), 6);
}

}  // namespace
}  // namespace tarvo::test
