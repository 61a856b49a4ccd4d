// Every method in hosts for calls: what a new picture held before is never seen, and nothing is left of a call, however
// it ends.

#include <gtest/gtest.h>

#include "calls.h"
#include "error_state.h"
#include "holdings.h"
#include "random_arguments.h"
#include "search.h"
#include "services.h"
#include "snapshot.h"

namespace tarvo::test {
namespace {

using host::Callable;
using host::Cancelled;
using Paper = Picture::Paper;

constexpr std::uint32_t kRandomCases = 40;
// With pictures of various depths, masks and stores.
const std::vector<Variant>& variants() {
    static const std::vector<Variant> all = {
        {.name = "32 bits"},
        {.name = "32 bits, 8-bit mask", .shape = {.mask_depth = 8}},
        {.name = "32 bits, 32-bit mask, as picture", .shape = {.mask_depth = 32}, .as_picture = true},
        {.name = "8 bits, mask", .shape = {.depth = 8, .mask_depth = 32}, .as_picture = true},
        {.name = "16 bits", .shape = {.depth = 16}},
        {.name = "24 bits, mask", .shape = {.depth = 24, .mask_depth = 8}, .as_picture = true},
        {.name = "own memory", .shape = {.mask_depth = 8}, .store = ClientStore::own_memory},
        {.name = "own memory, as picture", .store = ClientStore::own_memory, .as_picture = true},
    };
    return all;
}

class EveryMethod : public testing::TestWithParam<std::size_t> {
protected:
    const Callable& method() const { return linked_plugin().callables.all().at(GetParam()); }

