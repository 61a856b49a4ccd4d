#include <algorithm>
#include <limits>
#include <new>
#include <optional>
#include <random>
#include <span>
#include <utility>

#include "bulk_memory.h"
#include "object.h"
#include "pixels.h"

namespace tarvo::host {
namespace {

// Offsets into a picture must fit the 32-bit integers of the plugin interface.
constexpr std::int64_t kMaxBytes = std::numeric_limits<std::int32_t>::max();

bool has_pixels(Backing backing) { return backing != Backing::drawing_commands && backing != Backing::refused; }

std::int64_t packed_bytes(const PictureOptions& options) {
    return (static_cast<std::int64_t>(std::max(options.width, 0)) * options.depth + 7) / 8;
}

std::size_t row_bytes_of(const PictureOptions& options) {
    return static_cast<std::size_t>(packed_bytes(options) + options.row_padding);
}

std::size_t rows_of(const PictureOptions& options) { return static_cast<std::size_t>(std::max(options.height, 0)); }

// Returns the greys of a depth. At 1 bit a set bit is black; at other depths they go from black to white.
std::vector<RGBColor> grey_colors(int depth) {
    constexpr RGBColor kWhite{0xFFFF, 0xFFFF, 0xFFFF};
    constexpr RGBColor kBlack{0, 0, 0};
    if (depth == 1) return {kWhite, kBlack};
    const int last = (1 << depth) - 1;
    std::vector<RGBColor> colors;
    for (int i = 0; i <= last; ++i) {
        const auto level = static_cast<std::uint16_t>(0xFFFF * i / last);
        colors.push_back({level, level, level});
    }
    return colors;
}

std::vector<RGBColor> complete_colors(const PictureOptions& options) {
    if (options.depth > 8 || options.without_color_table || !has_pixels(options.backing)) return {};
    std::vector<RGBColor> colors = options.colors.empty() ? grey_colors(options.depth) : options.colors;
    colors.resize(std::size_t{1} << options.depth);
    return colors;
}

std::uint32_t index_of(std::uint32_t color, const std::vector<RGBColor>& colors, std::uint32_t otherwise) {
    const auto found =
        std::find_if(colors.begin(), colors.end(), [&](const RGBColor& entry) { return packed_color(entry) == color; });
    return found == colors.end() ? otherwise : static_cast<std::uint32_t>(found - colors.begin());
}

std::uint32_t white_value(const PictureOptions& options) {
    if (options.depth == 1) return 0;
    if (options.depth <= 8) return index_of(0xFFFFFF, options.colors, (1u << options.depth) - 1);
    return value_of(0xFFFFFF, options.depth, {});
}

std::uint32_t black_value(const PictureOptions& options) {
    if (options.depth == 1) return 1;
    return index_of(0x000000, options.colors, 0);
}

const char* name_of(Backing backing) {
    switch (backing) {
        case Backing::graphics_world: return "graphics world";
        case Backing::bitmap_context: return "bitmap context";
        case Backing::pixel_buffer: return "pixel buffer";
        case Backing::drawing_commands: return "drawing commands";
        case Backing::refused: return "unknown store";
    }
    return "?";
}

constexpr std::int32_t kRefusedKind = 2;

std::int32_t kind_of(Backing backing) {
    switch (backing) {
        case Backing::graphics_world: return pictureMacintoshGWorld;
        case Backing::bitmap_context: return pictureCGBitmapContext;
        case Backing::pixel_buffer: return pictureHostPixelBuffer;
        case Backing::drawing_commands: return pictureDrawingCommands;
        case Backing::refused: break;
    }
    return kRefusedKind;
}

}  // namespace

// The memory behind a picture and the object that plugins reach it through.
struct Picture::Store {
    SharedPixels pixels;
    std::size_t row_bytes = 0;
    GWorldPtr world = nullptr;
    CGContextRef context = nullptr;
    std::vector<std::unique_ptr<std::uint8_t[]>> rows;
    std::vector<std::uint8_t*> row_table;
    std::optional<REALpixelBuffer> buffer;

    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    ~Store() {
        PlatformDisposeGWorld(world);
        PlatformDisposeBitmapContext(context);
    }

    // Throws std::bad_alloc.
    explicit Store(const PictureOptions& options) {
        if (options.backing == Backing::pixel_buffer) {
            make_rows(options);
        } else if (has_pixels(options.backing)) {
            open_block(options, SharedPixels::of_size(row_bytes_of(options) * rows_of(options)));
        }
    }
    Store(const PictureOptions& options, SharedPixels shared) { open_block(options, std::move(shared)); }

    std::uint8_t* row(int y) const {
        const auto index = static_cast<std::size_t>(y);
        if (buffer) return index < row_table.size() ? row_table[index] : nullptr;
        return pixels.bytes ? pixels.bytes.get() + index * row_bytes : nullptr;
    }

    void* handed_out() {
        if (world) return world;
        if (context) return context;
        return buffer ? &*buffer : nullptr;
    }

private:
    // The bottom row comes first in memory, so that no row follows the one above it.
    void make_rows(const PictureOptions& options) {
        const std::size_t height = rows_of(options);
        row_bytes = static_cast<std::size_t>(packed_bytes(options));
        rows.resize(height);
        row_table.resize(height);
        for (std::size_t y = height; y-- > 0;) {
            rows[y] = std::make_unique_for_overwrite<std::uint8_t[]>(row_bytes);
            row_table[y] = rows[y].get();
        }
        buffer = {options.width, options.height, row_table.data()};
    }

