#include "adjustment_checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "client_pictures.h"
#include "holdings.h"

namespace tarvo::test {

ObjectRef plain_picture(Session& session, std::uint32_t color, int width, int height, int depth) {
    const ObjectRef made = session.picture(width, height, depth);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) write_pixel(pixels(made), x, y, color);
    return made;
}

ObjectRef grey_ramp(Session& session) {
    const ObjectRef made = session.picture(256, 1);
    for (int x = 0; x < 256; ++x) write_pixel(pixels(made), x, 0, static_cast<std::uint32_t>(x) * 0x010101);
    return made;
}

const host::Callable& picture_member(const Session& session, std::string_view declaration) {
    for (const host::Callable& each : session.caller.callables())
        if (each.owner == "picture" && each.declaration.text.starts_with(declaration)) return each;
    throw std::runtime_error("no method of the picture class is declared so: " + std::string(declaration));
}

// --- checks ----------------------------------------------------------------------------------------------------------

namespace {

constexpr int kWidth = 3, kHeight = 2;

// The pictures and rectangles of checks, and the code that a call of the form leaves.
class Checks {
public:
    Checks(Session& session, const CheckedForm& form) : session_(session), form_(form) {}

    ObjectRef good() { return fit(session_.picture(kWidth, kHeight)); }
    ObjectRef unlockable() { return fit(unlockable_picture()); }
    ObjectRef unlockable_picture() {
        const ObjectRef made = session_.picture(kWidth, kHeight);
        pixels(made).set_purged(true);
        return made;
    }
    ObjectRef outside() { return session_.rectangle(50, 50, 5, 5); }

    int code(const ObjectRef& p, const ObjectRef& second, bool in_range = true) {
        const Value result = form_.call(session_, p, second, in_range);
        EXPECT_FALSE(object_in(result));
        return session_.last_error();
    }
    void expect_numbers_checked(const ObjectRef& p, const ObjectRef& second) {
        if (form_.range_code) {
            EXPECT_EQ(code(p, second, false), form_.range_code);
        }
    }

private:
    ObjectRef fit(const ObjectRef& picture) { return form_.on_client_pictures ? session_.client(picture) : picture; }

    Session& session_;
    const CheckedForm& form_;
};

void expect_checks_before_result(Session& session, Checks& checks) {
    EXPECT_EQ(checks.code({}, checks.outside(), false), 2);
    checks.expect_numbers_checked(checks.unlockable(), checks.outside());
    EXPECT_EQ(checks.code(checks.unlockable(), checks.outside()), 4);
    EXPECT_EQ(checks.code(checks.good(), checks.outside()), 38);
    for (const Area& area :
         {Area{0, 0, 0, 1}, Area{0, 0, 1, 0}, Area{0, 0, -1, -1}, Area{kWidth, 0, 1, 1}, Area{0, kHeight, 1, 1},
          Area{-5, 0, 5, 1}, Area{0, -5, 1, 5}, Area{2147483647, 0, 2147483647, 1}})
        EXPECT_EQ(checks.code(checks.good(), session.rectangle(area.left, area.top, area.width, area.height)), 38)
            << area.left << " " << area.top << " " << area.width << " " << area.height;
}

// Nothing can be made, neither a host picture nor an instance.
void refuse_results(Session& session) {
    session.host.faults.fail_at("newPicture", 1, true);
    session.host.faults.fail_at("CreateInstance", 1, true);
}

}  // namespace

void expect_region_checks_without_result(Session& session, const CheckedForm& form) {
    Checks checks(session, form);
    expect_checks_before_result(session, checks);
}

void expect_region_checks(Session& session, const CheckedForm& form) {
    Checks checks(session, form);
    expect_checks_before_result(session, checks);
    const ObjectRef good = checks.good(), outside = checks.outside();
    refuse_results(session);
    EXPECT_EQ(checks.code(good, outside), 38);
    EXPECT_EQ(checks.code(good, {}), 6);
    session.host.faults.clear();
}

void expect_mask_checks(Session& session, const CheckedForm& form) {
    Checks checks(session, form);
    const ObjectRef good = checks.good(), unlockable = checks.unlockable();
    const ObjectRef unlockable_mask = checks.unlockable_picture();
    EXPECT_EQ(checks.code({}, unlockable_mask, false), 2);
    EXPECT_EQ(checks.code(unlockable, {}, false), 8);
    checks.expect_numbers_checked(unlockable, unlockable_mask);
    EXPECT_EQ(checks.code(unlockable, unlockable_mask), 4);
    EXPECT_EQ(checks.code(good, unlockable_mask), 9);
    EXPECT_EQ(checks.code(good, session.picture(kWidth - 1, kHeight)), 10);
    EXPECT_EQ(checks.code(good, session.picture(kWidth, kHeight + 1)), 10);
    EXPECT_EQ(checks.code(good, session.picture(kWidth, kHeight, 12)), 11);
    EXPECT_EQ(checks.code(good, session.picture(kWidth - 1, kHeight, 12)),
              11);  // after the size, whose code it replaces
    const ObjectRef mask = session.picture(kWidth, kHeight), small = session.picture(kWidth - 1, kHeight);
    refuse_results(session);
    EXPECT_EQ(checks.code(good, small), 10);
    EXPECT_EQ(checks.code(good, mask), 6);
    session.host.faults.clear();
}

