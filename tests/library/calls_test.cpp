// Calls by name: forms, arguments, results, objects, and every wrong use.

#include <gtest/gtest.h>

#include <cstring>

#include "samples.h"

namespace tarvo::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(LibraryCalls, FindOperationsWithAndWithoutTheirPrefix) {
    const Picture photo = noisy_picture(20, 10);
    const Picture made = photo.call("TRV_Stretch", 7, 9).picture();
    EXPECT_EQ(made.width(), 7);
    EXPECT_EQ(made.height(), 9);
    EXPECT_EQ(photo.call("stretch", 7, 9).picture().sha256(), made.sha256());
    EXPECT_EQ(photo.call("Stretch", Argument("height", 9), Argument("width", 7)).picture().sha256(), made.sha256());
    EXPECT_EQ(photo.call("Stretch", 7, Argument("height", 9), Argument("yield", 5)).picture().sha256(), made.sha256());
}

TEST(LibraryCalls, ChooseTheFormThatFits) {
    const Picture photo = noisy_picture(20, 10), other = noisy_picture(6, 6);
    const Picture colored = photo.call("TRV_Composite", Rectangle(1, 1, 5, 5), Color{0xFF0000}, 0.5).picture();
    const Picture overlaid = photo.call("TRV_Composite", other, 0.5, 1, 1).picture();
    EXPECT_NE(colored.sha256(), overlaid.sha256());
    Object matrix("TRV_ColorMatrix");
    EXPECT_NO_THROW(photo.call("TRV_AdjustRGB", nullptr, matrix).picture());
    EXPECT_NO_THROW(photo.call("TRV_AdjustRGB", nullptr, 1, 2, 3).picture());
}

TEST(LibraryCalls, MakePicturesOfNothing) {
    const Picture made = call("TRV_MakeGradient", nullptr, {30, 20, Color{0x102040}, Color{0xFFD080}}).picture();
    EXPECT_EQ(made.width(), 30);
    EXPECT_EQ(made.height(), 20);
}

TEST(LibraryCalls, GiveEveryTypeBack) {
    const Bytes rgb = {10, 20, 30, 10, 20, 30};
    const Picture photo = Picture::from_rows(rgb.data(), 6, 2, 1, TARVO_RGB24);
    EXPECT_EQ(photo.call("TRV_RowBytes").integer(), 8);
    EXPECT_TRUE(photo.call("TRV_Compare", photo, nullptr).boolean());
    EXPECT_FALSE(photo.call("TRV_Compare", noisy_picture(3, 3), nullptr).boolean());
    EXPECT_EQ(photo.call("TRV_RowBytes").code(), 0);
    EXPECT_EQ(status_of([&] { photo.call("TRV_RowBytes").color(); }), TARVO_USE) << "no color";
    const Result info = photo.call("TRV_Info");
    EXPECT_NE(info.bytes().find("width: 2"), std::string_view::npos);
    const char* text = static_cast<const char*>(info.value().as.bytes.data);
    EXPECT_EQ(std::strlen(text), info.bytes().size());

    const Result average = photo.call("TRV_GetAverageRGB", nullptr);
    EXPECT_TRUE(average.is_nil());
    EXPECT_EQ(average.output("red")->as.integer, 10);
    EXPECT_EQ(average.output("GREEN")->as.integer, 20);
    EXPECT_EQ(average.output("blue")->as.integer, 30);
    EXPECT_EQ(average.output("white"), nullptr);
    EXPECT_EQ(tarvo_result_output(average.get(), nullptr), nullptr);

    const std::string string(photo.call("TRV_ConvertToString").bytes());
    EXPECT_EQ(call("TRV_ConvertToPicture", string).picture().sha256(), photo.sha256());
    const Result block = photo.call("TRV_MakeMemoryBlock", nullptr, false);
    EXPECT_EQ(block.value().type, TARVO_BYTES);
    EXPECT_FALSE(block.bytes().empty());
    EXPECT_EQ(status_of([&] { info.picture(); }), TARVO_USE);
}

