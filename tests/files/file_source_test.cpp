// Files that are read: block by block, whatever they are.

#include "file_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "file_samples.h"

namespace tarvo::host {
namespace {

FileBytes all_of(ByteSource& file) {
    FileBytes bytes;
    for (auto block = file.take(); !block.empty(); block = file.take())
        bytes.insert(bytes.end(), block.begin(), block.end());
    return bytes;
}

FileBytes counting(std::size_t size) {
    FileBytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 >> 3);
    return bytes;
}

TEST(FileSource, GivesAllBytesInOrder) {
    const Folder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{1} << 18, std::size_t{600001}}) {
        const FileBytes bytes = counting(size);
        write_bytes(folder.file("a"), bytes);
        FileSource file(folder.file("a"));
        EXPECT_EQ(file.left(), size);
        EXPECT_EQ(all_of(file), bytes);
        EXPECT_EQ(file.left(), 0u);
        EXPECT_TRUE(file.ahead().empty());
    }
}

TEST(FileSource, GivesPiecesAcrossItsBlocks) {
    const Folder folder;
    const FileBytes bytes = counting(600001);
    write_bytes(folder.file("a"), bytes);
    FileSource file(folder.file("a"));
    FileBytes piece(262143), second(300000), beyond(37859);
    ASSERT_TRUE(file.read(piece));
    EXPECT_EQ(file.left(), 600001u - 262143u);
    EXPECT_EQ(file.ahead()[0], bytes[262143]);
    ASSERT_TRUE(file.read(second));
    EXPECT_EQ(piece + second, FileBytes(bytes.begin(), bytes.begin() + 562143));
    EXPECT_FALSE(file.read(beyond));
}

TEST(FileSource, CannotBeWhatIsNoFile) {
    const Folder folder;
    EXPECT_EQ(file_error([&] { FileSource(folder.file("none")); }), "cannot be opened: No such file or directory");
    EXPECT_EQ(file_error([&] { FileSource(folder.file(".")).take(); }), "cannot be read: Is a directory");
}

// What has no end is read no further than somebody asks.
TEST(FileSource, OfAnEndlessFileGivesBlocks) {
    FileSource zeros("/dev/zero");
    EXPECT_EQ(zeros.left(), std::nullopt);
    EXPECT_EQ(zeros.take().size(), std::size_t{1} << 18);
    Host host;
    EXPECT_EQ(file_error([&] { read_picture_file(host, "/dev/zero"); }), "/dev/zero: not a picture of a known format");
}

TEST(FileSource, TellsOfAPipeWithoutAWriterAndWaits) {
    const Folder folder;
    const std::string path = folder.file("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const FileBytes bytes = counting(300000);
    std::thread writer;
    int told = 0;
    FileSource file(path, [&] {
        ++told;
        writer = std::thread([&] { write_bytes(path, bytes); });
    });
    EXPECT_EQ(file.left(), std::nullopt);
    EXPECT_EQ(all_of(file), bytes);
    EXPECT_EQ(told, 1);
    if (writer.joinable()) writer.join();
}

TEST(FileSource, OfAPipeThatNobodyAsksAboutWaitsToo) {
    const Folder folder;
    const std::string path = folder.file("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&] { write_bytes(path, bytes_of("ab")); });  // waits for a reader
    FileSource file(path);
    EXPECT_EQ(all_of(file), bytes_of("ab"));
    writer.join();
}

TEST(FileSource, SaysNothingOfAPipeWithAWriter) {
    const Folder folder;
    const std::string path = folder.file("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    for (const bool writes_before : {true, false}) {
        const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);  // or the writer could not open it
        const int writer = ::open(path.c_str(), O_WRONLY);
        EXPECT_TRUE(!writes_before || ::write(writer, "ab", 2) == 2);
        FileSource file(path, [] { ADD_FAILURE() << "there is a writer"; });
        ::close(reader);
        EXPECT_EQ(::write(writer, "cd", 2), 2);
        ::close(writer);
        EXPECT_EQ(all_of(file), bytes_of(writes_before ? "abcd" : "cd"));
    }
}

// Whoever cuts a file short while it is read ends the reading, and nothing else.
TEST(FileSource, ThatBecomesShorterHasItsBytesNoLonger) {
    const Folder folder;
    const std::string path = folder.file("a");
    write_bytes(path, counting(1000));
    const FileSource file(path);
    const BytePlaces* const places = file.places();
    ASSERT_NE(places, nullptr);
    FileBytes some(100);
    EXPECT_TRUE(places->read_at(900, some));
    EXPECT_FALSE(places->read_at(901, some));
    ASSERT_EQ(::truncate(path.c_str(), 950), 0);
    EXPECT_EQ(places->size(), 1000u);
    EXPECT_FALSE(places->read_at(900, some));
    EXPECT_TRUE(places->read_at(850, some));
}

}  // namespace
}  // namespace tarvo::host
