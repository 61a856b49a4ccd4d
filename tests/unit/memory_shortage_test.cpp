// What becomes of pictures when there is no memory for them. The program's own memory functions are this file's.

#include <cstddef>
#include <cstdlib>
#include <new>

#include "client_picture.h"
#include "error_state.h"
#include "locked_picture.h"
#include "picture_string.h"

namespace {

// The call that fails of those that are counted, from 1; 0 for none.
int failing_call = 0;

bool fails() { return failing_call > 0 && --failing_call == 0; }

}  // namespace

// The linker leads all calls of `calloc` here.
extern "C" void* __real_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size) {
    return fails() ? nullptr : __real_calloc(count, size);
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return fails() ? nullptr : std::malloc(bytes);
}
void* operator new[](std::size_t bytes) {
    void* const block = std::malloc(bytes);
    if (!block) throw std::bad_alloc();
    return block;
}
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace tarvo::test {
namespace {

class MemoryShortage : public LockedPicture {
protected:
    ~MemoryShortage() override { EXPECT_EQ(failing_call, 0); }

    REALobjectStruct* new_client(int call_that_fails) {
        failing_call = call_that_fails;
        return TRV_ClientPicture_new(10, 7, 32, true, false);
    }
};

TEST_F(MemoryShortage, ThereIsNoClientPictureWithoutAnImage) {
    const auto before = host.accounts();
    EXPECT_EQ(new_client(1), nullptr);
    // The one reference that was added and dropped has left the first one, which nobody holds.
    ASSERT_EQ(host.accounts().instances, before.instances + 1);
    for (const host::Object* each : host.objects().all())
        if (each->type() == host::ObjectType::instance) ObjectRef::adopt(const_cast<host::Object*>(each));
    EXPECT_EQ(host.accounts(), before);
}

TEST_F(MemoryShortage, AClientPictureCanBeWithoutItsMask) {
    const ObjectRef client = ObjectRef::adopt(host.objects().find(new_client(2)));
    ASSERT_TRUE(client);
    const TRV_ClientPicture_Data& data = *TRV_ClientPicture_GetData(static_cast<REALobjectStruct*>(client.handle()));
    EXPECT_EQ(data.width, 10);
    EXPECT_NE(data.pixels, nullptr);
    EXPECT_EQ(data.hasMask, 0);
    EXPECT_EQ(data.maskDepth, 0);
    EXPECT_EQ(data.maskPixels, nullptr);
}

TEST_F(MemoryShortage, APictureBecomesNoString) {
    const ObjectRef picture = make({.width = 3, .height = 2});
    const auto before = host.accounts();
    failing_call = 1;
    EXPECT_EQ(TRV_ConvertToString(handle(picture)), nullptr);
    EXPECT_EQ(gTRV_Error, 0);
    EXPECT_EQ(host.accounts(), before);
}

}  // namespace
}  // namespace tarvo::test
