// Every registered operation and class member, with every host service failing at every call, and missing altogether:
// the right code, nothing changed that was handed in, and nothing left behind but what is to be.
//
// TARVO_FAULT_VARIANTS tries so many variants of the arguments of each, where all would take too long.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>

#include "courses.h"
#include "fake_screen.h"
#include "holdings.h"
#include "services.h"
#include "snapshot.h"
#include "survivors.h"
#include "variants.h"

namespace tarvo::test {
namespace {

using host::Callable;

using Calls = std::map<std::string_view, int>;

// The calls of each service so far.
Calls calls_in(const Session& session) {
    Calls calls;
    for (const host::Service& each : host::all_services()) calls[each.name] = session.host.faults.calls(each.name);
    return calls;
}

Calls operator-(Calls after, const Calls& before) {
    for (auto& [service, calls] : after) calls -= before.at(service);
    return after;
}

bool is_unnoticed(std::string_view service) { return std::ranges::find(kUnnoticed, service) != std::end(kUnnoticed); }

bool leaves(Ending::Leaves what, std::string_view service) {
    return std::ranges::any_of(kEndings,
                               [&](const Ending& each) { return each.service == service && each.leaves == what; });
}

// The plugin keeps what this gives.
constexpr std::string_view kClassLookUp = "pluginObjectType";
constexpr std::string_view kDrop = "REALUnlockObject";

struct Report {
    bool fault_happened;
    Calls calls;
    Outcome outcome;
};

// A copy of the plugin of its own, so that nothing is cached in it at first.
class Bench {
public:
    explicit Bench(std::size_t method) : method_(session_.caller.callables().at(method)), course_(course_of(method_)) {}

    const Callable& method() const { return method_; }
    void hide(std::string_view service) { session_.host.faults.hide(service); }

    // Calls the method, and checks all that came of it. `orders`: the fault is to be ordered of the host; one that is
    // not is there already, a hidden service. Its failing calls are `fault_calls` then.
    Report run(const Variant& variant, const Fault& fault, bool orders = true, int fault_calls = 0) {
        const Holdings before = holdings_in(session_);
        Report report = run_with_arguments(variant, fault, orders, fault_calls);
        const int references = holdings_in(session_).references - before.references;
        int expected = static_cast<int>(report.outcome.survivors.size());
        if (leaves(Ending::Leaves::reference, fault.service)) expected += failed_calls_;
        // Who drops what was never counted drops what another holds.
        if (is_unnoticed(fault.service) && references < expected) return report;
        EXPECT_EQ(references, expected) << survivors_of(report.outcome) << "alive:\n"
                                        << session_.host.describe_live_objects();
        return report;
    }

private:
    static std::string survivors_of(const Outcome& outcome) {
        std::ostringstream text;
        for (const Survivor each : outcome.survivors) {
            const NamedSurvivor& named = kSurvivors[static_cast<std::size_t>(each)];
            text << "to survive: " << named.name << " (" << named.reason << ")\n";
        }
        return text.str();
    }

    Report run_with_arguments(const Variant& variant, const Fault& fault, bool orders, int fault_calls) {
        Random random(1);
        std::vector<Value> arguments = good_arguments(session_, random, method_, variant);
        std::vector<Snapshot> snapshots;
        for (const Value& argument : arguments) snapshots.emplace_back(session_, argument);
        const Outcome expected =
            Rehearsal(session_, method_, arguments, fault, session_.last_error(), class_known_).run(course_);

        const Holdings before = holdings_in(session_);
        const auto calls_before = calls_in(session_);
        session_.host.clear_complaints();
        if (orders && fault.n) session_.host.faults.fail_at(fault.service, fault.n, fault.from_then_on);
        const Value result = session_.caller.invoke(method_, arguments);
        Report report = {session_.host.faults.happened(), calls_in(session_) - calls_before, expected};
        session_.host.faults.clear();  // what is handed in goes in good order
        failed_calls_ = orders ? failed_calls(fault, report) : fault_calls;
        const bool look_up_failed = report.fault_happened && fault.service == kClassLookUp;
        class_known_ = class_known_ || (report.calls.at(kClassLookUp) > 0 && !look_up_failed);

        expect_outcome(expected, arguments, result);
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            const bool may_change = i == 0 && changes_its_object(method_);
            if ((!may_change || expected.code != 0) && !is_unnoticed(fault.service)) {
                EXPECT_TRUE(snapshots[i].unchanged()) << "argument " << i;
            }
        }
        expect_locks_ended(before, fault);
        if (!is_unnoticed(fault.service) && !is_declared_crookedly(method_)) {
            EXPECT_EQ(session_.host.complaints(), std::vector<std::string>());
        }
        return report;
    }

