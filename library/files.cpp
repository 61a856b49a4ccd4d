// Pictures from and to files and encoded bytes.

#include <cstdlib>
#include <cstring>
#include <string>

#include "engine.h"
#include "failure.h"
#include "format.h"
#include "kept_picture.h"
#include "options.h"
#include "picture_file.h"
#include "shown_text.h"

namespace tarvo::library {
namespace {

using host::ObjectRef;

// Reads with the caller's bounds and stop. `read(host, options)` returns the picture.
template <class Read>
tarvo_picture* read_with(const tarvo_read_options* given, Read read) {
    const auto options = given_options(given);
    const host::Limits limits = limits_of(options.max_pixels, options.max_memory);
    CallHost call(limits);
    call.stop_by(options.yield, options.context);
    const ObjectRef picture = read(call.host(), host::ReadOptions{.keep_depth = options.keep_depth != 0,
                                                                  .max_pixels = limits.max_pixels,
                                                                  .on_block = call.host().on_yield});
    return new_picture(dynamic_cast<const host::Picture&>(*picture.get()));
}

// Writes with the caller's options. `write(picture, options)` takes the host's picture.
template <class Write>
void write_with(const tarvo_picture& picture, const tarvo_write_options* given, Write write) {
    const auto options = given_options(given);
    if (options.jpeg_quality < 0 || options.jpeg_quality > 100)
        throw wrong_use("jpeg_quality is " + std::to_string(options.jpeg_quality) + ", allowed is 1 to 100");
    CallHost call({});
    call.stop_by(options.yield, options.context);
    const ObjectRef written = call.host().new_picture(picture.value);
    host::WriteOptions how{.on_block = call.host().on_yield};
    if (options.jpeg_quality != 0) how.jpeg_quality = options.jpeg_quality;
    write(dynamic_cast<const host::Picture&>(*written.get()), how);
}

// Returns the name of a file with an ending that tells the format. Throws Failure.
std::string name_of_format(const char* format) {
    const std::string name = (*format == '.' ? "picture" : "picture.") + std::string(format);
    try {
        host::format_of_name(name);
    } catch (const host::FileError&) {
        throw wrong_use("there is no format " + host::quoted(format) + " to write");
    }
    return name;
}

}  // namespace
}  // namespace tarvo::library

using namespace tarvo;
using namespace tarvo::library;

tarvo_status tarvo_picture_open(const char* path, const tarvo_read_options* options, tarvo_picture** picture,
                                tarvo_error** error) {
    if (picture) *picture = nullptr;
    return guarded(error, [&] {
        require(path, "path");
        require(picture, "picture");
        *picture = read_with(options, [&](host::Host& host, const host::ReadOptions& how) {
            return host::read_picture_file(host, path, how);
        });
    });
}

tarvo_status tarvo_picture_decode(const void* bytes, size_t length, const tarvo_read_options* options,
                                  tarvo_picture** picture, tarvo_error** error) {
    if (picture) *picture = nullptr;
    return guarded(error, [&] {
        if (length != 0) require(bytes, "bytes");
        require(picture, "picture");
        *picture = read_with(options, [&](host::Host& host, const host::ReadOptions& how) {
            return host::decode_picture(host, {static_cast<const std::uint8_t*>(bytes), length}, how);
        });
    });
}

tarvo_status tarvo_picture_save(const tarvo_picture* picture, const char* path, const tarvo_write_options* options,
                                tarvo_error** error) {
    return guarded(error, [&] {
        require(picture, "picture");
        require(path, "path");
        write_with(*picture, options, [&](const host::Picture& written, const host::WriteOptions& how) {
            host::write_picture_file(written, path, how);
        });
    });
}

tarvo_status tarvo_picture_encode(const tarvo_picture* picture, const char* format, const tarvo_write_options* options,
                                  uint8_t** bytes, size_t* length, tarvo_error** error) {
    if (bytes) *bytes = nullptr;
    if (length) *length = 0;
    return guarded(error, [&] {
        require(picture, "picture");
        require(format, "format");
        require(bytes, "bytes");
        require(length, "length");
        const std::string name = name_of_format(format);
        write_with(*picture, options, [&](const host::Picture& written, const host::WriteOptions& how) {
            const host::Bytes file = host::encode_picture(written, name, how);
            auto* const copy = static_cast<std::uint8_t*>(std::malloc(file.size()));
            if (!copy) throw std::bad_alloc();
            std::memcpy(copy, file.data(), file.size());
            *bytes = copy;
            *length = file.size();
        });
    });
}
