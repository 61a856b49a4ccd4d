// tarvo list WORD, tarvo list --json and tarvo help, by the built tool.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tables.h"
#include "tool.h"

namespace tarvo::cli {
namespace {

using Json = nlohmann::json;

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class DescribingTool : public ToolTest {
protected:
    // The standard output of a run in which all goes well.
    std::string out(std::vector<std::string> arguments) const {
        const Ending run = tool(std::move(arguments));
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, "");
        return run.out;
    }
};

// --- list -----------------------------------------------------------------------------------------------------------

TEST_F(DescribingTool, ListsAllAsJsonTheSameEachTime) {
    const std::string printed = out({"list", "--json"});
    EXPECT_EQ(out({"list", "--json"}), printed);
    const Json json = Json::parse(printed);
    std::size_t described = 0;
    for (const describe::Family* family : describe::families())
        for (const describe::Operation& each : family->operations) {
            const Json& operation = json.at("operations").at(described++);
            EXPECT_EQ(operation.at("name"), each.name);
            EXPECT_EQ(operation.at("family"), family->name);
            EXPECT_EQ(operation.at("summary"), each.summary);
        }
    EXPECT_EQ(json.at("operations").size(), described);
    EXPECT_EQ(json.at("classes").size(), describe::classes().size());
    EXPECT_EQ(json.at("errors").size(), describe::error_names().size());
    EXPECT_EQ(json.at("errors").at(1).at("text"), "General Error: \"source\" parameter is nil");
}

const Json& named(const Json& all, const std::string& name) {
    for (const Json& each : all)
        if (each.at("name") == name) return each;
    throw std::runtime_error("nothing is named " + name);
}

TEST_F(DescribingTool, JsonHoldsRangesFormsAndCodes) {
    const Json json = Json::parse(out({"list", "--json"})), &operations = json.at("operations");
    const Json& hue = named(named(operations, "TRV_AdjustHSV").at("arguments"), "hue_degrees");
    EXPECT_EQ(hue.at("minimum"), -360);
    EXPECT_EQ(hue.at("exclusiveMinimum"), true);
    EXPECT_EQ(hue.at("range"), "above -360, below 360");
    EXPECT_EQ(hue.at("code"), 43);
    EXPECT_EQ(hue.at("type"), "double");
    const Json& state = named(named(operations, "TRV_CrawlingAnts").at("arguments"), "ant_state");
    EXPECT_EQ(state.at("maximum"), Json({{"factor", 2}, {"argument", "ant_size"}}));
    const Json& composite = named(operations, "TRV_Composite");
    EXPECT_EQ(composite.at("forms").size(), 3u);
    EXPECT_EQ(composite.at("forms").at(2).at("self"), "TRV_ClientPicture");
    EXPECT_EQ(composite.at("forms").at(2).at("yields"), false);
    EXPECT_EQ(named(operations, "TRV_MakeMemoryBlock").at("result"), "bytes");
    EXPECT_EQ(named(operations, "TRV_MakeMemoryBlock").at("arguments").back().at("by_ref"), true);
    EXPECT_EQ(named(operations, "TRV_MakeGradient").at("self"), "none");
    EXPECT_EQ(named(operations, "TRV_AdjustRGB_InPlace").at("result"), "none");
    EXPECT_EQ(named(operations, "TRV_AdjustRGB_InPlace").at("self"), "picture");
}

TEST_F(DescribingTool, JsonHoldsOnlyWhatThePluginHas) {
    const Json json = Json::parse(sample_tool({"list", "--json"}).out);
    std::vector<std::string> names;
    for (const Json& each : json.at("operations")) names.push_back(each.at("name"));
    EXPECT_EQ(names, (std::vector<std::string>{"TRV_ConvertToPicture", "TRV_ScreenCapture", "TRV_GetLastError",
                                               "TRV_GetErrorMessage"}));
    EXPECT_EQ(json.at("operations").at(1).at("arguments"), Json::array());  // its rectangle has another name
    EXPECT_EQ(json.at("errors").at(8).at("text"), "a mask is wrong");
}

TEST_F(DescribingTool, JsonIsOfEverything) { EXPECT_EQ(tool({"list", "--json", "blur"}).status, 2); }

TEST_F(DescribingTool, ListsWhatGoesByAWord) {
    EXPECT_EQ(out({"list", "Thumbnail"}),
              "Methods of picture\n"
              "  TRV_Stretch(extends p as picture, width as integer, height as integer, yield as integer) as picture\n"
              "      Makes a picture larger or smaller, to any width and height\n"
              "\n"
              "Methods of TRV_ClientPicture\n"
              "  TRV_Stretch(extends cp as TRV_ClientPicture, width as integer, height as integer, yield as integer, "
              "as_picture as boolean) as TRV_ClientPicture\n"
              "      Makes a picture larger or smaller, to any width and height\n");
    EXPECT_TRUE(holds(out({"list", "crop"}), "  TRV_Trim("));
    EXPECT_TRUE(holds(out({"list", "blur"}), "  TRV_Convolute("));
    EXPECT_TRUE(holds(out({"list", "blur"}), "  SetCoefficients("));  // by the class's words
    const std::string geometry = out({"list", "geometry"});
    EXPECT_TRUE(holds(geometry, "  TRV_FlipRotate(") && holds(geometry, "  TRV_Trim("));
    EXPECT_FALSE(holds(geometry, "TRV_Add("));
}

TEST_F(DescribingTool, OffersNamesForOneThatIsNone) {
    const Ending run = tool({"list", "strech"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "tarvo: nothing has \"strech\" in its name or goes by it; did you mean TRV_Stretch?\n");
    EXPECT_EQ(tool({"help", "resize"}).err,
              "tarvo: there is no operation named \"resize\"; did you mean TRV_Stretch?\n");
    EXPECT_EQ(tool({"help", "xyzzy"}).err, "tarvo: there is no operation named \"xyzzy\"\n");
    EXPECT_EQ(tool({"help", "xyzzy"}).status, 2);
    for (const char* command : {"help", "list"}) {
        EXPECT_FALSE(holds(tool({command, "\033[2Jxyzzy"}).err, "\033")) << command;
        EXPECT_LT(tool({command, std::string(100000, 'x')}).err.size(), 300u) << command;
    }
    EXPECT_EQ(tool({"help"}).status, 2);
}

// --- help -----------------------------------------------------------------------------------------------------------

TEST_F(DescribingTool, ExplainsAnOperation) {
    const std::string text = out({"help", "TRV_CrawlingAnts"});
    EXPECT_EQ(text,
              "TRV_CrawlingAnts: The dashed outline of a selection, one pixel wide, in two colours\n"
              "\n"
              "  TRV_CrawlingAnts(extends p as picture, rect as TRV_Rectangle, ant_color as color, shadow_color as\n"
              "  color, ant_size as integer, ant_state as integer) as picture\n"
              "\n"
              "Arguments:\n"
              "  rect as TRV_Rectangle  what is outlined, clipped to the picture; nil for all of it; nil when left\n"
              "                         out\n"
              "  ant_color as color     the colour of one half of the dashes\n"
              "  shadow_color as color  the colour of the other half\n"
              "  ant_size as integer    the length of a dash; 1 and above, in pixels\n"
              "  ant_state as integer   how far the dashes have crawled; 0 to below 2 * ant_size, in pixels\n"
              "\n"
              "Errors, in the order of the checks:\n"
              "  2   the source is nil\n"
              "  4   the source cannot be locked\n"
              "  38  the region is empty\n"
              "  46  ant_size is below 1\n"
              "  47  ant_state is below 0, or 2 * ant_size or above\n"
              "  46  ant_size is out of range and the region is empty\n"
              "  47  ant_state is out of range and the region is empty\n"
              "  6   the result cannot be made or locked\n"
              "\n"
              "Good to know:\n"
              "  * Called again with the next state, the dashes crawl.\n"
              "  * With an ant_size out of range the picture is made without an outline, with an ant_state out of\n"
              "    range with one.\n"
              "  * The outline's two halves begin at the top left corner and meet at the bottom right as they\n"
              "    happen to.\n"
              "\n"
              "Example:\n"
              "  tarvo apply docs/pictures/coffee.png 'TRV_CrawlingAnts(rect(64, 4, 108, 120), &cFFFFFF, &c000000, 4, "
              "0)' -o out.png\n");
    EXPECT_EQ(out({"help", "crawlingants"}), text);
    EXPECT_EQ(out({"help", "trv_CRAWLINGants"}), text);
}

TEST_F(DescribingTool, SaysWhichFormsAreMeant) {
    const std::string text = out({"help", "composite"});
    EXPECT_TRUE(holds(text, "  as_picture as boolean         back")) << text;
    EXPECT_TRUE(holds(text, "out (form 3)\n")) << text;
    EXPECT_TRUE(holds(text, "  13  the overlay is nil (forms 1, 3)\n")) << text;
    EXPECT_TRUE(holds(text, "  2   the source is nil\n")) << text;
}

TEST_F(DescribingTool, ExplainsClassesAndTheirMethods) {
    const std::string rectangle = out({"help", "rectangle"});
    EXPECT_TRUE(holds(rectangle, "TRV_Rectangle: An integer rectangle,")) << rectangle;
    EXPECT_TRUE(holds(rectangle, "\nProperties:\n  left as integer    the left edge")) << rectangle;
    EXPECT_TRUE(holds(rectangle, "\n  IsValid() as Boolean ")) << rectangle;
    EXPECT_TRUE(holds(out({"help", "TRV_ClientPicture"}), "\n  hasMask as boolean, read-only "));
    EXPECT_TRUE(holds(out({"help", "TRV_Rectangle.ScaleBy"}), "ScaleBy: Multiplies the size,"));
    EXPECT_EQ(tool({"help", "ScaleBy"}).status, 2);
}

TEST_F(DescribingTool, EverythingThatIsDescribedIsExplained) {
    for (const describe::Family* family : describe::families())
        for (const describe::Operation& each : family->operations)
            EXPECT_TRUE(holds(out({"help", std::string(each.name)}), std::string(each.name) + ": ")) << each.name;
    for (const describe::Class* each : describe::classes())
        EXPECT_TRUE(holds(out({"help", std::string(each->name)}), "\nGood to know:\n")) << each->name;
}

#ifdef TARVO_PICTURE_LIBRARIES
TEST_F(DescribingTool, ExamplesDoWhatTheySay) {
    for (const char* name : {"docs"})
        std::filesystem::create_directory_symlink(std::filesystem::path(TARVO_SOURCE_PATH) / name, file(name));
    int examples = 0;
    for (const describe::Family* family : describe::families())
        for (const describe::Operation& each : family->operations) {
            if (each.example.call.empty()) continue;
            ++examples;
            const std::string input(each.example.input);
            EXPECT_TRUE(each.example.call.starts_with(std::string(each.name) + "(")) << each.name;
            const Ending run = shell("tarvo apply " + input + " '" + std::string(each.example.call) + "'");
            EXPECT_EQ(run.status, 0) << each.example.call;
            EXPECT_TRUE(run.err.empty() || run.err == "note: no -o: nothing was written\n") << run.err;
        }
    EXPECT_GT(examples, 30);
}
#endif

}  // namespace
}  // namespace tarvo::cli
