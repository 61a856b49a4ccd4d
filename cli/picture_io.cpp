#include "picture_io.h"

#include <cstdint>
#include <iostream>
#include <vector>

#include "command_error.h"
#include "file_error.h"
#include "format.h"
#include "interrupts.h"
#include "library_errors.h"
#include "shown_text.h"

namespace tarvo::cli {
namespace {

constexpr std::string_view kStringEnding = ".trv";
constexpr const char* kStandardInput = "/dev/stdin";

// Passes on what the library tells, but for what the pixels of the file are.
detail::Note teller(Listener& listener, std::string& pixels) {
    return [&](tarvo_note kind, const std::string& text) {
        if (kind == TARVO_NOTE_PIXELS)
            pixels = text;
        else
            listener.note(kind, text);
    };
}

void check_format(const std::string& format) {
    try {
        const std::string name = "picture." + format;  // of which only the ending means something
        if (!host::has_ending(name, kStringEnding)) host::format_of_name(name, kStringEnding);
    } catch (const host::FileError&) {
        throw CommandError(ExitStatus::wrong_usage, "--format: there is no format " + host::quoted(format));
    }
}

void write_to_standard_output(const std::vector<std::uint8_t>& file) {
    std::cout.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
}

}  // namespace

PictureFile read_picture(const std::string& path, const FileOptions& options, Listener& listener, bool keep_depth,
                         const std::string& draft_for) {
    PictureFile file;
    ReadOptions how;
    how.keep_depth = keep_depth;
    how.srgb = options.srgb;
    how.draft_for = draft_for;
    how.note = teller(listener, file.pixels);
    options.limits.put_into(how);
    try {
        file.picture = Picture::open(path == kStandardStream ? kStandardInput : path, how);
    } catch (const Error& error) {
        throw command_error(error);
    }
    return file;
}

std::string write_picture(const Picture& picture, const std::string& path, const FileOptions& options,
                          Listener& listener) {
    std::string pixels;
    WatchedPart part;
    WriteOptions how;
    how.jpeg_quality = options.quality;
    how.compression = options.compression;
    how.strip = options.strip;
    how.note = teller(listener, pixels);
    how.yield = [] { return false; };  // being asked is what lets a note that throws keep the file from being written
    how.part_file = [&](tarvo_part_file now, int folder, const char* name) { part.tell(now, folder, name); };
    options.limits.put_memory_into(how);
    try {
        if (path == kStandardStream)
            write_to_standard_output(picture.encode(options.format, how));
        else
            picture.save(path, how);
    } catch (const Error& error) {
        throw command_error(error);
    }
    return pixels;
}

void check_output(const std::string& path, const FileOptions& options) {
    const bool to_stream = path == kStandardStream;
    if (path.empty() && options.format.empty()) return;
    if (to_stream == options.format.empty())
        throw CommandError(ExitStatus::wrong_usage, to_stream ? "-o -: --format tells the format that is to be written"
                                                              : "--format is for -o -: a file's name tells its format");
    if (to_stream) return check_format(options.format);
    try {
        tarvo::check_output(path);
    } catch (const Error& error) {
        check_memory(error);
        throw CommandError(ExitStatus::wrong_usage, error.what());
    }
}

}  // namespace tarvo::cli
