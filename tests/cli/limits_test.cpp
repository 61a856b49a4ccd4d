// How much the tool takes: its limits, and that messages name them.

#include <gtest/gtest.h>

#include "jpeg_samples.h"
#include "tool.h"
#include "watched_memory.h"

namespace tarvo::cli {
namespace {

class ToolLimits : public ToolTest {
protected:
    std::string picture() const { return ppm("in.ppm", 10, 10, std::vector<std::uint32_t>(100, 0x102030)); }
    // Its error, behind "tarvo: ".
    std::string error_of(std::vector<std::string> arguments, int status) const {
        const Ending run = tool(std::move(arguments));
        EXPECT_EQ(run.status, status) << run.err;
        EXPECT_EQ(run.err.rfind("tarvo: ", 0), 0u) << run.err;
        return run.err.substr(7);
    }
    const std::string kTwice = "TRV_Stretch(20, 10, 0)";
};

TEST_F(ToolLimits, OfPixelsHoldForFiles) {
    EXPECT_EQ(error_of({"convert", "--max-pixels", "99", picture(), "-o", file("out.ppm")}, 3),
              picture() + ": the size is 10 x 10 pixels, together 100, the limit is 99 (--max-pixels)\n");
    EXPECT_EQ(tool({"convert", "--max-pixels", "100", picture(), "-o", file("out.ppm")}).status, 0);
    EXPECT_EQ(error_of({"convert", text_file("wide.ppm", "P6 32768 1 255 "), "-o", file("out.ppm")}, 3),
              file("wide.ppm") + ": the size is 32768 x 1 pixels, a side may have 32767\n");
    EXPECT_EQ(error_of({"convert", text_file("large.ppm", "P6 32767 32767 255 "), "-o", file("out.ppm")}, 3),
              file("large.ppm") +
                  ": the size is 32767 x 32767 pixels, together 1073676289, the limit is 268435456 (--max-pixels)\n");
}

TEST_F(ToolLimits, OfMemoryHoldForFiles) {
    EXPECT_EQ(error_of({"convert", "--max-memory", "399", picture(), "-o", file("out.ppm")}, 3),
              picture() +
                  ": a picture of 10 x 10 pixels, 32 bits: 400 bytes, 0 are taken already, the limit is 399 "
                  "(--max-memory)\n");
    EXPECT_EQ(tool({"convert", "--max-memory", "400", picture(), "-o", file("out.ppm")}).status, 0);
    EXPECT_EQ(tool({"convert", "--max-memory", "1k", picture(), "-o", file("out.ppm")}).status, 0);
    EXPECT_EQ(tool({"convert", "--max-memory", "much", picture(), "-o", file("out.ppm")}).status, 2);
}

TEST_F(ToolLimits, HoldForResults) {
    EXPECT_EQ(tool({"apply", picture(), kTwice}).status, 0);
    EXPECT_EQ(error_of({"apply", "--max-pixels", "199", picture(), kTwice}, 1),
              "TRV_Stretch gave no result; the host made no room for it: a picture of 20 x 10 pixels, 32 bits: "
              "the limit is 199 pixels (--max-pixels)\n");
    EXPECT_EQ(error_of({"apply", "--max-memory", "1199", picture(), kTwice}, 1),
              "TRV_Stretch gave no result; the host made no room for it: a picture of 20 x 10 pixels, 32 bits: "
              "800 bytes, 400 are taken already, the limit is 1199 (--max-memory)\n");
    EXPECT_EQ(error_of({"apply", picture(), "TRV_Stretch(40000, 10, 0)"}, 1),
              "TRV_Stretch gave no result; the host made no room for it: a picture of 40000 x 10 pixels: a side "
              "may have 1 to 32767\n");
}

TEST_F(ToolLimits, HoldForStringsOfResults) {
    EXPECT_EQ(error_of({"convert", "--max-memory", "600", picture(), "-o", file("out.trv")}, 3),
              file("out.trv") +
                  ": a string of 311 bytes: 311 bytes, 400 are taken already, the limit is 600 (--max-memory)\n");
    EXPECT_FALSE(exists("out.trv"));
}

// What one operation no longer holds is there for the next.
TEST_F(ToolLimits, CountWhatIsHeldAtOneTime) {
    const std::string nothing = "TRV_AdjustContrast(nil, &c000000, 1, 1, 1, 0)";
    EXPECT_EQ(tool({"apply", "--max-memory", "800", picture(), nothing, nothing, nothing}).status, 0);
    EXPECT_EQ(tool({"apply", "--max-memory", "799", picture(), nothing}).status, 1);
}

// Files and images are never held whole, only pictures.
TEST_F(ToolLimits, ConversionsTakeAPictureAndLittleElse) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer keeps what is free";
#endif
    ASSERT_EQ(shell("(printf 'P6 4000 4000 255 '; head -c 48000000 /dev/zero) >large.ppm").status, 0);
    const std::size_t empty = tool({"convert", picture(), "-o", file("out.ppm")}).peak;
    constexpr std::size_t kPicture = 4000 * 4000 * 4, kSlack = std::size_t{32} << 20;
    const auto taken = [&](std::vector<std::string> arguments) {
        const Ending run = tool(std::move(arguments));
        EXPECT_EQ(run.status, 0) << run.err;
        return run.peak - empty;
    };
    const std::string nothing = "TRV_AdjustContrast(nil, &c000000, 1, 1, 1, 0)";
    EXPECT_LT(taken({"convert", file("large.ppm"), "-o", file("out.png")}), kPicture * 12 / 10 + kSlack);
    EXPECT_LT(taken({"convert", file("out.png"), "-o", file("out.jpg")}), kPicture * 12 / 10 + kSlack);
    EXPECT_LT(taken({"convert", file("out.jpg"), "-o", file("out.ppm")}), kPicture * 12 / 10 + kSlack);
    EXPECT_LT(taken({"convert", file("large.ppm"), "-o", file("out.trv")}), kPicture * 12 / 10 + kSlack);
    EXPECT_LT(taken({"convert", file("out.trv"), "-o", file("out.ppm")}), kPicture * 12 / 10 + kSlack);
    EXPECT_LT(taken({"apply", file("large.ppm"), nothing, nothing, "-o", file("out.ppm")}),
              2 * kPicture * 12 / 10 + kSlack);
}

#ifdef TARVO_WEBP
// What libwebp holds besides is its own, and not much where something is lost.
TEST_F(ToolLimits, WebpFilesTakeTheirPicturesAndLittleElseToBeRead) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer keeps what is free";
#endif
    constexpr std::size_t kPicture = 6000 * 6000 * 4, kSlack = std::size_t{32} << 20;
    const std::size_t empty = tool({"convert", picture(), "-o", file("out.ppm")}).peak;
    ASSERT_EQ(shell("(printf 'P6 6000 6000 255 '; head -c 108000000 /dev/zero) >large.ppm").status, 0);
    const Ending made = tool({"convert", file("large.ppm"), "-o", file("a.webp"), "--quality", "50"});
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_LT(made.peak - empty, kPicture * 14 / 10 + kSlack) << "planes of 1.5 bytes a pixel";
    const Ending run = tool({"convert", file("a.webp"), "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_LT(run.peak - empty, kPicture * 12 / 10 + kSlack);
}
#endif

// A file in several scans is held as coefficients, two bytes each.
TEST_F(ToolLimits, ProgressiveFilesTakeTheirCoefficientsBesides) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer keeps what is free";
#endif
    constexpr unsigned kSide = 3000;
    constexpr std::size_t kPixels = std::size_t{kSide} * kSide, kSlack = std::size_t{32} << 20;
    const std::size_t empty = tool({"convert", picture(), "-o", file("out.ppm")}).peak;
    host::JpegSample sample{kSide, kSide, host::JpegColors::ycc, std::vector<std::uint8_t>(kPixels * 3, 99)};
    sample.progressive = true;
    const std::vector<std::uint8_t> bytes = host::jpeg_file(sample);
    const Ending run = tool({"convert", text_file("a.jpg", {bytes.begin(), bytes.end()}), "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_LT(run.peak - empty, kPixels * 4 * 12 / 10 + kPixels * 3 * 2 + kSlack);
}

// A file's claim costs nothing before its pixels come.
TEST_F(ToolLimits, ClaimsCostNothing) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer keeps what is free";
#endif
    const std::size_t empty = tool({"convert", picture(), "-o", file("out.ppm")}).peak;
    constexpr std::size_t kSlack = std::size_t{8} << 20;
    // From a pipe, where nobody can count what will come.
    const Ending cut = shell("printf 'P6 16000 16000 255 abc' | tarvo convert /dev/stdin -o out.ppm");
    EXPECT_EQ(cut.status, 3);
    EXPECT_EQ(cut.err, "tarvo: /dev/stdin: cut short\n");
    EXPECT_LT(cut.peak, empty + kSlack);
    const Ending endless = tool({"convert", "/dev/zero", "-o", file("out.ppm")});
    EXPECT_EQ(endless.err, "tarvo: /dev/zero: not a picture of a known format\n");
    EXPECT_LT(endless.peak, empty + kSlack);
    std::filesystem::resize_file(text_file("sparse.trv", ""), (std::uintmax_t{1} << 31) - 1);
    const Ending sparse = tool({"convert", file("sparse.trv"), "-o", file("out.ppm")});
    EXPECT_EQ(sparse.status, 3);
    EXPECT_LT(sparse.peak, empty + kSlack);
}

}  // namespace
}  // namespace tarvo::cli
