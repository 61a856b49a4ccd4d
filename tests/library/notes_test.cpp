// What calls tell besides their results, what pictures carry, and what is found before any work.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "samples.h"
#include "temporary_folder.h"

namespace tarvo::test {
namespace {

using Lines = std::vector<std::string>;

// Takes notes down: "1 out.ppm has no transparency: ...".
class Notebook {
public:
    detail::Note taker() {
        return
            [this](tarvo_note kind, const std::string& text) { lines_.push_back(std::to_string(kind) + " " + text); };
    }
    Lines take() { return std::exchange(lines_, {}); }

private:
    Lines lines_;
};

Picture decoded(const std::string& file) { return Picture::decode(file.data(), file.size()); }

std::string head_of(const Picture& picture, const std::string& format) {
    const auto file = picture.encode(format);
    return {file.begin(), file.begin() + 2};
}

const std::string kDeepGrey("P5 2 1 65535\n\1\2\3\4", 17);

// --- notes ---

TEST(LibraryNotes, TellWhatTheFileIs) {
    Notebook notes;
    ReadOptions reading;
    reading.note = notes.taker();
    Picture::decode(kDeepGrey.data(), kDeepGrey.size(), reading);
    EXPECT_EQ(notes.take(), Lines{"34 grey, 16 bits a channel"});
    WriteOptions writing;
    writing.note = notes.taker();
    noisy_picture(3, 3).encode("ppm", writing);
    EXPECT_EQ(notes.take(), Lines{"34 RGB, 8 bits a channel"});
}

TEST(LibraryNotes, TellWhatAFileLoses) {
    const TemporaryFolder folder;
    const std::string path = folder.file("out.ppm");
    Notebook notes;
    WriteOptions writing;
    writing.note = notes.taker();
    noisy_picture(3, 3, TARVO_RGBA32).save(path, writing);
    const std::string mask = " has no transparency: the mask is left out",
                      depth = " has no more than 8 of 16 bits a channel";
    EXPECT_EQ(notes.take(), (Lines{"1 " + path + mask, "34 RGB, 8 bits a channel"}));
    noisy_picture(3, 3, TARVO_RGBA32).encode("ppm", writing);
    EXPECT_EQ(notes.take().front(), "1 the file" + mask);
    decoded(kDeepGrey).encode("pgm", writing);
    EXPECT_EQ(notes.take(), (Lines{"2 the file" + depth, "34 grey, 8 bits a channel"}));
    ASSERT_EQ(::link(path.c_str(), folder.file("other.ppm").c_str()), 0);
    noisy_picture(3, 3).save(path, writing);
    const Lines linked = notes.take();
    ASSERT_EQ(linked.size(), 2u);
    EXPECT_EQ(linked[0].rfind("6 " + path + " ", 0), 0u) << linked[0];
}

TEST(LibraryNotes, TellMetadataThatAreDamagedOrHaveNoRoom) {
    const std::string segment(
        "\xFF\xE1\0\x11"
        "Exif\0\0MM\0*\0\0\0\0\0",
        19);
    const std::string part("\xFF\xE2\0\x11ICC_PROFILE\0\1\2x", 19);
    const auto jpeg = noisy_picture(8, 8).encode("jpg");
    const std::string file(jpeg.begin(), jpeg.end());
    Notebook notes;
    ReadOptions reading;
    reading.note = notes.taker();
    const std::string with = file.substr(0, 2) + segment + part + file.substr(2);
    const Picture picture = Picture::decode(with.data(), with.size(), reading);
    EXPECT_EQ(notes.take(), (Lines{"5 the file has a color profile of which parts are missing: it is left out",
                                   "34 RGB, 8 bits a channel"}));
    WriteOptions writing;
    writing.note = notes.taker();
    picture.encode("png", writing);
    EXPECT_EQ(notes.take(), Lines{"34 RGB, 8 bits a channel"});
    for (const char* format : {"ppm", "trv"}) {
        picture.encode(format, writing);
        EXPECT_EQ(notes.take().front(), "4 the file has no room for Exif: it is left out");
    }
}

TEST(LibraryNotes, TellWhatAnOperationDropsAndWhatToMind) {
    Notebook notes;
    CallOptions options;
    options.note = notes.taker();
    const Picture masked = noisy_picture(8, 8, TARVO_RGBA32), plain = noisy_picture(8, 8);
    ASSERT_FALSE(apply("Pixelate(nil, 2)", masked).picture().has_mask()) << "choose another operation";
    apply("Pixelate(nil, 2)", masked, options);
    EXPECT_EQ(notes.take(), Lines{"1 TRV_Pixelate: the result has no mask"});
    ReadOptions keep;
    keep.keep_depth = true;
    const std::string greys = "P5 2 1 255\nab";
    const Picture shallow = Picture::decode(greys.data(), greys.size(), keep);
    ASSERT_EQ(shallow.depth(), 8);
    for (const Picture& picture : {plain, shallow}) {
        apply("Pixelate(nil, 2)", picture, options);
        EXPECT_EQ(notes.take(), Lines{});
    }
    apply("Stretch(5.5, 3)", plain, options);
    const Lines cautions = notes.take();
    ASSERT_EQ(cautions.size(), 1u);
    EXPECT_EQ(cautions[0].rfind("32 TRV_Stretch: width", 0), 0u) << cautions[0];
    call("TRV_Rectangle.MessageBox", Rectangle(1, 2, 3, 4), {}, options);
    const Lines shown = notes.take();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].rfind("35 ", 0), 0u);
}

