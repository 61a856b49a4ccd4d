// Colours by their profile.

#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <cstdlib>

#include "exif.h"
#include "file_samples.h"
#include "jpeg_samples.h"
#include "metadata_samples.h"
#ifdef TARVO_TIFF
#include "tiff_samples.h"
#endif

namespace tarvo::host {
namespace {

FileBytes saved(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    FileBytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

// The primaries of sRGB in another order: red is green there, green is blue, and blue is red. The curve is sRGB's.
FileBytes shifted_profile() {
    const cmsCIExyY white = {0.3127, 0.3290, 1};
    const cmsCIExyYTRIPLE primaries = {{0.30, 0.60, 1}, {0.15, 0.06, 1}, {0.64, 0.33, 1}};
    const double curve[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    cmsToneCurve* const same = cmsBuildParametricToneCurve(nullptr, 4, curve);
    cmsToneCurve* curves[] = {same, same, same};
    FileBytes bytes = saved(cmsCreateRGBProfile(&white, &primaries, curves));
    cmsFreeToneCurve(same);
    return bytes;
}

FileBytes linear_greys() {
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, 1);
    FileBytes bytes = saved(cmsCreateGrayProfile(cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    return bytes;
}

constexpr cmsCIELab kFullCyan = {50, 40, -20};

// No ink is white, cyan alone is a purple, and all else is black.
FileBytes purple_cyan() {
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 4.3);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    const cmsCIELab white = {100, 0, 0}, black = {0, 0, 0};
    cmsUInt16Number table[16][3];
    for (auto& entry : table) cmsFloat2LabEncoded(entry, &black);
    cmsFloat2LabEncoded(table[0], &white);
    cmsFloat2LabEncoded(table[8], &kFullCyan);
    cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 4, nullptr));
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocCLut16bit(nullptr, 2, 4, 3, table[0]));
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
    cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
    cmsPipelineFree(pipeline);
    return saved(profile);
}

std::uint32_t srgb_of(const cmsCIELab& color) {
    cmsHPROFILE lab = cmsCreateLab4Profile(nullptr), srgb = cmsCreate_sRGBProfile();
    cmsHTRANSFORM made = cmsCreateTransform(lab, TYPE_Lab_DBL, srgb, TYPE_RGB_8, INTENT_RELATIVE_COLORIMETRIC, 0);
    std::uint8_t rgb[3];
    cmsDoTransform(made, &color, rgb, 1);
    cmsDeleteTransform(made);
    cmsCloseProfile(lab);
    cmsCloseProfile(srgb);
    return std::uint32_t{rgb[0]} << 16 | std::uint32_t{rgb[1]} << 8 | rgb[2];
}

// A file with a profile in one segment.
FileBytes with_profile(const FileBytes& jpeg, const FileBytes& profile) {
    FileBytes segment = bytes_of(std::string_view("\xFF\xE2\0\0ICC_PROFILE\0\1\1", 18)) + profile;
    segment[2] = static_cast<std::uint8_t>((segment.size() - 2) >> 8);
    segment[3] = static_cast<std::uint8_t>(segment.size() - 2);
    return FileBytes(jpeg.begin(), jpeg.begin() + 2) + segment + FileBytes(jpeg.begin() + 2, jpeg.end());
}

bool near(std::uint32_t a, std::uint32_t b, int most = 2) {
    for (int shift = 0; shift < 24; shift += 8)
        if (std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255)) > most) return false;
    return true;
}

#define EXPECT_NEAR_COLOR(a, b) EXPECT_TRUE(near(a, b)) << std::hex << (a) << " is not " << (b)

class SrgbTest : public FilesTest {
protected:
    FileBytes file_of(const ObjectRef& picture, const char* name, const FileBytes& icc) {
        Carried with;
        with.metadata.icc = icc;
        WriteReport report;
        FileBytes file = encode_picture(picture_in(picture), name, {.carried = &with}, &report);
        EXPECT_TRUE(report.losses.empty());
        return file;
    }
    ObjectRef read(const FileBytes& file, bool srgb = true, bool keep_depth = false) {
        return decode_picture(host, file, {.keep_depth = keep_depth, .srgb = srgb}, &carried);
    }
    ObjectRef of_color(std::uint32_t color, int depth = 32, bool masked = false) {
        PictureOptions options{.width = 3, .height = 2, .depth = depth};
        ObjectRef made = host.new_picture(options);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 3; ++x) store_pixel(picture_in(made).row(y), x, depth, color);
        if (masked) {
            picture_in(made).set_mask(host.new_picture({.width = 3, .height = 2}));
            for (int x = 0; x < 3; ++x) store_pixel(picture_in(picture_in(made).mask()).row(0), x, 32, 0x404040);
        }
        return made;
    }

    Carried carried;
};

TEST_F(SrgbTest, ColorsAreThoseOfTheProfile) {
    const FileBytes profile = shifted_profile();
    for (const char* name : {"a.png", "a.jpg",
#ifdef TARVO_WEBP
                             "a.webp",
#endif
                             "b.png"}) {
        const FileBytes file = file_of(of_color(0xC86432), name, profile);
        for (const std::uint32_t color : colors_of(read(file))) EXPECT_NEAR_COLOR(color, 0x32C864u);
        EXPECT_TRUE(carried.metadata.icc.empty());
        EXPECT_TRUE(carried.losses.empty());
        EXPECT_NEAR_COLOR(colors_of(read(file, false))[0], 0xC86432u);
        EXPECT_EQ(carried.metadata.icc, profile);
    }
}

