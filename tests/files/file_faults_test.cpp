// Every call of the operating system, and every allocation, that reading and writing a file makes, failing in its turn.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <functional>
#include <new>
#include <optional>

#include "file_samples.h"
#include "metadata_samples.h"
#include "system_faults.h"
#ifdef TARVO_TIFF
#include "tiff_handle.h"
#endif
#include "watched_memory.h"

namespace tarvo::host {
namespace {

using test::SystemCall;

const char* const kNames[] = {
#ifdef TARVO_PICTURE_LIBRARIES
    "a.png", "a.jpg",
#endif
    "a.ppm", "a.pam", "a.pbm"};

// Read by libraries of which some end the process when they get no memory for a few bytes.
const char* const kNamesOfOthers[] = {
#ifdef TARVO_TIFF
    "a.tif",
#endif
#ifdef TARVO_WEBP
    "a.webp",
#endif
    "b.pam"};

std::vector<const char*> all_names() {
    std::vector<const char*> names(std::begin(kNames), std::end(kNames));
    names.insert(names.end(), std::begin(kNamesOfOthers), std::end(kNamesOfOthers));
    return names;
}

class FileFaults : public testing::Test {
protected:
    // With a mask, so that a reader makes two pictures; or a progressive file's worth of noise.
    ObjectRef picture(int side) {
        ObjectRef made = random_picture(host, {.width = side, .height = side}, 1);
        picture_in(made).set_mask(random_picture(host, {.width = side, .height = side}, 2));
        return made;
    }

    // Does the work with the first, second, ... call failing, until all have. Each time nothing may be left behind; the
    // number of failures.
    int fail_each(SystemCall call, int error, const std::function<void()>& work) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE(testing::Message() << "call " << n);
            const Accounts before = host.accounts();
            std::optional<Limit> limit;
            bool failed = false, happened = false;
            try {
                test::fail_call(call, n, error);
                work();
                happened = test::stop_faults();
            } catch (const FileError& failure) {
                happened = test::stop_faults();
                failed = true;
                limit = failure.limit();
            }
            EXPECT_EQ(host.accounts(), before);
            EXPECT_TRUE(happened || !failed);
            if (!happened) return n - 1;
            const bool of_memory = call == SystemCall::allocate || call == SystemCall::mmap;
            after_fault(failed, of_memory ? limit == Limit::memory : limit == std::nullopt);
        }
    }
    std::function<void(bool failed, bool limit_fits)> after_fault = [](bool failed, bool limit_fits) {
        EXPECT_TRUE(failed);
        EXPECT_TRUE(limit_fits);
    };

    Host host;
    Folder folder;
};

TEST_F(FileFaults, OfMemoryLeaveNothingWhenAFileIsRead) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer has allocations of its own";
#endif
    for (const char* name : kNames) {
        SCOPED_TRACE(name);
        const std::string path = folder.file(name);
        write_picture_file(picture_in(picture(20)), path);
        int failures = 0;
        // One library tries again with less.
        after_fault = [&](bool failed, bool limit_fits) {
            failures += failed;
            EXPECT_TRUE(!failed || limit_fits);
        };
        fail_each(SystemCall::allocate, ENOMEM, [&] { read_picture_file(host, path); });
        EXPECT_GT(failures, 5);
    }
}

