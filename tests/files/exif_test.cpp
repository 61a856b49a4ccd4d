#include "exif.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace tarvo::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kRational = 5;

// A block in the making: directories at places that a test chooses.
class Block {
public:
    explicit Block(bool big_endian, std::size_t size = 512) : bytes(size), big_endian_(big_endian) {
        bytes[0] = bytes[1] = big_endian ? 'M' : 'I';
        put(2, 42, 2);
        put(4, 8, 4);
    }

    void put(std::size_t place, std::uint32_t value, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            bytes[place + (big_endian_ ? count - 1 - i : i)] = static_cast<std::uint8_t>(value >> 8 * i);
    }

    struct Entry {
        std::uint32_t tag;
        int type;
        std::uint32_t count, value;
    };
    void directory(std::size_t place, const std::vector<Entry>& entries, std::uint32_t next = 0) {
        put(place, static_cast<std::uint32_t>(entries.size()), 2);
        place += 2;
        for (const Entry& entry : entries) {
            put(place, entry.tag, 2);
            put(place + 2, static_cast<std::uint32_t>(entry.type), 2);
            put(place + 4, entry.count, 4);
            put(place + 8, entry.value, entry.type == kShort && entry.count == 1 ? 2 : 4);
            place += 12;
        }
        put(place, next, 4);
    }

    Bytes bytes;

private:
    bool big_endian_;
};

// What cameras write: three directories.
Block photo(bool big_endian) {
    Block block(big_endian);
    block.directory(8,
                    {{0x0100, kLong, 1, 4000},
                     {0x0101, kShort, 1, 3000},
                     {0x0112, kShort, 1, 6},
                     {0x011A, kRational, 1, 200},
                     {0x011B, kRational, 1, 208},
                     {0x0128, kShort, 1, 2},
                     {0x8769, kLong, 1, 220}},
                    300);
    block.put(200, 300, 4);
    block.put(204, 1, 4);
    block.put(208, 720, 4);
    block.put(212, 7, 4);
    block.directory(220, {{0xA002, kShort, 1, 4001}, {0xA003, kLong, 1, 3001}});
    block.directory(300, {{0x0201, kLong, 1, 400}, {0x0202, kLong, 1, 100}});
    return block;
}

TEST(Exif, TellsItsNumbersAndWhereTheyStand) {
    for (const bool big_endian : {true, false}) {
        const Exif exif = read_exif(photo(big_endian).bytes);
        EXPECT_EQ(exif.big_endian, big_endian);
        EXPECT_EQ(exif.shown_orientation(), 6);
        ASSERT_TRUE(exif.orientation && exif.width && exif.height && exif.camera_width && exif.camera_height);
        EXPECT_EQ(exif.orientation->place, 8u + 2 + 2 * 12 + 8);
        EXPECT_EQ(exif.orientation->bytes, 2);
        EXPECT_EQ(exif.width->value, 4000u);
        EXPECT_EQ(exif.width->bytes, 4);
        EXPECT_EQ(exif.width->place, 8u + 2 + 8);
        EXPECT_EQ(exif.height->value, 3000u);
        EXPECT_EQ(exif.height->bytes, 2);
        EXPECT_EQ(exif.camera_width->value, 4001u);
        EXPECT_EQ(exif.camera_height->value, 3001u);
        EXPECT_EQ(exif.camera_height->place, 220u + 2 + 12 + 8);
        ASSERT_TRUE(exif.x_resolution && exif.y_resolution && exif.resolution_unit);
        EXPECT_EQ(exif.x_resolution->numerator, 300u);
        EXPECT_EQ(exif.x_resolution->denominator, 1u);
        EXPECT_EQ(exif.x_resolution->place, 200u);
        EXPECT_EQ(exif.y_resolution->numerator, 720u);
        EXPECT_EQ(exif.y_resolution->denominator, 7u);
        EXPECT_EQ(exif.resolution_unit->value, 2u);
        ASSERT_TRUE(exif.thumbnail.size() == 1 && exif.thumbnail_link);
        EXPECT_EQ(exif.thumbnail[0].place, 400u);
        EXPECT_EQ(exif.thumbnail[0].size, 100u);
        EXPECT_EQ(exif.thumbnail_link->place, 8u + 2 + 7 * 12);
        EXPECT_EQ(exif.thumbnail_link->value, 300u);
    }
}

