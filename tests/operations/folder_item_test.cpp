// Folder items, which no program can ask for: the function is called by itself.

#include "folder_item.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "error_state.h"
#include "host.h"
#include "plugin_entry.h"
#include "registration_tables.h"

namespace tarvo::test {
namespace {

constexpr int kRootVolume = -1, kRootDirectory = 2;

class FolderItem : public ::testing::Test {
protected:
    FolderItem() { EXPECT_TRUE(host.start_plugin(REALPluginMain)); }

    // The path of the host's folder item; "nil" for none.
    std::string path(int volume, int directory, const host::ObjectRef& name) {
        REALobjectStruct* const made =
            TRV_MakeFolderItem(volume, directory, static_cast<REALstringStruct*>(name.handle()));
        const host::ObjectRef item = host::ObjectRef::adopt(host.objects().find(made));
        const auto* const file = dynamic_cast<const host::FolderItem*>(item.get());
        return file ? file->path : "nil";
    }

    host::Host host;
};

TEST_F(FolderItem, IsMadeOfVolumeDirectoryAndName) {
    const auto before = host.accounts();
    EXPECT_EQ(path(kRootVolume, kRootDirectory, host.new_string("Photo")), "/Photo");
    EXPECT_EQ(path(kRootVolume, kRootDirectory, host.new_string("")), "/");
    EXPECT_EQ(path(kRootVolume, kRootDirectory, host.new_string(std::string(70, 'x'))), "/" + std::string(63, 'x'));
    EXPECT_EQ(host.accounts(), before);
    EXPECT_TRUE(host.complaints().empty());
}

TEST_F(FolderItem, OfUnknownPlacesIsNil) {
    EXPECT_EQ(path(-2, kRootDirectory, host.new_string("Photo")), "nil");
    EXPECT_EQ(path(kRootVolume, 3, host.new_string("Photo")), "nil");
    EXPECT_EQ(path(0xFFFF, kRootDirectory, host.new_string("Photo")), "/Photo");  // -1 in 16 bits
}

TEST_F(FolderItem, WithoutANameIsNilAndLeavesTheCode) {
    gTRV_Error = 20;
    EXPECT_EQ(path(kRootVolume, kRootDirectory, {}), "nil");
    EXPECT_EQ(host.faults.calls("FolderItemFromFSSpec"), 0);
    EXPECT_EQ(path(kRootVolume, kRootDirectory, host.new_string("Photo")), "/Photo");
    EXPECT_EQ(gTRV_Error, 20);
    gTRV_Error = 0;
}

// The record is packed: its fields are read, not referred to.
int volume_of(const FSSpec& file) { return file.vRefNum; }
int directory_of(const FSSpec& file) { return file.parID; }

TEST(FileRecord, HoldsTheNumbersAndTheName) {
    const FSSpec file = PrivMakeFSSpec(-1, 2, "a");
    EXPECT_EQ(volume_of(file), -1);
    EXPECT_EQ(directory_of(file), 2);
    EXPECT_EQ(file.name[0], 1);
    EXPECT_EQ(file.name[1], 'a');
    EXPECT_TRUE(std::all_of(file.name + 2, std::end(file.name), [](std::uint8_t byte) { return byte == 0; }));
    EXPECT_EQ(volume_of(PrivMakeFSSpec(0x12345, -7, "")), 0x2345);
    EXPECT_EQ(volume_of(PrivMakeFSSpec(0x18000, -7, "")), -0x8000);
    EXPECT_EQ(directory_of(PrivMakeFSSpec(0, -7, "")), -7);
    EXPECT_EQ(PrivMakeFSSpec(0, 0, "").name[0], 0);
}

TEST(FileRecord, IsPacked) {
    const FSSpec file = PrivMakeFSSpec(1, 2, "xyz");
    const auto* const bytes = reinterpret_cast<const char*>(&file);
    std::int16_t volume;
    std::int32_t directory;
    std::memcpy(&volume, bytes, sizeof volume);
    std::memcpy(&directory, bytes + 2, sizeof directory);
    EXPECT_EQ(volume, 1);
    EXPECT_EQ(directory, 2);
    EXPECT_EQ(std::memcmp(bytes + 6, "\3xyz\0", 5), 0);
    EXPECT_EQ(sizeof file, 70u);
}

TEST(FileRecord, CutsLongNames) {
    const std::string name = "0123456789012345678901234567890123456789012345678901234567890123456789";
    for (const std::size_t length : {62u, 63u, 64u, 70u}) {
        const FSSpec file = PrivMakeFSSpec(0, 0, name.substr(0, length).c_str());
        const std::size_t kept = std::min<std::size_t>(length, 63);
        EXPECT_EQ(file.name[0], kept);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(file.name) + 1, kept), name.substr(0, kept));
        EXPECT_EQ(file.name[63] == 0, kept < 63);
    }
}

// Records that exist and that no host is given.
TEST(UnregisteredRecords, AreComplete) {
    EXPECT_STREQ(TRV_MakeFolderItem_Method.declaration,
                 "TRV_MakeFolderItem(vRefNum as integer, parID as integer, name as string) as FolderItem");
    const auto make =
        reinterpret_cast<REALobjectStruct* (*)(int, int, REALstringStruct*)>(TRV_MakeFolderItem_Method.function);
    EXPECT_EQ(make(kRootVolume, kRootDirectory, nullptr), nullptr);
    EXPECT_STREQ(TRV_CopyPicture_Method.declaration, "TRV_CopyPicture(extends p as picture) as picture");
    EXPECT_TRUE(TRV_CopyPicture_Method.function);
    EXPECT_STREQ(TRV_Screen_Extension.name, "screen");
    ASSERT_EQ(TRV_Screen_Extension.methodCount, 1);
    EXPECT_STREQ(static_cast<const REALmethodDefinition*>(TRV_Screen_Extension.methods)->declaration,
                 "TRV_ScreenCapture(extends s as screen, capture_rect as TRV_Rectangle) as picture");
}

}  // namespace
}  // namespace tarvo::test
