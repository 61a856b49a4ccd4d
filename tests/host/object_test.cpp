#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "test_plugin.h"

namespace tarvo::host {
namespace {

class Objects : public testing::Test {
protected:
    Host host_;
    TestPlugin plugin_{host_};
};

bool contains(const std::string& text, std::string_view part) { return text.find(part) != std::string::npos; }

TEST_F(Objects, ReferencesKeepAnObjectAlive) {
    ObjectRef first = host_.new_screen();
    EXPECT_EQ(first->references(), 1);
    {
        const ObjectRef second = first;
        EXPECT_EQ(first->references(), 2);
        EXPECT_EQ(second, first);
    }
    EXPECT_EQ(first->references(), 1);
    const ObjectRef moved = std::move(first);
    EXPECT_EQ(moved->references(), 1);
    EXPECT_EQ(host_.objects().size(), 1u);
    first = moved;
    first = {};
    EXPECT_EQ(moved->references(), 1);
}

TEST_F(Objects, TheLastReferenceDestroys) {
    void* handle = nullptr;
    {
        const ObjectRef screen = host_.new_screen();
        handle = screen.handle();
        EXPECT_EQ(host_.objects().find(handle), screen.get());
    }
    EXPECT_EQ(host_.objects().find(handle), nullptr);
    EXPECT_EQ(host_.objects().size(), 0u);
}

TEST_F(Objects, AReferenceGoesToAPluginAndBack) {
    ObjectRef item = host_.new_folder_item("/a");
    Object* object = item.get();
    void* handle = item.hand_over();
    EXPECT_FALSE(item);
    EXPECT_EQ(handle, object->handle());
    EXPECT_EQ(object->references(), 1);
    EXPECT_EQ(object->plugin_references(), 1);
    {
        const ObjectRef back = ObjectRef::adopt(object);
        EXPECT_EQ(object->references(), 1);
        EXPECT_EQ(object->plugin_references(), 0);
    }
    EXPECT_EQ(host_.objects().size(), 0u);
    EXPECT_EQ(ObjectRef().hand_over(), nullptr);
    EXPECT_FALSE(ObjectRef::adopt(nullptr));
}

TEST_F(Objects, AdoptingWhatNobodyHandsOverIsReportedAndHarmless) {
    const ObjectRef item = host_.new_folder_item("/a");
    {
        const ObjectRef second = ObjectRef::adopt(item.get());
        EXPECT_EQ(item->references(), 2);
    }
    EXPECT_EQ(item->references(), 1);
    EXPECT_TRUE(contains(last_complaint(host_), "folder item (/a) was handed over without a reference"));
}

TEST_F(Objects, PluginsAddAndDropReferences) {
    const ObjectRef picture = host_.new_picture({.width = 2, .height = 2});
    plugin_.lock(picture.handle());
    EXPECT_EQ(picture->references(), 2);
    plugin_.unlock(picture.handle());
    EXPECT_EQ(picture->references(), 1);
    EXPECT_TRUE(host_.complaints().empty());
}

TEST_F(Objects, PluginsCannotDropWhatOthersHold) {
    const ObjectRef picture = host_.new_picture({.width = 2, .height = 2});
    plugin_.unlock(picture.handle());
    EXPECT_EQ(picture->references(), 1);
    EXPECT_TRUE(contains(last_complaint(host_), "REALUnlockObject: no reference to drop of the picture (2 x 2"));
}

TEST_F(Objects, AStaleHandleIsReported) {
    REALstringStruct* string = plugin_.build_string("gone");
    plugin_.unlock_string(string);
    EXPECT_EQ(plugin_.c_string(string), nullptr);
    EXPECT_TRUE(contains(last_complaint(host_), "StringGetCString: 0x"));
    EXPECT_TRUE(contains(last_complaint(host_), "is the handle of a dead string"));
    plugin_.unlock_string(string);
    EXPECT_EQ(host_.complaints().size(), 2u);
}

TEST_F(Objects, ADeadStringReadsAsEmpty) {
    REALstringStruct* record = plugin_.build_string("gone");
    plugin_.unlock_string(record);
    const auto* dead = dynamic_cast<const StringObject*>(host_.objects().find_dead(record));
    ASSERT_NE(dead, nullptr);
    EXPECT_EQ(dead->bytes(), "");
    EXPECT_EQ(dead->describe(), "0 bytes");
    EXPECT_EQ(REALstringStruct::Length(record), 0);
    EXPECT_STREQ(REALstringStruct::CString(record), "");
}

TEST_F(Objects, AnAddressOfNoObjectIsReported) {
    int nothing = 0;
    plugin_.lock(&nothing);
    EXPECT_TRUE(contains(last_complaint(host_), "REALLockObject: 0x"));
    EXPECT_TRUE(contains(last_complaint(host_), "is no handle"));
    plugin_.lock(reinterpret_cast<void*>(std::uintptr_t{1}));  // nothing could be read there
    EXPECT_EQ(host_.complaints().size(), 2u);
    host_.clear_complaints();
    EXPECT_TRUE(host_.complaints().empty());
}

TEST_F(Objects, StringsAndOtherObjectsAreNotMixedUp) {
    const ObjectRef string = host_.new_string("text");
    const ObjectRef screen = host_.new_screen();
    plugin_.lock(string.handle());
    plugin_.lock_string(static_cast<REALstringStruct*>(screen.handle()));
    EXPECT_EQ(string->references(), 1);
    EXPECT_EQ(screen->references(), 1);
    ASSERT_EQ(host_.complaints().size(), 2u);
    EXPECT_TRUE(contains(host_.complaints()[0], "REALLockObject"));
    EXPECT_TRUE(contains(host_.complaints()[0], "is the handle of something else: string (4 bytes)"));
    EXPECT_TRUE(contains(host_.complaints()[1], "is the handle of something else: screen (main screen)"));
}

TEST_F(Objects, NilIsNoReasonToComplain) {
    plugin_.lock(nullptr);
    plugin_.unlock(nullptr);
    plugin_.lock_string(nullptr);
    plugin_.unlock_string(nullptr);
    plugin_.message_box(nullptr);
    EXPECT_EQ(plugin_.c_string(nullptr), nullptr);
    EXPECT_TRUE(host_.complaints().empty());
    EXPECT_TRUE(host_.message_boxes().empty());
}

TEST_F(Objects, AddressesAreNotGivenOutAgainSoon) {
    std::set<void*> handles;
    constexpr int kCount = 1000;
    for (int i = 0; i < kCount; ++i) {
        handles.insert(host_.new_string("x").handle());
        handles.insert(host_.new_screen().handle());
    }
    EXPECT_EQ(handles.size(), 2u * kCount);
}

TEST_F(Objects, DeadObjectsAreForgottenInTheEnd) {
    const void* first = host_.new_screen().handle();
    EXPECT_NE(host_.objects().find_dead(first), nullptr);
    for (int i = 0; i < 5000; ++i) host_.new_string("x");
    EXPECT_EQ(host_.objects().find_dead(first), nullptr);
}

TEST_F(Objects, AStringIsARecordPluginsCanRead) {
    const ObjectRef reference = host_.new_string(std::string_view("a\0b", 3));
    const auto* record = static_cast<const REALstringStruct*>(reference.handle());
    EXPECT_EQ(REALstringStruct::Length(record), 3);
    EXPECT_EQ(std::memcmp(REALstringStruct::CString(record), "a\0b", 4), 0) << "with a NUL behind";
    EXPECT_EQ(record->storage[0], 3);
    EXPECT_EQ(record->references, 1);
    plugin_.lock_string(static_cast<REALstringStruct*>(reference.handle()));
    EXPECT_EQ(record->references, 2);
}

TEST_F(Objects, StringsOfAllSizesKeepTheirBytes) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{255}, std::size_t{256}, std::size_t{3} << 20}) {
        const std::string text(size, 's');
        const ObjectRef reference = host_.new_string(text);
        const auto& string = dynamic_cast<const StringObject&>(*reference.get());
        EXPECT_EQ(string.bytes(), text);
        const auto* record = static_cast<const REALstringStruct*>(reference.handle());
        EXPECT_EQ(static_cast<unsigned char>(record->storage[0]), std::min<std::size_t>(size, 255));
        EXPECT_EQ(record->storage[size + 1], '\0');
    }
}

