#include <algorithm>
#include <cstring>

#include "picture.h"
#include "pixel_blocks.h"

namespace tarvo::plugin {
namespace {

// Returns a running address and moves it on.
std::uint8_t* take(void** address, std::ptrdiff_t bytes) {
    auto* const here = static_cast<std::uint8_t*>(*address);
    *address = here + bytes;
    return here;
}

void copy_stored(void** source, void** target, long count, int bytesPerPixel) {
    const std::size_t bytes = static_cast<std::size_t>(count) * bytesPerPixel;
    const std::uint8_t* const from = take(source, static_cast<std::ptrdiff_t>(bytes));
    std::memmove(take(target, static_cast<std::ptrdiff_t>(bytes)), from, bytes);
}

// Converts mask values as they are stored. The rules are not each other's inverses (a level that goes from 32 bits to 8
// comes back 8 times as dark), and existing pictures depend on them.
template <class From, class To, class Rule>
void convert_levels(void** source, void** target, long count, Rule rule) {
    for (long i = 0; i < count; ++i) {
        const auto value = load_big_endian<From>(take(source, sizeof(From)));
        store_big_endian<To>(take(target, sizeof(To)), static_cast<To>(rule(std::uint32_t{value})));
    }
}

constexpr std::uint32_t five_bit_level_of_word(std::uint32_t s) { return s >> 19 & 31; }
constexpr std::uint32_t byte_level_of_555(std::uint32_t s) { return s >> 7 & 0xF8; }
constexpr std::uint32_t in_all_three_fields(std::uint32_t level) { return level * 0x421; }

constexpr int depths(int source, int target) { return source << 8 | target; }

using RowCopy = void (TRV_Picture::*)(TRV_Picture&, void**, void**, long, const char*) const;

void copy_rows_by(RowCopy copy, const TRV_Picture& source, TRV_Picture& destination, const char* caller) {
    const std::int32_t width = std::min(source.width(), destination.width());
    const std::int32_t height = std::min(source.height(), destination.height());
    for (std::int32_t row = 0; row < height; ++row) {
        void* from = source.row_start(row);
        void* to = destination.row_start(row);
        (source.*copy)(destination, &from, &to, width, caller);
    }
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

unsigned long TRV_Picture::GetPixel(const void* address, const char*) const {
    return address ? load_pixel(format_, static_cast<const std::uint8_t*>(address), 0, indexColors_) : 0;
}

unsigned long TRV_Picture::GetPixel(const void* address, long bit, long depth, const char*) const {
    if (!address) return 0;
    const PixelFormat format = format_at(depth, Addressing::single_bits);
    return load_pixel(format, static_cast<const std::uint8_t*>(address), bit, indexColors_);
}

unsigned long TRV_Picture::GetPixel(long row, long column, const char* caller) const {
    const std::uint8_t* const start = row_start(row);
    return start ? GetPixel(start + static_cast<std::ptrdiff_t>(column) * bytesPerPixel_, caller) : 0;
}

void TRV_Picture::SetPixel(void* address, unsigned long color, const char*) {
    if (address) store_pixel(format_, static_cast<std::uint8_t*>(address), 0, static_cast<PixelColor>(color));
}

void TRV_Picture::SetPixel(void* address, long bit, unsigned long color, long depth, const char*) {
    if (!address) return;
    const PixelFormat format = format_at(depth, Addressing::single_bits);
    store_pixel(format, static_cast<std::uint8_t*>(address), bit, static_cast<PixelColor>(color));
}

void TRV_Picture::SetPixel(long row, long column, unsigned long color, const char* caller) {
    std::uint8_t* const start = row_start(row);
    if (start) SetPixel(start + static_cast<std::ptrdiff_t>(column) * bytesPerPixel_, color, caller);
}

void TRV_Picture::get_pixels(long row, long column, std::span<PixelColor> colors, const char*) const {
    const std::uint8_t* const start = row_start(row);
    if (!start)
        std::ranges::fill(colors, 0);
    else if (bytesPerPixel_ == 0)  // every column has the address of the row's first pixel
        std::ranges::fill(colors, load_pixel(format_, start, 0, indexColors_));
    else
        decode_row(format_, start + static_cast<std::ptrdiff_t>(column) * bytesPerPixel_, colors.data(), colors.size(),
                   indexColors_);
}

void TRV_Picture::set_pixels(long row, long column, std::span<const PixelColor> colors, const char*) {
    std::uint8_t* const start = row_start(row);
    if (!start || colors.empty()) return;
    if (bytesPerPixel_ == 0) {  // every column has the same address, where the last pixel stays
        store_pixel(format_, start, 0, colors.back());
        return;
    }
    std::uint8_t* const first = start + static_cast<std::ptrdiff_t>(column) * bytesPerPixel_;
    encode_row(format_, colors.data(), first, colors.size(), store_mode());
}

bool TRV_Picture::same_colors(const TRV_Picture& other, long row, long column, std::size_t count,
                              const char* caller) const {
    const std::uint8_t* const here = row_start(row);
    const std::uint8_t* const there = other.row_start(row);
    const bool side_by_side = bytesPerPixel_ == bytes_of(format_) && bytesPerPixel_ == other.bytesPerPixel_;
    if (here && there && format_ == other.format_ && side_by_side) {
        const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(column) * bytesPerPixel_;
        return rows_agree(format_, here + offset, there + offset, count, indexColors_, other.indexColors_);
    }
    for (long end = column + static_cast<long>(count); column < end; ++column)
        if ((GetPixel(row, column, caller) ^ other.GetPixel(row, column, caller)) & 0xFFFFFF) return false;
    return true;
}

void TRV_Picture::prefetch(long row, long column, std::size_t count) const {
    const std::uint8_t* const start = row_start(row);
    if (!start) return;
    const std::uint8_t* const first = start + static_cast<std::ptrdiff_t>(column) * bytesPerPixel_;
    for (std::size_t byte = 0; byte < count * static_cast<std::size_t>(bytesPerPixel_); byte += kCacheLine)
        __builtin_prefetch(first + byte);
}

void TRV_Picture::get_pixel_bits(long row, long column, std::span<PixelColor> colors, const char* caller) const {
    const std::uint8_t* const start = row_start(row);
    if (bitsPerPixel_ == 0 || !start) return get_pixels(row, column, colors, caller);
    const PixelFormat format = format_at(depth_, Addressing::single_bits);
    std::size_t bit = static_cast<std::size_t>(column) * bitsPerPixel_;
    for (PixelColor& color : colors) {
        color = load_pixel(format, start + bit / 8, static_cast<long>(bit % 8), indexColors_);
        bit += bitsPerPixel_;
    }
}

void TRV_Picture::set_pixel_bits(long row, long column, std::span<const PixelColor> colors, const char* caller) {
    std::uint8_t* const start = row_start(row);
    if (bitsPerPixel_ == 0 || !start) return set_pixels(row, column, colors, caller);
    const PixelFormat format = format_at(depth_, Addressing::single_bits);
    std::size_t bit = static_cast<std::size_t>(column) * bitsPerPixel_;
    for (const PixelColor color : colors) {
        store_pixel(format, start + bit / 8, static_cast<long>(bit % 8), color);
        bit += bitsPerPixel_;
    }
}

void TRV_Picture::CopyPixels(TRV_Picture& destination, void** source, void** target, long count,
                             const char* caller) const {
    if (!*source || !*target || count <= 0) return;
    if (depth_ == destination.depth_ && (depth_ == 16 || depth_ == 32))
        return copy_stored(source, target, count, bytesPerPixel_);
    for (long i = 0; i < count; ++i) {
        const unsigned long color = GetPixel(take(source, bytesPerPixel_), caller);
        destination.SetPixel(take(target, destination.bytesPerPixel_), color, caller);
    }
}

void TRV_Picture::CopyMaskPixels(TRV_Picture& destination, void** source, void** target, long count,
                                 const char* caller) const {
    using Byte = std::uint8_t;
    using Half = std::uint16_t;
    using Word = std::uint32_t;
    if (!*source || !*target || count <= 0) return;
    switch (depths(depth_, destination.depth_)) {
        case depths(32, 32):
        case depths(16, 16):
        case depths(8, 8): return copy_stored(source, target, count, bytesPerPixel_);
        case depths(32, 16):
            return convert_levels<Word, Half>(source, target, count,
                                              [](Word s) { return in_all_three_fields(five_bit_level_of_word(s)); });
        case depths(32, 8): return convert_levels<Word, Byte>(source, target, count, five_bit_level_of_word);
        case depths(16, 32):
            return convert_levels<Half, Word>(source, target, count, [](Word s) { return grey(byte_level_of_555(s)); });
        case depths(16, 8): return convert_levels<Half, Byte>(source, target, count, byte_level_of_555);
        case depths(8, 32): return convert_levels<Byte, Word>(source, target, count, grey);
        case depths(8, 16): return convert_levels<Byte, Half>(source, target, count, in_all_three_fields);
        default: return CopyPixels(destination, source, target, count, caller);
    }
}

namespace tarvo::plugin {

void copy_rows(const TRV_Picture& source, TRV_Picture& destination, const char* caller) {
    copy_rows_by(&TRV_Picture::CopyPixels, source, destination, caller);
}

void copy_mask_rows(const TRV_Picture& source, TRV_Picture& destination, const char* caller) {
    copy_rows_by(&TRV_Picture::CopyMaskPixels, source, destination, caller);
}

}  // namespace tarvo::plugin
