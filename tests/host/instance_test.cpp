#include <gtest/gtest.h>

#include <cstring>

#include "test_plugin.h"

namespace tarvo::host {
namespace {

// What the class "Thing" does at the beginning and the end of its instances' lives.
struct Life {
    int constructed = 0;
    int destroyed = 0;
    void* last = nullptr;
    void (*at_end)(void* instance) = nullptr;
};
Life life;

void construct(REALobjectStruct* instance) {
    ++life.constructed;
    life.last = instance;
}

void destruct(REALobjectStruct* instance) {
    ++life.destroyed;
    if (life.at_end) life.at_end(instance);
}

class Instances : public testing::Test {
protected:
    Instances() {
        life = {};
        definition_.version = kREALinterfaceVersion;
        definition_.name = "Thing";
        definition_.dataSize = 40;
        definition_.constructor = reinterpret_cast<void*>(&construct);
        definition_.destructor = reinterpret_cast<void*>(&destruct);
        start();
    }

    void start() {
        host_.emplace();
        plugin_.emplace(*host_);
        plugin_->register_class(&definition_);
    }

    // The data as plugins compute its address.
    std::uint8_t* data(void* instance) { return static_cast<std::uint8_t*>(instance) + definition_.dataOffset; }

    REALclassDefinition definition_{};
    std::optional<Host> host_;
    std::optional<TestPlugin> plugin_;
};

TEST_F(Instances, DataIsZeroAtTheOffsetOfTheDefinition) {
    const ObjectRef thing = host_->new_instance("thing");
    ASSERT_TRUE(thing);
    auto& instance = dynamic_cast<Instance&>(*thing.get());
    EXPECT_EQ(instance.data(), data(thing.handle()));
    EXPECT_EQ(instance.cls().name, "Thing");
    for (int i = 0; i < 40; ++i) EXPECT_EQ(data(thing.handle())[i], 0);
    EXPECT_EQ(thing->describe(), "Thing");
}

TEST_F(Instances, TheConstructorRunsWithTheInstance) {
    const ObjectRef thing = host_->new_instance("Thing");
    EXPECT_EQ(life.constructed, 1);
    EXPECT_EQ(life.last, thing.handle());
    EXPECT_EQ(host_->accounts().instances, 1);
}

TEST_F(Instances, AreMadeByNameAndByReference) {
    REALobjectStruct* by_name = plugin_->new_instance("THING");
    REALclassRefStruct* reference = plugin_->class_reference("Thing");
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(plugin_->class_reference("tHING"), reference);
    REALobjectStruct* by_reference = plugin_->new_instance(reference);
    for (REALobjectStruct* instance : {by_name, by_reference}) {
        Object* object = host_->objects().find(instance);
        ASSERT_NE(object, nullptr);
        EXPECT_EQ(object->references(), 1);
        EXPECT_EQ(object->plugin_references(), 1);
        plugin_->unlock(instance);
    }
    EXPECT_EQ(life.destroyed, 2);
    EXPECT_EQ(host_->objects().size(), 0u);
}

TEST_F(Instances, UnknownClassesHaveNone) {
    EXPECT_FALSE(host_->new_instance("Other"));
    EXPECT_EQ(plugin_->new_instance("Other"), nullptr);
    EXPECT_EQ(plugin_->new_instance(static_cast<const char*>(nullptr)), nullptr);
    EXPECT_EQ(plugin_->class_reference("Other"), nullptr);
    EXPECT_EQ(plugin_->class_reference(nullptr), nullptr);
    EXPECT_EQ(plugin_->new_instance(static_cast<REALclassRefStruct*>(nullptr)), nullptr);
    EXPECT_TRUE(host_->complaints().empty());
}

TEST_F(Instances, AWrongClassReferenceIsReported) {
    int nothing = 0;
    EXPECT_EQ(plugin_->new_instance(reinterpret_cast<REALclassRefStruct*>(&nothing)), nullptr);
    EXPECT_NE(last_complaint(*host_).find("CreateInstance"), std::string::npos);
}

TEST_F(Instances, ClassReferencesOutliveTheirHost) {
    REALclassRefStruct* reference = plugin_->class_reference("Thing");
    host_.reset();
    {
        Host without_classes;
        TestPlugin plugin(without_classes);
        EXPECT_EQ(plugin.new_instance(reference), nullptr);
        EXPECT_EQ(without_classes.complaints().size(), 1u);
    }
    start();
    EXPECT_NE(plugin_->new_instance(reference), nullptr);
}

TEST_F(Instances, AreKnownWhileTheirDestructorRuns) {
    static const Host* host;
    static bool known;
    static int references;
    host = &*host_;
    life.at_end = [](void* instance) {
        const Object* object = host->objects().find(instance);
        known = object != nullptr;
        references = object ? object->references() : -1;
    };
    void* handle = host_->new_instance("Thing").handle();
    EXPECT_TRUE(known);
    EXPECT_EQ(references, 0);
    EXPECT_EQ(host_->objects().find(handle), nullptr);
}

TEST_F(Instances, AreNotDestroyedTwiceByTheirDestructor) {
    static TestPlugin* plugin;
    plugin = &*plugin_;
    life.at_end = [](void* instance) {
        plugin->lock(instance);
        plugin->unlock(instance);
    };
    { const ObjectRef thing = host_->new_instance("Thing"); }
    EXPECT_EQ(life.destroyed, 1);
    EXPECT_TRUE(host_->complaints().empty());
    EXPECT_EQ(host_->objects().size(), 0u);
}

TEST_F(Instances, AreGoneThoughTheirDestructorKeptAReference) {
    static TestPlugin* plugin;
    plugin = &*plugin_;
    life.at_end = [](void* instance) { plugin->lock(instance); };
    void* handle = host_->new_instance("Thing").handle();
    EXPECT_EQ(host_->objects().size(), 0u);
    plugin_->unlock(handle);
    EXPECT_EQ(life.destroyed, 1);
    EXPECT_NE(last_complaint(*host_).find("is the handle of a dead instance"), std::string::npos)
        << last_complaint(*host_);
}

TEST_F(Instances, DeadDataIsScrubbed) {
    void* handle = nullptr;
    {
        const ObjectRef thing = host_->new_instance("Thing");
        handle = thing.handle();
        std::memset(data(handle), 0x11, 40);
    }
    for (int i = 0; i < 40; ++i) EXPECT_EQ(data(handle)[i], 0xDD);
}

TEST_F(Instances, LeftAtTheEndOfTheHostAreDestroyedByTheirClass) {
    static TestPlugin* plugin;
    static bool host_there;
    plugin = &*plugin_;
    host_there = false;
    life.at_end = [](void* instance) {
        void* picture = nullptr;
        std::memcpy(&picture, static_cast<std::uint8_t*>(instance) + Instance::kDataOffset, sizeof picture);
        plugin->unlock(picture);
        host_there = Host::current() != nullptr;
        EXPECT_EQ(plugin->build_string("too late"), nullptr);
        EXPECT_EQ(plugin->new_instance("Thing"), nullptr);
    };
    for (int i = 0; i < 3; ++i) {
        void* picture = plugin_->new_picture(2, 2, 32);
        std::memcpy(data(plugin_->new_instance("Thing")), &picture, sizeof picture);
    }
    host_.reset();
    EXPECT_EQ(life.destroyed, 3);
    EXPECT_TRUE(host_there);
}

TEST_F(Instances, MayHoldEachOtherAtTheEndOfTheHost) {
    static TestPlugin* plugin;
    plugin = &*plugin_;
    life.at_end = [](void* instance) {
        void* other = nullptr;
        std::memcpy(&other, static_cast<std::uint8_t*>(instance) + Instance::kDataOffset, sizeof other);
        plugin->unlock(other);
    };
    void* first = plugin_->new_instance("Thing");
    void* second = plugin_->new_instance("Thing");
    std::memcpy(data(first), &second, sizeof second);
    std::memcpy(data(second), &first, sizeof first);
    host_.reset();
    EXPECT_EQ(life.destroyed, 2);
}

}  // namespace
}  // namespace tarvo::host