    void open_block(const PictureOptions& options, SharedPixels block) {
        row_bytes = row_bytes_of(options);
        pixels = std::move(block);
        const PixelLayout layout{
            pixels.bytes.get(),   options.width, options.height, options.depth, static_cast<std::int32_t>(row_bytes),
            options.dots_per_inch};
        if (options.backing == Backing::graphics_world) {
            make_world(layout, options.colors);
        } else {
            context = PlatformNewBitmapContext(&layout);
        }
        if (!world && !context) throw std::bad_alloc();
    }

    // No platform makes a world without pixels: one that has some is told its bounds afterwards.
    void make_world(PixelLayout layout, const std::vector<RGBColor>& colors) {
        const Rect bounds = {0, 0, static_cast<std::int16_t>(layout.height), static_cast<std::int16_t>(layout.width)};
        const std::int32_t told_row_bytes = layout.rowBytes;
        layout.width = std::max(layout.width, 1);
        layout.height = std::max(layout.height, 1);
        layout.rowBytes = std::max(layout.rowBytes, (layout.width * layout.depth + 7) / 8);
        world = PlatformNewGWorld(&layout, colors.empty() ? nullptr : colors.data(),
                                  static_cast<std::int32_t>(colors.size()));
        if (!world) return;
        PixMap& map = **GetGWorldPixMap(world);
        map.bounds = bounds;
        map.rowBytes = told_row_bytes;
    }
};

bool Picture::is_possible(const PictureOptions& options) {
    const auto side_fits = [&](int side) {
        return side >= (options.any_sides ? -kLongestSide : 1) && side <= kLongestSide;
    };
    if (!side_fits(options.width) || !side_fits(options.height)) return false;
    if (options.depth < 1 || options.depth > 32) return false;
    if (options.backing == Backing::pixel_buffer && (options.depth != 32 || options.row_padding != 0)) return false;
    if (options.row_padding < 0) return false;
    return (packed_bytes(options) + options.row_padding) * options.height <= kMaxBytes;
}

std::uint64_t Picture::bytes_of(const PictureOptions& options) {
    if (!has_pixels(options.backing)) return 0;
    return std::uint64_t{row_bytes_of(options)} * rows_of(options);
}

SharedPixels SharedPixels::of_size(std::size_t size) {
    const auto memory = std::make_shared<BulkMemory>(size);
    return {{memory, memory->data()}, size};
}

std::unique_ptr<Picture> Picture::make(const PictureOptions& options, Paper paper) {
    if (!is_possible(options)) return nullptr;
    try {
        PictureOptions completed = options;
        completed.colors = complete_colors(options);
        auto store = std::make_unique<Store>(completed);
        std::unique_ptr<Picture> picture(new Picture(std::move(completed), std::move(store)));
        picture->fill(paper);
        return picture;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::unique_ptr<Picture> Picture::of(const PictureOptions& options, SharedPixels pixels) {
    const bool in_a_block = options.backing == Backing::graphics_world || options.backing == Backing::bitmap_context;
    const bool has_sides = options.width >= 1 && options.height >= 1;
    if (!is_possible(options) || !has_sides || !in_a_block || !pixels.bytes) return nullptr;
    const std::size_t padding = static_cast<std::size_t>(options.row_padding);
    if (pixels.size < bytes_of(options) - padding) return nullptr;
    PictureOptions completed = options;
    completed.colors = complete_colors(options);
    auto store = std::make_unique<Store>(completed, std::move(pixels));
    return std::unique_ptr<Picture>(new Picture(std::move(completed), std::move(store)));
}

Picture::Picture(PictureOptions options, std::unique_ptr<Store> store)
    : Object(ObjectType::picture, bytes_of(options)), options_(std::move(options)), store_(std::move(store)) {}

Picture::~Picture() = default;

void Picture::release_contents() {
    mask_ = {};
    drawing = nullptr;
    store_.reset();
}

std::size_t Picture::packed_row_bytes() const { return static_cast<std::size_t>(packed_bytes(options_)); }

std::uint8_t* Picture::row(int y) { return store_->row(y); }

const std::uint8_t* Picture::row(int y) const { return store_->row(y); }

const SharedPixels& Picture::shared_pixels() const { return store_->pixels; }

void Picture::fill(Paper paper) {
    if (paper == Paper::unset || !has_pixels(options_.backing)) return;
    if (paper == Paper::noise) return fill_with_noise();
    const std::uint32_t value = paper == Paper::white ? white_value(options_) : black_value(options_);
    const bool in_one_piece = store_->row_table.empty() && store_->row_bytes == packed_row_bytes() &&
                              (static_cast<std::int64_t>(width()) * depth()) % 8 == 0;
    if (in_one_piece) {
        fill_pixels({store_->pixels.bytes.get(), store_->pixels.size}, depth(), value);
        return;
    }
    for (int y = 0; y < height(); ++y) fill_pixels({row(y), store_->row_bytes}, depth(), value);
}

void Picture::fill_with_noise() {
    std::minstd_rand random;
    for (int y = 0; y < height(); ++y)
        for (std::uint8_t& byte : std::span(row(y), store_->row_bytes)) byte = static_cast<std::uint8_t>(random() >> 8);
}

void Picture::set_purged(bool purged) {
    if (store_->world) (*GetGWorldPixMap(store_->world))->purged = purged;
}

REALpictureDescription Picture::description() const {
    return {kind_of(backing()), store_->handed_out(), width(), height(), depth()};
}

std::string Picture::describe() const {
    std::string text = std::to_string(width()) + " x " + std::to_string(height()) + " pixels, " +
                       std::to_string(depth()) + " bits, " + name_of(backing());
    if (mask_) text += ", with a mask";
    if (locks_ != 0) text += ", locks: " + std::to_string(locks_);
    return text;
}

}  // namespace tarvo::host
