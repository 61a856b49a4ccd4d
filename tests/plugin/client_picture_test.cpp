// TRV_ClientPicture, as programs use it.

#include <gtest/gtest.h>

#include "client_picture_data.h"
#include "judge.h"
#include "session.h"

namespace tarvo::test {
namespace {

TRV_ClientPicture_Data& data(const ObjectRef& client) {
    return *static_cast<TRV_ClientPicture_Data*>(dynamic_cast<host::Instance&>(*client.get()).data());
}

class ClientPicture : public ::testing::Test {
protected:
    int get(const ObjectRef& client, const char* property) {
        return std::get<int>(session.caller.get(client, property));
    }
    // An own-memory client picture with a mask, as an addition makes it: the sum of a picture and black.
    ObjectRef own_memory(const ObjectRef& picture, bool as_picture = false) {
        const Picture& source = pixels(picture);
        const ObjectRef black = session.picture(source.width(), source.height(), source.depth());
        for (int y = 0; y < source.height(); ++y)
            for (int x = 0; x < source.width(); ++x) write_pixel(pixels(black), x, y, 0);
        return object_in(session.call(session.client(picture), "TRV_Add", session.client(black), 0, as_picture));
    }

    Session session;
    Random random{32};
};

TEST_F(ClientPicture, ANewOneIsEmpty) {
    const ObjectRef client = session.host.new_instance("TRV_ClientPicture");
    for (const char* property : {"width", "height", "depth", "rowBytes", "maskDepth", "maskRowBytes"})
        EXPECT_EQ(get(client, property), 0) << property;
    EXPECT_EQ(session.caller.get(client, "hasMask"), Value(false));
    EXPECT_FALSE(object_in(session.caller.get(client, "pic")));
    EXPECT_FALSE(session.picture_of(client));
}

TEST_F(ClientPicture, OwnMemoryIsPaddedByFifteenPixels) {
    struct Expected {
        int width, depth, row_bytes;
    };
    for (const auto& [width, depth, row_bytes] :
         {Expected{1, 16, 32}, {1, 32, 64}, {17, 24, 96}, {1, 24, 48}, {16, 32, 112}, {640, 16, 1296}}) {
        const ObjectRef client = own_memory(session.picture(width, 3, depth));
        EXPECT_EQ(get(client, "rowBytes"), row_bytes) << width << " at " << depth;
        EXPECT_EQ(get(client, "width"), width);
        EXPECT_EQ(get(client, "height"), 3);
        EXPECT_EQ(get(client, "depth"), depth);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data(client).pixels) % 16, 0u);
        EXPECT_FALSE(object_in(session.caller.get(client, "pic")));
    }
}

TEST_F(ClientPicture, HasMaskReadsFalseEvenWithAMask) {
    const ObjectRef client = own_memory(session.picture(5, 3));
    EXPECT_EQ(data(client).hasMask, 1);
    EXPECT_EQ(session.caller.get(client, "hasMask"), Value(false));
    EXPECT_EQ(get(client, "maskDepth"), 8);
    EXPECT_EQ(get(client, "maskRowBytes"), 5);
}

TEST_F(ClientPicture, GettersAnswerForTheirNumbersAlone) {
    const ObjectRef own = own_memory(session.picture(5, 3)), backed = own_memory(session.picture(5, 3), true);
    const auto handle = [](const ObjectRef& client) { return static_cast<REALobjectStruct*>(client.handle()); };
    const auto property = [&](std::string_view name) {
        for (const auto& each : session.host.registry().find_class("TRV_ClientPicture")->properties)
            if (each.name == name) return each;
        throw std::runtime_error("no such property");
    };
    using IntegerGetter = int (*)(REALobjectStruct*, REALword);
    const auto integer = reinterpret_cast<IntegerGetter>(property("width").getter);
    EXPECT_EQ(integer(handle(own), 9), 5);
    for (const REALword parameter : {0, 4, 6, 8, 10, 11, -1}) {
        EXPECT_EQ(integer(handle(own), parameter), 0) << parameter;
        EXPECT_EQ(integer(handle(backed), parameter), 0) << parameter;
    }
    EXPECT_EQ(integer(nullptr, 1), 0);

    // Whether there is a host picture, which gets a reference for the asker.
    using BooleanGetter = bool (*)(REALobjectStruct*, REALword);
    const auto boolean = reinterpret_cast<BooleanGetter>(property("hasMask").getter);
    const auto before = session.host.accounts().references;
    for (const REALword parameter : {0, 1, 5, 6, 7, 9, 11, -1}) {
        EXPECT_FALSE(boolean(handle(own), parameter)) << parameter;
        EXPECT_FALSE(boolean(handle(backed), parameter)) << parameter;
    }
    EXPECT_FALSE(boolean(handle(own), 10));
    EXPECT_FALSE(boolean(nullptr, 10));
    EXPECT_EQ(session.host.accounts().references, before);
    EXPECT_TRUE(boolean(handle(backed), 10));
    EXPECT_EQ(session.host.accounts().references, before + 1);
    ObjectRef::adopt(session.host.objects().find(data(backed).pic));
    EXPECT_EQ(session.host.accounts().references, before);
}

