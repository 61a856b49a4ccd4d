#include "pixel_runs.h"

#include "row_clones.h"
#include "rows.h"
#include "stored_words.h"

namespace tarvo::plugin {
namespace {

// Calls `visit(done, count)` for the pieces of a run that is written from `column` on. Pieces end at multiples of
// kChunkPixels, counted in the picture, so that no cache line is written in two pieces.
template <class Visit>
void for_each_run_piece(std::int32_t column, std::int32_t count, Visit visit) {
    for (std::int32_t done = 0; done < count;) {
        const std::int32_t piece = std::min(kChunkPixels - (column + done) % kChunkPixels, count - done);
        visit(done, static_cast<std::size_t>(piece));
        done += piece;
    }
}

TARVO_ROW_CLONES void reverse_row(const PixelColor* colors, PixelColor* reversed, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) reversed[x] = colors[count - 1 - x];
}

// Moves the stored pixels of a run with `move`. Returns false if they are not 32-bit words in both pictures.
template <class Move>
bool move_stored(const TRV_Picture& source, Place from, TRV_Picture& result, Place to, std::int32_t count, Move move) {
    const std::uint8_t* const words = source.words_at(from.row, from.column);
    std::uint8_t* const out = result.words_at(to.row, to.column);
    if (!words || !out) return false;
    move(words, out, static_cast<std::size_t>(count), result.store_mode());
    return true;
}

}  // namespace

bool rows_are_words(const TRV_Picture& picture, std::int32_t first, std::int32_t end) {
    for (std::int32_t row = first; row < end; ++row)
        if (!picture.words_at(row, 0)) return false;
    return true;
}

void copy_run(const TRV_Picture& source, Place from, TRV_Picture& result, Place to, std::int32_t count,
              const char* caller, const RunAccess& access) {
    if (count <= 0 || move_stored(source, from, result, to, count, copy_words)) return;
    Chunk colors;
    for_each_run_piece(to.column, count, [&](std::int32_t done, std::size_t pixels) {
        const std::span run(colors.data(), pixels);
        (source.*access.read)(from.row, from.column + done, run, caller);
        (result.*access.write)(to.row, to.column + done, run, caller);
    });
}

void copy_run_whole(const TRV_Picture& source, TRV_Picture& result, Place at, std::int32_t count, const char* caller) {
    if (source.depth() != 16 || result.depth() != 16) return copy_run(source, at, result, at, count, caller);
    const auto address = [at](const TRV_Picture& picture) -> void* {
        std::uint8_t* const start = picture.row_start(at.row);
        return start ? start + static_cast<std::ptrdiff_t>(at.column) * picture.bytesPerPixel() : nullptr;
    };
    void *from = address(source), *to = address(result);
    source.CopyPixels(result, &from, &to, count, caller);
}

void mirror_run(const TRV_Picture& source, Place from, TRV_Picture& result, Place to, std::int32_t count,
                const char* caller, const RunAccess& access) {
    if (count <= 0 || move_stored(source, from, result, to, count, mirror_words)) return;
    Chunk colors, reversed;
    for_each_run_piece(to.column, count, [&](std::int32_t done, std::size_t pixels) {
        const std::int32_t column = from.column + count - done - static_cast<std::int32_t>(pixels);
        (source.*access.read)(from.row, column, std::span(colors.data(), pixels), caller);
        reverse_row(colors.data(), reversed.data(), pixels);
        (result.*access.write)(to.row, to.column + done, std::span(reversed.data(), pixels), caller);
    });
}

void fill_run(TRV_Picture& result, Place to, std::int32_t count, PixelColor color, const char* caller) {
    Chunk colors;
    std::fill_n(colors.begin(), std::clamp(count, 0, kChunkPixels), color);
    for_each_run_piece(to.column, count, [&](std::int32_t done, std::size_t pixels) {
        result.set_pixels(to.row, to.column + done, std::span(colors.data(), pixels), caller);
    });
}

void copy_region(const TRV_Picture& source, TRV_Picture& result, const Region& part, const char* caller) {
    for (std::int32_t row = part.top; row <= part.bottom; ++row)
        copy_run(source, {row, part.left}, result, {row, part.left}, part.right - part.left + 1, caller);
}

void copy_around(const TRV_Picture& source, TRV_Picture& result, const Region& part, const char* caller) {
    const std::int32_t last_column = source.width() - 1, last_row = source.height() - 1;
    copy_region(source, result, {0, 0, last_column, part.top - 1}, caller);
    copy_region(source, result, {0, part.top, part.left - 1, part.bottom}, caller);
    copy_region(source, result, {part.right + 1, part.top, last_column, part.bottom}, caller);
    copy_region(source, result, {0, part.bottom + 1, last_column, last_row}, caller);
}

}  // namespace tarvo::plugin
