// Pixels in memory blocks, through the built library.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "judge.h"
#include "session.h"

namespace tarvo::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Elements in the machine's byte order.
template <class Element>
void append(Bytes& bytes, std::uint32_t value) {
    const auto element = static_cast<Element>(value);
    const auto* const first = reinterpret_cast<const std::uint8_t*>(&element);
    for (std::size_t i = 0; i < sizeof element; ++i) bytes.push_back(first[i]);
}

std::uint32_t plain_555(std::uint32_t color) {
    return static_cast<std::uint32_t>(channel(color, 16) / 8 * 1024 + channel(color, 8) / 8 * 32 +
                                      channel(color, 0) / 8);
}

// One pixel after the other.
Bytes plain_block(const Picture& picture, const Area& area) {
    Bytes bytes;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (!area.has(x, y)) continue;
            const std::uint32_t color = read_pixel(picture, x, y);
            if (picture.depth() > 16)
                append<std::uint32_t>(bytes, color & 0xFFFFFF);
            else
                append<std::uint16_t>(bytes, plain_555(color));
        }
    }
    return bytes;
}

struct Made {
    ObjectRef block;
    int row_bytes;
    Bytes bytes() const {
        const auto* const object = dynamic_cast<const host::MemoryBlock*>(block.get());
        return object ? Bytes(object->bytes.begin(), object->bytes.end()) : Bytes();
    }
};

class MemoryBlock : public ::testing::Test {
protected:
    Made make(const ObjectRef& picture, const ObjectRef& rectangle, bool mask_to_alpha = false) {
        std::array<Value, 4> arguments = {value(picture), value(rectangle), mask_to_alpha, -1};
        const Value result = session.caller.invoke(session.callable("TRV_MakeMemoryBlock("), arguments);
        return {object_in(result), std::get<std::int32_t>(arguments[3])};
    }
    void expect_failure(const ObjectRef& picture, const ObjectRef& rectangle, int code) {
        const auto before = session.host.accounts();
        const Made made = make(picture, rectangle);
        EXPECT_FALSE(made.block);
        EXPECT_EQ(made.row_bytes, 0);
        EXPECT_EQ(session.last_error(), code);
        EXPECT_EQ(session.host.accounts(), before);
    }

    Session session;
    Random random{8002};
};

TEST_F(MemoryBlock, OfEveryKindAgreesWithTheJudge) {
    for (Shape shape : source_shapes()) {
        for (int turn = 0; turn < 6; ++turn) {
            shape.mask_depth = turn % 2 ? 8 : 0;
            SCOPED_TRACE(shape.name());
            const int width = any_of(random, 1, 30), height = any_of(random, 1, 7);
            const ObjectRef picture = random_picture(session, random, shape, width, height);
            const Area area = turn == 0 ? Area{0, 0, width, height} : any_area(random, width, height);
            const ObjectRef rectangle =
                turn == 0 ? ObjectRef() : session.rectangle(area.left, area.top, area.width, area.height);
            const auto source = all_bytes(picture);
            const auto before = session.host.accounts();
            {
                const Made made = make(picture, rectangle, turn % 3 == 0);
                ASSERT_TRUE(made.block);
                EXPECT_EQ(session.last_error(), 0);
                const int columns = std::min(area.left + area.width, width) - std::max(area.left, 0);
                EXPECT_EQ(made.row_bytes, columns * (std::max(shape.depth, 16) == 16 ? 2 : 4));
                EXPECT_EQ(made.bytes(), plain_block(pixels(picture), area));
                EXPECT_FALSE(made.bytes().empty());
            }
            EXPECT_EQ(all_bytes(picture), source);
            EXPECT_EQ(session.host.accounts(), before);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
    EXPECT_EQ(session.host.yields(), 0);
}

TEST_F(MemoryBlock, OfWideRowsAgreesWithTheJudge) {
    for (const int width : {511, 512, 513, 1025}) {
        for (const int depth : {16, 32}) {
            const ObjectRef picture = random_picture(session, random, {.depth = depth}, width, 3);
            EXPECT_EQ(make(picture, {}).bytes(), plain_block(pixels(picture), {0, 0, width, 3})) << width;
        }
    }
}

TEST_F(MemoryBlock, IsPackedRowAfterRow) {
    const ObjectRef deep = session.picture(10, 10);
    const Made words = make(deep, session.rectangle(4, 5, 3, 2));
    EXPECT_EQ(words.row_bytes, 12);
    EXPECT_EQ(words.bytes().size(), 24u);

    const ObjectRef shallow = session.picture(10, 10, 8);  // white
    const Made halves = make(shallow, session.rectangle(4, 5, 3, 2));
    EXPECT_EQ(halves.row_bytes, 6);
    Bytes white;
    for (int i = 0; i < 6; ++i) append<std::uint16_t>(white, 0x7FFF);
    EXPECT_EQ(halves.bytes(), white);

    EXPECT_EQ(make(session.picture(5, 1, 24), {}).row_bytes, 20);
}

// Top byte and top bit stay 0, whatever the flag and the mask; that there is a mask is asked and no reference kept.
TEST_F(MemoryBlock, KnowsNoAlpha) {
    for (const int depth : {16, 32}) {
        for (const int mask_depth : {0, 8, 32}) {
            SCOPED_TRACE(::testing::Message() << depth << ", mask of " << mask_depth);
            const ObjectRef picture = random_picture(session, random, {.depth = depth, .mask_depth = mask_depth}, 7, 5);
            const int references = mask_depth ? pixels(picture).mask()->references() : 0;
            const int asked = session.host.faults.calls("REALGetPictureMask");
            const Bytes plain = plain_block(pixels(picture), {0, 0, 7, 5});
            EXPECT_EQ(make(picture, {}, false).bytes(), plain);
            EXPECT_EQ(make(picture, {}, true).bytes(), plain);
            EXPECT_EQ(session.host.faults.calls("REALGetPictureMask"), asked + 2);
            ASSERT_EQ(static_cast<bool>(pixels(picture).mask()), mask_depth != 0);  // none is made
            EXPECT_EQ(mask_depth ? pixels(picture).mask()->references() : 0, references);
        }
    }
}

TEST_F(MemoryBlock, ChecksComeInOrder) {
    const ObjectRef purged = session.picture(4, 4), picture = session.picture(4, 4);
    pixels(purged).set_purged(true);
    const ObjectRef outside = session.rectangle(4, 0, 1, 1);
    expect_failure({}, outside, 2);
    expect_failure(purged, outside, 4);
    expect_failure(picture, outside, 38);
    EXPECT_TRUE(make(picture, session.rectangle(3, 3, 1, 1)).block);
    EXPECT_EQ(session.last_error(), 0);
    for (const auto& [left, top, width, height] : {Area{0, 4, 1, 1}, {-1, 0, 1, 1}, {0, -2, 4, 2}, {1, 1, 0, 3}})
        expect_failure(picture, session.rectangle(left, top, width, height), 38);
}

TEST_F(MemoryBlock, ThatTheHostDoesNotMakeIsNilWithoutACode) {
    const ObjectRef picture = session.picture(4, 4);
    for (const char* service : {"newMemoryBlock", "memoryBlockGetPtr"}) {
        session.host.faults.fail_at(service, 1);
        expect_failure(picture, {}, 0);
        EXPECT_TRUE(session.host.faults.happened()) << service;
    }
}

}  // namespace
}  // namespace tarvo::test
