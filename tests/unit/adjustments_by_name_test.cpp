// The adjustments that people know by name take locked pictures, and give what the whole operation gives.

#include <functional>
#include <vector>

#include "average_rgb.h"
#include "color_matrix.h"
#include "color_matrix_transform.h"
#include "contrast.h"
#include "gamma.h"
#include "hsv.h"
#include "locked_picture.h"
#include "region.h"
#include "rgb_offsets.h"
#include "threshold.h"

using namespace tarvo::plugin;

namespace tarvo::test {
namespace {

class AdjustmentsByName : public LockedPicture {
protected:
    using Bytes = std::vector<std::uint8_t>;
    using Operation = std::function<REALpictureStruct*(REALpictureStruct*)>;

    static Bytes bytes_of(const ObjectRef& picture) {
        Bytes bytes;
        for (int y = 0; y < of(picture).height(); ++y) {
            const std::uint8_t* row = of(picture).row(y);
            bytes.insert(bytes.end(), row, row + of(picture).packed_row_bytes());
        }
        return bytes;
    }
    Bytes result_of(const Operation& operation) {
        return bytes_of(ObjectRef::adopt(host.objects().find(operation(handle(source)))));
    }
    // What `kernel` writes into another picture.
    template <class Kernel>
    Bytes written_by(Kernel kernel) {
        const ObjectRef written = make({.width = kWidth, .height = kHeight});
        {
            TRV_Picture from(handle(source), false), by(handle(mask), false), to(handle(written), false);
            EXPECT_TRUE(from.Lock() && by.Lock() && to.Lock());
            kernel(from, by, to);
        }
        return bytes_of(written);
    }

    template <class Kernel>
    void expect_equal(Kernel kernel, const Operation& operation) {
        EXPECT_EQ(written_by(kernel), result_of(operation));
    }

