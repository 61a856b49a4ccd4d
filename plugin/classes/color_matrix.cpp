#include "color_matrix.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <iterator>

#include "host_services.h"
#include "registration.h"

namespace tarvo::plugin {
namespace {

using Matrix = TRV_ColorMatrix_Data;

constexpr Matrix kIdentity = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};

// Returns the address of an element; null if there is no such element, or no matrix.
double* element(REALobjectStruct* self, int i, int j) {
    Matrix* const matrix = TRV_ColorMatrix_GetData(self);
    const bool inside = i >= 0 && i < 3 && j >= 0 && j < 3;
    return matrix && inside ? &matrix->m[i][j] : nullptr;
}

// Returns a new instance with these elements; nil when the host makes none.
REALobjectStruct* new_matrix(const Matrix& elements) {
    REALobjectStruct* const made = REALnewInstance("TRV_ColorMatrix");
    if (Matrix* const matrix = TRV_ColorMatrix_GetData(made)) *matrix = elements;
    return made;
}

// Returns the transpose of the product a b. Programs get this very order of additions, with its two fused steps.
Matrix transposed_product(const Matrix& a, const Matrix& b) {
    Matrix result;
    for (int i = 0; i < 3; ++i) {
        for (int k = 0; k < 3; ++k) {
            double sum = a.m[k][1] * b.m[1][i];
            sum = std::fma(a.m[k][0], b.m[0][i], sum);
            sum = std::fma(a.m[k][2], b.m[2][i], sum);
            result.m[i][k] = sum;
        }
    }
    return result;
}

Matrix scaled(const Matrix& matrix, double factor) {
    Matrix result;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) result.m[i][j] = factor * matrix.m[i][j];
    return result;
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

Matrix* TRV_ColorMatrix_GetData(REALobjectStruct* matrix) {
    return static_cast<Matrix*>(REALGetClassData(matrix, &TRV_ColorMatrix_Class));
}

void TRV_ColorMatrix_Constructor(REALobjectStruct* self) {
    if (Matrix* const matrix = TRV_ColorMatrix_GetData(self)) *matrix = kIdentity;
}

void TRV_ColorMatrix_Destructor(REALobjectStruct*) {}

double TRV_ColorMatrix_GetValue(REALobjectStruct* self, int i, int j) {
    const double* const value = element(self, i, j);
    return value ? *value : 0.0;
}

void TRV_ColorMatrix_SetValue(REALobjectStruct* self, int i, int j, double value) {
    if (double* const to = element(self, i, j)) *to = value;
}

void TRV_ColorMatrix_CopyFrom(REALobjectStruct* self, REALobjectStruct* source) {
    Matrix* const to = TRV_ColorMatrix_GetData(self);
    const Matrix* const from = TRV_ColorMatrix_GetData(source);
    if (to && from) *to = *from;
}

REALobjectStruct* TRV_ColorMatrix_MatrixMultiply(REALobjectStruct* self, REALobjectStruct* other) {
    const Matrix* const a = TRV_ColorMatrix_GetData(self);
    const Matrix* const b = TRV_ColorMatrix_GetData(other);
    return a && b ? new_matrix(transposed_product(*a, *b)) : nullptr;
}

REALobjectStruct* TRV_ColorMatrix_ScalarMultiply(REALobjectStruct* self, double factor) {
    const Matrix* const matrix = TRV_ColorMatrix_GetData(self);
    return matrix ? new_matrix(scaled(*matrix, factor)) : nullptr;
}

// Programs get nil for every matrix: nothing is inverted.
REALobjectStruct* TRV_ColorMatrix_Invert(REALobjectStruct*) { return nullptr; }

void TRV_ColorMatrix_MessageBox(REALobjectStruct* self) {
    const Matrix* const matrix = TRV_ColorMatrix_GetData(self);
    if (!matrix) return;
    const auto& m = matrix->m;
    // A number has a sign, its digits, a point and two decimals; blanks or a line break follow it.
    constexpr int kLongestNumber = 1 + (DBL_MAX_10_EXP + 1) + 1 + 2;
    char text[9 * (kLongestNumber + 2)];
    std::snprintf(text, sizeof text, "%4.2f  %4.2f  %4.2f\n%4.2f  %4.2f  %4.2f\n%4.2f  %4.2f  %4.2f", m[0][0], m[0][1],
                  m[0][2], m[1][0], m[1][1], m[1][2], m[2][0], m[2][1], m[2][2]);
    show_message(text);
}

namespace tarvo::plugin {
namespace {

const REALmethodDefinition kMethods[] = {
    TRV_ASSIGNABLE_MEMBER(TRV_ColorMatrix_GetValue, TRV_ColorMatrix_SetValue,
                          "Value(i as integer, j as integer) as double", 0),
    TRV_MEMBER(TRV_ColorMatrix_CopyFrom, "CopyFrom(source as TRV_ColorMatrix)", 0),
    // These two are registered crosswise, as programs know them: each finds the other's arguments. With a host that
    // fills unused arguments with zeros, the first returns nil and the second a matrix of zeros.
    TRV_MISMATCHED_METHOD(TRV_ColorMatrix_MatrixMultiply, "Multiply(factor as double) as TRV_ColorMatrix"),
    TRV_MISMATCHED_METHOD(TRV_ColorMatrix_ScalarMultiply, "Multiply(source as TRV_ColorMatrix) as TRV_ColorMatrix"),
    TRV_MEMBER(TRV_ColorMatrix_Invert, "Invert() as TRV_ColorMatrix", 0),
    TRV_MEMBER(TRV_ColorMatrix_MessageBox, "MessageBox()", 0),
};

}  // namespace
}  // namespace tarvo::plugin

REALclassDefinition TRV_ColorMatrix_Class = {
    .version = kREALinterfaceVersion,
    .name = "TRV_ColorMatrix",
    .dataSize = sizeof(Matrix),
    .constructor = TRV_LIFE_ENTRY(TRV_ColorMatrix_Constructor),
    .destructor = TRV_LIFE_ENTRY(TRV_ColorMatrix_Destructor),
    .methods = kMethods,
    .methodCount = std::size(kMethods),
};
