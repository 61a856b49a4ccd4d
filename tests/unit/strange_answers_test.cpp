// A host whose services work, but for what the test makes them answer about pictures.

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "add_subtract.h"
#include "client_picture.h"
#include "composite.h"
#include "contrast.h"
#include "error_state.h"
#include "host_services.h"
#include "locked_picture.h"
#include "pixelate.h"
#include "plain_image.h"
#include "stretch.h"

namespace tarvo::test {
namespace {

struct Size {
    int width, height;
};

using NewPicture = REALpictureStruct*(long width, long height, long depth);
using LockDescription = int(REALpictureStruct* picture, REALpictureDescription* description);
using UnlockDescription = void(REALpictureStruct* picture);

// The host's own services, and what stands before them.
REALresolver host_services = nullptr;
std::function<NewPicture> on_new_picture;
std::function<void(REALpictureDescription&)> on_description;
std::function<void()> on_unlocked;

template <class Service>
Service* host_service(const char* name) {
    return reinterpret_cast<Service*>(host_services(name));
}

REALpictureStruct* new_picture(long width, long height, long depth) {
    if (on_new_picture) return on_new_picture(width, height, depth);
    return host_service<NewPicture>("newPicture")(width, height, depth);
}

int lock_description(REALpictureStruct* picture, REALpictureDescription* description) {
    const int granted = host_service<LockDescription>("lockPictureDescription")(picture, description);
    if (granted && on_description) on_description(*description);
    return granted;
}

void unlock_description(REALpictureStruct* picture) {
    host_service<UnlockDescription>("unlockPictureDescription")(picture);
    if (on_unlocked) on_unlocked();
}

void* resolve(const char* name) {
    if (std::string_view(name) == "newPicture") return reinterpret_cast<void*>(new_picture);
    if (std::string_view(name) == "lockPictureDescription") return reinterpret_cast<void*>(lock_description);
    if (std::string_view(name) == "unlockPictureDescription") return reinterpret_cast<void*>(unlock_description);
    return host_services(name);
}

// Entry points are kept once they are found, so all tests of this program look them up here.
class StrangeAnswers : public LockedPicture {
protected:
    StrangeAnswers() {
        host_services = gResolverPPC;
        gResolverPPC = resolve;
    }
    ~StrangeAnswers() override {
        EXPECT_TRUE(host.complaints().empty());
        on_new_picture = nullptr;
        on_description = nullptr;
        on_unlocked = nullptr;
    }

