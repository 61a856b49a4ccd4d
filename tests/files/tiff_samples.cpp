#include "tiff_samples.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <cstring>

namespace tarvo::host {

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Written {
    Bytes bytes;
    std::size_t place = 0;

    static Written& of(thandle_t handle) { return *static_cast<Written*>(handle); }
    static tmsize_t read(thandle_t handle, void* out, tmsize_t count) {
        Written& self = of(handle);
        const std::size_t there = self.bytes.size() - std::min(self.bytes.size(), self.place);
        const std::size_t taken = std::min(there, static_cast<std::size_t>(count));
        if (taken > 0) std::memcpy(out, self.bytes.data() + self.place, taken);
        self.place += taken;
        return static_cast<tmsize_t>(taken);
    }
    static tmsize_t write(thandle_t handle, void* given, tmsize_t count) {
        Written& self = of(handle);
        const std::size_t end = self.place + static_cast<std::size_t>(count);
        self.bytes.resize(std::max(self.bytes.size(), end));
        std::memcpy(self.bytes.data() + self.place, given, static_cast<std::size_t>(count));
        self.place = end;
        return count;
    }
    static toff_t seek(thandle_t handle, toff_t place, int from) {
        Written& self = of(handle);
        const std::size_t start = from == SEEK_CUR ? self.place : from == SEEK_END ? self.bytes.size() : 0;
        return self.place = start + place;
    }
    static int close(thandle_t) { return 0; }
    static toff_t size(thandle_t handle) { return of(handle).bytes.size(); }
};

// Samples of a piece of the picture as the library wants them; beyond the picture they are 0.
Bytes piece(const TiffSample& sample, std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height,
            int plane) {
    Bytes packed;
    for (std::uint32_t y = top; y < top + height; ++y) {
        int byte = 0, used = 0;
        for (std::uint32_t x = left; x < left + width; ++x)
            for (int i = plane < 0 ? 0 : plane; i < (plane < 0 ? sample.samples : plane + 1); ++i) {
                const bool inside = x < sample.width && y < sample.height;
                const std::size_t index =
                    (std::size_t{y} * sample.width + x) * static_cast<std::size_t>(sample.samples);
                const std::uint16_t value = inside ? sample.values[index + static_cast<std::size_t>(i)] : 0;
                if (sample.bits == 16) {
                    std::uint8_t both[2];
                    std::memcpy(both, &value, 2);
                    packed.insert(packed.end(), both, both + 2);
                    continue;
                }
                byte = byte << sample.bits | value;
                used += sample.bits;
                if (used < 8) continue;
                packed.push_back(static_cast<std::uint8_t>(byte));
                byte = used = 0;
            }
        if (used > 0) packed.push_back(static_cast<std::uint8_t>(byte << (8 - used)));
    }
    return packed;
}

void write_page(TIFF* tiff, const TiffSample& sample) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, sample.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, sample.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, sample.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, sample.samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, sample.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, sample.compression);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, sample.planes ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, sample.orientation);
    if (sample.format != SAMPLEFORMAT_UINT) TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, sample.format);
    if (sample.ink_set != 0) TIFFSetField(tiff, TIFFTAG_INKSET, sample.ink_set);
    if (!sample.extras.empty())
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(sample.extras.size()), sample.extras.data());
    if (!sample.profile.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(sample.profile.size()),
                     sample.profile.data());
    if (const std::size_t third = sample.palette.size() / 3; third > 0)
        TIFFSetField(tiff, TIFFTAG_COLORMAP, sample.palette.data(), sample.palette.data() + third,
                     sample.palette.data() + 2 * third);
    if (sample.compression == COMPRESSION_JPEG && sample.photometric == PHOTOMETRIC_YCBCR)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    const int planes = sample.planes ? sample.samples : 1;
    if (sample.tile != 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, sample.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, sample.tile);
        for (int plane = 0; plane < planes; ++plane)
            for (std::uint32_t y = 0; y < sample.height; y += sample.tile)
                for (std::uint32_t x = 0; x < sample.width; x += sample.tile) {
                    Bytes tile = piece(sample, x, y, sample.tile, sample.tile, sample.planes ? plane : -1);
                    EXPECT_GE(TIFFWriteTile(tiff, tile.data(), x, y, 0, static_cast<std::uint16_t>(plane)), 0);
                }
        return;
    }
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, sample.rows_in_a_strip);
    for (int plane = 0; plane < planes; ++plane)
        for (std::uint32_t y = 0; y < sample.height; ++y) {
            Bytes row = piece(sample, 0, y, sample.width, 1, sample.planes ? plane : -1);
            EXPECT_EQ(TIFFWriteScanline(tiff, row.data(), y, static_cast<std::uint16_t>(plane)), 1);
        }
}

}  // namespace

std::vector<std::uint8_t> tiff_file(const TiffSample& sample) {
    Written written;
    TIFF* tiff = TIFFClientOpen("sample", ("w" + sample.mode).c_str(), &written, Written::read, Written::write,
                                Written::seek, Written::close, Written::size, nullptr, nullptr);
    for (int page = 0; page < sample.pages; ++page) {
        write_page(tiff, sample);
        if (page + 1 < sample.pages) TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
    return written.bytes;
}

}  // namespace tarvo::host
