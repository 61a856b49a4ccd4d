// Calls of the library when memory runs out: every allocation that they make fails in its turn.

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "samples.h"
#include "system_faults.h"
#include "temporary_folder.h"

namespace tarvo::test {
namespace {

class LibraryMemory : public testing::Test {
protected:
    void SetUp() override {
        call("TRV_GetLastError", nullptr);  // the first call starts the plugin
    }

    // Does the work with the first, second, ... allocation failing, until it has one less than that; how often it
    // failed.
    int fail_each(const std::function<tarvo_status(tarvo_error**)>& work) {
        int failed = 0;
        for (int n = 1;; ++n) {
            SCOPED_TRACE(testing::Message() << "allocation " << n);
            tarvo_error* error = nullptr;
            fail_call(SystemCall::allocate, n, ENOMEM);
            const tarvo_status status = work(&error);
            const bool happened = stop_faults();
            EXPECT_EQ(status != TARVO_OK, error != nullptr);
            if (error) {
                EXPECT_EQ(tarvo_error_status(error), status);
                EXPECT_STRNE(tarvo_error_message(error), "");
            }
            // Some operations tell nothing of why they could not make their result.
            EXPECT_TRUE(status == TARVO_OK || status == TARVO_MEMORY || status == TARVO_OPERATION)
                << status << ": " << tarvo_error_message(error);
            tarvo_error_free(error);
            failed += status != TARVO_OK;
            if (!happened) {
                EXPECT_EQ(status, TARVO_OK);
                return failed;
            }
        }
    }
};

TEST_F(LibraryMemory, IsMissedByADescriptionThatIsThereLater) {
    fail_call(SystemCall::allocate, 20, ENOMEM);
    tarvo_status status = TARVO_OK;
    try {
        description();
    } catch (const Error& error) {
        status = error.status();
    }
    EXPECT_TRUE(stop_faults());
    EXPECT_EQ(status, TARVO_MEMORY);
    EXPECT_NE(description().find("\"TRV_Stretch\""), std::string::npos);
}

TEST_F(LibraryMemory, OfPictures) {
    const std::vector<std::uint8_t> rows = noise(4 * 4 * 4);
    EXPECT_GT(fail_each([&](tarvo_error** error) {
                  tarvo_picture* made = nullptr;
                  const tarvo_status status =
                      tarvo_picture_from_rows(rows.data(), 16, 4, 4, TARVO_RGBA32, &made, error);
                  EXPECT_EQ(made != nullptr, status == TARVO_OK);
                  tarvo_picture_release(made);
                  return status;
              }),
              1);
    int released = 0, wrapped = 0;
    const auto count = [](void* context) { ++*static_cast<int*>(context); };
    EXPECT_GT(fail_each([&](tarvo_error** error) {
                  tarvo_picture* made = nullptr;
                  ++wrapped;
                  const tarvo_status status = tarvo_picture_wrap(rows.data(), 16, 4, 4, count, &released, &made, error);
                  tarvo_picture_release(made);
                  return status;
              }),
              1);
    EXPECT_EQ(released, wrapped) << "the memory is given back whatever happens";
}

TEST_F(LibraryMemory, OfFiles) {
    const Picture photo = noisy_picture(9, 7, TARVO_RGBA32);
    const TemporaryFolder folder;
    const std::string path = folder.path() / "a.pam";
    photo.save(path);
    std::vector<const char*> formats = {"pam", "pbm"};
#ifdef TARVO_PICTURE_LIBRARIES
    formats.insert(formats.end(), {"png", "jpg"});
#endif
    for (const char* format : formats)
        EXPECT_GT(fail_each([&](tarvo_error** error) {
                      std::uint8_t* bytes = nullptr;
                      std::size_t length = 0;
                      const tarvo_status status =
                          tarvo_picture_encode(photo.get(), format, nullptr, &bytes, &length, error);
                      EXPECT_EQ(bytes != nullptr, status == TARVO_OK);
                      tarvo_free(bytes);
                      return status;
                  }),
                  3)
            << format;
    EXPECT_GT(fail_each([&](tarvo_error** error) {
                  tarvo_picture* made = nullptr;
                  const tarvo_status status = tarvo_picture_open(path.c_str(), nullptr, &made, error);
                  tarvo_picture_release(made);
                  return status;
              }),
              3);
    EXPECT_EQ(Picture::open(path).sha256(), photo.sha256());
}

TEST_F(LibraryMemory, OfCalls) {
    const Picture photo = noisy_picture(9, 7), other = noisy_picture(5, 5);
    tarvo_value self = Value(photo).get();
    const tarvo_argument sides[] = {{nullptr, Value(4).get()}, {"height", Value(3).get()}};
    EXPECT_GT(fail_each([&](tarvo_error** error) {
                  tarvo_result* result = nullptr;
                  const tarvo_status status = tarvo_call("TRV_Stretch", &self, sides, 2, nullptr, &result, error);
                  EXPECT_EQ(result != nullptr, status == TARVO_OK);
                  tarvo_result_release(result);
                  return status;
              }),
              10);
    for (const char* text : {"Info()", "AdjustRGB(nil, matrix(1,0,0,0,1,0,0,0,1))", "ConvertToString()"})
        EXPECT_GT(fail_each([&](tarvo_error** error) {
                      tarvo_result* result = nullptr;
                      const tarvo_status status = tarvo_apply(text, photo.get(), nullptr, &result, error);
                      tarvo_result_release(result);
                      return status;
                  }),
                  10)
            << text;
}

TEST_F(LibraryMemory, OfTextsLeavesNone) {
    const Result sum = noisy_picture(3, 3).call("TRV_FlipRotate", true, false, 0);
    int without = 0;
    for (int n = 1, happened = 1; happened; ++n) {
        fail_call(SystemCall::allocate, n, ENOMEM);
        char* const text = tarvo_result_text(sum.get(), nullptr);
        happened = stop_faults();
        EXPECT_TRUE(text || happened);
        EXPECT_TRUE(!text || std::string(text) == "a picture");
        without += !text;
        tarvo_free(text);
    }
    EXPECT_GT(without, 0);
}

TEST_F(LibraryMemory, OfObjects) {
    for (const char* name : {"TRV_Rectangle", "TRV_ClientPicture"})
        EXPECT_GT(fail_each([&](tarvo_error** error) {
                      tarvo_object* made = nullptr;
                      const tarvo_status status = tarvo_object_new(name, &made, error);
                      EXPECT_EQ(made != nullptr, status == TARVO_OK);
                      tarvo_object_release(made);
                      return status;
                  }),
                  3)
            << name;
}

// There is no room for the error's text either.
TEST_F(LibraryMemory, OfErrorsThemselves) {
    int without_text = 0;
    for (int n = 1; n < 200; ++n) {
        tarvo_error* error = nullptr;
        tarvo_object* made = nullptr;
        fail_call(SystemCall::allocate, n, ENOMEM);
        const tarvo_status status = tarvo_object_new("TRV_Circle", &made, &error);
        const bool happened = stop_faults();
        EXPECT_EQ(made, nullptr);
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(tarvo_error_status(error), status);
        const std::string message = tarvo_error_message(error);
        if (status == TARVO_MEMORY) {
            EXPECT_TRUE(happened);
            EXPECT_EQ(message, "not enough memory");
            ++without_text;
        } else {
            EXPECT_EQ(status, TARVO_USE);
            EXPECT_EQ(message, "there is no class \"TRV_Circle\"");
        }
        tarvo_error_free(error);
    }
    EXPECT_GT(without_text, 1);
}

// Nobody asks for the error.
TEST_F(LibraryMemory, IsMissedWithoutAnError) {
    tarvo_object* made = nullptr;
    fail_call(SystemCall::allocate, 1, ENOMEM);
    EXPECT_EQ(tarvo_object_new("TRV_Rectangle", &made, nullptr), TARVO_MEMORY);
    EXPECT_TRUE(stop_faults());
}

}  // namespace
}  // namespace tarvo::test
