#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "carried.h"
#include "inks.h"
#include "kept_places.h"
#include "tiff_codec.h"
#include "tiff_handle.h"
#include "tiff_metadata.h"

namespace tarvo::host {

namespace {

// Others are rare, or take as much memory as a file likes.
constexpr std::uint16_t kCompressions[] = {
    COMPRESSION_NONE, COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3,     COMPRESSION_CCITTFAX4, COMPRESSION_LZW,
    COMPRESSION_JPEG, COMPRESSION_PACKBITS, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_DEFLATE,   COMPRESSION_ZSTD};

enum class Alpha : std::uint8_t { none, straight, multiplied };

// What the pixels of a page are.
struct Kind {
    FilePixels::Colors colors = FilePixels::Colors::rgb;
    int bits = 8;
    int samples = 1;  // of a pixel: those of its color, alpha, then others
    int color_samples = 1;
    Alpha alpha = Alpha::none;
    bool inverted = false;  // greys whose 0 is white
    bool planes = false;    // each sample has rows of its own

    bool has_palette() const { return colors == FilePixels::Colors::palette; }
    int left_out() const { return samples - color_samples - (alpha != Alpha::none ? 1 : 0); }
    int samples_together() const { return planes ? 1 : samples; }
    std::uint64_t row_bytes(std::uint64_t width) const {
        return (width * static_cast<std::uint64_t>(samples_together() * bits) + 7) / 8;
    }
};

FileError not_read(const std::string& what) { return FileError(what + ", which is not read"); }

const char* name_of_photometric(std::uint16_t photometric) {
    switch (photometric) {
        case PHOTOMETRIC_MASK: return "a transparency mask";
        case PHOTOMETRIC_YCBCR: return "YCbCr that is not JPEG";
        case PHOTOMETRIC_CIELAB:
        case PHOTOMETRIC_ICCLAB:
        case PHOTOMETRIC_ITULAB: return "L*a*b*";
        case PHOTOMETRIC_LOGL:
        case PHOTOMETRIC_LOGLUV: return "LogLuv";
        case PHOTOMETRIC_CFA: return "a camera's raw samples";
        default: return "an unknown kind";
    }
}

int color_samples_of(FilePixels::Colors colors) {
    switch (colors) {
        case FilePixels::Colors::rgb: return 3;
        case FilePixels::Colors::inks: return 4;
        default: return 1;
    }
}

FilePixels::Colors colors_of(const TiffHandle& file, int bits) {
    const auto photometric = file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, 0xFFFF);
    const bool is_jpeg = file.field<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE) == COMPRESSION_JPEG;
    switch (photometric) {
        case PHOTOMETRIC_MINISWHITE:
        case PHOTOMETRIC_MINISBLACK: return bits == 1 ? FilePixels::Colors::black_and_white : FilePixels::Colors::grey;
        case PHOTOMETRIC_PALETTE: return FilePixels::Colors::palette;
        case PHOTOMETRIC_RGB: return FilePixels::Colors::rgb;
        case PHOTOMETRIC_SEPARATED:
            if (file.field<std::uint16_t>(TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK) return FilePixels::Colors::inks;
            throw not_read("the pixels are of inks other than CMYK");
        case PHOTOMETRIC_YCBCR:
            if (is_jpeg) return FilePixels::Colors::rgb;
            break;
        default: break;
    }
    throw not_read(std::string("the pixels are of ") + name_of_photometric(photometric));
}

Alpha alpha_of(const TiffHandle& file) {
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (!TIFFGetField(file.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) || count == 0) return Alpha::none;
    if (kinds[0] == EXTRASAMPLE_ASSOCALPHA) return Alpha::multiplied;
    return kinds[0] == EXTRASAMPLE_UNASSALPHA ? Alpha::straight : Alpha::none;
}

Kind kind_of(const TiffHandle& file) {
    Kind kind;
    const auto compression = file.field<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (std::ranges::find(kCompressions, compression) == std::end(kCompressions) || !TIFFIsCODECConfigured(compression))
        throw not_read("the pixels are compressed in way " + std::to_string(compression));
    kind.bits = file.field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    kind.samples = file.field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    kind.colors = colors_of(file, kind.bits);
    kind.color_samples = color_samples_of(kind.colors);
    kind.inverted = file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, 0) == PHOTOMETRIC_MINISWHITE;
    kind.planes = kind.samples > 1 &&
                  file.field<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
    if (kind.samples < kind.color_samples)
        throw FileError("the pixels have " + std::to_string(kind.samples) + " samples, their colors " +
                        std::to_string(kind.color_samples));
    const bool inks = kind.colors == FilePixels::Colors::inks;
    if (kind.samples > kind.color_samples && !inks) kind.alpha = alpha_of(file);
    const bool whole_bytes = kind.bits == 8 || (kind.bits == 16 && !kind.has_palette());
    const bool part_of_a_byte = kind.samples == 1 && (kind.bits == 1 || kind.bits == 2 || kind.bits == 4);
    if (!whole_bytes && !part_of_a_byte)
        throw not_read("the pixels have " + std::to_string(kind.bits) + " bits a channel");
    const auto format = file.field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    if (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID)
        throw not_read("the pixels are signed numbers or fractions");
    // The library then makes RGB of it.
    if (compression == COMPRESSION_JPEG && kind.colors == FilePixels::Colors::rgb)
        TIFFSetField(file.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    return kind;
}

// The rows of a page, one after the other. Those of strips whose samples are together come row by row; others in bands:
// a strip of each plane, or a row of tiles.
class TiffRows {
public:
    TiffRows(const TiffHandle& file, const Kind& kind, std::uint64_t width, std::uint64_t height)
        : file_(file), kind_(kind), height_(height), planes_(kind.planes ? static_cast<std::size_t>(kind.samples) : 1) {
        if (TIFFIsTiled(file.get())) {
            tile_width_ = file.field<std::uint32_t>(TIFFTAG_TILEWIDTH, 0);
            band_rows_ = file.field<std::uint32_t>(TIFFTAG_TILELENGTH, 0);
            tile_row_bytes_ = kind.row_bytes(tile_width_);
            const bool fits = tile_width_ > 0 && band_rows_ > 0 && tile_width_ <= kMostOfATile &&
                              band_rows_ <= kMostOfATile && tile_width_ * static_cast<unsigned>(kind.bits) % 8 == 0;
            if (!fits || TIFFTileRowSize64(file.get()) != tile_row_bytes_) throw FileError("damaged: tiles of no size");
            tiles_ = (width + tile_width_ - 1) / tile_width_;
            row_bytes_ = tiles_ * tile_row_bytes_;
        } else {
            const std::uint64_t rows = file.field<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, 0xFFFFFFFF);
            band_rows_ = kind.planes ? std::min(std::max<std::uint64_t>(rows, 1), height) : 1;
            row_bytes_ = kind.row_bytes(width);
            if (TIFFScanlineSize64(file.get()) != row_bytes_) throw FileError("damaged: rows of an unexpected length");
        }
    }

