#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "caller.h"
#include "fake_plugin.h"

namespace tarvo::host {

// A host with the fake plugin. At its end, every test must have given back what it took and must not have been
// complained of.
class FakeHost : public testing::Test {
protected:
    FakeHost() {
        EXPECT_TRUE(host.start_plugin(fake::plugin_main));
        fake::seen = {};
    }
    void TearDown() override {
        host.on_yield = nullptr;
        EXPECT_EQ(host.accounts(), Accounts{}) << host.describe_live_objects();
        EXPECT_EQ(host.complaints(), std::vector<std::string>{});
    }

    ObjectRef picture() { return host.new_picture({.width = 3, .height = 2}); }
    ObjectRef box(int number) {
        ObjectRef result = host.new_instance("FakeBox");
        caller().set(result, "number", number);
        return result;
    }

    template <class... Values>
    Value call(std::string_view name, Values... values) {
        std::vector<Value> arguments{Value(values)...};
        return caller().call(name, arguments);
    }
    template <class... Values>
    Value call_on(const Value& self, std::string_view name, Values... values) {
        std::vector<Value> arguments{Value(values)...};
        return caller().call_on(self, name, arguments);
    }
    // What the refused call says.
    template <class Call>
    static std::string refusal(Call call) {
        try {
            call();
        } catch (const CallError& error) {
            return error.what();
        }
        return "(not refused)";
    }

    Caller& caller() {
        if (!caller_) caller_.emplace(host);
        return *caller_;
    }

    Host host;

private:
    std::optional<Caller> caller_;
};

inline ObjectRef object_in(const Value& value) {
    const auto* object = std::get_if<ObjectRef>(&value);
    return object ? *object : ObjectRef();
}

}  // namespace tarvo::host
