// Stretch, through the built library.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "client_pictures.h"
#include "pictures.h"
#include "plain_pixels.h"
#include "session.h"
#include "snapshot.h"

namespace tarvo::test {
namespace {

constexpr int kLeast = std::numeric_limits<int>::min();

// One line of pixels made longer or shorter, pixel by pixel.
std::vector<std::uint32_t> plain_stretch(const std::vector<std::uint32_t>& source, int length) {
    const int step = length * 32768 / static_cast<int>(source.size());
    const int total = static_cast<int>(source.size()) * step / length;
    std::vector<std::uint32_t> result;
    std::size_t read = 0;
    std::uint32_t current = 0;
    int left = 0;
    for (int i = 0; i < length; ++i) {
        unsigned sums[3] = {};
        for (int need = total; need > 0;) {
            if (read < source.size() && left <= 0) {
                current = source[read++];
                left = step;
            }
            if (read == source.size() && left <= 0) break;
            const int take = std::min(need, left);
            for (const int shift : {0, 8, 16})
                sums[shift / 8] += static_cast<unsigned>(channel(current, shift)) * static_cast<unsigned>(take);
            need -= take;
            left -= take;
        }
        result.push_back(each_channel([&](int shift) { return sums[shift / 8] / static_cast<unsigned>(total) & 255; }));
    }
    return result;
}

void judge_rows(const host::Picture& source, host::Picture& result, bool as_mask) {
    for (int y = 0; y < std::min(source.height(), result.height()); ++y) {
        std::vector<std::uint32_t> row;
        for (int x = 0; x < source.width(); ++x) row.push_back(load(source, x, y, as_mask, Addressing::whole_bytes));
        row = plain_stretch(row, result.width());
        for (int x = 0; x < result.width(); ++x)
            store(result, x, y, row[static_cast<std::size_t>(x)], false, Addressing::single_bits);
    }
}

void judge_columns(const host::Picture& source, host::Picture& result, bool as_mask) {
    for (int x = 0; x < result.width(); ++x) {
        std::vector<std::uint32_t> column;
        for (int y = 0; y < source.height(); ++y) column.push_back(load(source, x, y, false, Addressing::whole_bytes));
        column = plain_stretch(column, result.height());
        for (int y = 0; y < result.height(); ++y)
            store(result, x, y, column[static_cast<std::size_t>(y)], as_mask, Addressing::single_bits);
    }
}

// By way of a picture as deep as the image's result but at least 16, or 32 for masks.
void judge(const host::Picture& source, host::Picture& result, bool as_mask) {
    const auto between = host::Picture::make(
        {.width = result.width(), .height = source.height(), .depth = as_mask ? 32 : std::max(result.depth(), 16)});
    judge_rows(source, *between, as_mask);
    judge_columns(*between, result, as_mask);
}

bool can_be_made(int depth) { return depth == 1 || depth >= 16; }

class StretchOfMasks : public ::testing::Test {
protected:
    void expect_agreement(Session& in, const ObjectRef& source, int width, int height) {
        SCOPED_TRACE(::testing::Message() << pixels(source).describe() << " to " << width << " x " << height);
        const Snapshot before(in, source);
        const Value value = in.call(source, "TRV_Stretch", width, height, 0);
        EXPECT_EQ(in.last_error(), 0);
        EXPECT_TRUE(before.unchanged());
        ASSERT_EQ(picture_in(value) != nullptr, can_be_made(pixels(source).depth()));
        if (!picture_in(value)) return;
        const Picture& result = *picture_in(value);
        ASSERT_EQ(result.width(), width);
        ASSERT_EQ(result.height(), height);
        ASSERT_EQ(result.depth(), pixels(source).depth());
        const auto expected = new_like(result, Picture::Paper::white);
        judge(pixels(source), *expected, false);
        expect_same_bytes(result, *expected);

        ASSERT_EQ(static_cast<bool>(result.mask()), static_cast<bool>(pixels(source).mask()));
        if (!result.mask()) return;
        const auto expected_mask = new_like(pixels(result.mask()), Picture::Paper::black);
        judge(pixels(pixels(source).mask()), *expected_mask, true);
        expect_same_bytes(pixels(result.mask()), *expected_mask);
    }