// Numbers are patched where the reader says that they stand.
TEST(Exif, PlacesAreWhereAPatchIsSeen) {
    for (const bool big_endian : {true, false}) {
        Block block = photo(big_endian);
        const Exif before = read_exif(block.bytes);
        block.put(before.orientation->place, 3, 2);
        block.put(before.camera_width->place, 77, 2);
        block.put(before.height->place, 78, 2);
        block.put(before.y_resolution->place + 4, 79, 4);
        block.put(before.thumbnail_link->place, 0, 4);
        const Exif after = read_exif(block.bytes);
        EXPECT_EQ(after.shown_orientation(), 3);
        EXPECT_EQ(after.camera_width->value, 77u);
        EXPECT_EQ(after.height->value, 78u);
        EXPECT_EQ(after.y_resolution->denominator, 79u);
        EXPECT_TRUE(after.thumbnail.empty() && !after.thumbnail_link);
    }
}

TEST(Exif, OfWrongTypesTellsNothing) {
    for (const int type : {kByte, kAscii, kLong, kRational, 0, 99}) {
        Block block(true);
        block.directory(8, {{0x0112, type, 1, 6}});
        EXPECT_FALSE(read_exif(block.bytes).orientation) << type;
    }
    for (const std::uint32_t number : {0u, 9u, 65535u}) {
        Block block(true);
        block.directory(8, {{0x0112, kShort, 1, number}});
        EXPECT_EQ(read_exif(block.bytes).orientation->value, number);
        EXPECT_EQ(read_exif(block.bytes).shown_orientation(), 1);
    }
    Block none(true);
    none.directory(8, {{0x0112, kShort, 0, 6}});
    EXPECT_FALSE(read_exif(none.bytes).orientation);
}

TEST(Exif, OfSeveralNumbersTheFirstCounts) {
    Block block(true);
    block.directory(8, {{0x0112, kShort, 1, 6}, {0x0112, kShort, 1, 3}});
    EXPECT_EQ(read_exif(block.bytes).shown_orientation(), 6);
    block.directory(8, {{0x0112, kShort, 3, 200}});
    block.put(200, 8, 2);
    EXPECT_EQ(read_exif(block.bytes).shown_orientation(), 8);
    EXPECT_EQ(read_exif(block.bytes).orientation->place, 200u);
}

TEST(Exif, StaysWithinTheBlock) {
    // One byte less than the number takes, and the largest places that can be written.
    for (const std::uint32_t place : {505u, 509u, 512u, 0xFFFFFFFFu, 0xFFFFFFF8u}) {
        Block block(false);
        block.directory(8, {{0x011A, kRational, 1, place}, {0x0112, kShort, 3, place == 505 ? 511 : place}});
        EXPECT_FALSE(read_exif(block.bytes).x_resolution) << place;
        block.directory(8, {{0x0112, kShort, 1, 2}, {0x8769, kLong, 1, place}}, place);
        EXPECT_EQ(read_exif(block.bytes).shown_orientation(), 2);
    }
    Block block(false);
    block.directory(8, {{0x011A, kRational, 1, 504}});
    EXPECT_TRUE(read_exif(block.bytes).x_resolution);
    Block thumbnail = photo(false);
    thumbnail.directory(300, {{0x0201, kLong, 1, 400}, {0x0202, kLong, 1, 113}});
    EXPECT_TRUE(read_exif(thumbnail.bytes).thumbnail.empty());
    thumbnail.directory(300, {{0x0201, kLong, 1, 513}, {0x0202, kLong, 1, 0xFFFFFFFF}});
    EXPECT_TRUE(read_exif(thumbnail.bytes).thumbnail.empty());
}