TEST_F(Objects, AMemoryBlockStartsZeroAndStays) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{10}, std::size_t{2} << 20}) {
        { std::memset(dynamic_cast<MemoryBlock&>(*host_.new_memory_block(size).get()).bytes.data(), 0xAA, size); }
        const ObjectRef reference = host_.new_memory_block(size);
        const auto& block = dynamic_cast<const MemoryBlock&>(*reference.get());
        ASSERT_EQ(block.bytes.size(), size);
        for (const std::uint8_t byte : block.bytes) ASSERT_EQ(byte, 0);
    }
}

TEST_F(Objects, AccountsCountEverything) {
    EXPECT_EQ(host_.accounts(), Accounts{});
    const ObjectRef picture = host_.new_picture({.width = 1, .height = 1});
    const ObjectRef string = host_.new_string("s");
    const ObjectRef block = host_.new_memory_block(1);
    const ObjectRef array = host_.new_integer_array({1});
    const ObjectRef item = host_.new_folder_item("/");
    const ObjectRef screen = host_.new_screen();
    REALpictureDescription description{};
    plugin_.lock_description(picture.handle(), &description);
    plugin_.lock(picture.handle());
    const Accounts expected{.pictures = 1,
                            .instances = 0,
                            .strings = 1,
                            .memory_blocks = 1,
                            .arrays = 1,
                            .folder_items = 1,
                            .picture_locks = 1,
                            .references = 7};
    EXPECT_EQ(host_.accounts(), expected);
}

