// The parts of class records that this plugin has no use for: hosts that read them must find nothing there.

#include <gtest/gtest.h>

#include <span>
#include <string_view>
#include <vector>

#include "plugin_entry.h"
#include "registration_tables.h"

namespace {

std::vector<REALclassDefinition> g_records;  // as they were handed to the host

void take_record(REALclassDefinition* record) { g_records.push_back(*record); }
double version_2005() { return 2005.0; }

void* resolve(const char* name) {
    const std::string_view service = name;
    if (service == "REALGetRBVersion") return reinterpret_cast<void*>(&version_2005);
    const bool registers = service == "PluginRegisterClass" || service == "PluginRegisterClassExtension";
    return registers ? reinterpret_cast<void*>(&take_record) : nullptr;
}

void* callback(const char*) { return reinterpret_cast<void*>(&resolve); }

class ClassRecords : public ::testing::Test {
protected:
    ClassRecords() {
        g_records.clear();
        EXPECT_EQ(REALPluginMain(callback), 1);
        EXPECT_EQ(g_records.size(), 5u);
        g_records.push_back(TRV_Screen_Extension);
    }
};

TEST_F(ClassRecords, HoldANameDataAndMembersAlone) {
    for (const REALclassDefinition& record : g_records) {
        SCOPED_TRACE(record.name);
        EXPECT_EQ(record.superName, nullptr);
        EXPECT_EQ(record.dataOffset, 0);
        EXPECT_EQ(record.events, nullptr);
        EXPECT_EQ(record.eventCount, 0);
        EXPECT_EQ(record.eventInstances, nullptr);
        EXPECT_EQ(record.eventInstanceCount, 0);
        EXPECT_EQ(record.interfaces, nullptr);
        EXPECT_EQ(record.bindDescriptions, nullptr);
        EXPECT_EQ(record.bindDescriptionCount, 0);
        EXPECT_EQ(record.constants, nullptr);
        EXPECT_EQ(record.constantCount, 0);
        EXPECT_EQ(record.sharedProperties, nullptr);
        EXPECT_EQ(record.sharedPropertyCount, 0);
        EXPECT_EQ(record.sharedMethods, nullptr);
        EXPECT_EQ(record.sharedMethodCount, 0);
    }
}

TEST_F(ClassRecords, HavePropertiesWithoutEditorsOrEnumerations) {
    std::size_t properties = 0;
    for (const REALclassDefinition& record : g_records)
        for (const auto& property : std::span(record.properties, static_cast<std::size_t>(record.propertyCount))) {
            SCOPED_TRACE(property.name);
            ++properties;
            EXPECT_EQ(property.editor, nullptr);
            EXPECT_EQ(property.enumerationCount, 0);
            EXPECT_EQ(property.enumerationEntries, nullptr);
        }
    EXPECT_EQ(properties, 16u);
}

}  // namespace
