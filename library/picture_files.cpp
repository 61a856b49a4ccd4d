// Pictures from and to files and encoded bytes.

#include "picture_files.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "about_file.h"
#include "draft.h"
#include "failure.h"
#include "file_source.h"
#include "file_writer.h"
#include "format.h"
#include "options.h"
#include "picture_string.h"
#include "shown_text.h"
#include "watched_files.h"

namespace tarvo::library {
namespace {

using host::ObjectRef;

constexpr const char* kTheFile = "the file";  // one that has no name

bool holds_string(std::string_view path) { return host::has_ending(path, kStringEnding); }

ReadPicture read_string(CallHost& call, const std::string& path, const host::ReadOptions& options, const Notes& notes) {
    return host::about_file(path, [&] {
        host::FileSource file(path, options.on_wait);
        ReadPicture read;
        if (options.on_block) {
            host::WatchedSource watched(file, options.on_block);
            read.picture = read_picture_string(call, watched, options.max_pixels, read.pixels);
        } else {
            read.picture = read_picture_string(call, file, options.max_pixels, read.pixels);
        }
        notes.tell_complaints(call.host(), "TRV_ConvertToPicture");
        return read;
    });
}

tarvo_note note_of(host::Loss::Kind kind) {
    switch (kind) {
        case host::Loss::Kind::profile: return TARVO_NOTE_PROFILE;
        case host::Loss::Kind::pages: return TARVO_NOTE_PAGES;
        case host::Loss::Kind::draft: return TARVO_NOTE_DRAFT;
        case host::Loss::Kind::metadata: break;
    }
    return TARVO_NOTE_METADATA;
}

void tell_losses(const Notes& notes, const std::string& file, const host::Losses& losses) {
    for (const host::Loss& loss : losses) notes.tell(note_of(loss.kind), file + " " + loss.words);
}

// What `decode(carried)` returns, and what it puts there.
template <class Decode>
ReadPicture decoded(const std::string& file, const Notes& notes, Decode decode) {
    auto carried = std::make_shared<host::Carried>();
    ReadPicture read;
    read.picture = decode(carried.get());
    read.pixels = host::in_words(carried->pixels);
    tell_losses(notes, file, carried->losses);
    read.carried = std::move(carried);
    return read;
}

host::DraftRule draft_rule(CallHost& call, const char* first_call) {
    if (!first_call) return {};
    return [&call, text = std::string(first_call)](int whole_width, int whole_height, int width, int height) {
        return language::suits_smaller(call.caller(), text, {whole_width, whole_height}, {width, height});
    };
}

// Reads with the caller's bounds and stop. `read(call, options, notes)` returns what was read.
template <class Read>
tarvo_picture* read_with(const tarvo_read_options* given, Read read) {
    const auto options = given_options(given);
    const Notes notes(options);
    const host::Limits limits = limits_of(options.max_pixels, options.max_memory);
    CallHost call(limits);
    call.stop_by(options.yield, options.context);
    ReadPicture made = read(call,
                            host::ReadOptions{.keep_depth = options.keep_depth != 0,
                                              .srgb = options.srgb != 0,
                                              .draft = draft_rule(call, options.draft_for),
                                              .max_pixels = limits.max_pixels,
                                              .on_block = call.host().on_yield},
                            notes);
    notes.tell(TARVO_NOTE_PIXELS, made.pixels);
    return new_picture(dynamic_cast<const host::Picture&>(*made.picture.get()), std::move(made.carried));
}

// Tells a program of its part file.
class ToldWatch final : public host::PartFileWatch {
public:
    explicit ToldWatch(const tarvo_write_options& options) : tell_(options.part_file), context_(options.context) {}

    void making() noexcept override { tell(TARVO_PART_FILE_MAKING, -1, ""); }
    void made(int folder, const char* name) noexcept override { tell(TARVO_PART_FILE_MADE, folder, name); }
    void gone() noexcept override { tell(TARVO_PART_FILE_GONE, -1, ""); }

private:
    void tell(tarvo_part_file now, int folder, const char* name) const {
        if (tell_) tell_(context_, now, folder, name);
    }

