// Pictures from rows and to rows, wrapped, counted and summed up.

#include <gtest/gtest.h>

#include "samples.h"

namespace tarvo::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(LibraryPictures, TakeRowsOfEveryLayout) {
    const Bytes grey = {10, 200}, rgb = {1, 2, 3, 4, 5, 6}, rgba = {1, 2, 3, 255, 4, 5, 6, 100},
                xrgb = {9, 1, 2, 3, 8, 4, 5, 6};
    EXPECT_EQ(rows_of(Picture::from_rows(grey.data(), 2, 2, 1, TARVO_GREY8), TARVO_RGB24),
              (Bytes{10, 10, 10, 200, 200, 200}));
    EXPECT_EQ(rows_of(Picture::from_rows(rgb.data(), 6, 2, 1, TARVO_RGB24), TARVO_RGBA32),
              (Bytes{1, 2, 3, 255, 4, 5, 6, 255}));
    const Picture masked = Picture::from_rows(rgba.data(), 8, 2, 1, TARVO_RGBA32);
    EXPECT_EQ(rows_of(masked, TARVO_RGBA32), rgba);
    EXPECT_EQ(rows_of(masked, TARVO_XRGB32), (Bytes{0, 1, 2, 3, 0, 4, 5, 6}));
    EXPECT_TRUE(masked.has_mask());
    const Picture stored = Picture::from_rows(xrgb.data(), 8, 2, 1, TARVO_XRGB32);
    EXPECT_EQ(rows_of(stored, TARVO_XRGB32), xrgb);
    EXPECT_FALSE(stored.has_mask());
    EXPECT_EQ(stored.depth(), 32);
}

TEST(LibraryPictures, GiveTheLumaAsGrey) {
    const Bytes rgb = {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255};
    EXPECT_EQ(rows_of(Picture::from_rows(rgb.data(), 12, 4, 1, TARVO_RGB24), TARVO_GREY8), (Bytes{77, 150, 28, 255}));
}

TEST(LibraryPictures, TakeAndGiveRowsUpwards) {
    const Bytes rows = noise(3 * 5 * 4);
    const Picture down = Picture::from_rows(rows.data(), 15, 5, 4, TARVO_RGB24);
    const Picture up = Picture::from_rows(rows.data() + 45, -15, 5, 4, TARVO_RGB24);
    const Bytes upwards = rows_of(up, TARVO_RGB24);
    for (std::size_t y = 0; y < 4; ++y)
        EXPECT_TRUE(std::equal(upwards.begin() + 15 * y, upwards.begin() + 15 * (y + 1), rows.begin() + 15 * (3 - y)));
    Bytes turned(rows.size());
    up.to_rows(turned.data() + 45, -15, TARVO_RGB24);
    EXPECT_EQ(turned, rows_of(down, TARVO_RGB24));
}

TEST(LibraryPictures, LeaveWhatIsBetweenRows) {
    const Picture picture = noisy_picture(3, 4);
    Bytes wide(4 * 16, 0xEE);
    picture.to_rows(wide.data(), 16, TARVO_RGB24);
    for (std::size_t y = 0; y < 4; ++y)
        for (std::size_t x = 9; x < 16; ++x) EXPECT_EQ(wide[16 * y + x], 0xEE);
}