TEST(LibraryCalls, ChangeACopyOfTheirPicture) {
    const Bytes rgb = {10, 20, 30};
    const Picture photo = Picture::from_rows(rgb.data(), 3, 1, 1, TARVO_RGB24);
    const Result result = photo.call("TRV_AdjustRGB_InPlace", nullptr, 1, 2, 3);
    EXPECT_EQ(rows_of(result.picture(), TARVO_RGB24), (Bytes{11, 22, 33}));
    EXPECT_EQ(rows_of(photo, TARVO_RGB24), rgb);
}

TEST(LibraryCalls, MakeEmptyValuesNil) {
    const Picture photo = noisy_picture(4, 4);
    EXPECT_EQ(photo.call("TRV_AdjustRGB", Object(), 1, 2, 3).picture().sha256(),
              photo.call("TRV_AdjustRGB", nullptr, 1, 2, 3).picture().sha256());
    EXPECT_EQ(status_of([&] { photo.call("TRV_Compare", Picture(), nullptr); }), TARVO_OPERATION);
}

TEST(LibraryCalls, TakeVariablesAsTheyAre) {
    const Bytes rgb = {10, 20, 30};
    const Picture photo = Picture::from_rows(rgb.data(), 3, 1, 1, TARVO_RGB24);
    const Result average = photo.call("TRV_GetAverageRGB", nullptr, 7, 8, "no number");
    EXPECT_EQ(average.output("red")->as.integer, 10);
    EXPECT_EQ(average.output("blue")->as.integer, 30);
}

TEST(LibraryCalls, OfPlainFunctionsNeedNoSelf) {
    tarvo_result* result = nullptr;
    ASSERT_EQ(tarvo_call("TRV_GetLastError", nullptr, nullptr, 0, nullptr, &result, nullptr), TARVO_OK);
    EXPECT_EQ(tarvo_result_value(result)->as.integer, 0);
    tarvo_result_release(result);
    EXPECT_EQ(tarvo_result_code(nullptr), 0);
    EXPECT_EQ(tarvo_result_value(nullptr), nullptr);
}

TEST(LibraryCalls, KeepMasks) {
    const Picture masked = noisy_picture(8, 8, TARVO_RGBA32);
    const Picture flipped = masked.call("TRV_FlipRotate", true, false, 0).picture();
    ASSERT_TRUE(flipped.has_mask());
    EXPECT_EQ(flipped.call("TRV_FlipRotate", true, false, 0).picture().sha256(), masked.sha256());
}

// --- objects ---

TEST(LibraryObjects, HavePropertiesAndMethods) {
    const Rectangle rectangle(1, 2, 30, 40);
    EXPECT_EQ(rectangle.call("RIGHT").integer(), 30);
    EXPECT_EQ(rectangle.call("Area").integer(), 1200);
    EXPECT_TRUE(rectangle.call("OffsetBy", 10, Argument("v", 20)).is_nil());
    EXPECT_EQ(rectangle.call("left").integer(), 11);
    EXPECT_EQ(call("trv_rectangle.Top", rectangle).integer(), 22);
    const Object copy("TRV_Rectangle");
    copy.call("CopyFrom", rectangle);
    EXPECT_TRUE(copy.call("Equals", rectangle).boolean());
    EXPECT_TRUE(rectangle.call("Equals", rectangle).boolean()) << "the same object twice";
}

TEST(LibraryObjects, AreAssignedToAndReturned) {
    const Object matrix("TRV_ColorMatrix");
    matrix.call("Value", 0, 1, 2.5);
    EXPECT_EQ(matrix.call("Value", 0, 1).real(), 2.5);
    EXPECT_EQ(matrix.call("Value", Argument("j", 1), Argument("i", 0)).real(), 2.5);
    const Object product = matrix.call("Multiply", matrix).object();
    EXPECT_NE(product.get(), matrix.get());
    EXPECT_EQ(call("TRV_ColorMatrix.Value", product, {0, 1}).real(), 2.5 * 0 + 0);
    EXPECT_EQ(status_of([&] { matrix.call("Value", Argument("i", 0), Argument("j", 1), Argument("x", 1.0)); }),
              TARVO_USE);
}

TEST(LibraryObjects, TakeArrays) {
    const Object blur("TRV_Convolution");
    blur.call("SetCoefficients", std::vector<std::int32_t>{1, 2, 1});
    EXPECT_EQ(blur.call("width").integer(), 3);
    const Picture photo = noisy_picture(9, 9);
    EXPECT_NE(photo.call("TRV_Convolute", nullptr, blur, blur).picture().sha256(), photo.sha256());
}

