#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "bulk_memory.h"
#include "byte_text.h"
#include "carried.h"
#include "exif.h"
#include "webp_codec.h"

namespace tarvo::host {

namespace {

constexpr std::size_t kHeadBytes = 8;  // "RIFF" and how many bytes follow
constexpr std::string_view kExifMark{"Exif\0\0", 6};

FileError damaged() { return FileError("damaged: not what a WebP file may have"); }

void require(VP8StatusCode status) {
    switch (status) {
        case VP8_STATUS_OK: return;
        case VP8_STATUS_OUT_OF_MEMORY: throw std::bad_alloc();
        case VP8_STATUS_NOT_ENOUGH_DATA: throw cut_short(0);
        default: throw damaged();
    }
}

// All of a file, whose start has been looked at.
class WholeFile {
public:
    WholeFile(ByteSource& file, PixelTarget& target) {
        std::uint8_t head[kHeadBytes];
        if (!file.read(head)) throw cut_short(0);
        size_ = kHeadBytes;
        for (std::size_t i = 0; i < 4; ++i) size_ += std::size_t{head[4 + i]} << 8 * i;
        if (const auto left = file.left(); left && *left < size_ - kHeadBytes) throw cut_short(0);
        target.check_memory(size_, "a WebP file");
        bytes_ = std::make_unique_for_overwrite<std::uint8_t[]>(size_);
        std::ranges::copy(head, bytes_.get());
        if (!file.read({bytes_.get() + kHeadBytes, size_ - kHeadBytes})) throw cut_short(0);
    }
    std::span<const std::uint8_t> bytes() const { return {bytes_.get(), size_}; }

private:
    std::size_t size_;
    std::unique_ptr<std::uint8_t[]> bytes_;
};

struct EndDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};

class WebpReader {
public:
    explicit WebpReader(const WholeFile& file) : file_(file) {
        const WebPData data{file.bytes().data(), file.bytes().size()};
        parts_.reset(WebPDemux(&data));
        if (!parts_ || !WebPDemuxGetFrame(parts_.get(), 1, &frame_)) throw damaged();
    }
    ~WebpReader() { WebPDemuxReleaseIterator(&frame_); }
    WebpReader(const WebpReader&) = delete;
    WebpReader& operator=(const WebpReader&) = delete;

    void read(const WebPBitstreamFeatures& features, PixelTarget& target) {
        form_.width = features.width;
        form_.height = features.height;
        const bool covers = frame_.width == form_.width && frame_.height == form_.height;
        const bool inside = frame_.x_offset >= 0 && frame_.width <= form_.width - frame_.x_offset &&
                            frame_.y_offset >= 0 && frame_.height <= form_.height - frame_.y_offset;
        if (!inside || (!covers && !features.has_animation)) throw damaged();
        WebPBitstreamFeatures of_frame;
        require(WebPGetFeatures(frame_.fragment.bytes, frame_.fragment.size, &of_frame));
        form_.layout = of_frame.has_alpha || !covers ? Layout::rgba : Layout::rgb;
        Carried carried{.metadata = metadata()};
        if (!carried.metadata.icc.empty()) target.profile(carried.metadata.icc);
        target.turn(read_exif(carried.metadata.exif).shown_orientation());
        const std::uint64_t pixels =
            std::uint64_t{static_cast<unsigned>(frame_.width)} * static_cast<unsigned>(frame_.height);
        const std::size_t bytes = pixels * form_.pixel_bytes();
        // The decoder of files without loss has all pixels besides.
        target.begin(form_, file_.bytes().size() + bytes + pixels * 4);
        BulkMemory frame(bytes);
        decode(frame);
        put(frame, target);
        carried.losses = losses();
        target.carry(std::move(carried));
    }

private:
    void decode(const BulkMemory& frame) const {
        WebPDecoderConfig config;
        if (!WebPInitDecoderConfig(&config)) throw damaged();
        config.output.colorspace = form_.layout == Layout::rgba ? MODE_RGBA : MODE_RGB;
        config.output.is_external_memory = 1;
        config.output.u.RGBA = {
            frame.data(), static_cast<int>(static_cast<std::size_t>(frame_.width) * form_.pixel_bytes()), frame.size()};
        require(WebPDecode(frame_.fragment.bytes, frame_.fragment.size, &config));
    }

    // Around a frame that is smaller all is clear. As the picture fills, the frame goes.
    void put(BulkMemory& frame, PixelTarget& target) const {
        const std::size_t row_bytes = static_cast<std::size_t>(frame_.width) * form_.pixel_bytes();
        const bool whole_rows = frame_.width == form_.width;
        Bytes row(whole_rows ? 0 : form_.row_bytes());
        const Bytes clear(form_.row_bytes());
        for (int y = 0; y < form_.height; ++y) {
            const std::uint8_t* pixels = clear.data();
            if (y >= frame_.y_offset && y < frame_.y_offset + frame_.height) {
                const std::size_t place = static_cast<std::size_t>(y - frame_.y_offset) * row_bytes;
                frame.release_before(place);
                pixels = frame.data() + place;
                if (!whole_rows) {
                    std::copy_n(pixels, row_bytes,
                                row.data() + static_cast<std::size_t>(frame_.x_offset) * form_.pixel_bytes());
                    pixels = row.data();
                }
            }
            target.put({.x = 0, .y = y, .step = 1, .count = form_.width, .pixels = pixels});
        }
    }

    Bytes chunk(const char* name, bool& too_large) const {
        Bytes bytes;
        WebPChunkIterator found;
        if (WebPDemuxGetChunk(parts_.get(), name, 1, &found)) {
            std::span<const std::uint8_t> data(found.chunk.bytes, found.chunk.size);
            if (std::string_view(name) == "EXIF") take_start(data, kExifMark);  // which some writers put there
            too_large = too_large || data.size() > kMostMetadataBytes;
            if (data.size() <= kMostMetadataBytes) bytes.assign(data.begin(), data.end());
        }
        WebPDemuxReleaseChunkIterator(&found);
        return bytes;
    }

    Metadata metadata() {
        Metadata found;
        found.icc = chunk("ICCP", too_large_);
        found.exif = chunk("EXIF", too_large_);
        found.xmp = chunk("XMP ", too_large_);
        return found;
    }

    Losses losses() const {
        Losses lost;
        if (too_large_) lost.push_back(too_much_metadata());
        if (const std::uint32_t frames = WebPDemuxGetI(parts_.get(), WEBP_FF_FRAME_COUNT); frames > 1)
            lost.push_back({Loss::Kind::pages, "has " + std::to_string(frames) + " frames: only the first is read"});
        return lost;
    }

    const WholeFile& file_;
    std::unique_ptr<WebPDemuxer, EndDemuxer> parts_;
    WebPIterator frame_ = {};
    ImageForm form_;
    bool too_large_ = false;
};

}  // namespace

void decode_webp(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target) {
    const auto start = file.ahead();
    WebPBitstreamFeatures features;
    require(WebPGetFeatures(start.data(), start.size(), &features));
    check_size(static_cast<std::uint64_t>(features.width), static_cast<std::uint64_t>(features.height), max_pixels);
    const WholeFile whole(file, target);
    WebpReader(whole).read(features, target);
}

}  // namespace tarvo::host
