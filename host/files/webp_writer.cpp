#include <webp/encode.h>
#include <webp/mux.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "webp_codec.h"

namespace tarvo::host {

namespace {

constexpr int kBandRows = 64;
static_assert(kBandRows % 2 == 0);

// How much the library tries: of 9 without loss, of 6 with it.
int effort_without_loss(Compression compression) {
    return compression == Compression::fast ? 1 : compression == Compression::small ? 9 : 6;
}
int effort_with_loss(Compression compression) {
    return compression == Compression::fast ? 1 : compression == Compression::small ? 6 : 4;
}

struct EndMux {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};

// The parts are the library's own, so that nothing but memory can be missing, whatever it says.
void require(WebPMuxError status) {
    if (status != WEBP_MUX_OK) throw std::bad_alloc();
}

class WebpWriter {
public:
    WebpWriter(const PixelSource& image, const EncodeOptions& how) : image_(image), form_(image.form()), how_(how) {
        if (!WebPPictureInit(&picture_) || !configure()) throw FileError("cannot be made: another WebP library");
        picture_.width = form_.width;
        picture_.height = form_.height;
        picture_.writer = on_bytes;
        picture_.custom_ptr = this;
        picture_.stats = &account_;
    }
    ~WebpWriter() { WebPPictureFree(&picture_); }
    WebpWriter(const WebpWriter&) = delete;
    WebpWriter& operator=(const WebpWriter&) = delete;

    void write(ByteSink& file) {
        if (form_.width > WEBP_MAX_DIMENSION || form_.height > WEBP_MAX_DIMENSION)
            throw FileError("the size is " + std::to_string(form_.width) + " x " + std::to_string(form_.height) +
                            " pixels, a side of WebP may have " + std::to_string(WEBP_MAX_DIMENSION));
        how_.quality ? take_planes() : take_colors();
        const bool done = encode();
        if (failure_) std::rethrow_exception(failure_);
        if (!done && (picture_.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ||
                      picture_.error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY))
            throw std::bad_alloc();
        if (!done) throw FileError("cannot be made: error " + std::to_string(picture_.error_code));
        WebPPictureFree(&picture_);
        if (!is_whole()) throw std::bad_alloc();
        const Metadata& metadata = how_.metadata;
        if (metadata.icc.empty() && metadata.exif.empty() && metadata.xmp.empty()) return file.write(made_);
        write_with_metadata(file);
    }

private:
    bool configure() {
        if (!WebPConfigInit(&config_)) return false;
        config_.exact = 1;  // clear pixels have colours, too
        if (!how_.quality) return WebPConfigLosslessPreset(&config_, effort_without_loss(how_.compression)) != 0;
        config_.quality = static_cast<float>(*how_.quality);
        config_.method = effort_with_loss(how_.compression);
        return true;
    }

    bool encode() {
        if (WebPEncode(&config_, &picture_)) return true;
        // There is only so much room for what is told of blocks. With the least effort it is told of each at length.
        if (picture_.error_code != VP8_ENC_ERROR_PARTITION0_OVERFLOW) return false;
        config_.method = effort_with_loss(Compression::normal);
        made_.clear();
        return WebPEncode(&config_, &picture_) != 0;
    }

    // Without loss the library takes all pixels as colours.
    void take_colors() {
        allocate(picture_, true);
        read_rows(0, picture_);
    }

    // With loss it takes planes of brightness, colour and alpha. They are made of a band of rows at a time: all pixels
    // as colours would take as much memory again as the picture.
    void take_planes() {
        picture_.colorspace = has_alpha(form_) ? WEBP_YUV420A : WEBP_YUV420;
        allocate(picture_, false);
        WebPPicture colors = {};
        if (!WebPPictureInit(&colors)) throw FileError("cannot be made: another WebP library");
        const std::unique_ptr<WebPPicture, void (*)(WebPPicture*)> band(&colors, WebPPictureFree);
        band->width = form_.width;
        band->height = std::min(kBandRows, form_.height);
        allocate(*band, true);
        for (int y = 0; y < form_.height; y += kBandRows) {
            band->height = std::min(kBandRows, form_.height - y);
            band->use_argb = 1;
            read_rows(y, *band);
            if (!WebPPictureARGBToYUVA(band.get(), WEBP_YUV420)) throw std::bad_alloc();
            put_planes(*band, y);
        }
    }