    // Good arguments, with the smallest budget between yields where the method has one.
    std::vector<Value> arguments(Session& session, const Variant& variant) const {
        Random random(3);
        std::optional<Fixed> budget;
        if (const auto yield = parameter_named(method(), "yield")) budget = {*yield, 1};
        return good_arguments(session, random, method(), variant, budget);
    }
};

// Pictures that a PictureValue can be.
bool is_plain(const ObjectRef& object) {
    const auto* const picture = dynamic_cast<const Picture*>(object.get());
    if (!picture) return true;
    return picture->shared_pixels().bytes && !picture->options().any_sides && is_plain(picture->mask());
}

bool are_plain(const std::vector<Value>& arguments) {
    return std::ranges::all_of(arguments, [](const Value& each) { return is_plain(object_in(each)); });
}

TEST_P(EveryMethod, NeverShowsThePaper) {
    const auto seen_on = [&](Paper paper, std::uint32_t seed) {
        Session session(linked_plugin(), {.paper = paper});
        Random random(seed);
        std::vector<Value> given = RandomArguments(session, random).for_method(method());
        return are_plain(given) ? see(session, method(), given) : Seen();
    };
    for (std::uint32_t seed = 0; seed < kRandomCases && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Seen on_white = seen_on(Paper::white, seed);
        EXPECT_EQ(seen_on(Paper::black, seed), on_white);
        EXPECT_EQ(seen_on(Paper::noise, seed), on_white);
    }
}

// A result whose mask cannot be made stays behind: it had been promised to the caller. It goes with the host.
void drop_promised_pictures(Session& session) {
    for (const host::Object* each : session.host.objects().all()) {
        if (each->type() != host::ObjectType::picture || each->references() != 1) continue;
        session.host.objects().unlock(const_cast<host::Object&>(*each));  // the store's own are not const
    }
}

TEST_P(EveryMethod, NeverShowsThePaperNorLeavesAnythingWhenMemoryEnds) {
    constexpr std::uint64_t kStep = 7 * 6 * 2;  // half a picture of 32 bits
    for (const Variant& variant : variants()) {
        std::uint64_t needed = 0;
        {
            Session session(linked_plugin());
            const std::vector<Value> given = arguments(session, variant);
            needed = session.host.objects().bytes();
        }
        bool refused = true;
        for (std::uint64_t more = 0; refused && !HasFailure(); more += kStep) {
            SCOPED_TRACE(variant.name + ": " + std::to_string(more) + " bytes more");
            const auto seen_on = [&](Paper paper) {
                Session session(linked_plugin(), {.limits = {.max_memory = needed + more}, .paper = paper});
                std::vector<Value> given = arguments(session, variant);
                Value result = session.caller.invoke(method(), given);
                refused = session.host.refusal().has_value();
                const Seen seen = see_result(session, result, given);
                const bool promised = host::is_nil(result);
                result = Nil{};
                given.clear();
                if (promised) drop_promised_pictures(session);
                expect_nothing_left(session);
                return seen;
            };
            const Seen on_white = seen_on(Paper::white);
            EXPECT_EQ(seen_on(Paper::black), on_white);
            EXPECT_EQ(seen_on(Paper::noise), on_white);
        }
    }
}

TEST_P(EveryMethod, NeverShowsThePaperWhenAServiceFails) {
    for (const Variant& variant : variants())
        for (const host::Service& service : host::all_services()) {
            // When a reference was not counted, the plugin drops a result that it gives.
            const std::string_view name = service.name;
            if (name == "REALLockObject" || name == "REALLockString") continue;
            bool happened = true;
            for (int n = 1; happened && !HasFailure(); ++n) {
                SCOPED_TRACE(variant.name + ": " + service.name + " fails at call " + std::to_string(n));
                const auto seen_on = [&](Paper paper) {
                    Session session(linked_plugin(), {.paper = paper});
                    std::vector<Value> given = arguments(session, variant);
                    session.host.faults.fail_at(service.name, n);
                    const Value result = session.caller.invoke(method(), given);
                    happened = session.host.faults.happened();
                    session.host.faults.clear();
                    return see_result(session, result, given);
                };
                EXPECT_EQ(seen_on(Paper::noise), seen_on(Paper::black));
            }
        }
}

TEST_P(EveryMethod, LeavesNothing) {
    for (std::uint32_t seed = 0; seed < kRandomCases && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Session session(linked_plugin());
        Random random(seed);
        std::vector<Value> given = RandomArguments(session, random).for_method(method());
        see(session, method(), given);
        given.clear();
        expect_nothing_left(session);
    }
}

// Which of a call's yields throws, and what.
template <class Thrown>
struct ThrownAt {
    int yield;
    void in(Session& session) const {
        session.host.on_yield = [&session, at = yield] {
            if (session.host.yields() == at) throw Thrown();
        };
    }
};

struct OtherError {};

int yields_of(Session& session, const Callable& method, std::vector<Value> given) {
    session.caller.invoke(method, given);
    return session.host.yields();
}

TEST_P(EveryMethod, CanBeCancelledWheneverItYields) {
    int cancelled = 0;
    for (const Variant& variant : variants()) {
        int yields = 0;
        {
            Session session(linked_plugin());
            yields = yields_of(session, method(), arguments(session, variant));
        }
        for (int at = 1; at <= yields && !HasFailure(); ++at) {
            SCOPED_TRACE(variant.name + ": cancelled at yield " + std::to_string(at));
            Session session(linked_plugin());
            std::vector<Value> given = arguments(session, variant);
            std::vector<Snapshot> snapshots;
            for (const Value& argument : given) snapshots.emplace_back(session, argument);
            ThrownAt<Cancelled>{at}.in(session);
            EXPECT_THROW(session.caller.invoke(method(), given), Cancelled);
            EXPECT_EQ(session.host.yields(), at) << "yields after it was cancelled";
            for (const Snapshot& each : snapshots) EXPECT_TRUE(each.unchanged());
            snapshots.clear();
            given.clear();
            expect_nothing_left(session);
            ++cancelled;
        }
    }
    const describe::Operation* const told = reference::description_of(method());
    EXPECT_EQ(cancelled > 0, told && is_of(told->yields, method()));
}

TEST_P(EveryMethod, SurvivesWhateverAYieldThrows) {
    const Variant& variant = variants().front();
    int yields = 0;
    {
        Session session(linked_plugin());
        yields = yields_of(session, method(), arguments(session, variant));
    }
    for (int at = 1; at <= yields && !HasFailure(); ++at) {
        Session session(linked_plugin());
        std::vector<Value> given = arguments(session, variant);
        ThrownAt<OtherError>{at}.in(session);
        const Value result = session.caller.invoke(method(), given);
        EXPECT_FALSE(object_in(result));
        given.clear();
        expect_nothing_left(session);
    }
}

// A call from a yield has a host of its own; whoever makes it keeps the outer call's error code.
TEST_P(EveryMethod, GoesOnAfterCallsFromItsYields) {
    const auto seen_with = [&](const Variant& variant, bool nested) {
        Session session(linked_plugin());
        std::vector<Value> given = arguments(session, variant);
        if (nested) {
            session.host.on_yield = [&session] {
                const std::int32_t kept = gTRV_Error;
                {
                    Session inner(linked_plugin());
                    inner.call(inner.picture(3, 3), "TRV_Add", nullptr, 0);
                    EXPECT_NE(inner.last_error(), 0);
                }
                gTRV_Error = kept;
                EXPECT_EQ(host::Host::current(), &session.host);
            };
        }
        return see(session, method(), given);
    };
    for (const Variant& variant : variants()) {
        SCOPED_TRACE(variant.name);
        EXPECT_EQ(seen_with(variant, true), seen_with(variant, false));
    }
}

INSTANTIATE_TEST_SUITE_P(, EveryMethod, testing::Range(std::size_t{0}, linked_method_names().size()),
                         [](const auto& instance) { return linked_method_names()[instance.param]; });

}  // namespace
}  // namespace tarvo::test
