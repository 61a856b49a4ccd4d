#include <gtest/gtest.h>

#include <cstring>

#include "test_plugin.h"

namespace tarvo::host {
namespace {

class ServiceTest : public testing::Test {
protected:
    template <class T>
    T* object(void* handle) {
        return host_.objects().find<T>(handle);
    }

    Host host_{{.version = 2007.5}};
    TestPlugin plugin_{host_};
};

TEST_F(ServiceTest, VersionIsTheHosts) { EXPECT_EQ(plugin_.version(), 2007.5); }

TEST_F(ServiceTest, StringsAreBuiltOfBytes) {
    REALstringStruct* string = plugin_.build_string(std::string_view("a\0b", 3));
    ASSERT_NE(string, nullptr);
    EXPECT_EQ(object<StringObject>(string)->bytes(), std::string_view("a\0b", 3));
    EXPECT_EQ(object<StringObject>(string)->plugin_references(), 1);
    EXPECT_EQ(std::string(plugin_.c_string(string)), "a");
}

TEST_F(ServiceTest, StringsOfImpossibleLengthsAreRefused) {
    const auto build = [](const char* text, int length) {
        return TestPlugin::call<REALstringStruct*>("REALBuildString", text, length);
    };
    EXPECT_EQ(build("abc", -1), nullptr);
    EXPECT_EQ(build(nullptr, 3), nullptr);
    const REALstringStruct* empty = build(nullptr, 0);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(REALstringStruct::Length(empty), 0);
    EXPECT_EQ(build("abc", 2)->length, 2);
}

TEST_F(ServiceTest, MemoryBlocksHaveWritableBytes) {
    REALmemoryBlockStruct* block = plugin_.new_memory_block(7);
    ASSERT_NE(block, nullptr);
    std::memset(plugin_.block_bytes(block), 0x5A, 7);
    EXPECT_EQ(object<MemoryBlock>(block)->bytes.size(), 7u);
    EXPECT_EQ(object<MemoryBlock>(block)->bytes[6], 0x5A);
    EXPECT_EQ(plugin_.new_memory_block(-1), nullptr);
    EXPECT_NE(plugin_.new_memory_block(0), nullptr);
    EXPECT_EQ(plugin_.block_bytes(plugin_.build_string("no block")), nullptr);
    EXPECT_EQ(host_.complaints().size(), 1u);
}

TEST_F(ServiceTest, OfPicturesWantTheirArguments) {
    const ObjectRef picture = host_.new_picture({.width = 2, .height = 1});
    plugin_.unlock_description(picture.handle());
    ASSERT_EQ(host_.complaints().size(), 1u);
    EXPECT_TRUE(host_.complaints()[0].find("no lock to end of the picture (2 x 1 pixels") != std::string::npos);
    host_.clear_complaints();
    plugin_.unlock_description(nullptr);
    plugin_.draw(picture.handle(), nullptr);
    EXPECT_EQ(plugin_.lock_description(picture.handle(), nullptr), 0);
    EXPECT_TRUE(host_.complaints().empty());
    EXPECT_EQ(host_.accounts().picture_locks, 0);
}

TEST_F(ServiceTest, ArraysAreReadWithinTheirBounds) {
    const ObjectRef array = host_.new_integer_array({5, -6, 7});
    EXPECT_EQ(plugin_.upper_bound(array.handle()), 2);
    EXPECT_EQ(plugin_.element(array.handle(), 1), -6);
    EXPECT_TRUE(host_.complaints().empty());
    EXPECT_EQ(plugin_.element(array.handle(), 3), 0);
    EXPECT_EQ(plugin_.element(array.handle(), -1), 0);
    EXPECT_EQ(host_.complaints().size(), 2u);
    void* const dead = host_.new_integer_array({1, 2, 3}).handle();
    EXPECT_EQ(plugin_.upper_bound(dead), 0);
    const ObjectRef empty = host_.new_integer_array({});
    EXPECT_EQ(plugin_.upper_bound(empty.handle()), -1);
    EXPECT_EQ(plugin_.upper_bound(nullptr), 0);
}

FSSpec file(std::int16_t volume, std::int32_t directory, std::string_view name) {
    FSSpec spec{volume, directory, {}};
    spec.name[0] = static_cast<std::uint8_t>(name.size());
    std::memcpy(spec.name + 1, name.data(), std::min<std::size_t>(name.size(), 63));
    return spec;
}

TEST_F(ServiceTest, FolderItemsAreInTheRootFolder) {
    const FSSpec home = file(-1, 2, "home");
    REALobjectStruct* item = plugin_.folder_item(&home);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(object<FolderItem>(item)->path, "/home");
    const FSSpec longest = file(-1, 2, std::string(63, 'n'));
    EXPECT_EQ(object<FolderItem>(plugin_.folder_item(&longest))->path, "/" + std::string(63, 'n'));
}

TEST_F(ServiceTest, OtherFoldersAreUnknown) {
    const FSSpec other_volume = file(0, 2, "home");
    const FSSpec other_directory = file(-1, 3, "home");
    FSSpec overlong = file(-1, 2, "home");
    overlong.name[0] = 64;
    EXPECT_EQ(plugin_.folder_item(&other_volume), nullptr);
    EXPECT_EQ(plugin_.folder_item(&other_directory), nullptr);
    EXPECT_EQ(plugin_.folder_item(&overlong), nullptr);
    EXPECT_EQ(plugin_.folder_item(nullptr), nullptr);
}

TEST_F(ServiceTest, MessageBoxesAreRecordedAndShown) {
    std::vector<std::string> shown;
    host_.on_message_box = [&](const std::string& text) { shown.push_back(text); };
    plugin_.message_box(plugin_.build_string("hello"));
    host_.on_message_box = nullptr;
    plugin_.message_box(plugin_.build_string("again"));
    EXPECT_EQ(host_.message_boxes(), (std::vector<std::string>{"hello", "again"}));
    EXPECT_EQ(shown, (std::vector<std::string>{"hello"}));
    host_.clear_message_boxes();
    EXPECT_TRUE(host_.message_boxes().empty());
}

TEST_F(ServiceTest, YieldsAreCountedAndTold) {
    int told = 0;
    host_.on_yield = [&] { ++told; };
    plugin_.yield();
    plugin_.yield();
    EXPECT_EQ(host_.yields(), 2);
    EXPECT_EQ(told, 2);
}

TEST_F(ServiceTest, ACallbackMayTakeItselfAway) {
    std::string told = "told";
    host_.on_yield = [this, told] {
        host_.on_yield = nullptr;
        host_.complain(told);
    };
    plugin_.yield();
    plugin_.yield();
    EXPECT_EQ(last_complaint(host_), "told");
    EXPECT_EQ(host_.complaints().size(), 1u);
}

TEST_F(ServiceTest, WhatACallbackThrowsReachesThePlugin) {
    struct Stop {};
    host_.on_yield = [] { throw Stop(); };
    host_.on_message_box = [](const std::string&) { throw Stop(); };
    host_.on_draw = [] { throw Stop(); };
    const ObjectRef picture = host_.new_picture({.width = 1, .height = 1, .backing = Backing::drawing_commands});
    REALstringStruct* text = plugin_.build_string("boo");
    const Rect where{0, 0, 1, 1};
    EXPECT_THROW(plugin_.yield(), Stop);
    EXPECT_THROW(plugin_.message_box(text), Stop);
    EXPECT_THROW(plugin_.draw(picture.handle(), &where), Stop);
    EXPECT_EQ(host_.yields(), 1);
    EXPECT_EQ(host_.message_boxes().size(), 1u);
    EXPECT_EQ(picture->references(), 1);
}

TEST_F(ServiceTest, WrongHandlesLeaveEveryServiceNeutral) {
    const ObjectRef screen = host_.new_screen();
    void* wrong = screen.handle();
    REALpictureDescription description{.kind = 77, .store = nullptr, .width = 0, .height = 0, .depth = 0};
    const Rect where{0, 0, 1, 1};
    EXPECT_EQ(plugin_.c_string(static_cast<REALstringStruct*>(wrong)), nullptr);
    plugin_.unlock_string(static_cast<REALstringStruct*>(wrong));
    EXPECT_EQ(plugin_.lock_description(wrong, &description), 0);
    EXPECT_EQ(plugin_.lock_description(wrong, &description, 4), 0);
    plugin_.unlock_description(wrong);
    EXPECT_EQ(plugin_.mask(wrong, true), nullptr);
    plugin_.draw(wrong, &where);
    EXPECT_EQ(plugin_.block_bytes(wrong), nullptr);
    EXPECT_EQ(plugin_.upper_bound(wrong), 0);
    EXPECT_EQ(plugin_.element(wrong, 0), 0);
    EXPECT_EQ(plugin_.new_instance(static_cast<REALclassRefStruct*>(wrong)), nullptr);
    plugin_.message_box(static_cast<REALstringStruct*>(wrong));
    EXPECT_EQ(host_.complaints().size(), 12u) << "one for each";
    EXPECT_EQ(description.kind, 77);
    EXPECT_EQ(host_.objects().size(), 1u);
    EXPECT_EQ(screen->references(), 1);
}

}  // namespace
}  // namespace tarvo::host
