#include "picture_file.h"

#include "about_file.h"
#include "file_source.h"
#include "file_writer.h"
#include "format.h"
#include "picture_image.h"

namespace tarvo::host {

namespace {

ObjectRef decode(Host& host, ByteSource& file, const ReadOptions& options) {
    PictureBuilder builder(host, options.keep_depth);
    format_of_bytes(file.ahead()).decode(file, options.max_pixels, builder);
    return builder.finish();
}

}  // namespace

ObjectRef decode_picture(Host& host, std::span<const std::uint8_t> file, const ReadOptions& options) {
    MemorySource source(file);
    return decode(host, source, options);
}

ObjectRef read_picture_file(Host& host, const std::string& path, const ReadOptions& options) {
    return about_file(path, [&] {
        FileSource file(path, options.on_wait);
        return decode(host, file, options);
    });
}

Bytes encode_picture(const Picture& picture, const std::string& name, const WriteOptions& options) {
    MemorySink file;
    format_of_name(name).encode(PictureSource(picture), {.jpeg_quality = options.jpeg_quality}, file);
    file.flush();
    return std::move(file.bytes);
}

WriteReport write_picture_file(const Picture& picture, const std::string& path, const WriteOptions& options) {
    return about_file(path, [&] {
        const Format& format = format_of_name(path);
        const PictureSource source(picture);
        FileWriter file(path, options.watch);
        format.encode(source, {.jpeg_quality = options.jpeg_quality}, file);
        return WriteReport{.mask_left_out = picture.mask() && !format.keeps_alpha, .not_kept = file.commit()};
    });
}

void check_writable_name(const std::string& path, std::string_view own_ending) {
    if (has_ending(path, own_ending)) return;
    about_file(path, [&] { format_of_name(path, own_ending); });
}

}  // namespace tarvo::host
