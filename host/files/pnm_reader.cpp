#include "pnm.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace tarvo::host {

namespace {

constexpr std::uint32_t kMaxMaximum = 65535;

bool is_space(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool is_digit(int c) { return c >= '0' && c <= '9'; }

// The file's bytes in order: words and numbers of the header and of plain samples, then raw bytes.
class Scanner {
public:
    explicit Scanner(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    std::size_t left() const { return rest_.size(); }
    bool at_end() const { return rest_.empty(); }
    const std::uint8_t* data() const { return rest_.data(); }
    void skip(std::size_t count) { rest_ = rest_.subspan(count); }

    // The next byte after white space and comments, not taken; -1 at the end.
    int peek() {
        while (!at_end() && (is_space(rest_[0]) || rest_[0] == '#')) {
            if (rest_[0] == '#')
                skip_line();
            else
                skip(1);
        }
        return at_end() ? -1 : rest_[0];
    }

    // A number; one too large for 32 bits gives the largest of them.
    std::uint32_t number(const char* what) {
        if (!is_digit(peek())) throw at_end() ? cut_short(0) : FileError(std::string("no number for the ") + what);
        std::uint64_t value = 0;
        for (; !at_end() && is_digit(rest_[0]); skip(1))
            value = std::min<std::uint64_t>(value * 10 + (rest_[0] - '0'), std::numeric_limits<std::uint32_t>::max());
        return static_cast<std::uint32_t>(value);
    }

    std::string word() {
        peek();
        std::string text;
        for (; !at_end() && !is_space(rest_[0]); skip(1)) {
            if (text.size() == 64) throw FileError("a word of the header is too long");
            text += static_cast<char>(rest_[0]);
        }
        return text;
    }

    // The one white-space byte between the header and raw samples.
    void end_header() {
        if (at_end()) throw cut_short(0);
        if (!is_space(rest_[0])) throw FileError("no blank after the header");
        skip(1);
    }

    void skip_line() {
        while (!at_end() && rest_[0] != '\n' && rest_[0] != '\r') skip(1);
    }

private:
    std::span<const std::uint8_t> rest_;
};

struct Header {
    std::uint32_t width = 0, height = 0;
    std::uint32_t channels = 1;  // 1 grey, 2 grey and alpha, 3 colour, 4 colour and alpha
    std::uint32_t maximum = 1;
    bool plain = false;   // samples as decimal numbers
    bool bitmap = false;  // PBM: bits, 1 is black

    std::size_t samples_across() const { return std::size_t{width} * channels; }
    std::size_t row_bytes() const {
        if (bitmap) return (width + std::size_t{7}) / 8;
        return samples_across() * (maximum > 255 ? 2 : 1);
    }
    // The fewest bytes in which a row can stand in the file.
    std::size_t least_row_bytes() const { return plain ? samples_across() : row_bytes(); }
};

void check(const Header& header, const Limits& limits) {
    check_size(header.width, header.height, limits);
    if (header.maximum == 0 || header.maximum > kMaxMaximum)
        throw FileError("the largest sample is " + std::to_string(header.maximum) + ", allowed are 1 to 65535");
}

// Samples to 8 bits: 16-bit ones keep their high byte, others are scaled to the nearest.
std::vector<std::uint8_t> scale_table(std::uint32_t maximum) {
    std::vector<std::uint8_t> table(maximum + std::size_t{1});
    for (std::uint32_t v = 0; v <= maximum; ++v)
        table[v] = static_cast<std::uint8_t>(maximum == kMaxMaximum ? v >> 8 : (v * 255 + maximum / 2) / maximum);
    return table;
}

// Rows of samples, one after the other, however they are written.
class SampleReader {
public:
    SampleReader(Scanner& in, const Header& header) : in_(in), header_(header) {}

    // Fills `samples`, a row of them; `y` is for messages.
    void read(int y, std::span<std::uint16_t> samples) {
        if (header_.plain) return read_plain(y, samples);
        if (in_.left() < header_.row_bytes()) throw cut_short(y);
        const std::uint8_t* bytes = in_.data();
        for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = checked(raw_sample(bytes, i));
        in_.skip(header_.row_bytes());
    }

private:
    std::uint32_t raw_sample(const std::uint8_t* row, std::size_t i) const {
        if (header_.bitmap) return row[i / 8] >> (7 - i % 8) & 1;
        if (header_.maximum > 255) return std::uint32_t{row[2 * i]} << 8 | row[2 * i + 1];
        return row[i];
    }

    void read_plain(int y, std::span<std::uint16_t> samples) {
        for (std::uint16_t& sample : samples) {
            if (in_.peek() < 0) throw cut_short(y);
            sample = checked(header_.bitmap ? plain_bit() : in_.number("sample"));
        }
    }

    // Bits need no blanks between them.
    std::uint32_t plain_bit() {
        const int digit = in_.peek();
        if (!is_digit(digit)) throw FileError("no number for the sample");
        in_.skip(1);
        return static_cast<std::uint32_t>(digit - '0');
    }

    std::uint16_t checked(std::uint32_t sample) const {
        if (sample > header_.maximum)
            throw FileError("a sample is " + std::to_string(sample) + ", the largest is said to be " +
                            std::to_string(header_.maximum));
        return static_cast<std::uint16_t>(sample);
    }

    Scanner& in_;
    const Header& header_;
};

Layout layout_of(const Header& header) {
    if (header.channels == 1) return Layout::indexed;
    return header.channels == 3 ? Layout::rgb : Layout::rgba;
}

// A grey of one bit keeps its samples as indices, any other sample becomes 8 bits.
Image read_samples(Scanner& in, const Header& header) {
    // Before memory is taken: a short file must not claim a large picture.
    const std::size_t rows_there = in.left() / header.least_row_bytes();
    if (rows_there < header.height) throw cut_short(header.plain ? 0 : static_cast<int>(rows_there));

    Image image(static_cast<int>(header.width), static_cast<int>(header.height), layout_of(header));
    const bool one_bit = image.layout == Layout::indexed && header.maximum == 1;
    image.index_bits = one_bit ? 1 : 8;
    image.palette = grey_palette(image.index_bits);
    if (header.bitmap) std::swap(image.palette[0], image.palette[1]);

    std::vector<std::uint8_t> scaled = scale_table(header.maximum);
    if (one_bit) scaled = {0, 1};
    std::vector<std::uint16_t> samples(header.samples_across());
    SampleReader reader(in, header);
    for (int y = 0; y < image.height; ++y) {
        reader.read(y, samples);
        std::uint8_t* out = image.row(y);
        if (header.channels == 2) {
            for (std::size_t i = 0; i < samples.size(); i += 2, out += 4) {
                out[0] = out[1] = out[2] = scaled[samples[i]];
                out[3] = scaled[samples[i + 1]];
            }
        } else {
            std::ranges::transform(samples, out, [&](std::uint16_t sample) { return scaled[sample]; });
        }
    }
    return image;
}

}  // namespace

Image decode_pnm(std::span<const std::uint8_t> file, const Limits& limits) {
    const int kind = file[1] - '0';  // 1 to 3 plain, 4 to 6 raw; bitmap, grey, colour
    Scanner in(file.subspan(2));
    Header header;
    header.plain = kind <= 3;
    header.bitmap = kind % 3 == 1;
    header.channels = kind % 3 == 0 ? 3 : 1;
    header.width = in.number("width");
    header.height = in.number("height");
    if (!header.bitmap) header.maximum = in.number("largest sample");
    check(header, limits);
    if (!header.plain) in.end_header();
    return read_samples(in, header);
}

Image decode_pam(std::span<const std::uint8_t> file, const Limits& limits) {
    Scanner in(file.subspan(2));
    Header header;
    header.channels = 0;
    header.maximum = 0;
    for (std::string word = in.word(); word != "ENDHDR"; word = in.word()) {
        if (word == "WIDTH")
            header.width = in.number("width");
        else if (word == "HEIGHT")
            header.height = in.number("height");
        else if (word == "DEPTH")
            header.channels = in.number("depth");
        else if (word == "MAXVAL")
            header.maximum = in.number("largest sample");
        else if (word == "TUPLTYPE")
            in.skip_line();  // the number of channels says the same
        else
            throw in.at_end() ? cut_short(0) : FileError("an unknown word in the header");
    }
    check(header, limits);
    if (header.channels < 1 || header.channels > 4)
        throw FileError("the pixels have " + std::to_string(header.channels) + " channels, known are 1 to 4");
    in.end_header();
    return read_samples(in, header);
}

}  // namespace tarvo::host
