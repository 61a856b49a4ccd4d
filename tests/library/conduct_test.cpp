// What the library does to the process that it is in: nothing.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cfenv>
#include <clocale>
#include <fstream>

#include "samples.h"
#include "temporary_folder.h"

namespace tarvo::test {
namespace {

void use_everything(const std::string& folder) {
    const Picture photo = noisy_picture(60, 40, TARVO_RGBA32);
    photo.save(folder + "/picture.pam");
    Picture::open(folder + "/picture.pam").call("TRV_Stretch", 90, 33);
    status_of([&] { Picture::open(folder + "/missing.png"); });
    status_of([&] { photo.call("TRV_Stretch", 0, 0); });
    status_of([&] { photo.call("TRV_Nothing"); });
    Rectangle(1, 2, 3, 4).call("MessageBox");
#ifdef TARVO_PICTURE_LIBRARIES
    const auto jpeg = photo.encode("jpg"), png = photo.encode("png");
    for (const auto& file : {jpeg, png})
        for (const std::size_t kept : {file.size() / 2, file.size() - 5})
            status_of([&] { Picture::decode(file.data(), kept); });
    auto damaged = jpeg;
    for (std::size_t i = damaged.size() / 2; i < damaged.size(); i += 7) damaged[i] ^= 0x55;
    status_of([&] { Picture::decode(damaged.data(), damaged.size()); });
#endif
}

TEST(LibraryConduct, WritesNothingToStandardStreams) {
    const TemporaryFolder folder;
    const std::string shown = folder.file("shown");
    std::fflush(nullptr);
    const int file = ::open(shown.c_str(), O_CREAT | O_WRONLY, 0600), out = ::dup(1), err = ::dup(2);
    ::dup2(file, 1);
    ::dup2(file, 2);
    use_everything(folder.path());
    std::fflush(nullptr);
    ::dup2(out, 1);
    ::dup2(err, 2);
    for (const int each : {file, out, err}) ::close(each);
    std::ifstream text(shown);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(text), {}), "");
}

TEST(LibraryConduct, LeavesTheProcessAsItIs) {
    const TemporaryFolder folder;
    const mode_t mask = ::umask(027);
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    struct sigaction before[NSIG] = {}, after[NSIG] = {};
    for (int signal = 1; signal < NSIG; ++signal) ::sigaction(signal, nullptr, &before[signal]);
    sigset_t blocked, still_blocked;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    std::fesetround(FE_UPWARD);
    use_everything(folder.path());
    EXPECT_EQ(std::fegetround(), FE_UPWARD);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(::umask(mask), 027u);
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
    for (int signal = 1; signal < NSIG; ++signal) {
        ::sigaction(signal, nullptr, &after[signal]);
        EXPECT_EQ(before[signal].sa_handler, after[signal].sa_handler) << signal;
    }
    ::pthread_sigmask(SIG_SETMASK, nullptr, &still_blocked);
    for (int signal = 1; signal < NSIG; ++signal)
        EXPECT_EQ(sigismember(&blocked, signal), sigismember(&still_blocked, signal)) << signal;
}

#ifndef TARVO_SANITIZED  // sanitizers keep what is given back
// A service reads and makes pictures for months.
TEST(LibraryConduct, KeepsNoMemoryOfFailures) {
    const auto resident = [] {
        std::ifstream file("/proc/self/statm");
        long total = 0, pages = 0;
        file >> total >> pages;
        return pages * ::sysconf(_SC_PAGESIZE) / 1024;
    };
    const TemporaryFolder folder;
    const Picture photo = noisy_picture(60, 40);
    const auto round = [&] {
        for (int i = 0; i < 300; ++i) {
            status_of([&] { photo.call("TRV_Stretch", 0, 0); });
            status_of([&] { photo.call("TRV_Nothing"); });
            status_of([&] { apply("Stretch(40000, 1)", photo); });
            status_of([&] { Picture::decode("P6 20 20 255\nshort", 18); });
            CallOptions options;
            options.yield_pixels = 100;
            options.yield = [] { return true; };
            status_of([&] { apply("AdjustRGB(nil, matrix(1,1,1,1,1,1,1,1,1))", photo, options); });
            status_of([&] { apply("FreeRotateByShear(33.0)", photo, options); });
            status_of([&] { apply("ShearVertical(100, 200, 0.3)", photo, options); });
        }
    };
    round();
    const long before = resident();
    for (int i = 0; i < 5; ++i) round();
    EXPECT_LT(resident(), before + 4096);
}
#endif

}  // namespace
}  // namespace tarvo::test
