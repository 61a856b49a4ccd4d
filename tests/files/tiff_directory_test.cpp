// Directories of TIFF files and of Exif blocks, made by hand: what is read of them, and that nothing is taken on trust.

#include "tiff_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "exif.h"
#include "metadata_samples.h"
#include "tiff_metadata.h"
#include "tiff_tags.h"

namespace tarvo::host {
namespace {

bool is_tiff(const Bytes& file) { return TiffDirectories(MemoryPlaces(file)).is_tiff(); }

TEST(TiffDirectories, BelongToFilesThatBeginAsOne) {
    const Bytes large = bytes_of({"MM\0+\0\x8\0\0\0\0\0\0\0\0\0\x10", 16});
    EXPECT_TRUE(is_tiff(TiffBytes().bytes()));
    EXPECT_TRUE(is_tiff(large));
    for (const std::size_t length : {3u, 7u, 15u})
        EXPECT_FALSE(is_tiff(Bytes(large.begin(), large.begin() + static_cast<std::ptrdiff_t>(length)))) << length;
    EXPECT_FALSE(is_tiff({}));
    for (const std::string_view start : {std::string_view("IM*\0\x8\0\0\0", 8), std::string_view("PP*\0\x8\0\0\0", 8),
                                         std::string_view("II)\0\x8\0\0\0", 8), std::string_view("II*\0\x8\0\0", 7),
                                         std::string_view("II+\0\4\0\0\0\x10\0\0\0\0\0\0\0", 16)})
        EXPECT_FALSE(is_tiff(bytes_of(start)));
}

TEST(TiffDirectories, HaveNoEntriesWhoseValuesAreNotThere) {
    TiffBytes file;
    file.directory({{1, kUnknown, 1, 0},
                    {2, 0, 1, 0},
                    {3, kLong, 0x40000000, 8},
                    {4, kLong, 2, 1000},
                    {5, kLong, 2, 0xFFFFFFFF},
                    {6, kLong, 2, 8},
                    {7, kShort, 2, 0x00020001}});
    const MemoryPlaces places(file.bytes());
    TiffDirectories directories(places);
    const auto page = directories.read(directories.first());
    ASSERT_TRUE(page);
    ASSERT_EQ(page->entries.size(), 2u);
    EXPECT_EQ(page->entries[0].tag, 6u);
    EXPECT_EQ(page->entries[0].value_place, 8u);
    EXPECT_EQ(directories.value(page->entries[1]), (Bytes{1, 0, 2, 0}));
    EXPECT_FALSE(directories.read(4)) << "within the header";
    EXPECT_FALSE(directories.read(file.end() - 1));
    const Bytes other = bytes_of("nothing of this kind");
    const MemoryPlaces other_places(other);
    EXPECT_FALSE(TiffDirectories(other_places).read(8));
}

TEST(TiffDirectories, ThatAreCutShortHaveWhatIsThere) {
    TiffBytes file;
    file.directory({{1, kByte, 1, 7}, {2, kByte, 1, 8}}, 4711);
    for (const std::size_t missing : {0u, 1u, 5u, 17u}) {
        const Bytes cut(file.bytes().begin(), file.bytes().end() - static_cast<std::ptrdiff_t>(missing));
        const MemoryPlaces places(cut);
        const auto page = TiffDirectories(places).read(8);
        ASSERT_TRUE(page);
        EXPECT_EQ(page->entries.size(), missing < 5 ? 2u : missing < 17 ? 1u : 0u) << missing;
        EXPECT_EQ(page->next, missing == 0 ? 4711u : 0u) << missing;
    }
}

TEST(TiffDirectories, HaveNoMoreEntriesTogetherThanAReaderTakes) {
    TiffBytes file;
    file.directory(std::vector<TiffBytes::Entry>(400, {1, kByte, 1, 7}));
    const MemoryPlaces places(file.bytes());
    TiffDirectories directories(places);
    EXPECT_EQ(directories.read(8)->entries.size(), 400u);
    EXPECT_EQ(directories.read(8)->entries.size(), static_cast<std::size_t>(kMostExifEntries) - 400);
}

TEST(TiffDirectories, TellNumbersOfTheTypesThatHaveThem) {
    TiffBytes file;
    const auto behind = 8 + TiffBytes::bytes_for(8);
    file.directory({{1, kShort, 1, 77},
                    {2, kLong, 1, 70000},
                    {3, kText, 1, 'a'},
                    {4, kShort, 0, 77},
                    {5, kRational, 1, behind},
                    {6, kRational, 1, behind + 8},
                    {7, kRational, 1, behind + 16},
                    {8, kRational, 0, behind}});
    file.fraction(3, 2), file.fraction(0, 2), file.fraction(3, 0);
    const MemoryPlaces places(file.bytes());
    TiffDirectories directories(places);
    const auto page = directories.read(8);
    const auto number = [&](std::uint32_t tag) { return directories.number(*page->find(tag)); };
    const auto fraction = [&](std::uint32_t tag) { return directories.fraction(*page->find(tag)); };
    EXPECT_EQ(number(1), 77u);
    EXPECT_EQ(number(2), 70000u);
    for (const std::uint32_t tag : {3u, 4u, 5u}) EXPECT_FALSE(number(tag)) << tag;
    EXPECT_EQ(fraction(5), 1.5);
    for (const std::uint32_t tag : {1u, 6u, 7u, 8u}) EXPECT_FALSE(fraction(tag)) << tag;
}

// A file of which bytes can be read no longer, as when somebody cuts it short meanwhile.
class Shrunk final : public BytePlaces {
public:
    explicit Shrunk(const Bytes& bytes) : whole_(bytes) {}
    std::uint64_t size() const override { return whole_.size(); }
    bool read_at(std::uint64_t place, std::span<std::uint8_t> out) const override {
        return place + out.size() <= length && whole_.read_at(place, out);
    }
    std::uint64_t length = std::numeric_limits<std::uint64_t>::max();

private:
    const MemoryPlaces whole_;
};

TEST(TiffDirectories, TellNothingOfValuesThatAreGone) {
    TiffBytes file;
    const auto behind = 8 + TiffBytes::bytes_for(2);
    file.directory({{1, kRational, 1, behind}, {2, kText, 6, behind + 8}});
    file.fraction(3, 2), file.append(bytes_of("a text"));
    Shrunk places(file.bytes());
    TiffDirectories directories(places);
    const auto page = directories.read(8);
    EXPECT_EQ(directories.fraction(*page->find(1)), 1.5);
    EXPECT_EQ(directories.value(*page->find(2)), bytes_of("a text"));
    places.length = behind + 4;
    EXPECT_FALSE(directories.fraction(*page->find(1)));
    EXPECT_TRUE(directories.value(*page->find(2)).empty());
    places.length = behind;
    EXPECT_FALSE(directories.fraction(*page->find(1)));
    places.length = 8 + 2 + 6;  // within the first entry
    EXPECT_TRUE(directories.read(8)->entries.empty());
}

// --- metadata -------------------------------------------------------------------------------------------------------

class TiffMetadata : public testing::Test {
protected:
    Metadata of(const Bytes& file) {
        losses.clear();
        return metadata_of_tiff(MemoryPlaces(file), losses);
    }
    std::string told() const {
        std::string all;
        for (const Loss& loss : losses) all += loss.words + '\n';
        return all;
    }
    Losses losses;
};

TEST_F(TiffMetadata, IsNothingWithoutADirectory) {
    const Metadata none = of(TiffBytes(4000).bytes());
    EXPECT_TRUE(none.exif.empty() && none.xmp.empty() && none.iptc.empty() && none.icc.empty() && !none.resolution);
    EXPECT_TRUE(profile_of_tiff(MemoryPlaces(TiffBytes(4000).bytes())).empty());
    EXPECT_TRUE(losses.empty());
}

TEST_F(TiffMetadata, ResolutionsCountInInchesUnlessTheySayOtherwise) {
    const auto resolution = [&](std::vector<TiffBytes::Entry> more, std::uint32_t y) {
        TiffBytes file;
        const auto behind = 8 + TiffBytes::bytes_for(static_cast<std::uint32_t>(2 + more.size()));
        more.insert(more.begin(),
                    {{kTiffXResolution, kRational, 1, behind}, {kTiffYResolution, kRational, 1, behind + 8}});
        file.directory(more);
        file.fraction(300, 1), file.fraction(y, 2);
        return of(file.bytes()).resolution;
    };
    using Unit = Resolution::Unit;
    EXPECT_EQ(resolution({}, 600), (Resolution{300, 300, Unit::inch}));
    EXPECT_EQ(resolution({{kTiffResolutionUnit, kShort, 1, 2}}, 300), (Resolution{300, 150, Unit::inch}));
    EXPECT_EQ(resolution({{kTiffResolutionUnit, kShort, 1, 3}}, 600), (Resolution{300, 300, Unit::centimetre}));
    EXPECT_EQ(resolution({{kTiffResolutionUnit, kShort, 1, 1}}, 300), (Resolution{300, 150, Unit::none}));
    // Of square pixels a ratio says nothing.
    EXPECT_FALSE(resolution({{kTiffResolutionUnit, kShort, 1, 1}}, 600));
    EXPECT_FALSE(resolution({{kTiffResolutionUnit, kShort, 1, 9}}, 600));
    EXPECT_FALSE(resolution({}, 0));
    TiffBytes alone;
    alone.directory({{kTiffXResolution, kRational, 1, 26}});
    alone.fraction(300, 1);
    EXPECT_FALSE(of(alone.bytes()).resolution);
}

TEST_F(TiffMetadata, OfLargeFilesHasNoExif) {
    // A directory whose one entry, of large files' form, has that tag.
    const auto large = [](std::uint32_t tag) {
        Bytes file = bytes_of({"II+\0\x8\0\0\0\x10\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0", 24});
        const Bytes entry = {static_cast<std::uint8_t>(tag), static_cast<std::uint8_t>(tag >> 8), kLong, 0, 1};
        return file + entry + Bytes(7) + Bytes{16} + Bytes(15);
    };
    for (const std::uint32_t tag : {kTiffCamera, kTiffPosition}) {
        EXPECT_TRUE(of(large(tag)).exif.empty());
        EXPECT_EQ(told(), "has Exif of large files: it is left out\n");
    }
    of(large(kTiffSubfileType));
    EXPECT_EQ(told(), "");
}

TEST_F(TiffMetadata, MayTellOfPagesInAListOfTheirOwn) {
    TiffBytes file;
    file.directory({{kTiffDirectoriesBelow, kLong, 1, 8}});
    of(file.bytes());
    EXPECT_EQ(told(), "has further pages: only the first is read\n");
}

TEST_F(TiffMetadata, BeyondTheLimitIsLeftOutAndTold) {
    const auto much = static_cast<std::uint32_t>(kMostMetadataBytes) + 1;
    TiffBytes file;
    const auto behind = 8 + TiffBytes::bytes_for(3);
    file.directory(
        {{kTiffXmp, kByte, much, behind}, {kTiffIptc, kAnything, much, behind}, {kTiffProfile, kAnything, 5, behind}});
    file.append(Bytes(much, 'x'));
    const Metadata found = of(file.bytes());
    EXPECT_TRUE(found.xmp.empty() && found.iptc.empty());
    EXPECT_EQ(found.icc, bytes_of("xxxxx"));
    EXPECT_EQ(told(), too_much_metadata().words + '\n');
}

// Many entries may claim the same bytes, and would make a block many times as large as the file.
TEST_F(TiffMetadata, NoBlockIsLargerThanTheLimit) {
    const auto block = [&](std::uint32_t entries) {
        TiffBytes file;
        std::vector<TiffBytes::Entry> all;
        for (std::uint32_t i = 0; i < entries; ++i)
            all.push_back({0xC800 + i, kAnything, 65535, 8 + TiffBytes::bytes_for(entries)});
        file.directory(all);
        file.append(Bytes(65535, 7));
        return of(file.bytes()).exif;
    };
    EXPECT_GT(block(100).size(), 6'000'000u);
    EXPECT_EQ(told(), "");
    EXPECT_TRUE(block(200).empty());
    EXPECT_EQ(told(), too_much_metadata().words + '\n');
}

TEST_F(TiffMetadata, ValuesThatNoSegmentHoldsAreToldOnce) {
    TiffBytes file;
    const auto camera = 8 + TiffBytes::bytes_for(3), behind = camera + TiffBytes::bytes_for(1);
    file.directory({{271, kText, 65536, behind}, {272, kText, 4, 'T'}, {kTiffCamera, kLong, 1, camera}});
    file.directory({{kTiffMakerNote, kAnything, 65536, behind}});
    file.append(Bytes(65536, 'n'));
    const Bytes exif = of(file.bytes()).exif;
    EXPECT_EQ(told(), "has values of more than 65535 bytes in its Exif: they are left out\n");
    const MemoryPlaces places(exif);
    TiffDirectories directories(places);
    const auto main = directories.read(directories.first());
    EXPECT_FALSE(main->find(271));
    EXPECT_EQ(directories.value(*main->find(272)), (Bytes{'T', 0, 0, 0}));
    EXPECT_TRUE(directories.read(*directories.number(*main->find(kTiffCamera)))->entries.empty());
}

// What stands far behind is moved together, each directory with its links.
TEST_F(TiffMetadata, AllDirectoriesOfExifAreFound) {
    for (const std::uint32_t gap : {0u, 100000u}) {
        TiffBytes file;
        const auto first = 8 + TiffBytes::bytes_for(3) + gap;
        const auto second = first + TiffBytes::bytes_for(2), third = second + TiffBytes::bytes_for(1);
        file.directory({{272, kText, 4, 'T'}, {kTiffCamera, kLong, 1, first}, {kTiffPosition, kLong, 1, third}});
        file.append(Bytes(gap));
        file.directory({{kTiffMakerNote, kAnything, 4, 'n'}, {kTiffInteroperability, kLong, 1, second}});
        file.directory({{1, kText, 4, 'R'}});
        file.directory({{2, kText, 4, 'N'}});
        const Bytes exif = of(file.bytes()).exif;
        EXPECT_EQ(told(), "") << "a note within its entry is not moved";
        EXPECT_LT(exif.size(), 300u);
        const MemoryPlaces places(exif);
        TiffDirectories directories(places);
        const auto main = directories.read(directories.first());
        ASSERT_TRUE(main);
        const auto below = [&](const TiffDirectory& above, std::uint32_t tag) {
            const auto* const link = above.find(tag);
            return link ? directories.read(directories.number(*link).value_or(0)).value_or(TiffDirectory())
                        : TiffDirectory();
        };
        const TiffDirectory camera = below(*main, kTiffCamera);
        const auto letter = [&](const TiffDirectory& directory, std::uint32_t tag) {
            const auto* const entry = directory.find(tag);
            return entry ? directories.value(*entry).at(0) : 0;
        };
        EXPECT_EQ(letter(*main, 272), 'T');
        EXPECT_EQ(letter(camera, kTiffMakerNote), 'n');
        EXPECT_EQ(letter(below(camera, kTiffInteroperability), 1), 'R');
        EXPECT_EQ(letter(below(*main, kTiffPosition), 2), 'N');
    }
}

// A link to a directory that was there already, to none, or of another type is no way to one.
TEST_F(TiffMetadata, LinksThatLeadNowhereAreNotFollowed) {
    TiffBytes file;
    const auto camera = 8 + TiffBytes::bytes_for(3);
    file.directory({{272, kText, 4, 'T'}, {kTiffCamera, kLong, 1, camera}, {kTiffPosition, kLong, 1, camera}});
    file.directory({{1, kText, 4, 'c'}});
    EXPECT_LT(of(file.bytes()).exif.size(), 150u);
    for (const TiffBytes::Entry& link :
         {TiffBytes::Entry{kTiffCamera, kLong, 1, 2}, TiffBytes::Entry{kTiffCamera, kText, 4, 8}}) {
        TiffBytes other;
        other.directory({{272, kText, 4, 'T'}, link});
        const Bytes exif = of(other.bytes()).exif;
        const MemoryPlaces places(exif);
        EXPECT_EQ(TiffDirectories(places).read(8)->entries.size(), 2u);
    }
}

TEST_F(TiffMetadata, OnlyZerosAreCutOffBehindRecords) {
    const auto records = [&](std::string_view text) {
        TiffBytes file;
        file.directory({{kTiffIptc, kAnything, static_cast<std::uint32_t>(text.size()), 26}});
        file.append(bytes_of(text));
        return of(file.bytes()).iptc;
    };
    const auto kept = [](std::string_view text) { return resource(0x0404, bytes_of(text)); };
    const std::string record("\x1C\x02\x05\0\3abc", 8);
    EXPECT_EQ(records(record + std::string(3, '\0')), kept(record));
    EXPECT_EQ(records(record + std::string("\0\0x", 3)), kept(record + std::string("\0\0x", 3)));
    // Of a record whose length is elsewhere, or beyond the end, nobody can tell where it ends.
    for (const std::string_view odd :
         {std::string_view("\x1C\x02\x05\x80\4\0\0\0\0", 9), std::string_view("\x1C\x02\x05\1\0\0\0\0", 8)})
        EXPECT_EQ(records(odd), kept(odd));
}

}  // namespace
}  // namespace tarvo::host