    // What reading takes at one time.
    std::uint64_t bytes() const {
        std::uint64_t packed = 0;
        const std::uint32_t count = tiles_ != 0 ? TIFFNumberOfTiles(file_.get()) : TIFFNumberOfStrips(file_.get());
        for (std::uint32_t i = 0; i < count; ++i) packed = std::max(packed, TIFFGetStrileByteCount(file_.get(), i));
        return band_bytes() + band_rows_ * tile_row_bytes_ + packed;
    }

    void begin() {
        band_ = std::make_unique_for_overwrite<std::uint8_t[]>(band_bytes());
        if (tiles_ != 0) tile_ = std::make_unique_for_overwrite<std::uint8_t[]>(band_rows_ * tile_row_bytes_);
    }

    // Reads row `y`; the next ones come in their order. Its first sample of that plane is what is returned.
    void read(int y) {
        const auto row = static_cast<std::uint64_t>(y);
        if (row % band_rows_ == 0) tiles_ != 0 ? read_tiles(y) : kind_.planes ? read_strips(y) : read_row(y);
        row_ = band_.get() + row % band_rows_ * row_bytes_;
    }
    const std::uint8_t* plane(int number) const { return row_ + static_cast<std::size_t>(number) * plane_bytes(); }

private:
    static constexpr std::uint64_t kMostOfATile = 32768;

    std::uint64_t plane_bytes() const { return band_rows_ * row_bytes_; }
    std::uint64_t band_bytes() const { return planes_ * plane_bytes(); }

    void read_row(int y) {
        file_.require(TIFFReadScanline(file_.get(), band_.get(), static_cast<std::uint32_t>(y), 0) == 1, y);
    }

    void read_strips(int y) {
        const std::uint64_t rows = std::min(band_rows_, height_ - static_cast<std::uint64_t>(y));
        const auto wanted = static_cast<tmsize_t>(rows * row_bytes_);
        for (std::size_t i = 0; i < planes_; ++i) {
            const auto strip =
                TIFFComputeStrip(file_.get(), static_cast<std::uint32_t>(y), static_cast<std::uint16_t>(i));
            file_.require(TIFFReadEncodedStrip(file_.get(), strip, band_.get() + i * plane_bytes(), wanted) == wanted,
                          y);
        }
    }

