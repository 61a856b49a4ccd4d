#include "format.h"

#include <algorithm>
#include <string>

#include "names.h"
#include "platform.h"
#include "pnm.h"
#ifdef TARVO_PICTURE_LIBRARIES
#include "jpeg_codec.h"
#include "jpeg_markers.h"
#include "png_chunks.h"
#include "png_codec.h"
#endif
#ifdef TARVO_TIFF
#include "tiff_codec.h"
#include "tiff_metadata.h"
#endif
#ifdef TARVO_WEBP
#include "webp_codec.h"
#endif

namespace tarvo::host {

namespace {

constexpr std::string_view kPngEndings[] = {".png"};
constexpr std::string_view kJpegEndings[] = {".jpg", ".jpeg"};
constexpr std::string_view kTiffEndings[] = {".tif", ".tiff"};
constexpr std::string_view kWebpEndings[] = {".webp"};
constexpr std::string_view kPbmEndings[] = {".pbm"};
constexpr std::string_view kPgmEndings[] = {".pgm"};
constexpr std::string_view kPpmEndings[] = {".ppm"};
constexpr std::string_view kPamEndings[] = {".pam"};

bool begins_with(std::span<const std::uint8_t> file, std::string_view signature) {
    return file.size() >= signature.size() &&
           std::equal(signature.begin(), signature.end(), file.begin(),
                      [](char wanted, std::uint8_t byte) { return static_cast<std::uint8_t>(wanted) == byte; });
}

bool is_png(std::span<const std::uint8_t> file) { return begins_with(file, "\x89PNG\r\n\x1A\n"); }
bool is_jpeg(std::span<const std::uint8_t> file) { return begins_with(file, "\xFF\xD8\xFF"); }
// Each byte order, in the usual form and in the one of large files.
bool is_tiff(std::span<const std::uint8_t> file) {
    constexpr std::string_view kMarks[] = {{"II*\0", 4}, {"MM\0*", 4}, {"II+\0", 4}, {"MM\0+", 4}};
    return std::ranges::any_of(kMarks, [file](std::string_view mark) { return begins_with(file, mark); });
}
bool is_webp(std::span<const std::uint8_t> file) {
    constexpr std::size_t kBehindLength = 8;
    return begins_with(file, "RIFF") && file.size() > kBehindLength && begins_with(file.subspan(kBehindLength), "WEBP");
}
bool is_pbm(std::span<const std::uint8_t> file) { return begins_with(file, "P1") || begins_with(file, "P4"); }
bool is_pgm(std::span<const std::uint8_t> file) { return begins_with(file, "P2") || begins_with(file, "P5"); }
bool is_ppm(std::span<const std::uint8_t> file) { return begins_with(file, "P3") || begins_with(file, "P6"); }
bool is_pam(std::span<const std::uint8_t> file) { return begins_with(file, "P7\n"); }

constexpr Format kFormats[] = {
#ifdef TARVO_PICTURE_LIBRARIES
    {"PNG", kPngEndings, true, kPngRoom, is_scale_of_greys, is_png, decode_png, encode_png},
    {"JPEG", kJpegEndings, false, kJpegRoom, is_grey, is_jpeg, decode_jpeg, encode_jpeg},
#else
    {"PNG", kPngEndings, true, {}, is_grey, is_png, nullptr, nullptr},
    {"JPEG", kJpegEndings, false, {}, is_grey, is_jpeg, nullptr, nullptr},
#endif
#ifdef TARVO_TIFF
    {"TIFF", kTiffEndings, true, kTiffRoom, is_scale_of_greys, is_tiff, decode_tiff, encode_tiff},
#else
    {"TIFF", kTiffEndings, true, {}, is_grey, is_tiff, nullptr, nullptr},
#endif
#ifdef TARVO_WEBP
    {"WebP", kWebpEndings, true, kWebpRoom, has_no_greys, is_webp, decode_webp, encode_webp},
#else
    {"WebP", kWebpEndings, true, {}, is_grey, is_webp, nullptr, nullptr},
#endif
    {"PBM", kPbmEndings, false, {}, is_grey, is_pbm, decode_pnm, encode_pbm},
    {"PGM", kPgmEndings, false, {}, is_grey, is_pgm, decode_pnm, encode_pgm},
    {"PPM", kPpmEndings, false, {}, is_grey, is_ppm, decode_pnm, encode_ppm},
    {"PAM", kPamEndings, true, {}, is_grey, is_pam, decode_pam, encode_pam},
};

const Format& usable(const Format& format) {
    if (!format.decode) throw FileError("this build has no " + std::string(format.name) + " library");
    return format;
}

}  // namespace

const Format& format_of_bytes(std::span<const std::uint8_t> file) {
    for (const Format& format : kFormats)
        if (format.recognises(file)) return usable(format);
    throw FileError(file.empty() ? "empty" : "not a picture of a known format");
}

bool has_ending(std::string_view path, std::string_view ending) {
    return !ending.empty() && path.size() > ending.size() &&
           same_name(path.substr(path.size() - ending.size()), ending);
}

const Format& format_of_name(std::string_view path, std::string_view own_ending) {
    std::string known;
    for (const Format& format : kFormats)
        for (const std::string_view ending : format.endings) {
            if (has_ending(path, ending)) return usable(format);
            known.append(known.empty() ? "" : ", ").append(ending);
        }
    if (!own_ending.empty()) known.append(", ").append(own_ending);
    throw FileError("the name ends in none of " + known);
}

void check_size(std::uint64_t width, std::uint64_t height, std::uint64_t max_pixels) {
    const std::string size = "the size is " + std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width == 0 || height == 0) throw FileError(size);
    if (width > kLongestSide || height > kLongestSide)
        throw FileError(size + ", a side may have " + std::to_string(kLongestSide), Limit::sides);
    if (width * height > max_pixels)
        throw FileError(
            size + ", together " + std::to_string(width * height) + ", the limit is " + std::to_string(max_pixels),
            Limit::pixels);
}

FileError cut_short(int rows) {
    return FileError(rows == 0 ? "cut short"
                               : "cut short after " + std::to_string(rows) + (rows == 1 ? " row" : " rows"));
}

}  // namespace tarvo::host
