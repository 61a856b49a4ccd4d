// Pictures to strings and back, through the built library.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "pictures.h"
#include "plain_image.h"
#include "session.h"

namespace tarvo::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kHeader = 11;

std::string text_of(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

Bytes bytes_in(const Value& value) {
    const auto* const string = dynamic_cast<const host::StringObject*>(object_in(value).get());
    return string ? Bytes(string->bytes().begin(), string->bytes().end()) : Bytes();
}

void append(Bytes& bytes, std::uint32_t value, int count) {
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

Bytes header(std::uint32_t width, std::uint32_t height, std::uint32_t depth, std::uint32_t flag) {
    Bytes bytes;
    append(bytes, width, 4);
    append(bytes, height, 4);
    append(bytes, depth, 2);
    append(bytes, flag, 1);
    return bytes;
}

// A string of that header and exactly so many bytes behind it.
Bytes with_planes(Bytes bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(37 * i + 11));
    return bytes;
}

// One byte after the other, as the format is told. A drawing is rendered first, and what is rendered has no mask.
Bytes plain_string(const Picture& picture) {
    const bool drawing = picture.backing() == host::Backing::drawing_commands;
    const auto* const mask = drawing ? nullptr : dynamic_cast<const Picture*>(picture.mask().get());
    Bytes bytes = header(static_cast<std::uint32_t>(picture.width()), static_cast<std::uint32_t>(picture.height()),
                         static_cast<std::uint32_t>(drawing ? 32 : picture.depth()), mask ? 1 : 0);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) append(bytes, read_pixel(picture, x, y) & 0xFFFFFF, 3);
    for (int y = 0; mask && y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const bool exists = x < mask->width() && y < mask->height();
            append(bytes, exists ? read_pixel(*mask, x, y, true) >> 16 : 0, 1);
        }
    return bytes;
}

// The colours and the mask of a string whose header is right.
PlainImage plain_colors(const Bytes& bytes, int width, int height) {
    PlainImage image(width, height);
    for (std::size_t i = 0; i < image.colors.size(); ++i) {
        const std::uint8_t* const at = bytes.data() + kHeader + 3 * i;
        image.colors[i] = static_cast<std::uint32_t>(at[0] << 16 | at[1] << 8 | at[2]);
    }
    return image;
}

PlainImage plain_mask(const Bytes& bytes, int width, int height) {
    PlainImage image(width, height);
    const std::size_t start = kHeader + 3 * image.colors.size();
    for (std::size_t i = 0; i < image.colors.size(); ++i) image.colors[i] = bytes[start + i] * 0x010101u;
    return image;
}

class PictureString : public ::testing::Test {
protected:
    Value to_string(const ObjectRef& picture) { return session.call(picture, "TRV_ConvertToString"); }
    Value to_picture(const Bytes& bytes) {
        return session.call(session.host.new_string(text_of(bytes)), "TRV_ConvertToPicture");
    }
    // Leaves a code, to see that the next call clears it.
    void leave_a_code() {
        session.invoke("TRV_Info(extends", nullptr);
        ASSERT_EQ(session.last_error(), 2);
    }
    void expect_refused(const Bytes& bytes) {
        const auto before = session.host.accounts();
        leave_a_code();
        EXPECT_FALSE(object_in(to_picture(bytes)));
        EXPECT_EQ(session.last_error(), 0);
        EXPECT_EQ(session.host.accounts(), before);
    }
    Picture& with_mask(const ObjectRef& picture, int width, int height, int depth) {
        pixels(picture).set_mask(random_mask(session, random, depth, width, height));
        return pixels(pixels(picture).mask());
    }

    Session session;
    Random random{8001};
};

// --- to strings ------------------------------------------------------------------------------------------------------

TEST_F(PictureString, IsWrittenByteForByte) {
    const ObjectRef picture = session.picture(2, 1);
    write_pixel(pixels(picture), 0, 0, 0xFF123456);  // the unused byte is not written
    write_pixel(pixels(picture), 1, 0, 0x00ABCDEF);
    Bytes expected = {0, 0, 0, 2, 0, 0, 0, 1, 0, 32, 0, 0x12, 0x34, 0x56, 0xAB, 0xCD, 0xEF};
    EXPECT_EQ(bytes_in(to_string(picture)), expected);

    Picture& mask = with_mask(picture, 2, 1, 32);
    write_pixel(mask, 0, 0, 0x00FE1122);  // the red channel counts
    write_pixel(mask, 1, 0, 0x0001FFFF);
    expected[10] = 1;
    expected.insert(expected.end(), {0xFE, 0x01});
    EXPECT_EQ(bytes_in(to_string(picture)), expected);
}