TEST(LibraryPictures, RefuseWrongSizesStridesAndLayouts) {
    const Bytes rows = noise(64);
    const auto from = [&](std::ptrdiff_t stride, int width, int height, int layout) {
        return status_of(
            [&] { Picture::from_rows(rows.data(), stride, width, height, static_cast<tarvo_layout>(layout)); });
    };
    EXPECT_EQ(from(12, 4, 4, TARVO_RGB24), TARVO_OK);
    EXPECT_EQ(from(11, 4, 4, TARVO_RGB24), TARVO_USE);
    EXPECT_EQ(from(-11, 4, 4, TARVO_RGB24), TARVO_USE);
    EXPECT_EQ(from(0, 4, 4, TARVO_RGB24), TARVO_USE);
    EXPECT_EQ(from(12, 0, 4, TARVO_RGB24), TARVO_USE);
    EXPECT_EQ(from(12, 4, -1, TARVO_RGB24), TARVO_USE);
    EXPECT_EQ(from(12, 4, 4, 0), TARVO_USE);
    EXPECT_EQ(from(12, 4, 4, 77), TARVO_USE);
    EXPECT_EQ(from(PTRDIFF_MAX, 32768, 1, TARVO_GREY8), TARVO_LIMIT);
    EXPECT_EQ(from(1, 1, 32768, TARVO_GREY8), TARVO_LIMIT);
    EXPECT_EQ(from(PTRDIFF_MAX, 32767, 32767, TARVO_GREY8), TARVO_LIMIT);
    EXPECT_EQ(from(PTRDIFF_MIN, 1, 1, TARVO_GREY8), TARVO_OK) << "the only row is where it is";
    const Picture picture = noisy_picture(4, 4);
    Bytes room(64);
    EXPECT_EQ(status_of([&] { picture.to_rows(room.data(), 15, TARVO_RGBA32); }), TARVO_USE);
    EXPECT_EQ(status_of([&] { picture.to_rows(room.data(), 16, static_cast<tarvo_layout>(9)); }), TARVO_USE);
    EXPECT_EQ(status_of([&] { picture.to_rows(nullptr, 16, TARVO_RGBA32); }), TARVO_USE);
    EXPECT_EQ(status_of([&] { Picture().to_rows(room.data(), 16, TARVO_RGBA32); }), TARVO_USE);
    EXPECT_EQ(status_of([&] { Picture::from_rows(nullptr, 16, 4, 4, TARVO_RGBA32); }), TARVO_USE);
    EXPECT_EQ(tarvo_picture_from_rows(rows.data(), 12, 4, 4, TARVO_RGB24, nullptr, nullptr), TARVO_USE);
}

TEST(LibraryPictures, WrapMemoryWithoutACopy) {
    const Bytes rows = noise(4 * 5 * 3 + 8 * 2);
    int released = 0;
    {
        const Picture picture = Picture::wrap(rows.data(), 28, 5, 3, [&] { ++released; });
        std::ptrdiff_t stride = 0;
        EXPECT_EQ(picture.pixels(&stride), rows.data());
        EXPECT_EQ(stride, 28);
        const Picture copy = picture;
        const Picture changed = picture.call("TRV_FlipRotate", true, false, 0).picture();
        EXPECT_EQ(rows_of(changed.call("TRV_FlipRotate", true, false, 0).picture(), TARVO_RGB24),
                  rows_of(picture, TARVO_RGB24));
        EXPECT_EQ(released, 0);
    }
    EXPECT_EQ(released, 1);
}

TEST(LibraryPictures, AreReleasedOnceOnEveryPath) {
    const Bytes rows = noise(256);
    struct Case {
        const void* pixels;
        std::ptrdiff_t stride;
        int width, height;
        tarvo_status status;
    };
    const Case cases[] = {
        {rows.data(), 16, 4, 4, TARVO_OK},
        {nullptr, 16, 4, 4, TARVO_USE},
        {rows.data(), 15, 4, 4, TARVO_USE},
        {rows.data(), -16, 4, 4, TARVO_USE},
        {rows.data(), 16, 0, 4, TARVO_USE},
        {rows.data(), 16, 4, -4, TARVO_USE},
        {rows.data(), 1 << 20, 32768, 1, TARVO_LIMIT},
        {rows.data(), 1 << 20, 32767, 32767, TARVO_LIMIT},
        {rows.data(), PTRDIFF_MAX, 4, 4, TARVO_LIMIT},
    };
    for (const Case& each : cases) {
        int released = 0;
        EXPECT_EQ(
            status_of([&] { Picture::wrap(each.pixels, each.stride, each.width, each.height, [&] { ++released; }); }),
            each.status);
        EXPECT_EQ(released, 1);
    }
    int released = 0;
    const auto count = [](void* context) { ++*static_cast<int*>(context); };
    EXPECT_EQ(tarvo_picture_wrap(rows.data(), 16, 4, 4, count, &released, nullptr, nullptr), TARVO_USE);
    EXPECT_EQ(released, 1);
    EXPECT_EQ(Picture::wrap(rows.data(), 16, 4, 4, {}).width(), 4) << "nobody waits for its end";
    EXPECT_EQ(status_of([] { Picture().sha256(); }), TARVO_USE);
    tarvo_picture* unwatched = nullptr;
    ASSERT_EQ(tarvo_picture_wrap(rows.data(), 16, 4, 4, nullptr, nullptr, &unwatched, nullptr), TARVO_OK);
    tarvo_picture_release(unwatched);
}