    static int failed_calls(const Fault& fault, const Report& report) {
        if (!report.fault_happened) return 0;
        return fault.from_then_on ? report.calls.at(fault.service) - fault.n + 1 : 1;
    }

    void expect_outcome(const Outcome& expected, const std::vector<Value>& arguments, const Value& result) {
        EXPECT_EQ(session_.last_error(), expected.code);
        const auto& declared = method_.declaration.result;
        if (declared && declared->is_object()) {
            EXPECT_EQ(host::is_nil(result), expected.gives_nothing);
        }
        if (declared || expected.code == 0) return;
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (!method_.parameters[i].by_ref) continue;
            const auto* const integer = std::get_if<std::int32_t>(&arguments[i]);
            EXPECT_EQ(integer ? *integer : std::get<double>(arguments[i]), kUntouched) << "argument " << i;
        }
    }

    void expect_locks_ended(const Holdings& before, const Fault& fault) {
        const Holdings after = holdings_in(session_);
        EXPECT_EQ(after.platform_locks, before.platform_locks);
        const int locks = after.picture_locks - before.picture_locks;
        EXPECT_GE(locks, 0);
        EXPECT_LE(locks, leaves(Ending::Leaves::lock, fault.service) ? failed_calls_ : 0);  // a picture's go with it
    }

    FakeScreen screen_{9, 5};
    Session session_{{}, true};
    const Callable& method_;
    CourseOf course_;
    bool class_known_ = false;
    int failed_calls_ = 0;
};

// The calls of services that give nothing cannot be foretold by those that fail.
bool gives_something(std::string_view service) {
    constexpr std::string_view kGivingNothing[] = {
        "REALLockString",           "REALUnlockString",     "REALLockObject", "REALUnlockObject",
        "unlockPictureDescription", "drawPicturePrimitive", "REALYieldToRB",  "RuntimeMsgBox",
    };
    return std::ranges::find(kGivingNothing, service) == std::end(kGivingNothing);
}

std::string describe(const Variant& variant, const Fault& fault) {
    std::ostringstream text;
    text << variant.name << "; " << fault.service << " fails at call " << fault.n
         << (fault.from_then_on ? " and later" : "");
    return text.str();
}

// The method, and what a failed test may be due to.
std::string told_of(const Callable& method) {
    const char* const hint = " (has the usual course of such declarations; tests/faults/courses.cpp can tell another)";
    return method.declaration.text + (has_usual_course(method) ? hint : "");
}

// All variants, or as many as are asked for, from all over.
std::vector<Variant> tried_variants(const Callable& method) {
    const std::vector<Variant> all = variants_of(method);
    const char* const asked = std::getenv("TARVO_FAULT_VARIANTS");
    if (!asked) return all;
    const std::size_t count = std::clamp<std::size_t>(std::strtoul(asked, nullptr, 10), 1, all.size());
    std::vector<Variant> tried;
    for (std::size_t i = 0; i < count; ++i) tried.push_back(all[i * all.size() / count]);
    return tried;
}

// --- the tests: each for every method -------------------------------------------------------------------------------

class FaultLoop : public testing::TestWithParam<std::size_t> {};

TEST_P(FaultLoop, WithoutFaultTheCourseIsAsTold) {
    Bench bench(GetParam());
    for (const Variant& variant : tried_variants(bench.method())) {
        SCOPED_TRACE(told_of(bench.method()) + ": " + variant.name);
        Report report = bench.run(variant, {});
        for (const auto& [service, calls] : report.calls) {
            if (gives_something(service)) {
                EXPECT_EQ(calls, report.outcome.calls[service]) << service;
            }
        }
    }
}

// How often the method calls each service in each variant, of a plugin that has not looked its own class up before.
std::vector<Calls> calls_of_variants(std::size_t method, const std::vector<Variant>& variants) {
    std::vector<Calls> calls;
    std::optional<Bench> bench;
    for (const Variant& variant : variants) {
        if (!bench || calls.back().at(kClassLookUp) > 0) bench.emplace(method);
        calls.push_back(bench->run(variant, {}).calls);
    }
    return calls;
}

// The services that the method calls in any variant. The failure of another changes nothing.
std::set<std::string_view> services_called(const std::vector<Calls>& calls) {
    std::set<std::string_view> called;
    for (const Calls& of_variant : calls)
        for (const auto& [service, count] : of_variant)
            if (count > 0) called.insert(service);
    return called;
}

