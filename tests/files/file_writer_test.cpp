// Files that are made or replaced: whole or not at all, and by nobody else's hand.

#include "file_writer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "file_samples.h"

namespace tarvo::host {
namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

// Why no file can be made there, which shows as well before it is tried.
std::string refusal(const std::string& path) {
    const std::string reason = file_error([&] { FileWriter{path}; });
    EXPECT_EQ(file_error([&] { FileWriter::check(path); }), reason);
    return reason;
}

Lines replace_file(const std::string& path, const FileBytes& bytes, PartFileWatch* watch = nullptr) {
    FileWriter file(path, watch);
    file.write(bytes);
    return file.commit();
}

mode_t mode_of(const std::string& path) {
    struct stat known {};
    EXPECT_EQ(::lstat(path.c_str(), &known), 0) << path;
    return known.st_mode & 07777;
}

// The part file of a folder that has one.
std::string part_in(const Folder& folder) {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder.path()))
        if (entry.path().filename().string().rfind(".tarvo-", 0) == 0) return entry.path();
    return "";
}

// The process's permissions for new files, put back at the end.
class WithUmask {
public:
    explicit WithUmask(mode_t mask) : before_(::umask(mask)) {}
    ~WithUmask() { ::umask(before_); }
    WithUmask(const WithUmask&) = delete;
    WithUmask& operator=(const WithUmask&) = delete;

private:
    mode_t before_;
};

class Recorder final : public PartFileWatch {
public:
    void making() noexcept override { calls += "making "; }
    void made(int folder, const char* name) noexcept override {
        calls += "made ";
        EXPECT_EQ(::faccessat(folder, name, F_OK, AT_SYMLINK_NOFOLLOW), 0) << name;
    }
    void gone() noexcept override { calls += "gone "; }
    std::string calls;
};

TEST(FileWriter, MakesAndReplacesAFileAndLeavesNothingElse) {
    const Folder folder;
    for (const std::size_t size : {std::size_t{3}, std::size_t{0}, std::size_t{1} << 16, std::size_t{600001}}) {
        FileBytes bytes(size);
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 >> 3);
        EXPECT_EQ(replace_file(folder.file("a"), bytes), Lines());
        EXPECT_EQ(read_bytes(folder.file("a")), bytes);
    }
    EXPECT_EQ(folder.entries(), 1u);
}

TEST(FileWriter, TakesBytesInPiecesOfAnySize) {
    const Folder folder;
    FileBytes all;
    FileWriter file(folder.file("a"));
    for (std::size_t size = 1; size < 200000; size = size * 3 + 1) {
        const FileBytes piece(size, static_cast<std::uint8_t>(size));
        file.write(piece);
        all = all + piece;
    }
    file.commit();
    EXPECT_EQ(read_bytes(folder.file("a")), all);
}

TEST(FileWriter, ChangesNothingUntilItIsTold) {
    const Folder folder;
    write_bytes(folder.file("a"), {1});
    {
        FileWriter file(folder.file("a"));
        file.write(FileBytes(100000));
        EXPECT_EQ(read_bytes(folder.file("a")), FileBytes{1});
        EXPECT_EQ(folder.entries(), 2u);
    }
    EXPECT_EQ(read_bytes(folder.file("a")), FileBytes{1});
    EXPECT_EQ(folder.entries(), 1u);
}

TEST(FileWriter, IsItsOwnersAloneWhileItIsWritten) {
    const Folder folder;
    const WithUmask everybody(0);
    write_bytes(folder.file("a"), {1});
    ::chmod(folder.file("a").c_str(), 0644);
    FileWriter file(folder.file("a"));
    file.write(FileBytes(100000));
    EXPECT_EQ(mode_of(part_in(folder)), 0600u);
    file.commit();
    EXPECT_EQ(mode_of(folder.file("a")), 0644u);
}

TEST(FileWriter, KeepsThePermissionsOfTheFileItReplaces) {
    const Folder folder;
    const WithUmask mask(022);
    for (const mode_t mode : {0640u, 0600u, 0666u, 0755u}) {
        write_bytes(folder.file("a"), {1});
        ::chmod(folder.file("a").c_str(), mode);
        EXPECT_EQ(replace_file(folder.file("a"), {2}), Lines());
        EXPECT_EQ(mode_of(folder.file("a")), mode);
    }
}

TEST(FileWriter, GivesANewFileWhatTheProcessGivesToAll) {
    const Folder folder;
    for (const mode_t mask : {022u, 077u, 002u, 0u}) {
        const WithUmask set(mask);
        const std::string path = folder.file(std::to_string(mask));
        replace_file(path, {1});
        EXPECT_EQ(mode_of(path), 0666u & ~mask);
        EXPECT_EQ(::umask(mask), mask);  // nobody has touched it
    }
}

