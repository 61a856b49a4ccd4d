#include "pixel_runs.h"

namespace {

// Calls `visit(done, count)` for the pieces of a run that is written from `column` on. Pieces end where all rows' do, so
// that no cache line is written by two pieces.
template <class Visit>
void for_each_piece(std::int32_t column, std::int32_t count, Visit visit) {
    for (std::int32_t done = 0; done < count;) {
        const std::int32_t piece = std::min(kChunkPixels - (column + done) % kChunkPixels, count - done);
        visit(done, static_cast<std::size_t>(piece));
        done += piece;
    }
}

}  // namespace

void copy_run(const TRV_Picture& source, Place from, TRV_Picture& result, Place to, std::int32_t count,
              const char* caller) {
    Chunk colors;
    for_each_piece(to.column, count, [&](std::int32_t done, std::size_t pixels) {
        const std::span run(colors.data(), pixels);
        source.GetPixels(from.row, from.column + done, run, caller);
        result.SetPixels(to.row, to.column + done, run, caller);
    });
}

void fill_run(TRV_Picture& result, Place to, std::int32_t count, PixelColor color, const char* caller) {
    Chunk colors;
    std::fill_n(colors.begin(), std::clamp(count, 0, kChunkPixels), color);
    for_each_piece(to.column, count, [&](std::int32_t done, std::size_t pixels) {
        result.SetPixels(to.row, to.column + done, std::span(colors.data(), pixels), caller);
    });
}