TEST(LibraryObjects, OfClientPicturesAreTheirPictures) {
    const Picture photo = noisy_picture(9, 7, TARVO_RGBA32);
    const Object client("TRV_ClientPicture");
    EXPECT_EQ(client.call("width").integer(), 0);
    EXPECT_TRUE(client.call("pic").is_nil());
    client.call("operator_convert", photo);
    EXPECT_EQ(client.call("width").integer(), 9);
    EXPECT_EQ(client.call("operator_convert").picture().sha256(), photo.sha256());
    for (const bool as_picture : {false, true}) {
        const Picture made = call("TRV_Stretch", client, {5, 5, 0, Argument("as_picture", as_picture)}).picture();
        EXPECT_EQ(made.width(), 5);
        EXPECT_EQ(rows_of(made, TARVO_RGB24), rows_of(photo.call("TRV_Stretch", 5, 5).picture(), TARVO_RGB24));
    }
}

TEST(LibraryObjects, OfResultsAreCalledByTheirClass) {
    const Object matrix("TRV_ColorMatrix");
    const Object product = matrix.call("Multiply", matrix).object();
    product.call("TRV_ColorMatrix.Value", 0, 0, 4.0);
    EXPECT_EQ(product.call("TRV_ColorMatrix.Value", 0, 0).real(), 4.0);
    EXPECT_EQ(status_of([&] { product.call("Value", 0, 0); }), TARVO_USE) << "whose Value?";
}

TEST(LibraryObjects, TakeEmptyArrays) {
    const Object kernel("TRV_Convolution");
    kernel.call("SetCoefficients", std::vector<std::int32_t>{1, 2, 1});
    EXPECT_EQ(kernel.call("width").integer(), 3);
    kernel.call("SetCoefficients", std::vector<std::int32_t>{});
    EXPECT_EQ(kernel.call("width").integer(), 3) << "no coefficients are no kernel";
}

// What such an operation changes is the picture that a client picture becomes; the client picture itself comes back.
TEST(LibraryObjects, OfClientPicturesAreNotChangedInPlace) {
    const Picture photo = noisy_picture(4, 4);
    const Object client("TRV_ClientPicture");
    client.call("operator_convert", photo);
    const Result result = call("TRV_AdjustRGB_InPlace", client, {nullptr, 1, 2, 3});
    EXPECT_EQ(result.object().get(), client.get());
    EXPECT_EQ(client.call("operator_convert").picture().sha256(), photo.sha256());
}

TEST(LibraryObjects, OfClientPicturesAreArgumentsToo) {
    const Picture photo = noisy_picture(4, 4), other = noisy_picture(4, 4, TARVO_GREY8);
    const Object client("TRV_ClientPicture");
    client.call("operator_convert", other);
    EXPECT_EQ(photo.call("TRV_Add", client, 0).picture().sha256(), photo.call("TRV_Add", other, 0).picture().sha256());
    EXPECT_EQ(client.call("operator_convert").picture().sha256(), other.sha256());
}

TEST(LibraryObjects, OfClientPicturesHaveLimitsAsPictures) {
    const Object client("TRV_ClientPicture");
    client.call("operator_convert", noisy_picture(4, 4));
    CallOptions options;
    options.max_pixels = 20;
    try {
        call("TRV_Stretch", client, {5, 5, 0, Argument("as_picture", false)}, options);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.status(), TARVO_LIMIT);
        EXPECT_STREQ(error.what(), "a picture of 5 x 5 pixels, 32 bits: the limit is 20 pixels");
    }
}

TEST(LibraryObjects, MessageBoxesComeBack) {
    const Rectangle rectangle(1, 2, 3, 4);
    const Result result = rectangle.call("MessageBox");
    ASSERT_NE(result.output("message"), nullptr);
    const tarvo_bytes& text = result.output("message")->as.bytes;
    EXPECT_NE(std::string(static_cast<const char*>(text.data), text.length).find("left: 1 top: 2"), std::string::npos);
}

