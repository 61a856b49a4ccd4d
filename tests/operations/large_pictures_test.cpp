// Pictures too large for the caches, whose rows are written in another way, through operations of each shape: regions
// and overlays begin and end within a cache line.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "adjustment_checks.h"
#include "client_pictures.h"

namespace tarvo::test {
namespace {

constexpr int kWidth = 2111, kHeight = 2000;  // just above 16 MiB at 32 bits
constexpr Area kArea = {13, 7, 1999, 1980};
constexpr int kDelta = 60;

std::uint32_t brightened(std::uint32_t color) {
    return each_channel([&](int shift) { return std::min(channel(color, shift) + kDelta, 255); });
}

class LargePictures : public ::testing::Test {
protected:
    // Its colours are cheap to make, and not the same in any two places of a row.
    ObjectRef pattern(std::uint32_t seed, int width = kWidth, int height = kHeight, int row_padding = 0) {
        const ObjectRef made = session.host.new_picture({.width = width, .height = height, .row_padding = row_padding});
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                write_pixel(pixels(made), x, y, (seed + static_cast<std::uint32_t>(y * width + x)) * 2654435761u);
        return made;
    }
    ObjectRef weights(const std::vector<std::int32_t>& coefficients) {
        const ObjectRef made = session.host.new_instance("TRV_Convolution");
        session.call(made, "SetCoefficients", session.host.new_integer_array(coefficients));
        return made;
    }
    ObjectRef area() { return session.rectangle(kArea.left, kArea.top, kArea.width, kArea.height); }
    // Every pixel of a 32-bit picture is as `expected(x, y)` says.
    template <class Expected>
    void expect_pixels(const Picture* actual, Expected expected) {
        ASSERT_TRUE(actual) << session.last_error();
        ASSERT_EQ(actual->width(), kWidth);
        ASSERT_EQ(actual->height(), kHeight);
        ASSERT_EQ(actual->depth(), 32);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) ASSERT_EQ(read_pixel(*actual, x, y), expected(x, y)) << x << ", " << y;
    }
    std::uint32_t at(const ObjectRef& picture, int x, int y) { return read_pixel(pixels(picture), x, y); }
    std::uint32_t brightened_in_area(const ObjectRef& source, int x, int y) {
        return kArea.has(x, y) ? brightened(at(source, x, y)) : at(source, x, y);
    }
    template <class... Arguments>
    Value adjust(std::string_view declaration, Arguments&&... arguments) {
        std::array<Value, sizeof...(Arguments) + 3> values = {value(std::forward<Arguments>(arguments))..., kDelta,
                                                              kDelta, kDelta};
        return session.caller.invoke(picture_member(session, declaration), values);
    }

