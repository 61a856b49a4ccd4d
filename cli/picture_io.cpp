#include "picture_io.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "about_file.h"
#include "command_error.h"
#include "file_bytes.h"
#include "format.h"
#include "picture_file.h"

namespace tarvo::cli {
namespace {

constexpr std::string_view kStringEnding = ".trv";

bool holds_string(std::string_view path) { return host::has_ending(path, kStringEnding); }

// Calls a method of an object without arguments and returns its result; empty for nil.
host::ObjectRef ask(PluginSession& session, const host::ObjectRef& object, const char* method) {
    const host::Value given = session.caller().call_on(object, method, {});
    session.show_complaints(method);
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
    const host::ObjectRef string =
        session.host().new_string(text_of(host::read_file(path, host::Host::kLongestString)));
    const host::ObjectRef picture = ask(session, string, "TRV_ConvertToPicture");
    if (!picture) throw host::FileError("this is no string that a picture can be made of");
    return picture;
}

std::string write_string(PluginSession& session, const host::ObjectRef& picture, const std::string& path) {
    const host::ObjectRef string = ask(session, picture, "TRV_ConvertToString");
    if (!string) throw CommandError(ExitStatus::operation_failed, "TRV_ConvertToString gave no string");
    host::replace_file(path, bytes_of(dynamic_cast<const host::StringObject&>(*string.get()).bytes()));
    if (ask(session, string, "TRV_ConvertToPicture")) return {};
    return path + " holds a string that TRV_ConvertToPicture makes no picture of";
}

std::string write_file(const host::Picture& picture, const std::string& path) {
    if (!host::write_picture_file(picture, path).mask_left_out) return {};
    return path + " has no transparency: the mask is left out";
}

}  // namespace

host::ObjectRef read_picture(PluginSession& session, const std::string& path, bool keep_depth) {
    if (holds_string(path)) return host::about_file(path, [&] { return read_string(session, path); });
    return host::read_picture_file(session.host(), path, {.keep_depth = keep_depth});
}

std::string write_picture(PluginSession& session, const host::ObjectRef& picture, const std::string& path) {
    if (holds_string(path)) return host::about_file(path, [&] { return write_string(session, picture, path); });
    return write_file(dynamic_cast<const host::Picture&>(*picture.get()), path);
}

void check_output_name(const std::string& path) { host::check_writable_name(path, kStringEnding); }

}  // namespace tarvo::cli