TEST(LibraryObjects, OfUnknownClassesAreRefused) {
    EXPECT_EQ(status_of([] { Object("TRV_Circle"); }), TARVO_USE);
    EXPECT_EQ(status_of([] { Object(""); }), TARVO_USE);
    EXPECT_EQ(status_of([] { Object("picture"); }), TARVO_USE);
    tarvo_object* object = nullptr;
    EXPECT_EQ(tarvo_object_new(nullptr, &object, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_object_new("TRV_Rectangle", nullptr, nullptr), TARVO_USE);
}

// --- failures ---

TEST(LibraryErrors, TellTheCodeTheOperationAndTheArgument) {
    const Picture photo = noisy_picture(4, 4);
    try {
        photo.call("TRV_FreeRotateByShear", -30.0);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.status(), TARVO_OPERATION);
        EXPECT_EQ(error.code(), 31);
        EXPECT_EQ(error.operation(), "TRV_FreeRotateByShear");
        EXPECT_EQ(error.argument(), "rotation");
        EXPECT_STREQ(error.what(),
                     "TRV_FreeRotateByShear: Rotate Error: \"rotation\" parameter is out of bounds: rotation is -30 "
                     "degrees, allowed is 0 to below 360: write 330");
    }
    try {
        photo.call("TRV_Add", noisy_picture(3, 4));
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.status(), TARVO_OPERATION);
        EXPECT_EQ(error.code(), 20);
        EXPECT_NE(std::string(error.what()).find("the picture is 4 x 4, addend is 3 x 4"), std::string::npos);
    }
    try {
        photo.call("TRV_Add", nullptr);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), 18);
    }
}

TEST(LibraryErrors, TellLimits) {
    const Picture photo = noisy_picture(4, 4);
    const auto failure = [&](int width, int height, const CallOptions& options) {
        try {
            call("TRV_Stretch", photo, {width, height}, options);
        } catch (const Error& error) {
            return std::pair(error.status(), std::string(error.what()));
        }
        return std::pair(TARVO_OK, std::string());
    };
    EXPECT_EQ(failure(40000, 4, {}).first, TARVO_LIMIT);
    EXPECT_EQ(failure(32767, 32767, {}).first, TARVO_LIMIT);
    CallOptions few_pixels, little_memory;
    few_pixels.max_pixels = 99;
    little_memory.max_memory = 500;
    EXPECT_EQ(failure(10, 9, few_pixels).first, TARVO_OK);
    const auto [status, message] = failure(10, 10, few_pixels);
    EXPECT_EQ(status, TARVO_LIMIT);
    EXPECT_NE(message.find("10 x 10 pixels, 32 bits: the limit is 99 pixels"), std::string::npos) << message;
    try {
        call("TRV_ShearHorizontal", photo, {0, 5, 0.5});
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.status(), TARVO_OPERATION) << error.what();
        EXPECT_EQ(error.argument(), "width") << "no limit, though no such picture can be made";
    }
    const auto [short_status, short_message] = failure(20, 20, little_memory);
    EXPECT_EQ(short_status, TARVO_MEMORY);
    EXPECT_NE(short_message.find("1600 bytes"), std::string::npos) << short_message;
    EXPECT_NE(short_message.find("the limit is 500"), std::string::npos) << short_message;
}

