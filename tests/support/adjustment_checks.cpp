#include "adjustment_checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

// The pictures and rectangles of the checks of a form, and the codes that its calls leave.
class Checks {
public:
    Checks(Session& session, const Form& form, const Numbers& numbers, const OutOfRange& wrong)
        : session_(session), form_(form), numbers_(numbers), wrong_(wrong) {}

    void expect_region_checks() {
        expect_checks_before_result();
        if (!form_.gives_result()) return;
        const ObjectRef good = this->good(), outside = this->outside();
        refuse_results();
        EXPECT_EQ(code(good, outside), 38);
        EXPECT_EQ(code(good, {}), 6);
        session_.host.faults.clear();
    }

    void expect_mask_checks() {
        const ObjectRef good = this->good(), unlockable = this->unlockable(), unlockable_mask = unlockable_picture();
        EXPECT_EQ(wrong_code({}, unlockable_mask), 2);
        EXPECT_EQ(wrong_code(unlockable, {}), 8);
        if (wrong_.code) {
            EXPECT_EQ(wrong_code(unlockable, unlockable_mask), wrong_.code);
        }
        EXPECT_EQ(code(unlockable, unlockable_mask), 4);
        EXPECT_EQ(code(good, unlockable_mask), 9);
        EXPECT_EQ(code(good, session_.picture(kWidth - 1, kHeight)), 10);
        EXPECT_EQ(code(good, session_.picture(kWidth, kHeight + 1)), 10);
        EXPECT_EQ(code(good, session_.picture(kWidth, kHeight, 12)), 11);
        EXPECT_EQ(code(good, session_.picture(kWidth - 1, kHeight, 12)),
                  11);  // after the size, whose code it replaces
        const ObjectRef mask = session_.picture(kWidth, kHeight), small = session_.picture(kWidth - 1, kHeight);
        refuse_results();
        EXPECT_EQ(code(good, small), 10);
        EXPECT_EQ(code(good, mask), 6);
        session_.host.faults.clear();
    }

private:
    void expect_checks_before_result() {
        EXPECT_EQ(wrong_code({}, outside()), 2);
        if (wrong_.code) {
            EXPECT_EQ(wrong_code(unlockable(), outside()), wrong_.code);
        }
        EXPECT_EQ(code(unlockable(), outside()), 4);
        EXPECT_EQ(code(good(), outside()), 38);
        for (const Area& area :
             {Area{0, 0, 0, 1}, Area{0, 0, 1, 0}, Area{0, 0, -1, -1}, Area{kWidth, 0, 1, 1}, Area{0, kHeight, 1, 1},
              Area{-5, 0, 5, 1}, Area{0, -5, 1, 5}, Area{2147483647, 0, 2147483647, 1}})
            EXPECT_EQ(code(good(), session_.rectangle(area.left, area.top, area.width, area.height)), 38)
                << area.left << " " << area.top << " " << area.width << " " << area.height;
    }

    ObjectRef good() { return fit(session_.picture(kWidth, kHeight)); }
    ObjectRef unlockable() { return fit(unlockable_picture()); }
    ObjectRef unlockable_picture() {
        const ObjectRef made = session_.picture(kWidth, kHeight);
        pixels(made).set_purged(true);
        return made;
    }
    ObjectRef outside() { return session_.rectangle(50, 50, 5, 5); }
    ObjectRef fit(const ObjectRef& picture) { return form_.on_clients ? session_.client(picture) : picture; }

    // Nothing can be made, neither a host picture nor an instance.
    void refuse_results() {
        session_.host.faults.fail_at("newPicture", 1, true);
        session_.host.faults.fail_at("CreateInstance", 1, true);
    }

    int code(const ObjectRef& p, const ObjectRef& second) { return code(p, second, numbers_); }
    int wrong_code(const ObjectRef& p, const ObjectRef& second) {
        return code(p, second, wrong_.code ? wrong_.numbers : numbers_);
    }
    int code(const ObjectRef& p, const ObjectRef& second, const Numbers& numbers) {
        Numbers after = numbers;
        EXPECT_FALSE(object_in(form_.call_by_ref(session_, p, second, after)));
        EXPECT_EQ(after, numbers);
        return session_.last_error();
    }

    Session& session_;
    const Form& form_;
    const Numbers& numbers_;
    const OutOfRange& wrong_;
};

}  // namespace

