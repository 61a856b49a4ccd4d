// Exif blocks: whatever is told lies within the block, and can be patched where it is said to stand.

#include <vector>

#include "exif.h"
#include "fuzz_check.h"

using namespace tarvo::host;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> block(data, data + size);
    const Exif exif = read_exif(block);
    FUZZ_CHECK(exif.shown_orientation() >= 1 && exif.shown_orientation() <= 8);
    for (const auto* number : {&exif.orientation, &exif.resolution_unit, &exif.width, &exif.height, &exif.camera_width,
                               &exif.camera_height, &exif.thumbnail_link})
        FUZZ_CHECK(!*number || (*number)->place + static_cast<std::size_t>((*number)->bytes) <= size);
    for (const auto* fraction : {&exif.x_resolution, &exif.y_resolution})
        FUZZ_CHECK(!*fraction || (*fraction)->place + 8 <= size);
    for (const auto* ranges : {&exif.thumbnail, &exif.others})
        for (const ExifRange& range : *ranges) FUZZ_CHECK(range.place <= size && range.size <= size - range.place);
    // Directories may overlap the numbers: anything may come of it but a crash.
    make_exif_true(block, 640, 480);
    FUZZ_CHECK(block.size() == size);
    static_cast<void>(read_exif(block));
    return 0;
}
