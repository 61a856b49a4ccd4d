// TRV_Picture over the memory of client pictures.

#include <utility>
#include <vector>

#include "client_memory.h"
#include "locked_picture.h"

using namespace tarvo::plugin;

namespace tarvo::test {
namespace {

// The data of a client picture with memory of its own, 2 x 2 at 24 bits.
struct OwnMemory {
    OwnMemory() {
        data.width = data.height = 2;
        data.depth = 24;
        data.buffer = data.pixels = new_client_memory(64 * 2);
        data.rowBytes = 64;
        data.hasMask = 1;
        data.maskDepth = 8;
        data.maskPixels = new_client_memory(4);
        data.maskRowBytes = 2;
    }
    ~OwnMemory() { drop(); }
    void drop() {
        drop_client_memory(std::exchange(data.buffer, nullptr));
        drop_client_memory(std::exchange(data.maskPixels, nullptr));
    }
    TRV_ClientPicture_Data data = {};
};

TEST_F(LockedPicture, ClientMemoryAndItsMask) {
    OwnMemory own;
    own.data.maskPixels[2] = 3;
    TRV_Picture locked(&own.data, false);
    EXPECT_TRUE(locked.HasMask());
    ASSERT_TRUE(locked.Lock());
    EXPECT_EQ(locked.depth(), 24);
    EXPECT_EQ(locked.bytesPerPixel(), 3);
    EXPECT_EQ(locked.bitsPerPixel(), 0);
    EXPECT_FALSE(locked.hasResolution());
    locked.SetPixel(1L, 1L, 0xABCDEF, nullptr);
    EXPECT_EQ(own.data.pixels[64 + 3], 0xAB);
    TRV_Picture mask(locked, true);
    ASSERT_TRUE(mask.Lock());
    EXPECT_EQ(mask.depth(), 8);
    EXPECT_EQ(mask.GetPixel(1L, 0L, nullptr), 0x030303u);
    own.data.hasMask = 0;
    EXPECT_FALSE(locked.HasMask());  // the flag counts, not the memory
}

TEST_F(LockedPicture, LockedClientMemoryOutlivesItsInstance) {
    OwnMemory own;
    TRV_Picture locked(&own.data, false), mask(&own.data, true);
    ASSERT_TRUE(locked.Lock() && mask.Lock());
    own.drop();
    locked.SetPixel(1L, 1L, 0x123456, nullptr);
    EXPECT_EQ(locked.GetPixel(1L, 1L, nullptr), 0x123456u);
    mask.SetPixel(0L, 0L, 7, nullptr);
    EXPECT_EQ(mask.GetPixel(0L, 0L, nullptr), 0x070707u);
}

TEST_F(LockedPicture, AMissingClientMaskReadsZeroAndTakesNoWrites) {
    std::vector<std::uint8_t> image(64 * 2);
    TRV_ClientPicture_Data data = {};
    data.width = data.height = 2;
    data.depth = 32;
    data.pixels = image.data();
    data.rowBytes = 64;
    TRV_Picture mask(&data, true);
    ASSERT_TRUE(mask.Lock());
    EXPECT_EQ(mask.width(), 2);
    EXPECT_EQ(mask.depth(), 0);
    EXPECT_FALSE(mask.HasMask());
    EXPECT_EQ(mask.GetPixel(1L, 1L, nullptr), 0u);
    mask.SetPixel(1L, 1L, 0xFFFFFF, nullptr);
    PixelColor run[2] = {1, 2};
    mask.get_pixels(0, 0, run, nullptr);
    EXPECT_EQ(run[0] | run[1], 0u);
    mask.set_pixels(0, 0, run, nullptr);
    mask.get_pixel_bits(0, 0, run, nullptr);
    mask.set_pixel_bits(0, 0, run, nullptr);
    void* nowhere = mask.row_start(0);
    EXPECT_EQ(nowhere, nullptr);
    TRV_Picture image_picture(&data, false);
    ASSERT_TRUE(image_picture.Lock());
    void* here = image_picture.row_start(0);
    image_picture.CopyMaskPixels(mask, &here, &nowhere, 2, nullptr);
    mask.CopyMaskPixels(image_picture, &nowhere, &here, 2, nullptr);
    EXPECT_EQ(here, image_picture.row_start(0));
}

}  // namespace
}  // namespace tarvo::test
