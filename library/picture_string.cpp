#include "picture_string.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <string_view>

#include "failure.h"
#include "format.h"
#include "value_text.h"

namespace tarvo::library {
namespace {

using host::ObjectRef;
using host::Picture;

// Strings that are no longer are made and read in one piece.
constexpr std::size_t kLongestPiece = std::size_t{4} << 20;

// A string begins with the sizes of its picture, which say how long it is. Behind them come the colours, row by row,
// and then the levels of the mask.
constexpr std::size_t kHeaderBytes = 11, kColorBytes = 3;

class Header {
public:
    // What a shorter string lacks is 0.
    explicit Header(std::span<const std::uint8_t> bytes) {
        std::ranges::copy(bytes.first(std::min(bytes.size(), kHeaderBytes)), bytes_.begin());
    }

    std::uint64_t width() const { return number_at(0, 4); }
    std::uint64_t height() const { return number_at(4, 4); }
    bool has_mask() const { return bytes_[10] != 0; }
    std::span<const std::uint8_t> bytes() const { return bytes_; }
    std::string in_words() const {
        return "string, " + language::depth_text(static_cast<int>(number_at(8, 2))) + (has_mask() ? ", mask" : "");
    }
    std::uint64_t length() const { return kHeaderBytes + width() * height() * (kColorBytes + (has_mask() ? 1 : 0)); }

    // The header of as many rows of the picture, with or without the mask's.
    Header of_rows(int count, bool with_mask) const {
        Header rows = *this;
        for (std::size_t i = 0; i < 4; ++i) rows.bytes_[4 + i] = static_cast<std::uint8_t>(count >> (24 - 8 * i));
        rows.bytes_[10] = with_mask;
        return rows;
    }

private:
    std::uint64_t number_at(std::size_t place, std::size_t count) const {
        std::uint64_t number = 0;
        for (std::size_t i = place; i < place + count; ++i) number = number << 8 | bytes_[i];
        return number;
    }

    std::array<std::uint8_t, kHeaderBytes> bytes_{};
};

// Calls `visit(first, count)` for the rows of the pieces in which a picture's string is made and read.
template <class Visit>
void for_each_piece(int width, int height, Visit visit) {
    const std::size_t row_bytes = static_cast<std::size_t>(width) * (kColorBytes + 1);
    const int rows = static_cast<int>(std::max<std::size_t>(kLongestPiece / row_bytes, 1));
    for (int first = 0; first < height; first += rows) visit(first, std::min(rows, height - first));
}

Picture& picture_in(const ObjectRef& object) { return dynamic_cast<Picture&>(*object.get()); }

// Calls a method of an object without arguments and returns its result; empty for nil.
ObjectRef ask(CallHost& call, const ObjectRef& object, const char* method) {
    const host::Value given = call.caller().call_on(object, method, {});
    const auto* result = std::get_if<ObjectRef>(&given);
    return result ? *result : ObjectRef();
}

void copy_rows(const Picture& from, int first, Picture& to, int place, int count) {
    for (int y = 0; y < count; ++y) std::memcpy(to.row(place + y), from.row(first + y), from.packed_row_bytes());
}

// A picture like that one, but for its height; nobody has set its pixels.
ObjectRef same_but_height(host::Host& host, const Picture& picture, int height) {
    host::PictureOptions options = picture.options();
    options.height = height;
    return host.new_picture(options, Picture::Paper::unset);
}

// --- reading ---------------------------------------------------------------------------------------------------------

host::FileError no_string() { return host::FileError("this is no string that a picture can be made of"); }

class StringReader {
public:
    StringReader(CallHost& call, host::ByteSource& file, std::uint64_t max_pixels)
        : call_(call), file_(file), header_(read_header(max_pixels)) {}

    ObjectRef read() {
        call_.host().clear_refusal();
        return header_.length() <= kLongestPiece ? read_whole() : read_pieces();
    }
    std::string pixels() const { return header_.in_words(); }

private:
    // Reads no more of a file than a picture of its sizes has.
    Header read_header(std::uint64_t max_pixels) {
        std::array<std::uint8_t, kHeaderBytes> bytes;
        if (!file_.read(bytes)) throw no_string();
        const Header header(bytes);
        constexpr std::uint64_t kMostPixels = host::Host::kLongestString;
        const std::uint64_t width = header.width(), height = header.height();
        if (width * height > kMostPixels) throw no_string();
        const std::uint64_t behind_header = header.length() - kHeaderBytes;
        if (behind_header == 0 || file_.left().value_or(behind_header) != behind_header) throw no_string();
        host::check_size(width, height, max_pixels);
        return header;
    }

    ObjectRef read_whole() {
        return picture_of(header_, [&](std::span<std::uint8_t> planes) { take(planes, true); });
    }

    ObjectRef read_pieces() {
        const auto width = static_cast<int>(header_.width()), height = static_cast<int>(header_.height());
        ObjectRef whole;
        for_each_piece(width, height, [&](int first, int count) {
            const bool is_last = !header_.has_mask() && first + count == height;
            const ObjectRef rows = picture_of(header_.of_rows(count, false),
                                              [&](std::span<std::uint8_t> colors) { take(colors, is_last); });
            if (!whole) whole = same_but_height(call_.host(), picture_in(rows), height);
            copy_rows(picture_in(rows), 0, picture_in(whole), first, count);
        });
        if (header_.has_mask()) read_mask(picture_in(whole));
        return whole;
    }

