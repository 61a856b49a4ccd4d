// Exif blocks: whatever is told lies within the block, and can be patched where it is said to stand.

#include <vector>

#include "exif.h"
#include "fuzz_check.h"

using namespace tarvo::host;

namespace {

void patch(std::vector<std::uint8_t>& block, const ExifNumber& number, std::uint32_t value, bool big_endian) {
    for (int i = 0; i < number.bytes; ++i)
        block[number.place + static_cast<std::size_t>(big_endian ? number.bytes - 1 - i : i)] =
            static_cast<std::uint8_t>(value >> 8 * i);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> block(data, data + size);
    const Exif exif = read_exif(block);
    FUZZ_CHECK(exif.shown_orientation() >= 1 && exif.shown_orientation() <= 8);
    for (const auto* number : {&exif.orientation, &exif.resolution_unit, &exif.width, &exif.height, &exif.camera_width,
                               &exif.camera_height, &exif.thumbnail_link})
        FUZZ_CHECK(!*number || (*number)->place + static_cast<std::size_t>((*number)->bytes) <= size);
    for (const auto* fraction : {&exif.x_resolution, &exif.y_resolution})
        FUZZ_CHECK(!*fraction || (*fraction)->place + 8 <= size);
    FUZZ_CHECK(!exif.thumbnail || exif.thumbnail->place + exif.thumbnail->size <= size);
    if (exif.orientation && exif.orientation->place >= 8) {
        patch(block, *exif.orientation, 7, exif.big_endian);
        static_cast<void>(read_exif(block));  // directories may overlap the number: anything may come of it but a crash
    }
    return 0;
}
