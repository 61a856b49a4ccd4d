// One operation on several threads: equal bytes, codes and yields, whatever the budget and the depth.

#include "bands.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "calls.h"
#include "error_state.h"
#include "host_services.h"
#include "side_by_side.h"

namespace tarvo::test {
namespace {

using host::Callable;
using host::Cancelled;
using plugin::UsedRunner;

class Helpers final : public plugin::BandRunner {
public:
    explicit Helpers(int threads, std::int64_t least_pixels = 1) : threads_(threads), least_pixels_(least_pixels) {}

    int threads() const override { return threads_; }
    std::int64_t least_pixels() const override { return least_pixels_; }
    void run(int count, const std::function<void(int)>& band) override {
        EXPECT_GT(count, 1);
        bands += count;
        side_by_side(threads_, count, band);
    }

    int bands = 0;

private:
    int threads_;
    std::int64_t least_pixels_;
};

// What comes of a call, with the yields: all they can see of it is how often the host got control.
struct SeenWithYields {
    Seen seen;
    int yields = 0;
    friend bool operator==(const SeenWithYields&, const SeenWithYields&) = default;
};
void PrintTo(const SeenWithYields& all, std::ostream* out) {
    PrintTo(all.seen, out);
    *out << ", " << all.yields << " yields";
}

SeenWithYields seen_of(const Callable& method, const Variant& variant, int budget, plugin::BandRunner* runner) {
    Session session(linked_plugin());
    Random random(3);
    std::optional<Fixed> yield;
    if (const auto place = parameter_named(method, "yield")) yield = {*place, static_cast<double>(budget)};
    std::vector<Value> given = good_arguments(session, random, method, variant, yield);
    const UsedRunner used(runner);
    const Seen seen = see(session, method, given);
    return {seen, session.host.yields()};
}

class Bands : public testing::TestWithParam<std::size_t> {
protected:
    const Callable& method() const { return linked_plugin().callables.all().at(GetParam()); }
};

TEST_P(Bands, MakeNoDifference) {
    constexpr Size kSize = {70, 45};
    std::vector<Variant> variants;
    for (const int depth : {1, 2, 4, 8, 16, 24, 32})
        variants.push_back({.name = std::to_string(depth) + " bits",
                            .shape = {.depth = depth, .mask_depth = depth < 16 ? 8 : 0},
                            .size = kSize,
                            .as_picture = true});
    variants.push_back(
        {.name = "own memory", .shape = {.mask_depth = 8}, .size = kSize, .store = ClientStore::own_memory});
    const bool yields = parameter_named(method(), "yield").has_value();
    const std::vector<int> budgets =
        yields ? std::vector<int>{0, 1, 69, 70, 71, 500, 1000, 3149, 3150} : std::vector{0};
    for (const Variant& variant : variants)
        for (const int budget : budgets) {
            SCOPED_TRACE(variant.name + ", a budget of " + std::to_string(budget));
            const SeenWithYields alone = seen_of(method(), variant, budget, nullptr);
            for (const int threads : {2, 5}) {
                Helpers helpers(threads);
                ASSERT_EQ(seen_of(method(), variant, budget, &helpers), alone) << threads << " threads";
            }
        }
}

TEST_P(Bands, CanBeCancelledWheneverTheHostGetsControl) {
    const Variant variant = {.size = {70, 45}};
    const int yields = seen_of(method(), variant, 500, nullptr).yields;
    for (int at = 1; at <= yields; ++at) {
        Helpers helpers(3);
        Session session(linked_plugin());
        session.host.on_yield = [&] {
            if (session.host.yields() == at) throw Cancelled();
        };
        Random random(3);
        const auto place = parameter_named(method(), "yield");
        std::vector<Value> given = good_arguments(session, random, method(), variant, Fixed{*place, 500.0});
        {
            const UsedRunner used(&helpers);
            EXPECT_THROW(session.caller.invoke(method(), given), Cancelled);
        }
        given.clear();
        expect_nothing_left(session);
    }
}

INSTANTIATE_TEST_SUITE_P(, Bands, testing::Range(std::size_t{0}, linked_method_names().size()),
                         [](const auto& instance) { return linked_method_names()[instance.param]; });

TEST(BandsOf, TheseOperations) {
    std::set<std::string> names;
    for (const Callable& method : linked_plugin().callables.all()) {
        Helpers helpers(2);
        seen_of(method, {.size = {70, 45}}, 0, &helpers);
        if (helpers.bands > 0) names.insert(method.declaration.name);
    }
    EXPECT_EQ(names, (std::set<std::string>{"TRV_Add",
                                            "TRV_AdjustContrast",
                                            "TRV_AdjustContrastWithMask",
                                            "TRV_AdjustGamma",
                                            "TRV_AdjustGammaWithMask",
                                            "TRV_AdjustHSV",
                                            "TRV_AdjustHSVWithMask",
                                            "TRV_AdjustRGB",
                                            "TRV_AdjustRGBWithMask",
                                            "TRV_AdjustRGB_InPlace",
                                            "TRV_AverageRGB",
                                            "TRV_AverageRGBWithMask",
                                            "TRV_Composite",
                                            "TRV_CompositeWithMask",
                                            "TRV_Downsample",
                                            "TRV_FlipRotate",
                                            "TRV_FreeRotateByShear",
                                            "TRV_FreeRotateDirect",
                                            "TRV_ShearHorizontal",
                                            "TRV_Subtract",
                                            "TRV_Threshold",
                                            "TRV_ThresholdWithMask",
                                            "TRV_Transition"}));
}

// Pictures that are written past the caches, by bands of the usual size.
TEST(LargeBands, MakeNoDifference) {
    for (const char* const name :
         {"TRV_AdjustContrast", "TRV_AdjustHSV", "TRV_FlipRotate", "TRV_FreeRotateDirect", "TRV_FreeRotateByShear"}) {
        SCOPED_TRACE(name);
        const Callable& method = *linked_plugin().callables.named(name).front();
        const Variant variant = {.size = {2101, 2050}};
        constexpr int kBudget = 1000000;
        const SeenWithYields alone = seen_of(method, variant, kBudget, nullptr);
        Helpers helpers(2, std::int64_t{1} << 18);
        EXPECT_EQ(seen_of(method, variant, kBudget, &helpers), alone);
        EXPECT_GT(helpers.bands, 0);
    }
}

TEST(InBands, AreAllRowsOnce) {
    Helpers helpers(3);
    const UsedRunner used(&helpers);
    for (const int unit : {1, 16})
        for (const int first : {0, 7})
            for (const int rows : {0, 1, 15, 16, 17, 100}) {
                std::vector<std::atomic<int>> visits(static_cast<std::size_t>(first + rows));
                plugin::in_bands(first, first + rows, 10, unit, [&](std::int32_t from, std::int32_t end) {
                    EXPECT_EQ((from - first) % unit, 0);
                    for (std::int32_t row = from; row < end; ++row) ++visits[static_cast<std::size_t>(row)];
                });
                for (int row = 0; row < first + rows; ++row)
                    EXPECT_EQ(visits[static_cast<std::size_t>(row)], row < first ? 0 : 1);
            }
}

TEST(InBands, AreNotWorthFewPixels) {
    Helpers helpers(2, 1000);
    const UsedRunner used(&helpers);
    const auto bands_of = [&](int rows, int width) {
        helpers.bands = 0;
        plugin::in_bands(0, rows, width, 1, [](std::int32_t, std::int32_t) {});
        return helpers.bands;
    };
    EXPECT_EQ(bands_of(10, 100), 0);
    EXPECT_EQ(bands_of(20, 100), 2);
    EXPECT_EQ(bands_of(1, 1000000), 0);
    EXPECT_EQ(bands_of(1000, 1000), 8) << "four a thread";
    EXPECT_EQ(bands_of(1000, 0), 0);
}

TEST(InBands, HandOnWhatOneThrowsWhenAllHaveEnded) {
    Helpers helpers(4);
    const UsedRunner used(&helpers);
    std::atomic<int> running = 0, begun = 0;
    const auto work = [&](std::int32_t first, std::int32_t) {
        ++begun;
        ++running;
        std::this_thread::sleep_for(std::chrono::milliseconds(first == 0 ? 1 : 20));
        --running;
        if (first == 0) throw std::out_of_range("thrown in a band");
    };
    EXPECT_THROW(plugin::in_bands(0, 400, 10, 1, work), std::out_of_range);
    EXPECT_EQ(running, 0);
    EXPECT_GT(begun, 0);
}

TEST(InBands, DoNotHandOutBandsOfTheirOwn) {
    Helpers helpers(2);
    const UsedRunner used(&helpers);
    std::atomic<int> inner = 0;
    plugin::in_bands(0, 2, 10, 1, [&](std::int32_t, std::int32_t) {
        plugin::in_bands(0, 100, 10, 1, [&](std::int32_t first, std::int32_t end) { inner += end - first == 100; });
    });
    EXPECT_EQ(inner, 2);
}

TEST(InBands, AreTheThreadsOwnAffair) {
    Helpers helpers(2);
    const UsedRunner used(&helpers);
    std::thread([] {
        int calls = 0;
        plugin::in_bands(0, 100, 10, 1, [&](std::int32_t, std::int32_t) { ++calls; });
        EXPECT_EQ(calls, 1);
    }).join();
}

#ifdef TARVO_CHECKS_BANDS
TEST(InBands, CallNoHost) {
    Session session(linked_plugin());
    Helpers helpers(2);
    const UsedRunner used(&helpers);
    EXPECT_THROW(plugin::in_bands(0, 2, 10, 1, [](std::int32_t, std::int32_t) { REALYieldToRB(); }), std::logic_error);
    EXPECT_THROW(
        plugin::in_bands(0, 2, 10, 1, [](std::int32_t, std::int32_t) { plugin::set_error(plugin::ErrorCode::dib); }),
        std::logic_error);
    plugin::set_error(plugin::ErrorCode::none);
}
#endif

}  // namespace
}  // namespace tarvo::test
