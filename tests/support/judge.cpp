#include "judge.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarvo::test {
namespace {

constexpr int kSourceLockCode = 4, kResultCode = 6, kSelectionCode = 38;

}  // namespace

Area any_area(Random& random, int width, int height) {
    const int left = any_of(random, -3, width - 1), top = any_of(random, -3, height - 1);
    const int right = any_of(random, std::max(left, 0), width + 3);
    const int bottom = any_of(random, std::max(top, 0), height + 3);
    return {left, top, right - left + 1, bottom - top + 1};
}

void expect_unused_bits(const Picture& result, const Picture& source, const std::function<bool(int x, int y)>& kept) {
    if (result.depth() != 16) return;
    const auto unused_bit = [](const Picture& picture, int x, int y) { return picture.row(y)[2 * x] & 0x80; };
    for (int y = 0; y < result.height(); ++y)
        for (int x = 0; x < result.width(); ++x)
            ASSERT_EQ(unused_bit(result, x, y), source.depth() == 16 && kept(x, y) ? unused_bit(source, x, y) : 0)
                << x << ", " << y;
}

namespace {

std::uint32_t stored(const Picture& mask, int x, int y) {
    const std::uint8_t* at = mask.row(y) + x * mask.depth() / 8;
    std::uint32_t value = 0;
    for (int i = 0; i < mask.depth() / 8; ++i) value = value << 8 | at[i];
    return value;
}

void store(Picture& mask, int x, int y, std::uint32_t value) {
    std::uint8_t* const at = mask.row(y) + x * mask.depth() / 8;
    for (int i = 0; i < mask.depth() / 8; ++i) at[i] = static_cast<std::uint8_t>(value >> (mask.depth() - 8 - 8 * i));
}

bool has_rule(int depth) { return depth == 8 || depth == 16 || depth == 32; }

std::uint32_t converted(std::uint32_t s, int from, int to) {
    if (from == to) return s;
    if (from == 32) return to == 16 ? (s >> 19 & 31) * 0x421 : s >> 19 & 31;
    if (from == 16) return to == 32 ? (s >> 7 & 0xF8) * 0x010101 : s >> 7 & 0xF8;
    return to == 32 ? s * 0x010101 : s * 0x421 & 0xFFFF;
}

}  // namespace

void plain_copy_mask(const Picture& source, Picture& destination) {
    const int width = std::min(source.width(), destination.width());
    const int height = std::min(source.height(), destination.height());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (has_rule(source.depth()) && has_rule(destination.depth()))
                store(destination, x, y, converted(stored(source, x, y), source.depth(), destination.depth()));
            else
                write_pixel(destination, x, y, read_pixel(source, x, y, true), true);
        }
    }
}

namespace {

void expect_mask_copied(Session& session, const Picture& source, const Picture& result) {
    ASSERT_EQ(static_cast<bool>(result.mask()), static_cast<bool>(source.mask()));
    if (!source.mask()) return;
    const Picture& actual = pixels(result.mask());
    // A mask that the host makes starts black.
    const auto expected = Picture::make({.width = actual.width(), .height = actual.height(), .depth = actual.depth()},
                                        Picture::Paper::black);
    plain_copy_mask(pixels(source.mask()), *expected);
    for (int y = 0; y < actual.height(); ++y)
        ASSERT_TRUE(std::equal(actual.row(y), actual.row(y) + actual.packed_row_bytes(), expected->row(y)))
            << "row " << y << " of the mask";
    EXPECT_TRUE(session.host.complaints().empty());
}

// A form with the numbers that it is called with.
struct Call {
    Session& session;
    const Form form;
    const Numbers& numbers;

    Value operator()(const ObjectRef& p, const ObjectRef& second) const {
        return form.call(session, p, second, numbers);
    }
};

void expect_region(const Call& call, const Adjustment& adjustment, const PlainChange& change, const ObjectRef& source,
                   const Area* area) {
    Session& session = call.session;
    const ObjectRef rectangle =
        area ? session.rectangle(area->left, area->top, area->width, area->height) : ObjectRef();
    const auto before = all_bytes(source);
    const Value result = call(source, rectangle);
    ASSERT_TRUE(picture_in(result)) << session.last_error();
    EXPECT_EQ(session.last_error(), 0);

    PlainImage expected = read_image(pixels(source));
    for (int y = 0; y < expected.height; ++y)
        for (int x = 0; x < expected.width; ++x)
            if (!area || area->has(x, y)) expected.at(x, y) = change(expected.at(x, y));
    EXPECT_EQ(difference(*picture_in(result), expected, std::max(pixels(source).depth(), 16)), "");
    expect_unused_bits(*picture_in(result), pixels(source),
                       [&](int x, int y) { return adjustment.copies_words && area && !area->has(x, y); });
    if (adjustment.copies_mask)
        expect_mask_copied(session, pixels(source), *picture_in(result));
    else
        EXPECT_FALSE(picture_in(result)->mask());
    EXPECT_EQ(all_bytes(source), before);
}

// Around the blocks and chunks that kernels work in.
const std::vector<int>& wide_runs() {
    static const std::vector<int> runs = {63, 64, 65, 511, 512, 513, 1025};
    return runs;
}

// One for each way in which pixels are read and written.
const std::vector<Shape>& wide_shapes() {
    static const std::vector<Shape> shapes = {
        {.depth = 8}, {.depth = 16}, {.depth = 24}, {.depth = 32}, {.backing = host::Backing::pixel_buffer}};
    return shapes;
}

// That the call gives nothing but the code, and leaves what it was given as it was. A drawing without pixels cannot be
// rendered, and is refused before anything else.
void expect_refusal(const Call& call, const ObjectRef& source, const ObjectRef& second, int code) {
    const bool drawing = pixels(source).backing() == host::Backing::drawing_commands;
    const auto before = all_bytes(source);
    EXPECT_FALSE(object_in(call(source, second)));
    EXPECT_EQ(call.session.last_error(), drawing ? kSourceLockCode : code);
    EXPECT_EQ(all_bytes(source), before);
    EXPECT_EQ(call.session.host.complaints(), std::vector<std::string>());
}

}  // namespace

