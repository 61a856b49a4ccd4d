#include "calls.h"

#include <gtest/gtest.h>

#include <sstream>

#include "error_state.h"
#include "holdings.h"
#include "plugin_entry.h"

namespace tarvo::test {
namespace {

using host::Callable;

std::string text_of(const Value& value) {
    if (const auto* const integer = std::get_if<std::int32_t>(&value)) return std::to_string(*integer);
    if (const auto* const truth = std::get_if<bool>(&value)) return *truth ? "true" : "false";
    if (const auto* const color = std::get_if<Color>(&value)) return "color " + std::to_string(color->rgb);
    if (const auto* const real = std::get_if<double>(&value)) {
        std::ostringstream text;
        text << std::hexfloat << *real;
        return text.str();
    }
    return host::is_nil(value) ? "nil" : host::type_name(value);
}

void append(std::vector<std::uint8_t>& all, std::span<const std::uint8_t> more) {
    all.insert(all.end(), more.begin(), more.end());
}

void append_object(Seen& seen, Session& session, const ObjectRef& object) {
    if (auto* const picture = dynamic_cast<Picture*>(object.get())) {
        seen.text += " " + picture->describe();
        append(seen.bytes, all_bytes(object));
    } else if (is_client(object)) {
        const ObjectRef shown = session.picture_of(object);
        if (shown) append_object(seen, session, shown);
    } else if (const auto* const string = dynamic_cast<host::StringObject*>(object.get())) {
        append(seen.bytes, {reinterpret_cast<const std::uint8_t*>(string->bytes().data()), string->bytes().size()});
    } else if (const auto* const block = dynamic_cast<host::MemoryBlock*>(object.get())) {
        append(seen.bytes, block->bytes);
    } else if (auto* const instance = dynamic_cast<host::Instance*>(object.get())) {
        append(seen.bytes, {static_cast<const std::uint8_t*>(instance->data()), instance->cls().data_size});
    }
}

}  // namespace

const SharedPlugin& linked_plugin() {
    static const SharedPlugin plugin(REALPluginMain);
    return plugin;
}

const std::vector<std::string>& linked_method_names() {
    static const std::vector<std::string> names = names_of(linked_plugin().callables.all());
    return names;
}

void PrintTo(const Seen& seen, std::ostream* out) {
    std::size_t hash = 0;
    for (const std::uint8_t byte : seen.bytes) hash = hash * 31 + byte;
    *out << "code " << seen.code << ", " << seen.text << ", " << seen.bytes.size() << " bytes (" << hash << ")";
}

Seen see(Session& session, const Callable& method, std::vector<Value>& arguments) {
    gTRV_Error = 0;  // not every method clears the code that the thread's last call left
    const Value result = session.invoke_as_given(method, arguments);
    return see_result(session, result, arguments);
}

Seen see_result(Session& session, const Value& result, const std::vector<Value>& arguments) {
    Seen seen;
    seen.code = session.last_error();
    seen.text = text_of(result);
    for (const Value& argument : arguments) seen.text += ", " + text_of(argument);
    append_object(seen, session, object_in(result));
    return seen;
}

std::optional<std::size_t> parameter_named(const Callable& method, std::string_view name) {
    for (std::size_t i = 0; i < method.parameters.size(); ++i)
        if (method.parameters[i].name == name) return i;
    return std::nullopt;
}

void expect_nothing_left(Session& session) {
    drop_refused_clients(session);
    EXPECT_EQ(session.host.accounts(), host::Accounts()) << session.host.describe_live_objects();
    const PlatformCounts counts = PlatformLiveObjects();
    EXPECT_EQ(counts.worlds + counts.contexts + counts.handleLocks + counts.pixelLocks, 0);
}

}  // namespace tarvo::test
