#pragma once

// Pictures and files made by hand.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "host.h"
#include "picture_file.h"
#include "pixels.h"
#include "temporary_folder.h"

namespace tarvo::host {

using FileBytes = std::vector<std::uint8_t>;
using Folder = test::TemporaryFolder;

inline FileBytes bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

inline FileBytes operator+(FileBytes left, const FileBytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Picture& picture_in(const ObjectRef& reference) { return dynamic_cast<Picture&>(*reference.get()); }

// All stored bytes, without padding.
inline FileBytes stored_bytes(const ObjectRef& reference) {
    const Picture& picture = picture_in(reference);
    FileBytes bytes;
    for (int y = 0; y < picture.height(); ++y)
        bytes.insert(bytes.end(), picture.row(y), picture.row(y) + picture.packed_row_bytes());
    return bytes;
}

// Every pixel's colour 0x00RRGGBB, row by row.
inline std::vector<std::uint32_t> colors_of(const ObjectRef& reference) {
    const Picture& picture = picture_in(reference);
    std::vector<std::uint32_t> colors;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            colors.push_back(
                color_of(load_pixel(picture.row(y), x, picture.depth()), picture.depth(), picture.colors()));
    return colors;
}

inline ObjectRef random_picture(Host& host, const PictureOptions& options, unsigned seed) {
    ObjectRef made = host.new_picture(options);
    std::mt19937 random(seed);
    Picture& picture = picture_in(made);
    for (int y = 0; y < picture.height(); ++y)
        for (std::size_t i = 0; i < picture.packed_row_bytes(); ++i)
            picture.row(y)[i] = static_cast<std::uint8_t>(random());
    return made;
}

// The message of the FileError that `work` throws; empty when it throws none.
template <class Work>
std::string file_error(Work work) {
    try {
        work();
    } catch (const FileError& error) {
        return error.what();
    }
    return "";
}

inline void write_bytes(const std::string& path, const FileBytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(file));
}

inline FileBytes read_bytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class FilesTest : public testing::Test {
protected:
    ObjectRef decode(const FileBytes& file) { return decode_picture(host, file); }
    ObjectRef decode_keeping(const FileBytes& file) { return decode_picture(host, file, {.keep_depth = true}); }
    std::string error_of(const FileBytes& file) {
        return file_error([&] { decode(file); });
    }

    Host host;
};

}  // namespace tarvo::host
