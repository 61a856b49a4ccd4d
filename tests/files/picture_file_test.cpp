#include "picture_file.h"

#include <gtest/gtest.h>

#include "file_samples.h"

namespace tarvo::host {
namespace {

using PictureFileTest = FilesTest;

TEST_F(PictureFileTest, GoesThroughTheDisk) {
    const Folder folder;
    const ObjectRef picture = random_picture(host, {.width = 5, .height = 4}, 1);
    for (const char* name : {"a.ppm", "A.PAM", "photo.b.PpM"}) {
        const WriteReport report = write_picture_file(picture_in(picture), folder.file(name));
        EXPECT_FALSE(report.mask_left_out);
        EXPECT_EQ(colors_of(read_picture_file(host, folder.file(name))), colors_of(picture)) << name;
    }
    EXPECT_EQ(folder.entries(), 3u);
}

TEST_F(PictureFileTest, IsReadByItsContentWhateverItsName) {
    const Folder folder;
    write_bytes(folder.file("a.png"), bytes_of("P2 1 1 255 7"));
    EXPECT_EQ(colors_of(read_picture_file(host, folder.file("a.png"))), std::vector<std::uint32_t>{0x070707});
}

TEST_F(PictureFileTest, ReportsAMaskThatTheFormatCannotKeep) {
    const Folder folder;
    const ObjectRef picture = host.new_picture({.width = 2, .height = 2});
    picture_in(picture).set_mask(host.new_picture({.width = 2, .height = 2}));
    EXPECT_FALSE(write_picture_file(picture_in(picture), folder.file("a.pam")).mask_left_out);
    for (const char* name : {"a.ppm", "a.pgm", "a.pbm"})
        EXPECT_TRUE(write_picture_file(picture_in(picture), folder.file(name)).mask_left_out) << name;
    EXPECT_EQ(colors_of(read_picture_file(host, folder.file("a.ppm"))), std::vector<std::uint32_t>(4, 0xFFFFFF));
}

TEST_F(PictureFileTest, ErrorsNameTheFileInOneLine) {
    const Folder folder;
    const std::string path = folder.file("two\nlines.ppm");
    write_bytes(path, bytes_of("P6 1 2 255 abc"));
    EXPECT_EQ(file_error([&] { read_picture_file(host, path); }),
              folder.file("two?lines.ppm") + ": cut short after 1 row");
    EXPECT_EQ(file_error([&] { read_picture_file(host, folder.file("none.ppm")); }),
              folder.file("none.ppm") + ": cannot be opened: No such file or directory");
}

TEST_F(PictureFileTest, NamesThatCannotBeWrittenAreRefused) {
    const Folder folder;
    const ObjectRef picture = host.new_picture({.width = 2, .height = 2});
    for (const char* name : {"a.gif", "ppm", "a.ppm.txt", ".ppm"}) {
        const std::string path = name;
        EXPECT_NE(file_error([&] { check_output(path); }), "") << name;
        EXPECT_NE(file_error([&] { write_picture_file(picture_in(picture), path); }), "") << name;
    }
    EXPECT_EQ(file_error([&] { check_output("a.gif"); }),
              "a.gif: the name ends in none of .png, .jpg, .jpeg, .tif, .tiff, .webp, .pbm, .pgm, .ppm, .pam");
    EXPECT_EQ(file_error([&] { check_output("a.pam"); }), "");
    EXPECT_EQ(file_error([&] { check_output("a.Own", ".own"); }), "");
    EXPECT_EQ(file_error([&] { check_output(".own", ".own"); }),
              ".own: the name ends in none of .png, .jpg, .jpeg, .tif, .tiff, .webp, .pbm, .pgm, .ppm, .pam, .own");
    EXPECT_EQ(folder.entries(), 0u);
}

TEST_F(PictureFileTest, PlacesThatCannotBeWrittenAreRefusedBeforeAnyWork) {
    const Folder folder;
    std::filesystem::create_directory(folder.file("a.ppm"));
    EXPECT_EQ(file_error([&] { check_output(folder.file("a.ppm")); }), folder.file("a.ppm") + ": not a regular file");
    EXPECT_EQ(file_error([&] { check_output(folder.file("b.ppm")); }), "");
    EXPECT_EQ(folder.entries(), 1u);
}

TEST_F(PictureFileTest, PicturesThatCannotBeWrittenLeaveTheOldFile) {
    const Folder folder;
    const std::string path = folder.file("a.ppm");
    write_bytes(path, {1, 2, 3});
    const struct {
        PictureOptions options;
        const char* reason;
    } cases[] = {
        {{.width = 2, .height = 2, .backing = Backing::drawing_commands},
         ": a picture without pixels cannot be written"},
        {{.width = 2, .height = 2, .backing = Backing::refused}, ": a picture without pixels cannot be written"},
        {{.width = 0, .height = 5, .any_sides = true}, ": a picture without pixels cannot be written"},
        {{.width = 5, .height = -2, .any_sides = true}, ": a picture without pixels cannot be written"},
        {{.width = 2, .height = 2, .depth = 12}, ": a picture of depth 12 cannot be written"},
    };
    for (const auto& c : cases) {
        const ObjectRef picture = host.new_picture(c.options);
        EXPECT_EQ(file_error([&] { write_picture_file(picture_in(picture), path); }), path + c.reason);
    }
    EXPECT_EQ(read_bytes(path), (FileBytes{1, 2, 3}));
    EXPECT_EQ(folder.entries(), 1u);
}

#ifndef TARVO_TIFF
TEST_F(PictureFileTest, TiffWithoutItsLibrarySaysSo) {
    EXPECT_EQ(file_error([&] { check_output("a.tif"); }), "a.tif: this build has no TIFF library");
    EXPECT_EQ(error_of(bytes_of({"II*\0\0\0\0\0", 8})), "this build has no TIFF library");
}
#endif

#ifndef TARVO_WEBP
TEST_F(PictureFileTest, WebpWithoutItsLibrarySaysSo) {
    EXPECT_EQ(file_error([&] { check_output("a.webp"); }), "a.webp: this build has no WebP library");
    EXPECT_EQ(error_of(bytes_of({"RIFF\0\0\0\0WEBP", 12})), "this build has no WebP library");
}
#endif

#ifndef TARVO_PICTURE_LIBRARIES
TEST_F(PictureFileTest, FormatsWithoutTheirLibrarySayso) {
    EXPECT_EQ(file_error([&] { check_output("a.png"); }), "a.png: this build has no PNG library");
    EXPECT_EQ(file_error([&] { check_output("a.jpeg"); }), "a.jpeg: this build has no JPEG library");
    EXPECT_EQ(error_of(bytes_of("\x89PNG\r\n\x1A\n...")), "this build has no PNG library");
    EXPECT_EQ(error_of(bytes_of("\xFF\xD8\xFF")), "this build has no JPEG library");
}
#endif

}  // namespace
}  // namespace tarvo::host