    void read_tiles(int y) {
        const auto wanted = static_cast<tmsize_t>(band_rows_ * tile_row_bytes_);
        for (std::size_t i = 0; i < planes_; ++i)
            for (std::uint64_t across = 0; across < tiles_; ++across) {
                const auto tile = TIFFComputeTile(file_.get(), static_cast<std::uint32_t>(across * tile_width_),
                                                  static_cast<std::uint32_t>(y), 0, static_cast<std::uint16_t>(i));
                file_.require(TIFFReadEncodedTile(file_.get(), tile, tile_.get(), wanted) == wanted, y);
                std::uint8_t* to = band_.get() + i * plane_bytes() + across * tile_row_bytes_;
                for (std::uint64_t row = 0; row < band_rows_; ++row, to += row_bytes_)
                    std::memcpy(to, tile_.get() + row * tile_row_bytes_, tile_row_bytes_);
            }
    }

    const TiffHandle& file_;
    const Kind& kind_;
    const std::uint64_t height_;
    const std::size_t planes_;
    std::uint64_t tile_width_ = 0, tile_row_bytes_ = 0, tiles_ = 0;  // 0: there are strips
    std::uint64_t band_rows_ = 1, row_bytes_ = 0;
    std::unique_ptr<std::uint8_t[]> band_, tile_;
    const std::uint8_t* row_ = nullptr;
};

class TiffReader {
public:
    explicit TiffReader(const BytePlaces& file) : bytes_(file), file_(file) {}

    void read(std::uint64_t max_pixels, std::uint64_t kept_bytes, PixelTarget& target) {
        const auto width = file_.field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0),
                   height = file_.field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
        check_size(width, height, max_pixels);
        kind_ = kind_of(file_);
        choose_form(static_cast<int>(width), static_cast<int>(height));
        TiffRows rows(file_, kind_, width, height);
        if (const Bytes profile = profile_of_tiff(bytes_); !profile.empty()) target.profile(profile);
        if (inks()) ink_conversion_ = target.ink_conversion(false);
        target.turn(file_.field<std::uint16_t>(TIFFTAG_ORIENTATION, 1));
        target.begin(form_, kept_bytes + rows.bytes());
        rows.begin();
        Bytes row(form_.row_bytes()), ink(inks() ? std::size_t{4} * width : 0);
        file_.begin_pixels();
        for (int y = 0; y < form_.height; ++y) {
            rows.read(y);
            target.put({.x = 0, .y = y, .step = 1, .count = form_.width, .pixels = colors_in(rows, row, ink)});
        }
        target.carry(carried());
    }

