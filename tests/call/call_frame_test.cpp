// The frame of a call, handed what no declaration lets through.

#include "call_frame.h"

#include <gtest/gtest.h>

#include <string>

#include "caller.h"
#include "host.h"

namespace tarvo::host {
namespace {

TEST(Frame, VariablesHoldPlainValues) {
    Host host;
    for (const Value& value : {Value(Nil{}), Value(host.new_string("a"))}) {
        CallFrame frame;
        Value variable = 7;
        EXPECT_THROW(frame.pass_by_ref(value, variable), CallError);
        frame.write_back();
        EXPECT_EQ(variable, Value(7));
    }
}

}  // namespace
}  // namespace tarvo::host
