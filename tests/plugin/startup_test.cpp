// The plugin meets a host: versions, registration, services that are missing.

#include <gtest/gtest.h>

#include "client_picture_data.h"
#include "session.h"

namespace tarvo::test {
namespace {

constexpr const char* kQualification =
    "This verion of Tarvo Graphics is qualified for REALbasic REALbasic 2005 only. If you are using a previous or future "
    "version of REALbasic, please visit ";

bool accepts(host::Host& host) { return host.load_plugin(plugin_path(), true); }

TEST(Startup, SupportedVersions) {
    for (const double version : {5.5, 2005.0, 2005.99, 2006.0, 2007.1, 2008.5, 2009.0, 2010.0, 2010.4, 2010.999}) {
        host::Host host({.version = version});
        EXPECT_TRUE(accepts(host)) << version;
        EXPECT_TRUE(host.message_boxes().empty());
        EXPECT_FALSE(host.registry().log().empty());
    }
}

TEST(Startup, RefusedVersionsShowTwoBoxesAndRegisterNothing) {
    const std::pair<double, const char*> refused[] = {
        {5.0, "rb_version: 5.000000"},       {5.51, "rb_version: 5.510000"},     {5.6, "rb_version: 5.600000"},
        {2004.9, "rb_version: 2004.900000"}, {2011.0, "rb_version: 2011.000000"}, {0.0, "rb_version: 0.000000"},
        {-2005.0, "rb_version: -2005.000000"},
    };
    for (const auto& [version, text] : refused) {
        host::Host host({.version = version});
        EXPECT_FALSE(accepts(host)) << version;
        ASSERT_EQ(host.message_boxes().size(), 2u);
        EXPECT_EQ(host.message_boxes()[0], text);
        EXPECT_TRUE(host.message_boxes()[1].starts_with(kQualification));
        EXPECT_TRUE(host.registry().log().empty());
        EXPECT_EQ(host.accounts(), host::Accounts{});  // the texts are dropped again
    }
}

TEST(Startup, VersionsThatAreNoNumbers) {
    for (const double version : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                                 -1.7e308, 1.7e308}) {
        host::Host host({.version = version});
        EXPECT_FALSE(accepts(host));
        ASSERT_EQ(host.message_boxes().size(), 2u);
        EXPECT_TRUE(host.message_boxes()[0].starts_with("rb_version: "));
    }
}

TEST(Startup, AHostWithoutAVersionIsRefused) {
    host::Host host;
    host.faults.hide("REALGetRBVersion");
    EXPECT_FALSE(accepts(host));
    EXPECT_EQ(host.message_boxes().at(0), "rb_version: 0.000000");
}

TEST(Startup, DeclaresTheInterfaceVersionFirst) {
    host::Host host;
    ASSERT_TRUE(accepts(host));
    EXPECT_EQ(host.registry().plugin_versions(), std::vector<int>{9});
}

TEST(Startup, ErrorMethodsThenClassesThenPictureMethods) {
    host::Host host;
    ASSERT_TRUE(accepts(host));
    const auto& log = host.registry().log();
    ASSERT_GE(log.size(), 3u);
    EXPECT_EQ(log[0], "method TRV_GetLastError() as integer");
    EXPECT_EQ(log[1], "method TRV_GetErrorMessage(error_code as integer) as String");
    EXPECT_EQ(log[2], "class TRV_Rectangle");
}

TEST(Startup, RecordsOfOldHostsHaveNoFlags) {
    host::Host old_host({.version = 5.5});
    ASSERT_TRUE(accepts(old_host));
    for (const auto& cls : old_host.registry().classes())
        for (const auto& method : cls.methods) EXPECT_FALSE(method.has_flags) << method.declaration;
    const auto* const rectangle = old_host.registry().find_class("TRV_Rectangle");
    ASSERT_TRUE(rectangle);
    ASSERT_EQ(rectangle->methods.size(), 14u);
    EXPECT_EQ(rectangle->methods[13].declaration, "MessageBox()");
    host::Caller caller(old_host);
    const ObjectRef made = old_host.new_instance("TRV_Rectangle");
    std::array<Value, 2> size = {4, 5};
    caller.call_on(made, "Resize", size);
    EXPECT_EQ(caller.call_on(made, "Area", {}), Value(20));
}

TEST(Startup, RecordsOfNewHostsHaveFlags) {
    host::Host host;
    ASSERT_TRUE(accepts(host));
    const auto* const rectangle = host.registry().find_class("TRV_Rectangle");
    ASSERT_TRUE(rectangle);
    EXPECT_EQ(rectangle->version, 9);
    EXPECT_EQ(rectangle->data_size, 16u);
    EXPECT_EQ(rectangle->flags, 4);
    EXPECT_TRUE(rectangle->constructor);
    EXPECT_TRUE(rectangle->destructor);
    for (const auto& method : rectangle->methods) {
        EXPECT_TRUE(method.has_flags);
        EXPECT_EQ(method.flags, 4);
    }
    const auto* const client = host.registry().find_class("TRV_ClientPicture");
    ASSERT_TRUE(client);
    EXPECT_EQ(client->flags, 0);
    EXPECT_EQ(client->data_size, sizeof(TRV_ClientPicture_Data));
    for (const auto& method : client->methods) EXPECT_EQ(method.flags, 0);
}

TEST(Startup, PropertiesAreRegisteredAsTablesHaveThem) {
    host::Host host;
    ASSERT_TRUE(accepts(host));
    struct Expected {
        const char *name, *type;
        int parameter;
    };
    const auto expect = [&](const char* class_name, const char* group, int flags, bool writable,
                            std::vector<Expected> expected) {
        const auto& properties = host.registry().find_class(class_name)->properties;
        ASSERT_EQ(properties.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(properties[i].name, expected[i].name);
            EXPECT_EQ(properties[i].group, group);
            EXPECT_EQ(properties[i].type, expected[i].type);
            EXPECT_EQ(properties[i].parameter, expected[i].parameter);
            EXPECT_EQ(properties[i].flags, flags);
            EXPECT_TRUE(properties[i].getter);
            EXPECT_EQ(properties[i].setter != nullptr, writable);
        }
    };
    expect("TRV_Rectangle", "Rectangle", 4, true,
           {{"left", "integer", 1}, {"top", "integer", 2}, {"width", "integer", 3}, {"height", "integer", 4},
            {"right", "integer", 5}, {"bottom", "integer", 6}});
    expect("TRV_ClientPicture", "ClientPicture", 0, false,
           {{"width", "integer", 1}, {"height", "integer", 2}, {"depth", "integer", 3}, {"rowBytes", "integer", 5},
            {"hasMask", "boolean", 6}, {"maskDepth", "integer", 7}, {"maskRowBytes", "integer", 9},
            {"pic", "picture", 10}});
}

// What is declared for nobody stays so.
TEST(Startup, SomeDeclarationsAreNeverRegistered) {
    host::Host host;
    ASSERT_TRUE(accepts(host));
    for (const std::string& line : host.registry().log()) {
        EXPECT_EQ(line.find("CurrentArchitecture"), std::string::npos);
        EXPECT_EQ(line.find("TRV_CopyPicture"), std::string::npos);
        EXPECT_EQ(line.find("TRV_MakeFolderItem"), std::string::npos);
        EXPECT_NE(line, "extension screen");
    }
}

TEST(Startup, MissingRegistrationServicesAreSilent) {
    for (const char* service : {"PluginRegisterMethod", "PluginRegisterClass", "PluginRegisterClassExtension",
                                "RegisterPluginVersion"}) {
        host::Host host;
        host.faults.hide(service);
        EXPECT_TRUE(accepts(host)) << service;
        EXPECT_TRUE(host.message_boxes().empty());
    }
}

TEST(Startup, AServiceThatAppearsLaterIsFound) {
    host::Host host;
    host.faults.hide("REALBuildString");
    ASSERT_TRUE(accepts(host));
    host::Caller caller(host);
    std::array<Value, 1> code = {2};
    EXPECT_FALSE(object_in(caller.call("TRV_GetErrorMessage", code)));
    host.faults.clear();
    EXPECT_TRUE(object_in(caller.call("TRV_GetErrorMessage", code)));
}

TEST(Startup, CachedEntryPointsStay) {
    host::Host host;
    ASSERT_TRUE(accepts(host));
    host::Caller caller(host);
    std::array<Value, 1> code = {2};
    EXPECT_TRUE(object_in(caller.call("TRV_GetErrorMessage", code)));
    host.faults.hide("REALBuildString");
    EXPECT_TRUE(object_in(caller.call("TRV_GetErrorMessage", code)));
}

}  // namespace
}  // namespace tarvo::test
