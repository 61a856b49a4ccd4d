// Row bytes and the line about a picture, through the built library.

#include <gtest/gtest.h>

#include <string>

#include "pictures.h"
#include "session.h"

namespace tarvo::test {
namespace {

class Info : public ::testing::Test {
protected:
    // The text, or "nil". References, locks and complaints are as they were.
    std::string info(const ObjectRef& picture) {
        const auto before = session.host.accounts();
        std::string text = "nil";
        {
            const Value result = session.invoke("TRV_Info(extends", picture);
            if (const auto* string = dynamic_cast<const host::StringObject*>(object_in(result).get()))
                text = string->bytes();
        }
        EXPECT_EQ(session.host.accounts(), before);
        EXPECT_TRUE(session.host.complaints().empty()) << session.host.complaints().front();
        return text;
    }
    int row_bytes(const ObjectRef& picture) {
        const auto before = session.host.accounts();
        const int bytes = std::get<std::int32_t>(session.invoke("TRV_RowBytes(extends", picture));
        EXPECT_EQ(session.host.accounts(), before);
        return bytes;
    }
    ObjectRef backed_by(host::Backing backing, int depth = 32) {
        return session.host.new_picture({.width = 7, .height = 5, .depth = depth, .backing = backing});
    }

    Session session;
    Random random{8003};
};

TEST_F(Info, TellsSizeAndDepth) {
    EXPECT_EQ(info(session.picture(100, 50)), "OK! width: 100, height: 50, depth: 32");
    EXPECT_EQ(session.last_error(), 0);
    for (const Shape& shape : source_shapes()) {
        const ObjectRef picture = random_picture(session, random, shape, 32, 3);
        EXPECT_EQ(info(picture), "OK! width: 32, height: 3, depth: " + std::to_string(shape.depth)) << shape.name();
    }
    EXPECT_EQ(info(session.host.new_picture({.width = 2, .height = 1, .depth = 13})),
              "OK! width: 2, height: 1, depth: 13");
}

TEST_F(Info, OfNilIsAnError) {
    EXPECT_EQ(info({}), "nil");
    EXPECT_EQ(session.last_error(), 2);
}

TEST_F(Info, SaysWhyAPictureCannotBeLocked) {
    const ObjectRef purged = session.picture(7, 5);
    pixels(purged).set_purged(true);
    info({});  // leaves a code, which the next call clears
    EXPECT_EQ(info(purged), "Locked a pictureMacintoshGWorld.");
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(info(backed_by(host::Backing::bitmap_context)), "Locked a pictureCGBitmapContext.");
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(info(backed_by(host::Backing::refused)), "Could not lock picture. 2.");
    EXPECT_EQ(session.last_error(), 0);
}

TEST_F(Info, SaysWhatTheHostSaysOfADrawingThatCannotBeRendered) {
    const ObjectRef drawing = backed_by(host::Backing::drawing_commands);
    session.host.faults.fail_at("newPicture", 1);
    EXPECT_EQ(info(drawing), "Could not lock picture. 1.");
    EXPECT_EQ(info(drawing), "OK! width: 7, height: 5, depth: 32");
}

// A lock that the host refuses leaves nothing to end.
TEST_F(Info, OfAPictureThatIsNeverLockedTellsNoKind) {
    session.host.faults.fail_at("lockPictureDescription", 1, true);
    EXPECT_EQ(info(backed_by(host::Backing::refused)), "Could not lock picture. 0.");
    EXPECT_EQ(session.host.faults.calls("unlockPictureDescription"), 0);
    EXPECT_EQ(info(session.picture(7, 5)), "Locked a pictureMacintoshGWorld.");
    session.host.faults.fail_at("REALLockPictureDescription", 1, true);
    EXPECT_EQ(info(session.picture(7, 5)), "Could not lock picture. 0.");
}

TEST_F(Info, EndsTheLocksThatItGot) {
    for (const host::Backing backing : {host::Backing::bitmap_context, host::Backing::refused}) {
        const ObjectRef picture = backed_by(backing);
        const auto calls = [&] { return session.host.faults.calls("unlockPictureDescription"); };
        const int before = calls();
        info(picture);
        EXPECT_EQ(calls(), before + 2);  // of the attempt and of the diagnosis
        EXPECT_EQ(pixels(picture).locks(), 0);
    }
}

TEST_F(Info, ThatTheHostDoesNotMakeIsNil) {
    session.host.faults.fail_at("REALBuildString", 1);
    EXPECT_EQ(info(session.picture(7, 5)), "nil");
    EXPECT_EQ(session.last_error(), 0);
}

TEST_F(Info, RowBytesAreTheStepFromRowToRow) {
    EXPECT_EQ(row_bytes(session.picture(7, 5)), 28);
    EXPECT_EQ(session.last_error(), 0);
    EXPECT_EQ(row_bytes(session.picture(7, 5, 24)), 21);
    EXPECT_EQ(row_bytes(session.picture(7, 5, 1)), 1);
    EXPECT_EQ(row_bytes(session.host.new_picture({.width = 7, .height = 5, .depth = 16, .row_padding = 3})), 17);
    EXPECT_EQ(row_bytes(backed_by(host::Backing::pixel_buffer)), 28);
    EXPECT_EQ(row_bytes(backed_by(host::Backing::drawing_commands)), 28);
}

TEST_F(Info, RowBytesOfNoPictureAreZero) {
    EXPECT_EQ(row_bytes({}), 0);
    EXPECT_EQ(session.last_error(), 2);
    for (const host::Backing backing : {host::Backing::bitmap_context, host::Backing::refused}) {
        EXPECT_EQ(row_bytes(backed_by(backing)), 0);
        EXPECT_EQ(session.last_error(), 4);
    }
}

}  // namespace
}  // namespace tarvo::test
