#include "jpeg_codec.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>

#include "carried.h"
#include "exif.h"
#include "inks.h"
#include "jpeg_errors.h"
#include "jpeg_making.h"
#include "jpeg_markers.h"
#include "orientation.h"
#include "stored_rows.h"

namespace tarvo::host {

namespace {

// Real files have about ten; each costs as much time as a whole picture.
constexpr int kMostScans = 200;

// The segments that hold metadata.
constexpr int kCollectedSegments[] = {1, 2, 13};

// The library takes the file block by block.
struct Source {
    jpeg_source_mgr manager;  // first: the library's pointer to it is a pointer to this
    ByteSource* file;
    std::exception_ptr failure;
    bool ran_out;

    // What the file throws waits for the end of the library's call.
    bool next_block() noexcept {
        try {
            const auto block = file->take();
            manager.next_input_byte = block.data();
            manager.bytes_in_buffer = block.size();
            ran_out = block.empty();
        } catch (...) {
            failure = std::current_exception();
        }
        return !failure && !ran_out;
    }
};
static_assert(std::is_standard_layout_v<Source>);

boolean on_buffer_empty(j_decompress_ptr info) {
    if (!reinterpret_cast<Source*>(info->src)->next_block())
        fail_jpeg(reinterpret_cast<j_common_ptr>(info), "cut short");
    return TRUE;
}

void on_skip(j_decompress_ptr info, long count) {
    auto wanted = static_cast<std::size_t>(count);
    for (; wanted > info->src->bytes_in_buffer; on_buffer_empty(info)) wanted -= info->src->bytes_in_buffer;
    info->src->next_input_byte += wanted;
    info->src->bytes_in_buffer -= wanted;
}

// What is left of the block that the library reads from; never nothing.
std::span<const std::uint8_t> ahead(j_decompress_ptr info) {
    if (info->src->bytes_in_buffer == 0) on_buffer_empty(info);
    return {info->src->next_input_byte, info->src->bytes_in_buffer};
}

std::uint8_t next_byte(j_decompress_ptr info) {
    const std::uint8_t byte = ahead(info)[0];
    on_skip(info, 1);
    return byte;
}

void on_progress(j_common_ptr info) {
    if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > kMostScans) fail_jpeg(info, "too many scans");
}

class JpegReader {
public:
    explicit JpegReader(ByteSource& file) {
        info_.err = &errors_.manager;
        info_.client_data = this;
        if (!create()) {
            jpeg_destroy_decompress(&info_);
            throw std::bad_alloc();
        }
        source_.file = &file;
        source_.manager.init_source = [](j_decompress_ptr) {};
        source_.manager.fill_input_buffer = on_buffer_empty;
        source_.manager.skip_input_data = on_skip;
        source_.manager.resync_to_restart = jpeg_resync_to_restart;
        source_.manager.term_source = [](j_decompress_ptr) {};
        info_.src = &source_.manager;
        progress_.progress_monitor = on_progress;
        info_.progress = &progress_;
    }
    ~JpegReader() { jpeg_destroy_decompress(&info_); }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    void read(std::uint64_t max_pixels, PixelTarget& target) {
        require(read_header());
        check_size(info_.image_width, info_.image_height, max_pixels);
        const int orientation = read_exif(markers_.exif()).shown_orientation();
        int eighths = 8;
        require(choose_scale(turn_of(orientation).transposed, target, eighths));
        ImageForm form{.width = static_cast<int>(info_.output_width), .height = static_cast<int>(info_.output_height)};
        const bool inks = info_.out_color_space == JCS_CMYK;
        if (info_.out_color_space == JCS_GRAYSCALE) {
            form.layout = Layout::indexed;
            form.palette = grey_palette(8);
            form.file = {FilePixels::Colors::grey};
        } else if (inks) {
            form.file = {FilePixels::Colors::inks};
        }
        if (const Bytes profile = markers_.profile(); !profile.empty()) target.profile(profile);
        // Adobe's programs, which mark their files, write inks inverted.
        if (inks) ink_conversion_ = target.ink_conversion(info_.saw_Adobe_marker);
        target.turn(orientation);
        target.begin(form, coefficient_bytes());
        const bool stores = info_.out_color_space == JCS_RGB && target.stored_row(0);
        if (stores) info_.out_color_space = JCS_EXT_XRGB;
        Bytes row(stores ? 0 : form.row_bytes()), ink(inks ? std::size_t{4} * info_.output_width : 0);
        Carried carried;
        if (eighths < 8) carried.losses.push_back(loss_of_draft(eighths));
        carried.jpeg = making_of(info_);
        require(read_pixels(form.width, stores ? nullptr : row.data(), inks ? ink.data() : nullptr, target));
        carried.metadata = markers_.finish(carried.losses);
        carried.metadata.resolution = resolution();
        target.carry(std::move(carried));
    }

private:
    void require(bool done) const {
        if (done) return;
        if (source_.failure) std::rethrow_exception(source_.failure);
        if (source_.ran_out) throw cut_short(static_cast<int>(info_.output_scanline));
        if (errors_.out_of_memory()) throw std::bad_alloc();
        throw FileError(std::string("damaged: ") + errors_.message);
    }

    bool create() {
        if (setjmp(errors_.target)) return false;
        jpeg_create_decompress(&info_);
        return true;
    }