    // The levels are read as those of black pixels.
    void read_mask(Picture& whole) {
        for_each_piece(whole.width(), whole.height(), [&](int first, int count) {
            const auto color_bytes = static_cast<std::size_t>(count * header_.width() * kColorBytes);
            const ObjectRef rows = picture_of(header_.of_rows(count, true), [&](std::span<std::uint8_t> planes) {
                std::ranges::fill(planes.first(color_bytes), std::uint8_t{0});
                take(planes.subspan(color_bytes), first + count == whole.height());
            });
            const Picture& mask = picture_in(picture_in(rows).mask());
            if (!whole.mask()) whole.set_mask(same_but_height(call_.host(), mask, whole.height()));
            copy_rows(mask, 0, picture_in(whole.mask()), first, count);
        });
    }

    void take(std::span<std::uint8_t> room, bool is_last) {
        if (!file_.read(room) || (is_last && !file_.ahead().empty())) throw no_string();
    }

    // The picture of a string with that header and what `fill` writes behind it.
    ObjectRef picture_of(const Header& header, const std::function<void(std::span<std::uint8_t>)>& fill) {
        const ObjectRef string =
            call_.host().new_string(static_cast<std::size_t>(header.length()), [&](std::span<std::uint8_t> room) {
                std::ranges::copy(header.bytes(), room.begin());
                fill(room.subspan(kHeaderBytes));
            });
        const ObjectRef picture = ask(call_, string, "TRV_ConvertToPicture");
        // The plugin makes a picture without its mask where there is no room for one.
        if (const auto& refusal = call_.host().refusal()) throw host::Refusal(*refusal);
        if (!picture) throw no_string();
        return picture;
    }

    CallHost& call_;
    host::ByteSource& file_;
    const Header header_;
};

// --- writing ---------------------------------------------------------------------------------------------------------

class StringWriter {
public:
    StringWriter(CallHost& call, const ObjectRef& picture)
        : call_(call), object_(picture), picture_(picture_in(picture)) {}

    std::string write(host::ByteSink& file) {
        call_.host().clear_refusal();
        return is_long() ? write_pieces(file) : write_whole(file);
    }

private:
    bool is_long() const {
        const std::uint64_t pixels = static_cast<std::uint64_t>(picture_.width()) * picture_.height();
        return pixels * kColorBytes > kLongestPiece;
    }

    std::string write_whole(host::ByteSink& file) {
        const ObjectRef string = string_of(object_);
        const auto bytes = bytes_of(string);
        file.write(bytes);
        return Header(bytes).in_words();
    }

    std::string write_pieces(host::ByteSink& file) {
        std::string words;
        for (const bool of_mask : {false, true}) {
            if (of_mask && !picture_.mask()) break;
            for_each_piece(picture_.width(), picture_.height(), [&](int first, int count) {
                const ObjectRef string = string_of(rows(first, count));
                const auto bytes = bytes_of(string);
                if (Header(bytes).length() != bytes.size()) throw no_string();
                if (words.empty()) {
                    const Header whole = Header(bytes).of_rows(picture_.height(), Header(bytes).has_mask());
                    file.write(whole.bytes());
                    words = whole.in_words();
                }
                const auto color_bytes = static_cast<std::size_t>(count * Header(bytes).width() * kColorBytes);
                const auto planes = bytes.subspan(kHeaderBytes);
                file.write(of_mask ? planes.subspan(color_bytes) : planes.first(color_bytes));
            });
        }
        return words;
    }

    ObjectRef rows(int first, int count) const {
        ObjectRef part = same_but_height(call_.host(), picture_, count);
        copy_rows(picture_, first, picture_in(part), 0, count);
        if (!picture_.mask()) return part;
        const Picture& mask = picture_in(picture_.mask());
        const ObjectRef part_of_mask = same_but_height(call_.host(), mask, count);
        copy_rows(mask, first, picture_in(part_of_mask), 0, count);
        picture_in(part).set_mask(part_of_mask);
        return part;
    }

    ObjectRef string_of(const ObjectRef& picture) {
        const ObjectRef string = ask(call_, picture, "TRV_ConvertToString");
        if (string) return string;
        if (const auto& refusal = call_.host().refusal()) throw host::Refusal(*refusal);
        throw no_string();
    }

    static Failure no_string() { return {TARVO_OPERATION, "TRV_ConvertToString gave no string"}; }

    static std::span<const std::uint8_t> bytes_of(const ObjectRef& string) {
        const std::string_view text = dynamic_cast<const host::StringObject&>(*string.get()).bytes();
        return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
    }

    CallHost& call_;
    const ObjectRef& object_;
    const Picture& picture_;
};

}  // namespace

ObjectRef read_picture_string(CallHost& call, host::ByteSource& file, std::uint64_t max_pixels, std::string& pixels) {
    StringReader reader(call, file, max_pixels);
    pixels = reader.pixels();
    return reader.read();
}

std::string write_picture_string(CallHost& call, const ObjectRef& picture, host::ByteSink& file) {
    return StringWriter(call, picture).write(file);
}

// Tried with one pixel: what the plugin reads is a question of depth and mask alone.
bool can_be_read_again(CallHost& call, const ObjectRef& object) {
    const Picture& picture = picture_in(object);
    const ObjectRef pixel = call.host().new_picture({.width = 1, .height = 1, .depth = picture.depth()});
    if (picture.mask()) picture_in(pixel).set_mask(call.host().new_picture({.width = 1, .height = 1}));
    const ObjectRef string = ask(call, pixel, "TRV_ConvertToString");
    return string && ask(call, string, "TRV_ConvertToPicture");
}

}  // namespace tarvo::library
