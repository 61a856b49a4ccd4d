#include "picture_string.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <span>

#include "error_state.h"
#include "host_reference.h"
#include "pixel_blocks.h"
#include "row_clones.h"
#include "rows.h"
#include "stored_words.h"

namespace tarvo::plugin {
namespace {

constexpr const char* kWriter = "TRV_ConvertToString 2";
constexpr const char* kReader = "TRV_ConvertToPicture";

// --- header ----------------------------------------------------------------------------------------------------------

constexpr std::uint64_t kLongestString = std::numeric_limits<std::int32_t>::max();

// Clamps the number of pixels, so that the planes of any header can be added up.
std::uint64_t pixels_of(const PictureStringHeader& header) {
    return std::min(std::uint64_t{header.width} * header.height, kLongestString);
}

bool is_readable_depth(std::uint16_t depth) { return depth == 8 || depth == 16 || depth == 24 || depth == 32; }

// --- planes ----------------------------------------------------------------------------------------------------------

TARVO_ROW_CLONES void red_row(const PixelColor* __restrict colors, std::uint8_t* __restrict levels, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) levels[x] = static_cast<std::uint8_t>(red_of(colors[x]));
}

TARVO_ROW_CLONES void grey_row(const std::uint8_t* __restrict levels, PixelColor* __restrict colors,
                               std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) colors[x] = grey(levels[x]);
}

// A run of a row, in a picture and in a plane.
struct PlaneRun {
    std::int32_t row, column;
    std::size_t first;  // the number of its first pixel in the plane
    std::size_t count;

    std::size_t color_offset() const { return first * Rgb24::kBytes; }
};

// Calls `visit(run)` for each row of the pixels that a picture and a plane both have.
template <class Visit>
void for_each_common_row(const TRV_Picture& picture, std::int32_t width, std::int32_t height, Visit visit) {
    const std::int32_t common_width = std::min(picture.width(), width);
    const std::int32_t common_height = std::min(picture.height(), height);
    for (std::int32_t row = 0; row < common_height; ++row)
        visit(PlaneRun{row, 0, static_cast<std::size_t>(row) * width, static_cast<std::size_t>(common_width)});
}

// Calls `visit(run)` for the chunks of a run.
template <class Visit>
void for_each_chunk_of(const PlaneRun& run, Visit visit) {
    for_each_chunk(0, static_cast<std::int32_t>(run.count) - 1, [&](std::int32_t done, std::size_t count) {
        visit(PlaneRun{run.row, run.column + done, run.first + done, count});
    });
}

// Calls `visit(run)` for each chunk of the pixels that a picture and a plane both have.
template <class Visit>
void for_each_common_chunk(const TRV_Picture& picture, std::int32_t width, std::int32_t height, Visit visit) {
    for_each_common_row(picture, width, height, [&](const PlaneRun& row) { for_each_chunk_of(row, visit); });
}

// --- both directions -------------------------------------------------------------------------------------------------

// Writes zeros for what the mask does not cover; all of its plane, if the mask cannot be locked.
void write_mask(const TRV_Picture& source, std::span<std::uint8_t> plane) {
    TRV_Picture mask(source, kAsMask);
    const bool locked = mask.Lock();
    if (!locked || mask.width() < source.width() || mask.height() < source.height())
        std::ranges::fill(plane, std::uint8_t{0});
    if (locked) PrivWriteMaskPlane(mask, plane.data(), source.width(), source.height());
}

// If the mask cannot be locked, it stays as the host made it.
void read_mask(const std::uint8_t* plane, std::int32_t width, std::int32_t height, const TRV_Picture& result) {
    TRV_Picture mask(result, kAsMask);
    if (mask.Lock()) PrivReadMaskPlane(plane, width, height, mask);
}

std::span<const std::uint8_t> bytes_of(const REALstringStruct* string) {
    const std::int32_t length = string->storage ? REALstringStruct::Length(string) : 0;
    const auto* const first = reinterpret_cast<const std::uint8_t*>(REALstringStruct::CString(string));
    return {first, static_cast<std::size_t>(std::max(length, 0))};
}

// Returns the header of a string, if that is exactly as long as the header says and can be a picture's; else a header
// with all sizes 0.
PictureStringHeader valid_header(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < PictureStringHeader::kBytes) return {};
    const PictureStringHeader header = PictureStringHeader::read(bytes.data());
    const bool valid = header.width && header.height && header.length() == bytes.size();
    return valid && is_readable_depth(header.depth) ? header : PictureStringHeader{};
}

}  // namespace

PictureStringHeader PictureStringHeader::read(const std::uint8_t* bytes) {
    return {load_big_endian<std::uint32_t>(bytes), load_big_endian<std::uint32_t>(bytes + 4),
            load_big_endian<std::uint16_t>(bytes + 8), bytes[10] != 0};
}

