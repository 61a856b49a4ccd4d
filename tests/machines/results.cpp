#include "results.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "calls.h"
#include "error_state.h"

namespace tarvo::test {
namespace {

using host::Callable;

constexpr std::uint32_t kSeeds = 4;

const std::vector<Variant>& variants() {
    static const std::vector<Variant> all = {
        {.name = "32 bits"},
        {.name = "large", .size = {70, 33}},
        {.name = "32 bits, mask", .shape = {.mask_depth = 32}, .as_picture = true},
        {.name = "32 bits, 8-bit mask, left out", .shape = {.mask_depth = 8}, .left_out = true},
        {.name = "24 bits, mask", .shape = {.depth = 24, .mask_depth = 8}},
        {.name = "16 bits", .shape = {.depth = 16}},
        {.name = "8 bits, mask", .shape = {.depth = 8, .mask_depth = 32}, .as_picture = true},
        {.name = "1 bit", .shape = {.depth = 1}},
        {.name = "own memory", .shape = {.mask_depth = 8}, .store = ClientStore::own_memory},
    };
    return all;
}

class Checksum {
public:
    void add(std::string_view text) {
        for (const char each : text) add_byte(static_cast<std::uint8_t>(each));
        add_byte('\n');
    }
    void add(const Seen& seen) {
        add(std::to_string(seen.code));
        add(seen.text);
        for (const std::uint8_t byte : seen.bytes) add_byte(byte);
    }
    std::string text() const {
        std::array<char, 17> digits = {};
        std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash_));
        return digits.data();
    }

private:
    void add_byte(std::uint8_t byte) { hash_ = (hash_ ^ byte) * 0x100000001B3; }

    std::uint64_t hash_ = 0xCBF29CE484222325;
};

std::string text_of(double number) {
    std::ostringstream text;
    text << std::hexfloat << number;
    return text.str();
}

// An instance as programs see it: what it has in memory depends on the machine.
std::string shown(Session& session, const ObjectRef& object) {
    const auto* const instance = dynamic_cast<const host::Instance*>(object.get());
    if (!instance) return "";
    std::string text = instance->cls().name;
    for (const host::RegisteredProperty& property : instance->cls().properties) {
        const Value value = session.caller.get(object, property.name);
        const auto* const number = std::get_if<std::int32_t>(&value);
        text += " " + property.name + " " + (number ? std::to_string(*number) : host::type_name(value));
    }
    if (instance->cls().name != "TRV_ColorMatrix") return text;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            text += " " + text_of(std::get<double>(session.call(object, "Value", row, column)));
    return text;
}

// Adds what comes of the method called, or assigned to.
void add_outcome(Checksum& sum, Session& session, const Callable& method, std::vector<Value>& arguments, bool assigns) {
    gTRV_Error = 0;
    Value result;
    if (assigns) {
        std::vector<Value> places(arguments.begin() + 1, arguments.end());
        const Value assigned = method.declaration.result->kind == host::TypeKind::real ? Value(0.75) : Value(3);
        session.caller.assign(arguments.front(), method.declaration.name, places, assigned);
    } else {
        result = session.invoke_as_given(method, arguments);
    }
    const ObjectRef object = object_in(result);
    const bool in_words = dynamic_cast<const host::Instance*>(object.get()) && !is_client(object);
    sum.add(see_result(session, in_words ? Value() : result, arguments));
    if (in_words) sum.add(shown(session, object));
    if (!arguments.empty()) sum.add(shown(session, object_in(arguments.front())));
}

std::string result_of(const Callable& method) {
    Checksum sum;
    for (const Variant& variant : variants())
        for (std::uint32_t seed = 0; seed < kSeeds; ++seed)
            for (const bool assigns : {false, true}) {
                if (assigns && !method.assignable()) continue;
                Session session(linked_plugin());
                Random random(seed);
                std::vector<Value> arguments = good_arguments(session, random, method, variant);
                add_outcome(sum, session, method, arguments, assigns);
                sum.add(std::to_string(session.host.complaints().size()));  // with addresses
            }
    return sum.text();
}

// Every property as a new instance has it, and after it was set.
std::string result_of(const host::RegisteredClass& cls) {
    Checksum sum;
    Session session(linked_plugin());
    const ObjectRef instance = session.host.new_instance(cls);
    sum.add(shown(session, instance));
    for (const host::RegisteredProperty& property : cls.properties) {
        if (!property.setter || property.type != "integer") continue;
        session.caller.set(instance, property.name, 7);
        sum.add(shown(session, instance));
    }
    return sum.text();
}

}  // namespace

Results results_of_all_calls() {
    Results all;
    for (const Callable& method : linked_plugin().callables.all()) all[full_declaration(method)] = result_of(method);
    for (const host::RegisteredClass& cls : linked_plugin().registry.classes()) all[cls.name] = result_of(cls);
    return all;
}

Results read_results() {
    std::ifstream file(TARVO_RESULTS);
    Results all;
    std::string sum, name;
    while (file >> sum && file.ignore(2) && std::getline(file, name)) all[name] = sum;
    return all;
}

void write_results(const Results& results) {
    std::ofstream file(TARVO_RESULTS);
    for (const auto& [name, sum] : results) file << sum << "  " << name << "\n";
    if (!file.flush()) throw std::runtime_error("cannot write " TARVO_RESULTS);
}

}  // namespace tarvo::test
