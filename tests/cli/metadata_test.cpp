// What photographs carry, and what is done about losses, by the tool's options.

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tool.h"
#include "watched.h"

namespace tarvo::cli {
namespace {

class Photographs : public ToolTest {
protected:
    // Exif, XMP, IPTC, a profile and a resolution, told by their marks in a JPEG file.
    std::string carried_by(const std::string& name) const {
        const std::string bytes = bytes_of(file(name));
        std::string found;
        for (const char* mark : {"Exif", "http://ns.adobe.com/xap", "Photoshop 3.0", "ICC_PROFILE"})
            found += bytes.find(mark) != std::string::npos ? mark[0] : '-';
        return found + (bytes[13] != 0 ? 'r' : '-');
    }
    static std::string segment(char marker, const std::string& contents) {
        const std::size_t length = contents.size() + 2;
        return std::string{'\xFF', marker, static_cast<char>(length >> 8), static_cast<char>(length)} + contents;
    }
    // A photograph that carries everything, of that quality.
    std::string photograph(const std::string& quality = "92") {
        const std::string colors = ppm("colors.ppm", 2, 2, {0x102030, 0x405060, 0x708090, 0xA0B0C0});
        EXPECT_EQ(tool({"convert", colors, "--quality", quality, "-o", file("plain.jpg")}).status, 0);
        std::string bytes = bytes_of(file("plain.jpg"));
        bytes[13] = 1;
        bytes[15] = bytes[17] = 72;
        std::string profile(148, '\0');
        profile[3] = static_cast<char>(148);
        profile.replace(16, 4, "RGB ").replace(36, 4, "acsp").replace(131, 1, "\1").replace(132, 4, "desc");
        profile[139] = static_cast<char>(144);
        profile[143] = 4;
        bytes.insert(20, segment('\xE1', std::string("Exif\0\0MM\0*\0\0\0\0", 14)) +
                             segment('\xE1', std::string("http://ns.adobe.com/xap/1.0/\0<x/>", 33)) +
                             segment('\xED', std::string("Photoshop 3.0\0"
                                                         "8BIM\4\4\0\0\0\0\0\2\x1C\2",
                                                         28)) +
                             segment('\xE2', std::string("ICC_PROFILE\0\1\1", 14) + profile));
        return text_file("photo.jpg", bytes);
    }
};

TEST_F(Photographs, KeepWhatTheyCarryUnlessTold) {
    const std::string photo = photograph();
    const struct {
        std::vector<std::string> options;
        const char* kept;
    } cases[] = {
        {{}, "EhPIr"},
        {{"--keep", "exif,xmp,iptc,icc"}, "EhPIr"},
        {{"--keep", "exif"}, "E---r"},
        {{"--keep=xmp,icc"}, "-h-Ir"},
        {{"--keep", "iptc"}, "--P-r"},
        {{"--strip"}, "-----"},
    };
    for (const auto& each : cases) {
        std::vector<std::string> convert = {"convert", photo, "-o", file("out.jpg")};
        convert.insert(convert.end(), each.options.begin(), each.options.end());
        const Ending ended = tool(convert);
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.err, "");
        EXPECT_EQ(carried_by("out.jpg"), each.kept);
        std::vector<std::string> apply = {"apply", photo, "Stretch(4, 4)", "-o", file("out.jpg")};
        apply.insert(apply.end(), each.options.begin(), each.options.end());
        EXPECT_EQ(tool(apply).status, 0);
        EXPECT_EQ(carried_by("out.jpg"), each.kept);
    }
    EXPECT_EQ(tool({"convert", photo, "--keep", "gps", "-o", file("none.jpg")}).status, 2);
    EXPECT_EQ(tool({"convert", photo, "--keep", "exif", "--strip", "-o", file("none.jpg")}).status, 2);
    EXPECT_FALSE(exists("none.jpg"));
}

TEST_F(Photographs, LossesAreToldOrEndTheWorkOrAreIgnored) {
    const std::string photo = photograph(), out = file("out.ppm");
    const std::string metadata = out + " has no room for Exif, XMP, IPTC and the resolution: they are left out",
                      profile = out + " has no room for the color profile: it is left out";
    const std::string notes = "note: " + metadata + "\nnote: " + profile + "\n";
    EXPECT_EQ(tool({"convert", photo, "-o", out}).err, notes);
    EXPECT_EQ(tool({"apply", "-q", photo, "Stretch(4, 4)", "-o", out}).err, notes);
    EXPECT_EQ(tool({"apply", "-q", photo, "Stretch(4, 4)", "-o", out, "--losses=warn"}).err, notes);
    const Ending ignored = tool({"convert", photo, "-o", out, "--losses=ignore"});
    EXPECT_EQ(ignored.status, 0);
    EXPECT_EQ(ignored.err, "");
    EXPECT_EQ(tool({"convert", photo, "-o", out, "--losses=error", "--strip"}).status, 0);
    const std::string before = bytes_of(out);
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"convert", photo}, std::vector<std::string>{"apply", photo, "Stretch(4, 4)"}}) {
        std::vector<std::string> all = words;
        all.insert(all.end(), {"--losses=error", "-o", out});
        const Ending refused = tool(all);
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.err, "tarvo: " + metadata + " (--losses=error)\n");
        EXPECT_EQ(bytes_of(out), before);
        EXPECT_EQ(entries().size(), 4u);  // no part of a file is left either
    }
    EXPECT_EQ(tool({"convert", photo, "--losses=maybe", "-o", out}).status, 2);
}