TEST(LibraryNotes, MayThrow) {
    const Picture masked = noisy_picture(8, 8, TARVO_RGBA32);
    const auto refuse = [](tarvo_note, const std::string&) { throw std::string("no more"); };
    WriteOptions writing;
    writing.note = refuse;
    EXPECT_THROW(masked.encode("ppm", writing), std::string);
    ReadOptions reading;
    reading.note = refuse;
    EXPECT_THROW(Picture::decode(kDeepGrey.data(), kDeepGrey.size(), reading), std::string);
    CallOptions calling;
    calling.note = refuse;
    EXPECT_THROW(apply("Pixelate(nil, 2)", masked, calling), std::string);
}

TEST(LibraryNotes, AreOfOlderCallersNoConcern) {
    tarvo_write_options writing = {};
    writing.size = offsetof(tarvo_write_options, note);
    writing.note = [](void*, tarvo_note, const char*) { std::abort(); };
    std::uint8_t* bytes = nullptr;
    std::size_t length = 0;
    EXPECT_EQ(tarvo_picture_encode(noisy_picture(3, 3).get(), "ppm", &writing, &bytes, &length, nullptr), TARVO_OK);
    tarvo_free(bytes);
}

// A program is told where the part file is, while there is one, and when it has gone.
TEST(LibraryFiles, TellOfTheirPartFile) {
    const TemporaryFolder folder;
    struct Seen {
        std::vector<int> states;
        bool was_there = false;
    } seen;
    tarvo_write_options writing = {};
    writing.size = sizeof writing;
    writing.context = &seen;
    writing.part_file = [](void* context, tarvo_part_file now, int of, const char* name) {
        auto& told = *static_cast<Seen*>(context);
        told.states.push_back(now);
        if (now == TARVO_PART_FILE_MADE) told.was_there = ::faccessat(of, name, F_OK, 0) == 0;
    };
    ASSERT_EQ(tarvo_picture_save(noisy_picture(3, 3).get(), folder.file("out.ppm").c_str(), &writing, nullptr),
              TARVO_OK);
    EXPECT_EQ(seen.states, (std::vector<int>{TARVO_PART_FILE_MAKING, TARVO_PART_FILE_MADE, TARVO_PART_FILE_GONE}));
    EXPECT_TRUE(seen.was_there);
}

// --- what pictures carry ---