// Metadata are kept by calls that libraries make, and written by libraries of their own.
TEST_F(FileFaults, OfMemoryForMetadataLeaveNothing) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer has allocations of its own";
#endif
    Carried with;
    with.metadata.exif = bytes_of({"II*\0\x8\0\0\0\1\0\x12\1\3\0\1\0\0\0\1\0\0\0\0\0\0\0", 26});
    with.metadata.xmp = bytes_of("<x:xmpmeta/>");
    with.metadata.icc = profile("RGB ");
    with.metadata.iptc = resource(0x0404, Bytes(1000, 7));
    const PictureOptions options{.width = 8, .height = 8, .depth = 8, .colors = {{0xFFFF, 0, 0}}};
    const ObjectRef shown = random_picture(host, options, 3);
    for (const std::string name : all_names()) {
        if (name.find(".p") != name.npos && !name.ends_with(".png")) continue;
        SCOPED_TRACE(name);
        const std::string path = folder.file(name);
        int failures = 0;
        after_fault = [&](bool failed, bool limit_fits) {
            failures += failed;
            EXPECT_TRUE(!failed || limit_fits);
        };
        fail_each(SystemCall::allocate, ENOMEM,
                  [&] { write_picture_file(picture_in(shown), path, {.carried = &with}); });
        EXPECT_GT(failures, 5);
        if (name != "a.png" && name != "a.jpg") continue;
        Carried again;
        failures = 0;
        fail_each(SystemCall::allocate, ENOMEM, [&] { read_picture_file(host, path, {}, &again); });
        EXPECT_GT(failures, 5);
        EXPECT_EQ(again.metadata.icc, with.metadata.icc);
        EXPECT_EQ(again.metadata.iptc, with.metadata.iptc);
    }
}

#ifdef TARVO_TIFF
// Further on the library does not outlive them.
TEST_F(FileFaults, OfMemoryToBeginWithATiffFileAreToldAsSuch) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer has allocations of its own";
#endif
    const FileBytes file = encode_picture(picture_in(picture(20)), "a.tif");
    const MemoryPlaces places(file);
    for (int n = 1; n <= 10; ++n) {
        test::fail_call(SystemCall::allocate, n, ENOMEM);
        bool told = false;
        try {
            const TiffHandle handle(places);
        } catch (const std::bad_alloc&) {
            told = true;
        }
        EXPECT_TRUE(test::stop_faults());
        EXPECT_TRUE(told || n > 2) << n;  // some of what it then makes it can do without
    }
}
#endif

#ifdef TARVO_WEBP
// Of pixels with loss: others the library does not outlive.
TEST_F(FileFaults, OfMemoryLeaveNothingWhenAWebpFileIsRead) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer has allocations of its own";
#endif
    const std::string path = folder.file("a.webp");
    write_picture_file(picture_in(random_picture(host, {.width = 20, .height = 20}, 1)), path, {.quality = 60});
    int of_memory = 0;
    // What looks for the parts of a file does not tell why it finds none.
    after_fault = [&](bool failed, bool limit_fits) { of_memory += failed && limit_fits; };
    fail_each(SystemCall::allocate, ENOMEM, [&] { read_picture_file(host, path); });
    EXPECT_GT(of_memory, 10);
}

TEST_F(FileFaults, OfMemoryLeaveNothingWhenAWebpFileIsWrittenWithLoss) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer has allocations of its own";
#endif
    const std::string path = folder.file("a.webp");
    const ObjectRef shown = random_picture(host, {.width = 20, .height = 20}, 1);
    int failures = 0;
    after_fault = [&](bool failed, bool limit_fits) {
        failures += failed;
        EXPECT_TRUE(!failed || limit_fits);
        EXPECT_EQ(folder.entries(), failed ? 0u : 1u);
        std::filesystem::remove(path);
    };
    fail_each(SystemCall::allocate, ENOMEM, [&] { write_picture_file(picture_in(shown), path, {.quality = 60}); });
    EXPECT_GT(failures, 10);
}
#endif

TEST_F(FileFaults, OfMemoryLetObjectsDieAllTheSame) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer has allocations of its own";
#endif
    const Accounts before = host.accounts();
    int happened = 0;
    for (int i = 0; i < 500; ++i) {
        ObjectRef shown = host.new_picture({.width = 1, .height = 1});
        test::fail_call(SystemCall::allocate, 1, ENOMEM);
        shown = {};
        happened += test::stop_faults();
    }
    EXPECT_GT(happened, 0);
    EXPECT_EQ(host.accounts(), before);
}

