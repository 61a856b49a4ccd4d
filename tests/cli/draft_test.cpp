// Drafts: JPEG files that are decoded at less than their size.

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tool.h"

namespace tarvo::cli {
namespace {

class Drafts : public ToolTest {
protected:
    // A soft ramp, of a size that is no multiple of eight.
    std::string photograph() {
        std::vector<std::uint32_t> colors;
        for (std::uint32_t y = 0; y < 301; ++y)
            for (std::uint32_t x = 0; x < 403; ++x) colors.push_back((x / 2) << 16 | (y / 2) << 8 | (x + y) / 4);
        const std::string source = ppm("ramp.ppm", 403, 301, colors);
        EXPECT_EQ(tool({"convert", source, "-o", file("photo.jpg")}).status, 0);
        return file("photo.jpg");
    }
    // The eighths of its size that a file is decoded in for such calls; 8 where nothing is told.
    int eighths_for(const std::vector<std::string>& calls, const std::string& input = "photo.jpg") {
        std::vector<std::string> words = {"apply", "-q", "--draft", "--strip", file(input)};
        words.insert(words.end(), calls.begin(), calls.end());
        words.insert(words.end(), {"-o", file("draft.ppm")});
        const Ending run = tool(words);
        EXPECT_EQ(run.status, 0) << run.err;
        words.erase(words.begin() + 2);
        words.back() = file("whole.ppm");
        EXPECT_EQ(tool(words).status, 0);
        EXPECT_EQ(colors_of(file("draft.ppm")).size(), colors_of(file("whole.ppm")).size());
        const std::string start = "note: " + file(input) + " is decoded at ";
        if (run.err.empty()) {
            EXPECT_EQ(bytes_of(file("draft.ppm")), bytes_of(file("whole.ppm")));
            return 8;
        }
        EXPECT_EQ(run.err, start + run.err[start.size()] +
                               "/8 of its size, for a draft: pixels differ from those of the whole\n");
        EXPECT_NE(bytes_of(file("draft.ppm")), bytes_of(file("whole.ppm")));
        return run.err[start.size()] - '0';
    }
    // By how much channels of the draft and of the whole differ at most.
    int farthest() const {
        const auto draft = colors_of(file("draft.ppm")), whole = colors_of(file("whole.ppm"));
        int most = 0;
        for (std::size_t i = 0; i < draft.size(); ++i)
            for (const int shift : {0, 8, 16})
                most = std::max(most, std::abs(static_cast<int>(draft[i] >> shift & 255) -
                                               static_cast<int>(whole[i] >> shift & 255)));
        return most;
    }
};

TEST_F(Drafts, AreNoSmallerThanTheFirstCallNeeds) {
    photograph();
    EXPECT_EQ(eighths_for({"Stretch(50, 30)"}), 1);
    EXPECT_LE(farthest(), 12);
    EXPECT_EQ(eighths_for({"Stretch(51, 38)"}), 1);  // sides are rounded up
    EXPECT_EQ(eighths_for({"Stretch(52, 38)"}), 2);
    EXPECT_EQ(eighths_for({"Stretch(10, 113)"}), 3);
    EXPECT_EQ(eighths_for({"Stretch(2 * 100, 150)"}), 4);
    EXPECT_EQ(eighths_for({"Stretch(353, 264)"}), 7);
    EXPECT_EQ(eighths_for({"Stretch(354, 100)"}), 8);
    EXPECT_EQ(eighths_for({"Stretch(fit(400, 60))"}), 2);
    EXPECT_EQ(eighths_for({"Stretch(height = 20, width = 20)", "Stretch(width * 20, height * 20)"}), 1);
}

TEST_F(Drafts, AreOnlyOfCallsThatScaleToATextsSize) {
    photograph();
    for (const char* call : {"Stretch(width / 10, 20)", "Stretch(fit(width / 10))", "Stretch(2000, 20)",
                             "ShearHorizontal(50, 50, 0.25, frame_color = &cFFFFFF)",
                             "Trim(rect(0, 0, 20, 20), &c000000)", "Downsample(4)"})
        EXPECT_EQ(eighths_for({call}), 8) << call;
    EXPECT_EQ(eighths_for({"RowBytes()", "Stretch(20, 20)"}), 8);
    EXPECT_EQ(eighths_for({"Stretch(20, 20)"}, "ramp.ppm"), 8);  // no JPEG file
    EXPECT_EQ(tool({"apply", "--draft", file("photo.jpg"), "Stretch(20", "-o", file("none.ppm")}).status, 2);
}

TEST_F(Drafts, OfTurnedFilesAreMeasuredAsTheyAreSeen) {
    std::string bytes = bytes_of(photograph());
    const std::string exif(
        "\xFF\xE1\0\x22"
        "Exif\0\0MM\0*\0\0\0\x8\0\1\1\x12\0\3\0\0\0\1\0\6\0\0\0\0\0\0",
        36);
    bytes.insert(2, exif);
    text_file("turned.jpg", bytes);
    EXPECT_EQ(eighths_for({"Stretch(38, 51)"}, "turned.jpg"), 1);
    EXPECT_EQ(eighths_for({"Stretch(51, 38)"}, "turned.jpg"), 2);
}

TEST_F(Drafts, AreLossesForPrograms) {
    photograph();
    const Ending told = shell("tarvo apply --draft photo.jpg photo.jpg 'Stretch(20, 20)' --json -o '{n}.ppm'");
    EXPECT_EQ(told.status, 0);
    const auto line = nlohmann::json::parse(told.out.substr(0, told.out.find('\n')));
    ASSERT_EQ(line["losses"].size(), 1u);
    EXPECT_NE(line["losses"].dump().find("pixels differ"), std::string::npos);
    EXPECT_EQ(shell("tarvo apply --draft photo.jpg 'Stretch(20, 20)' -o x.ppm --losses=error").status, 1);
    EXPECT_EQ(shell("tarvo apply -q --client --draft photo.jpg 'Stretch(20, 20)' -o client.ppm").err, "");
    EXPECT_FALSE(exists("x.ppm"));
}

}  // namespace
}  // namespace tarvo::cli