TEST(LibraryErrors, OfWrongUse) {
    const Picture photo = noisy_picture(4, 4);
    const Rectangle rectangle(0, 0, 1, 1);
    const auto use = [&](const char* operation, const Value& self, const std::vector<Argument>& arguments) {
        return status_of([&] { call(operation, self, arguments); });
    };
    EXPECT_EQ(use("TRV_Nothing", photo, {}), TARVO_USE);
    EXPECT_EQ(use("", photo, {}), TARVO_USE);
    EXPECT_EQ(use(".", photo, {}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", photo, {}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", photo, {1, 2, 3, 4, 5}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", photo, {"1", 2}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", photo, {1, photo}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", photo, {1, true}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", photo, {1, 2, Argument("width", 1)}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", photo, {Argument("width", 1), 2}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", photo, {1, Argument("depth", 2)}), TARVO_USE);
    tarvo_value self = {};
    self.type = TARVO_PICTURE;
    self.as.picture = photo.get();
    const tarvo_argument unnamed = {"", Value(1).get()};
    tarvo_result* result = nullptr;
    Failed failed;
    EXPECT_EQ(tarvo_call("TRV_Stretch", &self, &unnamed, 1, nullptr, &result, &failed), TARVO_USE);
    EXPECT_EQ(failed.message(), "an argument's name is empty");
    EXPECT_EQ(use("TRV_Stretch", nullptr, {1, 2}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", rectangle, {1, 2}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", 7, {1, 2}), TARVO_USE);
    EXPECT_EQ(use("TRV_Stretch", "text", {1, 2}), TARVO_USE);
    EXPECT_EQ(use("TRV_ScreenCapture", nullptr, {nullptr}), TARVO_USE);
    EXPECT_EQ(use("TRV_Rectangle.Area", photo, {}), TARVO_USE);
    EXPECT_EQ(use("TRV_Rectangle.Area", nullptr, {}), TARVO_USE);
    EXPECT_EQ(use("TRV_Rectangle.Area", rectangle, {1}), TARVO_USE);
    EXPECT_EQ(use("TRV_Rectangle.Circumference", rectangle, {}), TARVO_USE);
    EXPECT_EQ(use("TRV_Circle.Area", rectangle, {}), TARVO_USE);
    EXPECT_EQ(use("TRV_Rectangle.left", rectangle, {1, 2}), TARVO_USE);
    EXPECT_EQ(use("TRV_Rectangle.left", rectangle, {"x"}), TARVO_USE);
    EXPECT_EQ(use("TRV_Convolution.sum", Object("TRV_Convolution"), {5}), TARVO_USE) << "read-only";
    EXPECT_EQ(use("TRV_Convolution.SetCoefficients", Object("TRV_Convolution"), {5}), TARVO_USE);
}

TEST(LibraryErrors, TellTheArgumentOfAWrongType) {
    const Picture photo = noisy_picture(4, 4);
    try {
        photo.call("TRV_AdjustContrast", nullptr, "red", 1.0, 1.0, 1.0);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.argument(), "center");
        EXPECT_EQ(error.operation(), "TRV_AdjustContrast");
        EXPECT_STREQ(error.what(), "TRV_AdjustContrast: center: expected color, found string");
    }
}