    // Every new picture is like this one, whatever it was asked to be.
    void make_all(const PictureOptions& options) {
        on_new_picture = [this, options](long, long, long) {
            return static_cast<REALpictureStruct*>(host.new_picture(options).hand_over());
        };
    }
    ObjectRef plain(PictureOptions options, std::uint32_t color) {
        const ObjectRef made = host.new_picture(options);
        for (int y = 0; y < options.height; ++y)
            for (int x = 0; x < options.width; ++x) write_pixel(of(made), x, y, color);
        return made;
    }
    static void answer_without_store() {
        on_description = [](REALpictureDescription& description) { description.store = nullptr; };
    }
    ObjectRef client_of(const ObjectRef& picture) {
        ObjectRef client = host.new_instance("TRV_ClientPicture");
        TRV_ClientPicture_Data& data = data_of(client);
        data.width = of(picture).width();
        data.height = of(picture).height();
        data.depth = of(picture).depth();
        data.pic = static_cast<REALpictureStruct*>(ObjectRef(picture).hand_over());
        return client;
    }
    static REALobjectStruct* object_handle(const ObjectRef& object) {
        return static_cast<REALobjectStruct*>(object.handle());
    }
    static TRV_ClientPicture_Data& data_of(const ObjectRef& client) {
        return *TRV_ClientPicture_GetData(object_handle(client));
    }
    // Takes over what the plugin made.
    ObjectRef adopted(const void* made) { return ObjectRef::adopt(host.objects().find(made)); }
};

// --- stores ----------------------------------------------------------------------------------------------------------

TEST_F(StrangeAnswers, AWorldThatIsNullDoesNotLock) {
    const ObjectRef picture = make({.width = 4, .height = 2});
    answer_without_store();
    TRV_Picture locked(handle(picture), false);
    EXPECT_FALSE(locked.Lock());
    EXPECT_FALSE(locked.isLocked());
    EXPECT_EQ(PlatformLiveObjects().handleLocks, 0);
}

TEST_F(StrangeAnswers, ABitmapContextThatIsNullDoesNotLock) {
    const ObjectRef picture = make({.width = 4, .height = 2});
    of(picture).set_mask(make({.width = 4, .height = 2, .depth = 8, .backing = Backing::bitmap_context}));
    answer_without_store();
    TRV_Picture mask(handle(picture), true);
    EXPECT_FALSE(mask.Lock());
    on_description = nullptr;
    TRV_Picture there(handle(picture), true);
    EXPECT_TRUE(there.Lock());
}

TEST_F(StrangeAnswers, APixelBufferThatIsNullLocksWithoutPixels) {
    const ObjectRef picture = make({.width = 4, .height = 2, .backing = Backing::pixel_buffer});
    answer_without_store();
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    EXPECT_EQ(locked.width(), 0);
    EXPECT_EQ(locked.height(), 0);
    EXPECT_EQ(locked.depth(), 32);
    EXPECT_EQ(locked.rowBytes(), 0);
    EXPECT_EQ(locked.row_start(0), nullptr);
    EXPECT_EQ(locked.GetPixel(0L, 0L, nullptr), 0u);
}

TEST_F(StrangeAnswers, APixelBufferWithoutRowsReadsZeroAndTakesNoWrites) {
    const ObjectRef picture = make({.width = 4, .height = 2, .backing = Backing::pixel_buffer});
    REALpixelBuffer without_rows = {4, 2, nullptr};
    on_description = [&](REALpictureDescription& description) { description.store = &without_rows; };
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    EXPECT_EQ(locked.width(), 4);
    locked.SetPixel(1L, 1L, 0x123456, nullptr);
    EXPECT_EQ(locked.GetPixel(1L, 1L, nullptr), 0u);
    EXPECT_EQ(locked.words_at(1, 1), nullptr);
}

TEST_F(StrangeAnswers, APixelBufferThatLacksARowIsBlackThere) {
    for (std::size_t missing = 0; missing < 4; ++missing) {
        const ObjectRef picture = plain({.width = 4, .height = 4, .backing = Backing::pixel_buffer}, 0xFFFFFF);
        std::uint8_t* rows[] = {of(picture).row(0), of(picture).row(1), of(picture).row(2), of(picture).row(3)};
        rows[missing] = nullptr;
        REALpixelBuffer buffer = {4, 4, rows};
        on_description = [&](REALpictureDescription& description) {
            if (description.kind == pictureHostPixelBuffer) description.store = &buffer;
        };
        const ObjectRef mosaic = adopted(TRV_Pixelate(handle(picture), nullptr, 4));
        ASSERT_TRUE(mosaic);
        EXPECT_EQ(read_pixel(of(mosaic), 3, 3), 0xBFBFBFu) << missing;  // 12 of 16 are white
    }
}

TEST_F(StrangeAnswers, APixelBufferWithoutColumnsIsStretchedToBlack) {
    const ObjectRef picture = make({.width = 4, .height = 2, .backing = Backing::pixel_buffer});
    REALpixelBuffer without_columns = {0, 2, nullptr};
    on_description = [&](REALpictureDescription& description) {
        if (description.kind == pictureHostPixelBuffer) description.store = &without_columns;
    };
    const ObjectRef stretched = adopted(TRV_Stretch(handle(picture), 5, 3, 0));
    EXPECT_EQ(gTRV_Error, 0);
    ASSERT_TRUE(stretched);
    EXPECT_EQ(difference(of(stretched), PlainImage(5, 3), 32), "");
}

// --- colour tables ---------------------------------------------------------------------------------------------------

TEST_F(StrangeAnswers, IndicesWithoutAColourTableAreBlack) {
    const ObjectRef picture = make({.width = 4, .height = 2, .depth = 8});
    ColorTable without_entries = {};
    ColorTable *table = &without_entries, *no_table = nullptr;
    for (const CTabHandle handle_of_table : {&table, &no_table, CTabHandle()}) {
        PixMap* map = nullptr;
        CTabHandle own = nullptr;
        on_description = [&](REALpictureDescription& description) {
            map = *GetGWorldPixMap(static_cast<GWorldPtr>(description.store));
            own = std::exchange(map->pmTable, handle_of_table);
        };
        {
            TRV_Picture locked(handle(picture), false);
            ASSERT_TRUE(locked.Lock());
            for (long x = 0; x < 4; ++x) EXPECT_EQ(locked.GetPixel(1L, x, nullptr), 0u);
        }
        ASSERT_TRUE(map);
        map->pmTable = own;
    }
}

// --- services that throw ---------------------------------------------------------------------------------------------

TEST_F(StrangeAnswers, WhatIsThrownWhenAPictureIsLetGoOfGoesNoFurther) {
    const ObjectRef picture = make({.width = 4, .height = 2});
    const auto before = host.accounts();
    int thrown = 0;
    on_unlocked = [&] {
        ++thrown;
        throw std::runtime_error("no service today");
    };
    {
        TRV_Picture locked(handle(picture), false);
        ASSERT_TRUE(locked.Lock());
    }
    EXPECT_EQ(thrown, 1);
    EXPECT_EQ(host.accounts(), before);
}

// --- renderings of drawings ------------------------------------------------------------------------------------------

TEST_F(StrangeAnswers, ADrawingNeedsAWorldToBeRenderedIn) {
    const ObjectRef drawing = host.new_picture({.width = 6, .height = 5, .backing = Backing::drawing_commands});
    const auto before = host.accounts();
    for (const Backing backing : {Backing::pixel_buffer, Backing::drawing_commands, Backing::refused}) {
        make_all({.width = 6, .height = 5, .backing = backing});
        {
            TRV_Picture locked(handle(drawing), false);
            EXPECT_FALSE(locked.Lock());
        }
        EXPECT_EQ(host.accounts(), before);
    }
    on_new_picture = nullptr;
    on_description = [](REALpictureDescription& description) {
        if (description.kind == pictureMacintoshGWorld) description.store = nullptr;
    };
    {
        TRV_Picture locked(handle(drawing), false);
        EXPECT_FALSE(locked.Lock());
    }
    EXPECT_EQ(host.accounts(), before);
    EXPECT_EQ(host.faults.calls("drawPicturePrimitive"), 0);
}

// Rectangles of drawings have sides of 16 bits.
TEST_F(StrangeAnswers, ADrawingOfSidesTooLargeToBeDrawnDoesNotLock) {
    const ObjectRef drawing = host.new_picture({.width = 6, .height = 5, .backing = Backing::drawing_commands});
    const auto before = host.accounts();
    for (const Size size : {Size{32768, 5}, Size{6, 32768}}) {
        const int width = size.width, height = size.height;
        on_description = [&, width, height](REALpictureDescription& description) {
            if (description.kind != pictureDrawingCommands) return;
            description.width = width;
            description.height = height;
        };
        {
            TRV_Picture locked(handle(drawing), false);
            EXPECT_FALSE(locked.Lock()) << width << " x " << height;
        }
        EXPECT_EQ(host.accounts(), before);
    }
    EXPECT_EQ(host.faults.calls("drawPicturePrimitive"), 0);
}

// --- new pictures of another size ------------------------------------------------------------------------------------

// Kernels walk all pictures by the sizes that were checked.
TEST_F(StrangeAnswers, ANewPictureOfAnotherSizeDoesNotLock) {
    for (const Size size : {Size{8, 3}, Size{7, 2}, Size{6, 3}, Size{7, 4}}) {
        const int width = size.width, height = size.height;
        make_all({.width = width, .height = height});
        const auto before = host.accounts();
        {
            TRV_Picture made(7, 3, 32, false);
            EXPECT_FALSE(made.Lock()) << width << " x " << height;
            EXPECT_EQ(made.width(), 0);
        }
        EXPECT_EQ(host.accounts(), before);
    }
    make_all({.width = 7, .height = 3, .depth = 16});
    TRV_Picture of_another_depth(7, 3, 32, false);
    ASSERT_TRUE(of_another_depth.Lock());
    EXPECT_EQ(of_another_depth.depth(), 16);
}

TEST_F(StrangeAnswers, AResultOfAnotherSizeIsCode6InThePictureForm) {
    const ObjectRef source = make({.width = 7, .height = 3});
    make_all({.width = 7, .height = 2});
    EXPECT_EQ(TRV_AdjustContrast(handle(source), nullptr, 0, 1.0, 1.0, 1.0, 0), nullptr);
    EXPECT_EQ(gTRV_Error, 6);
    EXPECT_EQ(TRV_Add(handle(source), handle(source), 0), nullptr);
    EXPECT_EQ(gTRV_Error, 6);
}

TEST_F(StrangeAnswers, AResultOfAnotherSizeIsCode6AndStaysUnpaintedInTheClientForm) {
    const ObjectRef source = client_of(make({.width = 7, .height = 3}));
    for (const Size size : {Size{7, 2}, Size{8, 3}}) {
        const int width = size.width, height = size.height;
        SCOPED_TRACE(::testing::Message() << width << " x " << height);
        ObjectRef backing;
        std::vector<std::uint8_t> before;
        on_new_picture = [&, width, height](long, long, long) {
            backing = make({.width = width, .height = height});
            before.assign(of(backing).row(1), of(backing).row(1) + 4 * width);
            return static_cast<REALpictureStruct*>(ObjectRef(backing).hand_over());
        };
        const ObjectRef result =
            adopted(TRV_ClientPicture_AdjustContrast(object_handle(source), nullptr, 0, 0.0, 0.0, 0.0, 0, true));
        EXPECT_EQ(gTRV_Error, 6);
        ASSERT_TRUE(result);
        EXPECT_EQ(data_of(result).pic, handle(backing));
        EXPECT_TRUE(std::equal(before.begin(), before.end(), of(backing).row(1)));
    }
}

// A result's depth decides how it is composed, and its mask's size how far a mask is stretched.
TEST_F(StrangeAnswers, AResultOfAnotherDepthIsComposedWithoutTheOverlaysMask) {
    for (const auto& [depth, result_depth] : {std::pair{32, 16}, std::pair{32, 24}, std::pair{16, 32}}) {
        SCOPED_TRACE(::testing::Message() << depth << " to " << result_depth << " bits");
        const ObjectRef source = plain({.width = 5, .height = 3, .depth = depth}, 0x404040);
        const ObjectRef overlay = plain({.width = 3, .height = 3, .depth = depth}, 0xC0C0C0);
        of(overlay).set_mask(plain({.width = 3, .height = 3}, 0xFFFFFF));  // wholly transparent
        make_all({.width = 5, .height = 3, .depth = result_depth});
        const ObjectRef result = adopted(TRV_Composite(handle(source), handle(overlay), 0.5, 1, 0, 0));
        ASSERT_TRUE(result);
        PlainImage expected(5, 3);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 5; ++x) expected.at(x, y) = x >= 1 && x < 4 ? 0x808080 : 0x404040;
        EXPECT_EQ(difference(of(result), expected, result_depth), "");
    }
}

TEST_F(StrangeAnswers, AResultsMaskOfAnotherSizeIsFilledAllTheSame) {
    const ObjectRef source = make({.width = 4, .height = 3});
    of(source).set_mask(plain({.width = 4, .height = 3}, 0x404040));
    for (const Size size : {Size{9, 6}, Size{8, 5}, Size{3, 2}}) {
        const int width = size.width, height = size.height;
        on_new_picture = [&, width, height](long asked_width, long asked_height, long) {
            const auto side = [](long length) { return static_cast<int>(length); };
            ObjectRef made = make({.width = side(asked_width), .height = side(asked_height)});
            of(made).set_mask(host.new_picture({.width = width, .height = height}));
            return static_cast<REALpictureStruct*>(made.hand_over());
        };
        const ObjectRef result = adopted(TRV_Stretch(handle(source), 8, 6, 0));
        EXPECT_EQ(gTRV_Error, 0);
        ASSERT_TRUE(result);
        const Picture& mask = of(of(result).mask());
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < std::min(width, 8); ++x) EXPECT_EQ(read_pixel(mask, x, y), 0x404040u) << x << ", " << y;
    }
}

