// The library's own writer has a directory of its own first, and would write Exif anew. Here a block stands at the
// file's start, where all places in it count from, and goes on with the pixels.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <vector>

#include "big_endian.h"
#include "deflate_bands.h"
#include "image_resources.h"
#include "packed_indices.h"
#include "tiff_codec.h"
#include "tiff_directory.h"
#include "tiff_tags.h"

namespace tarvo::host {

namespace {

constexpr std::uint32_t kBytesType = 1, kShort = 3, kLong = 4, kRational = 5, kAnything = 7;
constexpr std::uint32_t kNotCompressed = 1, kDeflated = 8;
constexpr std::uint32_t kDifferences = 2;
constexpr std::uint32_t kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kPalette = 3;
constexpr std::uint32_t kStraightAlpha = 2;
constexpr std::size_t kFirstDirectory = 4;  // where the header tells its place
constexpr std::size_t kStripBytes = std::size_t{1} << 18;
constexpr std::uint8_t kZlibHeader[] = {0x78, 0x01};  // matches up to 32 KiB back

// Tags that this writes of the file, where a block may have those of another.
constexpr std::uint32_t kOfTheFile[] = {kTiffSubfileType, kTiffWidth,        kTiffHeight,           kTiffBits,
                                        kTiffCompression, kTiffPhotometric,  kTiffStripPlaces,      kTiffOrientation,
                                        kTiffSamples,     kTiffRowsInAStrip, kTiffStripSizes,       kTiffPlanes,
                                        kTiffPredictor,   kTiffColorMap,     kTiffDirectoriesBelow, kTiffExtraSamples,
                                        kTiffXmp,         kTiffIptc,         kTiffResources,        kTiffProfile};

class TiffWriter {
public:
    TiffWriter(const PixelSource& image, const EncodeOptions& how, ByteSink& file)
        : image_(image),
          form_(image.form()),
          how_(how),
          file_(file),
          compressed_(how.compression != Compression::fast),
          expanded_(form_.layout == Layout::indexed && has_alpha(form_)),
          big_endian_(!how.metadata.exif.empty() && how.metadata.exif[0] == 'M'),
          deflate_(how.compression) {}

    FilePixels write() {
        write_start();
        write_strips();
        describe();
        write_directory();
        return pixels();
    }

private:
    struct Entry {
        std::uint32_t tag, type, count;
        Bytes value;  // in the file's byte order; or, when `is_placed`, where it stands
        bool is_placed = false;
    };

    // --- what the pixels become

    bool is_indexed() const { return form_.layout == Layout::indexed && !expanded_; }
    bool has_palette() const { return is_indexed() && !is_scale_of_greys(form_); }
    int bits() const { return is_indexed() ? form_.index_bits : 8; }
    std::size_t samples() const { return expanded_ ? 4 : form_.pixel_bytes(); }
    bool differences() const { return compressed_ && bits() == 8 && !has_palette(); }
    std::size_t row_bytes() const {
        return (static_cast<std::size_t>(form_.width) * samples() * static_cast<std::size_t>(bits()) + 7) / 8;
    }
    int rows_in_a_strip() const {
        const std::size_t rows = std::max<std::size_t>(1, kStripBytes / row_bytes());
        return static_cast<int>(std::min<std::size_t>(rows, static_cast<std::size_t>(form_.height)));
    }

    FilePixels pixels() const {
        using Colors = FilePixels::Colors;
        if (has_palette()) return {Colors::palette, bits()};
        if (samples() > 2) return {Colors::rgb};
        return {bits() == 1 ? Colors::black_and_white : Colors::grey, bits()};
    }

    std::uint32_t photometric() const {
        if (has_palette()) return kPalette;
        if (samples() > 2) return kRgb;
        return is_inverted(form_) ? kWhiteIsZero : kBlackIsZero;
    }

    // --- bytes

    void append(std::span<const std::uint8_t> bytes) {
        file_.write(bytes);
        place_ += bytes.size();
    }
    // Values begin at even places.
    void pad() {
        constexpr std::uint8_t kZero[1] = {};
        if (place_ % 2 != 0) append(kZero);
    }
    void put(Bytes& to, std::uint64_t value, int bytes) const {
        for (int i = 0; i < bytes; ++i)
            to.push_back(static_cast<std::uint8_t>(value >> 8 * (big_endian_ ? bytes - 1 - i : i)));
    }
    Bytes number(std::uint64_t value, int bytes) const {
        Bytes made;
        put(made, value, bytes);
        return made;
    }

