#include <gtest/gtest.h>

#include "services.h"
#include "test_plugin.h"

namespace tarvo::host {
namespace {

class FaultTest : public testing::Test {
protected:
    bool picture_made() { return plugin_.new_picture(1, 1, 32) != nullptr; }

    Host host_;
    TestPlugin plugin_{host_};
};

TEST_F(FaultTest, TheNthCallFailsAndNoOther) {
    host_.faults.fail_at("newPicture", 2);
    EXPECT_TRUE(picture_made());
    EXPECT_FALSE(host_.faults.happened());
    EXPECT_FALSE(picture_made());
    EXPECT_TRUE(host_.faults.happened());
    EXPECT_TRUE(picture_made());
    EXPECT_EQ(host_.accounts().pictures, 2) << "a failed call does nothing";
    EXPECT_EQ(host_.faults.calls("newPicture"), 3);
}

TEST_F(FaultTest, CallsCountFromTheOrder) {
    EXPECT_TRUE(picture_made());
    host_.faults.fail_at("newPicture", 1);
    EXPECT_FALSE(picture_made());
}

TEST_F(FaultTest, AllCallsFromTheNthFail) {
    host_.faults.fail_at("newPicture", 2, true);
    EXPECT_TRUE(picture_made());
    EXPECT_FALSE(picture_made());
    EXPECT_FALSE(picture_made());
}

TEST_F(FaultTest, ANewOrderReplacesTheOld) {
    host_.faults.fail_at("newPicture", 1, true);
    EXPECT_FALSE(picture_made());
    host_.faults.fail_at("newPicture", 2);
    EXPECT_FALSE(host_.faults.happened());
    EXPECT_TRUE(picture_made());
    EXPECT_FALSE(picture_made());
    host_.faults.fail_at("newPicture", 1, true);
    host_.faults.fail_at("newPicture", Faults::kNever);
    EXPECT_TRUE(picture_made());
}

TEST_F(FaultTest, OtherServicesAreNotConcerned) {
    host_.faults.fail_at("newPicture", 1, true);
    EXPECT_NE(plugin_.new_memory_block(1), nullptr);
    EXPECT_FALSE(host_.faults.happened());
}

TEST_F(FaultTest, ServicesThatGiveNothingFailToo) {
    const ObjectRef screen = host_.new_screen();
    host_.faults.fail_at("REALLockObject", 1);
    plugin_.lock(screen.handle());
    EXPECT_EQ(screen->references(), 1);
    host_.faults.fail_at("REALYieldToRB", 1);
    plugin_.yield();
    EXPECT_EQ(host_.yields(), 0);
    host_.faults.fail_at("REALGetRBVersion", 1);
    EXPECT_EQ(plugin_.version(), 0.0);
}

TEST_F(FaultTest, ARefusedLockDoesNotCount) {
    const ObjectRef picture = host_.new_picture({.width = 1, .height = 1});
    REALpictureDescription description{};
    host_.faults.fail_at("lockPictureDescription", 1);
    EXPECT_EQ(plugin_.lock_description(picture.handle(), &description), 0);
    EXPECT_EQ(host_.accounts().picture_locks, 0);
}

TEST_F(FaultTest, HiddenServicesAreNotFound) {
    host_.faults.hide("newPicture");
    EXPECT_TRUE(host_.faults.hidden("newPicture"));
    EXPECT_EQ(TestPlugin::resolve("newPicture"), nullptr);
    EXPECT_NE(TestPlugin::resolve("newMemoryBlock"), nullptr);
    host_.faults.clear();
    EXPECT_NE(TestPlugin::resolve("newPicture"), nullptr);
}

TEST_F(FaultTest, ClearingKeepsTheCounts) {
    EXPECT_TRUE(picture_made());
    host_.faults.fail_at("newPicture", 1);
    EXPECT_FALSE(picture_made());
    host_.faults.fail_at("newPicture", 1);
    host_.faults.clear();
    EXPECT_FALSE(host_.faults.happened());
    EXPECT_TRUE(picture_made());
    EXPECT_EQ(host_.faults.calls("newPicture"), 3);
}

TEST_F(FaultTest, NamesOfNoServiceAreMistakes) {
    EXPECT_THROW(host_.faults.fail_at("newpicture", 1), HostError);
    EXPECT_THROW(host_.faults.hide("REALNewPicture"), HostError);
    EXPECT_THROW((void)host_.faults.calls(""), HostError);
}

TEST_F(FaultTest, TheResolverKnowsExactNamesOnly) {
    EXPECT_EQ(TestPlugin::resolve("newpicture"), nullptr);
    EXPECT_EQ(TestPlugin::resolve("ResolverPPC"), nullptr);
    EXPECT_EQ(TestPlugin::resolve(""), nullptr);
    EXPECT_EQ(TestPlugin::resolve(nullptr), nullptr);
    EXPECT_EQ(plugin_callback(nullptr), nullptr);
    EXPECT_EQ(plugin_callback("newPicture"), nullptr);
}

TEST_F(FaultTest, EveryServiceIsThereAndOnce) {
    const char* const names[] = {"REALBuildString",
                                 "StringGetCString",
                                 "REALLockString",
                                 "REALUnlockString",
                                 "REALLockObject",
                                 "REALUnlockObject",
                                 "lockPictureDescription",
                                 "REALLockPictureDescription",
                                 "unlockPictureDescription",
                                 "newPicture",
                                 "REALGetPictureMask",
                                 "drawPicturePrimitive",
                                 "REALBuildPictureFromBuffer",
                                 "newMemoryBlock",
                                 "memoryBlockGetPtr",
                                 "FolderItemFromFSSpec",
                                 "RuntimeUBound",
                                 "RuntimeDirectReadIntArray",
                                 "pluginObjectType",
                                 "CreateInstance",
                                 "PluginNewInstance",
                                 "REALYieldToRB",
                                 "RuntimeMsgBox",
                                 "REALGetRBVersion",
                                 "RegisterPluginVersion",
                                 "PluginRegisterMethod",
                                 "PluginRegisterClass",
                                 "PluginRegisterClassExtension"};
    for (const char* name : names) EXPECT_NE(TestPlugin::resolve(name), nullptr) << name;
    EXPECT_EQ(all_services().size(), std::size(names));
}

}  // namespace
}  // namespace tarvo::host
