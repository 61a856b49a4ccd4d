#include "pnm.h"

#include <algorithm>
#include <bit>
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
    explicit Scanner(ByteSource& file) : file_(file) {}

    ByteSource& file() { return file_; }
    bool at_end() { return file_.ahead().empty(); }
    // The byte that comes next; not at the end.
    std::uint8_t byte() { return file_.ahead()[0]; }
    void skip(std::size_t count) { file_.skip(count); }

    // The next byte after white space and comments, not taken; -1 at the end.
    int peek() {
        while (!at_end() && (is_space(byte()) || byte() == '#')) {
            if (byte() == '#')
                skip_line();
            else
                skip(1);
        }
        return at_end() ? -1 : byte();
    }

    // A number; one too large for 32 bits gives the largest of them.
    std::uint32_t number(const char* what) {
        if (!is_digit(peek())) throw at_end() ? cut_short(0) : FileError(std::string("no number for the ") + what);
        std::uint64_t value = 0;
        for (; !at_end() && is_digit(byte()); skip(1))
            value = std::min<std::uint64_t>(value * 10 + (byte() - '0'), std::numeric_limits<std::uint32_t>::max());
        return static_cast<std::uint32_t>(value);
    }

    std::string word() {
        peek();
        std::string text;
        for (; !at_end() && !is_space(byte()); skip(1)) {
            if (text.size() == 64) throw FileError("a word of the header is too long");
            text += static_cast<char>(byte());
        }
        return text;
    }

    // The one white-space byte between the header and raw samples.
    void end_header() {
        if (at_end()) throw cut_short(0);
        if (!is_space(byte())) throw FileError("no blank after the header");
        skip(1);
    }

    void skip_line() {
        while (!at_end() && byte() != '\n' && byte() != '\r') skip(1);
    }

private:
    ByteSource& file_;
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

void check(const Header& header, std::uint64_t max_pixels) {
    check_size(header.width, header.height, max_pixels);
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
    SampleReader(Scanner& in, const Header& header)
        : in_(in), header_(header), row_(header.plain ? 0 : header.row_bytes()) {}

    // Fills `samples`, a row of them; `y` is for messages.
    void read(int y, std::span<std::uint16_t> samples) {
        if (header_.plain) return read_plain(y, samples);
        if (!in_.file().read(row_)) throw cut_short(y);
        for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = checked(raw_sample(i));
    }

private:
    std::uint32_t raw_sample(std::size_t i) const {
        if (header_.bitmap) return row_[i / 8] >> (7 - i % 8) & 1;
        if (header_.maximum > 255) return std::uint32_t{row_[2 * i]} << 8 | row_[2 * i + 1];
        return row_[i];
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
    Bytes row_;
};

Layout layout_of(const Header& header) {
    constexpr Layout kLayouts[] = {Layout::indexed, Layout::grey_alpha, Layout::rgb, Layout::rgba};
    return kLayouts[header.channels - 1];
}

FilePixels pixels_of(const Header& header) {
    using Colors = FilePixels::Colors;
    const Colors greys = header.maximum == 1 ? Colors::black_and_white : Colors::grey;
    return {header.channels > 2 ? Colors::rgb : greys, static_cast<int>(std::bit_width(header.maximum))};
}

// A grey of one bit keeps its samples as indices, any other sample becomes 8 bits.
void read_samples(Scanner& in, const Header& header, PixelTarget& target) {
    // Before memory is taken: a short file must not claim a large picture.
    const auto left = in.file().left();
    const std::uint64_t rows_there = left ? *left / header.least_row_bytes() : header.height;
    if (rows_there < header.height) throw cut_short(header.plain ? 0 : static_cast<int>(rows_there));

    ImageForm form{.width = static_cast<int>(header.width),
                   .height = static_cast<int>(header.height),
                   .layout = layout_of(header)};
    const bool one_bit = form.layout == Layout::indexed && header.maximum == 1;
    form.index_bits = one_bit ? 1 : 8;
    form.palette = grey_palette(form.index_bits);
    if (header.bitmap) std::swap(form.palette[0], form.palette[1]);
    form.file = pixels_of(header);
    target.begin(form, 0);

    std::vector<std::uint8_t> scaled = scale_table(header.maximum);
    if (one_bit) scaled = {0, 1};
    std::vector<std::uint16_t> samples(header.samples_across());
    Bytes row(form.row_bytes());
    SampleReader reader(in, header);
    for (int y = 0; y < form.height; ++y) {
        reader.read(y, samples);
        std::ranges::transform(samples, row.data(), [&](std::uint16_t sample) { return scaled[sample]; });
        target.put({.x = 0, .y = y, .step = 1, .count = form.width, .pixels = row.data()});
    }
}

}  // namespace

void decode_pnm(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target) {
    const int kind = file.ahead()[1] - '0';  // 1 to 3 plain, 4 to 6 raw; bitmap, grey, colour
    file.skip(2);
    Scanner in(file);
    Header header;
    header.plain = kind <= 3;
    header.bitmap = kind % 3 == 1;
    header.channels = kind % 3 == 0 ? 3 : 1;
    header.width = in.number("width");
    header.height = in.number("height");
    if (!header.bitmap) header.maximum = in.number("largest sample");
    check(header, max_pixels);
    if (!header.plain) in.end_header();
    read_samples(in, header, target);
}

void decode_pam(ByteSource& file, std::uint64_t max_pixels, PixelTarget& target) {
    file.skip(2);
    Scanner in(file);
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
    check(header, max_pixels);
    if (header.channels < 1 || header.channels > 4)
        throw FileError("the pixels have " + std::to_string(header.channels) + " channels, known are 1 to 4");
    in.end_header();
    read_samples(in, header, target);
}

}  // namespace tarvo::host
