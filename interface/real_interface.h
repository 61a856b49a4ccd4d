#pragma once

// The plugin interface of the REALbasic host: handles, into which only the host looks; records that a plugin registers;
// and two of the host's records, which plugins read. Host and plugin share this file and `platform/`, and nothing else.

#include <cstddef>
#include <cstdint>

// A machine word. The sizes of the published records are counted in these.
using REALword = std::intptr_t;

// Handles. All but strings are of instances of host classes. The host counts references to every one of them.
struct REALobjectStruct;
struct REALpictureStruct;
struct REALmemoryBlockStruct;
struct REALclassRefStruct;
struct REALintArrayStruct;

// A host string: bytes of any value, and a NUL that the length does not count.
//
//     |  n  | byte | byte | ... | NUL |         n: the length, at most 255
//     ^ storage
struct REALstringStruct {
    std::int32_t references;
    std::int32_t length;
    const char* storage;

    // Returns the number of bytes; 0 for a null string.
    static std::int32_t Length(const REALstringStruct* string) { return string ? string->length : 0; }
    // Returns the bytes, valid while the caller holds a reference; "" for a null string.
    static const char* CString(const REALstringStruct* string) {
        return string && string->storage ? string->storage + 1 : "";
    }
};

// The kinds of stores of a picture's pixels.
enum REALpictureKind : std::int32_t {
    pictureDrawingCommands = 1,
    pictureMacintoshGWorld = 4,   // store: GWorldPtr
    pictureCGBitmapContext = 8,   // store: CGContextRef
    pictureHostPixelBuffer = 10,  // store: REALpixelBuffer*
};

// How the host calls what a plugin registers, about whose arguments only a declaration tells: integers and addresses in
// one row, doubles in another, each in order. The calling conventions of processors pass them so, and a function does
// not see what it does not take. WebAssembly, which calls a function by exactly its type, has entry points of this type
// alone, but for constructors and destructors.
template <class Result>
using REALentry = Result (*)(REALword, REALword, REALword, REALword, REALword, REALword, REALword, REALword,  //
                             double, double, double, double, double, double, double, double);

// Filled by the host when it locks a picture's description.
struct REALpictureDescription {
    std::int32_t kind;  // a REALpictureKind, or another number for a store that plugins do not know
    void* store;        // belongs to the picture; valid until the description is unlocked
    std::int32_t width;
    std::int32_t height;
    std::int32_t depth;  // bits of a pixel
};

// The store of kind 10: 32-bit pixels, each row at the address that the table has for it.
struct REALpixelBuffer {
    std::int32_t width;
    std::int32_t height;
    std::uint8_t** rows;  // `height` addresses
};

// How REALBuildPictureFromBuffer reads the bytes of a pixel.
enum RBPixelType : std::int32_t {
    pixelTypeXRGB32 = 3,  // unused, red, green, blue
};

enum REALflags : REALword { REALconsoleSafe = 4 };

// A method: its function and its declaration in the host's language.
struct REALmethodDefinition {
    void* function;
    void* setter;  // null unless the method can be assigned to
    const char* declaration;
    REALword flags;
};

// The record of a method for hosts below version 5.9.
struct REALmethodDefinitionV6 {
    void* function;
    void* setter;
    const char* declaration;
};

struct REALpropertyDefinition {
    const char* group;
    const char* name;
    const char* type;
    REALword flags;
    void* getter;  // (object, parameter) -> value
    void* setter;  // (object, parameter, value); null for a property that is read-only
    REALword parameter;
    const char* editor;
    REALword enumerationCount;
    const char* const* enumerationEntries;
};

struct REALclassDefinition {
    REALword version = 0;  // kREALinterfaceVersion
    const char* name = nullptr;
    const char* superName = nullptr;
    REALword dataSize = 0;        // bytes of plugin data in each instance
    REALword dataOffset = 0;      // from an instance's address to that data; the host writes it at registration
    void* constructor = nullptr;  // (object)
    void* destructor = nullptr;   // (object)
    const REALpropertyDefinition* properties = nullptr;
    REALword propertyCount = 0;
    const void* methods = nullptr;  // REALmethodDefinition[], or REALmethodDefinitionV6[] for hosts below 5.9
    REALword methodCount = 0;
    const void* events = nullptr;
    REALword eventCount = 0;
    const void* eventInstances = nullptr;
    REALword eventInstanceCount = 0;
    const char* interfaces = nullptr;
    const void* bindDescriptions = nullptr;
    REALword bindDescriptionCount = 0;
    const void* constants = nullptr;
    REALword constantCount = 0;
    REALword flags = 0;
    const void* sharedProperties = nullptr;
    REALword sharedPropertyCount = 0;
    const void* sharedMethods = nullptr;
    REALword sharedMethodCount = 0;
};

inline constexpr REALword kREALinterfaceVersion = 9;

static_assert(sizeof(REALmethodDefinition) == 4 * sizeof(REALword));
static_assert(sizeof(REALmethodDefinitionV6) == 3 * sizeof(REALword));
static_assert(sizeof(REALpropertyDefinition) == 10 * sizeof(REALword));
static_assert(sizeof(REALclassDefinition) == 25 * sizeof(REALword));

// Returns the host's service of a look-up name; null when the host has none.
using REALresolver = void* (*)(const char* name);

// The plugin's one exported function is `extern "C" int REALPluginMain(REALresolver callback)`. The host calls it once;
// for the name "ResolverPPC" the callback returns the resolver of all services. The function returns 1 when the plugin
// registered itself, 0 when it refused the host.
using REALpluginMain = int (*)(REALresolver callback);
inline constexpr const char* kREALpluginMainName = "REALPluginMain";