void expect_region_agreement(Session& session, Random& random, const Adjustment& adjustment, const Numbers& numbers,
                             const PlainChange& change) {
    const Call call = {session, picture_form(session, adjustment.name), numbers};
    for (Shape shape : source_shapes()) {
        for (const int mask_depth : mask_depths()) {
            const bool drawing = shape.backing == host::Backing::drawing_commands;
            if (drawing && mask_depth) continue;  // a drawing is rendered without its mask
            shape.mask_depth = mask_depth;
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 6);
            const ObjectRef source = random_picture(session, random, shape, width, height);
            const Area area = any_area(random, width, height);
            SCOPED_TRACE(shape.name() + ", " + std::to_string(width) + " x " + std::to_string(height));
            expect_region(call, adjustment, change, source, nullptr);
            expect_region(call, adjustment, change, source, &area);
        }
    }
    for (const Shape& shape : wide_shapes()) {
        for (const int run : wide_runs()) {
            SCOPED_TRACE(shape.name() + ", a run of " + std::to_string(run));
            const Area area = {any_of(random, 1, 20), any_of(random, 0, 1), run, 1};
            const int width = area.left + run + any_of(random, 0, 20);
            expect_region(call, adjustment, change, random_picture(session, random, shape, width, 2), &area);
        }
    }
    for (const Shape& shape : source_shapes()) {
        for (const Size& size : empty_sizes()) {
            SCOPED_TRACE(shape.name() + ", " + name_of(size));
            const ObjectRef source = random_picture(session, random, shape, size.width, size.height);
            for (const ObjectRef& rectangle : {ObjectRef(), session.rectangle(-9, -9, 20, 20)})
                expect_refusal(call, source, rectangle, kSelectionCode);
        }
    }
}

namespace {

void expect_weighted(const Call& call, const PlainMaskedChange& change, const ObjectRef& source,
                     const ObjectRef& mask) {
    const auto source_before = all_bytes(source), mask_before = all_bytes(mask);
    const Value result = call(source, mask);
    ASSERT_TRUE(picture_in(result)) << call.session.last_error();
    EXPECT_EQ(call.session.last_error(), 0);

    PlainImage expected = read_image(pixels(source));
    const PlainImage weights = read_image(pixels(mask));
    for (std::size_t i = 0; i < expected.colors.size(); ++i)
        expected.colors[i] = change(expected.colors[i], weights.colors[i]);
    EXPECT_EQ(difference(*picture_in(result), expected, std::max(pixels(source).depth(), 16)), "");
    expect_unused_bits(*picture_in(result), pixels(source), [](int, int) { return false; });
    EXPECT_FALSE(picture_in(result)->mask());  // not the source's either
    EXPECT_EQ(all_bytes(source), source_before);
    EXPECT_EQ(all_bytes(mask), mask_before);
}

}  // namespace

void expect_mask_agreement(Session& session, Random& random, const Adjustment& adjustment, const Numbers& numbers,
                           const PlainMaskedChange& change) {
    const Call call = {session, picture_form(session, adjustment.name, Of::mask), numbers};
    std::size_t round = 0;
    for (Shape shape : source_shapes()) {
        for (const Shape& mask_shape : source_shapes()) {
            if (shape.backing != host::Backing::drawing_commands)
                shape.mask_depth = mask_depths()[round++ % mask_depths().size()];
            SCOPED_TRACE(shape.name() + " with a mask argument of " + mask_shape.name());
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 6);
            expect_weighted(call, change, random_picture(session, random, shape, width, height),
                            random_picture(session, random, mask_shape, width, height));
        }
    }
    for (const Shape& shape : wide_shapes()) {
        for (const int run : wide_runs()) {
            const Shape& mask_shape = wide_shapes()[round++ % wide_shapes().size()];  // of each depth in turn
            SCOPED_TRACE(shape.name() + " with a mask argument of " + mask_shape.name() + ", " + std::to_string(run));
            expect_weighted(call, change, random_picture(session, random, shape, run, 2),
                            random_picture(session, random, mask_shape, run, 2));
        }
    }
    for (const Shape& shape : source_shapes()) {
        for (const Size& size : empty_sizes()) {
            SCOPED_TRACE(shape.name() + ", " + name_of(size));
            const ObjectRef source = random_picture(session, random, shape, size.width, size.height);
            const ObjectRef mask = random_picture(session, random, {.depth = 8}, size.width, size.height);
            expect_refusal(call, source, mask, kResultCode);
        }
    }
}

std::uint32_t plain_mix_in_255ths(std::uint32_t color, std::uint32_t changed, int level) {
    return each_channel(
        [&](int shift) { return (channel(color, shift) * (255 - level) + channel(changed, shift) * level) / 255; });
}

}  // namespace tarvo::test