    // The block's own header, which is that of the file, is told later where the directory is.
    void write_start() {
        if (!how_.metadata.exif.empty()) return append(how_.metadata.exif);
        Bytes header = {'I', 'I'};
        put(header, 42, 2);
        put(header, 0, 4);
        append(header);
    }

    // --- pixels

    void read(int y, std::uint8_t* row) const {
        if (is_indexed() && bits() < 8) {
            Bytes indices(form_.row_bytes());
            image_.read(y, indices.data());
            pack_indices(indices, bits(), false, row);
        } else if (expanded_) {
            Bytes indices(form_.row_bytes());
            image_.read(y, indices.data());
            for (const std::uint8_t index : indices) {
                const Rgba& color = form_.palette[index];
                const std::uint8_t pixel[] = {color.red, color.green, color.blue, color.alpha};
                row = std::copy(std::begin(pixel), std::end(pixel), row);
            }
        } else {
            image_.read(y, row);
        }
    }

    void make_differences(std::uint8_t* row) const {
        const std::size_t step = samples();
        for (std::size_t i = row_bytes(); i-- > step;) row[i] = static_cast<std::uint8_t>(row[i] - row[i - step]);
    }

    void write_strips() {
        const int most = rows_in_a_strip();
        Bytes strip(static_cast<std::size_t>(most) * row_bytes());
        for (int y = 0; y < form_.height; y += most) {
            const int count = std::min(most, form_.height - y);
            for (int i = 0; i < count; ++i) {
                std::uint8_t* const row = strip.data() + static_cast<std::size_t>(i) * row_bytes();
                read(y + i, row);
                if (differences()) make_differences(row);
            }
            pad();
            strip_places_.push_back(place_);
            write_strip(std::span(strip).first(static_cast<std::size_t>(count) * row_bytes()));
            strip_sizes_.push_back(place_ - strip_places_.back());
        }
    }

    void write_strip(std::span<const std::uint8_t> strip) {
        if (!compressed_) return append(strip);
        deflate_.deflate(strip, DeflateBands::Coding::matches, deflated_);
        append(kZlibHeader);
        append(deflated_);
        append(DeflateBands::end());
        const std::uint32_t check = DeflateBands::check(1, strip);
        Bytes sum;
        append_big_endian(sum, check, 4);
        append(sum);
    }

    // --- the directory

    void add(std::uint32_t tag, std::uint32_t type, std::uint64_t count, Bytes value) {
        entries_.push_back({tag, type, static_cast<std::uint32_t>(count), std::move(value)});
    }
    void add_short(std::uint32_t tag, std::uint32_t value) { add(tag, kShort, 1, number(value, 2)); }
    void add_long(std::uint32_t tag, std::uint32_t value) { add(tag, kLong, 1, number(value, 4)); }
    void add_longs(std::uint32_t tag, const std::vector<std::uint64_t>& values) {
        Bytes bytes;
        for (const std::uint64_t value : values) put(bytes, value, 4);
        add(tag, kLong, values.size(), std::move(bytes));
    }
    void add_bytes(std::uint32_t tag, std::uint32_t type, std::span<const std::uint8_t> bytes) {
        if (!bytes.empty()) add(tag, type, bytes.size(), Bytes(bytes.begin(), bytes.end()));
    }

    void describe() {
        add_long(kTiffWidth, static_cast<std::uint32_t>(form_.width));
        add_long(kTiffHeight, static_cast<std::uint32_t>(form_.height));
        Bytes each;
        for (std::size_t i = 0; i < samples(); ++i) put(each, static_cast<std::uint64_t>(bits()), 2);
        add(kTiffBits, kShort, samples(), each);
        add_short(kTiffCompression, compressed_ ? kDeflated : kNotCompressed);
        add_short(kTiffPhotometric, photometric());
        add_longs(kTiffStripPlaces, strip_places_);
        add_short(kTiffOrientation, 1);
        add_short(kTiffSamples, static_cast<std::uint32_t>(samples()));
        add_long(kTiffRowsInAStrip, static_cast<std::uint32_t>(rows_in_a_strip()));
        add_longs(kTiffStripSizes, strip_sizes_);
        add_short(kTiffPlanes, 1);
        if (differences()) add_short(kTiffPredictor, kDifferences);
        if (has_palette()) add(kTiffColorMap, kShort, std::uint64_t{3} << bits(), color_map());
        if (samples() % 2 == 0) add_short(kTiffExtraSamples, kStraightAlpha);
        describe_resolution();
        const Metadata& metadata = how_.metadata;
        add_bytes(kTiffXmp, kBytesType, metadata.xmp);
        add_bytes(kTiffIptc, kAnything, iptc_records(metadata.iptc));
        add_bytes(kTiffResources, kBytesType, without_records(metadata.iptc));
        add_bytes(kTiffProfile, kAnything, metadata.icc);
        add_block();
    }

