// What programs can call stands on a page of docs/, letter by letter, and nothing else does.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "pages.h"
#include "session.h"

namespace tarvo::docs {
namespace {

using host::RegisteredClass;
using host::RegisteredMethod;

using Names = std::set<std::string>;

constexpr const char* kErrors = "docs/errors.md";

template <class Methods>
void add_declarations(Names& declarations, const Methods& methods) {
    for (const RegisteredMethod& method : methods) declarations.insert(method.declaration);
}

// "TRV_Add" of "TRV_Add(extends p as picture, ...".
std::string name_in(const std::string& declaration) { return declaration.substr(0, declaration.find('(')); }

// What a page's title names: "# TRV_Add, TRV_Subtract".
Names titled(const Page& page) {
    std::istringstream words(page.lines().front());
    Names names;
    for (std::string word; words >> word;) {
        if (word.back() == ',') word.pop_back();
        names.insert(word);
    }
    names.erase("#");
    return names;
}

// Every entry that only one of the two has is a failure.
void expect_same(const Names& there, const Names& on_page, const std::string& page) {
    for (const std::string& entry : there) EXPECT_TRUE(on_page.contains(entry)) << page << " lacks: " << entry;
    for (const std::string& entry : on_page)
        EXPECT_TRUE(there.contains(entry)) << page << " has what the plugin has not: " << entry;
}

TEST(Pages, DeclareEveryOperationOnceAndNoOther) {
    std::map<std::string, Names> declared, expected;  // by page
    std::map<std::string, std::string> page_of;       // by name
    const auto read = [&](const Page& page, std::string_view heading) {
        for (const std::string& declaration : page.code_under(heading)) {
            EXPECT_TRUE(declared[page.name()].insert(declaration).second)
                << page.name() << " has twice: " << declaration;
            const auto [place, is_new] = page_of.emplace(name_in(declaration), page.name());
            EXPECT_EQ(place->second, page.name()) << "declares it too: " << declaration;
        }
    };
    read(Page(kErrors), "# Errors");
    for (const Page& page : operation_pages()) read(page, "## Declarations");

    test::Session session;
    Names registered;
    add_declarations(registered, session.host.registry().methods());
    for (const RegisteredClass& extension : session.host.registry().extensions())
        add_declarations(registered, extension.methods);
    for (const std::string& declaration : registered) {
        const std::string name = name_in(declaration);
        expected[page_of.emplace(name, "docs/ops/" + name + ".md").first->second].insert(declaration);
    }

    for (const auto& [page, declarations] : declared) expected[page];
    for (const auto& [page, declarations] : expected) expect_same(declarations, declared[page], page);
}

TEST(Pages, HaveTheNamesOfWhatTheyDeclareInTheTitle) {
    for (const Page& page : operation_pages()) {
        Names names;
        for (const std::string& declaration : page.code_under("## Declarations")) names.insert(name_in(declaration));
        EXPECT_EQ(titled(page), names) << page.name();
        EXPECT_TRUE(names.contains(std::filesystem::path(page.name()).stem())) << page.name();
    }
}

TEST(Pages, ShowEveryClassWithItsMembersAndNoOther) {
    test::Session session;
    Names classes, pages;
    for (const RegisteredClass& cls : session.host.registry().classes()) classes.insert(cls.name);
    for (const Page& page : pages_in("docs/classes")) {
        pages.merge(titled(page));
        const RegisteredClass* cls =
            session.host.registry().find_class(std::filesystem::path(page.name()).stem().string());
        ASSERT_TRUE(cls) << page.name() << " has what the plugin has not: that class";

        Names methods, properties, properties_on_page;
        add_declarations(methods, cls->methods);
        const std::vector<std::string> code = page.code_under("## Methods");
        expect_same(methods, {code.begin(), code.end()}, page.name());

        for (const host::RegisteredProperty& property : cls->properties) properties.insert(property.name);
        for (const std::string& line : page.under("## Properties")) {
            if (!line.starts_with("| `")) continue;
            for (std::string& name : code_in(line.substr(0, line.find('|', 1)))) properties_on_page.insert(name);
        }
        expect_same(properties, properties_on_page, page.name());
    }
    expect_same(classes, pages, "docs/classes");
}

TEST(Pages, OfOperationsAreDividedAlike) {
    const std::vector<std::string> sections = {
        "## Arguments", "## Errors", "## Good to know", "## Exactly", "## Declarations", "## Depths, masks and edges",
    };
    for (const Page& page : operation_pages()) {
        std::vector<std::string> headings;
        for (const std::string& heading : page.headings())
            if (heading.starts_with("## ")) headings.push_back(heading);
        EXPECT_EQ(headings, sections) << page.name();
    }
}

// What stands above the sections: one sentence, pictures, and then a command to copy.
TEST(Pages, OfOperationsBeginWithPurposePicturesAndCommand) {
    for (const Page& page : operation_pages()) {
        std::string beginning;
        for (const std::string& line : page.under(page.lines().front())) {
            const char* const kind = line.empty()                     ? ""
                                     : line.starts_with("![")         ? "picture "
                                     : line.starts_with("    tarvo ") ? "command "
                                                                      : "text ";
            if (line.starts_with("```") || beginning.ends_with("command ")) break;
            if (!beginning.ends_with(kind)) beginning += kind;
        }
        EXPECT_TRUE(beginning == "text picture command " || beginning == "text command ") << page.name() << beginning;
        const std::string& purpose = page.lines().at(2);
        EXPECT_TRUE(purpose.ends_with('.') && purpose.find(". ") == purpose.npos && page.lines().at(3).empty())
            << page.name() << " does not begin with one sentence: " << purpose;
    }
}

TEST(Pages, ListEveryErrorWithItsTextAndNoOther) {
    test::Session session;
    Names known, listed;
    for (int code = -1000; code <= 1000; ++code) {
        const std::string text = session.error_message(code);
        if (text != session.error_message(-1)) known.insert("| " + std::to_string(code) + " | " + text + " |");
    }
    for (const std::string& line : Page(kErrors).under("# Errors"))
        if (line.starts_with("| ") && line != "| code | text |" && line != "| --- | --- |") listed.insert(line);
    EXPECT_FALSE(known.empty());
    expect_same(known, listed, kErrors);
}

TEST(Pages, ShowTheProgramWithAHostAsItIs) {
    const char* const program = "examples/host/contrast.cpp";
    EXPECT_EQ(Page("docs/host.md").code_under("### A program"), Page(program).lines()) << "docs/host.md: " << program;
}

}  // namespace
}  // namespace tarvo::docs
