#pragma once

// Gamma: the tone curve of each channel is bent at the same channel of a centre colour.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Return a new picture with the colours of a region changed by the curves, or with all colours changed as far as a mask
// says. Factors are from 0 to 255. The result has no mask. The host gets no control, whatever `yield` is.
REALpictureStruct* TRV_AdjustGamma(REALpictureStruct* p, REALobjectStruct* rect, int center, double red_factor,
                                   double green_factor, double blue_factor, int yield);
REALpictureStruct* TRV_AdjustGammaWithMask(REALpictureStruct* p, REALpictureStruct* mask, int center, double red_factor,
                                           double green_factor, double blue_factor, int yield);
REALobjectStruct* TRV_ClientPicture_AdjustGamma(REALobjectStruct* cp, REALobjectStruct* rect, int center,
                                                double red_factor, double green_factor, double blue_factor, int yield,
                                                bool as_picture);
REALobjectStruct* TRV_ClientPicture_AdjustGammaWithMask(REALobjectStruct* cp, REALpictureStruct* mask, int center,
                                                        double red_factor, double green_factor, double blue_factor,
                                                        int yield, bool as_picture);

// The kernels. The pictures are locked and have one size.
void PrivAdjustGamma(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, int center,
                     double red_factor, double green_factor, double blue_factor, int yield);
void PrivAdjustGammaWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                             double red_factor, double green_factor, double blue_factor, int yield);