    static constexpr int kWidth = 37, kHeight = 3, kGrey = 0x808080, kNoYield = 0;
    static constexpr double kMore = 1.6, kSame = 1.0, kLess = 0.5;
    const Region all{0, 0, kWidth - 1, kHeight - 1};
    ObjectRef source = make({.width = kWidth, .height = kHeight}), mask = make({.width = kWidth, .height = kHeight});
};

TEST_F(AdjustmentsByName, Contrast) {
    expect_equal(
        [&](TRV_Picture& from, TRV_Picture&, TRV_Picture& to) {
            PrivAdjustContrast(from, to, all, kGrey, kMore, kSame, kLess, kNoYield);
        },
        [&](REALpictureStruct* p) { return TRV_AdjustContrast(p, nullptr, kGrey, kMore, kSame, kLess, kNoYield); });
    expect_equal(
        [&](TRV_Picture& from, TRV_Picture& by, TRV_Picture& to) {
            PrivAdjustContrastWithMask(from, by, to, kGrey, kMore, kSame, kLess, kNoYield);
        },
        [&](REALpictureStruct* p) {
            return TRV_AdjustContrastWithMask(p, handle(mask), kGrey, kMore, kSame, kLess, kNoYield);
        });
}

TEST_F(AdjustmentsByName, Gamma) {
    expect_equal(
        [&](TRV_Picture& from, TRV_Picture&, TRV_Picture& to) {
            PrivAdjustGamma(from, to, all, kGrey, kMore, kSame, kLess, kNoYield);
        },
        [&](REALpictureStruct* p) { return TRV_AdjustGamma(p, nullptr, kGrey, kMore, kSame, kLess, kNoYield); });
    expect_equal([&](TRV_Picture& from, TRV_Picture& by,
                     TRV_Picture& to) { PrivAdjustGammaWithMask(from, by, to, kGrey, kMore, kSame, kLess, kNoYield); },
                 [&](REALpictureStruct* p) {
                     return TRV_AdjustGammaWithMask(p, handle(mask), kGrey, kMore, kSame, kLess, kNoYield);
                 });
}

TEST_F(AdjustmentsByName, AverageBlend) {
    expect_equal([&](TRV_Picture& from, TRV_Picture&,
                     TRV_Picture& to) { PrivAverageRGB(from, to, all, kGrey, kLess, kSame, 0.0, kNoYield); },
                 [&](REALpictureStruct* p) { return TRV_AverageRGB(p, nullptr, kGrey, kLess, kSame, 0.0, kNoYield); });
    expect_equal([&](TRV_Picture& from, TRV_Picture& by,
                     TRV_Picture& to) { PrivAverageRGBWithMask(from, by, to, kGrey, kLess, kSame, 0.0, kNoYield); },
                 [&](REALpictureStruct* p) {
                     return TRV_AverageRGBWithMask(p, handle(mask), kGrey, kLess, kSame, 0.0, kNoYield);
                 });
}

TEST_F(AdjustmentsByName, HueSaturationAndBrightness) {
    expect_equal([&](TRV_Picture& from, TRV_Picture&,
                     TRV_Picture& to) { PrivAdjustHSV(from, to, all, 90.0, kMore, kLess, true, kNoYield); },
                 [&](REALpictureStruct* p) { return TRV_AdjustHSV(p, nullptr, 90.0, kMore, kLess, true, kNoYield); });
    expect_equal(
        [&](TRV_Picture& from, TRV_Picture& by, TRV_Picture& to) {
            PrivAdjustHSVWithMask(from, by, to, 90.0, kMore, kLess, kNoYield);
        },
        [&](REALpictureStruct* p) { return TRV_AdjustHSVWithMask(p, handle(mask), 90.0, kMore, kLess, kNoYield); });
}

TEST_F(AdjustmentsByName, Offsets) {
    const auto operation = [](REALpictureStruct* p) { return TRV_AdjustRGB(p, nullptr, 40, 0, -70); };
    expect_equal([&](TRV_Picture& from, TRV_Picture&, TRV_Picture& to) { PrivAdjustRGB(from, to, all, 40, 0, -70); },
                 operation);
    expect_equal(
        [&](TRV_Picture& from, TRV_Picture& by, TRV_Picture& to) { PrivAdjustRGBWithMask(from, by, to, 40, 0, -70); },
        [&](REALpictureStruct* p) { return TRV_AdjustRGBWithMask(p, handle(mask), 40, 0, -70); });

    const Bytes adjusted = result_of(operation);
    {
        TRV_Picture picture(handle(source), false);
        ASSERT_TRUE(picture.Lock());
        PrivAdjustRGB_InPlace(picture, all, 40, 0, -70);
    }
    EXPECT_EQ(bytes_of(source), adjusted);
}

TEST_F(AdjustmentsByName, Matrix) {
    const ObjectRef matrix = host.new_instance("TRV_ColorMatrix");
    auto* const object = static_cast<REALobjectStruct*>(matrix.handle());
    TRV_ColorMatrix_Data& numbers = *TRV_ColorMatrix_GetData(object);
    numbers = {{{0.5, 0.25, 0.0}, {0.0, 1.5, -0.5}, {0.25, 0.0, 1.0}}};
    expect_equal(
        [&](TRV_Picture& from, TRV_Picture&, TRV_Picture& to) { PrivAdjustRGB_Matrix(from, to, all, numbers); },
        [&](REALpictureStruct* p) { return TRV_AdjustRGB_Matrix(p, nullptr, object); });
    expect_equal([&](TRV_Picture& from, TRV_Picture& by,
                     TRV_Picture& to) { PrivAdjustRGBWithMask_Matrix(from, by, to, numbers); },
                 [&](REALpictureStruct* p) { return TRV_AdjustRGBWithMask_Matrix(p, handle(mask), object); });
}

TEST_F(AdjustmentsByName, Threshold) {
    expect_equal([&](TRV_Picture& from, TRV_Picture&,
                     TRV_Picture& to) { PrivThreshold(from, to, all, true, false, 0x6080A0, 0x112233); },
                 [&](REALpictureStruct* p) { return TRV_Threshold(p, nullptr, true, false, 0x6080A0, 0x112233); });
    expect_equal(
        [&](TRV_Picture& from, TRV_Picture& by, TRV_Picture& to) {
            PrivThresholdWithMask(from, by, to, true, false, 0x6080A0, 0x112233);
        },
        [&](REALpictureStruct* p) { return TRV_ThresholdWithMask(p, handle(mask), true, false, 0x6080A0, 0x112233); });
}

}  // namespace
}  // namespace tarvo::test