    void (*tell_)(void*, tarvo_part_file, int, const char*);
    void* context_;
};

host::Compression compression_of(tarvo_compression given) {
    switch (given) {
        case TARVO_COMPRESSION_NORMAL: return host::Compression::normal;
        case TARVO_COMPRESSION_FAST: return host::Compression::fast;
        case TARVO_COMPRESSION_SMALL: return host::Compression::small;
    }
    throw wrong_use("compression is " + std::to_string(given) + ", allowed is 0 to 2");
}

// One picture on its way to a file, or to bytes, with the caller's options.
class Writing {
public:
    Writing(const tarvo_picture& picture, const tarvo_write_options* given)
        : carried_(picture.carried),
          options_(given_options(given)),
          notes_(options_),
          watch_(options_),
          call_(limits()) {
        if (options_.jpeg_quality < 0 || options_.jpeg_quality > 100)
            throw wrong_use("jpeg_quality is " + std::to_string(options_.jpeg_quality) + ", allowed is 1 to 100");
        if (options_.strip > TARVO_METADATA_ALL)
            throw wrong_use("strip is " + std::to_string(options_.strip) + ", allowed is 0 to 31");
        call_.stop_by(options_.yield, options_.context);
        written_ = call_.host().new_picture(picture.value);
    }

    void save(const std::string& path) {
        if (holds_string(path)) {
            host::about_file(path, [&] {
                host::FileWriter file(path, &watch_);
                const std::string pixels = write_picture_string(call_, written_, file);
                tell_losses_of(path, report_of_string());
                tell(path, file.commit(), pixels);
            });
            tell_unreadable(path);
        } else {
            host::WriteOptions options = how();
            options.on_report = [&](const host::WriteReport& report) { tell_losses_of(path, report); };
            const host::WriteReport report = host::write_picture_file(picture(), path, options);
            tell(path, report.not_kept, host::in_words(report.pixels));
        }
    }

    host::Bytes encode(const std::string& name) {
        if (!holds_string(name)) {
            host::WriteReport report;
            host::Bytes file = host::encode_picture(picture(), name, how(), &report);
            tell_losses_of(kTheFile, report);
            tell(kTheFile, {}, host::in_words(report.pixels));
            return file;
        }
        host::MemorySink file;
        const std::string pixels = write_picture_string(call_, written_, file);
        file.flush();
        tell_losses_of(kTheFile, report_of_string());
        tell(kTheFile, {}, pixels);
        tell_unreadable(kTheFile);
        return std::move(file.bytes);
    }

private:
    host::Limits limits() const {
        return options_.max_memory != 0 ? host::Limits{.max_memory = options_.max_memory} : host::Limits{};
    }
    const host::Picture& picture() const { return dynamic_cast<const host::Picture&>(*written_.get()); }

    host::WriteOptions how() {
        host::WriteOptions options{.compression = compression_of(options_.compression),
                                   .watch = &watch_,
                                   .strip = options_.strip,
                                   .carried = carried_.get(),
                                   .on_block = call_.host().on_yield};
        if (options_.jpeg_quality != 0) options.quality = options_.jpeg_quality;
        return options;
    }

    // A picture string has nothing but pixels.
    host::WriteReport report_of_string() const {
        host::WriteReport report;
        if (carried_)
            static_cast<void>(
                host::fitting(host::without(carried_->metadata, options_.strip), {}, false, report.losses));
        return report;
    }

