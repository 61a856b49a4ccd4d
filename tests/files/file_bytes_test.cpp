#include "file_bytes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "file_samples.h"

namespace tarvo::host {
namespace {

namespace fs = std::filesystem;

TEST(FileBytes, AreReadWhole) {
    const Folder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{1} << 18, std::size_t{600001}}) {
        FileBytes bytes(size);
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 >> 3);
        write_bytes(folder.file("a"), bytes);
        EXPECT_EQ(read_file(folder.file("a")), bytes);
    }
}

TEST(FileBytes, CannotBeReadFromWhatIsNoFile) {
    const Folder folder;
    EXPECT_EQ(file_error([&] { read_file(folder.file("none")); }), "cannot be opened: No such file or directory");
    EXPECT_EQ(file_error([&] { read_file(folder.file(".")); }), "cannot be read: Is a directory");
}

TEST(FileBytes, OfAnEndlessFileAreRefused) {
    EXPECT_EQ(file_error([&] { read_file("/dev/zero", 1000000); }), "larger than 1000000 bytes");
}

TEST(FileBytes, OfALargeFileAreRefusedUnread) {
    const Folder folder;
    write_bytes(folder.file("a"), {});
    fs::resize_file(folder.file("a"), (std::uintmax_t{1} << 30) + 1);
    EXPECT_EQ(file_error([&] { read_file(folder.file("a")); }), "larger than 1073741824 bytes");
    fs::resize_file(folder.file("a"), 10);
    EXPECT_EQ(file_error([&] { read_file(folder.file("a"), 9); }), "larger than 9 bytes");
    EXPECT_EQ(read_file(folder.file("a"), 10).size(), 10u);
}

TEST(FileBytes, ReplaceAFileAndLeaveNothingElse) {
    const Folder folder;
    replace_file(folder.file("a"), FileBytes{1, 2, 3});
    EXPECT_EQ(read_bytes(folder.file("a")), (FileBytes{1, 2, 3}));
    replace_file(folder.file("a"), FileBytes{4});
    EXPECT_EQ(read_bytes(folder.file("a")), FileBytes{4});
    EXPECT_EQ(folder.entries(), 1u);
}

TEST(FileBytes, KeepThePermissionsOfTheFileTheyReplace) {
    const Folder folder;
    write_bytes(folder.file("a"), {1});
    fs::permissions(folder.file("a"), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    replace_file(folder.file("a"), FileBytes{2});
    EXPECT_EQ(fs::status(folder.file("a")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST(FileBytes, GoThroughASymbolicLink) {
    const Folder folder;
    write_bytes(folder.file("real"), {1});
    fs::create_symlink("real", folder.file("link"));
    replace_file(folder.file("link"), FileBytes{2});
    EXPECT_TRUE(fs::is_symlink(folder.file("link")));
    EXPECT_EQ(read_bytes(folder.file("real")), FileBytes{2});
}

TEST(FileBytes, DoNotReplaceWhatIsNoFile) {
    const Folder folder;
    fs::create_directory(folder.file("folder"));
    EXPECT_EQ(file_error([&] { replace_file(folder.file("folder"), FileBytes{1}); }), "not a regular file");
    EXPECT_EQ(file_error([&] { replace_file(folder.file("none/a"), FileBytes{1}); }),
              "cannot be made: No such file or directory");
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(file_error([&] { replace_file(folder.file("pipe"), FileBytes{1}); }), "not a regular file");
    EXPECT_EQ(folder.entries(), 2u);
}

}  // namespace
}  // namespace tarvo::host