TEST_F(SrgbTest, MasksStayAsTheyAre) {
    for (const char* name : {"a.png",
#ifdef TARVO_WEBP
                             "a.webp",
#endif
                             "b.png"}) {
        const ObjectRef picture = read(file_of(of_color(0xC86432, 32, true), name, shifted_profile()));
        EXPECT_NEAR_COLOR(colors_of(picture)[0], 0x32C864u);
        EXPECT_EQ(colors_of(picture_in(picture).mask())[0], 0x404040u);
    }
}

TEST_F(SrgbTest, GreysStayGreys) {
    const FileBytes profile = linear_greys();
    for (const char* name : {"a.png", "a.jpg"}) {
        const FileBytes file = file_of(of_color(55, 8), name, profile);
        for (const bool keep_depth : {false, true}) {
            const ObjectRef picture = read(file, true, keep_depth);
            EXPECT_NEAR_COLOR(colors_of(picture)[0], 0x808080u);
            const std::uint32_t color = colors_of(picture)[0];
            EXPECT_EQ(color & 255, color >> 16);
        }
    }
}

TEST_F(SrgbTest, WithoutAProfileColorsAreThoseOfSrgb) {
    EXPECT_EQ(colors_of(read(file_of(of_color(0xC86432), "a.png", {})))[0], 0xC86432u);
    EXPECT_TRUE(carried.losses.empty());
}

TEST_F(SrgbTest, ProfilesThatCannotBeUsedAreTold) {
    FileBytes of_many_tags = profile("RGB ");
    of_many_tags.resize(144 + 101 * 12);
    of_many_tags[2] = static_cast<std::uint8_t>(of_many_tags.size() >> 8);
    of_many_tags[3] = static_cast<std::uint8_t>(of_many_tags.size());
    of_many_tags[131] = 101;
    for (std::size_t tag = 0; tag < 101; ++tag) of_many_tags[132 + 12 * tag] = static_cast<std::uint8_t>(tag);
    const FileBytes files[] = {
        // Its header is a profile's, and nothing else.
        file_of(of_color(0xC86432), "a.png", profile("RGB ")),
        // More than the library looks at.
        file_of(of_color(0xC86432), "a.png", of_many_tags),
        with_profile(jpeg_file({1, 1, JpegColors::rgb, {200, 100, 50}}), linear_greys()),
    };
    for (const FileBytes& file : files) {
        EXPECT_NEAR_COLOR(colors_of(read(file))[0], 0xC86432u);
        ASSERT_EQ(carried.losses.size(), 1u);
        EXPECT_EQ(carried.losses[0].words, "has a color profile that cannot be used: colors are taken for sRGB's");
        EXPECT_TRUE(carried.metadata.icc.empty());
    }
}

TEST_F(SrgbTest, InksAreThoseOfTheProfile) {
    const FileBytes plain = with_profile(jpeg_file({1, 1, JpegColors::cmyk, {255, 0, 0, 0}}), purple_cyan());
    const FileBytes inverted =
        with_profile(jpeg_file({1, 1, JpegColors::adobe_cmyk, {0, 255, 255, 255}}), purple_cyan());
    for (const FileBytes& file : {plain, inverted}) {
        EXPECT_NEAR_COLOR(colors_of(read(file))[0], srgb_of(kFullCyan));
        EXPECT_TRUE(carried.losses.empty());
        EXPECT_NEAR_COLOR(colors_of(read(file, false))[0], 0x00FFFFu);
    }
}

#ifdef TARVO_TIFF
TEST_F(SrgbTest, InksOfTiffAreThoseOfTheProfile) {
    TiffSample sample{1, 1, 8, 4, 5, {255, 0, 0, 0}};
    sample.profile = purple_cyan();
    const FileBytes file = tiff_file(sample);
    EXPECT_NEAR_COLOR(colors_of(read(file))[0], srgb_of(kFullCyan));
    EXPECT_TRUE(carried.losses.empty());
    EXPECT_EQ(colors_of(read(file, false))[0], 0x00FFFFu);
}
#endif

TEST_F(SrgbTest, InksWithoutAProfileAreConvertedPlainlyAndTold) {
    for (const FileBytes& made :
         {jpeg_file({1, 1, JpegColors::cmyk, {51, 102, 153, 128}}),
          jpeg_file({1, 1, JpegColors::adobe_cmyk, {204, 153, 102, 127}}),
          with_profile(jpeg_file({1, 1, JpegColors::cmyk, {51, 102, 153, 128}}), shifted_profile())}) {
        EXPECT_NEAR_COLOR(colors_of(read(made))[0], 0x664C33u);
        ASSERT_EQ(carried.losses.size(), 1u);
        EXPECT_EQ(carried.losses[0].words, "has inks without a color profile of theirs: they are converted plainly");
    }
}

TEST_F(SrgbTest, ExifSaysThatColorsAreThoseOfSrgb) {
    carried = {};
    carried.metadata.icc = shifted_profile();
    // One entry: the directory of cameras, with one entry: the colour space.
    carried.metadata.exif = {'M', 'M', 0, 42, 0, 0, 0,    8, 0, 1, 0x87, 0x69, 0, 4, 0,    0,    0, 1, 0, 0, 0, 26,
                             0,   0,   0, 0,  0, 1, 0xA0, 1, 0, 3, 0,    0,    0, 1, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0};
    const FileBytes file = encode_picture(picture_in(of_color(0x123456)), "a.png", {.carried = &carried});
    read(file);
    EXPECT_EQ(read_exif(carried.metadata.exif).color_space->value, 1u);
    read(file, false);
    EXPECT_EQ(read_exif(carried.metadata.exif).color_space->value, 0xFFFFu);
}

}  // namespace
}  // namespace tarvo::host
