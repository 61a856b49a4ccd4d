// What no program can bring about: operations that no declaration names, and kernels called by themselves.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "area_average.h"
#include "client_picture.h"
#include "copy.h"
#include "error_state.h"
#include "free_rotate_by_shear.h"
#include "free_rotate_direct.h"
#include "free_rotation.h"
#include "host.h"
#include "plain_rotation.h"
#include "plugin_entry.h"
#include "quarter_turns.h"
#include "rectangle.h"
#include "registration_tables.h"
#include "shear_kernels.h"
#include "shear_line.h"
#include "stretch.h"
#include "transpose.h"
#include "trim.h"

using namespace tarvo::plugin;

namespace tarvo::test {
namespace {

class GeometryKernels : public ::testing::Test {
protected:
    GeometryKernels() { EXPECT_TRUE(host.start_plugin(REALPluginMain)); }

    host::Picture& pixels(const host::ObjectRef& picture) { return dynamic_cast<host::Picture&>(*picture.get()); }
    static REALpictureStruct* handle(const host::ObjectRef& picture) {
        return static_cast<REALpictureStruct*>(picture.handle());
    }
    host::ObjectRef adopt(REALpictureStruct* picture) { return host::ObjectRef::adopt(host.objects().find(picture)); }

    host::ObjectRef noise(int width, int height, int depth = 32) {
        host::ObjectRef made = host.new_picture({.width = width, .height = height, .depth = depth});
        for (int y = 0; y < height; ++y)
            for (std::size_t i = 0; i < pixels(made).packed_row_bytes(); ++i)
                pixels(made).row(y)[i] = static_cast<std::uint8_t>(random());
        return made;
    }

