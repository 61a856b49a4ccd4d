#pragma once

// Contrast: each channel moves away from the same channel of a centre colour, or toward it.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Return a new picture with the contrast changed in a region, or everywhere as far as a mask says. Factors are from 0
// to 255.
REALpictureStruct* TRV_AdjustContrast(REALpictureStruct* p, REALobjectStruct* rect, int center, double red_factor,
                                      double green_factor, double blue_factor, int yield);
REALpictureStruct* TRV_AdjustContrastWithMask(REALpictureStruct* p, REALpictureStruct* mask, int center,
                                              double red_factor, double green_factor, double blue_factor, int yield);
REALobjectStruct* TRV_ClientPicture_AdjustContrast(REALobjectStruct* cp, REALobjectStruct* rect, int center,
                                                   double red_factor, double green_factor, double blue_factor,
                                                   int yield, bool as_picture);
REALobjectStruct* TRV_ClientPicture_AdjustContrastWithMask(REALobjectStruct* cp, REALpictureStruct* mask, int center,
                                                           double red_factor, double green_factor, double blue_factor,
                                                           int yield, bool as_picture);

// Put out the mean distance between a region's channels and the centre's. Null outputs are skipped.
void TRV_GetAverageContrast(REALpictureStruct* p, REALobjectStruct* rect, int center, int* red_contrast,
                            int* green_contrast, int* blue_contrast, int yield);
void TRV_ClientPicture_GetAverageContrast(REALobjectStruct* cp, REALobjectStruct* rect, int center, int* red_contrast,
                                          int* green_contrast, int* blue_contrast, int yield);

// The kernels. The pictures are locked and have one size. Null outputs are skipped.
void PrivAdjustContrast(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, int center,
                        double red_factor, double green_factor, double blue_factor, int yield);
void PrivAdjustContrastWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                                double red_factor, double green_factor, double blue_factor, int yield);
void PrivGetAverageContrast(const TRV_Picture& source, const tarvo::plugin::Region& region, int center, int* red,
                            int* green, int* blue, int yield);
