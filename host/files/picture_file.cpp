#include "picture_file.h"

#include "about_file.h"
#include "file_source.h"
#include "file_writer.h"
#include "format.h"
#include "picture_image.h"
#include "picture_source.h"
#include "watched_files.h"

namespace tarvo::host {

namespace {

ObjectRef decode(Host& host, ByteSource& file, const ReadOptions& options, FilePixels* pixels = nullptr) {
    if (options.on_block) {
        ReadOptions unwatched = options;
        unwatched.on_block = nullptr;
        WatchedSource watched(file, options.on_block);
        return decode(host, watched, unwatched, pixels);
    }
    PictureBuilder builder(host, options.keep_depth);
    format_of_bytes(file.ahead()).decode(file, options.max_pixels, builder);
    if (pixels) *pixels = builder.file_pixels();
    return builder.finish();
}

FilePixels encode_watched(const PixelSource& image, const Format& format, const WriteOptions& options, ByteSink& file) {
    const EncodeOptions how{.jpeg_quality = options.jpeg_quality};
    if (!options.on_block) return format.encode(image, how, file);
    const WatchedPixels rows(image, options.on_block);
    WatchedSink blocks(file, rows, options.on_block);
    const FilePixels pixels = format.encode(rows, how, blocks);
    blocks.flush();
    return pixels;
}

FilePixels encode(const PictureSource& source, const Format& format, const WriteOptions& options, ByteSink& file) {
    FilePixels pixels = encode_watched(source, format, options, file);
    pixels.alpha = format.keeps_alpha && has_alpha(source.form());
    return pixels;
}

}  // namespace

ObjectRef decode_picture(Host& host, std::span<const std::uint8_t> file, const ReadOptions& options) {
    MemorySource source(file);
    return decode(host, source, options);
}

ObjectRef read_picture_file(Host& host, const std::string& path, const ReadOptions& options, FilePixels* pixels) {
    return about_file(path, [&] {
        FileSource file(path, options.on_wait);
        return decode(host, file, options, pixels);
    });
}

Bytes encode_picture(const Picture& picture, const std::string& name, const WriteOptions& options) {
    MemorySink file;
    encode(PictureSource(picture, options.like), format_of_name(name), options, file);
    file.flush();
    return std::move(file.bytes);
}

WriteReport write_picture_file(const Picture& picture, const std::string& path, const WriteOptions& options) {
    return about_file(path, [&] {
        const Format& format = format_of_name(path);
        const PictureSource source(picture, options.like);
        FileWriter file(path, options.watch);
        const FilePixels pixels = encode(source, format, options, file);
        return WriteReport{
            .pixels = pixels, .mask_left_out = picture.mask() && !format.keeps_alpha, .not_kept = file.commit()};
    });
}

void check_output(const std::string& path, std::string_view own_ending) {
    about_file(path, [&] {
        if (!has_ending(path, own_ending)) format_of_name(path, own_ending);
        FileWriter::check(path);
    });
}

}  // namespace tarvo::host