    host::Host host;
    std::mt19937 random{6000};
};

// A locked picture, bound as mask where a test says so.
class Locked {
public:
    explicit Locked(const host::ObjectRef& picture)
        : picture_(static_cast<REALpictureStruct*>(picture.handle()), false) {
        EXPECT_TRUE(picture_.Lock());
    }
    operator TRV_Picture&() { return picture_; }

private:
    TRV_Picture picture_;
};

// --- copies ----------------------------------------------------------------------------------------------------------

TEST_F(GeometryKernels, ACopyIsAtLeast16BitsDeepAndHasNoMask) {
    for (const int depth : {1, 2, 4, 8, 16, 24, 32}) {
        const host::ObjectRef source = noise(700, 3, depth);
        pixels(source).set_mask(noise(700, 3));
        const host::ObjectRef copy = adopt(TRV_CopyPicture(handle(source)));
        ASSERT_TRUE(copy) << depth;
        EXPECT_EQ(gTRV_Error, 0);
        EXPECT_EQ(difference(pixels(copy), read_image(pixels(source)), std::max(depth, 16)), "") << depth;
        EXPECT_FALSE(pixels(copy).mask());
    }
    EXPECT_EQ(host.yields(), 0);
}

TEST_F(GeometryKernels, TheRecordOfTheCopyLeadsToIt) {
    const auto copy = reinterpret_cast<REALpictureStruct* (*)(REALpictureStruct*)>(TRV_CopyPicture_Method.function);
    const host::ObjectRef source = noise(3, 2), made = adopt(copy(handle(source)));
    ASSERT_TRUE(made);
    EXPECT_EQ(difference(pixels(made), read_image(pixels(source)), 32), "");
}

TEST_F(GeometryKernels, ChecksOfACopyComeInOrder) {
    const host::ObjectRef source = noise(3, 3), unlockable = noise(3, 3);
    pixels(unlockable).set_purged(true);
    EXPECT_EQ(TRV_CopyPicture(nullptr), nullptr);
    EXPECT_EQ(gTRV_Error, 2);
    EXPECT_EQ(TRV_CopyPicture(handle(unlockable)), nullptr);
    EXPECT_EQ(gTRV_Error, 4);
    host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(TRV_CopyPicture(handle(source)), nullptr);
    EXPECT_EQ(gTRV_Error, 6);
}

// --- trims -----------------------------------------------------------------------------------------------------------

class TrimIntoPictures : public GeometryKernels {
protected:
    static REALobjectStruct* handle(const host::ObjectRef& object) {
        return static_cast<REALobjectStruct*>(object.handle());
    }
    host::ObjectRef rectangle(const TRV_Rectangle_Data& area) {
        const host::ObjectRef made = host.new_instance("TRV_Rectangle");
        *TRV_Rectangle_GetData(handle(made)) = area;
        return made;
    }
    host::ObjectRef client_of(const host::ObjectRef& picture) {
        const host::ObjectRef client = host.new_instance("TRV_ClientPicture");
        TRV_ClientPicture_Data& data = *TRV_ClientPicture_GetData(handle(client));
        data.width = pixels(picture).width();
        data.height = pixels(picture).height();
        data.depth = pixels(picture).depth();
        data.pic = static_cast<REALpictureStruct*>(host::ObjectRef(picture).hand_over());
        return client;
    }
    host::ObjectRef trim_into_picture(const host::ObjectRef& client, const host::ObjectRef& area, std::uint32_t frame) {
        return host::ObjectRef::adopt(host.objects().find(TRV_ClientPicture_Trim(
            handle(client), area.handle() ? handle(area) : nullptr, static_cast<int>(frame), true)));
    }
    host::Picture& picture_behind(const host::ObjectRef& client) {
        const TRV_ClientPicture_Data& data = *TRV_ClientPicture_GetData(handle(client));
        EXPECT_TRUE(data.pic);
        EXPECT_FALSE(data.pixels);
        return dynamic_cast<host::Picture&>(*host.objects().find(data.pic));
    }
};

TEST_F(TrimIntoPictures, TheResultIsCutOutAndFramed) {
    constexpr TRV_Rectangle_Data kArea = {-2, 3, 11, 5};
    constexpr std::uint32_t kFrame = 0x123456;
    const host::ObjectRef area = rectangle(kArea);
    for (const int depth : {1, 2, 4, 8, 16, 24, 32}) {
        SCOPED_TRACE(depth);
        const host::ObjectRef source = noise(8, 6, depth);
        pixels(source).set_mask(noise(8, 6));
        const host::ObjectRef result = trim_into_picture(client_of(source), area, 0xAB000000 | kFrame);
        ASSERT_TRUE(result);
        EXPECT_EQ(gTRV_Error, 0);
        host::Picture& made = picture_behind(result);
        EXPECT_FALSE(made.mask());
        PlainImage expected = read_image(made);
        for (int y = 0; y < kArea.height; ++y) {
            for (int x = 0; x < kArea.width; ++x) {
                const int column = kArea.left + x, row = kArea.top + y;
                const bool inside = column >= 0 && column < 8 && row < 6;
                expected.at(x, y) = inside ? read_pixel(pixels(source), column, row) : kFrame;
            }
        }
        ASSERT_EQ(made.width(), kArea.width);
        ASSERT_EQ(made.height(), kArea.height);
        EXPECT_EQ(difference(made, expected, std::max(depth, 16)), "");
    }
}

TEST_F(TrimIntoPictures, WithoutARectangleItIsACopy) {
    const host::ObjectRef source = noise(9, 4);
    const host::ObjectRef result = trim_into_picture(client_of(source), {}, 0);
    ASSERT_TRUE(result);
    EXPECT_EQ(difference(picture_behind(result), read_image(pixels(source)), 32), "");
}

TEST_F(TrimIntoPictures, AResultThatCannotBeLockedIsReturnedUnpainted) {
    const host::ObjectRef client = client_of(noise(3, 2)), area = rectangle({0, 0, 2, 2});
    host.faults.fail_at("lockPictureDescription", 2);
    const host::ObjectRef result = trim_into_picture(client, area, 0);
    EXPECT_EQ(gTRV_Error, 6);
    ASSERT_TRUE(result);
    for (const std::uint32_t color : read_image(picture_behind(result)).colors) EXPECT_EQ(color & 0xFFFFFF, 0xFFFFFFu);
    host.faults.fail_at("newPicture", 1);
    EXPECT_FALSE(trim_into_picture(client, area, 0));
    EXPECT_EQ(gTRV_Error, 6);
}

// --- quarter turns ---------------------------------------------------------------------------------------------------

// Where a function is; kept from compilers that take two names for two places.
template <class Function>
const void* address(Function* function) {
    Function* volatile kept = function;
    return reinterpret_cast<const void*>(kept);
}

TEST_F(GeometryKernels, EightNamesAreSecondNames) {
    EXPECT_EQ(address(Priv_Rotate180), address(Priv_Rotate0_HV));
    EXPECT_EQ(address(Priv_Rotate180_H), address(Priv_Rotate0_V));
    EXPECT_EQ(address(Priv_Rotate180_V), address(Priv_Rotate0_H));
    EXPECT_EQ(address(Priv_Rotate180_HV), address(Priv_Rotate0));
    EXPECT_EQ(address(Priv_Rotate270), address(Priv_Rotate90_HV));
    EXPECT_EQ(address(Priv_Rotate270_H), address(Priv_Rotate90_V));
    EXPECT_EQ(address(Priv_Rotate270_V), address(Priv_Rotate90_H));
    EXPECT_EQ(address(Priv_Rotate270_HV), address(Priv_Rotate90));
}

// As of masks that are not as large as their pictures: what both have is moved, nothing beyond is touched.
TEST_F(GeometryKernels, TurnsOfUnequalSizesStayInside) {
    for (int turns = 0; turns < 4; ++turns) {
        for (const bool flip_h : {false, true}) {
            for (const bool flip_v : {false, true}) {
                for (const auto& [width, height] :
                     {std::pair{3, 90}, std::pair{90, 3}, std::pair{70, 70}, std::pair{1, 1}}) {
                    const host::ObjectRef source = noise(40, 30), result = noise(width, height);
                    Locked from(source), to(result);
                    quarter_turn(turns, {flip_h, flip_v})(from, to, 0);
                }
            }
        }
    }
}

// A host's table of rows may have gaps: those rows read as black and are not written.
class RowsWithGaps : public GeometryKernels {
protected:
    using Kernel = std::function<void(const TRV_Picture& source, TRV_Picture& result)>;

