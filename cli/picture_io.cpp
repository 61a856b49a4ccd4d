#include "picture_io.h"

#include <string_view>

#include "about_file.h"
#include "command_error.h"
#include "format.h"
#include "interrupts.h"
#include "messages.h"
#include "picture_file.h"
#include "string_file.h"

namespace tarvo::cli {
namespace {

constexpr std::string_view kStringEnding = ".trv";

bool holds_string(std::string_view path) { return host::has_ending(path, kStringEnding); }

std::function<void()> note_of_waiting(const std::string& path) {
    return [path] { note(path + " is a pipe that nobody writes to: waiting"); };
}

WrittenFile write_file(const host::ObjectRef& picture, const std::string& path,
                       const std::optional<host::Carried>& like) {
    host::WriteReport report =
        host::write_picture_file(dynamic_cast<const host::Picture&>(*picture.get()), path,
                                 {.watch = &part_file_watch(), .carried = like ? &*like : nullptr});
    for (const host::Loss& loss : report.losses) report.not_kept.push_back(loss.words);
    if (report.mask_left_out) report.not_kept.emplace_back("has no transparency: the mask is left out");
    return {host::in_words(report.pixels), std::move(report.not_kept)};
}

}  // namespace

PictureFile read_picture(PluginSession& session, const std::string& path, bool keep_depth) {
    if (holds_string(path))
        return host::about_file(path, [&] { return read_string_file(session, path, note_of_waiting(path)); });
    const host::ReadOptions options = {
        .keep_depth = keep_depth, .max_pixels = session.limits().max_pixels, .on_wait = note_of_waiting(path)};
    host::Carried carried;
    const host::ObjectRef picture = host::read_picture_file(session.host(), path, options, &carried);
    for (const host::Loss& loss : carried.losses) note(path + " " + loss.words);
    return {picture, host::in_words(carried.pixels), carried};
}

WrittenFile write_picture(PluginSession& session, const host::ObjectRef& picture, const std::string& path,
                          const std::optional<host::Carried>& like) {
    WrittenFile written = holds_string(path)
                              ? host::about_file(path, [&] { return write_string_file(session, picture, path); })
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
