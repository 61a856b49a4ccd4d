// The tables and the registry tell of the same operations, and what the tables say hangs together.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "described_forms.h"
#include "wording.h"

namespace tarvo::test {
namespace {

using describe::Text;

class Tables : public testing::Test {
protected:
    Session session;
    reference::Reference reference{session.caller};
};

TEST_F(Tables, EveryRegisteredNameIsDescribedAndNothingElse) {
    std::set<Text> registered, described;
    for (const host::Callable& each : session.caller.callables())
        if (each.owner.empty() || each.extends()) registered.insert(each.declaration.name);
    for (const describe::Family* family : describe::families())
        for (const describe::Operation& each : family->operations)
            EXPECT_TRUE(described.insert(each.name).second) << each.name << " is described twice";
    EXPECT_EQ(described, registered);
}

TEST_F(Tables, EveryClassAndMemberIsDescribedAndNothingElse) {
    std::set<std::string> registered, described;
    for (const host::RegisteredClass& cls : session.host.registry().classes()) {
        registered.insert(cls.name);
        for (const auto& each : cls.properties) registered.insert(cls.name + "." + each.name);
        for (const auto& each : cls.methods)
            registered.insert(cls.name + "." + each.declaration.substr(0, each.declaration.find('(')) + "()");
    }
    for (const describe::Class* cls : describe::classes()) {
        const std::string name(cls->name);
        described.insert(name);
        for (const describe::Property& each : cls->properties) described.insert(name + "." + std::string(each.name));
        for (const describe::Operation& each : cls->methods)
            EXPECT_TRUE(described.insert(name + "." + std::string(each.name) + "()").second) << each.name;
    }
    EXPECT_EQ(described, registered);
}

TEST_F(Tables, EveryDeclarationIsAForm) {
    std::set<std::string> declared, forms;
    for (const host::Callable& each : session.caller.callables()) declared.insert(full_declaration(each));
    for (const DescribedForm& each : all_forms(reference)) forms.insert(full_declaration(each.callable()));
    // What is registered with the class of pictures, and without an object once more, is one form.
    std::erase_if(declared, [&](const std::string& each) { return forms.contains("picture." + each); });
    EXPECT_EQ(forms, declared);
}

TEST_F(Tables, ArgumentsAreThoseOfTheDeclarationsInTheirOrder) {
    for (const DescribedForm& form : all_forms(reference)) {
        std::vector<std::string> declared, described;
        for (const host::Parameter& each : form.callable().declaration.parameters)
            if (!each.extends) declared.push_back((each.by_ref ? "ByRef " : "") + each.name);
        for (const reference::Argument& each : form.operation.arguments)
            if (form.has(each.forms))
                described.push_back((each.by_ref ? "ByRef " : "") + std::string(each.about->name));
        EXPECT_EQ(described, declared) << form.form().declaration();
    }
}

TEST_F(Tables, EveryDescribedArgumentIsDeclared) {
    const auto check = [](const reference::Operation& operation) {
        for (const describe::Argument& each : operation.about->arguments)
            EXPECT_TRUE(std::ranges::any_of(operation.arguments, [&](const auto& used) { return used.about == &each; }))
                << operation.about->name << ": " << each.name;
    };
    for (const reference::Operation& each : reference.operations()) check(each);
    for (const reference::Class& cls : reference.classes())
        for (const reference::Operation& each : cls.methods) check(each);
}

TEST_F(Tables, DeclaredDefaultsStandForWhatIsLeftOut) {
    int defaults = 0;
    for (const DescribedForm& form : all_forms(reference))
        for (const host::Parameter& each : form.callable().parameters) {
            if (!each.default_value) continue;
            ++defaults;
            ASSERT_EQ(*each.default_value, host::Literal(false));  // the only one that there is
            EXPECT_EQ(form.argument(each)->about->left_out, "false") << form.form().declaration();
        }
    EXPECT_EQ(defaults, 1);
}

TEST_F(Tables, EveryCodeThatHasATextOrANameIsListed) {
    constexpr std::string_view kUnknown = "Unknown Error";
    std::set<int> known, listed;
    for (int code = -10; code < 200; ++code)
        if (session.error_message(code) != kUnknown) known.insert(code);
    known.insert(3);  // has no text of its own
    std::set<Text> names;
    for (const reference::Code& each : reference.codes()) {
        listed.insert(each.code);
        EXPECT_TRUE(names.insert(each.name).second) << each.name;
        EXPECT_EQ(each.text, session.error_message(each.code));
    }
    EXPECT_EQ(listed, known);
    for (const DescribedForm& form : all_forms(reference))
        for (const reference::Error& each : form.operation.errors) EXPECT_TRUE(listed.contains(each.about->code));
}

bool takes(const reference::Operation& operation, Text argument) {
    return std::ranges::any_of(operation.arguments, [&](const auto& each) { return each.about->name == argument; });
}

TEST_F(Tables, RangesHaveACodeAndCodesARange) {
    for (const DescribedForm& form : all_forms(reference)) {
        for (const reference::Argument& each : form.operation.arguments) {
            const bool bounded = each.about->minimum.given() || each.about->maximum.given();
            EXPECT_EQ(form.operation.range_error(each) != nullptr, bounded && !each.by_ref)
                << form.form().declaration() << ": " << each.about->name;
            for (const Text factor : {each.about->minimum.times, each.about->maximum.times})
                EXPECT_TRUE(factor.empty() || takes(form.operation, factor)) << factor;
        }
        for (const reference::Error& each : form.operation.errors) {
            EXPECT_FALSE(each.forms.empty()) << form.form().declaration() << ": " << each.when;
            const Text ranged = each.about->argument;
            EXPECT_TRUE(ranged.empty() || takes(form.operation, ranged)) << ranged;
        }
    }
}

TEST_F(Tables, CautionsAreOfArgumentsThatAreDescribed) {
    int cautions = 0;
    const auto check = [&](const describe::Operation& about) {
        const auto has = [&](Text name) {
            return std::ranges::find(about.arguments, name, &describe::Argument::name) != about.arguments.end();
        };
        for (const describe::Caution& each : about.cautions) {
            ++cautions;
            EXPECT_TRUE(has(each.argument)) << about.name << ": " << each.argument;
            EXPECT_FALSE(each.when.empty()) << about.name << ": " << each.text;
            for (const describe::Condition& condition : each.when)
                for (const describe::Quantity& quantity : condition.product)
                    EXPECT_TRUE(has(quantity.argument)) << about.name << ": " << quantity.argument;
        }
    };
    for (const describe::Family* family : describe::families())
        for (const describe::Operation& each : family->operations) check(each);
    for (const describe::Class* cls : describe::classes())
        for (const describe::Operation& each : cls->methods) check(each);
    EXPECT_EQ(cautions, 9);
}

bool in_small_letters(Text text) {
    return std::ranges::none_of(text, [](unsigned char c) { return std::isupper(c); });
}

// One line, without marks or blanks around it.
bool is_plain(Text text) {
    return !text.empty() && text.front() != ' ' && text.back() != ' ' && text.find_first_of("`*\n\t") == Text::npos;
}

TEST_F(Tables, TextsAreThereAndPlain) {
    const auto check_words = [](Text name, const auto& words) {
        std::set<Text> once;
        EXPECT_FALSE(words.empty()) << name;
        for (const Text word : words) {
            EXPECT_TRUE(is_plain(word) && in_small_letters(word)) << name << ": " << word;
            EXPECT_TRUE(once.insert(word).second) << name << " goes by " << word << " twice";
        }
    };
    const auto check = [&](const describe::Operation& about) {
        EXPECT_TRUE(is_plain(about.summary) && about.summary.back() != '.') << about.name;
        check_words(about.name, about.words);
        for (const auto& each : about.arguments) EXPECT_TRUE(is_plain(each.text)) << about.name << ": " << each.name;
        for (const auto& each : about.errors)
            EXPECT_TRUE(is_plain(each.when) || !each.argument.empty()) << about.name << ": " << each.code;
        for (const Text note : about.notes) EXPECT_TRUE(is_plain(note) && note.back() == '.') << note;
        for (const auto& each : about.cautions)
            EXPECT_TRUE(is_plain(each.text) && each.text.back() != '.') << each.text;
    };
    for (const describe::Family* family : describe::families())
        for (const describe::Operation& each : family->operations) check(each);
    for (const describe::Class* cls : describe::classes()) {
        EXPECT_TRUE(is_plain(cls->summary));
        check_words(cls->name, cls->words);
        for (const describe::Property& each : cls->properties) EXPECT_TRUE(is_plain(each.text)) << each.name;
        for (const describe::Operation& each : cls->methods) check(each);
        for (const Text note : cls->notes) EXPECT_TRUE(is_plain(note) && note.back() == '.') << note;
    }
}

TEST(Wording, SaysRangesInWords) {
    using describe::excluding, describe::including;
    const auto wording = [](describe::Bound low, describe::Bound high) {
        const describe::Argument argument{.name = "x", .minimum = low, .maximum = high};
        return reference::range_text(argument) + "; " + reference::beyond_text(argument);
    };
    EXPECT_EQ(wording(including(0), including(1)), "0 to 1; x is below 0 or above 1");
    EXPECT_EQ(wording(including(0), excluding(0.5)), "0 to below 0.5; x is below 0, or 0.5 or above");
    EXPECT_EQ(wording(excluding(-360), excluding(360)), "above -360, below 360; x is -360 or below, or 360 or above");
    EXPECT_EQ(wording(excluding(-1), including(1)), "above -1, 1 and below; x is -1 or below, or above 1");
    EXPECT_EQ(wording(including(1), {}), "1 and above; x is below 1");
    EXPECT_EQ(wording(excluding(1), {}), "above 1; x is 1 or below");
    EXPECT_EQ(wording({}, including(1000)), "1000 and below; x is above 1000");
    EXPECT_EQ(wording({}, excluding(2, "y")), "below 2 * y; x is 2 * y or above");
    EXPECT_EQ(reference::range_text({.name = "x"}), "");
}

}  // namespace
}  // namespace tarvo::test