TEST_F(PictureString, OfEveryKindAndMaskAgreesWithTheJudge) {
    for (Shape shape : source_shapes()) {
        for (const int mask_depth : mask_depths()) {
            shape.mask_depth = mask_depth;
            SCOPED_TRACE(shape.name());
            const ObjectRef picture =
                random_picture(session, random, shape, any_of(random, 1, 40), any_of(random, 1, 6));
            const Bytes source = all_bytes(picture);
            const auto before = session.host.accounts();
            EXPECT_EQ(bytes_in(to_string(picture)), plain_string(pixels(picture)));
            EXPECT_EQ(session.last_error(), 0);
            EXPECT_EQ(all_bytes(picture), source);
            EXPECT_EQ(session.host.accounts(), before);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
    EXPECT_EQ(session.host.yields(), 0);
}

TEST_F(PictureString, OfWideRowsAgreesWithTheJudge) {
    for (const int width : {511, 512, 513, 1025}) {
        const ObjectRef picture = random_picture(session, random, {.mask_depth = 32}, width, 3);
        const Bytes written = bytes_in(to_string(picture));
        EXPECT_EQ(written, plain_string(pixels(picture))) << width;
        const Value read = to_picture(written);
        ASSERT_TRUE(picture_in(read));
        EXPECT_EQ(difference(*picture_in(read), plain_colors(written, width, 3), 32), "") << width;
        EXPECT_EQ(difference(pixels(picture_in(read)->mask()), plain_mask(written, width, 3), 32, true), "") << width;
    }
}

TEST_F(PictureString, HasZeroesWhereTheMaskDoesNotReach) {
    constexpr int kWidth = 9, kHeight = 5;
    for (const auto& [width, height] : {std::pair{4, 5}, {9, 2}, {3, 3}, {14, 3}, {4, 8}, {12, 7}}) {
        SCOPED_TRACE(::testing::Message() << width << " x " << height);
        const ObjectRef picture = random_picture(session, random, {}, kWidth, kHeight);
        with_mask(picture, width, height, 32);
        EXPECT_EQ(bytes_in(to_string(picture)), plain_string(pixels(picture)));
    }
}

TEST_F(PictureString, HasZeroesForAMaskThatCannotBeLocked) {
    const ObjectRef picture = random_picture(session, random, {.mask_depth = 32}, 600, 3);
    const Bytes whole = plain_string(pixels(picture));
    Bytes expected = whole;
    std::fill(expected.begin() + static_cast<std::ptrdiff_t>(kHeader) + 3 * 600 * 3, expected.end(), std::uint8_t{0});
    ASSERT_EQ(expected[10], 1);
    ASSERT_NE(expected, whole);

    Picture& mask = pixels(pixels(picture).mask());
    mask.set_purged(true);
    EXPECT_EQ(bytes_in(to_string(picture)), expected);
    mask.set_purged(false);
    session.host.faults.fail_at("REALGetPictureMask", 2);  // behind the question whether there is one
    EXPECT_EQ(bytes_in(to_string(picture)), expected);
    EXPECT_TRUE(session.host.faults.happened());
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(bytes_in(to_string(picture)), whole);
}

TEST_F(PictureString, OfNilIsAnError) {
    EXPECT_FALSE(object_in(session.invoke("TRV_ConvertToString(extends", nullptr)));
    EXPECT_EQ(session.last_error(), 2);
}

TEST_F(PictureString, OfAPictureThatCannotBeLockedIsNilWithoutACode) {
    const ObjectRef purged = session.picture(3, 3),
                    refused = session.host.new_picture({.width = 3, .height = 3, .backing = host::Backing::refused});
    pixels(purged).set_purged(true);
    const auto before = session.host.accounts();
    for (const ObjectRef& picture : {purged, refused}) {
        leave_a_code();
        EXPECT_FALSE(object_in(to_string(picture)));
        EXPECT_EQ(session.last_error(), 0);
    }
    EXPECT_EQ(session.host.accounts(), before);
}

TEST_F(PictureString, ThatWouldBeTooLongIsNilWithoutACode) {
    const ObjectRef picture = session.picture(32767, 21846, 1);  // three bytes a pixel pass 2^31
    leave_a_code();
    EXPECT_FALSE(object_in(to_string(picture)));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(session.host.faults.calls("REALBuildString"), 0);
}

TEST_F(PictureString, ThatTheHostDoesNotMakeIsNil) {
    const ObjectRef picture = session.picture(3, 3);
    const auto before = session.host.accounts();
    session.host.faults.fail_at("REALBuildString", 1);
    EXPECT_FALSE(object_in(to_string(picture)));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(session.host.accounts(), before);
}

// --- and back --------------------------------------------------------------------------------------------------------

TEST_F(PictureString, GivesThePictureBack) {
    for (const int depth : {16, 24, 32}) {
        for (const bool masked : {false, true}) {
            SCOPED_TRACE(::testing::Message() << depth << (masked ? " with mask" : ""));
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 6);
            const ObjectRef picture =
                random_picture(session, random, {.depth = depth, .mask_depth = masked ? 32 : 0}, width, height);
            const Bytes written = bytes_in(to_string(picture));
            const auto before = session.host.accounts();
            {
                const Value read = to_picture(written);
                ASSERT_TRUE(picture_in(read));
                EXPECT_EQ(session.last_error(), 0);
                EXPECT_EQ(difference(*picture_in(read), plain_colors(written, width, height), depth), "");
                ASSERT_EQ(static_cast<bool>(picture_in(read)->mask()), masked);
                if (masked) {
                    EXPECT_EQ(
                        difference(pixels(picture_in(read)->mask()), plain_mask(written, width, height), 32, true), "");
                }
                EXPECT_EQ(bytes_in(to_string(object_in(read))), written);
            }
            EXPECT_EQ(session.host.accounts(), before);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(PictureString, TakesAnyFlagButZeroForAMask) {
    for (const std::uint32_t flag : {1u, 2u, 0x80u, 0xFFu}) {
        const Bytes bytes = with_planes(header(2, 2, 24, flag), 16);
        const Value read = to_picture(bytes);
        ASSERT_TRUE(picture_in(read)) << flag;
        EXPECT_EQ(difference(*picture_in(read), plain_colors(bytes, 2, 2), 24), "");
        ASSERT_TRUE(picture_in(read)->mask()) << flag;
        EXPECT_EQ(difference(pixels(picture_in(read)->mask()), plain_mask(bytes, 2, 2), 32, true), "");
    }
}

TEST(PictureStringMasks, AreWrittenAtTheDepthThatTheHostGivesThem) {
    constexpr int kWidth = 13, kHeight = 4;
    const Bytes bytes = with_planes(header(kWidth, kHeight, 32, 1), 4 * kWidth * kHeight);
    for (const int depth : {1, 2, 4, 8, 16, 24, 32}) {
        Session session({.mask_depth = depth});
        const Value string = session.host.new_string(text_of(bytes));
        const Value read = session.call(object_in(string), "TRV_ConvertToPicture");
        ASSERT_TRUE(picture_in(read)) << depth;
        EXPECT_EQ(difference(*picture_in(read), plain_colors(bytes, kWidth, kHeight), 32), "") << depth;
        const Picture& mask = pixels(picture_in(read)->mask());
        const PlainImage levels = plain_mask(bytes, kWidth, kHeight);
        if (depth >= 8) {
            EXPECT_EQ(difference(mask, levels, depth, true), "") << depth;
        } else {  // each pixel of a row takes the row's first byte
            for (int y = 0; y < kHeight; ++y) EXPECT_EQ(mask.row(y)[0], levels.at(kWidth - 1, y) & 255) << depth;
        }
    }
}

TEST_F(PictureString, ThatIsNilHasACodeOfItsOwn) {
    EXPECT_FALSE(object_in(session.invoke("TRV_ConvertToPicture(extends", nullptr)));
    EXPECT_EQ(session.last_error(), 3);
    EXPECT_EQ(session.error_message(3), "Unknown Error");
}

TEST_F(PictureString, ShorterThanItsHeaderIsRefused) {
    const Bytes whole = with_planes(header(1, 1, 32, 0), 3);
    ASSERT_TRUE(picture_in(to_picture(whole)));
    for (std::size_t length = 0; length < whole.size(); ++length)
        expect_refused(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
}

TEST_F(PictureString, OfTheWrongLengthIsRefused) {
    for (const std::uint32_t flag : {0u, 1u}) {
        const std::size_t planes = (flag ? 4 : 3) * 5 * 7;
        ASSERT_TRUE(picture_in(to_picture(with_planes(header(5, 7, 32, flag), planes))));
        expect_refused(with_planes(header(5, 7, 32, flag), planes - 1));
        expect_refused(with_planes(header(5, 7, 32, flag), planes + 1));
    }
    expect_refused(with_planes(header(5, 7, 32, 1), 3 * 5 * 7));  // the mask plane is missing
    expect_refused(with_planes(header(5, 7, 32, 0), 4 * 5 * 7));  // a mask plane that is not announced
}

TEST_F(PictureString, OfNoPixelsIsRefused) {
    expect_refused(header(0, 0, 32, 0));
    expect_refused(header(0, 5, 32, 0));
    expect_refused(header(5, 0, 32, 1));
}

TEST_F(PictureString, OfAnotherDepthIsRefused) {
    for (std::uint32_t depth = 0; depth <= 65535; depth = depth < 70 ? depth + 1 : depth * 2 + 1) {
        const Bytes bytes = with_planes(header(3, 2, depth, 0), 18);
        if (depth == 16 || depth == 24 || depth == 32)
            EXPECT_TRUE(picture_in(to_picture(bytes))) << depth;
        else
            expect_refused(bytes);  // 8 too: that is read, but no new picture has it
    }
}

// What 1-, 2-, 4- and 8-bit pictures write cannot be read back.
TEST_F(PictureString, OfAShallowPictureIsRefused) {
    for (const int depth : {1, 2, 4, 8}) {
        const Bytes written = bytes_in(to_string(random_picture(session, random, {.depth = depth}, 5, 2)));
        ASSERT_EQ(written.size(), kHeader + 3 * 5 * 2);
        expect_refused(written);
    }
}

// The bytes of these sizes, counted in 32 bits, are as few as the string has.
TEST_F(PictureString, WhoseSizeWrapsIsRefused) {
    expect_refused(header(0x10000, 0x10000, 32, 0));
    expect_refused(header(0x40000000, 1, 32, 1));
    expect_refused(header(0x80000000, 2, 24, 1));
    expect_refused(with_planes(header(0x55555556, 1, 32, 0), 2));
    expect_refused(with_planes(header(0xFFFFFFFF, 0xFFFFFFFF, 16, 0), 3));
    expect_refused(with_planes(header(0xFFFFFFFF, 0xFFFFFFFF, 16, 1), 4));
}

TEST_F(PictureString, WiderOrHigherThanPicturesAreIsRefused) {
    ASSERT_TRUE(picture_in(to_picture(with_planes(header(32767, 1, 32, 0), 3 * 32767))));
    expect_refused(with_planes(header(32768, 1, 32, 0), 3 * 32768));
    expect_refused(with_planes(header(1, 70000, 32, 1), 4 * 70000));
}

TEST_F(PictureString, WhosePictureCannotBeMadeIsNil) {
    const Bytes bytes = with_planes(header(2, 2, 32, 0), 12);
    session.host.faults.fail_at("newPicture", 1);
    expect_refused(bytes);
    EXPECT_TRUE(session.host.faults.happened());
}

// The new picture was promised to the caller before it could not be locked.
TEST_F(PictureString, WhosePictureCannotBeLockedLeavesIt) {
    const Bytes bytes = with_planes(header(2, 2, 32, 0), 12);
    const auto before = session.host.accounts();
    session.host.faults.fail_at("lockPictureDescription", 1);
    EXPECT_FALSE(object_in(to_picture(bytes)));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(session.host.accounts().pictures, before.pictures + 1);
    EXPECT_EQ(session.host.accounts().strings, before.strings);
    EXPECT_EQ(session.host.accounts().picture_locks, 0);
}

TEST_F(PictureString, WhoseMaskCannotBeMadeGivesThePictureWithout) {
    const Bytes bytes = with_planes(header(2, 2, 32, 1), 16);
    session.host.faults.fail_at("REALGetPictureMask", 1);
    const Value read = to_picture(bytes);
    ASSERT_TRUE(picture_in(read));
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_FALSE(picture_in(read)->mask());
    EXPECT_EQ(difference(*picture_in(read), plain_colors(bytes, 2, 2), 32), "");
}

}  // namespace
}  // namespace tarvo::test
