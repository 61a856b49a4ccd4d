// TIFF files of every kind that is read, made by the library's own writer, and what is written of pictures.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "file_samples.h"
#include "format.h"
#include "image_resources.h"
#include "metadata_samples.h"
#include "png_samples.h"
#include "tiff_directory.h"
#include "tiff_metadata.h"
#include "tiff_samples.h"
#include "tiff_tags.h"
#include "watched_files.h"

namespace tarvo::host {
namespace {

constexpr int kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kPalette = 3, kInks = 5, kYcc = 6, kLab = 8;
constexpr int kLzw = 5, kJpeg = 7, kDeflate = 8, kPackBits = 32773, kFax4 = 4, kZstd = 50000, kLzma = 34925;
constexpr std::uint16_t kOther = 0, kMultiplied = 1, kStraight = 2;

using Colors = std::vector<std::uint32_t>;

class TiffTest : public FilesTest {
protected:
    ObjectRef read(const FileBytes& file) { return decode_picture(host, file, {}, &carried); }
    Colors mask_of(const ObjectRef& picture) { return colors_of(picture_in(picture).mask()); }
    std::string words_of(const TiffSample& sample) {
        read(tiff_file(sample));
        return in_words(carried.pixels);
    }
    ObjectRef again(const ObjectRef& picture, WriteOptions options = {}) {
        return read(encode_picture(picture_in(picture), "a.tif", options, &report));
    }

