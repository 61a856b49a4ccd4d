// Metadata as segments of a JPEG file and as chunks of a PNG file: any bytes are taken, and what is made of them comes
// back the same. The input is a list of pieces: one byte of kind, two of length, so many bytes.

#include <algorithm>
#include <string_view>

#include "fuzz_check.h"
#include "image_resources.h"
#include "jpeg_markers.h"
#include "metadata.h"
#include "png_chunks.h"
#include "xmp.h"

using namespace tarvo::host;

namespace {

// What begins a segment or a chunk of metadata, so that inputs need not find it.
constexpr std::string_view kSegments[] = {{"Exif\0\0", 6},
                                          {"http://ns.adobe.com/xap/1.0/\0", 29},
                                          {"http://ns.adobe.com/xmp/extension/\0", 35},
                                          {"ICC_PROFILE\0", 12},
                                          {"Photoshop 3.0\0", 14},
                                          {"", 0}};
constexpr int kSegmentNumbers[] = {1, 1, 1, 2, 13, 1};
constexpr std::string_view kChunks[] = {"eXIf", "iCCP", "pHYs", "tEXt", "zTXt", "iTXt", "tEXt", "iTXt"};
constexpr std::string_view kChunkStarts[] = {{"", 0},
                                             {"icc\0\0", 5},
                                             {"", 0},
                                             {"Raw profile type iptc\0", 22},
                                             {"Raw profile type APP1\0\0", 23},
                                             {"XML:com.adobe.xmp\0", 18},
                                             {"Raw profile type exif\0\nexif\n", 28},
                                             {"", 0}};

Bytes joined(std::string_view start, std::span<const std::uint8_t> rest) {
    Bytes whole(start.begin(), start.end());
    whole.insert(whole.end(), rest.begin(), rest.end());
    return whole;
}

// What fits into a format comes back from it.
void check_written(const Metadata& found) {
    for (const bool grey : {false, true}) {
        Losses losses;
        Metadata jpeg = fitting(found, kJpegRoom, grey, losses);
        make_true(jpeg, 640, 480);
        JpegMarkers markers;
        for (const JpegMarker& marker : markers_of(jpeg)) {
            FUZZ_CHECK(marker.contents.size() <= 65533);
            markers.add(marker.number, marker.contents);
        }
        losses.clear();
        const Metadata jpeg_again = markers.finish(losses);
        FUZZ_CHECK(jpeg_again.exif == jpeg.exif && jpeg_again.xmp == jpeg.xmp && jpeg_again.icc == jpeg.icc);
        FUZZ_CHECK(jpeg_again.iptc == jpeg.iptc);

        Metadata png = fitting(found, kPngRoom, grey, losses);
        make_true(png, 640, 480);
        FUZZ_CHECK(png.xmp_extension.empty());
        PngChunks chunks;
        for (const PngChunk& chunk : chunks_of(png)) chunks.add(chunk.name, chunk.data);
        const Metadata png_again = chunks.finish(losses);
        FUZZ_CHECK(png_again.exif == png.exif && png_again.xmp == png.xmp && png_again.icc == png.icc);
        FUZZ_CHECK(png_again.iptc == png.iptc && png_again.resolution.has_value() == png.resolution.has_value());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    JpegMarkers markers;
    PngChunks chunks;
    std::span<const std::uint8_t> left(data, size);
    while (left.size() > 3) {
        const std::size_t kind = left[0];
        const std::size_t length = std::min<std::size_t>(std::size_t{left[1]} << 8 | left[2], left.size() - 3);
        const auto piece = left.subspan(3, length);
        left = left.subspan(3 + length);
        const std::size_t segment = kind % std::size(kSegments), chunk = kind % std::size(kChunks);
        if (kind < 128)
            markers.add(kSegmentNumbers[segment], joined(kSegments[segment], piece));
        else
            chunks.add(kChunks[chunk], joined(kChunkStarts[chunk], piece));
    }
    Losses losses;
    check_written(markers.finish(losses));
    check_written(chunks.finish(losses));
    const std::span<const std::uint8_t> whole(data, size);
    const Bytes resources = resources_in(whole);
    FUZZ_CHECK(own_resources(resources) == resources);
    static_cast<void>(iptc_records(whole));
    static_cast<void>(with_extension(whole, whole));
    return 0;
}
