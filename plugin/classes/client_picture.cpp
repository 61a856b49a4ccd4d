#include "client_picture.h"

#include <atomic>
#include <limits>
#include <utility>

#include "client_memory.h"
#include "error_state.h"
#include "host_reference.h"
#include "host_services.h"
#include "picture.h"
#include "registration.h"

namespace tarvo::plugin {
namespace {

using Data = TRV_ClientPicture_Data;

// The numbers that the properties are asked for by. 4 and 8 belong to the addresses of pixels and mask, which are none.
enum Parameter : std::int32_t {
    kWidth = 1,
    kHeight = 2,
    kDepth = 3,
    kRowBytes = 5,
    kHasMask = 6,
    kMaskDepth = 7,
    kMaskRowBytes = 9,
    kPic = 10,
};

constexpr std::int64_t kAlignment = 16;
constexpr std::int64_t kSlack = 32;  // spare bytes, some of which align the first pixel
constexpr std::int64_t kMostBytes = std::numeric_limits<std::int32_t>::max();

std::uint8_t* aligned(std::uint8_t* address) {
    const auto misaligned = reinterpret_cast<std::uintptr_t>(address) % kAlignment;
    return misaligned ? address + (kAlignment - misaligned) : address;
}

// Returns the depth that the host reports for a picture; 0 when it refuses to describe it.
std::int32_t depth_of(REALpictureStruct* picture) {
    REALpictureDescription description{};
    if (!REALLockPictureDescription(picture, &description)) return 0;
    REALUnlockPictureDescription(picture);
    return description.depth;
}

// Notes the mask that the host picture has now, if any.
void note_host_mask(Data& data) {
    REALpictureStruct* const mask = REALGetPictureMask(data.pic, 0);
    if (!mask) return;
    data.hasMask = 1;
    data.maskDepth = depth_of(mask);
    REALUnlockObject(mask);
}

void free_own_memory(Data& data) {
    drop_client_memory(std::exchange(data.buffer, nullptr));
    data.pixels = nullptr;
    drop_client_memory(std::exchange(data.maskPixels, nullptr));
}

void drop_host_picture(Data& data) {
    if (REALpictureStruct* const picture = std::exchange(data.pic, nullptr)) REALUnlockObject(picture);
}

bool back_with_host_picture(Data& data, long width, long height, long depth, bool withMask) {
    data.pic = REALNewPicture(width, height, depth);
    if (!data.pic) return false;
    data.width = static_cast<std::int32_t>(width);
    data.height = static_cast<std::int32_t>(height);
    data.depth = static_cast<std::int32_t>(depth);
    if (withMask) note_host_mask(data);
    return true;
}

bool back_with_own_memory(Data& data, long width, long height, long depth, bool withMask) {
    if (depth != 16 && depth != 24 && depth != 32) return false;
    // Rows have always been padded like this, by fifteen pixels and then rounded down, and programs can read the
    // result.
    const std::int64_t row_bytes = (std::int64_t{width} + 15) * (depth / 8) / kAlignment * kAlignment;
    if (row_bytes > (kMostBytes - kSlack) / height) return false;
    data.buffer = new_client_memory(height * row_bytes + kSlack);
    if (!data.buffer) return false;
    data.pixels = aligned(data.buffer);
    data.rowBytes = static_cast<std::int32_t>(row_bytes);
    data.width = static_cast<std::int32_t>(width);
    data.height = static_cast<std::int32_t>(height);
    data.depth = static_cast<std::int32_t>(depth);
    if (!withMask) return true;

    data.maskPixels = new_client_memory(std::int64_t{width} * height);
    if (!data.maskPixels) return true;  // there is no memory for a mask, so there is no mask
    data.maskRowBytes = data.width;
    data.hasMask = 1;
    data.maskDepth = 8;
    return true;
}

// Copies the image in own memory, and its mask if it has one, into a new host picture. Returns false when one of them
// cannot be locked.
bool copy_image(const Data& data, TRV_Picture& made) {
    constexpr const char* kCaller = "TRV_ClientPicture_operator_convert_to_picture 3";
    TRV_Picture image(&data, kAsImage);
    if (!image.Lock() || !made.Lock()) return false;
    copy_rows(image, made, kCaller);
    made.Unlock();
    if (!data.hasMask || !data.maskPixels) return true;

    TRV_Picture mask(&data, kAsMask);
    TRV_Picture made_mask(made, kAsMask);
    if (!mask.Lock() || !made_mask.Lock()) return false;
    copy_mask_rows(mask, made_mask, kCaller);
    return true;
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

Data* TRV_ClientPicture_GetData(REALobjectStruct* clientPicture) {
    return static_cast<Data*>(REALGetClassData(clientPicture, &TRV_ClientPicture_Class));
}

REALobjectStruct* TRV_ClientPicture_new(long width, long height, long depth, bool withMask, bool as_picture) {
    static constinit std::atomic<REALclassRefStruct*> sClientPicture_ClassRef = nullptr;
    // The host is asked until it knows the class; then the reference is kept.
    REALclassRefStruct* known = sClientPicture_ClassRef.load(std::memory_order_acquire);
    if (!known && (known = REALGetClassRef("TRV_ClientPicture")))
        sClientPicture_ClassRef.store(known, std::memory_order_release);
    if (width <= 0 || height <= 0 || !known) return nullptr;

    HostReference<REALobjectStruct> instance(REALnewInstance(known));
    if (!instance) return nullptr;
    Data& data = *TRV_ClientPicture_GetData(instance.get());
    const auto back = as_picture ? back_with_host_picture : back_with_own_memory;
    if (back(data, width, height, depth, withMask)) return instance.release();

    // A refused instance gets one reference more and one less, and the host decides whether it goes.
    REALobjectStruct* const refused = instance.release();
    REALLockObject(refused);
    REALUnlockObject(refused);
    return nullptr;
}

void TRV_ClientPicture_Constructor(REALobjectStruct* self) {
    if (Data* const data = TRV_ClientPicture_GetData(self)) *data = {};
}

void TRV_ClientPicture_Destructor(REALobjectStruct* self) {
    Data* const data = TRV_ClientPicture_GetData(self);
    if (!data) return;
    free_own_memory(*data);
    drop_host_picture(*data);
}

int TRV_ClientPicture_IntegerGetter(REALobjectStruct* self, REALword parameter) {
    const Data* const data = TRV_ClientPicture_GetData(self);
    if (!data) return 0;
    switch (parameter) {
        case kWidth: return data->width;
        case kHeight: return data->height;
        case kDepth: return data->depth;
        case kRowBytes: return data->rowBytes;
        case kMaskDepth: return data->maskDepth;
        case kMaskRowBytes: return data->maskRowBytes;
        default: return 0;
    }
}

// Answers for kPic alone. But the one property that asks this getter is "hasMask", which therefore always reads false.
bool TRV_ClientPicture_BooleanGetter(REALobjectStruct* self, REALword parameter) {
    const Data* const data = TRV_ClientPicture_GetData(self);
    if (!data || parameter != kPic || !data->pic) return false;
    REALLockObject(data->pic);
    return true;
}

REALpictureStruct* TRV_ClientPicture_PictureGetter(REALobjectStruct* self, REALword parameter) {
    const Data* const data = TRV_ClientPicture_GetData(self);
    if (!data || parameter != kPic || !data->pic) return nullptr;
    REALLockObject(data->pic);
    return data->pic;
}

void TRV_ClientPicture_operator_convert_from_picture(REALobjectStruct* self, REALpictureStruct* p) {
    Data* const data = TRV_ClientPicture_GetData(self);
    if (!data) return;
    if (p) REALLockObject(p);  // before anything is dropped: p may be the picture held now
    data->width = data->height = data->depth = 0;
    free_own_memory(*data);
    data->maskDepth = data->maskRowBytes = 0;
    drop_host_picture(*data);
    if (!p) return;

    data->pic = p;
    REALpictureDescription description{};
    if (REALLockPictureDescription(p, &description)) {
        data->width = description.width;
        data->height = description.height;
        data->depth = description.depth;
        REALUnlockPictureDescription(p);
    }
    note_host_mask(*data);
}

REALpictureStruct* TRV_ClientPicture_operator_convert_to_picture(REALobjectStruct* self) {
    clear_error();
    const Data* const data = TRV_ClientPicture_GetData(self);
    if (!data) return nullptr;
    if (data->pic) {
        REALLockObject(data->pic);
        return data->pic;
    }
    if (!data->pixels) return nullptr;

    HostReference<REALpictureStruct> picture;
    TRV_Picture made(data->width, data->height, data->depth, kHandOver);
    picture.reset(made.picture());
    return copy_image(*data, made) ? picture.release() : nullptr;
}

namespace tarvo::plugin {
namespace {

#define CLIENT_PROPERTY(name, type, getter, parameter) \
    TRV_READ_ONLY_PROPERTY("ClientPicture", name, type, 0, getter, parameter)

const REALpropertyDefinition kProperties[] = {
    CLIENT_PROPERTY("width", "integer", TRV_ClientPicture_IntegerGetter, kWidth),
    CLIENT_PROPERTY("height", "integer", TRV_ClientPicture_IntegerGetter, kHeight),
    CLIENT_PROPERTY("depth", "integer", TRV_ClientPicture_IntegerGetter, kDepth),
    CLIENT_PROPERTY("rowBytes", "integer", TRV_ClientPicture_IntegerGetter, kRowBytes),
    CLIENT_PROPERTY("hasMask", "boolean", TRV_ClientPicture_BooleanGetter, kHasMask),
    CLIENT_PROPERTY("maskDepth", "integer", TRV_ClientPicture_IntegerGetter, kMaskDepth),
    CLIENT_PROPERTY("maskRowBytes", "integer", TRV_ClientPicture_IntegerGetter, kMaskRowBytes),
    CLIENT_PROPERTY("pic", "picture", TRV_ClientPicture_PictureGetter, kPic),
};

const REALmethodDefinition kMethods[] = {
    TRV_MEMBER(TRV_ClientPicture_operator_convert_from_picture, "operator_convert(p as picture)", 0),
    TRV_MEMBER(TRV_ClientPicture_operator_convert_to_picture, "operator_convert() as picture", 0),
};

}  // namespace
}  // namespace tarvo::plugin

REALclassDefinition TRV_ClientPicture_Class = {
    .version = kREALinterfaceVersion,
    .name = "TRV_ClientPicture",
    .dataSize = sizeof(Data),
    .constructor = TRV_LIFE_ENTRY(TRV_ClientPicture_Constructor),
    .destructor = TRV_LIFE_ENTRY(TRV_ClientPicture_Destructor),
    .properties = kProperties,
    .propertyCount = std::size(kProperties),
    .methods = kMethods,
    .methodCount = std::size(kMethods),
};