    Carried carried;
    WriteReport report;
};

std::vector<std::uint16_t> noise(std::size_t count, int bits) {
    std::mt19937 random(17);
    std::vector<std::uint16_t> values(count);
    for (auto& value : values) value = static_cast<std::uint16_t>(random() & ((1u << bits) - 1));
    return values;
}

// What a pixel of three samples is.
Colors rgb(const TiffSample& sample) {
    Colors colors;
    const auto step = static_cast<std::size_t>(sample.samples);
    for (std::size_t i = 0; i < sample.values.size(); i += step) {
        std::uint32_t color = 0;
        for (std::size_t channel = 0; channel < 3; ++channel)
            color = color << 8 | static_cast<std::uint32_t>(sample.values[i + channel] >> (sample.bits - 8));
        colors.push_back(color);
    }
    return colors;
}

TEST_F(TiffTest, ColorsOfEveryFormAreRead) {
    int forms = 0;
    for (const int bits : {8, 16})
        for (const int samples : {3, 4})
            for (const bool planes : {false, true})
                for (const std::uint32_t tile : {0u, 16u})
                    for (const char* mode : {"l", "b", "8l", "8b"})
                        for (const int compression : {1, kLzw, kDeflate, kPackBits}) {
                            TiffSample sample{21, 19, bits, samples, kRgb, noise(21u * 19 * 4, bits)};
                            sample.values.resize(21u * 19 * static_cast<std::size_t>(samples));
                            if (samples == 4) sample.extras = {kStraight};
                            sample.planes = planes;
                            sample.tile = tile;
                            sample.mode = mode;
                            sample.compression = compression;
                            sample.rows_in_a_strip = 7;
                            SCOPED_TRACE(testing::Message() << bits << " bits, " << samples << " samples, mode " << mode
                                                            << ", compression " << compression << ", tile " << tile
                                                            << (planes ? ", planes" : ""));
                            const ObjectRef picture = read(tiff_file(sample));
                            ASSERT_EQ(colors_of(picture), rgb(sample));
                            EXPECT_EQ(in_words(carried.pixels), "RGB, " + std::to_string(bits) + " bits a channel" +
                                                                    (samples == 4 ? ", mask" : ""));
                            ++forms;
                            if (samples != 4) continue;
                            Colors mask;
                            for (std::size_t i = 3; i < sample.values.size(); i += 4)
                                mask.push_back((255u - (sample.values[i] >> (bits - 8))) * 0x010101u);
                            ASSERT_EQ(mask_of(picture), mask);
                        }
    EXPECT_EQ(forms, 256);
}

TEST_F(TiffTest, GreysAndPalettesOfEveryDepthAreRead) {
    for (const int bits : {1, 2, 4, 8, 16})
        for (const int photometric : {kWhiteIsZero, kBlackIsZero, kPalette})
            for (const std::uint32_t tile : {0u, 16u}) {
                if (bits == 16 && photometric == kPalette) continue;
                SCOPED_TRACE(testing::Message() << bits << " bits, photometric " << photometric << ", tile " << tile);
                TiffSample sample{19, 5, bits, 1, photometric, noise(19u * 5, bits)};
                sample.tile = tile;
                const std::size_t count = std::size_t{1} << bits;
                if (photometric == kPalette) {
                    sample.palette = noise(3 * count, 16);
                    sample.palette[0] = 0x8000;
                }
                Colors wanted;
                for (const std::uint16_t value : sample.values) {
                    const auto channel = [&](std::size_t i) {
                        return static_cast<std::uint32_t>(sample.palette[i * count + value] >> 8);
                    };
                    const auto most = static_cast<std::uint32_t>(count - 1);
                    const std::uint32_t level = bits == 16 ? value >> 8 : value * 255u / most;
                    if (photometric == kPalette)
                        wanted.push_back(channel(0) << 16 | channel(1) << 8 | channel(2));
                    else
                        wanted.push_back((photometric == kWhiteIsZero ? 255 - level : level) * 0x010101u);
                }
                EXPECT_EQ(colors_of(read(tiff_file(sample))), wanted);
                EXPECT_FALSE(picture_in(read(tiff_file(sample))).mask());
            }
    EXPECT_EQ(words_of({1, 1, 1, 1, kBlackIsZero, {1}}), "black and white");
    EXPECT_EQ(words_of({1, 1, 4, 1, kWhiteIsZero, {1}}), "grey, 4 bits a channel");
    EXPECT_EQ(words_of({1, 1, 16, 1, kBlackIsZero, {1}}), "grey, 16 bits a channel");
    TiffSample palette{1, 1, 2, 1, kPalette, {1}};
    palette.palette = noise(12, 16);
    EXPECT_EQ(words_of(palette), "palette, 2 bits a pixel");
}

TEST_F(TiffTest, PalettesOfNarrowNumbersAreReadToo) {
    TiffSample sample{2, 1, 1, 1, kPalette, {0, 1}};
    sample.palette = {0, 255, 16, 32, 3, 0};
    EXPECT_EQ(colors_of(read(tiff_file(sample))), (Colors{0x001003, 0xFF2000}));
}

TEST_F(TiffTest, GreysHaveMasks) {
    TiffSample sample{2, 1, 8, 2, kBlackIsZero, {10, 255, 20, 64}, {kStraight}};
    const ObjectRef picture = read(tiff_file(sample));
    EXPECT_EQ(colors_of(picture), (Colors{0x0A0A0A, 0x141414}));
    EXPECT_EQ(mask_of(picture), (Colors{0, 0xBFBFBF}));
    EXPECT_EQ(in_words(carried.pixels), "grey, 8 bits a channel, mask");
    sample.photometric = kWhiteIsZero;
    EXPECT_EQ(colors_of(read(tiff_file(sample))), (Colors{0xF5F5F5, 0xEBEBEB}));
}

TEST_F(TiffTest, ColorsThatAreMultipliedByAlphaAreDividedByIt) {
    const TiffSample sample{
        4, 1, 8, 4, kRgb, {100, 50, 200, 255, 50, 25, 100, 128, 9, 9, 9, 0, 200, 1, 0, 100}, {kMultiplied}};
    const ObjectRef picture = read(tiff_file(sample));
    EXPECT_EQ(colors_of(picture), (Colors{0x6432C8, 0x6432C7, 0x000000, 0xFF0300}));
    EXPECT_EQ(mask_of(picture), (Colors{0, 0x7F7F7F, 0xFFFFFF, 0x9B9B9B}));
    const TiffSample deep{1, 1, 16, 4, kRgb, {0x1000, 0x0800, 0x0400, 0x2000}, {kMultiplied}};
    EXPECT_EQ(colors_of(read(tiff_file(deep))), (Colors{0x804020}));
}

TEST_F(TiffTest, FurtherChannelsAndPagesAreLeftOutAndTold) {
    TiffSample sample{1, 1, 8, 5, kRgb, {1, 2, 3, 4, 5}, {kOther, kOther}};
    const ObjectRef picture = read(tiff_file(sample));
    EXPECT_EQ(colors_of(picture), Colors{0x010203});
    EXPECT_FALSE(picture_in(picture).mask());
    ASSERT_EQ(carried.losses.size(), 1u);
    EXPECT_EQ(carried.losses[0].words, "has 2 more channels: they are left out");
    EXPECT_EQ(carried.losses[0].kind, Loss::Kind::pages);
    sample = {1, 1, 8, 1, kBlackIsZero, {1}};
    sample.pages = 3;
    read(tiff_file(sample));
    ASSERT_EQ(carried.losses.size(), 1u);
    EXPECT_EQ(carried.losses[0].words, "has further pages: only the first is read");
}

TEST_F(TiffTest, InksAreConvertedPlainly) {
    EXPECT_EQ(colors_of(read(tiff_file({1, 1, 8, 4, kInks, {51, 102, 153, 128}}))), Colors{0x664C33});
    EXPECT_EQ(in_words(carried.pixels), "CMYK, 8 bits a channel");
    EXPECT_EQ(colors_of(read(tiff_file({1, 1, 16, 4, kInks, {0, 0, 0, 0}}))), Colors{0xFFFFFF});
}

TEST_F(TiffTest, OtherCompressionsAreRead) {
    std::vector<std::uint16_t> bits = noise(70 * 9, 1);
    TiffSample fax{70, 9, 1, 1, kWhiteIsZero, bits};
    const Colors wanted = colors_of(read(tiff_file(fax)));
    for (const int compression : {2, 3, kFax4}) {
        fax.compression = compression;
        EXPECT_EQ(colors_of(read(tiff_file(fax))), wanted) << compression;
    }
    TiffSample sample{16, 16, 8, 3, kYcc, std::vector<std::uint16_t>(16 * 16 * 3, 100)};
    sample.compression = kJpeg;
    sample.rows_in_a_strip = 16;
    for (const std::uint32_t color : colors_of(read(tiff_file(sample)))) EXPECT_EQ(color, 0x646464u);
    sample.tile = 16;
    for (const std::uint32_t color : colors_of(read(tiff_file(sample)))) EXPECT_EQ(color, 0x646464u);
    sample = {16, 2, 8, 1, kBlackIsZero, noise(32, 8)};
    sample.compression = kZstd;
    EXPECT_EQ(colors_of(read(tiff_file(sample))).size(), 32u);
}

TEST_F(TiffTest, EveryOrientationIsApplied) {
    const struct {
        int orientation;
        Colors seen;
    } cases[] = {
        {1, {1, 2, 3, 4, 5, 6}}, {2, {2, 1, 4, 3, 6, 5}}, {3, {6, 5, 4, 3, 2, 1}}, {4, {5, 6, 3, 4, 1, 2}},
        {5, {1, 3, 5, 2, 4, 6}}, {6, {5, 3, 1, 6, 4, 2}}, {7, {6, 4, 2, 5, 3, 1}}, {8, {2, 4, 6, 1, 3, 5}},
    };
    for (const auto& each : cases) {
        TiffSample sample{2, 3, 8, 1, kBlackIsZero, {1, 2, 3, 4, 5, 6}};
        sample.orientation = each.orientation;
        Colors wanted;
        for (const std::uint32_t level : each.seen) wanted.push_back(level * 0x010101);
        EXPECT_EQ(colors_of(read(tiff_file(sample))), wanted) << each.orientation;
    }
}

// The file with another number for a tag that it has.
FileBytes patched(FileBytes file, std::uint32_t tag, std::uint32_t value) {
    const MemoryPlaces places(file);
    TiffDirectories directories(places);
    const auto page = directories.read(directories.first());
    const TiffEntry* const entry = page ? page->find(tag) : nullptr;
    EXPECT_NE(entry, nullptr) << tag;
    const auto place = entry ? static_cast<std::size_t>(entry->value_place) : 0;
    const std::size_t bytes = entry && entry->type == kShort ? 2 : 4;
    for (std::size_t i = 0; i < bytes; ++i) file[place + i] = static_cast<std::uint8_t>(value >> 8 * i);
    return file;
}

TEST_F(TiffTest, KindsThatAreNotReadAreToldByName) {
    const auto error = [&](TiffSample sample, const std::function<void(TiffSample&)>& change) {
        change(sample);
        return error_of(tiff_file(sample));
    };
    const TiffSample grey{2, 2, 8, 1, kBlackIsZero, {1, 2, 3, 4}}, color{1, 1, 8, 3, kRgb, {1, 2, 3}};
    EXPECT_EQ(error(color, [](auto& s) { s.photometric = kLab; }), "the pixels are of L*a*b*, which is not read");
    EXPECT_EQ(error(grey, [](auto& s) { s.compression = kLzma; }),
              "the pixels are compressed in way 34925, which is not read");
    EXPECT_EQ(error({1, 1, 16, 1, kBlackIsZero, {1}}, [](auto& s) { s.format = 2; }),
              "the pixels are signed numbers or fractions, which is not read");
    EXPECT_EQ(error({1, 1, 4, 3, kRgb, {1, 2, 3}}, [](auto&) {}),
              "the pixels have 4 bits a channel, which is not read");
    EXPECT_EQ(error({1, 1, 8, 1, kRgb, {1}}, [](auto&) {}), "the pixels have 1 samples, their colors 3");
    EXPECT_EQ(error_of(patched(tiff_file({2, 1, 16, 1, kBlackIsZero, {1, 2}}), kTiffBits, 12)),
              "the pixels have 12 bits a channel, which is not read");
}

TEST_F(TiffTest, PhotometricsThatAreNotReadAreToldByName) {
    const FileBytes grey = tiff_file({2, 2, 8, 1, kBlackIsZero, {1, 2, 3, 4}});
    const std::pair<std::uint32_t, const char*> kinds[] = {{4, "a transparency mask"},
                                                           {8, "L*a*b*"},
                                                           {9, "L*a*b*"},
                                                           {10, "L*a*b*"},
                                                           {32844, "LogLuv"},
                                                           {32845, "LogLuv"},
                                                           {32803, "a camera's raw samples"},
                                                           {99, "an unknown kind"}};
    for (const auto& [photometric, name] : kinds)
        EXPECT_EQ(error_of(patched(grey, kTiffPhotometric, photometric)),
                  std::string("the pixels are of ") + name + ", which is not read");
    EXPECT_EQ(error_of(patched(tiff_file({1, 1, 8, 3, kRgb, {1, 2, 3}}), kTiffPhotometric, kYcc)),
              "the pixels are of YCbCr that is not JPEG, which is not read");
    TiffSample inks{1, 1, 8, 4, kInks, {1, 2, 3, 4}};
    inks.ink_set = 1;
    EXPECT_EQ(error_of(tiff_file(inks)), "");
    inks.ink_set = 2;
    EXPECT_EQ(error_of(tiff_file(inks)), "the pixels are of inks other than CMYK, which is not read");
    TiffSample palette{1, 1, 16, 1, kPalette, {1}};
    palette.palette = noise(3 * 65536, 16);
    EXPECT_EQ(error_of(tiff_file(palette)), "the pixels have 16 bits a channel, which is not read");
}

TEST_F(TiffTest, TilesOfImpossibleSizesAreDamage) {
    TiffSample sample{40, 40, 1, 1, kBlackIsZero, noise(1600, 1)};
    sample.tile = 16;
    const FileBytes file = tiff_file(sample);
    constexpr std::uint32_t kTileWidth = 322, kTileHeight = 323;
    for (const std::uint32_t tag : {kTileWidth, kTileHeight})
        for (const std::uint32_t side : {0u, 40000u, 0x7FFFFFF0u}) {
            const std::string error = error_of(patched(file, tag, side));
            EXPECT_TRUE(error.starts_with("damaged") || error == "cut short") << tag << ' ' << side << ": " << error;
        }
    EXPECT_TRUE(error_of(patched(file, kTileWidth, 20)).starts_with("damaged"));
}

TEST_F(TiffTest, ChannelsThatNothingIsToldOfAreNoAlpha) {
    FileBytes file = tiff_file({1, 1, 8, 4, kRgb, {1, 2, 3, 4}, {kStraight}});
    EXPECT_TRUE(picture_in(read(file)).mask());
    const MemoryPlaces places(file);
    TiffDirectories directories(places);
    const auto page = directories.read(directories.first());
    const TiffEntry* const extras = page->find(kTiffExtraSamples);
    ASSERT_NE(extras, nullptr);
    const auto count_place = static_cast<std::size_t>(extras->place) + 4;
    file[count_place] = 0;
    const ObjectRef picture = read(file);
    EXPECT_EQ(colors_of(picture), Colors{0x010203});
    EXPECT_FALSE(picture_in(picture).mask());
    EXPECT_EQ(carried.losses.at(0).words, "has 1 more channel: it is left out");
}

TEST_F(TiffTest, OtherChannelsAreToldByTheirNumber) {
    const ObjectRef picture = read(tiff_file({1, 1, 8, 4, kRgb, {1, 2, 3, 4}, {kOther}}));
    EXPECT_EQ(colors_of(picture), Colors{0x010203});
    EXPECT_EQ(carried.losses.at(0).words, "has 1 more channel: it is left out");
    EXPECT_EQ(colors_of(read(tiff_file({1, 1, 8, 5, kInks, {51, 102, 153, 128, 7}, {kStraight}}))), Colors{0x664C33});
    EXPECT_EQ(carried.losses.at(0).words, "has 1 more channel: it is left out");
}

TEST_F(TiffTest, PalettesMayHaveMasks) {
    TiffSample sample{2, 1, 8, 2, kPalette, {1, 255, 2, 64}, {kStraight}};
    sample.palette = std::vector<std::uint16_t>(3 * 256);
    for (const std::size_t channel : {0u, 1u, 2u})
        for (const std::size_t i : {1u, 2u})
            sample.palette[channel * 256 + i] = static_cast<std::uint16_t>((channel * 16 + i) << 8);
    const ObjectRef picture = read(tiff_file(sample));
    EXPECT_EQ(colors_of(picture), (Colors{0x011121, 0x021222}));
    EXPECT_EQ(mask_of(picture), (Colors{0, 0xBFBFBF}));
}

TEST_F(TiffTest, OneWideNumberMakesAPaletteWide) {
    for (const std::size_t wide : {0u, 1u, 2u}) {
        TiffSample sample{1, 1, 1, 1, kPalette, {1}};
        sample.palette = {0, 255, 0, 255, 0, 255};
        sample.palette[2 * wide + 1] = 0x3300;
        EXPECT_EQ(colors_of(read(tiff_file(sample))), Colors{0x330000u >> 8 * wide});
    }
}

TEST_F(TiffTest, GreysOfJpegAndOfNoTypeAreGreys) {
    TiffSample sample{16, 16, 8, 1, kBlackIsZero, std::vector<std::uint16_t>(256, 100)};
    sample.rows_in_a_strip = 16;
    sample.compression = kJpeg;
    for (const std::uint32_t color : colors_of(read(tiff_file(sample)))) EXPECT_EQ(color, 0x646464u);
    sample.compression = 1;
    sample.format = 4;
    for (const std::uint32_t color : colors_of(read(tiff_file(sample)))) EXPECT_EQ(color, 0x646464u);
}

TEST_F(TiffTest, SizesAreBounded) {
    const FileBytes file = tiff_file({20, 20, 8, 3, kRgb, noise(1200, 8)});
    EXPECT_EQ(file_error([&] { decode_picture(host, file, {.max_pixels = 399}); }),
              "the size is 20 x 20 pixels, together 400, the limit is 399");
}

TEST(TiffLimits, OfMemoryAreThePlanesOfAStrip) {
    TiffSample planes{64, 64, 8, 3, kRgb, noise(64 * 64 * 3, 8)};
    planes.planes = true;
    planes.rows_in_a_strip = 64;
    const FileBytes file = tiff_file(planes);
    for (const int less : {0, 1}) {
        Host host({.limits = {.max_memory = 64 * 64 * (4 + 3) + 64 * 64 - static_cast<unsigned>(less)}});
        if (less == 0)
            EXPECT_NO_THROW(decode_picture(host, file));
        else
            EXPECT_THROW(decode_picture(host, file), LimitedError);
    }
}

// Bytes that come but once.
class Pipe final : public ByteSource {
public:
    explicit Pipe(const FileBytes& bytes) : bytes_(bytes) {}

private:
    std::span<const std::uint8_t> next_block() override {
        const auto block = bytes_.first(std::min<std::size_t>(bytes_.size(), 100));
        bytes_ = bytes_.subspan(block.size());
        return block;
    }
    std::optional<std::uint64_t> behind_block() const override { return {}; }
    std::span<const std::uint8_t> bytes_;
};

// Where its bytes come but once a file is kept, within the limit.
TEST_F(TiffTest, PipesAreRead) {
    class Target final : public PixelTarget {
    public:
        void check_memory(std::uint64_t bytes, const std::string&) override {
            if (bytes > most) throw FileError("too much");
        }
        void begin(const ImageForm&, std::uint64_t working_bytes) override { working = working_bytes; }
        void put(const PixelRun& run) noexcept override { pixels += run.count; }
        void turn(int) override {}
        std::uint64_t most = std::uint64_t{4} << 20, working = 0;
        int pixels = 0;
    };
    const FileBytes file = tiff_file({1000, 900, 8, 3, kRgb, noise(2700000, 8)});
    {
        const FileBytes part(file.begin(), file.end() - 1000);
        Pipe cut(part);
        Target target;
        EXPECT_NE(file_error([&] { format_of_bytes(cut.ahead()).decode(cut, 1 << 20, target); }), "");
    }
    for (const bool fits : {true, false}) {
        Pipe pipe(file);
        Target target;
        if (!fits) target.most /= 2;
        const std::string error = file_error([&] { format_of_bytes(pipe.ahead()).decode(pipe, 1 << 20, target); });
        EXPECT_EQ(error, fits ? "" : "too much");
        EXPECT_EQ(target.pixels, fits ? 900000 : 0);
        EXPECT_TRUE(!fits || target.working > file.size());
    }
    // Watched ones too, until whoever watches stops it.
    for (const int most : {1000000, 1000}) {
        Pipe pipe(file);
        Target target;
        int asked = 0;
        const std::function<void()> ask = [&] {
            if (++asked > most) throw FileError("stopped");
        };
        WatchedSource watched(pipe, ask);
        const std::string error =
            file_error([&] { format_of_bytes(watched.ahead()).decode(watched, 1 << 20, target); });
        EXPECT_EQ(error, most == 1000 ? "stopped" : "");
        EXPECT_EQ(target.pixels, most == 1000 ? 0 : 900000);
        EXPECT_GT(asked, 1000);
    }
}

// --- what is written ------------------------------------------------------------------------------------------------

TEST_F(TiffTest, EveryPixelIsKept) {
    unsigned seed = 1;
    for (const Compression compression : {Compression::fast, Compression::normal, Compression::small})
        for (const int depth : {1, 2, 4, 8, 16, 32})
            for (const bool masked : {false, true})
                for (const int width : {1, 3, 17, 600}) {
                    SCOPED_TRACE(testing::Message() << static_cast<int>(compression) << ": " << depth << " bits, width "
                                                    << width << (masked ? ", mask" : ""));
                    const PictureOptions options{.width = width, .height = 9, .depth = depth};
                    const ObjectRef picture = random_picture(host, options, ++seed);
                    if (masked)
                        picture_in(picture).set_mask(random_picture(host, {.width = width, .height = 9}, ++seed));
                    const ObjectRef made = again(picture, {.compression = compression});
                    EXPECT_EQ(colors_of(made), colors_of(picture));
                    ASSERT_EQ(bool(picture_in(made).mask()), masked);
                    EXPECT_FALSE(report.mask_left_out);
                    EXPECT_EQ(in_words(report.pixels), in_words(carried.pixels));
                }
}

TEST_F(TiffTest, KindsComeBackAsTheyWere) {
    for (const char* words : {"black and white", "grey, 2 bits a channel", "grey, 8 bits a channel"}) {
        const int bits = words[0] == 'b' ? 1 : words[6] - '0';
        const ObjectRef picture = read(tiff_file({2, 2, bits, 1, kBlackIsZero, {0, 1, 1, 0}}));
        const Carried first = carried;
        again(picture, {.carried = &first});
        EXPECT_EQ(in_words(carried.pixels), words);
    }
    TiffSample sample{2, 2, 4, 1, kPalette, {0, 1, 2, 3}};
    sample.palette = noise(48, 16);
    const ObjectRef picture = read(tiff_file(sample));
    const Carried first = carried;
    const ObjectRef made = again(picture, {.carried = &first});
    EXPECT_EQ(in_words(carried.pixels), "palette, 2 bits a pixel");
    EXPECT_EQ(colors_of(made), colors_of(picture));
}

TEST_F(TiffTest, PalettesThatArePartlyClearBecomeColors) {
    const ObjectRef picture = random_picture(host, {.width = 2, .height = 2}, 5);
    picture_in(picture).set_mask(random_picture(host, {.width = 2, .height = 2}, 6));
    const Carried like{.pixels = {FilePixels::Colors::palette, 8}};
    const ObjectRef made = again(picture, {.carried = &like});
    EXPECT_EQ(in_words(report.pixels), "RGB, 8 bits a channel, mask");
    EXPECT_EQ(colors_of(made), colors_of(picture));
}

TEST_F(TiffTest, NoCompressionIsFastest) {
    const ObjectRef picture = host.new_picture({.width = 300, .height = 300});
    EXPECT_GT(encode_picture(picture_in(picture), "a.tiff", {.compression = Compression::fast}).size(), 270000u);
    EXPECT_LT(encode_picture(picture_in(picture), "a.tiff").size(), 10000u);
}

TEST_F(TiffTest, ErrorsThatDoNotMatterAreForgotten) {
    TiffSample sample{40, 40, 8, 1, kBlackIsZero, noise(1600, 8)};
    sample.compression = kDeflate;
    FileBytes file = patched(tiff_file(sample), kTiffOrientation, 99);
    EXPECT_EQ(error_of(file), "");
    const MemoryPlaces places(file);
    TiffDirectories directories(places);
    const TiffDirectory page = *directories.read(directories.first());
    const auto strips = static_cast<std::size_t>(page.find(kTiffStripPlaces)->value_place);
    const auto first = static_cast<std::size_t>(file[strips] | file[strips + 1] << 8);
    std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(first), 8, 0xFF);
    EXPECT_EQ(error_of(file), "damaged: Decoding error at scanline 0, incorrect header check");
}

// Of some values libtiff only notes that they could not be read.
TEST_F(TiffTest, NobodyIsAskedAfterAStop) {
    const Carried with{.metadata = {.resolution = Resolution{300, 150, Resolution::Unit::inch}}};
    const Folder folder;
    const std::string path = folder.file("a.tif");
    write_picture_file(picture_in(host.new_picture({.width = 3, .height = 2})), path, {.carried = &with});
    int asked = 0;
    for (int stop = 1; asked == stop - 1; ++stop) {
        asked = 0;
        const auto on_block = [&] {
            if (++asked >= stop) throw FileError("stopped");
        };
        const std::string error = file_error([&] { read_picture_file(host, path, {.on_block = on_block}); });
        EXPECT_EQ(error, asked < stop ? "" : path + ": stopped");
        EXPECT_LE(asked, stop);
    }
    EXPECT_GT(asked, 5);
}

// --- metadata -------------------------------------------------------------------------------------------------------

Metadata everything() {
    Metadata metadata;
    metadata.xmp = bytes_of("<x:xmpmeta/>");
    metadata.iptc = resource(0x0404, bytes_of({"\x1C\x02\x05\0\3abc", 8})) + resource(0x0400, bytes_of("path"));
    metadata.icc = profile("RGB ");
    metadata.resolution = Resolution{300, 150.5, Resolution::Unit::centimetre};
    return metadata;
}

TEST_F(TiffTest, EverythingGoesThrough) {
    const ObjectRef picture = random_picture(host, {.width = 32, .height = 16}, 7);
    const Carried before{.metadata = everything()};
    again(picture, {.carried = &before});
    EXPECT_TRUE(report.losses.empty());
    EXPECT_EQ(carried.metadata.xmp, before.metadata.xmp);
    EXPECT_EQ(carried.metadata.iptc, before.metadata.iptc);
    EXPECT_EQ(carried.metadata.icc, before.metadata.icc);
    EXPECT_EQ(carried.metadata.resolution, before.metadata.resolution);
    EXPECT_TRUE(carried.metadata.exif.empty());
}

// A block of either order with a text, and a camera's directory with one entry: a maker's note behind it, if not told
// otherwise.
Bytes block(bool big_endian, std::uint32_t of_camera = kTiffMakerNote, std::uint32_t bytes = 9) {
    Bytes made = bytes_of(big_endian ? std::string_view("MM\0*", 4) : std::string_view("II*\0", 4));
    const auto put = [&](std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            made.push_back(static_cast<std::uint8_t>(value >> 8 * (big_endian ? count - 1 - i : i)));
    };
    const auto entry = [&](std::uint32_t tag, std::uint32_t type, std::uint32_t count, std::uint32_t value) {
        put(tag, 2), put(type, 2), put(count, 4), put(value, 4);
    };
    put(8, 4), put(2, 2);
    entry(271, 2, 7, 38), entry(kTiffCamera, 4, 1, 46), put(0, 4);
    made = made + bytes_of({"Camera\0\0", 8});
    put(1, 2), entry(of_camera, 7, bytes, 64), put(0, 4);
    return made + bytes_of({"note at 64", 10});
}

TEST_F(TiffTest, ResolutionsKeepTheirUnit) {
    using Unit = Resolution::Unit;
    const ObjectRef picture = host.new_picture({.width = 2, .height = 2});
    for (const Resolution& resolution :
         {Resolution{300, 150, Unit::none}, Resolution{300, 150, Unit::inch}, Resolution{300, 150, Unit::centimetre}}) {
        const Carried before{.metadata = {.resolution = resolution}};
        again(picture, {.carried = &before});
        EXPECT_EQ(carried.metadata.resolution, resolution);
    }
}

TEST_F(TiffTest, ABlockOfExifKeepsItsPlaces) {
    const ObjectRef picture = random_picture(host, {.width = 32, .height = 16}, 7);
    for (const bool big_endian : {false, true}) {
        Carried before{.metadata = everything()};
        before.metadata.exif = block(big_endian);
        const FileBytes file = encode_picture(picture_in(picture), "a.tif", {.carried = &before});
        EXPECT_TRUE(std::equal(file.begin() + 8, file.begin() + 74, before.metadata.exif.begin() + 8));
        EXPECT_EQ(colors_of(read(file)), colors_of(picture));
        const Bytes& made = carried.metadata.exif;
        ASSERT_GE(made.size(), 73u);
        EXPECT_TRUE(std::equal(made.begin() + 46, made.begin() + 73, before.metadata.exif.begin() + 46));
        EXPECT_TRUE(carried.losses.empty());
        // Once more, and nothing moves.
        const Carried second = carried;
        again(picture, {.carried = &second});
        EXPECT_EQ(carried.metadata.exif, second.metadata.exif);
    }
}

// The file of a picture with that block, all of it behind 100,000 bytes that are nothing.
FileBytes with_far_exif(const Picture& picture, const Bytes& exif, bool has_note_outside) {
    const Carried before{.metadata = {.exif = exif}};
    const FileBytes near = encode_picture(picture, "a.tif", {.carried = &before});
    const MemoryPlaces places(near);
    TiffDirectories directories(places);
    const TiffDirectory page = *directories.read(directories.first());
    FileBytes far = near;
    far.resize(100000 + near.size());
    std::copy(near.begin() + 38, near.end(), far.begin() + 100038);
    const auto add = [&](std::uint64_t place) {
        const auto byte = [&](std::size_t i) { return place + (directories.big_endian() ? 3 - i : i); };
        std::uint32_t value = 100000;
        for (std::size_t i = 0; i < 4; ++i) value += std::uint32_t{far[byte(i)]} << 8 * i;
        for (std::size_t i = 0; i < 4; ++i) far[byte(i)] = static_cast<std::uint8_t>(value >> 8 * i);
    };
    add(4);
    for (const TiffEntry& entry : page.entries)
        if (entry.outside || entry.tag == kTiffCamera || entry.tag == kTiffStripPlaces) add(entry.place + 8 + 100000);
    if (has_note_outside) add(46 + 2 + 8 + 100000);
    return far;
}

TEST_F(TiffTest, ExifFarFromTheStartIsMoved) {
    const ObjectRef picture = random_picture(host, {.width = 32, .height = 16}, 7);
    for (const bool big_endian : {false, true}) {
        EXPECT_EQ(colors_of(read(with_far_exif(picture_in(picture), block(big_endian), true))), colors_of(picture));
        const Bytes& made = carried.metadata.exif;
        EXPECT_LT(made.size(), 200u);
        ASSERT_EQ(carried.losses.size(), 1u);
        EXPECT_NE(carried.losses[0].words.find("maker's note"), std::string::npos);
        const MemoryPlaces made_places(made);
        TiffDirectories of_made(made_places);
        const TiffDirectory main = *of_made.read(of_made.first());
        EXPECT_EQ(of_made.value(*main.find(271)), bytes_of({"Camera\0", 7}));
        const TiffDirectory camera = *of_made.read(*of_made.number(*main.find(kTiffCamera)));
        EXPECT_EQ(of_made.value(*camera.find(kTiffMakerNote)), bytes_of("note at 6"));
    }
}

// Of a file that is kept too nothing is read behind its end.
TEST_F(TiffTest, LinksBehindTheEndOfAPipeLeadNowhere) {
    class Target final : public PixelTarget {
    public:
        void begin(const ImageForm&, std::uint64_t) override {}
        void put(const PixelRun&) noexcept override {}
        void turn(int) override {}
        void carry(Carried&& carried) override { exif = carried.metadata.exif; }
        Bytes exif;
    };
    const Carried before{.metadata = {.exif = block(false)}};
    const FileBytes file =
        encode_picture(picture_in(host.new_picture({.width = 3, .height = 2})), "a.tif", {.carried = &before});
    for (const bool behind : {false, true}) {
        const FileBytes given = behind ? patched(file, kTiffCamera, 0x7FFFFFF0) : file;
        Pipe pipe(given);
        Target target;
        format_of_bytes(pipe.ahead()).decode(pipe, 1 << 20, target);
        const MemoryPlaces places(target.exif);
        TiffDirectories directories(places);
        const auto main = directories.read(directories.first());
        ASSERT_TRUE(main && main->find(kTiffCamera));
        EXPECT_EQ(directories.read(*directories.number(*main->find(kTiffCamera))).has_value(), !behind);
    }
}

// Only a note knows places that nobody else does, and only one that is longer than a place.
TEST_F(TiffTest, ExifWithoutANoteThatKnowsPlacesIsMovedWithoutAWord) {
    constexpr std::uint32_t kVersion = 0x9000;
    const ObjectRef picture = random_picture(host, {.width = 32, .height = 16}, 7);
    for (const std::uint32_t tag : {kTiffMakerNote + 0u, kVersion}) {
        read(with_far_exif(picture_in(picture), block(false, tag, 4), false));
        EXPECT_TRUE(carried.losses.empty()) << tag;
        const MemoryPlaces places(carried.metadata.exif);
        TiffDirectories directories(places);
        const TiffDirectory main = *directories.read(directories.first());
        const TiffDirectory camera = *directories.read(*directories.number(*main.find(kTiffCamera)));
        EXPECT_EQ(directories.value(*camera.find(tag)), (Bytes{64, 0, 0, 0}));
    }
}

TEST_F(TiffTest, ExifThatIsNoneIsLeftOutAndTold) {
    const ObjectRef picture = random_picture(host, {.width = 32, .height = 16}, 7);
    for (const Bytes& exif : {bytes_of("no TIFF header at all"), bytes_of({"II*\0\xFF\xFF\xFF\xFF", 8})}) {
        const Carried before{.metadata = {.exif = exif}};
        EXPECT_EQ(colors_of(again(picture, {.carried = &before})), colors_of(picture));
        ASSERT_EQ(report.losses.size(), 1u);
        EXPECT_EQ(report.losses[0].words, "has no room for Exif: it is left out");
    }
}

TEST_F(TiffTest, DirectoriesThatLinkInCirclesEnd) {
    Bytes circle = block(false);
    circle[30] = 8;  // the camera's directory is the first
    const MemoryPlaces places(circle);
    Losses losses;
    EXPECT_LT(metadata_of_tiff(places, losses).exif.size(), 200u);
    Bytes endless = block(false);
    endless[8] = endless[9] = 0xFF;
    EXPECT_LT(metadata_of_tiff(MemoryPlaces(endless), losses).exif.size(), std::size_t{1} << 16);
}

TEST_F(TiffTest, IptcMayHaveZerosBehindIt) {
    const Bytes records = bytes_of({"\x1C\x02\x05\0\3abc", 8});
    for (std::size_t zeros = 0; zeros < 7; ++zeros) {
        const Carried before{.metadata = {.iptc = resources_of(records + Bytes(zeros))}};
        again(random_picture(host, {.width = 2, .height = 2}, 7), {.carried = &before});
        EXPECT_EQ(carried.metadata.iptc, resources_of(records)) << zeros;
    }
    // Of a record whose length has a length the end is not looked for.
    const Bytes extended = bytes_of({"\x1C\x02\x05\x80\4\0\0\0\3abc\0", 13});
    const Carried before{.metadata = {.iptc = resources_of(extended)}};
    again(random_picture(host, {.width = 2, .height = 2}, 7), {.carried = &before});
    EXPECT_EQ(carried.metadata.iptc, resources_of(extended));
}

TEST_F(TiffTest, ProfilesAreKnownBeforeThePixels) {
    TiffSample sample{1, 1, 8, 3, kRgb, {1, 2, 3}};
    sample.profile = profile("RGB ");
    read(tiff_file(sample));
    EXPECT_EQ(carried.metadata.icc, sample.profile);
#ifdef TARVO_COLOR_PROFILES
    decode_picture(host, tiff_file(sample), {.srgb = true}, &carried);
    EXPECT_EQ(carried.losses.size(), 1u);  // which cannot be used
    EXPECT_TRUE(carried.metadata.icc.empty());
#endif
}

}  // namespace
}  // namespace tarvo::host
