// Calls by text, and files.

#include <gtest/gtest.h>

#include <fstream>

#include "samples.h"
#include "temporary_folder.h"

namespace tarvo::test {
namespace {

TEST(LibraryApply, MakesTheCallThatATextSays) {
    const Picture photo = noisy_picture(40, 20);
    EXPECT_EQ(apply("Stretch(fit(10))", photo).picture().height(), 5);
    EXPECT_EQ(apply("TRV_Stretch(width / 2, height * 2, 0)", photo).picture().height(), 40);
    EXPECT_EQ(apply("AdjustRGB(rect(1, 2, 3, 4), 1, 2, 3)", photo).picture().sha256(),
              photo.call("TRV_AdjustRGB", Rectangle(1, 2, 3, 4), 1, 2, 3).picture().sha256());
    EXPECT_EQ(apply("MakeGradient(30, 20, &c102040, &cFFD080)").picture().width(), 30);
    EXPECT_EQ(apply("GetAverageRGB()", photo).output("red")->type, TARVO_INTEGER);
    tarvo_result* result = nullptr;
    ASSERT_EQ(tarvo_apply("MakeGradient(7, 5, &c102040, &cFFD080)", nullptr, nullptr, &result, nullptr), TARVO_OK);
    EXPECT_EQ(tarvo_picture_width(tarvo_result_value(result)->as.picture), 7);
    tarvo_result_release(result);
}

TEST(LibraryApply, ShowsThePlaceOfAnError) {
    const Picture photo = noisy_picture(4, 4);
    try {
        apply("AdjustContrast(nil, c808080, 1.6, 1.6, 1.6)", photo);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.status(), TARVO_USE);
        EXPECT_EQ(error.argument(), "center");
        EXPECT_STREQ(error.what(),
                     "TRV_AdjustContrast: center: expected a color (&cRRGGBB), found the file name \"c808080\"\n"
                     "  AdjustContrast(nil, c808080, 1.6, 1.6, 1.6)\n"
                     "                      ^");
    }
    for (const char* text : {"", "(", "Stretch", "Stretch(", "Stretch(1,", "Nothing()", "Stretch(1/0, 5)",
                             "Stretch(\"a\", 1)", "\xFF\xFE", "Stretch(fit(1e9))"})
        EXPECT_EQ(status_of([&] { apply(text, photo); }), TARVO_USE) << text;
    EXPECT_EQ(status_of([] { apply("Stretch(5, 5)"); }), TARVO_USE) << "no picture";
    EXPECT_EQ(status_of([] { apply("MakeGradient(width, 5, &c000000, &c000000)"); }), TARVO_USE);
    tarvo_result* result = nullptr;
    EXPECT_EQ(tarvo_apply("Stretch(5, 5)", nullptr, nullptr, &result, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_apply(nullptr, photo.get(), nullptr, &result, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_apply("Info()", photo.get(), nullptr, nullptr, nullptr), TARVO_USE);
}

TEST(LibraryApply, ReadsFilesOnlyWhenTold) {
    const TemporaryFolder folder;
    const Picture photo = noisy_picture(4, 4);
    const std::string path = folder.path() / "addend.ppm";
    photo.save(path);
    const std::string text = "Add(\"" + path + "\")";
    EXPECT_EQ(status_of([&] { apply(text, photo); }), TARVO_USE);
    CallOptions options;
    options.read_files = true;
    EXPECT_EQ(apply(text, photo, options).picture().sha256(), photo.call("TRV_Add", photo).picture().sha256());
    EXPECT_EQ(status_of([&] { apply("Add(\"/nowhere/at/all.ppm\")", photo, options); }), TARVO_FILE);
}

// --- files ---

TEST(LibraryFiles, AreWrittenAndRead) {
    const TemporaryFolder folder;
    const Picture plain = noisy_picture(17, 9), masked = noisy_picture(17, 9, TARVO_RGBA32);
    std::vector<std::string> whole = {"ppm", "pam"};
#ifdef TARVO_PICTURE_LIBRARIES
    whole.push_back("png");
#endif
#ifdef TARVO_TIFF
    whole.push_back("tif");
#endif
#ifdef TARVO_WEBP
    whole.push_back("webp");
#endif
    for (const std::string& format : whole) {
        const std::string path = folder.path() / ("picture." + format);
        plain.save(path);
        EXPECT_EQ(Picture::open(path).sha256(), plain.sha256()) << format;
        const auto bytes = plain.encode(format);
        EXPECT_EQ(Picture::decode(bytes.data(), bytes.size()).sha256(), plain.sha256());
        EXPECT_EQ(plain.encode("." + format), bytes);
        std::ifstream file(path, std::ios::binary);
        EXPECT_EQ(std::vector<std::uint8_t>(std::istreambuf_iterator<char>(file), {}), bytes);
    }
    const auto with_alpha = masked.encode("pam");
    EXPECT_EQ(Picture::decode(with_alpha.data(), with_alpha.size()).sha256(), masked.sha256());
    EXPECT_FALSE(Picture::decode(masked.encode("ppm").data(), masked.encode("ppm").size()).has_mask());
}

#ifdef TARVO_PICTURE_LIBRARIES
TEST(LibraryFiles, HaveTheQualityThatIsAsked) {
    const Picture photo = noisy_picture(64, 64);
    const auto size = [&](int quality) {
        WriteOptions options;
        options.jpeg_quality = quality;
        return photo.encode("jpg", options).size();
    };
    EXPECT_LT(size(1), size(50));
    EXPECT_LT(size(50), size(100));
}
#endif

TEST(LibraryFiles, KeepDepthsWhenTold) {
    const std::string bits = "P1 3 2\n101 010\n", greys = "P2 2 1 255\n7 250\n";
    ReadOptions keep;
    keep.keep_depth = true;
    const Picture black_and_white = Picture::decode(bits.data(), bits.size(), keep);
    EXPECT_EQ(black_and_white.depth(), 1);
    EXPECT_EQ(black_and_white.pixels(), nullptr);
    EXPECT_EQ(rows_of(black_and_white, TARVO_GREY8), (std::vector<std::uint8_t>{0, 255, 0, 255, 0, 255}));
    const Picture grey = Picture::decode(greys.data(), greys.size(), keep);
    EXPECT_EQ(grey.depth(), 8);
    EXPECT_EQ(rows_of(grey, TARVO_XRGB32), (std::vector<std::uint8_t>{0, 7, 7, 7, 0, 250, 250, 250}));
    EXPECT_EQ(grey.sha256(), Picture::decode(greys.data(), greys.size()).sha256());
    EXPECT_EQ(Picture::decode(greys.data(), greys.size()).depth(), 32);
}

TEST(LibraryFiles, ThatAreNoneAreRefused) {
    const TemporaryFolder folder;
    const Picture photo = noisy_picture(20, 20);
    const auto decoding = [](std::string_view bytes) {
        return status_of([&] { Picture::decode(bytes.data(), bytes.size()); });
    };
    EXPECT_EQ(decoding(""), TARVO_FILE);
    EXPECT_EQ(decoding("no picture"), TARVO_FILE);
    EXPECT_EQ(decoding("P6 20 20 255\nshort"), TARVO_FILE);
    EXPECT_EQ(decoding("P6 0 20 255\n"), TARVO_FILE);
    EXPECT_EQ(decoding("P6 32768 1 255\n"), TARVO_LIMIT);
    EXPECT_EQ(decoding("P6 32000 32000 255\n"), TARVO_LIMIT);
    EXPECT_EQ(status_of([&] { Picture::open(folder.path() / "missing.png"); }), TARVO_FILE);
    EXPECT_EQ(status_of([&] { Picture::open(folder.path()); }), TARVO_FILE);
    EXPECT_EQ(status_of([&] { photo.save(folder.path() / "picture.txt"); }), TARVO_FILE);
    EXPECT_EQ(status_of([&] { photo.save(folder.path() / "no folder" / "picture.ppm"); }), TARVO_FILE);
    EXPECT_EQ(status_of([&] { photo.encode("gif"); }), TARVO_USE);
    EXPECT_EQ(status_of([&] { photo.encode(""); }), TARVO_USE);
    EXPECT_EQ(status_of([&] { Picture().encode("ppm"); }), TARVO_USE);
    EXPECT_EQ(status_of([&] { Picture().save(folder.path() / "picture.ppm"); }), TARVO_USE);
    tarvo_picture* picture = nullptr;
    std::uint8_t* bytes = nullptr;
    std::size_t length = 0;
    EXPECT_EQ(tarvo_picture_open(nullptr, nullptr, &picture, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_open("x", nullptr, nullptr, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_decode(nullptr, 5, nullptr, &picture, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_decode("x", 1, nullptr, nullptr, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_save(photo.get(), nullptr, nullptr, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_encode(photo.get(), nullptr, nullptr, &bytes, &length, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_encode(photo.get(), "ppm", nullptr, nullptr, &length, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_encode(photo.get(), "ppm", nullptr, &bytes, nullptr, nullptr), TARVO_USE);
}

TEST(LibraryFiles, HaveLimits) {
    const auto file = noisy_picture(10, 10).encode("ppm");
    ReadOptions few_pixels, little_memory;
    few_pixels.max_pixels = 99;
    little_memory.max_memory = 300;
    EXPECT_EQ(status_of([&] { Picture::decode(file.data(), file.size(), few_pixels); }), TARVO_LIMIT);
    EXPECT_EQ(status_of([&] { Picture::decode(file.data(), file.size(), little_memory); }), TARVO_MEMORY);
}

// Each of the calls that ask is the one that stops, until nothing is asked any more.
template <class Work>
void stop_at_every_yield(Work work) {
    for (int stop = 1, finished = 0; !finished; ++stop) {
        ASSERT_LT(stop, 100000);
        int asked = 0;
        const tarvo_status status = status_of([&] { work([&] { return ++asked == stop; }); });
        finished = asked < stop;
        ASSERT_EQ(status, finished ? TARVO_OK : TARVO_CANCELLED);
        ASSERT_LE(asked, stop) << "nobody is asked after the stop";
        ASSERT_FALSE(finished && stop == 1) << "nobody was asked";
    }
}

TEST(LibraryFiles, StopWhenAsked) {
    const TemporaryFolder folder;
    const Picture photo = noisy_picture(300, 90);
    std::vector<std::string> formats = {"ppm", "pam"};
#ifdef TARVO_PICTURE_LIBRARIES
    formats.insert(formats.end(), {"png", "jpg"});
#endif
    for (const char* other : {"tif", "webp"})
        if (status_of([&] { photo.encode(other); }) == TARVO_OK) formats.emplace_back(other);
    for (const std::string& format : formats) {
        const std::string path = folder.path() / ("picture." + format), old = folder.path() / ("old." + format);
        photo.save(path);
        const auto bytes = photo.encode(format);
        stop_at_every_yield([&](auto yield) {
            ReadOptions options;
            options.yield = yield;
            Picture::decode(bytes.data(), bytes.size(), options);
        });
        stop_at_every_yield([&](auto yield) {
            ReadOptions options;
            options.yield = yield;
            Picture::open(path, options);
        });
        stop_at_every_yield([&](auto yield) {
            WriteOptions options;
            options.yield = yield;
            photo.encode(format, options);
        });
        noisy_picture(1, 1).save(old);
        WriteOptions stop;
        stop.yield = [] { return true; };
        EXPECT_EQ(status_of([&] { photo.save(old, stop); }), TARVO_CANCELLED);
        EXPECT_EQ(Picture::open(old).width(), 1);
        stop.yield = []() -> bool { throw 7; };
        EXPECT_THROW(photo.save(old, stop), int);
    }
    const std::string string = folder.path() / "picture.trv";
    photo.save(string);
    stop_at_every_yield([&](auto yield) {
        ReadOptions options;
        options.yield = yield;
        EXPECT_EQ(Picture::open(string, options).sha256(), photo.sha256());
    });
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        EXPECT_TRUE(entry.path().stem() == "picture" || entry.path().stem() == "old") << entry.path();
}

}  // namespace
}  // namespace tarvo::test