void PictureStringHeader::write(std::uint8_t* bytes) const {
    store_big_endian(bytes, width);
    store_big_endian(bytes + 4, height);
    store_big_endian(bytes + 8, depth);
    bytes[10] = hasMask;
}

std::uint64_t PictureStringHeader::mask_offset() const { return kBytes + 3 * pixels_of(*this); }
std::uint64_t PictureStringHeader::length() const { return mask_offset() + (hasMask ? pixels_of(*this) : 0); }

}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivWriteColorPlane(const TRV_Picture& source, std::uint8_t* plane, std::int32_t width, std::int32_t height) {
    const StoreMode mode = store_mode_for(std::int64_t{width} * height * Rgb24::kBytes);
    Chunk colors;
    for_each_common_row(source, width, height, [&](const PlaneRun& row) {
        if (const std::uint8_t* const words = source.words_at(row.row, 0))
            return pack_words(words, plane + row.color_offset(), row.count, mode);
        for_each_chunk_of(row, [&](const PlaneRun& run) {
            source.get_pixels(run.row, run.column, {colors.data(), run.count}, kWriter);
            encode_row(PixelFormat::rgb24, colors.data(), plane + run.color_offset(), run.count);
        });
    });
    finish_streaming(mode);
}

void PrivReadColorPlane(const std::uint8_t* plane, std::int32_t width, std::int32_t height, TRV_Picture& result) {
    static constexpr IndexColors kNoIndexColors{};
    Chunk colors;
    for_each_common_row(result, width, height, [&](const PlaneRun& row) {
        if (std::uint8_t* const words = result.words_at(row.row, 0))
            return unpack_words(plane + row.color_offset(), words, row.count, result.store_mode());
        for_each_chunk_of(row, [&](const PlaneRun& run) {
            decode_row(PixelFormat::rgb24, plane + run.color_offset(), colors.data(), run.count, kNoIndexColors);
            result.set_pixels(run.row, run.column, {colors.data(), run.count}, kReader);
        });
    });
}

void PrivWriteMaskPlane(const TRV_Picture& mask, std::uint8_t* plane, std::int32_t width, std::int32_t height) {
    Chunk colors;
    for_each_common_chunk(mask, width, height, [&](const PlaneRun& run) {
        mask.get_pixels(run.row, run.column, {colors.data(), run.count}, kWriter);
        red_row(colors.data(), plane + run.first, run.count);
    });
}

void PrivReadMaskPlane(const std::uint8_t* plane, std::int32_t width, std::int32_t height, TRV_Picture& mask) {
    Chunk colors;
    for_each_common_chunk(mask, width, height, [&](const PlaneRun& run) {
        grey_row(plane + run.first, colors.data(), run.count);
        mask.set_pixels(run.row, run.column, {colors.data(), run.count}, kReader);
    });
}

REALstringStruct* TRV_ConvertToString(REALpictureStruct* p) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return nullptr;
    const PictureStringHeader header = {static_cast<std::uint32_t>(source.width()),
                                        static_cast<std::uint32_t>(source.height()),
                                        static_cast<std::uint16_t>(source.depth()), source.HasMask()};
    if (header.length() > kLongestString) return nullptr;
    const auto length = static_cast<std::size_t>(header.length());
    const std::unique_ptr<std::uint8_t[]> bytes(new (std::nothrow) std::uint8_t[length]);
    if (!bytes) return nullptr;
    header.write(bytes.get());
    PrivWriteColorPlane(source, bytes.get() + PictureStringHeader::kBytes, source.width(), source.height());
    if (header.hasMask) write_mask(source, {bytes.get() + header.mask_offset(), bytes.get() + length});
    return REALBuildString(reinterpret_cast<const char*>(bytes.get()), static_cast<int>(length));
}

// A nil string gives a code that has no message of its own.
REALpictureStruct* TRV_ConvertToPicture(REALstringStruct* s) {
    clear_error();
    if (!s) return fail(ErrorCode::string_nil);
    REALLockString(s);
    const HostReference<REALstringStruct> string(s);
    const std::span bytes = bytes_of(s);
    const PictureStringHeader header = valid_header(bytes);
    // Strings can have depths and sides that no new picture has; 8 bits is such a depth.
    TRV_Picture result(static_cast<long>(header.width), static_cast<long>(header.height), header.depth, kHandOver);
    if (!result.Lock()) return nullptr;
    HostReference<REALpictureStruct> made(result.picture());
    const auto width = static_cast<std::int32_t>(header.width), height = static_cast<std::int32_t>(header.height);
    PrivReadColorPlane(bytes.data() + PictureStringHeader::kBytes, width, height, result);
    if (header.hasMask) read_mask(bytes.data() + header.mask_offset(), width, height, result);
    return made.release();
}
