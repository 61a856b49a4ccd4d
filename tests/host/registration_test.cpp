#include <gtest/gtest.h>

#include "test_plugin.h"

namespace tarvo::host {
namespace {

void* at(std::uintptr_t address) { return reinterpret_cast<void*>(address); }

class Registration : public testing::Test {
protected:
    Registration() {
        cls_.version = kREALinterfaceVersion;
        cls_.name = "Shape";
        cls_.dataSize = 24;
        cls_.flags = REALconsoleSafe;
    }

    const Registry& start(double version = 2010) {
        host_.emplace(HostOptions{.version = version});
        plugin_.emplace(*host_);
        return host_->registry();
    }

    REALclassDefinition cls_{};
    std::optional<Host> host_;
    std::optional<TestPlugin> plugin_;
};

TEST_F(Registration, EverythingIsLoggedInOrder) {
    const Registry& registry = start();
    REALmethodDefinition first{at(1), nullptr, "First()", 0};
    REALmethodDefinition second{at(2), nullptr, "Second() as integer", 0};
    REALclassDefinition extension{};
    extension.name = "picture";
    plugin_->register_version(9);
    plugin_->register_method(&first);
    plugin_->register_class(&cls_);
    plugin_->register_extension(&extension);
    plugin_->register_method(&second);
    EXPECT_EQ(registry.plugin_versions(), std::vector<int>{9});
    EXPECT_EQ(registry.log(), (std::vector<std::string>{"method First()", "class Shape", "extension picture",
                                                        "method Second() as integer"}));
    ASSERT_EQ(registry.extensions().size(), 1u);
    EXPECT_TRUE(registry.extensions()[0].is_extension);
    EXPECT_EQ(registry.find_class("picture"), nullptr) << "an extension makes no class";
}

TEST_F(Registration, MissingTextsAreEmpty) {
    const Registry& registry = start();
    REALpropertyDefinition property{nullptr, nullptr, nullptr, 0, at(1), nullptr, 0, nullptr, 0, nullptr};
    cls_.properties = &property;
    cls_.propertyCount = 1;
    plugin_->register_class(&cls_);
    ASSERT_NE(registry.find_class("Shape"), nullptr);
    ASSERT_EQ(registry.find_class("Shape")->properties.size(), 1u);
    EXPECT_EQ(registry.find_class("Shape")->properties[0].name, "");
    EXPECT_EQ(registry.find_class("Shape")->properties[0].group, "");
}

TEST_F(Registration, CountsThatNoPluginMeansAreRefused) {
    const Registry& registry = start();
    for (const int count : {-1, (1 << 16) + 1}) {
        for (REALword REALclassDefinition::*const each :
             {&REALclassDefinition::dataSize, &REALclassDefinition::propertyCount, &REALclassDefinition::methodCount}) {
            REALclassDefinition definition = cls_;
            definition.*each = count;
            plugin_->register_class(&definition);
            EXPECT_EQ(registry.find_class("Shape"), nullptr);
        }
    }
    host_->clear_complaints();
}

TEST_F(Registration, MethodsKeepTheirRecords) {
    const Registry& registry = start();
    REALmethodDefinition method{at(1), at(2), "Value(i as integer) as double", REALconsoleSafe};
    plugin_->register_method(&method);
    ASSERT_EQ(registry.methods().size(), 1u);
    const RegisteredMethod& read = registry.methods()[0];
    EXPECT_EQ(read.function, at(1));
    EXPECT_EQ(read.setter, at(2));
    EXPECT_EQ(read.declaration, "Value(i as integer) as double");
    EXPECT_TRUE(read.has_flags);
    EXPECT_EQ(read.flags, REALconsoleSafe);
}

TEST_F(Registration, ClassesAreReadWhole) {
    const Registry& registry = start();
    const REALpropertyDefinition properties[] = {
        {"Shape", "left", "integer", REALconsoleSafe, at(3), at(4), 1, nullptr, 0, nullptr},
        {"Shape", "area", "double", 0, at(5), nullptr, 7, nullptr, 0, nullptr}};
    const REALmethodDefinition methods[] = {{at(6), nullptr, "Grow()", 0},
                                            {at(7), at(8), "Edge(i as integer) as integer", REALconsoleSafe}};
    cls_.constructor = at(1);
    cls_.destructor = at(2);
    cls_.properties = properties;
    cls_.propertyCount = 2;
    cls_.methods = methods;
    cls_.methodCount = 2;
    plugin_->register_class(&cls_);

    const RegisteredClass* read = registry.find_class("SHAPE");
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->name, "Shape");
    EXPECT_FALSE(read->is_extension);
    EXPECT_EQ(read->version, 9);
    EXPECT_EQ(read->data_size, 24u);
    EXPECT_EQ(read->constructor, at(1));
    EXPECT_EQ(read->destructor, at(2));
    EXPECT_EQ(read->flags, REALconsoleSafe);
    ASSERT_EQ(read->properties.size(), 2u);
    EXPECT_EQ(read->properties[0].group, "Shape");
    EXPECT_EQ(read->properties[0].name, "left");
    EXPECT_EQ(read->properties[0].type, "integer");
    EXPECT_EQ(read->properties[0].getter, at(3));
    EXPECT_EQ(read->properties[0].setter, at(4));
    EXPECT_EQ(read->properties[0].flags, REALconsoleSafe);
    EXPECT_EQ(read->properties[1].parameter, 7);
    EXPECT_EQ(read->properties[1].setter, nullptr);
    ASSERT_EQ(read->methods.size(), 2u);
    EXPECT_EQ(read->methods[1].declaration, "Edge(i as integer) as integer");
    EXPECT_EQ(read->methods[1].setter, at(8));
    EXPECT_TRUE(read->methods[1].has_flags);
    EXPECT_EQ(read->methods[1].flags, REALconsoleSafe);
}

TEST_F(Registration, TheHostWritesTheDataOffset) {
    start();
    plugin_->register_class(&cls_);
    EXPECT_EQ(cls_.dataOffset, static_cast<REALword>(Instance::kDataOffset));
}

TEST_F(Registration, OldHostsReadRecordsWithoutFlags) {
    const REALmethodDefinitionV6 methods[] = {{at(6), nullptr, "Grow()"}, {at(7), at(8), "Shrink()"}};
    cls_.methods = methods;
    cls_.methodCount = 2;
    for (const double version : {5.5, 5.89}) {
        const Registry& registry = start(version);
        REALmethodDefinition global{at(9), nullptr, "Global()", REALconsoleSafe};
        REALclassDefinition extension = cls_;
        plugin_->register_method(&global);
        plugin_->register_class(&cls_);
        plugin_->register_extension(&extension);
        EXPECT_FALSE(registry.methods()[0].has_flags);
        EXPECT_EQ(registry.methods()[0].flags, 0);
        for (const RegisteredClass& read : {registry.classes()[0], registry.extensions()[0]}) {
            ASSERT_EQ(read.methods.size(), 2u);
            EXPECT_EQ(read.methods[1].declaration, "Shrink()");
            EXPECT_EQ(read.methods[1].setter, at(8));
            EXPECT_FALSE(read.methods[1].has_flags);
        }
        host_.reset();
    }
}

TEST_F(Registration, FlagsCameWithVersionFivePointNine) {
    const REALmethodDefinition methods[] = {{at(6), nullptr, "Grow()", 0}, {at(7), nullptr, "Shrink()", 4}};
    cls_.methods = methods;
    cls_.methodCount = 2;
    const Registry& registry = start(5.9);
    plugin_->register_class(&cls_);
    EXPECT_EQ(registry.classes()[0].methods[1].flags, 4);
}

TEST_F(Registration, WrongRecordsAreRefused) {
    const Registry& registry = start();
    const auto refused_class = [&](auto change) {
        REALclassDefinition wrong = cls_;
        change(wrong);
        host_->clear_complaints();
        plugin_->register_class(&wrong);
        plugin_->register_extension(&wrong);
        return host_->complaints().size() == 2;
    };
    EXPECT_TRUE(refused_class([](REALclassDefinition& it) { it.name = nullptr; }));
    EXPECT_TRUE(refused_class([](REALclassDefinition& it) { it.dataSize = -1; }));
    EXPECT_TRUE(refused_class([](REALclassDefinition& it) { it.methodCount = 1; }));
    EXPECT_TRUE(refused_class([](REALclassDefinition& it) { it.propertyCount = -1; }));
    REALmethodDefinition no_function{nullptr, nullptr, "Nothing()", 0};
    REALmethodDefinition no_declaration{at(1), nullptr, nullptr, 0};
    host_->clear_complaints();
    plugin_->register_method(&no_function);
    plugin_->register_method(&no_declaration);
    plugin_->register_method(nullptr);
    plugin_->register_class(nullptr);
    plugin_->register_extension(nullptr);
    EXPECT_EQ(host_->complaints().size(), 5u);
    EXPECT_TRUE(registry.log().empty());
}

TEST_F(Registration, AClassIsRegisteredOnce) {
    const Registry& registry = start();
    plugin_->register_class(&cls_);
    cls_.name = "SHAPE";
    plugin_->register_class(&cls_);
    EXPECT_EQ(registry.classes().size(), 1u);
    EXPECT_NE(last_complaint(*host_).find("PluginRegisterClass"), std::string::npos);
}

TEST_F(Registration, AFailedRegistrationDoesNothing) {
    const Registry& registry = start();
    host_->faults.fail_at("PluginRegisterClass", 1);
    plugin_->register_class(&cls_);
    EXPECT_TRUE(registry.classes().empty());
    EXPECT_EQ(cls_.dataOffset, 0);
}

}  // namespace
}  // namespace tarvo::host
