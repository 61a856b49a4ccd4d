#include "png_bands.h"

#include <algorithm>
#include <vector>

#include "deflate_bands.h"
#include "png_filters.h"

namespace tarvo::host {

namespace {

using Coding = DeflateBands::Coding;

// What repeats further apart is not found; a band and what it becomes are all that is held at one time.
constexpr std::size_t kBandBytes = std::size_t{1} << 20;
// Of so many strips a band is judged, where it has more rows than they.
constexpr int kStrips = 4;
constexpr std::size_t kStripBytes = std::size_t{3} << 13;

constexpr std::uint8_t kZlibHeader[] = {0x78, 0x01};  // matches up to 32 KiB back

struct Way {
    bool filtered;
    Coding coding;
};
constexpr Way kPlainMatches = {false, Coding::matches};
constexpr Way kWays[] = {kPlainMatches, {true, Coding::literals}, {true, Coding::matches}, {true, Coding::runs}};

class PngBands {
public:
    PngBands(const PngRows& rows, Compression effort)
        : rows_(rows),
          try_all_(effort == Compression::small),
          most_rows_(rows_in(kBandBytes)),
          filters_(rows.row_bytes, rows.filter_step),
          deflate_(effort),
          plain_((static_cast<std::size_t>(std::min(most_rows_, rows.height)) + 1) * rows.row_bytes) {}

    void make(const TakeChunk& take) {
        Bytes chunk(std::begin(kZlibHeader), std::end(kZlibHeader));
        for (int y = 0; y < rows_.height; y += most_rows_) {
            const int count = std::min(most_rows_, rows_.height - y);
            for (int i = 0; i < count; ++i) rows_.read(y + i, plain(i));
            deflate_band(count);
            chunk.insert(chunk.end(), deflated_.begin(), deflated_.end());
            if (y + count == rows_.height) append_end(chunk);
            take(chunk);
            chunk.clear();
            std::copy_n(plain(count - 1), rows_.row_bytes, plain(-1));
        }
    }

private:
    int rows_in(std::size_t bytes) const { return static_cast<int>(std::max<std::size_t>(1, bytes / rows_.row_bytes)); }

    // A row of the band; -1 is the one above it, zeros above the first.
    std::uint8_t* plain(int row) { return plain_.data() + static_cast<std::size_t>(row + 1) * rows_.row_bytes; }

    // Appends rows of the band to `lines_`.
    void add_lines(int first, int count, bool filtered) {
        for (int i = first; i < first + count; ++i) {
            const std::span<const std::uint8_t> row(plain(i), rows_.row_bytes), above(plain(i - 1), rows_.row_bytes);
            if (filtered)
                filters_.append_filtered(row, above, lines_);
            else
                PngFilters::append_plain(row, lines_);
        }
    }

    void deflate_band(int count) {
        const Way way = rows_.may_filter ? best_way(count) : kPlainMatches;
        lines_.clear();
        add_lines(0, count, way.filtered);
        deflate_.deflate(lines_, way.coding, deflated_);
        check_ = DeflateBands::check(check_, lines_);
    }

    // Of those that are tried on strips of the band.
    Way best_way(int count) {
        const int strip = try_all_ ? count : rows_in(kStripBytes);
        const int strips = strip * kStrips < count ? kStrips : 1;
        const auto size = [&](const Way& way) {
            lines_.clear();
            for (int i = 0; i < strips; ++i) add_lines(count * i / strips, strips > 1 ? strip : count, way.filtered);
            deflate_.deflate(lines_, way.coding, deflated_);
            return deflated_.size();
        };
        std::size_t sizes[std::size(kWays)];
        std::transform(std::begin(kWays), std::end(kWays), sizes, size);
        return kWays[std::min_element(std::begin(sizes), std::end(sizes)) - sizes];
    }

    void append_end(Bytes& chunk) const {
        const auto end = DeflateBands::end();
        chunk.insert(chunk.end(), end.begin(), end.end());
        for (int shift = 24; shift >= 0; shift -= 8) chunk.push_back(static_cast<std::uint8_t>(check_ >> shift));
    }

    const PngRows& rows_;
    const bool try_all_;
    const int most_rows_;
    PngFilters filters_;
    DeflateBands deflate_;
    Bytes plain_, lines_, deflated_;
    std::uint32_t check_ = 1;
};

}  // namespace

void deflate_png(const PngRows& rows, Compression effort, const TakeChunk& take) { PngBands(rows, effort).make(take); }

}  // namespace tarvo::host