void expect_checks(Session& session, const OperationName& operation, const Numbers& numbers, const OutOfRange& wrong) {
    const std::vector<Form> forms = forms_of(session, operation);
    EXPECT_FALSE(forms.empty()) << operation.name;
    for (const Form& form : forms) {
        SCOPED_TRACE(form.name());
        Checks checks(session, form, numbers, wrong);
        form.by_mask ? checks.expect_mask_checks() : checks.expect_region_checks();
    }
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

// A form on client pictures beside that on pictures, both called with the same numbers.
struct TwoForms {
    Session& session;
    Random& random;
    const Form of_pictures, of_clients;
    const Numbers& numbers;
    const bool copies_mask;

    // Of a picture, and of the client picture that shows it.
    void expect_same(const ObjectRef& source, const ObjectRef& client, const ObjectRef& second) const {
        const Value plain = of_pictures.call(session, source, second, numbers);
        ASSERT_TRUE(picture_in(plain)) << session.last_error();
        const Holdings before = holdings_in(session);
        {
            const Value result = of_clients.call(session, client, second, numbers);
            ASSERT_TRUE(is_client(result));
            EXPECT_EQ(session.last_error(), 0);
            EXPECT_EQ(static_cast<bool>(picture_behind(session, object_in(result))), of_clients.as_picture);
            const ObjectRef converted = session.picture_of(object_in(result));
            EXPECT_EQ(difference(pixels(converted), read_image(*picture_in(plain)), picture_in(plain)->depth()), "");
            expect_mask(pixels(converted), pixels(source), copies_mask, of_clients.as_picture);
        }
        EXPECT_EQ(holdings_in(session), before);
    }

    void try_host_picture(const Shape& shape) const {
        const int width = any_of(random, 1, 30), height = any_of(random, 1, 5);
        const ObjectRef source = random_picture(session, random, shape, width, height);
        const auto before = all_bytes(source);
        expect_same(source, client_of_picture(session, source), any_second(width, height));
        EXPECT_EQ(all_bytes(source), before);
    }

    void try_own_memory(int depth) const {
        const int width = any_of(random, 1, 30), height = any_of(random, 1, 5);
        const ObjectRef client = client_in_own_memory(session, random, width, height, depth, false);
        const auto before = client_bytes(client);
        expect_same(session.picture_of(client), client, any_second(width, height));
        EXPECT_EQ(client_bytes(client), before);

        // The mask of a client picture in own memory is its own.
        if (of_clients.as_picture) return;
        const ObjectRef masked = client_in_own_memory(session, random, width, height, depth, true);
        const Value result = of_clients.call(session, masked, any_second(width, height), numbers);
        ASSERT_TRUE(is_client(result));
        EXPECT_EQ(client_has_mask(object_in(result)), copies_mask);
    }

    ObjectRef any_second(int width, int height) const {
        if (of_clients.by_mask) return random_mask(session, random, any_of(random, 1, 4) * 8, width, height);
        const Area area = any_area(random, width, height);
        return session.rectangle(area.left, area.top, area.width, area.height);
    }
};

}  // namespace

void expect_same_forms(Session& session, Random& random, const Adjustment& adjustment, const Numbers& numbers) {
    int compared = 0;
    for (const Form& form : forms_of(session, adjustment.name)) {
        if (!form.on_clients) continue;
        ++compared;
        SCOPED_TRACE(form.name());
        const Form of_pictures = picture_form(session, adjustment.name, form.by_mask ? Of::mask : Of::region);
        const TwoForms forms = {session, random, of_pictures, form, numbers, adjustment.copies_mask && !form.by_mask};
        for (Shape shape : source_shapes()) {
            if (shape.backing == host::Backing::drawing_commands) continue;
            for (const int mask_depth : {0, 8, 32}) {
                shape.mask_depth = mask_depth;
                SCOPED_TRACE(shape.name());
                forms.try_host_picture(shape);
            }
        }
        for (const int depth : {16, 24, 32}) {
            SCOPED_TRACE("own memory of " + std::to_string(depth) + " bits");
            forms.try_own_memory(depth);
        }
    }
    EXPECT_GT(compared, 0);
    EXPECT_TRUE(session.host.complaints().empty());
}

// --- averages --------------------------------------------------------------------------------------------------------

namespace {

// To the bit; all that are no numbers are the same.
bool same_numbers(const Numbers& a, const Numbers& b) {
    return std::ranges::equal(a, b, [](const Value& x, const Value& y) {
        const auto* const first = std::get_if<double>(&x);
        const auto* const second = std::get_if<double>(&y);
        return x == y || (first && second && std::isnan(*first) && std::isnan(*second));
    });
}

// Of a picture, of the client picture that shows it, and of its own memory.
ObjectRef any_subject(Session& session, Random& random, const Form& form, const Shape& shape, const Size& size) {
    if (!form.on_clients) return random_picture(session, random, shape, size.width, size.height);
    if (shape.depth >= 16 && any_of(random, 0, 1))
        return client_in_own_memory(session, random, size.width, size.height, shape.depth, true);
    return client_of_picture(session, random_picture(session, random, shape, size.width, size.height));
}

}  // namespace

void expect_average_agreement(Session& session, Random& random, const OperationName& operation, const Numbers& numbers,
                              const PlainAverage& average) {
    for (const Form& form : forms_of(session, operation)) {
        for (const Shape& shape : source_shapes()) {
            if (form.on_clients && shape.backing == host::Backing::drawing_commands) continue;
            for (const int width : {any_of(random, 1, 70), 513, 1025}) {
                const Size size = {width, any_of(random, 1, 6)};
                SCOPED_TRACE(form.name() + " of " + shape.name() + ", " + name_of(size));
                const ObjectRef subject = any_subject(session, random, form, shape, size);
                const Area area = any_area(random, size.width, size.height);
                const ObjectRef image = form.on_clients ? session.picture_of(subject) : subject;
                Numbers after = numbers;
                const ObjectRef rectangle = session.rectangle(area.left, area.top, area.width, area.height);
                form.call_by_ref(session, subject, rectangle, after);
                EXPECT_EQ(session.last_error(), 0);
                EXPECT_TRUE(same_numbers(after, average(read_image(pixels(image)), area)));
            }
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

}  // namespace tarvo::test
