// As the fuzzer of all picture files, for TIFF alone: whatever it is of, an input begins as such a file does. Exif that
// is gathered of its directories can be gathered again.

#include <algorithm>

#include "fuzz_check.h"
#include "picture_round_trip.h"
#include "tiff_directory.h"
#include "tiff_metadata.h"

namespace {

void check_directories(std::span<const std::uint8_t> file) {
    using namespace tarvo::host;
    Losses losses;
    const MemoryPlaces places(file);
    const Metadata found = metadata_of_tiff(places, losses);
    static_cast<void>(profile_of_tiff(places));
    if (found.exif.empty()) return;
    const MemoryPlaces block(found.exif);
    TiffDirectories directories(block);
    FUZZ_CHECK(directories.is_tiff() && directories.read(directories.first()));
    static_cast<void>(metadata_of_tiff(block, losses));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint8_t kMarks[][4] = {{'I', 'I', 42, 0}, {'M', 'M', 0, 42}};
    std::vector<std::uint8_t> file(data, data + size);
    if (size > 4 && file[0] != 'I' && file[0] != 'M') std::ranges::copy(kMarks[size % 2], file.begin());
    check_directories(file);
    tarvo::fuzz::check_picture_file(file);
    return 0;
}
