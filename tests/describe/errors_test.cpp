// Every way in which a call can fail is told, with what comes back, and every one that is told happens: by arguments
// that are missing, of another size or depth, out of range or malformed, one or two at a time, and by services of the
// host that fail.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <set>

#include "described_forms.h"
#include "services.h"

namespace tarvo::test {
namespace {

using host::Parameter;

// Their failure gives nobody anything to notice; what was not counted would be dropped all the same.
constexpr std::string_view kUnnoticed[] = {"REALLockObject", "REALUnlockObject", "REALLockString", "REALUnlockString",
                                           "unlockPictureDescription"};

// An argument with something the matter.
using Spoil = std::function<void(std::vector<Value>&)>;

class Errors : public EachForm {
protected:
    std::optional<Failure> failure_of(const Variant& variant, std::initializer_list<const Spoil*> spoils = {}) {
        std::vector<Value> values = arguments(variant);
        for (const Spoil* each : spoils) (*each)(values);
        clear_code(session);
        return call(session, form, values).failure;
    }

    std::vector<Spoil> spoils();
    void provoke_by_arguments(const Variant& variant);
    void provoke_by_host(const Variant& variant);

    std::set<Failure> told() const {
        std::set<Failure> failures;
        for (const reference::Error& each : form.operation.errors)
            if (form.has(each.forms)) failures.insert({each.about->code, each.about->gives});
        return failures;
    }

    std::set<Failure> seen;

private:
    void spoil_object(std::size_t i, std::vector<Spoil>& all);
};

void Errors::spoil_object(std::size_t i, std::vector<Spoil>& all) {
    const auto put = [&](auto make) { all.push_back([i, make](std::vector<Value>& values) { values[i] = make(); }); };
    const std::string& type = form.callable().parameters[i].type.name;
    const auto [width, height] = kUsualSize;
    const host::PictureOptions spoilt[] = {{.width = width + 1, .height = height},
                                           {.width = width, .height = height, .depth = 12},
                                           {.width = 0, .height = height, .any_sides = true}};
    put([] { return Value(host::Nil{}); });
    if (type == "picture") {
        for (const host::PictureOptions& each : spoilt)
            put([=, this] { return Value(session.host.new_picture(each)); });
    } else if (type == "TRV_ClientPicture") {
        for (const host::PictureOptions& each : spoilt)
            put([=, this] { return Value(client_of_picture(session, session.host.new_picture(each))); });
    } else if (type == "TRV_Rectangle") {
        put([this] { return Value(session.rectangle(kUsualSize.width, 0, 1, 1)); });
        put([this] { return Value(session.rectangle(0, 0, 0, 0)); });
    } else if (form.callable().parameters[i].type.kind == host::TypeKind::string) {
        put([this] { return Value(session.host.new_string("too short")); });
    }
}

std::vector<Spoil> Errors::spoils() {
    constexpr int kFarAway = 1000;
    std::vector<Spoil> all;
    const std::vector<Parameter>& parameters = form.callable().parameters;
    const std::vector<Value> good = arguments({});
    const auto put_number = [&](std::size_t i, double number) {
        all.push_back([&parameters, i, number](std::vector<Value>& v) { v[i] = number_of(parameters[i], number); });
    };
    const std::vector<Range> ranges = ranges_of(form, good);
    for (const Range& each : ranges) put_number(each.parameter, each.nearest_outside);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (parameters[i].type.is_object()) {
            spoil_object(i, all);
            continue;
        }
        const bool bounded = std::ranges::find(ranges, i, &Range::parameter) != ranges.end();
        if (parameters[i].type.kind != host::TypeKind::integer || parameters[i].by_ref || bounded) continue;
        put_number(i, kFarAway);
        put_number(i, -kFarAway);
    }
    return all;
}

void Errors::provoke_by_arguments(const Variant& variant) {
    const std::vector<Spoil> all = spoils();
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t j = 0; j <= i; ++j)
            if (const auto failure = failure_of(variant, {&all[i], &all[j]})) seen.insert(*failure);
}

void Errors::provoke_by_host(const Variant& variant) {
    for (const host::Service& service : host::all_services()) {
        if (std::ranges::find(kUnnoticed, service.name) != std::end(kUnnoticed)) continue;
        for (const bool from_then_on : {false, true}) {
            bool happened = true;
            for (int n = 1; happened; ++n) {
                std::vector<Value> values = arguments(variant);
                clear_code(session);
                session.host.faults.fail_at(service.name, n, from_then_on);
                const Answer answer = call(session, form, values);
                happened = session.host.faults.happened();
                session.host.faults.clear();
                if (answer.failure) seen.insert(*answer.failure);
            }
        }
    }
}

TEST_P(Errors, AreThoseThatAreTold) {
    for (const Variant& variant : all_variants()) {
        SCOPED_TRACE(testing::PrintToString(variant));
        if (const auto failure = failure_of(variant)) seen.insert(*failure);
        provoke_by_arguments(variant);
        provoke_by_host(variant);
    }
    EXPECT_EQ(seen, told()) << form.form().declaration();
}

TARVO_FOR_EACH_FORM(Errors);

}  // namespace
}  // namespace tarvo::test
