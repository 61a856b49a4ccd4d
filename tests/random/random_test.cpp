// Every registered operation and class member with random arguments of the declared types: whatever comes of a call,
// what was handed in is unchanged, nothing is left behind, and the host is never asked about a handle that is none.
//
// TARVO_RANDOM_SEED and TARVO_RANDOM_CASES choose other cases and more of them; with TARVO_RANDOM_TRACE each case is
// written out before it runs.

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <utility>

#include "fake_screen.h"
#include "holdings.h"
#include "random_arguments.h"
#include "snapshot.h"

namespace tarvo::test {

namespace {

using host::Callable;
using host::Parameter;

constexpr std::uint32_t kCases = 100;  // of each method

std::uint32_t number_from(const char* variable, std::uint32_t otherwise) {
    const char* const text = std::getenv(variable);
    return text ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

std::string describe(const Value& value) {
    if (host::is_nil(value)) return "nil";
    if (const auto* const integer = std::get_if<std::int32_t>(&value)) return std::to_string(*integer);
    if (const auto* const real = std::get_if<double>(&value)) return std::to_string(*real);
    if (const auto* const truth = std::get_if<bool>(&value)) return *truth ? "true" : "false";
    if (const auto* const color = std::get_if<Color>(&value)) return "color " + std::to_string(color->rgb);
    return host::type_name(value) + " (" + object_in(value)->describe() + ")";
}

std::string describe(const Callable& method, const std::vector<Value>& arguments) {
    std::string text = full_declaration(method) + " with";
    for (const Value& argument : arguments) text += "\n  " + describe(argument);
    return text;
}

class RandomCalls : public testing::TestWithParam<std::size_t> {
protected:
    RandomCalls() : seed(number_from("TARVO_RANDOM_SEED", 1)), random(seed + 7919 * static_cast<unsigned>(GetParam())) {
        session.host.on_yield = [this] { go_on_meanwhile(); };
    }

    const Callable& method() const { return session.caller.callables().at(GetParam()); }

    // Whether something came of it.
    bool run(const Callable& called, bool with_wrong_handle) {
        const Holdings before = holdings_in(session);
        const bool done = run_with_arguments(called, with_wrong_handle);
        const int refused = drop_refused_clients(session);
        EXPECT_LE(refused, done ? 0 : 1);
        EXPECT_EQ(holdings_in(session), before) << session.host.describe_live_objects();
        return done;
    }

    FakeScreen screen{30, 20};
    Session session;
    const std::uint32_t seed;
    Random random;

private:
    bool run_with_arguments(const Callable& called, bool with_wrong_handle) {
        std::vector<Value> arguments = RandomArguments(session, random).for_method(called);
        const bool misuse = (with_wrong_handle && put_wrong_handle(called, arguments)) || is_declared_crookedly(called);
        SCOPED_TRACE(describe(called, arguments));
        if (traces_) std::cerr << describe(called, arguments) << std::endl;
        std::vector<Snapshot> snapshots;
        for (const Value& argument : arguments) snapshots.emplace_back(session, argument);

        session.host.clear_complaints();
        bool changed = false;
        in_use_ = {&arguments, &changed};
        const Value result = session.invoke_as_given(called, arguments);
        in_use_ = {};
        if (!misuse) {
            EXPECT_EQ(session.host.complaints(), std::vector<std::string>());
        }
        for (std::size_t i = changes_its_object(called) ? 1 : 0; i < snapshots.size() && !changed; ++i)
            EXPECT_TRUE(snapshots[i].unchanged()) << "argument " << i;
        if (is_client(result)) read_all(object_in(result));
        const auto& declared = called.declaration.result;
        return !declared || !declared->is_object() || !host::is_nil(result);
    }

    // An object that is no picture where a picture is declared: the host refuses its handle. False without such a
    // place.
    bool put_wrong_handle(const Callable& called, std::vector<Value>& arguments) {
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (called.parameters[i].type.name != "picture") continue;
            const char* const classes[] = {"TRV_Rectangle", "TRV_ColorMatrix", "TRV_Convolution", "TRV_ClientPicture"};
            arguments[i] = session.host.new_instance(classes[any_of(random, 0, 3)]);
            return true;
        }
        return false;
    }

    void read_all(const ObjectRef& client) {
        for (const char* const property :
             {"width", "height", "depth", "rowBytes", "hasMask", "maskDepth", "maskRowBytes", "pic"})
            session.caller.get(client, property);
        session.caller.call_on(client, "operator_convert", {});
    }

    // While an operation yields, the program calls another, or changes what the operation was given.
    void go_on_meanwhile() {
        if (nested_) return;
        nested_ = true;
        const InUse outer = std::exchange(in_use_, {});
        if (outer.arguments && any_of(random, 1, 4) == 1) {
            for (const Value& argument : *outer.arguments) change(object_in(argument));
            *outer.changed = true;
        } else {
            call_another();
        }
        in_use_ = outer;
        nested_ = false;
    }

    void call_another() {
        const auto& all = session.caller.callables();
        const auto index = static_cast<std::size_t>(any_of(random, 0, static_cast<int>(all.size()) - 1));
        if (!is_declared_crookedly(all[index])) run(all[index], false);
    }

    void change(const ObjectRef& object) {
        if (!object) return;
        const std::string type = host::class_name(*object.get());
        RandomArguments anything(session, random);
        if (type == "picture") {
            pixels(object).set_mask(object_in(anything.value_of(host::type_named("picture"), "mask")));
        } else if (type == "TRV_ClientPicture") {
            std::vector<Value> picture = {anything.value_of(host::type_named("picture"), "p")};
            session.caller.call_on(object, "operator_convert", picture);
        } else if (type == "TRV_Rectangle") {
            session.caller.set(object, "left", anything.value_of(host::type_named("integer"), "left"));
            session.caller.set(object, "height", anything.value_of(host::type_named("integer"), "height"));
        } else if (type == "TRV_Convolution") {
            std::vector<Value> coefficients = {session.host.new_integer_array({-1, 3, -1})};
            session.caller.call_on(object, "SetCoefficients", coefficients);
        }
    }

    struct InUse {
        const std::vector<Value>* arguments = nullptr;
        bool* changed = nullptr;
    };

    const bool traces_ = std::getenv("TARVO_RANDOM_TRACE") != nullptr;
    bool nested_ = false;
    InUse in_use_;  // of the operation that runs
};

TEST_P(RandomCalls, LeaveNothingBehind) {
    const auto cases = number_from("TARVO_RANDOM_CASES", kCases);
    std::cout << cases << " cases of seed " << seed << ": " << method().declaration.text << "\n";
    ASSERT_GT(cases, 0u);
    int done = 0;
    for (std::uint32_t i = 0; i < cases && !HasFailure(); ++i) done += run(method(), false);
    std::cout << done << " gave something\n";
}

TEST_P(RandomCalls, RefuseHandlesOfOtherThings) {
    const auto cases = number_from("TARVO_RANDOM_CASES", kCases) / 5;
    for (std::uint32_t i = 0; i < cases && !HasFailure(); ++i) run(method(), true);
}

INSTANTIATE_TEST_SUITE_P(, RandomCalls, testing::Range(std::size_t{0}, method_names().size()),
                         [](const auto& instance) { return method_names()[instance.param]; });

}  // namespace
}  // namespace tarvo::test