    Session session;
};

TEST_F(LargePictures, RegionForm) {
    const ObjectRef source = pattern(1);
    const Value result = adjust("TRV_AdjustRGB(rect as TRV_Rectangle, red_delta", source, area());
    expect_pixels(picture_in(result), [&](int x, int y) { return brightened_in_area(source, x, y); });
}

TEST_F(LargePictures, MaskForm) {
    const ObjectRef source = pattern(2), mask = pattern(3);
    const Value result = adjust("TRV_AdjustRGBWithMask(mask as picture, red_delta", source, mask);
    expect_pixels(picture_in(result), [&](int x, int y) {
        const int level = channel(at(mask, x, y), 0);
        return each_channel([&](int shift) {
            const int value = channel(at(source, x, y), shift);
            return std::min((value * (255 - level) + (value + kDelta) * level) / 255, 255);
        });
    });
}

TEST_F(LargePictures, InPlace) {
    const ObjectRef before = pattern(4);
    for (const int row_padding : {0, 1}) {  // pixels may lie across cache lines
        const ObjectRef picture = pattern(4, kWidth, kHeight, row_padding);
        adjust("TRV_AdjustRGB_InPlace(", picture, area());
        expect_pixels(&pixels(picture), [&](int x, int y) { return brightened_in_area(before, x, y); });
    }
}

TEST_F(LargePictures, TwoPictures) {
    const ObjectRef a = pattern(5), b = pattern(6);
    const Value result = session.call(a, "TRV_Add", b, 0);
    expect_pixels(picture_in(result), [&](int x, int y) {
        const std::uint32_t first = at(a, x, y), second = at(b, x, y);
        return each_channel([&](int shift) { return (channel(first, shift) + channel(second, shift)) % 256; });
    });
}

TEST_F(LargePictures, APictureAtAPlaceOnAnother) {
    const ObjectRef source = pattern(7), overlay = pattern(8, kArea.width, kArea.height);
    const Value result = session.call(source, "TRV_Composite", overlay, 0.25, kArea.left, kArea.top, 0);
    expect_pixels(picture_in(result), [&](int x, int y) {
        if (!kArea.has(x, y)) return at(source, x, y);
        const std::uint32_t above = at(overlay, x - kArea.left, y - kArea.top);
        return each_channel(
            [&](int shift) { return (channel(at(source, x, y), shift) * 192 + channel(above, shift) * 64) / 256; });
    });
}

TEST_F(LargePictures, NeighboursOfBothDirections) {
    const ObjectRef source = pattern(12);
    const Value result = session.call(source, "TRV_Convolute", area(), weights({1, 2, 1}), weights({1, 1, 1}));
    const auto across = [&](int x, int y, int shift) {
        const auto level = [&](int column) { return channel(at(source, column, y), shift); };
        return kArea.has(x, y) ? (level(x - 1) + 2 * level(x) + level(x + 1)) / 4 : level(x);
    };
    expect_pixels(picture_in(result), [&](int x, int y) {
        if (!kArea.has(x, y)) return at(source, x, y);
        return each_channel(
            [&](int shift) { return (across(x, y - 1, shift) + across(x, y, shift) + across(x, y + 1, shift)) / 3; });
    });
}

// Regions of a few cache lines, which begin at every place of one: no row begins where the one above does.
TEST_F(LargePictures, NeighboursInNarrowRegions) {
    const ObjectRef source = pattern(13);
    for (int width = 7; width <= 41; ++width) {
        const Area area = {100 - width, 3, width, 17};
        const Value result =
            session.call(source, "TRV_Convolute", session.rectangle(area.left, area.top, area.width, area.height),
                         weights({1, 2, 1}), nullptr);
        ASSERT_TRUE(picture_in(result));
        for (int y = 2; y <= 20; ++y) {
            for (int x = 40; x < 120; ++x) {
                const std::uint32_t mean = each_channel([&](int shift) {
                    const auto level = [&](int column) { return channel(at(source, column, y), shift); };
                    return (level(x - 1) + 2 * level(x) + level(x + 1)) / 4;
                });
                ASSERT_EQ(read_pixel(*picture_in(result), x, y), area.has(x, y) ? mean : at(source, x, y))
                    << width << " columns: " << x << ", " << y;
            }
        }
    }
}

TEST_F(LargePictures, ClientResults) {
    const ObjectRef source = pattern(9), client = client_of_picture(session, source);
    for (const bool as_picture : {false, true}) {
        SCOPED_TRACE(as_picture ? "backed by a picture" : "in own memory");
        // A weight of 1 gives the middle between the colour and the centre.
        const Value result = session.call(client, "TRV_AverageRGB", area(), Color{0}, 1.0, 1.0, 1.0, 0, as_picture);
        ASSERT_TRUE(is_client(result));
        const ObjectRef converted = session.picture_of(object_in(result));
        expect_pixels(&pixels(converted), [&](int x, int y) {
            const std::uint32_t color = at(source, x, y);
            return kArea.has(x, y) ? each_channel([&](int shift) { return channel(color, shift) / 2; }) : color;
        });
    }
}

TEST_F(LargePictures, AsAStringAndBack) {
    constexpr int kRows = 2700;  // just above 16 MiB at three bytes a pixel
    const ObjectRef source = pattern(10, kWidth, kRows);
    const Value string = session.call(source, "TRV_ConvertToString");
    const auto* const written = dynamic_cast<const host::StringObject*>(object_in(string).get());
    ASSERT_TRUE(written);
    std::string expected;
    for (const int byte : {0, 0, kWidth / 256, kWidth % 256, 0, 0, kRows / 256, kRows % 256, 0, 32, 0})
        expected += static_cast<char>(byte);
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kWidth; ++x)
            for (const int shift : {16, 8, 0}) expected += static_cast<char>(channel(at(source, x, y), shift));
    ASSERT_TRUE(written->bytes() == expected);

    const Value read = session.call(object_in(string), "TRV_ConvertToPicture");
    const Picture* const back = picture_in(read);
    ASSERT_TRUE(back);
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kWidth; ++x)
            ASSERT_EQ(read_pixel(*back, x, y), at(source, x, y) & 0xFFFFFF) << x << ", " << y;
}

TEST_F(LargePictures, AsAMemoryBlock) {
    const ObjectRef source = pattern(11);
    std::array<Value, 4> arguments = {value(source), value(ObjectRef()), false, 0};
    const Value result = session.caller.invoke(session.callable("TRV_MakeMemoryBlock("), arguments);
    const auto* const block = dynamic_cast<const host::MemoryBlock*>(object_in(result).get());
    ASSERT_TRUE(block);
    ASSERT_EQ(block->bytes.size(), std::size_t{4} * kWidth * kHeight);
    const std::uint8_t* element = block->bytes.data();
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x, element += 4) {
            std::uint32_t number = 0;
            std::memcpy(&number, element, sizeof number);
            ASSERT_EQ(number, at(source, x, y) & 0xFFFFFF) << x << ", " << y;
        }
    }
}

}  // namespace
}  // namespace tarvo::test
