// The plugin meets a host: versions, registration, services that are missing.

#include <gtest/gtest.h>

#include "session.h"

namespace tarvo::test {
namespace {

constexpr const char* kQualification =
    "This verion of Tarvo Graphics is qualified for REALbasic REALbasic 2005 only. If you are using a previous or "
    "future "
    "version of REALbasic, please visit https://www.tarvo-graphics.example/ for information on other versions.";

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
        {5.0, "rb_version: 5.000000"},         {5.51, "rb_version: 5.510000"},      {5.6, "rb_version: 5.600000"},
        {2004.9, "rb_version: 2004.900000"},   {2011.0, "rb_version: 2011.000000"}, {0.0, "rb_version: 0.000000"},
        {-2005.0, "rb_version: -2005.000000"},
    };
    for (const auto& [version, text] : refused) {
        host::Host host({.version = version});
        EXPECT_FALSE(accepts(host)) << version;
        ASSERT_EQ(host.message_boxes().size(), 2u);
        EXPECT_EQ(host.message_boxes()[0], text);
        EXPECT_EQ(host.message_boxes()[1], kQualification);
        EXPECT_TRUE(host.registry().log().empty());
        EXPECT_EQ(host.accounts(), host::Accounts{});  // the texts are dropped again
    }
}

TEST(Startup, VersionsThatAreNoNumbers) {
    for (const double version :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), -1.7e308, 1.7e308}) {
        host::Host host({.version = version});
        EXPECT_FALSE(accepts(host));
        ASSERT_EQ(host.message_boxes().size(), 2u);
        EXPECT_TRUE(host.message_boxes()[0].starts_with("rb_version: "));
        EXPECT_EQ(host.message_boxes()[1], kQualification);
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

// The short method records of such a host are the plugin's own work, and must lead to the same functions.
TEST(Startup, MembersWorkOnOldHosts) {
    host::Host old_host({.version = 5.5});
    ASSERT_TRUE(accepts(old_host));
    host::Caller caller(old_host);
    const ObjectRef made = old_host.new_instance("TRV_Rectangle");
    std::array<Value, 2> size = {4, 5};
    caller.call_on(made, "Resize", size);
    EXPECT_EQ(caller.call_on(made, "Area", {}), Value(20));
}

TEST(Startup, OneOldHostAfterAnother) {
    for (int i = 0; i < 3; ++i) {
        host::Host old_host({.version = 5.5});
        ASSERT_TRUE(old_host.load_plugin(plugin_path()));
        EXPECT_EQ(old_host.registry().find_class("TRV_Rectangle")->methods.at(13).declaration, "MessageBox()");
    }
}

TEST(Startup, AnOldHostWithoutRegistrationRegistersNothing) {
    host::Host old_host({.version = 5.5});
    old_host.faults.hide("PluginRegisterClass");
    ASSERT_TRUE(accepts(old_host));
    EXPECT_TRUE(old_host.registry().classes().empty());
    EXPECT_EQ(old_host.registry().extensions().size(), 1u);
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
    for (const char* service :
         {"PluginRegisterMethod", "PluginRegisterClass", "PluginRegisterClassExtension", "RegisterPluginVersion"}) {
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
