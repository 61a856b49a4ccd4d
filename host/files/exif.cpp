#include "exif.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace tarvo::host {

namespace {

constexpr std::uint8_t kExifMark[] = {'E', 'x', 'i', 'f', 0, 0};
// More than any JPEG file can hold; the orientation stands near the beginning.
constexpr std::size_t kMostBytes = 65536;

struct Unref {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

}  // namespace

int exif_orientation(std::span<const std::uint8_t> tiff) {
    const std::unique_ptr<ExifData, Unref> data(exif_data_new());
    if (!data) return 1;
    // Otherwise the library would put entries right that are wrong, and an orientation could appear.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);

    std::vector<std::uint8_t> marked(std::begin(kExifMark), std::end(kExifMark));
    const auto head = tiff.first(std::min(tiff.size(), kMostBytes));
    marked.insert(marked.end(), head.begin(), head.end());
    exif_data_load_data(data.get(), marked.data(), static_cast<unsigned>(marked.size()));

    const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->components < 1 || entry->size < 2) return 1;
    const int orientation = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

}  // namespace tarvo::host
