// Part files of several threads go when a signal ends the program, whichever thread gets it.

#include "interrupts.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "temporary_folder.h"

namespace tarvo::cli {
namespace {

class PartFiles : public testing::Test {
protected:
    // Runs in a process of its own, which a signal is to end within ten seconds.
    template <class Work>
    void ended_by(int signal, Work work) {
        const pid_t process = ::fork();
        if (process == 0) {
            handle_interrupts();
            work();
            ::_exit(1);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(process, &status, 0), process);
        ASSERT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), signal);
    }

    void make(const char* name) const { ::close(::openat(folder_fd_, name, O_CREAT | O_WRONLY, 0600)); }
    bool exists(const char* name) const { return ::faccessat(folder_fd_, name, F_OK, 0) == 0; }
    static void wait(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

    const test::TemporaryFolder folder_;
    const int folder_fd_ = ::open(folder_.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
};

TEST_F(PartFiles, OfAllThreadsGo) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        make("kept");
        ended_by(signal, [&] {
            std::atomic<int> writing = 0;
            const auto write = [&](const char* name) {
                WatchedPart part;
                part.tell(TARVO_PART_FILE_MAKING, -1, "");
                make(name);
                part.tell(TARVO_PART_FILE_MADE, folder_fd_, name);
                ++writing;
                wait(10000);
            };
            std::thread first(write, "first"), second(write, "second");
            WatchedPart done;
            done.tell(TARVO_PART_FILE_MAKING, -1, "");
            done.tell(TARVO_PART_FILE_MADE, folder_fd_, "kept");
            done.tell(TARVO_PART_FILE_GONE, -1, "");
            while (writing != 2) wait(1);
            ::kill(::getpid(), signal);
            wait(10000);
        });
        EXPECT_FALSE(exists("first"));
        EXPECT_FALSE(exists("second"));
        EXPECT_TRUE(exists("kept"));
    }
}

// One that comes to be when the signal comes is waited for, and no other one begins behind it.
TEST_F(PartFiles, ThatAreBeingMadeGoToo) {
    ended_by(SIGTERM, [&] {
        std::atomic<bool> making = false;
        std::thread writer([&] {
            WatchedPart part;
            part.tell(TARVO_PART_FILE_MAKING, -1, "");
            making = true;
            wait(100);
            make("late");
            part.tell(TARVO_PART_FILE_MADE, folder_fd_, "late");
            wait(10000);
        });
        while (!making) wait(1);
        std::thread next([&] {
            wait(50);
            WatchedPart part;
            part.tell(TARVO_PART_FILE_MAKING, -1, "");
            make("next");
            wait(10000);
        });
        ::raise(SIGTERM);
        wait(10000);
    });
    EXPECT_FALSE(exists("late"));
    EXPECT_FALSE(exists("next"));
}

// So many that no watch is left for some: those are written all the same, and the signals come through again.
TEST_F(PartFiles, BeyondThoseThatAreWatchedAreLetBe) {
    constexpr int kMany = 300;
    sigset_t before, now;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &before);
    const auto is_let_through = [&](int signal) {
        ::pthread_sigmask(SIG_SETMASK, nullptr, &now);
        return ::sigismember(&now, signal) == ::sigismember(&before, signal);
    };
    {
        std::vector<WatchedPart> parts(kMany);
        for (WatchedPart& part : parts) {
            part.tell(TARVO_PART_FILE_MAKING, -1, "");
            EXPECT_FALSE(is_let_through(SIGTERM));
            part.tell(TARVO_PART_FILE_MADE, folder_fd_, "part");
            EXPECT_TRUE(is_let_through(SIGTERM));
        }
        for (WatchedPart& part : parts) {
            part.tell(TARVO_PART_FILE_GONE, -1, "");
            EXPECT_TRUE(is_let_through(SIGTERM));
        }
    }
    make("of nobody");
    ended_by(SIGTERM, [&] {
        std::vector<WatchedPart> parts(kMany);
        for (int i = 0; i < kMany; ++i) {
            const std::string name = "part" + std::to_string(i);
            parts[static_cast<std::size_t>(i)].tell(TARVO_PART_FILE_MAKING, -1, "");
            make(name.c_str());
            parts[static_cast<std::size_t>(i)].tell(TARVO_PART_FILE_MADE, folder_fd_, name.c_str());
        }
        ::raise(SIGTERM);
        wait(10000);
    });
    EXPECT_FALSE(exists("part0"));
    EXPECT_FALSE(exists("part255"));
    EXPECT_TRUE(exists("part299"));
    EXPECT_TRUE(exists("of nobody"));
}

}  // namespace
}  // namespace tarvo::cli
