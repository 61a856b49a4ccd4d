#include "metadata.h"

#include <gtest/gtest.h>

#include "big_endian.h"
#include "byte_text.h"
#include "icc_profile.h"
#include "image_resources.h"
#include "jpeg_markers.h"
#include "metadata_samples.h"
#include "xmp.h"

namespace tarvo::host {
namespace {

std::string text_of(const Bytes& bytes) { return std::string(as_text(bytes)); }

std::string made_true(const std::string& packet) {
    Bytes bytes = bytes_of(packet);
    make_xmp_true(bytes, 640, 48);
    return text_of(bytes);
}

TEST(Xmp, NumbersOfTheStoredPixelsAreMadeTrue) {
    EXPECT_EQ(made_true("<d tiff:Orientation=\"6\" a:b=\"6\"/>"), "<d tiff:Orientation=\"1\" a:b=\"6\"/>");
    EXPECT_EQ(made_true("<d\ntiff:ImageWidth='3'>"), "<d\ntiff:ImageWidth='640'>");
    EXPECT_EQ(made_true("<tiff:ImageLength>4000</tiff:ImageLength>"), "<tiff:ImageLength>48</tiff:ImageLength>");
    EXPECT_EQ(made_true("<a exif:PixelXDimension=\"1\"/><a exif:PixelXDimension=\"2\"/>"),
              "<a exif:PixelXDimension=\"640\"/><a exif:PixelXDimension=\"640\"/>");
    EXPECT_EQ(made_true("<exif:PixelYDimension>1</exif:PixelYDimension>"),
              "<exif:PixelYDimension>48</exif:PixelYDimension>");
}

TEST(Xmp, AllElseStays) {
    for (const char* packet :
         {"", "tiff:Orientation", "tiff:Orientation=\"6\"", "<a tiff:Orientation=\"top\"/>",
          "<a xtiff:Orientation=\"6\"/>", "<a tiff:Orientation=\"6", "<a tiff:Orientation=6/>", "<tiff:Orientation>",
          "<tiff:Orientation>6", "<a tiff:OrientationX=\"6\"/>", "<a tiff:Orientation=\"\"/>"})
        EXPECT_EQ(made_true(packet), packet);
}

TEST(Xmp, TheExtensionIsPutIntoThePacket) {
    const std::string extension = "<x:xmpmeta xmlns:x='x'><rdf:RDF xmlns:rdf='r'><rdf:D c='3'/></rdf:RDF></x:xmpmeta>";
    const auto whole = [&](const std::string& packet, const std::string& more) {
        return text_of(with_extension(bytes_of(packet), bytes_of(more)));
    };
    const std::string name(32, 'A');
    EXPECT_EQ(whole("<rdf:RDF><rdf:D a='1' xmpNote:HasExtendedXMP='" + name + "' b='2'/></rdf:RDF>", extension),
              "<rdf:RDF><rdf:D a='1' b='2'/><rdf:D c='3'/></rdf:RDF>");
    EXPECT_EQ(whole("<rdf:RDF><rdf:D><xmpNote:HasExtendedXMP>" + name + "</xmpNote:HasExtendedXMP></rdf:D></rdf:RDF>",
                    extension),
              "<rdf:RDF><rdf:D></rdf:D><rdf:D c='3'/></rdf:RDF>");
    const std::string packet = "<rdf:RDF><rdf:D xmpNote:HasExtendedXMP='" + name + "'/></rdf:RDF>";
    EXPECT_EQ(name_of_extension(bytes_of(packet)), name);
    EXPECT_EQ(whole(packet, "<rdf:RDF xmlns:more='m'></rdf:RDF>"), "");  // whose names the packet lacks
    EXPECT_EQ(whole(packet, "<rdf:RDF/>"), "");
    EXPECT_EQ(whole("<rdf:RDF></rdf:RDF>", extension), "");
    EXPECT_EQ(whole("xmpNote:HasExtendedXMP='" + name + "'", extension), "");
}

TEST(ImageResources, KeepTheirBytesButForPreviewsAndWhatHasAPlaceOfItsOwn) {
    const Bytes records = bytes_of("\x1C\x02Zabc");
    const Bytes list = resource(0x0404, records) + resource(0x040C, bytes_of("preview")) +
                       resource(0x0425, bytes_of("digest")) + resource(0x0422, bytes_of("exif"));
    EXPECT_EQ(own_resources(list), resource(0x0404, records) + resource(0x0425, bytes_of("digest")));
    EXPECT_EQ(text_of(Bytes(iptc_records(list).begin(), iptc_records(list).end())), text_of(records));
    EXPECT_EQ(resources_of(records), resource(0x0404, records));
    EXPECT_EQ(resources_in(records), resource(0x0404, records));
    EXPECT_EQ(resources_in(bytes_of({"Photoshop 3.0\0", 14}) + list), own_resources(list));
    EXPECT_TRUE(resources_in(bytes_of("something")).empty());
    EXPECT_TRUE(own_resources(resource(0x040C, bytes_of("preview"))).empty());
}

TEST(ImageResources, StayWithinTheirBytes) {
    const Bytes list = resource(0x0425, bytes_of("12345")) + resource(0x0404, bytes_of("678"));
    for (std::size_t length = 0; length <= list.size(); ++length) {
        const Bytes exact(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(length));
        const Bytes kept = resources_in(exact);
        EXPECT_TRUE(kept.empty() || kept == exact) << length;
        EXPECT_EQ(iptc_records(exact).size(), length + 1 >= list.size() ? 3u : 0u) << length;
    }
}

TEST(IccProfile, TellsWhatItIsOf) {
    EXPECT_EQ(colors_of_profile(profile("RGB ")), ProfileOf::rgb);
    EXPECT_EQ(colors_of_profile(profile("GRAY")), ProfileOf::grey);
    EXPECT_EQ(colors_of_profile(profile("CMYK")), ProfileOf::inks);
    EXPECT_EQ(colors_of_profile(profile("Lab ")), ProfileOf::nothing_known);
    const Bytes good = profile("RGB ");
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_EQ(colors_of_profile(std::span(good).first(length)), ProfileOf::nothing_known);
    for (const std::size_t place : {36, 128, 136, 140}) {  // mark, number of tags, a tag's place and size
        Bytes bad = good;
        bad[place] = 0xFF;
        EXPECT_EQ(colors_of_profile(bad), ProfileOf::nothing_known) << place;
    }
}

TEST(Resolutions, AreConverted) {
    using Unit = Resolution::Unit;
    EXPECT_NEAR((Resolution{300, 72, Unit::inch}).in(Unit::metre).x, 11811.02, 0.01);
    EXPECT_NEAR((Resolution{300, 72, Unit::inch}).in(Unit::metre).y, 2834.65, 0.01);
    EXPECT_EQ((Resolution{100, 50, Unit::centimetre}).in(Unit::metre), (Resolution{10000, 5000, Unit::metre}));
    EXPECT_EQ((Resolution{2, 1, Unit::none}).in(Unit::metre), (Resolution{2, 1, Unit::none}));
}

Metadata everything() {
    return {.exif = Bytes(100),
            .xmp = bytes_of("<x/>"),
            .iptc = resource(0x0404, bytes_of("1")),
            .icc = profile("RGB "),
            .resolution = Resolution{300, 300, Resolution::Unit::inch}};
}

TEST(Fitting, TellsWhatAFormatHasNoRoomFor) {
    Losses losses;
    const Metadata fits = fitting(everything(), {}, false, losses);
    EXPECT_TRUE(fits.exif.empty() && fits.xmp.empty() && fits.iptc.empty() && fits.icc.empty() && !fits.resolution);
    ASSERT_EQ(losses.size(), 2u);
    EXPECT_EQ(losses[0].kind, Loss::Kind::metadata);
    EXPECT_EQ(losses[0].words, "has no room for Exif, XMP, IPTC and the resolution: they are left out");
    EXPECT_EQ(losses[1].kind, Loss::Kind::profile);
    EXPECT_EQ(losses[1].words, "has no room for the color profile: it is left out");
    losses.clear();
    static_cast<void>(fitting({}, {}, false, losses));
    EXPECT_TRUE(losses.empty());
}

TEST(Fitting, KeepsWhatThereIsRoomForToTheLastByte) {
    Metadata full = everything();
    full.exif.resize(kJpegRoom.exif);
    full.xmp.resize(kJpegRoom.xmp);
    full.resolution->x = 65535;
    Losses losses;
    EXPECT_EQ(fitting(full, kJpegRoom, false, losses).exif.size(), kJpegRoom.exif);
    EXPECT_TRUE(losses.empty());
    full.exif.push_back(0);
    EXPECT_TRUE(fitting(full, kJpegRoom, false, losses).exif.empty());
    EXPECT_EQ(losses.at(0).words, "has no room for Exif: it is left out");
    full.xmp.push_back(0);
    full.resolution->x = 65536;
    losses.clear();
    EXPECT_FALSE(fitting(full, kJpegRoom, false, losses).resolution);
    EXPECT_EQ(losses.at(0).words, "has no room for Exif, XMP and the resolution: they are left out");
}

TEST(Fitting, ProfilesThatDoNotFitThePixelsAreLosses) {
    const auto words = [](const Bytes& icc, bool grey) {
        Losses losses;
        Metadata metadata;
        metadata.icc = icc;
        const bool kept = !fitting(metadata, kJpegRoom, grey, losses).icc.empty();
        EXPECT_EQ(kept, losses.empty());
        return kept ? "" : losses.at(0).words;
    };
    EXPECT_EQ(words(profile("RGB "), false), "");
    EXPECT_EQ(words(profile("GRAY"), true), "");
    EXPECT_EQ(words(profile("RGB "), true),
              "is made without the color profile, which is one of RGB: the pixels are greys");
    EXPECT_EQ(words(profile("CMYK"), false),
              "is made without the color profile, which is one of CMYK: the pixels are RGB");
    EXPECT_EQ(words(Bytes(200), false), "is made without the color profile, which is damaged");
}

// What JPEG has in two parts goes into one where there is no second, or is told.
TEST(Fitting, XmpInTwoPartsBecomesOne) {
    const std::string name(32, 'A');
    Metadata metadata;
    metadata.xmp = bytes_of("<rdf:RDF><d xmpNote:HasExtendedXMP='" + name + "'/></rdf:RDF>");
    metadata.xmp_extension = bytes_of("<rdf:RDF><e/></rdf:RDF>");
    Losses losses;
    EXPECT_EQ(fitting(metadata, kJpegRoom, false, losses).xmp_extension, metadata.xmp_extension);
    MetadataRoom room;
    room.xmp = 1000;
    const Metadata one = fitting(metadata, room, false, losses);
    EXPECT_EQ(text_of(one.xmp), "<rdf:RDF><d/><e/></rdf:RDF>");
    EXPECT_TRUE(one.xmp_extension.empty() && losses.empty());
    metadata.xmp_extension = bytes_of("nothing known");
    EXPECT_TRUE(fitting(metadata, room, false, losses).xmp.empty());
    EXPECT_EQ(losses.at(0).words, "has no room for XMP: it is left out");
}

class JpegMarkersTest : public testing::Test {
protected:
    void add(int number, std::string_view mark, const Bytes& contents) {
        markers.add(number, bytes_of(mark) + contents);
    }
    void add_profile(int part, int parts, const Bytes& bytes) {
        add(2, {"ICC_PROFILE\0", 12}, Bytes{static_cast<std::uint8_t>(part), static_cast<std::uint8_t>(parts)} + bytes);
    }
    void add_extension(const std::string& whose, std::size_t size, std::size_t place, const std::string& bytes) {
        Bytes head = bytes_of(whose);
        append_big_endian(head, static_cast<std::uint32_t>(size), 4);
        append_big_endian(head, static_cast<std::uint32_t>(place), 4);
        add(1, {"http://ns.adobe.com/xmp/extension/\0", 35}, head + bytes_of(bytes));
    }
    void add_packet(const std::string& whose) {
        add(1, {"http://ns.adobe.com/xap/1.0/\0", 29}, bytes_of("<d xmpNote:HasExtendedXMP=\"" + whose + "\"/>"));
    }

