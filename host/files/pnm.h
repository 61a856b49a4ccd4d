#pragma once

// PBM, PGM, PPM (plain and binary) and PAM files.

#include "format.h"

namespace tarvo::host {

Image decode_pnm(std::span<const std::uint8_t> file, const Limits& limits);
Image decode_pam(std::span<const std::uint8_t> file, const Limits& limits);

Bytes encode_pbm(const Image& image, const EncodeOptions& options);  // luma below 128 is black
Bytes encode_pgm(const Image& image, const EncodeOptions& options);  // luma
Bytes encode_ppm(const Image& image, const EncodeOptions& options);
Bytes encode_pam(const Image& image, const EncodeOptions& options);  // the smallest tuple type that holds all

}  // namespace tarvo::host