TEST(HostAccounts, DifferInEachCount) {
    int Accounts::*const counts[] = {&Accounts::pictures,      &Accounts::instances, &Accounts::strings,
                                     &Accounts::memory_blocks, &Accounts::arrays,    &Accounts::folder_items,
                                     &Accounts::picture_locks, &Accounts::references};
    for (const auto count : counts) {
        Accounts other;
        EXPECT_EQ(other, Accounts{});
        other.*count = 1;
        EXPECT_NE(other, Accounts{});
    }
}

TEST(HostObjects, WithoutAnybodyToTellMisuseIsHarmless) {
    ObjectStore store;
    const ObjectRef block = store.add(std::make_unique<MemoryBlock>(3));
    EXPECT_EQ(block->held_bytes(), store.bytes());
    EXPECT_EQ(ObjectRef::adopt(block.get()), block);
    EXPECT_EQ(block->references(), 1);
}

TEST_F(Objects, LiveObjectsAreDescribed) {
    const ObjectRef block = host_.new_memory_block(3), text = host_.new_string("four");
    EXPECT_TRUE(contains(host_.describe_live_objects(), "memory block: 3 bytes; references: 1\n"))
        << host_.describe_live_objects();
    EXPECT_TRUE(contains(host_.describe_live_objects(), "string: "));
}

TEST_F(Objects, LivePicturesAreDescribed) {
    const ObjectRef picture = host_.new_picture({.width = 4, .height = 3, .depth = 16});
    const ObjectRef second = picture;
    const ObjectRef string = host_.new_string("four");
    EXPECT_EQ(host_.describe_live_objects(),
              "picture: 4 x 3 pixels, 16 bits, graphics world; references: 2\n"
              "string: 4 bytes; references: 1\n");
}

// Nothing to expect but that memory checkers find nothing.
TEST(HostEnd, WhateverIsLeftIsDestroyed) {
    Host host;
    TestPlugin plugin(host);
    plugin.build_string("left");
    plugin.new_memory_block(10);
    void* picture = plugin.new_picture(5, 5, 32);
    plugin.mask(picture, true);
    plugin.unlock(picture);
    REALpictureStruct* own_mask = plugin.new_picture(5, 5, 32);
    auto* own = host.objects().find<Picture>(own_mask);
    own->set_mask(ObjectRef::share(own));
    plugin.unlock(own_mask);
    EXPECT_EQ(host.accounts().pictures, 2) << "a mask that the plugin holds, a picture that masks itself";
}

TEST(HostEnd, ThereIsOneHostAtATime) {
    EXPECT_EQ(Host::current(), nullptr);
    {
        Host host;
        EXPECT_EQ(Host::current(), &host);
        EXPECT_THROW(Host second, HostError);
        EXPECT_EQ(Host::current(), &host);
    }
    EXPECT_EQ(Host::current(), nullptr);
    Host next;
    EXPECT_EQ(next.objects().size(), 0u);
}

TEST(HostEnd, ServicesAreNeutralBetweenHosts) {
    void* new_picture = nullptr;
    void* version = nullptr;
    {
        Host host;
        const TestPlugin plugin(host);
        new_picture = TestPlugin::resolve("newPicture");
        version = TestPlugin::resolve("REALGetRBVersion");
    }
    EXPECT_EQ(TestPlugin::resolve("newPicture"), nullptr);
    EXPECT_EQ(reinterpret_cast<REALpictureStruct* (*)(long, long, long)>(new_picture)(1, 1, 32), nullptr);
    EXPECT_EQ(reinterpret_cast<double (*)()>(version)(), 0.0);
}

TEST(HostStart, MasksOfImpossibleDepthsAreRefused) {
    EXPECT_THROW(Host({.mask_depth = 0}), HostError);
    EXPECT_THROW(Host({.mask_depth = 33}), HostError);
    EXPECT_EQ(Host::current(), nullptr);
}

}  // namespace
}  // namespace tarvo::host
