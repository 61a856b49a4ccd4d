#include "jpeg_making.h"

#include <cstdlib>
#include <iterator>
#include <limits>
#include <new>
#include <numeric>

#include "jpeg_errors.h"

namespace tarvo::host {

namespace {

long sum_of(const JQUANT_TBL* table) {
    return table ? std::accumulate(std::begin(table->quantval), std::end(table->quantval), 0L) : 0;
}

const JQUANT_TBL* table_of(const jpeg_decompress_struct& file, int component) {
    const auto number = static_cast<unsigned>(file.comp_info[component].quant_tbl_no);
    return number < NUM_QUANT_TBLS ? file.quant_tbl_ptrs[number] : nullptr;
}

// Compares the file's steps, all together, with those of the library's own tables, one quality after the other. Returns
// 0 when there is no memory.
int nearest_quality(const JQUANT_TBL* luma, const JQUANT_TBL* chroma) {
    const long wanted = sum_of(luma) + sum_of(chroma);
    JpegErrors errors;
    jpeg_compress_struct maker = {};
    maker.err = &errors.manager;
    // What has changed since `setjmp` is not read behind the jump.
    if (setjmp(errors.target)) {
        jpeg_destroy_compress(&maker);
        return 0;
    }
    jpeg_create_compress(&maker);
    int nearest = 0;
    long least = std::numeric_limits<long>::max();
    for (int quality = 100; quality >= 1; --quality) {
        jpeg_set_quality(&maker, quality, TRUE);
        const long far =
            std::labs(sum_of(maker.quant_tbl_ptrs[0]) + (chroma ? sum_of(maker.quant_tbl_ptrs[1]) : 0) - wanted);
        if (far >= least) continue;
        least = far;
        nearest = quality;
    }
    jpeg_destroy_compress(&maker);
    return nearest;
}

bool is_factor(int number) { return number == 1 || number == 2 || number == 4; }

}  // namespace

JpegMaking making_of(const jpeg_decompress_struct& file) {
    const bool colored = file.jpeg_color_space == JCS_YCbCr;
    JpegMaking making{nearest_quality(table_of(file, 0), colored ? table_of(file, 1) : nullptr)};
    if (making.quality == 0) throw std::bad_alloc();
    if (!colored) return making;
    const jpeg_component_info &luma = file.comp_info[0], &blue = file.comp_info[1], &red = file.comp_info[2];
    const int across = luma.h_samp_factor / blue.h_samp_factor, down = luma.v_samp_factor / blue.v_samp_factor;
    const bool usual = across * blue.h_samp_factor == luma.h_samp_factor &&
                       down * blue.v_samp_factor == luma.v_samp_factor && blue.h_samp_factor == red.h_samp_factor &&
                       blue.v_samp_factor == red.v_samp_factor && is_factor(across) && is_factor(down);
    // Ten blocks make the largest unit: two of them are colours.
    if (usual && across * down <= 8) {
        making.across = across;
        making.down = down;
    }
    return making;
}

}  // namespace tarvo::host
