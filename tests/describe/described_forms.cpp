#include "described_forms.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "names.h"

namespace tarvo::test {

using describe::Bound;
using host::Parameter;
using host::TypeKind;

std::vector<Variant> all_variants() {
    std::vector<Variant> all;
    for (const bool masked : {false, true})
        for (const bool own_memory : {false, true})
            for (const bool as_picture : {false, true})
                all.push_back({.name = std::string(masked ? "masked" : "no masks") +
                                       (own_memory ? ", own memory" : "") + (as_picture ? ", as picture" : ""),
                               .shape = {.mask_depth = masked ? 32 : 0},
                               .store = own_memory ? ClientStore::own_memory : ClientStore::picture,
                               .as_picture = as_picture});
    all.push_back({.name = "defaults", .left_out = true});
    return all;
}

const reference::Argument* DescribedForm::argument(const Parameter& parameter) const {
    for (const reference::Argument& each : operation.arguments)
        if (each.about->name == parameter.name && has(each.forms)) return &each;
    return nullptr;
}

bool DescribedForm::has(const std::vector<std::size_t>& forms) const {
    return std::ranges::find(forms, index) != forms.end();
}

std::vector<DescribedForm> all_forms(const reference::Reference& reference) {
    std::vector<DescribedForm> all;
    const auto add = [&](const reference::Operation& operation) {
        for (std::size_t i = 0; i < operation.forms.size(); ++i) all.push_back({operation, i});
    };
    for (const reference::Operation& each : reference.operations()) add(each);
    for (const reference::Class& cls : reference.classes())
        for (const reference::Operation& each : cls.methods) add(each);
    return all;
}

const std::vector<std::string>& form_names() {
    static const std::vector<std::string> names = [] {
        Session session;
        const reference::Reference reference(session.caller);
        std::vector<std::string> all;
        for (const DescribedForm& each : all_forms(reference)) {
            const std::string& owner = each.callable().owner;
            all.push_back(owner + (owner.empty() ? "" : "_") + std::string(each.operation.about->name) + "_" +
                          std::to_string(each.index));
        }
        return all;
    }();
    return names;
}

// --- ranges ---------------------------------------------------------------------------------------------------------

std::vector<Range> ranges_of(const DescribedForm& form, const std::vector<Value>& arguments) {
    std::vector<Range> ranges;
    const auto add = [&](std::size_t i, const Bound& bound, int outward) {
        if (!bound.given()) return;
        const Parameter& parameter = form.callable().parameters[i];
        const double end = value_of(bound, form.callable(), arguments);
        if (bound.exclusive())
            ranges.push_back({i, end, next_number(parameter, end, -outward)});
        else
            ranges.push_back({i, next_number(parameter, end, outward), end});
    };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const reference::Argument* const argument = form.argument(form.callable().parameters[i]);
        if (!argument || argument->by_ref) continue;
        add(i, argument->about->minimum, -1);
        add(i, argument->about->maximum, 1);
    }
    return ranges;
}

// --- calls ----------------------------------------------------------------------------------------------------------

void PrintTo(const Failure& failure, std::ostream* out) {
    *out << failure.code << (failure.gives == describe::Gives::nothing ? " with nothing" : " with a result");
}

void clear_code(Session& session) { session.invoke("TRV_RowBytes(", session.picture(1, 1)); }

Answer call(Session& session, const DescribedForm& form, std::vector<Value>& arguments) {
    Answer answer = {session.caller.invoke(form.callable(), arguments), {}};
    const int code = session.last_error();
    const auto& result = form.callable().declaration.result;
    const bool object = result && result->is_object();
    if (object && host::is_nil(answer.result))
        answer.failure = {code, describe::Gives::nothing};
    else if (code != 0)
        answer.failure = {code, object ? describe::Gives::result : describe::Gives::nothing};
    return answer;
}

}  // namespace tarvo::test