TEST_P(FaultLoop, EachServiceFailsAtEachCall) {
    constexpr int kMostCalls = 1000;
    const std::vector<Variant> variants = tried_variants(Bench(GetParam()).method());
    for (const std::string_view service : services_called(calls_of_variants(GetParam(), variants))) {
        Bench bench(GetParam());
        for (const Variant& variant : variants) {
            for (const bool from_then_on : {false, true}) {
                int n = 0;
                for (bool happened = true; happened;) {
                    const Fault fault = {service, ++n, from_then_on};
                    SCOPED_TRACE(told_of(bench.method()) + ": " + describe(variant, fault));
                    happened = bench.run(variant, fault).fault_happened;
                    ASSERT_LT(n, kMostCalls);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST_P(FaultLoop, EachServiceIsMissing) {
    const std::vector<Variant> variants = tried_variants(Bench(GetParam()).method());
    const std::vector<Calls> calls = calls_of_variants(GetParam(), variants);
    for (const std::string_view service : services_called(calls)) {
        std::optional<Bench> bench;
        for (std::size_t i = 0; i < variants.size(); ++i) {
            const int count = calls[i].at(service);
            if (count == 0) continue;
            // Arguments that die after a call drop what they hold: then the plugin has found this service.
            if (!bench || service == kDrop) bench.emplace(GetParam());
            const Fault fault = {service, 1, true};
            SCOPED_TRACE(told_of(bench->method()) + ": " + variants[i].name + "; there is no " + std::string(service));
            bench->hide(service);
            bench->run(variants[i], fault, false, count);
            if (HasFailure()) return;
        }
    }
}

// Where the host gets control it may throw: nothing gets through to the caller.
TEST_P(FaultLoop, ACallbackOfTheHostThrows) {
    Session session({}, true);
    Random random(1);
    const Callable& method = session.caller.callables().at(GetParam());
    for (const Variant& variant : tried_variants(method)) {
        bool thrown = true;
        for (int n = 1; thrown; ++n) {
            SCOPED_TRACE(told_of(method) + ": " + variant.name + "; throws at callback " + std::to_string(n));
            const Holdings before = holdings_in(session);
            std::vector<Value> arguments = good_arguments(session, random, method, variant);
            std::vector<Snapshot> snapshots;
            for (const Value& argument : arguments) snapshots.emplace_back(session, argument);
            int callbacks = 0;
            const auto throw_in_turn = [&] {
                if (++callbacks == n) throw std::runtime_error("the host has had enough");
            };
            session.host.on_yield = session.host.on_draw = throw_in_turn;
            session.host.on_message_box = [&](const std::string&) { throw_in_turn(); };
            session.caller.invoke(method, arguments);
            thrown = callbacks >= n;

            for (std::size_t i = changes_its_object(method) ? 1 : 0; i < arguments.size(); ++i)
                EXPECT_TRUE(snapshots[i].unchanged()) << "argument " << i;
            snapshots.clear();
            arguments.clear();
            drop_refused_clients(session);
            EXPECT_EQ(holdings_in(session), before) << session.host.describe_live_objects();
            if (HasFailure()) return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, FaultLoop, testing::Range(std::size_t{0}, method_names().size()),
                         [](const auto& instance) { return method_names()[instance.param]; });

// --- properties -----------------------------------------------------------------------------------------------------

struct Property {
    std::string class_name;
    const host::RegisteredProperty& property;
};

std::vector<Property> properties_in(const Session& session) {
    std::vector<Property> all;
    for (const host::RegisteredClass& cls : session.host.registry().classes())
        for (const host::RegisteredProperty& each : cls.properties) all.push_back({cls.name, each});
    return all;
}

// Reads and writes the property while the n-th call of the service fails. Whether it did.
bool use_with_fault(Session& session, Random& random, const Property& used, const Fault& fault) {
    const ObjectRef object = used.class_name == "TRV_ClientPicture"
                                 ? client_of_picture(session, random_picture(session, random, {}, 3, 2))
                                 : session.host.new_instance(used.class_name);
    session.host.faults.fail_at(fault.service, fault.n);
    session.caller.get(object, used.property.name);
    if (used.property.setter) session.caller.set(object, used.property.name, 3);
    const bool happened = session.host.faults.happened();
    session.host.faults.clear();
    return happened;
}

TEST(FaultLoopOfProperties, EachServiceFailsAtEachCall) {
    Session session({}, true);
    Random random(1);
    const std::vector<Property> properties = properties_in(session);
    ASSERT_FALSE(properties.empty());
    int faults = 0;
    for (const Property& used : properties)
        for (const host::Service& service : host::all_services()) {
            SCOPED_TRACE(used.class_name + "." + used.property.name + "; " + service.name + " fails");
            const Holdings before = holdings_in(session);
            for (int n = 1; use_with_fault(session, random, used, {service.name, n}); ++n) ++faults;
            EXPECT_EQ(holdings_in(session), before);
        }
    EXPECT_EQ(faults, 1);  // `pic` adds a reference; nothing else asks anything of the host
}

}  // namespace
}  // namespace tarvo::test
