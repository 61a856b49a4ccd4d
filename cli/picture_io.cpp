#include "picture_io.h"

#include "command_error.h"
#include "interrupts.h"
#include "library_errors.h"

namespace tarvo::cli {
namespace {

// Passes on what the library tells, but for what the pixels of the file are.
detail::Note teller(Listener& listener, std::string& pixels) {
    return [&](tarvo_note kind, const std::string& text) {
        if (kind == TARVO_NOTE_PIXELS)
            pixels = text;
        else
            listener.note(kind, text);
    };
}

}  // namespace

PictureFile read_picture(const std::string& path, const Limits& limits, Listener& listener, bool keep_depth) {
    PictureFile file;
    ReadOptions options;
    options.keep_depth = keep_depth;
    options.note = teller(listener, file.pixels);
    limits.put_into(options);
    try {
        file.picture = Picture::open(path, options);
    } catch (const Error& error) {
        throw command_error(error);
    }
    return file;
}

std::string write_picture(const Picture& picture, const std::string& path, const Limits& limits, Listener& listener) {
    std::string pixels;
    WatchedPart part;
    WriteOptions options;
    options.note = teller(listener, pixels);
    options.part_file = [&](tarvo_part_file now, int folder, const char* name) { part.tell(now, folder, name); };
    limits.put_memory_into(options);
    try {
        picture.save(path, options);
    } catch (const Error& error) {
        throw command_error(error);
    }
    return pixels;
}

void check_output(const std::string& path) {
    try {
        tarvo::check_output(path);
    } catch (const Error& error) {
        throw CommandError(ExitStatus::wrong_usage, error.what());
    }
}

}  // namespace tarvo::cli