    static void allocate(WebPPicture& picture, bool as_colors) {
        picture.use_argb = as_colors ? 1 : 0;
        if (!WebPPictureAlloc(&picture)) throw std::bad_alloc();
    }

    // Fills a picture with the rows from that one on.
    void read_rows(int first, WebPPicture& picture) {
        Bytes row(form_.row_bytes());
        std::vector<Rgba> colors(static_cast<std::size_t>(form_.width));
        std::uint32_t* out = picture.argb;
        for (int y = first; y < first + picture.height; ++y, out += picture.argb_stride) {
            image_.read(y, row.data());
            read_colors(form_, row.data(), colors.data());
            for (int x = 0; x < form_.width; ++x) {
                const Rgba& color = colors[static_cast<std::size_t>(x)];
                out[x] = std::uint32_t{color.alpha} << 24 | std::uint32_t{color.red} << 16 |
                         std::uint32_t{color.green} << 8 | color.blue;
            }
        }
    }

    // Puts a band where it belongs. A value of colour is for two rows, and a band that is all opaque has no alpha.
    void put_planes(const WebPPicture& band, int first) {
        const auto put = [](const std::uint8_t* from, int from_stride, std::uint8_t* to, int stride, int row, int rows,
                            int bytes) {
            for (int y = 0; y < rows; ++y) {
                std::uint8_t* const place = to + std::ptrdiff_t{row + y} * stride;
                if (from)
                    std::memcpy(place, from + std::ptrdiff_t{y} * from_stride, static_cast<std::size_t>(bytes));
                else
                    std::memset(place, 255, static_cast<std::size_t>(bytes));
            }
        };
        const int half_width = (band.width + 1) / 2, half_height = (band.height + 1) / 2;
        put(band.y, band.y_stride, picture_.y, picture_.y_stride, first, band.height, band.width);
        put(band.u, band.uv_stride, picture_.u, picture_.uv_stride, first / 2, half_height, half_width);
        put(band.v, band.uv_stride, picture_.v, picture_.uv_stride, first / 2, half_height, half_width);
        if (picture_.a) put(band.a, band.a_stride, picture_.a, picture_.a_stride, first, band.height, band.width);
    }

    // What is thrown waits for the end of the library's call.
    static int on_bytes(const std::uint8_t* data, std::size_t count, const WebPPicture* picture) {
        auto* self = static_cast<WebpWriter*>(picture->custom_ptr);
        try {
            self->made_.insert(self->made_.end(), data, data + count);
        } catch (...) {
            self->failure_ = std::current_exception();
        }
        return !self->failure_;
    }

    // The library does not always tell when there was no memory for what it has tried last, and what it then gives is
    // no picture. Of a picture without loss its account of the parts shows it.
    bool is_whole() const { return how_.quality || account_.lossless_hdr_size + account_.lossless_data_size > 0; }

    void write_with_metadata(ByteSink& file) {
        const std::unique_ptr<WebPMux, EndMux> parts(WebPMuxNew());
        if (!parts) throw std::bad_alloc();
        constexpr int kWithoutCopy = 0;
        const WebPData image{made_.data(), made_.size()};
        require(WebPMuxSetImage(parts.get(), &image, kWithoutCopy));
        const auto add = [&](const char* name, const Bytes& bytes) {
            const WebPData data{bytes.data(), bytes.size()};
            if (!bytes.empty()) require(WebPMuxSetChunk(parts.get(), name, &data, kWithoutCopy));
        };
        add("ICCP", how_.metadata.icc);
        add("EXIF", how_.metadata.exif);
        add("XMP ", how_.metadata.xmp);
        WebPData whole = {};
        require(WebPMuxAssemble(parts.get(), &whole));
        const std::unique_ptr<WebPData, void (*)(WebPData*)> freed(&whole, WebPDataClear);
        file.write({whole.bytes, whole.size});
    }

    const PixelSource& image_;
    const ImageForm& form_;
    const EncodeOptions& how_;
    WebPConfig config_ = {};
    WebPPicture picture_ = {};
    WebPAuxStats account_ = {};
    Bytes made_;
    std::exception_ptr failure_;
};

}  // namespace

FilePixels encode_webp(const PixelSource& image, const EncodeOptions& options, ByteSink& file) {
    WebpWriter(image, options).write(file);
    return {FilePixels::Colors::rgb};
}

}  // namespace tarvo::host