    host::ObjectRef noise_in_rows(int width, int height) {
        const host::ObjectRef made =
            host.new_picture({.width = width, .height = height, .depth = 32, .backing = host::Backing::pixel_buffer});
        for (int y = 0; y < height; ++y)
            std::generate_n(pixels(made).row(y), 4 * width, [this] { return static_cast<std::uint8_t>(random()); });
        return made;
    }
    host::ObjectRef copy_of(const host::ObjectRef& picture) {
        const host::ObjectRef made = noise_in_rows(pixels(picture).width(), pixels(picture).height());
        for (int y = 0; y < pixels(made).height(); ++y)
            std::copy_n(pixels(picture).row(y), pixels(picture).packed_row_bytes(), pixels(made).row(y));
        return made;
    }
    // Runs the kernel while every third row of a picture is missing.
    void run_with_gaps(const Kernel& kernel, const host::ObjectRef& source, const host::ObjectRef& result,
                       const host::ObjectRef& with_gaps) {
        REALpictureDescription description{};
        ASSERT_TRUE(REALLockPictureDescription(handle(with_gaps), &description));
        auto* const table = static_cast<REALpixelBuffer*>(description.store);
        const std::vector<std::uint8_t*> rows(table->rows, table->rows + table->height);
        for (int y = 1; y < table->height; y += 3) table->rows[y] = nullptr;
        {
            Locked from(source), to(result);
            kernel(from, to);
        }
        std::ranges::copy(rows, table->rows);
        REALUnlockPictureDescription(handle(with_gaps));
    }