TEST_F(FileFaults, OfMemoryLeaveTheOldFileWhenOneIsWritten) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer has allocations of its own";
#endif
    const ObjectRef shown = picture(20);
    for (const char* name : all_names()) {
        SCOPED_TRACE(name);
        const std::string path = folder.file(name);
        write_picture_file(picture_in(shown), path);
        const FileBytes whole = read_bytes(path), old = {1, 2, 3};
        write_bytes(path, old);
        const std::size_t entries = folder.entries();
        int failures = 0;
        // What tells of the old file's fate may be short of memory when the new one is in its place.
        after_fault = [&](bool failed, bool limit_fits) {
            EXPECT_EQ(folder.entries(), entries);
            const FileBytes now = read_bytes(path);
            // One library does with less memory, and makes other bytes of the same pixels.
            EXPECT_TRUE(failed ? now == old
                               : now == whole || colors_of(read_picture_file(host, path)) == colors_of(shown));
            EXPECT_TRUE(!failed || limit_fits);
            failures += failed;
            write_bytes(path, old);
        };
        fail_each(SystemCall::allocate, ENOMEM, [&] { write_picture_file(picture_in(shown), path); });
        EXPECT_GT(failures, 5);
    }
}

// Pictures of this size have memory from the system itself.
TEST_F(FileFaults, OfMappingsLeaveNothing) {
    const std::string path = folder.file("a.pam");
    write_picture_file(picture_in(picture(600)), path);
    BulkMemory::release_idle();
    EXPECT_EQ(fail_each(SystemCall::mmap, ENOMEM,
                        [&] {
                            BulkMemory::release_idle();
                            read_picture_file(host, path);
                        }),
              2);
}

TEST_F(FileFaults, OfCallsFailOnceWhereTheyMustAndAreTriedAgainWhereTheyCan) {
    const std::string path = folder.file("a.ppm");
    const ObjectRef shown = random_picture(host, {.width = 300, .height = 200}, 3);  // more than one block
    const auto write = [&] { write_picture_file(picture_in(shown), path); };
    const auto read = [&] { read_picture_file(host, path); };
    write();
    const FileBytes whole = read_bytes(path), old = {1, 2, 3};
    const struct {
        SystemCall call;
        bool writing;
        int least;  // calls there are at least
    } rows[] = {{SystemCall::open, false, 1},    {SystemCall::read, false, 2},     {SystemCall::openat, true, 2},
                {SystemCall::write, true, 3},    {SystemCall::fsync, true, 1},     {SystemCall::fchmod, true, 1},
                {SystemCall::renameat, true, 1}, {SystemCall::readlinkat, true, 1}};
    for (const auto& row : rows)
        for (const int error : {EIO, ENOSPC, EINTR}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(row.call) << ", error " << error);
            const bool retried = error == EINTR && row.call != SystemCall::readlinkat;  // which never ends so
            after_fault = [&](bool failed, bool limit_fits) {
                EXPECT_EQ(failed, !retried);
                EXPECT_TRUE(limit_fits);
                EXPECT_EQ(folder.entries(), 1u);
                if (row.writing) {
                    EXPECT_TRUE(read_bytes(path) == (failed ? old : whole));
                    write_bytes(path, old);
                }
            };
            write_bytes(path, row.writing ? old : whole);
            EXPECT_GE(fail_each(row.call, error, row.writing ? std::function<void()>(write) : read), row.least);
        }
}

#ifdef TARVO_TIFF
// Such a file is read here and there, and the place of its directory is written over.
TEST_F(FileFaults, OfReadingAndWritingAtAnyPlace) {
    const std::string path = folder.file("a.tif");
    const ObjectRef shown = random_picture(host, {.width = 30, .height = 20}, 3);
    const auto write = [&] { write_picture_file(picture_in(shown), path); };
    write();
    constexpr int kShort = -1;
    for (const SystemCall call : {SystemCall::read, SystemCall::write})
        for (const int error : {EIO, EINTR, kShort}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(call) << ", error " << error);
            after_fault = [&](bool failed, bool) {
                EXPECT_EQ(failed, error == EIO);
                EXPECT_EQ(folder.entries(), 1u);
            };
            const auto work = [&] {
                if (call == SystemCall::write) write();
                EXPECT_TRUE(colors_of(read_picture_file(host, path)) == colors_of(shown));
            };
            EXPECT_GE(fail_each(call, error, work), 2);
        }
}
#endif