private:
    bool inks() const { return kind_.colors == FilePixels::Colors::inks; }

    void choose_form(int width, int height) {
        form_.width = width;
        form_.height = height;
        form_.file = {kind_.colors, kind_.bits};
        const bool alpha = kind_.alpha != Alpha::none;
        if (kind_.has_palette()) form_.palette = palette();
        if (kind_.color_samples == 1 && !alpha) {
            form_.layout = Layout::indexed;
            form_.index_bits = std::min(kind_.bits, 8);
            if (!kind_.has_palette()) form_.palette = grey_palette(form_.index_bits);
            if (kind_.inverted) std::reverse(form_.palette.begin(), form_.palette.begin() + form_.palette_size());
        } else if (kind_.color_samples == 1 && !kind_.has_palette()) {
            form_.layout = Layout::grey_alpha;
        } else {
            form_.layout = alpha ? Layout::rgba : Layout::rgb;
        }
    }

    // Of 16 bits a channel; some old files have the high ones 0.
    Palette palette() const {
        std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
        if (!TIFFGetField(file_.get(), TIFFTAG_COLORMAP, &red, &green, &blue)) throw FileError("damaged: no palette");
        const std::size_t count = std::size_t{1} << kind_.bits;
        const auto is_narrow = [count](const std::uint16_t* values) {
            return std::all_of(values, values + count, [](std::uint16_t value) { return value < 256; });
        };
        const int shift = is_narrow(red) && is_narrow(green) && is_narrow(blue) ? 0 : 8;
        Palette colors = {};
        for (std::size_t i = 0; i < count; ++i)
            colors[i] = {static_cast<std::uint8_t>(red[i] >> shift), static_cast<std::uint8_t>(green[i] >> shift),
                         static_cast<std::uint8_t>(blue[i] >> shift)};
        return colors;
    }

    // A row's pixels as the form has them: `row`, unless the file has them so.
    const std::uint8_t* colors_in(const TiffRows& rows, Bytes& row, Bytes& ink) const {
        const bool as_stored = kind_.bits == 8 && !kind_.planes && kind_.alpha != Alpha::multiplied && !inks() &&
                               static_cast<std::size_t>(kind_.samples) == form_.pixel_bytes() &&
                               !(kind_.inverted && form_.layout != Layout::indexed);
        if (as_stored) return rows.plane(0);
        if (kind_.bits < 8)
            unpack(rows.plane(0), row);
        else if (inks())
            convert_inks(rows, row, ink);
        else if (form_.layout == Layout::indexed)
            for (int x = 0; x < form_.width; ++x) row[static_cast<std::size_t>(x)] = high_byte(sample(rows, x, 0));
        else
            for (int x = 0; x < form_.width; ++x)
                convert(rows, x, row.data() + static_cast<std::size_t>(x) * form_.pixel_bytes());
        return row.data();
    }

    // The first index stands in the highest bits.
    void unpack(const std::uint8_t* packed, Bytes& row) const {
        const int in_a_byte = 8 / kind_.bits, mask = (1 << kind_.bits) - 1;
        for (int x = 0; x < form_.width; ++x)
            row[static_cast<std::size_t>(x)] =
                static_cast<std::uint8_t>(packed[x / in_a_byte] >> (8 - kind_.bits * (x % in_a_byte + 1)) & mask);
    }

    void convert_inks(const TiffRows& rows, Bytes& row, Bytes& ink) const {
        for (int x = 0; x < form_.width; ++x)
            for (int i = 0; i < 4; ++i) ink[static_cast<std::size_t>(4 * x + i)] = high_byte(sample(rows, x, i));
        if (ink_conversion_)
            ink_conversion_(ink.data(), form_.width, row.data());
        else
            inks_to_rgb(ink.data(), false, form_.width, row.data());
    }

    // A pixel of colors, and of alpha where there is one.
    void convert(const TiffRows& rows, int x, std::uint8_t* out) const {
        const std::uint32_t most = kind_.bits == 16 ? 0xFFFF : 0xFF;
        const std::uint32_t alpha = kind_.alpha != Alpha::none ? sample(rows, x, kind_.color_samples) : most;
        if (kind_.has_palette()) {
            const Rgba& color = form_.palette[sample(rows, x, 0)];
            const std::uint8_t pixel[] = {color.red, color.green, color.blue};
            out = std::copy(std::begin(pixel), std::end(pixel), out);
        } else {
            for (int i = 0; i < kind_.color_samples; ++i) {
                std::uint32_t value = sample(rows, x, i);
                if (kind_.inverted) value = most - value;
                if (kind_.alpha == Alpha::multiplied)
                    value = alpha == 0 ? 0 : std::min(most, (value * most + alpha / 2) / alpha);
                *out++ = high_byte(value);
            }
        }
        if (kind_.alpha != Alpha::none) *out = high_byte(alpha);
    }

    std::uint8_t high_byte(std::uint32_t value) const {
        return static_cast<std::uint8_t>(kind_.bits == 16 ? value >> 8 : value);
    }

    // Of whole bytes; the library has brought those of 16 bits into the machine's order.
    std::uint32_t sample(const TiffRows& rows, int x, int number) const {
        const std::size_t bytes = kind_.bits == 16 ? 2 : 1;
        const auto column = static_cast<std::size_t>(x);
        const auto of_pixel = static_cast<std::size_t>(kind_.planes ? 0 : number);
        const std::uint8_t* const place =
            rows.plane(kind_.planes ? number : 0) +
            (column * static_cast<std::size_t>(kind_.samples_together()) + of_pixel) * bytes;
        if (bytes == 1) return *place;
        std::uint16_t value;
        std::memcpy(&value, place, 2);
        return value;
    }

    Carried carried() const {
        Carried carried;
        carried.metadata = metadata_of_tiff(bytes_, carried.losses);
        if (const int channels = kind_.left_out(); channels > 0)
            carried.losses.push_back({Loss::Kind::pages, "has " + std::to_string(channels) + " more " +
                                                             (channels == 1 ? "channel: it is" : "channels: they are") +
                                                             " left out"});
        return carried;
    }

    const BytePlaces& bytes_;
    TiffHandle file_;
    Kind kind_;
    ImageForm form_;
    InkConversion ink_conversion_;
};

}  // namespace

void decode_tiff(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target) {
    if (const BytePlaces* const places = file.places()) return TiffReader(*places).read(max_pixels, 0, target);
    const KeptPlaces kept(file, target);
    TiffReader(kept).read(max_pixels, kept.size(), target);
}

}  // namespace tarvo::host