TEST_F(Photographs, OfJpegFilesKeepTheirQualityUnlessTold) {
    const std::string photo = photograph("37");
    EXPECT_EQ(tool({"convert", photo, "--strip", "-o", file("same.jpg")}).status, 0);
    EXPECT_EQ(tool({"convert", photo, "--strip", "--quality", "37", "-o", file("told.jpg")}).status, 0);
    EXPECT_EQ(tool({"convert", photo, "--strip", "--quality", "90", "-o", file("other.jpg")}).status, 0);
    EXPECT_EQ(bytes_of(file("same.jpg")), bytes_of(file("told.jpg")));
    EXPECT_NE(bytes_of(file("same.jpg")), bytes_of(file("other.jpg")));
    for (const char* wrong : {"0", "101", "-1", "best"})
        EXPECT_EQ(tool({"convert", photo, "--quality", wrong, "-o", file("none.jpg")}).status, 2) << wrong;
}

TEST_F(Photographs, ProfilesThatCannotBeUsedForSrgbAreTold) {
    const std::string photo = photograph();
    const Ending ended = tool({"convert", photo, "--srgb", "-o", file("out.jpg")});
    if (ended.status == 3) GTEST_SKIP() << "this build has no library for color profiles";
    EXPECT_EQ(ended.err, "note: " + photo + " has a color profile that cannot be used: colors are taken for sRGB's\n");
    EXPECT_EQ(carried_by("out.jpg"), "EhP-r");
}

TEST_F(Photographs, ComeFromAndGoToStandardStreams) {
    photograph();
    EXPECT_EQ(shell("tarvo convert photo.jpg -o a.png && tarvo convert - --format png -o - <photo.jpg >b.png").status,
              0);
    EXPECT_EQ(bytes_of(file("a.png")), bytes_of(file("b.png")));
    EXPECT_EQ(shell("tarvo convert a.png -o a.trv; tarvo convert a.png -o - --format trv | cmp - a.trv").status, 0);
    const Ending piped = shell(
        "cat photo.jpg | tarvo apply - 'Stretch(4, 4)' 'RowBytes()' -o - --format=jpg | tarvo convert - -o c.ppm "
        "--strip");
    EXPECT_EQ(piped.status, 0);
    EXPECT_EQ(piped.out, "");
    EXPECT_NE(piped.err.find("TRV_RowBytes = 16\n"), std::string::npos);
    EXPECT_EQ(colors_of(file("c.ppm")).size(), 16u);
    EXPECT_EQ(shell("tarvo convert - -o none.png </dev/null").err, "tarvo: /dev/stdin: empty\n");
    EXPECT_EQ(shell(": | tarvo convert - -o none.png").status, 3);
    EXPECT_EQ(shell("head -c 100 photo.jpg | tarvo convert - -o none.png").status, 3);
    EXPECT_EQ(shell("tarvo convert photo.jpg -o - --format png >/dev/full").status, 3);
    EXPECT_EQ(shell("tarvo convert photo.jpg -o -").status, 2);
    EXPECT_EQ(shell("tarvo convert photo.jpg -o none.png --format png").status, 2);
    EXPECT_EQ(shell("tarvo convert photo.jpg -o - --format exe").status, 2);
    EXPECT_EQ(shell("tarvo apply photo.jpg 'Stretch(4, 4)' --format png").status, 2);
    EXPECT_FALSE(exists("none.png"));
}

// Many files, with the options of photographs.
class ManyPhotographs : public Photographs {
protected:
    using Json = nlohmann::json;

    // Every third of them carries nothing.
    void make(int count) {
        const std::string photo = photograph("81"), plain = file("plain.jpg");
        std::filesystem::create_directory(folder() / "in");
        for (int i = 0; i < count; ++i) std::filesystem::create_hard_link(i % 3 == 2 ? plain : photo, file(name_of(i)));
    }
    static std::string name_of(int number) { return "in/" + std::to_string(1000 + number) + ".jpg"; }

