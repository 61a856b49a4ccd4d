// A plugin whose methods end in every way that the tool tells apart, in the place of the real one.

#include <cstring>
#include <initializer_list>

#include "error_state.h"
#include "platform.h"
#include "real_interface.h"

namespace {

REALresolver g_resolver = nullptr;

template <class Function>
Function* service(const char* name) {
    return reinterpret_cast<Function*>(g_resolver(name));
}

REALstringStruct* string_of(const char* text) {
    return service<REALstringStruct*(const char*, int)>("REALBuildString")(text, static_cast<int>(std::strlen(text)));
}

REALstringStruct* get_error_message(int code) { return string_of(code == 9 ? "a mask is wrong" : "it went wrong"); }

REALpictureStruct* same_picture(REALpictureStruct* picture, int code) {
    gTRV_Error = code;
    service<void(REALobjectStruct*)>("REALLockObject")(reinterpret_cast<REALobjectStruct*>(picture));
    return picture;
}

REALpictureStruct* no_picture(REALpictureStruct*, int code) {
    gTRV_Error = code;
    return nullptr;
}

void in_place(REALpictureStruct*, int code) { gTRV_Error = code; }

bool truth(REALpictureStruct*, int code) {
    gTRV_Error = code;
    return code == 0;
}

void measure(REALpictureStruct*, double* share, int* count, bool* found) {
    gTRV_Error = 0;
    *share = *share + 0.5;
    *count = -7;
    *found = true;
}

REALpictureStruct* second(REALpictureStruct*, REALpictureStruct* picture) { return same_picture(picture, 0); }

REALstringStruct* echo(REALpictureStruct*, REALstringStruct* text) {
    gTRV_Error = 0;
    return service<REALstringStruct*(const char*, int)>("REALBuildString")(REALstringStruct::CString(text),
                                                                           REALstringStruct::Length(text));
}

REALstringStruct* some_bytes(REALpictureStruct*) {
    gTRV_Error = 0;
    return service<REALstringStruct*(const char*, int)>("REALBuildString")("\0\1\2", 3);
}

REALmemoryBlockStruct* block(REALpictureStruct*, int size) {
    gTRV_Error = 0;
    return service<REALmemoryBlockStruct*(int)>("newMemoryBlock")(size);
}

int color_number(REALpictureStruct*, int color) {
    gTRV_Error = 0;
    return color;
}

void show(REALpictureStruct*) {
    gTRV_Error = 0;
    REALstringStruct* text = string_of("look here");
    service<void(REALstringStruct*)>("RuntimeMsgBox")(text);
    service<void(REALstringStruct*)>("REALUnlockString")(text);
}

int area(REALpictureStruct*, REALobjectStruct*) { return 0; }

// Two forms that both take `second` alone.
int twice_a(REALpictureStruct*, int*, int second) {
    gTRV_Error = 0;
    return second;
}

int twice_b(REALpictureStruct*, int, int third) {
    gTRV_Error = 0;
    return third;
}

double halves(int count) { return count * 0.5; }

void misuse(REALpictureStruct*) {
    gTRV_Error = 0;
    service<void(REALobjectStruct*)>("REALLockObject")(reinterpret_cast<REALobjectStruct*>(&gTRV_Error));
}

// What the tool calls of its own accord.

REALpictureStruct* convert_to_picture(REALstringStruct*) {
    misuse(nullptr);
    return service<REALpictureStruct*(long, long, long)>("newPicture")(2, 1, 32);
}

// A screen of one row gives nothing.
REALpictureStruct* capture_screen(REALobjectStruct*, REALobjectStruct*) {
    const Rect bounds = (*GetMainDevice())->gdRect;
    return bounds.bottom - bounds.top == 1 ? nullptr : convert_to_picture(nullptr);
}

// --- classes that keep what they are given --------------------------------------------------------------------------

struct Matrix {
    double elements[9];
};

struct Convolution {
    std::int32_t count, last;
};

extern REALclassDefinition g_matrix_class, g_convolution_class;

template <class Data>
Data& data_of(REALobjectStruct* object, const REALclassDefinition& cls) {
    return *reinterpret_cast<Data*>(reinterpret_cast<char*>(object) + cls.dataOffset);
}

double get_element(REALobjectStruct* object, int i, int j) {
    return data_of<Matrix>(object, g_matrix_class).elements[i * 3 + j];
}

void set_element(REALobjectStruct* object, int i, int j, double value) {
    data_of<Matrix>(object, g_matrix_class).elements[i * 3 + j] = value;
}

void set_coefficients(REALobjectStruct* object, REALintArrayStruct* coefficients) {
    const auto last = static_cast<int>(service<long(void*)>("RuntimeUBound")(coefficients));
    const auto element = service<long(REALintArrayStruct*, int)>("RuntimeDirectReadIntArray");
    auto& data = data_of<Convolution>(object, g_convolution_class);
    data.count = last + 1;
    data.last = last < 0 ? 0 : static_cast<std::int32_t>(element(coefficients, last));
}

double matrix_element(REALpictureStruct*, REALobjectStruct* matrix, int i, int j) {
    gTRV_Error = 0;
    return get_element(matrix, i, j);
}

int coefficient_count(REALpictureStruct*, REALobjectStruct* convolution) {
    return data_of<Convolution>(convolution, g_convolution_class).count;
}

int last_coefficient(REALpictureStruct*, REALobjectStruct* convolution) {
    return data_of<Convolution>(convolution, g_convolution_class).last;
}

REALobjectStruct* same_matrix(REALpictureStruct*, REALobjectStruct* matrix) {
    gTRV_Error = 0;
    service<void(REALobjectStruct*)>("REALLockObject")(matrix);
    return matrix;
}

template <class Function>
REALmethodDefinition method(Function* function, const char* declaration) {
    return {reinterpret_cast<void*>(function), nullptr, declaration, 0};
}

const REALmethodDefinition g_methods[] = {
    method(TRV_GetLastError, "TRV_GetLastError() as integer"),
    method(get_error_message, "TRV_GetErrorMessage(error_code as integer) as String"),
    method(same_picture, "SamePicture(extends p as picture, code as integer = 0) as picture"),
    method(no_picture, "NoPicture(extends p as picture, code as integer) as picture"),
    method(in_place, "InPlace(extends p as picture, code as integer)"),
    method(truth, "Truth(extends p as picture, code as integer) as boolean"),
    method(measure,
           "Measure(extends p as picture, ByRef share as double, ByRef count as integer, ByRef found as boolean)"),
    method(second, "Second(extends p as picture, other as picture) as picture"),
    method(echo, "Echo(extends p as picture, text as string) as string"),
    method(some_bytes, "SomeBytes(extends p as picture) as string"),
    method(block, "Block(extends p as picture, size as integer) as MemoryBlock"),
    method(color_number, "ColorNumber(extends p as picture, c as color) as integer"),
    method(show, "Show(extends p as picture)"),
    method(halves, "Halves(count as integer) as double"),
    method(area, "Area(extends p as picture, r as TRV_Rectangle) as integer"),
    method(twice_a, "Twice(extends p as picture, ByRef first as integer, second as integer) as integer"),
    method(twice_b, "Twice(extends p as picture, second as integer, third as integer = 0) as integer"),
    method(area, "Client(extends cp as TRV_ClientPicture) as integer"),
    method(area,
           "Many(extends p as picture, a as integer, b as integer, c as integer, d as integer, e as integer, f as "
           "integer, g as integer, h as integer) as integer"),
    method(area, "Store(extends p as picture, block as MemoryBlock) as integer"),
    method(area, "Total(extends p as picture, values() as integer) as integer"),
    method(misuse, "Misuse(extends p as picture)"),
    method(convert_to_picture, "TRV_ConvertToPicture(extends s as string) as picture"),
    method(capture_screen, "TRV_ScreenCapture(extends s as screen, r as TRV_Rectangle) as picture"),
    method(matrix_element,
           "MatrixElement(extends p as picture, m as TRV_ColorMatrix, i as integer, j as integer) as double"),
    method(same_matrix, "SameMatrix(extends p as picture, m as TRV_ColorMatrix) as TRV_ColorMatrix"),
    method(coefficient_count, "CoefficientCount(extends p as picture, c as TRV_Convolution) as integer"),
    method(last_coefficient, "LastCoefficient(extends p as picture, c as TRV_Convolution) as integer"),
};

const REALmethodDefinition g_matrix_methods[] = {
    {reinterpret_cast<void*>(&get_element), reinterpret_cast<void*>(&set_element),
     "Value(i as integer, j as integer) as double", 0},
};

const REALmethodDefinition g_convolution_methods[] = {
    method(set_coefficients, "SetCoefficients(coeffs() as integer)"),
};

REALclassDefinition g_matrix_class = {
    .version = kREALinterfaceVersion,
    .name = "TRV_ColorMatrix",
    .dataSize = sizeof(Matrix),
    .methods = g_matrix_methods,
    .methodCount = 1,
};

REALclassDefinition g_convolution_class = {
    .version = kREALinterfaceVersion,
    .name = "TRV_Convolution",
    .dataSize = sizeof(Convolution),
    .methods = g_convolution_methods,
    .methodCount = 1,
};

}  // namespace

extern "C" __attribute__((visibility("default"))) int REALPluginMain(REALresolver callback) {
    g_resolver = reinterpret_cast<REALresolver>(callback("ResolverPPC"));
    for (REALclassDefinition* definition : {&g_matrix_class, &g_convolution_class})
        service<void(REALclassDefinition*)>("PluginRegisterClass")(definition);
    for (const REALmethodDefinition& definition : g_methods)
        service<void(const REALmethodDefinition*)>("PluginRegisterMethod")(&definition);
    return 1;
}
