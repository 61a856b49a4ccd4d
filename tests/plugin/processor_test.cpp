// What the plugin makes of the operating system's answer about the processor. This program answers for the system.

#include "processor.h"

#include <gtest/gtest.h>

#include "platform.h"
#include "plugin_entry.h"

namespace {

OSErr g_answer = noErr;
std::int32_t g_features = 0;
OSType g_asked = 0;

// Starts the plugin, its flags set before. What host it finds does not matter.
void start() {
    gTRV_HasAltiVec = gTRV_HasMMX = 7;
    g_asked = 0;
    REALPluginMain(nullptr);
    EXPECT_EQ(g_asked, gestaltPowerPCProcessorFeatures);
    EXPECT_EQ(gTRV_HasMMX, 0);
}

TEST(Processor, HasAVectorUnitWhenBit4IsSet) {
    g_answer = noErr;
    for (const std::int32_t features : {1 << 4, -1}) {
        g_features = features;
        start();
        EXPECT_EQ(gTRV_HasAltiVec, 1);
    }
    for (const std::int32_t features : {0, ~(1 << 4)}) {
        g_features = features;
        start();
        EXPECT_EQ(gTRV_HasAltiVec, 0);
    }
}

TEST(Processor, HasNoneWhenTheSystemDoesNotSay) {
    g_features = -1;
    for (const OSErr error : {gestaltUndefSelectorErr, OSErr{-50}, OSErr{1}}) {
        g_answer = error;
        start();
        EXPECT_EQ(gTRV_HasAltiVec, 0);
    }
}

}  // namespace

OSErr Gestalt(OSType selector, std::int32_t* response) {
    g_asked = selector;
    *response = g_features;
    return g_answer;
}