// Whoever owns the folder can put something else where the part file was; the permissions go to the file itself.
TEST(FileWriter, IsNotLedAstrayBySwappedPartFiles) {
    const Folder folder, elsewhere;
    write_bytes(elsewhere.file("ours"), {7});
    ::chmod(elsewhere.file("ours").c_str(), 0600);
    write_bytes(folder.file("a"), {1});
    ::chmod(folder.file("a").c_str(), 0666);
    FileWriter file(folder.file("a"));
    file.write(FileBytes{2});
    const std::string part = part_in(folder);
    fs::remove(part);
    fs::create_symlink(elsewhere.file("ours"), part);
    EXPECT_EQ(file_error([&] { file.commit(); }), "somebody else changed it while it was written");
    EXPECT_EQ(mode_of(elsewhere.file("ours")), 0600u);
    EXPECT_EQ(read_bytes(elsewhere.file("ours")), FileBytes{7});
}

TEST(FileWriter, StaysInTheFolderThatItBeganIn) {
    const Folder folder;
    fs::create_directory(folder.file("one"));
    fs::create_directory(folder.file("two"));
    FileWriter file(folder.file("one/a"));
    file.write(FileBytes{5});
    fs::rename(folder.file("one"), folder.file("three"));
    fs::rename(folder.file("two"), folder.file("one"));
    file.commit();
    EXPECT_EQ(read_bytes(folder.file("three/a")), FileBytes{5});
    EXPECT_TRUE(fs::is_empty(folder.file("one")));
}

TEST(FileWriter, FollowsLinksToTheirEnd) {
    const Folder folder;
    fs::create_directory(folder.file("far"));
    write_bytes(folder.file("far/real"), {1});
    fs::create_symlink("far/second", folder.file("first"));
    fs::create_symlink(folder.file("far/third"), folder.file("far/second"));  // with its whole path
    fs::create_symlink("real", folder.file("far/third"));
    replace_file(folder.file("first"), {2});
    for (const char* name : {"first", "far/second", "far/third"})
        EXPECT_TRUE(fs::is_symlink(folder.file(name))) << name;
    EXPECT_EQ(read_bytes(folder.file("far/real")), FileBytes{2});
    EXPECT_EQ(folder.entries(), 2u);
}

TEST(FileWriter, MakesWhatADanglingLinkNames) {
    const Folder folder;
    fs::create_directory(folder.file("far"));
    fs::create_symlink("far/none", folder.file("link"));
    replace_file(folder.file("link"), {2});
    EXPECT_TRUE(fs::is_symlink(folder.file("link")));
    EXPECT_EQ(read_bytes(folder.file("far/none")), FileBytes{2});
}

TEST(FileWriter, RefusesALoopOfLinks) {
    const Folder folder;
    fs::create_symlink("b", folder.file("a"));
    fs::create_symlink("a", folder.file("b"));
    EXPECT_EQ(refusal(folder.file("a")), "cannot be made: Too many levels of symbolic links");
    EXPECT_EQ(folder.entries(), 2u);
    EXPECT_TRUE(fs::is_symlink(folder.file("a")));
}

TEST(FileWriter, DoesNotReplaceWhatIsNoFile) {
    const Folder folder;
    fs::create_directory(folder.file("folder"));
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    fs::create_symlink("pipe", folder.file("link"));
    for (const char* name : {"folder", "folder/", "folder/.", "folder/..", "pipe", "link"})
        EXPECT_EQ(refusal(folder.file(name)), "not a regular file") << name;
    EXPECT_EQ(refusal(""), "not a regular file");
    EXPECT_EQ(refusal(folder.file("none/a")), "there is no folder \"" + folder.file("none") + '"');
    EXPECT_EQ(refusal(folder.file("pipe/a")), "there is no folder \"" + folder.file("pipe") + '"');
    EXPECT_EQ(refusal(folder.file(std::string(256, 'x'))), "cannot be made: File name too long");
    EXPECT_EQ(folder.entries(), 3u);
}