    Random random{6004};
};

class Stretch : public StretchOfMasks {
protected:
    std::vector<std::uint32_t> stretched(const std::vector<std::uint32_t>& row, int width) {
        const int length = static_cast<int>(row.size());
        const ObjectRef source = session.picture(length, 1);
        for (int x = 0; x < length; ++x) write_pixel(pixels(source), x, 0, row[static_cast<std::size_t>(x)]);
        return read_image(*picture_in(session.call(source, "TRV_Stretch", width, 1, 0))).colors;
    }

    Session session;
};

TEST_F(Stretch, EveryKindAgreesWithTheJudge) {
    for (const Shape& shape : source_shapes()) {
        for (int i = 0; i < 12; ++i) {
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 20);
            const ObjectRef source = random_picture(session, random, shape, width, height);
            expect_agreement(session, source, any_of(random, 1, 90), any_of(random, 1, 50));
            expect_agreement(session, source, 2 * width, 2 * height);
            expect_agreement(session, source, (width + 1) / 2, (height + 1) / 2);
            expect_agreement(session, source, width, height);
            expect_agreement(session, source, 1, 1);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(StretchOfMasks, EveryDepthIsStretchedToo) {
    for (const int result_mask_depth : {32, 1, 2, 4, 8, 16, 24}) {
        Session in({.mask_depth = result_mask_depth});
        for (const int depth : {1, 16, 32}) {
            for (const int mask_depth : mask_depths()) {
                const ObjectRef source = random_picture(in, random, {.depth = depth, .mask_depth = mask_depth}, 21, 9);
                expect_agreement(in, source, any_of(random, 1, 50), any_of(random, 1, 20));
            }
        }
        EXPECT_TRUE(in.host.complaints().empty());
    }
}

TEST_F(Stretch, SizesAroundRuns) {
    const std::pair<int, int> sizes[] = {{63, 65},  {65, 3},   {513, 70},  {1025, 2},
                                         {2, 1025}, {2048, 5}, {2051, 10}, {4102, 20}};
    for (const auto& [width, height] : sizes) {
        const ObjectRef source = random_picture(session, random, {}, width, height);
        for (const auto& [new_width, new_height] : sizes) expect_agreement(session, source, new_width, new_height);
    }
}

TEST_F(Stretch, ExtremeRatios) {
    const ObjectRef wide = random_picture(session, random, {}, 32767, 1);
    expect_agreement(session, wide, 1, 1);
    expect_agreement(session, wide, 2, 3);
    expect_agreement(session, wide, 32766, 1);
    const ObjectRef tall = random_picture(session, random, {}, 1, 32767);
    expect_agreement(session, tall, 3, 1);
    expect_agreement(session, tall, 1, 4099);
    expect_agreement(session, random_picture(session, random, {}, 1, 1), 32767, 2);
    expect_agreement(session, random_picture(session, random, {}, 3, 2), 1, 32767);
}

TEST_F(Stretch, KnownMeans) {
    using Row = std::vector<std::uint32_t>;
    EXPECT_EQ(stretched({0x000000, 0xFFFFFF}, 4), (Row{0x000000, 0x000000, 0xFFFFFF, 0xFFFFFF}));
    EXPECT_EQ(stretched({0x000000, 0xFF0001, 0x102030, 0x203040}, 2), (Row{0x7F0000, 0x182838}));
    // 21845 and 10922, then 10923 and 21844, of 32767.
    EXPECT_EQ(stretched({0x0000FF, 0x00FF00, 0xFF0000}, 2), (Row{0x0054AA, 0xA95500}));
    EXPECT_EQ(stretched({0xFF123456, 0x00ABCDEF}, 2), (Row{0x123456, 0xABCDEF}));  // without the top byte
}

TEST_F(Stretch, EveryCheckRunsAndTheLastCodeStays) {
    const ObjectRef source = session.picture(3, 2);
    const auto code = [&](const ObjectRef& p, int width, int height) {
        EXPECT_FALSE(picture_in(session.invoke("TRV_Stretch(extends p", p, width, height, 0)));
        return session.last_error();
    };
    EXPECT_EQ(code({}, 5, 5), 2);
    EXPECT_EQ(code({}, 0, 5), 34);
    EXPECT_EQ(code({}, 0, 0), 35);
    EXPECT_EQ(code(source, 0, 5), 34);
    EXPECT_EQ(code(source, kLeast, 1), 34);
    EXPECT_EQ(code(source, 1, -1), 35);
    EXPECT_EQ(code(source, -1, 0), 35);
}

TEST_F(Stretch, LocksThatFail) {
    const ObjectRef source = session.picture(3, 2), unlockable = session.picture(3, 2), masked = session.picture(3, 2);
    pixels(unlockable).set_purged(true);
    pixels(masked).set_mask(session.picture(3, 2, 8));
    const auto stretch = [&](const ObjectRef& p) { return session.call(p, "TRV_Stretch", 6, 5, 0); };

    EXPECT_FALSE(picture_in(stretch(unlockable)));
    EXPECT_EQ(session.last_error(), 4);
    session.host.faults.fail_at("newPicture", 1);  // the result: nil, and no code
    EXPECT_FALSE(picture_in(stretch(source)));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_FALSE(picture_in(session.call(source, "TRV_Stretch", 65536, 5, 0)));
    EXPECT_EQ(session.last_error(), 0);

    const auto expect_unpainted = [&](const Value& value, int code) {
        ASSERT_TRUE(picture_in(value));
        EXPECT_EQ(session.last_error(), code);
        EXPECT_EQ(read_pixel(*picture_in(value), 5, 4) & 0xFFFFFF, 0xFFFFFFu);
    };
    pixels(source).row(1)[10] = 1;
    session.host.faults.fail_at("newPicture", 2);
    expect_unpainted(stretch(source), 5);
    for (const int intermediate : {2, 3}) {  // the image's, the mask's
        session.host.faults.fail_at("newPicture", intermediate);
        expect_unpainted(stretch(masked), 5);
    }
    session.host.faults.clear();
    pixels(pixels(masked).mask()).set_purged(true);
    expect_unpainted(stretch(masked), 4);
    EXPECT_EQ(session.host.accounts().picture_locks, 0);
}

TEST_F(Stretch, ReferencesBalance) {
    for (const int mask_depth : {0, 8, 32}) {
        const ObjectRef source = random_picture(session, random, {.mask_depth = mask_depth}, 20, 10);
        const host::Accounts before = session.host.accounts();
        for (int i = 0; i < 5; ++i) session.call(source, "TRV_Stretch", 33, 5 + i, 0);
        EXPECT_EQ(session.host.accounts(), before) << session.host.describe_live_objects();
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

// Rows of the intermediate picture, then columns of the result.
TEST_F(Stretch, YieldsByRowsThenByColumns) {
    const ObjectRef source = session.picture(30, 100), masked = session.picture(30, 100);
    pixels(masked).set_mask(session.picture(30, 100));
    const auto yields = [&](const ObjectRef& p, int budget) {
        const int before = session.host.yields();
        EXPECT_TRUE(picture_in(session.call(p, "TRV_Stretch", 600, 70, budget)));
        return session.host.yields() - before;
    };
    EXPECT_EQ(yields(source, 0), 0);
    EXPECT_EQ(yields(source, -1), 0);
    EXPECT_EQ(yields(source, 1), 99 + 599);
    EXPECT_EQ(yields(source, 140), 99 + 299);
    EXPECT_EQ(yields(source, 601), 49 + 599 / 9);
    EXPECT_EQ(yields(masked, 601), 2 * (49 + 599 / 9));
}

// --- client pictures -------------------------------------------------------------------------------------------------

constexpr const char* kClientStretch = "TRV_Stretch(extends cp";

TEST_F(Stretch, ClientFormAgreesWithTheJudge) {
    for (const int depth : {16, 24, 32}) {
        for (const bool masked : {false, true}) {
            for (const bool as_picture : {false, true}) {
                const ObjectRef client = client_in_own_memory(session, random, 17, 11, depth, masked);
                const ObjectRef source = session.picture_of(client);
                const auto bytes = client_bytes(client);
                const Value value = session.invoke(kClientStretch, client, 40, 6, 0, as_picture);
                ASSERT_TRUE(is_client(value));
                EXPECT_EQ(session.last_error(), 0);
                EXPECT_EQ(client_bytes(client), bytes);
                EXPECT_EQ(static_cast<bool>(picture_behind(session, object_in(value))), as_picture);
                const ObjectRef result = session.picture_of(object_in(value));
                ASSERT_EQ(pixels(result).depth(), depth);
                const auto expected = new_like(pixels(result), Picture::Paper::white);
                judge(pixels(source), *expected, false);
                expect_same_bytes(pixels(result), *expected);

                ASSERT_EQ(static_cast<bool>(pixels(result).mask()), masked);
                if (!masked) continue;
                const Picture& mask = pixels(pixels(result).mask());
                const auto expected_mask = new_like(mask, Picture::Paper::black);
                judge(pixels(pixels(source).mask()), *expected_mask, true);
                expect_same_bytes(mask, *expected_mask);
            }
        }
    }
}

TEST_F(Stretch, ClientFormChecks) {
    const ObjectRef client = client_in_own_memory(session, random, 4, 4, 32, false);
    const auto code = [&](const ObjectRef& cp, int width, int height) {
        EXPECT_FALSE(is_client(session.invoke(kClientStretch, cp, width, height, 0, false)));
        return session.last_error();
    };
    EXPECT_EQ(code({}, 5, 5), 2);
    EXPECT_EQ(code({}, 0, 5), 34);
    EXPECT_EQ(code(client, 0, 0), 35);
    EXPECT_EQ(code(client, 100000, 100000), 6);  // more bytes than there can be
    const ObjectRef unlockable = session.picture(3, 2);
    pixels(unlockable).set_purged(true);
    EXPECT_EQ(code(client_of_picture(session, unlockable), 5, 5), 4);
}

// The host makes a picture of every depth behind a client picture; what the kernels cannot write stays as it was made.
TEST_F(Stretch, ClientPicturesOfFewBits) {
    for (const int depth : {1, 2, 4, 8}) {
        SCOPED_TRACE(depth);
        const ObjectRef client = client_of_picture(session, random_picture(session, random, {.depth = depth}, 21, 9));
        const Value backed = session.invoke(kClientStretch, client, 10, 7, 0, true);
        ASSERT_TRUE(is_client(backed));
        EXPECT_EQ(session.last_error(), 0);
        const ObjectRef result = session.picture_of(object_in(backed));
        ASSERT_EQ(pixels(result).depth(), depth);
        const auto expected = new_like(pixels(result), Picture::Paper::white);
        if (depth == 1) judge(pixels(session.picture_of(client)), *expected, false);
        expect_same_bytes(pixels(result), *expected);

        // Own memory has no such depth.
        EXPECT_FALSE(is_client(session.invoke(kClientStretch, client, 10, 7, 0, false)));
        EXPECT_EQ(session.last_error(), 6);
    }
}

TEST_F(Stretch, WideRowsByWayOfAnIntermediatePictureThatLosesBits) {
    for (const int width : {2048, 2049, 3000})
        expect_agreement(session, random_picture(session, random, {.depth = 16, .mask_depth = 8}, 3, 4), width, 5);
}

// Wider than any host picture: own memory can hold it, the intermediate picture cannot.
TEST_F(Stretch, ClientPicturesBeyondTheHostsSizes) {
    const ObjectRef client = client_in_own_memory(session, random, 3, 2, 32, false);
    EXPECT_TRUE(is_client(session.invoke(kClientStretch, client, 70000, 2, 0, false)));
    EXPECT_EQ(session.last_error(), 5);

    const Value tall = session.invoke(kClientStretch, client, 3, 100000, 0, false);
    ASSERT_TRUE(is_client(tall));
    EXPECT_EQ(session.last_error(), 0);
    // Shrunk again it is what it was: every pixel has become 50,000.
    const Value back = session.invoke(kClientStretch, object_in(tall), 3, 2, 0, false);
    EXPECT_EQ(session.last_error(), 5);  // its rows are more than a host picture has
    ASSERT_TRUE(is_client(back));
}

// 40,000 to 1: a source pixel's weight would be nothing in the usual units.
TEST_F(Stretch, ManyToOneIsTheirMean) {
    const ObjectRef row = session.picture(1, 1);
    write_pixel(pixels(row), 0, 0, 0x204060);
    const Value wide =
        session.invoke("TRV_Trim(extends cp", session.client(row), session.rectangle(0, 0, 40000, 1), Color{0x80C0E0});
    ASSERT_TRUE(is_client(wide));
    const Value one = session.invoke(kClientStretch, object_in(wide), 1, 1, 0, false);
    ASSERT_TRUE(is_client(one));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(read_pixel(pixels(session.picture_of(object_in(one))), 0, 0), 0x7FBFDFu);
}

}  // namespace
}  // namespace tarvo::test