TEST(LibraryPictures, AreWrittenAsTheirFileWas) {
    const std::string grey("P5 2 2 255\n\1\2\3\4", 15), colors("P6 2 2 255\n\1\1\1\1\1\1\1\1\1\1\1\1", 23);
    EXPECT_EQ(head_of(decoded(grey), "pam"), "P7");
    Notebook notes;
    WriteOptions writing;
    writing.note = notes.taker();
    const auto written = [&](const Picture& picture) {
        picture.encode("pam", writing);
        return notes.take().front();
    };
    const std::string as_grey = "34 grey, 8 bits a channel", as_colors = "34 RGB, 8 bits a channel";
    EXPECT_EQ(written(decoded(grey)), as_grey);
    EXPECT_EQ(written(decoded(colors)), as_colors);
    EXPECT_EQ(written(Picture::from_rows("\1\2\3\4", 2, 2, 2, TARVO_GREY8)), as_colors);
    // Results have it of what they are called on, and of nothing else.
    EXPECT_EQ(written(decoded(grey).call("TRV_FlipRotate", true, false, 0).picture()), as_grey);
    EXPECT_EQ(
        written(apply("FlipRotate(false, true, 0)", decoded(grey).call("TRV_FlipRotate", true, false, 0).picture())
                    .picture()),
        as_grey);
    EXPECT_EQ(written(decoded(grey).call("TRV_Add", decoded(colors)).picture()), as_grey);
    EXPECT_EQ(written(decoded(colors).call("TRV_Add", decoded(grey)).picture()), as_colors);
    EXPECT_EQ(written(apply("MakeGradient(2, 2, &c000000, &cFFFFFF)").picture()), as_colors);
    // Where it would lose colours it is not kept.
    EXPECT_EQ(written(apply("AdjustRGB(nil, 40, 0, 0)", decoded(grey)).picture()), as_colors);
    // Client pictures hand it on.
    const Object client("TRV_ClientPicture");
    client.call("operator_convert", decoded(grey));
    EXPECT_EQ(written(client.call("operator_convert").picture()), as_grey);
    EXPECT_EQ(written(apply_on("FlipRotate(true, false, 0)", client).picture()), as_grey);
}

TEST(LibraryFiles, OfStringsHaveALimit) {
    WriteOptions writing;
    writing.max_memory = 5 * 4 * 4 + 70;
    EXPECT_EQ(status_of([&] { noisy_picture(5, 4).encode("trv", writing); }), TARVO_MEMORY);
    writing.max_memory += 1;
    EXPECT_EQ(noisy_picture(5, 4).encode("trv", writing).size(), 71u);
    // What is tried besides, to tell of it, is no part of that.
    Notebook notes;
    writing.note = notes.taker();
    writing.max_memory = 4 + 14;
    EXPECT_EQ(noisy_picture(1, 1).encode("trv", writing).size(), 14u);
    EXPECT_EQ(notes.take(), Lines{"34 string, 32 bits"});
    // The mask of a picture that is read counts too.
    const TemporaryFolder folder;
    const std::string path = folder.file("masked.trv");
    const Picture masked = noisy_picture(5, 4, TARVO_RGBA32);
    masked.save(path);
    ReadOptions reading;
    reading.max_memory = 91 + 80 + 79;
    EXPECT_EQ(status_of([&] { Picture::open(path, reading); }), TARVO_MEMORY);
    reading.max_memory += 1;
    EXPECT_EQ(Picture::open(path, reading).sha256(), masked.sha256());
}

TEST(LibraryFiles, OfStringsKeepDepthAndMask) {
    const TemporaryFolder folder;
    const std::string path = folder.file("out.trv");
    const Picture masked = noisy_picture(5, 4, TARVO_RGBA32);
    masked.save(path);
    EXPECT_EQ(Picture::open(path).sha256(), masked.sha256());
    std::ifstream file(path, std::ios::binary);
    const std::string written(std::istreambuf_iterator<char>(file), {});
    EXPECT_EQ(written, masked.call("TRV_ConvertToString").bytes());
    const auto encoded = masked.encode(".trv");
    EXPECT_EQ(std::string(encoded.begin(), encoded.end()), written);
    std::ofstream(path, std::ios::binary) << written.substr(1);
    try {
        Picture::open(path);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.status(), TARVO_FILE);
        EXPECT_EQ(error.file(), path);
    }
}

// --- before any work ---

