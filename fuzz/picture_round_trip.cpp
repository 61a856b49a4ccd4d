#include "picture_round_trip.h"

#include <iterator>
#include <string_view>

#include "fuzz_check.h"
#include "picture_file.h"
#include "pixels.h"

namespace tarvo::fuzz {

using namespace tarvo::host;

namespace {

// Few enough for thousands of pictures a second.
constexpr std::uint64_t kMostPixels = 1 << 14;

// What the files of pictures may have been: one of these for each input, by its length.
constexpr FilePixels kLikes[] = {
    {FilePixels::Colors::black_and_white, 1}, {FilePixels::Colors::grey, 2}, {FilePixels::Colors::grey, 8},
    {FilePixels::Colors::grey, 16},           {FilePixels::Colors::palette}, {FilePixels::Colors::inks}};

const Picture& picture_in(const ObjectRef& reference) { return dynamic_cast<const Picture&>(*reference.get()); }

std::uint32_t color_at(const Picture& picture, int x, int y) {
    return color_of(load_pixel(picture.row(y), x, picture.depth()), picture.depth(), picture.colors());
}

bool same_colors(const Picture& a, const Picture& b) {
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (color_at(a, x, y) != color_at(b, x, y)) return false;
    return true;
}

bool is_all_grey(const Picture& picture) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const std::uint32_t color = color_at(picture, x, y);
            if (color != (color & 255) * 0x010101) return false;
        }
    return true;
}

bool is_opaque(const Picture& mask) {
    for (int y = 0; y < mask.height(); ++y)
        for (int x = 0; x < mask.width(); ++x)
            if (color_at(mask, x, y) != 0) return false;
    return true;
}

// What a file carries goes through every format, and comes back from it as it went in; `spread`: where the format has
// it in pieces, it may come in another order, or be too little to be gathered.
void check_carried(const Carried& carried, const Carried& again, const WriteReport& report, bool spread) {
    FUZZ_CHECK(carried.metadata.icc.empty() || !report.losses.empty() || carried.metadata.icc == again.metadata.icc);
    if (spread) return;
    FUZZ_CHECK(carried.metadata.exif.empty() || !report.losses.empty() ||
               carried.metadata.exif.size() == again.metadata.exif.size());
    FUZZ_CHECK(carried.metadata.iptc.empty() || !report.losses.empty() || carried.metadata.iptc == again.metadata.iptc);
}

// A picture that was written and read again.
void check_copy(const Picture& shown, const ObjectRef& again, bool keeps_all) {
    const Picture& copy = picture_in(again);
    FUZZ_CHECK(copy.width() == shown.width() && copy.height() == shown.height());
    if (!keeps_all) return;
    FUZZ_CHECK(same_colors(shown, copy));
    if (shown.mask()) {
        FUZZ_CHECK(copy.mask() && same_colors(picture_in(shown.mask()), picture_in(copy.mask())));
    } else {
        FUZZ_CHECK(!copy.mask());
    }
}

void check_format(Host& host, const Picture& shown, const Carried& carried, const char* name, bool keeps_all) {
    WriteReport report;
    Carried carried_again;
    const ObjectRef again = decode_picture(host, encode_picture(shown, name, {.carried = &carried}, &report),
                                           {.max_pixels = kMostPixels}, &carried_again);
    check_carried(carried, carried_again, report, std::string_view(name) == "a.tif");
    check_copy(shown, again, keeps_all);
}

// Whatever the picture's file is said to have been, nothing is lost; and greys are greys where they were. A palette
// without a clear colour has no mask, and a mask that hides nothing may go with it.
void check_likeness(Host& host, const Picture& shown, const FilePixels& like) {
    using Colors = FilePixels::Colors;
    const Carried carried{.pixels = like};
    const bool mask_may_go = like.colors == Colors::palette && shown.mask() && is_opaque(picture_in(shown.mask()));
    const auto written = [&](const char* name, bool keeps_all) {
        Bytes file = encode_picture(shown, name, {.carried = &carried});
        const ObjectRef again = decode_picture(host, file, {.max_pixels = kMostPixels});
        check_copy(shown, again, keeps_all && !mask_may_go);
        FUZZ_CHECK(!keeps_all || same_colors(shown, picture_in(again)));
        return file;
    };
    const Bytes png = written("a.png", true);
    written("a.pam", true);
#ifdef TARVO_TIFF
    written("a.tif", !shown.mask() || like.colors != Colors::palette);
#endif
    written("a.jpg", false);
    const bool has_stored_indices = !shown.mask() && shown.depth() <= 8;
    if (has_stored_indices || (like.colors != Colors::grey && like.colors != Colors::black_and_white)) return;
    // PNG's first chunk tells: 2 for colours, 4 for alpha.
    constexpr std::size_t kColorType = 25;
    FUZZ_CHECK(png.size() > kColorType && ((png[kColorType] & 2) == 0) == is_all_grey(shown));
}

}  // namespace

void check_picture_file(std::span<const std::uint8_t> file) {
    static Host host;
    const Accounts before = host.accounts();
    for (const bool keep_depth : {false, true}) {
        try {
            Carried carried;
            const ObjectRef picture =
                decode_picture(host, file, {.keep_depth = keep_depth, .max_pixels = kMostPixels}, &carried);
            const Picture& shown = picture_in(picture);
#ifdef TARVO_TIFF
            check_format(host, shown, carried, "a.tif", true);
#endif
#ifdef TARVO_WEBP
            check_format(host, shown, carried, "a.webp", !shown.mask() || !is_opaque(picture_in(shown.mask())));
#endif
            for (const char* name : {"a.png", "a.pam"}) check_format(host, shown, carried, name, true);
            check_format(host, shown, carried, "a.ppm", !shown.mask());
            for (const char* name : {"a.pgm", "a.pbm", "a.jpg"}) check_format(host, shown, carried, name, false);
            check_likeness(host, shown, kLikes[file.size() % std::size(kLikes)]);
        } catch (const FileError& error) {
            FUZZ_CHECK(std::string_view(error.what()).find('\n') == std::string_view::npos);
        }
    }
    FUZZ_CHECK(host.accounts() == before);
}

}  // namespace tarvo::fuzz