// Nothing that was in memory before may reach a picture.
TEST_F(ClientPicture, NewMemoryIsCleared) {
    const ObjectRef client = own_memory(session.picture(50, 30));
    for (int i = 0; i < 50 * 30; ++i) ASSERT_EQ(data(client).maskPixels[i], 0);
    for (int y = 0; y < 30; ++y)
        for (int x = 200; x < get(client, "rowBytes"); ++x)
            ASSERT_EQ(data(client).pixels[y * get(client, "rowBytes") + x], 0);
}

TEST_F(ClientPicture, BackedByAHostPicture) {
    const ObjectRef client = own_memory(session.picture(5, 3, 24), true);
    EXPECT_EQ(get(client, "width"), 5);
    EXPECT_EQ(get(client, "depth"), 24);
    EXPECT_EQ(get(client, "rowBytes"), 0);
    const ObjectRef pic = object_in(session.caller.get(client, "pic"));
    ASSERT_TRUE(pic);
    EXPECT_EQ(pic, session.picture_of(client));
    EXPECT_EQ(pixels(pic).depth(), 24);
}

TEST_F(ClientPicture, ConvertsFromAPicture) {
    for (const Shape& shape : source_shapes()) {
        Shape masked = shape;
        masked.mask_depth = shape.depth == 24 ? 8 : 0;
        SCOPED_TRACE(masked.name());
        const ObjectRef picture = random_picture(session, random, masked, 9, 4);
        const ObjectRef client = session.client(picture);
        EXPECT_EQ(get(client, "width"), 9);
        EXPECT_EQ(get(client, "height"), 4);
        EXPECT_EQ(get(client, "depth"), shape.depth);
        EXPECT_EQ(get(client, "maskDepth"), masked.mask_depth);
        EXPECT_EQ(data(client).hasMask, masked.mask_depth ? 1 : 0);
        EXPECT_EQ(object_in(session.caller.get(client, "pic")), picture);
        EXPECT_EQ(pixels(picture).locks(), 0);
    }
}

TEST_F(ClientPicture, ConvertsToAPictureWithTheSamePixels) {
    for (const int depth : {16, 24, 32}) {
        const ObjectRef picture = random_picture(session, random, {.depth = depth}, 21, 5);
        const ObjectRef converted = session.picture_of(own_memory(picture));
        ASSERT_TRUE(converted);
        PlainImage expected = read_image(pixels(picture));
        for (std::uint32_t& color : expected.colors) color &= 0xFFFFFF;
        EXPECT_EQ(difference(pixels(converted), expected, depth), "");
    }
}

TEST(ClientPictureMask, IsConvertedByTheRulesForMasks) {
    for (const int mask_depth : {8, 16, 32}) {
        Session deep({.mask_depth = mask_depth}, true);
        const ObjectRef picture = deep.picture(6, 4);
        const ObjectRef client =
            object_in(deep.call(deep.client(picture), "TRV_Add", deep.client(deep.picture(6, 4)), 0, false));
        for (int i = 0; i < 24; ++i) data(client).maskPixels[i] = static_cast<std::uint8_t>(11 * i);
        const ObjectRef converted = deep.picture_of(client);
        ASSERT_TRUE(pixels(converted).mask());
        EXPECT_EQ(pixels(pixels(converted).mask()).depth(), mask_depth);
        const ObjectRef levels = deep.picture(6, 4, 8);
        for (int i = 0; i < 24; ++i) pixels(levels).row(i / 6)[i % 6] = static_cast<std::uint8_t>(11 * i);
        const ObjectRef expected = deep.picture(6, 4, mask_depth);
        plain_copy_mask(pixels(levels), pixels(expected));
        EXPECT_EQ(all_bytes(pixels(converted).mask()), all_bytes(expected));
    }
}

TEST_F(ClientPicture, ConvertsAMaskOnlyWhereTheFlagSaysSo) {
    const ObjectRef client = own_memory(session.picture(5, 3));
    data(client).hasMask = 0;
    EXPECT_FALSE(pixels(session.picture_of(client)).mask());
}

TEST_F(ClientPicture, ConversionClearsTheErrorCode) {
    session.call(session.picture(1, 1), "TRV_Add", session.picture(2, 1), 0);
    EXPECT_EQ(session.last_error(), 20);
    session.picture_of(session.client(session.picture(1, 1)));
    EXPECT_EQ(session.last_error(), 0);
}