TEST(LibraryPictures, LiveAsLongAsAnybodyNeedsThem) {
    const Bytes rows = noise(64);
    int released = 0;
    const auto count = [](void* context) { ++*static_cast<int*>(context); };
    tarvo_picture* picture = nullptr;
    ASSERT_EQ(tarvo_picture_wrap(rows.data(), 16, 4, 4, count, &released, &picture, nullptr), TARVO_OK);
    EXPECT_EQ(tarvo_picture_retain(picture), picture);
    tarvo_picture_release(picture);
    EXPECT_EQ(released, 0);
    EXPECT_EQ(tarvo_picture_width(picture), 4);
    tarvo_picture_release(picture);
    EXPECT_EQ(released, 1);
}

// The sums are those of another program: printf 'tarvo-pixels 1 2 1 3\n\1\2\3\4\5\6' | sha256sum
TEST(LibraryPictures, AreSummedUp) {
    const Bytes rgb = {1, 2, 3, 4, 5, 6}, rgba = {1, 2, 3, 255, 4, 5, 6, 100};
    EXPECT_EQ(Picture::from_rows(rgb.data(), 6, 2, 1, TARVO_RGB24).sha256(),
              "d28f3b4c4f81dd43f1d9442fc42f428013f6ba71423007a24e91306c92013d28");
    EXPECT_EQ(Picture::from_rows(rgb.data(), 3, 1, 2, TARVO_RGB24).sha256(),
              "e5a279ae7d6ad3ba7cf0479b7ebd17a1be4296f8dc9ec30fdc4e314d7fb958a0");
    EXPECT_EQ(Picture::from_rows(rgba.data(), 8, 2, 1, TARVO_RGBA32).sha256(),
              "fc84054c78626de5123796bd95407d8180d7dd2462f684de9dc08fc13fcf4f3d");
    char hex[65];
    EXPECT_EQ(tarvo_picture_sha256(nullptr, hex), TARVO_USE);
    EXPECT_STREQ(hex, "");
    const Picture picture = noisy_picture(1, 1);
    EXPECT_EQ(tarvo_picture_sha256(picture.get(), nullptr), TARVO_USE);
}

TEST(LibraryPictures, AnswerForNothing) {
    EXPECT_EQ(tarvo_picture_width(nullptr), 0);
    EXPECT_EQ(tarvo_picture_height(nullptr), 0);
    EXPECT_EQ(tarvo_picture_depth(nullptr), 0);
    EXPECT_EQ(tarvo_picture_has_mask(nullptr), 0);
    std::ptrdiff_t stride = 7;
    EXPECT_EQ(tarvo_picture_pixels(nullptr, &stride), nullptr);
    EXPECT_EQ(stride, 0);
    EXPECT_EQ(tarvo_picture_retain(nullptr), nullptr);
    tarvo_picture_release(nullptr);
    tarvo_object_release(nullptr);
    EXPECT_EQ(tarvo_object_retain(nullptr), nullptr);
    tarvo_result_release(nullptr);
    EXPECT_EQ(tarvo_result_value(nullptr), nullptr);
    EXPECT_EQ(tarvo_result_output(nullptr, "red"), nullptr);
    EXPECT_EQ(tarvo_result_code(nullptr), 0);
    tarvo_free(nullptr);
    tarvo_error_free(nullptr);
    EXPECT_EQ(tarvo_error_status(nullptr), TARVO_OK);
    EXPECT_EQ(tarvo_error_code(nullptr), 0);
    EXPECT_STREQ(tarvo_error_message(nullptr), "");
    EXPECT_STREQ(tarvo_error_operation(nullptr), "");
    EXPECT_STREQ(tarvo_error_argument(nullptr), "");
}

}  // namespace
}  // namespace tarvo::test
