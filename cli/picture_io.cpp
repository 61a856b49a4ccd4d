#include "picture_io.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "command_error.h"
#include "file_bytes.h"
#include "names.h"

namespace tarvo::cli {
namespace {

bool holds_string(std::string_view path) {
    constexpr std::string_view kEnding = ".trv";
    return path.size() > kEnding.size() && host::same_name(path.substr(path.size() - kEnding.size()), kEnding);
}

// Runs `work`; the message of its FileError gets the file's name.
template <class Work>
auto about_file(const std::string& path, Work work) {
    try {
        return work();
    } catch (const host::FileError& error) {
        throw host::FileError(path + ": " + error.what());
    }
}

// What the method of an object without further arguments gives; empty for nil.
host::ObjectRef ask(PluginSession& session, const host::ObjectRef& object, const char* method) {
    const host::Value given = session.caller().call_on(object, method, {});
    const auto* result = std::get_if<host::ObjectRef>(&given);
    return result ? *result : host::ObjectRef();
}

std::string_view text_of(const std::vector<std::uint8_t>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::span<const std::uint8_t> bytes_of(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

host::ObjectRef read_string(PluginSession& session, const std::string& path) {
    const host::ObjectRef string = session.host().new_string(text_of(host::read_file(path)));
    const host::ObjectRef picture = ask(session, string, "TRV_ConvertToPicture");
    if (!picture) throw host::FileError("this is no string that a picture can be made of");
    return picture;
}

void write_string(PluginSession& session, const host::ObjectRef& picture, const std::string& path) {
    const host::ObjectRef string = ask(session, picture, "TRV_ConvertToString");
    if (!string) throw CommandError(ExitStatus::operation_failed, "TRV_ConvertToString gave no string");
    host::replace_file(path, bytes_of(dynamic_cast<const host::StringObject&>(*string.get()).bytes()));
}

}  // namespace

host::ObjectRef read_picture(PluginSession& session, const std::string& path, bool keep_depth) {
    if (holds_string(path)) return about_file(path, [&] { return read_string(session, path); });
    return host::read_picture_file(session.host(), path, {.keep_depth = keep_depth});
}

host::WriteReport write_picture(PluginSession& session, const host::ObjectRef& picture, const std::string& path) {
    if (!holds_string(path))
        return host::write_picture_file(dynamic_cast<const host::Picture&>(*picture.get()), path);
    about_file(path, [&] { write_string(session, picture, path); });
    return {};
}

void check_output_name(const std::string& path) {
    if (!holds_string(path)) host::check_writable_name(path);
}

}  // namespace tarvo::cli
