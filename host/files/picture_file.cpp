#include "picture_file.h"

#include "about_file.h"
#include "file_bytes.h"
#include "format.h"
#include "picture_image.h"

namespace tarvo::host {

namespace {

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

void check_writable_name(const std::string& path, std::string_view own_ending) {
    if (has_ending(path, own_ending)) return;
    about_file(path, [&] { format_of_name(path, own_ending); });
}

}  // namespace tarvo::host
