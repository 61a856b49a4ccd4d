// Every method in the surroundings that a program may have: pixels in memory that cannot be written, small stacks,
// other ways of rounding.

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cfenv>
#include <cstring>

#include "calls.h"
#include "random_arguments.h"

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace tarvo::test {
namespace {

using host::Callable;
using host::PictureValue;

class Surroundings : public testing::TestWithParam<std::size_t> {
protected:
    const Callable& method() const { return linked_plugin().callables.all().at(GetParam()); }

    Seen seen_of(const Variant& variant) const {
        Session session(linked_plugin());
        Random random(3);
        std::vector<Value> given = good_arguments(session, random, method(), variant);
        return see(session, method(), given);
    }
};

// Pixels that can only be read, with nothing behind them.
class ReadOnlyPixels {
public:
    explicit ReadOnlyPixels(const host::SharedPixels& pixels) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t room = (pixels.size + page - 1) / page * page;
        mapped_ = room + page;
        start_ = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (start_ == MAP_FAILED) throw std::bad_alloc();
        first_ = static_cast<std::uint8_t*>(start_) + room - pixels.size;
        std::memcpy(first_, pixels.bytes.get(), pixels.size);
        mprotect(start_, room, PROT_READ);
        mprotect(static_cast<std::uint8_t*>(start_) + room, page, PROT_NONE);
    }
    ~ReadOnlyPixels() { munmap(start_, mapped_); }
    ReadOnlyPixels(const ReadOnlyPixels&) = delete;
    ReadOnlyPixels& operator=(const ReadOnlyPixels&) = delete;

    static PictureValue of(const PictureValue& value) {
        const auto kept = std::make_shared<ReadOnlyPixels>(value.pixels);
        PictureValue same = {value.options, {{kept, kept->first_}, value.pixels.size}, nullptr};
        if (value.mask) same.mask = std::make_shared<const PictureValue>(of(*value.mask));
        return same;
    }

private:
    void* start_;
    std::size_t mapped_;
    std::uint8_t* first_;
};

TEST_P(Surroundings, PixelsMayBeReadOnly) {
    if (method().changes_its_picture()) GTEST_SKIP() << "it gets a copy";
    for (const int depth : {1, 4, 8, 16, 24, 32})
        for (const Size size : {kUsualSize, Size{130, 9}})
            for (const int mask_depth : {0, 8, 32}) {
                const Variant variant = {
                    .shape = {.depth = depth, .mask_depth = mask_depth}, .size = size, .as_picture = true};
                const auto seen_with = [&](bool read_only) {
                    Session session(linked_plugin());
                    Random random(3);
                    std::vector<Value> given = good_arguments(session, random, method(), variant);
                    for (Value& argument : given) {
                        const Picture* const picture = picture_in(argument);
                        if (!picture || !read_only) continue;
                        argument = session.host.new_picture(ReadOnlyPixels::of(PictureValue::of(*picture)));
                    }
                    return see(session, method(), given);
                };
                EXPECT_EQ(seen_with(true), seen_with(false));
            }
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kStack = std::size_t{1} << 20;  // frames have room around each variable there
#else
constexpr std::size_t kStack = std::size_t{256} << 10;
#endif

template <class Work>
void on_small_stack(Work work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
    pthread_t thread;
    const auto run = [](void* what) -> void* {
        (*static_cast<Work*>(what))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST_P(Surroundings, StacksMayBeSmall) {
    for (const int depth : {8, 32})
        for (const bool client_memory : {false, true}) {
            if (client_memory && depth == 8) continue;
            const Variant variant = {.shape = {.depth = depth, .mask_depth = 8},
                                     .size = {600, 20},
                                     .store = client_memory ? ClientStore::own_memory : ClientStore::picture};
            const Seen expected = seen_of(variant);
            on_small_stack([&] { EXPECT_EQ(seen_of(variant), expected); });
        }
}

// --- ways of rounding ----------------------------------------------------------------------------------------------------

// The thread's floating-point state, for as long as this lives.
class FloatingPointState {
public:
    FloatingPointState() { std::fegetenv(&before_); }
    ~FloatingPointState() { std::fesetenv(&before_); }
    FloatingPointState(const FloatingPointState&) = delete;
    FloatingPointState& operator=(const FloatingPointState&) = delete;

private:
    std::fenv_t before_;
};

TEST_P(Surroundings, TheWayOfRoundingDoesNotMatter) {
    for (const Variant& variant :
         {Variant{.shape = {.mask_depth = 8}}, Variant{.size = {40, 31}, .as_picture = true}}) {
        const Seen expected = seen_of(variant);
        for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
            const FloatingPointState state;
            std::fesetround(mode);
            EXPECT_EQ(seen_of(variant), expected) << mode;
            EXPECT_EQ(std::fegetround(), mode) << "the program's own";
        }
#if defined(__SSE__)
        constexpr unsigned kFlushToZero = 0x8000, kDenormalsAreZero = 0x40, kMaskedExceptions = 0x1F80;
        const FloatingPointState state;
        for (const unsigned bits : {kFlushToZero | kDenormalsAreZero | kMaskedExceptions, 0u}) {
            _mm_setcsr(bits);
            EXPECT_EQ(seen_of(variant), expected) << "with bits " << bits << " set";
            EXPECT_EQ(_mm_getcsr(), bits);
        }
        _mm_setcsr(kMaskedExceptions);
#endif
    }
}

INSTANTIATE_TEST_SUITE_P(, Surroundings, testing::Range(std::size_t{0}, linked_method_names().size()),
                         [](const auto& instance) { return linked_method_names()[instance.param]; });

}  // namespace
}  // namespace tarvo::test
