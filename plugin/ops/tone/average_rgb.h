#pragma once

// Average blend: each channel becomes a weighted mean of itself and the same channel of a centre colour.

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// Return a new picture with a region blended, or with all of it blended as far as a mask says. A pixel counts once and
// the centre as often as the weights say, which are from 0 to 255. The host gets no control, whatever `yield` is.
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

// The kernels. The pictures are locked and have one size.
void PrivAverageRGB(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region, int center,
                    double red_weight, double green_weight, double blue_weight, int yield);
void PrivAverageRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                            double red_weight, double green_weight, double blue_weight, int yield);
