// Many threads, calls within calls, stops, forks, small stacks.

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "samples.h"
#include "watched.h"

namespace tarvo::test {
namespace {

// Calls that together use every way of the library, each with a text that tells its result.
std::string result_of(int number, const Picture& photo, const Picture& masked, const CallOptions& options = {}) {
    static const char* const kTexts[] = {
        "AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6)",
        "AdjustHSV(rect(3, 4, 30, 20), 120.0, 1.2, 1.0, false)",
        "Stretch(width * 2, height / 2)",
        "Stretch(31, 77)",
        "FlipRotate(true, false, 1)",
        "FreeRotateByShear(33.0)",
        "FreeRotateDirect(33.0, &c123456)",
        "ShearHorizontal(200, 100, 0.3)",
        "ShearVertical(100, 200, 0.3, &c00FF00)",
        "Convolute(nil, convolution(1, 4, 6, 4, 1), convolution(1, 4, 6, 4, 1))",
        "AdjustRGB(nil, matrix(0.4, 0.3, 0.3, 0.7, 0.6, 0.5, 0.2, 0.2, 0.1))",
        "AdjustRGB_InPlace(nil, 5, 6, 7)",
        "CrawlingAnts(rect(2, 2, 40, 30), &cFFFFFF, &c000000, 4, 1)",
        "Pixelate(nil, 7)",
        "Trim(border(8), &cFFFFFF)",
        "Stretch(40000, 1)",
        "FreeRotateByShear(-1.0)",
        "Info()",
        "MakeGradient(width, height, &c102040, &cFFD080)",
    };
    constexpr int kCount = std::size(kTexts);
    const char* const text = kTexts[number % kCount];
    try {
        const Result result = apply(text, number / kCount % 2 ? masked : photo, options);
        if (result.value().type == TARVO_PICTURE) return result.picture().sha256();
        return result.value().type == TARVO_BYTES ? std::string(result.bytes()) : "nothing";
    } catch (const Error& error) {
        return std::to_string(error.status()) + ": " + error.what();
    }
}
constexpr int kCalls = 38;

struct Photos {
    Picture photo = noisy_picture(90, 60), masked = noisy_picture(90, 60, TARVO_RGBA32);
    std::vector<std::string> expected;
    Photos() {
        for (int i = 0; i < kCalls; ++i) expected.push_back(result_of(i, photo, masked));
    }
};

TEST(LibraryThreads, GiveTheResultsOfOne) {
    const Photos photos;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 3 * kCalls; ++i) {
                const int number = (i * 7 + thread * 5) % kCalls;
                if (result_of(number, photos.photo, photos.masked) != photos.expected[number]) ++wrong;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(LibraryThreads, EndWithPicturesAlive) {
    Picture made;
    std::thread([&] { made = noisy_picture(300, 300).call("TRV_FlipRotate", true, false, 0).picture(); }).join();
    Picture again;
    std::thread([&] { again = made.call("TRV_FlipRotate", true, false, 0).picture(); }).join();
    EXPECT_EQ(again.sha256(), noisy_picture(300, 300).sha256());
}

#ifndef TARVO_SANITIZED  // sanitizers take several times as much stack
void* call_all(void* argument) {
    const Photos& photos = *static_cast<Photos*>(argument);
    static const char* const wrong = "";
    for (int i = 0; i < kCalls; ++i)
        if (result_of(i, photos.photo, photos.masked) != photos.expected[i]) return const_cast<char*>(wrong);
    return nullptr;
}

TEST(LibraryThreads, NeedNoMoreThan256KiBOfStack) {
    Photos photos;
    pthread_attr_t small;
    pthread_attr_init(&small);
    ASSERT_EQ(pthread_attr_setstacksize(&small, 256 << 10), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &small, call_all, &photos), 0);
    void* wrong = nullptr;
    pthread_join(thread, &wrong);
    EXPECT_EQ(wrong, nullptr);
}
#endif

TEST(LibraryYields, MayCallTheLibrary) {
    const Photos photos;
    for (int i = 0; i < kCalls; ++i) {
        int inner = 0;
        CallOptions options;
        options.yield_pixels = 500;
        options.yield = [&] {
            const int number = (i + 1 + inner++) % kCalls;
            EXPECT_EQ(result_of(number, photos.photo, photos.masked), photos.expected[number]);
            return false;
        };
        EXPECT_EQ(result_of(i, photos.photo, photos.masked, options), photos.expected[i]);
    }
}

TEST(LibraryYields, StopEveryOperationAtEachOfThem) {
    const Photos photos;
    int yielded = 0;
    for (int i = 0; i < kCalls; ++i) {
        for (int stop = 1;; ++stop) {
            ASSERT_LT(stop, 1000);
            int asked = 0;
            CallOptions options;
            options.yield_pixels = 1000;
            options.yield = [&] { return ++asked == stop; };
            const std::string result = result_of(i, photos.photo, photos.masked, options);
            ASSERT_LE(asked, stop);
            if (asked < stop) {
                EXPECT_EQ(result, photos.expected[i]);
                yielded += stop > 1;
                break;
            }
            ASSERT_EQ(result.substr(0, 2), "6:") << result;
        }
    }
    EXPECT_GE(yielded, 12) << "operations of all kinds yield";
}

TEST(LibraryYields, ComeAsOftenAsTold) {
    const Picture photo = noisy_picture(1000, 100);
    const auto yields = [&](int pixels) {
        int count = 0;
        CallOptions options;
        options.yield_pixels = pixels;
        options.yield = [&] {
            ++count;
            return false;
        };
        apply("AdjustRGB(nil, 1, 2, 3)", photo, options);
        apply("AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6)", photo, options);
        return count;
    };
    EXPECT_GT(yields(1000), yields(10000));
    EXPECT_EQ(yields(0), 0) << "the picture is smaller than what 0 stands for";
    CallOptions options;
    options.yield_pixels = 7;
    options.yield = [] { return false; };
    constexpr const char* kCall = "AdjustRGB(red_delta = 1, green_delta = 2, blue_delta = 3)";
    EXPECT_EQ(apply(kCall, photo, options).picture().sha256(), apply(kCall, photo).picture().sha256())
        << "what else is left out stays as it is";
}

// Large enough for several bands, with a row too many and a yield among them.
TEST(LibraryBands, GiveTheSamePixelsCodesAndYields) {
    const Picture photo = noisy_picture(1031, 1019), masked = noisy_picture(1031, 1019, TARVO_RGBA32);
    for (int i = 0; i < kCalls; ++i) {
        std::string results[3];
        int yields[3] = {};
        for (const int threads : {1, 2, 5}) {
            const std::size_t place = threads / 2;
            CallOptions options;
            options.threads = threads;
            options.yield_pixels = 600000;
            options.yield = [&] {
                ++yields[place];
                return false;
            };
            results[place] = result_of(i, photo, masked, options);
        }
        EXPECT_EQ(results[1], results[0]) << i;
        EXPECT_EQ(results[2], results[0]) << i;
        EXPECT_EQ(yields[1], yields[0]) << i;
        EXPECT_EQ(yields[2], yields[0]) << i;
    }
}

TEST(LibraryBands, MayBeAsManyAsThereAreProcessors) {
    const Picture photo = noisy_picture(1031, 1019);
    CallOptions options;
    options.threads = 0;
    EXPECT_EQ(result_of(0, photo, photo, options), result_of(0, photo, photo));
    options.yield = [] { return true; };
    options.yield_pixels = 1;
    EXPECT_EQ(result_of(0, photo, photo, options).substr(0, 2), "6:");
}

TEST(LibraryBands, AreWorkedOnByOtherThreads) {
    const auto threads_now = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); };
    const Picture photo = noisy_picture(1031, 1019);
    const auto before = threads_now();
    std::ptrdiff_t most = 0;
    CallOptions options;
    options.threads = 3;
    options.yield_pixels = 700000;
    options.yield = [&] {
        most = std::max(most, threads_now());
        return false;
    };
    apply("AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6)", photo, options);
    EXPECT_EQ(most, before + 2);
    EXPECT_EQ(threads_now(), before) << "they end with the call";
}

TEST(LibraryForks, LeaveBothSidesWorking) {
    if (kAddressesWatched) GTEST_SKIP() << "a copy may find the sanitizer's own allocator locked";
    const Photos photos;
    std::atomic<bool> ended = false;
    std::thread other([&] {
        while (!ended) result_of(0, photos.photo, photos.masked);
    });
    for (int i = 0; i < 5; ++i) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::alarm(60);
            bool fine = true;
            for (int number = 0; number < kCalls; ++number)
                fine = fine && result_of(number, photos.photo, photos.masked) == photos.expected[number];
            ::_exit(fine ? 0 : 1);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    ended = true;
    other.join();
    for (int i = 0; i < kCalls; ++i) EXPECT_EQ(result_of(i, photos.photo, photos.masked), photos.expected[i]);
}

TEST(LibraryObjects, AreCountedOnAnyThread) {
    const Rectangle rectangle(1, 2, 3, 4);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([rectangle] {
            for (int i = 0; i < 1000; ++i) const Object another = rectangle;
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(rectangle.call("Area").integer(), 12);
}

}  // namespace
}  // namespace tarvo::test
