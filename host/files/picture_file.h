#pragma once

// Pictures from and to files: PNG, JPEG, TIFF, WebP, PBM, PGM, PPM, PAM.

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "carried.h"
#include "compression.h"
#include "file_error.h"
#include "file_writer.h"
#include "host.h"

namespace tarvo::host {

struct ReadOptions {
    // Makes 1-bit and 8-bit pictures of files that are black and white, grey or have a palette. Otherwise every file
    // gives a 32-bit picture.
    bool keep_depth = false;
    // Makes colours those of sRGB, by the file's profile.
    bool srgb = false;
    // Which smaller sizes a JPEG file may be decoded in.
    DraftRule draft = {};
    // More are refused, however few bytes they take in the file.
    std::uint64_t max_pixels = std::uint64_t{1} << 28;
    // Called when the file is a pipe that nobody writes to yet, which is then waited for.
    std::function<void()> on_wait = {};
    // Called every few kilobytes. What it throws ends the reading.
    std::function<void()> on_block = {};
};

struct WriteReport {
    FilePixels pixels;                  // the file's
    bool mask_left_out = false;         // the format has no transparency: the picture is as it looks without its mask
    Losses losses;                      // of what was carried
    std::vector<std::string> not_kept;  // of the file that was replaced, as FileWriter::commit tells it
};

struct WriteOptions {
    // 1 to 100. None: that of the JPEG file the picture comes from, or 92; of a WebP file, nothing is lost.
    std::optional<int> quality = {};
    Compression compression = Compression::normal;
    PartFileWatch* watch = nullptr;    // told of the part file
    std::uint32_t strip = 0;           // kinds of metadata that the file is not to have
    const Carried* carried = nullptr;  // what the picture's file had; its pixels are to be so again, if that loses
                                       // nothing: see PictureSource
    // Called when all is written, before the file takes its name; `not_kept` is not known by then. What it throws ends
    // the writing, as an error would.
    std::function<void(const WriteReport&)> on_report = {};
    // Called for every row, and every few kilobytes. What it throws likewise.
    std::function<void()> on_block = {};
};

// A graphics world. Transparency becomes its mask: 0 where the file is opaque, 255 where it is clear. The format is
// told by the content; `carried` gets what else the file had. Throws FileError.
ObjectRef read_picture_file(Host& host, const std::string& path, const ReadOptions& options = {},
                            Carried* carried = nullptr);
// As `read_picture_file`; the message of a FileError names no file.
ObjectRef decode_picture(Host& host, std::span<const std::uint8_t> file, const ReadOptions& options = {},
                         Carried* carried = nullptr);

// In the format that the name's ending says: .png .jpg .jpeg .tif .tiff .webp .pbm .pgm .ppm .pam. An existing file is
// replaced when the new one is complete; after an error it is as it was. PNG, TIFF, WebP and PAM keep the mask as
// alpha, PNG and TIFF depths up to 8 bits, JPEG and PAM greys. Throws FileError.
WriteReport write_picture_file(const Picture& picture, const std::string& path, const WriteOptions& options = {});
// The bytes of such a file; of `name` only the ending counts. `report` gets what is to be told of it.
Bytes encode_picture(const Picture& picture, const std::string& name, const WriteOptions& options = {},
                     WriteReport* report = nullptr);

// Throws FileError when no picture can be written to that path, because of its ending or of what is there, as far as
// that shows before anything is written. `own_ending`: one that the caller knows how to write.
void check_output(const std::string& path, std::string_view own_ending = {});

}  // namespace tarvo::host
