#include "rectangle.h"

#include <algorithm>
#include <cstdio>

#include "host_services.h"
#include "numbers.h"
#include "registration.h"

namespace tarvo::plugin {
namespace {

enum Parameter : std::int32_t { kLeft = 1, kTop, kWidth, kHeight, kRight, kBottom };

using Rectangle = TRV_Rectangle_Data;

std::int32_t last_of(std::int32_t first, std::int32_t size) { return wrapping_subtract(wrapping_add(first, size), 1); }
std::int32_t size_between(std::int32_t first, std::int32_t last) {
    return wrapping_add(wrapping_subtract(last, first), 1);
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

std::int32_t TRV_Rectangle_Data::right() const { return last_of(left, width); }
std::int32_t TRV_Rectangle_Data::bottom() const { return last_of(top, height); }

Rectangle* TRV_Rectangle_GetData(REALobjectStruct* rectangle) {
    return static_cast<Rectangle*>(REALGetClassData(rectangle, &TRV_Rectangle_Class));
}

void TRV_Rectangle_Constructor(REALobjectStruct* self) {
    if (Rectangle* const r = TRV_Rectangle_GetData(self)) *r = {};
}

void TRV_Rectangle_Destructor(REALobjectStruct*) {}

int TRV_Rectangle_Getter(REALobjectStruct* self, REALword parameter) {
    const Rectangle* const r = TRV_Rectangle_GetData(self);
    if (!r) return 0;
    switch (parameter) {
        case kLeft: return r->left;
        case kTop: return r->top;
        case kWidth: return r->width;
        case kHeight: return r->height;
        case kRight: return r->right();
        case kBottom: return r->bottom();
        default: return 0;
    }
}

void TRV_Rectangle_Setter(REALobjectStruct* self, REALword parameter, int value) {
    Rectangle* const r = TRV_Rectangle_GetData(self);
    if (!r) return;
    switch (parameter) {
        case kLeft: r->left = value; break;
        case kTop: r->top = value; break;
        case kWidth: r->width = value; break;
        case kHeight: r->height = value; break;
        case kRight: r->width = size_between(r->left, value); break;
        case kBottom: r->height = size_between(r->top, value); break;
        default: break;
    }
}

bool TRV_Rectangle_IsValid(REALobjectStruct* self) {
    const Rectangle* const r = TRV_Rectangle_GetData(self);
    return r && r->width >= 1 && r->height >= 1;
}

bool TRV_Rectangle_Equals(REALobjectStruct* self, REALobjectStruct* rect) {
    const Rectangle* const a = TRV_Rectangle_GetData(self);
    const Rectangle* const b = TRV_Rectangle_GetData(rect);
    return a && b && *a == *b;
}

void TRV_Rectangle_CopyFrom(REALobjectStruct* self, REALobjectStruct* rect) {
    Rectangle* const to = TRV_Rectangle_GetData(self);
    const Rectangle* const from = TRV_Rectangle_GetData(rect);
    if (to && from) *to = *from;
}

void TRV_Rectangle_OffsetBy(REALobjectStruct* self, int h, int v) {
    Rectangle* const r = TRV_Rectangle_GetData(self);
    if (!r) return;
    r->left = wrapping_add(r->left, h);
    r->top = wrapping_add(r->top, v);
}

void TRV_Rectangle_MoveTo(REALobjectStruct* self, int left, int top) {
    Rectangle* const r = TRV_Rectangle_GetData(self);
    if (!r) return;
    r->left = left;
    r->top = top;
}

void TRV_Rectangle_Resize(REALobjectStruct* self, int width, int height) {
    Rectangle* const r = TRV_Rectangle_GetData(self);
    if (!r) return;
    r->width = width;
    r->height = height;
}

void TRV_Rectangle_InsetBy(REALobjectStruct* self, int h, int v) {
    Rectangle* const r = TRV_Rectangle_GetData(self);
    if (!r) return;
    r->left = wrapping_add(r->left, h);
    r->top = wrapping_add(r->top, v);
    r->width = wrapping_subtract(r->width, wrapping_multiply(2, h));
    r->height = wrapping_subtract(r->height, wrapping_multiply(2, v));
}

// Scales the size and leaves the top left corner where it is.
void TRV_Rectangle_ScaleBy(REALobjectStruct* self, double factor) {
    Rectangle* const r = TRV_Rectangle_GetData(self);
    if (!r) return;
    r->width = truncate_to_int32(r->width * factor);
    r->height = truncate_to_int32(r->height * factor);
}

int TRV_Rectangle_Area(REALobjectStruct* self) {
    const Rectangle* const r = TRV_Rectangle_GetData(self);
    return r ? wrapping_multiply(r->width, r->height) : 0;
}

// An empty rectangle counts too: it contributes its corner.
void TRV_Rectangle_UnionWith(REALobjectStruct* self, REALobjectStruct* rect) {
    Rectangle* const r = TRV_Rectangle_GetData(self);
    const Rectangle* const other = TRV_Rectangle_GetData(rect);
    if (!r || !other) return;
    const std::int32_t right = std::max(r->right(), other->right());
    const std::int32_t bottom = std::max(r->bottom(), other->bottom());
    r->left = std::min(r->left, other->left);
    r->top = std::min(r->top, other->top);
    r->width = size_between(r->left, right);
    r->height = size_between(r->top, bottom);
}

// The intersection of rectangles that do not meet has a width or height of 0 or below.
void TRV_Rectangle_IntersectWith(REALobjectStruct* self, REALobjectStruct* rect) {
    Rectangle* const r = TRV_Rectangle_GetData(self);
    const Rectangle* const other = TRV_Rectangle_GetData(rect);
    if (!r || !other) return;
    const std::int32_t right_end = std::min(wrapping_add(r->left, r->width), wrapping_add(other->left, other->width));
    const std::int32_t bottom_end = std::min(wrapping_add(r->top, r->height), wrapping_add(other->top, other->height));
    r->left = std::max(r->left, other->left);
    r->top = std::max(r->top, other->top);
    r->width = wrapping_subtract(right_end, r->left);
    r->height = wrapping_subtract(bottom_end, r->top);
}

bool TRV_Rectangle_Contains(REALobjectStruct* self, REALobjectStruct* rect) {
    const Rectangle* const r = TRV_Rectangle_GetData(self);
    const Rectangle* const other = TRV_Rectangle_GetData(rect);
    return r && other && r->left <= other->left && r->top <= other->top && r->right() >= other->right() &&
           r->bottom() >= other->bottom();
}

bool TRV_Rectangle_Intersects(REALobjectStruct* self, REALobjectStruct* rect) {
    const Rectangle* const r = TRV_Rectangle_GetData(self);
    const Rectangle* const other = TRV_Rectangle_GetData(rect);
    return r && other && std::max(r->left, other->left) <= std::min(r->right(), other->right()) &&
           std::max(r->top, other->top) <= std::min(r->bottom(), other->bottom());
}

void TRV_Rectangle_MessageBox(REALobjectStruct* self) {
    const Rectangle* const r = TRV_Rectangle_GetData(self);
    if (!r) return;
    const bool valid = r->left <= r->right() && r->top <= r->bottom();
    char text[200];
    std::snprintf(text, sizeof text, "left: %ld top: %ld right: %ld bottom: %ld\nwidth: %ld height: %ld\n%s",
                  static_cast<long>(r->left), static_cast<long>(r->top), static_cast<long>(r->right()),
                  static_cast<long>(r->bottom()), static_cast<long>(r->width), static_cast<long>(r->height),
                  valid ? "valid" : "invalid");
    show_message(text);
}

namespace tarvo::plugin {
namespace {

#define RECTANGLE_PROPERTY(name, parameter) \
    TRV_PROPERTY("Rectangle", name, "integer", REALconsoleSafe, TRV_Rectangle_Getter, TRV_Rectangle_Setter, parameter)
#define RECTANGLE_METHOD(function, declaration) TRV_MEMBER(function, declaration, REALconsoleSafe)

const REALpropertyDefinition kProperties[] = {
    RECTANGLE_PROPERTY("left", kLeft),     RECTANGLE_PROPERTY("top", kTop),     RECTANGLE_PROPERTY("width", kWidth),
    RECTANGLE_PROPERTY("height", kHeight), RECTANGLE_PROPERTY("right", kRight), RECTANGLE_PROPERTY("bottom", kBottom),
};

const REALmethodDefinition kMethods[] = {
    RECTANGLE_METHOD(TRV_Rectangle_IsValid, "IsValid() as Boolean"),
    RECTANGLE_METHOD(TRV_Rectangle_Equals, "Equals(rect as TRV_Rectangle) as Boolean"),
    RECTANGLE_METHOD(TRV_Rectangle_CopyFrom, "CopyFrom(rect as TRV_Rectangle)"),
    RECTANGLE_METHOD(TRV_Rectangle_OffsetBy, "OffsetBy(h as integer, v as integer)"),
    RECTANGLE_METHOD(TRV_Rectangle_MoveTo, "MoveTo(left as integer, top as integer)"),
    RECTANGLE_METHOD(TRV_Rectangle_Resize, "Resize(width as integer, height as integer)"),
    RECTANGLE_METHOD(TRV_Rectangle_InsetBy, "InsetBy(h as integer, v as integer)"),
    RECTANGLE_METHOD(TRV_Rectangle_ScaleBy, "ScaleBy(factor as double)"),
    RECTANGLE_METHOD(TRV_Rectangle_Area, "Area() as integer"),
    RECTANGLE_METHOD(TRV_Rectangle_UnionWith, "UnionWith(rect as TRV_Rectangle)"),
    RECTANGLE_METHOD(TRV_Rectangle_IntersectWith, "IntersectWith(rect as TRV_Rectangle)"),
    RECTANGLE_METHOD(TRV_Rectangle_Contains, "Contains(rect as TRV_Rectangle) as Boolean"),
    RECTANGLE_METHOD(TRV_Rectangle_Intersects, "Intersects(rect as TRV_Rectangle) as Boolean"),
    RECTANGLE_METHOD(TRV_Rectangle_MessageBox, "MessageBox()"),
};

}  // namespace
}  // namespace tarvo::plugin

REALclassDefinition TRV_Rectangle_Class = {
    .version = kREALinterfaceVersion,
    .name = "TRV_Rectangle",
    .dataSize = sizeof(Rectangle),
    .constructor = TRV_LIFE_ENTRY(TRV_Rectangle_Constructor),
    .destructor = TRV_LIFE_ENTRY(TRV_Rectangle_Destructor),
    .properties = kProperties,
    .propertyCount = std::size(kProperties),
    .methods = kMethods,
    .methodCount = std::size(kMethods),
    .flags = REALconsoleSafe,
};
