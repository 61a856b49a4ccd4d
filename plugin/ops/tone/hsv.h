#pragma once

// Hue, saturation and brightness are adjusted, or averaged.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Return a new picture with a region adjusted, or with all of it adjusted as far as a mask says. The hue is turned by
// more than -360 and less than 360 degrees. Factors are from 0 to below 1000, and to below 10 with a mask. `negative`
// inverts all of the picture, not only the region. The host gets no control, whatever `yield` is.
REALpictureStruct* TRV_AdjustHSV(REALpictureStruct* p, REALobjectStruct* rect, double hue_degrees,
                                 double saturation_factor, double brightness_factor, bool negative, int yield);
REALpictureStruct* TRV_AdjustHSVWithMask(REALpictureStruct* p, REALpictureStruct* mask, double hue_degrees,
                                         double saturation_factor, double brightness_factor, int yield);
REALobjectStruct* TRV_ClientPicture_AdjustHSV(REALobjectStruct* cp, REALobjectStruct* rect, double hue_degrees,
                                              double saturation_factor, double brightness_factor, bool negative,
                                              int yield, bool as_picture);
REALobjectStruct* TRV_ClientPicture_AdjustHSVWithMask(REALobjectStruct* cp, REALpictureStruct* mask, double hue_degrees,
                                                      double saturation_factor, double brightness_factor, int yield,
                                                      bool as_picture);

// Put out the hue of a region's mean colour, in degrees, and the means of its pixels' saturations, from 0 to 1, and
// values, from 0 to 255/256. The hue is -1 for black and not a number for any other grey. Null outputs are skipped.
void TRV_GetAverageHSV(REALpictureStruct* p, REALobjectStruct* rect, double* hue_degrees, double* saturation,
                       double* brightness, int yield);
void TRV_ClientPicture_GetAverageHSV(REALobjectStruct* cp, REALobjectStruct* rect, double* hue_degrees,
                                     double* saturation, double* brightness, int yield);

// The kernels. The pictures are locked and have one size. Null outputs are skipped.
void PrivAdjustHSV(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region,
                   double hue_degrees, double saturation_factor, double brightness_factor, bool negative, int yield);
void PrivAdjustHSVWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, double hue_degrees,
                           double saturation_factor, double brightness_factor, int yield);
void PrivGetAverageHSV(const TRV_Picture& source, const tarvo::plugin::Region& region, double* hue, double* saturation,
                       double* brightness, int yield);