    // What is told of the files, without what no two runs have alike.
    static std::vector<Json> lines_of(const Ending& run) {
        std::istringstream lines(run.out);
        std::vector<Json> all;
        for (std::string line; std::getline(lines, line);) {
            all.push_back(Json::parse(line));
            all.back().erase("milliseconds");
        }
        return all;
    }
};

TEST_F(ManyPhotographs, AreMadeAsEachAlone) {
    make(4);
    for (const std::string options :
         {"", "--strip", "--keep exif,icc", "--quality 30", "--keep xmp --quality 60", "--srgb", "--srgb --strip"}) {
        SCOPED_TRACE(options);
        for (const std::string ending : {".jpg", ".png", ".ppm"}) {
            const std::string work = " 'Stretch(3, 3)' --losses=ignore " + options;
            const Ending batch =
                shell("tarvo apply in/*.jpg" + work + " --jobs 2 --json -o 'made/{name}" + ending + "'");
            if (batch.status == 1 && batch.out.find("no library for color profiles") != std::string::npos) continue;
            ASSERT_EQ(batch.status, 0) << batch.err;
            for (int i = 0; i < 4; ++i) {
                ASSERT_EQ(shell("tarvo apply -q " + name_of(i) + work + " -o alone" + ending).status, 0);
                EXPECT_EQ(bytes_of(file("made/" + std::to_string(1000 + i) + ending)),
                          bytes_of(file("alone" + ending)));
            }
            EXPECT_EQ(lines_of(batch).back()["summary"]["done"], 4);
        }
    }
}

TEST_F(ManyPhotographs, TellTheirLossesInJson) {
    make(6);
    const std::string batch = "tarvo apply in/*.jpg 'Stretch(3, 3)' --json -o 'made/{name}.ppm' --jobs ";
    const Ending run = shell(batch + "2");
    EXPECT_EQ(run.status, 0);
    const std::vector<Json> lines = lines_of(run);
    ASSERT_EQ(lines.size(), 7u);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(lines[i]["input"], name_of(static_cast<int>(i)));
        EXPECT_EQ(lines[i]["losses"].size(), i % 3 == 2 ? 0u : 2u) << lines[i];
    }
    EXPECT_EQ(lines_of(shell(batch + "1")), lines);
    EXPECT_EQ(lines_of(shell(batch + "6")), lines);

    // As errors they end the work on their file alone.
    const Ending refused = shell("rm -r made; " + batch + "2 --losses=error --keep-going");
    EXPECT_EQ(refused.status, 1);
    const std::vector<Json> told = lines_of(refused);
    EXPECT_EQ(told.back()["summary"]["done"], 2);
    EXPECT_EQ(told.back()["summary"]["failed"], 4);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(exists("made/" + std::to_string(1000 + i) + ".ppm"), i % 3 == 2) << i;
    EXPECT_EQ(lines_of(shell(batch + "2 --strip --losses=error")).back()["summary"]["failed"], 0);
}

TEST_F(ManyPhotographs, TakeNoMoreMemoryThanAFew) {
    if (test::kAddressesWatched) GTEST_SKIP() << "the sanitizer keeps what was given back";
    make(2000);
    const auto peak = [&](int count) {
        std::string list;
        for (int i = 0; i < count; ++i) list += file(name_of(i)) + '\n';
        text_file("list", list);
        const Ending run = tool({"apply", "--jobs", "2", "--json", "--files-from", file("list"), "-o",
                                 file("made/{name}.jpg"), "Stretch(20, 20)"});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(lines_of(run).back()["summary"]["done"], count);
        return run.peak;
    };
    const std::size_t few = peak(100);
    EXPECT_LT(peak(2000), few + (std::size_t{4} << 20));
}

// TIFF files are read at any place, which pipes have not.
TEST_F(Photographs, OfTiffMayComeThroughPipesAndHavePages) {
    const std::vector<std::uint32_t> colors = {0x102030, 0x405060, 0x708090, 0xA0B0C0};
    if (tool({"convert", ppm("a.ppm", 2, 2, colors), "-o", file("a.tif")}).status != 0)
        GTEST_SKIP() << "this build has no TIFF";
    EXPECT_EQ(shell("cat a.tif | tarvo convert - -o b.ppm").err, "");
    EXPECT_EQ(colors_of(file("b.ppm")), colors);
    std::string pages = bytes_of(file("a.tif"));
    pages[pages.size() - 4] = 8;  // the place of the next directory
    text_file("pages.tif", pages);
    EXPECT_EQ(shell("tarvo convert pages.tif -o c.ppm").err,
              "note: pages.tif has further pages: only the first is read\n");
    EXPECT_EQ(colors_of(file("c.ppm")), colors);
}

}  // namespace
}  // namespace tarvo::cli