TEST(LibraryChecks, FindWhatIsWrongWithATextAndTellWhatComes) {
    EXPECT_EQ(check("Stretch(3, 4)"), "picture");
    EXPECT_EQ(check("MakeGradient(3, 4, 1, 2)", ""), "picture");
    EXPECT_EQ(check("Info()"), "");
    EXPECT_EQ(check("Stretch(3, 4)", "TRV_ClientPicture"), "TRV_ClientPicture");
    EXPECT_EQ(check("Add(\"nowhere.png\")"), "picture") << "nothing is read";
    const auto wrong = [](const std::string& text, const std::string& on) {
        try {
            check(text, on);
        } catch (const Error& error) {
            EXPECT_EQ(error.status(), TARVO_USE);
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(wrong("Stretch(3)", "picture").rfind("TRV_Stretch: ", 0), 0u);
    EXPECT_NE(wrong("Strech(3, 4)", "picture").find("did you mean TRV_Stretch?\n"), std::string::npos);
    EXPECT_NE(wrong("Stretch(3, 4)", "").find("needs a picture"), std::string::npos);
    EXPECT_NE(wrong("Stretch(3,", "picture"), "");
    EXPECT_EQ(tarvo_check(nullptr, "picture", nullptr, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_check("Info()", "picture", nullptr, nullptr), TARVO_OK);
}

TEST(LibraryChecks, FindWhereNoFileCanBeWritten) {
    const TemporaryFolder folder;
    for (const char* name : {"a.png", "a.jpg", "a.trv"}) EXPECT_NO_THROW(check_output(folder.file(name)));
    for (const char* name : {"a", "a.gif", "none/a.png"})
        EXPECT_EQ(status_of([&] { check_output(folder.file(name)); }), TARVO_FILE) << name;
    EXPECT_EQ(tarvo_check_output(nullptr, nullptr), TARVO_USE);
}

// --- results and errors in parts ---

TEST(LibraryResults, TellTheirNamesTextsAndTime) {
    const Picture photo = noisy_picture(4, 4);
    const Result averages = apply("GetAverageRGB(nil)", photo);
    EXPECT_EQ(averages.operation(), "TRV_GetAverageRGB");
    EXPECT_EQ(averages.outputs(), (Lines{"red", "green", "blue"}));
    EXPECT_EQ(averages.text("red"), std::to_string(averages.output("red")->as.integer));
    EXPECT_THROW(averages.text("violet"), Error);
    EXPECT_EQ(averages.text(), "nil");
    EXPECT_GE(averages.milliseconds(), 0);
    EXPECT_LT(averages.milliseconds(), 10000);
    const Result block = apply("MakeMemoryBlock(nil, false)", photo);
    EXPECT_EQ(block.text(), "a MemoryBlock of 64 bytes");
    EXPECT_EQ(photo.call("TRV_ConvertToString").text(), "a string of 59 bytes");
    EXPECT_EQ(photo.call("TRV_FlipRotate", true, false, 0).text(), "a picture");
    EXPECT_EQ(photo.call("TRV_Compare", photo, nullptr).text(), "true");
    EXPECT_EQ(tarvo_result_output_name(nullptr, 0), nullptr);
    EXPECT_EQ(tarvo_result_text(nullptr, nullptr), nullptr);
    EXPECT_EQ(tarvo_result_text(block.get(), "none"), nullptr);
    EXPECT_EQ(tarvo_result_defect(nullptr), nullptr);
    EXPECT_STREQ(tarvo_result_operation(nullptr), "");
    EXPECT_EQ(tarvo_result_milliseconds(nullptr), 0);
}

TEST(LibraryResults, OfClientPicturesStaySoWhenTold) {
    constexpr const char* kContrast = "AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6)";
    const Picture photo = noisy_picture(6, 5);
    const Object client("TRV_ClientPicture");
    client.call("operator_convert", photo);
    CallOptions options;
    EXPECT_EQ(apply_on(kContrast, client, options).value().type, TARVO_PICTURE);
    options.client_pictures = true;
    const Result flipped = apply_on(kContrast, client, options);
    ASSERT_EQ(flipped.value().type, TARVO_OBJECT);
    EXPECT_EQ(flipped.text(), "a TRV_ClientPicture");
    const Object again = flipped.object();
    EXPECT_EQ(again.class_name(), "TRV_ClientPicture");
    EXPECT_STREQ(tarvo_object_class(nullptr), "");
    EXPECT_EQ(call("TRV_ClientPicture.width", again).integer(), 6);
    const Picture twice = apply(kContrast, apply(kContrast, photo).picture()).picture();
    EXPECT_EQ(apply_on(kContrast, again).picture().sha256(), twice.sha256());
}

TEST(LibraryErrors, TellTheirParts) {
    const Picture photo = noisy_picture(100, 100, TARVO_RGBA32);
    const auto failed = [&](const std::string& text, std::uint64_t max_pixels, std::uint64_t max_memory) {
        CallOptions options;
        options.max_pixels = max_pixels;
        options.max_memory = max_memory;
        options.read_files = true;
        try {
            apply(text, photo, options);
        } catch (const Error& error) {
            return error;
        }
        return Error(TARVO_OK, "");
    };
    const Error range = failed("Stretch(0, 5)", 0, 0);
    EXPECT_EQ(range.status(), TARVO_OPERATION);
    EXPECT_EQ(range.reason().rfind("width", 0), 0u) << range.reason();
    EXPECT_EQ(range.refusal(), "");
    EXPECT_EQ(range.limit(), TARVO_NO_LIMIT);
    EXPECT_NE(code_message(range.code()), "");
    EXPECT_NE(std::string(range.what()).find(code_message(range.code())), std::string::npos);
    EXPECT_EQ(code_message(0), "");

    const Error pixels = failed("Stretch(200, 200)", 10000, 0);
    EXPECT_EQ(pixels.status(), TARVO_LIMIT);
    EXPECT_EQ(pixels.limit(), TARVO_MAX_PIXELS);
    EXPECT_NE(pixels.refusal().find("200 x 200"), std::string::npos) << pixels.refusal();
    EXPECT_EQ(failed("Stretch(200, 200)", 0, 100000).limit(), TARVO_MAX_MEMORY);
    EXPECT_EQ(failed("Stretch(40000, 1)", 0, 0).limit(), TARVO_MAX_SIDES);
    Failed wide;
    tarvo_picture* none = nullptr;
    EXPECT_EQ(tarvo_picture_decode("P5 40000 1 255\n", 15, nullptr, &none, &wide), TARVO_LIMIT);
    EXPECT_EQ(wide.limit(), TARVO_MAX_SIDES);
    EXPECT_EQ(pixels.file(), "");

    const Error file = failed("Add(/nowhere/at/all.ppm)", 0, 0);
    EXPECT_EQ(file.status(), TARVO_FILE);
    EXPECT_EQ(file.file(), "/nowhere/at/all.ppm");
    EXPECT_EQ(tarvo_error_limit(nullptr), TARVO_NO_LIMIT);
    EXPECT_STREQ(tarvo_error_file(nullptr), "");
    EXPECT_STREQ(tarvo_error_reason(nullptr), "");
    EXPECT_STREQ(tarvo_error_refusal(nullptr), "");
}

// The source, its mask and the result have room, and the result's mask has not.
TEST(LibraryResults, TellTheirDefect) {
    const Picture photo = noisy_picture(100, 100, TARVO_RGBA32);
    CallOptions options;
    options.max_memory = 3 * 40000 + 20000;
    const Result result = apply("Stretch(100, 100)", photo, options);
    ASSERT_NE(result.code(), 0);
    ASSERT_TRUE(result.defect());
    const Error defect = *result.defect();
    EXPECT_EQ(defect.code(), result.code());
    EXPECT_EQ(defect.operation(), "TRV_Stretch");
    EXPECT_EQ(defect.limit(), TARVO_MAX_MEMORY);
    EXPECT_NE(defect.refusal(), "");
    EXPECT_FALSE(apply("Stretch(100, 100)", photo).defect());
}

}  // namespace
}  // namespace tarvo::test
