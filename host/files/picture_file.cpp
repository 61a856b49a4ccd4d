#include "picture_file.h"

#include "about_file.h"
#include "file_source.h"
#include "file_writer.h"
#include "format.h"
#include "picture_image.h"
#include "picture_source.h"
#ifdef TARVO_COLOR_PROFILES
#include "srgb_pixels.h"
#endif
#include "watched_files.h"

namespace tarvo::host {

namespace {

void decode_as_srgb([[maybe_unused]] const Format& format, [[maybe_unused]] ByteSource& file,
                    [[maybe_unused]] const ReadOptions& options, [[maybe_unused]] PixelTarget& target) {
#ifdef TARVO_COLOR_PROFILES
    SrgbPixels converted(target);
    format.decode(file, options.max_pixels, converted);
#else
    throw FileError("this build has no library for color profiles");
#endif
}

ObjectRef decode(Host& host, ByteSource& file, const ReadOptions& options, Carried* carried) {
    if (options.on_block) {
        ReadOptions unwatched = options;
        unwatched.on_block = nullptr;
        WatchedSource watched(file, options.on_block);
        return decode(host, watched, unwatched, carried);
    }
    PictureBuilder builder(host, options.keep_depth, options.draft);
    const Format& format = format_of_bytes(file.ahead());
    if (options.srgb)
        decode_as_srgb(format, file, options, builder);
    else
        format.decode(file, options.max_pixels, builder);
    ObjectRef picture = builder.finish();
    if (carried) *carried = builder.carried();
    return picture;
}

// Returns what of the carried a file of that format has again.
EncodeOptions encoding(const ImageForm& form, const Format& format, const WriteOptions& options, Losses& losses) {
    EncodeOptions how{.quality = options.quality, .compression = options.compression};
    if (options.carried && options.carried->jpeg) how.jpeg = *options.carried->jpeg;
    if (options.quality) how.jpeg.quality = *options.quality;
    if (!options.carried) return how;
    how.metadata =
        fitting(without(options.carried->metadata, options.strip), format.room, format.stores_grey(form), losses);
    make_true(how.metadata, form.width, form.height);
    return how;
}

FilePixels encode_watched(const PixelSource& image, const Format& format, const EncodeOptions& how,
                          const WriteOptions& options, ByteSink& file) {
    if (!options.on_block) return format.encode(image, how, file);
    const WatchedPixels rows(image, options.on_block);
    WatchedSink blocks(file, rows, options.on_block);
    const FilePixels pixels = format.encode(rows, how, blocks);
    blocks.flush();
    return pixels;
}

PictureSource source_of(const Picture& picture, const WriteOptions& options) {
    return PictureSource(picture, options.carried ? &options.carried->pixels : nullptr);
}

WriteReport encode(const PictureSource& source, const Format& format, const WriteOptions& options, ByteSink& file) {
    WriteReport report;
    report.mask_left_out = source.has_mask() && !format.keeps_alpha;
    const EncodeOptions how = encoding(source.form(), format, options, report.losses);
    report.pixels = encode_watched(source, format, how, options, file);
    report.pixels.alpha = format.keeps_alpha && has_alpha(source.form());
    return report;
}

}  // namespace

ObjectRef decode_picture(Host& host, std::span<const std::uint8_t> file, const ReadOptions& options, Carried* carried) {
    MemorySource source(file);
    return decode(host, source, options, carried);
}

ObjectRef read_picture_file(Host& host, const std::string& path, const ReadOptions& options, Carried* carried) {
    return about_file(path, [&] {
        FileSource file(path, options.on_wait);
        return decode(host, file, options, carried);
    });
}

Bytes encode_picture(const Picture& picture, const std::string& name, const WriteOptions& options,
                     WriteReport* report) {
    MemorySink file;
    const WriteReport told = encode(source_of(picture, options), format_of_name(name), options, file);
    if (report) *report = told;
    file.flush();
    return std::move(file.bytes);
}

WriteReport write_picture_file(const Picture& picture, const std::string& path, const WriteOptions& options) {
    return about_file(path, [&] {
        const Format& format = format_of_name(path);
        const PictureSource source = source_of(picture, options);
        FileWriter file(path, options.watch);
        WriteReport report = encode(source, format, options, file);
        if (options.on_report) options.on_report(report);
        report.not_kept = file.commit();
        return report;
    });
}

void check_output(const std::string& path, std::string_view own_ending) {
    about_file(path, [&] {
        if (!has_ending(path, own_ending)) format_of_name(path, own_ending);
        FileWriter::check(path);
    });
}

}  // namespace tarvo::host