TEST(FileWriter, ChecksAPlaceAndLeavesItAsItIs) {
    const Folder folder;
    write_bytes(folder.file("old"), {1});
    fs::create_symlink("new", folder.file("link"));
    for (const char* name : {"old", "new", "link"}) EXPECT_EQ(refusal(folder.file(name)), "") << name;
    EXPECT_EQ(folder.entries(), 2u);
    EXPECT_EQ(read_bytes(folder.file("old")), FileBytes{1});
    // Root can write in every folder, and becomes somebody else for a while.
    constexpr uid_t kNobody = 65534;
    const uid_t user = ::geteuid();
    fs::permissions(folder.path(), static_cast<fs::perms>(0555));
    const auto become = [&](uid_t other) { return user != 0 || ::seteuid(other) == 0; };
    ASSERT_TRUE(become(kNobody));
    const std::string refused = file_error([&] { FileWriter::check(folder.file("old")); });
    ASSERT_TRUE(become(user));
    fs::permissions(folder.path(), fs::perms::owner_all);
    EXPECT_EQ(refused, "its folder cannot be written in: Permission denied");
}

TEST(FileWriter, TellsWhatItDoesNotKeep) {
    const Folder folder;
    write_bytes(folder.file("named"), {1});
    fs::create_hard_link(folder.file("named"), folder.file("other"));
    EXPECT_EQ(replace_file(folder.file("named"), {2}), Lines{"had other names: they keep the old file"});
    EXPECT_EQ(read_bytes(folder.file("other")), FileBytes{1});
    EXPECT_EQ(replace_file(folder.file("named"), {3}), Lines());

    ::chmod(folder.file("other").c_str(), 0444);
    EXPECT_EQ(replace_file(folder.file("other"), {2}), Lines{"was read-only: it is replaced all the same"});
    EXPECT_EQ(mode_of(folder.file("other")), 0444u);
}

TEST(FileWriter, TellsOfAnotherOwner) {
    const Folder folder;
    write_bytes(folder.file("a"), {1});
    if (::chown(folder.file("a").c_str(), 12345, static_cast<gid_t>(-1)) != 0)
        GTEST_SKIP() << "only root gives files away";
    const Lines told = {"belonged to another user or group: the new file does not"};
    EXPECT_EQ(replace_file(folder.file("a"), {2}), told);
    ASSERT_EQ(::chown(folder.file("a").c_str(), static_cast<uid_t>(-1), 12345), 0);
    EXPECT_EQ(replace_file(folder.file("a"), {3}), told);
    EXPECT_EQ(replace_file(folder.file("a"), {4}), Lines());
}

TEST(FileWriter, RefusesNamesThatNoFileHas) {
    const Folder folder;
    EXPECT_EQ(refusal(folder.file(std::string(300, 'a'))), "cannot be made: File name too long");
    EXPECT_EQ(refusal(folder.file(std::string(300, 'a') + "/b")), "cannot be made: File name too long");
    EXPECT_EQ(folder.entries(), 0u);
}

TEST(FileWriter, CanKeepAFileThatIsThereOrComes) {
    const Folder folder;
    Recorder recorder;
    write_bytes(folder.file("old"), {1});
    EXPECT_EQ(file_error([&] { FileWriter(folder.file("old"), &recorder, FileWriter::Old::kept); }),
              "cannot be made: File exists");
    EXPECT_EQ(recorder.calls, "");
    {
        FileWriter file(folder.file("new"), &recorder, FileWriter::Old::kept);
        file.write(FileBytes{2});
        write_bytes(folder.file("new"), {3});  // somebody else's, which came in between
        EXPECT_EQ(file_error([&] { file.commit(); }), "cannot be made: File exists");
    }
    EXPECT_EQ(read_bytes(folder.file("new")), FileBytes{3});
    EXPECT_EQ(read_bytes(folder.file("old")), FileBytes{1});
    EXPECT_EQ(folder.entries(), 2u);
    EXPECT_EQ(recorder.calls, "making made gone ");

    FileWriter file(folder.file("made"), &recorder, FileWriter::Old::kept);
    file.write(FileBytes{4});
    EXPECT_EQ(file.commit(), Lines());
    EXPECT_EQ(read_bytes(folder.file("made")), FileBytes{4});
    EXPECT_EQ(folder.entries(), 3u);
    EXPECT_EQ(recorder.calls, "making made gone making made gone ");
}

TEST(FileWriter, TellsWhoWatchesOfEachPartFile) {
    const Folder folder;
    Recorder recorder;
    replace_file(folder.file("a"), {1}, &recorder);
    EXPECT_EQ(recorder.calls, "making made gone ");
    { FileWriter file(folder.file("a"), &recorder); }
    EXPECT_EQ(recorder.calls, "making made gone making made gone ");
    fs::create_directory(folder.file("folder"));
    EXPECT_NE(file_error([&] { replace_file(folder.file("folder"), {1}, &recorder); }), "");
    EXPECT_EQ(recorder.calls, "making made gone making made gone ");  // refused before anything was made
}

}  // namespace
}  // namespace tarvo::host