TEST_F(ClientPicture, ConvertingAgainReplacesWhatWasHeld) {
    const auto before = session.host.accounts();
    {
        const ObjectRef first = session.picture(4, 4), second = session.picture(7, 2, 16);
        const ObjectRef client = own_memory(first);
        session.call(client, "operator_convert", second);
        EXPECT_EQ(get(client, "width"), 7);
        EXPECT_EQ(get(client, "depth"), 16);
        EXPECT_EQ(get(client, "maskDepth"), 0);
        EXPECT_EQ(get(client, "maskRowBytes"), 0);
        EXPECT_EQ(data(client).buffer, nullptr);
        EXPECT_EQ(data(client).maskPixels, nullptr);
        EXPECT_EQ(data(client).hasMask, 1);      // not reset
        EXPECT_EQ(get(client, "rowBytes"), 64);  // nor this
        session.call(client, "operator_convert", second);
        EXPECT_EQ(get(client, "width"), 7);
        session.call(client, "operator_convert", nullptr);
        EXPECT_EQ(get(client, "width"), 0);
        EXPECT_FALSE(object_in(session.caller.get(client, "pic")));
        session.call(client, "operator_convert", nullptr);
        EXPECT_FALSE(session.picture_of(client));
    }
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(ClientPicture, ConvertingFromItsOwnPictureKeepsIt) {
    const auto before = session.host.accounts();
    {
        const ObjectRef client = own_memory(session.picture(4, 4), true);  // the only holder of its host picture
        void* const pic = object_in(session.caller.get(client, "pic")).handle();
        session.call(client, "operator_convert", object_in(session.caller.get(client, "pic")));
        EXPECT_EQ(object_in(session.caller.get(client, "pic")).handle(), pic);
        EXPECT_EQ(get(client, "width"), 4);
    }
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_TRUE(session.host.complaints().empty());
}

// As the plugin itself would be called with the picture that only the instance holds.
TEST_F(ClientPicture, TheOnlyReferenceIsNotDroppedOnTheWay) {
    const ObjectRef client = own_memory(session.picture(4, 4), true);
    const auto* const cls = session.host.registry().find_class("TRV_ClientPicture");
    const auto convert = reinterpret_cast<void (*)(REALobjectStruct*, REALpictureStruct*)>(cls->methods[0].function);
    convert(static_cast<REALobjectStruct*>(client.handle()), data(client).pic);
    EXPECT_TRUE(object_in(session.caller.get(client, "pic")));
    EXPECT_EQ(get(client, "width"), 4);
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_F(ClientPicture, ResultsThatCannotBeMadeAreNil) {
    const ObjectRef empty = session.host.new_instance("TRV_ClientPicture");
    for (const bool as_picture : {false, true}) {
        const Value result = session.call(empty, "TRV_Add", empty, 0, as_picture);  // 0 x 0
        EXPECT_FALSE(object_in(result));
        EXPECT_EQ(session.last_error(), 6);
    }
}

TEST(ClientPictureFailures, AHostThatRefusesGivesNil) {
    for (const char* service : {"pluginObjectType", "CreateInstance", "newPicture"}) {
        Session session({}, true);  // nothing looked up before
        const ObjectRef client = session.client(session.picture(3, 3));
        session.host.faults.fail_at(service, 1);
        EXPECT_FALSE(object_in(session.call(client, "TRV_Add", client, 0, true))) << service;
        EXPECT_EQ(session.last_error(), 6) << service;
        EXPECT_EQ(session.host.accounts().instances, service == std::string("newPicture") ? 2 : 1);
        EXPECT_TRUE(session.host.complaints().empty());
    }
}

TEST_F(ClientPicture, SizesBeyond31BitsAreRefused) {
    const ObjectRef wide = session.host.new_picture({.width = 32767, .height = 32767, .depth = 1});
    const ObjectRef client = session.client(wide);
    const auto before = session.host.accounts();
    // 16 bits a pixel: 2,148,532,224 bytes.
    const Value result = session.call(client, "TRV_Subtract", client, 0, false);
    EXPECT_FALSE(object_in(result));
    EXPECT_EQ(session.last_error(), 6);
    EXPECT_EQ(session.host.accounts().pictures, before.pictures);
}

TEST_F(ClientPicture, DropsEverythingWithItsLastReference) {
    const auto before = session.host.accounts();
    for (const bool as_picture : {false, true}) own_memory(session.picture(30, 20), as_picture);
    session.picture_of(own_memory(session.picture(30, 20)));
    EXPECT_EQ(session.host.accounts(), before);
}

TEST_F(ClientPicture, AMaskThatCannotBeLockedFailsTheConversion) {
    const ObjectRef client = own_memory(session.picture(5, 3));
    const auto before = session.host.accounts();
    session.host.faults.fail_at("REALGetPictureMask", 1);
    EXPECT_FALSE(session.picture_of(client));
    EXPECT_EQ(session.host.accounts(), before);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_FALSE(session.picture_of(client));
    session.host.faults.fail_at("lockPictureDescription", 1);
    EXPECT_FALSE(session.picture_of(client));
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_TRUE(session.picture_of(client));
}

}  // namespace
}  // namespace tarvo::test