    Bytes color_map() const {
        Bytes map;
        const auto colors = std::span(form_.palette).first(static_cast<std::size_t>(form_.palette_size()));
        for (std::uint8_t Rgba::*channel : {&Rgba::red, &Rgba::green, &Rgba::blue})
            for (const Rgba& color : colors) put(map, color.*channel * 0x101u, 2);
        return map;
    }

    void describe_resolution() {
        if (!how_.metadata.resolution) return;
        const Resolution told = how_.metadata.resolution->unit == Resolution::Unit::metre
                                    ? how_.metadata.resolution->in(Resolution::Unit::inch)
                                    : *how_.metadata.resolution;
        add(kTiffXResolution, kRational, 1, fraction(told.x));
        add(kTiffYResolution, kRational, 1, fraction(told.y));
        add_short(kTiffResolutionUnit, told.unit == Resolution::Unit::none         ? 1
                                       : told.unit == Resolution::Unit::centimetre ? 3
                                                                                   : 2);
    }

    Bytes fraction(double value) const {
        const std::uint32_t under = value == std::floor(value) ? 1 : 10000;
        Bytes made = number(static_cast<std::uint64_t>(std::llround(value * under)), 4);
        put(made, under, 4);
        return made;
    }

    // What the block's first directory tells goes to the file's, values staying where they are.
    void add_block() {
        if (how_.metadata.exif.empty()) return;
        const MemoryPlaces block(how_.metadata.exif);
        TiffDirectories directories(block);
        const auto first = directories.read(directories.first());
        for (const TiffEntry& entry : first ? first->entries : std::vector<TiffEntry>()) {
            if (std::ranges::find(kOfTheFile, entry.tag) != std::end(kOfTheFile) || has(entry.tag)) continue;
            Bytes value(4);
            block.read_at(entry.place + 8, value);
            entries_.push_back(
                {entry.tag, entry.type, static_cast<std::uint32_t>(entry.count), std::move(value), true});
        }
    }

    bool has(std::uint32_t tag) const { return std::ranges::find(entries_, tag, &Entry::tag) != entries_.end(); }

    void write_directory() {
        std::ranges::sort(entries_, {}, &Entry::tag);
        Bytes directory = number(entries_.size(), 2);
        for (const Entry& entry : entries_) {
            put(directory, entry.tag, 2);
            put(directory, entry.type, 2);
            put(directory, entry.count, 4);
            Bytes value = entry.value;
            if (!entry.is_placed && value.size() > 4) {
                pad();
                value = number(place_, 4);
                append(entry.value);
            }
            value.resize(4);
            directory.insert(directory.end(), value.begin(), value.end());
        }
        put(directory, 0, 4);  // no other page
        pad();
        const Bytes first = number(place_, 4);
        append(directory);
        file_.replace(kFirstDirectory, first);
    }

    const PixelSource& image_;
    const ImageForm& form_;
    const EncodeOptions& how_;
    ByteSink& file_;
    const bool compressed_;
    const bool expanded_;  // a palette that is partly clear, of which there is no such kind
    const bool big_endian_;
    DeflateBands deflate_;
    Bytes deflated_;
    std::uint64_t place_ = 0;  // how much is written
    std::vector<std::uint64_t> strip_places_, strip_sizes_;
    std::vector<Entry> entries_;
};

}  // namespace

FilePixels encode_tiff(const PixelSource& image, const EncodeOptions& options, ByteSink& file) {
    return TiffWriter(image, options, file).write();
}

}  // namespace tarvo::host
