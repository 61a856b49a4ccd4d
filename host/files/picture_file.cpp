#include "picture_file.h"

#include <algorithm>
#include <new>

#include "file_bytes.h"
#include "format.h"
#include "picture_image.h"

namespace tarvo::host {

namespace {

// Names may hold line breaks; messages are one line.
std::string one_line(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
    return text;
}

// Runs `work`; its errors become FileErrors that name the file.
template <class Work>
auto about_file(const std::string& path, Work work) {
    const auto named = [&](const std::string& reason) { return FileError(one_line(path + ": " + reason)); };
    try {
        return work();
    } catch (const FileError& error) {
        throw named(error.what());
    } catch (const HostError& error) {
        throw named(error.what());
    } catch (const std::bad_alloc&) {
        throw named("not enough memory");
    }
}

Bytes encode(const Picture& picture, const Format& format, const WriteOptions& options) {
    return format.encode(image_of(picture), {.jpeg_quality = options.jpeg_quality});
}

}  // namespace

ObjectRef decode_picture(Host& host, std::span<const std::uint8_t> file, const ReadOptions& options) {
    const Image image = format_of_bytes(file).decode(file, {.max_pixels = options.max_pixels});
    return picture_of(host, image, options.keep_depth);
}

ObjectRef read_picture_file(Host& host, const std::string& path, const ReadOptions& options) {
    return about_file(path, [&] { return decode_picture(host, read_file(path), options); });
}

std::vector<std::uint8_t> encode_picture(const Picture& picture, const std::string& name, const WriteOptions& options) {
    return encode(picture, format_of_name(name), options);
}

WriteReport write_picture_file(const Picture& picture, const std::string& path, const WriteOptions& options) {
    return about_file(path, [&] {
        const Format& format = format_of_name(path);
        replace_file(path, encode(picture, format, options));
        return WriteReport{.mask_left_out = picture.mask() && !format.keeps_alpha};
    });
}

void check_writable_name(const std::string& path) {
    about_file(path, [&] { format_of_name(path); });
}

}  // namespace tarvo::host
