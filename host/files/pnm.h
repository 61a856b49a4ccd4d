#pragma once

// PBM, PGM, PPM (plain and binary) and PAM files.

#include "format.h"

namespace tarvo::host {

void decode_pnm(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target);
void decode_pam(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target);

FilePixels encode_pbm(const PixelSource& image, const EncodeOptions& options,
                      ByteSink& file);  // luma below 128 is black
FilePixels encode_pgm(const PixelSource& image, const EncodeOptions& options, ByteSink& file);  // luma
FilePixels encode_ppm(const PixelSource& image, const EncodeOptions& options, ByteSink& file);
FilePixels encode_pam(const PixelSource& image, const EncodeOptions& options,
                      ByteSink& file);  // the smallest tuple type that holds all

}  // namespace tarvo::host
