#include "memory_block.h"

#include <cstddef>
#include <cstring>
#include <limits>

#include "error_state.h"
#include "forms.h"
#include "host_reference.h"
#include "pixel_blocks.h"
#include "row_clones.h"
#include "rows.h"

namespace tarvo::plugin {
namespace {

// Elements are copied byte by byte, because the host may align a block in any way.
template <class Element>
[[gnu::always_inline]] inline void store_element(std::uint8_t* bytes, std::size_t index, PixelColor value) {
    const auto element = static_cast<Element>(value);
    std::memcpy(bytes + index * sizeof element, &element, sizeof element);
}

TARVO_ROW_CLONES void store_555_row(const PixelColor* __restrict colors, std::uint8_t* __restrict bytes,
                                    std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) store_element<std::uint16_t>(bytes, x, Rgb555::reduce(colors[x]));
}

TARVO_ROW_CLONES void store_rgb_row(const PixelColor* __restrict colors, std::uint8_t* __restrict bytes,
                                    std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) store_element<std::uint32_t>(bytes, x, colors[x] & 0xFFFFFF);
}

// Makes the colour that, stored as a 32-bit pixel, has the bytes of the element wanted.
struct AsElement {
    TARVO_INLINED PixelColor operator()(PixelColor color) const { return big_endian(color & 0xFFFFFF); }
};

std::size_t element_bytes(const TRV_Picture& source) {
    return result_depth(source) == 16 ? sizeof(std::uint16_t) : sizeof(std::uint32_t);
}

HostReference<REALmemoryBlockStruct> new_block(std::int64_t size) {
    const bool fits = size <= std::numeric_limits<std::int32_t>::max();
    return HostReference<REALmemoryBlockStruct>(fits ? REALNewMemoryBlock(static_cast<int>(size)) : nullptr);
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivMakeMemoryBlock(const TRV_Picture& source, const Region& region, std::uint8_t* bytes) {
    const std::size_t size = element_bytes(source);
    const auto store_row = size == sizeof(std::uint16_t) ? store_555_row : store_rgb_row;
    const auto width = static_cast<std::size_t>(region.right - region.left + 1);
    const StoreMode mode = store_mode_for(static_cast<std::int64_t>(width * size) * (region.bottom - region.top + 1));
    Chunk colors;
    for (std::int32_t row = region.top; row <= region.bottom; ++row, bytes += width * size) {
        if (const std::uint8_t* const words = source.words_at(row, region.left)) {
            map_xrgb32_run(bytes, mode, width, AsElement{}, words);
            continue;
        }
        for_each_chunk(region.left, region.right, [&](std::int32_t column, std::size_t count) {
            source.get_pixels(row, column, {colors.data(), count}, "TRV_MakeMemoryBlock");
            store_row(colors.data(), bytes + static_cast<std::size_t>(column - region.left) * size, count);
        });
    }
    finish_streaming(mode);
}

REALmemoryBlockStruct* TRV_MakeMemoryBlock(REALpictureStruct* p, REALobjectStruct* rect, bool /*mask_to_alpha*/,
                                           int* row_bytes) {
    clear_error();
    if (row_bytes) *row_bytes = 0;
    if (!p) return fail(ErrorCode::source_nil);
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    const Region region = select_region(source, rect);
    if (region.empty()) return fail(ErrorCode::selection);
    // The mask is asked for and not used, and neither is the flag: the bits above the colours are 0.
    source.HasMask();

    const std::int64_t bytes_of_row = std::int64_t{region.right - region.left + 1} * element_bytes(source);
    HostReference<REALmemoryBlockStruct> block = new_block(bytes_of_row * (region.bottom - region.top + 1));
    auto* const bytes = block ? static_cast<std::uint8_t*>(REALMemoryBlockGetPtr(block.get())) : nullptr;
    if (!bytes) return nullptr;
    PrivMakeMemoryBlock(source, region, bytes);
    if (row_bytes) *row_bytes = static_cast<int>(bytes_of_row);
    return block.release();
}
