// Why calls fail: the argument that is out of its range, or the sizes that do not go together.

#include "failure_reason.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "declared_plugin.h"
#include "search.h"
#include "session.h"

namespace tarvo::test {
namespace {

using language::failed_argument;
using language::failure_reason;

class FailureReason : public testing::Test {
protected:
    std::string reason(std::string_view declaration, const std::vector<Value>& values, int code) {
        return failure_reason(session.caller, session.callable(declaration), values, code);
    }

    Session session;
};

TEST_F(FailureReason, IsTheArgumentOutOfItsRange) {
    const ObjectRef picture = session.picture(4, 3);
    const std::string_view shear = "TRV_ShearHorizontal(extends p ";
    const host::Callable& method = session.callable(shear);
    const auto with = [&](const std::string& name, int value) {
        std::vector<Value> values;
        for (const host::Parameter& parameter : method.parameters) {
            if (parameter.extends)
                values.push_back(picture);
            else if (parameter.type.kind == host::TypeKind::real)
                values.push_back(0.0);
            else if (parameter.type.kind == host::TypeKind::integer)
                values.push_back(parameter.name == name ? value : 1);
            else
                values.push_back(Nil{});
        }
        return values;
    };
    EXPECT_EQ(reason(shear, with("width", 0), 0), "width is 0 pixels, allowed is 1 and above");
    EXPECT_EQ(reason(shear, with("height", -2), 0), "height is -2 pixels, allowed is 1 and above");
    EXPECT_EQ(failed_argument(session.caller, method, with("height", -2), 0), "height");
    EXPECT_EQ(failed_argument(session.caller, method, with("neither", 0), 0), "");
}

// Several forms tell one another's codes.
TEST_F(FailureReason, IsNoArgumentThatIsNoNumber) {
    for (const host::Callable& method : session.caller.callables()) {
        const describe::Operation* const about = reference::description_of(method);
        if (!about) continue;
        const std::vector<Value> values(method.parameters.size());
        for (const describe::Error& error : about->errors)
            EXPECT_EQ(failed_argument(session.caller, method, values, error.code), "") << method.declaration.text;
    }
}

TEST_F(FailureReason, IsTheSizesThatDoNotGoTogether) {
    const ObjectRef small = session.picture(4, 3), large = session.picture(5, 6);
    const std::string_view add = "TRV_Add(extends p ";
    const auto values = [&](const Value& self, const Value& addend) {
        std::vector<Value> all(session.callable(add).parameters.size());
        all[0] = self;
        all[1] = addend;
        return all;
    };
    EXPECT_EQ(reason(add, values(small, large), 20),
              "the addend has another size than the source; the picture is 4 x 3, addend is 5 x 6");
    EXPECT_EQ(reason(add, values(small, large), 0), "the picture is 4 x 3, addend is 5 x 6") << "no code, no meaning";
    EXPECT_EQ(reason(add, values(small, large), 99), "the picture is 4 x 3, addend is 5 x 6") << "no code of its own";
    EXPECT_EQ(reason(add, values(small, Nil{}), 20), "") << "nothing to compare with";
    EXPECT_EQ(reason(add, values(small, large), 6),
              "the result cannot be made or locked; the picture is 4 x 3, addend is 5 x 6")
        << "what client pictures do is not meant";
    const std::vector<Value> in_range = {small, session.rectangle(1, 2, 3, 4), Color{0}, 1.0, 1.0, 1.0, 0};
    EXPECT_EQ(reason("TRV_AdjustContrast(extends p ", in_range, 40), "the picture is 4 x 3, rect is rect(1, 2, 3, 4)")
        << "all factors are in their ranges";
}

TEST_F(FailureReason, CallsTheObjectOfAMemberThePicture) {
    const ObjectRef picture = session.picture(4, 3);
    for (const host::Callable& method : session.caller.callables()) {
        if (method.owner != "TRV_ClientPicture" || method.extends() || method.parameters.size() != 2) continue;
        const std::vector<Value> values = {session.client(picture), picture};
        EXPECT_EQ(failure_reason(session.caller, method, values, 0),
                  "the picture is 4 x 3, " + method.parameters[1].name + " is 4 x 3");
        return;
    }
    FAIL() << "there is no such member";
}

TEST_F(FailureReason, IsNoMeaningOfSeveral) {
    int several = 0;
    const ObjectRef picture = session.picture(4, 3);
    for (const host::Callable& method : session.caller.callables()) {
        const describe::Operation* const about = reference::description_of(method);
        if (!about || method.parameters.size() < 2) continue;
        std::multiset<int> codes;
        for (const describe::Error& error : about->errors)
            if (!error.when.empty() && error.forms.have([&](std::string_view name) {
                    return std::ranges::any_of(method.parameters, [&](const auto& each) { return each.name == name; });
                }))
                codes.insert(error.code);
        std::vector<Value> values(method.parameters.size());
        values[0] = session.client(picture);
        values[1] = picture;
        for (const int code : std::set<int>(codes.begin(), codes.end())) {
            if (code == 0 || codes.count(code) < 2) continue;
            ++several;
            const std::string text = failure_reason(session.caller, method, values, code);
            EXPECT_EQ(text.find(';'), std::string::npos) << method.declaration.text << ": " << text;
            EXPECT_NE(text.find(" is 4 x 3"), std::string::npos) << method.declaration.text << ": " << text;
        }
    }
    EXPECT_GT(several, 0);
}

TEST(FailureReasonOfOthers, IsTheSizesOfWhatNobodyDescribes) {
    host::Host host;
    start_plugin(host, {.methods = {"Pair(first as picture, second as picture)"}});
    host::Caller caller(host);
    const std::vector<Value> values = {host.new_picture({.width = 2, .height = 1}),
                                       host.new_picture({.width = 3, .height = 1})};
    const host::Callable& method = caller.callables().front();
    EXPECT_EQ(failure_reason(caller, method, values, 20), "first is 2 x 1, second is 3 x 1");
    EXPECT_EQ(failed_argument(caller, method, values, 20), "");
}

}  // namespace
}  // namespace tarvo::test