    // Whoever is told may then stop, so that there is no such file.
    void tell_losses_of(const std::string& file, const host::WriteReport& report) {
        if (report.mask_left_out) notes_.tell(TARVO_NOTE_MASK, file + " has no transparency: the mask is left out");
        if (carried_ && carried_->pixels.bits > 8)
            notes_.tell(TARVO_NOTE_DEPTH,
                        file + " has no more than 8 of " + std::to_string(carried_->pixels.bits) + " bits a channel");
        tell_losses(notes_, file, report.losses);
        if (call_.host().on_yield) call_.host().on_yield();
    }
    void tell(const std::string& file, const std::vector<std::string>& not_kept, const std::string& pixels) {
        for (const std::string& line : not_kept) notes_.tell(TARVO_NOTE_FILE, file + " " + line);
        notes_.tell(TARVO_NOTE_PIXELS, pixels);
    }
    void tell_unreadable(const std::string& file) {
        if (!notes_.wanted()) return;
        CallHost trial({});  // which the caller's bounds are not for
        if (!can_be_read_again(trial, written_))
            notes_.tell(TARVO_NOTE_CAUTION, file + " holds a string that TRV_ConvertToPicture makes no picture of");
    }

    const SharedCarried carried_;
    const tarvo_write_options options_;
    const Notes notes_;
    ToldWatch watch_;
    CallHost call_;
    ObjectRef written_;
};

// Returns the name of a file with an ending that tells the format. Throws Failure.
std::string name_of_format(const char* format) {
    const std::string name = (*format == '.' ? "picture" : "picture.") + std::string(format);
    try {
        if (!holds_string(name)) host::format_of_name(name);
    } catch (const host::FileError&) {
        throw wrong_use("there is no format " + host::quoted(format) + " to write");
    }
    return name;
}

}  // namespace

ReadPicture read_picture(CallHost& call, const std::string& path, const host::ReadOptions& given, const Notes& notes) {
    host::ReadOptions options = given;
    options.on_wait = [&] { notes.tell(TARVO_NOTE_WAITING, path + " is a pipe that nobody writes to: waiting"); };
    return on_file(path, [&] {
        if (holds_string(path)) return read_string(call, path, options, notes);
        return decoded(path, notes, [&](host::Carried* carried) {
            return host::read_picture_file(call.host(), path, options, carried);
        });
    });
}

}  // namespace tarvo::library

using namespace tarvo;
using namespace tarvo::library;

tarvo_status tarvo_picture_open(const char* path, const tarvo_read_options* options, tarvo_picture** picture,
                                tarvo_error** error) {
    if (picture) *picture = nullptr;
    return guarded(error, [&] {
        require(path, "path");
        require(picture, "picture");
        *picture = read_with(options, [&](CallHost& call, const host::ReadOptions& how, const Notes& notes) {
            return read_picture(call, path, how, notes);
        });
    });
}

tarvo_status tarvo_picture_decode(const void* bytes, size_t length, const tarvo_read_options* options,
                                  tarvo_picture** picture, tarvo_error** error) {
    if (picture) *picture = nullptr;
    return guarded(error, [&] {
        if (length != 0) require(bytes, "bytes");
        require(picture, "picture");
        *picture = read_with(options, [&](CallHost& call, const host::ReadOptions& how, const Notes& notes) {
            return decoded(kTheFile, notes, [&](host::Carried* carried) {
                return host::decode_picture(call.host(), {static_cast<const std::uint8_t*>(bytes), length}, how,
                                            carried);
            });
        });
    });
}

tarvo_status tarvo_check_output(const char* path, tarvo_error** error) {
    return guarded(error, [&] {
        require(path, "path");
        on_file(path, [&] { host::check_output(path, kStringEnding); });
    });
}

tarvo_status tarvo_picture_save(const tarvo_picture* picture, const char* path, const tarvo_write_options* options,
                                tarvo_error** error) {
    return guarded(error, [&] {
        require(picture, "picture");
        require(path, "path");
        on_file(path, [&] { Writing(*picture, options).save(path); });
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
        const host::Bytes file = Writing(*picture, options).encode(name_of_format(format));
        auto* const copy = static_cast<std::uint8_t*>(std::malloc(file.size()));
        if (!copy) throw std::bad_alloc();
        std::memcpy(copy, file.data(), file.size());
        *bytes = copy;
        *length = file.size();
    });
}