TEST(Exif, FollowsNoDirectoryTwice) {
    Block block(true);
    block.directory(8, {{0x0112, kShort, 1, 5}, {0xA002, kShort, 1, 9}, {0x8769, kLong, 1, 8}}, 8);
    const Exif exif = read_exif(block.bytes);
    EXPECT_EQ(exif.shown_orientation(), 5);
    EXPECT_FALSE(exif.camera_width);  // which a second look at the same directory would have found
    EXPECT_TRUE(exif.thumbnail.empty());
}

TEST(Exif, LooksAtSoManyEntriesAndNoMore) {
    std::vector<Block::Entry> entries(kMostExifEntries - 1, {0x9999, kShort, 1, 1});
    entries.push_back({0x0112, kShort, 1, 4});
    Block block(true, 10000);
    block.directory(8, entries);
    EXPECT_EQ(read_exif(block.bytes).shown_orientation(), 4);
    entries.insert(entries.begin(), {0x9999, kShort, 1, 1});
    block.directory(8, entries);
    EXPECT_EQ(read_exif(block.bytes).shown_orientation(), 1);
}

TEST(Exif, LooksAtSoManyBytesAndNoMore) {
    for (const bool within : {true, false}) {
        Block block(true, kMostExifBytes + 4096);
        const std::uint32_t place = static_cast<std::uint32_t>(kMostExifBytes) - (within ? 14 : 13);
        block.put(4, place, 4);
        block.directory(place, {{0x0112, kShort, 1, 7}});
        EXPECT_EQ(read_exif(block.bytes).shown_orientation(), within ? 7 : 1);
    }
}

// Returns the places whose bytes differ.
std::vector<std::size_t> differences(const Bytes& a, const Bytes& b) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) places.push_back(i);
    return places;
}

TEST(Exif, IsMadeTrueOfItsPictureAndChangesNothingElse) {
    for (const bool big_endian : {true, false}) {
        Block block = photo(big_endian);
        std::fill(block.bytes.begin() + 340, block.bytes.end(), 0xAB);  // the preview among others' bytes
        Bytes expected = block.bytes;
        make_exif_true(block.bytes, 640, 480);
        const Exif exif = read_exif(block.bytes);
        EXPECT_EQ(exif.shown_orientation(), 1);
        EXPECT_EQ(exif.width->value, 640u);
        EXPECT_EQ(exif.height->value, 480u);
        EXPECT_EQ(exif.camera_width->value, 640u);
        EXPECT_EQ(exif.camera_height->value, 480u);
        EXPECT_FALSE(exif.thumbnail_link);
        std::fill_n(expected.begin() + 400, 100, 0);
        const auto allowed = [&](std::size_t place) {
            const ExifNumber numbers[] = {*exif.orientation,  *exif.width,         *exif.height,
                                          *exif.camera_width, *exif.camera_height, {0, 8 + 2 + 7 * 12, 4}};
            return std::any_of(std::begin(numbers), std::end(numbers), [&](const ExifNumber& number) {
                return place >= number.place && place < number.place + static_cast<std::size_t>(number.bytes);
            });
        };
        for (const std::size_t place : differences(block.bytes, expected)) EXPECT_TRUE(allowed(place)) << place;
        const Bytes once = block.bytes;
        make_exif_true(block.bytes, 640, 480);
        EXPECT_EQ(block.bytes, once);
    }
}

TEST(Exif, PreviewsInStripsGoToo) {
    Block block = photo(true);
    block.directory(300, {{0x0111, kLong, 2, 350}, {0x0117, kShort, 2, 10 << 16 | 20}});
    block.put(350, 400, 4);
    block.put(354, 440, 4);
    std::fill(block.bytes.begin() + 400, block.bytes.end(), 0xAB);
    make_exif_true(block.bytes, 1, 1);
    EXPECT_EQ(std::count(block.bytes.begin() + 400, block.bytes.begin() + 410, 0), 10);
    EXPECT_EQ(std::count(block.bytes.begin() + 440, block.bytes.begin() + 460, 0), 20);
    EXPECT_EQ(std::count(block.bytes.begin() + 400, block.bytes.end(), 0), 30);
}