TEST_F(FileFaults, OfAPipesFirstReadAreErrors) {
    const std::string path = folder.file("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    test::fail_call(SystemCall::read, 1, EIO);
    EXPECT_EQ(file_error([&] { read_picture_file(host, path); }), path + ": cannot be read: Input/output error");
    EXPECT_TRUE(test::stop_faults());
}

// Encoders write what they have whenever they have enough; large enough for each to do so twice and at the end.
TEST_F(FileFaults, OfWritingEndEveryEncoder) {
    const ObjectRef shown = random_picture(host, {.width = 600, .height = 600}, 3);
    // In front of the pixels, and more than is kept to be written together.
    const Carried with{.metadata = {.xmp = Bytes(100000, 'x')}};
    for (const char* name : all_names()) {
        SCOPED_TRACE(name);
        const std::string path = folder.file(name);
        const FileBytes old = {1, 2, 3};
        write_bytes(path, old);
        const std::size_t entries = folder.entries();
        after_fault = [&](bool failed, bool limit_fits) {
            EXPECT_TRUE(failed);
            EXPECT_TRUE(limit_fits);
            EXPECT_EQ(folder.entries(), entries);
            EXPECT_EQ(read_bytes(path), old);
        };
        WriteOptions options;
        if (std::string_view(name) == "a.png") options.carried = &with;
        EXPECT_GE(fail_each(SystemCall::write, ENOSPC, [&] { write_picture_file(picture_in(shown), path, options); }),
                  1);
    }
}

// Nobody knows what became of the bytes, whatever broke it off.
TEST_F(FileFaults, OfCloseAreErrorsOfTheNewFileAlone) {
    const std::string path = folder.file("a.ppm");
    const ObjectRef shown = random_picture(host, {.width = 3, .height = 2}, 3);
    for (const int error : {EIO, ENOSPC, EINTR}) {
        int failures = 0;
        const FileBytes old = {1, 2, 3};
        write_bytes(path, old);
        after_fault = [&](bool failed, bool) {
            failures += failed;
            EXPECT_EQ(read_bytes(path) == old, failed);
            EXPECT_EQ(folder.entries(), 1u);
            write_bytes(path, old);
        };
        EXPECT_EQ(fail_each(SystemCall::close, error, [&] { write_picture_file(picture_in(shown), path); }), 2);
        EXPECT_EQ(failures, 1);  // the other one is the folder's
        after_fault = [&](bool failed, bool) { EXPECT_FALSE(failed); };
        write_picture_file(picture_in(shown), path);
        EXPECT_EQ(fail_each(SystemCall::close, error, [&] { read_picture_file(host, path); }), 1);
    }
}

// Whoever guesses a part file's name has it taken from him by nobody, and gives nothing away by it.
TEST_F(FileFaults, PartFilesAreNeverThoseOfOthers) {
    const ObjectRef shown = random_picture(host, {.width = 3, .height = 2}, 3);
    const std::string path = folder.file("a.ppm"), planted = folder.file(".tarvo-0000000000000000");
    write_bytes(planted, {7});
    test::give_zeros(5);
    write_picture_file(picture_in(shown), path);
    EXPECT_EQ(read_bytes(planted), FileBytes{7});
    EXPECT_EQ(colors_of(read_picture_file(host, path)), colors_of(shown));
    test::give_zeros(1000);
    class Watch final : public PartFileWatch {
    public:
        void making() noexcept override { seen += "making "; }
        void made(int, const char*) noexcept override { seen += "made "; }
        void gone() noexcept override { seen += "gone"; }
        std::string seen;
    } watch;
    EXPECT_EQ(file_error([&] { write_picture_file(picture_in(shown), path, {.watch = &watch}); }),
              path + ": cannot be made: File exists");
    EXPECT_EQ(watch.seen, "making gone");
    test::give_zeros(0);
    EXPECT_EQ(read_bytes(planted), FileBytes{7});
    EXPECT_EQ(folder.entries(), 2u);
}

}  // namespace
}  // namespace tarvo::host