    const std::vector<Kernel> kernels = {
        [](const auto& from, auto& to) { Priv_Rotate0(from, to, 0); },
        [](const auto& from, auto& to) { Priv_Rotate0_H(from, to, 0); },
        [](const auto& from, auto& to) { Priv_Rotate90(from, to, 0); },
        [](const auto& from, auto& to) { Priv_Rotate90_V(from, to, 0); },
        [](const auto& from, auto& to) { Priv_ShearHorizontal(from, to, 0.3, 0x123456, 0); },
        [](const auto& from, auto& to) { Priv_ShearVertical(from, to, -0.6, 0x123456, 0); },
        [](const auto& from, auto& to) { Priv_StetchHorizontal(from, to, 0); },
        [](const auto& from, auto& to) { Priv_StetchVertical(from, to, 0); },
        [](const auto& from, auto& to) { PrivRotateDirect(from, to, 0.5, 0x123456); },
    };
};

TEST_F(RowsWithGaps, OfTheSourceAreBlack) {
    for (const Kernel& kernel : kernels) {
        const host::ObjectRef source = noise_in_rows(90, 140), blackened = copy_of(source);
        for (int y = 1; y < 140; y += 3) std::fill_n(pixels(blackened).row(y), 4 * 90, std::uint8_t{0});
        const host::ObjectRef result = noise_in_rows(150, 150), expected = copy_of(result);
        run_with_gaps(kernel, source, result, source);
        Locked from(blackened), to(expected);
        kernel(from, to);
        EXPECT_EQ(difference(pixels(result), read_image(pixels(expected)), 32), "") << &kernel - kernels.data();
    }
}

TEST_F(RowsWithGaps, OfTheResultAreNotWritten) {
    for (const Kernel& kernel : kernels) {
        const host::ObjectRef source = noise_in_rows(90, 140);
        const host::ObjectRef result = noise_in_rows(150, 150), before = copy_of(result), expected = copy_of(result);
        run_with_gaps(kernel, source, result, result);
        {
            Locked from(source), to(expected);
            kernel(from, to);
        }
        for (int y = 1; y < 150; y += 3) std::copy_n(pixels(before).row(y), 4 * 150, pixels(expected).row(y));
        EXPECT_EQ(difference(pixels(result), read_image(pixels(expected)), 32), "") << &kernel - kernels.data();
    }
}

TEST_F(GeometryKernels, TransposesOfEverySize) {
    for (std::size_t rows = 0; rows < 12; ++rows) {
        for (std::size_t columns = 0; columns < 12; ++columns) {
            std::array<PixelColor, 12 * 13> in{}, kept{}, exchanged{};
            for (PixelColor& color : in) color = static_cast<PixelColor>(random());
            const auto row_of = [](auto& block, std::size_t stride) {
                return [&block, stride](std::size_t row) {
                    return reinterpret_cast<std::uint8_t*>(block.data() + row * stride);
                };
            };
            transpose<Coding::kept>(rows, columns, row_of(in, 13), row_of(kept, 12));
            transpose<Coding::exchanged>(rows, columns, row_of(in, 13), row_of(exchanged, 12));
            for (std::size_t row = 0; row < 12; ++row) {
                for (std::size_t column = 0; column < 12; ++column) {
                    const PixelColor word = row < rows && column < columns ? in[row * 13 + column] : 0;
                    ASSERT_EQ(kept[column * 12 + row], word);
                    ASSERT_EQ(exchanged[column * 12 + row], big_endian(word));
                }
            }
        }
    }
}

// --- shears ----------------------------------------------------------------------------------------------------------

TEST_F(GeometryKernels, AMaskOfAnotherSizeThanTheResultIsRefused) {
    const host::ObjectRef source = noise(9, 9), result = noise(12, 12), mask = noise(9, 9), other = noise(12, 13);
    const PlainImage before = read_image(pixels(result));
    Locked source_lock(source), result_lock(result), mask_lock(mask), other_lock(other);
    EXPECT_EQ(Priv_ShearHorizontal(source_lock, result_lock, mask_lock, other_lock, 0.5, 0), 10);
    EXPECT_EQ(Priv_ShearVertical(source_lock, result_lock, mask_lock, other_lock, 0.5, 0), 10);
    EXPECT_EQ(difference(pixels(result), before, 32), "");
    const host::ObjectRef right = noise(12, 12);
    Locked right_lock(right);
    EXPECT_EQ(Priv_ShearHorizontal(source_lock, result_lock, mask_lock, right_lock, 0.5, 0), 0);
    EXPECT_EQ(Priv_ShearVertical(source_lock, result_lock, mask_lock, right_lock, 0.5, 0), 0);
}

TEST_F(GeometryKernels, BlendsDivideExactly) {
    for (const std::uint32_t weight :
         {0u, 1u, 2u, 255u, 256u, 257u, 4369u, 32767u, 32768u, 40000u, 65279u, 65534u, 65535u}) {
        for (std::uint32_t previous = 0; previous < 256; ++previous) {
            for (std::uint32_t current = 0; current < 256; ++current) {
                const std::uint32_t exact = (previous * weight + current * (65535 - weight)) / 65535;
                const PixelColor pair[] = {0xAB000000 | grey(previous), 0xCD000000 | grey(current)};
                PixelColor color = 0, level = 0;
                blend_row(pair, &color, 1, BlendColors{weight});
                blend_row(pair, &level, 1, BlendLevels{weight});
                ASSERT_EQ(color, grey(exact)) << previous << " " << current << " " << weight;
                ASSERT_EQ(level, grey(exact)) << previous << " " << current << " " << weight;
            }
        }
    }
}

// A frame colour's top byte is no colour: drawn places have none.
TEST_F(GeometryKernels, RotationsByShearDropTheFramesTopByte) {
    const host::ObjectRef source = noise(30, 20);
    for (const double rotation : {30.0, 100.0, 330.0}) {
        const host::ObjectRef result =
            adopt(TRV_FreeRotateByShear_Frame(handle(source), rotation, static_cast<int>(0xAB123456), 0));
        ASSERT_TRUE(result) << rotation;
        EXPECT_EQ(read_pixel(pixels(result), 0, 0), 0x00123456u) << rotation;  // a corner
        for (const std::uint32_t color : read_image(pixels(result)).colors) ASSERT_EQ(color >> 24, 0u) << rotation;
    }
}

// --- stretches -------------------------------------------------------------------------------------------------------

// Around every multiple of every total, where a quotient changes.
TEST_F(GeometryKernels, MeansDivideExactly) {
    constexpr std::size_t kLanes = 512;
    std::vector<PixelColor> ones(kLanes, 0x010101), out(kLanes);
    ColorSums sums;
    for (std::uint32_t total = 16384; total <= 32768; total += total < 32700 ? 41 : 1) {
        for (std::uint32_t quotient = 1; quotient <= 255; quotient += 2) {
            for (const std::uint32_t sum : {quotient * total - 1, quotient * total}) {
                sums.begin(ones.data(), 1, sum);
                sums.means(out.data(), 1, total);
                ASSERT_EQ(out[0], sum / total * 0x010101) << sum << " / " << total;
            }
        }
    }
    const std::uint32_t beyond[] = {1, 7, 16383, 32769, 65536, 1u << 23};
    for (const std::uint32_t total : beyond) {
        sums.begin(ones.data(), kLanes, total * 200 + total / 2);
        sums.means(out.data(), kLanes, total);
        for (const PixelColor color : out) ASSERT_EQ(color, 200u * 0x010101) << total;
    }
}

// Runs of rows of every proportion, against the overlap of each source pixel with each result pixel.
TEST_F(GeometryKernels, RowsAreAveragedByOverlap) {
    for (const std::int32_t source_width : {1, 2, 7, 100, 4000, 30000}) {
        std::vector<PixelColor> row(static_cast<std::size_t>(source_width));
        for (PixelColor& color : row) color = static_cast<PixelColor>(random());
        for (const std::int32_t width : {1, 3, 33, 50, 64, 99, 150, 200, 300, 600, 2000}) {
            const AxisWeights weights(source_width, width);
            for (std::int32_t first = 0; first < width; first += 200) {
                const auto count = static_cast<std::size_t>(std::min(200, width - first));
                RowAverage across(weights, first, count);
                std::vector<PixelColor> out(count);
                across.average(
                    [&](std::int32_t column, std::span<PixelColor> colors) {
                        std::copy_n(row.begin() + column, colors.size(), colors.begin());
                    },
                    out.data());
                for (std::size_t x = 0; x < count; ++x) {
                    const std::int64_t begin = (first + static_cast<std::int64_t>(x)) * weights.total;
                    const std::int64_t end = begin + weights.total;
                    std::int64_t sums[3] = {};
                    for (std::int64_t i = begin / weights.step; i * weights.step < end; ++i) {
                        const std::int64_t weight =
                            std::min(end, (i + 1) * weights.step) - std::max(begin, i * weights.step);
                        for (int c = 0; c < 3; ++c)
                            sums[c] += (row[static_cast<std::size_t>(i)] >> 8 * c & 255) * weight;
                    }
                    PixelColor expected = 0;
                    for (int c = 0; c < 3; ++c) expected |= static_cast<PixelColor>(sums[c] / weights.total) << 8 * c;
                    ASSERT_EQ(out[x], expected)
                        << source_width << " to " << width << " at " << first + static_cast<int>(x);
                }
            }
        }
    }
}

TEST_F(GeometryKernels, WeightsOfAnAxis) {
    const auto expect = [](std::int32_t source, std::int32_t result, std::int64_t step, std::int64_t total) {
        const AxisWeights weights(source, result);
        EXPECT_EQ(weights.step, step) << source << " to " << result;
        EXPECT_EQ(weights.total, total) << source << " to " << result;
    };
    expect(100, 100, 32768, 32768);
    expect(100, 200, 65536, 32768);
    expect(200, 100, 16384, 32768);
    expect(3, 2, 21845, 32767);
    expect(1, 65536, std::int64_t{1} << 31, 32768);  // more than 32 bits hold
    expect(2, 1000000, std::int64_t{16384} * 1000000, 32768);
    expect(32768, 1, 1, 32768);
    expect(32769, 1, 1, 32769);  // in units half as large
    expect(100000, 1, 1, 100000);
    expect(std::numeric_limits<std::int32_t>::max(), 1, 0, 0);  // nothing, and so black
    expect(0, 5, 0, 0);
    expect(5, 0, 0, 0);
}

TEST_F(GeometryKernels, TheMaskKernelStretchesRedAsGrey) {
    const host::ObjectRef source = noise(30, 20), as_colors = noise(30, 47), as_grey = noise(30, 47);
    {
        Locked from(source), colors(as_colors), grey(as_grey);
        Priv_StetchVertical(from, colors, 0);
        Priv_StetchVerticalMask(from, grey);
    }
    PlainImage expected = read_image(pixels(as_colors));
    for (std::uint32_t& color : expected.colors) color = (color >> 16 & 255) * 0x010101;
    EXPECT_EQ(difference(pixels(as_grey), expected, 32), "");
    EXPECT_EQ(host.yields(), 0);
}

// At 1 bit it writes the first bit of each byte, all pixels of the byte one after the other.
TEST_F(GeometryKernels, TheMaskKernelWritesFirstBitsOnly) {
    const host::ObjectRef source = host.new_picture({.width = 16, .height = 2});
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 16; ++x) write_pixel(pixels(source), x, y, x == 7 ? 0x000000 : 0xFFFFFF);
    const host::ObjectRef result = host.new_picture({.width = 16, .height = 2, .depth = 1});
    {
        Locked from(source), to(result);
        Priv_StetchVerticalMask(from, to);
    }
    for (int y = 0; y < 2; ++y) {
        EXPECT_EQ(pixels(result).row(y)[0], 0x80);
        EXPECT_EQ(pixels(result).row(y)[1], 0x00);
    }
}

TEST_F(GeometryKernels, StretchesOfUnequalSizesStayInside) {
    for (const auto& [width, height] : {std::pair{3, 90}, std::pair{90, 3}, std::pair{600, 70}, std::pair{1, 1}}) {
        const host::ObjectRef source = noise(40, 30), result = noise(width, height);
        Locked from(source), to(result);
        Priv_StetchHorizontal(from, to, 0);
        Priv_StetchVertical(from, to, 0);
    }
}

// --- rotations -------------------------------------------------------------------------------------------------------

TEST_F(GeometryKernels, TheFastRotationAgreesWithTheJudge) {
    for (const int depth : {1, 8, 16, 24, 32}) {
        for (const double rotation : {0.001, 5.0, 30.0, 45.0, 77.7, 89.999, 90.0, 120.0, 200.0, 359.9}) {
            const host::ObjectRef source = noise(37, 21, depth);
            const std::uint32_t frame = static_cast<std::uint32_t>(random());
            const host::ObjectRef result = adopt(TRV_FreeRotateFast(handle(source), rotation, static_cast<int>(frame)));
            ASSERT_TRUE(result) << rotation;
            const int quarters = static_cast<int>(rotation / 90.0);
            const double rest = rotation - 90.0 * quarters;
            if (rest == 0.0) continue;
            const host::ObjectRef turned = host.new_picture({.width = quarters % 2 ? 21 : 37,
                                                             .height = quarters % 2 ? 37 : 21,
                                                             .depth = depth == 1 ? 1 : std::max(depth, 16)});
            {
                Locked from(source), to(turned);
                quarter_turn(quarters)(from, to, 0);
            }
            expect_same_bytes(pixels(result), *plain_rotation(pixels(turned), {rest, frame & 0xFFFFFF, 1}));
        }
    }
}

TEST_F(GeometryKernels, ChecksOfTheFastRotation) {
    const host::ObjectRef source = noise(3, 3);
    EXPECT_EQ(TRV_FreeRotateFast(nullptr, 10.0, 0), nullptr);
    EXPECT_EQ(gTRV_Error, 2);
    EXPECT_EQ(TRV_FreeRotateFast(nullptr, 360.0, 0), nullptr);
    EXPECT_EQ(gTRV_Error, 31);
    EXPECT_EQ(TRV_FreeRotateFast(handle(source), -0.5, 0), nullptr);
    EXPECT_EQ(gTRV_Error, 31);
    host.faults.fail_at("newPicture", 2);
    EXPECT_EQ(TRV_FreeRotateFast(handle(source), 10.0, 0), nullptr);
    EXPECT_EQ(gTRV_Error, 6);
}

// --- stretches -------------------------------------------------------------------------------------------------------

// One row of pixels, averaged from the result's column `first` on.
std::vector<PixelColor> averaged(const std::vector<PixelColor>& row, std::int32_t width, std::int32_t first,
                                 std::size_t count) {
    RowAverage average(AxisWeights(static_cast<std::int32_t>(row.size()), width), first, count);
    std::vector<PixelColor> result(count);
    average.average(
        [&row](std::int32_t column, std::span<PixelColor> colors) {
            std::copy_n(row.begin() + column, colors.size(), colors.begin());
        },
        result.data());
    return result;
}

TEST(RowAverage, DoublesFromAnyColumnAnyNumberOfPixels) {
    const std::vector<PixelColor> row = {1, 2, 3, 4};
    EXPECT_EQ(averaged(row, 8, 0, 8), (std::vector<PixelColor>{1, 1, 2, 2, 3, 3, 4, 4}));
    EXPECT_EQ(averaged(row, 8, 2, 3), (std::vector<PixelColor>{2, 2, 3}));
    EXPECT_EQ(averaged(row, 8, 3, 4), (std::vector<PixelColor>{2, 3, 3, 4}));
}

// A client picture's own memory, before there is any.
struct WithoutPixels {
    WithoutPixels(std::int32_t width, std::int32_t height, std::int32_t depth) {
        data.width = width;
        data.height = height;
        data.depth = depth;
        EXPECT_TRUE(picture.Lock());
    }
    TRV_ClientPicture_Data data = {};
    TRV_Picture picture{&data, false};
};

TEST_F(GeometryKernels, StretchesOfNoRowsOrOfNoPixelsAreBlack) {
    for (const auto stretch : {+[](const TRV_Picture&from, TRV_Picture&to) { Priv_StetchVertical(from, to, 0); },
                               +[](const TRV_Picture&from, TRV_Picture&to) { Priv_StetchVerticalMask(from, to); }}) {
        for (const int depth : {1, 32}) {
            for (const int height : {0, 3}) {
                WithoutPixels source(4, height, depth);
                const host::ObjectRef result = noise(4, 5);
                Locked locked(result);
                stretch(source.picture, locked);
                EXPECT_EQ(difference(pixels(result), PlainImage(4, 5), 32), "") << depth << " bits, " << height;
            }
        }
    }
}

TEST_F(GeometryKernels, MasksAreNotStretchedToNowhere) {
    const host::ObjectRef source = noise(4, 3);
    for (const int depth : {1, 32}) {
        WithoutPixels result(4, 5, depth);
        Locked locked(source);
        Priv_StetchVerticalMask(locked, result.picture);
        EXPECT_EQ(result.picture.GetPixel(1L, 1L, nullptr), 0u);
    }
}

TEST(FreeRotation, AnglesComeIntoTheCircleFromBothSides) {
    constexpr double kTurn = free_rotation::kTwoPi;
    EXPECT_EQ(free_rotation::in_circle(1.0), 1.0);
    EXPECT_EQ(free_rotation::in_circle(kTurn), kTurn);
    EXPECT_EQ(free_rotation::in_circle(-1.0), kTurn - 1.0);
    EXPECT_EQ(free_rotation::in_circle(kTurn + 1.0), kTurn + 1.0 - kTurn);
}

}  // namespace
}  // namespace tarvo::test
