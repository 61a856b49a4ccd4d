// Add and subtract, through the built library.

#include <gtest/gtest.h>

#include "pictures.h"
#include "plain_image.h"
#include "session.h"

namespace tarvo::test {
namespace {

struct Operation {
    const char* name;
    int sign;
    int nil_code, lock_code, size_code;
};

constexpr Operation kOperations[] = {{"TRV_Add", 1, 18, 19, 20}, {"TRV_Subtract", -1, 21, 22, 23}};

PlainImage judge(const Operation& operation, const PlainImage& a, const PlainImage& b) {
    PlainImage result(a.width, a.height);
    for (std::size_t i = 0; i < result.colors.size(); ++i)
        result.colors[i] = each_channel([&](int shift) {
            return (channel(a.colors[i], shift) + operation.sign * channel(b.colors[i], shift) + 256) % 256;
        });
    return result;
}

class AddSubtract : public ::testing::TestWithParam<Operation> {
protected:
    Session session;
    Random random{20051};
};

INSTANTIATE_TEST_SUITE_P(Both, AddSubtract, ::testing::ValuesIn(kOperations),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(AddSubtract, EveryPairOfKindsAgreesWithTheJudge) {
    for (const Shape& first : source_shapes()) {
        for (const Shape& second : source_shapes()) {
            SCOPED_TRACE(first.name() + " and " + second.name());
            const int width = any_of(random, 1, 40), height = any_of(random, 1, 5);
            const ObjectRef a = random_picture(session, random, first, width, height);
            const ObjectRef b = random_picture(session, random, second, width, height);
            const auto before_a = all_bytes(a), before_b = all_bytes(b);
            const Value result = session.call(a, GetParam().name, b, 0);
            ASSERT_TRUE(picture_in(result)) << session.last_error();
            EXPECT_EQ(session.last_error(), 0);
            EXPECT_EQ(difference(*picture_in(result), judge(GetParam(), read_image(pixels(a)), read_image(pixels(b))),
                                 std::max(first.depth, 16)),
                      "");
            EXPECT_FALSE(picture_in(result)->mask());
            EXPECT_EQ(all_bytes(a), before_a);
            EXPECT_EQ(all_bytes(b), before_b);
        }
    }
    EXPECT_TRUE(session.host.complaints().empty());
}

TEST_P(AddSubtract, WideRowsAgreeWithTheJudge) {
    for (const int width : {511, 512, 513, 1500}) {
        const ObjectRef a = random_picture(session, random, {}, width, 3);
        const ObjectRef b = random_picture(session, random, {}, width, 3);
        const Value result = session.call(a, GetParam().name, b, 0);
        ASSERT_TRUE(picture_in(result));
        EXPECT_EQ(difference(*picture_in(result), judge(GetParam(), read_image(pixels(a)), read_image(pixels(b))), 32),
                  "")
            << width;
    }
}

TEST_P(AddSubtract, ClientFormsGiveWhatThePictureFormGives) {
    for (const bool as_picture : {false, true}) {
        for (const Shape& shape : source_shapes()) {
            if (shape.backing == host::Backing::drawing_commands) continue;
            SCOPED_TRACE(shape.name());
            const ObjectRef a = random_picture(session, random, shape, 19, 4);
            const ObjectRef b = random_picture(session, random, {.depth = 24}, 19, 4);
            const auto before = session.host.accounts();
            {
                const Value result = session.call(session.client(a), GetParam().name, session.client(b), 0, as_picture);
                ASSERT_TRUE(object_in(result));
                EXPECT_EQ(static_cast<bool>(object_in(session.caller.get(result, "pic"))), as_picture);
                const ObjectRef converted = session.picture_of(object_in(result));
                EXPECT_EQ(difference(pixels(converted), judge(GetParam(), read_image(pixels(a)), read_image(pixels(b))),
                                     std::max(shape.depth, 16)),
                          "");
                const int mask_depth = std::get<int>(session.caller.get(result, "maskDepth"));
                EXPECT_EQ(mask_depth,
                          GetParam().sign > 0 && !as_picture ? 8 : 0);  // a sum has a mask, a difference none
            }
            EXPECT_EQ(session.host.accounts(), before);
        }
    }
}

TEST_P(AddSubtract, ClientFormsOfOwnMemoryChain) {
    const ObjectRef a = random_picture(session, random, {.depth = 24}, 40, 3);
    const ObjectRef b = random_picture(session, random, {.depth = 16}, 40, 3);
    const Value first = session.call(session.client(a), GetParam().name, session.client(b), 0, false);
    const Value second = session.call(object_in(first), GetParam().name, object_in(first), 0, false);
    const PlainImage once = judge(GetParam(), read_image(pixels(a)), read_image(pixels(b)));
    EXPECT_EQ(difference(pixels(session.picture_of(object_in(second))), judge(GetParam(), once, once), 24), "");
}

TEST_P(AddSubtract, ChecksComeInOrder) {
    const ObjectRef other = session.picture(10, 10);
    for (const bool on_clients : {false, true}) {
        SCOPED_TRACE(on_clients ? "client pictures" : "pictures");
        const auto made = [&](int width, int height, bool purged = false) {
            const ObjectRef picture = session.picture(width, height);
            const ObjectRef subject = on_clients ? session.client(picture) : picture;
            pixels(picture).set_purged(purged);
            return subject;
        };
        const auto code = [&](const ObjectRef& p, const ObjectRef& q) {
            const std::string name = GetParam().name;
            const Value result = on_clients ? session.invoke(name + "(extends cp", p, q, 0, false)
                                            : session.invoke(name + "(extends p", p, q, 0);
            EXPECT_FALSE(object_in(result));
            return session.last_error();
        };
        const ObjectRef source = made(10, 10), higher = made(10, 11), wider = made(11, 10);
        const ObjectRef unlockable = made(5, 5, true);
        EXPECT_EQ(code({}, {}), 2);
        EXPECT_EQ(code(unlockable, {}), GetParam().nil_code);
        EXPECT_EQ(code(unlockable, unlockable), 4);
        EXPECT_EQ(code(source, unlockable), GetParam().lock_code);
        EXPECT_EQ(code(source, higher), GetParam().size_code);
        EXPECT_EQ(code(source, wider), GetParam().size_code);
        session.host.faults.fail_at(on_clients ? "CreateInstance" : "newPicture", 1);
        EXPECT_EQ(code(source, wider), GetParam().size_code);
        EXPECT_EQ(code(source, made(10, 10)), 6);
        session.host.faults.clear();
    }
    EXPECT_TRUE(picture_in(session.call(other, GetParam().name, other, 0)));
    EXPECT_EQ(session.last_error(), 0);
}

TEST_P(AddSubtract, ClientPicturesThatHoldNothingHaveNoSum) {
    const auto empty = [&] { return session.host.new_instance("TRV_ClientPicture"); };
    const std::string client_form = std::string(GetParam().name) + "(extends cp";
    EXPECT_FALSE(object_in(session.invoke(client_form, empty(), empty(), 0, false)));
    EXPECT_EQ(session.last_error(), 6);
}

TEST_P(AddSubtract, AClientResultThatCannotBeLockedIsReturnedUnpainted) {
    const ObjectRef source = session.client(session.picture(3, 3));
    session.host.faults.fail_at("lockPictureDescription", 3);  // behind the two sources'
    const Value result = session.call(source, GetParam().name, source, 0, true);
    EXPECT_TRUE(object_in(result));
    EXPECT_EQ(session.last_error(), 6);
}

// The picture form promised the new host picture to its caller before it knew that there would be none.
TEST_P(AddSubtract, AHostPictureThatCannotBeLockedIsNotDropped) {
    const ObjectRef source = session.picture(3, 3);
    const auto before = session.host.accounts();
    session.host.faults.fail_at("lockPictureDescription", 3);
    EXPECT_FALSE(picture_in(session.call(source, GetParam().name, source, 0)));
    EXPECT_EQ(session.last_error(), 6);
    EXPECT_EQ(session.host.accounts().pictures, before.pictures + 1);
    EXPECT_EQ(session.host.accounts().picture_locks, 0);
}

TEST_P(AddSubtract, YieldsBetweenRowsByTheBudget) {
    const ObjectRef source = session.picture(30, 13);
    const auto yields = [&](int budget) {
        const int before = session.host.yields();
        session.call(source, GetParam().name, source, budget);
        return session.host.yields() - before;
    };
    EXPECT_EQ(yields(100), 3);  // before rows 4, 8 and 12
    EXPECT_EQ(yields(30), 12);
    EXPECT_EQ(yields(1), 12);
    EXPECT_EQ(yields(31), 6);
    EXPECT_EQ(yields(2147483647), 0);
    EXPECT_EQ(yields(0), 0);
    EXPECT_EQ(yields(-1), 0);
}

TEST_P(AddSubtract, ArgumentsAreHeldWhileTheHostHasControl) {
    ObjectRef source = session.picture(30, 13), other = session.picture(30, 13);
    session.host.on_yield = [&] {
        source = other = {};  // the program lets go of both
        Value inner = session.call(session.picture(2, 2), GetParam().name, session.picture(2, 3), 0);
    };
    const Value result = session.call(source, GetParam().name, other, 1);
    EXPECT_TRUE(picture_in(result));
    EXPECT_TRUE(session.host.complaints().empty());
}

// Nothing that a host service throws passes through the plugin, and nothing is left of the call.
TEST_P(AddSubtract, WhatTheHostThrowsEndsTheCallWithNil) {
    const ObjectRef source = session.picture(30, 13), client = session.client(source);
    session.host.on_yield = [] { throw std::runtime_error("stop"); };
    const auto before = session.host.accounts();
    EXPECT_FALSE(object_in(session.call(source, GetParam().name, source, 1)));
    for (const bool as_picture : {false, true})
        EXPECT_FALSE(object_in(session.call(client, GetParam().name, client, 1, as_picture)));
    EXPECT_EQ(session.host.accounts(), before);
    EXPECT_TRUE(session.host.complaints().empty());
}

// The program empties the client pictures while it has control: the operation still has what it began with.
TEST_P(AddSubtract, ClientPicturesCanBeEmptiedWhileTheHostHasControl) {
    for (const bool as_picture : {false, true}) {
        const ObjectRef a = random_picture(session, random, {.depth = 24}, 30, 13);
        const ObjectRef b = random_picture(session, random, {.depth = 24}, 30, 13);
        const PlainImage once = judge(GetParam(), read_image(pixels(a)), read_image(pixels(b)));
        const auto before = session.host.accounts();
        {
            // Made by an operation, each is the only holder of its memory or host picture.
            const ObjectRef first =
                object_in(session.call(session.client(a), GetParam().name, session.client(b), 0, as_picture));
            const ObjectRef second =
                object_in(session.call(session.client(a), GetParam().name, session.client(b), 0, as_picture));
            session.host.on_yield = [&] {
                session.call(first, "operator_convert", nullptr);
                session.call(second, "operator_convert", nullptr);
            };
            const Value result = session.call(first, GetParam().name, second, 1, false);
            session.host.on_yield = nullptr;
            EXPECT_EQ(difference(pixels(session.picture_of(object_in(result))), judge(GetParam(), once, once), 24), "");
        }
        EXPECT_EQ(session.host.accounts(), before);
        EXPECT_TRUE(session.host.complaints().empty());
    }
}

TEST(AddSubtractValues, WrapAround) {
    Session session;
    const auto plain = [&](std::uint32_t color) {
        const ObjectRef made = session.picture(1, 1);
        write_pixel(pixels(made), 0, 0, color);
        return made;
    };
    const auto result = [&](std::uint32_t a, const char* operation, std::uint32_t b) {
        return read_pixel(*picture_in(session.call(plain(a), operation, plain(b), 0)), 0, 0);
    };
    EXPECT_EQ(result(0x80FF01, "TRV_Add", 0x80FF01), 0x00FE02u);
    EXPECT_EQ(result(0xC8C8C8, "TRV_Add", 0x646464), 0x2C2C2Cu);
    EXPECT_EQ(result(0x0A0A0A, "TRV_Subtract", 0x141414), 0xF6F6F6u);
    EXPECT_EQ(result(0xFF123456, "TRV_Subtract", 0xFF123456), 0u);
    EXPECT_EQ(result(0xFF000000, "TRV_Add", 0xFF000000), 0u);  // the top byte is not a channel
}

}  // namespace
}  // namespace tarvo::test
