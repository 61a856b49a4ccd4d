#pragma once

// Gamma: each channel's tone curve is bent at the value of a centre colour.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// New pictures with the curves of a region bent, or of the whole weighted by a mask. Factors from 0 to 255. Results
// have no mask. `yield` is accepted here and below, and the host never gets control.
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

// The kernels: locked pictures of one size.
void PrivAdjustGamma(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, int center,
                     double red_factor, double green_factor, double blue_factor, int yield);
void PrivAdjustGammaWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                             double red_factor, double green_factor, double blue_factor, int yield);
