// Files that ask for more than the host may take.

#include <gtest/gtest.h>

#include "file_samples.h"
#ifdef TARVO_PICTURE_LIBRARIES
#include "jpeg_samples.h"
#include "png_samples.h"
#endif

namespace tarvo::host {
namespace {

// The error of a file, read by a host that may take that many bytes; its limit is the one of memory.
std::string error_within(std::uint64_t max_memory, const FileBytes& file) {
    Host host({.limits = {.max_memory = max_memory}});
    const Accounts before = host.accounts();
    std::string message;
    try {
        decode_picture(host, file);
    } catch (const LimitedError& error) {
        EXPECT_EQ(error.limit(), Limit::memory);
        message = error.what();
    }
    EXPECT_EQ(host.accounts(), before);
    EXPECT_EQ(host.objects().bytes(), 0u);
    return message;
}

TEST(FileLimits, OfMemoryArePicturesWithTheirMasks) {
    const FileBytes opaque = bytes_of("P5 10 10 255 ") + FileBytes(100);
    EXPECT_EQ(error_within(400, opaque), "");
    EXPECT_EQ(error_within(399, opaque),
              "a picture of 10 x 10 pixels, 32 bits: 400 bytes, 0 are taken already, the limit is 399");
    const FileBytes clear = bytes_of("P7\nWIDTH 10\nHEIGHT 10\nDEPTH 2\nMAXVAL 255\nENDHDR\n") + FileBytes(200);
    EXPECT_EQ(error_within(800, clear), "");
    EXPECT_EQ(error_within(799, clear),
              "a picture of 10 x 10 pixels, 32 bits: 400 bytes, 400 are taken already, the limit is 799");
}

TEST(FileLimits, OfPixelsAreToldAsSuch) {
    Host host;
    try {
        decode_picture(host, bytes_of("P5 10 10 255 ") + FileBytes(100), {.max_pixels = 99});
        ADD_FAILURE();
    } catch (const FileError& error) {
        EXPECT_EQ(error.limit(), Limit::pixels);
    }
    EXPECT_EQ(
        file_error([&] { decode_picture(host, bytes_of("P5 10 10 255 ") + FileBytes(100), {.max_pixels = 100}); }), "");
}

#ifdef TARVO_PICTURE_LIBRARIES
// The library keeps a progressive file's coefficients: two bytes each, of whole blocks.
TEST(FileLimits, OfMemoryAreAJpegsCoefficients) {
    for (const bool progressive : {true, false})
        for (const bool separate_scans : {true, false}) {
            const FileBytes file =
                jpeg_file({20, 10, JpegColors::ycc, FileBytes(600), {}, progressive, !progressive && separate_scans});
            const bool kept = progressive || separate_scans;
            const std::uint64_t picture = 20 * 10 * 4, coefficients = kept ? 3 * (24 * 16) * 2 : 0;
            EXPECT_EQ(error_within(picture + coefficients, file), "");
            EXPECT_NE(error_within(picture + coefficients - 1, file), "");
        }
}

TEST(FileLimits, OfMemoryHoldForAPictureAndItsTurnedCopy) {
    const FileBytes file = png_file({.width = 10,
                                     .height = 1,
                                     .bit_depth = 8,
                                     .color_type = 0,
                                     .rows = FileBytes(11),
                                     .exif = exif_of_orientation(6),
                                     .exif_behind = true});
    EXPECT_EQ(error_within(80, file), "");
    EXPECT_EQ(error_within(79, file),
              "a picture of 1 x 10 pixels, 32 bits: 40 bytes, 40 are taken already, the limit is 79");
}
#endif

}  // namespace
}  // namespace tarvo::host