// --- client pictures -------------------------------------------------------------------------------------------------

using NewClientPicture = StrangeAnswers;

TEST_F(NewClientPicture, OwnMemoryIsOf16Or24Or32Bits) {
    const auto before = host.accounts();
    for (const long depth : {16L, 24L, 32L}) {
        const ObjectRef made = adopted(TRV_ClientPicture_new(10, 10, depth, false, false));
        ASSERT_TRUE(made) << depth;
        EXPECT_EQ(data_of(made).depth, depth);
        EXPECT_EQ(data_of(made).hasMask, 0);
        EXPECT_EQ(data_of(made).maskPixels, nullptr);
        EXPECT_EQ(data_of(made).pic, nullptr);
    }
    EXPECT_EQ(host.accounts(), before);
    for (const long depth : {8L, 1L, 0L, 12L, -16L, 33L}) {
        EXPECT_EQ(TRV_ClientPicture_new(10, 10, depth, false, false), nullptr) << depth;
        // The one reference that was added and dropped has left the first one, which nobody holds.
        ASSERT_EQ(host.accounts().instances, before.instances + 1);
        for (const host::Object* each : host.objects().all())
            if (each->type() == host::ObjectType::instance) ObjectRef::adopt(const_cast<host::Object*>(each));
    }
    EXPECT_EQ(host.accounts(), before);
}

