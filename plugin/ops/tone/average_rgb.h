#pragma once

// Average blend: each channel becomes the mean of itself and, weighted, that of a centre colour.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// New pictures with a region blended, or the whole weighted by a mask. Weights from 0 to 255: how often the centre
// counts beside the pixel's one. `yield` is accepted here and below, and the host never gets control.
REALpictureStruct* TRV_AverageRGB(REALpictureStruct* p, REALobjectStruct* rect, int center, double red_weight,
                                  double green_weight, double blue_weight, int yield);
REALpictureStruct* TRV_AverageRGBWithMask(REALpictureStruct* p, REALpictureStruct* mask, int center, double red_weight,
                                          double green_weight, double blue_weight, int yield);
REALobjectStruct* TRV_ClientPicture_AverageRGB(REALobjectStruct* cp, REALobjectStruct* rect, int center,
                                               double red_weight, double green_weight, double blue_weight, int yield,
                                               bool as_picture);
REALobjectStruct* TRV_ClientPicture_AverageRGBWithMask(REALobjectStruct* cp, REALpictureStruct* mask, int center,
                                                       double red_weight, double green_weight, double blue_weight,
                                                       int yield, bool as_picture);

// The kernels: locked pictures of one size.
void PrivAverageRGB(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, int center,
                    double red_weight, double green_weight, double blue_weight, int yield);
void PrivAverageRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                            double red_weight, double green_weight, double blue_weight, int yield);
