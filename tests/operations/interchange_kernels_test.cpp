// What no program can bring about: kernels and entries of strings and memory blocks, called by themselves.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "error_state.h"
#include "host.h"
#include "host_services.h"
#include "memory_block.h"
#include "picture_string.h"
#include "plugin_entry.h"

using namespace tarvo::plugin;

namespace tarvo::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

REALpictureStruct* handle(const host::ObjectRef& picture) { return static_cast<REALpictureStruct*>(picture.handle()); }

class InterchangeKernels : public ::testing::Test {
protected:
    InterchangeKernels() { EXPECT_TRUE(host.start_plugin(REALPluginMain)); }

    // A picture of that size, its pixels the numbers from 1 on.
    host::ObjectRef numbered(int width, int height) {
        host::ObjectRef made = host.new_picture({.width = width, .height = height});
        TRV_Picture picture(handle(made), false);
        EXPECT_TRUE(picture.Lock());
        for (int i = 0; i < width * height; ++i)
            picture.SetPixel(i / width, i % width, static_cast<unsigned long>(i + 1) * 0x010101, nullptr);
        return made;
    }
    // The low bytes of all pixels.
    Bytes levels(const host::ObjectRef& made) {
        TRV_Picture picture(handle(made), false);
        EXPECT_TRUE(picture.Lock());
        Bytes result;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                result.push_back(static_cast<std::uint8_t>(picture.GetPixel(y, x, nullptr)));
        return result;
    }
    // The picture, locked as its own mask would be.
    template <class Work>
    void with_locked(const host::ObjectRef& made, Work work) {
        TRV_Picture picture(handle(made), false);
        ASSERT_TRUE(picture.Lock());
        work(picture);
    }

    host::Host host;
};

TEST_F(InterchangeKernels, MaskPlanesMeetMasksOfOtherSizesInTheirCommonPart) {
    Bytes plane(6, 0);
    with_locked(numbered(2, 3), [&](TRV_Picture& mask) { PrivWriteMaskPlane(mask, plane.data(), 3, 2); });
    EXPECT_EQ(plane, (Bytes{1, 2, 0, 3, 4, 0}));
    with_locked(numbered(4, 1), [&](TRV_Picture& mask) { PrivWriteMaskPlane(mask, plane.data(), 3, 2); });
    EXPECT_EQ(plane, (Bytes{1, 2, 3, 3, 4, 0}));

    const Bytes levels_of_plane = {11, 12, 13, 14, 15, 16};
    const host::ObjectRef narrow = numbered(2, 3), wide = numbered(4, 1);
    with_locked(narrow, [&](TRV_Picture& mask) { PrivReadMaskPlane(levels_of_plane.data(), 3, 2, mask); });
    EXPECT_EQ(levels(narrow), (Bytes{11, 12, 14, 15, 5, 6}));
    with_locked(wide, [&](TRV_Picture& mask) { PrivReadMaskPlane(levels_of_plane.data(), 3, 2, mask); });
    EXPECT_EQ(levels(wide), (Bytes{11, 12, 13, 4}));
}

// A host might make a picture of another size than it was asked for.
TEST_F(InterchangeKernels, ColorPlanesMeetPicturesOfOtherSizesInTheirCommonPart) {
    Bytes plane;
    for (std::uint8_t i = 11; i < 17; ++i) plane.insert(plane.end(), 3, i);
    const host::ObjectRef large = numbered(4, 3);
    with_locked(large, [&](TRV_Picture& result) { PrivReadColorPlane(plane.data(), 3, 2, result); });
    EXPECT_EQ(levels(large), (Bytes{11, 12, 13, 4, 14, 15, 16, 8, 9, 10, 11, 12}));

    Bytes written(18, 0);
    with_locked(numbered(2, 1), [&](TRV_Picture& source) { PrivWriteColorPlane(source, written.data(), 3, 2); });
    EXPECT_EQ(written, (Bytes{1, 1, 1, 2, 2, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(InterchangeKernels, HeadersOfAnySizeAreAddedUp) {
    constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
    EXPECT_EQ((PictureStringHeader{2, 3, 32, false}.length()), 11u + 18);
    EXPECT_EQ((PictureStringHeader{2, 3, 32, true}.mask_offset()), 11u + 18);
    EXPECT_EQ((PictureStringHeader{2, 3, 32, true}.length()), 11u + 24);
    for (const std::uint32_t height : {0x10000u, 0x7FFFFFFFu, kMost})
        for (const std::uint32_t width : {0x10000u, kMost})
            EXPECT_GT((PictureStringHeader{width, height, 32, true}.length()), std::uint64_t{1} << 31);
}

TEST_F(InterchangeKernels, MemoryBlocksAreMadeWithoutAPlaceForTheirRowBytes) {
    const host::ObjectRef picture = numbered(2, 2);
    REALmemoryBlockStruct* const made = TRV_MakeMemoryBlock(handle(picture), nullptr, false, nullptr);
    const host::ObjectRef block = host::ObjectRef::adopt(host.objects().find(made));
    ASSERT_TRUE(block);
    EXPECT_EQ(dynamic_cast<host::MemoryBlock&>(*block.get()).bytes.size(), 16u);
    EXPECT_EQ(TRV_MakeMemoryBlock(nullptr, nullptr, false, nullptr), nullptr);
    EXPECT_EQ(gTRV_Error, 2);
}

// The store of a picture that says it is larger than any picture of this host can be.
class Overstated {
public:
    Overstated(const host::ObjectRef& picture, std::int32_t width, std::int32_t height) : picture_(picture) {
        REALpictureDescription description{};
        REALLockPictureDescription(handle(picture_), &description);
        buffer_ = static_cast<REALpixelBuffer*>(description.store);
        truth_ = *buffer_;
        buffer_->width = width;
        buffer_->height = height;
    }
    ~Overstated() {
        *buffer_ = truth_;
        REALUnlockPictureDescription(handle(picture_));
    }
    Overstated(const Overstated&) = delete;
    Overstated& operator=(const Overstated&) = delete;

private:
    host::ObjectRef picture_;
    REALpixelBuffer* buffer_;
    REALpixelBuffer truth_;
};

// Four bytes too many; and so many that 32 bits would count none.
TEST_F(InterchangeKernels, BlocksThatPass32BitsAreNilWithoutACode) {
    const host::ObjectRef picture = host.new_picture({.width = 2, .height = 2, .backing = host::Backing::pixel_buffer});
    for (const std::int32_t height : {1 << 14, 1 << 15}) {
        const Overstated store(picture, 1 << 15, height);
        int row_bytes = -1;
        gTRV_Error = 20;
        EXPECT_EQ(TRV_MakeMemoryBlock(handle(picture), nullptr, false, &row_bytes), nullptr);
        EXPECT_EQ(gTRV_Error, 0);
        EXPECT_EQ(row_bytes, 0);
    }
    EXPECT_EQ(host.faults.calls("newMemoryBlock"), 0);
}

TEST_F(InterchangeKernels, AStringWithoutBytesIsNoPicture) {
    const host::ObjectRef picture = numbered(2, 2);
    const host::ObjectRef string = host::ObjectRef::adopt(host.objects().find(TRV_ConvertToString(handle(picture))));
    auto* const record = static_cast<REALstringStruct*>(string.handle());
    const auto before = host.accounts();
    const char* const bytes = std::exchange(record->storage, nullptr);
    EXPECT_EQ(TRV_ConvertToPicture(record), nullptr);
    EXPECT_EQ(gTRV_Error, 0);
    EXPECT_EQ(host.accounts(), before);
    record->storage = bytes;
}

}  // namespace
}  // namespace tarvo::test