// --- both forms ------------------------------------------------------------------------------------------------------

namespace {

// What a mask's levels are after they have been copied into a mask of another depth.
std::unique_ptr<Picture> copied_mask(const Picture& mask, int depth) {
    auto copy = Picture::make({.width = mask.width(), .height = mask.height(), .depth = depth}, Picture::Paper::black);
    plain_copy_mask(mask, *copy);
    return copy;
}

// A copied mask went from the source's into the client picture's, 8 bits deep in own memory, and from there into the
// one that the host made when it was converted.
void expect_mask(const Picture& converted, const Picture& source, bool copies_mask, bool as_picture) {
    ASSERT_EQ(static_cast<bool>(converted.mask()), copies_mask && source.mask());
    if (!converted.mask()) return;
    const Picture& actual = pixels(converted.mask());
    auto expected = copied_mask(pixels(source.mask()), as_picture ? actual.depth() : 8);
    if (!as_picture) expected = copied_mask(*expected, actual.depth());
    EXPECT_EQ(difference(actual, read_image(*expected, true), actual.depth(), true), "");
}

void expect_same(Session& session, const TwoForms& forms, const ObjectRef& source, const ObjectRef& client,
                 const ObjectRef& second) {
    const Value plain = forms.picture_form(session, source, second);
    ASSERT_TRUE(picture_in(plain)) << session.last_error();
    for (const bool as_picture : {false, true}) {
        SCOPED_TRACE(as_picture ? "backed by a picture" : "in own memory");
        const Holdings before = holdings_in(session);
        {
            const Value result = forms.client_form(session, client, second, as_picture);
            ASSERT_TRUE(is_client(result));
            EXPECT_EQ(session.last_error(), 0);
            EXPECT_EQ(static_cast<bool>(picture_behind(session, object_in(result))), as_picture);
            const ObjectRef converted = session.picture_of(object_in(result));
            EXPECT_EQ(difference(pixels(converted), read_image(*picture_in(plain)), picture_in(plain)->depth()), "");
            expect_mask(pixels(converted), pixels(source), forms.copies_mask, as_picture);
        }
        EXPECT_EQ(holdings_in(session), before);
    }
}

using MakeSecond = std::function<ObjectRef(int width, int height)>;

void expect_same_forms(Session& session, Random& random, const TwoForms& forms, const MakeSecond& second) {
    for (Shape shape : source_shapes()) {
        if (shape.backing == host::Backing::drawing_commands) continue;
        for (const int mask_depth : {0, 8, 32}) {
            shape.mask_depth = mask_depth;
            SCOPED_TRACE(shape.name());
            const int width = any_of(random, 1, 30), height = any_of(random, 1, 5);
            const ObjectRef source = random_picture(session, random, shape, width, height);
            const auto before = all_bytes(source);
            expect_same(session, forms, source, client_of_picture(session, source), second(width, height));
            EXPECT_EQ(all_bytes(source), before);
        }
    }
    for (const int depth : {16, 24, 32}) {
        SCOPED_TRACE("own memory of " + std::to_string(depth) + " bits");
        const int width = any_of(random, 1, 30), height = any_of(random, 1, 5);
        const ObjectRef client = client_in_own_memory(session, random, width, height, depth, false);
        const auto before = client_bytes(client);
        expect_same(session, forms, session.picture_of(client), client, second(width, height));
        EXPECT_EQ(client_bytes(client), before);

        // The mask of a client picture in own memory is its own.
        const ObjectRef masked = client_in_own_memory(session, random, width, height, depth, true);
        const Value result = forms.client_form(session, masked, second(width, height), false);
        ASSERT_TRUE(is_client(result));
        EXPECT_EQ(client_has_mask(object_in(result)), forms.copies_mask);
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

}  // namespace

void expect_same_region_forms(Session& session, Random& random, const TwoForms& forms) {
    expect_same_forms(session, random, forms, [&](int width, int height) {
        const Area area = any_area(random, width, height);
        return session.rectangle(area.left, area.top, area.width, area.height);
    });
}

void expect_same_mask_forms(Session& session, Random& random, const TwoForms& forms) {
    expect_same_forms(session, random, forms, [&](int width, int height) {
        return random_mask(session, random, any_of(random, 1, 4) * 8, width, height);
    });
}

}  // namespace tarvo::test
