// A host for each call: what hosts share, and what each has of its own.

#include <gtest/gtest.h>

#include <thread>

#include "calls.h"
#include "error_state.h"
#include "plugin_entry.h"

namespace tarvo::test {
namespace {

using host::Host;
using host::PictureValue;

std::vector<Value> contrast_of(const Value& picture) {
    return {picture, Nil{}, Color{0x808080}, 1.5, 1.5, 1.5, std::int32_t{0}};
}

ObjectRef random_photo(Session& session, int width, int height, int mask_depth = 0) {
    Random random(7);
    const ObjectRef made = random_picture(session, random, {}, width, height);
    if (mask_depth) pixels(made).set_mask(random_mask(session, random, mask_depth, width, height));
    return made;
}

PictureValue random_value(int width, int height, int mask_depth = 0) {
    Session session(linked_plugin());
    return PictureValue::of(pixels(random_photo(session, width, height, mask_depth)));
}

TEST(Hosts, AreCurrentWhileTheyAreEntered) {
    ASSERT_EQ(Host::current(), nullptr);
    Host outer(linked_plugin().registry), inner(linked_plugin().registry);
    EXPECT_EQ(Host::current(), nullptr);
    {
        const Host::Entered outside(outer);
        EXPECT_EQ(Host::current(), &outer);
        const ObjectRef picture = outer.new_picture({.width = 2, .height = 2});
        {
            const Host::Entered inside(inner);
            EXPECT_EQ(Host::current(), &inner);
            EXPECT_EQ(PlatformLiveObjects().worlds, 0) << "the inner host's";
        }
        EXPECT_EQ(Host::current(), &outer);
        EXPECT_EQ(PlatformLiveObjects().worlds, 1);
    }
    EXPECT_EQ(Host::current(), nullptr);
}

TEST(Hosts, AreLeftWhenSomethingIsThrown) {
    Host host(linked_plugin().registry);
    try {
        const Host::Entered entered(host);
        throw 1;
    } catch (int) {
    }
    EXPECT_EQ(Host::current(), nullptr);
}

TEST(Hosts, OfAnotherThreadAreNotSeen) {
    Host host(linked_plugin().registry);
    const Host::Entered entered(host);
    std::thread([] { EXPECT_EQ(Host::current(), nullptr); }).join();
    EXPECT_EQ(Host::current(), &host);
}

TEST(Hosts, ThatLoadAreOneInAProcess) {
    Host loading;
    EXPECT_THROW(Host(), host::HostError);
    std::thread([] { EXPECT_THROW(Host(), host::HostError); }).join();
    Host shared(linked_plugin().registry);
    {
        const Host::Entered entered(shared);
        EXPECT_EQ(Host::current(), &shared);
    }
    EXPECT_EQ(Host::current(), &loading);
}

TEST(Hosts, MayEndWithoutBeingEntered) {
    Host host(linked_plugin().registry);
    {
        const Host::Entered entered(host);
        const ObjectRef client = host.new_instance("TRV_ClientPicture");
        ASSERT_TRUE(client);
        ObjectRef(client).hand_over();  // a reference that a plugin never drops
    }
}

TEST(Hosts, ThatShareARegistryRegisterNothing) {
    Host host(linked_plugin().registry);
    const Host::Entered entered(host);
    const std::size_t methods = host.registry().methods().size();
    EXPECT_TRUE(host.start_plugin(REALPluginMain));
    EXPECT_EQ(host.registry().methods().size(), methods);
    EXPECT_EQ(host.complaints().size(),
              1 + methods + host.registry().classes().size() + host.registry().extensions().size());
    EXPECT_EQ(host.complaints().front(), "RegisterPluginVersion: nothing can be registered in this host");
}

TEST(Hosts, ErrorCodesAreAThreadsOwn) {
    Session session(linked_plugin());
    session.call(session.picture(1, 1), "TRV_Add", nullptr, 0);
    const int code = session.last_error();
    ASSERT_NE(code, 0);
    std::thread([] {
        Session other(linked_plugin());
        EXPECT_EQ(other.last_error(), 0);
        other.call(other.picture(1, 1), "TRV_Subtract", nullptr, 0);
        EXPECT_NE(other.last_error(), 0);
    }).join();
    EXPECT_EQ(session.last_error(), code);
}

TEST(Hosts, HandlesOfOthersAreNone) {
    Session outer(linked_plugin());
    const ObjectRef picture = outer.picture(3, 3);
    Session inner(linked_plugin());
    std::vector<Value> arguments = contrast_of(picture);
    const Seen seen = see(inner, inner.callable("TRV_AdjustContrast(extends p"), arguments);
    EXPECT_EQ(seen.code, 4) << "a source that cannot be locked";
    ASSERT_FALSE(inner.host.complaints().empty());
    EXPECT_NE(inner.host.complaints().front().find("is no handle"), std::string::npos);
}

// --- pixels that hosts share ---------------------------------------------------------------------------------------

TEST(SharedPixels, OutliveTheHostThatMadeThem) {
    const PictureValue source = random_value(40, 30, 8);
    PictureValue result;
    {
        Session session(linked_plugin());
        std::vector<Value> arguments = contrast_of(session.host.new_picture(source));
        const Value made = session.caller.call("TRV_AdjustContrast", arguments);
        result = PictureValue::of(*picture_in(made));
    }
    Session session(linked_plugin());
    const ObjectRef before = session.host.new_picture(source), after = session.host.new_picture(result);
    EXPECT_EQ(pixels(after).width(), 40);
    EXPECT_EQ(pixels(after).row(0), result.pixels.bytes.get()) << "no copy";
    EXPECT_TRUE(pixels(before).mask());
    std::vector<Value> arguments = contrast_of(before);
    const Value again = session.caller.call("TRV_AdjustContrast", arguments);
    EXPECT_EQ(all_bytes(object_in(again)), all_bytes(after));
}

TEST(SharedPixels, OfAProgramAreGivenBackOnce) {
    std::vector<std::uint8_t> rows(20 * 4 * 6);
    int given_back = 0;
    {
        const PictureValue value = {{.width = 5, .height = 6, .row_padding = 60},
                                    {{rows.data(), [&](std::uint8_t*) { ++given_back; }}, rows.size() - 60},
                                    nullptr};
        for (int i = 0; i < 3; ++i) {
            Session session(linked_plugin());
            std::vector<Value> arguments = contrast_of(session.host.new_picture(value));
            EXPECT_FALSE(host::is_nil(session.caller.call("TRV_AdjustContrast", arguments)));
        }
        EXPECT_EQ(given_back, 0);
    }
    EXPECT_EQ(given_back, 1);
}

TEST(SharedPixels, MayBeTheResultsToo) {
    const PictureValue source = random_value(9, 7);
    Session session(linked_plugin());
    const ObjectRef picture = session.host.new_picture(source);
    const PictureValue same = PictureValue::of(pixels(picture));
    EXPECT_EQ(same.pixels.bytes, source.pixels.bytes);
    EXPECT_EQ(same.mask, nullptr);
}

TEST(SharedPixels, ThatAreTooFewAreRefused) {
    Session session(linked_plugin());
    const PictureValue good = random_value(5, 4);
    const auto with = [&](int width, int height, int padding, std::size_t bytes) {
        PictureValue changed = good;
        changed.options.width = width;
        changed.options.height = height;
        changed.options.row_padding = padding;
        changed.pixels.size = bytes;
        return changed;
    };
    EXPECT_TRUE(session.host.new_picture(with(5, 4, 0, 80)));
    EXPECT_TRUE(session.host.new_picture(with(3, 4, 8, 72)));
    EXPECT_THROW(session.host.new_picture(with(5, 4, 0, 79)), host::Refusal);
    EXPECT_THROW(session.host.new_picture(with(3, 4, 8, 71)), host::Refusal);
    EXPECT_THROW(session.host.new_picture(with(0, 4, 0, 80)), host::Refusal);
    EXPECT_THROW(session.host.new_picture(with(5, -4, 0, 80)), host::Refusal);
    PictureValue none = good;
    none.pixels = {};
    EXPECT_THROW(session.host.new_picture(none), host::Refusal);
    PictureValue commands = good;
    commands.options.backing = host::Backing::drawing_commands;
    EXPECT_THROW(session.host.new_picture(commands), host::Refusal);
}

TEST(SharedPixels, AreCopiedForAnOperationThatChangesItsPicture) {
    const PictureValue source = random_value(8, 8, 32);
    const PictureValue copy = source.copy();
    Session session(linked_plugin());
    const ObjectRef original = session.host.new_picture(source), changed = session.host.new_picture(copy);
    EXPECT_EQ(all_bytes(original), all_bytes(changed));
    const auto before = all_bytes(original);
    session.call(changed, "TRV_AdjustRGB_InPlace", nullptr, 10, 20, 30);
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(all_bytes(original), before);
    EXPECT_NE(all_bytes(changed), before);
}

TEST(SharedPixels, ChangesOfAPictureAreDeclared) {
    std::vector<std::string> changing;
    for (const host::Callable& method : linked_plugin().callables.all())
        if (method.changes_its_picture()) changing.push_back(method.owner + "." + method.declaration.name);
    EXPECT_EQ(changing, std::vector<std::string>{"picture.TRV_AdjustRGB_InPlace"});
}

}  // namespace
}  // namespace tarvo::test