TEST(LibraryErrors, OfPointersThatAreMissing) {
    const Picture photo = noisy_picture(4, 4);
    tarvo_value self = {};
    self.type = TARVO_PICTURE;
    self.as.picture = photo.get();
    tarvo_result* result = nullptr;
    Failed failed;
    EXPECT_EQ(tarvo_call(nullptr, &self, nullptr, 0, nullptr, &result, &failed), TARVO_USE);
    EXPECT_EQ(failed.message(), "operation is NULL");
    EXPECT_EQ(tarvo_call("TRV_Info", &self, nullptr, 0, nullptr, nullptr, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_call("TRV_Info", &self, nullptr, 1, nullptr, &result, nullptr), TARVO_USE);
    self.as.picture = nullptr;
    EXPECT_EQ(tarvo_call("TRV_Info", &self, nullptr, 0, nullptr, &result, nullptr), TARVO_USE);
    self.type = TARVO_OBJECT;
    EXPECT_EQ(tarvo_call("TRV_Rectangle.Area", &self, nullptr, 0, nullptr, &result, nullptr), TARVO_USE);
    self.type = TARVO_BYTES;
    self.as.bytes = {nullptr, 5};
    EXPECT_EQ(tarvo_call("TRV_ConvertToPicture", &self, nullptr, 0, nullptr, &result, nullptr), TARVO_USE);
    self.as.bytes = {nullptr, 0};
    EXPECT_NE(tarvo_call("TRV_ConvertToPicture", &self, nullptr, 0, nullptr, &result, nullptr), TARVO_OK);
    self.type = static_cast<tarvo_type>(99);
    EXPECT_EQ(tarvo_call("TRV_Info", &self, nullptr, 0, nullptr, &result, nullptr), TARVO_USE);
    tarvo_argument integers = {};
    integers.value.type = TARVO_INTEGERS;
    integers.value.as.integers = {nullptr, 3};
    const Object convolution("TRV_Convolution");
    self.type = TARVO_OBJECT;
    self.as.object = convolution.get();
    EXPECT_EQ(tarvo_call("TRV_Convolution.SetCoefficients", &self, &integers, 1, nullptr, &result, nullptr), TARVO_USE);
    EXPECT_EQ(result, nullptr);
}

TEST(LibraryErrors, AreSetOnFailureOnly) {
    const Picture photo = noisy_picture(4, 4);
    int mark = 0;
    auto* const before = reinterpret_cast<tarvo_error*>(&mark);
    tarvo_error* error = before;
    tarvo_result* result = nullptr;
    ASSERT_EQ(tarvo_apply("Info()", photo.get(), nullptr, &result, &error), TARVO_OK);
    EXPECT_EQ(error, before);
    tarvo_result_release(result);
}

// --- options ---

TEST(LibraryOptions, OfOlderCallersAreSmaller) {
    const Picture photo = noisy_picture(4, 4);
    tarvo_result* result = nullptr;
    tarvo_call_options options;
    std::memset(&options, 0xFF, sizeof options);  // what is beyond the record says nothing
    options.size = offsetof(tarvo_call_options, threads);
    options.yield_pixels = 0;
    options.yield = nullptr;
    ASSERT_EQ(tarvo_apply("Info()", photo.get(), &options, &result, nullptr), TARVO_OK);
    tarvo_result_release(result);
    options.size = sizeof options.size;
    ASSERT_EQ(tarvo_apply("Info()", photo.get(), &options, &result, nullptr), TARVO_OK);
    tarvo_result_release(result);
}

TEST(LibraryOptions, OfNewerCallersMayNotAskForWhatIsNotThere) {
    const Picture photo = noisy_picture(4, 4);
    struct Newer {
        tarvo_call_options known;
        std::uint64_t more;
    } options = {};
    options.known.size = sizeof options;
    tarvo_result* result = nullptr;
    ASSERT_EQ(tarvo_apply("Info()", photo.get(), &options.known, &result, nullptr), TARVO_OK);
    tarvo_result_release(result);
    options.more = 1;
    Failed failed;
    EXPECT_EQ(tarvo_apply("Info()", photo.get(), &options.known, &result, &failed), TARVO_USE);
    EXPECT_NE(failed.message().find("newer"), std::string::npos);
}

TEST(LibraryOptions, HaveRanges) {
    const Picture photo = noisy_picture(4, 4);
    tarvo_result* result = nullptr;
    tarvo_call_options options = {};
    EXPECT_EQ(tarvo_apply("Info()", photo.get(), &options, &result, nullptr), TARVO_USE) << "no size";
    options.size = sizeof options;
    options.yield_pixels = -1;
    EXPECT_EQ(tarvo_apply("Info()", photo.get(), &options, &result, nullptr), TARVO_USE);
    options.yield_pixels = 0;
    options.threads = -1;
    EXPECT_EQ(tarvo_apply("Info()", photo.get(), &options, &result, nullptr), TARVO_USE);
    tarvo_write_options writing = {};
    writing.size = sizeof writing;
    writing.jpeg_quality = 101;
    std::uint8_t* bytes = nullptr;
    std::size_t length = 0;
    for (const int quality : {101, -1}) {
        writing.jpeg_quality = quality;
        EXPECT_EQ(tarvo_picture_encode(photo.get(), "ppm", &writing, &bytes, &length, nullptr), TARVO_USE) << quality;
    }
    writing.jpeg_quality = 0;
    for (const int compression : {3, -1}) {
        writing.compression = static_cast<tarvo_compression>(compression);
        EXPECT_EQ(tarvo_picture_encode(photo.get(), "png", &writing, &bytes, &length, nullptr), TARVO_USE);
    }
}

TEST(Library, TellsItsVersionAndWhatItCanDo) {
    EXPECT_EQ(version(), std::to_string(TARVO_VERSION_MAJOR) + "." + std::to_string(TARVO_VERSION_MINOR) + "." +
                             std::to_string(TARVO_VERSION_PATCH));
    const std::string text = description();
    EXPECT_NE(text.find("\"TRV_AdjustContrast\""), std::string::npos);
    EXPECT_EQ(tarvo_description(), tarvo_description());
}

}  // namespace
}  // namespace tarvo::test