    JpegMarkers markers;
    Losses losses;
    const std::string name = std::string(32, 'A');
};

TEST_F(JpegMarkersTest, ProfilesComeInPartsOfAnyOrder) {
    add_profile(2, 2, bytes_of("cd"));
    add_profile(1, 2, bytes_of("ab"));
    add_profile(1, 2, bytes_of("xx"));
    EXPECT_EQ(text_of(markers.finish(losses).icc), "abcd");
    EXPECT_TRUE(losses.empty());
}

TEST_F(JpegMarkersTest, ProfilesWithMissingPartsAreTold) {
    add_profile(1, 3, bytes_of("ab"));
    add_profile(3, 3, bytes_of("ef"));
    EXPECT_TRUE(markers.finish(losses).icc.empty());
    ASSERT_EQ(losses.size(), 1u);
    EXPECT_EQ(losses[0].words, "has a color profile of which parts are missing: it is left out");
}

TEST_F(JpegMarkersTest, ExtensionsAreThoseThatThePacketNames) {
    add_extension(name, 4, 2, "cd");
    add_extension(std::string(32, 'B'), 2, 0, "xx");
    add_packet(name);
    add_extension(name, 4, 0, "ab");
    EXPECT_EQ(text_of(markers.finish(losses).xmp_extension), "abcd");
    EXPECT_TRUE(losses.empty());
}

TEST_F(JpegMarkersTest, ExtensionsWithMissingPartsAreTold) {
    add_packet(name);
    add_extension(name, 6, 0, "ab");
    add_extension(name, 6, 4, "ef");
    EXPECT_TRUE(markers.finish(losses).xmp_extension.empty());
    ASSERT_EQ(losses.size(), 1u);
    EXPECT_EQ(losses[0].words, "has XMP of which parts are missing: they are left out");
}

TEST_F(JpegMarkersTest, OfOneKindNoMoreIsKeptThanTheLimit) {
    const Bytes part(65000, 'x');
    for (std::size_t bytes = 0; bytes < kMostMetadataBytes + part.size(); bytes += part.size())
        add(13, {"Photoshop 3.0\0", 14}, bytes == 0 ? resource(0x0404, bytes_of("1")) : part);
    EXPECT_LE(markers.finish(losses).iptc.size(), kMostMetadataBytes);
    ASSERT_EQ(losses.size(), 1u);
    EXPECT_EQ(losses[0].words, "has more than 8388608 bytes of one kind of metadata: some is left out");
}

TEST(JpegSegments, HoldMetadataOfAnySizeThatFits) {
    Metadata metadata = everything();
    metadata.icc.resize(kJpegRoom.icc, 0x55);
    metadata.iptc = resource(0x0404, Bytes(200000, 0x33));
    metadata.xmp = bytes_of("<d xmpNote:HasExtendedXMP=\"" + std::string(32, 'A') + "\"/>");
    metadata.xmp_extension.resize(300000, 0x44);
    JpegMarkers markers;
    for (const JpegMarker& marker : markers_of(metadata)) {
        EXPECT_LE(marker.contents.size(), 65533u);
        markers.add(marker.number, marker.contents);
    }
    Losses losses;
    const Metadata again = markers.finish(losses);
    EXPECT_TRUE(losses.empty());
    EXPECT_EQ(again.exif, metadata.exif);
    EXPECT_EQ(again.xmp, metadata.xmp);
    EXPECT_EQ(again.xmp_extension, metadata.xmp_extension);
    EXPECT_EQ(again.iptc, metadata.iptc);
    EXPECT_EQ(again.icc, metadata.icc);
}

// An Exif block of two fractions and a unit; none where that is 0.
Bytes exif_of_resolution(std::uint32_t x, std::uint32_t x_under, std::uint32_t y, std::uint32_t y_under,
                         std::uint32_t unit) {
    TiffBytes block;
    std::vector<TiffBytes::Entry> entries = {{282, kRational, 1, 0}, {283, kRational, 1, 0}};
    if (unit != 0) entries.push_back({296, kShort, 1, unit});
    const auto behind = 8 + TiffBytes::bytes_for(static_cast<std::uint32_t>(entries.size()));
    entries[0].value = behind;
    entries[1].value = behind + 8;
    block.directory(entries);
    block.fraction(x, x_under), block.fraction(y, y_under);
    return block.bytes();
}

TEST(Resolutions, OfExifCountInInchesOrCentimetres) {
    using Unit = Resolution::Unit;
    EXPECT_EQ(resolution_of_exif(exif_of_resolution(300, 2, 75, 1, 0)), (Resolution{150, 75, Unit::inch}));
    EXPECT_EQ(resolution_of_exif(exif_of_resolution(300, 2, 75, 1, 2)), (Resolution{150, 75, Unit::inch}));
    EXPECT_EQ(resolution_of_exif(exif_of_resolution(300, 2, 75, 1, 3)), (Resolution{150, 75, Unit::centimetre}));
    EXPECT_FALSE(resolution_of_exif(exif_of_resolution(300, 2, 75, 1, 1)));
    EXPECT_FALSE(resolution_of_exif(exif_of_resolution(0, 2, 75, 1, 2)));
    EXPECT_FALSE(resolution_of_exif(exif_of_resolution(300, 0, 75, 1, 2)));
    EXPECT_FALSE(resolution_of_exif(exif_of_resolution(300, 2, 0, 1, 2)));
    EXPECT_FALSE(resolution_of_exif(exif_of_resolution(300, 2, 75, 0, 2)));
    TiffBytes alone;
    alone.directory({{282, kRational, 1, 26}});
    alone.fraction(300, 1);
    EXPECT_FALSE(resolution_of_exif(alone.bytes()));
}

TEST(Fitting, MissesNoResolutionThatExifTells) {
    const auto losses_of = [](const Resolution& resolution) {
        Metadata metadata;
        metadata.exif = exif_of_resolution(300, 1, 150, 1, 2);
        metadata.resolution = resolution;
        Losses losses;
        EXPECT_FALSE(fitting(metadata, {.exif = 1000}, false, losses).resolution);
        return losses.size();
    };
    using Unit = Resolution::Unit;
    EXPECT_EQ(losses_of({300, 150, Unit::inch}), 0u);
    EXPECT_EQ(losses_of({300 / 2.54, 150 / 2.54, Unit::centimetre}), 0u);
    EXPECT_EQ(losses_of({300, 300, Unit::inch}), 1u);
    EXPECT_EQ(losses_of({150, 150, Unit::inch}), 1u);
}

TEST(Fitting, LeavesOutWhatItsFormatCannotTell) {
    Metadata metadata;
    metadata.resolution = Resolution{0.2, 300, Resolution::Unit::inch};
    metadata.icc = profile("RGB ");
    MetadataRoom room = {.icc = metadata.icc.size() - 1, .most_resolution = 65535};
    Losses losses;
    EXPECT_FALSE(fitting(metadata, room, false, losses).resolution);
    ASSERT_EQ(losses.size(), 2u);
    EXPECT_EQ(losses[0].words, "has no room for the resolution: it is left out");
    EXPECT_EQ(losses[1].words,
              "has no room for a color profile of " + std::to_string(metadata.icc.size()) + " bytes: it is left out");
    losses.clear();
    // The directory of large files is none that another could go into.
    metadata = {.exif = bytes_of({"II+\0\x8\0\0\0\x10\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 24})};
    EXPECT_TRUE(fitting(metadata, {.exif = 1000, .exif_is_merged = true}, false, losses).exif.empty());
    EXPECT_EQ(losses.at(0).words, "has no room for Exif: it is left out");
    EXPECT_EQ(fitting(metadata, {.exif = 1000}, false, losses).exif, metadata.exif);
}

TEST(Resolutions, WithoutAUnitStayAsTheyAre) {
    using Unit = Resolution::Unit;
    const Resolution inches{300, 72, Unit::inch};
    EXPECT_EQ(inches.in(Unit::none), inches);
    EXPECT_NE(inches, (Resolution{300, 73, Unit::inch}));
    EXPECT_NE(inches, (Resolution{300, 72, Unit::centimetre}));
}

TEST(Xmp, BlanksOfEveryKindStandBeforeNames) {
    for (const char blank : {' ', '\n', '\t', '\r'})
        EXPECT_EQ(made_true(std::string("<d") + blank + "tiff:Orientation=\"6\"/>"),
                  std::string("<d") + blank + "tiff:Orientation=\"1\"/>");
    for (const char* packet : {"<tiff:Orientation a='1'>6</tiff:Orientation>", "<a tiff:Orientation=\"-6\"/>"})
        EXPECT_EQ(made_true(packet), packet);
}

TEST(Xmp, ExtensionsGoIntoWholePacketsAlone) {
    const std::string name(32, 'A'), good = "<rdf:RDF><e/></rdf:RDF>";
    EXPECT_EQ(name_of_extension(bytes_of("<d xmpNote:HasExtendedXMP='short'/>")), "");
    const auto whole = [](const std::string& packet, const std::string& more) {
        return text_of(with_extension(bytes_of(packet), bytes_of(more)));
    };
    const std::string packet = "<rdf:RDF><d xmpNote:HasExtendedXMP='" + name + "'/></rdf:RDF>";
    EXPECT_EQ(whole(packet, good), "<rdf:RDF><d/><e/></rdf:RDF>");
    for (const char* more : {"</rdf:RDF><rdf:RDF", "<rdf:RDF</rdf:RDF>", "<rdf:RDF/></rdf:RDF>", "<rdf:RDF>"})
        EXPECT_EQ(whole(packet, more), "") << more;
    EXPECT_EQ(whole("<d xmpNote:HasExtendedXMP='" + name + "'/>", good), "") << "there is no list to go into";
    EXPECT_EQ(whole("<rdf:RDF><xmpNote:HasExtendedXMP>" + name + "<b/></xmpNote:HasExtendedXMP></rdf:RDF>", good), "");
}

TEST_F(JpegMarkersTest, OthersThanThoseOfMetadataAreIgnored) {
    add(2, "MPF", bytes_of("other"));
    add(13, "Adobe_CM", bytes_of("other"));
    add(2, {"ICC_PROFILE\0", 12}, Bytes{1});
    add(1, {"http://ns.adobe.com/xmp/extension/\0", 35}, Bytes(39));
    add_packet(name);
    add_packet(std::string(32, 'B'));
    const Metadata found = markers.finish(losses);
    EXPECT_EQ(name_of_extension(found.xmp), name) << "of two the first counts";
    EXPECT_TRUE(found.icc.empty() && found.iptc.empty() && found.xmp_extension.empty());
    EXPECT_TRUE(losses.empty());
}

TEST_F(JpegMarkersTest, ExtensionsAreAsLongAsTheySay) {
    add_packet(name);
    add_extension(name, 5, 0, "abcd");
    EXPECT_TRUE(markers.finish(losses).xmp_extension.empty());
    EXPECT_EQ(losses.size(), 1u);
    JpegMarkers unnamed;
    markers = std::move(unnamed);
    losses.clear();
    add_extension(name, 4, 0, "abcd");
    EXPECT_TRUE(markers.finish(losses).xmp_extension.empty());
    EXPECT_EQ(losses.size(), 1u) << "which no packet names";
}

TEST_F(JpegMarkersTest, ProfilesAndExtensionsHaveALimitToo) {
    const std::string part(65000, 'x');
    add_packet(name);
    for (std::size_t bytes = 0, i = 0; bytes < kMostMetadataBytes + 2 * part.size(); bytes += part.size(), ++i) {
        add_profile(static_cast<int>(i) + 1, 255, bytes_of(part));
        add_extension(name, kMostMetadataBytes, bytes, part);
    }
    const Metadata found = markers.finish(losses);
    EXPECT_TRUE(found.icc.empty() && found.xmp_extension.empty());
    ASSERT_EQ(losses.size(), 3u);
    EXPECT_EQ(losses[2].words, too_much_metadata().words);
}

}  // namespace
}  // namespace tarvo::host
