#pragma once

// TRV_ColorMatrix: nine numbers by which programs mix the channels of colours.

#include "real_interface.h"

// Row i holds what the source's channel i adds to red, green and blue. A new matrix is the identity.
struct TRV_ColorMatrix_Data {
    double m[3][3];
};
static_assert(sizeof(TRV_ColorMatrix_Data) == 72);

extern REALclassDefinition TRV_ColorMatrix_Class;

// Returns the data of an instance; null for nil.
TRV_ColorMatrix_Data* TRV_ColorMatrix_GetData(REALobjectStruct* matrix);