// A preview may be said to be anywhere.
TEST(Exif, WhatAPreviewOverlapsIsNotLost) {
    constexpr std::uint32_t kMakerNote = 0x927C;
    Block block = photo(true);
    block.directory(220, {{0xA002, kShort, 1, 4001}, {0xA003, kLong, 1, 3001}, {kMakerNote, kByte, 50, 420}});
    block.directory(300, {{0x0201, kLong, 1, 0}, {0x0202, kLong, 1, 512}});
    std::fill(block.bytes.begin() + 420, block.bytes.begin() + 470, 0xAB);
    const Bytes before = block.bytes;
    make_exif_true(block.bytes, 640, 480);
    EXPECT_EQ(read_exif(block.bytes).width->value, 640u);
    EXPECT_EQ(read_exif(block.bytes).x_resolution->numerator, 300u);
    EXPECT_TRUE(std::equal(before.begin() + 420, before.begin() + 470, block.bytes.begin() + 420));
    EXPECT_EQ(block.bytes[419], 0);
}

TEST(Exif, OfAnythingElseIsNothing) {
    Bytes block = photo(true).bytes;
    for (const std::size_t wrong : {0, 1, 2, 3}) {
        Bytes changed = block;
        changed[wrong] ^= 1;
        EXPECT_EQ(read_exif(changed).shown_orientation(), 1) << wrong;
    }
    for (const char letter : {'A', 'J', 'i'}) {
        Bytes changed = block;
        changed[0] = changed[1] = static_cast<std::uint8_t>(letter);
        EXPECT_EQ(read_exif(changed).shown_orientation(), 1) << letter;
    }
    for (std::size_t length = 0; length < 44; ++length)
        EXPECT_EQ(read_exif(std::span(block).first(length)).shown_orientation(), 1) << length;
    EXPECT_EQ(read_exif(std::span(block).first(46)).shown_orientation(), 6);
    std::mt19937 random(4711);
    for (int round = 0; round < 20000; ++round) {
        Bytes changed(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(random() % block.size()));
        for (int flips = 0; flips < 6 && changed.size() > 4; ++flips)
            changed[4 + random() % (changed.size() - 4)] = static_cast<std::uint8_t>(random());
        const Bytes exact(changed);  // a checker of memory sees a step beyond it
        const Exif exif = read_exif(exact);
        EXPECT_TRUE(!exif.orientation || exif.orientation->place + 2 <= exact.size());
        for (const std::vector<ExifRange>* ranges : {&exif.thumbnail, &exif.others})
            for (const ExifRange& range : *ranges) EXPECT_LE(range.place + range.size, exact.size());
        Bytes patched(exact);
        make_exif_true(patched, 32767, 1);
        EXPECT_EQ(patched.size(), exact.size());
    }
}

// What other directories hold is known, so that nothing else is taken for free.
TEST(Exif, KnowsTheDirectoryBelowTheCameras) {
    Block block(true);
    block.directory(8, {{0x8769, kLong, 1, 100}});
    block.directory(100, {{0xA005, kLong, 1, 200}});
    block.directory(200, {{1, kAscii, 8, 300}});
    const Exif found = read_exif(block.bytes);
    const auto knows = [&](std::size_t place) {
        return std::ranges::any_of(found.others, [place](const ExifRange& range) {
            return range.place <= place && place < range.place + range.size;
        });
    };
    EXPECT_TRUE(knows(200));
    EXPECT_TRUE(knows(300));
    EXPECT_FALSE(knows(400));
}

}  // namespace
}  // namespace tarvo::host