    bool read_header() {
        if (setjmp(errors_.target)) return false;
        for (const int number : kCollectedSegments) jpeg_set_marker_processor(&info_, JPEG_APP0 + number, on_segment);
        jpeg_read_header(&info_, TRUE);
        switch (info_.jpeg_color_space) {
            case JCS_GRAYSCALE: info_.out_color_space = JCS_GRAYSCALE; break;
            case JCS_RGB:
            case JCS_YCbCr: info_.out_color_space = JCS_RGB; break;
            case JCS_CMYK:
            case JCS_YCCK: info_.out_color_space = JCS_CMYK; break;
            default: fail_jpeg(reinterpret_cast<j_common_ptr>(&info_), "colors of an unknown kind");
        }
        return true;
    }

    // The library makes pictures of some eighths of their size in less time.
    bool choose_scale(bool transposed, PixelTarget& target, int& eighths) {
        if (setjmp(errors_.target)) return false;
        const auto whole_width = static_cast<int>(info_.image_width),
                   whole_height = static_cast<int>(info_.image_height);
        info_.scale_denom = 8;
        for (eighths = 1;; ++eighths) {
            info_.scale_num = static_cast<unsigned>(eighths);
            jpeg_calc_output_dimensions(&info_);
            const auto width = static_cast<int>(info_.output_width), height = static_cast<int>(info_.output_height);
            if (eighths == 8 || (transposed ? target.takes_draft(whole_height, whole_width, height, width)
                                            : target.takes_draft(whole_width, whole_height, width, height)))
                return true;
        }
    }

    static Loss loss_of_draft(int eighths) {
        return {Loss::Kind::draft, "is decoded at " + std::to_string(eighths) +
                                       "/8 of its size, for a draft: pixels differ from those of the whole"};
    }

    static boolean on_segment(j_decompress_ptr info) {
        std::size_t length = std::size_t{next_byte(info)} << 8;
        length |= next_byte(info);
        length -= std::min<std::size_t>(length, 2);  // its own bytes
        auto* self = static_cast<JpegReader*>(info->client_data);
        for (std::size_t filled = 0; filled < length;) {
            const auto block = ahead(info);
            const std::size_t count = std::min(block.size(), length - filled);
            std::copy_n(block.data(), count, self->segment_.data() + filled);
            on_skip(info, static_cast<long>(count));
            filled += count;
        }
        if (!self->collect(info->unread_marker - JPEG_APP0, length))
            fail_jpeg(reinterpret_cast<j_common_ptr>(info), "cannot be kept");
        return TRUE;
    }

    // What is thrown waits for the end of the library's call.
    bool collect(int number, std::size_t length) noexcept {
        try {
            markers_.add(number, std::span(segment_).first(length));
        } catch (...) {
            source_.failure = std::current_exception();
        }
        return !source_.failure;
    }

    std::optional<Resolution> resolution() const {
        constexpr Resolution::Unit kUnits[] = {Resolution::Unit::none, Resolution::Unit::inch,
                                               Resolution::Unit::centimetre};
        const bool told = info_.saw_JFIF_marker && info_.density_unit < std::size(kUnits) && info_.X_density != 0 &&
                          info_.Y_density != 0;
        const bool square = info_.density_unit == 0 && info_.X_density == info_.Y_density;
        if (!told || square) return {};
        return Resolution{static_cast<double>(info_.X_density), static_cast<double>(info_.Y_density),
                          kUnits[info_.density_unit]};
    }

    // The library keeps all of a file that comes in several scans.
    std::uint64_t coefficient_bytes() {
        if (!info_.progressive_mode && !jpeg_has_multiple_scans(&info_)) return 0;
        std::uint64_t blocks = 0;
        for (int i = 0; i < info_.num_components; ++i) {
            const jpeg_component_info& component = info_.comp_info[i];
            blocks += padded(component.width_in_blocks, component.h_samp_factor) *
                      padded(component.height_in_blocks, component.v_samp_factor);
        }
        return blocks * sizeof(JBLOCK);
    }

    void convert_inks(const std::uint8_t* ink, int width, std::uint8_t* row) const {
        if (ink_conversion_)
            ink_conversion_(ink, width, row);
        else
            inks_to_rgb(ink, info_.saw_Adobe_marker, width, row);
    }

    static std::uint64_t padded(JDIMENSION blocks, int factor) {
        const auto unit = static_cast<std::uint64_t>(factor);
        return (blocks + unit - 1) / unit * unit;
    }

    // With room for a row of ink the file is one of inks; without room for a row, rows go where the target stores them.
    bool read_pixels(int width, std::uint8_t* row, std::uint8_t* ink, PixelTarget& target) {
        if (setjmp(errors_.target)) return false;
        jpeg_start_decompress(&info_);
        while (info_.output_scanline < info_.output_height) {
            const int y = static_cast<int>(info_.output_scanline);
            JSAMPROW samples = ink ? ink : row ? row : target.stored_row(y);
            jpeg_read_scanlines(&info_, &samples, 1);
            if (!row) {
                clear_unused_bytes(samples, static_cast<std::size_t>(width));  // the library has put 255 there
                continue;
            }
            if (ink) convert_inks(ink, width, row);
            target.put({.x = 0, .y = y, .step = 1, .count = width, .pixels = row});
        }
        jpeg_finish_decompress(&info_);
        return true;
    }

    JpegErrors errors_;
    Source source_ = {};
    jpeg_progress_mgr progress_ = {};
    jpeg_decompress_struct info_ = {};
    JpegMarkers markers_;
    InkConversion ink_conversion_;
    Bytes segment_ = Bytes(0x10000);  // more than one can hold
};

}  // namespace

void decode_jpeg(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target) {
    JpegReader(file).read(max_pixels, target);
}

}  // namespace tarvo::host
