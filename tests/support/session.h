#pragma once

// A host with the built plugin in it, and calls as a program makes them.

#include <array>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "caller.h"
#include "host.h"

namespace tarvo::test {

using host::Color;
using host::Nil;
using host::ObjectRef;
using host::Picture;
using host::Value;

// The shared library under test, where it is one.
std::string plugin_path();
// A method's declaration, a member's class before it: "picture.TRV_Difference(compare as picture) as picture".
std::string full_declaration(const host::Callable& method);

template <class T>
Value value(T&& argument) {
    using Plain = std::decay_t<T>;
    if constexpr (std::is_same_v<Plain, std::nullptr_t>)
        return Nil{};
    else if constexpr (std::is_same_v<Plain, ObjectRef>)
        return argument ? Value(argument) : Value(Nil{});
    else
        return Value(std::forward<T>(argument));
}

// What a plugin registers, read once. Hosts for calls share it.
struct SharedPlugin {
    explicit SharedPlugin(REALpluginMain entry) : registry(host::Host::registry_of(entry)), callables(registry) {}

    const host::Registry registry;
    const host::Callables callables;
};

class Session {
public:
    // Loads the plugin; `private_copy` when an earlier host's cached entry points must not be there.
    explicit Session(host::HostOptions options = {}, bool private_copy = false);
    // Has a host for calls, entered.
    explicit Session(const SharedPlugin& plugin, host::HostOptions options = {});

    // `self.name(arguments...)`.
    template <class... Arguments>
    Value call(const ObjectRef& self, std::string_view name, Arguments&&... arguments) {
        std::array<Value, sizeof...(Arguments)> values = {value(std::forward<Arguments>(arguments))...};
        return caller.call_on(value(self), name, values);
    }
    // The callable whose declaration begins so, whatever the arguments: an `extends` method's object comes first.
    template <class... Arguments>
    Value invoke(std::string_view declaration, Arguments&&... arguments) {
        std::array<Value, sizeof...(Arguments)> values = {value(std::forward<Arguments>(arguments))...};
        return caller.invoke(callable(declaration), values);
    }
    // Passes the arguments as they are; the host's own caller would look at them first. ByRef ones get what came back.
    Value invoke_as_given(const host::Callable& method, std::vector<Value>& arguments);
    const host::Callable& callable(std::string_view declaration) const;

    int last_error();
    std::string error_message(int code);

    ObjectRef picture(int width, int height, int depth = 32);
    ObjectRef rectangle(int left, int top, int width, int height);
    // A client picture converted from the picture.
    ObjectRef client(const ObjectRef& picture);
    // What a client picture converts to.
    ObjectRef picture_of(const ObjectRef& client);

    host::Host host;
    host::Host::Entered entered;
    host::Caller caller;
};

// The picture of a result value; null for nil or anything else.
Picture* picture_in(const Value& value);
ObjectRef object_in(const Value& value);
inline Picture& pixels(const ObjectRef& picture) { return dynamic_cast<Picture&>(*picture.get()); }

}  // namespace tarvo::test
