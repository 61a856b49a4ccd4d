// The binding to a host that the test plays itself: what is looked up, and what happens when there is nothing.

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host_services.h"
#include "platform.h"
#include "plugin_entry.h"
#include "processor.h"
#include "registration_tables.h"

namespace {

// What the resolver has, and what it was asked for.
std::map<std::string_view, void*> services;
std::vector<std::string> asked;
std::vector<std::string> registered;
void* registered_function = nullptr;

void* resolve(const char* name) {
    asked.emplace_back(name);
    const auto found = services.find(name);
    return found == services.end() ? nullptr : found->second;
}

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

void* callback(const char* name) { return std::string_view(name) == "ResolverPPC" ? address(resolve) : nullptr; }
void* empty_callback(const char*) { return nullptr; }
double version_2005() { return 2005.0; }
void* throwing_callback(const char*) { throw std::runtime_error("no service today"); }
void register_method(const REALmethodDefinition* method) {
    registered.emplace_back(method->declaration);
    registered_function = method->function;
}

class Binding : public ::testing::Test {
protected:
    Binding() {
        services.clear();
        asked.clear();
        registered.clear();
    }
    ~Binding() override {
        gResolver = nullptr;
        gResolverPPC = nullptr;
    }
};

TEST_F(Binding, AHostWithoutCallbackOrResolverIsRefusedInSilence) {
    EXPECT_EQ(REALPluginMain(nullptr), 0);
    EXPECT_EQ(HCallResolver("REALBuildString"), nullptr);
    EXPECT_EQ(REALPluginMain(empty_callback), 0);
    EXPECT_EQ(HCallResolver("REALBuildString"), nullptr);
    EXPECT_EQ(REALPluginMain(callback), 0);  // a resolver that knows nothing
    EXPECT_EQ(asked.front(), "RegisterPluginVersion");
}

TEST_F(Binding, AHostThatThrowsIsRefused) {
    EXPECT_EQ(REALPluginMain(throwing_callback), 0);
    EXPECT_TRUE(asked.empty());
}

TEST_F(Binding, NothingIsThereWithoutAHost) {
    // Services that no test of this program has found before.
    EXPECT_EQ(REALNewMemoryBlock(4), nullptr);
    EXPECT_EQ(REALMemoryBlockGetPtr(nullptr), nullptr);
    EXPECT_EQ(REALFolderItemFromFSSpec(nullptr), nullptr);
    EXPECT_EQ(REALGetArrayUBound(nullptr), 0);
    EXPECT_EQ(REALGetArrayInt(nullptr, 0), 0);
    EXPECT_EQ(REALCString(nullptr), nullptr);
    EXPECT_EQ(REALBuildPictureFromBuffer(1, 1, pixelTypeXRGB32, nullptr, 4), nullptr);
    EXPECT_EQ(REALGetClassData(nullptr, nullptr), nullptr);
}

TEST_F(Binding, ALookupThatFailsIsTriedAgainAndOneThatSucceedsIsKept) {
    gResolverPPC = resolve;
    static int calls = 0;
    REALFolderItemFromFSSpec(nullptr);
    REALFolderItemFromFSSpec(nullptr);
    EXPECT_EQ(asked.size(), 2u);
    services["FolderItemFromFSSpec"] = address(+[](const FSSpec*) -> REALobjectStruct* {
        ++calls;
        return nullptr;
    });
    for (int i = 0; i < 3; ++i) REALFolderItemFromFSSpec(nullptr);
    EXPECT_EQ(asked.size(), 3u);
    EXPECT_EQ(calls, 3);
}

TEST_F(Binding, NoInstanceOfANullClassReferenceIsAskedFor) {
    gResolverPPC = resolve;
    EXPECT_EQ(REALnewInstance(static_cast<REALclassRefStruct*>(nullptr)), nullptr);
    EXPECT_TRUE(asked.empty());
}

TEST_F(Binding, TheProcessorIsAskedAtStart) {
    services["REALGetRBVersion"] = address(version_2005);
    gTRV_HasMMX = gTRV_HasAltiVec = 7;
    REALPluginMain(callback);
    std::int32_t features = 0;
    ASSERT_EQ(Gestalt(gestaltPowerPCProcessorFeatures, &features), noErr);
    EXPECT_EQ(gTRV_HasAltiVec, features >> 4 & 1);
    EXPECT_EQ(gTRV_HasMMX, 0);
}

TEST_F(Binding, TheSecondEntryRoutineWouldRegisterTheArchitecture) {
    gResolverPPC = resolve;
    services["PluginRegisterMethod"] = address(register_method);
    PluginEntryXX();
    EXPECT_EQ(registered, std::vector<std::string>{"CurrentArchitecture() as Integer"});
    EXPECT_EQ(reinterpret_cast<int (*)()>(registered_function)(), 0);
}

TEST_F(Binding, ConsoleSafetyIsAFlagOfTheClass) {
    REALclassDefinition definition = {};
    definition.flags = 1;
    SetClassConsoleSafe(&definition);
    EXPECT_EQ(definition.flags, 5);
}

TEST_F(Binding, OldRecordsHaveThreeWords) {
    const REALmethodDefinition methods[] = {{address(version_2005), address(resolve), "A()", 4},
                                            {address(register_method), nullptr, "B()", 0}};
    REALclassDefinition definition = {};
    definition.methods = methods;
    definition.methodCount = 2;
    ConvertCurrentMethodsToV6(&definition);
    const auto* const old = static_cast<const REALmethodDefinitionV6*>(definition.methods);
    ASSERT_EQ(definition.methodCount, 2);
    EXPECT_EQ(old[0].function, address(version_2005));
    EXPECT_EQ(old[0].setter, address(resolve));
    EXPECT_STREQ(old[0].declaration, "A()");
    EXPECT_EQ(old[1].function, address(register_method));
    EXPECT_STREQ(old[1].declaration, "B()");
}

TEST_F(Binding, ClassesWithoutMethodsStayAsTheyAre) {
    const REALmethodDefinition method = {address(version_2005), nullptr, "A()", 0};
    for (const REALword count : {0, -1}) {
        REALclassDefinition definition = {};
        definition.methods = &method;
        definition.methodCount = count;
        ConvertCurrentMethodsToV6(&definition);
        EXPECT_EQ(definition.methods, &method);
        EXPECT_EQ(definition.methodCount, count);
    }
}

TEST_F(Binding, WithoutMemoryForOldRecordsThereAreNoMethods) {
    const REALmethodDefinition method = {address(version_2005), nullptr, "A()", 0};
    REALclassDefinition definition = {};
    definition.methods = &method;
    definition.methodCount = std::numeric_limits<std::int32_t>::max() / REALword{sizeof(REALmethodDefinitionV6)} + 1;
    ConvertCurrentMethodsToV6(&definition);
    EXPECT_EQ(definition.methods, nullptr);
    EXPECT_EQ(definition.methodCount, 0);
}

TEST_F(Binding, NullStringsAreEmpty) {
    EXPECT_EQ(REALstringStruct::Length(nullptr), 0);
    EXPECT_STREQ(REALstringStruct::CString(nullptr), "");
    const REALstringStruct without_bytes = {1, 0, nullptr};
    EXPECT_STREQ(REALstringStruct::CString(&without_bytes), "");
    const REALstringStruct text = {1, 2, "\2ab"};
    EXPECT_EQ(REALstringStruct::Length(&text), 2);
    EXPECT_STREQ(REALstringStruct::CString(&text), "ab");
}

}  // namespace
