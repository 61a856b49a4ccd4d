#include "fake_plugin.h"

#include <cstdint>
#include <string_view>

namespace tarvo::host::fake {

Seen seen;

namespace {

using Handle = void*;

// --- services -------------------------------------------------------------------------------------------------------

REALresolver resolver = nullptr;

template <class Function>
Function* service(const char* name) {
    return reinterpret_cast<Function*>(resolver(name));
}

Handle shared(Handle object) {
    service<void(REALobjectStruct*)>("REALLockObject")(static_cast<REALobjectStruct*>(object));
    return object;
}

void release(Handle object) {
    service<void(REALobjectStruct*)>("REALUnlockObject")(static_cast<REALobjectStruct*>(object));
}

Handle new_string(std::string_view text) {
    return service<REALstringStruct*(const char*, int)>("REALBuildString")(text.data(), static_cast<int>(text.size()));
}

bool can_lock(Handle picture) {
    auto* handle = static_cast<REALpictureStruct*>(picture);
    REALpictureDescription filled;
    const auto lock = service<int(REALpictureStruct*, REALpictureDescription*)>("lockPictureDescription");
    if (!lock(handle, &filled)) return false;
    service<void(REALpictureStruct*)>("unlockPictureDescription")(handle);
    return true;
}

void yield() { service<void()>("REALYieldToRB")(); }

void see(const char* entry, std::vector<const void*> objects = {}, std::vector<double> numbers = {}) {
    seen = {entry, std::move(objects), std::move(numbers)};
}

// --- global methods -------------------------------------------------------------------------------------------------

int mixed(Handle p, int a, double x, int b, double y, unsigned c, double z, bool d, int e, int f, long g, double u) {
    see("mixed", {p}, {1.0 * a, x, 1.0 * b, y, 1.0 * c, z, 1.0 * d, 1.0 * e, 1.0 * f, static_cast<double>(g), u});
    return -7;
}

double doubles(double a, double b, double c, double d, double e, double f, double g, double h) {
    see("doubles", {}, {a, b, c, d, e, f, g, h});
    return a - h / 4;
}

// More than its declaration names: what is beyond must be zero.
int hungry(int a, double x, Handle b, int c, int d, int e, int f, int g, Handle h, double y, double z) {
    see("hungry", {b, h}, {1.0 * a, 1.0 * c, 1.0 * d, 1.0 * e, 1.0 * f, 1.0 * g, x, y, z});
    return a;
}

void objects(Handle p, Handle s, Handle a, Handle m, Handle f, Handle d) { see("objects", {p, s, a, m, f, d}); }

void change(int* i, double* d, bool* b, unsigned* c, int step) {
    see("change", {}, {1.0 * *i, *d, 1.0 * *b, 1.0 * *c, 1.0 * step});
    *i += step;
    *d *= step;
    *b = !*b;
    *c = ~*c;
}

void leave(int*, double*) { see("leave"); }

void defaults(int i, double d, bool b, unsigned c, Handle s, Handle p) {
    auto* string = static_cast<REALstringStruct*>(s);
    const char* text = string ? service<const char*(REALstringStruct*)>("StringGetCString")(string) : nullptr;
    see(text ? text : "no text", {p}, {1.0 * i, d, 1.0 * b, 1.0 * c});
}

// Bits beyond the result's width are to be ignored.
constexpr std::intptr_t kNoise = static_cast<std::intptr_t>(sizeof(void*) == 8 ? 0x0123456700000000 : 0);
std::intptr_t noisy_integer() { return kNoise | static_cast<std::int32_t>(0x80000001u); }
std::intptr_t noisy_color() { return kNoise | 0x7F123456; }
std::intptr_t noisy_boolean(bool value) { return kNoise | 0x7F00 | (value ? 2 : 0); }

Handle text() { return new_string("a text"); }
Handle same(Handle object) { return object ? shared(object) : nullptr; }
Handle unowned(Handle object) { return object; }
Handle nothing() { return nullptr; }
Handle not_an_object() {
    static int somewhere;
    return &somewhere;
}

// True when the picture outlives the yield. What the box says after it is seen.
bool patient(Handle p, Handle box) {
    yield();
    see("patient", {p, box}, {1.0 * number_in(box)});
    return can_lock(p);
}

void count_up(int* i) {
    yield();
    ++*i;
}

// --- overloads ------------------------------------------------------------------------------------------------------

void by_integer(int) { see("by integer"); }
void by_double(double) { see("by double"); }
void by_color(unsigned) { see("by color"); }
void by_boolean(bool) { see("by boolean"); }
void by_string(Handle) { see("by string"); }
void by_picture(Handle) { see("by picture"); }
void by_box(Handle) { see("by box"); }
void by_reference(int*) { see("by reference"); }

void one(int) { see("one"); }
void one_or_two(int, int) { see("one or two"); }
void integer_double(int, double) { see("integer, double"); }
void double_integer(double, int) { see("double, integer"); }

// --- members --------------------------------------------------------------------------------------------------------

struct BoxData {
    std::int32_t number;
    Handle picture;
};

extern REALclassDefinition box_class;

BoxData& data_of(Handle box) { return *reinterpret_cast<BoxData*>(static_cast<char*>(box) + box_class.dataOffset); }

void construct_box(REALobjectStruct* box) { data_of(box).number = 1; }
void destroy_box(REALobjectStruct* box) {
    if (data_of(box).picture) release(data_of(box).picture);
}

Handle new_box(int number) {
    Handle box = service<REALobjectStruct*(const char*)>("PluginNewInstance")("FakeBox");
    if (box) data_of(box).number = number;
    return box;
}

Handle box_add(Handle self, int number) { return new_box(data_of(self).number + number); }

// Declared the other way round.
Handle box_times_box(Handle self, Handle other) {
    see("box_times_box", {self, other});
    return other ? new_box(data_of(self).number * data_of(other).number) : nullptr;
}
Handle box_times_double(Handle self, double factor) {
    see("box_times_double", {self}, {factor});
    return new_box(static_cast<int>(data_of(self).number * factor));
}

double box_cell(Handle self, int i, int j) {
    see("box_cell", {self}, {1.0 * i, 1.0 * j});
    return data_of(self).number + 0.5;
}
void box_set_cell(Handle self, int i, int j, double value) {
    see("box_set_cell", {self}, {1.0 * i, 1.0 * j, value});
    data_of(self).number = static_cast<std::int32_t>(value);
}

void box_from_picture(Handle self, Handle picture) {
    data_of(self).number = 100;
    data_of(self).picture = shared(picture);
}
// nil for a box without a picture; of the wrong class for number 13.
Handle box_to_picture(Handle self) {
    yield();
    if (data_of(self).number == 13) return new_box(0);
    return data_of(self).picture ? shared(data_of(self).picture) : nullptr;
}

int box_number(Handle self, long parameter) {
    see("box_number", {self}, {static_cast<double>(parameter)});
    return parameter == -2 ? -data_of(self).number : data_of(self).number;
}
void box_set_number(Handle self, long parameter, int value) {
    see("box_set_number", {self}, {static_cast<double>(parameter), 1.0 * value});
    data_of(self).number = value;
}
double box_half(Handle self, long) { return data_of(self).number / 2.0; }
Handle box_picture(Handle self, long) { return same(data_of(self).picture); }
void box_set_secret(Handle self, long parameter, bool value) {
    see("box_set_secret", {self}, {static_cast<double>(parameter), 1.0 * value});
}

Handle picture_shift(Handle self, Handle box, int by) {
    see("picture_shift", {self, box}, {1.0 * by});
    return nullptr;
}
int picture_area(Handle self, long parameter) {
    see("picture_area", {self}, {static_cast<double>(parameter)});
    return 42;
}

// --- registration ---------------------------------------------------------------------------------------------------

template <class Function>
REALmethodDefinition method(const char* declaration, Function* function) {
    return {reinterpret_cast<void*>(function), nullptr, declaration, 0};
}

template <class Function, class Setter>
REALmethodDefinition method(const char* declaration, Function* function, Setter* setter) {
    return {reinterpret_cast<void*>(function), reinterpret_cast<void*>(setter), declaration, 0};
}

REALpropertyDefinition property(const char* name, const char* type, void* getter, void* setter, int parameter) {
    return {"Fake", name, type, 0, getter, setter, parameter, nullptr, 0, nullptr};
}

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

constexpr const char* kShift = "Shift(box as FakeBox, by as integer) as picture";

REALmethodDefinition global_methods[] = {
    method("Mixed(extends p as picture, a as integer, x as double, b as integer, y as double, c as color, z as double, "
           "d as boolean, e as integer, f as integer, g as integer, u as double) as integer",
           mixed),
    method("Doubles(a as double, b as double, c as double, d as double, e as double, f as double, g as double, "
           "h as double) as double",
           doubles),
    method("NineDoubles(a as double, b as double, c as double, d as double, e as double, f as double, g as double, "
           "h as double, i as double) as double",
           doubles),
    method("NineIntegers(a as integer, b as integer, c as integer, d as integer, e as integer, f as integer, "
           "g as integer, h as integer, i as integer) as integer",
           hungry),
    method("Hungry(a as integer, x as double) as integer", hungry),
    method("Objects(p as picture, s as string, a() as integer, m as MemoryBlock, f as FolderItem, d as screen)",
           objects),
    method("Change(ByRef i as integer, ByRef d as double, ByRef b as boolean, ByRef c as color, step as integer)",
           change),
    method("Leave(ByRef i as integer, ByRef d as double)", leave),
    method("Defaults(i as integer, d as double = 2, b as boolean = true, c as color = &c102030, s as string = \"hi\", "
           "p as picture = nil)",
           defaults),
    method("NoisyInteger() as integer", noisy_integer),
    method("NoisyColor() as color", noisy_color),
    method("NoisyBoolean(value as boolean) as boolean", noisy_boolean),
    method("Text() as string", text),
    method("Same(p as picture) as picture", same),
    method("Unowned(p as picture) as picture", unowned),
    method("Nothing() as picture", nothing),
    method("NotAnObject() as picture", not_an_object),
    method("BoxAsPicture(number as integer) as picture", new_box),
    method("Patient(p as picture, box as FakeBox) as boolean", patient),
    method("CountUp(ByRef i as integer)", count_up),

    method("Which(value as integer)", by_integer),
    method("Which(value as double)", by_double),
    method("Which(value as color)", by_color),
    method("Which(value as boolean)", by_boolean),
    method("Which(value as string)", by_string),
    method("Which(value as picture)", by_picture),
    method("OnlyDouble(value as double)", by_double),
    method("OnlyBoolean(value as boolean)", by_boolean),
    method("DoubleOrColor(value as double)", by_double),
    method("DoubleOrColor(value as color)", by_color),
    method("BoxOrPicture(value as FakeBox)", by_box),
    method("BoxOrPicture(value as picture)", by_picture),
    method("OnlyPicture(value as picture)", by_picture),
    method("OnlyBox(value as FakeBox)", by_box),
    method("OnlyReference(ByRef value as integer)", by_reference),
    method("Short(a as integer)", one),
    method("Short(a as integer, b as integer = 3)", one_or_two),
    method("Crossed(a as integer, b as double)", integer_double),
    method("Crossed(a as double, b as integer)", double_integer),
    method("Reach(extends p as picture, by as integer)", by_picture),
    method("Reach(extends b as FakeBox, by as integer)", by_box),
    method("OnPicture(extends p as picture, by as integer)", by_picture),
    method(kShift, picture_shift),
    method("Level(extends p as picture, i as integer) as integer", noisy_integer, by_picture),
    method("WriteOnly(extends p as picture, i as integer)", by_picture, by_picture),
};

REALmethodDefinition box_methods[] = {
    method("Add(number as integer) as FakeBox", box_add),
    method("Multiply(factor as double) as FakeBox", box_times_box),
    method("Multiply(source as FakeBox) as FakeBox", box_times_double),
    method("Cell(i as integer, j as integer) as double", box_cell, box_set_cell),
    method("operator_convert(p as picture)", box_from_picture),
    method("operator_convert() as picture", box_to_picture),
};

REALpropertyDefinition box_properties[] = {
    property("number", "integer", address(box_number), address(box_set_number), 7),
    property("negative", "integer", address(box_number), nullptr, -2),
    property("half", "double", address(box_half), nullptr, 1),
    property("image", "picture", address(box_picture), nullptr, 1),
    property("secret", "boolean", nullptr, address(box_set_secret), 3),
};

// No conversion: one gives nothing, the other would need a new picture, which has no name to be made by.
REALmethodDefinition odd_methods[] = {method("operator_convert()", same)};
REALmethodDefinition picture_methods[] = {
    method("operator_convert(odd as FakeOdd)", picture_shift),
    method(kShift, picture_shift),
};
REALpropertyDefinition odd_properties[] = {property("number", "integer", address(picture_area), nullptr, 1)};
REALpropertyDefinition picture_properties[] = {property("area", "integer", address(picture_area), nullptr, 4)};

template <std::size_t kMethods, std::size_t kProperties>
REALclassDefinition class_of(const char* name, const REALmethodDefinition (&methods)[kMethods],
                             const REALpropertyDefinition (&properties)[kProperties]) {
    REALclassDefinition definition;
    definition.version = kREALinterfaceVersion;
    definition.name = name;
    definition.methods = methods;
    definition.methodCount = kMethods;
    definition.properties = properties;
    definition.propertyCount = kProperties;
    return definition;
}

REALclassDefinition make_box_class() {
    REALclassDefinition definition = class_of("FakeBox", box_methods, box_properties);
    definition.dataSize = sizeof(BoxData);
    definition.constructor = address(construct_box);
    definition.destructor = address(destroy_box);
    return definition;
}

REALclassDefinition box_class = make_box_class();
REALclassDefinition odd_class = class_of("FakeOdd", odd_methods, odd_properties);
REALclassDefinition picture_extension = class_of("picture", picture_methods, picture_properties);

}  // namespace

int plugin_main(REALresolver callback) {
    resolver = reinterpret_cast<REALresolver>(callback("ResolverPPC"));
    const auto add_method = service<void(REALmethodDefinition*)>("PluginRegisterMethod");
    for (REALmethodDefinition& definition : global_methods) add_method(&definition);
    service<void(REALclassDefinition*)>("PluginRegisterClass")(&box_class);
    service<void(REALclassDefinition*)>("PluginRegisterClass")(&odd_class);
    service<void(REALclassDefinition*)>("PluginRegisterClassExtension")(&picture_extension);
    return 1;
}

int number_in(const void* box) { return data_of(const_cast<void*>(box)).number; }

}  // namespace tarvo::host::fake
