// What is told of every form holds in calls: what comes back, whether the host gets control, whether the object's mask
// is seen in the result, whether the object itself changes.

#include <gtest/gtest.h>

#include <algorithm>

#include "described_forms.h"
#include "snapshot.h"

namespace tarvo::test {
namespace {

class Conduct : public EachForm {};

// Numbers that are bound by nothing are 1, the budget for pixels is one of them.
TEST_P(Conduct, TheHostGetsControlWhereItIsSaid) {
    bool yielded = false;
    for (const Variant& variant : all_variants()) {
        const int before = session.host.yields();
        std::vector<Value> values = arguments(variant);
        call(session, form, values);
        yielded = yielded || session.host.yields() > before;
        if (variant.left_out) {
            EXPECT_EQ(session.host.yields(), before) << "a budget that is left out asks for none";
        }
    }
    EXPECT_EQ(yielded, form.form().yields);
}

TEST_P(Conduct, TheObjectChangesWhereItIsSaid) {
    bool changed = false;
    for (const Variant& variant : all_variants()) {
        std::vector<Value> values = arguments(variant);
        if (form.form().self == "none") continue;
        const Snapshot before(session, values.front());
        call(session, form, values);
        changed = changed || !before.unchanged();
    }
    EXPECT_EQ(changed, form.form().changes_self);
}

TEST_P(Conduct, TheResultIsWhatIsSaid) {
    std::vector<Value> values = arguments({});
    const Answer answer = call(session, form, values);
    if (host::is_nil(answer.result)) {
        EXPECT_TRUE(form.form().result == "none" || answer.failure);  // some methods always fail
        return;
    }
    const std::string type = host::type_name(answer.result);
    EXPECT_EQ(type == "MemoryBlock" ? "bytes" : type, form.form().result);
}

// The picture that is or lies behind the object; null for own memory and other objects.
Picture* shown_by(Session& session, const ObjectRef& object) {
    return dynamic_cast<Picture*>(is_client(object) ? picture_behind(session, object).get() : object.get());
}

// The object with a mask of one level all over: a picture's, or that of a picture's string, which is its end.
ObjectRef with_mask_of(Session& session, const ObjectRef& object, std::uint8_t level) {
    if (Picture* const shown = shown_by(session, object)) {
        Picture& mask = pixels(shown->mask());
        for (int y = 0; y < mask.height(); ++y) std::fill_n(mask.row(y), mask.packed_row_bytes(), level);
    } else if (const auto* const string = dynamic_cast<const host::StringObject*>(object.get())) {
        constexpr std::size_t kLevels = std::size_t{kUsualSize.width} * kUsualSize.height;
        std::string bytes(string->bytes());
        bytes.replace(bytes.size() - kLevels, kLevels, kLevels, static_cast<char>(level));
        return session.host.new_string(bytes);
    }
    return object;
}

// What of the result may show the mask; a client picture shows it when it is converted.
std::vector<std::uint8_t> mask_in(Session& session, const ObjectRef& result) {
    if (is_client(result)) return mask_in(session, session.picture_of(result));
    if (const auto* const string = dynamic_cast<const host::StringObject*>(result.get()))
        return {string->bytes().begin(), string->bytes().end()};
    const Picture* const shown = shown_by(session, result);
    return shown && shown->mask() ? all_bytes(shown->mask()) : std::vector<std::uint8_t>();
}

TEST_P(Conduct, TheMaskIsKeptWhereItIsSaid) {
    bool kept = false;
    for (const bool as_picture : {false, true}) {
        // The same call twice, but for what the object's mask shows.
        std::vector<std::vector<std::uint8_t>> seen;
        for (const int level : {0, 255}) {
            std::vector<Value> values = arguments({.shape = {.mask_depth = 32}, .as_picture = as_picture});
            if (form.form().self != "none")
                values.front() = with_mask_of(session, object_in(values.front()), static_cast<std::uint8_t>(level));
            seen.push_back(mask_in(session, object_in(call(session, form, values).result)));
        }
        kept = kept || seen.front() != seen.back();
    }
    EXPECT_EQ(kept, form.form().keeps_mask);
}

TARVO_FOR_EACH_FORM(Conduct);

}  // namespace
}  // namespace tarvo::test
