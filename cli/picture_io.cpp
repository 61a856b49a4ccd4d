#include "picture_io.h"

#include <cstdint>
#include <span>
#include <string_view>

#include "about_file.h"
#include "command_error.h"
#include "file_source.h"
#include "file_writer.h"
#include "format.h"
#include "interrupts.h"
#include "messages.h"
#include "picture_file.h"
#include "value_text.h"

namespace tarvo::cli {
namespace {

constexpr std::string_view kStringEnding = ".trv";

bool holds_string(std::string_view path) { return host::has_ending(path, kStringEnding); }

std::function<void()> note_of_waiting(const std::string& path) {
    return [path] { note(path + " is a pipe that nobody writes to: waiting"); };
}

// Calls a method of an object without arguments and returns its result; empty for nil.
host::ObjectRef ask(PluginSession& session, const host::ObjectRef& object, const char* method) {
    const host::Value given = session.caller().call_on(object, method, {});
    session.show_complaints(method);
    const auto* result = std::get_if<host::ObjectRef>(&given);
    return result ? *result : host::ObjectRef();
}

std::span<const std::uint8_t> bytes_of(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// --- strings in files ------------------------------------------------------------------------------------------------

// A string begins with the sizes of its picture, which say how long it is.
constexpr std::size_t kHeaderBytes = 11;

std::uint64_t number_at(std::span<const std::uint8_t> header, std::size_t place, std::size_t bytes) {
    std::uint64_t number = 0;
    for (const std::uint8_t byte : header.subspan(place, bytes)) number = number << 8 | byte;
    return number;
}

bool has_mask(std::span<const std::uint8_t> header) { return header[10] != 0; }

// Returns what a string's pixels are, in words.
std::string pixels_in(std::span<const std::uint8_t> header) {
    if (header.size() < kHeaderBytes) return "string";
    return "string, " + depth_text(static_cast<int>(number_at(header, 8, 2))) + (has_mask(header) ? ", mask" : "");
}

host::FileError no_string() { return host::FileError("this is no string that a picture can be made of"); }

// Reads no more of a file than a picture of its sizes has: the length that the string must have, its header read.
std::size_t length_of_string(host::ByteSource& file, host::Bytes& header, const host::Limits& limits) {
    if (!file.read(header)) throw no_string();
    const std::uint64_t width = number_at(header, 0, 4), height = number_at(header, 4, 4),
                        planes = has_mask(header) ? 4 : 3;
    constexpr std::uint64_t kMostPixels = host::Host::kLongestString;
    if (width * height > kMostPixels || width > kMostPixels || height > kMostPixels) throw no_string();
    const std::uint64_t behind_header = width * height * planes;
    if (behind_header == 0 || file.left().value_or(behind_header) != behind_header) throw no_string();
    host::check_size(width, height, limits.max_pixels);
    return kHeaderBytes + behind_header;
}

host::ObjectRef string_in(PluginSession& session, const std::string& path, host::Bytes& header) {
    host::FileSource file(path, note_of_waiting(path));
    const std::size_t length = length_of_string(file, header, session.limits());
    return session.host().new_string(length, [&](std::span<std::uint8_t> room) {
        std::ranges::copy(header, room.begin());
        if (!file.read(room.subspan(kHeaderBytes)) || !file.ahead().empty()) throw no_string();
    });
}

PictureFile read_string(PluginSession& session, const std::string& path) {
    session.host().clear_refusal();
    host::Bytes header(kHeaderBytes);
    const host::ObjectRef picture = ask(session, string_in(session, path, header), "TRV_ConvertToPicture");
    if (picture) return {picture, pixels_in(header), {}};
    if (const auto& refusal = session.host().refusal()) throw host::Refusal(*refusal);
    throw no_string();
}

// Tried with one pixel: what the plugin reads is a question of depth and mask alone.
bool can_be_read_again(PluginSession& session, const host::Picture& picture) {
    const host::ObjectRef pixel = session.host().new_picture({.width = 1, .height = 1, .depth = picture.depth()});
    if (picture.mask())
        dynamic_cast<host::Picture&>(*pixel.get()).set_mask(session.host().new_picture({.width = 1, .height = 1}));
    const host::ObjectRef string = ask(session, pixel, "TRV_ConvertToString");
    return string && ask(session, string, "TRV_ConvertToPicture");
}

WrittenFile write_string(PluginSession& session, const host::ObjectRef& picture, const std::string& path) {
    session.host().clear_refusal();
    const host::ObjectRef string = ask(session, picture, "TRV_ConvertToString");
    if (const auto& refusal = session.host().refusal(); !string && refusal) throw host::Refusal(*refusal);
    if (!string) throw CommandError(ExitStatus::operation_failed, "TRV_ConvertToString gave no string");
    host::FileWriter file(path, &part_file_watch());
    const auto bytes = bytes_of(dynamic_cast<const host::StringObject&>(*string.get()).bytes());
    file.write(bytes);
    WrittenFile written{pixels_in(bytes), file.commit()};
    if (!can_be_read_again(session, dynamic_cast<const host::Picture&>(*picture.get())))
        written.lost.emplace_back("holds a string that TRV_ConvertToPicture makes no picture of");
    return written;
}

// --- files of pictures -----------------------------------------------------------------------------------------------

WrittenFile write_file(const host::ObjectRef& picture, const std::string& path,
                       const std::optional<host::FilePixels>& like) {
    host::WriteReport report = host::write_picture_file(dynamic_cast<const host::Picture&>(*picture.get()), path,
                                                        {.watch = &part_file_watch(), .like = like});
    if (report.mask_left_out) report.not_kept.emplace_back("has no transparency: the mask is left out");
    return {host::in_words(report.pixels), std::move(report.not_kept)};
}

}  // namespace

PictureFile read_picture(PluginSession& session, const std::string& path, bool keep_depth) {
    if (holds_string(path)) return host::about_file(path, [&] { return read_string(session, path); });
    const host::ReadOptions options = {
        .keep_depth = keep_depth, .max_pixels = session.limits().max_pixels, .on_wait = note_of_waiting(path)};
    host::FilePixels pixels;
    const host::ObjectRef picture = host::read_picture_file(session.host(), path, options, &pixels);
    return {picture, host::in_words(pixels), pixels};
}

WrittenFile write_picture(PluginSession& session, const host::ObjectRef& picture, const std::string& path,
                          const std::optional<host::FilePixels>& like) {
    WrittenFile written = holds_string(path)
                              ? host::about_file(path, [&] { return write_string(session, picture, path); })
                              : write_file(picture, path, like);
    for (std::string& line : written.lost) line.insert(0, path + " ");
    return written;
}

void check_output(const std::string& path) {
    try {
        host::check_output(path, kStringEnding);
    } catch (const host::FileError& error) {
        throw CommandError(ExitStatus::wrong_usage, error.what());
    }
}

}  // namespace tarvo::cli
