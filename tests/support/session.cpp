#include "session.h"

#include <stdexcept>

#include "call_frame.h"
#ifndef TARVO_PLUGIN_PATH
#include "plugin_entry.h"
#endif

namespace tarvo::test {

#ifdef TARVO_PLUGIN_PATH
std::string plugin_path() { return TARVO_PLUGIN_PATH; }
#endif

std::string full_declaration(const host::Callable& method) {
    return (method.owner.empty() ? "" : method.owner + ".") + method.declaration.text;
}

namespace {

void load(host::Host& host, [[maybe_unused]] bool private_copy) {
#ifdef TARVO_PLUGIN_PATH
    const bool accepted = host.load_plugin(plugin_path(), private_copy);
#else
    const bool accepted = host.start_plugin(REALPluginMain);
#endif
    if (!accepted) throw std::runtime_error("the plugin refused the host");
}

}  // namespace

Session::Session(host::HostOptions options, bool private_copy)
    : host(options), entered(host), caller((load(host, private_copy), host)) {}

Session::Session(const SharedPlugin& plugin, host::HostOptions options)
    : host(plugin.registry, options), entered(host), caller(host, plugin.callables) {}

Value Session::invoke_as_given(const host::Callable& method, std::vector<Value>& arguments) {
    host::CallFrame frame;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (method.parameters[i].by_ref)
            frame.pass_by_ref(arguments[i], arguments[i]);
        else
            frame.pass(arguments[i]);
    }
    const Value result = frame.call(method.function, method.declaration.result, host.objects());
    frame.write_back();
    return result;
}

const host::Callable& Session::callable(std::string_view declaration) const {
    const auto& methods = host.registry().methods();
    for (std::size_t i = 0; i < methods.size(); ++i)
        if (methods[i].declaration.starts_with(declaration)) return caller.callables()[i];
    throw std::runtime_error("no method is declared so: " + std::string(declaration));
}

int Session::last_error() { return std::get<std::int32_t>(caller.call("TRV_GetLastError", {})); }

std::string Session::error_message(int code) {
    std::array<Value, 1> arguments = {code};
    const Value text = caller.call("TRV_GetErrorMessage", arguments);
    return std::string(dynamic_cast<host::StringObject&>(*object_in(text).get()).bytes());
}

ObjectRef Session::picture(int width, int height, int depth) {
    return host.new_picture({.width = width, .height = height, .depth = depth});
}

ObjectRef Session::rectangle(int left, int top, int width, int height) {
    const ObjectRef made = host.new_instance("TRV_Rectangle");
    caller.set(made, "left", left);
    caller.set(made, "top", top);
    caller.set(made, "width", width);
    caller.set(made, "height", height);
    return made;
}

ObjectRef Session::client(const ObjectRef& picture) {
    return object_in(caller.convert(picture, {host::TypeKind::object, "TRV_ClientPicture"}));
}

ObjectRef Session::picture_of(const ObjectRef& client) {
    return object_in(caller.convert(client, {host::TypeKind::object, "picture"}));
}

ObjectRef object_in(const Value& value) {
    const auto* const object = std::get_if<ObjectRef>(&value);
    return object ? *object : ObjectRef();
}

Picture* picture_in(const Value& value) { return dynamic_cast<Picture*>(object_in(value).get()); }

}  // namespace tarvo::test