TEST_F(NewClientPicture, SizesBelowOneGiveNil) {
    for (const auto& [width, height] : {std::pair{0L, 10L}, {10L, 0L}, {-1L, 10L}, {10L, -1L}})
        for (const bool as_picture : {false, true})
            EXPECT_EQ(TRV_ClientPicture_new(width, height, 32, false, as_picture), nullptr);
    EXPECT_EQ(host.accounts().instances, 0);
}

TEST_F(NewClientPicture, TheHostIsAskedForTheDepthAsItIs) {
    for (const long depth : {8L, 1L, 16L, 32L}) {
        std::vector<long> asked;
        on_new_picture = [&](long width, long height, long bits) {
            asked = {width, height, bits};
            return host_service<NewPicture>("newPicture")(width, height, bits);
        };
        const ObjectRef made = adopted(TRV_ClientPicture_new(10, 7, depth, false, true));
        ASSERT_TRUE(made) << depth;
        EXPECT_EQ(asked, (std::vector<long>{10, 7, depth}));
        EXPECT_EQ(data_of(made).width, 10);
        EXPECT_EQ(data_of(made).height, 7);
        EXPECT_EQ(data_of(made).depth, depth);
        EXPECT_EQ(data_of(made).pixels, nullptr);
        EXPECT_EQ(data_of(made).rowBytes, 0);
    }
}

