#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "host.h"

namespace tarvo::host {
namespace {

namespace fs = std::filesystem;

// How often the libraries loaded into this host had been started by then.
std::vector<int> starts(const Host& host) {
    std::vector<int> all;
    for (const RegisteredMethod& method : host.registry().methods()) {
        all.push_back(std::stoi(method.declaration.substr(std::string("Starts").size())));
    }
    return all;
}

TEST(Library, IsLoadedAndStarted) {
    Host host;
    ASSERT_TRUE(host.load_plugin(SAMPLE_PLUGIN));
    EXPECT_EQ(host.registry().plugin_versions(), std::vector<int>{9});
    const ObjectRef instance = host.new_instance("Sample");
    ASSERT_TRUE(instance);
    const auto count = reinterpret_cast<int (*)()>(host.registry().methods()[0].function);
    EXPECT_EQ(count(), 1);
}

TEST(Library, MayRefuseTheHost) {
    Host host({.version = 1999});
    EXPECT_FALSE(host.load_plugin(SAMPLE_PLUGIN));
    EXPECT_TRUE(host.registry().methods().empty());
}

TEST(Library, ThatRefusesRegistersNothingForOthersEither) {
    EXPECT_THROW(Host::registry_of([](REALresolver) { return 0; }), HostError);
    EXPECT_TRUE(Host::registry_of([](REALresolver) { return 1; }).methods().empty());
}

TEST(Library, IsTheSameForEveryOpeningAndHost) {
    int last = 0;
    {
        Host host;
        ASSERT_TRUE(host.load_plugin(SAMPLE_PLUGIN));
        ASSERT_TRUE(host.load_plugin(SAMPLE_PLUGIN));
        last = starts(host)[1];
        EXPECT_EQ(starts(host)[0], last - 1);
    }
    Host next;
    ASSERT_TRUE(next.load_plugin(SAMPLE_PLUGIN));
    EXPECT_EQ(starts(next), std::vector<int>{last + 1});
}

TEST(Library, PrivateCopiesShareNothing) {
    Host host;
    ASSERT_TRUE(host.load_plugin(SAMPLE_PLUGIN));
    ASSERT_TRUE(host.load_plugin(SAMPLE_PLUGIN));
    ASSERT_TRUE(host.load_plugin(SAMPLE_PLUGIN, true));
    ASSERT_TRUE(host.load_plugin(SAMPLE_PLUGIN, true));
    EXPECT_GT(starts(host)[1], 1);
    EXPECT_EQ(starts(host)[2], 1);
    EXPECT_EQ(starts(host)[3], 1);
}

TEST(Library, ServesHostAfterHost) {
    for (int i = 0; i < 3; ++i) {
        Host host;
        ASSERT_TRUE(host.load_plugin(SAMPLE_PLUGIN, i == 1));
        EXPECT_TRUE(host.new_instance("Sample"));
    }
}

TEST(Library, OutlivesItsInstances) {
    Host host;
    ASSERT_TRUE(host.load_plugin(SAMPLE_PLUGIN, true));
    host.new_instance("Sample").hand_over();  // destroyed with the host, by code in the library
    EXPECT_EQ(host.accounts().instances, 1);
}

TEST(Library, PrivateCopiesLeaveNoFiles) {
    const fs::path folder = fs::path(testing::TempDir()) / ("library-test-" + std::to_string(getpid()));
    fs::create_directory(folder);
    const char* const before = std::getenv("TMPDIR");
    const std::string restored = before ? before : "";
    setenv("TMPDIR", folder.c_str(), 1);
    {
        Host host;
        EXPECT_TRUE(host.load_plugin(SAMPLE_PLUGIN, true));
        EXPECT_TRUE(fs::is_empty(folder));
        EXPECT_THROW(host.load_plugin("no-such-file.so", true), HostError);
        EXPECT_TRUE(fs::is_empty(folder));
    }
    if (before) {
        setenv("TMPDIR", restored.c_str(), 1);
    } else {
        unsetenv("TMPDIR");
    }
    fs::remove_all(folder);
}

std::string load_error(const std::string& path) {
    Host host;
    try {
        host.load_plugin(path);
    } catch (const HostError& error) {
        return error.what();
    }
    return "";
}

TEST(Library, ThatDoesNotLoadIsAnError) {
    EXPECT_NE(load_error("no-such-file.so").find("cannot load no-such-file.so"), std::string::npos);
    EXPECT_NE(load_error(__FILE__).find("cannot load"), std::string::npos) << "or no library at all";
    EXPECT_NE(load_error(PLATFORM_LIBRARY).find("has no REALPluginMain"), std::string::npos);
}

}  // namespace
}  // namespace tarvo::host