TEST_F(NewClientPicture, TheHostPicturesOwnMaskIsNotedWhenOneIsAskedFor) {
    for (const int mask_depth : {8, 16, 32}) {
        on_new_picture = [&](long width, long height, long) {
            const auto side = [](long length) { return static_cast<int>(length); };
            ObjectRef picture = make({.width = side(width), .height = side(height)});
            of(picture).set_mask(make({.width = side(width), .height = side(height), .depth = mask_depth}));
            return static_cast<REALpictureStruct*>(picture.hand_over());
        };
        const auto before = host.accounts();
        {
            const ObjectRef made = adopted(TRV_ClientPicture_new(10, 7, 32, true, true));
            EXPECT_EQ(data_of(made).hasMask, 1);
            EXPECT_EQ(data_of(made).maskDepth, mask_depth);
            EXPECT_EQ(data_of(made).maskPixels, nullptr);
            EXPECT_EQ(host.accounts().picture_locks, 0);
            const ObjectRef not_asked = adopted(TRV_ClientPicture_new(10, 7, 32, false, true));
            EXPECT_EQ(data_of(not_asked).hasMask, 0);
            EXPECT_EQ(data_of(not_asked).maskDepth, 0);
        }
        EXPECT_EQ(host.accounts(), before);
    }
}

TEST_F(NewClientPicture, AHostPictureWithoutAMaskIsNotGivenOne) {
    const ObjectRef made = adopted(TRV_ClientPicture_new(10, 7, 32, true, true));
    EXPECT_EQ(data_of(made).hasMask, 0);
    EXPECT_EQ(host.accounts().pictures, 1);
}

// While the host makes the picture for the conversion, the program may convert another one to the client picture.
class ClientPictureThatChanges : public StrangeAnswers {
protected:
    using FromPicture = void(REALobjectStruct*, REALpictureStruct*);
    using ToPicture = REALpictureStruct*(REALobjectStruct*);

    template <class Function>
    static Function* member(std::size_t index) {
        const auto* const methods = static_cast<const REALmethodDefinition*>(TRV_ClientPicture_Class.methods);
        return reinterpret_cast<Function*>(methods[index].function);
    }
    // What a client picture of 4 x 2 pixels in own memory converts to when it becomes `picture` meanwhile.
    ObjectRef converted_while_it_becomes(const ObjectRef& picture) {
        const ObjectRef client = adopted(TRV_ClientPicture_new(4, 2, 32, true, false));
        on_new_picture = [&](long width, long height, long depth) {
            member<FromPicture>(0)(object_handle(client), handle(picture));
            return host_service<NewPicture>("newPicture")(width, height, depth);
        };
        return adopted(member<ToPicture>(1)(object_handle(client)));
    }
};

TEST_F(ClientPictureThatChanges, ConvertsToWhatItIsNow) {
    const ObjectRef picture = plain({.width = 3, .height = 2}, 0x123456);
    of(picture).set_mask(make({.width = 3, .height = 2}));
    const ObjectRef result = converted_while_it_becomes(picture);
    ASSERT_TRUE(result);
    EXPECT_EQ(of(result).width(), 4);
    EXPECT_EQ(read_pixel(of(result), 2, 1), 0x123456u);
    EXPECT_FALSE(of(result).mask());
}

TEST_F(ClientPictureThatChanges, ConvertsToNilWhenItsPictureCannotBeLocked) {
    const ObjectRef picture = make({.width = 4, .height = 2});
    of(picture).set_purged(true);
    const auto before = host.accounts();
    EXPECT_FALSE(converted_while_it_becomes(picture));
    EXPECT_EQ(host.accounts(), before);
}

}  // namespace
}  // namespace tarvo::test
